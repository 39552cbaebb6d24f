// Feature set of this product, web-page sets, account checks and the
// "name:value" file reader.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <string>

#include "cmdlib/cmdlib_features.h"
#include "common/scratch.h"

namespace {

TEST(SystemFeatures, TextBitsAndPredicatesAgree) {
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    util_get_system_features(text);
    EXPECT_STREQ(text, "001b046700000003");  // bits 0-2, 5, 6, 10, 16, 17, 19, 20, 32, 33
    BigValue set = {};
    ASSERT_EQ(util_get_big_value_from_bits(text, &set), 0);
    for (int bit = -1; bit < 1100; ++bit)
        EXPECT_EQ(util_is_one_system_feature_set(bit), util_is_one_bit_set_for_big_value(&set, bit)) << bit;
    // bits 22 to 25 answer inverted; https holds through the mini_httpd bit
    EXPECT_EQ(util_can_hard_reset_modem(), 1);
    EXPECT_EQ(util_should_check_dmz_status(), 1);
    EXPECT_EQ(util_does_system_support_https(), 1);
    util_get_system_features(nullptr);
    // no web page is listed either way
    util_get_supported_web_page_features_ex(text);
    EXPECT_STREQ(text, "0");
    util_get_unsupported_web_page_features_ex(text);
    EXPECT_STREQ(text, "0");
    for (int n : {0, 7, 1023}) {
        EXPECT_EQ(util_is_one_feature_supported(1, n), 0) << n;
        EXPECT_EQ(util_is_one_feature_supported(0, n), 1) << n;
    }
}

TEST(AccessLegal, UserThenPasswordRules) {
    const struct {
        const char *user, *passwd;
        int want;
    } cases[] = {
        {"admin", "pw", 0},         {nullptr, "pw", 0},        {"ad-min", "pw", -1},
        {"root;reboot", "pw", -1},  {"admin", nullptr, -1},    {"admin", "it's", -2},
        {"admin", "say \"x\"", -2}, {"admin", "$(reboot) `x` ;|&", 0},  // quoted later
        {"ad min", "it's", -1},     // the user is checked first
    };
    for (const auto &c : cases)
        EXPECT_EQ(access_legal(c.user, c.passwd), c.want) << (c.user ? c.user : "null") << " " << (c.passwd ? c.passwd : "null");
    EXPECT_EQ(util_chang_root_passwd("a-b", "pw"), -1);
    EXPECT_EQ(util_chang_root_passwd("ab", "p'w"), -2);
}

class NameValueFile : public ScratchDir {
  protected:
    int get(const std::string &text, const char *name, char *v, int size) {
        return tr069_get_value_from_file(write("file", text).c_str(), name, v, size);
    }
};

TEST_F(NameValueFile, NameAtLineStartAndStrncpyBounds) {
    char v[32];
    ASSERT_EQ(get("xMemAvailable: 1 kB\nMemTotal: 2 kB\nMemAvailable:   700 kB\n", "MemAvailable", v, sizeof v), 0);
    EXPECT_STREQ(v, "700 kB");
    EXPECT_EQ(get("MemTotal: 2 kB\n", "Mem", v, sizeof v), -4);
    char g[8];
    memset(g, 'G', sizeof g);
    ASSERT_EQ(get("k:0123456789\nj:  ab\n", "k", g, 4), 0);
    EXPECT_EQ(std::string(g, 5), "0123G");  // no terminator within size, nothing after it
    memset(g, 'G', sizeof g);
    ASSERT_EQ(get("k:0123456789\nj:  ab\n", "j", g, 4), 0);
    EXPECT_EQ(std::string(g, 5), std::string("ab\0\0G", 5));  // blanks at the head removed
}

TEST_F(NameValueFile, ErrorCodesLineEndsLongNamesAndBigFiles) {
    char v[8];
    EXPECT_EQ(tr069_get_value_from_file(nullptr, "a", v, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file("/proc/meminfo", "", v, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file("/proc/meminfo", "a", nullptr, 8), -1);
    EXPECT_EQ(tr069_get_value_from_file(path("none").c_str(), "a", v, 8), -2);
    EXPECT_EQ(get("", "a", v, 8), -3);
    ASSERT_EQ(get("a:1\r", "a", v, sizeof v), 0);  // no line feed: the carriage return ends the value
    EXPECT_STREQ(v, "1");
    EXPECT_EQ(get("a:1", "a", v, sizeof v), -4);  // neither: not found
    // the search text is the name and colon cut to 63 characters
    std::string name(100, 'n');
    EXPECT_EQ(get(name.substr(0, 62) + ":hit\n", name.c_str(), v, sizeof v), -4);
    EXPECT_EQ(get(name.substr(0, 62) + ":hit\n", name.substr(0, 62).c_str(), v, sizeof v), 0);
    EXPECT_EQ(get(std::string(16400, '#') + "\nk:v\n", "k", v, sizeof v), -4);  // beyond the 16383 bytes read
}

TEST(UpgradeSpace, MemAvailableInBytes) {
    char v[32];
    ASSERT_EQ(tr069_get_value_from_file("/proc/meminfo", "MemAvailable", v, sizeof v), 0);
    // the figure moves between the two reads; it stays within a few MiB
    EXPECT_NEAR(static_cast<double>(upgrade_available_space_size()), static_cast<double>(atoll(v) << 10),
                256.0 * 1024 * 1024);
}

}  // namespace
