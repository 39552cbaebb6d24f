// network: interfaces and addresses (IPv4 and IPv6 addresses, interface and
// WAN names, the WAN forwarding switches, segments, DNS servers, network
// health, the checksum).  Neighbours and connected devices are in
// network_neigh.cpp, connection tracking in network_conntrack.cpp.
#include "cmdlib/network.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/shell_quote.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/internal/checksum.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/internal/route_parse.h"

using cmdlib::CommandLine;
using cmdlib::copy_bounded;
using cmdlib::format_bounded;
using cmdlib::read_lines;
using cmdlib::UniqueFd;

namespace {

constexpr const char kIfInet6[] = "/proc/net/if_inet6";
constexpr const char kRouteFile[] = "/proc/net/route";
constexpr const char kNetDevFile[] = "/proc/net/dev";
constexpr const char kResolvConf[] = "/var/run/resolv.conf";
constexpr const char kManualDnsConf[] = "/tmp/cmdlib/.manual_dns_conf_file";

constexpr const char kWanFallback[] = "usb0";

// Any of these blocks re-enabling WAN forwarding (set by other daemons).
constexpr const char *kForwardBlockers[] = {
    "/tmp/cmdlib/.have_enabled_data_forward_flag_file",
    "/tmp/cmdlib/.listplmn.pid",
    "/tmp/cmdlib/.out_of_cell_id_limit",
    "/tmp/cmdlib/.close_internet",
};

char g_wan_name[64];
char g_interface_names[8][128];

// Interface ioctl on a throw-away AF_INET datagram socket.
int interface_ioctl(const char *name, unsigned long request, struct ifreq *ifr) {
    if (!name || strlen(name) >= IFNAMSIZ) return -1;
    memset(ifr, 0, sizeof *ifr);
    memcpy(ifr->ifr_name, name, strlen(name));
    UniqueFd sock(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!sock) return -1;
    return ioctl(sock.get(), request, ifr) < 0 ? -1 : 0;
}

int get_inet_ioctl(const char *dev, unsigned long request, struct in_addr *out) {
    struct ifreq ifr;
    if (interface_ioctl(dev, request, &ifr) != 0) return -1;
    struct sockaddr_in sin;
    memcpy(&sin, &ifr.ifr_addr, sizeof sin);
    if (out) *out = sin.sin_addr;
    return 0;
}

bool parse_ipv4(const char *text, uint32_t *host_order) {
    struct in_addr a;
    if (!text || inet_pton(AF_INET, text, &a) != 1) return false;
    *host_order = ntohl(a.s_addr);
    return true;
}

int ipv6_text(const char *dev, char *out, int size, int link_local) {
    struct in6_addr a;
    if (cmd_get_ipv6_address(dev, &a, link_local) != 0) return -1;
    if (!out) return 0;
    if (size <= 0 || !inet_ntop(AF_INET6, &a, out, static_cast<socklen_t>(size))) return -1;
    return 0;
}

}  // namespace

CMDLIB_API extern const char *const ethernet_port_map_table[8] = {"0", "0", "4", "1", "2", "3", "0", "0"};
CMDLIB_API extern const int ethernet_port_map_table_from_label[8] = {0, 3, 4, 5, 2, 0, 0, 0};

CMDLIB_API extern const char util_system_network_bridge_name[] = "br0";
CMDLIB_API extern const char util_wireless_interface_name[] = "ath0";
CMDLIB_API extern const char util_ethernet_interface_name[] = "eth0";
CMDLIB_API extern const char util_static_route_table_name[] = "205";
static_assert(sizeof util_system_network_bridge_name == sizeof cmdlib::kBridgeName,
              "the family's bridge is the exported one");

// ---- IPv4 addresses ---------------------------------------------------------

CMDLIB_API int cmd_get_ip(const char *dev_name, struct in_addr *address) {
    return get_inet_ioctl(dev_name, SIOCGIFADDR, address);
}

CMDLIB_API int cmd_ip_exist(const char *dev_name) { return cmd_get_ip(dev_name, nullptr) == 0; }

CMDLIB_API int cmd_get_ipv4_address(const char *dev_name, char *ipv4) {
    struct in_addr a;
    if (cmd_get_ip(dev_name, &a) != 0) return -1;
    if (ipv4) strcpy(ipv4, inet_ntoa(a));
    return 0;
}

CMDLIB_API int util_config_ipv4_addr(const char *net_dev, const char *ipaddr) {
    if (!net_dev || !ipaddr) return -1;
    struct ifreq ifr;
    if (!net_dev[0] || strlen(net_dev) >= IFNAMSIZ) return -1;
    memset(&ifr, 0, sizeof ifr);
    memcpy(ifr.ifr_name, net_dev, strlen(net_dev));
    struct sockaddr_in sin;
    memset(&sin, 0, sizeof sin);
    sin.sin_family = AF_INET;
    sin.sin_addr.s_addr = inet_addr(ipaddr);
    memcpy(&ifr.ifr_addr, &sin, sizeof sin);
    UniqueFd sock(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!sock) return -1;
    return ioctl(sock.get(), SIOCSIFADDR, &ifr) < 0 ? -1 : 0;
}

CMDLIB_API int cmd_get_binary_netmask(const char *dev_name, struct in_addr *netmask) {
    return get_inet_ioctl(dev_name, SIOCGIFNETMASK, netmask);
}

CMDLIB_API int cmd_get_netmask(const char *dev_name, char *netmask) {
    struct in_addr a;
    if (cmd_get_binary_netmask(dev_name, &a) != 0) return -1;
    if (netmask) strcpy(netmask, inet_ntoa(a));
    return 0;
}

CMDLIB_API int cmd_netdev_get_mac_addr(const char *net_dev_name, MacAddr *mac_addr) {
    struct ifreq ifr;
    if (interface_ioctl(net_dev_name, SIOCGIFHWADDR, &ifr) != 0) return -1;
    if (mac_addr) {
        memcpy(mac_addr->value, ifr.ifr_hwaddr.sa_data, sizeof mac_addr->value);
        memset(mac_addr->align_bytes, 0, sizeof mac_addr->align_bytes);
    }
    return 0;
}

CMDLIB_API int util_is_one_network_interface_up(char *interface_name) {
    struct ifreq ifr;
    if (interface_ioctl(interface_name, SIOCGIFFLAGS, &ifr) != 0) return 0;
    return (ifr.ifr_flags & IFF_RUNNING) ? 1 : 0;
}

CMDLIB_API int util_one_network_interface_exist(char *interface_name) {
    if (!interface_name) return 0;
    bool found = false;
    read_lines<256>(kNetDevFile, [&](auto &r) {
        std::string_view line;
        while (!found && r.next(&line)) found = cmdlib::netdev_line_names(line, interface_name);
    });
    return found ? 1 : 0;
}

CMDLIB_API int util_get_netmask_bit_value_1_count(char *netmask) {
    struct in_addr a;
    if (!netmask || inet_aton(netmask, &a) == 0) return -1;
    uint32_t m = ntohl(a.s_addr);
    int bits = 0;
    for (int i = 31; i >= 0 && (m >> i & 1u); --i) ++bits;
    return bits;
}

// ---- IPv6 addresses -----------------------------------------------------------

CMDLIB_API int cmd_ipv6_exist(const char *dev_name) {
    if (!dev_name) return 0;
    unsigned char addr[16];
    bool found = false;
    read_lines<256>(kIfInet6, [&](auto &r) {
        found = cmdlib::find_if_inet6(r, dev_name, cmdlib::kScopeGlobal, addr);
    });
    return found ? 1 : 0;
}

CMDLIB_API int cmd_get_ipv6_address(const char *dev_name, struct in6_addr *ipv6,
                                    int is_link_local_ipv6_address) {
    if (!dev_name) return -1;
    unsigned scope = is_link_local_ipv6_address ? cmdlib::kScopeLink : cmdlib::kScopeGlobal;
    unsigned char b[16];
    bool found = false;
    read_lines<256>(kIfInet6, [&](auto &r) { found = cmdlib::find_if_inet6(r, dev_name, scope, b); });
    if (!found) return -1;
    char text[48];
    format_bounded(text, sizeof text,
                   "%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x", b[0],
                   b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13],
                   b[14], b[15]);
    struct in6_addr a;
    if (inet_pton(AF_INET6, text, &a) != 1) return 1;
    if (ipv6) *ipv6 = a;
    return 0;
}

CMDLIB_API int cmd_get_binary_global_ipv6_address(const char *dev_name, struct in6_addr *ipv6) {
    return cmd_get_ipv6_address(dev_name, ipv6, 0);
}

CMDLIB_API int cmd_get_binary_link_local_ipv6_address(const char *dev_name, struct in6_addr *ipv6) {
    return cmd_get_ipv6_address(dev_name, ipv6, 1);
}

CMDLIB_API int cmd_get_global_ipv6_address(const char *dev_name, char *ipv6, int ipv6_buffer_len) {
    return ipv6_text(dev_name, ipv6, ipv6_buffer_len, 0);
}

CMDLIB_API int cmd_get_link_local_ipv6_address(const char *dev_name, char *ipv6,
                                               int ipv6_buffer_len) {
    return ipv6_text(dev_name, ipv6, ipv6_buffer_len, 1);
}

CMDLIB_API int util_network_get_ipv6_prefix_ext(char *source_ipv6_addr, int ipv6_prefix_len,
                                                int get_ipv6_prefix, char *dest_ipv6_addr,
                                                int dest_ipv6_addr_size) {
    struct in6_addr a;
    if (!source_ipv6_addr || !dest_ipv6_addr || dest_ipv6_addr_size <= 0 ||
        inet_pton(AF_INET6, source_ipv6_addr, &a) != 1)
        return -1;
    if (get_ipv6_prefix) {
        // The bit within a byte counts from its least significant end, as
        // the firmware always has: only whole-byte prefixes give the usual
        // network prefix.
        for (int i = ipv6_prefix_len < 0 ? 0 : ipv6_prefix_len; i < 128; ++i)
            a.s6_addr[i / 8] = static_cast<unsigned char>(a.s6_addr[i / 8] & ~(1u << (i % 8)));
    }
    char text[64];
    if (!inet_ntop(AF_INET6, &a, text, sizeof text)) return -1;
    size_t size = static_cast<size_t>(dest_ipv6_addr_size);
    if (get_ipv6_prefix)
        format_bounded(dest_ipv6_addr, size, "%s/%d", text, ipv6_prefix_len);
    else
        format_bounded(dest_ipv6_addr, size, "%s", text);
    return 0;
}

CMDLIB_API int util_network_get_simplified_ipv6_addr(char *source_ipv6_addr, char *dest_ipv6_addr,
                                                     int dest_ipv6_addr_size) {
    return util_network_get_ipv6_prefix_ext(source_ipv6_addr, 0, 0, dest_ipv6_addr,
                                            dest_ipv6_addr_size);
}

CMDLIB_API void util_network_del_ipv6_route_entry(char *interface, char *ipv6, int prefix_len) {
    // A line that would not fit (254 characters) is not run.
    CommandLine<255> cmd;
    cmd.format("ip -6 route del ");
    cmd.append_word(ipv6 ? ipv6 : "");
    cmd.append("/%d dev ", prefix_len);
    cmd.append_word(interface ? interface : "");
    cmdlib::run_command(cmd);
}

// ---- Interface names ------------------------------------------------------------

CMDLIB_API char *util_get_wan_interface_name_dynamically(void) {
    bool found = false;
    read_lines<256>(kRouteFile, [&](auto &r) {
        found = cmdlib::wan_name_from_route(r, g_wan_name, sizeof g_wan_name);
    });
    return found ? g_wan_name : nullptr;
}

CMDLIB_API char *util_get_wan_interface_name(void) {
    char *name = util_get_wan_interface_name_dynamically();
    return name ? name : const_cast<char *>(kWanFallback);
}

CMDLIB_API char *util_get_ipv6_wan_interface_name(void) { return util_get_wan_interface_name(); }

CMDLIB_API char *util_get_system_network_bridge_name(void) {
    return const_cast<char *>(util_system_network_bridge_name);
}

CMDLIB_API char *util_get_wireless_interface_name(void) {
    return const_cast<char *>(util_wireless_interface_name);
}

CMDLIB_API char *util_get_ethernet_interface_name(void) {
    return const_cast<char *>(util_ethernet_interface_name);
}

CMDLIB_API char *util_get_static_route_table_name(void) {
    return const_cast<char *>(util_static_route_table_name);
}

CMDLIB_API int util_get_ppp_net_dev(char *ppp_dev) {
    for (int i = 0; i <= 8; ++i) {  // ppp0 .. ppp8
        char name[8];
        format_bounded(name, sizeof name, "ppp%d", i);
        if (!cmd_netdev_exist(name)) continue;
        if (ppp_dev) strcpy(ppp_dev, name);
        return 0;
    }
    if (ppp_dev) ppp_dev[0] = '\0';
    return -1;
}

CMDLIB_API void util_get_network_interface_in_bridge(char **network_interfaces,
                                                     int max_interface_count,
                                                     int *network_interface_count) {
    copy_bounded(g_interface_names[0], sizeof g_interface_names[0], util_ethernet_interface_name);
    int n = max_interface_count < 1 ? 0 : 1;  // only the Ethernet device is listed
    if (n > 0 && network_interfaces) network_interfaces[0] = g_interface_names[0];
    if (network_interface_count) *network_interface_count = n;
}

CMDLIB_API int util_get_cpe_phy_port_from_label_number(int label_number) {
    if (label_number < 0 || label_number >= 8) return -1;
    return ethernet_port_map_table_from_label[label_number];
}

CMDLIB_API void util_network_get_mac_string(unsigned char *binary_mac_addr,
                                            char *dest_mac_addr_buffer, int mac_addr_buffer_size) {
    if (!binary_mac_addr || !dest_mac_addr_buffer || mac_addr_buffer_size <= 0) return;
    const unsigned char *m = binary_mac_addr;
    format_bounded(dest_mac_addr_buffer, static_cast<size_t>(mac_addr_buffer_size),
                   "%02X:%02X:%02X:%02X:%02X:%02X", m[0], m[1], m[2], m[3], m[4], m[5]);
}

// ---- WAN forwarding switches -----------------------------------------------------

namespace {
// The rules on the WAN interface; a rule line that would not fit (126
// characters) is not run.
void output_drop_rules(const char *op) {
    const char *wan = util_get_wan_interface_name();
    for (const char *tool : {"iptables", "ip6tables"}) {
        CommandLine<127> cmd;
        cmd.format("%s %s OUTPUT -o ", tool, op);
        cmd.append_word(wan);
        cmd.append(" -j DROP");
        cmdlib::run_command(cmd);
    }
}
}  // namespace

CMDLIB_API void util_disable_data_forward(void) {
    util_shell("CLOSE_INTERNET_TEMPORARILY=1 /etc/rc.d/rc.disable-wan-communication");
}

CMDLIB_API void util_disable_data_forward_and_output(void) {
    util_disable_data_forward();
    output_drop_rules("-I");
    sleep(10);  // let the daemons notice the WAN is closed before the caller goes on
}

CMDLIB_API void util_enable_data_forward(void) {
    for (const char *flag : kForwardBlockers)
        if (cmd_file_exist(flag)) return;
    util_shell("CLOSE_INTERNET_TEMPORARILY=1 /etc/rc.d/rc.enable-wan-communication");
}

CMDLIB_API void util_enable_data_forward_and_output(void) {
    util_enable_data_forward();
    output_drop_rules("-D");
}

// ---- Segments, DNS, health, checksum ------------------------------------------------

CMDLIB_API int util_get_network_segment4(const char *s_ip_addr, char *s_netmask,
                                         in_addr_t *n_net_segment, char *s_net_segment,
                                         int s_net_segment_size) {
    if (!s_ip_addr || !s_netmask || (!s_net_segment && s_net_segment_size != 0)) return 0;
    uint32_t ip, mask;
    if (!parse_ipv4(s_ip_addr, &ip) || !parse_ipv4(s_netmask, &mask)) return 0;
    struct in_addr seg;
    seg.s_addr = htonl(ip & mask);
    if (s_net_segment &&
        (s_net_segment_size <= 0 ||
         !inet_ntop(AF_INET, &seg, s_net_segment, static_cast<socklen_t>(s_net_segment_size))))
        return 0;
    if (n_net_segment) *n_net_segment = seg.s_addr;
    return 1;
}

CMDLIB_API int util_get_2_network_segment_relations4(const char *s_ip_addr_1,
                                                     const char *s_netmask_1,
                                                     const char *s_ip_addr_2,
                                                     const char *s_netmask_2) {
    uint32_t ip1, m1, ip2, m2;
    if (!parse_ipv4(s_ip_addr_1, &ip1) || !parse_ipv4(s_netmask_1, &m1) ||
        !parse_ipv4(s_ip_addr_2, &ip2) || !parse_ipv4(s_netmask_2, &m2))
        return 0;
    uint32_t mask = m1 < m2 ? m1 : m2;  // the shorter prefix
    if ((ip1 & mask) != (ip2 & mask)) return 3;
    return m1 == m2 ? 1 : 2;
}

CMDLIB_API int util_is_network_ok(void) {
    if (cmd_file_exist("/tmp/cmdlib/.please_use_specified_card") ||
        util_should_disconnect_from_lte_network_immediately() ||
        !cmd_ip_exist(util_get_wan_interface_name()))
        return 0;
    int sim = 0, pin = 0, puk = 0, quality = 0, sms = 0, reg = 0, greg = 0, ereg = 0, act = 0,
        service = 0;
    util_read_status_ind(&sim, &pin, &puk, &quality, &sms, &reg, &greg, &ereg, &act, &service);
    auto registered = [](int s) { return s == 1 || s == 5; };  // home or roaming
    return sim == 1 && pin != 1 && puk != 1 && quality > 0 &&
                   (registered(reg) || registered(greg) || registered(ereg))
               ? 1
               : 0;
}

CMDLIB_API int util_resolv_domain_name(const char *domain_name, char *ipv4_addr, char *ipv6_addr,
                                       int *result_ind) {
    if (result_ind) *result_ind = 0;
    if (!domain_name) return 0;
    struct addrinfo hints;
    memset(&hints, 0, sizeof hints);
    hints.ai_flags = AI_PASSIVE;
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo *res = nullptr;
    if (getaddrinfo(domain_name, nullptr, &hints, &res) != 0) return 0;
    for (struct addrinfo *p = res; p; p = p->ai_next) {
        if (p->ai_family == AF_INET && p->ai_addrlen >= sizeof(struct sockaddr_in)) {
            struct sockaddr_in sin;
            memcpy(&sin, p->ai_addr, sizeof sin);
            if (ipv4_addr) strcpy(ipv4_addr, inet_ntoa(sin.sin_addr));
            if (result_ind) *result_ind |= 2;
        } else if (p->ai_family == AF_INET6 && p->ai_addrlen >= sizeof(struct sockaddr_in6)) {
            struct sockaddr_in6 sin6;
            memcpy(&sin6, p->ai_addr, sizeof sin6);
            const unsigned char *b = sin6.sin6_addr.s6_addr;
            if (ipv6_addr)
                format_bounded(ipv6_addr, 40,
                               "%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x",
                               b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10],
                               b[11], b[12], b[13], b[14], b[15]);
            if (result_ind) *result_ind |= 4;
        }
    }
    freeaddrinfo(res);
    return 1;
}

CMDLIB_API int util_read_dns_info(char *buffer, char **dest_argv, int max_allowed_argv,
                                  int read_ipv4_dns, int read_ipv6_dns) {
    (void)max_allowed_argv;  // the caller sizes buffer and dest_argv for the whole file
    if (!buffer || !dest_argv || !cmd_file_exist(kResolvConf)) return 0;
    int count = 0;
    read_lines<256>(kResolvConf, [&](auto &r) {
        count = cmdlib::pack_nameservers(r, buffer, dest_argv, read_ipv4_dns != 0,
                                         read_ipv6_dns != 0);
    });
    return count;
}

CMDLIB_API int util_get_dns(char *outText, char *type) {
    if (!outText) return 1;
    outText[0] = '\0';
    const char *path = cmd_file_exist(kManualDnsConf) ? kManualDnsConf : kResolvConf;
    bool want_v4 = type && strncmp(type, "ipv4", 4) == 0;
    bool want_v6 = type && strncmp(type, "ipv6", 4) == 0;
    size_t len = 0;
    bool opened = read_lines<1024>(path, [&](auto &r) {
        std::string_view line;
        while (r.next(&line)) {
            if (!(want_v4 || want_v6) || !cmdlib::dns_line_wanted(line, want_v4)) continue;
            memcpy(outText + len, line.data(), line.size());
            len += line.size();
            outText[len] = '\0';
        }
    });
    return opened ? 0 : 1;
}

CMDLIB_API int isipv4Str(char *buffer) { return buffer && cmdlib::has_three_dots(buffer) ? 1 : 0; }

CMDLIB_API int util_check_is_dns_server_valid(void) {
    return cmd_file_exist(kResolvConf) && !util_have_string_in_the_file(kResolvConf, "192.168.15.1", 0)
               ? 1
               : 0;
}

CMDLIB_API void util_read_default_gateway_and_dns_info_from_route_table(void) {
    char wan[64];
    copy_bounded(wan, sizeof wan, util_get_wan_interface_name());
    char dns1[256] = "", dns2[256] = "";
    read_lines<256>(kResolvConf, [&](auto &r) {
        std::string_view line;
        while (r.next(&line)) {
            char buf[256];
            copy_bounded(buf, sizeof buf, cmdlib::strip(line));
            if (strncmp(buf, "nameserver", 10) != 0 || strchr(buf, ':')) continue;
            const char *word = util_get_next_arg_cmdlib(buf, 1);
            if (!word || !word[0]) continue;
            copy_bounded(dns1[0] ? dns2 : dns1, sizeof dns1, word);
        }
    });
    char gateway[16] = "";
    bool route_read = read_lines<256>(kRouteFile, [&](auto &r) {
        std::string_view line;
        uint32_t gw = 0;
        while (r.next(&line)) {
            if (!cmdlib::wan_default_gateway(line, wan, &gw)) continue;
            struct in_addr a;
            a.s_addr = gw;
            copy_bounded(gateway, sizeof gateway, inet_ntoa(a));
            break;
        }
    });
    if (!route_read || !gateway[0] || !dns1[0]) return;
    // Addresses from the resolver file go in as the firmware writes them;
    // anything else is passed quoted and inert.
    // A line that would not fit (255 characters) is not run.
    char dns_pair[520];
    format_bounded(dns_pair, sizeof dns_pair, "%s %s", dns1, dns2);
    CommandLine<256> cmd;
    cmd.format("router=\"%s\" dns=", gateway);
    if (!cmdlib::needs_shell_quoting(dns1) && !cmdlib::needs_shell_quoting(dns2))
        cmd.append("\"%s\"", dns_pair);
    else
        cmd.append_word(dns_pair);
    cmd.append(" /etc/qxscript/rc.save-wan-ip-info");
    cmdlib::run_command(cmd);
}

CMDLIB_API void util_read_ip_address(const char *ip_file, char *buffer, int buffer_size) {
    if (!buffer || buffer_size <= 0) return;
    buffer[0] = '\0';
    if (!ip_file || !cmd_file_exist(ip_file)) return;
    if (cmd_cat(ip_file, buffer, buffer_size) != 0) {
        buffer[0] = '\0';
        return;
    }
    size_t n = strlen(buffer);
    while (n > 0 && (buffer[n - 1] == '\r' || buffer[n - 1] == '\n')) buffer[--n] = '\0';
}

CMDLIB_API unsigned short ip_checksum(const void *data, int len) {
    return cmdlib::checksum16(data, data && len > 0 ? static_cast<size_t>(len) : 0);
}

CMDLIB_API int util_should_check_invalid_wan_ip(void) {
    return cmd_file_exist("/tmp/cmdlib/.enable_check_invalid_wan_ip_flag_file") ? 1 : 0;
}
