// Readers of the tables of attached devices: the IPv6 neighbour listing,
// the kernel ARP and PPPoE tables, the switch's MAC table, the Wi-Fi station
// list, two-column scan results and the DHCP lease file, plus the merge of
// leases with a scan.  All capacities are the records' own (40 ARP rows,
// 10 neighbours, 80 hosts); no input can make them write further.
#pragma once

#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/network.h"

namespace cmdlib {

// Copies a line into buf and cuts it into at most cap words at blanks and tabs.
inline int split_blank_words(std::string_view line, char *buf, size_t size, char **w, int cap) {
    copy_bounded(buf, size, line);
    return util_get_all_args(buf, ' ', '\t', w, cap);
}

[[nodiscard]] constexpr bool contains(std::string_view s, std::string_view what) {
    return s.find(what) != std::string_view::npos;
}

[[nodiscard]] constexpr bool is_neigh_word_end(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '/';
}

// Word starting at or after i (blanks and tabs skipped first); *end gets
// the index after it.
[[nodiscard]] constexpr std::string_view neigh_word(std::string_view s, size_t i, size_t *end) {
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    size_t j = i;
    while (j < s.size() && !is_neigh_word_end(s[j])) ++j;
    *end = j;
    return s.substr(i, j - i);
}

// One line of a saved "ip -6 neigh" listing; false when it is filtered out.
inline bool parse_neigh_line(std::string_view line, bool only_link_local, bool only_global,
                             Neighbour_T *n) {
    if (contains(line, "FAILED") || contains(line, "INCOMPLETE")) return false;
    bool link_local = contains(line, "fe80:");
    if ((only_link_local && !link_local) || (only_global && link_local)) return false;
    static constexpr struct {
        std::string_view word;
        int status;
    } kStates[] = {{"REACHABLE", 5}, {"STALE", 4}, {"DELAY", 3}, {"PROBE", 2}};
    n->status = 0;
    for (const auto &s : kStates) {
        if (contains(line, s.word)) {
            n->status = s.status;
            break;
        }
    }
    n->is_router = contains(line, "router") ? 1 : 0;
    size_t end = 0;
    copy_bounded(n->ipv6_addr, sizeof n->ipv6_addr, neigh_word(line, 0, &end));
    n->mac_addr[0] = '\0';
    size_t ll = line.find("lladdr", end);
    if (ll != std::string_view::npos)
        copy_bounded(n->mac_addr, sizeof n->mac_addr, neigh_word(line, ll + 6, &end));
    return true;
}

template <class Reader> void parse_neigh_listing(Reader &r, Neighbour_Info *info,
                                                 bool only_link_local, bool only_global) {
    info->neighbour_count = 0;
    std::string_view line;
    while (r.next(&line)) {
        Neighbour_T n;
        if (!parse_neigh_line(line, only_link_local, only_global, &n)) continue;
        info->neighbours[info->neighbour_count] = n;
        if (++info->neighbour_count >= NEIGHBOUR_MAX) break;
    }
}

// A device filter is active when the name is given and not empty.
[[nodiscard]] inline bool device_filtered_out(const char *dev, const char *wanted) {
    return wanted && wanted[0] && strcmp(dev, wanted) != 0;
}

// "/proc/net/arp": complete rows (non-zero flags) of the wanted device.
template <class Reader> void parse_arp_rows(Reader &r, ARPTable *t, const char *device) {
    memset(t, 0, sizeof *t);
    std::string_view line;
    if (!r.next(&line)) return;  // header
    while (r.next(&line)) {
        char buf[256];
        char *w[18];
        if (split_blank_words(line, buf, sizeof buf, w, 18) <= 5) continue;
        util_strip_blank_of_string_end(w[5]);
        if (device_filtered_out(w[5], device)) continue;
        // flags are written "0x%x"; the digits start after the prefix
        long flags = strlen(w[2]) > 2 ? strtol(w[2] + 2, nullptr, 16) : 0;
        if (flags == 0) continue;
        ARPTableEntry *e = &t->table[t->count];
        copy_bounded(e->ip, sizeof e->ip, w[0]);
        copy_bounded(e->mac, sizeof e->mac, w[3]);
        if (++t->count >= ARP_TABLE_SIZE) break;
    }
}

// "/proc/net/pppoe" as the firmware's kernel writes it: session id, peer
// MAC, device and, optionally, the user name.
template <class Reader> void parse_pppoe_rows(Reader &r, ARPTable *t, const char *device) {
    memset(t, 0, sizeof *t);
    std::string_view line;
    if (!r.next(&line)) return;  // header
    while (r.next(&line)) {
        char buf[256];
        char *w[18];
        int n = split_blank_words(line, buf, sizeof buf, w, 18);
        if (n <= 2) continue;
        util_strip_blank_of_string_end(w[2]);
        if (device_filtered_out(w[2], device)) continue;
        if (t->count >= ARP_TABLE_SIZE) break;
        ARPTableEntry *e = &t->table[t->count];
        copy_bounded(e->ip, sizeof e->ip, w[0]);
        copy_bounded(e->mac, sizeof e->mac, w[1]);
        if (n >= 4) {
            util_strip_blank_of_string_end(w[3]);
            util_remove_special_char(w[3], '"');
            util_remove_special_char(w[3], '\\');
            copy_bounded(e->user, 100, w[3]);  // user names are cut at 99 characters
        }
        if (++t->count >= ARP_TABLE_SIZE) break;
    }
}

// "/proc/phys26/addresstable" (MAC, physical port; no header): sets the port
// label of the first entry with that MAC.  A port number outside the map
// leaves the entry's port as it was.
template <class Reader> void apply_switch_ports(Reader &r, ARPTable *t) {
    unsigned rows = t->count < ARP_TABLE_SIZE ? t->count : ARP_TABLE_SIZE;
    std::string_view line;
    while (r.next(&line)) {
        char buf[256];
        char *w[18];
        if (split_blank_words(line, buf, sizeof buf, w, 18) < 2) continue;
        util_strip_blank_of_string_end(w[1]);
        for (unsigned i = 0; i < rows; ++i) {
            if (strcmp(t->table[i].mac, w[0]) != 0) continue;
            int port = atoi_sat(w[1]);
            if (port >= 0 && port < 8)
                copy_bounded(t->table[i].port, sizeof t->table[i].port,
                             ethernet_port_map_table[port]);
            break;
        }
    }
}

// "wlanconfig ath0 list sta" output: first word of each station line.
template <class Reader> void parse_wlan_stations(Reader &r, ARPTable *t) {
    memset(t, 0, sizeof *t);
    std::string_view line;
    if (!r.next(&line)) return;  // header
    while (r.next(&line) && t->count < ARP_TABLE_SIZE) {
        char buf[256];
        char *w[18];
        if (split_blank_words(line, buf, sizeof buf, w, 18) <= 2) continue;
        util_strip_blank_of_string_end(w[0]);
        copy_bounded(t->table[t->count].mac, sizeof t->table[0].mac, w[0]);
        ++t->count;
    }
}

[[nodiscard]] inline bool arp_slot_occupied(const ARPTableEntry &e) {
    return e.ip[0] != '\0' && e.mac[0] != '\0';
}

// Moves the occupied slots to the front in their order, clearing the slots
// they came from; count becomes the number of occupied slots.
inline void compact_arp_table(ARPTable *t) {
    unsigned w = 0;
    for (unsigned r = 0; r < ARP_TABLE_SIZE; ++r) {
        if (!arp_slot_occupied(t->table[r])) continue;
        if (r != w) {
            t->table[w] = t->table[r];
            memset(&t->table[r], 0, sizeof t->table[r]);
        }
        ++w;
    }
    t->count = w;
}

constexpr int kArpAdd = 1;
constexpr int kArpRemoveConflicts = 2;

// One accepted pair of a scan result (case-insensitive matching).
inline void merge_arp_pair(ARPTable *t, const char *ip, const char *mac, int action) {
    if (action & kArpRemoveConflicts) {
        for (auto &e : t->table) {
            bool same_ip = strcasecmp(e.ip, ip) == 0, same_mac = strcasecmp(e.mac, mac) == 0;
            if (same_ip != same_mac) memset(&e, 0, sizeof e);
        }
    }
    if (action & kArpAdd) {
        bool present = false;
        for (const auto &e : t->table)
            present = present || (strcasecmp(e.ip, ip) == 0 && strcasecmp(e.mac, mac) == 0);
        if (!present) {
            for (auto &e : t->table) {
                if (arp_slot_occupied(e)) continue;
                memset(&e, 0, sizeof e);
                copy_bounded(e.ip, sizeof e.ip, ip);
                copy_bounded(e.mac, sizeof e.mac, mac);
                break;
            }
        }
    }
    compact_arp_table(t);
}

// Two-column pair file (MAC IP when ip_first is 0, IP MAC when 1).
template <class Reader> void merge_pair_lines(Reader &r, int ip_first, ARPTable *t, int action) {
    if (ip_first != 0 && ip_first != 1) return;
    std::string_view line;
    while (r.next(&line)) {
        char buf[256];
        copy_bounded(buf, sizeof buf, line);
        util_strip_blank_of_string_end(buf);
        char *w[64];
        if (util_get_all_args(buf, ' ', '\t', w, 64) != 2) continue;
        const char *mac = w[ip_first], *ip = w[1 - ip_first];
        if (!*ip || !*mac || strlen(ip) >= sizeof t->table[0].ip ||
            strlen(mac) >= sizeof t->table[0].mac)
            continue;
        merge_arp_pair(t, ip, mac, action);
    }
}

// dnsmasq lease lines (expiry, MAC, IP, host name, ...) appended as online
// hosts with the seconds left relative to now (never negative).
template <class Reader> void read_lease_hosts(Reader &r, long long now, AllHostsInfo *h) {
    std::string_view line;
    while (r.next(&line)) {
        char buf[512];
        copy_bounded(buf, sizeof buf, line);
        util_strip_blank_of_string_end(buf);
        char *w[18];
        if (util_get_all_args_ext(buf, ' ', '\t', 1, w, 18) < 4) continue;
        if (h->count < 0) h->count = 0;
        if (h->count >= ALL_HOSTS_MAX) break;
        long long left = static_cast<long long>(atoi_sat(w[0])) - now;
        if (left < 0) left = 0;
        if (left > INT_MAX) left = INT_MAX;
        OneHost *o = &h->host[h->count++];
        memset(o, 0, sizeof *o);
        copy_bounded(o->mac, sizeof o->mac, w[1]);
        copy_bounded(o->ip, sizeof o->ip, w[2]);
        copy_bounded(o->host_name, sizeof o->host_name, w[3]);
        o->leases = static_cast<int>(left);
        o->addr_src = 0;
        o->stat = 1;
    }
}

// Joins the lease hosts with the scan rows: the first row that shares the
// IP or the MAC of a host settles it; unsettled hosts are offline; unused
// rows become hosts of their own.
inline void merge_hosts_with_scan(AllHostsInfo *h, ARPTable *scan) {
    unsigned rows = scan->count < ARP_TABLE_SIZE ? scan->count : ARP_TABLE_SIZE;
    int hosts = h->count < 0 ? 0 : (h->count > ALL_HOSTS_MAX ? ALL_HOSTS_MAX : h->count);
    for (int i = 0; i < hosts; ++i) {
        OneHost *o = &h->host[i];
        bool settled = false;
        for (unsigned j = 0; j < rows && !settled; ++j) {
            ARPTableEntry *e = &scan->table[j];
            bool same_ip = strcasecmp(o->ip, e->ip) == 0, same_mac = strcasecmp(o->mac, e->mac) == 0;
            if (!same_ip && !same_mac) continue;
            settled = true;
            e->already_used = 1;
            if (same_ip && same_mac) continue;
            copy_bounded(o->ip, sizeof o->ip, e->ip);
            copy_bounded(o->mac, sizeof o->mac, e->mac);
            if (!same_mac) o->host_name[0] = '\0';  // the address now belongs to another device
            o->leases = 0;
            o->addr_src = 1;
        }
        if (!settled) o->stat = 0;
    }
    for (unsigned j = 0; j < rows && hosts < ALL_HOSTS_MAX; ++j) {
        const ARPTableEntry *e = &scan->table[j];
        if (e->already_used) continue;
        OneHost *o = &h->host[hosts++];
        memset(o, 0, sizeof *o);
        copy_bounded(o->ip, sizeof o->ip, e->ip);
        copy_bounded(o->mac, sizeof o->mac, e->mac);
        o->addr_src = 1;
        o->stat = 1;
    }
    h->count = hosts;
}

}  // namespace cmdlib
