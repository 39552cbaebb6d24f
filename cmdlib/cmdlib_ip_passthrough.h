/* cmdlib_ip_passthrough: configuration keys of IP pass-through, which hands the WAN address to one LAN host. */
#ifndef CMDLIB_IP_PASSTHROUGH_H
#define CMDLIB_IP_PASSTHROUGH_H

#include "cmdlib_config.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define IP_PASSTHROUGH_CONFIG_FIELDS_COUNT 2

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const ip_passthrough_config_fields[IP_PASSTHROUGH_CONFIG_FIELDS_COUNT + 1];

/* Appends ip_passthrough_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_ip_passthrough_add_fields_need_to_read(const char **args, int max_args_count);

/* 1 when QX_IP_PASS_THROUGH_ENABLE is exactly "yes" in the pairs read. */
CMDLIB_API int util_ip_passthrough_enabled(const ConfigKeyValuePair *result, int result_count);

/* Pass-through and the SFP IP-address setting need no action on this
 * platform: each call succeeds (returns 1) without doing anything. */
CMDLIB_API int util_enable_ip_passthrough(void);
CMDLIB_API int util_disable_ip_passthrough(void);
CMDLIB_API int util_set_sfp_ipa(void);

CMDLIB_END_DECLS

#endif
