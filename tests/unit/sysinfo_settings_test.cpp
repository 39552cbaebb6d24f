// Settings-file reader: key and value of a line, the prefix rule, widths,
// bits, long lines, and the file wrapper.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/settings_parse.h"

using namespace cmdlib;

namespace {

bool bit(const InfoStruct &info, int n) { return info_defined_bit(&info, n); }

int bits_set(const InfoStruct &info) {
    int n = 0;
    for (unsigned w : info.defined_fields) n += __builtin_popcount(w);
    return n;
}

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
};

TEST(SettingsLine, KeyAndValue) {
    // The key starts after the first six characters, whatever they are.
    const std::pair<const char *, const char *> keys[] = {
        {"export QX_PPTP_MTU=1400\n", "QX_PPTP_MTU"}, {"export \t AP_SSID = x", "AP_SSID"},
        {"export AP_SSID:x", "AP_SSID"}, {"exportAP_SSID=x", "AP_SSID"},
        {"  export AP_SSID=x", "rt"}, {"QX_PPTP_MTU=1400", ""}, {"export", ""}, {"export =v", ""}};
    for (const auto &[line, key] : keys) EXPECT_EQ(settings_line_key(line), key) << line;
    const std::pair<const char *, const char *> values[] = {
        {"export K=1400\n", "1400"}, {"export K= \"my home net\"\n", "my home net"},
        {"export K= my home net\n", "my"}, {"export K=\"\"\n", ""}, {"export K=abc\r\n", "abc"},
        {"export K=a=b", "a=b"}, {"export K", ""},
        {"export K=\"unterminated value", "unterminated value"}, {"export K=\"a\"b\"", "a"}};
    for (const auto &[line, value] : values) EXPECT_EQ(settings_line_value(line), value) << line;
}

TEST(SettingsApply, PrefixRuleSelectsTheFirstListedKey) {
    Record r;
    EXPECT_TRUE(apply_settings_line("export AP=x\n", &r.info));
    EXPECT_STREQ(r.info.AP_SSID, "x");
    EXPECT_TRUE(bit(r.info, 18));

    Record e;  // an empty key is a prefix of everything
    EXPECT_TRUE(apply_settings_line("export =y\n", &e.info));
    EXPECT_STREQ(e.info.AP_SSID, "y");

    Record p;  // PWD is the file's name of the pre-shared key
    EXPECT_TRUE(apply_settings_line("export PWD=secret\n", &p.info));
    EXPECT_STREQ(p.info.PSK_KEY, "secret");
    EXPECT_TRUE(bit(p.info, 25));

    Record l;  // longer than every listed key, or no "export": no match
    EXPECT_FALSE(apply_settings_line("export AP_SSIDX=z\n", &l.info));
    EXPECT_FALSE(apply_settings_line("QX_DNS_PRIMARY=8.8.8.8\n", &l.info));
    EXPECT_EQ(bits_set(l.info), 0);
}

TEST(SettingsApply, EveryListedKeySelectsItsOwnField) {
    // A listed key shadowed by an earlier one that it is a prefix of would
    // never be read; this walks all 162 + 59.
    std::vector<std::pair<std::string, const InfoFieldDesc *>> all;
    for (size_t i = 0; i < kHandSettingCount; ++i)
        all.emplace_back(hand_setting_key(i), find_info_field(hand_setting_field(i)));
    for (info_field::Id id : kTableSettingFields) all.emplace_back(kInfoFields[id].name, &kInfoFields[id]);
    for (const auto &[key, f] : all) {
        Record r;
        ASSERT_NE(f, nullptr) << key;
        ASSERT_TRUE(apply_settings_line("export " + key + "=v\n", &r.info)) << key;
        EXPECT_STREQ(info_field_ptr(&r.info, *f), "v") << key;
        EXPECT_TRUE(bit(r.info, f->bit)) << key;
        EXPECT_EQ(bits_set(r.info), 1) << key;
    }
}

TEST(SettingsApply, BitsWhereTheNumberingJumps) {
    // The bit numbering is not the record order: these are the places where
    // it jumps back or skips, the ones a renumbering would get wrong.
    const std::pair<const char *, int> rows[] = {
        {"AP_IPADDR", 0}, {"PSK_KEY", 25}, {"QX_PPP_AUTH_TYPE", 55}, {"QX_FORBID_ROAMING", 59},
        {"QX_BAND_PREF", 72}, {"QX_ENABLE_SET_REBOOT", 154}, {"QX_SET_REDIAL_HOURS", 157},
        {"QX_SAVE_LOCK_CELL_AFTER_TIMEOUT", 162}, {"QX_ENABLE_DMZ", 191}, {"QX_3G_APN_NAME", 194},
        {"QX_WIFI_40M_ENABLE", 199}, {"QX_CTL_IDU_SIGNAL_LED_COLOR", 200},
        {"QX_CONFIG_APN_NAME", 209}, {"QX_ENABLE_LOCK_IMSI_PREFIX", 222}};
    for (const auto &[key, want] : rows) {
        const InfoFieldDesc *f = find_info_field(key);
        ASSERT_NE(f, nullptr) << key;
        EXPECT_EQ(f->bit, want) << key;
    }
}

TEST(SettingsApply, ValuesAreCutOneShorterForTableSettings) {
    Record r;
    // Guard bytes around the fields show that nothing is written outside.
    memset(r.info.QX_LOCK_CARD, 'G', sizeof r.info.QX_LOCK_CARD);
    memset(r.info.QX_ENABLE_DMZ, 'G', sizeof r.info.QX_ENABLE_DMZ);
    memset(r.info.QX_DMZ_DEST_IP, 'H', sizeof r.info.QX_DMZ_DEST_IP);
    apply_settings_line("export TXPOWER=0123456789abcdef\n", &r.info);
    EXPECT_STREQ(r.info.TXPOWER, "0123456");  // width 8: 7 characters
    EXPECT_EQ(r.info.QX_LOCK_CARD[0], 'G');   // the next field

    apply_settings_line("export QX_ENABLE_DMZ=0123456789abcdef\n", &r.info);
    EXPECT_EQ(std::string(r.info.QX_ENABLE_DMZ, 6), "012345");  // width 8: 6 characters
    EXPECT_EQ(r.info.QX_ENABLE_DMZ[6], '\0');
    EXPECT_EQ(r.info.QX_ENABLE_DMZ[7], 'G');  // the last byte is left as it was
    EXPECT_EQ(r.info.QX_DMZ_DEST_IP[0], 'H');
}

TEST(SettingsApply, RecordIsNotClearedAndLaterLinesWin) {
    Record r;
    strcpy(r.info.AP_IPADDR, "10.0.0.1");
    parse_settings_text("export AP_SSID=\"home\"\nexport AP_SSID=office\n# comment\n"
                        "export QX_DNS_PRIMARY=\"8.8.8.8\" \n",
                        &r.info);
    EXPECT_STREQ(r.info.AP_IPADDR, "10.0.0.1");
    EXPECT_FALSE(bit(r.info, 0));
    EXPECT_STREQ(r.info.AP_SSID, "office");
    EXPECT_STREQ(r.info.QX_DNS_PRIMARY, "8.8.8.8");
    EXPECT_EQ(bits_set(r.info), 2);
}

TEST(SettingsApply, LongLinesAreReadInPiecesOf767) {
    Record r;
    // 767 characters make the first read; the rest of the line comes back as
    // a line of its own and is parsed as such.
    std::string first = "export AP_SSID=" + std::string(767 - 15, 'a');
    ASSERT_EQ(first.size(), 767u);
    std::string text = first + "export QX_DNS_PRIMARY=1.1.1.1\n";
    parse_settings_text(text, &r.info);
    EXPECT_EQ(std::string(r.info.AP_SSID), std::string(63, 'a'));
    EXPECT_STREQ(r.info.QX_DNS_PRIMARY, "1.1.1.1");

    Record d;  // a description longer than its 768 bytes
    std::string big = "export QX_CONFIG_FILE_DESCRIPTION=\"" + std::string(2000, 'd') + "\"\n";
    parse_settings_text(big, &d.info);
    EXPECT_EQ(strlen(d.info.QX_CONFIG_FILE_DESCRIPTION), 767u - 35u);
}

TEST(SettingsFile, MissingFileLeavesRecordAlone) {
    Record r;
    strcpy(r.info.AP_SSID, "keep");
    EXPECT_EQ(util_server_read_wifi_info_ex("/nonexistent/rc.system.conf", &r.info), -1);
    EXPECT_STREQ(r.info.AP_SSID, "keep");
    EXPECT_EQ(util_server_read_wifi_info_ex(nullptr, &r.info), -1);
    EXPECT_EQ(util_server_read_wifi_info_ex("/dev/null", nullptr), -1);
}

TEST(SettingsFile, FileAndTextReadersAgree) {
    char path[] = "/tmp/settings_test_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    std::string text = "export QX_PPTP_MTU=1400\nexport PWD='x y'\n" + std::string(900, 'z') +
                       "\nexport QX_3G_AUTH_TYPE=\"12345678\"\n";
    std::ofstream(path) << text;
    Record from_file, from_text;
    EXPECT_EQ(util_server_read_wifi_info_ex(path, &from_file.info), 0);
    parse_settings_text(text, &from_text.info);
    unlink(path);
    EXPECT_EQ(memcmp(&from_file.info, &from_text.info, sizeof(InfoStruct)), 0);
    EXPECT_STREQ(from_file.info.QX_3G_AUTH_TYPE, "123456");
    EXPECT_STREQ(from_file.info.PSK_KEY, "'x");
}

}  // namespace
