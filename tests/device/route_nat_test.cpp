// Route and rule checkers on the device's real kernel: listings from the
// real route -n, iptables -S, iptables -t nat -S and ip6tables -S, the fix
// passes really installing and deleting, and the kernel's listing
// afterwards as the proof.
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "device.h"

namespace {

using devtest::file_exists;
using devtest::sh;
using devtest::sh_out;

// Zeroes the counts, lists the kernel's state with `listing` into a file
// and runs the check; the counts afterwards, the check's result last.
template <class Checker, class Check>
std::vector<int> counts(const std::string &listing, std::vector<Checker> &checkers, Check check) {
    for (auto &c : checkers) c.match_count = 0;
    EXPECT_EQ(sh(listing + " >/tmp/listing"), 0) << listing;
    std::vector<int> out;
    out.reserve(checkers.size() + 1);
    int result = check("/tmp/listing", checkers.data(), static_cast<int>(checkers.size()));
    for (const auto &c : checkers) out.push_back(c.match_count);
    out.push_back(result);
    return out;
}

RouteEntryChecker route(const char *dest, const char *gw, const char *mask, const char *dev,
                        unsigned bits) {
    RouteEntryChecker c{};
    snprintf(c.dest_IP, sizeof c.dest_IP, "%s", dest);
    snprintf(c.gateway, sizeof c.gateway, "%s", gw);
    snprintf(c.netmask, sizeof c.netmask, "%s", mask);
    snprintf(c.interface, sizeof c.interface, "%s", dev);
    c.check_content = bits;
    return c;
}

constexpr unsigned kDest = ROUTE_CHECK_DEST_IP, kGw = ROUTE_CHECK_GATEWAY,
                   kMask = ROUTE_CHECK_NETMASK, kDev = ROUTE_CHECK_INTERFACE;

class RouteNatTest : public DeviceTest {};

TEST_F(RouteNatTest, RoutesAreFoundThenTheMissingOnesInstalled) {
    ASSERT_EQ(devtest::ip("route add 10.64.0.77 dev usb0"), 0);
    ASSERT_EQ(devtest::ip("route del default"), 0);
    std::vector<RouteEntryChecker> c = {
        route("0.0.0.0", "10.64.0.1", "0.0.0.0", "usb0", kDest | kGw | kDev),
        route("192.168.1.0", "", "255.255.255.0", "br0", kDest | kMask | kDev),
        route("10.64.0.77", "", "255.255.255.255", "usb0", kDest | kMask | kDev),
        route("10.64.0.99", "10.64.0.1", "255.255.255.255", "usb0", kDest | kMask | kDev),
        route("172.16.0.0", "10.64.0.1", "255.255.0.0", "br0", kDest | kMask | kDev),
        route("172.17.0.0", "", "255.255.0.0", "br0", 0),
        route("172.18.0.0", "", "255.255.0.0", "br0;touch /tmp/pwned", kDest | kDev),
    };
    EXPECT_EQ(counts("route -n", c, util_route_check_if_route_exist),
              (std::vector<int>{0, 1, 1, 0, 0, 0, 0, 0}));
    util_route_fix_route_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(counts("route -n", c, util_route_check_if_route_exist),
              (std::vector<int>{1, 1, 1, 1, 1, 0, 0, 0}));
    // host and network routes are bound to the device alone
    EXPECT_EQ(sh_out("ip -4 route show 10.64.0.99"), "10.64.0.99 dev usb0 scope link \n");
    EXPECT_EQ(sh_out("ip -4 route show 172.16.0.0/16"), "172.16.0.0/16 dev br0 scope link \n");
    EXPECT_EQ(sh_out("ip -4 route show 172.17.0.0/16"), "");
    EXPECT_FALSE(file_exists("/tmp/pwned"));
    for (const char *r : {"10.64.0.77", "10.64.0.99", "172.16.0.0/16"})
        devtest::ip(std::string("route del ") + r);
}

NATEntryChecker rule(const char *chain,
                     std::initializer_list<std::pair<unsigned, const char *>> fields,
                     unsigned flags = 0, int append = 1) {
    NATEntryChecker c{};
    snprintf(c.chain, sizeof c.chain, "%s", chain);
    c.check_content = NAT_CHECK_CHAIN;
    for (const auto &[bit, value] : fields) {
        char *f = bit == NAT_CHECK_IN_INTERFACE       ? c.in_interface
                  : bit == NAT_CHECK_OUT_INTERFACE    ? c.out_interface
                  : bit == NAT_CHECK_PROTOCOL         ? c.protocol
                  : bit == NAT_CHECK_DESTINATION_PORT ? c.destination_port
                  : bit == NAT_CHECK_SOURCE           ? c.source
                  : bit == NAT_CHECK_NAT              ? c.nat
                  : bit == NAT_CHECK_DEFAULT_POLICY   ? c.default_policy
                  : bit == NAT_CHECK_JUMP_ACTION      ? c.jump_action
                                                      : c.icmp_type;
        strcpy(f, value);
        c.check_content |= bit;
    }
    c.match_flags = flags;
    c.append_item = append;
    return c;
}

constexpr unsigned kIn = NAT_CHECK_IN_INTERFACE, kOut = NAT_CHECK_OUT_INTERFACE,
                   kProto = NAT_CHECK_PROTOCOL, kDport = NAT_CHECK_DESTINATION_PORT,
                   kSrc = NAT_CHECK_SOURCE, kNat = NAT_CHECK_NAT,
                   kPolicy = NAT_CHECK_DEFAULT_POLICY, kJump = NAT_CHECK_JUMP_ACTION,
                   kIcmp = NAT_CHECK_ICMP_TYPE;

std::vector<std::string> rules(const std::string &listing) {
    std::vector<std::string> out;
    std::string text = sh_out(listing);
    for (size_t at = 0, nl; (nl = text.find('\n', at)) != std::string::npos; at = nl + 1)
        if (text.compare(at, 3, "-A ") == 0) out.push_back(text.substr(at, nl - at));
    return out;
}

TEST_F(RouteNatTest, FilterRulesAddedInsertedAndDeletedOncePerPass) {
    const char *reject = "iptables -A INPUT -p tcp --dport 23 -j REJECT --reject-with tcp-reset";
    ASSERT_EQ(sh(reject), 0);
    ASSERT_EQ(sh(reject), 0);
    ASSERT_EQ(sh("iptables -A FORWARD -j ACCEPT"), 0);
    std::vector<NATEntryChecker> c = {
        rule("INPUT", {{kPolicy, "accept"}}),
        rule("INPUT", {{kIn, "br0"}, {kProto, "tcp"}, {kDport, "22"}, {kJump, "ACCEPT"}}),
        rule("FORWARD", {{kSrc, "192.168.1.0/24"}, {kJump, "DROP"}}, 0, 0),
        rule("INPUT", {{kProto, "tcp"}, {kDport, "23"}, {kJump, "REJECT"}, {kNat, "tcp-reset"}},
             NAT_MATCH_DELETE),
        rule("INPUT", {{kProto, "icmp"}, {kIcmp, "8"}, {kJump, "DROP"}}),
        rule("INPUT", {{kIn, "br0;touch /tmp/pwned"}, {kJump, "ACCEPT"}}),
    };
    EXPECT_EQ(counts("iptables -S", c, util_nat_check_if_nat_exist),
              (std::vector<int>{1, 0, 0, 2, 0, 0, 0}));
    util_nat_fix_nat_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(rules("iptables -S"),
              (std::vector<std::string>{
                  "-A INPUT -p tcp -m tcp --dport 23 -j REJECT --reject-with tcp-reset",
                  "-A INPUT -i br0 -p tcp -m tcp --dport 22 -j ACCEPT",
                  "-A INPUT -p icmp -m icmp --icmp-type 8 -j DROP",
                  "-A FORWARD -s 192.168.1.0/24 -j DROP", "-A FORWARD -j ACCEPT"}));
    EXPECT_EQ(counts("iptables -S", c, util_nat_check_if_nat_exist),
              (std::vector<int>{1, 1, 1, 1, 1, 0, 0}));
    EXPECT_FALSE(file_exists("/tmp/pwned"));
    sh("iptables -F");
}

TEST_F(RouteNatTest, NatTableRulesFlushTheConnectionsAndIpv6RulesUseIp6tables) {
    ASSERT_EQ(
        sh("conntrack -I -p udp -s 192.168.1.100 -d 10.64.0.1 --sport 1000 --dport 53 --reply-src "
           "10.64.0.1 "
           "--reply-dst 10.64.0.2 --reply-port-src 53 --reply-port-dst 1000 -t 300 2>/dev/null"),
        0);
    ASSERT_EQ(sh_out("conntrack -L 2>/dev/null | grep -c dport=53"), "1\n");
    unsigned natt = NAT_MATCH_NAT_TABLE;
    std::vector<NATEntryChecker> c = {
        rule("PREROUTING",
             {{kIn, "usb0"},
              {kProto, "tcp"},
              {kDport, "8080"},
              {kJump, "DNAT"},
              {kNat, "192.168.1.100:80"}},
             natt),
        rule("POSTROUTING",
             {{kOut, "usb0"}, {kSrc, "192.168.1.0/24"}, {kJump, "SNAT"}, {kNat, "10.64.0.2"}},
             natt),
        rule("PREROUTING",
             {{kIn, "br0"}, {kProto, "udp"}, {kDport, "53"}, {kJump, "REDIRECT"}, {kNat, "5353"}},
             natt, 0),
    };
    EXPECT_EQ(counts("iptables -t nat -S", c, util_nat_check_if_nat_exist),
              (std::vector<int>{0, 0, 0, 0}));
    util_nat_fix_nat_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(rules("iptables -t nat -S"),
              (std::vector<std::string>{
                  "-A PREROUTING -i br0 -p udp -m udp --dport 53 -j REDIRECT --to-ports 5353",
                  "-A PREROUTING -i usb0 -p tcp -m tcp --dport 8080 -j DNAT --to-destination "
                  "192.168.1.100:80",
                  "-A POSTROUTING -s 192.168.1.0/24 -o usb0 -j SNAT --to-source 10.64.0.2"}));
    EXPECT_EQ(counts("iptables -t nat -S", c, util_nat_check_if_nat_exist),
              (std::vector<int>{1, 1, 1, 0}));
    EXPECT_EQ(sh_out("conntrack -L 2>/dev/null | grep -c dport=53"), "0\n");

    // ip6tables lists the protocol as ipv6-icmp: the checker that finds the
    // rule again selects the type, not the protocol
    std::vector<NATEntryChecker> v6 = {
        rule("INPUT", {{kProto, "icmpv6"}, {kIcmp, "128"}, {kJump, "ACCEPT"}}, NAT_MATCH_IPV6)};
    EXPECT_EQ(counts("ip6tables -S", v6, util_nat_check_if_nat_exist), (std::vector<int>{0, 0}));
    util_nat_fix_nat_entry(v6.data(), 1);
    EXPECT_EQ(
        rules("ip6tables -S"),
        (std::vector<std::string>{"-A INPUT -p ipv6-icmp -m icmp6 --icmpv6-type 128 -j ACCEPT"}));
    v6[0].check_content &= ~kProto;
    EXPECT_EQ(counts("ip6tables -S", v6, util_nat_check_if_nat_exist), (std::vector<int>{1, 0}));
    // a listing of fewer than three lines is a failed one
    EXPECT_EQ(counts("ip6tables -S OUTPUT", v6, util_nat_check_if_nat_exist),
              (std::vector<int>{0, -1}));
    sh("iptables -t nat -F; ip6tables -F");
}

}  // namespace
