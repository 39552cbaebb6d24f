/* cmdlib_ntp: the NTP servers the router tries, in order. */
#ifndef CMDLIB_NTP_H
#define CMDLIB_NTP_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define UTIL_NTP_SERVER_COUNT 8

/* Four public pool servers, then four public university time servers. */
CMDLIB_API extern const char *const all_used_ntp_servers[UTIL_NTP_SERVER_COUNT];

/* Stores pointers to the first min(max_count, 8) names of
 * all_used_ntp_servers into server_list, in order, and returns how many.
 * The names are constant: never write through the pointers. */
CMDLIB_API int util_get_used_ntp_servers(char **server_list, int max_count);

CMDLIB_END_DECLS

#endif
