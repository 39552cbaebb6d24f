/* cmdlib_snmp: configuration keys of the SNMP agent. */
#ifndef CMDLIB_SNMP_H
#define CMDLIB_SNMP_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define SNMP_CONFIG_FIELDS_COUNT 10

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const snmp_config_fields[SNMP_CONFIG_FIELDS_COUNT + 1];

/* Appends snmp_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_snmp_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
