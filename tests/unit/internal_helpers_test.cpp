// The shared internal helpers of base/internal, tested once here for every
// parser that uses them.  Single calls are tables (tests/unit/golden/
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

std::string q(std::string_view s) { return "\"" + std::string(s) + "\""; }

constexpr uint8_t kBytes[6] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc};

// One read of kBytes after skipping to a[0]: whether it worked, the value
// (or first byte), and where the reader stands.
std::string byte_read(const Args &a) {
    ByteReader r(kBytes, sizeof kBytes), s;
    if (!r.skip(std::stoul(a[0]))) return "bad start";
    const std::string &op = a[1];
    const size_t n = a.size() > 2 ? std::stoul(a[2]) : 0;
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
    bool sum_ok = r.offset() + r.remaining() == sizeof kBytes;
    return std::string(ok ? "ok " : "failed ") + (ok ? hex : "-") + " at " + std::to_string(r.offset()) + (r.ok() == ok ? "" : " sticky?") +
           (sum_ok ? "" : " window?");
}

TEST(InternalHelpers, Golden) {
    golden::check("helper_calls", golden::calls({
        {"int64",
         [](const Args &a) {
             int64_t v = 0;
             return parse_int64(a[0], &v) ? std::to_string(v) : std::string("refused");
         }},
        {"atoi", [](const Args &a) { return std::to_string(atoi_sat(a[0])); }},
        {"split_once",
         [](const Args &a) {
             std::string_view h = "-", t = "-";
             bool ok = split_once(a[0], a[1][0], &h, &t);
             return std::to_string(ok) + " " + q(h) + " " + q(t);
         }},
        {"strip", [](const Args &a) { return q(strip(a[0])); }},
        {"consume",
         [](const Args &a) {
             std::string_view s = a[0];
             return std::to_string(consume_prefix(&s, a[1])) + " " + q(s);
         }},
        {"words",
         [](const Args &a) {
             std::string_view rest = a[0], seps = a[1] == "blank" ? " " : a[1] == "eol" ? kBlankOrEol : a[1] == "white" ? kWhiteSpace : a[1];
             std::string out;
             for (std::string_view w = next_word(&rest, seps); !w.empty(); w = next_word(&rest, seps)) out += q(w) + " ";
             return out + (rest.empty() ? "(all read)" : "(left " + q(rest) + ")");
         }},
        {"split_words",
         [](const Args &a) {
             std::string_view w[4];
             size_t n = split_words(a[0], " ", w, std::stoul(a[1]));
             return std::to_string(n) + " last " + q(n ? w[n - 1] : "");
         }},
        {"copy",
         [](const Args &a) {
             char buf[16] = "untouched";
             size_t n = copy_bounded(std::stoi(a[1]) ? buf : nullptr, std::stoul(a[1]), a[0]);
             return std::to_string(n) + " " + q(buf);
         }},
        {"format",
         [](const Args &a) {
             char f[16];
             size_t n = format_bounded(f, std::stoul(a[2]), "%d-%s", std::stoi(a[0]), a[1].c_str());
             return std::to_string(n) + " " + q(f);
         }},
        {"append",
         [](const Args &a) {
             char buf[16];
             copy_bounded(buf, sizeof buf, a[0]);
             size_t n = append_bounded(buf, std::stoul(a[2]), a[1]);
             return std::to_string(n) + " " + q(buf);
         }},
        {"quote",
         [](const Args &a) {
             char out[128] = "untouched";
             int n = shell_quote(a[0].c_str(), out, std::stoul(a[1]));
             return std::to_string(n) + " " + q(out);
         }},
        {"format_command",
         [](const Args &a) {
             char out[64] = "junk";
             bool ok = format_command(out, std::stoul(a[2]), a[0].c_str(), a[1].c_str());
             return std::to_string(ok) + " " + q(out);
         }},
        {"append_word",
         [](const Args &a) {
             CommandLine<64> line;
             line.format("%s", a[0].c_str());
             bool ok = std::stoi(a[2]) == 64 ? line.append_word(a[1]) : false;
             if (std::stoi(a[2]) == 16) {
                 CommandLine<16> small;
                 small.format("%s", a[0].c_str());
                 ok = small.append_word(a[1]);
                 return std::to_string(ok) + " " + std::to_string(small.ok()) + " " + q(small.c_str());
             }
             return std::to_string(ok) + " " + std::to_string(line.ok()) + " " + q(line.c_str());
         }},
        {"read", byte_read},
        {"align",
         [](const Args &a) {
             const uint8_t bytes[8] = {};
             ByteReader r(bytes, std::stoul(a[0]));
             r.skip(std::stoul(a[1]));
             bool ok = r.align(std::stoul(a[2]));
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
