// Interface and address helpers: the route, /proc/net/dev and resolver
// line readers and the address arithmetic are a table of calls
// (tests/golden/route_calls); if_inet6 and the resolver packing are
// checked here on fixture text.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/route_parse.h"
#include "cmdlib/network.h"
#include "common/golden.h"

using cmdlib::TextLineReader;
using golden::Args;
using golden::show;

namespace {

TEST(RouteCalls, Golden) {
    using namespace cmdlib;
    golden::check("route_calls", golden::calls({
        {"wan_route", [](Args &a) {
             TextLineReader<256> r(a[0]);
             char out[64] = "untouched";
             return wan_name_from_route(r, out, sizeof out) ? show(out) : "none";
         }},
        {"gateway", [](Args &a) {
             uint32_t gw = 0;
             return wan_default_gateway(a[0], a[1], &gw) ? std::string(inet_ntoa(in_addr{gw})) : "none";
         }},
        {"netdev", [](Args &a) { return show(netdev_line_names(a[0], a[1].c_str())); }},
        {"dns_line", [](Args &a) { return show(dns_line_wanted(a[0], a[1] == "v4")); }},
        {"netmask", [](Args &a) { return show(util_get_netmask_bit_value_1_count(a[0].w())); }},
        {"prefix", [](Args &a) {
             char out[80] = "untouched";
             return show(util_network_get_ipv6_prefix_ext(a[0].w(), a[1].i(), a[2].i(), out, a[3].i()), out);
         }},
        {"segment", [](Args &a) {
             char seg[16] = "untouched";
             in_addr_t n = 0;
             int rc = util_get_network_segment4(a[0].c(), a[1].w(), &n, seg, a[2].i());
             return show(rc, seg) + " " + inet_ntoa(in_addr{n});
         }},
        {"relation", [](Args &a) {
             return show(util_get_2_network_segment_relations4(a[0].c(), a[1].c(), a[2].c(), a[3].c()));
         }},
        {"isipv4", [](Args &a) { return show(isipv4Str(a[0].w())); }},
        {"mac", [](Args &a) {
             unsigned char mac[6];
             for (int i = 0; i < 6; ++i) mac[i] = static_cast<unsigned char>(std::stoi(a[0].substr(2 * i, 2), nullptr, 16));
             char text[18] = "untouched";
             util_network_get_mac_string(mac, text, a[1].i());
             return std::string(text);
         }},
    }));
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

TEST(AddressText, PrefixNullsAndPortTables) {
    char out[8], src[] = "2001:db8:1:2:3:4:5:6";
    EXPECT_EQ(util_network_get_ipv6_prefix_ext(src, 64, 1, nullptr, 8), -1);
    EXPECT_EQ(util_network_get_simplified_ipv6_addr(src, out, 0), -1);
    char m24[] = "255.255.255.0";
    in_addr_t n = 0;
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, &n, nullptr, 0), 1);  // the value alone
    EXPECT_EQ(util_get_network_segment4("192.168.1.77", m24, &n, nullptr, 16), 0);
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
