// libbase word splitting and in-place string services: a table of calls
// (tests/golden/words_calls) and the every-byte hex digit check.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/libbase.h"
#include "common/golden.h"

namespace {

using golden::Args;
using golden::show;

std::string split(Args &a, bool ext) {
    char *argv[20];
    int n = ext ? util_get_all_args_ext(a[0].w(), a[1][0], a[2][0], a[3].i(), argv, a[4].i())
                : util_get_all_args(a[0].w(), a[1][0], a[2][0], argv, a[3].i());
    std::string out = std::to_string(n) + ":";
    for (int i = 0; i < n; ++i) out += std::string(i ? "|" : "") + argv[i];
    return out;
}

// A function that changes its text in place, and the text after it.
golden::Call in_place(void (*fn)(char *)) {
    return [fn](Args &a) { return fn(a[0].w()), show(a[0].c()); };
}

TEST(BaseWords, Golden) {
    golden::check("words_calls", golden::calls({
        {"split", [](Args &a) { return split(a, false); }},
        {"split_ext", [](Args &a) { return split(a, true); }},
        {"next_arg2", [](Args &a) { return show(util_get_next_arg2(a[0].w(), a[1].i())); }},
        {"next_arg", [](Args &a) { return show(util_get_next_arg_cmdlib(a[0].c(), a[1].i())); }},
        {"contains", [](Args &a) {
             char w0[] = "-i", w1[] = "wan", w2[] = "-s", *argv[] = {w0, w1, w2};
             int pos = -1;
             return show(util_contains_specified_parameter(argv, 3, a[0].c(), a[1].i(), &pos), pos);
         }},
        {"strip_head", in_place(util_strip_blank_of_string_head)},
        {"strip_end", in_place(util_strip_blank_of_string_end)},
        {"strip_trailing", in_place(util_strip_traling_spaces)},
        {"upper", in_place(util_convert_all_chars_to_upper_case)},
        {"lower", in_place(util_convert_all_chars_to_lower_case)},
        {"strip_char", [](Args &a) { return util_strip_special_char(a[0].w(), a[1][0]), show(a[0].c()); }},
        {"remove_char", [](Args &a) { return util_remove_special_char(a[0].w(), a[1][0]), show(a[0].c()); }},
        {"skip_spaces", [](Args &a) { return show(util_skip_all_spaces(a[0].c())); }},
        {"deconvert", [](Args &a) {
             char out[256];
             return show(util_string_deconvert_special_char(a[0].c(), out, a[1].i()), out);
         }},
        {"basename", [](Args &a) {
             char out[64];
             util_string_get_basename(a[0].c(), out, a[1].i());
             return show(out);
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
