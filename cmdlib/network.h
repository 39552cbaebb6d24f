/* network: the router's own interfaces and addresses, the devices attached
 * to it, and the connection-tracking table.
 *
 * Interface names are plain NUL-terminated strings.  Predicates return 1 or
 * 0; operations return 0 on success and -1 on failure unless stated.  Text
 * results go into caller buffers; where a function takes no size, the
 * width the caller must provide is given beside it.  Command lines are run
 * through the shell and their results ignored; any outside text in them is
 * passed as one inert shell word.
 */
#ifndef CMDLIB_NETWORK_H
#define CMDLIB_NETWORK_H

#include <netinet/in.h>

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* ---- Records ------------------------------------------------------------ */

typedef struct MacAddr {
    unsigned char value[6];
    unsigned char align_bytes[2]; /* filler, written as 0 */
} MacAddr;

#define ARP_TABLE_SIZE 40

/* One IPv4 host.  A slot is occupied when both ip and mac are non-empty. */
typedef struct ARPTableEntry {
    char mac[32];
    char ip[64];    /* PPPoE rows: the session id */
    char user[128]; /* PPPoE user name */
    char port[8];   /* case label of the Ethernet port the MAC was learnt on */
    int already_used;
} ARPTableEntry;

typedef struct ARPTable {
    ARPTableEntry table[ARP_TABLE_SIZE];
    unsigned int count;
} ARPTable;

#define NEIGHBOUR_MAX 10

/* status: 5 reachable, 4 stale, 3 delay, 2 probe, 0 anything else */
typedef struct Neighbour_T {
    char ipv6_addr[64];
    char mac_addr[32];
    int status;
    int is_router;
} Neighbour_T;

typedef struct Neighbour_Info {
    Neighbour_T neighbours[NEIGHBOUR_MAX];
    int neighbour_count;
} Neighbour_Info;

#define ALL_HOSTS_MAX 80

typedef struct OneHost {
    char mac[32];
    char ip[64];
    char host_name[64]; /* from the DHCP lease, "" when unknown */
    int leases;         /* seconds of lease left, 0 for hosts seen only by the scan */
    char addr_src;      /* 0 DHCP lease, 1 ARP scan */
    char if_type;       /* always 0 here */
    char stat;          /* 1 online, 0 offline */
} OneHost;

typedef struct AllHostsInfo {
    OneHost host[ALL_HOSTS_MAX];
    int count;
} AllHostsInfo;

/* Word positions of a connection-tracking line.  Protocols without a state
 * word have every position from CONNECT_STATUS on one lower. */
typedef enum ConntrackLine {
    IPVX = 0,
    IPVID = 1,
    PROTOCOL = 2,
    PROTOCOL_ID = 3,
    LIVE_TIME = 4,
    CONNECT_STATUS = 5,
    INSIDE_SRC_IP = 6,
    INSIDE_DST_IP = 7,
    INSIDE_SRC_PORT = 8,
    INSIDE_DST_PORT = 9,
    OUTSIDE_SRC_IP = 10,
    OUTSIDE_DST_IP = 11,
    OUTSIDE_SRC_PORT = 12,
    OUTSIDE_DST_PORT = 13,
    REPLY_FLAG = 14,
    MARK = 15,
    USE = 16
} ConntrackLine;

#define CONNTRACK_IP_SLOTS 32
#define CONNTRACK_IP_WIDTH 24

/* Remote addresses seen answering the router.  The lists accumulate across
 * calls until the caller clears the record; network_is_ok is per call. */
typedef struct DestIPInConntrackInfo {
    char icmp_ip_address[CONNTRACK_IP_SLOTS][CONNTRACK_IP_WIDTH];
    char dns_ip[CONNTRACK_IP_SLOTS][CONNTRACK_IP_WIDTH];
    int valid_icmp_ip_count;
    int valid_dns_ip_count;
    int network_is_ok;
} DestIPInConntrackInfo;

/* Largest remaining lifetime seen on a DNS, SIP or GRE connection in this
 * process; only ever grows. */
CMDLIB_API extern int max_udp_timeout;

/* Physical switch port -> case label, and label number -> physical port. */
CMDLIB_API extern const char *const ethernet_port_map_table[8];
CMDLIB_API extern const int ethernet_port_map_table_from_label[8];

/* ---- IPv4 addresses (interface ioctls) --------------------------------- */

CMDLIB_API int cmd_get_ip(const char *dev_name, struct in_addr *address);
CMDLIB_API int cmd_ip_exist(const char *dev_name);
/* ipv4: at least 16 bytes */
CMDLIB_API int cmd_get_ipv4_address(const char *dev_name, char *ipv4);
CMDLIB_API int util_config_ipv4_addr(const char *net_dev, const char *ipaddr);
CMDLIB_API int cmd_get_binary_netmask(const char *dev_name, struct in_addr *netmask);
/* netmask: at least 16 bytes */
CMDLIB_API int cmd_get_netmask(const char *dev_name, char *netmask);
CMDLIB_API int cmd_netdev_get_mac_addr(const char *net_dev_name, MacAddr *mac_addr);
/* 1 when the interface is RUNNING (carrier up), not merely administratively UP */
CMDLIB_API int util_is_one_network_interface_up(char *interface_name);
/* 1 when "/proc/net/dev" lists the interface */
CMDLIB_API int util_one_network_interface_exist(char *interface_name);
/* leading one bits of a dotted mask (255.255.0.255 gives 16); -1 for bad text */
CMDLIB_API int util_get_netmask_bit_value_1_count(char *netmask);

/* ---- IPv6 addresses ("/proc/net/if_inet6") ------------------------------ */

CMDLIB_API int cmd_ipv6_exist(const char *dev_name);
/* First address of scope global (flag 0) or link (flag 1).  0 found, 1 the
 * address text did not convert, -1 not found or no file. */
CMDLIB_API int cmd_get_ipv6_address(const char *dev_name, struct in6_addr *ipv6,
                                    int is_link_local_ipv6_address);
CMDLIB_API int cmd_get_binary_global_ipv6_address(const char *dev_name, struct in6_addr *ipv6);
CMDLIB_API int cmd_get_binary_link_local_ipv6_address(const char *dev_name, struct in6_addr *ipv6);
CMDLIB_API int cmd_get_global_ipv6_address(const char *dev_name, char *ipv6, int ipv6_buffer_len);
CMDLIB_API int cmd_get_link_local_ipv6_address(const char *dev_name, char *ipv6,
                                               int ipv6_buffer_len);
/* Compressed text of an address; with get_ipv6_prefix set, the bits from
 * ipv6_prefix_len on are cleared (counting bits within a byte from the least
 * significant end) and "/len" is appended. */
CMDLIB_API int util_network_get_ipv6_prefix_ext(char *source_ipv6_addr, int ipv6_prefix_len,
                                                int get_ipv6_prefix, char *dest_ipv6_addr,
                                                int dest_ipv6_addr_size);
CMDLIB_API int util_network_get_simplified_ipv6_addr(char *source_ipv6_addr, char *dest_ipv6_addr,
                                                     int dest_ipv6_addr_size);
CMDLIB_API void util_network_del_ipv6_route_entry(char *interface, char *ipv6, int prefix_len);

/* ---- Interface names ----------------------------------------------------- */

/* The fixed names: LAN bridge "br0", wireless "ath0", Ethernet "eth0", and
 * the policy-routing table of static routes "205".  The getters below
 * return these same texts. */
CMDLIB_API extern const char util_system_network_bridge_name[];
CMDLIB_API extern const char util_wireless_interface_name[];
CMDLIB_API extern const char util_ethernet_interface_name[];
CMDLIB_API extern const char util_static_route_table_name[];

/* Device of the default route when it is the first route; static buffer
 * overwritten by the next call; NULL otherwise. */
CMDLIB_API char *util_get_wan_interface_name_dynamically(void);
/* the above, or "usb0" */
CMDLIB_API char *util_get_wan_interface_name(void);
CMDLIB_API char *util_get_ipv6_wan_interface_name(void);
CMDLIB_API char *util_get_system_network_bridge_name(void);
CMDLIB_API char *util_get_wireless_interface_name(void);
CMDLIB_API char *util_get_ethernet_interface_name(void);
CMDLIB_API char *util_get_static_route_table_name(void);
/* first of ppp0..ppp8 that exists; ppp_dev: at least 8 bytes */
CMDLIB_API int util_get_ppp_net_dev(char *ppp_dev);
/* The LAN bridge's members as handed out here: only the Ethernet device. */
CMDLIB_API void util_get_network_interface_in_bridge(char **network_interfaces,
                                                     int max_interface_count,
                                                     int *network_interface_count);
/* physical port of a case label 0..7; -1 for a label outside the table */
CMDLIB_API int util_get_cpe_phy_port_from_label_number(int label_number);
CMDLIB_API void util_network_get_mac_string(unsigned char *binary_mac_addr,
                                            char *dest_mac_addr_buffer, int mac_addr_buffer_size);

/* ---- WAN forwarding switches --------------------------------------------- */

CMDLIB_API void util_disable_data_forward(void);
/* also drops the router's own output on the WAN; blocks for 10 seconds */
CMDLIB_API void util_disable_data_forward_and_output(void);
/* skipped while any of the blocking flag files exists */
CMDLIB_API void util_enable_data_forward(void);
/* removes the output DROP rules even when the enable script was skipped */
CMDLIB_API void util_enable_data_forward_and_output(void);

/* ---- Segments, DNS, health, checksum ------------------------------------- */

/* 1 on success, 0 on failure */
CMDLIB_API int util_get_network_segment4(const char *s_ip_addr, char *s_netmask,
                                         in_addr_t *n_net_segment, char *s_net_segment,
                                         int s_net_segment_size);
/* 0 error, 1 same segment and equal masks, 2 same segment under the narrower
 * mask but masks differ, 3 different segments */
CMDLIB_API int util_get_2_network_segment_relations4(const char *s_ip_addr_1,
                                                     const char *s_netmask_1,
                                                     const char *s_ip_addr_2,
                                                     const char *s_netmask_2);
CMDLIB_API int util_is_network_ok(void);
/* ipv4_addr: at least 16 bytes, ipv6_addr: at least 40 bytes.  result_ind
 * bit value 2: an IPv4 address was found, 4: an IPv6 address. */
CMDLIB_API int util_resolv_domain_name(const char *domain_name, char *ipv4_addr, char *ipv6_addr,
                                       int *result_ind);
/* Nameservers of "/var/run/resolv.conf", packed into buffer one after the
 * other (each followed by its NUL and one spare byte) with dest_argv
 * pointing at each.  The count is not limited by max_allowed_argv: size
 * buffer (strlen + 2 per address) and dest_argv for every nameserver line
 * the file can hold. */
CMDLIB_API int util_read_dns_info(char *buffer, char **dest_argv, int max_allowed_argv,
                                  int read_ipv4_dns, int read_ipv6_dns);
/* Nameserver lines of one family ("ipv4..." or "ipv6..."), appended as read;
 * outText must hold the whole file.  0, or 1 when no file could be read. */
CMDLIB_API int util_get_dns(char *outText, char *type);
/* 1 when the text holds exactly three '.' */
CMDLIB_API int isipv4Str(char *buffer);
CMDLIB_API int util_check_is_dns_server_valid(void);
CMDLIB_API void util_read_default_gateway_and_dns_info_from_route_table(void);
CMDLIB_API void util_read_ip_address(const char *ip_file, char *buffer, int buffer_size);
/* carry-dropping 16-bit sum, complemented, in network byte order */
CMDLIB_API unsigned short ip_checksum(const void *data, int len);
CMDLIB_API int util_should_check_invalid_wan_ip(void);

/* ---- Neighbours, ARP and connected devices ------------------------------- */

CMDLIB_API int util_parse_neigh_info(const char *file_name, Neighbour_Info *neigh_info,
                                     int only_link_local_addr, int only_global_addr);
CMDLIB_API void util_update_neighbour_arp_cache(const char *network_dev_name, const char *ip_addr);
CMDLIB_API int util_get_arp_table_info(ARPTable *arp_table, char *network_card);
CMDLIB_API int util_get_pppoe_table_info(ARPTable *arp_table, char *network_card);
CMDLIB_API int util_get_port_number_for_one_mac(ARPTable *system_arp_table);
/* "user/mac/port" of each PPPoE session on the bridge, joined by ','; static */
CMDLIB_API char *util_get_all_pppoe_users(void);
CMDLIB_API int util_get_all_wlan_clients(ARPTable *arp_table);
CMDLIB_API void util_detect_arp_entries(char *interface, char *result_file);
/* arp_table_action: bit value 1 adds missing pairs, 2 removes conflicting
 * rows; used_arp_scan_tool: 0 MAC then IP, 1 IP then MAC */
CMDLIB_API int util_get_real_exist_arp_table(char *file_path, int used_arp_scan_tool,
                                             ARPTable *system_arp_table, int arp_table_action);
CMDLIB_API int util_get_device_connected_to_this_device(AllHostsInfo *all_hosts_info);

/* ---- Connection tracking ------------------------------------------------- */

CMDLIB_API int util_gen_nat_session_table(const char *output_path);
CMDLIB_API int util_collect_dns_and_icmp_dest_ip(DestIPInConntrackInfo *conntrack_info);
/* ip_type 0: ICMP list, 1: DNS list */
CMDLIB_API void util_add_ip_to_buffer(char *ip, int ip_type, DestIPInConntrackInfo *conntrack_info);

/* ---- IPv6 set-up (network_ipv6.cpp) -------------------------------------- */

/* A modified EUI-64 interface identifier. */
typedef struct EUI64 {
    unsigned char value[8];
} EUI64;

/* Modified EUI-64 of a MAC: MAC byte 0 with the universal/local bit
 * flipped, bytes 1 and 2, ff fe, bytes 3 to 5.  0, or -1 when either
 * pointer is null. */
CMDLIB_API int util_calc_eui64(MacAddr *mac_addr, EUI64 *eui64_addr);

/* 1 unless "/tmp/cmdlib/.NOT_USE_ACQUIRED_IPV6_INTERFACE_ID" exists (then
 * the identifier comes from the device's MAC instead). */
CMDLIB_API int util_use_acquired_ipv6_interface_id(void);

/* Installs the link-local address of the device from bytes 8 to 15 of
 * local_addr6 (replaced first by the EUI-64 of the device's MAC when the
 * acquired identifier is not to be used and the MAC can be read) and
 * stores that identifier in "/tmp/cmdlib/cmdlib_modem_interface_id" as
 * "::xxxx:xxxx:xxxx:xxxx".  The device's link-local addresses are flushed
 * and fe80::<identifier>/64 added only when the identifier differs from
 * the stored one.  Returns the result of writing the file (0 or -1); -1
 * for a null argument. */
CMDLIB_API int util_write_interface_id(struct in6_addr *local_addr6, const char *network_dev_name);

/* The stored identifier as an address into ipv6_addr (when not null): 0;
 * 1 when the file's text is not an IPv6 address; -1 when the file can't
 * be read. */
CMDLIB_API int util_read_interface_id(struct in6_addr *ipv6_addr);

/* Flushes the global addresses of the device and of "br0", then gives the
 * device <prefix with bytes 8..15 replaced>/128 and "br0" the same /64.
 * Bytes 8..15 come from eui64_addr when modem_get_interface is 0 (and it
 * is not null), else from the stored identifier (when readable); otherwise
 * they stay as the prefix has them.  A prefix that is no IPv6 address
 * leaves both without a global address.  Nothing is done for a null device
 * name. */
CMDLIB_API void config_ipv6_addr(const char *prefix, EUI64 *eui64_addr, const char *network_dev_name,
                                 int modem_get_interface);

/* "ip -f inet6 addr add ADDR/128 dev DEV scope global", then the same
 * address as a /64 on "br0".  Nothing is run when either text is null. */
CMDLIB_API void config_enable_sharing_64prefix_to_a_lan(const char *ipv6_addr, const char *network_dev_name);

/* Replaces the default IPv6 route (both "ip -6 route del ::1/0" tries,
 * then "route -A inet6 add ::1/0 gw GATEWAY dev DEV").  Nothing is run
 * when either text is null. */
CMDLIB_API void config_default_ipv6_gateway(const char *ipv6_gateway, const char *network_dev_name);

/* Publishes the IPv6 DNS servers (the first, and the second when
 * dns_server_count > 1):
 *  - waits while an IPv4 DHCP client runs ("/tmp/cmdlib/udhcp_ipv4.pid"
 *    or "/tmp/cmdlib/dhclient_ipv4.pid" readable; no time limit);
 *  - rewrites "/var/run/resolv.conf": its lines without ':' stay, the old
 *    IPv6 servers go, "nameserver S" lines follow; the new file is built
 *    as "/etc/resolv_slaac.conf" and replaces the old one whole.  A missing
 *    resolver file counts as empty; when the new file can't be written the
 *    resolver file is left as it was.  An empty server gets no line;
 *  - with nat64_mode, restarts the totd script;
 *  - writes "/tmp/cmdlib/.ipv6_dns_server_list" ("S1 S2") and
 *    "/tmp/cmdlib/.ipv6_dns_server_list_comma" ("S1,S2");
 *  - restarts the radvd and dhcp6s scripts in the background.
 * A server text counts up to its first line break; null counts as "". */
CMDLIB_API void config_ipv6_dns_server_address(const char *global_dns_server1,
                                               const char *global_dns_server2, int dns_server_count,
                                               int nat64_mode);

CMDLIB_END_DECLS

#endif
