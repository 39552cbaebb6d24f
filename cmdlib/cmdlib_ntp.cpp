// The NTP server list.
#include "cmdlib/cmdlib_ntp.h"

CMDLIB_API extern const char *const all_used_ntp_servers[UTIL_NTP_SERVER_COUNT] = {
    "0.pool.ntp.org", "1.pool.ntp.org", "2.pool.ntp.org", "3.pool.ntp.org",
    "ntp1.fau.de", "ntp2.fau.de", "ntps1-0.cs.tu-berlin.de", "ntps1-1.cs.tu-berlin.de",
};

CMDLIB_API int util_get_used_ntp_servers(char **server_list, int max_count) {
    if (!server_list || max_count <= 0) return 0;
    int n = max_count < UTIL_NTP_SERVER_COUNT ? max_count : UTIL_NTP_SERVER_COUNT;
    for (int i = 0; i < n; ++i) server_list[i] = const_cast<char *>(all_used_ntp_servers[i]);
    return n;
}
