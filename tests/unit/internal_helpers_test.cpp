// The shared internal helpers: text parsing, bounded copies, fgets-style
// line reading and shell quoting.
#include <gtest/gtest.h>
#include <stdio.h>

#include <random>
#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "base/internal/shell_quote.h"
#include "base/internal/text.h"

namespace {

using namespace cmdlib;

TEST(InternalText, ParseInt64BoundariesAndJunk) {
    int64_t v = 0;
    EXPECT_TRUE(parse_int64("9223372036854775807", &v));
    EXPECT_EQ(v, INT64_MAX);
    EXPECT_TRUE(parse_int64("-9223372036854775808", &v));
    EXPECT_EQ(v, INT64_MIN);
    EXPECT_FALSE(parse_int64("9223372036854775808", &v));
    EXPECT_FALSE(parse_int64("-9223372036854775809", &v));
    EXPECT_FALSE(parse_int64("", &v));
    EXPECT_FALSE(parse_int64("-", &v));
    EXPECT_FALSE(parse_int64("12a", &v));
    EXPECT_FALSE(parse_int64(" 12", &v));
    EXPECT_TRUE(parse_int64("+7", &v));
    EXPECT_EQ(v, 7);
}

TEST(InternalText, AtoiSaturatesLikeAClampedAtoi) {
    EXPECT_EQ(atoi_sat("  42abc"), 42);
    EXPECT_EQ(atoi_sat("-17"), -17);
    EXPECT_EQ(atoi_sat("x"), 0);
    EXPECT_EQ(atoi_sat("99999999999999999999"), INT32_MAX);
    EXPECT_EQ(atoi_sat("-99999999999999999999"), INT32_MIN);
}

TEST(InternalText, SplitStripWords) {
    std::string_view h, t;
    ASSERT_TRUE(split_once("KEY=a=b", '=', &h, &t));
    EXPECT_EQ(h, "KEY");
    EXPECT_EQ(t, "a=b");
    EXPECT_FALSE(split_once("none", '=', &h, &t));
    EXPECT_EQ(strip(" \t x y \r\n"), "x y");
    std::string_view s = "export A=1";
    EXPECT_TRUE(consume_prefix(&s, "export "));
    EXPECT_EQ(s, "A=1");
    EXPECT_FALSE(consume_prefix(&s, "export "));
    std::string_view line = "  a\tbb  c\n";
    EXPECT_EQ(next_word(&line), "a");
    EXPECT_EQ(next_word(&line), "bb");
    EXPECT_EQ(next_word(&line), "c");
    EXPECT_EQ(next_word(&line), "");
}

TEST(InternalText, BoundedCopyFormatAppend) {
    char buf[4];
    EXPECT_EQ(copy_bounded(buf, sizeof buf, "abcdef"), 3u);
    EXPECT_STREQ(buf, "abc");
    EXPECT_EQ(copy_bounded(buf, 1, "abc"), 0u);
    EXPECT_STREQ(buf, "");
    EXPECT_EQ(copy_bounded(nullptr, 4, "abc"), 0u);
    char f[6];
    EXPECT_EQ(format_bounded(f, sizeof f, "%d-%s", 123, "xyz"), 5u);
    EXPECT_STREQ(f, "123-x");
    char a[8] = "ab";
    EXPECT_EQ(append_bounded(a, sizeof a, "cdefghij"), 7u);
    EXPECT_STREQ(a, "abcdefg");
}

// The text reader must cut exactly where fgets() cuts.
std::vector<std::string> via_fgets(const std::string &text) {
    FILE *fp = fmemopen(const_cast<char *>(text.data()), text.size(), "r");
    std::vector<std::string> out;
    if (!fp) return out;
    LineReader<8> r(fp);
    std::string_view l;
    while (r.next(&l)) out.emplace_back(l);
    fclose(fp);
    return out;
}

std::vector<std::string> via_text(const std::string &text) {
    TextLineReader<8> r(text);
    std::vector<std::string> out;
    std::string_view l;
    while (r.next(&l)) out.emplace_back(l);
    return out;
}

TEST(InternalLineReader, TextReaderMatchesFgets) {
    for (const std::string &text : {std::string(""), std::string("a\nb\n"), std::string("1234567890abc\nxy"),
                                   std::string("\n\n\n"), std::string("1234567\n"), std::string("1234567")}) {
        EXPECT_EQ(via_text(text), via_fgets(text)) << text;
    }
    std::mt19937 rng(3);
    for (int i = 0; i < 200; ++i) {
        std::string t;
        int n = static_cast<int>(rng() % 40);
        for (int j = 0; j < n; ++j) t += "ab\ncdefghijk"[rng() % 12];
        ASSERT_EQ(via_text(t), via_fgets(t)) << t;
    }
}

TEST(InternalLineReader, LongLineComesBackInPieces) {
    auto pieces = via_text("0123456789ABCDEFG\n");
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0], "0123456");
    EXPECT_EQ(pieces[1], "789ABCD");
    EXPECT_EQ(pieces[2], "EFG\n");
    auto nul = via_text(std::string("ab\0cd\nx", 7));
    EXPECT_EQ(nul[0], "ab");  // C string view of the piece stops at NUL
}

TEST(InternalShellQuote, BenignTextUnchanged) {
    char out[128];
    for (const char *s : {"usb0", "192.168.1.1", "http://host/a_b-c.bin", "/data/web_upload/fw.bin",
                          "key=value", "a,b", "50%"}) {
        ASSERT_GE(shell_quote(s, out, sizeof out), 0);
        EXPECT_STREQ(out, s);
    }
}

TEST(InternalShellQuote, MetacharactersBecomeOneInertWord) {
    char out[128];
    const char *hostile[] = {"a;reboot", "$(reboot)", "`id`", "x y", "a|b", "a&", "it's", "a\nb",
                             "*", "~root", "a>b", "\"q\""};
    for (const char *s : hostile) {
        ASSERT_GE(shell_quote(s, out, sizeof out), 0);
        // Let the real shell parse it: printf must see exactly one argument
        // equal to the input.
        std::string cmd = std::string("set -- ") + out + "; printf '%s|%d' \"$1\" $#";
        FILE *p = popen(cmd.c_str(), "r");
        ASSERT_NE(p, nullptr);
        char got[256] = {};
        size_t n = fread(got, 1, sizeof got - 1, p);
        pclose(p);
        EXPECT_EQ(std::string(got, n), std::string(s) + "|1") << s;
    }
}

TEST(InternalShellQuote, TooSmallBufferGivesEmptyAndError) {
    char out[4];
    EXPECT_EQ(shell_quote("a;b", out, sizeof out), -1);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(shell_quote("abc", out, sizeof out), 3);
    EXPECT_EQ(shell_quote("abcd", out, sizeof out), -1);
    EXPECT_EQ(shell_quote("", out, sizeof out), 0);
    EXPECT_EQ(shell_quote("a", nullptr, 4), -1);
}

}  // namespace
