/* cmdlib_lock_network: configuration keys of the network lock: the PLMNs the router may register on. */
#ifndef CMDLIB_LOCK_NETWORK_H
#define CMDLIB_LOCK_NETWORK_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define LOCK_NETWORK_CONFIG_FIELDS_COUNT 11

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const lock_network_config_fields[LOCK_NETWORK_CONFIG_FIELDS_COUNT + 1];

/* Appends lock_network_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_lock_network_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
