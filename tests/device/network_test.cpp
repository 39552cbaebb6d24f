// The network family against the device's real kernel: addresses set with
// ip, routes, neighbours, netfilter rules and a connection-tracking table
// filled by traffic to the operator side and by conntrack -I.
#include <arpa/inet.h>
#include <time.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cmdlib/network.h"
#include "device.h"

namespace {

using devtest::calls;
using devtest::ip;
using devtest::outside;
using devtest::read_file;
using devtest::sh;
using devtest::sh_out;
using devtest::write_file;

std::string trim(std::string s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == ' ')) s.pop_back();
    return s;
}

bool contains(const std::vector<std::string> &v, const std::string &s) {
    return std::find(v.begin(), v.end(), s) != v.end();
}

class NetworkTest : public DeviceTest {};

TEST_F(NetworkTest, Ipv4AddressesMasksAndMacs) {
    char text[16] = "";
    ASSERT_EQ(cmd_get_ipv4_address("usb0", text), 0);
    EXPECT_STREQ(text, "10.64.0.2");
    ASSERT_EQ(cmd_get_netmask("br0", text), 0);
    EXPECT_STREQ(text, "255.255.255.0");
    EXPECT_EQ(cmd_ip_exist("br0"), 1);
    EXPECT_EQ(cmd_ip_exist("eth0"), 0);  // a bridge member has no address of its own
    EXPECT_EQ(cmd_get_ip("nosuchdev", nullptr), -1);
    EXPECT_EQ(cmd_get_ip("an-interface-name-far-too-long", nullptr), -1);
    EXPECT_EQ(cmd_get_ip(nullptr, nullptr), -1);

    ASSERT_TRUE(devtest::add_interface("tst0", "10.9.0.1/24"));
    ASSERT_EQ(util_config_ipv4_addr("tst0", "10.9.0.7"), 0);
    EXPECT_NE(sh_out("ip -4 -o addr show dev tst0").find("inet 10.9.0.7/"), std::string::npos);
    EXPECT_EQ(util_config_ipv4_addr("tst0", nullptr), -1);
    EXPECT_EQ(util_config_ipv4_addr("nosuchdev", "10.9.0.8"), -1);

    MacAddr mac;
    memset(&mac, 0xee, sizeof mac);
    ASSERT_EQ(cmd_netdev_get_mac_addr("usb0", &mac), 0);
    char mac_text[18];
    util_network_get_mac_string(mac.value, mac_text, sizeof mac_text);
    std::string want = trim(read_file("/sys/class/net/usb0/address"));
    std::transform(want.begin(), want.end(), want.begin(), ::toupper);
    EXPECT_EQ(mac_text, want);
    EXPECT_EQ(mac.align_bytes[0], 0);
    ip("link del tst0");
}

TEST_F(NetworkTest, RunningIsNotUpAndExistence) {
    char usb0[] = "usb0", tv0[] = "tv0", missing[] = "nosuchdev", us[] = "usb";
    EXPECT_EQ(util_is_one_network_interface_up(usb0), 1);
    // administratively up, but its peer is down: no carrier, not RUNNING
    ASSERT_EQ(ip("link add tv0 type veth peer name tv1"), 0);
    ASSERT_EQ(ip("link set tv0 up"), 0);
    EXPECT_EQ(util_is_one_network_interface_up(tv0), 0);
    ASSERT_EQ(ip("link set tv1 up"), 0);
    EXPECT_TRUE(devtest::wait_until([&] { return util_is_one_network_interface_up(tv0) == 1; }));
    EXPECT_EQ(util_is_one_network_interface_up(missing), 0);

    EXPECT_EQ(util_one_network_interface_exist(tv0), 1);
    EXPECT_EQ(util_one_network_interface_exist(us), 0);
    EXPECT_EQ(util_one_network_interface_exist(missing), 0);
    ip("link del tv0");
    EXPECT_EQ(util_one_network_interface_exist(tv0), 0);
}

TEST_F(NetworkTest, Ipv6AddressesFromTheKernel) {
    EXPECT_EQ(cmd_ipv6_exist("usb0"), 1);
    EXPECT_EQ(cmd_ipv6_exist("br0"), 0);  // link-local only
    EXPECT_EQ(cmd_ipv6_exist("lo"), 0);   // ::1 has host scope
    char text[64];
    ASSERT_EQ(cmd_get_global_ipv6_address("usb0", text, sizeof text), 0);
    EXPECT_STREQ(text, "2001:db8:64::2");
    ASSERT_EQ(cmd_get_link_local_ipv6_address("br0", text, sizeof text), 0);
    EXPECT_EQ(std::string(text).rfind("fe80::", 0), 0u);
    EXPECT_EQ(cmd_get_global_ipv6_address("br0", text, sizeof text), -1);
    EXPECT_EQ(cmd_get_global_ipv6_address("usb0", text, 5), -1);  // does not fit
    struct in6_addr a;
    ASSERT_EQ(cmd_get_binary_global_ipv6_address("usb0", &a), 0);
    EXPECT_EQ(a.s6_addr[15], 2);

    // an added address, then the route of its prefix deleted by name
    ASSERT_EQ(ip("-6 addr add 2001:db8:77::5/64 dev br0 nodad"), 0);
    EXPECT_EQ(cmd_ipv6_exist("br0"), 1);
    EXPECT_NE(sh_out("ip -6 route show dev br0").find("2001:db8:77::/64"), std::string::npos);
    char dev[] = "br0", prefix[] = "2001:db8:77::";
    util_network_del_ipv6_route_entry(dev, prefix, 64);
    EXPECT_EQ(sh_out("ip -6 route show dev br0").find("2001:db8:77::/64"), std::string::npos);
    // text with shell syntax stays one inert argument
    char evil[] = "br0;touch /tmp/pwned";
    util_network_del_ipv6_route_entry(evil, prefix, 64);
    EXPECT_FALSE(devtest::file_exists("/tmp/pwned"));
    ip("-6 addr del 2001:db8:77::5/64 dev br0");
}

TEST_F(NetworkTest, WanNameFromTheFirstRouteOnly) {
    EXPECT_STREQ(util_get_wan_interface_name_dynamically(), "usb0");
    ASSERT_TRUE(devtest::add_interface("wan9", "10.77.0.1/24"));
    ASSERT_EQ(ip("route replace default via 10.77.0.2 dev wan9"), 0);
    EXPECT_STREQ(util_get_wan_interface_name(), "wan9");
    EXPECT_STREQ(util_get_ipv6_wan_interface_name(), "wan9");
    // the default route moved to a policy table: the main table's first
    // route is no longer a default one and the name falls back to usb0
    ASSERT_EQ(ip("route del default"), 0);
    ASSERT_EQ(ip("route add default via 10.77.0.2 dev wan9 table 205"), 0);
    EXPECT_EQ(util_get_wan_interface_name_dynamically(), nullptr);
    EXPECT_STREQ(util_get_wan_interface_name(), "usb0");
    ip("route del default table 205");
    ip("route replace default via 10.64.0.1 dev usb0");
    ip("link del wan9");
}

TEST_F(NetworkTest, PppDeviceSearchStopsAtPpp8) {
    char dev[16] = "junk";
    EXPECT_EQ(util_get_ppp_net_dev(dev), -1);
    EXPECT_STREQ(dev, "");
    ASSERT_EQ(ip("link add ppp9 type veth peer name xppp9"), 0);
    EXPECT_EQ(util_get_ppp_net_dev(dev), -1);
    ASSERT_EQ(ip("link add ppp8 type veth peer name xppp8"), 0);
    EXPECT_EQ(util_get_ppp_net_dev(dev), 0);
    EXPECT_STREQ(dev, "ppp8");
    ASSERT_EQ(ip("link add ppp3 type veth peer name xppp3"), 0);
    EXPECT_EQ(util_get_ppp_net_dev(nullptr), 0);
    EXPECT_EQ(util_get_ppp_net_dev(dev), 0);
    EXPECT_STREQ(dev, "ppp3");
    for (const char *dev : {"ppp9", "ppp8", "ppp3"}) ip(std::string("link del ") + dev);
}

bool output_drop_rule(const char *tool) {
    return sh_out(std::string(tool) + " -S OUTPUT").find("-A OUTPUT -o usb0 -j DROP") !=
           std::string::npos;
}

TEST_F(NetworkTest, ForwardingSwitches) {
    util_disable_data_forward_and_output();  // blocks 10 s by design
    EXPECT_EQ(calls("rc.disable-wan-communication").size(), 1u);
    EXPECT_TRUE(output_drop_rule("iptables"));
    EXPECT_TRUE(output_drop_rule("ip6tables"));

    write_file("/tmp/cmdlib/.close_internet", "");
    util_enable_data_forward();
    EXPECT_TRUE(calls("rc.enable-wan-communication").empty());
    util_enable_data_forward_and_output();  // script skipped, rules still removed
    EXPECT_TRUE(calls("rc.enable-wan-communication").empty());
    EXPECT_FALSE(output_drop_rule("iptables"));
    EXPECT_FALSE(output_drop_rule("ip6tables"));

    devtest::remove_all("/tmp/cmdlib/.close_internet");
    for (const char *flag : {".have_enabled_data_forward_flag_file", ".listplmn.pid",
                             ".out_of_cell_id_limit"}) {
        write_file(std::string("/tmp/cmdlib/") + flag, "");
        util_enable_data_forward();
        devtest::remove_all(std::string("/tmp/cmdlib/") + flag);
        EXPECT_TRUE(calls("rc.enable-wan-communication").empty()) << flag;
    }
    util_enable_data_forward();
    EXPECT_EQ(calls("rc.enable-wan-communication").size(), 1u);
    util_disable_data_forward();
    EXPECT_EQ(calls("rc.disable-wan-communication").size(), 2u);
}

TEST_F(NetworkTest, DnsServersAndReport) {
    write_file("/var/run/resolv.conf",
               "search lan\n nameserver 10.64.0.53\nnameserver 2001:db8:64::53\n"
               "nameserver 10.64.0.54\nnameserver 10.64.0.55\n");
    char buffer[256];
    char *argv[8] = {};
    ASSERT_EQ(util_read_dns_info(buffer, argv, 1, 1, 0), 3);  // the limit is not the caller's
    EXPECT_STREQ(argv[2], "10.64.0.55");

    char out[1024];
    char v4[] = "ipv4", v6[] = "ipv6";
    ASSERT_EQ(util_get_dns(out, v4), 0);
    EXPECT_STREQ(out, " nameserver 10.64.0.53\nnameserver 10.64.0.54\nnameserver 10.64.0.55\n");
    write_file("/tmp/cmdlib/.manual_dns_conf_file", "nameserver 9.9.9.9\nnameserver ::9\n");
    ASSERT_EQ(util_get_dns(out, v6), 0);
    EXPECT_STREQ(out, "nameserver ::9\n");

    EXPECT_EQ(util_check_is_dns_server_valid(), 1);
    write_file("/var/run/resolv.conf", "nameserver 192.168.15.1\n");
    EXPECT_EQ(util_check_is_dns_server_valid(), 0);
    devtest::remove_all("/var/run/resolv.conf");
    EXPECT_EQ(util_check_is_dns_server_valid(), 0);
    EXPECT_EQ(util_read_dns_info(buffer, argv, 8, 1, 1), 0);
    devtest::remove_all("/tmp/cmdlib/.manual_dns_conf_file");
    EXPECT_EQ(util_get_dns(out, v4), 1);

    // the report script sees the WAN gateway and the first two IPv4 servers
    // (the simulator is a link to a binary of the build tree: replace the
    // link, never write through it)
    devtest::remove_all("/etc/qxscript/rc.save-wan-ip-info");
    write_file("/etc/qxscript/rc.save-wan-ip-info",
               "#!/bin/sh\necho \"$router|$dns\" >> /tmp/saved_wan_info\n", 0755);
    write_file("/var/run/resolv.conf",
               "nameserver 10.64.0.53\nnameserver fe80::1\nnameserver 10.64.0.54\n");
    util_read_default_gateway_and_dns_info_from_route_table();
    EXPECT_EQ(read_file("/tmp/saved_wan_info"), "10.64.0.1|10.64.0.53 10.64.0.54\n");
    // a hostile server entry reaches the script as plain text
    write_file("/var/run/resolv.conf", "nameserver $(touch${IFS}/tmp/pwned)\n");
    util_read_default_gateway_and_dns_info_from_route_table();
    EXPECT_FALSE(devtest::file_exists("/tmp/pwned"));
    EXPECT_EQ(read_file("/tmp/saved_wan_info"),
              "10.64.0.1|10.64.0.53 10.64.0.54\n10.64.0.1|$(touch${IFS}/tmp/pwned) \n");
    devtest::remove_all("/tmp/saved_wan_info");
    devtest::remove_all("/var/run/resolv.conf");
}

TEST_F(NetworkTest, NameResolutionAndSmallFiles) {
    write_file("/etc/hosts", "127.0.0.1 localhost\n10.1.2.3 box.test\n2001:db8::7 box.test\n");
    write_file("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:1 attempts:1\n");
    char v4[16] = "", v6[40] = "";
    int ind = -1;
    ASSERT_EQ(util_resolv_domain_name("box.test", v4, v6, &ind), 1);
    EXPECT_STREQ(v4, "10.1.2.3");
    EXPECT_STREQ(v6, "2001:0db8:0000:0000:0000:0000:0000:0007");
    EXPECT_EQ(ind, 6);
    EXPECT_EQ(util_resolv_domain_name("no-such-name.invalid", v4, v6, &ind), 0);
    EXPECT_EQ(ind, 0);

    char buf[32] = "junk";
    util_read_ip_address("/tmp/cmdlib/.wan_network_card_gateway", buf, sizeof buf);
    EXPECT_STREQ(buf, "");
    write_file("/tmp/cmdlib/.wan_network_card_gateway", "10.64.0.1\r\n\n");
    util_read_ip_address("/tmp/cmdlib/.wan_network_card_gateway", buf, sizeof buf);
    EXPECT_STREQ(buf, "10.64.0.1");
    char tiny[4];
    util_read_ip_address("/tmp/cmdlib/.wan_network_card_gateway", tiny, sizeof tiny);
    EXPECT_STREQ(tiny, "10.");

    EXPECT_EQ(util_should_check_invalid_wan_ip(), 0);
    write_file("/tmp/cmdlib/.enable_check_invalid_wan_ip_flag_file", "");
    EXPECT_EQ(util_should_check_invalid_wan_ip(), 1);
}

TEST_F(NetworkTest, WanHealth) {
    const char *ind = "/tmp/cmdlib/.system_signal_sim_status_ind";
    // registered; not registered; PIN needed; no signal; unreadable status
    for (const auto &[status, ok] : {std::pair<const char *, int>{"1 0 0 20 0 0 0 1 7 1\n", 1}, {"1 0 0 20 0 2 3 4 7 1\n", 0},
                                     {"1 1 0 20 0 1 1 1 7 1\n", 0}, {"1 0 0 0 0 1 1 1 7 1\n", 0}, {"1 0 0 20 0 1\n", 0}}) {
        write_file(ind, status);
        EXPECT_EQ(util_is_network_ok(), ok) << status;
    }
    write_file(ind, "1 0 0 20 0 1 1 1 7 1\n");
    for (std::string flag :
         {".please_use_specified_card", ".disconnect_from_lte_network_immediately"}) {
        write_file("/tmp/cmdlib/" + flag, "");
        EXPECT_EQ(util_is_network_ok(), 0) << flag;
        devtest::remove_all("/tmp/cmdlib/" + flag);
    }
    ASSERT_EQ(ip("addr flush dev usb0 scope global"), 0);
    EXPECT_EQ(util_is_network_ok(), 0);  // WAN has no IPv4 address
    ip("addr add 10.64.0.2/24 dev usb0");
    ip("route replace default via 10.64.0.1 dev usb0");
    EXPECT_EQ(util_is_network_ok(), 1);
}

TEST_F(NetworkTest, KernelArpTable) {
    ASSERT_TRUE(devtest::add_neighbour("192.168.1.50", "02:00:00:00:00:50"));
    ASSERT_TRUE(devtest::add_neighbour("192.168.1.51", "02:00:00:00:00:51", "br0", "stale"));
    ASSERT_EQ(ip("neigh add 192.168.1.52 dev br0 nud incomplete"), 0);  // flags 0x0
    ARPTable t;
    char br0[] = "br0", usb0[] = "usb0";
    ASSERT_EQ(util_get_arp_table_info(&t, br0), 0);
    std::vector<std::string> ips;  // in the kernel's hash order
    for (unsigned i = 0; i < t.count; ++i) ips.push_back(t.table[i].ip);
    std::sort(ips.begin(), ips.end());
    EXPECT_EQ(ips, (std::vector<std::string>{"192.168.1.50", "192.168.1.51"})) << "incomplete 192.168.1.52 is left out";
    ASSERT_EQ(util_get_arp_table_info(&t, usb0), 0);
    for (unsigned i = 0; i < t.count; ++i) EXPECT_STRNE(t.table[i].ip, "192.168.1.50");
    ip("neigh flush dev br0");
}

TEST_F(NetworkTest, GratuitousArpReachesTheLanHost) {
    // the firmware's arping (busybox): -s is the source address
    ASSERT_EQ(sh("ln -sf \"$(command -v busybox)\" /usr/local/sbin/arping"), 0);
    // the LAN host holds a stale entry for the router with a wrong MAC; the
    // unsolicited reply corrects it (the kernel updates, never creates,
    // entries from unsolicited ARP)
    ASSERT_EQ(outside("ip neigh replace 192.168.1.1 lladdr 02:de:ad:00:00:01 dev lan0 nud stale"), 0);
    std::string br0_mac = trim(read_file("/sys/class/net/br0/address"));
    usleep(1100 * 1000);  // past the entry's lock time: a plain reply may now override it
    util_update_neighbour_arp_cache("br0", "192.168.1.1");
    EXPECT_TRUE(devtest::wait_until([&] { return outside("ip neigh show 192.168.1.1 dev lan0 | grep -q " + br0_mac) == 0; }));
}

TEST_F(NetworkTest, ArpScanAndConnectedDevices) {
    devtest::set_answer("arpscan",
                        "02:00:00:00:00:10\t192.168.1.10\n"
                        "02:00:00:00:00:99 192.168.1.20\n"
                        "02:00:00:00:00:50 192.168.1.50\n");
    char br0[] = "br0", file[] = "/tmp/scan_result";
    util_detect_arp_entries(br0, file);
    EXPECT_TRUE(contains(calls("arpscan"), "arpscan -a br0 192.168.1.1/24"));
    EXPECT_NE(read_file(file).find("192.168.1.50"), std::string::npos);

    // a /16 LAN is never scanned; the old result is gone
    ASSERT_TRUE(devtest::add_interface("lan16", "10.20.0.1/16"));
    char lan16[] = "lan16";
    devtest::clear_calls();
    util_detect_arp_entries(lan16, file);
    EXPECT_TRUE(calls("arpscan").empty());
    EXPECT_FALSE(devtest::file_exists(file));
    ip("link del lan16");

    long now = static_cast<long>(time(nullptr));
    write_file("/tmp/dnsmasq.leases",
               std::to_string(now + 600) + " 02:00:00:00:00:10 192.168.1.10 laptop *\n" +
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
    // the scan went to a fresh scratch file that is removed afterwards
    EXPECT_EQ(sh("ls /tmp/.cmdlib_tmp_* >/dev/null 2>&1"), 2);

    devtest::remove_all("/tmp/dnsmasq.leases");
    ASSERT_EQ(util_get_device_connected_to_this_device(&h), 0);
    EXPECT_EQ(h.count, 3);  // scan rows alone
    devtest::reset_answers();
}

TEST_F(NetworkTest, WifiStations) {
    devtest::set_answer("wlanconfig",
                        "ADDR               AID CHAN TXRATE RXRATE RSSI IDLE\n"
                        "00:11:22:33:44:55    1   36   866M   780M   40    0\n"
                        "short line\n"
                        "00:11:22:33:44:66    2   36   866M   780M   41    0\n");
    ARPTable t;
    ASSERT_EQ(util_get_all_wlan_clients(&t), 0);
    EXPECT_TRUE(contains(calls("wlanconfig"), "wlanconfig ath0 list sta"));
    ASSERT_EQ(t.count, 2u);
    EXPECT_STREQ(t.table[1].mac, "00:11:22:33:44:66");
    devtest::reset_answers();
}

// ---- connection tracking ------------------------------------------------------

class ConntrackTest : public DeviceTest {
  protected:
    static void SetUpTestSuite() {
        // conntrack starts tracking in a namespace once a rule needs it
        sh("iptables -t nat -A POSTROUTING -o usb0 -j MASQUERADE");
        // remote hosts on the operator side
        outside("ip addr add 8.8.8.8/32 dev wan0");
        outside("ip addr add 93.184.216.34/32 dev wan0");
        outside("busybox httpd -p 93.184.216.34:80 -h /tmp");
    }
    void SetUp() override {
        DeviceTest::SetUp();
        sh("conntrack -F >/dev/null 2>&1");
        write_file("/tmp/cmdlib/.wan_network_card_gateway", "10.64.0.1\n");
    }
    static int insert(const std::string &args) {
        return sh("conntrack -I " + args + " >/dev/null 2>&1");
    }
};

TEST_F(ConntrackTest, CollectorOnRealTraffic) {
    ASSERT_EQ(sh("busybox ping -c1 -W2 8.8.8.8 >/dev/null"), 0);
    ASSERT_EQ(sh("busybox ping -c1 -W2 10.64.0.1 >/dev/null"), 0);  // the gateway
    ASSERT_EQ(insert("-p udp -s 10.64.0.2 -d 8.8.4.4 --sport 40000 --dport 53 --reply-src 8.8.4.4 "
                     "--reply-dst 10.64.0.2 --reply-port-src 53 --reply-port-dst 40000 "
                     "--status ASSURED,SEEN_REPLY -t 170"),
              0);
    ASSERT_EQ(sh("curl -s -m 3 -o /dev/null http://93.184.216.34/"), 0);

    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    max_udp_timeout = 0;
    ASSERT_EQ(util_collect_dns_and_icmp_dest_ip(&info), 0);
    EXPECT_EQ(info.network_is_ok, 1);
    ASSERT_EQ(info.valid_icmp_ip_count, 1);
    EXPECT_STREQ(info.icmp_ip_address[0], "8.8.8.8");
    std::vector<std::string> dns(info.dns_ip, info.dns_ip + info.valid_dns_ip_count);
    EXPECT_TRUE(contains(dns, "8.8.4.4")) << sh_out("cat /proc/net/nf_conntrack");
    EXPECT_TRUE(contains(dns, "93.184.216.34")) << sh_out("cat /proc/net/nf_conntrack");
    EXPECT_GE(max_udp_timeout, 160);

    // only the gateway answered pings: nothing proves the Internet
    sh("conntrack -F >/dev/null 2>&1");
    ASSERT_EQ(sh("busybox ping -c1 -W2 10.64.0.1 >/dev/null"), 0);
    DestIPInConntrackInfo gw;
    memset(&gw, 0, sizeof gw);
    ASSERT_EQ(util_collect_dns_and_icmp_dest_ip(&gw), 0);
    EXPECT_EQ(gw.network_is_ok, 0);
    EXPECT_EQ(gw.valid_icmp_ip_count, 0);

    // the WAN without an address
    ip("addr flush dev usb0 scope global");
    EXPECT_EQ(util_collect_dns_and_icmp_dest_ip(&gw), -1);
    ip("addr add 10.64.0.2/24 dev usb0");
    ip("route replace default via 10.64.0.1 dev usb0");
}

TEST_F(ConntrackTest, NatSessionTable) {
    // a forwarded, translated LAN session; an unanswered one; a session to
    // the router's LAN address; an established router-originated one
    ASSERT_EQ(insert("-p tcp -s 192.168.1.100 -d 93.184.216.34 --sport 40001 --dport 443 "
                     "--reply-src 93.184.216.34 --reply-dst 10.64.0.2 --reply-port-src 443 "
                     "--reply-port-dst 61001 --state ESTABLISHED --status ASSURED,SEEN_REPLY -t 300"),
              0);
    ASSERT_EQ(insert("-p udp -s 192.168.1.100 -d 8.8.8.8 --sport 40002 --dport 53 --reply-src 8.8.8.8 "
                     "--reply-dst 10.64.0.2 --reply-port-src 53 --reply-port-dst 40002 -t 30"),
              0);
    ASSERT_EQ(insert("-p tcp -s 192.168.1.100 -d 10.0.0.9 --sport 40003 --dport 22 "
                     "--reply-src 10.0.0.9 --reply-dst 192.168.1.100 --reply-port-src 22 "
                     "--reply-port-dst 40003 --state TIME_WAIT -t 30"),
              0);
    ASSERT_EQ(insert("-p tcp -s 192.168.1.100 -d 192.168.1.1 --sport 40004 --dport 80 "
                     "--reply-src 192.168.1.1 --reply-dst 192.168.1.100 --reply-port-src 80 "
                     "--reply-port-dst 40004 --state ESTABLISHED --status ASSURED,SEEN_REPLY -t 300"),
              0);
    write_file("/tmp/sessions", "previous table\n");
    ASSERT_EQ(util_gen_nat_session_table("/tmp/sessions"), 0);
    std::string table = read_file("/tmp/sessions");
    EXPECT_NE(table.find("TCP|192.168.1.100|40001|61001|93.184.216.34|443|WAN\n"),
              std::string::npos)
        << table << sh_out("cat /proc/net/nf_conntrack");
    EXPECT_NE(table.find("TCP|192.168.1.100|40004|40004|192.168.1.1|80|LAN\n"), std::string::npos)
        << table;
    EXPECT_EQ(table.find("|53|"), std::string::npos) << table;  // unreplied
    EXPECT_EQ(table.find("|22|"), std::string::npos) << table;  // not established
    EXPECT_EQ(table.find("previous"), std::string::npos);
    EXPECT_FALSE(devtest::file_exists("/tmp/.nat_output"));
    EXPECT_EQ(util_gen_nat_session_table(nullptr), -1);
}

}  // namespace
