// The configuration parsers over text: the export-line parser, the pair
// reader, the key index, the structure reader and the packed-file check.
// Line rules are golden cases (tests/golden/export_line, pairs).
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
#include "common/golden.h"

namespace {

using PairList = std::vector<std::pair<std::string, std::string>>;

// One line: "rc|name|value"; the buffers start as "untouched".
std::string render_export_line(const std::string &line) {
    char name[1024] = "untouched", value[1024] = "untouched";
    int rc = cmdlib::parse_export_line(line, name, sizeof name, value, sizeof value);
    return std::to_string(rc) + "|" + name + "|" + value;
}

TEST(ExportLine, GoldenLines) { golden::check("export_line", golden::per_line(render_export_line)); }

TEST(ExportLine, WritesOneCharacterLessThanTheBuffers) {
    struct Case {
        const char *line;
        int name_size, value_size;
        const char *name, *value;
    } cases[] = {
        {"export ABCDEFGH=0123456789", 8, 6, "ABCDEF", "0123"},
        {"export ABCDEFG=x", 8, 96, "ABCDEF", "x"},  // size-1 characters still lose one
        {"export A=B", 1, 0, "n", "v"},              // sizes 1 and 0 write nothing
    };
    for (const Case &c : cases) {
        char name[16] = "n", value[16] = "v";
        EXPECT_EQ(util_config_parse_config_export_line(c.line, name, c.name_size, value, c.value_size), 0);
        EXPECT_STREQ(name, c.name) << c.line;
        EXPECT_STREQ(value, c.value) << c.line;
    }
    EXPECT_EQ(util_config_parse_config_export_line("export A=B", nullptr, 64, nullptr, 96), 0);
    EXPECT_EQ(util_config_parse_config_export_line(nullptr, nullptr, 64, nullptr, 96), -1);
    // a NUL ends the line
    EXPECT_EQ(cmdlib::parse_export_line(std::string_view("export A\0=1", 11), nullptr, 0, nullptr, 0), -1);
}

// ---- the pair reader ----------------------------------------------------------

PairList pairs_of(const std::string &text, std::vector<const char *> keys = {}, int max = 400) {
    std::vector<ConfigKeyValuePair> out(static_cast<size_t>(max));
    int n = cmdlib::read_pairs(text, keys.empty() ? nullptr : keys.data(), static_cast<int>(keys.size()),
                               out.data(), max);
    PairList r;
    for (int i = 0; i < n; ++i) r.emplace_back(out[i].key, out[i].value);
    return r;
}

TEST(PairReader, GoldenFiles) {
    golden::check("pairs", [](const std::string &text) {
        std::string out;
        for (const auto &[k, v] : pairs_of(text)) out += k + "=" + v + "\n";
        return out;
    });
}

TEST(PairReader, KeyListDuplicatesAndStopRules) {
    const std::string text = "export A=1\nexport B=2\nexport A=3\nexport C=4\nexport B=5\n";
    // every matching line is stored, duplicates included, until args_count
    EXPECT_EQ(pairs_of(text, {"A", "B", "C"}), (PairList{{"A", "1"}, {"B", "2"}, {"A", "3"}}));
    EXPECT_EQ(pairs_of("export A=1\nexport A=2\nexport C=3\n", {"A", "C"}), (PairList{{"A", "1"}, {"A", "2"}}));
    // max_result_count is the other limit
    EXPECT_EQ(pairs_of(text, {"A", "B", "C"}, 2), (PairList{{"A", "1"}, {"B", "2"}}));
    EXPECT_EQ(pairs_of(text, {}, 4).size(), 4u);
    // keys compare exactly; a key listed twice matches once per line; null keys never match
    EXPECT_TRUE(pairs_of(text, {"a", "A ", "AB"}).empty());
    EXPECT_EQ(pairs_of(text, {"C", "C", "C"}), (PairList{{"C", "4"}}));
    EXPECT_EQ(pairs_of(text, {nullptr, "C"}), (PairList{{"C", "4"}}));
}

// The indexed reader against the plain nested comparison of every line with
// every requested key, on random texts and key lists with near-misses.
PairList nested_reference(const std::string &text, const std::vector<const char *> &keys, int max) {
    PairList r;
    cmdlib::TextLineReader<256> reader(text);
    std::string_view line, name, value;
    int limit = std::min<int>(max, static_cast<int>(keys.size()));
    while (static_cast<int>(r.size()) < limit && reader.next(&line)) {
        if (!cmdlib::split_pair_line(line, &name, &value)) continue;
        if (std::any_of(keys.begin(), keys.end(), [&](const char *k) { return k && name == k; }))
            r.emplace_back(std::string(name.substr(0, 63)), std::string(value.substr(0, 95)));
    }
    return r;
}

TEST(PairReader, IndexedLookupEqualsNestedComparison) {
    std::mt19937 rng(7);
    std::vector<std::string> universe = {"QX_K1 ", "qx_k1"};
    for (int i = 0; i < 60; ++i) universe.push_back("QX_K" + std::to_string(i));
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int i = 0, lines = static_cast<int>(rng() % 80); i < lines; ++i)
            text += "export " + universe[rng() % universe.size()] + "=" + std::to_string(i) + "\n";
        std::vector<const char *> keys;
        for (int i = 0, n = 1 + static_cast<int>(rng() % 40); i < n; ++i)
            keys.push_back(universe[rng() % universe.size()].c_str());
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
    EXPECT_TRUE(index->contains("KEY_" + std::to_string(n - 1)));
    EXPECT_FALSE(index->contains("KEY_"));
    EXPECT_FALSE(index->contains("KEY_" + std::to_string(n)));
    std::vector<int> hits;
    index->for_each_match("KEY_5", [&](int i) { hits.push_back(i); });
    EXPECT_EQ(hits, (std::vector<int>{5, n}));
}

// ---- the structure reader -------------------------------------------------------

struct Demo {
    char a[8], b[4], c[16], d[16];
};

const FieldConfigInfo kDemoFields[] = {
    {"A", offsetof(Demo, a), sizeof(Demo::a), 1},
    {"B", offsetof(Demo, b), sizeof(Demo::b), 1},
    {"C", offsetof(Demo, c), sizeof(Demo::c), 1},
    {"C", offsetof(Demo, d), sizeof(Demo::d), 1},  // one key, two fields
};

TEST(StructReader, LastValueWinsValuesAreCutAndLongLinesComeInPieces) {
    Demo d;
    memset(&d, 0, sizeof d);
    strcpy(d.b, "old");
    cmdlib::read_struct("export A=first\nexport A=\"second one\"\nexport C='x y'\nexport Z=ignored\n",
                        kDemoFields, 4, &d);
    EXPECT_STREQ(d.a, "second ");  // cut to 7
    EXPECT_STREQ(d.b, "old");      // absent: left as it was
    EXPECT_STREQ(d.c, "x y");
    EXPECT_STREQ(d.d, "x y");
    cmdlib::read_struct("export B=\n", kDemoFields, 4, &d);  // nothing after '=': empty
    EXPECT_STREQ(d.b, "");
    // the tail of a long line is a piece without "export ": ignored
    cmdlib::read_struct("export C=" + std::string(300, 'v') + "export C=zzz\n", kDemoFields, 4, &d);
    EXPECT_EQ(std::string(d.c), std::string(15, 'v'));
    // null table, zero count and null destination read without writing
    cmdlib::read_struct("export A=1\n", nullptr, 4, &d);
    cmdlib::read_struct("export A=1\n", kDemoFields, 0, &d);
    cmdlib::read_struct("export A=1\n", kDemoFields, 4, nullptr);
    EXPECT_STREQ(d.a, "second ");
}

// ---- check sum and packed files ---------------------------------------------------

TEST(Checksum, CarrylessBigEndianWords) {
    const std::pair<std::vector<unsigned char>, uint16_t> sums[] = {
        {{0x12, 0x34, 0x56, 0x78}, 0x68AC},
        {{0x12, 0x34, 0x56}, 0x6834},        // an odd byte is the high byte of a last word
        {{0xFF, 0xFF, 0x00, 0x02}, 0x0001},  // carries out of bit 15 are dropped, not folded back
    };
    for (const auto &[bytes, sum] : sums) EXPECT_EQ(cmdlib::carryless_sum16(bytes.data(), bytes.size()), sum);
    // the result is the complement stored high byte first
    const unsigned char a[] = {0x12, 0x34, 0x56, 0x78};
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
    memcpy(f.data() + 4, payload.data(), payload.size());
    uint16_t word = static_cast<uint16_t>(0xFFFF - cmdlib::carryless_sum16(f.data(), 4 + area));
    f[4 + area] = static_cast<unsigned char>(word >> 8);
    f[4 + area + 1] = static_cast<unsigned char>(word);
    return f;
}

TEST(PackedCheck, SizesChecksumAndTinyBuffers) {
    // odd and even payloads, the empty one, and L = 6 that fits the same
    // 12 bytes as L = 5 thanks to the pad byte
    for (const auto &[payload, field] : {std::pair<const char *, uint32_t>{"hello", 5}, {"hell", 4}, {"", 0}, {"hello", 6}}) {
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
    auto f = packed("hello world", 11);
    f[6] ^= 1;
    EXPECT_EQ(cmdlib::check_packed_config(f.data(), f.size(), nullptr), 5);
    EXPECT_EQ(cmdlib::check_packed_config(nullptr, 0, nullptr), 5);  // 0 bytes sum to 0
    // too short for a length field although the sum happens to be right
    const std::vector<unsigned char> tiny[] = {{0xFF, 0xFF}, {0x00, 0x00, 0xFF, 0xFF}, {0x00, 0x00, 0xFF, 0xFF, 0x00}};
    for (const auto &t : tiny) EXPECT_EQ(cmdlib::check_packed_config(t.data(), t.size(), nullptr), 6) << t.size();
}

}  // namespace
