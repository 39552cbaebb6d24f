// cmdlibctl resolve / probe: the library's own DNS client.
#include <stdio.h>
#include <string.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/network.h"
#include "cmdlibctl.h"

namespace {

struct ResolveView {
    CmdlibDnsQueryInfo query;
    CmdlibAnswerInfo answer;
    int result;
};

// The WAN's DNS servers from "/var/run/resolv.conf", when none was given.
void default_servers(CmdlibDnsQueryInfo *q) {
    static char buffer[8192];
    static char *servers[400];
    long size = util_get_file_size_by_file_name("/var/run/resolv.conf");
    if (size < 0 || size > 4000) return;
    int n = util_read_dns_info(buffer, servers, 400, 1, 0);
    for (int i = 0; i < n && i < 2; ++i) snprintf(q->dns[i], sizeof q->dns[i], "%s", servers[i]);
}

int print_resolve(const ResolveView &v) {
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "name", v.query.url);
        cJSON *servers = cJSON_AddArrayToObject(doc, "servers");
        for (const auto &s : v.query.dns) cJSON_AddItemToArray(servers, s[0] ? cJSON_CreateString(s) : cJSON_CreateNull());
        ctl_add_text(doc, "dev", v.query.iface);
        ctl_add_text(doc, "src", v.query.wan_ip);
        cJSON_AddNumberToObject(doc, "result", v.result);
        cJSON *addresses = cJSON_AddArrayToObject(doc, "addresses");
        for (const auto &ip : v.answer.ip)
            if (ip[0]) cJSON_AddItemToArray(addresses, cJSON_CreateString(ip));
        return ctl_emit(doc, v.result == 0 ? 0 : 1);
    }
    printf("name    %s\n", v.query.url);
    printf("servers %s %s\n", v.query.dns[0][0] ? v.query.dns[0] : "-", v.query.dns[1][0] ? v.query.dns[1] : "-");
    printf("from    dev %s src %s\n", v.query.iface[0] ? v.query.iface : "any", v.query.wan_ip[0] ? v.query.wan_ip : "any");
    printf("result  %d\n", v.result);
    for (const auto &ip : v.answer.ip) printf("ip      %s\n", ip[0] ? ip : "-");
    return v.result == 0 ? 0 : 1;
}

// resolve NAME [--server IP] [--server2 IP] [--dev IF] [--src IP]
int run_resolve(int argc, char **argv) {
    if (argc < 2 || argc % 2 != 0) return ctl_usage("resolve");
    static ResolveView v;
    memset(&v, 0, sizeof v);
    snprintf(v.query.url, sizeof v.query.url, "%s", argv[1]);
    bool server_given = false;
    for (int i = 2; i + 1 < argc; i += 2) {
        char *field;
        size_t size;
        if (strcmp(argv[i], "--server") == 0) {
            field = v.query.dns[0], size = sizeof v.query.dns[0], server_given = true;
        } else if (strcmp(argv[i], "--server2") == 0) {
            field = v.query.dns[1], size = sizeof v.query.dns[1], server_given = true;
        } else if (strcmp(argv[i], "--dev") == 0) {
            field = v.query.iface, size = sizeof v.query.iface;
        } else if (strcmp(argv[i], "--src") == 0) {
            field = v.query.wan_ip, size = sizeof v.query.wan_ip;
        } else {
            return ctl_usage("resolve");
        }
        snprintf(field, size, "%s", argv[i + 1]);
    }
    if (!server_given) default_servers(&v.query);
    v.result = utility_gethostbyname(&v.query, &v.answer);
    return print_resolve(v);
}

// probe dns4|dns6 NAME SERVER
int run_probe(int argc, char **argv) {
    if (argc != 4) return ctl_usage("probe");
    const bool v4 = strcmp(argv[1], "dns4") == 0;
    if (!v4 && strcmp(argv[1], "dns6") != 0) return ctl_usage("probe");
    struct {
        int socket_ok;
        int result;
    } v = {0, 1};
    int fd = v4 ? socket_v4_init() : socket_v6_init();
    v.socket_ok = fd >= 0;
    if (v.socket_ok) v.result = v4 ? get_host_by_name_v4(argv[2], argv[3], fd) : get_host_by_name_v6(argv[2], argv[3], fd);
    socket_close(fd);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "family", argv[1]);
        cJSON_AddStringToObject(doc, "name", argv[2]);
        cJSON_AddStringToObject(doc, "server", argv[3]);
        cJSON_AddBoolToObject(doc, "socket", v.socket_ok != 0);
        cJSON_AddBoolToObject(doc, "answered", v.result == 0);
        return ctl_emit(doc, v.result == 0 ? 0 : 1);
    }
    printf("%s %s via %s: %s\n", argv[1], argv[2], argv[3],
           !v.socket_ok ? "no socket" : v.result == 0 ? "answered" : "no answer");
    return v.result == 0 ? 0 : 1;
}

}  // namespace

CMDLIBCTL_COMMAND("resolve", "NAME [--server IP] [--server2 IP] [--dev IF] [--src IP]   A records through the library's resolver",
                  run_resolve);
CMDLIBCTL_COMMAND("probe", "dns4|dns6 NAME SERVER   does SERVER answer an A/AAAA question for NAME", run_probe);
