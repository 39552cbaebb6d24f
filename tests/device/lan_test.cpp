// LAN services against the real things inside the device: udhcpd started
// from the generated configuration and busybox udhcpc on LAN hosts, the
// lease file of a real dnsmasq, the kernel's IPv6 addresses and routes,
// the resolver file, and the MAC records file shared by two processes.
// The composed texts themselves are checked in the unit tests.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/mac.h"
#include "cmdlib/network.h"
#include "device.h"

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

namespace {

std::vector<std::string> lines_of(const std::string &path) {
    std::vector<std::string> lines;
    std::istringstream in(devtest::read_file(path));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Command lines of the real tools the library ran, logged by wrappers put
// first on PATH.
std::vector<std::string> tool_calls() { return lines_of("/tmp/tool-calls"); }

class LanTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        devtest::remove_all("/tmp/tool-calls");
    }
    static void SetUpTestSuite() {
        if (!devtest::in_device()) return;
        for (std::string tool : {"ip", "route", "udhcpd", "killall"}) {
            std::string real = devtest::sh_out("command -v " + tool);
            devtest::write_file("/tmp/logbin/" + tool, "#!/bin/sh\necho \"" + tool + " $*\" >>/tmp/tool-calls\nexec " +
                                                           real.substr(0, real.find('\n')) + " \"$@\"\n",
                                0755);
        }
        setenv("PATH", ("/tmp/logbin:" + std::string(getenv("PATH"))).c_str(), 1);
        ASSERT_TRUE(devtest::add_lan_host("lh1", "02:11:22:33:44:01"));
        ASSERT_TRUE(devtest::add_lan_host("lh2", "02:11:22:33:44:02"));
        devtest::write_file("/tmp/udhcpc-script",
                            "#!/bin/sh\n[ \"$1\" = bound ] && echo $ip $router $subnet $lease $dns >/tmp/lease-$interface\n",
                            0755);
    }
};

// Runs busybox udhcpc on a LAN host until it holds a lease (five tries):
// "address router netmask seconds dns...", or "" without a lease.
std::string lease(const std::string &host, const std::string &options = "") {
    devtest::remove_all("/tmp/lease-" + host);
    devtest::outside("busybox udhcpc -i " + host + " -q -n -f -t 5 -T 1 " + options +
                     " -s /tmp/udhcpc-script >/dev/null 2>&1");
    std::string got = devtest::read_file("/tmp/lease-" + host);
    return got.substr(0, got.find('\n'));
}

using Settings = std::vector<std::pair<const char *, const char *>>;

void restart(Settings extra) {
    Settings s = {{"AP_IPADDR", "192.168.1.1"},          {"AP_NETMASK", "255.255.255.0"},
                  {"QX_DHCP_IP_BEGIN", "192.168.1.150"}, {"QX_DHCP_IP_END", "192.168.1.160"},
                  {"QX_DHCP_EXPIRE_TIME", "600"}};
    s.insert(s.end(), extra.begin(), extra.end());
    std::vector<ConfigKeyValuePair> pairs(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        snprintf(pairs[i].key, sizeof pairs[i].key, "%s", s[i].first);
        snprintf(pairs[i].value, sizeof pairs[i].value, "%s", s[i].second);
    }
    EXPECT_EQ(util_dhcp_restart_udhcpd_server(pairs.data(), static_cast<int>(pairs.size())), 0);
}

std::string udhcpd_pid() {
    std::string pids;
    devtest::wait_until([&] { return !(pids = devtest::sh_out("pidof udhcpd")).empty(); });
    return pids;
}

// ---- udhcpd -----------------------------------------------------------------------

TEST_F(LanTest, NormalModeServesThePoolWithTheConfiguredOptionsAndHostEntries) {
    const std::string hosts = "# fixed hosts\nstatic_lease 02:11:22:33:44:02 192.168.1.177\n";
    devtest::write_file("/mnt/data/etc/qxcfg/dhcp_hosts", hosts);
    restart({{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", "10.64.0.53"}, {"QX_DNS_SECONDARY", "10.64.0.54"}});
    std::string conf = devtest::read_file("/tmp/cmdlib/udhcpd.conf");
    EXPECT_EQ(conf.substr(conf.size() - std::min(conf.size(), hosts.size())), hosts);
    EXPECT_THAT(tool_calls(), ElementsAre("killall udhcpd", "udhcpd /tmp/cmdlib/udhcpd.conf"));
    ASSERT_FALSE(udhcpd_pid().empty());
    // No wish: the server picks from the pool.
    EXPECT_THAT(lease("lh1"), MatchesRegex("192\\.168\\.1\\.(15[0-9]|160) 192\\.168\\.1\\.1 255\\.255\\.255\\.0 600 "
                                           "10\\.64\\.0\\.53 10\\.64\\.0\\.54"));
    EXPECT_THAT(lease("lh2"), MatchesRegex("192\\.168\\.1\\.177 .*"));  // the host entry
    devtest::remove_all("/mnt/data/etc/qxcfg/dhcp_hosts");
}

TEST_F(LanTest, RestartReplacesTheServerUnlessDisabled) {
    restart({});
    std::string first = udhcpd_pid();
    restart({{"QX_GET_DNS_AUTO", "yes"}, {"QX_DNS_PRIMARY", "10.64.0.53"}});
    std::string second;
    EXPECT_TRUE(devtest::wait_until([&] { return (second = udhcpd_pid()) != first && second.find(' ') == second.npos; }))
        << first << " -> " << second;
    // Automatic DNS: the router itself.
    EXPECT_THAT(lease("lh1", "-r 192.168.1.151"), MatchesRegex("192\\.168\\.1\\.(15[0-9]|160) .* 192\\.168\\.1\\.1"));

    devtest::remove_all("/tmp/tool-calls");
    restart({{"QX_ENABLE_DHCP_SERVER", "no"}});
    EXPECT_THAT(tool_calls(), ElementsAre());
    EXPECT_EQ(lines_of("/tmp/cmdlib/udhcpd.conf").size(), 3u);
    EXPECT_EQ(udhcpd_pid(), second);
}

TEST_F(LanTest, PassThroughHandsTheWanAddressToItsHost) {
    devtest::write_file("/tmp/cmdlib/.wan_network_card_gateway", "10.64.0.1\n");
    devtest::write_file("/tmp/cmdlib/.wan_network_card_ip", "10.64.0.2\r\n");
    devtest::write_file("/tmp/cmdlib/.wan_dns1_ip_address", "10.64.0.53\n");
    devtest::write_file("/tmp/cmdlib/.wan_dns2_ip_address", "10.64.0.54\n");
    restart({{"QX_IP_PASS_THROUGH_ENABLE", "yes"}, {"QX_IP_PASS_THROUGH_MAC", "02:11:22:33:44:01"},
             {"QX_ENABLE_DHCP_SERVER", "no"}});
    ASSERT_FALSE(udhcpd_pid().empty());
    EXPECT_EQ(lease("lh1"), "10.64.0.2 10.64.0.1 255.255.255.255 120 10.64.0.53 10.64.0.54");
    devtest::sh("killall udhcpd");
}

// ---- dnsmasq leases -----------------------------------------------------------------

TEST_F(LanTest, ClientListFromRealDnsmasqLeases) {
    devtest::sh("killall udhcpd");
    ASSERT_TRUE(devtest::wait_until([] { return devtest::sh_out("pidof udhcpd").empty(); }));
    devtest::remove_all("/tmp/dnsmasq.leases");
    ASSERT_EQ(devtest::sh("dnsmasq --port=0 --interface=br0 --bind-interfaces --no-ping --dhcp-range=192.168.1.50,"
                          "192.168.1.60,1h --dhcp-leasefile=/tmp/dnsmasq.leases --pid-file=/tmp/dnsmasq-lan.pid"),
              0);
    ASSERT_NE(lease("lh1", "-x hostname:laptop-anna"), "");
    ASSERT_NE(lease("lh2", "-x hostname:phone-ben"), "");
    ASSERT_TRUE(devtest::wait_until([] { return lines_of("/tmp/dnsmasq.leases").size() == 2; }));

    DHCPClientInfo list[4];
    long before = time(nullptr);
    ASSERT_EQ(util_get_dhcp_client_list(list, 0), 2);
    long after = time(nullptr);
    // Each lease line "expiry mac ip name client-id" is a client whose time
    // left is the expiry less the clock while reading.
    for (const std::string &line : lines_of("/tmp/dnsmasq.leases")) {
        std::istringstream w(line);
        long expiry = 0;
        std::string mac, ip, name;
        w >> expiry >> mac >> ip >> name;
        auto c = std::find_if(list, list + 2, [&](const DHCPClientInfo &x) { return mac == x.mac; });
        ASSERT_NE(c, list + 2) << line;
        EXPECT_EQ(std::string(c->ip) + " " + c->hostname, ip + " " + name);
        EXPECT_TRUE(c->expires >= expiry - after && c->expires <= expiry - before) << c->expires;
        EXPECT_TRUE(name == "laptop-anna" || name == "phone-ben") << name;
    }
    devtest::sh("kill $(cat /tmp/dnsmasq-lan.pid)");
}

// ---- IPv6 ---------------------------------------------------------------------------

std::string addrs(const std::string &dev, const std::string &scope) {
    return devtest::sh_out("ip -6 -o addr show dev " + dev + " scope " + scope + " | awk '{print $4}'");
}

TEST_F(LanTest, InterfaceIdentifierInstallsTheLinkLocalAddressOnlyWhenItChanges) {
    struct in6_addr id;
    ASSERT_EQ(inet_pton(AF_INET6, "fe80::0211:22ff:fe33:4455", &id), 1);
    EXPECT_EQ(util_write_interface_id(&id, "usb0"), 0);
    EXPECT_THAT(tool_calls(), ElementsAre("ip -f inet6 addr flush dev usb0 scope link",
                                          "ip -f inet6 addr add fe80::0211:22ff:fe33:4455/64 dev usb0 scope link"));
    EXPECT_EQ(addrs("usb0", "link"), "fe80::211:22ff:fe33:4455/64\n");

    // Same identifier: nothing is flushed, the file is written again.
    devtest::ip("-6 addr add fe80::99/64 dev usb0 scope link");
    devtest::write_file("/tmp/cmdlib/cmdlib_modem_interface_id", "::211:22ff:fe33:4455");
    devtest::remove_all("/tmp/tool-calls");
    EXPECT_EQ(util_write_interface_id(&id, "usb0"), 0);
    EXPECT_THAT(tool_calls(), ElementsAre());
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/cmdlib_modem_interface_id"), "::0211:22ff:fe33:4455\n");

    // The MAC's identifier instead of the acquired one: the address changes.
    devtest::write_file("/tmp/cmdlib/.NOT_USE_ACQUIRED_IPV6_INTERFACE_ID", "");
    ASSERT_EQ(devtest::ip("link set usb0 address 06:aa:bb:cc:dd:ee"), 0);
    EXPECT_EQ(util_write_interface_id(&id, "usb0"), 0);
    EXPECT_EQ(addrs("usb0", "link"), "fe80::4aa:bbff:fecc:ddee/64\n");
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/cmdlib_modem_interface_id"), "::04aa:bbff:fecc:ddee\n");
}

TEST_F(LanTest, GlobalAddressesFromPrefixAndDefaultRoute) {
    EUI64 eui = {{0x02, 0x11, 0x22, 0xff, 0xfe, 0x33, 0x44, 0x55}};
    config_ipv6_addr("2001:db8:100:7::", &eui, "usb0", 0);
    EXPECT_THAT(tool_calls(),
                ElementsAre("ip -f inet6 addr flush dev usb0 scope global", "ip -f inet6 addr flush dev br0 scope global",
                            "ip -f inet6 addr add 2001:0db8:0100:0007:0211:22ff:fe33:4455/128 dev usb0 scope global",
                            "ip -f inet6 addr add 2001:0db8:0100:0007:0211:22ff:fe33:4455/64 dev br0 scope global"));
    EXPECT_EQ(addrs("usb0", "global") + addrs("br0", "global"),
              "2001:db8:100:7:211:22ff:fe33:4455/128\n2001:db8:100:7:211:22ff:fe33:4455/64\n");
    // The stored identifier when the modem gave one.
    devtest::write_file("/tmp/cmdlib/cmdlib_modem_interface_id", "::0aff:fe40:2\n");
    config_ipv6_addr("2001:db8:200::", nullptr, "usb0", 1);
    EXPECT_EQ(addrs("usb0", "global"), "2001:db8:200::aff:fe40:2/128\n");
    // A bad prefix still takes the old addresses away.
    config_ipv6_addr("2001:db8:zz::", &eui, "usb0", 0);
    EXPECT_EQ(addrs("usb0", "global") + addrs("br0", "global"), "");

    // The operator's router answers on its link-local address.
    std::string gw = devtest::sh_out("nsenter --net=/var/lib/device/ns/operator ip -6 -o addr show dev wan0 "
                                     "scope link | awk '{print $4}' | cut -d/ -f1 | tr -d '\\n'");
    devtest::remove_all("/tmp/tool-calls");
    config_default_ipv6_gateway(gw.c_str(), "usb0");
    EXPECT_THAT(tool_calls(), ElementsAre("ip -6 route del ::1/0", "ip -6 route del ::1/0",
                                          "route -A inet6 add ::1/0 gw " + gw + " dev usb0"));
    EXPECT_EQ(devtest::sh_out("ip -6 route show default | awk '{print $1, $2, $3, $4, $5}'"),
              "default via " + gw + " dev usb0\n");
}

TEST_F(LanTest, DnsServersRewriteTheResolverAndRestartTheServices) {
    devtest::write_file("/var/run/resolv.conf", "search lan\nnameserver 10.64.0.53\nnameserver 2001:db8::1\n");
    config_ipv6_dns_server_address("2001:db8:64::53", "2001:db8:64::54", 2, 0);
    EXPECT_EQ(devtest::read_file("/var/run/resolv.conf"),
              "search lan\nnameserver 10.64.0.53\nnameserver 2001:db8:64::53\nnameserver 2001:db8:64::54\n");
    EXPECT_EQ(devtest::sh_out("stat -c %a /var/run/resolv.conf"), "666\n");
    EXPECT_FALSE(devtest::file_exists("/etc/resolv_slaac.conf"));
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list") + "|" +
                  devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list_comma"),
              "2001:db8:64::53 2001:db8:64::54|2001:db8:64::53,2001:db8:64::54");
    ASSERT_TRUE(devtest::wait_for_calls("rc.ipv6.dhcp6s", 1) && devtest::wait_for_calls("rc.ipv6.radvd", 1));
    EXPECT_TRUE(devtest::calls("rc.ipv6.totd").empty());

    // One server, NAT64 on, and no resolver file to start from.
    devtest::remove_all("/var/run/resolv.conf");
    config_ipv6_dns_server_address("2001:db8:64::53", "2001:db8:64::54", 1, 1);
    EXPECT_EQ(devtest::read_file("/var/run/resolv.conf"), "nameserver 2001:db8:64::53\n");
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list") + "|" +
                  devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list_comma"),
              "2001:db8:64::53|2001:db8:64::53");
    EXPECT_THAT(devtest::calls("rc.ipv6.totd"), ElementsAre("/etc/rc.d/rc.ipv6.totd"));
}

TEST_F(LanTest, HostileTextRunsNothing) {
    struct in6_addr id = {};
    config_enable_sharing_64prefix_to_a_lan("2001:db8::1;touch /tmp/pwned1", "usb0");
    config_default_ipv6_gateway("fe80::1 dev lo;touch /tmp/pwned2", "usb0$(touch /tmp/pwned3)");
    util_write_interface_id(&id, "usb0`touch /tmp/pwned4`");
    config_ipv6_addr("2001:db8::", nullptr, "usb0|touch /tmp/pwned5", 0);
    EXPECT_EQ(devtest::sh_out("ls /tmp | grep -c pwned"), "0\n");
}

// ---- MAC records shared by two processes --------------------------------------------

// Loads `rounds` times, saving `mine` every other round; every load must be
// one of the sets, whole.  Returns the number of loads that were not.
int load_and_save(const MacControlInfo *mine, const MacControlInfo *a, const MacControlInfo *b, int rounds) {
    int torn = 0;
    auto seen = std::make_unique<MacControlInfo>();
    for (int i = 0; i < rounds; ++i) {
        if (i % 2 == 0) util_save_mac_control_info(const_cast<MacControlInfo *>(mine), 0);
        memset(seen.get(), 0, sizeof *seen);
        util_read_mac_control_info(seen.get(), 0);
        torn += memcmp(seen.get(), a, sizeof *a) != 0 && memcmp(seen.get(), b, sizeof *b) != 0;
    }
    return torn;
}

TEST_F(LanTest, TwoProcessesSavingAndLoadingSeeWholeRecordSets) {
    // Every byte of a set tells which set it is, so a mix shows.
    auto a = std::make_unique<MacControlInfo>(), b = std::make_unique<MacControlInfo>();
    memset(a.get(), 'A', sizeof *a);
    memset(b.get(), 'B', sizeof *b);
    a->mac_count = 20, b->mac_count = 7;
    util_save_mac_control_info(a.get(), 0);
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(std::min(load_and_save(b.get(), a.get(), b.get(), 3000), 100));
    EXPECT_EQ(load_and_save(a.get(), a.get(), b.get(), 3000), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "torn loads in the other process: " << status;
    // No scratch file is left behind.
    EXPECT_EQ(devtest::sh_out("ls -a /tmp/cmdlib | grep -c mac_control_info_file"), "1\n");
}

}  // namespace
