// The shared internal helpers of base/internal, tested once here for every
// parser that uses them.  Single calls are tables (tests/golden/
// helper_calls): numbers, stripping, the word splitter, bounded copies,
// shell quoting, command lines and the byte reader.  Here: the line reader
// against fgets, hostile text through a real shell, cut command lines never
// run, and the byte reader's sticky failure and bounded sub-readers.
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
#include "common/golden.h"
#include "common/scratch.h"

namespace {

using namespace cmdlib;
using golden::Args;
using golden::show;

std::string q(std::string_view s) { return show(std::string(s)); }

constexpr uint8_t kBytes[6] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc};

// One read of kBytes after skipping to a[0]: whether it worked, the value
// (or first byte) in hex, and where the reader stands.
std::string byte_read(Args &a) {
    ByteReader r(kBytes, sizeof kBytes), s;
    r.skip(a[0].z());
    const std::string &op = a[1];
    const size_t n = a.size() > 2 ? a[2].z() : 0;
    uint8_t b = 0, copy[8] = {};
    uint16_t h = 0;
    uint32_t w = 0;
    uint64_t v = 0;
    bool ok = false;
    if (op == "u8") ok = r.u8(&b), v = b;
    else if (op == "be16") ok = r.be16(&h), v = h;
    else if (op == "le16") ok = r.le16(&h), v = h;
    else if (op == "be32") ok = r.be32(&w), v = w;
    else if (op == "le32") ok = r.le32(&w), v = w;
    else if (op == "skip") ok = r.skip(n);
    else if (op == "bytes") ok = r.bytes(n <= sizeof copy ? copy : nullptr, n), v = copy[0];
    else if (op == "sub") ok = r.sub(n, &s) && s.size() == n, v = ok && n ? s.current()[0] : 0;
    char hex[32];
    snprintf(hex, sizeof hex, "%llx", static_cast<unsigned long long>(v));
    return std::string(ok ? "ok " : "failed ") + (ok ? hex : "-") + " at " + std::to_string(r.offset()) +
           (r.ok() == ok ? "" : " sticky?") + (r.offset() + r.remaining() == sizeof kBytes ? "" : " window?");
}

std::string_view separators(const std::string &name) {
    return name == "blank" ? " " : name == "eol" ? kBlankOrEol : name == "white" ? kWhiteSpace : name;
}

TEST(InternalHelpers, Golden) {
    golden::check("helper_calls", golden::calls({
        {"int64", [](Args &a) {
             int64_t v = 0;
             return parse_int64(a[0], &v) ? std::to_string(v) : "refused";
         }},
        {"atoi", [](Args &a) { return show(atoi_sat(a[0])); }},
        {"split_once", [](Args &a) {
             std::string_view h = "-", t = "-";
             bool ok = split_once(a[0], a[1][0], &h, &t);
             return show(ok) + " " + q(h) + " " + q(t);
         }},
        {"strip", [](Args &a) { return q(strip(a[0])); }},
        {"consume", [](Args &a) {
             std::string_view s = a[0];
             bool ok = consume_prefix(&s, a[1]);
             return show(ok) + " " + q(s);
         }},
        {"words", [](Args &a) {
             std::string_view rest = a[0], seps = separators(a[1]);
             std::string out;
             for (std::string_view w = next_word(&rest, seps); !w.empty(); w = next_word(&rest, seps))
                 out += q(w) + " ";
             return out + (rest.empty() ? "(all read)" : "(left " + q(rest) + ")");
         }},
        {"split_words", [](Args &a) {
             std::string_view w[4];
             size_t n = split_words(a[0], " ", w, a[1].z());
             return show(n) + " last " + q(n ? w[n - 1] : "");
         }},
        {"copy", [](Args &a) {
             char buf[16] = "untouched";
             return show(copy_bounded(a[1].i() ? buf : nullptr, a[1].z(), a[0]), buf);
         }},
        {"format", [](Args &a) {
             char f[16];
             return show(format_bounded(f, a[2].z(), "%d-%s", a[0].i(), a[1].c_str()), f);
         }},
        {"append", [](Args &a) {
             char buf[16];
             copy_bounded(buf, sizeof buf, a[0]);
             return show(append_bounded(buf, a[2].z(), a[1]), buf);
         }},
        {"quote", [](Args &a) {
             char out[128] = "untouched";
             return show(shell_quote(a[0].c_str(), out, a[1].z()), out);
         }},
        {"format_command", [](Args &a) {
             char out[64] = "junk";
             return show(format_command(out, a[2].z(), a[0].c_str(), a[1].c_str()), out);
         }},
        {"append_word", [](Args &a) {
             if (a[2] == "16") {
                 CommandLine<16> small;
                 small.format("%s", a[0].c_str());
                 bool ok = small.append_word(a[1]);
                 return show(ok, small.ok(), small.c_str());
             }
             CommandLine<64> line;
             line.format("%s", a[0].c_str());
             bool ok = line.append_word(a[1]);
             return show(ok, line.ok(), line.c_str());
         }},
        {"read", byte_read},
        {"align", [](Args &a) {
             const uint8_t bytes[8] = {};
             ByteReader r(bytes, a[0].z());
             r.skip(a[1].z());
             bool ok = r.align(a[2].z());
             return std::string(ok ? "ok" : "failed") + " at " + std::to_string(r.offset());
         }},
    }));
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

TEST(InternalShellQuote, HostileTextIsOneInertWordForARealShell) {
    char out[128];
    for (const char *s : {"a;reboot", "$(reboot)", "`id`", "x y", "a|b", "a&", "it's", "a\nb", "*", "~root", "a>b", "\"q\""}) {
        ASSERT_GE(shell_quote(s, out, sizeof out), 0);
        std::string cmd = std::string("set -- ") + out + "; printf '%s|%d' \"$1\" $#";
        FILE *p = popen(cmd.c_str(), "r");
        ASSERT_NE(p, nullptr);
        char got[256] = {};
        size_t n = fread(got, 1, sizeof got - 1, p);
        pclose(p);
        EXPECT_EQ(std::string(got, n), std::string(s) + "|1") << s;
    }
    EXPECT_EQ(shell_quote("a", nullptr, 4), -1);
    EXPECT_FALSE(format_command(nullptr, 8, "x"));
}

class InternalRun : public ScratchDir {};

TEST_F(InternalRun, CutLineIsNeverRunAndStaysCutUntilStartedAfresh) {
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
    CommandLine<8> line;  // exactly seven characters fit; one more cuts it for good
    EXPECT_TRUE(line.format("ab") && line.append("%s", "cde") && line.append_word("fg"));
    EXPECT_EQ(line.size(), 7u);
    EXPECT_FALSE(line.append("h"));
    EXPECT_STREQ(line.c_str(), "");
    EXPECT_FALSE(line.append_word("x"));
    EXPECT_TRUE(line.format("ok"));
    EXPECT_STREQ(line.c_str(), "ok");
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

}  // namespace
