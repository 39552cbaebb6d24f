// BigValue bit sets and their text form; MD5 lists; the file cipher.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "base/libbase.h"
#include "common/scratch.h"

namespace {

std::string text_of(const BigValue &v) {
    char text[BIG_VALUE_TEXT_SIZE];
    memset(text, 'Z', sizeof text);
    int n = util_convert_BigValue_to_string(&v, text);
    EXPECT_EQ(static_cast<size_t>(n), strlen(text));
    return text;
}

TEST(BaseBits, SetAndTestFollowWordLayout) {
    BigValue v{};
    for (int bit : {0, 33, 1023, -1, 1024}) util_set_one_bit_for_big_value(&v, bit);
    EXPECT_EQ(v.all_bits_info[0], 1u);
    EXPECT_EQ(v.all_bits_info[1], 2u);
    EXPECT_EQ(v.all_bits_info[31], 0x80000000u);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 33), 1);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 32), 0);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 1024), 0);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(nullptr, 0), 0);
}

TEST(BaseBits, TextFormAndRandomRoundTrips) {
    BigValue empty{}, full, feat{};
    memset(&full, 0xFF, sizeof full);
    for (int bit : {0, 1, 5}) util_set_one_bit_for_big_value(&feat, bit);
    EXPECT_EQ(text_of(empty), "0");
    EXPECT_EQ(text_of(feat), "00000023");
    EXPECT_EQ(text_of(full), std::string(256, 'f'));
    std::mt19937 rng(12345);
    for (int iter = 0; iter < 500; ++iter) {
        BigValue v{}, back;
        for (int i = 0, words = static_cast<int>(rng() % 33); i < words; ++i) v.all_bits_info[i] = rng() & rng();
        if (iter < 32) v.all_bits_info[iter] |= 1u << (iter % 32);  // every word, set alone
        memset(&back, 0xAB, sizeof back);
        ASSERT_EQ(util_get_big_value_from_bits(text_of(v).c_str(), &back), 0);
        ASSERT_EQ(memcmp(&back, &v, sizeof v), 0) << text_of(v);
    }
}

TEST(BaseBits, InvalidTextGivesEmptySetShortTextIsWordZero) {
    const BigValue zero{};
    for (const char *bad : {"", "xyz", "00000001g0000000", "000000010", "-1", static_cast<const char *>(nullptr)}) {
        BigValue v;
        memset(&v, 0xFF, sizeof v);
        EXPECT_EQ(util_get_big_value_from_bits(bad, &v), -1) << (bad ? bad : "(null)");
        EXPECT_EQ(memcmp(&v, &zero, sizeof v), 0);
    }
    BigValue w;
    EXPECT_EQ(util_get_big_value_from_bits(std::string(264, '0').c_str(), &w), -1);
    EXPECT_EQ(util_get_big_value_from_bits(" 00000004\n", &w), 0);  // blanks around are fine
    EXPECT_EQ(w.all_bits_info[0], 4u);
    EXPECT_EQ(util_get_big_value_from_bits("5", &w), 0);
    EXPECT_EQ(w.all_bits_info[0], 5u);
    EXPECT_EQ(w.all_bits_info[1], 0u);
    EXPECT_EQ(util_get_big_value_from_bits("FFFFFFFF", &w), 0);
    EXPECT_EQ(w.all_bits_info[0], 0xFFFFFFFFu);
}

class BaseMd5 : public ScratchDir {
  protected:
    int check(const std::string &list) { return util_check_if_md5_sum_is_right(0, write("list.md5", list).c_str()); }
};

TEST_F(BaseMd5, KnownDigestsAndFailures) {
    // RFC 1321 vectors; the 100000 'a' digest agrees with md5sum
    const std::string empty = write("empty", ""), abc = write("abc", "abc"), big = write("big", std::string(100000, 'a'));
    EXPECT_EQ(check("d41d8cd98f00b204e9800998ecf8427e  " + empty + "\n900150983cd24fb0d6963f7d28e17f72  " + abc +
                    "\n1af6d6f2f682f76f80e606aeaaee1680 *" + big + "\n"),
              1);
    EXPECT_EQ(check("900150983CD24FB0D6963F7D28E17F72  " + abc), 1);
    EXPECT_EQ(check("d41d8cd98f00b204e9800998ecf8427e  " + empty + "\n900150983cd24fb0d6963f7d28e17f73  " + abc + "\n"), 0);
    for (const std::string &bad : {"d41d8cd98f00b204e9800998ecf8427e  " + path("nope") + "\n", std::string(),
                                   std::string("garbage line\n")})
        EXPECT_EQ(check(bad), 0) << bad;
    EXPECT_EQ(util_check_if_md5_sum_is_right(0, path("missing").c_str()), 0);
    EXPECT_EQ(util_check_if_md5_sum_is_right(0, nullptr), 0);
}

TEST(BaseCipher, SelfInverseAndLengthPreserving) {
    std::mt19937 rng(7);
    for (int len : {0, 1, 2, 17, 4096}) {
        std::string in(static_cast<size_t>(len), '\0');
        for (auto &c : in) c = static_cast<char>(rng());
        std::string buf = in;
        util_encrypt_file_content(reinterpret_cast<unsigned char *>(buf.data()), len);
        EXPECT_TRUE(len < 17 || buf != in) << len;
        util_encrypt_file_content(reinterpret_cast<unsigned char *>(buf.data()), len);
        EXPECT_EQ(buf, in);
    }
    util_encrypt_file_content(nullptr, 5);
}

}  // namespace
