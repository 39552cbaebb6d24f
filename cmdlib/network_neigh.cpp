// network: neighbours, the ARP and PPPoE tables, Wi-Fi stations and the
// list of devices connected to the router.
#include <arpa/inet.h>
#include <string.h>
#include <time.h>

#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/internal/neigh_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"

using cmdlib::CommandLine;
using cmdlib::copy_bounded;
using cmdlib::format_bounded;
using cmdlib::read_lines;

namespace {

constexpr const char kArpFile[] = "/proc/net/arp";
constexpr const char kPppoeFile[] = "/proc/net/pppoe";
constexpr const char kSwitchAddressTable[] = "/proc/phys26/addresstable";
constexpr const char kWlanStations[] = "/tmp/cmdlib/.all_wlan_client_devices_info";
constexpr const char kLeasesFile[] = "/tmp/dnsmasq.leases";

char g_pppoe_users[512];

}  // namespace

namespace cmdlib {

int read_pppoe_table_file(const char *path, ARPTable *t, const char *device) {
    memset(t, 0, sizeof *t);
    return read_lines<256>(path, [&](auto &r) { parse_pppoe_rows(r, t, device); }) ? 0 : -1;
}

int apply_switch_ports_file(const char *path, ARPTable *t) {
    return read_lines<256>(path, [&](auto &r) { apply_switch_ports(r, t); }) ? 0 : -1;
}

void pppoe_users_from(const char *pppoe_path, const char *ports_path, char *out, size_t size) {
    if (!out || size == 0) return;
    out[0] = '\0';
    ARPTable t;
    read_pppoe_table_file(pppoe_path, &t, cmdlib::kBridgeName);
    apply_switch_ports_file(ports_path, &t);
    for (unsigned i = 0; i < t.count; ++i) {
        char item[255];
        format_bounded(item, sizeof item, "%s/%s/%s", t.table[i].user, t.table[i].mac,
                       t.table[i].port);
        if (i > 0) append_bounded(out, size, ",");
        append_bounded(out, size, item);
    }
}

bool lease_hosts_from(const char *path, long long now, AllHostsInfo *hosts) {
    return read_lines<512>(path, [&](auto &r) { read_lease_hosts(r, now, hosts); });
}

}  // namespace cmdlib

CMDLIB_API int util_parse_neigh_info(const char *file_name, Neighbour_Info *neigh_info,
                                     int only_link_local_addr, int only_global_addr) {
    if (!file_name || !neigh_info) return -1;
    bool opened = read_lines<256>(file_name, [&](auto &r) {
        cmdlib::parse_neigh_listing(r, neigh_info, only_link_local_addr != 0, only_global_addr != 0);
    });
    return opened ? 0 : -1;
}

CMDLIB_API void util_update_neighbour_arp_cache(const char *network_dev_name, const char *ip_addr) {
    // A line that would not fit (127 characters) is not run.
    CommandLine<128> cmd;
    cmd.format("arping -A -c 1 -I ");
    cmd.append_word(network_dev_name ? network_dev_name : "");
    cmd.append(" -s ");
    cmd.append_word(ip_addr ? ip_addr : "");
    cmd.append(" 255.255.255.255");
    cmdlib::run_command(cmd);
}

CMDLIB_API int util_get_arp_table_info(ARPTable *arp_table, char *network_card) {
    if (!arp_table) return -1;
    memset(arp_table, 0, sizeof *arp_table);
    bool opened = read_lines<256>(kArpFile, [&](auto &r) {
        cmdlib::parse_arp_rows(r, arp_table, network_card);
    });
    return opened ? 0 : -1;
}

CMDLIB_API int util_get_pppoe_table_info(ARPTable *arp_table, char *network_card) {
    if (!arp_table) return -1;
    return cmdlib::read_pppoe_table_file(kPppoeFile, arp_table, network_card);
}

CMDLIB_API int util_get_port_number_for_one_mac(ARPTable *system_arp_table) {
    if (!system_arp_table) return -1;
    return cmdlib::apply_switch_ports_file(kSwitchAddressTable, system_arp_table);
}

CMDLIB_API char *util_get_all_pppoe_users(void) {
    cmdlib::pppoe_users_from(kPppoeFile, kSwitchAddressTable, g_pppoe_users, sizeof g_pppoe_users);
    return g_pppoe_users;
}

CMDLIB_API int util_get_all_wlan_clients(ARPTable *arp_table) {
    if (!arp_table) return -1;
    cmd_rm(kWlanStations);
    util_shell("wlanconfig ath0 list sta > /tmp/cmdlib/.all_wlan_client_devices_info");
    if (!cmd_file_exist(kWlanStations)) return -1;
    bool opened = read_lines<256>(kWlanStations, [&](auto &r) {
        cmdlib::parse_wlan_stations(r, arp_table);
    });
    return opened ? 0 : -1;
}

CMDLIB_API void util_detect_arp_entries(char *interface, char *result_file) {
    if (!interface || !result_file) return;
    cmd_rm(result_file);
    struct in_addr ip, mask;
    if (cmd_get_ip(interface, &ip) != 0 || cmd_get_binary_netmask(interface, &mask) != 0) return;
    char mask_text[16];
    copy_bounded(mask_text, sizeof mask_text, inet_ntoa(mask));
    int bits = util_get_netmask_bit_value_1_count(mask_text);
    if (bits <= 23) return;  // never scan more than a /24: it would take minutes
    // A line that would not fit (255 characters) is not run.
    CommandLine<256> cmd;
    cmd.format("arpscan -a ");
    cmd.append_word(interface);
    cmd.append(" %s/%d >", inet_ntoa(ip), bits);
    cmd.append_word(result_file);
    cmd.append(" 2>/dev/null");
    cmdlib::run_command(cmd);
}

CMDLIB_API int util_get_real_exist_arp_table(char *file_path, int used_arp_scan_tool,
                                             ARPTable *system_arp_table, int arp_table_action) {
    if (!file_path || !system_arp_table) return -1;
    bool opened = read_lines<256>(file_path, [&](auto &r) {
        cmdlib::merge_pair_lines(r, used_arp_scan_tool, system_arp_table, arp_table_action);
    });
    return opened ? 0 : -1;
}

CMDLIB_API int util_get_device_connected_to_this_device(AllHostsInfo *all_hosts_info) {
    if (!all_hosts_info) return 0;
    memset(all_hosts_info, 0, sizeof *all_hosts_info);
    if (util_use_dnsmasq_as_dhcp_server()) {
        long long now = 0;
        if (util_dnsmasq_use_uptime_as_expire_time()) {
            char uptime[UTIL_UPTIME_TEXT_SIZE] = "";
            util_read_system_uptime(uptime);
            now = cmdlib::atoi_sat(uptime);
        } else {
            now = static_cast<long long>(time(nullptr));
        }
        cmdlib::lease_hosts_from(kLeasesFile, now, all_hosts_info);
    }
    char scan_file[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(scan_file);
    cmd_rm(scan_file);
    util_detect_arp_entries(const_cast<char *>(cmdlib::kBridgeName), scan_file);
    ARPTable scan;
    memset(&scan, 0, sizeof scan);
    util_get_real_exist_arp_table(scan_file, 0, &scan, cmdlib::kArpAdd);
    cmd_rm(scan_file);
    cmdlib::merge_hosts_with_scan(all_hosts_info, &scan);
    return 0;
}
