// Traffic counters of one interface from "/proc/net/dev" text.  Used by
// base's cmd_netdev_flowstat_ex and, through it, by the system record's
// module-information sync.
#pragma once

#include <stddef.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/text.h"

namespace cmdlib {

// Received bytes and packets, sent bytes and packets, as the kernel wrote
// them (64 bytes each: the base service's field width).
struct NetdevCounters {
    char rx_bytes[64];
    char rx_packets[64];
    char tx_bytes[64];
    char tx_packets[64];
};

// One line "  name: rx-bytes rx-packets errs drop fifo frame compressed
// multicast tx-bytes tx-packets ...".  true when it is ifname's line and
// holds at least the ten counters up to the sent packets (out filled).
[[nodiscard]] inline bool netdev_counters_line(std::string_view line, std::string_view ifname,
                                               NetdevCounters *out) {
    std::string_view name, rest;
    if (ifname.empty() || !split_once(line, ':', &name, &rest) || strip(name) != ifname) return false;
    std::string_view w[10];
    for (auto &word : w) word = next_word(&rest);
    if (w[9].empty()) return false;
    copy_bounded(out->rx_bytes, sizeof out->rx_bytes, w[0]);
    copy_bounded(out->rx_packets, sizeof out->rx_packets, w[1]);
    copy_bounded(out->tx_bytes, sizeof out->tx_bytes, w[8]);
    copy_bounded(out->tx_packets, sizeof out->tx_packets, w[9]);
    return true;
}

// The first line of ifname in the reader's pieces; a line of the
// interface that is cut short ends the search unfilled.
template <class Reader> bool find_netdev_counters(Reader &r, std::string_view ifname, NetdevCounters *out) {
    std::string_view line;
    while (r.next(&line)) {
        std::string_view name, rest;
        if (!split_once(line, ':', &name, &rest) || strip(name) != ifname) continue;
        return netdev_counters_line(line, ifname, out);
    }
    return false;
}

// The same over text held in memory.
[[nodiscard]] inline bool parse_netdev_counters(std::string_view text, std::string_view ifname,
                                                NetdevCounters *out) {
    if (ifname.empty()) return false;
    TextLineReader<512> r(text);
    return find_netdev_counters(r, ifname, out);
}

}  // namespace cmdlib
