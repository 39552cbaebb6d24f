// Route and rule checkers written as short text, for the unit and device
// tests: each key=value sets a field and selects its check bit (~key=value
// sets it without selecting it), count=N sets match_count; the bare words
// are flags.
//   rule:  chain= in= proto= dest= dport= nat= policy= out= jump= src= sport=
//          icmp=, flags v6 del natt (nat table) app (append)
//   route: dest= gw= mask= dev=, flag off (check_content 0)
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/internal/text.h"
#include "cmdlib/internal/rule_listing.h"

namespace checker_spec {

// Field names of the rule checker in check-bit order.
inline const char *const kRuleKeys[cmdlib::kNatFieldCount] = {"chain", "in",  "proto",  "dest",
                                                              "dport", "nat", "policy", "out",
                                                              "jump",  "src", "sport",  "icmp"};
inline const char *const kRouteKeys[] = {"dest", "gw", "mask", "dev"};  // kRouteColumns' order

template <class Record, class Fields, class Flag>
Record parse(std::string_view desc, const char *const *keys, size_t n_keys, Fields field,
             Flag flag) {
    Record r{};
    std::string_view w, key, value;
    while (!(w = cmdlib::next_word(&desc)).empty()) {
        if (!cmdlib::split_once(w, '=', &key, &value)) {
            flag(w, &r);
            continue;
        }
        if (key == "count") r.match_count = cmdlib::atoi_sat(value);
        bool select = !cmdlib::consume_prefix(&key, "~");
        for (size_t k = 0; k < n_keys; ++k) {
            if (key != keys[k]) continue;
            auto [bit, text] = field(k);
            cmdlib::copy_bounded(reinterpret_cast<char *>(&r) + text.offset, text.width, value);
            if (select) r.check_content |= bit;
        }
    }
    return r;
}

inline NATEntryChecker rule(std::string_view desc) {
    return parse<NATEntryChecker>(
        desc, kRuleKeys, cmdlib::kNatFieldCount,
        [](size_t k) { return std::make_pair(1u << k, cmdlib::kNatFieldText[k]); },
        [](std::string_view w, NATEntryChecker *c) {
            c->match_flags |= w == "v6"     ? NAT_MATCH_IPV6
                              : w == "del"  ? NAT_MATCH_DELETE
                              : w == "natt" ? NAT_MATCH_NAT_TABLE
                                            : 0;
            c->append_item |= w == "app";
        });
}

inline RouteEntryChecker route(std::string_view desc) {
    RouteEntryChecker r = parse<RouteEntryChecker>(
        desc, kRouteKeys, 4,
        [](size_t k) {
            return std::make_pair(cmdlib::kRouteColumns[k].bit, cmdlib::kRouteColumns[k].field);
        },
        [](std::string_view, RouteEntryChecker *) {});
    if (desc.find(" off") != std::string_view::npos) r.check_content = 0;
    return r;
}

}  // namespace checker_spec
