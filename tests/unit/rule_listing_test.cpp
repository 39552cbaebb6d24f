// Route and rule checkers on listing text: the option scan of a rule line,
// the fix commands and the counting passes as a table of calls
// (tests/golden/listing_checks), and the exported checks on files.
#include "cmdlib/internal/rule_listing.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "common/checker_text.h"
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

// The options a rule line gives, in check-bit order.
std::string options(const std::string &line) {
    cmdlib::NatRule r = parse(line);
    std::string got;
    for (int f = 0; f < cmdlib::kNatFieldCount; ++f)
        if (r.has(static_cast<cmdlib::NatField>(f)))
            got += (got.empty() ? "" : " ") + std::string(checker_spec::kRuleKeys[f]) + "=" + std::string(r.value[f]);
    return got;
}

// What the fix pass runs for a rule checker: <none>, the command (<cut>
// when it would not fit) and, after rules added to the nat table, the flush.
std::string rule_fix(const std::string &desc) {
    cmdlib::CommandLine<256> cmd;
    NATEntryChecker c = rule(desc);
    if (!cmdlib::nat_fix_needed(c)) return "<none>";
    std::string got = cmdlib::nat_fix_command(c, &cmd) ? cmd.c_str() : "<cut>";
    return got + (cmdlib::nat_fix_flushes_conntrack(c) ? " ; conntrack -F" : "");
}

// Counts per checker, then the counting lines.  The hashed lookup of the
// pass must count as the plain scan of every checker does.
std::string rule_counts(const std::string &listing, const std::vector<NATEntryChecker> &checkers) {
    std::vector<NATEntryChecker> c = checkers, plain = checkers;
    TextLineReader<256> r(listing), again(listing);
    int lines = cmdlib::count_nat_matches(r, c.data(), static_cast<int>(c.size()));
    std::string_view line;
    size_t n = 0;
    while (again.next(&line))
        if (cmdlib::NatRule p = parse(line, &n); n >= 2)
            cmdlib::count_nat_rule(p, plain.data(), static_cast<int>(plain.size()));
    std::string out;
    for (size_t i = 0; i < c.size(); ++i)
        out += std::to_string(c[i].match_count) + (c[i].match_count == plain[i].match_count ? " " : "(plain differs) ");
    return out + "/ " + std::to_string(lines);
}

// Rule lines parsed, fix commands, and "rules LISTING|CHECKER|..." and
// "routes LISTING|CHECKER|...": the counts of each checker on the listing
// (first checker wins, every selected option must be there, the read and
// word limits).
TEST(ListingChecks, Golden) {
    using golden::Args;
    golden::check("listing_checks", golden::calls({
        {"parse", [](Args &a) { return options(a[0]); }},
        {"fix_rule", [](Args &a) { return rule_fix(a[0]); }},
        {"fix_route", [](Args &a) {
             cmdlib::CommandLine<256> cmd;
             return std::string(cmdlib::route_fix_command(route(a[0]), &cmd) ? cmd.c_str() : "<cut>");
         }},
        {"rules", [](Args &a) {
             std::vector<NATEntryChecker> c;
             for (size_t i = 1; i < a.size(); ++i) c.push_back(rule(a[i]));
             return rule_counts(a[0], c);
         }},
        {"routes", [](Args &a) {
             std::vector<RouteEntryChecker> c;
             for (size_t i = 1; i < a.size(); ++i) c.push_back(route(a[i]));
             TextLineReader<256> r(a[0]);
             cmdlib::count_route_matches(r, c.data(), static_cast<int>(c.size()));
             std::string out;
             for (const auto &x : c) out += std::to_string(x.match_count) + " ";
             return out;
         }},
    }));
}

TEST(RuleCheck, UnknownBitsAndFieldsFilledToTheirWidth) {
    const std::string listing = "-P INPUT ACCEPT\n-A PREROUTING -i usb0\nlonely\n-a input -J accept\n";
    // a checker selecting only unknown bits matches every counting line
    NATEntryChecker odd{};
    odd.check_content = 0x1000;
    EXPECT_EQ(rule_counts(listing, {odd}), "3 / 3");
    // a field filled to its width without a terminator is compared on its width
    NATEntryChecker full = rule("chain=x");
    memcpy(full.chain, "ABCDEFGHIJKLMNOP", sizeof full.chain);
    EXPECT_EQ(rule_counts("-A ABCDEFGHIJKLMNOP\n-A ABCDEFGHIJKLMNOPQ\n-A ABCDEFGHIJKLMNO\n", {full}), "1 / 3");
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
