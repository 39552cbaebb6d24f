// Route and rule listings over arbitrary bytes: both counting passes with
// checkers of every kind (full-width unterminated fields included), then
// the fix commands of checkers whose fields come from the input.  Counts
// stay within the lines that can match, and every command fits its buffer
// or is refused whole.
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string_view>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/rule_listing.h"

namespace {

// Fills the text fields of a checker record with consecutive pieces of
// the input; the last field may be filled to its width, unterminated.
template <class Record, size_t N>
void fill(Record *r, const cmdlib::RecordText (&fields)[N], std::string_view text) {
    size_t at = 0;
    for (size_t i = 0; i < N; ++i) {
        char *f = reinterpret_cast<char *>(r) + fields[i].offset;
        size_t room = fields[i].width - (i + 1 < N ? 1 : 0);
        size_t n = at < text.size() ? std::min(room, text.size() - at) : 0;
        if (n) memcpy(f, text.data() + at, n);
        if (n < fields[i].width) f[n] = '\0';
        at += n;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);

    NATEntryChecker nat[4];
    memset(nat, 0, sizeof nat);
    strcpy(nat[0].chain, "INPUT");
    nat[0].check_content = NAT_CHECK_CHAIN;
    strcpy(nat[1].jump_action, "dnat");
    strcpy(nat[1].nat, "192.168.1.2");
    nat[1].check_content = NAT_CHECK_JUMP_ACTION | NAT_CHECK_NAT;
    fill(&nat[2], cmdlib::kNatFieldText, text);
    nat[2].check_content = 0xffffffffu;
    nat[3].check_content = 0x1000;  // no known bit: matches every counting line
    NATEntryChecker plain[4];
    memcpy(plain, nat, sizeof nat);
    cmdlib::TextLineReader<256> r(text);
    int lines = cmdlib::count_nat_matches(r, nat, 4);
    int total = 0;
    for (const auto &c : nat) total += c.match_count;
    if (lines < 0 || total != lines) __builtin_trap();
    // the hashed lookup counts as the plain scan of every checker does
    cmdlib::TextLineReader<256> again(text);
    std::string_view line, words[cmdlib::kListingMaxWords];
    cmdlib::NatRule rule;
    while (again.next(&line)) {
        size_t n = cmdlib::split_words(line, cmdlib::kBlankOrEol, words, cmdlib::kListingMaxWords);
        cmdlib::parse_nat_rule(words, n, &rule);
        if (n >= 2) cmdlib::count_nat_rule(rule, plain, 4);
    }
    for (int i = 0; i < 4; ++i)
        if (plain[i].match_count != nat[i].match_count) __builtin_trap();

    RouteEntryChecker route[2];
    memset(route, 0, sizeof route);
    strcpy(route[0].dest_IP, "0.0.0.0");
    route[0].check_content = ROUTE_CHECK_DEST_IP;
    cmdlib::RecordText route_fields[4];
    for (int i = 0; i < 4; ++i) route_fields[i] = cmdlib::kRouteColumns[i].field;
    fill(&route[1], route_fields, text);
    route[1].check_content = 0xf;
    cmdlib::TextLineReader<256> rr(text);
    cmdlib::count_route_matches(rr, route, 2);
    if (route[0].match_count + route[1].match_count > lines) __builtin_trap();

    for (auto &c : nat) {
        c.match_flags = static_cast<unsigned>(size) & 0x19u;
        c.append_item = static_cast<int>(size & 2);
        cmdlib::CommandLine<256> cmd;
        bool ok = cmdlib::nat_fix_command(c, &cmd);
        if (ok != cmd.ok() || strlen(cmd.c_str()) > 255 || (!ok && cmd.c_str()[0]))
            __builtin_trap();
    }
    for (const auto &c : route) {
        cmdlib::CommandLine<256> cmd;
        bool ok = cmdlib::route_fix_command(c, &cmd);
        if (ok != cmd.ok() || strlen(cmd.c_str()) > 255) __builtin_trap();
    }
    return 0;
}
