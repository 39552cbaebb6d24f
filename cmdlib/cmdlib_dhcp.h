/* cmdlib_dhcp: the LAN's DHCP server: its configuration keys, the udhcpd
 * restart from those keys, and the client list of the dnsmasq server. */
#ifndef CMDLIB_DHCP_H
#define CMDLIB_DHCP_H

#include "cmdlib_config.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define DHCP_CONFIG_FIELDS_COUNT 9

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const dhcp_config_fields[DHCP_CONFIG_FIELDS_COUNT + 1];

/* Appends dhcp_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_dhcp_add_fields_need_to_read(const char **args, int max_args_count);

/* 1 unless QX_ENABLE_DHCP_SERVER is exactly "no": the server is on by
 * default, also when the key is absent or empty. */
CMDLIB_API int util_dhcp_server_enabled(const ConfigKeyValuePair *result, int result_count);

/* 1 unless QX_GET_DNS_AUTO is exactly "no"; with "no", still 1 when
 * neither QX_DNS_PRIMARY nor QX_DNS_SECONDARY holds a server (manual DNS
 * without servers falls back to automatic), else 0. */
CMDLIB_API int util_dhcp_get_dns_auto(const ConfigKeyValuePair *result, int result_count);

/* ---- Server control ------------------------------------------------------ */

/* One client of the dnsmasq server, as its lease file lists it. */
typedef struct DHCPClientInfo {
    char hostname[48]; /* host name from the lease ("*" when the client sent none) */
    char ip[32];       /* leased IPv4 address */
    char mac[32];      /* client MAC address */
    unsigned int expires; /* seconds of lease left; 0 when already expired */
} DHCPClientInfo;

/* Rewrites "/tmp/cmdlib/udhcpd.conf" from the DHCP and IP pass-through keys
 * among the pairs read (result, result_count: dhcp_config_fields and
 * ip_passthrough_config_fields as util_config_read_fields gave them) and
 * restarts udhcpd on the LAN bridge:
 *  - pass-through on: the WAN address (from the dial tool's files under
 *    /tmp/cmdlib) is the whole pool, for 120 s, reserved for
 *    QX_IP_PASS_THROUGH_MAC when one is set; the old leases are dropped;
 *  - otherwise, with QX_ENABLE_DHCP_SERVER not "no": the LAN pool, router,
 *    DNS and lease time of the keys;
 *  - otherwise the file keeps only its interface, pidfile and lease_file
 *    lines and a running udhcpd is left alone.
 * The file is replaced whole (readers never see half of it) and ends with
 * the entries of "/mnt/data/etc/qxcfg/dhcp_hosts" as they are.  A value
 * that holds a line break counts up to it: one setting is one line.
 * Always returns 0. */
CMDLIB_API int util_dhcp_restart_udhcpd_server(const ConfigKeyValuePair *result, int result_count);

/* Fills client_list from "/tmp/dnsmasq.leases" when this product runs
 * dnsmasq as its DHCP server (else 0, deliberately: udhcpd keeps no such
 * list).  At most max_record clients; 0 means no limit, so the array must
 * then hold one entry per line of the file; a negative max_record or a null
 * list gives 0.  Lines with fewer than four fields (expiry, MAC, IP, host
 * name) are skipped; only the first 511 bytes of a longer line count.
 * Texts are cut to their fields' widths.  Returns the number filled; 0
 * when the file can't be opened. */
CMDLIB_API int util_get_dhcp_client_list(DHCPClientInfo *client_list, int max_record);

CMDLIB_END_DECLS

#endif
