// The network family's text readers over arbitrary bytes: route, if_inet6,
// /proc/net/dev and resolver lines, and the attached-device tables
// (neighbours, ARP, PPPoE, switch ports, Wi-Fi stations, pair files,
// leases and their join).  Results must stay within the records'
// capacities and every text field terminated inside its width.
#include <stdint.h>
#include <string.h>

#include <string_view>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/neigh_parse.h"
#include "cmdlib/internal/route_parse.h"

namespace {

template <size_t N> void check_text(const char (&field)[N]) {
    if (!memchr(field, '\0', N)) __builtin_trap();
}

void check_arp(const ARPTable &t) {
    if (t.count > ARP_TABLE_SIZE) __builtin_trap();
    for (const auto &e : t.table) {
        check_text(e.mac);
        check_text(e.ip);
        check_text(e.user);
        check_text(e.port);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    using cmdlib::TextLineReader;

    {
        TextLineReader<256> r(text);
        char wan[64];
        if (cmdlib::wan_name_from_route(r, wan, sizeof wan) && !memchr(wan, '\0', sizeof wan))
            __builtin_trap();
    }
    {
        TextLineReader<256> r(text);
        std::string_view line;
        while (r.next(&line)) {
            uint32_t gw;
            (void)cmdlib::wan_default_gateway(line, "usb0", &gw);
            (void)cmdlib::netdev_line_names(line, "eth0");
            (void)cmdlib::dns_line_wanted(line, true);
            cmdlib::Inet6Entry e;
            if (cmdlib::parse_if_inet6_line(line, &e)) check_text(e.dev);
        }
    }
    {
        // room for every nameserver the text can hold: each needs a
        // "nameserver X" line of at least 12 bytes and takes its length
        // plus two bytes of the buffer
        size_t most = size / 12 + 1;
        std::vector<char> buffer(size + 2 * most + 16);
        std::vector<char *> argv(most);
        TextLineReader<256> r(text);
        int n = cmdlib::pack_nameservers(r, buffer.data(), argv.data(), true, true);
        if (n < 0 || static_cast<size_t>(n) > most) __builtin_trap();
    }
    {
        Neighbour_Info info;
        TextLineReader<256> r(text);
        cmdlib::parse_neigh_listing(r, &info, false, false);
        if (info.neighbour_count < 0 || info.neighbour_count > NEIGHBOUR_MAX) __builtin_trap();
        for (int i = 0; i < info.neighbour_count; ++i) {
            check_text(info.neighbours[i].ipv6_addr);
            check_text(info.neighbours[i].mac_addr);
        }
    }
    ARPTable t;
    {
        TextLineReader<256> r(text);
        cmdlib::parse_arp_rows(r, &t, nullptr);
        check_arp(t);
    }
    {
        TextLineReader<256> r(text);
        cmdlib::parse_pppoe_rows(r, &t, "br0");
        check_arp(t);
        TextLineReader<256> ports(text);
        cmdlib::apply_switch_ports(ports, &t);
        check_arp(t);
    }
    {
        TextLineReader<256> r(text);
        cmdlib::parse_wlan_stations(r, &t);
        check_arp(t);
    }
    ARPTable scan;
    memset(&scan, 0, sizeof scan);
    for (int order = 0; order < 2; ++order) {
        TextLineReader<256> r(text);
        cmdlib::merge_pair_lines(r, order, &scan, 3);
        check_arp(scan);
        // compact: exactly the first count slots are occupied
        for (unsigned i = 0; i < ARP_TABLE_SIZE; ++i)
            if (cmdlib::arp_slot_occupied(scan.table[i]) != (i < scan.count)) __builtin_trap();
    }
    {
        AllHostsInfo hosts;
        memset(&hosts, 0, sizeof hosts);
        TextLineReader<512> r(text);
        cmdlib::read_lease_hosts(r, 1000, &hosts);
        cmdlib::merge_hosts_with_scan(&hosts, &scan);
        if (hosts.count < 0 || hosts.count > ALL_HOSTS_MAX) __builtin_trap();
        for (int i = 0; i < hosts.count; ++i) {
            const OneHost &h = hosts.host[i];
            check_text(h.mac);
            check_text(h.ip);
            check_text(h.host_name);
            if (h.leases < 0) __builtin_trap();
        }
    }
    return 0;
}
