// Route and rule checkers on listing text: the option scan of a rule line
// and the fix commands against golden files (tests/golden/rules/), the
// counting passes (first checker wins, the read and word limits), and the
// exported checks on files.
#include "cmdlib/internal/rule_listing.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "common/checker_spec.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "common/golden.h"

using checker_spec::route;
using checker_spec::rule;
using cmdlib::TextLineReader;

namespace {

cmdlib::NatRule parse(std::string_view line, size_t *words = nullptr) {
    std::string_view w[cmdlib::kListingMaxWords];
    size_t n = cmdlib::split_words(line, cmdlib::kBlankOrEol, w, cmdlib::kListingMaxWords);
    cmdlib::NatRule r;
    cmdlib::parse_nat_rule(w, n, &r);
    if (words) *words = n;
    return r;
}

TEST(RuleLines, OptionsAreTakenLeftToRight) {
    auto cases = golden::expect_pairs("rules/rule_lines.golden");
    ASSERT_GT(cases.size(), 10u);
    for (const auto &[line, want] : cases) {
        cmdlib::NatRule r = parse(line);
        std::string got;
        for (int f = 0; f < cmdlib::kNatFieldCount; ++f)
            if (r.has(static_cast<cmdlib::NatField>(f)))
                got += (got.empty() ? "" : " ") + std::string(checker_spec::kRuleKeys[f]) + "=" +
                       std::string(r.value[f]);
        EXPECT_EQ(got, want) << line;
    }
}

// What the fix pass runs for each checker: <none>, the command (<cut> when
// it would not fit) and, after rules added to the nat table, the flush.
TEST(FixCommands, AsTheGoldenFileWritesThem) {
    auto cases = golden::expect_pairs("rules/fix_commands.golden");
    ASSERT_GT(cases.size(), 10u);
    for (const auto &[spec, want] : cases) {
        cmdlib::CommandLine<256> cmd;
        std::string got;
        if (spec.rfind("route ", 0) == 0) {
            got = cmdlib::route_fix_command(route(spec.substr(6)), &cmd) ? cmd.c_str() : "<cut>";
        } else if (NATEntryChecker c = rule(spec.substr(5)); !cmdlib::nat_fix_needed(c)) {
            got = "<none>";
        } else {
            got = cmdlib::nat_fix_command(c, &cmd) ? cmd.c_str() : "<cut>";
            if (cmdlib::nat_fix_flushes_conntrack(c)) got += " ; conntrack -F";
        }
        EXPECT_EQ(got, want) << spec;
    }
}

// Counts per checker, then the counting lines.  The hashed lookup of the
// pass must count as the plain scan of every checker does.
std::string rule_counts(const std::string &listing, const std::vector<std::string> &specs) {
    std::vector<NATEntryChecker> c, plain;
    for (const auto &s : specs) c.push_back(rule(s));
    plain = c;
    TextLineReader<256> r(listing), again(listing);
    int lines = cmdlib::count_nat_matches(r, c.data(), static_cast<int>(c.size()));
    std::string_view line;
    size_t n = 0;
    while (again.next(&line))
        if (cmdlib::NatRule p = parse(line, &n); n >= 2)
            cmdlib::count_nat_rule(p, plain.data(), static_cast<int>(plain.size()));
    std::string out;
    for (size_t i = 0; i < c.size(); ++i) {
        EXPECT_EQ(c[i].match_count, plain[i].match_count) << specs[i];
        out += std::to_string(c[i].match_count) + " ";
    }
    return out + "/ " + std::to_string(lines);
}

TEST(RuleCheck, FirstCheckerWinsAndEveryOptionMustBeThere) {
    const std::string listing =
        "-P INPUT ACCEPT\n"
        "-A PREROUTING -i usb0 -p tcp --dport 8080 -j DNAT --to-destination 192.168.1.2:80\n"
        "-A PREROUTING -i usb0 -p tcp --dport 8081 -j SNAT --to-destination 192.168.1.2:80\n"
        "\n   \nlonely\n"  // not counted: fewer than two words
        "-a input -J accept\n";
    EXPECT_EQ(rule_counts(listing, {"chain=PREROUTING nat=192.168.1.2:80", "chain=PREROUTING", "",
                                    "chain=input policy=accept", "chain=Input jump=ACCEPT"}),
              "1 1 0 1 0 / 4");
    // looked up by the same value: still the first in the array wins
    EXPECT_EQ(rule_counts(listing, {"dport=8081 in=eth9", "dport=8081", "dport=8081 in=usb0"}),
              "0 1 0 / 4");
    // a checker selecting only unknown bits matches every counting line
    NATEntryChecker odd{};
    odd.check_content = 0x1000;
    TextLineReader<256> r(listing);
    EXPECT_EQ(cmdlib::count_nat_matches(r, &odd, 1), 4);
    EXPECT_EQ(odd.match_count, 4);
}

TEST(RuleCheck, LinesAreCutAtTheReadAndTheWordLimit) {
    std::string many = "-A INPUT";
    for (int i = 0; i < 62; ++i) many += " w";
    // word 65 is not looked at; the 255-byte read ends before "-j DROP",
    // which comes back as a line of its own
    std::string long_line = "-A FORWARD -s " + std::string(250, 'a') + " -j DROP\n";
    EXPECT_EQ(rule_counts(many + " -j DROP\n" + many + " -j\n" + long_line,
                          {"jump=DROP", "chain=INPUT", "chain=FORWARD"}),
              "1 2 1 / 4");
    // a field filled to its width without a terminator is compared on its width
    NATEntryChecker full = rule("chain=x");
    memcpy(full.chain, "ABCDEFGHIJKLMNOP", sizeof full.chain);
    TextLineReader<256> r("-A ABCDEFGHIJKLMNOP\n-A ABCDEFGHIJKLMNOPQ\n-A ABCDEFGHIJKLMNO\n");
    cmdlib::count_nat_matches(r, &full, 1);
    EXPECT_EQ(full.match_count, 1);
}

TEST(RouteCheck, EightWordLinesAndTheFirstMatchingChecker) {
    const std::string listing =
        "Kernel IP routing table\n"
        "Destination     Gateway         Genmask         Flags Metric Ref    Use Iface\n"
        "0.0.0.0         10.64.0.1       0.0.0.0         UG    0      0        0 usb0\n"
        "192.168.1.0     0.0.0.0         255.255.255.0   U     0      0        0 br0 extra words\n"
        "10.0.0.0 0.0.0.0 255.0.0.0 U 0 0 0\n"  // seven words: not considered
        "\n0.0.0.0\n";
    std::vector<RouteEntryChecker> c;
    for (const char *spec : {"dest=0.0.0.0 gw=10.64.0.1 dev=usb0", "dest=0.0.0.0",  // shadowed
                             "dest=192.168.1.0 dev=BR0", "dest=192.168.1.0 mask=255.255.255.0",
                             "dest=10.0.0.0", "dest=Destination dev=Iface", "dest=0.0.0.0 off"})
        c.push_back(route(spec));
    TextLineReader<256> r(listing);
    cmdlib::count_route_matches(r, c.data(), static_cast<int>(c.size()));
    std::string got;
    for (const auto &x : c) got += std::to_string(x.match_count);
    EXPECT_EQ(got, "1001010");
}

// The exported checks bind a file: a listing needs three counting lines,
// an unreadable one leaves the counts alone.
TEST(ExportedChecks, FilesAndTheirFailures) {
    char path[] = "/tmp/rule_listing_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "-P INPUT ACCEPT\n-A INPUT -j DROP\n", 33), 33);
    NATEntryChecker c = rule("chain=INPUT");
    EXPECT_EQ(util_nat_check_if_nat_exist(path, &c, 1), -1);
    EXPECT_EQ(c.match_count, 2);
    ASSERT_EQ(write(fd, "x y\n", 4), 4);
    c.match_count = 0;
    EXPECT_EQ(util_nat_check_if_nat_exist(path, &c, 1), 0);
    EXPECT_EQ(c.match_count, 2);
    RouteEntryChecker r = route("dest=x");
    EXPECT_EQ(util_route_check_if_route_exist(path, &r, 1), 0);
    close(fd);
    unlink(path);
    c.match_count = r.match_count = 7;
    EXPECT_EQ(util_nat_check_if_nat_exist(path, &c, 1), -1);
    EXPECT_EQ(util_route_check_if_route_exist(path, &r, 1), -1);
    EXPECT_EQ(c.match_count + r.match_count, 14);
    EXPECT_EQ(util_nat_check_if_nat_exist(nullptr, &c, 1), -1);
}

}  // namespace
