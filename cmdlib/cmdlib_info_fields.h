/* The text fields of InfoStruct, written once.
 *
 * CMDLIB_INFO_TEXT_FIELDS(X) expands X(group, name, width, bit) for every
 * character-array field of the record, in declaration order:
 *   group  1..12, the record's groups (1..8 hold configuration settings
 *          and the field's name is the configuration key it holds);
 *   name   the field's name;
 *   width  the array's size in bytes, terminator included;
 *   bit    the field's bit in defined_fields, or -1 when the field has none.
 *
 * cmdlib.h builds the structure from this list; the settings reader, the
 * key lookup and the demo tool derive their tables from it as well, so a
 * field is described in exactly one place.  The order and widths are ABI:
 * programs compiled against an older copy of this list must see the same
 * offsets.
 */
#ifndef CMDLIB_INFO_FIELDS_H
#define CMDLIB_INFO_FIELDS_H

/* Bits 0..72 and those of the later settings table are the configuration
 * export's numbering; the settings that have no number there take the free
 * bits 16, 41, 42, 73..153, 158..161 and 201..207 in the order the settings
 * reader tests them.  Bits 10, 208 and 223 are unused. */
#define CMDLIB_INFO_TEXT_FIELDS(X)                                   \
    /* 1: LAN and Wi-Fi basics */                                    \
    X(1, AP_IPADDR, 32, 0)                                           \
    X(1, AP_NETMASK, 32, 1)                                          \
    X(1, QX_DHCP_IP_BEGIN, 32, 2)                                    \
    X(1, QX_DHCP_IP_END, 32, 3)                                      \
    X(1, QX_DHCP_EXPIRE_TIME, 32, 4)                                 \
    X(1, AP_CHMODE, 16, 5)                                           \
    X(1, PUREG, 16, 6)                                               \
    X(1, PUREN, 16, 7)                                               \
    X(1, AP_WPA_GROUP_REKEY, 16, 8)                                  \
    X(1, AP_WPA_GMK_REKEY, 16, 9)                                    \
    X(1, RTS, 16, -1)                                                \
    X(1, RATECTL, 16, 11)                                            \
    X(1, MANRATE, 16, 12)                                            \
    X(1, MANRETRIES, 16, 13)                                         \
    X(1, WIFIWORKMODE, 32, 14)                                       \
    X(1, QX_ENABLE_WATCHDOG, 16, 15)                                 \
    X(1, QX_SPEED_PREFERRED, 16, 16)                                 \
    X(1, QX_ENABLE_WIFI, 16, 17)                                     \
    /* 2: Wi-Fi access point and security */                         \
    X(2, AP_SSID, 64, 18)                                            \
    X(2, AP_HIDESSID, 16, 19)                                        \
    X(2, AP_PRIMARY_CH, 16, 20)                                      \
    X(2, TXPOWER, 8, 21)                                             \
    X(2, AP_SECMODE, 16, 22)                                         \
    X(2, AP_WPA, 16, 23)                                             \
    X(2, AP_SECFILE, 16, 24)                                         \
    X(2, PSK_KEY, 128, 25)                                           \
    X(2, AP_CYPHER, 32, 26)                                          \
    X(2, AP_WEP_MODE_0, 16, 27)                                      \
    X(2, AP_PRIMARY_KEY_0, 16, 28)                                   \
    X(2, WEP_RADIO_NUM0_KEY_1, 32, 29)                               \
    X(2, WEP_RADIO_NUM0_KEY_2, 32, 30)                               \
    X(2, WEP_RADIO_NUM0_KEY_3, 32, 31)                               \
    X(2, WEP_RADIO_NUM0_KEY_4, 32, 32)                               \
    /* 3: SIM lock, cell-id lock, speed limit, IP stack */           \
    X(3, QX_LOCK_CARD, 8, 33)                                        \
    X(3, QX_LOCK_CARD_TYPE, 8, 34)                                   \
    X(3, QX_INITIAL_PIN_CODE, 16, 35)                                \
    X(3, QX_MODIFIED_PIN_CODE, 16, 36)                               \
    X(3, QX_LOCK_CELL_ID, 16, 37)                                    \
    X(3, QX_LOCK_CELL_ID_COUNT, 16, 38)                              \
    X(3, QX_LIMIT_SPEED_ENABLED, 16, 39)                             \
    X(3, QX_LIMIT_SPEED_VALUE, 16, 40)                               \
    X(3, QX_LIMIT_UPLINK_SPEED_VALUE, 16, 41)                        \
    X(3, QX_IP_STACK_MODE, 16, 42)                                   \
    /* 4: dynamic DNS, three providers */                            \
    X(4, QX_ENABLE_HSK_DDNS_SERVER, 16, 60)                          \
    X(4, QX_DDNS_HSK_USERNAME, 128, 61)                              \
    X(4, QX_DDNS_HSK_PASSWORD, 128, 62)                              \
    X(4, QX_DDNS_INTERFACE, 32, 63)                                  \
    X(4, QX_ENABLE_3322_DDNS_SERVER, 16, 64)                         \
    X(4, QX_DDNS_3322_USERNAME, 128, 65)                             \
    X(4, QX_DDNS_3322_PASSWORD, 128, 66)                             \
    X(4, QX_3322_DOMAIN, 128, 67)                                    \
    X(4, QX_ENABLE_NOIP_DDNS_SERVER, 16, 68)                         \
    X(4, QX_DDNS_NOIP_USERNAME, 128, 69)                             \
    X(4, QX_DDNS_NOIP_PASSWORD, 128, 70)                             \
    X(4, QX_NOIP_DOMAIN, 128, 71)                                    \
    /* 5: L2TP */                                                    \
    X(5, QX_L2TP_MODE, 4, 43)                                        \
    X(5, QX_LNS_SERVER, 64, 44)                                      \
    X(5, QX_TUNNEL_NAME, 128, 45)                                    \
    X(5, QX_TUNNEL_PASS, 128, 46)                                    \
    X(5, QX_AUTH_NAME, 128, 47)                                      \
    X(5, QX_AUTH_PASS, 128, 48)                                      \
    X(5, QX_LNS_SERVER2, 64, 86)                                     \
    X(5, QX_TUNNEL_NAME2, 128, 87)                                   \
    X(5, QX_TUNNEL_PASS2, 128, 88)                                   \
    X(5, QX_LNS_SERVER3, 64, 89)                                     \
    X(5, QX_TUNNEL_NAME3, 128, 90)                                   \
    X(5, QX_TUNNEL_PASS3, 128, 91)                                   \
    X(5, QX_LNS_SERVER4, 64, 92)                                     \
    X(5, QX_TUNNEL_NAME4, 128, 93)                                   \
    X(5, QX_TUNNEL_PASS4, 128, 94)                                   \
    X(5, QX_LNS_SERVER5, 64, 95)                                     \
    X(5, QX_TUNNEL_NAME5, 128, 96)                                   \
    X(5, QX_TUNNEL_PASS5, 128, 97)                                   \
    X(5, QX_LNS_SERVER6, 64, 98)                                     \
    X(5, QX_TUNNEL_NAME6, 128, 99)                                   \
    X(5, QX_TUNNEL_PASS6, 128, 100)                                  \
    X(5, QX_LNS_SERVER7, 64, 101)                                    \
    X(5, QX_TUNNEL_NAME7, 128, 102)                                  \
    X(5, QX_TUNNEL_PASS7, 128, 103)                                  \
    X(5, QX_LNS_SERVER8, 64, 104)                                    \
    X(5, QX_TUNNEL_NAME8, 128, 105)                                  \
    X(5, QX_TUNNEL_PASS8, 128, 106)                                  \
    X(5, QX_LNS_SERVER9, 64, 107)                                    \
    X(5, QX_TUNNEL_NAME9, 128, 108)                                  \
    X(5, QX_TUNNEL_PASS9, 128, 109)                                  \
    X(5, QX_LNS_SERVER10, 64, 110)                                   \
    X(5, QX_TUNNEL_NAME10, 128, 111)                                 \
    X(5, QX_TUNNEL_PASS10, 128, 112)                                 \
    X(5, QX_MULTI_TUNNEL_ENABLED, 16, 146)                           \
    X(5, QX_MULTI_TUNNEL_NAME, 128, 147)                             \
    X(5, QX_MULTI_TUNNEL_PASS, 128, 148)                             \
    X(5, QX_MULTI_TUNNEL_NAME2, 128, 149)                            \
    X(5, QX_MULTI_TUNNEL_PASS2, 128, 150)                            \
    X(5, QX_MULTI_TUNNEL_NAME3, 128, 151)                            \
    X(5, QX_MULTI_TUNNEL_PASS3, 128, 152)                            \
    X(5, QX_MULTI_TUNNEL_NAME4, 128, 153)                            \
    X(5, QX_MULTI_TUNNEL_PASS4, 128, 158)                            \
    /* 6: configuration identity, PPP, DNS, module, servers, FOTA */ \
    X(6, QX_CONFIG_FILE_VERSION, 256, 49)                            \
    X(6, QX_CONFIG_FILE_DESCRIPTION, 768, 50)                        \
    X(6, QX_ENABLE_PPP_FORWARD, 4, 51)                               \
    X(6, LAN_LED_AS_LTE_STATUS, 4, 52)                               \
    X(6, QX_PPP_USERNAME, 64, 53)                                    \
    X(6, QX_PPP_PASSWORD, 64, 54)                                    \
    X(6, QX_PPP_AUTH_TYPE, 64, 55)                                   \
    X(6, QX_GET_DNS_AUTO, 4, 56)                                     \
    X(6, QX_DNS_PRIMARY, 64, 57)                                     \
    X(6, QX_DNS_SECONDARY, 64, 58)                                   \
    X(6, QX_FORBID_ROAMING, 64, 59)                                  \
    X(6, QX_BAND_PREF, 64, 72)                                       \
    X(6, QX_LTE_MODULE_MODE, 8, 73)                                  \
    X(6, QX_LTE_MODULE_PRIORITY, 8, 74)                              \
    X(6, QX_HEARTBEAT_INTERVAL, 8, 75)                               \
    X(6, QX_SPECIAL_DEVICE, 64, 76)                                  \
    X(6, QX_SERVICE_NUMBER, 64, 77)                                  \
    X(6, QX_NTP_SERVER, 128, 78)                                     \
    X(6, QX_SYS_UPDATE_SERVER, 128, 79)                              \
    X(6, QX_FOTA_URL, 128, 80)                                       \
    X(6, QX_FOTA_STATUS, 128, 81)                                    \
    X(6, QX_FOTA_ON_BOOT, 8, 82)                                     \
    X(6, QX_FOTA_TIMER_START, 8, 83)                                 \
    X(6, QX_SNMP_REBOOT, 8, 84)                                      \
    X(6, QX_SNMP_RESTORE, 8, 85)                                     \
    /* 7: prestored frequencies, device type, SIM encryption */      \
    X(7, QX_PRESTORE_FREQUENCY_FDD, 256, 113)                        \
    X(7, QX_PRESTORE_FREQUENCY_TDD, 256, 114)                        \
    X(7, QX_LOCK_IMSI, 8, 115)                                       \
    X(7, QX_DEVICE_TYPE, 32, 116)                                    \
    X(7, QX_MAX_ACCESS_USER_NUM, 32, 117)                            \
    X(7, QX_SUPPORT_SIM_ENCRYPT, 8, 118)                             \
    X(7, QX_ENCRYPT_CARD_VENDOR_ID, 8, 119)                          \
    X(7, QX_ENCRYPT_KEY_VERSION, 8, 120)                             \
    X(7, QX_ENCRYPT_CARD_TYPE, 8, 121)                               \
    X(7, QX_ENCRYPT_KEY_1, 48, 122)                                  \
    X(7, QX_ENCRYPT_KEY_2, 48, 123)                                  \
    X(7, QX_ENCRYPT_KEY_3, 48, 124)                                  \
    X(7, QX_ENCRYPT_KEY_4, 48, 125)                                  \
    X(7, QX_ENCRYPT_KEY_5, 48, 126)                                  \
    X(7, QX_ENCRYPT_KEY_6, 48, 127)                                  \
    X(7, QX_ENCRYPT_KEY_7, 48, 128)                                  \
    X(7, QX_ENCRYPT_KEY_8, 48, 129)                                  \
    X(7, QX_ENCRYPT_KEY_9, 48, 130)                                  \
    X(7, QX_ENCRYPT_KEY_10, 48, 131)                                 \
    X(7, QX_ENCRYPT_KEY_11, 48, 132)                                 \
    X(7, QX_ENCRYPT_KEY_12, 48, 133)                                 \
    X(7, QX_ENCRYPT_KEY_13, 48, 134)                                 \
    X(7, QX_ENCRYPT_KEY_14, 48, 135)                                 \
    X(7, QX_ENCRYPT_KEY_15, 48, 136)                                 \
    X(7, QX_ENCRYPT_KEY_16, 48, 137)                                 \
    X(7, QX_SUPPORT_ORDINARY_CARD, 32, 168)                          \
    X(7, QX_OTHER_CARD_AS_ORDINARY_CARD, 32, 169)                    \
    /* 8: one-cell lock, timers, LNS policy, network lock, APNs,     \
       PPTP, GRE */                                                  \
    X(8, QX_LOCK_ONE_CELL, 8, 138)                                   \
    X(8, QX_LOCKED_EARFCN, 32, 139)                                  \
    X(8, QX_LOCKED_PHYCELLID, 32, 140)                               \
    X(8, QX_LOCKED_Enode_ID, 32, 141)                                \
    X(8, QX_LOCK_ONE_CELL_TIMEOUT, 32, 142)                          \
    X(8, QX_FLOW_THRESHOLD, 32, 143)                                 \
    X(8, QX_FLOW_WARNING, 32, 144)                                   \
    X(8, QX_SET_REBOOT_HOURS, 32, 155)                               \
    X(8, QX_ENABLE_SET_REBOOT, 32, 154)                              \
    X(8, QX_SET_REDIAL_HOURS, 32, 157)                               \
    X(8, QX_ENABLE_SET_REDIAL, 32, 156)                              \
    X(8, QX_ISOLATE_WLAN_CLIENTS, 32, -1)                            \
    X(8, QX_WIFI_40M_ENABLE, 32, 199)                                \
    X(8, QX_CTL_IDU_SIGNAL_LED_COLOR, 32, 200)                       \
    X(8, QX_L2TP_MTU, 32, 145)                                       \
    X(8, QX_LOCK_CELL_TIMEOUT, 16, 159)                              \
    X(8, QX_CPE_ROUTER_MODE, 32, 160)                                \
    X(8, QX_SAVE_LOCK_CELL_AFTER_TIMEOUT, 32, 162)                   \
    X(8, QX_NETWORK_MODE_NOT_SUPPORT, 32, 163)                       \
    X(8, QX_URGENT_HEARTBEAT_INTERVAL, 32, 164)                      \
    X(8, QX_4G_FDD_PREFERRED, 32, 165)                               \
    X(8, QX_RANDOM_SEED, 32, 166)                                    \
    X(8, QX_ALWAYS_USE_INITIAL_LNS, 32, 167)                         \
    X(8, QX_REDIAL_NOT_EXIST_LNS, 32, 170)                           \
    X(8, QX_CHECK_IF_LNS_ALIVE, 32, 171)                             \
    X(8, QX_RANDOM_LNS_BY_INITIATOR, 32, 172)                        \
    X(8, QX_CELL_CMP_IGNORE_LAC, 32, 173)                            \
    X(8, QX_NTP_SERVER2, 128, 174)                                   \
    X(8, QX_NTP_SERVER3, 128, 175)                                   \
    X(8, QX_NTP_SERVER4, 128, 176)                                   \
    X(8, QX_ENABLE_LOCK_NETWORK, 32, 177)                            \
    X(8, QX_LOCK_NETWORK_PLMN, 32, 178)                              \
    X(8, QX_LOCK_NETWORK_PLMN2, 32, 179)                             \
    X(8, QX_LOCK_NETWORK_PLMN3, 32, 180)                             \
    X(8, QX_LOCK_NETWORK_PLMN4, 32, 181)                             \
    X(8, QX_LOCK_NETWORK_PLMN5, 32, 182)                             \
    X(8, QX_LOCK_NETWORK_PLMN6, 32, 183)                             \
    X(8, QX_LOCK_NETWORK_PLMN7, 32, 184)                             \
    X(8, QX_LOCK_NETWORK_PLMN8, 32, 185)                             \
    X(8, QX_LOCK_NETWORK_PLMN9, 32, 186)                             \
    X(8, QX_LOCK_NETWORK_PLMN10, 32, 187)                            \
    X(8, QX_ADMIN_RANDOM_PASSWORD, 32, 188)                          \
    X(8, QX_SPECIAL_SSID_PREFIX, 32, 189)                            \
    X(8, QX_CS_PS_PREFERRED_MODE, 32, 190)                           \
    X(8, QX_ENABLE_DMZ, 8, 191)                                      \
    X(8, QX_DMZ_DEST_IP, 64, 192)                                    \
    X(8, QX_SPECIAL_FUNC_CONFIG, 64, 193)                            \
    X(8, QX_USE_SPECIAL_3G_APN, 16, 198)                             \
    X(8, QX_3G_APN_NAME, 64, 194)                                    \
    X(8, QX_3G_USERNAME, 64, 195)                                    \
    X(8, QX_3G_PASSWORD, 64, 196)                                    \
    X(8, QX_3G_AUTH_TYPE, 8, 197)                                    \
    X(8, QX_PPTP_ENABLED, 64, 161)                                   \
    X(8, QX_PPTP_MODE, 64, 201)                                      \
    X(8, QX_PNS_SERVER, 64, 202)                                     \
    X(8, QX_PPTP_AUTH_NAME, 128, 203)                                \
    X(8, QX_PPTP_AUTH_PASS, 128, 204)                                \
    X(8, QX_PPTP_ENABLE_MPPE, 16, 205)                               \
    X(8, QX_PPTP_MTU, 32, 206)                                       \
    X(8, QX_VPN_AS_DEFAULT_ROUTE, 32, 207)                           \
    X(8, QX_CONFIG_APN_NAME, 64, 209)                                \
    X(8, QX_CONFIG_APN_NAME2, 64, 210)                               \
    X(8, QX_CONFIG_APN_NAME3, 64, 211)                               \
    X(8, QX_ROUTE_CONFIG_FOR_WAN2, 64, 212)                          \
    X(8, QX_GRE_VPN_ENABLED, 32, 213)                                \
    X(8, QX_GRE_VPN_SERVER, 32, 214)                                 \
    X(8, QX_GRE_VPN_LOCAL_IP, 32, 215)                               \
    X(8, QX_GRE_VPN_REMOTE_IP, 32, 216)                              \
    X(8, QX_GRE_AS_DEFAULT_ROUTE, 32, 217)                           \
    X(8, QX_GRE_USE_LAN_INTERFACE, 32, 218)                          \
    X(8, QX_GRE_VPN_SUBNET_MASK, 32, 219)                            \
    X(8, QX_GRE_FOR_WAN_SUBNET, 32, 220)                             \
    X(8, QX_SIP_OVER_GRE, 32, 221)                                   \
    X(8, QX_ENABLE_LOCK_IMSI_PREFIX, 32, 222)                        \
    /* 9: firmware version identity */                               \
    X(9, type, 32, -1)                                               \
    X(9, version, 32, -1)                                            \
    X(9, hwversion, 32, -1)                                          \
    X(9, device, 32, -1)                                             \
    X(9, build, 32, -1)                                              \
    X(9, branch, 64, -1)                                             \
    X(9, os, 32, -1)                                                 \
    X(9, sha1, 257, -1)                                              \
    X(9, customer, 32, -1)                                           \
    X(9, model_type, 32, -1)                                         \
    /* 10: modem module identity */                                  \
    X(10, imei, 48, -1)                                              \
    X(10, imsi, 48, -1)                                              \
    X(10, module_version, 128, -1)                                   \
    X(10, module_phy_version, 128, -1)                               \
    X(10, module_hlp_version, 128, -1)                               \
    X(10, module_build_date, 128, -1)                                \
    X(10, RSSI, 8, -1)                                               \
    X(10, LAC, 32, -1)                                               \
    X(10, CellID, 32, -1)                                            \
    X(10, iccid, 32, -1)                                             \
    X(10, PLMN, 16, -1)                                              \
    X(10, AcT, 16, -1)                                               \
    X(10, band_pref, 64, -1)                                         \
    X(10, module_type, 64, -1)                                       \
    /* 11: radio measurements */                                     \
    X(11, QXEARFCN, 32, -1)                                          \
    X(11, QXBAND, 32, -1)                                            \
    X(11, QXBANDWIDTH, 32, -1)                                       \
    X(11, QXTRANSMODE, 32, -1)                                       \
    X(11, QXRSRP, 32, -1)                                            \
    X(11, QXRSRP2, 32, -1)                                           \
    X(11, QXRSRQ, 32, -1)                                            \
    X(11, QXRSSI, 32, -1)                                            \
    X(11, QXRSSI2, 32, -1)                                           \
    X(11, QXSINR, 32, -1)                                            \
    X(11, QXSINR2, 32, -1)                                           \
    X(11, QXTA, 32, -1)                                              \
    X(11, QXTXPOWER, 32, -1)                                         \
    X(11, QXGLBCELLID, 32, -1)                                       \
    X(11, QXPHYCELLID, 32, -1)                                       \
    X(11, QXULFREQUENCY, 32, -1)                                     \
    X(11, QXDLFREQUENCY, 32, -1)                                     \
    X(11, QXCINR, 32, -1)                                            \
    X(11, QXCINR2, 32, -1)                                           \
    X(11, RRCState, 32, -1)                                          \
    X(11, DL_MCS, 32, -1)                                            \
    X(11, UL_MCS, 32, -1)                                            \
    X(11, CQI, 32, -1)                                               \
    /* 12: platform and modem chip identity */                       \
    X(12, platform_software_version, 128, -1)                        \
    X(12, platform_hardware_version, 128, -1)                        \
    X(12, platform_device_model, 128, -1)                            \
    X(12, platform_device_name, 128, -1)                             \
    X(12, platform_compile_time, 128, -1)                            \
    X(12, modem_chip_firmware_version, 128, -1)                      \
    X(12, modem_chip_bootloader_version, 128, -1)                    \
    X(12, modem_chip_kernel_version, 128, -1)

/* 13: the run-time numbers that follow the text fields, X(name). */
#define CMDLIB_INFO_INT_FIELDS(X)        \
    X(before_nvram_parameter_field)      \
    X(dial_status)                       \
    X(signal_quality)                    \
    X(config_changed_by_server)          \
    X(is_ip_not_the_same_with_server)

/* defined_fields: 7 words of 32 bits */
#define CMDLIB_INFO_DEFINED_FIELDS_WORDS 7

#endif
