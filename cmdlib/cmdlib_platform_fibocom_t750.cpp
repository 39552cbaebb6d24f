// fibocom_t750 product operations.
#include "cmdlib/cmdlib_platform_fibocom_t750.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>

#include <cjson/cJSON.h>

#include <array>
#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/settings_parse.h"

using namespace cmdlib;

// ==== Feature bits =============================================================

extern "C" void fibocom_t750_get_system_features(BigValue *big_value) {
    // dnsmasq for DHCP (0) and DNS (1) with a hosts file (20), ssh (5),
    // telnet (6), tcpdump (10), PIN/PUK retry queries (19), busybox httpd
    // (32) and mini_httpd for HTTPS (33).
    static constexpr int kBits[] = {5, 6, 0, 20, 1, 32, 33, 19, 10};
    if (!big_value) return;
    for (int bit : kBits) util_set_one_bit_for_big_value(big_value, bit);
}

// ==== Settings file ============================================================

namespace {

struct HandSetting {
    const char *key;
    info_field::Id field;
};

#define S(name) {#name, info_field::name}
// Tested in this order; the first setting the line's key is a prefix of wins.
constexpr HandSetting kHandSettings[] = {
    S(AP_SSID), S(QX_ENABLE_WIFI), {"PWD", info_field::PSK_KEY}, S(AP_CYPHER), S(AP_WPA),
    S(PUREG), S(RATECTL), S(MANRATE), S(MANRETRIES), S(WIFIWORKMODE), S(PUREN), S(AP_SECMODE),
    S(AP_SECFILE), S(AP_WPA_GROUP_REKEY), S(AP_WPA_GMK_REKEY), S(AP_WEP_MODE_0),
    S(AP_PRIMARY_KEY_0), S(WEP_RADIO_NUM0_KEY_1), S(WEP_RADIO_NUM0_KEY_2),
    S(WEP_RADIO_NUM0_KEY_3), S(WEP_RADIO_NUM0_KEY_4), S(AP_HIDESSID), S(AP_IPADDR),
    S(AP_NETMASK), S(QX_DHCP_IP_BEGIN), S(QX_DHCP_IP_END), S(QX_DHCP_EXPIRE_TIME),
    S(AP_PRIMARY_CH), S(AP_CHMODE), S(TXPOWER), S(QX_ENABLE_WATCHDOG), S(QX_SPEED_PREFERRED),
    S(QX_LOCK_CARD), S(QX_LOCK_CARD_TYPE), S(QX_INITIAL_PIN_CODE), S(QX_MODIFIED_PIN_CODE),
    S(QX_LOCK_CELL_ID), S(QX_LOCK_CELL_ID_COUNT), S(QX_LIMIT_SPEED_ENABLED),
    S(QX_LIMIT_SPEED_VALUE), S(QX_L2TP_MODE), S(QX_LNS_SERVER), S(QX_TUNNEL_NAME),
    S(QX_TUNNEL_PASS), S(QX_AUTH_NAME), S(QX_AUTH_PASS), S(QX_CONFIG_FILE_VERSION),
    S(QX_CONFIG_FILE_DESCRIPTION), S(QX_ENABLE_PPP_FORWARD), S(LAN_LED_AS_LTE_STATUS),
    S(QX_DDNS_HSK_USERNAME), S(QX_DDNS_HSK_PASSWORD), S(QX_DDNS_INTERFACE),
    S(QX_ENABLE_HSK_DDNS_SERVER), S(QX_ENABLE_3322_DDNS_SERVER), S(QX_DDNS_3322_USERNAME),
    S(QX_DDNS_3322_PASSWORD), S(QX_3322_DOMAIN), S(QX_ENABLE_NOIP_DDNS_SERVER),
    S(QX_DDNS_NOIP_USERNAME), S(QX_DDNS_NOIP_PASSWORD), S(QX_NOIP_DOMAIN), S(QX_PPP_USERNAME),
    S(QX_PPP_PASSWORD), S(QX_GET_DNS_AUTO), S(QX_DNS_PRIMARY), S(QX_DNS_SECONDARY),
    S(QX_BAND_PREF), S(QX_LTE_MODULE_MODE), S(QX_LTE_MODULE_PRIORITY), S(QX_HEARTBEAT_INTERVAL),
    S(QX_SPECIAL_DEVICE), S(QX_SERVICE_NUMBER), S(QX_NTP_SERVER), S(QX_SYS_UPDATE_SERVER),
    S(QX_FOTA_URL), S(QX_FOTA_STATUS), S(QX_FOTA_ON_BOOT), S(QX_FOTA_TIMER_START),
    S(QX_SNMP_REBOOT), S(QX_SNMP_RESTORE),
    S(QX_LNS_SERVER2), S(QX_TUNNEL_NAME2), S(QX_TUNNEL_PASS2),
    S(QX_LNS_SERVER3), S(QX_TUNNEL_NAME3), S(QX_TUNNEL_PASS3),
    S(QX_LNS_SERVER4), S(QX_TUNNEL_NAME4), S(QX_TUNNEL_PASS4),
    S(QX_LNS_SERVER5), S(QX_TUNNEL_NAME5), S(QX_TUNNEL_PASS5),
    S(QX_LNS_SERVER6), S(QX_TUNNEL_NAME6), S(QX_TUNNEL_PASS6),
    S(QX_LNS_SERVER7), S(QX_TUNNEL_NAME7), S(QX_TUNNEL_PASS7),
    S(QX_LNS_SERVER8), S(QX_TUNNEL_NAME8), S(QX_TUNNEL_PASS8),
    S(QX_LNS_SERVER9), S(QX_TUNNEL_NAME9), S(QX_TUNNEL_PASS9),
    S(QX_LNS_SERVER10), S(QX_TUNNEL_NAME10), S(QX_TUNNEL_PASS10),
    S(QX_LIMIT_UPLINK_SPEED_VALUE), S(QX_IP_STACK_MODE), S(QX_PRESTORE_FREQUENCY_FDD),
    S(QX_PRESTORE_FREQUENCY_TDD), S(QX_LOCK_IMSI), S(QX_DEVICE_TYPE), S(QX_MAX_ACCESS_USER_NUM),
    S(QX_SUPPORT_SIM_ENCRYPT), S(QX_ENCRYPT_CARD_VENDOR_ID), S(QX_ENCRYPT_KEY_VERSION),
    S(QX_ENCRYPT_CARD_TYPE), S(QX_ENCRYPT_KEY_1), S(QX_ENCRYPT_KEY_2), S(QX_ENCRYPT_KEY_3),
    S(QX_ENCRYPT_KEY_4), S(QX_ENCRYPT_KEY_5), S(QX_ENCRYPT_KEY_6), S(QX_ENCRYPT_KEY_7),
    S(QX_ENCRYPT_KEY_8), S(QX_ENCRYPT_KEY_9), S(QX_ENCRYPT_KEY_10), S(QX_ENCRYPT_KEY_11),
    S(QX_ENCRYPT_KEY_12), S(QX_ENCRYPT_KEY_13), S(QX_ENCRYPT_KEY_14), S(QX_ENCRYPT_KEY_15),
    S(QX_ENCRYPT_KEY_16), S(QX_LOCK_ONE_CELL), S(QX_LOCKED_EARFCN), S(QX_LOCKED_PHYCELLID),
    S(QX_LOCKED_Enode_ID), S(QX_LOCK_ONE_CELL_TIMEOUT), S(QX_FLOW_THRESHOLD), S(QX_FLOW_WARNING),
    S(QX_L2TP_MTU), S(QX_MULTI_TUNNEL_ENABLED), S(QX_MULTI_TUNNEL_NAME), S(QX_MULTI_TUNNEL_PASS),
    S(QX_MULTI_TUNNEL_NAME2), S(QX_MULTI_TUNNEL_PASS2), S(QX_MULTI_TUNNEL_NAME3),
    S(QX_MULTI_TUNNEL_PASS3), S(QX_MULTI_TUNNEL_NAME4), S(QX_MULTI_TUNNEL_PASS4),
    S(QX_LOCK_CELL_TIMEOUT), S(QX_CPE_ROUTER_MODE), S(QX_PPTP_ENABLED), S(QX_PPTP_MODE),
    S(QX_PNS_SERVER), S(QX_PPTP_AUTH_NAME), S(QX_PPTP_AUTH_PASS), S(QX_PPTP_ENABLE_MPPE),
    S(QX_PPTP_MTU), S(QX_VPN_AS_DEFAULT_ROUTE),
};
#undef S
static_assert(std::size(kHandSettings) == kHandSettingCount);

// Every one-by-one setting fills its own field, and that field has a bit.
constexpr bool hand_settings_are_distinct() {
    bool seen[info_field::count] = {};
    for (const HandSetting &s : kHandSettings) {
        if (seen[s.field] || kInfoFields[s.field].bit < 0) return false;
        seen[s.field] = true;
    }
    return true;
}
static_assert(hand_settings_are_distinct());

// Only the first key whose name starts with the line's key counts: a line
// key that is a prefix of several names (even an empty one) selects the
// earliest of them.
constexpr bool key_selects(const char *name, std::string_view key) {
    return std::string_view(name).substr(0, key.size()) == key;
}

}  // namespace

namespace cmdlib {

std::string_view settings_line_key(std::string_view line) {
    if (line.find("export") == std::string_view::npos) return {};
    // The line holds "export", so it has at least 6 characters.
    std::string_view rest = strip_leading_blanks(line.substr(6));
    size_t n = 0;
    while (n < rest.size() && !is_blank(rest[n]) && rest[n] != ':' && rest[n] != '=' &&
           rest[n] != '\n')
        ++n;
    return rest.substr(0, n);
}

std::string_view settings_line_value(std::string_view line) {
    size_t eq = line.find('=');
    if (eq == std::string_view::npos) return {};
    std::string_view v = line.substr(eq + 1);
    bool quoted = false;
    size_t i = 0;
    while (i < v.size() && (is_blank(v[i]) || v[i] == '"')) {
        quoted |= v[i] == '"';
        ++i;
    }
    v.remove_prefix(i);
    size_t n = 0;
    while (n < v.size()) {
        char c = v[n];
        if (c == '\r' || c == '\n' || c == '"' || (!quoted && is_blank(c))) break;
        ++n;
    }
    return v.substr(0, n);
}

bool apply_settings_line(std::string_view line, InfoStruct *info) {
    if (line.find("export") == std::string_view::npos) return false;
    std::string_view key = settings_line_key(line);
    for (const HandSetting &s : kHandSettings) {
        if (!key_selects(s.key, key)) continue;
        const InfoFieldDesc &f = kInfoFields[s.field];
        info_set_defined_bit(info, f.bit);
        copy_bounded(info_field_ptr(info, f), f.width, settings_line_value(line));
        return true;
    }
    for (info_field::Id id : kTableSettingFields) {
        const InfoFieldDesc &f = kInfoFields[id];
        if (!key_selects(f.name, key)) continue;
        info_set_defined_bit(info, f.bit);
        // One byte less than the one-by-one settings: the last byte of the
        // field is left as it was.
        copy_bounded(info_field_ptr(info, f), f.width - 1, settings_line_value(line));
        return true;
    }
    return false;
}

template <typename Reader> static void apply_all_lines(Reader &reader, InfoStruct *info) {
    std::string_view line;
    while (reader.next(&line)) apply_settings_line(line, info);
}

void parse_settings_text(std::string_view text, InfoStruct *info) {
    if (!info) return;
    TextLineReader<kSettingsLineSize> reader(text);
    apply_all_lines(reader, info);
}

const char *hand_setting_key(size_t n) {
    return n < kHandSettingCount ? kHandSettings[n].key : nullptr;
}
const char *hand_setting_field(size_t n) {
    return n < kHandSettingCount ? kInfoFields[kHandSettings[n].field].name : nullptr;
}

}  // namespace cmdlib

extern "C" int util_server_read_wifi_info_ex(const char *config_file, InfoStruct *server_wifi_info) {
    if (!config_file || !server_wifi_info) return -1;
    UniqueFile fp(fopen(config_file, "r"));
    if (!fp) return -1;
    LineReader<kSettingsLineSize> reader(fp.get());
    apply_all_lines(reader, server_wifi_info);
    return 0;
}

extern "C" int util_server_read_wifi_info(InfoStruct *server_wifi_info) {
    return util_server_read_wifi_info_ex(SYSTEM_SETTINGS_FILE, server_wifi_info);
}

// ==== Wi-Fi site survey =====================================================

extern "C" int is_valid_mac_for_api(const char *mac) {
    if (!mac || strlen(mac) != 17) return 0;
    for (int i = 0; i < 17; ++i) {
        bool colon_place = i % 3 == 2;
        if (colon_place ? mac[i] != ':' : !isxdigit(static_cast<unsigned char>(mac[i]))) return 0;
    }
    if (strcasecmp(mac, "FF:FF:FF:FF:FF:FF") == 0 || strcmp(mac, "00:00:00:00:00:00") == 0)
        return 0;
    return 1;
}

namespace {
// Column of the BSSID in a row of "iwpriv ... get_site_survey" output.
constexpr size_t kSurveyMacColumn = 41;
constexpr size_t kMacTextLength = 17;
}  // namespace

extern "C" int fibocom_t750_get_wifi_info(char *fpath, struct cJSON *wifi_aps) {
    if (!fpath || !wifi_aps) return -1;
    UniqueFile fp(fopen(fpath, "r"));
    if (!fp) return -1;
    LineReader<255> reader(fp.get());  // survey rows are read 254 characters at a time
    std::string_view line;
    while (reader.next(&line)) {
        if (line.empty() || line[0] < '0' || line[0] > '9') continue;
        if (line.size() < kSurveyMacColumn + kMacTextLength) continue;
        char mac[kMacTextLength + 1];
        copy_bounded(mac, sizeof mac, line.substr(kSurveyMacColumn, kMacTextLength));
        if (!is_valid_mac_for_api(mac)) continue;
        cJSON *ap = cJSON_CreateObject();
        if (!ap) return -1;
        cJSON_AddStringToObject(ap, "macAddress", mac);
        cJSON_AddItemToArray(wifi_aps, ap);
    }
    return 0;
}

namespace {
// Surveys the radios that are switched on; the rows of both land in
// /tmp/wifi_aps, which is removed first so that a survey with both radios
// off leaves no stale result.
constexpr char kWifiScanScript[] =
    "#!/bin/sh\n"
    "wlan2G_SWITCH=`mdlcfg -g USR_WLAN2G_SWITCH_0`\n"
    "wlan5G_SWITCH=`mdlcfg -g USR_WLAN5G_SWITCH_0`\n"
    "rm -f /tmp/wifi_aps\n"
    "if [ \"$wlan2G_SWITCH\" = \"1\" ]; then\n"
    "iwpriv ra0 set SiteSurvey=\n"
    "fi\n"
    "if [ \"$wlan5G_SWITCH\" = \"1\" ]; then\n"
    "iwpriv rai0 set SiteSurvey=\n"
    "fi\n"
    "if [ \"$wlan2G_SWITCH\" = \"1\" ] || [ \"$wlan5G_SWITCH\" = \"1\" ]; then\n"
    "sleep 3\n"
    "fi\n"
    "if [ \"$wlan2G_SWITCH\" = \"1\" ]; then\n"
    "iwpriv ra0 get_site_survey >> /tmp/wifi_aps\n"
    "fi\n"
    "if [ \"$wlan5G_SWITCH\" = \"1\" ]; then\n"
    "iwpriv rai0 get_site_survey >> /tmp/wifi_aps\n"
    "fi\n";
}  // namespace

extern "C" int fibocom_t750_add_wifi_info_into_json(void *wifi_aps) {
    if (!wifi_aps) return -1;
    if (!cmd_file_exist(WIFI_SCAN_SCRIPT_FILE)) {
        if (util_save_file_content(kWifiScanScript, sizeof kWifiScanScript - 1,
                                   WIFI_SCAN_SCRIPT_FILE) != 0)
            return -1;
        if (chmod(WIFI_SCAN_SCRIPT_FILE, 0755) != 0) return -1;
    }
    util_shell(WIFI_SCAN_SCRIPT_FILE);
    return fibocom_t750_get_wifi_info(const_cast<char *>(WIFI_SCAN_RESULT_FILE),
                                      static_cast<cJSON *>(wifi_aps));
}
