// The device's network as the library sees it: WAN and LAN addresses, DNS
// servers and WAN health, attached devices, neighbours and NAT sessions.
#include <arpa/inet.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "base/libbase.h"
#include "cmdlib/network.h"
#include "cmdlibctl.h"

namespace {

struct Interface {
    char name[64], v4[16], mask[16], v6[64], ll[64], mac[18];
    bool up;
    int prefix_len;
};

// "-" stands for what the device does not have.
void gather_interface(const char *dev, Interface *i) {
    snprintf(i->name, sizeof i->name, "%s", dev);
    if (cmd_get_ipv4_address(dev, i->v4) != 0) strcpy(i->v4, "-");
    if (cmd_get_netmask(dev, i->mask) != 0) strcpy(i->mask, "-");
    if (cmd_get_global_ipv6_address(dev, i->v6, sizeof i->v6) != 0) strcpy(i->v6, "-");
    if (cmd_get_link_local_ipv6_address(dev, i->ll, sizeof i->ll) != 0) strcpy(i->ll, "-");
    MacAddr mac;
    strcpy(i->mac, "-");
    if (cmd_netdev_get_mac_addr(dev, &mac) == 0) util_network_get_mac_string(mac.value, i->mac, sizeof i->mac);
    i->up = util_is_one_network_interface_up(i->name) != 0;
    i->prefix_len = util_get_netmask_bit_value_1_count(i->mask);
}

void print_interface(const char *label, const Interface &i) {
    printf("%-4s %-6s %s  ipv4 %s/%d  ipv6 %s  link %s  mac %s\n", label, i.name, i.up ? "running" : "down   ",
           i.v4, i.prefix_len, i.v6, i.ll, i.mac);
}

cJSON *interface_json(const Interface &i) {
    cJSON *o = cJSON_CreateObject();
    cJSON_AddStringToObject(o, "name", i.name);
    cJSON_AddBoolToObject(o, "running", i.up);
    ctl_add_text(o, "ipv4", i.v4);
    if (i.v4[0] == '-')
        cJSON_AddNullToObject(o, "prefix_len");
    else
        cJSON_AddNumberToObject(o, "prefix_len", i.prefix_len);
    ctl_add_text(o, "ipv6", i.v6);
    ctl_add_text(o, "link_local", i.ll);
    ctl_add_text(o, "mac", i.mac);
    return o;
}

// A port column of the session table as a number (null when not one).
void add_port(cJSON *o, const char *key, const std::string &text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
        cJSON_AddNullToObject(o, key);
    else
        cJSON_AddNumberToObject(o, key, strtol(text.c_str(), nullptr, 10));
}

// The rows "PROTO|SOURCE|SPORT|NAT PORT|DESTINATION|DPORT|SIDE" as objects.
cJSON *sessions_json(const char *table) {
    static constexpr const char *kColumns[] = {"proto", "source", "sport", "nat_port", "destination", "dport", "side"};
    cJSON *rows = cJSON_CreateArray();
    const char *line = table;
    while (*line) {
        const char *eol = strchr(line, '\n');
        std::string row(line, eol ? static_cast<size_t>(eol - line) : strlen(line));
        line = eol ? eol + 1 : line + row.size();
        if (row.empty()) continue;
        cJSON *o = cJSON_CreateObject();
        size_t start = 0;
        for (const char *column : kColumns) {
            size_t bar = row.find('|', start);
            std::string cell = start > row.size() ? "" : row.substr(start, bar == std::string::npos ? bar : bar - start);
            start = bar == std::string::npos ? row.size() + 1 : bar + 1;
            if (strstr(column, "port"))
                add_port(o, column, cell);
            else
                ctl_add_text(o, column, cell.c_str());
        }
        cJSON_AddItemToArray(rows, o);
    }
    return rows;
}

int cmd_net(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    char wan[64];
    snprintf(wan, sizeof wan, "%s", util_get_wan_interface_name());
    const char *dynamic = util_get_wan_interface_name_dynamically();
    Interface wan_if, lan_if;
    gather_interface(wan, &wan_if);
    gather_interface(util_get_system_network_bridge_name(), &lan_if);
    char ppp[16];
    if (util_get_ppp_net_dev(ppp) != 0) strcpy(ppp, "-");

    // The reader packs every nameserver of the file: size the buffers for
    // the file (each "nameserver X" line is at least 12 bytes and takes
    // strlen(X) + 2 bytes of the buffer).
    static char buffer[8192];
    static char *servers[400];
    int n = 0;
    long size = util_get_file_size_by_file_name("/var/run/resolv.conf");
    if (size >= 0 && size <= 4000) n = util_read_dns_info(buffer, servers, 400, 1, 1);
    bool dns_valid = util_check_is_dns_server_valid() != 0;
    char gateway[64];
    util_read_ip_address("/tmp/cmdlib/.wan_network_card_gateway", gateway, sizeof gateway);
    bool ok = util_is_network_ok() != 0;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *w = interface_json(wan_if);
        cJSON_AddBoolToObject(w, "from_default_route", dynamic != nullptr);
        cJSON_AddItemToObject(doc, "wan", w);
        cJSON_AddItemToObject(doc, "lan", interface_json(lan_if));
        ctl_add_text(doc, "ppp", ppp);
        ctl_add_strings(doc, "dns", servers, n);
        cJSON_AddBoolToObject(doc, "dns_valid", dns_valid);
        ctl_add_text(doc, "gateway", gateway);
        cJSON_AddBoolToObject(doc, "network_ok", ok);
        return ctl_emit(doc, 0);
    }
    printf("wan  %s%s\n", wan, dynamic ? "" : " (no default route first: fallback)");
    print_interface("wan", wan_if);
    print_interface("lan", lan_if);
    printf("ppp  %s\n", ppp);
    printf("dns ");
    for (int i = 0; i < n; ++i) printf(" %s", servers[i]);
    printf("%s (%s)\n", n ? "" : " -", dns_valid ? "valid" : "not valid");
    printf("gw   %s\n", gateway[0] ? gateway : "-");
    printf("ok   %s\n", ok ? "network usable" : "network not usable");
    return 0;
}

int cmd_hosts(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    static AllHostsInfo hosts;
    util_get_device_connected_to_this_device(&hosts);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *list = cJSON_AddArrayToObject(doc, "hosts");
        for (int i = 0; i < hosts.count; ++i) {
            const OneHost &h = hosts.host[i];
            cJSON *o = cJSON_CreateObject();
            ctl_add_text(o, "mac", h.mac, sizeof h.mac);
            ctl_add_text(o, "ip", h.ip, sizeof h.ip);
            ctl_add_text(o, "name", h.host_name, sizeof h.host_name);
            cJSON_AddNumberToObject(o, "lease", h.leases);
            cJSON_AddStringToObject(o, "from", h.addr_src ? "scan" : "dhcp");
            cJSON_AddBoolToObject(o, "online", h.stat != 0);
            cJSON_AddItemToArray(list, o);
        }
        return ctl_emit(doc, 0);
    }
    printf("%-17s %-15s %-20s %8s %-5s %s\n", "MAC", "IP", "NAME", "LEASE", "FROM", "STATE");
    for (int i = 0; i < hosts.count; ++i) {
        const OneHost &h = hosts.host[i];
        printf("%-17s %-15s %-20s %8d %-5s %s\n", h.mac, h.ip, h.host_name[0] ? h.host_name : "-",
               h.leases, h.addr_src ? "scan" : "dhcp", h.stat ? "online" : "offline");
    }
    return 0;
}

const char *state_name(int status) {
    switch (status) {
        case 5: return "reachable";
        case 4: return "stale";
        case 3: return "delay";
        case 2: return "probe";
        default: return "other";
    }
}

int cmd_neigh(int argc, char **argv) {
    if (argc > 2) return ctl_usage(argv[0]);
    char dev[64];
    snprintf(dev, sizeof dev, "%s", argc == 2 ? argv[1] : util_get_system_network_bridge_name());
    cJSON *doc = ctl_json() ? cJSON_CreateObject() : nullptr;
    cJSON *v4 = nullptr, *v6 = nullptr;
    if (doc) {
        cJSON_AddStringToObject(doc, "dev", dev);
        v4 = cJSON_AddArrayToObject(doc, "ipv4");
        v6 = cJSON_AddArrayToObject(doc, "ipv6");
    }
    ARPTable arp;
    if (util_get_arp_table_info(&arp, dev) == 0)
        for (unsigned i = 0; i < arp.count; ++i) {
            if (!doc) {
                printf("ipv4 %-39s %s\n", arp.table[i].ip, arp.table[i].mac);
                continue;
            }
            cJSON *o = cJSON_CreateObject();
            cJSON_AddStringToObject(o, "ip", arp.table[i].ip);
            ctl_add_text(o, "mac", arp.table[i].mac);
            cJSON_AddItemToArray(v4, o);
        }
    char path[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(path);
    char cmd[256];
    snprintf(cmd, sizeof cmd, "ip -6 neigh show dev %s > %s 2>/dev/null", dev, path);
    if (strspn(dev, "abcdefghijklmnopqrstuvwxyz0123456789.-_") == strlen(dev)) util_shell(cmd);
    Neighbour_Info n6;
    if (util_parse_neigh_info(path, &n6, 0, 0) == 0)
        for (int i = 0; i < n6.neighbour_count; ++i) {
            const auto &nb = n6.neighbours[i];
            if (!doc) {
                printf("ipv6 %-39s %-17s %s%s\n", nb.ipv6_addr, nb.mac_addr[0] ? nb.mac_addr : "-",
                       state_name(nb.status), nb.is_router ? " router" : "");
                continue;
            }
            cJSON *o = cJSON_CreateObject();
            cJSON_AddStringToObject(o, "ip", nb.ipv6_addr);
            ctl_add_text(o, "mac", nb.mac_addr);
            cJSON_AddStringToObject(o, "state", state_name(nb.status));
            cJSON_AddBoolToObject(o, "router", nb.is_router != 0);
            cJSON_AddItemToArray(v6, o);
        }
    cmd_rm(path);
    return doc ? ctl_emit(doc, 0) : 0;
}

int cmd_nat(int argc, char **argv) {
    if (argc > 1) return ctl_nat_rules(argc, argv);  // nat check|fix FILE (cmd_route.cpp)
    char path[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(path);
    if (util_gen_nat_session_table(path) != 0) {
        fprintf(stderr, "cmdlibctl: no connection-tracking table\n");
        return 1;
    }
    static char table[256 * 160];
    cmd_cat(path, table, sizeof table);
    cmd_rm(path);
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    bool collected = util_collect_dns_and_icmp_dest_ip(&info) == 0;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddItemToObject(doc, "sessions", sessions_json(table));
        if (collected) {
            cJSON *pings = cJSON_AddArrayToObject(doc, "answered_pings");
            for (int i = 0; i < info.valid_icmp_ip_count; ++i)
                cJSON_AddItemToArray(pings, cJSON_CreateString(info.icmp_ip_address[i]));
            cJSON *services = cJSON_AddArrayToObject(doc, "answered_services");
            for (int i = 0; i < info.valid_dns_ip_count; ++i)
                cJSON_AddItemToArray(services, cJSON_CreateString(info.dns_ip[i]));
            cJSON_AddBoolToObject(doc, "live_wan_traffic", info.network_is_ok != 0);
        } else {
            cJSON_AddNullToObject(doc, "answered_pings");
            cJSON_AddNullToObject(doc, "answered_services");
            cJSON_AddNullToObject(doc, "live_wan_traffic");
        }
        return ctl_emit(doc, 0);
    }
    printf("PROTO|SOURCE|SPORT|NAT PORT|DESTINATION|DPORT|SIDE\n%s", table);
    if (collected) {
        printf("answered pings:");
        for (int i = 0; i < info.valid_icmp_ip_count; ++i) printf(" %s", info.icmp_ip_address[i]);
        printf("\nanswered dns/web/sip/gre:");
        for (int i = 0; i < info.valid_dns_ip_count; ++i) printf(" %s", info.dns_ip[i]);
        printf("\nlive wan traffic: %s\n", info.network_is_ok ? "yes" : "no");
    }
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("net", "(WAN name, addresses, DNS servers, WAN health)", cmd_net);
CMDLIBCTL_COMMAND("hosts", "(devices connected to the LAN: leases joined with an ARP scan)", cmd_hosts);
CMDLIBCTL_COMMAND("neigh", "[DEV] (IPv4 ARP and IPv6 neighbours, default br0)", cmd_neigh);
CMDLIBCTL_COMMAND("nat", "[check|fix FILE] (NAT session table and remote addresses that answered the WAN;\n"
                         "             check|fix: rule checkers, lines of chain= in= out= proto= dest= dport= src=\n"
                         "             sport= nat= policy= jump= icmp= and the flags ipv6 nat-table delete append)",
                  cmd_nat);
