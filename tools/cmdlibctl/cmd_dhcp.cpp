// The LAN's DHCP server seen from the command line: the generated udhcpd
// configuration, a restart from the running configuration, and the dnsmasq
// client list.
#include <stdio.h>
#include <string.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/cmdlib_ip_passthrough.h"
#include "cmdlibctl.h"

namespace {

constexpr char kConfFile[] = "/tmp/cmdlib/udhcpd.conf";

struct DhcpConf {
    bool present;
    char text[16384];
};

struct DhcpLeases {
    int count;
    DHCPClientInfo clients[64];
};

void gather_conf(DhcpConf *c) { c->present = cmd_cat(kConfFile, c->text, sizeof c->text) == 0; }

int print_conf(const DhcpConf &c, bool restarted) {
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddBoolToObject(doc, "restarted", restarted);
        cJSON_AddStringToObject(doc, "path", kConfFile);
        ctl_add_text(doc, "text", c.present ? c.text : "");
        return ctl_emit(doc, c.present ? 0 : 1);
    }
    if (!c.present) {
        fprintf(stderr, "cmdlibctl: %s is missing (no restart yet)\n", kConfFile);
        return 1;
    }
    fputs(c.text, stdout);
    return 0;
}

// The DHCP and pass-through keys of the running configuration, as a daemon
// collects them, then the restart.
void restart_from_running_configuration() {
    const char *keys[DHCP_CONFIG_FIELDS_COUNT + IP_PASSTHROUGH_CONFIG_FIELDS_COUNT];
    int n = util_dhcp_add_fields_need_to_read(keys, DHCP_CONFIG_FIELDS_COUNT);
    n += util_ip_passthrough_add_fields_need_to_read(keys + n, IP_PASSTHROUGH_CONFIG_FIELDS_COUNT);
    static ConfigKeyValuePair pairs[2 * (DHCP_CONFIG_FIELDS_COUNT + IP_PASSTHROUGH_CONFIG_FIELDS_COUNT)];
    int count = util_config_read_fields(keys, n, pairs, static_cast<int>(sizeof pairs / sizeof pairs[0]));
    util_dhcp_restart_udhcpd_server(pairs, count < 0 ? 0 : count);
}

void gather_leases(DhcpLeases *l) {
    l->count = util_get_dhcp_client_list(l->clients, static_cast<int>(sizeof l->clients / sizeof l->clients[0]));
}

int print_leases(const DhcpLeases &l) {
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *list = cJSON_AddArrayToObject(doc, "leases");
        for (int i = 0; i < l.count; ++i) {
            const DHCPClientInfo &c = l.clients[i];
            cJSON *o = cJSON_CreateObject();
            ctl_add_text(o, "mac", c.mac, sizeof c.mac);
            ctl_add_text(o, "ip", c.ip, sizeof c.ip);
            ctl_add_text(o, "name", c.hostname, sizeof c.hostname);
            cJSON_AddNumberToObject(o, "expires", c.expires);
            cJSON_AddItemToArray(list, o);
        }
        return ctl_emit(doc, 0);
    }
    printf("%-17s %-15s %-20s %8s\n", "MAC", "IP", "NAME", "LEFT");
    for (int i = 0; i < l.count; ++i) {
        const DHCPClientInfo &c = l.clients[i];
        printf("%-17s %-15s %-20s %8u\n", c.mac, c.ip, c.hostname, c.expires);
    }
    return 0;
}

int cmd_dhcp(int argc, char **argv) {
    if (argc != 2) return ctl_usage(argv[0]);
    const char *sub = argv[1];
    if (strcmp(sub, "conf") == 0 || strcmp(sub, "restart") == 0) {
        bool restart = strcmp(sub, "restart") == 0;
        if (restart) restart_from_running_configuration();
        static DhcpConf conf;
        gather_conf(&conf);
        return print_conf(conf, restart);
    }
    if (strcmp(sub, "leases") == 0) {
        static DhcpLeases leases;
        gather_leases(&leases);
        return print_leases(leases);
    }
    return ctl_usage(argv[0]);
}

}  // namespace

CMDLIBCTL_COMMAND("dhcp", "conf | restart | leases", cmd_dhcp);
