/* cmdlib_tr069: configuration keys of the TR-069 client. */
#ifndef CMDLIB_TR069_H
#define CMDLIB_TR069_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define TR069_CONFIG_FIELDS_COUNT 11

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const tr069_config_fields[TR069_CONFIG_FIELDS_COUNT + 1];

/* Appends tr069_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_tr069_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
