/* cmdlib_upnp: configuration keys of UPnP. */
#ifndef CMDLIB_UPNP_H
#define CMDLIB_UPNP_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define UPNP_CONFIG_FIELDS_COUNT 1

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const upnp_config_fields[UPNP_CONFIG_FIELDS_COUNT + 1];

/* Appends upnp_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_upnp_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
