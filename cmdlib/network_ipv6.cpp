// network: IPv6 set-up on the WAN: the link-local address from a stable
// interface identifier, the global addresses of the WAN device and the LAN
// bridge from a delegated prefix, the default route, and the IPv6 DNS
// servers for the resolver file and the LAN-side IPv6 services.
#include <arpa/inet.h>
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/atomic_file.h"
#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/ipv6_setup.h"
#include "cmdlib/network.h"

using cmdlib::CommandLine;
using cmdlib::run_command;

namespace {

constexpr char kInterfaceIdFile[] = "/tmp/cmdlib/cmdlib_modem_interface_id";
constexpr char kNotAcquiredFlag[] = "/tmp/cmdlib/.NOT_USE_ACQUIRED_IPV6_INTERFACE_ID";
constexpr char kResolvConf[] = "/var/run/resolv.conf";
constexpr char kResolvScratch[] = "/etc/resolv_slaac.conf";
constexpr char kDnsListFile[] = "/tmp/cmdlib/.ipv6_dns_server_list";
constexpr char kDnsListCommaFile[] = "/tmp/cmdlib/.ipv6_dns_server_list_comma";
// The IPv4 DHCP clients write these while they run; the resolver file is
// theirs until they are done.
constexpr const char *kIpv4ClientPidFiles[] = {"/tmp/cmdlib/udhcp_ipv4.pid",
                                               "/tmp/cmdlib/dhclient_ipv4.pid"};

// "<head><device><tail>" through the shell; outside text as one inert word.
// Lines are 256 bytes: one that would be cut is not run.
void run_on_device(const char *head, const char *dev, const char *tail) {
    CommandLine<256> cmd;
    cmd.format("%s", head);
    cmd.append_word(dev);
    cmd.append("%s", tail);
    run_command(cmd);
}

void flush_global(const char *dev) { run_on_device("ip -f inet6 addr flush dev ", dev, " scope global"); }

bool an_ipv4_client_runs() {
    for (const char *pid_file : kIpv4ClientPidFiles)
        if (access(pid_file, R_OK) == 0) return true;
    return false;
}

// Writes the new resolver file as the scratch file, then puts it in place
// of the old one whole.  The scratch file lives on another file system than
// /var/run on the router, where rename() cannot cross: the bytes are then
// copied beside the resolver file and renamed from there.
void publish_resolver(std::string_view server1, std::string_view server2) {
    {
        cmdlib::UniqueFile out(kResolvScratch, "w");
        if (!out) return;
        bool written = true;
        auto emit = [&](std::string_view bytes) {
            written = written && fwrite(bytes.data(), 1, bytes.size(), out.get()) == bytes.size();
        };
        cmdlib::UniqueFile old_file(kResolvConf, "r");  // missing: no old lines
        cmdlib::LineReader<256> lines(old_file.get());
        cmdlib::rewrite_resolver(lines, server1, server2, emit);
        if (fclose(out.release()) != 0 || !written) {
            cmd_rm(kResolvScratch);
            return;
        }
    }
    if (rename(kResolvScratch, kResolvConf) != 0) {
        if (errno != EXDEV) return;
        cmdlib::AtomicFileWriter copy(kResolvConf);
        if (!copy.append_file(kResolvScratch) || !copy.commit()) return;
        cmd_rm(kResolvScratch);
    }
    cmd_chmodrw(kResolvConf);
}

}  // namespace

extern "C" {

CMDLIB_API int util_calc_eui64(MacAddr *mac_addr, EUI64 *eui64_addr) {
    if (!mac_addr || !eui64_addr) return -1;
    *eui64_addr = cmdlib::eui64_from_mac(mac_addr->value);
    return 0;
}

CMDLIB_API int util_use_acquired_ipv6_interface_id(void) { return cmd_file_exist(kNotAcquiredFlag) ? 0 : 1; }

CMDLIB_API int util_read_interface_id(struct in6_addr *ipv6_addr) {
    char text[256];
    int rc = cmd_cat(kInterfaceIdFile, text, sizeof text);
    if (rc != 0) return rc;
    text[strcspn(text, "\n")] = '\0';
    struct in6_addr a;
    if (inet_pton(AF_INET6, text, &a) != 1) return 1;
    if (ipv6_addr) *ipv6_addr = a;
    return 0;
}

CMDLIB_API int util_write_interface_id(struct in6_addr *local_addr6, const char *network_dev_name) {
    if (!local_addr6 || !network_dev_name) return -1;
    unsigned char *id = local_addr6->s6_addr + 8;
    MacAddr mac;
    if (!util_use_acquired_ipv6_interface_id() && cmd_netdev_get_mac_addr(network_dev_name, &mac) == 0) {
        EUI64 eui = cmdlib::eui64_from_mac(mac.value);
        memcpy(id, eui.value, sizeof eui.value);
    }
    struct in6_addr stored;
    if (util_read_interface_id(&stored) != 0 || memcmp(stored.s6_addr + 8, id, 8) != 0) {
        run_on_device("ip -f inet6 addr flush dev ", network_dev_name, " scope link");
        CommandLine<256> add;
        add.format("ip -f inet6 addr add fe80::%02x%02x:%02x%02x:%02x%02x:%02x%02x/64 dev ", id[0], id[1],
                   id[2], id[3], id[4], id[5], id[6], id[7]);
        add.append_word(network_dev_name);
        add.append(" scope link");
        run_command(add);
    }
    // Replaced whole: a daemon reading the identifier meanwhile sees the
    // old one or the new one.
    char line[48];
    size_t len = cmdlib::format_interface_id(id, line, sizeof line - 1);
    line[len++] = '\n';
    return cmdlib::replace_file(kInterfaceIdFile, line, len) ? 0 : -1;
}

CMDLIB_API void config_enable_sharing_64prefix_to_a_lan(const char *ipv6_addr, const char *network_dev_name) {
    if (!ipv6_addr || !network_dev_name) return;
    CommandLine<256> wan;
    wan.format("ip -f inet6 addr add ");
    wan.append_word(ipv6_addr);
    wan.append("/128 dev ");
    wan.append_word(network_dev_name);
    wan.append(" scope global");
    run_command(wan);
    CommandLine<256> lan;
    lan.format("ip -f inet6 addr add ");
    lan.append_word(ipv6_addr);
    lan.append("/64 dev br0 scope global");
    run_command(lan);
}

CMDLIB_API void config_ipv6_addr(const char *prefix, EUI64 *eui64_addr, const char *network_dev_name,
                                 int modem_get_interface) {
    if (!network_dev_name) return;
    // The old addresses go first, whatever the new prefix turns out to be.
    flush_global(network_dev_name);
    flush_global("br0");
    struct in6_addr a;
    if (!prefix || inet_pton(AF_INET6, prefix, &a) != 1) return;
    struct in6_addr stored;
    if (modem_get_interface == 0) {
        if (eui64_addr) memcpy(a.s6_addr + 8, eui64_addr->value, 8);
    } else if (util_read_interface_id(&stored) == 0) {
        memcpy(a.s6_addr + 8, stored.s6_addr + 8, 8);
    }
    char text[128];
    cmdlib::format_ipv6_groups(a.s6_addr, text, sizeof text);
    config_enable_sharing_64prefix_to_a_lan(text, network_dev_name);
}

CMDLIB_API void config_default_ipv6_gateway(const char *ipv6_gateway, const char *network_dev_name) {
    if (!ipv6_gateway || !network_dev_name) return;
    // "::1/0" is how these tools have always been given the default route.
    util_shell("ip -6 route del ::1/0 1>/dev/null 2>&1");
    util_shell("ip -6 route del ::1/0 1>/dev/null 2>&1");
    CommandLine<256> add;
    add.format("route -A inet6 add ::1/0 gw ");
    add.append_word(ipv6_gateway);
    add.append(" dev ");
    add.append_word(network_dev_name);
    run_command(add);
}

CMDLIB_API void config_ipv6_dns_server_address(const char *global_dns_server1,
                                               const char *global_dns_server2, int dns_server_count,
                                               int nat64_mode) {
    while (an_ipv4_client_runs()) sleep(1);
    std::string_view s1 = cmdlib::one_line(global_dns_server1);
    std::string_view s2 = dns_server_count > 1 ? cmdlib::one_line(global_dns_server2) : std::string_view("");
    publish_resolver(s1, s2);
    if (nat64_mode) {
        util_shell("killall rc.ipv6.totd");
        util_shell("/etc/rc.d/rc.ipv6.totd");
    }
    char list[256];
    char comma[256];
    int n1 = static_cast<int>(s1.size()), n2 = static_cast<int>(s2.size());
    if (dns_server_count > 1) {
        cmdlib::format_bounded(list, sizeof list, "%.*s %.*s", n1, s1.data(), n2, s2.data());
        cmdlib::format_bounded(comma, sizeof comma, "%.*s,%.*s", n1, s1.data(), n2, s2.data());
    } else {
        cmdlib::format_bounded(list, sizeof list, "%.*s", n1, s1.data());
        cmdlib::format_bounded(comma, sizeof comma, "%.*s", n1, s1.data());
    }
    cmd_echo_without_new_line(list, kDnsListFile);
    cmd_echo_without_new_line(comma, kDnsListCommaFile);
    util_shell("killall rc.ipv6.radvd");
    util_shell("killall rc.ipv6.dhcp6s");
    util_shell("/etc/rc.d/rc.ipv6.radvd &");
    util_shell("/etc/rc.d/rc.ipv6.dhcp6s &");
}

}  // extern "C"
