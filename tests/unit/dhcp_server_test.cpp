// DHCP server: the udhcpd configuration built from configuration pairs and
// the dnsmasq lease reader, both on golden cases (tests/golden/):
// udhcpd/<case>.in (KEY=VALUE lines; WAN_* stand for the dial tool's WAN
// files; \n and \r for those bytes) gives the configuration in .out, and
// leases/<case>.in read at time 400 gives the client list in .out.
#include <gtest/gtest.h>
#include <string.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/internal/dhcp_server.h"
#include "common/golden.h"

namespace {

std::string compose_from(const std::string &settings) {
    std::vector<ConfigKeyValuePair> pairs;
    std::map<std::string, std::string> wan;
    std::istringstream in(settings);
    for (std::string line; std::getline(in, line);) {
        size_t eq = line.find('=');
        if (line.empty() || line[0] == '#' || eq == std::string::npos) continue;
        std::string key = line.substr(0, eq), value = line.substr(eq + 1);
        for (size_t at; (at = value.find("\\n")) != value.npos || (at = value.find("\\r")) != value.npos;)
            value.replace(at, 2, value[at + 1] == 'n' ? "\n" : "\r");
        if (key.rfind("WAN_", 0) == 0) {
            wan[key] = value;
            continue;
        }
        pairs.emplace_back();
        snprintf(pairs.back().key, sizeof pairs.back().key, "%s", key.c_str());
        snprintf(pairs.back().value, sizeof pairs.back().value, "%s", value.c_str());
    }
    cmdlib::UdhcpdSettings s = cmdlib::udhcpd_settings_from(pairs.data(), static_cast<int>(pairs.size()));
    s.wan_gateway = wan["WAN_GATEWAY"], s.wan_ip = wan["WAN_IP"];
    s.wan_dns1 = wan["WAN_DNS1"], s.wan_dns2 = wan["WAN_DNS2"];
    char out[cmdlib::kUdhcpdConfSize];
    return std::string(out, cmdlib::compose_udhcpd_conf(s, out, sizeof out));
}

TEST(UdhcpdConf, Golden) { golden::check("udhcpd", compose_from); }

// Each lease as "hostname ip mac expires", one a line.
std::string leases_text(const std::string &text, uint32_t now, int max_record, int *count = nullptr) {
    std::vector<DHCPClientInfo> list(64);
    cmdlib::TextLineReader<512> r(text);
    int n = cmdlib::read_dhcp_leases(r, now, list.data(), max_record);
    if (count) *count = n;
    std::string out;
    for (int i = 0; i < n; ++i)
        out += std::string(list[i].hostname) + " " + list[i].ip + " " + list[i].mac + " " +
               std::to_string(list[i].expires) + "\n";
    return out;
}

// Expired, due now, garbage expiry, too few fields, a wrapping expiry,
// blanks, tabs and CRLF, an over-wide name, a line cut at 511 bytes whose
// tail looks like a lease, one of exactly 511, no final line feed.
TEST(DnsmasqLeases, Golden) {
    golden::check("leases", [](const std::string &text) { return leases_text(text, 400, 0); });
}

TEST(DnsmasqLeases, RecordLimit) {
    std::string five;
    for (int i = 1; i <= 5; ++i) five += "1000 02:00:00:00:00:0" + std::to_string(i) + " 10.0.0." + std::to_string(i) + " h *\n";
    int n = -1;
    for (int max : {2, 0, 9, -1}) {
        leases_text(five, 0, max, &n);
        EXPECT_EQ(n, max == 2 ? 2 : max < 0 ? 0 : 5) << max;
    }
    cmdlib::TextLineReader<512> r(five);
    EXPECT_EQ(cmdlib::read_dhcp_leases(r, 0, nullptr, 0), 0);
}

}  // namespace
