// The device's network as the library sees it: WAN and LAN addresses, DNS
// servers and WAN health, attached devices, neighbours and NAT sessions.
#include <arpa/inet.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "base/libbase.h"
#include "cmdlib/network.h"
#include "cmdlibctl.h"

namespace {

void print_interface(const char *label, const char *dev) {
    char v4[16] = "-", mask[16] = "-", v6[64] = "-", ll[64] = "-";
    if (cmd_get_ipv4_address(dev, v4) != 0) strcpy(v4, "-");
    if (cmd_get_netmask(dev, mask) != 0) strcpy(mask, "-");
    if (cmd_get_global_ipv6_address(dev, v6, sizeof v6) != 0) strcpy(v6, "-");
    if (cmd_get_link_local_ipv6_address(dev, ll, sizeof ll) != 0) strcpy(ll, "-");
    MacAddr mac;
    char mac_text[18] = "-";
    if (cmd_netdev_get_mac_addr(dev, &mac) == 0) util_network_get_mac_string(mac.value, mac_text, sizeof mac_text);
    char name[64];
    snprintf(name, sizeof name, "%s", dev);
    printf("%-4s %-6s %s  ipv4 %s/%d  ipv6 %s  link %s  mac %s\n", label, dev,
           util_is_one_network_interface_up(name) ? "running" : "down   ", v4,
           util_get_netmask_bit_value_1_count(mask), v6, ll, mac_text);
}

int cmd_net(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    char wan[64];
    snprintf(wan, sizeof wan, "%s", util_get_wan_interface_name());
    const char *dynamic = util_get_wan_interface_name_dynamically();
    printf("wan  %s%s\n", wan, dynamic ? "" : " (no default route first: fallback)");
    print_interface("wan", wan);
    print_interface("lan", util_get_system_network_bridge_name());
    char ppp[16];
    printf("ppp  %s\n", util_get_ppp_net_dev(ppp) == 0 ? ppp : "-");

    // The reader packs every nameserver of the file: size the buffers for
    // the file (each "nameserver X" line is at least 12 bytes and takes
    // strlen(X) + 2 bytes of the buffer).
    static char buffer[8192];
    static char *servers[400];
    int n = 0;
    long size = util_get_file_size_by_file_name("/var/run/resolv.conf");
    if (size >= 0 && size <= 4000) n = util_read_dns_info(buffer, servers, 400, 1, 1);
    printf("dns ");
    for (int i = 0; i < n; ++i) printf(" %s", servers[i]);
    printf("%s (%s)\n", n ? "" : " -", util_check_is_dns_server_valid() ? "valid" : "not valid");
    char gateway[64];
    util_read_ip_address("/tmp/cmdlib/.wan_network_card_gateway", gateway, sizeof gateway);
    printf("gw   %s\n", gateway[0] ? gateway : "-");
    printf("ok   %s\n", util_is_network_ok() ? "network usable" : "network not usable");
    return 0;
}

int cmd_hosts(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    static AllHostsInfo hosts;
    util_get_device_connected_to_this_device(&hosts);
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
    ARPTable arp;
    if (util_get_arp_table_info(&arp, dev) == 0)
        for (unsigned i = 0; i < arp.count; ++i)
            printf("ipv4 %-39s %s\n", arp.table[i].ip, arp.table[i].mac);
    char path[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(path);
    char cmd[256];
    snprintf(cmd, sizeof cmd, "ip -6 neigh show dev %s > %s 2>/dev/null", dev, path);
    if (strspn(dev, "abcdefghijklmnopqrstuvwxyz0123456789.-_") == strlen(dev)) util_shell(cmd);
    Neighbour_Info n6;
    if (util_parse_neigh_info(path, &n6, 0, 0) == 0)
        for (int i = 0; i < n6.neighbour_count; ++i)
            printf("ipv6 %-39s %-17s %s%s\n", n6.neighbours[i].ipv6_addr,
                   n6.neighbours[i].mac_addr[0] ? n6.neighbours[i].mac_addr : "-",
                   state_name(n6.neighbours[i].status), n6.neighbours[i].is_router ? " router" : "");
    cmd_rm(path);
    return 0;
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
    printf("PROTO|SOURCE|SPORT|NAT PORT|DESTINATION|DPORT|SIDE\n%s", table);
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    if (util_collect_dns_and_icmp_dest_ip(&info) == 0) {
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
