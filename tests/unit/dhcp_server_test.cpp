// DHCP server: the udhcpd configuration built from configuration pairs and
// the dnsmasq lease reader, both on golden files (tests/unit/golden/):
// udhcpd/<case>.settings (KEY=VALUE lines; WAN_* stand for the dial tool's
// WAN files; \n and \r for those bytes) gives udhcpd/<case>.conf, and
// leases/mixed.leases read at time 400 gives leases/mixed.expected.
#include <dirent.h>
#include <gtest/gtest.h>
#include <string.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/internal/dhcp_server.h"

namespace {

std::string golden_dir() {
    std::string dir = __FILE__;
    return dir.erase(dir.rfind('/')) + "/golden/";
}

std::string read_text(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string compose_from(const std::string &settings_file) {
    std::vector<ConfigKeyValuePair> pairs;
    std::map<std::string, std::string> wan;
    std::istringstream in(read_text(settings_file));
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

TEST(UdhcpdConf, EachCaseMatchesItsGoldenFile) {
    std::string dir = golden_dir() + "udhcpd/";
    DIR *d = opendir(dir.c_str());
    ASSERT_NE(d, nullptr) << dir;
    int cases = 0;
    while (dirent *e = readdir(d)) {
        std::string name = e->d_name;
        if (name.size() < 9 || name.compare(name.size() - 9, 9, ".settings") != 0) continue;
        std::string base = dir + name.substr(0, name.size() - 9);
        EXPECT_EQ(compose_from(base + ".settings"), read_text(base + ".conf")) << name;
        ++cases;
    }
    closedir(d);
    EXPECT_EQ(cases, 6);
}

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

TEST(DnsmasqLeases, MixedFileMatchesItsGoldenList) {
    // Expired, due now, garbage expiry, too few fields, a wrapping expiry,
    // blanks, tabs and CRLF, an over-wide name, a line cut at 511 bytes
    // whose tail looks like a lease, one of exactly 511, no final line feed.
    EXPECT_EQ(leases_text(read_text(golden_dir() + "leases/mixed.leases"), 400, 0),
              read_text(golden_dir() + "leases/mixed.expected"));
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
