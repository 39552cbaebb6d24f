// The LAN's DHCP server: its configuration keys, the udhcpd restart and
// the client list of the dnsmasq server.
#include "cmdlib/cmdlib_dhcp.h"

#include <stdint.h>
#include <stdlib.h>
#include <time.h>

#include "base/internal/atomic_file.h"
#include "base/internal/line_reader.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/internal/dhcp_server.h"
#include "cmdlib/internal/module_keys.h"
#include "cmdlib/network.h"

CMDLIB_MODULE_KEYS(dhcp, DHCP_CONFIG_FIELDS_COUNT,
    "AP_IPADDR", "AP_NETMASK", "QX_ENABLE_DHCP_SERVER", "QX_DHCP_IP_BEGIN", "QX_DHCP_IP_END",
    "QX_DHCP_EXPIRE_TIME", "QX_GET_DNS_AUTO", "QX_DNS_PRIMARY", "QX_DNS_SECONDARY")

CMDLIB_API int util_dhcp_server_enabled(const ConfigKeyValuePair *result, int result_count) {
    return cmdlib::pairs_say_not_no(result, result_count, "QX_ENABLE_DHCP_SERVER");
}

CMDLIB_API int util_dhcp_get_dns_auto(const ConfigKeyValuePair *result, int result_count) {
    if (cmdlib::pairs_say_not_no(result, result_count, "QX_GET_DNS_AUTO")) return 1;
    // Switched off but without a server of its own: still automatic.
    return !*util_config_get_field_value(result, result_count, "QX_DNS_PRIMARY") &&
           !*util_config_get_field_value(result, result_count, "QX_DNS_SECONDARY");
}

// ---- Server control -------------------------------------------------------------

namespace {

constexpr char kConfFile[] = "/tmp/cmdlib/udhcpd.conf";
constexpr char kHostsFile[] = "/mnt/data/etc/qxcfg/dhcp_hosts";
constexpr char kWanGatewayFile[] = "/tmp/cmdlib/.wan_network_card_gateway";
constexpr char kWanIpFile[] = "/tmp/cmdlib/.wan_network_card_ip";
constexpr char kWanDns1File[] = "/tmp/cmdlib/.wan_dns1_ip_address";
constexpr char kWanDns2File[] = "/tmp/cmdlib/.wan_dns2_ip_address";
constexpr char kDnsmasqLeases[] = "/tmp/dnsmasq.leases";

// One address a file, as the dial tool writes it (64 bytes is its width).
struct WanAddress {
    char text[64] = "";
    void read(const char *path) { util_read_ip_address(path, text, sizeof text); }
};

// The seconds the lease file's expiry times count from: the uptime on
// products whose dnsmasq has no real-time clock, else the wall clock.
uint32_t lease_clock_now() {
    if (util_dnsmasq_use_uptime_as_expire_time()) {
        char uptime[UTIL_UPTIME_TEXT_SIZE];
        util_read_system_uptime(uptime);
        return static_cast<uint32_t>(strtoul(uptime, nullptr, 10));
    }
    return static_cast<uint32_t>(time(nullptr));
}

}  // namespace

CMDLIB_API int util_dhcp_restart_udhcpd_server(const ConfigKeyValuePair *result, int result_count) {
    cmdlib::UdhcpdSettings s = cmdlib::udhcpd_settings_from(result, result_count);
    util_dir_mkdir(cmdlib::kUdhcpdLeaseDir, 0755);
    bool start = s.passthrough || s.server_enabled;
    WanAddress gateway, wan_ip, dns1, dns2;
    if (s.passthrough) {
        // A new WAN address: the old leases must not outlive the server.
        util_shell("killall udhcpd");
        cmd_rm(cmdlib::kUdhcpdLeaseFile);
        gateway.read(kWanGatewayFile);
        wan_ip.read(kWanIpFile);
        if (s.dns_auto) {
            dns1.read(kWanDns1File);
            dns2.read(kWanDns2File);
        }
        s.wan_gateway = gateway.text;
        s.wan_ip = wan_ip.text;
        s.wan_dns1 = dns1.text;
        s.wan_dns2 = dns2.text;
    } else if (start) {
        util_shell("killall udhcpd");
    }
    char conf[cmdlib::kUdhcpdConfSize];
    size_t len = cmdlib::compose_udhcpd_conf(s, conf, sizeof conf);
    cmdlib::AtomicFileWriter file(kConfFile);
    file.write(conf, len);
    // A disabled server keeps the three lines alone and is not touched.
    if (start) file.append_file(kHostsFile);
    file.commit();
    if (start) util_shell("udhcpd /tmp/cmdlib/udhcpd.conf");
    return 0;
}

CMDLIB_API int util_get_dhcp_client_list(DHCPClientInfo *client_list, int max_record) {
    if (!client_list || max_record < 0 || !util_use_dnsmasq_as_dhcp_server()) return 0;
    uint32_t now = lease_clock_now();
    int n = 0;
    cmdlib::read_lines<cmdlib::kLeaseLineMax + 1>(kDnsmasqLeases, [&](auto &r) {
        n = cmdlib::read_dhcp_leases(r, now, client_list, max_record);
    });
    return n;
}
