/* cmdlib_features: what this product can do.
 *
 * The product's feature set is a BigValue whose bits the platform adapter
 * and the common layer fill; daemons ask through the named predicates and
 * never test bit numbers themselves.  A second pair of sets describes the
 * web pages the product supports or does not support.
 */
#ifndef CMDLIB_FEATURES_H
#define CMDLIB_FEATURES_H

#include <time.h>

#include "cmdlib_export.h"
#include "cmdlib_front.h"
#include "libbase.h"

CMDLIB_BEGIN_DECLS

/* The system feature bits and their predicates, X(bit, predicate, inverted).
 * An inverted predicate answers 1 when its bit is clear: those bits say the
 * product must NOT do the check, so an empty set keeps the checks on.  Bit
 * 40 is answered through util_does_system_support_https, which also looks
 * at bits 33 and 34.  Bits 44 and above carry no meaning. */
#define CMDLIB_SYSTEM_FEATURES(X)                                              \
    X(0, util_use_dnsmasq_as_dhcp_server, 0)                                   \
    X(1, util_use_dnsmasq_as_dns_server, 0)                                    \
    X(2, util_is_reboot_immediately_after_factory_reset, 0)                    \
    X(3, util_use_wlanconfig_to_get_device_list, 0)                            \
    X(4, util_use_iwlist_to_get_device_list, 0)                                \
    X(5, util_is_ssh_supported, 0)                                             \
    X(6, util_is_telnet_supported, 0)                                          \
    X(7, util_should_upgrade_by_android_standard, 0)                           \
    X(8, util_should_upgrade_by_decompress_and_overwrite, 0)                   \
    X(9, util_should_upgrade_by_hojy_api, 0)                                   \
    X(10, util_is_tcpdump_in_released_firmware, 0)                             \
    X(11, util_is_adb_in_released_firmware, 0)                                 \
    X(12, util_need_depend_on_api_from_other_company, 0)                       \
    X(13, util_do_reboot_automatically_after_system_upgrade, 0)                \
    X(14, util_do_reboot_automatically_after_config_upgrade, 0)                \
    X(15, util_system_have_usb_serial, 0)                                      \
    X(16, util_does_system_support_fota, 0)                                    \
    X(17, util_does_reboot_automatically_after_fota_upgrade, 0)                \
    X(18, util_does_system_support_gre_vpn, 0)                                 \
    X(19, util_does_system_support_query_pin_puk_retries_times, 0)             \
    X(20, util_dnsmasq_use_option_dhcp_hostsfile, 0)                           \
    X(21, util_dnsmasq_use_uptime_as_expire_time, 0)                           \
    X(22, util_can_hard_reset_modem, 1)                                        \
    X(23, util_should_check_dnsmasq_running_status, 1)                         \
    X(24, util_should_check_464xlat_running_status, 1)                         \
    X(25, util_should_check_dmz_status, 1)                                     \
    X(26, util_should_check_network_bridge_status, 0)                          \
    X(27, util_should_check_ethernet_mac, 0)                                   \
    X(28, util_should_sync_flash_content, 0)                                   \
    X(29, util_does_system_support_reboot_after_10_minutes_no_network, 0)      \
    X(30, util_does_system_support_reboot_if_ram_not_enough, 0)                \
    X(31, util_does_system_support_reboot_if_key_process_not_running, 0)       \
    X(32, util_does_system_use_busybox_httpd_as_http_server, 0)                \
    X(33, util_does_system_use_mini_httpd_as_https_server, 0)                  \
    X(34, util_does_system_use_mongoose_as_http_server, 0)                     \
    X(35, util_does_system_should_check_if_network_normal_or_not, 0)           \
    X(36, util_does_system_support_ip_passthrough, 0)                          \
    X(37, util_does_system_support_watchdog, 0)                                \
    X(38, util_does_system_support_stop_watchdog, 0)                           \
    X(39, util_does_system_support_snmp, 0)                                    \
    X(41, util_does_system_support_check_if_network_ok, 0)                     \
    X(42, util_does_system_support_reapply_firewall_when_wan_ip_changed, 0)    \
    X(43, util_does_system_support_not_display_sim_info_for_non_super_user, 0)

#define CMDLIB_FEATURE_HTTPS_BIT 40
/* predicates: the 43 of the list and util_does_system_support_https */
#define CMDLIB_SYSTEM_FEATURE_COUNT 44

/* Room for the text form of a feature set: 256 characters. */
#define SYSTEM_FEATURES_TEXT_SIZE 257

/* Text form of the product's feature set into system_features (room for
 * SYSTEM_FEATURES_TEXT_SIZE bytes).  Rebuilt on every call. */
CMDLIB_API void util_get_system_features(char *system_features);
/* 1 when bit one_feature of the product's feature set is set, else 0 */
CMDLIB_API int util_is_one_system_feature_set(int one_feature);

#define CMDLIB_FEATURE_DECLARE(bit, name, inverted) CMDLIB_API int name(void);
CMDLIB_SYSTEM_FEATURES(CMDLIB_FEATURE_DECLARE)
#undef CMDLIB_FEATURE_DECLARE
/* 1 with mini_httpd or mongoose as server, else bit 40 */
CMDLIB_API int util_does_system_support_https(void);

/* ---- Web-page feature sets ----------------------------------------------- */

/* The platform's hooks that fill the two sets (both empty on this product). */
CMDLIB_API void util_set_supported_web_page_features_for_all(BigValue *big_value);
CMDLIB_API void util_set_unsupported_web_page_features_for_all(BigValue *big_value);
/* Text forms of the sets; the buffers hold SYSTEM_FEATURES_TEXT_SIZE bytes. */
CMDLIB_API void util_get_supported_web_page_features_ex(char *supported_web_page_features);
CMDLIB_API void util_get_unsupported_web_page_features_ex(char *unsupported_web_page_features);
/* support_table non-zero: 1 when bit_index is in the supported set;
 * support_table zero: 1 when bit_index is NOT in the unsupported set. */
CMDLIB_API int util_is_one_feature_supported(int support_table, int bit_index);

/* ---- Device facts ------------------------------------------------------- */

#define DISPLAY_WIFI_SETTINGS_PAGE_FLAG_FILE "/tmp/cmdlib/.display_wifi_settings_page"
/* 1 when the Wi-Fi settings page flag file exists */
CMDLIB_API int util_should_display_wifi_settings_page(void);
CMDLIB_API int util_has_wifi_for_this_device(void);
/* 1 when "/proc/net/nat46/control" and "/usr/bin/clat.sh" both exist */
CMDLIB_API int util_is_clat_supported(void);
/* 1 when the factory data "/productinfo/mac" (resp. "/productinfo/imei")
 * is missing, else 0 */
CMDLIB_API int util_check_device_factory_mac_info(void);
CMDLIB_API int util_check_device_factory_imei_info(void);

/* ---- Reboot reason ------------------------------------------------------- */

#define REBOOT_REASON_INFO_FILE "/data/.reboot_reason_info"

/* Written as one 72-byte block: the time in native byte order, then the
 * reason text (at most 62 characters, the rest zero). */
typedef struct system_latest_reboot_reason_info {
    time_t sys_latest_reboot_time;
    char sys_latest_reboot_reason[64];
} system_latest_reboot_reason_info;

/* Keeps only the latest reason.  0, or -1 when the file can't be created. */
CMDLIB_API int util_does_system_record_reboot_reason(const char *reason);

/* Who asked for a reset. */
typedef enum RESET_TRIGGER_TYPE {
    RESET_TRIGGER_BY_WEB = 0,
    RESET_TRIGGER_BY_TR069 = 1,
    RESET_TRIGGER_BY_QXKWCMD = 2,
    RESET_TRIGGER_BY_BUTTON = 3,
    RESET_TRIGGER_BY_REBOOT = 4,
    RESET_TRIGGER_BY_QXUPDATE = 5
} RESET_TRIGGER_TYPE;

typedef struct _reset_pre_param {
    char arg[128]; /* argument text of the reset */
    int flag;      /* passed on as the reset flag */
    RESET_TRIGGER_TYPE trigger_flag;
} reset_pre_param;

/* ---- Accounts and small readers ------------------------------------------ */

/* -1 when passwd is null or user has a character that is not a letter or
 * digit; -2 when passwd contains a single or double quote; else 0.  A null
 * or empty user is legal. */
CMDLIB_API int access_legal(const char *user, const char *passwd);

#define CHANGE_PASSWD_SCRIPT_FILE "/tmp/ssh_chang_passwd.sh"
/* Sets the password of user (the current user when user is empty) with the
 * system's passwd tool.  0 on success, -1/-2 from access_legal, -3 when the
 * tool did not ask for the retyped password.  At most 30 user and 28
 * password characters are passed on. */
CMDLIB_API int util_chang_root_passwd(const char *user, const char *passwd);

/* Finds the line "name:value" (name at the start of a line) in the file and
 * copies the value, blanks at its head removed, into value (strncpy of at
 * most size characters).  0; -1 bad arguments; -2 file can't be opened;
 * -3 empty file; -4 not found. */
CMDLIB_API int tr069_get_value_from_file(const char *filename, const char *name, char *value,
                                         int size);

/* MemAvailable of "/proc/meminfo" in bytes, or the negative code of
 * tr069_get_value_from_file when it can't be read. */
CMDLIB_API long long upgrade_available_space_size(void);

CMDLIB_END_DECLS

#endif
