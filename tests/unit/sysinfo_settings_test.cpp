// Settings-file reader: key and value of a line, the prefix rule, widths,
// bits, long lines, and the file wrapper.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "cmdlib.h"
#include "cmdlib_platform_fibocom_t750.h"
#include "info_fields.h"
#include "settings_parse.h"

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

TEST(SettingsLine, KeyStartsAfterTheFirstSixCharacters) {
    EXPECT_EQ(settings_line_key("export QX_PPTP_MTU=1400\n"), "QX_PPTP_MTU");
    EXPECT_EQ(settings_line_key("export \t AP_SSID = x"), "AP_SSID");
    EXPECT_EQ(settings_line_key("export AP_SSID:x"), "AP_SSID");
    EXPECT_EQ(settings_line_key("exportAP_SSID=x"), "AP_SSID");
    // The first six characters are skipped whatever they are.
    EXPECT_EQ(settings_line_key("  export AP_SSID=x"), "rt");
    EXPECT_EQ(settings_line_key("QX_PPTP_MTU=1400"), "");
    EXPECT_EQ(settings_line_key("export"), "");
    EXPECT_EQ(settings_line_key("export =v"), "");
}

TEST(SettingsLine, ValueRules) {
    EXPECT_EQ(settings_line_value("export K=1400\n"), "1400");
    EXPECT_EQ(settings_line_value("export K= \"my home net\"\n"), "my home net");
    EXPECT_EQ(settings_line_value("export K= my home net\n"), "my");
    EXPECT_EQ(settings_line_value("export K=\"\"\n"), "");
    EXPECT_EQ(settings_line_value("export K=abc\r\n"), "abc");
    EXPECT_EQ(settings_line_value("export K=a=b"), "a=b");
    EXPECT_EQ(settings_line_value("export K"), "");
    EXPECT_EQ(settings_line_value("export K=\"unterminated value"), "unterminated value");
    EXPECT_EQ(settings_line_value("export K=\"a\"b\""), "a");
}

TEST(SettingsApply, OneByOneSettingSetsFieldAndBit) {
    Record r;
    EXPECT_TRUE(apply_settings_line("export QX_PPTP_MTU=1400\n", &r.info));
    EXPECT_STREQ(r.info.QX_PPTP_MTU, "1400");
    EXPECT_TRUE(bit(r.info, kInfoFields[info_field::QX_PPTP_MTU].bit));
    EXPECT_EQ(bits_set(r.info), 1);

    EXPECT_FALSE(apply_settings_line("QX_DNS_PRIMARY=8.8.8.8\n", &r.info));
    EXPECT_STREQ(r.info.QX_DNS_PRIMARY, "");
    EXPECT_EQ(bits_set(r.info), 1);
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

    Record l;  // longer than every listed key: no match
    EXPECT_FALSE(apply_settings_line("export AP_SSIDX=z\n", &l.info));
    EXPECT_EQ(bits_set(l.info), 0);
}

TEST(SettingsApply, EveryListedKeySelectsItsOwnField) {
    // A listed key shadowed by an earlier one that it is a prefix of would
    // never be read; this walks all 162 + 59.
    for (size_t i = 0; i < kHandSettingCount; ++i) {
        Record r;
        std::string line = std::string("export ") + hand_setting_key(i) + "=v\n";
        ASSERT_TRUE(apply_settings_line(line, &r.info)) << line;
        const InfoFieldDesc *f = find_info_field(hand_setting_field(i));
        ASSERT_NE(f, nullptr);
        EXPECT_STREQ(info_field_ptr(&r.info, *f), "v") << line;
        EXPECT_TRUE(bit(r.info, f->bit)) << line;
        EXPECT_EQ(bits_set(r.info), 1) << line;
    }
    for (info_field::Id id : kTableSettingFields) {
        Record r;
        const InfoFieldDesc &f = kInfoFields[id];
        std::string line = std::string("export ") + f.name + "=v\n";
        ASSERT_TRUE(apply_settings_line(line, &r.info)) << line;
        EXPECT_STREQ(info_field_ptr(&r.info, f), "v") << line;
        EXPECT_TRUE(bit(r.info, f.bit)) << line;
        EXPECT_EQ(bits_set(r.info), 1) << line;
    }
}

TEST(SettingsApply, TableRowsHaveTheirWidthsAndBits) {
    struct Row {
        const char *key;
        size_t width;
        int bit;
    };
    const Row expected[] = {
        {"QX_FORBID_ROAMING", 64, 59}, {"QX_SAVE_LOCK_CELL_AFTER_TIMEOUT", 32, 162},
        {"QX_NETWORK_MODE_NOT_SUPPORT", 32, 163}, {"QX_URGENT_HEARTBEAT_INTERVAL", 32, 164},
        {"QX_PPP_AUTH_TYPE", 64, 55}, {"QX_4G_FDD_PREFERRED", 32, 165}, {"QX_RANDOM_SEED", 32, 166},
        {"QX_ALWAYS_USE_INITIAL_LNS", 32, 167}, {"QX_SUPPORT_ORDINARY_CARD", 32, 168},
        {"QX_OTHER_CARD_AS_ORDINARY_CARD", 32, 169}, {"QX_REDIAL_NOT_EXIST_LNS", 32, 170},
        {"QX_CHECK_IF_LNS_ALIVE", 32, 171}, {"QX_RANDOM_LNS_BY_INITIATOR", 32, 172},
        {"QX_CELL_CMP_IGNORE_LAC", 32, 173}, {"QX_NTP_SERVER2", 128, 174},
        {"QX_NTP_SERVER3", 128, 175}, {"QX_NTP_SERVER4", 128, 176},
        {"QX_ENABLE_LOCK_NETWORK", 32, 177}, {"QX_LOCK_NETWORK_PLMN", 32, 178},
        {"QX_LOCK_NETWORK_PLMN2", 32, 179}, {"QX_LOCK_NETWORK_PLMN3", 32, 180},
        {"QX_LOCK_NETWORK_PLMN4", 32, 181}, {"QX_LOCK_NETWORK_PLMN5", 32, 182},
        {"QX_LOCK_NETWORK_PLMN6", 32, 183}, {"QX_LOCK_NETWORK_PLMN7", 32, 184},
        {"QX_LOCK_NETWORK_PLMN8", 32, 185}, {"QX_LOCK_NETWORK_PLMN9", 32, 186},
        {"QX_LOCK_NETWORK_PLMN10", 32, 187}, {"QX_ADMIN_RANDOM_PASSWORD", 32, 188},
        {"QX_SPECIAL_SSID_PREFIX", 32, 189}, {"QX_CS_PS_PREFERRED_MODE", 32, 190},
        {"QX_ENABLE_DMZ", 8, 191}, {"QX_DMZ_DEST_IP", 64, 192}, {"QX_SPECIAL_FUNC_CONFIG", 64, 193},
        {"QX_ENABLE_SET_REBOOT", 32, 154}, {"QX_SET_REBOOT_HOURS", 32, 155},
        {"QX_ENABLE_SET_REDIAL", 32, 156}, {"QX_SET_REDIAL_HOURS", 32, 157},
        {"QX_3G_APN_NAME", 64, 194}, {"QX_3G_USERNAME", 64, 195}, {"QX_3G_PASSWORD", 64, 196},
        {"QX_3G_AUTH_TYPE", 8, 197}, {"QX_USE_SPECIAL_3G_APN", 16, 198},
        {"QX_WIFI_40M_ENABLE", 32, 199}, {"QX_CONFIG_APN_NAME", 64, 209},
        {"QX_CONFIG_APN_NAME2", 64, 210}, {"QX_CONFIG_APN_NAME3", 64, 211},
        {"QX_ROUTE_CONFIG_FOR_WAN2", 64, 212}, {"QX_GRE_VPN_ENABLED", 32, 213},
        {"QX_GRE_VPN_SERVER", 32, 214}, {"QX_GRE_VPN_LOCAL_IP", 32, 215},
        {"QX_GRE_VPN_REMOTE_IP", 32, 216}, {"QX_GRE_AS_DEFAULT_ROUTE", 32, 217},
        {"QX_GRE_USE_LAN_INTERFACE", 32, 218}, {"QX_GRE_VPN_SUBNET_MASK", 32, 219},
        {"QX_GRE_FOR_WAN_SUBNET", 32, 220}, {"QX_SIP_OVER_GRE", 32, 221},
        {"QX_CTL_IDU_SIGNAL_LED_COLOR", 32, 200}, {"QX_ENABLE_LOCK_IMSI_PREFIX", 32, 222},
    };
    ASSERT_EQ(std::size(expected), kTableSettingCount);
    for (size_t i = 0; i < kTableSettingCount; ++i) {
        const InfoFieldDesc &f = kInfoFields[kTableSettingFields[i]];
        EXPECT_STREQ(f.name, expected[i].key) << i;
        EXPECT_EQ(f.width, expected[i].width) << f.name;
        EXPECT_EQ(f.bit, expected[i].bit) << f.name;
    }
}

TEST(SettingsApply, ExportNumberingOfEarlierFields) {
    struct Row {
        const char *key;
        int bit;
    };
    const Row expected[] = {
        {"AP_IPADDR", 0},        {"AP_WPA_GMK_REKEY", 9}, {"RATECTL", 11},
        {"QX_ENABLE_WATCHDOG", 15}, {"QX_ENABLE_WIFI", 17}, {"AP_SSID", 18},
        {"PSK_KEY", 25},         {"WEP_RADIO_NUM0_KEY_4", 32}, {"QX_LIMIT_SPEED_VALUE", 40},
        {"QX_L2TP_MODE", 43},    {"QX_AUTH_PASS", 48},    {"QX_PPP_PASSWORD", 54},
        {"QX_GET_DNS_AUTO", 56}, {"QX_DNS_SECONDARY", 58}, {"QX_ENABLE_HSK_DDNS_SERVER", 60},
        {"QX_DDNS_INTERFACE", 63}, {"QX_NOIP_DOMAIN", 71}, {"QX_BAND_PREF", 72},
    };
    for (const Row &r : expected) {
        const InfoFieldDesc *f = find_info_field(r.key);
        ASSERT_NE(f, nullptr) << r.key;
        EXPECT_EQ(f->bit, r.bit) << r.key;
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
