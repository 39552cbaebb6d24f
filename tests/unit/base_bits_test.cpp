// BigValue bit sets and their text round trip; MD5 lists; the file cipher.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "base/libbase.h"

namespace {

BigValue round_trip(const BigValue &in, std::string *text_out = nullptr) {
    char text[BIG_VALUE_TEXT_SIZE];
    memset(text, 'Z', sizeof text);
    int n = util_convert_BigValue_to_string(&in, text);
    EXPECT_EQ(static_cast<size_t>(n), strlen(text));
    EXPECT_LT(n, BIG_VALUE_TEXT_SIZE);
    BigValue out;
    memset(&out, 0xAB, sizeof out);
    EXPECT_EQ(util_get_big_value_from_bits(text, &out), 0) << text;
    if (text_out) *text_out = text;
    return out;
}

TEST(BaseBits, SetAndTestFollowWordLayout) {
    BigValue v{};
    util_set_one_bit_for_big_value(&v, 0);
    util_set_one_bit_for_big_value(&v, 33);
    util_set_one_bit_for_big_value(&v, 1023);
    EXPECT_EQ(v.all_bits_info[0], 1u);
    EXPECT_EQ(v.all_bits_info[1], 2u);
    EXPECT_EQ(v.all_bits_info[31], 0x80000000u);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 33), 1);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 32), 0);
    util_set_one_bit_for_big_value(&v, -1);
    util_set_one_bit_for_big_value(&v, 1024);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&v, 1024), 0);
    EXPECT_EQ(util_is_one_bit_set_for_big_value(nullptr, 0), 0);
}

TEST(BaseBits, TextRoundTripEdges) {
    std::string text;
    BigValue empty{};
    BigValue back = round_trip(empty, &text);
    EXPECT_EQ(text, "0");
    EXPECT_EQ(memcmp(&back, &empty, sizeof back), 0);

    BigValue full;
    memset(&full, 0xFF, sizeof full);
    back = round_trip(full, &text);
    EXPECT_EQ(text.size(), 256u);
    EXPECT_EQ(memcmp(&back, &full, sizeof back), 0);

    for (int bit : {0, 1, 31, 32, 1023}) {
        BigValue one{};
        util_set_one_bit_for_big_value(&one, bit);
        back = round_trip(one);
        EXPECT_EQ(memcmp(&back, &one, sizeof back), 0) << bit;
        for (int b = 0; b < BIG_VALUE_BITS; ++b)
            ASSERT_EQ(util_is_one_bit_set_for_big_value(&back, b), b == bit ? 1 : 0);
    }
    BigValue feat{};
    for (int bit : {0, 1, 5}) util_set_one_bit_for_big_value(&feat, bit);
    round_trip(feat, &text);
    EXPECT_EQ(text, "00000023");
}

TEST(BaseBits, RandomRoundTrips) {
    std::mt19937 rng(12345);
    for (int iter = 0; iter < 500; ++iter) {
        BigValue v{};
        int words = static_cast<int>(rng() % 33);
        for (int i = 0; i < words; ++i) v.all_bits_info[i] = rng() & rng();
        BigValue back = round_trip(v);
        ASSERT_EQ(memcmp(&back, &v, sizeof v), 0) << iter;
    }
}

TEST(BaseBits, InvalidTextGivesEmptySet) {
    for (const char *bad : std::initializer_list<const char *>{"", "xyz", "00000001g0000000", "000000010", "-1", nullptr}) {
        BigValue v;
        memset(&v, 0xFF, sizeof v);
        EXPECT_EQ(util_get_big_value_from_bits(bad, &v), -1) << (bad ? bad : "(null)");
        BigValue zero{};
        EXPECT_EQ(memcmp(&v, &zero, sizeof v), 0);
    }
    std::string too_long(264, '0');
    BigValue v;
    EXPECT_EQ(util_get_big_value_from_bits(too_long.c_str(), &v), -1);
    BigValue w;
    EXPECT_EQ(util_get_big_value_from_bits(" 00000004\n", &w), 0);  // blanks around are fine
    EXPECT_EQ(util_is_one_bit_set_for_big_value(&w, 2), 1);
    // A short mask is word 0.
    EXPECT_EQ(util_get_big_value_from_bits("5", &w), 0);
    EXPECT_EQ(w.all_bits_info[0], 5u);
    EXPECT_EQ(w.all_bits_info[1], 0u);
    EXPECT_EQ(util_get_big_value_from_bits("FFFFFFFF", &w), 0);
    EXPECT_EQ(w.all_bits_info[0], 0xFFFFFFFFu);
}

class BaseMd5 : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/base_md5_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        ASSERT_EQ(cmd_echo_without_new_line("", (dir_ + "/empty").c_str()), 0);
        ASSERT_EQ(cmd_echo_without_new_line("abc", (dir_ + "/abc").c_str()), 0);
        std::string big(100000, 'a');
        ASSERT_EQ(util_save_file_content(big.data(), static_cast<int>(big.size()), (dir_ + "/big").c_str()), 0);
    }
    void TearDown() override { cmd_rmdir_advance(dir_.c_str()); }
    int check(const std::string &list) {
        std::string p = dir_ + "/list.md5";
        EXPECT_EQ(cmd_echo_without_new_line(list.c_str(), p.c_str()), 0);
        return util_check_if_md5_sum_is_right(0, p.c_str());
    }
    std::string dir_;
};

TEST_F(BaseMd5, KnownDigests) {
    // RFC 1321 test vectors; the 100000 'a' digest agrees with md5sum.
    std::string list = "d41d8cd98f00b204e9800998ecf8427e  " + dir_ + "/empty\n" +
                       "900150983cd24fb0d6963f7d28e17f72  " + dir_ + "/abc\n" +
                       "1af6d6f2f682f76f80e606aeaaee1680 *" + dir_ + "/big\n";
    EXPECT_EQ(check(list), 1);
    EXPECT_EQ(check("900150983CD24FB0D6963F7D28E17F72  " + dir_ + "/abc"), 1);
}

TEST_F(BaseMd5, OneWrongDigestOrMissingFileFails) {
    std::string list = "d41d8cd98f00b204e9800998ecf8427e  " + dir_ + "/empty\n" +
                       "900150983cd24fb0d6963f7d28e17f73  " + dir_ + "/abc\n";
    EXPECT_EQ(check(list), 0);
    EXPECT_EQ(check("d41d8cd98f00b204e9800998ecf8427e  " + dir_ + "/nope\n"), 0);
    EXPECT_EQ(check(""), 0);
    EXPECT_EQ(check("garbage line\n"), 0);
    EXPECT_EQ(util_check_if_md5_sum_is_right(0, (dir_ + "/missing").c_str()), 0);
    EXPECT_EQ(util_check_if_md5_sum_is_right(0, nullptr), 0);
}

TEST(BaseCipher, SelfInverseAndLengthPreserving) {
    std::mt19937 rng(7);
    for (int len : {0, 1, 2, 17, 4096}) {
        std::string in(static_cast<size_t>(len), '\0');
        for (auto &c : in) c = static_cast<char>(rng());
        std::string buf = in;
        util_encrypt_file_content(reinterpret_cast<unsigned char *>(buf.data()), len);
        if (len >= 17) {
            EXPECT_NE(buf, in);
        }
        util_encrypt_file_content(reinterpret_cast<unsigned char *>(buf.data()), len);
        EXPECT_EQ(buf, in);
    }
    util_encrypt_file_content(nullptr, 5);
}

}  // namespace
