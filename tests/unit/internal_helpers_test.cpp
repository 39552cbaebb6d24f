// The shared internal helpers of base/internal: text parsing and the word
// splitter, bounded copies, fgets-style line reading, shell quoting, the
// command-line builder and the wire-format byte reader.
#include <gtest/gtest.h>
#include <stdio.h>

#include <sys/stat.h>
#include <unistd.h>

#include <random>
#include <string>
#include <vector>

#include "base/internal/byte_reader.h"
#include "base/internal/command_line.h"
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

TEST(InternalText, WordSplitterWithSeparatorSets) {
    struct Case {
        std::string_view text, separators;
        std::vector<std::string_view> words;
    };
    const Case cases[] = {
        {"", " ", {}},
        {"   ", " ", {}},
        {"a", " ", {"a"}},
        {" a  b ", " ", {"a", "b"}},
        {"a\tb c", " ", {"a\tb", "c"}},           // a tab is part of a word split on blanks
        {"a\tb c\r\n", kBlankOrEol, {"a", "b", "c"}},
        {"\n5", kBlankOrEol, {"5"}},                // leading line ends are separators too
        {"100,200 300,", " ,", {"100", "200", "300"}},
        {",,,", " ,", {}},
        {"x\vy\fz", kWhiteSpace, {"x", "y", "z"}},
    };
    for (const Case &c : cases) {
        std::string_view rest = c.text;
        std::vector<std::string_view> got;
        for (std::string_view w = next_word(&rest, c.separators); !w.empty();
             w = next_word(&rest, c.separators))
            got.push_back(w);
        EXPECT_EQ(got, c.words) << c.text;
        EXPECT_TRUE(rest.empty()) << c.text;
    }
    // split_words stops at its capacity and leaves later words unseen.
    std::string_view w[2];
    EXPECT_EQ(split_words("a b c", " ", w, 2), 2u);
    EXPECT_EQ(w[1], "b");
    EXPECT_EQ(split_words("a b", " ", w, 0), 0u);
    static_assert(split_words(" x y ", " ", w, 0) == 0, "usable in constant expressions");
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

// ---- command lines ---------------------------------------------------------

TEST(InternalCommandLine, FormatReportsTruncationAtExactlyTheCapacity) {
    struct Case {
        const char *arg;
        bool fits;
    };
    // capacity 8: seven characters and the terminator
    const Case cases[] = {{"", true}, {"123", true}, {"1234", true}, {"12345", false}, {"123456789", false}};
    for (const Case &c : cases) {
        char out[8] = "junk";
        EXPECT_EQ(format_command(out, sizeof out, "ls %s", c.arg), c.fits) << c.arg;
        EXPECT_STREQ(out, c.fits ? (std::string("ls ") + c.arg).c_str() : "") << c.arg;
    }
    char out[1];
    EXPECT_FALSE(format_command(out, sizeof out, "x"));
    EXPECT_TRUE(format_command(out, sizeof out, "%s", ""));
    EXPECT_FALSE(format_command(nullptr, 8, "x"));
}

TEST(InternalCommandLine, BuilderStaysCutOnceAPieceDoesNotFit) {
    CommandLine<8> line;
    EXPECT_TRUE(line.format("ab"));
    EXPECT_TRUE(line.append("%s", "cde"));
    EXPECT_TRUE(line.append_word("fg"));  // exactly 7 characters
    EXPECT_TRUE(line.ok());
    EXPECT_STREQ(line.c_str(), "abcdefg");
    EXPECT_EQ(line.size(), 7u);
    EXPECT_TRUE(line.append("%s", ""));   // nothing more still fits
    EXPECT_FALSE(line.append("h"));
    EXPECT_FALSE(line.ok());
    EXPECT_STREQ(line.c_str(), "");
    EXPECT_FALSE(line.append_word("x"));  // cut for good...
    EXPECT_TRUE(line.format("ok"));       // ...until started afresh
    EXPECT_STREQ(line.c_str(), "ok");
}

TEST(InternalCommandLine, OutsideTextIsOneInertWordOrNothing) {
    struct Case {
        const char *text, *line;
    };
    const Case cases[] = {
        {"usb0", "ip link show usb0"},
        {"a;reboot", "ip link show 'a;reboot'"},
        {"it's", "ip link show 'it'\\''s'"},
        {"", "ip link show "},
    };
    for (const Case &c : cases) {
        CommandLine<64> line;
        line.format("ip link show ");
        EXPECT_TRUE(line.append_word(c.text));
        EXPECT_STREQ(line.c_str(), c.line);
    }
    CommandLine<16> small;
    small.format("rm -f ");
    EXPECT_FALSE(small.append_word("a b c d e f"));  // the quoted form needs 13 more
    EXPECT_FALSE(small.ok());
}

TEST(InternalCommandLine, CutLineIsNeverRun) {
    char dir[] = "/tmp/cmdline_test_XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    std::string file = std::string(dir) + "/made";
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
    rmdir(dir);
}

// ---- byte reader ------------------------------------------------------------

constexpr uint8_t kBytes[6] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc};

enum class Op { u8, be16, be32, le16, le32, skip, bytes, sub };

struct ReadCase {
    const char *name;
    size_t start;  // offset skipped to first
    Op op;
    size_t n;      // length for skip/bytes/sub
    bool ok;
    uint64_t value;  // value read (u8..le32), first byte (bytes/sub)
    size_t offset_after;
};

uint64_t run_op(ByteReader *r, Op op, size_t n, bool *ok) {
    uint8_t b = 0;
    uint16_t h = 0;
    uint32_t w = 0;
    uint8_t copy[8] = {};
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
        *ok = r->sub(n, &s);
        if (*ok && s.size() != n) *ok = false;
        return *ok && n ? s.current()[0] : 0;
    }
    return 0;
}

TEST(InternalByteReader, ReadsFailInsteadOfPassingTheEnd) {
    const ReadCase cases[] = {
        {"u8 first", 0, Op::u8, 0, true, 0x12, 1},
        {"u8 last byte", 5, Op::u8, 0, true, 0xbc, 6},
        {"u8 at the end", 6, Op::u8, 0, false, 0, 6},
        {"be16", 0, Op::be16, 0, true, 0x1234, 2},
        {"be16 ends exactly at the end", 4, Op::be16, 0, true, 0x9abc, 6},
        {"be16 one past", 5, Op::be16, 0, false, 0, 5},
        {"be32", 1, Op::be32, 0, true, 0x3456789a, 5},
        {"be32 ends exactly at the end", 2, Op::be32, 0, true, 0x56789abc, 6},
        {"be32 one past", 3, Op::be32, 0, false, 0, 3},
        {"le16", 0, Op::le16, 0, true, 0x3412, 2},
        {"le32", 2, Op::le32, 0, true, 0xbc9a7856, 6},
        {"le32 one past", 3, Op::le32, 0, false, 0, 3},
        {"skip to the end", 0, Op::skip, 6, true, 0, 6},
        {"skip one past", 0, Op::skip, 7, false, 0, 0},
        {"skip zero at the end", 6, Op::skip, 0, true, 0, 6},
        {"skip huge", 1, Op::skip, SIZE_MAX, false, 0, 1},
        {"skip huge minus offset", 1, Op::skip, SIZE_MAX - 1, false, 0, 1},
        {"bytes", 1, Op::bytes, 3, true, 0x34, 4},
        {"bytes zero", 3, Op::bytes, 0, true, 0, 3},
        {"bytes one past", 4, Op::bytes, 3, false, 0, 4},
        {"bytes huge", 0, Op::bytes, SIZE_MAX, false, 0, 0},
        {"sub", 2, Op::sub, 4, true, 0x56, 6},
        {"sub zero at the end", 6, Op::sub, 0, true, 0, 6},
        {"sub one past", 2, Op::sub, 5, false, 0, 2},
        {"sub huge", 2, Op::sub, SIZE_MAX, false, 0, 2},
    };
    for (const ReadCase &c : cases) {
        ByteReader r(kBytes, sizeof kBytes);
        ASSERT_TRUE(r.skip(c.start)) << c.name;
        bool ok = false;
        uint64_t v = run_op(&r, c.op, c.n, &ok);
        EXPECT_EQ(ok, c.ok) << c.name;
        EXPECT_EQ(r.ok(), c.ok) << c.name;
        if (c.ok) {
            EXPECT_EQ(v, c.value) << c.name;
        }
        EXPECT_EQ(r.offset(), c.offset_after) << c.name;
        EXPECT_EQ(r.offset() + r.remaining(), sizeof kBytes) << c.name;
    }
}

TEST(InternalByteReader, FailureIsStickyAndSubReadersAreBounded) {
    ByteReader r(kBytes, sizeof kBytes);
    uint32_t w = 0;
    EXPECT_FALSE(r.skip(7));
    uint8_t b = 0;
    EXPECT_FALSE(r.u8(&b));  // would fit, but the reader has failed
    EXPECT_FALSE(r.skip(0));
    EXPECT_EQ(b, 0);

    ByteReader outer(kBytes, sizeof kBytes), inner;
    ASSERT_TRUE(outer.skip(1));
    ASSERT_TRUE(outer.sub(3, &inner));  // 34 56 78
    EXPECT_EQ(inner.offset(), 0u);
    EXPECT_FALSE(inner.be32(&w));       // the outer bytes past it are out of reach
    EXPECT_TRUE(outer.ok());            // a failing sub-reader leaves its parent alone
    uint16_t h = 0;
    EXPECT_TRUE(outer.be16(&h));
    EXPECT_EQ(h, 0x9abc);

    ByteReader empty;
    EXPECT_EQ(empty.remaining(), 0u);
    EXPECT_EQ(empty.current(), nullptr);
    EXPECT_TRUE(empty.skip(0));
    EXPECT_FALSE(empty.u8(nullptr));
    ByteReader null_with_length(static_cast<const uint8_t *>(nullptr), 100);
    EXPECT_EQ(null_with_length.remaining(), 0u);
}

TEST(InternalByteReader, AlignSkipsPaddingAndToleratesAMissingLastPad) {
    struct Case {
        size_t size, start, alignment;
        bool ok;
        size_t offset_after;
    };
    const Case cases[] = {
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

// Random reads over a buffer of exactly its size (ASan guards the edges):
// the window invariant holds and nothing fitting is refused.
TEST(InternalByteReader, RandomReadsStayInsideTheWindow) {
    std::mt19937 rng(7);
    for (int round = 0; round < 500; ++round) {
        std::vector<uint8_t> buf(rng() % 24);
        for (auto &b : buf) b = static_cast<uint8_t>(rng());
        ByteReader r(buf.data(), buf.size());
        while (r.ok()) {
            size_t before = r.remaining();
            Op op = static_cast<Op>(rng() % 8);
            size_t n = rng() % 4 == 0 ? SIZE_MAX - rng() % 3 : rng() % 10;
            bool ok = false;
            run_op(&r, op, n, &ok);
            size_t need = op == Op::u8 ? 1 : op == Op::be16 || op == Op::le16 ? 2
                        : op == Op::be32 || op == Op::le32 ? 4 : n;
            ASSERT_EQ(ok, need <= before);
            ASSERT_EQ(r.offset() + r.remaining(), buf.size());
        }
    }
}

constexpr uint32_t read_be32_at_compile_time() {
    ByteReader r(kBytes, sizeof kBytes);
    uint32_t v = 0;
    r.skip(2);
    r.be32(&v);
    return v;
}
static_assert(read_be32_at_compile_time() == 0x56789abc, "the reader works in constant expressions");

}  // namespace
