/* cmdlib_special_configs: configuration keys of special settings: MTU, MSS, ARP ageing, SIP ports, signal scheme and bands. */
#ifndef CMDLIB_SPECIAL_CONFIGS_H
#define CMDLIB_SPECIAL_CONFIGS_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT 11

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const special_configs_config_fields[SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT + 1];

/* Appends special_configs_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_special_configs_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
