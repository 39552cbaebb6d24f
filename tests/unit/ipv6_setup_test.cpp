// IPv6 set-up: the modified EUI-64 and the resolver rewrite on text; and the network-device services of libbase on the
// loopback device every namespace has.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "base/internal/line_reader.h"
#include "base/libbase.h"
#include "cmdlib/internal/ipv6_setup.h"
#include "cmdlib/network.h"

namespace {

TEST(Eui64, FlipsTheUniversalLocalBitAndInsertsFffe) {
    MacAddr mac = {{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}, {0, 0}};
    EUI64 eui;
    ASSERT_EQ(util_calc_eui64(&mac, &eui), 0);
    const unsigned char want[8] = {0x02, 0x11, 0x22, 0xff, 0xfe, 0x33, 0x44, 0x55};
    EXPECT_EQ(memcmp(eui.value, want, 8), 0);
    mac.value[0] = 0x02;  // the bit flips back as well
    ASSERT_EQ(util_calc_eui64(&mac, &eui), 0);
    EXPECT_EQ(eui.value[0], 0x00);
    EXPECT_EQ(util_calc_eui64(&mac, nullptr), -1);
    EXPECT_EQ(util_calc_eui64(nullptr, &eui), -1);
}

std::string rewrite(const std::string &old_file, const char *s1, const char *s2) {
    std::string out;
    cmdlib::TextLineReader<256> r(old_file);
    cmdlib::rewrite_resolver(r, cmdlib::one_line(s1), cmdlib::one_line(s2),
                             [&](std::string_view bytes) { out.append(bytes); });
    return out;
}

TEST(ResolverRewrite, KeepsLinesWithoutColonAndAppendsServers) {
    const struct {
        std::string old_file;
        const char *s1, *s2;
        std::string want;
    } cases[] = {
        // options with ':' go as IPv6 servers do (the device test has the usual file)
        {"search lan\noptions timeout:2\n", "2001:db8::53", "2001:db8::54",
         "search lan\nnameserver 2001:db8::53\nnameserver 2001:db8::54\n"},
        {"", "2001:db8::53", "", "nameserver 2001:db8::53\n"},
        // the old last line without its line feed still ends before ours
        {"nameserver 10.0.0.1", "2001:db8::53", nullptr, "nameserver 10.0.0.1\nnameserver 2001:db8::53\n"},
        // a server text is one line at most; an empty one gets no line
        {"", "2001:db8::53\nsearch evil", "", "nameserver 2001:db8::53\n"},
        {"", nullptr, nullptr, ""},
    };
    for (const auto &c : cases) EXPECT_EQ(rewrite(c.old_file, c.s1, c.s2), c.want) << c.old_file;

    // Lines are judged 255 bytes at a time: a long comment keeps its
    // pieces without ':' and loses the one with it.
    std::string piece1(255, 'a'), piece2 = std::string(100, 'b') + ":" + "\n";
    EXPECT_EQ(rewrite(piece1 + piece2 + "nameserver 10.0.0.1\n", "", ""), piece1 + "\nnameserver 10.0.0.1\n");
}

TEST(NetdevServices, LoopbackExistsAndHasCounters) {
    EXPECT_EQ(cmd_netdev_exist("lo"), 1);
    for (const char *absent : {"no-such-dev0", "a-name-longer-than-ifnamsiz", ""}) EXPECT_EQ(cmd_netdev_exist(absent), 0);
    char rx[UTIL_NETDEV_COUNTER_SIZE] = "", tx_packets[UTIL_NETDEV_COUNTER_SIZE] = "keep";
    ASSERT_EQ(cmd_netdev_flowstat_ex("lo", rx, nullptr, nullptr, tx_packets), 0);
    EXPECT_GT(strlen(rx), 0u);
    EXPECT_EQ(strspn(rx, "0123456789"), strlen(rx));
    EXPECT_EQ(strspn(tx_packets, "0123456789"), strlen(tx_packets));
    char untouched[UTIL_NETDEV_COUNTER_SIZE] = "keep";
    EXPECT_EQ(cmd_netdev_flowstat_ex("no-such-dev0", untouched, untouched, untouched, untouched), -1);
    EXPECT_STREQ(untouched, "keep");
}

}  // namespace
