// Feature set of this product, web-page sets, account checks and the
// "name:value" file reader.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "cmdlib/cmdlib_features.h"

namespace {

TEST(SystemFeatures, BitsOfThisProduct) {
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    util_get_system_features(text);
    BigValue set = {};
    ASSERT_EQ(util_get_big_value_from_bits(text, &set), 0) << text;
    const int on[] = {0, 1, 2, 5, 6, 10, 16, 17, 19, 20, 32, 33};
    for (int bit = 0; bit < 64; ++bit) {
        bool want = std::find(std::begin(on), std::end(on), bit) != std::end(on);
        EXPECT_EQ(util_is_one_bit_set_for_big_value(&set, bit), want ? 1 : 0) << bit;
        EXPECT_EQ(util_is_one_system_feature_set(bit), want ? 1 : 0) << bit;
    }
    EXPECT_EQ(util_is_one_system_feature_set(-1), 0);
    EXPECT_EQ(util_is_one_system_feature_set(5000), 0);
    util_get_system_features(nullptr);
}

TEST(SystemFeatures, PredicatesIncludingInvertedAndHttps) {
    // bits 22 to 25 answer inverted; https holds through the mini_httpd bit
    EXPECT_EQ(util_can_hard_reset_modem(), 1);
    EXPECT_EQ(util_should_check_dmz_status(), 1);
    EXPECT_EQ(util_does_system_support_https(), 1);
    // Every predicate of the list agrees with its bit.
#define CHECK_FEATURE(bit, name, inverted) \
    EXPECT_EQ(name(), (inverted) ? !util_is_one_system_feature_set(bit) \
                                 : util_is_one_system_feature_set(bit)) << #name;
    CMDLIB_SYSTEM_FEATURES(CHECK_FEATURE)
#undef CHECK_FEATURE
}

TEST(WebPageFeatures, BothSetsEmpty) {
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    util_get_supported_web_page_features_ex(text);
    EXPECT_STREQ(text, "0");
    util_get_unsupported_web_page_features_ex(text);
    EXPECT_STREQ(text, "0");
    for (int n = 0; n < 1024; n += 7) {
        EXPECT_EQ(util_is_one_feature_supported(1, n), 0) << n;
        EXPECT_EQ(util_is_one_feature_supported(0, n), 1) << n;
    }
}

TEST(AccessLegal, UserAndPasswordRules) {
    EXPECT_EQ(access_legal("admin", "pw"), 0);
    EXPECT_EQ(access_legal(nullptr, "pw"), 0);
    EXPECT_EQ(access_legal("ad-min", "pw"), -1);
    EXPECT_EQ(access_legal("root;reboot", "pw"), -1);
    EXPECT_EQ(access_legal("admin", nullptr), -1);
    EXPECT_EQ(access_legal("admin", "it's"), -2);
    EXPECT_EQ(access_legal("admin", "say \"x\""), -2);
    EXPECT_EQ(access_legal("admin", "$(reboot) `x` ;|&"), 0);  // quoted later
    EXPECT_EQ(access_legal("ad min", "it's"), -1);  // the user is checked first
    EXPECT_EQ(util_chang_root_passwd("a-b", "pw"), -1);
    EXPECT_EQ(util_chang_root_passwd("ab", "p'w"), -2);
}

class NameValueFile : public ::testing::Test {
  protected:
    void write(const std::string &text) {
        strcpy(path_, "/tmp/tr069_test_XXXXXX");
        int fd = mkstemp(path_);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::write(fd, text.data(), text.size()), (ssize_t)text.size());
        close(fd);
    }
    void TearDown() override {
        if (path_[0]) unlink(path_);
    }
    char path_[64] = "";
};

TEST_F(NameValueFile, FindsNameAtLineStartOnly) {
    write("xMemAvailable: 1 kB\nMemTotal: 2 kB\nMemAvailable:   700 kB\n");
    char v[32];
    ASSERT_EQ(tr069_get_value_from_file(path_, "MemAvailable", v, sizeof v), 0);
    EXPECT_STREQ(v, "700 kB");
    EXPECT_EQ(tr069_get_value_from_file(path_, "Mem", v, sizeof v), -4);
    EXPECT_EQ(tr069_get_value_from_file(path_, "Swap", v, sizeof v), -4);
}

TEST_F(NameValueFile, StrncpySemanticsStayInTheBuffer) {
    write("k:0123456789\nj:  ab\n");
    char v[8];
    memset(v, 'G', sizeof v);
    ASSERT_EQ(tr069_get_value_from_file(path_, "k", v, 4), 0);
    EXPECT_EQ(std::string(v, 4), "0123");  // no terminator within size
    EXPECT_EQ(v[4], 'G');                  // nothing written after size
    memset(v, 'G', sizeof v);
    ASSERT_EQ(tr069_get_value_from_file(path_, "j", v, 4), 0);
    EXPECT_STREQ(v, "ab");  // blanks at the head removed
    EXPECT_EQ(v[4], 'G');
}

TEST_F(NameValueFile, ErrorCodesAndLineEnds) {
    char v[8];
    EXPECT_EQ(tr069_get_value_from_file(nullptr, "a", v, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file("/proc/meminfo", "", v, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file("/proc/meminfo", "a", nullptr, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file("/nonexistent/x", "a", v, 8), -2);
    write("");
    EXPECT_EQ(tr069_get_value_from_file(path_, "a", v, 8), -3);
    unlink(path_);
    write("a:1\r");  // no line feed: the carriage return ends the value
    ASSERT_EQ(tr069_get_value_from_file(path_, "a", v, sizeof v), 0);
    EXPECT_STREQ(v, "1");
    unlink(path_);
    write("a:1");  // neither: not found
    EXPECT_EQ(tr069_get_value_from_file(path_, "a", v, sizeof v), -4);
}

TEST_F(NameValueFile, LongNameIsCutAndBigFilesAreReadInPart) {
    std::string name(100, 'n');
    write(name.substr(0, 62) + ":hit\n");
    char v[8];
    // The search text is the name and colon cut to 63 characters: the first
    // 63 characters of the name, without the colon.
    ASSERT_EQ(tr069_get_value_from_file(path_, name.c_str(), v, sizeof v), -4);
    EXPECT_EQ(tr069_get_value_from_file(path_, name.substr(0, 62).c_str(), v, sizeof v), 0);
    unlink(path_);
    write(std::string(16400, '#') + "\nk:v\n");  // beyond the 16383 bytes read
    EXPECT_EQ(tr069_get_value_from_file(path_, "k", v, sizeof v), -4);
}

TEST(UpgradeSpace, MemAvailableInBytes) {
    char v[32];
    ASSERT_EQ(tr069_get_value_from_file("/proc/meminfo", "MemAvailable", v, sizeof v), 0);
    long long kb = atoll(v);
    EXPECT_GT(kb, 0);
    long long bytes = upgrade_available_space_size();
    // The figure moves between the two reads; it stays within a few MiB.
    EXPECT_NEAR(static_cast<double>(bytes), static_cast<double>(kb << 10), 256.0 * 1024 * 1024);
}

}  // namespace
