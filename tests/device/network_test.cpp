// The network family against the device's real kernel: addresses set with
// ip, routes, neighbours, netfilter rules and a connection-tracking table
// filled by traffic to the operator side and by conntrack -I.  The
// scenarios are transcripts in tests/golden/device_network: device steps
// and the library's answers.
#include <arpa/inet.h>
#include <time.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cmdlib/network.h"
#include "device.h"
#include "device_steps.h"

namespace {

using golden::Args;
using golden::show;

// Sorted, " ; " between: for what comes in the kernel's hash order.
std::string sorted(std::vector<std::string> v) {
    std::sort(v.begin(), v.end());
    std::string out;
    for (const std::string &s : v) out += (out.empty() ? "" : " ; ") + s;
    return out;
}

std::string text_call(int (*fn)(const char *, char *), Args &a) {
    char text[64] = "";
    int rc = fn(a[0].c(), text);
    return show(rc, text);
}

std::string mac_of(Args &a) {
    MacAddr mac;
    memset(&mac, 0xee, sizeof mac);
    int rc = cmd_netdev_get_mac_addr(a[0].c(), &mac);
    char text[18];
    util_network_get_mac_string(mac.value, text, sizeof text);
    std::string sys = devtest::read_file("/sys/class/net/" + a[0] + "/address");
    std::transform(sys.begin(), sys.end(), sys.begin(), ::toupper);
    return show(rc) + (sys == std::string(text) + "\n" ? " as in /sys" : " " + std::string(text)) +
           " align " + std::to_string(mac.align_bytes[0]);
}

std::string collect() {
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    max_udp_timeout = 0;
    int rc = util_collect_dns_and_icmp_dest_ip(&info);
    std::vector<std::string> icmp(info.icmp_ip_address, info.icmp_ip_address + info.valid_icmp_ip_count),
        dns(info.dns_ip, info.dns_ip + info.valid_dns_ip_count);
    return show(rc) + " ok=" + show(info.network_is_ok) + " icmp=" + sorted(icmp) + " dns=" + sorted(dns) +
           (max_udp_timeout >= 160 ? " dns lifetime seen" : "");
}

std::string nat(Args &a) {
    int rc = util_gen_nat_session_table(a[0].c());
    std::vector<std::string> lines;
    std::string text = a[0].null() ? "" : devtest::read_file(a[0]);
    for (size_t i = 0, j; (j = text.find('\n', i)) != std::string::npos; i = j + 1) lines.push_back(text.substr(i, j - i));
    return show(rc) + " " + sorted(lines);
}

void forward(const std::string &how) {
    if (how == "disable_and_output") util_disable_data_forward_and_output();
    if (how == "enable_and_output") util_enable_data_forward_and_output();
    if (how == "enable") util_enable_data_forward();
    if (how == "disable") util_disable_data_forward();
}

class NetworkTest : public DeviceTest {};

TEST_F(NetworkTest, Transcripts) {
    golden::check("device_network", golden::calls(devtest::with_device({
        {"add_interface", [](Args &a) { return show(devtest::add_interface(a[0], a[1])); }},
        {"ipv4", [](Args &a) { return text_call(cmd_get_ipv4_address, a); }},
        {"netmask", [](Args &a) { return text_call(cmd_get_netmask, a); }},
        {"ip_exist", [](Args &a) { return show(cmd_ip_exist(a[0].c())); }},
        {"get_ip", [](Args &a) { return show(cmd_get_ip(a[0].c(), nullptr)); }},
        {"config_ipv4", [](Args &a) { return show(util_config_ipv4_addr(a[0].c(), a[1].c())); }},
        {"mac", mac_of},
        {"up", [](Args &a) { return show(util_is_one_network_interface_up(a[0].w())); }},
        {"wait_up", [](Args &a) {
             return show(devtest::wait_until([&] { return util_is_one_network_interface_up(a[0].w()) == 1; }));
         }},
        {"exists", [](Args &a) { return show(util_one_network_interface_exist(a[0].w())); }},
        {"ipv6_exist", [](Args &a) { return show(cmd_ipv6_exist(a[0].c())); }},
        {"global6", [](Args &a) {
             char text[64] = "";
             int rc = cmd_get_global_ipv6_address(a[0].c(), text, a[1].i());
             return show(rc, text);
         }},
        {"link_local6", [](Args &a) {
             char text[64] = "";
             int rc = cmd_get_link_local_ipv6_address(a[0].c(), text, sizeof text);
             return show(rc, std::string(text).rfind("fe80::", 0) == 0 ? "fe80::..." : text);
         }},
        {"binary6", [](Args &a) {
             struct in6_addr addr = {};
             int rc = cmd_get_binary_global_ipv6_address(a[0].c(), &addr);
             return show(rc, addr.s6_addr[15]);
         }},
        {"del6", [](Args &a) { return util_network_del_ipv6_route_entry(a[0].w(), a[1].w(), a[2].i()), "done"; }},
        {"wan_dyn", [](Args &) { return show(util_get_wan_interface_name_dynamically()); }},
        {"wan", [](Args &) { return show(util_get_wan_interface_name()); }},
        {"wan6", [](Args &) { return show(util_get_ipv6_wan_interface_name()); }},
        {"ppp", [](Args &) {
             char dev[16] = "junk";
             int rc = util_get_ppp_net_dev(dev);
             return show(rc, dev, util_get_ppp_net_dev(nullptr));
         }},
        {"network_ok", [](Args &) { return show(util_is_network_ok()); }},
        {"fwd", [](Args &a) { return forward(a[0]), "done"; }},
        {"dns_info", [](Args &a) {
             char buffer[256], *argv[8] = {};
             int n = util_read_dns_info(buffer, argv, a[0].i(), a[1].i(), a[2].i());
             std::string out = show(n);
             for (int i = 0; i < n; ++i) out += " " + show(argv[i]);
             return out;
         }},
        {"get_dns", [](Args &a) {
             char out[1024] = "";
             int rc = util_get_dns(out, a[0].w());
             return show(rc, out);
         }},
        {"dns_valid", [](Args &) { return show(util_check_is_dns_server_valid()); }},
        {"report", [](Args &) { return util_read_default_gateway_and_dns_info_from_route_table(), "done"; }},
        {"resolve", [](Args &a) {
             char v4[16] = "", v6[40] = "";
             int ind = -1;
             int rc = util_resolv_domain_name(a[0].c(), v4, v6, &ind);
             return show(rc, v4, v6, ind);
         }},
        {"read_ip", [](Args &a) {
             char buf[32] = "junk";
             util_read_ip_address(a[0].c(), buf, a[1].i());
             return show(buf);
         }},
        {"check_invalid", [](Args &) { return show(util_should_check_invalid_wan_ip()); }},
        {"arp", [](Args &a) {
             ARPTable t;
             int rc = util_get_arp_table_info(&t, a[0].w());
             std::vector<std::string> ips;
             for (unsigned i = 0; i < t.count; ++i) ips.push_back(t.table[i].ip);
             return show(rc) + " " + sorted(ips);
         }},
        {"update_arp", [](Args &a) { return util_update_neighbour_arp_cache(a[0].c(), a[1].c()), "done"; }},
        {"detect_arp", [](Args &a) { return util_detect_arp_entries(a[0].w(), a[1].w()), "done"; }},
        {"wlan", [](Args &) {
             ARPTable t;
             int rc = util_get_all_wlan_clients(&t);
             std::string out = show(rc);
             for (unsigned i = 0; i < t.count; ++i) out += std::string(" ") + t.table[i].mac;
             return out;
         }},
        {"collect", [](Args &) { return collect(); }},
        {"nat", nat},
    })));
}

TEST_F(NetworkTest, ConnectedDevicesJoinLeasesWithTheScan) {
    devtest::set_answer("arpscan", "02:00:00:00:00:10\t192.168.1.10\n02:00:00:00:00:99 192.168.1.20\n"
                                   "02:00:00:00:00:50 192.168.1.50\n");
    long now = static_cast<long>(time(nullptr));
    devtest::write_file("/tmp/dnsmasq.leases", std::to_string(now + 600) + " 02:00:00:00:00:10 192.168.1.10 laptop *\n" +
                                                   std::to_string(now + 600) + " 02:00:00:00:00:20 192.168.1.20 phone *\n" +
                                                   std::to_string(now - 50) + " 02:00:00:00:00:30 192.168.1.30 old *\n" +
                                                   "garbage\n");
    AllHostsInfo h;
    ASSERT_EQ(util_get_device_connected_to_this_device(&h), 0);
    ASSERT_EQ(h.count, 4);
    EXPECT_GE(h.host[0].leases, 590);
    EXPECT_LE(h.host[0].leases, 600);
    EXPECT_STREQ(h.host[1].mac, "02:00:00:00:00:99");  // address taken over by another MAC
    EXPECT_STREQ(h.host[3].ip, "192.168.1.50");
    EXPECT_EQ(devtest::sh("ls /tmp/.cmdlib_tmp_* >/dev/null 2>&1"), 2);  // the scan's scratch file is gone
    devtest::remove_all("/tmp/dnsmasq.leases");
    ASSERT_EQ(util_get_device_connected_to_this_device(&h), 0);
    EXPECT_EQ(h.count, 3);  // scan rows alone
}

}  // namespace
