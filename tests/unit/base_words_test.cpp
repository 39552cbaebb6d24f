// libbase word splitting and in-place string services.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/libbase.h"

namespace {

std::string split(std::string line, char a, char b, int cap, int flag = -1) {
    std::vector<char> buf(line.begin(), line.end());
    buf.push_back('\0');
    std::vector<char *> argv(static_cast<size_t>(cap > 0 ? cap : 1), nullptr);
    int n = flag < 0 ? util_get_all_args(buf.data(), a, b, argv.data(), cap)
                     : util_get_all_args_ext(buf.data(), a, b, flag, argv.data(), cap);
    std::string out;
    for (int i = 0; i < n; ++i) out += std::string(i ? "|" : "") + argv[static_cast<size_t>(i)];
    return out;
}

TEST(BaseWords, SplitsOnRunsOfEitherSeparatorUpToCapacity) {
    struct Case {
        const char *line;
        char a, b;
        int cap, flag;
        const char *words;
    } cases[] = {
        {"usb0\t00000000  0101A8C0 0003", ' ', '\t', 18, -1, "usb0|00000000|0101A8C0|0003"},
        {"aa:bb,cc", ':', ',', 8, -1, "aa|bb|cc"},
        {"   \t \t ", ' ', '\t', 8, -1, ""},
        {"", ' ', '\t', 8, -1, ""},
        {"last word\n", ' ', '\t', 8, -1, "last|word"},
        {"crlf\r\n", ' ', '\t', 8, -1, "crlf"},
        {"a b c d e", ' ', '\t', 3, -1, "a|b|c"},
        {"a b", ' ', '\t', 0, -1, ""},
        {"a\tb c", ' ', ',', 4, 0, "a|b|c"},  // flag 0 also splits at tabs
        {"a\tb c", ' ', '\t', 4, 1, "a|b|c"},
    };
    for (const Case &c : cases) EXPECT_EQ(split(c.line, c.a, c.b, c.cap, c.flag), c.words) << c.line;
    char line[] = "x y";
    EXPECT_EQ(util_get_all_args(line, ' ', '\t', nullptr, 4), 0);
    EXPECT_EQ(util_get_all_args(nullptr, ' ', '\t', nullptr, 4), 0);
    std::string many;
    for (int i = 0; i < 100; ++i) many += "w" + std::to_string(i) + " ";
    char *argv[UTIL_MAX_ARGUMENTS];
    EXPECT_EQ(util_get_all_arguments(&many[0], argv), UTIL_MAX_ARGUMENTS);
    EXPECT_STREQ(argv[UTIL_MAX_ARGUMENTS - 1], "w63");
}

TEST(BaseWords, NextArgAndContainsParameter) {
    char line[] = "1 \t0  1 27 0\n", end[] = "only";
    char *second = util_get_next_arg2(line, 1);
    EXPECT_EQ(atoi(second), 0);
    EXPECT_EQ(atoi(util_get_next_arg2(second, 0)), 1);
    EXPECT_STREQ(util_get_next_arg2(end, 1), "");
    EXPECT_STREQ(util_get_next_arg2(nullptr, 1), "");
    EXPECT_STREQ(util_get_next_arg_cmdlib("nameserver 8.8.8.8\n", 1), "8.8.8.8");
    EXPECT_STREQ(util_get_next_arg_cmdlib("nameserver", 1), "");
    EXPECT_STREQ(util_get_next_arg_cmdlib("  a  b c", 0), "a");
    EXPECT_STREQ(util_get_next_arg_cmdlib(nullptr, 0), "");
    EXPECT_EQ(strlen(util_get_next_arg_cmdlib(std::string(400, 'x').c_str(), 0)), 255u);

    char a[] = "-i", b[] = "wan", c[] = "-s";
    char *argv[] = {a, b, c};
    int pos = -1;
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "wan", 0, &pos), 1);
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "WAN", 0, &pos), 0);
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "WAN", 1, &pos), 1);  // flag 1 ignores case
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "wa", 0, nullptr), 0);
    EXPECT_EQ(util_contains_specified_parameter(nullptr, 3, "wa", 0, nullptr), 0);
}

TEST(BaseWords, InPlaceStripAndCase) {
    struct Case {
        void (*fn)(char *);
        const char *in, *out;
    } cases[] = {
        {util_strip_blank_of_string_head, " \t lead", "lead"},
        {util_strip_blank_of_string_end, "trail \t\r\n", "trail"},
        {util_strip_blank_of_string_end, "   ", ""},
        {util_strip_traling_spaces, "sp \t  ", "sp \t"},
        {[](char *s) { util_strip_special_char(s, ':'); }, "00:11:22:aa:bb:cc", "001122aabbcc"},
        {[](char *s) { util_remove_special_char(s, '-'); }, "a-b--c-", "abc"},
        {util_convert_all_chars_to_upper_case, "MiXed1", "MIXED1"},
        {util_convert_all_chars_to_lower_case, "MiXed1", "mixed1"},
    };
    for (const Case &c : cases) {
        std::string s = c.in;
        c.fn(&s[0]);
        EXPECT_STREQ(s.c_str(), c.out) << c.in;
    }
    EXPECT_STREQ(util_skip_all_spaces(" \t x y"), "x y");
    char z[] = {'a', '\0', 'b', '\0', 'c', '\0'};
    util_replace_all_zero_to_space(z, 4);
    EXPECT_STREQ(z, "a b c");
    util_strip_blank_of_string_end(nullptr);
    util_strip_blank_of_string_head(nullptr);
    for (int c = 0; c < 256; ++c) {  // every byte value
        int want = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        EXPECT_EQ(util_char2hex(static_cast<char>(c)), want) << c;
    }
}

TEST(BaseWords, DeconvertUndoesExporterQuotingAndBasename) {
    const std::pair<const char *, const char *> cases[] = {
        {"\"a b\"", "a b"},
        {"\"say \\\"hi\\\" \\\\ \\$HOME \\`x\\`\"", "say \"hi\" \\ $HOME `x`"},
        {"'it'\\''s'", "it's"},
        {"plain", "plain"},
        {"\"unterminated", "unterminated"},
        {"\"\"", ""},
    };
    char out[256], small[4];
    for (const auto &[in, want] : cases) {
        util_string_deconvert_special_char(in, out, sizeof out);
        EXPECT_STREQ(out, want) << in;
    }
    EXPECT_EQ(util_string_deconvert_special_char("\"abcdef\"", small, sizeof small), 3);
    EXPECT_STREQ(small, "abc");
    EXPECT_EQ(util_string_deconvert_special_char("x", nullptr, 4), -1);

    const std::pair<const char *, const char *> names[] = {
        {"/usr/sbin/udhcpc", "udhcpc"}, {"plain", "plain"}, {"/dir/", ""}, {"/a/verylongname", "verylon"}};
    char base[8];
    for (const auto &[p, want] : names) {
        util_string_get_basename(p, base, sizeof base);
        EXPECT_STREQ(base, want) << p;
    }
}

}  // namespace
