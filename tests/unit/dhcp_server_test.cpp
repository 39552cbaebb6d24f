// DHCP server: the udhcpd configuration built from the configuration pairs
// (checked against golden files) and the dnsmasq lease reader on text.
#include <gtest/gtest.h>
#include <string.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/internal/dhcp_server.h"

namespace {

using Settings = std::vector<std::pair<const char *, const char *>>;

std::string golden(const std::string &name) {
    std::string dir = __FILE__;
    dir.erase(dir.rfind('/'));
    std::ifstream in(dir + "/golden/udhcpd/" + name + ".conf");
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string compose(const Settings &settings, const char *gw = "", const char *ip = "", const char *dns1 = "",
                    const char *dns2 = "") {
    std::vector<ConfigKeyValuePair> pairs(settings.size());
    for (size_t i = 0; i < settings.size(); ++i) {
        snprintf(pairs[i].key, sizeof pairs[i].key, "%s", settings[i].first);
        snprintf(pairs[i].value, sizeof pairs[i].value, "%s", settings[i].second);
    }
    cmdlib::UdhcpdSettings s = cmdlib::udhcpd_settings_from(pairs.data(), static_cast<int>(pairs.size()));
    s.wan_gateway = gw;
    s.wan_ip = ip;
    s.wan_dns1 = dns1;
    s.wan_dns2 = dns2;
    char out[cmdlib::kUdhcpdConfSize];
    size_t len = cmdlib::compose_udhcpd_conf(s, out, sizeof out);
    return std::string(out, len);
}

const Settings kLan = {{"AP_IPADDR", "192.168.1.1"},
                       {"AP_NETMASK", "255.255.255.0"},
                       {"QX_DHCP_IP_BEGIN", "192.168.1.100"},
                       {"QX_DHCP_IP_END", "192.168.1.200"}};

Settings with(Settings base, const Settings &more) {
    base.insert(base.end(), more.begin(), more.end());
    return base;
}

TEST(UdhcpdConf, EachModeMatchesItsGoldenFile) {
    const struct {
        const char *golden;
        Settings settings;
        const char *wan[4];  // gateway, address, DNS 1, DNS 2
    } cases[] = {
        {"normal_manual_dns",
         with(kLan, {{"QX_DHCP_EXPIRE_TIME", "86400"}, {"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", "8.8.8.8"},
                     {"QX_DNS_SECONDARY", "9.9.9.9"}}),
         {}},
        // Automatic DNS names the router itself, whatever servers are set;
        // an absent lease time stays an empty word.
        {"normal_auto_dns", with(kLan, {{"QX_DNS_PRIMARY", "8.8.8.8"}}), {}},
        {"disabled", with(kLan, {{"QX_ENABLE_DHCP_SERVER", "no"}}), {}},
        // Pass-through ignores the switch and the lease time; automatic DNS
        // comes from the WAN files, an empty one gives no line.
        {"passthrough_auto_dns",
         with(kLan, {{"QX_IP_PASS_THROUGH_ENABLE", "yes"}, {"QX_IP_PASS_THROUGH_MAC", "00:11:22:33:44:55"},
                     {"QX_ENABLE_DHCP_SERVER", "no"}, {"QX_DHCP_EXPIRE_TIME", "86400"}}),
         {"10.64.0.1", "10.64.0.2", "10.64.0.53", ""}},
        {"passthrough_manual_dns_no_mac",
         {{"QX_IP_PASS_THROUGH_ENABLE", "yes"}, {"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_SECONDARY", "9.9.9.9"}},
         {"10.64.0.1", "10.64.0.2", "10.64.0.53", "10.64.0.54"}},
        // A value cannot add a line of its own.
        {"line_breaks_cut",
         with(kLan, {{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", "8.8.8.8\nstatic_lease 66:66:66:66:66:66 1.2.3.4"},
                     {"QX_DHCP_EXPIRE_TIME", "3600\r\n"}}),
         {}},
    };
    for (const auto &c : cases) {
        std::string want = golden(c.golden);
        ASSERT_FALSE(want.empty()) << c.golden;
        EXPECT_EQ(compose(c.settings, c.wan[0] ? c.wan[0] : "", c.wan[1] ? c.wan[1] : "",
                          c.wan[2] ? c.wan[2] : "", c.wan[3] ? c.wan[3] : ""),
                  want)
            << c.golden;
    }
}

TEST(UdhcpdConf, SwitchValuesAreExact) {
    // Only the exact "no" disables; only the exact "yes" enables pass-through.
    for (const char *on : {"No", "", "off", "0"})
        EXPECT_GT(compose(with(kLan, {{"QX_ENABLE_DHCP_SERVER", on}})).size(), golden("disabled").size()) << on;
    EXPECT_EQ(compose(with(kLan, {{"QX_IP_PASS_THROUGH_ENABLE", "Yes"}})).find("255.255.255.255"),
              std::string::npos);
}

// ---- dnsmasq leases ----------------------------------------------------------------

struct Lease {
    std::string hostname, ip, mac;
    unsigned expires;
    bool operator==(const Lease &o) const {
        return hostname == o.hostname && ip == o.ip && mac == o.mac && expires == o.expires;
    }
};

void PrintTo(const Lease &l, std::ostream *os) { *os << l.hostname << "/" << l.ip << "/" << l.mac << "/" << l.expires; }

std::vector<Lease> read_leases(const std::string &text, uint32_t now, int max_record = 0, int *count = nullptr) {
    std::vector<DHCPClientInfo> list(64);
    memset(list.data(), 0x5a, list.size() * sizeof list[0]);
    cmdlib::TextLineReader<512> r(text);
    int n = cmdlib::read_dhcp_leases(r, now, list.data(), max_record);
    if (count) *count = n;
    std::vector<Lease> out;
    out.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) out.push_back({list[i].hostname, list[i].ip, list[i].mac, list[i].expires});
    return out;
}

TEST(DnsmasqLeases, FieldsTimeLeftAndBadLines) {
    const std::string long_name(60, 'h');
    const std::string text =
        "1000 3c:22:fb:10:20:30 192.168.1.101 laptop-anna 01:3c:22:fb:10:20:30\n"
        "300\ta4:83:e7:44:55:66\t192.168.1.102\t*\t*\n"        // expired
        "400 02:00:00:00:00:03 192.168.1.103 due-now *\n"      // expires this second
        "soon 02:00:00:00:00:04 192.168.1.104 no-number *\n"   // garbage expiry reads 0
        "\n"
        "500 02:00:00:00:00:05 192.168.1.105\n"                 // no host name
        "500 02:00:00:00:00:06\n"
        "99999999999 02:00:00:00:00:07 192.168.1.107 wraps *\n"  // 32-bit like the clock
        "  700  02:00:00:00:00:08   192.168.1.108  four\r\n"      // four fields, CRLF
        "800 02:00:00:00:00:09 192.168.1.109 " + long_name + " *\n" +
        "900 02:00:00:00:00:0a 192.168.1.110 last";             // no final line feed
    const std::vector<Lease> want = {
        {"laptop-anna", "192.168.1.101", "3c:22:fb:10:20:30", 600},
        {"*", "192.168.1.102", "a4:83:e7:44:55:66", 0},
        {"due-now", "192.168.1.103", "02:00:00:00:00:03", 0},
        {"no-number", "192.168.1.104", "02:00:00:00:00:04", 0},
        {"wraps", "192.168.1.107", "02:00:00:00:00:07", static_cast<uint32_t>(99999999999ULL) - 400},
        {"four", "192.168.1.108", "02:00:00:00:00:08", 300},
        {long_name.substr(0, 47), "192.168.1.109", "02:00:00:00:00:09", 400},
        {"last", "192.168.1.110", "02:00:00:00:00:0a", 500},
    };
    EXPECT_EQ(read_leases(text, 400), want);
}

TEST(DnsmasqLeases, OverlongLineCountsOnlyItsFirst511Bytes) {
    // The tail of a cut line looks like a lease of its own; it is not one.
    std::string head = "1000 02:00:00:00:00:01 192.168.1.101 long ";
    std::string line = head + std::string(511 - head.size(), 'x') + " 2000 02:00:00:00:00:99 10.9.9.9 tail *\n";
    std::string text = line + "1000 02:00:00:00:00:02 192.168.1.102 next *\n";
    std::vector<Lease> got = read_leases(text, 0);
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].ip, "192.168.1.101");
    EXPECT_EQ(got[0].hostname, "long");
    EXPECT_EQ(got[1].hostname, "next");
    // A line of exactly 511 bytes and its line feed is whole.
    std::string exact = head + std::string(510 - head.size(), 'y') + "\n";
    ASSERT_EQ(exact.size(), 511u);
    EXPECT_EQ(read_leases(exact + "1000 02:00:00:00:00:03 192.168.1.103 after *\n", 0).size(), 2u);
}

TEST(DnsmasqLeases, RecordLimit) {
    std::string five;
    for (int i = 1; i <= 5; ++i) five += "1000 02:00:00:00:00:0" + std::to_string(i) + " 192.168.1.10" + std::to_string(i) + " h *\n";
    EXPECT_EQ(read_leases(five, 0, 2).size(), 2u);
    EXPECT_EQ(read_leases(five, 0, 0).size(), 5u);  // 0: no limit
    EXPECT_EQ(read_leases(five, 0, 9).size(), 5u);
    int n = -1;
    read_leases(five, 0, -1, &n);
    EXPECT_EQ(n, 0);
    cmdlib::TextLineReader<512> r(five);
    EXPECT_EQ(cmdlib::read_dhcp_leases(r, 0, nullptr, 0), 0);
}

}  // namespace
