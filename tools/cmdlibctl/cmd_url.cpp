// cmdlibctl url / ntp: the host address of a URL, the NTP server list.
#include <stdio.h>
#include <string.h>

#include "cmdlib/cmdlib_ntp.h"
#include "cmdlib/cmdlib_url.h"
#include "cmdlibctl.h"

namespace {

// url host URL
int run_url(int argc, char **argv) {
    if (argc != 3 || strcmp(argv[1], "host") != 0) return ctl_usage("url");
    struct {
        char ip[16];
        int result;
    } v = {"", -1};
    v.result = util_get_host_ip_from_url(argv[2], v.ip);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "url", argv[2]);
        ctl_add_text(doc, "ip", v.result == 0 ? v.ip : "");
        return ctl_emit(doc, v.result == 0 ? 0 : 1);
    }
    printf("%s\n", v.result == 0 ? v.ip : "no IPv4 address");
    return v.result == 0 ? 0 : 1;
}

// ntp: the servers in the order they are tried
int run_ntp(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    struct {
        char *servers[UTIL_NTP_SERVER_COUNT];
        int count;
    } v = {};
    v.count = util_get_used_ntp_servers(v.servers, UTIL_NTP_SERVER_COUNT);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        ctl_add_strings(doc, "servers", v.servers, v.count);
        return ctl_emit(doc, 0);
    }
    for (int i = 0; i < v.count; ++i) printf("%d %s\n", i + 1, v.servers[i]);
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("url", "host URL   IPv4 address of the URL's host", run_url);
CMDLIBCTL_COMMAND("ntp", "          NTP servers in the order they are tried", run_ntp);
