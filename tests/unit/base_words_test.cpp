// libbase word splitting and in-place string services.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/libbase.h"

namespace {

std::vector<std::string> split(std::string line, char a, char b, int cap) {
    std::vector<char> buf(line.begin(), line.end());
    buf.push_back('\0');
    std::vector<char *> argv(static_cast<size_t>(cap > 0 ? cap : 1), nullptr);
    int n = util_get_all_args(buf.data(), a, b, argv.data(), cap);
    std::vector<std::string> out;
    for (int i = 0; i < n; ++i) out.emplace_back(argv[static_cast<size_t>(i)]);
    return out;
}

TEST(BaseWords, SplitsOnRunsOfEitherSeparator) {
    using V = std::vector<std::string>;
    EXPECT_EQ(split("usb0\t00000000  0101A8C0 0003", ' ', '\t', 18),
              (V{"usb0", "00000000", "0101A8C0", "0003"}));
    EXPECT_EQ(split("aa:bb,cc", ':', ',', 8), (V{"aa", "bb", "cc"}));
    EXPECT_EQ(split("   \t \t ", ' ', '\t', 8), V{});
    EXPECT_EQ(split("", ' ', '\t', 8), V{});
    EXPECT_EQ(split("last word\n", ' ', '\t', 8), (V{"last", "word"}));
    EXPECT_EQ(split("crlf\r\n", ' ', '\t', 8), (V{"crlf"}));
}

TEST(BaseWords, StopsAtCapacity) {
    using V = std::vector<std::string>;
    EXPECT_EQ(split("a b c d e", ' ', '\t', 3), (V{"a", "b", "c"}));
    EXPECT_EQ(split("a b", ' ', '\t', 0), V{});
    char line[] = "x y";
    EXPECT_EQ(util_get_all_args(line, ' ', '\t', nullptr, 4), 0);
    EXPECT_EQ(util_get_all_args(nullptr, ' ', '\t', nullptr, 4), 0);
}

TEST(BaseWords, FixedCapacityAndExtVariant) {
    std::string many;
    for (int i = 0; i < 100; ++i) many += "w" + std::to_string(i) + " ";
    std::vector<char> buf(many.begin(), many.end());
    buf.push_back('\0');
    char *argv[UTIL_MAX_ARGUMENTS];
    EXPECT_EQ(util_get_all_arguments(buf.data(), argv), UTIL_MAX_ARGUMENTS);
    EXPECT_STREQ(argv[UTIL_MAX_ARGUMENTS - 1], "w63");
    char line[] = "a\tb c";
    char *v[4];
    ASSERT_EQ(util_get_all_args_ext(line, ' ', ',', 0, v, 4), 3);  // flag 0 also splits at tabs
    EXPECT_STREQ(v[1], "b");
    char line2[] = "a\tb c";
    ASSERT_EQ(util_get_all_args_ext(line2, ' ', '\t', 1, v, 4), 3);
}

TEST(BaseWords, NextArgSteppingGivesSecondAndThirdField) {
    char line[] = "1 \t0  1 27 0\n";
    char *second = util_get_next_arg2(line, 1);
    EXPECT_EQ(atoi(second), 0);
    char *third = util_get_next_arg2(second, 0);
    EXPECT_EQ(atoi(third), 1);
    char end[] = "only";
    EXPECT_STREQ(util_get_next_arg2(end, 1), "");
    EXPECT_STREQ(util_get_next_arg2(nullptr, 1), "");
    EXPECT_STREQ(util_get_next_arg_cmdlib("nameserver 8.8.8.8\n", 1), "8.8.8.8");
    EXPECT_STREQ(util_get_next_arg_cmdlib("nameserver", 1), "");
    EXPECT_STREQ(util_get_next_arg_cmdlib("  a  b c", 0), "a");
    EXPECT_STREQ(util_get_next_arg_cmdlib(nullptr, 0), "");
    std::string longword(400, 'x');
    EXPECT_EQ(strlen(util_get_next_arg_cmdlib(longword.c_str(), 0)), 255u);
}

TEST(BaseWords, ContainsParameter) {
    char a[] = "-i", b[] = "wan", c[] = "-s";
    char *argv[] = {a, b, c};
    int pos = -1;
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "wan", 0, &pos), 1);
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "WAN", 0, &pos), 0);
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "WAN", 1, &pos), 1);
    EXPECT_EQ(util_contains_specified_parameter(argv, 3, "wa", 0, nullptr), 0);
    EXPECT_EQ(util_contains_specified_parameter(nullptr, 3, "wa", 0, nullptr), 0);
}

TEST(BaseWords, StripAndCase) {
    char s1[] = " \t lead";
    util_strip_blank_of_string_head(s1);
    EXPECT_STREQ(s1, "lead");
    char s2[] = "trail \t\r\n";
    util_strip_blank_of_string_end(s2);
    EXPECT_STREQ(s2, "trail");
    char s3[] = "sp \t  ";
    util_strip_traling_spaces(s3);
    EXPECT_STREQ(s3, "sp \t");
    char s4[] = "   ";
    util_strip_blank_of_string_end(s4);
    EXPECT_STREQ(s4, "");
    EXPECT_STREQ(util_skip_all_spaces(" \t x y"), "x y");
    char mac[] = "00:11:22:aa:bb:cc";
    util_strip_special_char(mac, ':');
    EXPECT_STREQ(mac, "001122aabbcc");
    char r[] = "a-b--c-";
    util_remove_special_char(r, '-');
    EXPECT_STREQ(r, "abc");
    char z[] = {'a', '\0', 'b', '\0', 'c', '\0'};
    util_replace_all_zero_to_space(z, 4);
    EXPECT_STREQ(z, "a b c");
    char u[] = "MiXed1";
    util_convert_all_chars_to_upper_case(u);
    EXPECT_STREQ(u, "MIXED1");
    util_convert_all_chars_to_lower_case(u);
    EXPECT_STREQ(u, "mixed1");
    util_strip_blank_of_string_end(nullptr);
    util_strip_blank_of_string_head(nullptr);
}

TEST(BaseWords, HexDigitsEveryByte) {
    for (int c = 0; c < 256; ++c) {
        int v = util_char2hex(static_cast<char>(c));
        int want = -1;
        if (c >= '0' && c <= '9') want = c - '0';
        if (c >= 'a' && c <= 'f') want = c - 'a' + 10;
        if (c >= 'A' && c <= 'F') want = c - 'A' + 10;
        EXPECT_EQ(v, want) << c;
    }
}

TEST(BaseWords, DeconvertUndoesExporterQuoting) {
    char out[256];
    util_string_deconvert_special_char("\"a b\"", out, sizeof out);
    EXPECT_STREQ(out, "a b");
    util_string_deconvert_special_char("\"say \\\"hi\\\" \\\\ \\$HOME \\`x\\`\"", out, sizeof out);
    EXPECT_STREQ(out, "say \"hi\" \\ $HOME `x`");
    util_string_deconvert_special_char("'it'\\''s'", out, sizeof out);
    EXPECT_STREQ(out, "it's");
    util_string_deconvert_special_char("plain", out, sizeof out);
    EXPECT_STREQ(out, "plain");
    util_string_deconvert_special_char("\"unterminated", out, sizeof out);
    EXPECT_STREQ(out, "unterminated");
    util_string_deconvert_special_char("\"\"", out, sizeof out);
    EXPECT_STREQ(out, "");
    char small[4];
    EXPECT_EQ(util_string_deconvert_special_char("\"abcdef\"", small, sizeof small), 3);
    EXPECT_STREQ(small, "abc");
    EXPECT_EQ(util_string_deconvert_special_char("x", nullptr, 4), -1);
}

TEST(BaseWords, Basename) {
    char out[8];
    util_string_get_basename("/usr/sbin/udhcpc", out, sizeof out);
    EXPECT_STREQ(out, "udhcpc");
    util_string_get_basename("plain", out, sizeof out);
    EXPECT_STREQ(out, "plain");
    util_string_get_basename("/dir/", out, sizeof out);
    EXPECT_STREQ(out, "");
    util_string_get_basename("/a/verylongname", out, sizeof out);
    EXPECT_STREQ(out, "verylon");
}

}  // namespace
