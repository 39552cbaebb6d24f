/* cmdlib_firewall_config: the firewall's settings, read straight into
 * tFirewallConfigInfo through the descriptor table firewall_config_fields.
 */
#ifndef CMDLIB_FIREWALL_CONFIG_H
#define CMDLIB_FIREWALL_CONFIG_H

#include "cmdlib_config.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* The firewall's fields, written once: X(KEY, WIDTH) for every field of
 * tFirewallConfigInfo in declaration order.  The structure and the
 * descriptor table are both expanded from this list, so a field added here
 * lands in both at the same place.  Each field is named after the key it
 * holds and is a NUL-terminated array of WIDTH bytes.  The order and widths
 * are ABI. */
#define CMDLIB_FIREWALL_FIELDS(X)                           \
    X(QX_ENABLE_DMZ, 4)                                     \
    X(QX_DMZ_DEST_IP, 32)                                   \
    X(USR_SERVICE_PREFERENCE, 8)                            \
    X(QX_CPE_ROUTER_MODE, 4)                                \
    X(USR_APN_NAT, 4)                                       \
    X(USR_APN_NAT_1, 4)                                     \
    X(USR_APN_NAT_2, 4)                                     \
    X(USR_APN_NAT_3, 4)                                     \
    X(USR_APN_NAT_4, 4)                                     \
    X(USR_APN_NAT_5, 4)                                     \
    X(USR_APN_NAT_6, 4)                                     \
    X(USR_APN_NAT_7, 4)                                     \
    X(USR_WAN_NAT_SW, 4)                                    \
    X(USR_WAN_NAT_SW_1, 4)                                  \
    X(USR_WAN_NAT_SW_2, 4)                                  \
    X(USR_WAN_NAT_SW_3, 4)                                  \
    X(USR_WAN_NAT_SW_4, 4)                                  \
    X(USR_WAN_NAT_SW_5, 4)                                  \
    X(USR_WAN_NAT_SW_6, 4)                                  \
    X(USR_WAN_NAT_SW_7, 4)                                  \
    X(USR_PON_NAT_SW_0, 4)                                  \
    X(USR_PON_NAT_SW_1, 4)                                  \
    X(USR_PON_NAT_SW_2, 4)                                  \
    X(USR_PON_NAT_SW_3, 4)                                  \
    X(USR_PON_NAT_SW_4, 4)                                  \
    X(USR_PON_NAT_SW_5, 4)                                  \
    X(USR_PON_NAT_SW_6, 4)                                  \
    X(USR_PON_NAT_SW_7, 4)                                  \
    X(USR_ENABLE_SNMP_VIA_LAN, 4)                           \
    X(USR_ALLOW_SNMP_FROM_WAN_IP_0, 64)                     \
    X(USR_ALLOW_SNMP_FROM_WAN_IP_1, 64)                     \
    X(USR_ALLOW_SNMP_FROM_WAN_IP_2, 64)                     \
    X(USR_ALLOW_SNMP_FROM_WAN_IP_3, 64)                     \
    X(USR_ALLOW_SNMP_FROM_WAN_IP_4, 64)                     \
    X(USR_ENABLE_SSH_FROM_WAN, 4)                           \
    X(USR_ALLOW_SSH_FROM_WAN_IP_0, 64)                      \
    X(USR_ALLOW_SSH_FROM_WAN_IP_1, 64)                      \
    X(USR_ALLOW_SSH_FROM_WAN_IP_2, 64)                      \
    X(USR_ALLOW_SSH_FROM_WAN_IP_3, 64)                      \
    X(USR_ALLOW_SSH_FROM_WAN_IP_4, 64)                      \
    X(USR_IGNORE_SSH_FROM_LAN, 4)                           \
    X(USR_ALLOW_IP_SSH_FROM_LAN, 32)                        \
    X(USR_ENABLE_WEB_LOGIN_IP_FROM_WAN_SW, 4)               \
    X(USR_ALLOW_WEB_LOGIN_FROM_WAN_IP_0, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_WAN_IP_1, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_WAN_IP_2, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_WAN_IP_3, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_WAN_IP_4, 64)                \
    X(USR_IGNORE_WEB_LOGIN_FROM_LAN, 4)                     \
    X(USR_ENABLE_WEB_LOGIN_IP_FROM_LAN_SW, 4)               \
    X(USR_ALLOW_WEB_LOGIN_FROM_LAN_IP_0, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_LAN_IP_1, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_LAN_IP_2, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_LAN_IP_3, 64)                \
    X(USR_ALLOW_WEB_LOGIN_FROM_LAN_IP_4, 64)                \
    X(USR_ALLOW_WEB_ONLY_LAN_SUBNET, 4)                     \
    X(USR_WEB_LOGIN_FROM_WAN_PORT, 8)                       \
    X(USR_WEB_LOGIN_FROM_WAN_PORT_FOR_HTTPS, 8)             \
    X(SYS_WEB_PROTOCOL_TYPE, 2)                             \
    X(USR_IGNORE_ICMP_FROM_WAN, 4)                          \
    X(USR_ENABLE_ICMP_IP_FROM_WAN_SW, 4)                    \
    X(USR_ALLOW_ICMP_FROM_WAN_IP_0, 64)                     \
    X(USR_ALLOW_ICMP_FROM_WAN_IP_1, 64)                     \
    X(USR_ALLOW_ICMP_FROM_WAN_IP_2, 64)                     \
    X(USR_ALLOW_ICMP_FROM_WAN_IP_3, 64)                     \
    X(USR_ALLOW_ICMP_FROM_WAN_IP_4, 64)                     \
    X(USR_IGNORE_ICMP_FROM_LAN, 4)                          \
    X(USR_ENABLE_ICMP_IP_FROM_LAN_SW, 4)                    \
    X(USR_ALLOW_ICMP_FROM_LAN_IP_0, 64)                     \
    X(USR_ALLOW_ICMP_FROM_LAN_IP_1, 64)                     \
    X(USR_ALLOW_ICMP_FROM_LAN_IP_2, 64)                     \
    X(USR_ALLOW_ICMP_FROM_LAN_IP_3, 64)                     \
    X(USR_ALLOW_ICMP_FROM_LAN_IP_4, 64)                     \
    X(USR_ENABLE_TRUSTED_IP_SW, 4)                          \
    X(USR_ALLOW_TRUSTED_IP_0, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_1, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_2, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_3, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_4, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_5, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_6, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_7, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_8, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_9, 64)                           \
    X(USR_ALLOW_TRUSTED_IP_10, 64)                          \
    X(USR_ALLOW_TRUSTED_IP_11, 64)                          \
    X(USR_ALLOW_TRUSTED_IP_12, 64)                          \
    X(USR_ALLOW_TRUSTED_IP_13, 64)                          \
    X(USR_ALLOW_TRUSTED_IP_14, 64)                          \
    X(USR_DHCP_LAN_IP, 32)                                  \
    X(USR_DHCP_SUBNET_MASK, 32)                             \
    X(USR_DHCP_LAN_IP_1, 32)                                \
    X(USR_DHCP_SUBNET_MASK_1, 32)                           \
    X(USR_DHCP_LAN_IP_2, 32)                                \
    X(USR_DHCP_SUBNET_MASK_2, 32)                           \
    X(USR_DHCP_LAN_IP_3, 32)                                \
    X(USR_DHCP_SUBNET_MASK_3, 32)                           \
    X(USR_DHCP_LAN_IP_4, 32)                                \
    X(USR_DHCP_SUBNET_MASK_4, 32)                           \
    X(USR_DHCP_LAN_IP_5, 32)                                \
    X(USR_DHCP_SUBNET_MASK_5, 32)                           \
    X(USR_DHCP_LAN_IP_6, 32)                                \
    X(USR_DHCP_SUBNET_MASK_6, 32)                           \
    X(USR_DHCP_LAN_IP_7, 32)                                \
    X(USR_DHCP_SUBNET_MASK_7, 32)                           \
    X(USR_DHCP_LAN_IP_8, 32)                                \
    X(USR_DHCP_SUBNET_MASK_8, 32)                           \
    X(USR_DHCP_LAN_IP_9, 32)                                \
    X(USR_DHCP_SUBNET_MASK_9, 32)                           \
    X(USR_DHCP_LAN_IP_10, 32)                               \
    X(USR_DHCP_SUBNET_MASK_10, 32)                          \
    X(USR_DHCP_LAN_IP_11, 32)                               \
    X(USR_DHCP_SUBNET_MASK_11, 32)                          \
    X(USR_DHCP_LAN_IP_12, 32)                               \
    X(USR_DHCP_SUBNET_MASK_12, 32)                          \
    X(USR_DHCP_LAN_IP_13, 32)                               \
    X(USR_DHCP_SUBNET_MASK_13, 32)                          \
    X(USR_DHCP_LAN_IP_14, 32)                               \
    X(USR_DHCP_SUBNET_MASK_14, 32)                          \
    X(USR_DHCP_LAN_IP_15, 32)                               \
    X(USR_DHCP_SUBNET_MASK_15, 32)                          \
    X(USR_DROP_PACKETS_FROM_WAN_TCP_PORTS, 96)              \
    X(USR_DROP_PACKETS_FROM_WAN_UDP_PORTS, 96)              \
    X(USR_DROP_PACKETS_FROM_LAN_TCP_PORTS, 96)              \
    X(USR_DROP_PACKETS_FROM_LAN_UDP_PORTS, 96)              \
    X(USR_MAC_WRITER_ENABLE, 4)                             \
    X(USR_TELNET_SERVER_ENABLE, 4)                          \
    X(USR_TR069_ENABLED, 4)                                 \
    X(USR_TR069_CPE_PORT, 8)                                \
    X(USR_TR069_ENABLE_LISTENER_PORT, 4)                    \
    X(USR_L2TP_MODE, 4)                                     \
    X(USR_L2TP_MTU, 8)                                      \
    X(USR_MTU_USB0, 8)                                      \
    X(USR_WAN_MSS, 8)                                       \
    X(USR_GRE_VPN_ENABLED, 4)                               \
    X(USR_FWT_UPNP_SW, 4)                                   \
    X(QX_ENABLE_UPNP, 4)                                    \
    X(USR_DHCP_MSS, 8)                                      \
    X(USR_APN_ROUTE_BINDING_PORT_MASK_0, 32)                \
    X(USR_APN_ROUTE_BINDING_PORT_MASK_1, 32)                \
    X(USR_APN_ROUTE_BINDING_PORT_MASK_2, 32)                \
    X(USR_APN_ROUTE_BINDING_PORT_MASK_3, 32)                \
    X(USR_WAN_ROUTE_BINDING_PORT_MASK, 32)                  \
    X(USR_WAN_WLAN2G_ROUTE_BINDING_PORT_MASK, 32)           \
    X(USR_WAN_WLAN5G_ROUTE_BINDING_PORT_MASK, 32)           \
    X(USR_WAN_WLAN6G_ROUTE_BINDING_PORT_MASK, 32)           \
    X(USR_SLICE_ROUTE_BINDING_PORT_MASK_0, 32)              \
    X(USR_SLICE_ROUTE_BINDING_PORT_MASK_1, 32)              \
    X(USR_SLICE_ROUTE_BINDING_PORT_MASK_2, 32)              \
    X(USR_SLICE_ROUTE_BINDING_PORT_MASK_3, 32)              \
    X(SYS_VLAN_ID_0, 16)                                    \
    X(SYS_VLAN_DHCP_IP_0, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_0, 32)                      \
    X(SYS_VLAN_ID_1, 16)                                    \
    X(SYS_VLAN_DHCP_IP_1, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_1, 32)                      \
    X(SYS_VLAN_ID_2, 16)                                    \
    X(SYS_VLAN_DHCP_IP_2, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_2, 32)                      \
    X(SYS_VLAN_ID_3, 16)                                    \
    X(SYS_VLAN_DHCP_IP_3, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_3, 32)                      \
    X(SYS_VLAN_ID_4, 16)                                    \
    X(SYS_VLAN_DHCP_IP_4, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_4, 32)                      \
    X(SYS_VLAN_ID_5, 16)                                    \
    X(SYS_VLAN_DHCP_IP_5, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_5, 32)                      \
    X(SYS_VLAN_ID_6, 16)                                    \
    X(SYS_VLAN_DHCP_IP_6, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_6, 32)                      \
    X(SYS_VLAN_ID_7, 16)                                    \
    X(SYS_VLAN_DHCP_IP_7, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_7, 32)                      \
    X(SYS_VLAN_ID_8, 16)                                    \
    X(SYS_VLAN_DHCP_IP_8, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_8, 32)                      \
    X(SYS_VLAN_ID_9, 16)                                    \
    X(SYS_VLAN_DHCP_IP_9, 32)                               \
    X(SYS_VLAN_DHCP_SUBNET_MASK_9, 32)                      \
    X(SYS_VLAN_ID_10, 16)                                   \
    X(SYS_VLAN_DHCP_IP_10, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_10, 32)                     \
    X(SYS_VLAN_ID_11, 16)                                   \
    X(SYS_VLAN_DHCP_IP_11, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_11, 32)                     \
    X(SYS_VLAN_ID_12, 16)                                   \
    X(SYS_VLAN_DHCP_IP_12, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_12, 32)                     \
    X(SYS_VLAN_ID_13, 16)                                   \
    X(SYS_VLAN_DHCP_IP_13, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_13, 32)                     \
    X(SYS_VLAN_ID_14, 16)                                   \
    X(SYS_VLAN_DHCP_IP_14, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_14, 32)                     \
    X(SYS_VLAN_ID_15, 16)                                   \
    X(SYS_VLAN_DHCP_IP_15, 32)                              \
    X(SYS_VLAN_DHCP_SUBNET_MASK_15, 32)                     \
    X(USR_WAN_MODE, 4)                                      \
    X(USR_WAN_COMMUNICATION_PRIORITY_STRATEGY, 4)           \
    X(USR_TR069_ACS_URL, 128)                               \
    X(SYS_AERA_ID, 8)                                       \
    X(SYS_FWT_ACL_WAN_IP_0, 64)                             \
    X(SYS_FWT_ACL_WAN_IP_1, 64)                             \
    X(SYS_FWT_ACL_WAN_IP_2, 64)                             \
    X(SYS_FWT_ACL_WAN_IP_3, 64)                             \
    X(SYS_FWT_ACL_WAN_IP_4, 64)                             \
    X(SYS_IP_PASSTHROUGH_SW, 8)                             \
    X(USR_WAN_BRIDGE_MOBILE_DHCP_BACKUP_SW, 8)              \
    X(USR_WAN_BRIDGE_MOBILE_AUTO_DHCP_SW, 8)                \
    X(USR_WAN_BRIDGE_MOBILE_DHCP_GATEWAY, 64)               \
    X(USR_WAN_BRIDGE_MOBILE_DHCP_NETMASK, 64)               \
    X(USR_VPN_DEFAULT_ROUTE, 8)                             \
    X(USR_VPN_NAT_SW, 8)                                    \
    X(USR_VXLAN_SW, 8)                                      \
    X(USR_VXLAN_TUNNEL_NAME, 128)                           \
    X(USR_VXLAN_REMOTE_IP, 64)                              \
    X(USR_VXLAN_PEER_IP, 64)                                \
    X(USR_VXLAN_LOCAL_IP, 64)                               \
    X(USR_GRE_SW, 8)                                        \
    X(USR_GRE_TUNNEL_NAME, 32)                              \
    X(USR_GRE_SERVER, 64)                                   \
    X(USR_GRE_LOCAL_IP, 64)                                 \
    X(USR_GRE_PEER_IP, 64)                                  \
    X(USR_GRE_NAT_SW, 8)                                    \
    X(USR_PARENTAL_CONTROL_SW, 8)                           \
    X(SYS_SFP_IPA_SW, 8)                                    \
    X(SYS_SFP_IPA_SW_BACKUP, 8)                             \
    X(USR_VOIP_SW, 8)                                       \
    X(USR_VOIP_REG_ADDRESS, 128)                            \
    X(USR_VOIP_REG_DOMAIN, 128)                             \
    X(USR_VOIP_PROXY_SW, 8)                                 \
    X(USR_VOIP_PROXY_ADDRESS, 128)                          \
    X(USR_VOIP_ALTERNAT_SERVER_SW, 8)                       \
    X(USR_VOIP_ALTERNAT_REG_ADDRESS, 128)                   \
    X(USR_VOIP_ALTERNAT_REG_DOMAIN, 128)                    \
    X(USR_VOIP_ALTERNAT_PROXY_ADDRESS, 128)                 \
    X(USR_VOIP_LOCAL_SIP_PORT, 8)                           \
    X(USR_VOIP_RTP_PORT_START, 8)                           \
    X(USR_VOIP_RTP_PORT_END, 8)                             \
    X(RECV_INTERNET_APN_FLAG, 4)                            \
    X(USR_DROP_NEW_ST_FROM_WAN_SW, 4)                       \
    X(USR_FIREWALLTOOL_PORT_FORWARD_SW, 4)                  \
    X(USR_CLAT_MODE, 4)                                     \
    X(USR_CLAT_IP, 64)                                      \
    X(USR_CLAT_IP_GATEWAY, 64)                              \
    X(USR_OP_MODE, 4)                                       \
    X(USR_DEFAULT_EOGRE_TUNNEL_STATUS, 4)                   \
    X(USR_FIREWALLTOOL_GLOBAL_SPEED_LIMIT_SW, 4)            \
    X(USR_FIREWALLTOOL_GLOBAL_SPEED_LIMIT_VALUE, 32)        \
    X(USR_FIREWALLTOOL_GLOBAL_UP_SPEED_LIMIT_VALUE, 32)     \
    X(USR_ONLY_ALLOW_VPN_NETWORK_SW, 8)                     \
    X(USR_FIREWALL_TR069_RESERVE_CR_WHITE_SW, 4)

#define CMDLIB_FIREWALL_DECLARE_FIELD(name, width) char name[width];
typedef struct tFirewallConfigInfo {
    CMDLIB_FIREWALL_FIELDS(CMDLIB_FIREWALL_DECLARE_FIELD)
} tFirewallConfigInfo;
#undef CMDLIB_FIREWALL_DECLARE_FIELD

#define FIREWALL_CONFIG_FIELDS_COUNT 253

/* One descriptor per field of tFirewallConfigInfo, in field order; the key
 * is the field's name, the size its width, the flag 1. */
CMDLIB_API extern const FieldConfigInfo firewall_config_fields[FIREWALL_CONFIG_FIELDS_COUNT];

/* Appends the table's keys to args (at most max_args_count, at most 253);
 * returns how many. */
CMDLIB_API int util_firewall_config_add_fields_need_to_read(const char **args, int max_args_count);

/* Zeroes *firewall_info, then fills the fields whose keys config_file
 * assigns (the last assignment of a key wins; values cut to the field's
 * width minus one).  0, or -1 when the file can't be opened. */
CMDLIB_API int util_firewall_read_config(const char *config_file,
                                         tFirewallConfigInfo *firewall_info);

CMDLIB_END_DECLS

#endif
