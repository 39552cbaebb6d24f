// cmdlibctl monitor: the kernel's link, address and route changes as the
// library's netlink monitor decodes them, one line each, in the manner of
// "ip monitor".
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cmdlib/cmdlib_netlink.h"
#include "cmdlibctl.h"

namespace {

// Routing multicast groups (RTMGRP_* of linux/rtnetlink.h).
constexpr unsigned kGroupLink = 0x1;
constexpr unsigned kGroupAddr = 0x10 | 0x100;   // IPv4 and IPv6 addresses
constexpr unsigned kGroupRoute = 0x40 | 0x400;  // IPv4 and IPv6 routes

const char *event_word(NetlinkEvent e) {
    // "NETLINK_EVENT_NEWLINK" -> "NEWLINK"
    const char *name = util_netlink_event_to_string(e);
    return strncmp(name, "NETLINK_EVENT_", 14) == 0 ? name + 14 : name;
}

const char *family_word(IPAddressType t) { return t == IP_ADDRESS_TYPE_IPV4 ? "inet" : "inet6"; }

// With --json each event is one object on its own line (JSON Lines), so a
// reader of the pipe can parse line by line while the monitor runs.
cJSON *event_json(const char *type, NetlinkEvent e, const char *dev) {
    cJSON *o = cJSON_CreateObject();
    cJSON_AddStringToObject(o, "type", type);
    cJSON_AddStringToObject(o, "event", event_word(e));
    if (dev) ctl_add_text(o, "dev", dev);  // routes carry no device
    return o;
}

int print_link(NetlinkLinkEventData *d) {
    if (ctl_json()) {
        cJSON *o = event_json("link", d->event, d->interface_name);
        ctl_add_text(o, "mac", d->mac_addr);
        cJSON_AddNumberToObject(o, "mtu", d->mtu);
        cJSON_AddBoolToObject(o, "up", d->interface_up != 0);
        cJSON_AddBoolToObject(o, "running", d->interface_running != 0);
        return ctl_emit(o, 0);
    }
    printf("link  %-9s %s", event_word(d->event), d->interface_name[0] ? d->interface_name : "-");
    if (d->mac_addr[0]) printf(" link/ether %s", d->mac_addr);
    if (d->mtu) printf(" mtu %u", d->mtu);
    if (d->event == NETLINK_EVENT_NEWLINK)
        printf(" %s%s", d->interface_up ? "up" : "down", d->interface_running ? " running" : "");
    printf("\n");
    fflush(stdout);
    return 0;
}

int print_addr(NetlinkIPAddrEventData *d) {
    if (ctl_json()) {
        cJSON *o = event_json("addr", d->event, d->interface_name);
        cJSON_AddStringToObject(o, "family", family_word(d->address_type));
        ctl_add_text(o, "address", d->ip_address);
        cJSON_AddNumberToObject(o, "prefix_len", d->prefix_len);
        return ctl_emit(o, 0);
    }
    printf("addr  %-9s %s %s %s/%d\n", event_word(d->event),
           d->interface_name[0] ? d->interface_name : "-", family_word(d->address_type),
           d->ip_address, d->prefix_len);
    fflush(stdout);
    return 0;
}

int print_route(NetlinkRouteEventData *d) {
    if (ctl_json()) {
        cJSON *o = event_json("route", d->event, nullptr);
        cJSON_AddStringToObject(o, "family", family_word(d->address_type));
        ctl_add_text(o, "dest", d->dest_addr);  // null: the default route
        cJSON_AddNumberToObject(o, "dst_len", d->dst_len);
        ctl_add_text(o, "src", d->src_addr);
        cJSON_AddNumberToObject(o, "src_len", d->src_len);
        ctl_add_text(o, "gateway", d->gateway);
        return ctl_emit(o, 0);
    }
    printf("route %-9s %s ", event_word(d->event), family_word(d->address_type));
    if (d->dest_addr[0])
        printf("%s/%d", d->dest_addr, d->dst_len);
    else
        printf("default");
    if (d->src_addr[0]) printf(" from %s/%d", d->src_addr, d->src_len);
    if (d->gateway[0]) printf(" via %s", d->gateway);
    printf("\n");
    fflush(stdout);
    return 0;
}

int cmd_monitor(int argc, char **argv) {
    unsigned groups = 0;
    NLEventCallBackInfo info;
    memset(&info, 0, sizeof info);
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "link") == 0) {
            groups |= kGroupLink;
        } else if (strcmp(argv[i], "addr") == 0) {
            groups |= kGroupAddr;
        } else if (strcmp(argv[i], "route") == 0) {
            groups |= kGroupRoute;
        } else if (strcmp(argv[i], "--once") == 0) {
            info.return_immediately = 1;
        } else if (strcmp(argv[i], "--timeout") == 0 && i + 1 < argc) {
            char *end = nullptr;
            long s = strtol(argv[++i], &end, 10);
            if (*end || s <= 0 || s > 86400) return ctl_usage(argv[0]);
            info.timeout = static_cast<int>(s);
            info.return_when_timeout = 1;
        } else {
            return ctl_usage(argv[0]);
        }
    }
    if (groups == 0) groups = kGroupLink | kGroupAddr | kGroupRoute;
    info.on_link_changed = print_link;
    info.on_ip_addr_changed = print_addr;
    info.on_route_info_changed = print_route;
    if (util_netlink_wait_for_events(groups, &info) != 0) {
        fprintf(stderr, "cmdlibctl: the netlink monitor failed\n");
        return 1;
    }
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND(
    "monitor",
    "[link] [addr] [route] [--once] [--timeout S]  (live link, address and route events;\n"
    "             --once: stop after the first message, --timeout: stop after S quiet seconds)",
    cmd_monitor);
