// The shared internal helpers of base/internal, tested once here for every
// parser that uses them: text parsing and the word splitter, bounded
// copies, fgets-style line reading, shell quoting, the command-line builder
// and the wire-format byte reader.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <random>
#include <string>
#include <vector>

#include "base/internal/byte_reader.h"
#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/internal/shell_quote.h"
#include "base/internal/text.h"
#include "common/scratch.h"

namespace {

using namespace cmdlib;

TEST(InternalText, NumbersWithoutLocaleOrOverflow) {
    const std::pair<const char *, bool> parsed[] = {
        {"9223372036854775807", true}, {"-9223372036854775808", true}, {"+7", true},
        {"9223372036854775808", false}, {"-9223372036854775809", false}, {"", false}, {"-", false},
        {"12a", false}, {" 12", false}};
    for (const auto &[text, ok] : parsed) {
        int64_t v = 0;
        EXPECT_EQ(parse_int64(text, &v), ok) << text;
        if (ok) {
            EXPECT_EQ(std::to_string(v), text[0] == '+' ? text + 1 : text);
        }
    }
    const std::pair<const char *, int> atoi_cases[] = {
        {"  42abc", 42}, {"-17", -17}, {"x", 0}, {"99999999999999999999", INT32_MAX}, {"-99999999999999999999", INT32_MIN}};
    for (const auto &[text, v] : atoi_cases) EXPECT_EQ(atoi_sat(text), v) << text;
}

TEST(InternalText, SplitStripAndWords) {
    std::string_view h, t, s = "export A=1";
    ASSERT_TRUE(split_once("KEY=a=b", '=', &h, &t));
    EXPECT_EQ(h, "KEY");
    EXPECT_EQ(t, "a=b");
    EXPECT_FALSE(split_once("none", '=', &h, &t));
    EXPECT_EQ(strip(" \t x y \r\n"), "x y");
    EXPECT_TRUE(consume_prefix(&s, "export "));
    EXPECT_FALSE(consume_prefix(&s, "export "));
    EXPECT_EQ(s, "A=1");
    struct Case {
        std::string_view text, separators;
        std::vector<std::string_view> words;
    } cases[] = {
        {"", " ", {}},
        {" a  b ", " ", {"a", "b"}},
        {"a\tb c", " ", {"a\tb", "c"}},  // a tab is part of a word split on blanks
        {"a\tb c\r\n", kBlankOrEol, {"a", "b", "c"}},
        {"\n5", kBlankOrEol, {"5"}},  // leading line ends are separators too
        {"100,200 300,", " ,", {"100", "200", "300"}},
        {",,,", " ,", {}},
        {"x\vy\fz", kWhiteSpace, {"x", "y", "z"}},
    };
    for (const Case &c : cases) {
        std::string_view rest = c.text;
        std::vector<std::string_view> got;
        for (std::string_view w = next_word(&rest, c.separators); !w.empty(); w = next_word(&rest, c.separators))
            got.push_back(w);
        EXPECT_EQ(got, c.words) << c.text;
        EXPECT_TRUE(rest.empty()) << c.text;
    }
    std::string_view w[2];  // split_words stops at its capacity
    EXPECT_EQ(split_words("a b c", " ", w, 2), 2u);
    EXPECT_EQ(w[1], "b");
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

// The text reader cuts exactly where fgets() cuts, on random texts with
// lines shorter than, equal to and longer than its 8-byte buffer.
TEST(InternalLineReader, TextReaderMatchesFgets) {
    std::mt19937 rng(3);
    for (int i = 0; i < 300; ++i) {
        std::string t;
        for (int j = 0, n = static_cast<int>(rng() % 40); j < n; ++j) t += "ab\ncdefghijk"[rng() % 12];
        std::vector<std::string> by_fgets, by_text;
        FILE *fp = fmemopen(t.data(), t.size(), "r");
        LineReader<8> file_reader(fp);
        TextLineReader<8> text_reader(t);
        std::string_view l;
        while (fp && file_reader.next(&l)) by_fgets.emplace_back(l);
        while (text_reader.next(&l)) by_text.emplace_back(l);
        if (fp) fclose(fp);
        ASSERT_EQ(by_text, by_fgets) << t;
    }
    TextLineReader<8> nul(std::string_view("ab\0cd\nx", 7));
    std::string_view l;
    ASSERT_TRUE(nul.next(&l));
    EXPECT_EQ(l, "ab");  // the C string of the piece stops at NUL
}

// ---- shell quoting and command lines ---------------------------------------------

TEST(InternalShellQuote, BenignTextUnchangedHostileTextOneInertWord) {
    char out[128];
    for (const char *s : {"usb0", "192.168.1.1", "http://host/a_b-c.bin", "/data/web_upload/fw.bin", "key=value", "a,b", "50%"}) {
        ASSERT_GE(shell_quote(s, out, sizeof out), 0);
        EXPECT_STREQ(out, s);
    }
    for (const char *s : {"a;reboot", "$(reboot)", "`id`", "x y", "a|b", "a&", "it's", "a\nb", "*", "~root", "a>b", "\"q\""}) {
        ASSERT_GE(shell_quote(s, out, sizeof out), 0);
        // the real shell must see exactly one argument equal to the input
        std::string cmd = std::string("set -- ") + out + "; printf '%s|%d' \"$1\" $#";
        FILE *p = popen(cmd.c_str(), "r");
        ASSERT_NE(p, nullptr);
        char got[256] = {};
        size_t n = fread(got, 1, sizeof got - 1, p);
        pclose(p);
        EXPECT_EQ(std::string(got, n), std::string(s) + "|1") << s;
    }
    char small[4];  // too small: empty and an error
    EXPECT_EQ(shell_quote("a;b", small, sizeof small), -1);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(shell_quote("abc", small, sizeof small), 3);
    EXPECT_EQ(shell_quote("abcd", small, sizeof small), -1);
    EXPECT_EQ(shell_quote("", small, sizeof small), 0);
    EXPECT_EQ(shell_quote("a", nullptr, 4), -1);
}

TEST(InternalCommandLine, TruncationIsReportedAtExactlyTheCapacity) {
    // capacity 8: seven characters and the terminator
    for (const auto &[arg, fits] : {std::pair<const char *, bool>{"", true}, {"1234", true}, {"12345", false}}) {
        char out[8] = "junk";
        EXPECT_EQ(format_command(out, sizeof out, "ls %s", arg), fits) << arg;
        EXPECT_STREQ(out, fits ? (std::string("ls ") + arg).c_str() : "") << arg;
    }
    EXPECT_FALSE(format_command(nullptr, 8, "x"));
    CommandLine<8> line;
    EXPECT_TRUE(line.format("ab"));
    EXPECT_TRUE(line.append("%s", "cde"));
    EXPECT_TRUE(line.append_word("fg"));  // exactly 7 characters
    EXPECT_STREQ(line.c_str(), "abcdefg");
    EXPECT_EQ(line.size(), 7u);
    EXPECT_FALSE(line.append("h"));
    EXPECT_FALSE(line.ok());
    EXPECT_STREQ(line.c_str(), "");
    EXPECT_FALSE(line.append_word("x"));  // cut for good...
    EXPECT_TRUE(line.format("ok"));       // ...until started afresh
    EXPECT_STREQ(line.c_str(), "ok");
}

TEST(InternalCommandLine, OutsideTextIsOneInertWordOrNothing) {
    for (const auto &[text, want] : {std::pair<const char *, const char *>{"usb0", "ip link show usb0"},
                                     {"a;reboot", "ip link show 'a;reboot'"},
                                     {"it's", "ip link show 'it'\\''s'"},
                                     {"", "ip link show "}}) {
        CommandLine<64> line;
        line.format("ip link show ");
        EXPECT_TRUE(line.append_word(text));
        EXPECT_STREQ(line.c_str(), want);
    }
    CommandLine<16> small;
    small.format("rm -f ");
    EXPECT_FALSE(small.append_word("a b c d e f"));  // the quoted form needs 13 more
    EXPECT_FALSE(small.ok());
}

class InternalRun : public ScratchDir {};

TEST_F(InternalRun, CutLineIsNeverRun) {
    const std::string file = path("made");
    CommandLine<256> whole;
    whole.format("touch ");
    whole.append_word(file);
    EXPECT_EQ(run_command(whole), 0);
    EXPECT_EQ(access(file.c_str(), F_OK), 0);
    unlink(file.c_str());
    CommandLine<24> cut;
    cut.format("touch ");
    cut.append_word(file);
    EXPECT_EQ(run_command(cut), -1);
    EXPECT_NE(access(file.c_str(), F_OK), 0);
}

// ---- byte reader ------------------------------------------------------------------

constexpr uint8_t kBytes[6] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc};

enum class Op { u8, be16, be32, le16, le32, skip, bytes, sub };

uint64_t run_op(ByteReader *r, Op op, size_t n, bool *ok) {
    uint8_t b = 0, copy[8] = {};
    uint16_t h = 0;
    uint32_t w = 0;
    ByteReader s;
    switch (op) {
    case Op::u8: *ok = r->u8(&b); return b;
    case Op::be16: *ok = r->be16(&h); return h;
    case Op::be32: *ok = r->be32(&w); return w;
    case Op::le16: *ok = r->le16(&h); return h;
    case Op::le32: *ok = r->le32(&w); return w;
    case Op::skip: *ok = r->skip(n); return 0;
    case Op::bytes: *ok = r->bytes(n <= sizeof copy ? copy : nullptr, n); return copy[0];
    case Op::sub:
        *ok = r->sub(n, &s) && s.size() == n;
        return *ok && n ? s.current()[0] : 0;
    }
    return 0;
}

TEST(InternalByteReader, ReadsFailInsteadOfPassingTheEnd) {
    struct Case {
        size_t start;  // offset skipped to first
        Op op;
        size_t n;  // length for skip/bytes/sub
        bool ok;
        uint64_t value;  // value read, or first byte of bytes/sub
        size_t offset_after;
    } cases[] = {
        {0, Op::u8, 0, true, 0x12, 1},          {5, Op::u8, 0, true, 0xbc, 6},
        {6, Op::u8, 0, false, 0, 6},            {0, Op::be16, 0, true, 0x1234, 2},
        {4, Op::be16, 0, true, 0x9abc, 6},      {5, Op::be16, 0, false, 0, 5},
        {1, Op::be32, 0, true, 0x3456789a, 5},  {2, Op::be32, 0, true, 0x56789abc, 6},
        {3, Op::be32, 0, false, 0, 3},          {0, Op::le16, 0, true, 0x3412, 2},
        {2, Op::le32, 0, true, 0xbc9a7856, 6},  {3, Op::le32, 0, false, 0, 3},
        {0, Op::skip, 6, true, 0, 6},           {0, Op::skip, 7, false, 0, 0},
        {6, Op::skip, 0, true, 0, 6},           {1, Op::skip, SIZE_MAX, false, 0, 1},
        {1, Op::skip, SIZE_MAX - 1, false, 0, 1}, {1, Op::bytes, 3, true, 0x34, 4},
        {3, Op::bytes, 0, true, 0, 3},          {4, Op::bytes, 3, false, 0, 4},
        {0, Op::bytes, SIZE_MAX, false, 0, 0},  {2, Op::sub, 4, true, 0x56, 6},
        {6, Op::sub, 0, true, 0, 6},            {2, Op::sub, 5, false, 0, 2},
        {2, Op::sub, SIZE_MAX, false, 0, 2},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "start " << c.start << " op " << static_cast<int>(c.op) << " n " << c.n);
        ByteReader r(kBytes, sizeof kBytes);
        ASSERT_TRUE(r.skip(c.start));
        bool ok = false;
        uint64_t v = run_op(&r, c.op, c.n, &ok);
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(r.ok(), c.ok);
        if (c.ok) {
            EXPECT_EQ(v, c.value);
        }
        EXPECT_EQ(r.offset(), c.offset_after);
        EXPECT_EQ(r.offset() + r.remaining(), sizeof kBytes);
    }
}

TEST(InternalByteReader, FailureIsStickyAndSubReadersAreBounded) {
    ByteReader r(kBytes, sizeof kBytes);
    uint8_t b = 0;
    EXPECT_FALSE(r.skip(7));
    EXPECT_FALSE(r.u8(&b));  // would fit, but the reader has failed
    EXPECT_FALSE(r.skip(0));
    ByteReader outer(kBytes, sizeof kBytes), inner;
    uint32_t w = 0;
    uint16_t h = 0;
    ASSERT_TRUE(outer.skip(1));
    ASSERT_TRUE(outer.sub(3, &inner));  // 34 56 78
    EXPECT_FALSE(inner.be32(&w));       // the outer bytes past it are out of reach
    EXPECT_TRUE(outer.be16(&h));        // a failing sub-reader leaves its parent alone
    EXPECT_EQ(h, 0x9abc);
    ByteReader null_with_length(static_cast<const uint8_t *>(nullptr), 100);
    EXPECT_EQ(null_with_length.remaining(), 0u);
    EXPECT_FALSE(null_with_length.u8(nullptr));
}

TEST(InternalByteReader, AlignSkipsPaddingAndToleratesAMissingLastPad) {
    struct Case {
        size_t size, start, alignment;
        bool ok;
        size_t offset_after;
    } cases[] = {
        {8, 0, 4, true, 0}, {8, 1, 4, true, 4}, {8, 4, 4, true, 4}, {8, 5, 4, true, 8},
        {6, 5, 4, true, 6},  // 3 bytes of padding, 1 left: stands at the end
        {6, 6, 4, true, 6}, {8, 3, 1, true, 3}, {8, 3, 0, false, 3},
    };
    const uint8_t bytes[8] = {};
    for (const Case &c : cases) {
        ByteReader r(bytes, c.size);
        ASSERT_TRUE(r.skip(c.start));
        EXPECT_EQ(r.align(c.alignment), c.ok) << c.start << "/" << c.alignment;
        EXPECT_EQ(r.offset(), c.offset_after) << c.start << "/" << c.alignment;
    }
}

}  // namespace
