// IPv6 set-up from the command line: the EUI-64 of a MAC, the global
// addresses of a device and the bridge from a prefix, the IPv6 DNS servers.
#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>

#include "base/libbase.h"
#include "cmdlib/mac.h"
#include "cmdlib/network.h"
#include "cmdlibctl.h"

namespace {

struct Ipv6Addresses {
    char device[64], bridge[64];
};

struct Ipv6DnsView {
    char resolver[4096], list[256], comma[256];
};

int print_eui64(const char *mac, const EUI64 &e) {
    char text[20];
    snprintf(text, sizeof text, "%02x%02x:%02x%02x:%02x%02x:%02x%02x", e.value[0], e.value[1], e.value[2],
             e.value[3], e.value[4], e.value[5], e.value[6], e.value[7]);
    if (!ctl_json()) return printf("%s\n", text), 0;
    cJSON *doc = cJSON_CreateObject();
    cJSON_AddStringToObject(doc, "mac", mac);
    cJSON_AddStringToObject(doc, "eui64", text);
    return ctl_emit(doc, 0);
}

void gather_addresses(const char *dev, Ipv6Addresses *a) {
    if (cmd_get_global_ipv6_address(dev, a->device, sizeof a->device) != 0) strcpy(a->device, "-");
    if (cmd_get_global_ipv6_address("br0", a->bridge, sizeof a->bridge) != 0) strcpy(a->bridge, "-");
}

void gather_dns(Ipv6DnsView *v) {
    cmd_cat("/var/run/resolv.conf", v->resolver, sizeof v->resolver);
    cmd_cat("/tmp/cmdlib/.ipv6_dns_server_list", v->list, sizeof v->list);
    cmd_cat("/tmp/cmdlib/.ipv6_dns_server_list_comma", v->comma, sizeof v->comma);
}

int cmd_ipv6(int argc, char **argv) {
    if (argc < 3) return ctl_usage(argv[0]);
    const char *sub = argv[1];
    if (strcmp(sub, "eui64") == 0 && argc == 3) {
        MacAddr mac = {};
        util_get_mac(argv[2], mac.value);
        EUI64 eui;
        util_calc_eui64(&mac, &eui);
        return print_eui64(argv[2], eui);
    }
    if (strcmp(sub, "addr") == 0 && argc == 4) {
        // The device's own EUI-64 as interface identifier.
        MacAddr mac;
        EUI64 eui;
        if (cmd_netdev_get_mac_addr(argv[3], &mac) != 0 || util_calc_eui64(&mac, &eui) != 0) {
            fprintf(stderr, "cmdlibctl: %s has no hardware address\n", argv[3]);
            return 1;
        }
        config_ipv6_addr(argv[2], &eui, argv[3], 0);
        Ipv6Addresses a;
        gather_addresses(argv[3], &a);
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            cJSON_AddStringToObject(doc, "prefix", argv[2]);
            cJSON_AddStringToObject(doc, "dev", argv[3]);
            ctl_add_text(doc, "address", a.device);
            ctl_add_text(doc, "bridge_address", a.bridge);
            return ctl_emit(doc, 0);
        }
        printf("%-6s %s/128\nbr0    %s/64\n", argv[3], a.device, a.bridge);
        return 0;
    }
    if (strcmp(sub, "dns") == 0 && (argc == 3 || argc == 4)) {
        config_ipv6_dns_server_address(argv[2], argc == 4 ? argv[3] : "", argc - 2, 0);
        static Ipv6DnsView v;
        gather_dns(&v);
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            ctl_add_text(doc, "resolv_conf", v.resolver);
            ctl_add_text(doc, "list", v.list);
            ctl_add_text(doc, "comma", v.comma);
            return ctl_emit(doc, 0);
        }
        printf("resolv.conf:\n%slist: %s\ncomma: %s\n", v.resolver, v.list, v.comma);
        return 0;
    }
    return ctl_usage(argv[0]);
}

}  // namespace

CMDLIBCTL_COMMAND("ipv6", "eui64 MAC | addr PREFIX DEV | dns SERVER1 [SERVER2]", cmd_ipv6);
