// The DHCP server family's pure halves: the udhcpd configuration built from
// settings, and the dnsmasq lease reader.  The exported functions in
// cmdlib_dhcp.cpp bind the fixed paths, read the configuration pairs and
// the WAN files, and run the server.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/cmdlib_ip_passthrough.h"

namespace cmdlib {

// What udhcpd.conf is made of.  Texts are views into the caller's pairs and
// buffers.
struct UdhcpdSettings {
    bool passthrough = false;    // IP pass-through: the WAN address goes to one LAN host
    bool server_enabled = true;  // normal mode only
    bool dns_auto = true;
    std::string_view lan_ip, lan_netmask, pool_begin, pool_end, lease_time;
    std::string_view dns1, dns2;         // configured servers (manual DNS)
    std::string_view passthrough_mac;
    // The WAN side as the dial tool wrote it (pass-through mode only).
    std::string_view wan_gateway, wan_ip, wan_dns1, wan_dns2;
};

// The settings among the configuration pairs read: mode, switches and the
// LAN keys.  The WAN fields stay empty: the caller reads them in
// pass-through mode.
inline UdhcpdSettings udhcpd_settings_from(const ConfigKeyValuePair *pairs, int count) {
    auto value = [&](const char *key) -> std::string_view {
        return util_config_get_field_value(pairs, count, key);
    };
    UdhcpdSettings s;
    s.passthrough = util_ip_passthrough_enabled(pairs, count) != 0;
    s.server_enabled = util_dhcp_server_enabled(pairs, count) != 0;
    s.dns_auto = util_dhcp_get_dns_auto(pairs, count) != 0;
    s.lan_ip = value("AP_IPADDR");
    s.lan_netmask = value("AP_NETMASK");
    s.pool_begin = value("QX_DHCP_IP_BEGIN");
    s.pool_end = value("QX_DHCP_IP_END");
    s.lease_time = value("QX_DHCP_EXPIRE_TIME");
    s.dns1 = value("QX_DNS_PRIMARY");
    s.dns2 = value("QX_DNS_SECONDARY");
    s.passthrough_mac = value("QX_IP_PASS_THROUGH_MAC");
    return s;
}

// The bridge udhcpd serves and the files it is told to use.
inline constexpr char kUdhcpdInterface[] = "br0";
inline constexpr char kUdhcpdPidFile[] = "/var/run/udhcpd.pid";
inline constexpr char kUdhcpdLeaseDir[] = "/var/lib/misc";
inline constexpr char kUdhcpdLeaseFile[] = "/var/lib/misc/udhcpd.leases";
// A pass-through lease is short: the host notices a new WAN address soon.
inline constexpr char kPassthroughLease[] = "120";

// Room for the generated lines: twelve lines of a keyword and one value of
// at most 95 characters (a configuration value) or 63 (a WAN file), the
// static lease line with two values, and the fixed lines: under 1,600.
inline constexpr size_t kUdhcpdConfSize = 2048;

namespace detail {
// Appends "<keyword><value>\n"; the value counts up to its first line
// break, so a setting can never add a line of its own.
inline void conf_line(char *out, size_t size, size_t *len, std::string_view keyword,
                      std::string_view value = {}, std::string_view value2 = {}) {
    auto one_line = [](std::string_view v) { return v.substr(0, v.find_first_of("\r\n")); };
    *len = append_bounded(out, size, keyword);
    *len = append_bounded(out, size, one_line(value));
    if (!value2.empty()) {
        *len = append_bounded(out, size, " ");
        *len = append_bounded(out, size, one_line(value2));
    }
    *len = append_bounded(out, size, "\n");
}
}  // namespace detail

// The configuration's lines (all but the host entries, which the caller
// appends as they are).  A disabled server in normal mode keeps only the
// first three lines.  Returns the length written (out holds kUdhcpdConfSize
// bytes).
inline size_t compose_udhcpd_conf(const UdhcpdSettings &s, char *out, size_t size) {
    if (!out || size == 0) return 0;
    out[0] = '\0';
    size_t len = 0;
    auto line = [&](std::string_view keyword, std::string_view v = {}, std::string_view v2 = {}) {
        detail::conf_line(out, size, &len, keyword, v, v2);
    };
    line("interface ", kUdhcpdInterface);
    line("pidfile ", kUdhcpdPidFile);
    line("lease_file ", kUdhcpdLeaseFile);
    if (s.passthrough) {
        line("option router ", s.wan_gateway);
        line("option subnet ", "255.255.255.255");
        line("start ", s.wan_ip);
        line("end ", s.wan_ip);
        std::string_view d1 = s.dns_auto ? s.wan_dns1 : s.dns1;
        std::string_view d2 = s.dns_auto ? s.wan_dns2 : s.dns2;
        if (!d1.empty()) line("option dns ", d1);
        if (!d2.empty()) line("option dns ", d2);
        line("option lease ", kPassthroughLease);
        if (!s.passthrough_mac.empty()) line("static_lease ", s.passthrough_mac, s.wan_ip);
    } else {
        if (!s.server_enabled) return len;
        line("option router ", s.lan_ip);
        line("option subnet ", s.lan_netmask);
        line("start ", s.pool_begin);
        line("end ", s.pool_end);
        if (s.dns_auto) {
            line("option dns ", s.lan_ip);  // the router answers DNS itself
        } else {
            if (!s.dns1.empty()) line("option dns ", s.dns1);
            if (!s.dns2.empty()) line("option dns ", s.dns2);
        }
        line("option lease ", s.lease_time);
    }
    line("remaining\tyes");
    line("auto_time\t2");
    return len;
}

// ---- dnsmasq leases ----------------------------------------------------------

// A lease line is read 511 bytes at a time.
inline constexpr size_t kLeaseLineMax = 511;

// One lease line: "<expiry> <mac> <ip> <host name> <client id>", cut at
// runs of blanks and tabs as util_get_all_args cuts it (only the first four
// fields matter); fewer than 4 is no lease.  The line's end is not part of
// its last field.  expires becomes the seconds left from now (0 once
// passed), in unsigned 32-bit arithmetic as the lease file's clock is.
[[nodiscard]] inline bool parse_lease_line(std::string_view line, uint32_t now, DHCPClientInfo *out) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    // The splitter inlined for the two blanks: a lease file is thousands of
    // lines read in a polling loop.
    std::string_view w[4];
    size_t n = 0, i = 0;
    while (n < 4) {
        while (i < line.size() && is_blank(line[i])) ++i;
        if (i == line.size()) break;
        size_t start = i;
        while (i < line.size() && !is_blank(line[i])) ++i;
        w[n++] = line.substr(start, i - start);
    }
    if (n < 4) return false;
    char expiry_text[kLeaseLineMax + 1];  // strtoul needs the whole word, terminated
    copy_bounded(expiry_text, sizeof expiry_text, w[0]);
    uint32_t expiry = static_cast<uint32_t>(strtoul(expiry_text, nullptr, 10));
    out->expires = expiry < now ? 0 : expiry - now;
    copy_bounded(out->mac, sizeof out->mac, w[1]);
    copy_bounded(out->ip, sizeof out->ip, w[2]);
    copy_bounded(out->hostname, sizeof out->hostname, w[3]);
    return true;
}

// The leases of a reader of 512-byte pieces (LineReader<512> or
// TextLineReader<512>): at most max_record (0: no limit) into list.  The
// rest of a line longer than 511 bytes is not read as a line of its own.
// Returns the number filled.
template <class Reader>
int read_dhcp_leases(Reader &r, uint32_t now, DHCPClientInfo *list, int max_record) {
    if (!list || max_record < 0) return 0;
    int n = 0;
    bool continued = false;  // the next piece is the tail of a cut line
    std::string_view piece;
    while (r.next(&piece)) {
        bool tail = continued;
        continued = piece.size() == kLeaseLineMax && piece.back() != '\n';
        if (tail) continue;
        if (max_record != 0 && n == max_record) break;
        if (parse_lease_line(piece, now, &list[n])) ++n;
    }
    return n;
}

}  // namespace cmdlib
