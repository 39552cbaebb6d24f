// Interface and address helpers: route, if_inet6, /proc/net/dev and
// resolver readers on fixture text, plus the pure address arithmetic.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/route_parse.h"
#include "cmdlib/network.h"

using cmdlib::TextLineReader;

namespace {

const std::string kRouteHeader =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
const std::string kDefault = "wwan0\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n";
const std::string kLanRoute = "br0\t0001A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";

std::string wan_from(const std::string &text) {
    TextLineReader<256> r(text);
    char out[64] = "untouched";
    if (!cmdlib::wan_name_from_route(r, out, sizeof out)) return "<none>";
    return out;
}

TEST(WanRoute, OnlyAWellFormedFirstRouteLineCounts) {
    const std::string h = kRouteHeader;
    const struct {
        std::string text, want;
    } cases[] = {
        {h + kDefault + kLanRoute, "wwan0"},
        {h + kLanRoute + kDefault, "<none>"},  // default present but second: callers fall back
        {h, "<none>"},
        {"", "<none>"},
        {h + "eth1 00000000 0101A8C0\n", "<none>"},  // no tab
        {h + "eth1\t0000000\n", "<none>"},           // seven zeros only
        {h + "eth1\t00000000", "eth1"},              // no newline is fine
        {h + "\t00000000\t0\n", ""},                 // empty name stays empty
        // a device name longer than the 64-byte buffer is cut, not overrun
        {h + std::string(100, 'x') + "\t00000000\t0\n", std::string(63, 'x')},
        // a header longer than one 255-byte read: its tail is taken as the
        // "first route" and yields nothing
        {std::string(300, 'H') + "\neth1\t00000000\t0\n", "<none>"},
    };
    for (const auto &c : cases) EXPECT_EQ(wan_from(c.text), c.want) << c.text;
}

TEST(WanRoute, DefaultGatewayOfTheWan) {
    uint32_t gw = 0;
    EXPECT_TRUE(cmdlib::wan_default_gateway("usb0\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000",
                                            "usb0", &gw));
    EXPECT_EQ(gw, inet_addr("192.168.1.1"));
    // destination not zero, gateway zero, another device, bad hex, too few fields
    for (const char *line : {"usb0\t0001A8C0\t0101A8C0\t0003", "usb0\t00000000\t00000000\t0001",
                             "eth1\t00000000\t0101A8C0\t0003", "usb0\tzz\t0101A8C0", "usb0"})
        EXPECT_FALSE(cmdlib::wan_default_gateway(line, "usb0", &gw)) << line;
}

TEST(NetDev, NamesOnlyInterfaceLines) {
    const char *eth = "  eth0: 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
    // a header line names nothing
    EXPECT_FALSE(cmdlib::netdev_line_names("Inter-|   Receive  |  Transmit\n", "Inter-"));
    EXPECT_TRUE(cmdlib::netdev_line_names(eth, "eth0"));
    EXPECT_FALSE(cmdlib::netdev_line_names(eth, "eth"));
    EXPECT_FALSE(cmdlib::netdev_line_names("  ppp0: 1 2\n", "ppp0"));  // too few fields
}

TEST(IfInet6, ParsesAndSelectsByDeviceAndScope) {
    const std::string text =
        "fe800000000000000000000000000001 02 40 20 80     usb0\n"
        "zz010db8000000000000000000000001 02 40 00 80     usb0\n"  // bad hex: skipped
        "20010db8000000000000000000000042 02 40 00 80     usb0\n"
        "20010db8000000000000000000000099 03 40 00 80      br0\n"
        "short line\n";
    // first and last byte of the address found, or "none"
    auto find = [&](const char *dev, int scope) -> std::string {
        TextLineReader<256> r(text);
        unsigned char a[16];
        if (!cmdlib::find_if_inet6(r, dev, scope, a)) return "none";
        char out[8];
        snprintf(out, sizeof out, "%02x..%02x", a[0], a[15]);
        return out;
    };
    EXPECT_EQ(find("usb0", cmdlib::kScopeGlobal), "20..42");
    EXPECT_EQ(find("usb0", cmdlib::kScopeLink), "fe..01");
    EXPECT_EQ(find("br0", cmdlib::kScopeLink), "none");
    EXPECT_EQ(find("usb", cmdlib::kScopeGlobal), "none");  // a name prefix is not the device
    cmdlib::Inet6Entry e;
    // a device name longer than 20 characters is cut by the conversion
    ASSERT_TRUE(cmdlib::parse_if_inet6_line(
        "20010db8000000000000000000000001 02 40 00 80 " + std::string(40, 'd'), &e));
    EXPECT_EQ(std::string(e.dev), std::string(20, 'd'));
}

TEST(Resolver, PacksNameserversWithSpareByte) {
    const std::string text =
        "# generated\n"
        "  nameserver 8.8.8.8   \n"
        "\n"
        "nameserver\t2001:4860::8888\n"
        "nameserver\n"
        "search lan\n"
        "nameserver 1.1.1.1\n";
    char buffer[128];
    memset(buffer, 'x', sizeof buffer);
    char *argv[8] = {};
    TextLineReader<256> r(text);
    ASSERT_EQ(cmdlib::pack_nameservers(r, buffer, argv, true, false), 2);
    EXPECT_EQ(argv[0], buffer);
    EXPECT_STREQ(argv[0], "8.8.8.8");
    EXPECT_EQ(argv[1], buffer + strlen("8.8.8.8") + 2);  // NUL and one spare byte
    EXPECT_STREQ(argv[1], "1.1.1.1");

    TextLineReader<256> r6(text);
    ASSERT_EQ(cmdlib::pack_nameservers(r6, buffer, argv, false, true), 1);
    EXPECT_STREQ(argv[0], "2001:4860::8888");
    TextLineReader<256> both(text);
    EXPECT_EQ(cmdlib::pack_nameservers(both, buffer, argv, true, true), 3);
}

TEST(Resolver, GetDnsLineSelection) {
    EXPECT_TRUE(cmdlib::dns_line_wanted("nameserver 8.8.8.8\n", true));
    EXPECT_FALSE(cmdlib::dns_line_wanted("nameserver 8.8.8.8\n", false));
    EXPECT_TRUE(cmdlib::dns_line_wanted("  Nameserver fe80::1\n", false));
    EXPECT_FALSE(cmdlib::dns_line_wanted("search a.b.c.d\n", true));  // not an n-line
    EXPECT_FALSE(cmdlib::dns_line_wanted("", false));
    // the dot count decides the family, whatever else the line says
    EXPECT_TRUE(cmdlib::dns_line_wanted("nameserver 1.2.3.4 # a.b\n", false));
}

TEST(AddressText, NetmaskBitCount) {
    char m32[] = "255.255.255.255", m0[] = "0.0.0.0", gap[] = "255.255.0.255", bad[] = "not-a-mask";
    EXPECT_EQ(util_get_netmask_bit_value_1_count(m32), 32);
    EXPECT_EQ(util_get_netmask_bit_value_1_count(m0), 0);
    EXPECT_EQ(util_get_netmask_bit_value_1_count(gap), 16);  // stops at the first zero bit
    EXPECT_EQ(util_get_netmask_bit_value_1_count(bad), -1);
    EXPECT_EQ(util_get_netmask_bit_value_1_count(nullptr), -1);
}

std::string prefix(const char *addr, int len, int mask) {
    char out[80];
    char src[64];
    snprintf(src, sizeof src, "%s", addr);
    if (util_network_get_ipv6_prefix_ext(src, len, mask, out, sizeof out) != 0) return "<error>";
    return out;
}

TEST(AddressText, Ipv6PrefixMaskingKeepsItsBitOrder) {
    EXPECT_EQ(prefix("2001:db8:1:2:3:4:5:6", 64, 1), "2001:db8:1:2::/64");
    // byte 7 is 0xff: the low nibble survives, the high nibble is cleared
    EXPECT_EQ(prefix("2001:db8:1:ff:3:4:5:6", 60, 1), "2001:db8:1:f::/60");
    EXPECT_EQ(prefix("2001:db8:1:ff:3:4:5:6", 0, 1), "::/0");
    EXPECT_EQ(prefix("2001:db8:1:ff:3:4:5:6", 128, 1), "2001:db8:1:ff:3:4:5:6/128");
    EXPECT_EQ(prefix("2001:db8:1:ff:3:4:5:6", 200, 1), "2001:db8:1:ff:3:4:5:6/200");
    EXPECT_EQ(prefix("2001:db8:1:ff:3:4:5:6", -5, 1), "::/-5");
    EXPECT_EQ(prefix("2001:0db8:0000:0000:0000:0000:0000:0001", 64, 0), "2001:db8::1");
    EXPECT_EQ(prefix("2001:db8::zz", 64, 1), "<error>");
    char out[8];
    char src[] = "2001:db8:1:2:3:4:5:6";
    ASSERT_EQ(util_network_get_ipv6_prefix_ext(src, 64, 1, out, sizeof out), 0);
    EXPECT_STREQ(out, "2001:db");  // cut to the destination size
    EXPECT_EQ(util_network_get_ipv6_prefix_ext(src, 64, 1, nullptr, 8), -1);
    EXPECT_EQ(util_network_get_simplified_ipv6_addr(src, out, 0), -1);
}

TEST(AddressText, Segments) {
    char m24[] = "255.255.255.0";
    char seg[16];
    in_addr_t n = 0;
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, &n, seg, sizeof seg), 1);
    EXPECT_STREQ(seg, "192.168.1.0");
    EXPECT_EQ(n, inet_addr("192.168.1.0"));
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, &n, nullptr, 0), 1);
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, &n, nullptr, 16), 0);
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, nullptr, seg, 4), 0);  // too small
    EXPECT_EQ(util_get_network_segment4("192.168.1", m24, &n, seg, sizeof seg), 0);
    EXPECT_EQ(util_get_network_segment4(nullptr, m24, &n, seg, sizeof seg), 0);

    const struct {
        const char *ip1, *mask1, *ip2, *mask2;
        int want;
    } relations[] = {
        {"192.168.1.5", "255.255.255.0", "192.168.1.9", "255.255.0.0", 2},
        {"192.168.1.5", "255.255.255.0", "192.168.1.9", "255.255.255.0", 1},
        {"10.0.0.1", "255.0.0.0", "11.0.0.1", "255.0.0.0", 3},
        // under the narrower of two different masks they differ
        {"10.1.0.1", "255.255.0.0", "10.2.0.1", "255.0.0.0", 2},
        {"10.1.0.1", "255.255.0.0", "10.2.0.1", "255.255.0.0", 3},
        {"10.0.0.1", "255.0.0.0", "bogus", "255.0.0.0", 0},
        {"10.0.0.1", nullptr, "10.0.0.2", "255.0.0.0", 0},
    };
    for (const auto &r : relations)
        EXPECT_EQ(util_get_2_network_segment_relations4(r.ip1, r.mask1, r.ip2, r.mask2), r.want)
            << r.ip1 << " " << r.ip2;
}

TEST(AddressText, SmallHelpers) {
    char v4[] = "nameserver 1.2.3.4", v6[] = "nameserver ::1", four[] = "a.b.c.d.e";
    EXPECT_EQ(isipv4Str(v4), 1);
    EXPECT_EQ(isipv4Str(v6), 0);
    EXPECT_EQ(isipv4Str(four), 0);
    EXPECT_EQ(isipv4Str(nullptr), 0);

    unsigned char mac[6] = {0x00, 0x1a, 0xff, 0x0b, 0xc0, 0x01};
    char text[18];
    util_network_get_mac_string(mac, text, sizeof text);
    EXPECT_STREQ(text, "00:1A:FF:0B:C0:01");
    char small[6];
    util_network_get_mac_string(mac, small, sizeof small);
    EXPECT_STREQ(small, "00:1A");

    // the two port tables are inverses on ports 2..5
    for (int label = 1; label <= 4; ++label) {
        int port = util_get_cpe_phy_port_from_label_number(label);
        ASSERT_GE(port, 2);
        ASSERT_LE(port, 5);
        EXPECT_EQ(atoi(ethernet_port_map_table[port]), label);
    }
    EXPECT_EQ(util_get_cpe_phy_port_from_label_number(8), -1);
    EXPECT_EQ(util_get_cpe_phy_port_from_label_number(-1), -1);
}

TEST(Checksum, IpChecksumOfNothingIsAllOnes) {
    // the sum itself is the configuration store's carry-less one
    const unsigned char odd[] = {0x12, 0x34, 0x56};
    EXPECT_EQ(ntohs(ip_checksum(odd, sizeof odd)), static_cast<uint16_t>(~(0x1234 + 0x5600)));
    EXPECT_EQ(ntohs(ip_checksum(nullptr, 10)), 0xFFFF);
    EXPECT_EQ(ntohs(ip_checksum(odd, -1)), 0xFFFF);
}

}  // namespace
