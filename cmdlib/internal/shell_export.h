// The names the library shares with the firmware's shell scripts: the
// configuration export of a record (export KEY="value" lines a script can
// eval) and the macro file (export NAME="value" lines a script sources).
// Both are rendered into caller buffers by pure functions, so tests and the
// exported writers run the same code; the buffers' sizes are computed here
// from the tables, so a full record or the whole table always fits.
#pragma once

#include <stddef.h>

#include <string_view>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"

namespace cmdlib {

// ---- Double-quoted shell values ------------------------------------------------

// Inside double quotes a shell still expands $ and `, and a backslash
// escapes ", $, ` and itself; every other byte stands for itself.
[[nodiscard]] constexpr bool is_double_quote_special(char c) {
    return c == '"' || c == '$' || c == '`' || c == '\\';
}

// Appends text to a fixed buffer, cutting at its capacity and remembering
// that it did; the text stays terminated.
class TextOut {
  public:
    TextOut(char *buf, size_t cap) : buf_(buf), cap_(buf ? cap : 0) {
        if (cap_) buf_[0] = '\0';
    }
    void put(std::string_view s);
    void put(char c);
    // The value as it goes between double quotes: a backslash before each
    // of ", $, ` and \, everything else byte for byte.
    void put_double_quoted_body(std::string_view value);
    // 'export NAME="VALUE"' without a line end.
    void put_assignment(std::string_view name, std::string_view value);
    [[nodiscard]] size_t size() const { return len_; }
    [[nodiscard]] bool cut() const { return cut_; }

  private:
    char *buf_;
    size_t cap_;
    size_t len_ = 0;
    bool cut_ = false;
};

// ---- Configuration export ----------------------------------------------------

// The fields the export prints, in print order (not the record's order).
// Names, widths and bits come from the record's field list.
inline constexpr info_field::Id kConfigExportOrder[] = {
    info_field::AP_SSID, info_field::QX_ENABLE_WIFI, info_field::PSK_KEY, info_field::AP_CYPHER,
    info_field::AP_WPA, info_field::PUREG, info_field::RATECTL, info_field::MANRATE,
    info_field::MANRETRIES, info_field::WIFIWORKMODE, info_field::PUREN, info_field::AP_SECMODE,
    info_field::AP_SECFILE, info_field::AP_WPA_GROUP_REKEY, info_field::AP_WPA_GMK_REKEY,
    info_field::AP_WEP_MODE_0, info_field::AP_PRIMARY_KEY_0, info_field::WEP_RADIO_NUM0_KEY_1,
    info_field::WEP_RADIO_NUM0_KEY_2, info_field::WEP_RADIO_NUM0_KEY_3,
    info_field::WEP_RADIO_NUM0_KEY_4, info_field::AP_HIDESSID, info_field::AP_IPADDR,
    info_field::AP_NETMASK, info_field::QX_DHCP_IP_BEGIN, info_field::QX_DHCP_IP_END,
    info_field::QX_DHCP_EXPIRE_TIME, info_field::AP_PRIMARY_CH, info_field::AP_CHMODE,
    info_field::TXPOWER, info_field::QX_ENABLE_WATCHDOG,
    // SIM lock to speed limit, L2TP: record order
    info_field::QX_LOCK_CARD, info_field::QX_LOCK_CARD_TYPE, info_field::QX_INITIAL_PIN_CODE,
    info_field::QX_MODIFIED_PIN_CODE, info_field::QX_LOCK_CELL_ID,
    info_field::QX_LOCK_CELL_ID_COUNT, info_field::QX_LIMIT_SPEED_ENABLED,
    info_field::QX_LIMIT_SPEED_VALUE, info_field::QX_L2TP_MODE, info_field::QX_LNS_SERVER,
    info_field::QX_TUNNEL_NAME, info_field::QX_TUNNEL_PASS, info_field::QX_AUTH_NAME,
    info_field::QX_AUTH_PASS, info_field::QX_CONFIG_FILE_VERSION,
    info_field::QX_CONFIG_FILE_DESCRIPTION, info_field::QX_ENABLE_PPP_FORWARD,
    info_field::LAN_LED_AS_LTE_STATUS, info_field::QX_PPP_USERNAME, info_field::QX_PPP_PASSWORD,
    // the three dynamic-DNS providers, record order
    info_field::QX_ENABLE_HSK_DDNS_SERVER, info_field::QX_DDNS_HSK_USERNAME,
    info_field::QX_DDNS_HSK_PASSWORD, info_field::QX_DDNS_INTERFACE,
    info_field::QX_ENABLE_3322_DDNS_SERVER, info_field::QX_DDNS_3322_USERNAME,
    info_field::QX_DDNS_3322_PASSWORD, info_field::QX_3322_DOMAIN,
    info_field::QX_ENABLE_NOIP_DDNS_SERVER, info_field::QX_DDNS_NOIP_USERNAME,
    info_field::QX_DDNS_NOIP_PASSWORD, info_field::QX_NOIP_DOMAIN, info_field::QX_GET_DNS_AUTO,
    info_field::QX_DNS_PRIMARY, info_field::QX_DNS_SECONDARY, info_field::QX_BAND_PREF,
};
inline constexpr size_t kConfigExportCount = sizeof kConfigExportOrder / sizeof kConfigExportOrder[0];

// The export covers exactly the fields with bits 0 to 72, apart from the
// five settings of that range it leaves out (bits 10 and 16 of no exported
// setting, 41 and 42 the uplink limit and IP stack, 55 the PPP
// authentication type, 59 roaming), each once.
constexpr bool export_order_is_complete() {
    bool seen[73] = {};
    for (info_field::Id id : kConfigExportOrder) {
        int bit = kInfoFields[id].bit;
        if (bit < 0 || bit > 72 || seen[bit]) return false;
        seen[bit] = true;
    }
    for (int bit : {10, 16, 41, 42, 55, 59})
        if (seen[bit]) return false;
    return true;
}
static_assert(kConfigExportCount == 67 && export_order_is_complete());

// The name under which PSK_KEY is exported first.
inline constexpr std::string_view kPskKeyAlias = "PWD";

// Room for the export of any record: every exported field at full width
// with every byte escaped, and the PWD copy of PSK_KEY.
constexpr size_t config_export_capacity() {
    constexpr size_t kLineRoom = 1 + 7 + 1 + 2;  // "\n" "export " "=" and the quotes
    size_t n = 1;                                // terminator
    for (info_field::Id id : kConfigExportOrder) {
        const InfoFieldDesc &f = kInfoFields[id];
        size_t line = kLineRoom + std::string_view(f.name).size() + 2 * (f.width - 1);
        n += line;
        if (id == info_field::PSK_KEY) n += line;  // the PWD line, no longer than this one
    }
    return n;
}
inline constexpr size_t kConfigExportCapacity = config_export_capacity();

// The export text of a record (see util_export_config_info) into out;
// returns its length.  A buffer of kConfigExportCapacity bytes always
// holds it whole.
size_t render_config_export(const InfoStruct *info, char *out, size_t cap);

// The field that holds a configuration key, or nullptr: fields of the
// configuration groups by exact name, and "PWD" for PSK_KEY.
const InfoFieldDesc *config_key_field(std::string_view key);

// ---- Macro file -------------------------------------------------------------------

// The macros of the shell scripts, X(NAME, "value"), in table order.  Flag
// files live under /tmp/cmdlib/ and are named after the macro in lower case
// with a leading dot; where the library itself uses a file (a flag it
// tests, a script it runs) the macro names that same file.  The firewall
// rule sets are bare file names inside the firewall's directories.
#define CMDLIB_SHELL_MACROS(X)                                                                     \
    X(RANDOM_SELECT_LNS_BY_INITIATOR_FILE, "/tmp/cmdlib/.random_select_lns_by_initiator")          \
    X(RANDOM_SELECT_LNS_MAX_COUNT_FILE, "/tmp/cmdlib/.random_select_lns_max_count")                \
    X(LAST_PPPOE_REDIAL_UPTIME_VALUE_FILE, "/tmp/cmdlib/.last_pppoe_redial_uptime_value")          \
    X(LAST_L2TP_TUNNEL_FILE, "/tmp/cmdlib/.last_l2tp_tunnel")                                      \
    X(USE_SPECIFIED_LNS_SERVER_INDEX_FILE, "/tmp/cmdlib/.use_specified_lns_server_index")          \
    X(NOT_CHECK_IF_LNS_ALIVE_FILE, "/tmp/cmdlib/.not_check_if_lns_alive")                          \
    X(DEVICE_MODEL_IS_IDU, "/tmp/cmdlib/.device_model_is_idu")                                     \
    X(DEVICE_MODEL_IS_ODU, "/tmp/cmdlib/.device_model_is_odu")                                     \
    X(DISPLAY_WIFI_SETTINGS_PAGE, "/tmp/cmdlib/.display_wifi_settings_page")                       \
    X(ALL_SAVED_CELL_INFO, "/tmp/cmdlib/.all_saved_cell_info")                                     \
    X(CLOSE_LOCAL_MANAGE, "/tmp/cmdlib/.close_local_manage")                                       \
    X(CLOSE_INTERNET, "/tmp/cmdlib/.close_internet")                                               \
    X(LAN_LED_AS_WLAN_STATUS, "/tmp/cmdlib/.lan_led_as_wlan_status")                               \
    X(ALL_CELL_ID_INFO, "/tmp/cmdlib/.all_cell_id_info")                                           \
    X(SAVED_IMSI_STRING_VALUE, "/tmp/cmdlib/.saved_imsi_string_value")                             \
    X(GPIO_11_AS_RUN_LED, "/tmp/cmdlib/.gpio_11_as_run_led")                                       \
    X(GPIO_19_AS_RUN_LED, "/tmp/cmdlib/.gpio_19_as_run_led")                                       \
    X(L3BRIDGE_IS_ENABLE, "/tmp/cmdlib/.l3bridge_is_enable")                                       \
    X(OPERATORS_DEFINE_FILE, "/tmp/cmdlib/.operators_define")                                      \
    X(LTE_DIAL_MANUALLY, "/tmp/cmdlib/.dial_lte_module_manually")                                  \
    X(LTE_DISCONNECT_FROM_NETWORK_IMMEDIATELY, "/tmp/cmdlib/.disconnect_from_lte_network_immediately") \
    X(RC_SYSTEM_CONFIG_FILE, "/tmp/cmdlib/rc.system.conf")                                         \
    X(TMP_CONFIG_FILE, "/tmp/cmdlib/rc.module.conf")                                               \
    X(CONFIG_DISABLE_PNAT, "/tmp/cmdlib/.config_disable_pnat_flag")                                \
    X(CONFIG_DISABLE_GSM, "/tmp/cmdlib/.config_disable_gsm_flag")                                  \
    X(CHECK_DOWNLINK_ROUTER, "/tmp/cmdlib/.check_downlink_router")                                 \
    X(IS_CUSTOMIZED_VERSION, "/tmp/cmdlib/.is_customized_version")                                 \
    X(HAVE_ENABLED_DATA_FORWARD_FLAG_FILE, "/tmp/cmdlib/.have_enabled_data_forward_flag_file")     \
    X(DELETE_CELL_LOCK_CACHE_FILE, "/tmp/cmdlib/.delete_cell_lock_cache")                          \
    X(EXECUTED_SCRIPT_BEFORE_REBOOT, "/etc/qxscript/rc.before-reboot")                             \
    X(CONF_SCRIPT_MAIN_DIRECTORY, "/etc/qxscript")                                                 \
    X(EXECUTED_SCRIPT_WHEN_RESTORE_DEFAULT_CONFIGS, "/usr/bin/qxupdate --reset --reboot > /dev/null 2>&1 &") \
    X(FIREWALL_CONF_SCRIPT_MAIN_DIRECTORY, "/etc/qxscript/firewall")                               \
    X(YADDNS_CONFIG_FILE_PATH, "/tmp/cmdlib/yaddns.conf")                                          \
    X(EZIPUPDATE_CONFIG_FILE_PATH, "/tmp/cmdlib/ez-ipupdate.conf")                                 \
    X(PHDDNS_CONFIG_FILE_PATH, "/tmp/cmdlib/phddns.conf")                                          \
    X(SCRIPT_TO_RESTART_PHDDNS, "/etc/qxscript/rc.restart-phddns")                                 \
    X(SCRIPT_TO_RESTART_EZ_IPUPDATE, "/etc/qxscript/rc.restart-ez-ipupdate")                       \
    X(SCRIPT_TO_RESTART_YADDNS, "/etc/qxscript/rc.restart-yaddns")                                 \
    X(DDNS_HSK_STATUSINFOFILE, "/tmp/cmdlib/.ddns_hsk_statusinfo")                                 \
    X(DDNS_DOMAININFO, "/tmp/cmdlib/.ddns_domaininfo")                                             \
    X(DDNS_NOIPSTATUS, "/tmp/cmdlib/.ddns_noipstatus")                                             \
    X(DDNS_3322_STATUSINFOFILE, "/tmp/cmdlib/.ddns_3322_statusinfo")                               \
    X(WAN_NETWORK_CARD_GATEWAY, "/tmp/cmdlib/.wan_network_card_gateway")                           \
    X(WAN_DNS1_IP_ADDRESS, "/tmp/cmdlib/.wan_dns1_ip_address")                                     \
    X(WAN_DNS2_IP_ADDRESS, "/tmp/cmdlib/.wan_dns2_ip_address")                                     \
    X(GET_IP_DNS_GATEWAY_FLAG_FILE, "/tmp/cmdlib/.get_ip_dns_gateway")                             \
    X(RECHECK_IF_LNS_SERVER_IS_OK, "/tmp/cmdlib/.recheck_if_lns_server_is_ok")                     \
    X(DNS_CONFIG_FILE, "/var/run/resolv.conf")                                                     \
    X(SCRIPT_TO_SAVE_WAN_IP_INFO, "/etc/qxscript/rc.save-wan-ip-info")                             \
    X(NOW_IS_RESTORING_DEFAULT_SETTINGS_FLAG_FILE, "/tmp/cmdlib/.now_is_restoring_default_settings") \
    X(SYSTEM_HAVE_RESTORED_DEFAULT_SETTINGS_FLAG_FILE, "/tmp/cmdlib/.system_have_restored_default_settings") \
    X(LONG_PRESS_RESET_TO_RESTORE_DEFAULT_CONFIGS_FLAG_FILE, "/tmp/cmdlib/.long_press_reset_to_restore_default_configs") \
    X(WPS_CONFIGURE_RESULT_CODE_FILE, "/tmp/cmdlib/.wps_configure_result_code")                    \
    X(WPS_USER_INPUT_PIN_FILE, "/tmp/cmdlib/.wps_user_input_pin")                                  \
    X(SCRIPT_TO_CONFIGURE_WPS, "/etc/qxscript/rc.configure-wps")                                   \
    X(RESTORE_DEFAULT_CONFIG_WHEN_CONFIG_UPGRADE, "/tmp/cmdlib/.restore_default_config_when_config_upgrade") \
    X(SYSTEM_HAVE_RESTORED_DEFAULT_SETTINGS_BEFORE, "/mnt/data/etc/qxcfg/.system_have_restored_default_settings_before") \
    X(TMP_CONFIG_FILE, "/tmp/cmdlib/rc.module.conf")                                               \
    X(LAST_SAVED_TX_POWER_VALUE, "/tmp/cmdlib/.last_saved_tx_power_value")                         \
    X(SYSTEM_WEB_PAGE_FULL_PATH, "/qxwww")                                                         \
    X(WEB_TMP_FILE_FULL_PATH, "/tmp/qxwww")                                                        \
    X(WEB_THEME_FILE_FULL_PATH, "/qxwww/theme")                                                    \
    X(SIGNAL_SCHEME_FILE_FULL_PATH, "/qxwww/signal_scheme")                                        \
    X(DNSMASQ_CONFIG_FULL_PATH, "/etc/dnsmasq.conf")                                               \
    X(DNSMASQ_NEWEST_CONFIG_FULL_PATH, "/tmp/cmdlib/dnsmasq.conf")                                 \
    X(SCRIPT_TO_RESTART_DNSMASQ, "/usr/script/dnsmasq_init.sh")                                    \
    X(MINIUPNPD_TEMPLATE_CONFIG_FULL_PATH, "/etc/miniupnpd.conf.template")                         \
    X(MINIUPNPD_CONFIG_FULL_PATH, "/tmp/cmdlib/miniupnpd.conf")                                    \
    X(MINIUPNPD_LEASE_FILE_FULL_PATH, "/tmp/cmdlib/miniupnpd.leases")                              \
    X(MINIUPNPD_UUID_FILE_FULL_PATH, "/mnt/data/etc/qxcfg/miniupnpd.uuid")                         \
    X(NEED_TO_RESTORE_SETTINGS_TEMP_FILE, "/tmp/cmdlib/.need_to_restore_settings_temp")            \
    X(REQUIREMENT_CONFIG_FILE, "/usr/requirement_config_file.conf")                                \
    X(SYSTEM_REQUIREMENT_CONFIG_FILE, "/mnt/data/etc/qxcfg/system_requirement_config_file.conf")   \
    X(REMOTE_SYSTEM_CONFIG_FILE, "/mnt/data/etc/qxcfg/manage_requirement_config_file.conf")        \
    X(REBOOT_MODULE_LOG_FILE, "/tmp/cmdlib/.reboot_module_log")                                    \
    X(SYSTEM_WEB_PAGE_BACKUP_FILE, "/mnt/data/etc/qxcfg/qxwww.tar.gz")                             \
    X(HAVE_FIXED_WEB_PAGE_ZERO_SIZE_BUG_FLAG_FILE, "/mnt/data/etc/qxcfg/.have_fixed_web_page_zero_size_bug") \
    X(LTE_DIAL_MANUALLY, "/tmp/cmdlib/.dial_lte_module_manually")                                  \
    X(LTE_DISCONNECT_FROM_NETWORK_IMMEDIATELY, "/tmp/cmdlib/.disconnect_from_lte_network_immediately") \
    X(SYSTEM_HAVE_DOWNLOAD_NEWEST_CONFIG_FILE, "/tmp/cmdlib/.system_have_download_newest_config")  \
    X(QX_IPTABLES_INPUT_CHAIN_NAME, "input_chain_for_port_filter")                                 \
    X(HAVE_ALREADY_APPLY_FIREWALL_RULES_FLAG_FILE, "/tmp/cmdlib/.have_already_apply_firewall_rules") \
    X(NOW_IS_APPLYING_FIREWALL_RULES_FLAG_FILE, "/tmp/cmdlib/.now_is_applying_firewall_rules")     \
    X(DHCP_BEGIN_IP_ADDRESS_FLAG_FILE, "/tmp/cmdlib/.dhcp_begin_ip_address")                       \
    X(DHCP_END_IP_ADDRESS_FLAG_FILE, "/tmp/cmdlib/.dhcp_end_ip_address")                           \
    X(EXECUTED_SCRIPT_FOR_CONFIG_FOTA_UPGRADE, "/etc/qxscript/rc.execute-config-fota-upgrade")     \
    X(EXECUTED_SCRIPT_BEFORE_CONFIG_FOTA_UPGRADE, "/etc/qxscript/rc.backup-before-fota-upgrade")   \
    X(EXECUTED_SCRIPT_AFTER_CONFIG_FOTA_UPGRADE, "/etc/qxscript/rc.restore-after-fota-upgrade")    \
    X(TMP_FILE_DIRECTORY_FOR_FOTA_UPGRADE, "/tmp/fota_upgrade")                                    \
    X(CONFIG_FILE_PATH_FOR_FOTA_UPGRADE, "/tmp/fota_upgrade/config_file.conf")                     \
    X(SRC_CONFIG_FILE_PATH_FOR_FOTA_UPGRADE, "/tmp/cmdlib/.src_tmp_config_file.conf")              \
    X(CURRENT_WAN_INTERFACE_TRAFFIC_DATA, "/tmp/cmdlib/.current_wan_interface_traffic_data")       \
    X(SCRIPT_FILE_TO_INTERCEPT_IPV6_DNS_QUERY, "/etc/qxscript/rc.intercept-ipv6-dns-query")        \
    X(NEED_TO_INTERCEPT_IPV6_DNS_QUERY, "/tmp/cmdlib/.need_to_intercept_ipv6_dns_query")           \
    X(MANUAL_DNS_CONF_FILE, "/tmp/cmdlib/.manual_dns_conf_file")                                   \
    X(TOTALLY_NO_WIFI_FOR_THIS_DEVICE_FLAG_FILE, "/tmp/cmdlib/.totally_no_wifi_for_this_device")   \
    X(REMOTE_SYSTEM_CONFIG_FILE, "/mnt/data/etc/qxcfg/manage_requirement_config_file.conf")        \
    X(SYSTEM_REQUIREMENT_CONFIG_FILE, "/mnt/data/etc/qxcfg/system_requirement_config_file.conf")   \
    X(DATA_MAIN_CONFIG_DIRECTORY, "/mnt/data/etc/qxcfg")                                           \
    X(URL_BLOCKED_LIST_FILE, "/tmp/cmdlib/.url_blocked_list")                                      \
    X(WEB_FIREWALL_CONFIG_DIRECTORY, "/mnt/data/etc/qxcfg/iptables")                               \
    X(FIREWALL_SHELL_SCRIPT_DIRECTORY, "/tmp/cmdlib/iptables")                                     \
    X(SYSLOG_DEST_FILE_PATH, "/var/log/messages")                                                  \
    X(DHCP_SERVER_CONF_FILE_PATH, "/tmp/cmdlib/udhcpd.conf")                                       \
    X(IPTABLES_PORT_FILTER_CONFIG, "iptables_port_filter")                                         \
    X(IPTABLES_IP_FILTER_CONFIG, "iptables_ip_filter")                                             \
    X(IPTABLES_IP_PORT_FILTER_CONFIG, "iptables_ip_port_filter")                                   \
    X(IPTABLES_MAC_FILTER_CONFIG, "iptables_mac_filter")                                           \
    X(IPTABLES_IP_MAC_BINDING_CONFIG, "iptables_ip_mac_binding")                                   \
    X(IPTABLES_SPEED_LIMIT_CONFIG, "iptables_speed_limit")                                         \
    X(IPTABLES_URL_FILTER_CONFIG, "iptables_url_filter")                                           \
    X(IPTABLES_OTHER_CONFIG, "iptables_other")                                                     \
    X(IPTABLES_DEFAULT_CONFIG, "iptables_default")                                                 \
    X(IPTABLES_URL_FILTER_DEFAULT_CONFIG, "iptables_url_filter_default")                           \
    X(IPTABLES_MAC_FILTER_DEFAULT_CONFIG, "iptables_mac_filter_default")                           \
    X(IPTABLES_DMZ_FUNCTION_CONFIG, "iptables_dmz_function")                                       \
    X(APPLY_USER_CONFIG_ROUTE_CONFIG, "apply_user_config_route")                                   \
    X(IPTABLES_FILTER_SPECIFIED_PORT_FOR_DMZ_CONFIG, "iptables_filter_specified_port_for_dmz")     \
    X(IPTABLES_FILTER_ACL_WAN_CONFIG, "iptables_filter_acl_wan")                                   \
    X(IPTABLES_DISABLE_NETWORK_COMMUNICATION_CONFIG, "iptables_disable_network_communication")     \
    X(IPTABLES_FILTER_UPNP_RULES_CONFIG, "iptables_filter_upnp_rules")                             \
    X(IPTABLES_FILTER_ACL_RULES_CONFIG, "iptables_filter_acl_rules")                               \
    X(JSON_TO_APPLY_STATIC_ARP_BINDING, "/tmp/cmdlib/.static_arp_binding.json")                    \
    X(SCRIPT_TO_APPLY_STATIC_ARP_BINDING, "/etc/qxscript/rc.apply-static-arp-binding")             \
    X(CURRENT_DEVICE_IDENTIFIER_FILE, "/tmp/cmdlib/.current_device_identifier")                    \
    X(GEN_RANDOM_PASSWORD_SCRIPT_FILE, "/etc/qxscript/rc.gen-random-password")                     \
    X(CURRENT_DOWNLINK_DEVICE_MAC, "/tmp/cmdlib/.current_downlink_device_mac")                     \
    X(STATIC_LEASE_FILE_NAME, "/mnt/data/etc/qxcfg/dhcp_hosts")                                    \
    X(NEED_KNOW_WAN_NAME_EXPORT_DEFINITION_FILE, "/tmp/cmdlib/.need_know_wan_name_export_definition") \
    X(FILE_USED_TO_SAVE_LOCK_PHYSICAL_CELL_STATUS, "/tmp/cmdlib/.lock_physical_cell_status")       \
    X(VOIPCLIENT_ROUTE_SCRIPT_FILE, "/etc/qxscript/rc.voipclient-route")

#define CMDLIB_SHELL_MACRO_ONE(name, value) +1  // NOLINT(bugprone-macro-parentheses)
inline constexpr size_t kShellMacroCount = 0 CMDLIB_SHELL_MACROS(CMDLIB_SHELL_MACRO_ONE);
#undef CMDLIB_SHELL_MACRO_ONE
static_assert(kShellMacroCount == ALL_MACROS_NEED_TO_EXPORT_COUNT);

// Five names occur twice, each time with the same value.
constexpr bool macro_repeats_are_five_and_equal() {
    constexpr std::string_view rows[][2] = {
#define CMDLIB_SHELL_MACRO_PAIR(name, value) {#name, value},
        CMDLIB_SHELL_MACROS(CMDLIB_SHELL_MACRO_PAIR)
#undef CMDLIB_SHELL_MACRO_PAIR
    };
    int repeats = 0;
    for (size_t i = 0; i < kShellMacroCount; ++i)
        for (size_t j = 0; j < i; ++j)
            if (rows[i][0] == rows[j][0]) {
                if (rows[i][1] != rows[j][1]) return false;
                ++repeats;
            }
    return repeats == 5;
}
static_assert(macro_repeats_are_five_and_equal());

// The interface assignments that follow the table, in this order.
inline constexpr const char *kInterfaceMacroNames[] = {"REAL_WAN_IF", "REAL_BRIDGE_IF", "REAL_WIFI_IF",
                                                       "REAL_ETHERNET_IF", "REAL_GRE_IF"};
inline constexpr size_t kInterfaceMacroCount = sizeof kInterfaceMacroNames / sizeof kInterfaceMacroNames[0];
// Longest interface name taken into the file (the kernel's IFNAMSIZ - 1).
inline constexpr size_t kInterfaceNameMax = 15;

// The table's values are plain paths and words: none needs escaping, so
// each row takes exactly its own length in the file.
constexpr bool macro_values_are_plain() {
    for (std::string_view v : {
#define CMDLIB_SHELL_MACRO_VALUE(name, value) std::string_view(value),
             CMDLIB_SHELL_MACROS(CMDLIB_SHELL_MACRO_VALUE)
#undef CMDLIB_SHELL_MACRO_VALUE
         })
        for (char c : v)
            if (is_double_quote_special(c)) return false;
    return true;
}
static_assert(macro_values_are_plain());

// Room for the macro file: the first two lines, every row, and the
// interface lines with names at their longest and every byte escaped.
constexpr size_t macro_file_capacity() {
    size_t n = std::string_view("#!/bin/sh\n").size() + 1;
    n += std::string_view("export ALL_MACRO_EXPORT_DEFINITION_FILE=\"" ALL_MACRO_EXPORT_DEFINITION_FILE
                          "\"\n")
             .size();
#define CMDLIB_SHELL_MACRO_ROOM(name, value) n += 7 + sizeof #name - 1 + 2 + sizeof(value) - 1 + 2;
    CMDLIB_SHELL_MACROS(CMDLIB_SHELL_MACRO_ROOM)
#undef CMDLIB_SHELL_MACRO_ROOM
    for (const char *name : kInterfaceMacroNames)
        n += 7 + std::string_view(name).size() + 2 + 2 * kInterfaceNameMax + 2;
    return n;
}
inline constexpr size_t kMacroFileCapacity = macro_file_capacity();

// The interface names the macro file ends with, in kInterfaceMacroNames
// order; a null name is written as "".
struct InterfaceNames {
    const char *name[kInterfaceMacroCount];
};

// The whole macro file into out; returns its length.  A buffer of
// kMacroFileCapacity bytes always holds it whole (longer interface names
// are cut to kInterfaceNameMax).
size_t render_macro_file(const InterfaceNames &ifs, char *out, size_t cap);

// ---- Text helpers of exported lines -------------------------------------------

// Strips the quotes of a quoted text and the backslashes before double
// quotes, in place; returns the new length.  See
// util_strip_quote_string_from_cfg_e.
size_t strip_cfg_e_quotes(char *text, size_t len);

}  // namespace cmdlib
