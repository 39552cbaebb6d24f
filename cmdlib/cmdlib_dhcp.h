/* cmdlib_dhcp: configuration keys of the LAN's DHCP server. */
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

CMDLIB_END_DECLS

#endif
