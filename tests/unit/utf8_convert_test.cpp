// UTF-8 to hexadecimal code units.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_module.h"

namespace {

std::string hex_of(const std::vector<uint8_t> &in, int out_len = 256, int *result = nullptr) {
    std::vector<uint8_t> out(static_cast<size_t>(out_len) + 8, 0xEE);
    int n = util_utf8_to_unicode_string(in.data(), out.data(), static_cast<int>(in.size()), out_len);
    if (result) *result = n;
    EXPECT_EQ(0xEE, out[static_cast<size_t>(out_len)]) << "wrote past output_len";
    return n < 0 ? "<fail>" : std::string(reinterpret_cast<char *>(out.data()));
}

TEST(Utf8Length, CountsCharactersWithinLimit) {
    const uint8_t text[] = {'A', 0xC3, 0xA9, 0xE4, 0xB8, 0xAD, 0};
    // the NUL stops the count; a character cut by the limit still counts
    const std::pair<int, int> cases[] = {{6, 3}, {100, 3}, {2, 2}, {4, 3}, {0, 0}, {-3, 0}};
    for (auto &c : cases) EXPECT_EQ(c.second, util_get_utf8_strlen(text, c.first)) << c.first;
    EXPECT_EQ(0, util_get_utf8_strlen(nullptr, 5));
    const uint8_t lone[] = {0x80, 0xBF, 0xFE, 0xFF};  // each counts as one
    EXPECT_EQ(4, util_get_utf8_strlen(lone, 4));
}

TEST(Utf8One, StandardForms) {
    struct Case {
        std::vector<uint8_t> in;
        uint32_t code;
    } cases[] = {{{0xC3, 0xA9}, 0xE9},
                 {{0xE4, 0xB8, 0xAD}, 0x4E2D},
                 {{0xF0, 0x9F, 0x98, 0x80}, 0x1F600},
                 {{0xF4, 0x8F, 0xBF, 0xBF}, 0x10FFFF},
                 {{0xFF}, 0xFF}};  // one byte: taken as it is
    for (const Case &c : cases) {
        uint32_t u = 7;
        EXPECT_EQ(static_cast<int>(c.in.size()), util_utf8_to_unicode_one(c.in.data(), &u, static_cast<int>(c.in.size())));
        EXPECT_EQ(c.code, u);
    }
}

TEST(Utf8One, LongFormsKeepTheirOwnArithmetic) {
    uint32_t u = 0;
    const uint8_t five[] = {0xF9, 0x88, 0x80, 0x80, 0x80};
    // byte0 = (0x80<<6)+0 = 0, byte1 = (0x80<<4)+0 = 0, byte2 = (0x88<<2)+0 = 0x20,
    // byte3 = 0xF9<<6 mod 256 = 0x40
    EXPECT_EQ(5, util_utf8_to_unicode_one(five, &u, 5));
    EXPECT_EQ(0x40200000u, u);
    const uint8_t six[] = {0xFD, 0xBF, 0x81, 0x82, 0x83, 0x84};
    // byte0 = (0x83<<6)+4 = 0xC4, byte1 = (0x83<<4)+((0x84>>2)&15) = 0x30+1 = 0x31,
    // byte2 = (0x81<<2)+((0x82>>4)&3) = 0x04, byte3 = (1<<6)+63 = 0x7F
    EXPECT_EQ(6, util_utf8_to_unicode_one(six, &u, 6));
    EXPECT_EQ(0x7F0431C4u, u);
}

TEST(Utf8One, BadInput) {
    uint32_t u = 99;
    const uint8_t bad[] = {0xC3, 0x41};
    EXPECT_EQ(0, util_utf8_to_unicode_one(bad, &u, 2));
    EXPECT_EQ(0u, u);
    u = 99;
    EXPECT_EQ(0, util_utf8_to_unicode_one(bad, &u, 7));
    EXPECT_EQ(0u, u);
    EXPECT_EQ(0, util_utf8_to_unicode_one(bad, &u, -2));
    EXPECT_EQ(-1, util_utf8_to_unicode_one(bad, &u, 0));
    EXPECT_EQ(-1, util_utf8_to_unicode_one(nullptr, &u, 1));
    EXPECT_EQ(-1, util_utf8_to_unicode_one(bad, nullptr, 1));
}

TEST(Utf8String, Conversions) {
    int n = 0;
    EXPECT_EQ("004100E9", hex_of({0x41, 0xC3, 0xA9}, 256, &n));
    EXPECT_EQ(8, n);
    EXPECT_EQ("4E2D", hex_of({0xE4, 0xB8, 0xAD}));
    EXPECT_EQ("1F600", hex_of({0xF0, 0x9F, 0x98, 0x80}, 256, &n));
    EXPECT_EQ(5, n);
    // a bad sequence gives 0000 and swallows the byte taken with it
    EXPECT_EQ("00000042", hex_of({0xC3, 0x41, 0x42}));
    // lone continuation bytes and 0xFE/0xFF are one-byte characters
    EXPECT_EQ("008000FE00FF", hex_of({0x80, 0xFE, 0xFF}));
    // a lead byte whose sequence runs past the input is never read beyond it
    EXPECT_EQ("00410000", hex_of({0x41, 0xE4, 0xB8}));
    EXPECT_EQ("0000", hex_of({0xFC}));
}

TEST(Utf8String, OutputBoundaries) {
    int n = 0;
    EXPECT_EQ("00410042", hex_of({0x41, 0x42}, 9, &n));  // exactly the needed size
    EXPECT_EQ(8, n);
    EXPECT_EQ("0041004", hex_of({0x41, 0x42}, 8, &n));   // one short: cut
    EXPECT_EQ(7, n);
    EXPECT_EQ("", hex_of({0x41}, 1, &n));
    EXPECT_EQ(0, n);
    uint8_t out[8];
    const uint8_t in[] = {0x41};
    EXPECT_EQ(-1, util_utf8_to_unicode_string(nullptr, out, 1, 8));
    EXPECT_EQ(-1, util_utf8_to_unicode_string(in, nullptr, 1, 8));
    EXPECT_EQ(-1, util_utf8_to_unicode_string(in, out, 0, 8));
    EXPECT_EQ(-1, util_utf8_to_unicode_string(in, out, 1, 0));
}

}  // namespace
