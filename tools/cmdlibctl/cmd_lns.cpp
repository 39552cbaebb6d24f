// cmdlibctl lns: does an L2TP network server answer.
#include <stdio.h>
#include <string.h>

#include "cmdlib/lns.h"
#include "cmdlibctl.h"

namespace {

// lns probe IP [HOSTNAME]
int run_lns(int argc, char **argv) {
    if (argc < 3 || argc > 4 || strcmp(argv[1], "probe") != 0) return ctl_usage("lns");
    struct {
        const char *server;
        const char *hostname;
        int open;
    } v = {argv[2], argc == 4 ? argv[3] : "", 0};
    v.open = util_check_if_one_udp_port_is_open(v.server, 1701, v.hostname);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "server", v.server);
        cJSON_AddNumberToObject(doc, "port", 1701);
        ctl_add_text(doc, "hostname", v.hostname);
        cJSON_AddBoolToObject(doc, "answered", v.open != 0);
        return ctl_emit(doc, v.open ? 0 : 1);
    }
    printf("lns %s:1701%s%s: %s\n", v.server, v.hostname[0] ? " as " : "", v.hostname,
           v.open ? "answered (tunnel closed again)" : "no answer");
    return v.open ? 0 : 1;
}

}  // namespace

CMDLIBCTL_COMMAND("lns", "probe IP [HOSTNAME]   does the L2TP server at IP answer on port 1701", run_lns);
