// network: interfaces and addresses, attached devices, connection tracking.
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

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/shell_quote.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/internal/checksum.h"
#include "cmdlib/internal/conntrack_parse.h"
#include "cmdlib/internal/neigh_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/internal/route_parse.h"

using cmdlib::copy_bounded;
using cmdlib::format_bounded;
using cmdlib::LineReader;
using cmdlib::UniqueFd;
using cmdlib::UniqueFile;

namespace {

constexpr const char kIfInet6[] = "/proc/net/if_inet6";
constexpr const char kRouteFile[] = "/proc/net/route";
constexpr const char kNetDevFile[] = "/proc/net/dev";
constexpr const char kResolvConf[] = "/var/run/resolv.conf";
constexpr const char kManualDnsConf[] = "/tmp/cmdlib/.manual_dns_conf_file";
constexpr const char kArpFile[] = "/proc/net/arp";
constexpr const char kPppoeFile[] = "/proc/net/pppoe";
constexpr const char kSwitchAddressTable[] = "/proc/phys26/addresstable";
constexpr const char kWlanStations[] = "/tmp/cmdlib/.all_wlan_client_devices_info";
constexpr const char kLeasesFile[] = "/tmp/dnsmasq.leases";
constexpr const char kConntrackFile[] = "/proc/net/nf_conntrack";
constexpr const char kNatOutput[] = "/tmp/.nat_output";
constexpr const char kWanGatewayFile[] = "/tmp/cmdlib/.wan_network_card_gateway";

constexpr const char kWanFallback[] = "usb0";
constexpr const char kBridgeName[] = "br0";
constexpr const char kWirelessName[] = "ath0";
constexpr const char kEthernetName[] = "eth0";
constexpr const char kStaticRouteTable[] = "205";

// Any of these blocks re-enabling WAN forwarding (set by other daemons).
constexpr const char *kForwardBlockers[] = {
    "/tmp/cmdlib/.have_enabled_data_forward_flag_file",
    "/tmp/cmdlib/.listplmn.pid",
    "/tmp/cmdlib/.out_of_cell_id_limit",
    "/tmp/cmdlib/.close_internet",
};

char g_wan_name[64];
char g_interface_names[8][128];
char g_pppoe_users[512];

// One shell word for outside text: unchanged when benign, else quoted.
class ShellWord {
  public:
    explicit ShellWord(const char *s) { ok_ = cmdlib::shell_quote(s ? s : "", buf_, sizeof buf_) >= 0; }
    [[nodiscard]] bool ok() const { return ok_; }
    [[nodiscard]] const char *c_str() const { return buf_; }

  private:
    char buf_[256];
    bool ok_;
};

void run_command(const char *cmd) { util_shell(cmd); }

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

bool netdev_exists(const char *name) { return if_nametoindex(name) != 0; }

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

// Lines of a file through a LineReader of the given size; false when the
// file cannot be opened.
template <size_t Size, class Fn> bool for_file(const char *path, Fn &&fn) {
    UniqueFile f(path, "r");
    if (!f) return false;
    LineReader<Size> r(f.get());
    fn(r);
    return true;
}

}  // namespace

CMDLIB_API int max_udp_timeout = 0;

CMDLIB_API extern const char *const ethernet_port_map_table[8] = {"0", "0", "4", "1", "2", "3", "0", "0"};
CMDLIB_API extern const int ethernet_port_map_table_from_label[8] = {0, 3, 4, 5, 2, 0, 0, 0};

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
    for_file<256>(kNetDevFile, [&](auto &r) {
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
    for_file<256>(kIfInet6, [&](auto &r) {
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
    for_file<256>(kIfInet6, [&](auto &r) { found = cmdlib::find_if_inet6(r, dev_name, scope, b); });
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
    ShellWord dev(interface), addr(ipv6);
    if (!dev.ok() || !addr.ok()) return;
    char cmd[255];
    format_bounded(cmd, sizeof cmd, "ip -6 route del %s/%d dev %s", addr.c_str(), prefix_len,
                   dev.c_str());
    run_command(cmd);
}

// ---- Interface names ------------------------------------------------------------

CMDLIB_API char *util_get_wan_interface_name_dynamically(void) {
    bool found = false;
    for_file<256>(kRouteFile, [&](auto &r) {
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
    return const_cast<char *>(kBridgeName);
}

CMDLIB_API char *util_get_wireless_interface_name(void) {
    return const_cast<char *>(kWirelessName);
}

CMDLIB_API char *util_get_ethernet_interface_name(void) {
    return const_cast<char *>(kEthernetName);
}

CMDLIB_API char *util_get_static_route_table_name(void) {
    return const_cast<char *>(kStaticRouteTable);
}

CMDLIB_API int util_get_ppp_net_dev(char *ppp_dev) {
    for (int i = 0; i <= 8; ++i) {  // ppp0 .. ppp8
        char name[8];
        format_bounded(name, sizeof name, "ppp%d", i);
        if (!netdev_exists(name)) continue;
        if (ppp_dev) strcpy(ppp_dev, name);
        return 0;
    }
    if (ppp_dev) ppp_dev[0] = '\0';
    return -1;
}

CMDLIB_API void util_get_network_interface_in_bridge(char **network_interfaces,
                                                     int max_interface_count,
                                                     int *network_interface_count) {
    copy_bounded(g_interface_names[0], sizeof g_interface_names[0], kEthernetName);
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
void output_drop_rules(const char *op) {
    ShellWord wan(util_get_wan_interface_name());
    if (!wan.ok()) return;
    char cmd[127];
    format_bounded(cmd, sizeof cmd, "iptables %s OUTPUT -o %s -j DROP", op, wan.c_str());
    run_command(cmd);
    format_bounded(cmd, sizeof cmd, "ip6tables %s OUTPUT -o %s -j DROP", op, wan.c_str());
    run_command(cmd);
}
}  // namespace

CMDLIB_API void util_disable_data_forward(void) {
    run_command("CLOSE_INTERNET_TEMPORARILY=1 /etc/rc.d/rc.disable-wan-communication");
}

CMDLIB_API void util_disable_data_forward_and_output(void) {
    util_disable_data_forward();
    output_drop_rules("-I");
    sleep(10);  // let the daemons notice the WAN is closed before the caller goes on
}

CMDLIB_API void util_enable_data_forward(void) {
    for (const char *flag : kForwardBlockers)
        if (cmd_file_exist(flag)) return;
    run_command("CLOSE_INTERNET_TEMPORARILY=1 /etc/rc.d/rc.enable-wan-communication");
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
    for_file<256>(kResolvConf, [&](auto &r) {
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
    bool opened = for_file<1024>(path, [&](auto &r) {
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
    for_file<256>(kResolvConf, [&](auto &r) {
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
    bool route_read = for_file<256>(kRouteFile, [&](auto &r) {
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
    char dns_pair[520];
    format_bounded(dns_pair, sizeof dns_pair, "%s %s", dns1, dns2);
    char cmd[256];
    if (!cmdlib::needs_shell_quoting(dns1) && !cmdlib::needs_shell_quoting(dns2)) {
        format_bounded(cmd, sizeof cmd, "router=\"%s\" dns=\"%s\" /etc/qxscript/rc.save-wan-ip-info",
                       gateway, dns_pair);
    } else {
        char quoted[600];
        if (cmdlib::shell_quote(dns_pair, quoted, sizeof quoted) < 0) return;
        format_bounded(cmd, sizeof cmd, "router=\"%s\" dns=%s /etc/qxscript/rc.save-wan-ip-info",
                       gateway, quoted);
    }
    run_command(cmd);
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

// ---- Neighbours, ARP and connected devices ------------------------------------------

namespace cmdlib {

int read_pppoe_table_file(const char *path, ARPTable *t, const char *device) {
    memset(t, 0, sizeof *t);
    return for_file<256>(path, [&](auto &r) { parse_pppoe_rows(r, t, device); }) ? 0 : -1;
}

int apply_switch_ports_file(const char *path, ARPTable *t) {
    return for_file<256>(path, [&](auto &r) { apply_switch_ports(r, t); }) ? 0 : -1;
}

void pppoe_users_from(const char *pppoe_path, const char *ports_path, char *out, size_t size) {
    if (!out || size == 0) return;
    out[0] = '\0';
    ARPTable t;
    read_pppoe_table_file(pppoe_path, &t, kBridgeName);
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
    return for_file<512>(path, [&](auto &r) { read_lease_hosts(r, now, hosts); });
}

}  // namespace cmdlib

CMDLIB_API int util_parse_neigh_info(const char *file_name, Neighbour_Info *neigh_info,
                                     int only_link_local_addr, int only_global_addr) {
    if (!file_name || !neigh_info) return -1;
    bool opened = for_file<256>(file_name, [&](auto &r) {
        cmdlib::parse_neigh_listing(r, neigh_info, only_link_local_addr != 0, only_global_addr != 0);
    });
    return opened ? 0 : -1;
}

CMDLIB_API void util_update_neighbour_arp_cache(const char *network_dev_name, const char *ip_addr) {
    ShellWord dev(network_dev_name), ip(ip_addr);
    if (!dev.ok() || !ip.ok()) return;
    char cmd[128];
    format_bounded(cmd, sizeof cmd, "arping -A -c 1 -I %s -s %s 255.255.255.255", dev.c_str(),
                   ip.c_str());
    run_command(cmd);
}

CMDLIB_API int util_get_arp_table_info(ARPTable *arp_table, char *network_card) {
    if (!arp_table) return -1;
    memset(arp_table, 0, sizeof *arp_table);
    bool opened = for_file<256>(kArpFile, [&](auto &r) {
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
    run_command("wlanconfig ath0 list sta > /tmp/cmdlib/.all_wlan_client_devices_info");
    if (!cmd_file_exist(kWlanStations)) return -1;
    bool opened = for_file<256>(kWlanStations, [&](auto &r) {
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
    ShellWord dev(interface), out(result_file);
    if (!dev.ok() || !out.ok()) return;
    char cmd[256];
    format_bounded(cmd, sizeof cmd, "arpscan -a %s %s/%d >%s 2>/dev/null", dev.c_str(),
                   inet_ntoa(ip), bits, out.c_str());
    run_command(cmd);
}

CMDLIB_API int util_get_real_exist_arp_table(char *file_path, int used_arp_scan_tool,
                                             ARPTable *system_arp_table, int arp_table_action) {
    if (!file_path || !system_arp_table) return -1;
    bool opened = for_file<256>(file_path, [&](auto &r) {
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
    util_detect_arp_entries(const_cast<char *>(kBridgeName), scan_file);
    ARPTable scan;
    memset(&scan, 0, sizeof scan);
    util_get_real_exist_arp_table(scan_file, 0, &scan, cmdlib::kArpAdd);
    cmd_rm(scan_file);
    cmdlib::merge_hosts_with_scan(all_hosts_info, &scan);
    return 0;
}

// ---- Connection tracking -------------------------------------------------------------

namespace {

// The conntrack file is read in large blocks: every read() makes the kernel
// walk the table again up to the current position.
constexpr size_t kConntrackReadBuffer = 64 * 1024;

UniqueFile open_conntrack(const char *path, char *buf) {
    UniqueFile f(path, "r");
    if (f && buf) setvbuf(f.get(), buf, _IOFBF, kConntrackReadBuffer);
    return f;
}

}  // namespace

namespace cmdlib {

int nat_session_table_from(const char *conntrack_path, const char *wan_ip, const char *lan_ip,
                           const char *scratch_path, const char *output_path) {
    cmd_rm(scratch_path);
    cmd_touch(scratch_path);
    cmdlib::UniqueMalloc<char> buf(kConntrackReadBuffer);  // outlives the stream using it
    UniqueFile in = open_conntrack(conntrack_path, buf.get());
    if (!in) return -1;
    UniqueFile out(scratch_path, "a");
    if (!out) return -1;
    NatSessionParser parser(wan_ip, lan_ip);
    LineReader<512> r(in.get());
    std::string_view line;
    int sessions = 0;
    while (sessions < kMaxNatSessions && r.next(&line)) {
        char *text = r.c_str();
        size_t len = line.size();
        if (len > 0 && text[len - 1] == '\n') text[len - 1] = '\0';
        char session[256];
        size_t n = parser.feed(text, session, sizeof session);
        if (n == 0) continue;
        fwrite(session, 1, n, out.get());
        ++sessions;
    }
    out.reset();
    cmd_rm(output_path);
    cmd_mv(scratch_path, output_path);
    return 0;
}

int collect_conntrack_file(const char *path, const CollectContext &ctx,
                           DestIPInConntrackInfo *info, int *max_timeout) {
    cmdlib::UniqueMalloc<char> buf(kConntrackReadBuffer);  // outlives the stream using it
    UniqueFile in = open_conntrack(path, buf.get());
    if (!in) return -1;
    LineReader<512> r(in.get());
    std::string_view line;
    while (r.next(&line)) collect_conntrack_line(r.c_str(), ctx, info, max_timeout);
    return 0;
}

}  // namespace cmdlib

CMDLIB_API int util_gen_nat_session_table(const char *output_path) {
    if (!output_path) return -1;
    char wan_ip[16] = "", lan_ip[16] = "";
    if (cmd_get_ipv4_address(util_get_wan_interface_name(), wan_ip) != 0) wan_ip[0] = '\0';
    if (cmd_get_ipv4_address(kBridgeName, lan_ip) != 0) lan_ip[0] = '\0';
    return cmdlib::nat_session_table_from(kConntrackFile, wan_ip, lan_ip, kNatOutput, output_path);
}

CMDLIB_API int util_collect_dns_and_icmp_dest_ip(DestIPInConntrackInfo *conntrack_info) {
    if (!conntrack_info) return -1;
    conntrack_info->network_is_ok = 0;
    const char *wan = util_get_wan_interface_name();
    char wan_ip[16];
    if (!wan || !wan[0] || cmd_get_ipv4_address(wan, wan_ip) != 0) return -1;
    char gateway[64];
    util_read_ip_address(kWanGatewayFile, gateway, sizeof gateway);
    cmdlib::CollectContext ctx;
    cmdlib::make_collect_context(wan_ip, gateway, &ctx);
    return cmdlib::collect_conntrack_file(kConntrackFile, ctx, conntrack_info, &max_udp_timeout);
}

CMDLIB_API void util_add_ip_to_buffer(char *ip, int ip_type, DestIPInConntrackInfo *conntrack_info) {
    cmdlib::add_conntrack_ip(ip, ip_type, conntrack_info);
}
