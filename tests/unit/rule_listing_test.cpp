// Route and rule checkers on listing text: the option scan of a rule line,
// the counting passes (first checker wins, bounds of lines and words), the
// fix commands as text, and the exported checks on files.
#include "cmdlib/internal/rule_listing.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"

using cmdlib::TextLineReader;

namespace {

// Names of the NAT fields in check-bit order, as the tables below write them.
const char *const kNames[cmdlib::kNatFieldCount] = {"chain", "in",  "proto",  "dest",
                                                    "dport", "nat", "policy", "out",
                                                    "jump",  "src", "sport",  "icmp"};

// A checker from "key=value ..." (each key selects its bit) and the flags
// v6, del, natt (nat table), app (append).
NATEntryChecker nat(const std::string &spec) {
    NATEntryChecker c{};
    std::string_view rest = spec, w;
    while (!(w = cmdlib::next_word(&rest)).empty()) {
        std::string_view key, value;
        if (!cmdlib::split_once(w, '=', &key, &value)) {
            c.match_flags |= w == "v6"     ? NAT_MATCH_IPV6
                             : w == "del"  ? NAT_MATCH_DELETE
                             : w == "natt" ? NAT_MATCH_NAT_TABLE
                                           : 0;
            c.append_item |= w == "app";
            continue;
        }
        for (int f = 0; f < cmdlib::kNatFieldCount; ++f)
            if (key == kNames[f]) {
                const cmdlib::RecordText t = cmdlib::kNatFieldText[f];
                cmdlib::copy_bounded(reinterpret_cast<char *>(&c) + t.offset, t.width, value);
                c.check_content |= 1u << f;
            }
    }
    return c;
}

std::string parsed(const std::string &line) {
    std::string_view words[cmdlib::kListingMaxWords];
    size_t n = cmdlib::split_words(line, cmdlib::kBlankOrEol, words, cmdlib::kListingMaxWords);
    cmdlib::NatRule rule;
    cmdlib::parse_nat_rule(words, n, &rule);
    std::string out;
    for (int f = 0; f < cmdlib::kNatFieldCount; ++f)
        if (rule.has(static_cast<cmdlib::NatField>(f)))
            out += (out.empty() ? "" : " ") + std::string(kNames[f]) + "=" +
                   std::string(rule.value[f]);
    return out;
}

TEST(NatRuleLine, OptionsAreTakenLeftToRight) {
    const struct {
        const char *line, *want;
    } cases[] = {
        {"-A PREROUTING -i usb0 -p tcp -m tcp --dport 8080 -j DNAT --to-destination 192.168.1.2:80",
         "chain=PREROUTING in=usb0 proto=tcp dport=8080 nat=192.168.1.2:80 jump=DNAT"},
        // a target argument counts only after its own target, compared exactly
        {"-A POSTROUTING -o usb0 -j SNAT --to-destination 1.2.3.4",
         "chain=POSTROUTING out=usb0 jump=SNAT"},
        {"-A X --to-source 1.1.1.1 -j SNAT", "chain=X jump=SNAT"},
        {"-A X -j dnat --to-destination 1.1.1.1", "chain=X jump=dnat"},
        {"-A X -j REDIRECT --to-ports 5353", "chain=X nat=5353 jump=REDIRECT"},
        {"-A INPUT -p tcp -j REJECT --reject-with tcp-reset",
         "chain=INPUT proto=tcp nat=tcp-reset jump=REJECT"},
        // an ignored target argument's value is scanned as a word
        {"-A X -j SNAT --to-ports -i lo", "chain=X in=lo jump=SNAT"},
        {"-P INPUT ACCEPT", "chain=INPUT policy=ACCEPT"},
        {"-P INPUT", ""},  // the policy needs both words
        {"-A INPUT -j", "chain=INPUT"},
        {"-A INPUT ! -i lo -s 10.0.0.0/8 --sport 1:1023 -d 10.1.1.1/32 -j DROP",
         "chain=INPUT in=lo dest=10.1.1.1/32 jump=DROP src=10.0.0.0/8 sport=1:1023"},
        {"-A INPUT -p icmp -m icmp --icmp-type 8 -j DROP",
         "chain=INPUT proto=icmp jump=DROP icmp=8"},
        {"-A INPUT -p ipv6-icmp -m icmp6 --icmpv6-type 128 -j ACCEPT",
         "chain=INPUT proto=ipv6-icmp jump=ACCEPT icmp=128"},
        {"-d -j ACCEPT", "dest=-j"},          // a value is taken whatever it looks like
        {"-A A -A B -s x", "chain=B src=x"},  // the last one stands
        {"-N MYCHAIN", ""},
    };
    for (const auto &c : cases) EXPECT_EQ(parsed(c.line), c.want) << c.line;
}

// Counts per checker over a listing; the pass's counting-line total last.
// The hashed lookup of the pass must count as the plain scan does.
std::string nat_counts(const std::string &listing, std::vector<NATEntryChecker> checkers) {
    std::vector<NATEntryChecker> plain = checkers;
    TextLineReader<256> r(listing), again(listing);
    int lines = cmdlib::count_nat_matches(r, checkers.data(), static_cast<int>(checkers.size()));
    std::string_view line, w[cmdlib::kListingMaxWords];
    cmdlib::NatRule rule;
    while (again.next(&line)) {
        size_t n = cmdlib::split_words(line, cmdlib::kBlankOrEol, w, cmdlib::kListingMaxWords);
        cmdlib::parse_nat_rule(w, n, &rule);
        if (n >= 2) cmdlib::count_nat_rule(rule, plain.data(), static_cast<int>(plain.size()));
    }
    std::string out;
    for (size_t i = 0; i < checkers.size(); ++i) {
        EXPECT_EQ(checkers[i].match_count, plain[i].match_count) << i;
        out += std::to_string(checkers[i].match_count) + " ";
    }
    return out + "/ " + std::to_string(lines);
}

TEST(NatCheck, FirstCheckerWinsAndEveryOptionMustBeThere) {
    const std::string listing =
        "-P INPUT ACCEPT\n"
        "-A PREROUTING -i usb0 -p tcp --dport 8080 -j DNAT --to-destination 192.168.1.2:80\n"
        "-A PREROUTING -i usb0 -p tcp --dport 8081 -j SNAT --to-destination 192.168.1.2:80\n"
        "\n   \nlonely\n"  // not counted: fewer than two words
        "-a input -J accept\n";
    EXPECT_EQ(
        nat_counts(listing,
                   {nat("chain=PREROUTING nat=192.168.1.2:80"), nat("chain=PREROUTING"), nat(""),
                    nat("chain=input policy=accept"), nat("chain=Input jump=ACCEPT")}),
        "1 1 0 1 0 / 4");
    // looked up by the same value: still the first in the array wins
    EXPECT_EQ(nat_counts(listing,
                         {nat("dport=8081 in=eth9"), nat("dport=8081"), nat("dport=8081 in=usb0")}),
              "0 1 0 / 4");
    // a checker selecting only unknown bits matches every counting line
    NATEntryChecker odd{};
    odd.check_content = 0x1000;
    EXPECT_EQ(nat_counts(listing, {odd}), "4 / 4");
}

TEST(NatCheck, LinesAreCutAtTheReadAndTheWordLimit) {
    std::string many = "-A INPUT";
    for (int i = 0; i < 62; ++i) many += " w";
    std::string long_line = "-A FORWARD -s " + std::string(250, 'a') + " -j DROP\n";
    // word 65 is not looked at; the 255-byte read ends before "-j DROP",
    // which comes back as a line of its own
    EXPECT_EQ(nat_counts(many + " -j DROP\n" + many + " -j\n" + long_line,
                         {nat("jump=DROP"), nat("chain=INPUT"), nat("chain=FORWARD")}),
              "1 2 1 / 4");
    // a field filled to its width without a terminator is compared on its width
    NATEntryChecker full = nat("");
    memcpy(full.chain, "ABCDEFGHIJKLMNOP", sizeof full.chain);
    full.check_content = NAT_CHECK_CHAIN;
    EXPECT_EQ(nat_counts("-A ABCDEFGHIJKLMNOP\n-A ABCDEFGHIJKLMNOPQ\n-A ABCDEFGHIJKLMNO\n", {full}),
              "1 / 3");
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

TEST(RouteCheck, EightWordLinesAndTheFirstMatchingChecker) {
    const std::string listing =
        "Kernel IP routing table\n"
        "Destination     Gateway         Genmask         Flags Metric Ref    Use Iface\n"
        "0.0.0.0         10.64.0.1       0.0.0.0         UG    0      0        0 usb0\n"
        "192.168.1.0     0.0.0.0         255.255.255.0   U     0      0        0 br0 extra words\n"
        "10.0.0.0 0.0.0.0 255.0.0.0 U 0 0 0\n"  // seven words: not considered
        "\n0.0.0.0\n";
    RouteEntryChecker c[] = {
        route("0.0.0.0", "10.64.0.1", "", "usb0",
              ROUTE_CHECK_DEST_IP | ROUTE_CHECK_GATEWAY | ROUTE_CHECK_INTERFACE),
        route("0.0.0.0", "", "", "", ROUTE_CHECK_DEST_IP),  // shadowed by the first
        route("192.168.1.0", "", "255.255.255.0", "BR0",
              ROUTE_CHECK_DEST_IP | ROUTE_CHECK_INTERFACE),
        route("192.168.1.0", "", "255.255.255.0", "BR0", ROUTE_CHECK_DEST_IP | ROUTE_CHECK_NETMASK),
        route("10.0.0.0", "", "", "", ROUTE_CHECK_DEST_IP),
        route("Destination", "", "", "Iface", ROUTE_CHECK_DEST_IP | ROUTE_CHECK_INTERFACE),
        route("0.0.0.0", "", "", "", 0),
    };
    TextLineReader<256> r(listing);
    cmdlib::count_route_matches(r, c, 7);
    const int want[] = {1, 0, 0, 1, 0, 1, 0};
    for (int i = 0; i < 7; ++i) EXPECT_EQ(c[i].match_count, want[i]) << i;
}

template <class Checker, class Build>
std::string command(const Checker &c, Build build) {
    cmdlib::CommandLine<256> cmd;
    return build(c, &cmd) ? cmd.c_str() : "<cut>";
}

TEST(FixCommands, RouteCommandsByKind) {
    auto build = [](const RouteEntryChecker &c, cmdlib::CommandLine<256> *cmd) {
        return cmdlib::route_fix_command(c, cmd);
    };
    const struct {
        RouteEntryChecker c;
        const char *want;
    } cases[] = {
        {route("0.0.0.0", "10.64.0.1", "0.0.0.0", "usb0", 1),
         "route add default gw 10.64.0.1 dev usb0"},
        {route("10.64.0.77", "10.64.0.1", "255.255.255.255", "usb0", 1),
         "route add -host 10.64.0.77 dev usb0"},
        {route("172.16.0.0", "10.64.0.1", "255.255.0.0", "br0", 1),
         "route add -net 172.16.0.0 netmask 255.255.0.0 dev br0"},
        {route("172.16.0.0", "", "255.255.0.0", "br0;touch /tmp/x", 1),
         "route add -net 172.16.0.0 netmask 255.255.0.0 dev 'br0;touch /tmp/x'"},
        // each quote of the device name takes four characters once quoted
        {route(std::string(63, '1').c_str(), "", std::string(63, '2').c_str(),
               std::string(63, '\'').c_str(), 1),
         "<cut>"},
    };
    for (const auto &t : cases) EXPECT_EQ(command(t.c, build), t.want);
}

TEST(FixCommands, RuleCommandsInTheirOrder) {
    auto build = [](const NATEntryChecker &c, cmdlib::CommandLine<256> *cmd) {
        return cmdlib::nat_fix_command(c, cmd);
    };
    const struct {
        std::string spec, want;
    } cases[] = {
        {"chain=PREROUTING in=usb0 proto=tcp dport=8080 jump=DNAT nat=192.168.1.2:80 natt app",
         "iptables -t nat -A PREROUTING -i usb0 -p tcp --dport 8080 -j DNAT --to-destination "
         "192.168.1.2:80"},
        {"chain=POSTROUTING out=usb0 src=192.168.1.0/24 jump=snat nat=10.64.0.2 natt del",
         "iptables -t nat -D POSTROUTING -o usb0 -s 192.168.1.0/24 -j snat --to-source 10.64.0.2"},
        {"chain=PREROUTING in=br0 proto=udp dport=53 jump=REDIRECT nat=5353 natt",
         "iptables -t nat -I PREROUTING -i br0 -p udp --dport 53 -j REDIRECT --to-ports 5353"},
        {"chain=INPUT proto=tcp dport=23 jump=REJECT nat=tcp-reset app",
         "iptables -A INPUT -p tcp --dport 23 -j REJECT --reject-with tcp-reset"},
        {"chain=INPUT proto=icmp icmp=8 jump=DROP",
         "iptables -I INPUT -p icmp --icmp-type 8 -j DROP"},
        {"chain=INPUT proto=ICMPv6 icmp=128 jump=ACCEPT v6",
         "ip6tables -I INPUT -p ICMPv6 --icmpv6-type 128 -j ACCEPT"},
        {"chain=INPUT proto=tcp icmp=8 jump=DROP", "iptables -I INPUT -p tcp -j DROP"},
        {"chain=FORWARD jump=ACCEPT nat=1.2.3.4 dest=10.0.0.1 dport=80 sport=1024 policy=DROP",
         "iptables -I FORWARD -d 10.0.0.1 --dport 80 --sport 1024 -P DROP -j ACCEPT"},
        // no chain: no table, action or chain
        {"in=br0 natt app", "iptables -i br0"},
        {"in=x;reboot", "iptables -i 'x;reboot'"},
        {"chain=INPUT src=" + std::string(63, 's') + " dest=" + std::string(63, 'd') + " nat=" +
             std::string(63, 'n') + " jump=REJECT icmp=" + std::string(63, 'i') + " proto=icmp",
         "<cut>"},
    };
    for (const auto &t : cases) EXPECT_EQ(command(nat(t.spec), build), t.want) << t.spec;
    // the target is written even when its bit is not selected
    NATEntryChecker c = nat("chain=INPUT");
    strcpy(c.jump_action, "ACCEPT");
    EXPECT_EQ(command(c, build), "iptables -I INPUT -j ACCEPT");
}

TEST(FixCommands, WhichCheckersRunAndFlush) {
    const struct {
        const char *spec;
        int match_count;
        bool needed, flush;
    } cases[] = {
        {"chain=PREROUTING natt", 0, true, true},
        {"chain=PREROUTING natt", 1, false, true},
        {"chain=PREROUTING natt del", 2, true, false},
        {"chain=PREROUTING natt del", 0, false, false},
        {"in=usb0 natt", 0, true, false},
        {"chain=INPUT", 0, true, false},
        {"", 0, false, false},
    };
    for (const auto &t : cases) {
        NATEntryChecker c = nat(t.spec);
        c.match_count = t.match_count;
        EXPECT_EQ(cmdlib::nat_fix_needed(c), t.needed) << t.spec << " " << t.match_count;
        EXPECT_EQ(cmdlib::nat_fix_flushes_conntrack(c), t.flush) << t.spec;
    }
}

// The exported checks bind a file: a listing needs three counting lines,
// an unreadable one leaves the counts alone.
TEST(ExportedChecks, FilesAndTheirFailures) {
    char path[] = "/tmp/rule_listing_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "-P INPUT ACCEPT\n-A INPUT -j DROP\n", 33), 33);
    NATEntryChecker c[] = {nat("chain=INPUT")};
    EXPECT_EQ(util_nat_check_if_nat_exist(path, c, 1), -1);
    EXPECT_EQ(c[0].match_count, 2);
    ASSERT_EQ(write(fd, "x y\n", 4), 4);
    c[0].match_count = 0;
    EXPECT_EQ(util_nat_check_if_nat_exist(path, c, 1), 0);
    EXPECT_EQ(c[0].match_count, 2);
    RouteEntryChecker r[] = {route("x", "", "", "", ROUTE_CHECK_DEST_IP)};
    EXPECT_EQ(util_route_check_if_route_exist(path, r, 1), 0);
    close(fd);
    unlink(path);
    c[0].match_count = r[0].match_count = 7;
    EXPECT_EQ(util_nat_check_if_nat_exist(path, c, 1), -1);
    EXPECT_EQ(util_route_check_if_route_exist(path, r, 1), -1);
    EXPECT_EQ(c[0].match_count + r[0].match_count, 14);
    EXPECT_EQ(util_nat_check_if_nat_exist(nullptr, c, 1), -1);
}

}  // namespace
