// The configuration parsers over text: the export-line parser, the pair
// reader, the structure reader, the key index and the packed-file check.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/checksum.h"
#include "cmdlib/internal/config_parse.h"

namespace {

struct Parsed {
    int rc;
    std::string name;
    std::string value;
};

Parsed parse(const std::string &line, int name_size = 64, int value_size = 96) {
    std::vector<char> name(static_cast<size_t>(name_size) + 1, '\0');
    std::vector<char> value(static_cast<size_t>(value_size) + 1, '\0');
    int rc = util_config_parse_config_export_line(line.c_str(), name.data(), name_size, value.data(),
                                                  value_size);
    return {rc, name.data(), value.data()};
}

TEST(ExportLine, BlanksAroundKeyAndValueAndQuotesUndone) {
    Parsed p = parse("  export   QX_A  =   \"hello world\"  \r\n");
    EXPECT_EQ(p.rc, 0);
    EXPECT_EQ(p.name, "QX_A");
    EXPECT_EQ(p.value, "hello world");
    // The exporter's escapes inside double quotes and single-quoted pieces.
    EXPECT_EQ(parse("export K=\"a\\\"b\\$c\"").value, "a\"b$c");
    EXPECT_EQ(parse("export K='it'\\''s'").value, "it's");
    // An unterminated quote keeps what follows it.
    EXPECT_EQ(parse("export K=\"open").value, "open");
    // Nothing after '=' is still an assignment.
    p = parse("export QX_A=");
    EXPECT_EQ(p.rc, 0);
    EXPECT_EQ(p.value, "");
    EXPECT_EQ(parse("export QX_A=\"\"").value, "");
}

TEST(ExportLine, RejectsWhatIsNotAnAssignment) {
    char name[64] = "untouched";
    char value[96] = "untouched";
    for (const char *line : {"QX_A=1", "#export QX_A=1", "export QX_A", "export =1", "export   = 1",
                             "exportQX_A=1", "", "  \r\n", "xexport QX_A=1"}) {
        EXPECT_EQ(util_config_parse_config_export_line(line, name, 64, value, 96), -1) << line;
        EXPECT_STREQ(name, "untouched") << line;
        EXPECT_STREQ(value, "untouched") << line;
    }
    EXPECT_EQ(util_config_parse_config_export_line(nullptr, name, 64, value, 96), -1);
}

TEST(ExportLine, WritesOneCharacterLessThanTheBuffers) {
    // name buffer of 8: at most 6 characters survive
    Parsed p = parse("export ABCDEFGH=0123456789", 8, 6);
    EXPECT_EQ(p.rc, 0);
    EXPECT_EQ(p.name, "ABCDEF");
    EXPECT_EQ(p.value, "0123");
    // exactly size-1 characters still loses the last one
    EXPECT_EQ(parse("export ABCDEFG=x", 8, 96).name, "ABCDEF");
    EXPECT_EQ(parse("export ABCDEF=x", 8, 96).name, "ABCDEF");
    // sizes 1 and 0 write nothing and do not crash
    char name[4] = "n";
    char value[4] = "v";
    EXPECT_EQ(util_config_parse_config_export_line("export A=B", name, 1, value, 0), 0);
    EXPECT_STREQ(name, "n");
    EXPECT_STREQ(value, "v");
    EXPECT_EQ(util_config_parse_config_export_line("export A=B", nullptr, 64, nullptr, 96), 0);
}

TEST(ExportLine, OnlyTheFirst511CharactersCount) {
    std::string line = "export K=" + std::string(502, 'v');  // 511 characters
    EXPECT_EQ(parse(line, 64, 1024).value.size(), 255u);  // unquoting keeps 255
    // '=' beyond character 511 is not seen
    EXPECT_EQ(parse("export " + std::string(504, 'K') + "=1", 1024, 96).rc, -1);
    EXPECT_EQ(parse("export " + std::string(503, 'K') + "=1", 1024, 96).rc, 0);
    // a NUL ends the line
    EXPECT_EQ(cmdlib::parse_export_line(std::string_view("export A\0=1", 11), nullptr, 0, nullptr, 0),
              -1);
}

// ---- the pair reader's line rule --------------------------------------------

std::vector<std::pair<std::string, std::string>> pairs_of(const std::string &text,
                                                          std::vector<const char *> keys = {},
                                                          int max = 400) {
    std::vector<ConfigKeyValuePair> out(static_cast<size_t>(max));
    int n = cmdlib::read_pairs(text, keys.empty() ? nullptr : keys.data(),
                               static_cast<int>(keys.size()), out.data(), max);
    std::vector<std::pair<std::string, std::string>> r;
    for (int i = 0; i < n; ++i) r.emplace_back(out[i].key, out[i].value);
    return r;
}

using PairList = std::vector<std::pair<std::string, std::string>>;

TEST(PairReader, LineRules) {
    const std::string text =
        "export   QX_A  =  \"two words\"  \n"
        "QX_B=nope\n"
        "# export QX_C=comment\n"
        "export QX_D\n"
        "export QX_E=\n"
        "export QX_F=\"\"\n"
        "export QX_G=\"\n"
        "export QX_H=plain\r\n"
        "\texport QX_I='single'\n"
        "export QX_J=\"half\n"
        "export QX_K=a\"b\"\n"
        "export  =x\n"
        "export QX_L=x=y\n";
    EXPECT_EQ(pairs_of(text), (PairList{{"QX_A", "two words"},
                                        {"QX_H", "plain"},
                                        {"QX_I", "'single'"},
                                        {"QX_J", "\"half"},
                                        {"QX_K", "a\"b\""},
                                        {"QX_L", "x=y"}}));
}

TEST(PairReader, KeyListDuplicatesAndStopRules) {
    const std::string text =
        "export A=1\nexport B=2\nexport A=3\nexport C=4\nexport B=5\n";
    // every matching line is stored, duplicates included, file order kept
    EXPECT_EQ(pairs_of(text, {"A", "B", "C"}),
              (PairList{{"A", "1"}, {"B", "2"}, {"A", "3"}}));  // stops at args_count
    // the first key's two copies use up args_count 2 before C is seen
    EXPECT_EQ(pairs_of("export A=1\nexport A=2\nexport C=3\n", {"A", "C"}),
              (PairList{{"A", "1"}, {"A", "2"}}));
    // max_result_count is the other limit
    EXPECT_EQ(pairs_of(text, {"A", "B", "C"}, 2), (PairList{{"A", "1"}, {"B", "2"}}));
    EXPECT_EQ(pairs_of(text, {}, 4).size(), 4u);
    // keys compare exactly, case included
    EXPECT_TRUE(pairs_of(text, {"a", "A ", "AB"}).empty());
    // a key listed twice in the request matches once per line
    EXPECT_EQ(pairs_of(text, {"C", "C", "C"}), (PairList{{"C", "4"}}));
    // null keys in a caller's list never match and never crash
    EXPECT_EQ(pairs_of(text, {nullptr, "C"}), (PairList{{"C", "4"}}));
}

TEST(PairReader, TruncationAndLongLines) {
    std::string v100(100, 'v');
    std::string k70(70, 'K');
    auto r = pairs_of("export " + k70 + "=" + v100 + "\n");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].first, std::string(63, 'K'));
    EXPECT_EQ(r[0].second, std::string(95, 'v'));
    // A 300-character line: the first 255 characters make the pair, the
    // tail comes back as a piece that is not an assignment.
    std::string longline = "export L=" + std::string(246, 'a') + "xx export M=tail\n";
    r = pairs_of(longline + "export N=1\n");
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r[0].first, "L");
    EXPECT_EQ(r[0].second, std::string(95, 'a'));
    EXPECT_EQ(r[1], std::make_pair(std::string("N"), std::string("1")));
    // A tail that happens to start with "export " is read as a line of its own.
    r = pairs_of("export L=" + std::string(246, 'a') + "export M=tail\n", {"M"});
    EXPECT_EQ(r, (PairList{{"M", "tail"}}));
    // NUL bytes end the line for the parser; the rest of that line is lost.
    std::string with_nul("export P=ab\0cd\nexport Q=2\n", 25);
    EXPECT_EQ(pairs_of(with_nul), (PairList{{"P", "ab"}, {"Q", "2"}}));
    EXPECT_TRUE(pairs_of("").empty());
}

// Reference: the nested comparison of every line with every requested key.
PairList nested_reference(const std::string &text, const std::vector<const char *> &keys, int max) {
    PairList r;
    cmdlib::TextLineReader<256> reader(text);
    std::string_view line;
    int limit = std::min<int>(max, static_cast<int>(keys.size()));
    while (static_cast<int>(r.size()) < limit && reader.next(&line)) {
        std::string_view name;
        std::string_view value;
        if (!cmdlib::split_pair_line(line, &name, &value)) continue;
        for (const char *k : keys) {
            if (k && name == k) {
                r.emplace_back(std::string(name.substr(0, 63)), std::string(value.substr(0, 95)));
                break;
            }
        }
    }
    return r;
}

TEST(PairReader, IndexedLookupEqualsNestedComparison) {
    std::mt19937 rng(7);
    std::vector<std::string> universe;
    for (int i = 0; i < 60; ++i) universe.push_back("QX_K" + std::to_string(i));
    universe.push_back("QX_K1 ");  // near-misses
    universe.push_back("qx_k1");
    for (int round = 0; round < 300; ++round) {
        std::string text;
        int lines = static_cast<int>(rng() % 80);
        for (int i = 0; i < lines; ++i)
            text += "export " + universe[rng() % universe.size()] + "=" + std::to_string(i) + "\n";
        std::vector<const char *> keys;
        int nkeys = 1 + static_cast<int>(rng() % 40);
        for (int i = 0; i < nkeys; ++i) keys.push_back(universe[rng() % universe.size()].c_str());
        int max = 1 + static_cast<int>(rng() % 50);
        ASSERT_EQ(pairs_of(text, keys, max), nested_reference(text, keys, max)) << text;
    }
}

TEST(KeyIndex, BeyondTheHashedCapacityKeysAreStillFound) {
    std::vector<std::string> names;
    const int n = cmdlib::KeyIndex::kMaxIndexed + 300;
    for (int i = 0; i < n; ++i) names.push_back("KEY_" + std::to_string(i));
    std::vector<const char *> keys;
    for (auto &s : names) keys.push_back(s.c_str());
    keys.push_back("KEY_5");  // same text again, past the table
    auto index = std::make_unique<cmdlib::KeyIndex>(keys.data(), static_cast<int>(keys.size()));
    EXPECT_TRUE(index->contains("KEY_0"));
    EXPECT_TRUE(index->contains("KEY_" + std::to_string(n - 1)));
    EXPECT_FALSE(index->contains("KEY_"));
    EXPECT_FALSE(index->contains("KEY_" + std::to_string(n)));
    std::vector<int> hits;
    index->for_each_match("KEY_5", [&](int i) { hits.push_back(i); });
    EXPECT_EQ(hits, (std::vector<int>{5, n}));
}

// ---- the structure reader -----------------------------------------------------

struct Demo {
    char a[8];
    char b[4];
    char c[16];
    char d[16];
};

const FieldConfigInfo kDemoFields[] = {
    {"A", offsetof(Demo, a), sizeof(Demo::a), 1},
    {"B", offsetof(Demo, b), sizeof(Demo::b), 1},
    {"C", offsetof(Demo, c), sizeof(Demo::c), 1},
    {"C", offsetof(Demo, d), sizeof(Demo::d), 1},  // one key, two fields
};

TEST(StructReader, LastValueWinsAndValuesAreCut) {
    Demo d;
    memset(&d, 0, sizeof d);
    strcpy(d.b, "old");
    cmdlib::read_struct("export A=first\nexport A=\"second one\"\nexport C='x y'\n"
                        "export Z=ignored\n",
                        kDemoFields, 4, &d);
    EXPECT_STREQ(d.a, "second ");  // cut to 7
    EXPECT_STREQ(d.b, "old");      // absent: left as it was
    EXPECT_STREQ(d.c, "x y");
    EXPECT_STREQ(d.d, "x y");
    // nothing after '=' writes an empty string
    cmdlib::read_struct("export B=\n", kDemoFields, 4, &d);
    EXPECT_STREQ(d.b, "");
}

TEST(StructReader, LongLinesAndBadInput) {
    Demo d;
    memset(&d, 'Q', sizeof d);
    d.c[15] = '\0';
    // the tail of a long line is a piece without "export ": ignored
    cmdlib::read_struct("export C=" + std::string(300, 'v') + "export C=zzz\n", kDemoFields, 4, &d);
    EXPECT_EQ(std::string(d.c), std::string(15, 'v'));
    // null table, zero count and null destination read without writing
    cmdlib::read_struct("export A=1\n", nullptr, 4, &d);
    cmdlib::read_struct("export A=1\n", kDemoFields, 0, &d);
    cmdlib::read_struct("export A=1\n", kDemoFields, 4, nullptr);
    EXPECT_EQ(d.a[0], 'Q');
}

// ---- check sum and packed files --------------------------------------------

TEST(Checksum, CarrylessBigEndianWords) {
    const unsigned char a[] = {0x12, 0x34, 0x56, 0x78};
    EXPECT_EQ(cmdlib::carryless_sum16(a, 4), 0x68AC);
    // an odd byte is the high byte of a last word
    const unsigned char b[] = {0x12, 0x34, 0x56};
    EXPECT_EQ(cmdlib::carryless_sum16(b, 3), 0x6834);
    // carries out of bit 15 are dropped, not folded back in
    const unsigned char c[] = {0xFF, 0xFF, 0x00, 0x02};
    EXPECT_EQ(cmdlib::carryless_sum16(c, 4), 0x0001);
    // the result is the complement stored high byte first
    uint16_t ck = cmdlib::checksum16(a, 4);
    const unsigned char *ckb = reinterpret_cast<const unsigned char *>(&ck);
    EXPECT_EQ(ckb[0], 0x97);
    EXPECT_EQ(ckb[1], 0x53);
    EXPECT_EQ(cmdlib::checksum16(nullptr, 0), 0xFFFF);
}

// A packed file before the transform: length word, payload, pad, check word.
std::vector<unsigned char> packed(const std::string &payload, uint32_t len_field) {
    const size_t area = payload.size() + payload.size() % 2;
    std::vector<unsigned char> f(4 + area + 2, 0);
    for (int i = 0; i < 4; ++i) f[static_cast<size_t>(i)] = static_cast<unsigned char>(len_field >> (24 - 8 * i));
    for (size_t i = 0; i < payload.size(); ++i) f[4 + i] = static_cast<unsigned char>(payload[i]);
    uint16_t word = static_cast<uint16_t>(0xFFFF - cmdlib::carryless_sum16(f.data(), 4 + area));
    f[4 + area] = static_cast<unsigned char>(word >> 8);
    f[4 + area + 1] = static_cast<unsigned char>(word);
    return f;
}

TEST(PackedCheck, SizesAgainstTheLengthField) {
    // odd and even payloads, the empty one, and L = 6 that fits the same
    // 12 bytes as L = 5 thanks to the pad byte
    const std::pair<const char *, uint32_t> good[] = {{"hello", 5}, {"hell", 4}, {"", 0}, {"hello", 6}};
    for (const auto &[payload, field] : good) {
        size_t len = 99;
        auto f = packed(payload, field);
        EXPECT_EQ(cmdlib::check_packed_config(f.data(), f.size(), &len), 0) << field;
        EXPECT_EQ(len, field);
    }
    // length fields that do not fit the size, the huge ones included
    for (uint32_t bad : {3u, 4u, 7u, 8u, 0xFFFFFFFFu, 0xFFFFFFFEu, 0x80000000u}) {
        auto g = packed("hello", bad);
        EXPECT_EQ(cmdlib::check_packed_config(g.data(), g.size(), nullptr), 6) << bad;
    }
}

TEST(PackedCheck, ChecksumAndTinyBuffers) {
    auto f = packed("hello world", 11);
    f[6] ^= 1;
    EXPECT_EQ(cmdlib::check_packed_config(f.data(), f.size(), nullptr), 5);
    // 0 bytes sum to 0: wrong check sum
    EXPECT_EQ(cmdlib::check_packed_config(nullptr, 0, nullptr), 5);
    // buffers too short for a length field whose sum happens to be right
    const unsigned char two[] = {0xFF, 0xFF};
    EXPECT_EQ(cmdlib::check_packed_config(two, 2, nullptr), 6);
    const unsigned char four[] = {0x00, 0x00, 0xFF, 0xFF};
    EXPECT_EQ(cmdlib::check_packed_config(four, 4, nullptr), 6);
    const unsigned char five[] = {0x00, 0x00, 0xFF, 0xFF, 0x00};
    EXPECT_EQ(cmdlib::check_packed_config(five, 5, nullptr), 6);
}

}  // namespace
