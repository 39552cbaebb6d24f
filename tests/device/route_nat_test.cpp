// Route and rule checkers on the device's real kernel: listings from the
// real route -n, iptables -S, iptables -t nat -S and ip6tables -S, the fix
// passes really installing and deleting, and the kernel's listing
// afterwards as the proof.
#include <string>
#include <vector>

#include "checker_spec.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "device.h"

namespace {

using devtest::file_exists;
using devtest::sh;
using devtest::sh_out;

// Checkers from their text (tests/checker_spec.h), zeroed counts, the
// kernel's state listed with `listing` into a file, the check run: the
// counts afterwards, the check's result last.
template <class Checker, class Check>
std::vector<int> counts(const std::string &listing, std::vector<Checker> &checkers, Check check) {
    for (auto &c : checkers) c.match_count = 0;
    EXPECT_EQ(sh(listing + " >/tmp/listing"), 0) << listing;
    int result = check("/tmp/listing", checkers.data(), static_cast<int>(checkers.size()));
    std::vector<int> out;
    out.reserve(checkers.size() + 1);
    for (const auto &c : checkers) out.push_back(c.match_count);
    out.push_back(result);
    return out;
}

template <class Checker, class Parse>
std::vector<Checker> checkers(const std::vector<std::string> &specs, Parse parse) {
    std::vector<Checker> out;
    out.reserve(specs.size());
    for (const auto &s : specs) out.push_back(parse(s));
    return out;
}

// The "-A" lines of a listing.
std::vector<std::string> rules(const std::string &listing) {
    std::vector<std::string> out;
    std::string text = sh_out(listing);
    for (size_t at = 0, nl; (nl = text.find('\n', at)) != std::string::npos; at = nl + 1)
        if (text.compare(at, 3, "-A ") == 0) out.push_back(text.substr(at, nl - at));
    return out;
}

using Counts = std::vector<int>;

class RouteNatTest : public DeviceTest {};

TEST_F(RouteNatTest, RoutesAreFoundThenTheMissingOnesInstalled) {
    ASSERT_EQ(devtest::ip("route add 10.64.0.77 dev usb0"), 0);
    ASSERT_EQ(devtest::ip("route del default"), 0);
    // the gateways of the host and network routes are set but take no part
    auto c = checkers<RouteEntryChecker>(
        {"dest=0.0.0.0 gw=10.64.0.1 dev=usb0", "dest=192.168.1.0 mask=255.255.255.0 dev=br0",
         "dest=10.64.0.77 mask=255.255.255.255 dev=usb0",
         "dest=10.64.0.99 ~gw=10.64.0.1 mask=255.255.255.255 dev=usb0",
         "dest=172.16.0.0 ~gw=10.64.0.1 mask=255.255.0.0 dev=br0",
         "dest=172.17.0.0 mask=255.255.0.0 dev=br0 off",
         "dest=172.18.0.0 ~mask=255.255.0.0 dev=br0;touch${IFS}/tmp/pwned"},
        checker_spec::route);
    EXPECT_EQ(counts("route -n", c, util_route_check_if_route_exist),
              (Counts{0, 1, 1, 0, 0, 0, 0, 0}));
    util_route_fix_route_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(counts("route -n", c, util_route_check_if_route_exist),
              (Counts{1, 1, 1, 1, 1, 0, 0, 0}));
    // host and network routes are bound to the device alone
    EXPECT_EQ(sh_out("ip -4 route show 10.64.0.99"), "10.64.0.99 dev usb0 scope link \n");
    EXPECT_EQ(sh_out("ip -4 route show 172.16.0.0/16"), "172.16.0.0/16 dev br0 scope link \n");
    EXPECT_EQ(sh_out("ip -4 route show 172.17.0.0/16"), "");
    EXPECT_FALSE(file_exists("/tmp/pwned"));
    for (const char *r : {"10.64.0.77", "10.64.0.99", "172.16.0.0/16"})
        devtest::ip(std::string("route del ") + r);
}

TEST_F(RouteNatTest, FilterRulesAddedInsertedAndDeletedOncePerPass) {
    const char *reject = "iptables -A INPUT -p tcp --dport 23 -j REJECT --reject-with tcp-reset";
    ASSERT_EQ(sh(reject), 0);
    ASSERT_EQ(sh(reject), 0);
    ASSERT_EQ(sh("iptables -A FORWARD -j ACCEPT"), 0);
    auto c = checkers<NATEntryChecker>(
        {"chain=INPUT policy=accept", "chain=INPUT in=br0 proto=tcp dport=22 jump=ACCEPT app",
         "chain=FORWARD src=192.168.1.0/24 jump=DROP",
         "chain=INPUT proto=tcp dport=23 jump=REJECT nat=tcp-reset del",
         "chain=INPUT proto=icmp icmp=8 jump=DROP app",
         "chain=INPUT in=br0;touch${IFS}/tmp/pwned jump=ACCEPT app"},
        checker_spec::rule);
    EXPECT_EQ(counts("iptables -S", c, util_nat_check_if_nat_exist), (Counts{1, 0, 0, 2, 0, 0, 0}));
    util_nat_fix_nat_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(rules("iptables -S"),
              (std::vector<std::string>{
                  "-A INPUT -p tcp -m tcp --dport 23 -j REJECT --reject-with tcp-reset",
                  "-A INPUT -i br0 -p tcp -m tcp --dport 22 -j ACCEPT",
                  "-A INPUT -p icmp -m icmp --icmp-type 8 -j DROP",
                  "-A FORWARD -s 192.168.1.0/24 -j DROP", "-A FORWARD -j ACCEPT"}));
    EXPECT_EQ(counts("iptables -S", c, util_nat_check_if_nat_exist), (Counts{1, 1, 1, 1, 1, 0, 0}));
    EXPECT_FALSE(file_exists("/tmp/pwned"));
    sh("iptables -F");
}

TEST_F(RouteNatTest, NatTableRulesFlushTheConnectionsAndIpv6RulesUseIp6tables) {
    ASSERT_EQ(sh("conntrack -I -p udp -s 192.168.1.100 -d 10.64.0.1 --sport 1000 --dport 53 "
                 "--reply-src 10.64.0.1 --reply-dst 10.64.0.2 --reply-port-src 53 "
                 "--reply-port-dst 1000 -t 300 2>/dev/null"),
              0);
    ASSERT_EQ(sh_out("conntrack -L 2>/dev/null | grep -c dport=53"), "1\n");
    auto c = checkers<NATEntryChecker>(
        {"chain=PREROUTING in=usb0 proto=tcp dport=8080 jump=DNAT nat=192.168.1.100:80 natt app",
         "chain=POSTROUTING out=usb0 src=192.168.1.0/24 jump=SNAT nat=10.64.0.2 natt app",
         "chain=PREROUTING in=br0 proto=udp dport=53 jump=REDIRECT nat=5353 natt"},
        checker_spec::rule);
    EXPECT_EQ(counts("iptables -t nat -S", c, util_nat_check_if_nat_exist), (Counts{0, 0, 0, 0}));
    util_nat_fix_nat_entry(c.data(), static_cast<int>(c.size()));
    EXPECT_EQ(rules("iptables -t nat -S"),
              (std::vector<std::string>{
                  "-A PREROUTING -i br0 -p udp -m udp --dport 53 -j REDIRECT --to-ports 5353",
                  "-A PREROUTING -i usb0 -p tcp -m tcp --dport 8080 -j DNAT --to-destination "
                  "192.168.1.100:80",
                  "-A POSTROUTING -s 192.168.1.0/24 -o usb0 -j SNAT --to-source 10.64.0.2"}));
    EXPECT_EQ(counts("iptables -t nat -S", c, util_nat_check_if_nat_exist), (Counts{1, 1, 1, 0}));
    EXPECT_EQ(sh_out("conntrack -L 2>/dev/null | grep -c dport=53"), "0\n");

    // ip6tables lists the protocol as ipv6-icmp: the checker that finds the
    // rule again selects the type, not the protocol
    auto v6 = checkers<NATEntryChecker>({"chain=INPUT proto=icmpv6 icmp=128 jump=ACCEPT v6 app"},
                                        checker_spec::rule);
    EXPECT_EQ(counts("ip6tables -S", v6, util_nat_check_if_nat_exist), (Counts{0, 0}));
    util_nat_fix_nat_entry(v6.data(), 1);
    EXPECT_EQ(
        rules("ip6tables -S"),
        (std::vector<std::string>{"-A INPUT -p ipv6-icmp -m icmp6 --icmpv6-type 128 -j ACCEPT"}));
    v6[0].check_content &= ~NAT_CHECK_PROTOCOL;
    EXPECT_EQ(counts("ip6tables -S", v6, util_nat_check_if_nat_exist), (Counts{1, 0}));
    // a listing of fewer than three lines is a failed one
    EXPECT_EQ(counts("ip6tables -S OUTPUT", v6, util_nat_check_if_nat_exist), (Counts{0, -1}));
    sh("iptables -t nat -F; ip6tables -F");
}

}  // namespace
