/* mac: records of the attached indoor units, keyed by MAC address, kept
 * in one fixed-size binary file that several daemons share; the file of
 * the peer server's MAC or of the client MACs seen; MAC text conversions.
 *
 * The records' layout is the file's layout, byte for byte: a MacIPPair is
 * 3480 bytes, the records file 69604 (20 records, then mac_count as a
 * 32-bit little-endian int), a MacBuffer 164.  Every file is written whole
 * under a scratch name and renamed over the old one, so a daemon loading
 * at the same moment sees the old or the new content, never a mix.
 */
#ifndef CMDLIB_MAC_H
#define CMDLIB_MAC_H

#include "cmdlib_export.h"
#include "network.h"

CMDLIB_BEGIN_DECLS

#define MAC_RECORDS_MAX 20

/* The text fields of MacIPPair after its MAC, in order:
 * X(name, count, width, offset) declares char name[width] when count is 1
 * and char name[5][width] (one text per SSID index 0..4) when count is 5;
 * offset is the field's byte offset in the record and in the file.  Each
 * field holds the configuration key of its name as set for that unit
 * (hardware_version .. idu_memory_available: the unit's reported identity
 * and memory; web_*: the unit's web-page switches). */
#define MAC_IP_PAIR_TEXT_FIELD_COUNT 110
#define MAC_IP_PAIR_TEXT_FIELDS(X) \
    X(AP_IPADDR, 1, 32, 8)                          \
    X(AP_NETMASK, 1, 32, 40)                        \
    X(QX_DHCP_IP_BEGIN, 1, 32, 72)                  \
    X(QX_DHCP_IP_END, 1, 32, 104)                   \
    X(QX_DHCP_EXPIRE_TIME, 1, 32, 136)              \
    X(IDU_LAN_MAC_ADDR, 1, 18, 168)                 \
    X(QX_IDU_TELNET_SWITCH, 1, 2, 186)              \
    X(QX_IDU_WLAN0_DFS_DISABLE, 1, 2, 188)          \
    X(QX_IDU_REG_DOMAIN, 1, 4, 190)                 \
    X(QX_IDU_BR0_IP_SW, 1, 2, 194)                  \
    X(QX_IDU_WLAN5G_TPC_ENABLE, 1, 2, 196)          \
    X(QX_IDU_WLAN_PIN, 1, 10, 198)                  \
    X(IDU_LIBCOMMLOG_EN, 1, 2, 208)                 \
    X(IDU_LIBCOMMLOG_MAX_FILE_SIZE, 1, 10, 210)     \
    X(IDU_LIBCOMMLOG_TYPE, 1, 2, 220)               \
    X(IDU_LIBCOMMLOG_TMP_DIR, 1, 32, 222)           \
    X(IDU_LIBCOMMLOG_LEVEL, 1, 2, 254)              \
    X(IDU_LIBCOMMLOG_BAKUP_EN, 1, 2, 256)           \
    X(IDU_LIBCOMMLOG_BAKUP_DIR, 1, 32, 258)         \
    X(IDU_LIBCOMMLOG_BAKUP_TIME, 1, 6, 290)         \
    X(IDU_LIBCOMMLOG_MOD_EN_QX_MGR, 1, 2, 296)      \
    X(IDU_LIBCOMMLOG_MOD_EN_SYSUPGRADE, 1, 2, 298)  \
    X(QX_NTP_TIMEZONE, 1, 32, 300)                  \
    X(IDU_LIBCOMMLOG_MOD_EN_CFG_TO_MIB, 1, 2, 332)  \
    X(IDU_CHANNEL_SCORE_RUN_INTERVAL, 1, 6, 334)    \
    X(WLAN5G_SSID_SAMEAS_WLAN2G_SW, 1, 2, 340)      \
    X(WLAN5G_OPTIMIZATION_RULE, 1, 2, 342)          \
    X(WIFI2G_SWITCH, 1, 2, 344)                     \
    X(WIFI5G_SWITCH, 1, 2, 346)                     \
    X(WIFI2G_MODE, 1, 4, 348)                       \
    X(WIFI5G_MODE, 1, 4, 352)                       \
    X(WIFI2G_BAND_WITDH, 1, 4, 356)                 \
    X(WIFI5G_BAND_WITDH, 1, 4, 360)                 \
    X(WIFI2G_TXPOWER, 1, 4, 364)                    \
    X(WIFI5G_TXPOWER, 1, 4, 368)                    \
    X(WIFI2G_CHANNEL, 1, 8, 372)                    \
    X(WIFI5G_CHANNEL, 1, 8, 380)                    \
    X(WIFI2G_MAX_STATION, 1, 4, 388)                \
    X(WIFI5G_MAX_STATION, 1, 4, 392)                \
    X(WIFI2G_SGI_SWITCH, 1, 2, 396)                 \
    X(WIFI5G_SGI_SWITCH, 1, 2, 398)                 \
    X(WIFI2G_WMM_SWITCH, 1, 2, 400)                 \
    X(WIFI5G_WMM_SWITCH, 1, 2, 402)                 \
    X(WIFI2G_WPS_SWITCH, 1, 2, 404)                 \
    X(WIFI5G_WPS_SWITCH, 1, 2, 406)                 \
    X(WIFI2G_STA_ASOC_RSSI_TH, 1, 5, 408)           \
    X(WIFI5G_STA_ASOC_RSSI_TH, 1, 5, 413)           \
    X(WIFI2G_RM_STA_RSSI_TH, 1, 5, 418)             \
    X(WIFI5G_RM_STA_RSSI_TH, 1, 5, 423)             \
    X(WIFI2G_ENABLE, 5, 2, 428)                     \
    X(WIFI5G_ENABLE, 5, 2, 438)                     \
    X(WIFI2G_BROADCAST, 5, 2, 448)                  \
    X(WIFI5G_BROADCAST, 5, 2, 458)                  \
    X(WIFI2G_SSID, 5, 64, 468)                      \
    X(WIFI5G_SSID, 5, 64, 788)                      \
    X(WIFI2G_PASSWORD, 5, 128, 1108)                \
    X(WIFI5G_PASSWORD, 5, 128, 1748)                \
    X(WIFI2G_AUTHMODE, 5, 4, 2388)                  \
    X(WIFI5G_AUTHMODE, 5, 4, 2408)                  \
    X(WIFI2G_CIPHER_SUITE, 5, 4, 2428)              \
    X(WIFI5G_CIPHER_SUITE, 5, 4, 2448)              \
    X(hardware_version, 1, 32, 2468)                \
    X(firmware_version, 1, 32, 2500)                \
    X(config_version, 1, 64, 2532)                  \
    X(idu_dev_type, 1, 32, 2596)                    \
    X(idu_build_time, 1, 32, 2628)                  \
    X(idu_build_branch, 1, 32, 2660)                \
    X(idu_git_sha1, 1, 64, 2692)                    \
    X(idu_memory_total, 1, 32, 2756)                \
    X(idu_memory_free, 1, 32, 2788)                 \
    X(idu_memory_available, 1, 32, 2820)            \
    X(USR_WAN_MODE, 1, 2, 2852)                     \
    X(WAN_WLAN_CLIENT_MODE_ARG_SET, 1, 2, 2854)     \
    X(WAN_WLAN2G_APMODE, 1, 2, 2856)                \
    X(WAN_WLAN2G_CLIENT_SSID, 1, 64, 2858)          \
    X(WAN_WLAN2G_CLIENT_PASSWORD, 1, 64, 2922)      \
    X(WAN_WLAN2G_CLIENT_ENCRYPTION, 1, 2, 2986)     \
    X(WAN_WLAN5G_APMODE, 1, 2, 2988)                \
    X(WAN_WLAN5G_CLIENT_SSID, 1, 64, 2990)          \
    X(WAN_WLAN5G_CLIENT_PASSWORD, 1, 64, 3054)      \
    X(WAN_WLAN5G_CLIENT_ENCRYPTION, 1, 2, 3118)     \
    X(IDU_WEB_USER_LOGIN_NAME, 1, 32, 3120)         \
    X(IDU_WEB_USER_LOGIN_PWD, 1, 32, 3152)          \
    X(MESH_SWITCH, 1, 4, 3184)                      \
    X(ODU_IP_PASSTHROUGH_SW, 1, 4, 3188)            \
    X(ODU_WAN_NETWORK_STATUS, 1, 4, 3192)           \
    X(ODU_SIM_STATUS, 1, 4, 3196)                   \
    X(WIFI2G_SSID_NUM, 1, 4, 3200)                  \
    X(WIFI5G_SSID_NUM, 1, 4, 3204)                  \
    X(IDU_DEVICE_MAC, 1, 32, 3208)                  \
    X(IDU_DEVICE_SN, 1, 32, 3240)                   \
    X(ODU_AREA_ID, 1, 16, 3272)                     \
    X(IDU_WLAN0_MAC, 1, 32, 3288)                   \
    X(IDU_WLAN11AC0_MAC, 1, 32, 3320)               \
    X(NFC_SW, 1, 4, 3352)                           \
    X(NFC_WIFI_BAND, 1, 4, 3356)                    \
    X(SAMBA_SW, 1, 2, 3360)                         \
    X(SAMBA_USERNAME, 1, 32, 3362)                  \
    X(SAMBA_PASSWD, 1, 64, 3394)                    \
    X(web_wifi24g_setting, 1, 2, 3458)              \
    X(web_wifi24g_secondwifi, 1, 2, 3460)           \
    X(web_wifi24g_advance_setting, 1, 2, 3462)      \
    X(web_wifi5g_setting, 1, 2, 3464)               \
    X(web_wifi5g_secondwifi, 1, 2, 3466)            \
    X(web_wifi5g_advance_setting, 1, 2, 3468)       \
    X(web_wps_setting, 1, 2, 3470)                  \
    X(web_wifi2g_information, 1, 2, 3472)           \
    X(web_wifi5g_information, 1, 2, 3474)           \
    X(web_wifi_maxnum, 1, 2, 3476)                  \
    X(web_wifi_nfc, 1, 2, 3478)                    

#define MAC_IP_PAIR_DIMS_1(width) [width]
#define MAC_IP_PAIR_DIMS_5(width) [5][width]
#define MAC_IP_PAIR_DECLARE(name, count, width, offset) char name MAC_IP_PAIR_DIMS_##count(width);

typedef struct MacIPPair {
    MacAddr mac;
    MAC_IP_PAIR_TEXT_FIELDS(MAC_IP_PAIR_DECLARE)
} MacIPPair;

#undef MAC_IP_PAIR_DECLARE

typedef struct MacControlInfo {
    MacIPPair ip_pair_info[MAC_RECORDS_MAX];
    int mac_count; /* units registered: slots 0 .. mac_count-1 */
} MacControlInfo;

typedef struct MacBuffer {
    MacAddr macs[MAC_RECORDS_MAX];
    int mac_count;
} MacBuffer;

/* Sizes in the files. */
#define MAC_IP_PAIR_SIZE 3480
#define MAC_CONTROL_INFO_FILE_SIZE 69604
#define MAC_BUFFER_FILE_SIZE 164

/* ---- The records file "/tmp/cmdlib/.mac_control_info_file" ----------------- */

/* Removes the records file and zeroes the record. */
CMDLIB_API void util_reset_mac_control_info(MacControlInfo *mac_control_info);
/* Loads the file when it is exactly 69604 bytes; otherwise (missing, wrong
 * size, unreadable) the record is left as it was.  The flag is unused. */
CMDLIB_API void util_read_mac_control_info(MacControlInfo *mac_control_info, int is_used_by_web_page);
/* Writes the whole record as the new file (nothing happens when the file
 * can't be created).  With the flag set and the write attempted, also
 * creates "/tmp/cmdlib/.mac_control_info_file_changed". */
CMDLIB_API void util_save_mac_control_info(MacControlInfo *mac_control_info, int is_used_by_web_page);

/* ---- Records in memory -------------------------------------------------------
 * MACs are compared on their six bytes.  Searches visit slots 0 ..
 * mac_count-1, never more than 20; a negative mac_count (a damaged file)
 * counts as no unit. */

/* Copies the unit's record into ip_pair_info (when not null): 0, or -1
 * when the MAC is not registered or an argument is null. */
CMDLIB_API int util_get_mac_info(MacControlInfo *mac_control_info, unsigned char *mac_addr,
                                 MacIPPair *ip_pair_info);
/* Registers a MAC: 0 when it was there already (nothing changes) or has
 * been added; -1 when 20 units are registered (or an argument is null).
 * Only the MAC goes into the new slot: the other arguments are accepted
 * and not stored, and the rest of the slot keeps what it held (zeroes after
 * a reset, or the settings of a unit deleted before). */
CMDLIB_API int util_set_mac_info_ex(MacControlInfo *mac_control_info, unsigned char *mac_addr,
                                    char *ip_addr, char *ssid, char *key, char *primary_ch,
                                    char *txpower);
/* Replaces the unit's whole record, or appends it for a new MAC: 0, or -1
 * when 20 units are registered (or an argument is null). */
CMDLIB_API int util_set_mac_info2(MacControlInfo *mac_control_info, MacIPPair *mac_ip_pair);
/* Removes the unit's record, moving the later ones down; the vacated last
 * slot keeps its bytes.  An unknown MAC changes nothing. */
CMDLIB_API void util_delete_mac_info(MacControlInfo *mac_control_info, unsigned char *mac_addr);

/* ---- The MAC file "/tmp/cmdlib/.all_macs_tmp_file" -----------------------------
 * Either one MacAddr (8 bytes: the server's MAC, two zero bytes) or a
 * whole MacBuffer (164 bytes); the size tells which.  The writers remember,
 * per process, what they last wrote and skip a write that would change
 * nothing; a file of the other writer's size is replaced in any case. */

CMDLIB_API void util_save_server_mac(unsigned char *remote_mac_addr);
CMDLIB_API void util_save_client_macs(MacBuffer *all_client_macs);
/* 8-byte file: macs[0] and mac_count 1 (other entries untouched); 164-byte
 * file: the whole buffer.  0; -1 when the file is missing or unreadable,
 * and for any other size (the file is then removed). */
CMDLIB_API int util_load_saved_macs(MacBuffer *mac_struct);

/* ---- Conversions ------------------------------------------------------------ */

/* "00:11:22:33:44:55" to six bytes.  Byte i comes from the hexadecimal
 * digits at positions 3i and 3i+1; the separators between them are not
 * looked at, so "00-11-22-33-44-55" reads the same.  A text that is
 * shorter than 17 characters or has a non-hexadecimal digit in one of
 * those positions gives six zero bytes. */
CMDLIB_API void util_get_mac(const char *buf, unsigned char *mac);
/* The device's MAC as "%02X:%02X:%02X:%02X:%02X:%02X" into mac_addr (18
 * bytes): 0; -1 when mac_addr is null or the device has no hardware
 * address. */
CMDLIB_API int util_load_mac_addr(const char *net_dev_name, char *mac_addr);

CMDLIB_END_DECLS

#endif
