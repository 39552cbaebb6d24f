// The DHCP server family over arbitrary bytes: the dnsmasq lease reader
// (limited and unlimited runs agree, every text terminated inside its
// width, never more leases than pieces) and the udhcpd configuration built
// from hostile setting values (every line one of the configuration's own).
#include <stdint.h>
#include <string.h>

#include <string_view>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/dhcp_server.h"

namespace {

template <size_t N> void check_text(const char (&field)[N]) {
    if (!memchr(field, '\0', N)) __builtin_trap();
}

constexpr std::string_view kLineStarts[] = {"interface ", "pidfile ", "lease_file ", "option router ",
                                            "option subnet ", "start ", "end ", "option dns ",
                                            "option lease ", "static_lease ", "remaining\t", "auto_time\t"};

void check_conf(std::string_view text) {
    while (!text.empty()) {
        size_t nl = text.find('\n');
        if (nl == std::string_view::npos) __builtin_trap();  // every line ends
        std::string_view line = text.substr(0, nl);
        bool known = false;
        for (std::string_view start : kLineStarts) known = known || line.substr(0, start.size()) == start;
        if (!known || line.find('\r') != std::string_view::npos) __builtin_trap();
        text.remove_prefix(nl + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    size_t pieces = 0;
    {
        cmdlib::TextLineReader<512> r(text);
        for (std::string_view p; r.next(&p);) ++pieces;
    }
    uint32_t now = size >= 4 ? static_cast<uint32_t>(data[0]) << 24 | data[1] << 16 | data[2] << 8 | data[3] : 0;
    std::vector<DHCPClientInfo> all(pieces + 1), some(4);
    cmdlib::TextLineReader<512> r(text);
    int n = cmdlib::read_dhcp_leases(r, now, all.data(), 0);
    if (n < 0 || static_cast<size_t>(n) > pieces) __builtin_trap();
    for (int i = 0; i < n; ++i) {
        check_text(all[i].hostname);
        check_text(all[i].ip);
        check_text(all[i].mac);
    }
    cmdlib::TextLineReader<512> again(text);
    int m = cmdlib::read_dhcp_leases(again, now, some.data(), 3);
    if (m != (n < 3 ? n : 3) || memcmp(some.data(), all.data(), sizeof some[0] * static_cast<size_t>(m)) != 0)
        __builtin_trap();

    // Setting values cut from the input at NUL bytes; flags from its size.
    std::string_view v[12];
    std::string_view rest = text;
    for (auto &value : v) {
        size_t nul = rest.find('\0');
        value = rest.substr(0, nul);
        rest = nul == std::string_view::npos ? std::string_view() : rest.substr(nul + 1);
    }
    cmdlib::UdhcpdSettings s;
    s.passthrough = size & 1, s.server_enabled = size & 2, s.dns_auto = size & 4;
    s.lan_ip = v[0], s.lan_netmask = v[1], s.pool_begin = v[2], s.pool_end = v[3], s.lease_time = v[4];
    s.dns1 = v[5], s.dns2 = v[6], s.passthrough_mac = v[7];
    s.wan_gateway = v[8], s.wan_ip = v[9], s.wan_dns1 = v[10], s.wan_dns2 = v[11];
    char conf[cmdlib::kUdhcpdConfSize];
    size_t len = cmdlib::compose_udhcpd_conf(s, conf, sizeof conf);
    if (len >= sizeof conf || conf[len] != '\0') __builtin_trap();
    // Configuration values are at most 95 characters: then nothing is cut.
    bool short_values = true;
    for (const auto &value : v) short_values = short_values && value.size() <= 95;
    if (short_values) check_conf(std::string_view(conf, len));
    return 0;
}
