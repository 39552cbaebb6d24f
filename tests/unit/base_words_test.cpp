// libbase word splitting and in-place string services: a table of calls
// (tests/unit/golden/words_calls) and the every-byte hex digit check.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/libbase.h"
#include "common/golden.h"

namespace {

using golden::Args;

std::string joined(char **argv, int n) {
    std::string out = std::to_string(n) + ":";
    for (int i = 0; i < n; ++i) out += std::string(i ? "|" : "") + argv[i];
    return out;
}

// The call's first argument as a writable buffer, or null for "(null)".
struct Text {
    explicit Text(const std::string &a) : s(a.begin(), a.end()), null(a == "(null)") { s.push_back('\0'); }
    char *get() { return null ? nullptr : s.data(); }
    std::vector<char> s;
    bool null;
};

std::string in_place(void (*fn)(char *), const Args &a) {
    Text t(a[0]);
    fn(t.get());
    return "\"" + std::string(t.get()) + "\"";
}

TEST(BaseWords, Golden) {
    golden::check("words_calls", golden::calls({
        {"split",
         [](const Args &a) {
             Text t(a[0]);
             std::vector<char *> argv(20);
             return joined(argv.data(), util_get_all_args(t.get(), a[1][0], a[2][0], argv.data(), std::stoi(a[3])));
         }},
        {"split_ext",
         [](const Args &a) {
             Text t(a[0]);
             std::vector<char *> argv(20);
             return joined(argv.data(), util_get_all_args_ext(t.get(), a[1][0], a[2][0], std::stoi(a[3]), argv.data(), std::stoi(a[4])));
         }},
        {"next_arg2", [](const Args &a) { return "\"" + std::string(util_get_next_arg2(Text(a[0]).get(), std::stoi(a[1]))) + "\""; }},
        {"next_arg",
         [](const Args &a) { return "\"" + std::string(util_get_next_arg_cmdlib(Text(a[0]).get(), std::stoi(a[1]))) + "\""; }},
        {"contains",
         [](const Args &a) {
             char w0[] = "-i", w1[] = "wan", w2[] = "-s";
             char *argv[] = {w0, w1, w2};
             int pos = -1;
             int rc = util_contains_specified_parameter(argv, 3, a[0].c_str(), std::stoi(a[1]), &pos);
             return std::to_string(rc) + " at " + std::to_string(pos);
         }},
        {"strip_head", [](const Args &a) { return in_place(util_strip_blank_of_string_head, a); }},
        {"strip_end", [](const Args &a) { return in_place(util_strip_blank_of_string_end, a); }},
        {"strip_trailing", [](const Args &a) { return in_place(util_strip_traling_spaces, a); }},
        {"upper", [](const Args &a) { return in_place(util_convert_all_chars_to_upper_case, a); }},
        {"lower", [](const Args &a) { return in_place(util_convert_all_chars_to_lower_case, a); }},
        {"strip_char",
         [](const Args &a) {
             Text t(a[0]);
             util_strip_special_char(t.get(), a[1][0]);
             return "\"" + std::string(t.get()) + "\"";
         }},
        {"remove_char",
         [](const Args &a) {
             Text t(a[0]);
             util_remove_special_char(t.get(), a[1][0]);
             return "\"" + std::string(t.get()) + "\"";
         }},
        {"skip_spaces", [](const Args &a) { return "\"" + std::string(util_skip_all_spaces(a[0].c_str())) + "\""; }},
        {"deconvert",
         [](const Args &a) {
             char out[256];
             int n = util_string_deconvert_special_char(a[0].c_str(), out, std::stoi(a[1]));
             return std::to_string(n) + " \"" + out + "\"";
         }},
        {"basename",
         [](const Args &a) {
             char out[64];
             util_string_get_basename(a[0].c_str(), out, std::stoi(a[1]));
             return "\"" + std::string(out) + "\"";
         }},
    }));
}

TEST(BaseWords, NullsCapacityAndEveryHexDigit) {
    char line[] = "x y", z[] = {'a', '\0', 'b', '\0', 'c', '\0'};
    EXPECT_EQ(util_get_all_args(line, ' ', '\t', nullptr, 4), 0);
    EXPECT_EQ(util_get_all_args(nullptr, ' ', '\t', nullptr, 4), 0);
    EXPECT_EQ(util_contains_specified_parameter(nullptr, 3, "wa", 0, nullptr), 0);
    EXPECT_EQ(util_string_deconvert_special_char("x", nullptr, 4), -1);
    util_strip_blank_of_string_end(nullptr);
    util_strip_blank_of_string_head(nullptr);
    util_replace_all_zero_to_space(z, 4);
    EXPECT_STREQ(z, "a b c");
    EXPECT_EQ(strlen(util_get_next_arg_cmdlib(std::string(400, 'x').c_str(), 0)), 255u);
    std::string many;
    for (int i = 0; i < 100; ++i) many += "w" + std::to_string(i) + " ";
    char *argv[UTIL_MAX_ARGUMENTS];
    EXPECT_EQ(util_get_all_arguments(&many[0], argv), UTIL_MAX_ARGUMENTS);
    EXPECT_STREQ(argv[UTIL_MAX_ARGUMENTS - 1], "w63");
    for (int c = 0; c < 256; ++c) {
        int want = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        EXPECT_EQ(util_char2hex(static_cast<char>(c)), want) << c;
    }
}

}  // namespace
