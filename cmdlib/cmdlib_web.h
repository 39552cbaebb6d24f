/* cmdlib_web: configuration keys of the web management server. */
#ifndef CMDLIB_WEB_H
#define CMDLIB_WEB_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define WEB_CONFIG_FIELDS_COUNT 8

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const web_config_fields[WEB_CONFIG_FIELDS_COUNT + 1];

/* Appends web_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_web_add_fields_need_to_read(const char **args, int max_args_count);

CMDLIB_END_DECLS

#endif
