// LAN services against the real things inside the device: udhcpd started
// from the generated configuration and busybox udhcpc on LAN hosts, the
// lease file of a real dnsmasq, the kernel's IPv6 addresses and routes,
// the resolver file, and the MAC records file shared by two processes.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/mac.h"
#include "cmdlib/network.h"
#include "device.h"

using ::testing::ElementsAre;

namespace {

constexpr char kHost1Mac[] = "02:11:22:33:44:01";
constexpr char kHost2Mac[] = "02:11:22:33:44:02";

// The real tools the library runs, each behind a wrapper first on PATH
// that appends its command line to /tmp/tool-calls.
constexpr const char *kLoggedTools[] = {"ip", "route", "udhcpd", "killall"};

std::vector<std::string> tool_calls() {
    std::vector<std::string> lines;
    std::istringstream in(devtest::read_file("/tmp/tool-calls"));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class LanTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        devtest::remove_all("/tmp/tool-calls");
    }
    static void SetUpTestSuite() {
        if (!devtest::in_device()) return;
        for (const char *tool : kLoggedTools) {
            std::string real = devtest::sh_out(std::string("command -v ") + tool);
            real.erase(real.find_last_not_of('\n') + 1);
            devtest::write_file(std::string("/tmp/logbin/") + tool,
                                "#!/bin/sh\necho \"" + std::string(tool) + " $*\" >>/tmp/tool-calls\nexec " + real +
                                    " \"$@\"\n",
                                0755);
        }
        setenv("PATH", ("/tmp/logbin:" + std::string(getenv("PATH"))).c_str(), 1);
        ASSERT_TRUE(devtest::add_lan_host("lh1", kHost1Mac));
        ASSERT_TRUE(devtest::add_lan_host("lh2", kHost2Mac));
        // What udhcpc learns, one file per interface, key=value words.
        devtest::write_file("/tmp/udhcpc-script",
                            "#!/bin/sh\n[ \"$1\" = bound ] && echo \"ip=$ip router=$router subnet=$subnet "
                            "lease=$lease dns=$(echo $dns | tr ' ' ,)\" >/tmp/lease-$interface\nexit 0\n",
                            0755);
    }
};

using Lease = std::map<std::string, std::string>;

// Runs busybox udhcpc on a LAN host until it holds a lease (it gives up
// after five tries): what the server gave it, empty when nothing.
Lease obtain_lease(const std::string &host, const std::string &options = "") {
    devtest::remove_all("/tmp/lease-" + host);
    devtest::outside("busybox udhcpc -i " + host + " -q -n -f -t 5 -T 1 " + options +
                     " -s /tmp/udhcpc-script >/dev/null 2>&1");
    Lease lease;
    std::istringstream words(devtest::read_file("/tmp/lease-" + host));
    for (std::string w; words >> w;)
        if (auto eq = w.find('='); eq != std::string::npos) lease[w.substr(0, eq)] = w.substr(eq + 1);
    return lease;
}

std::vector<ConfigKeyValuePair> pairs(const std::vector<std::pair<const char *, const char *>> &settings) {
    std::vector<ConfigKeyValuePair> out(settings.size());
    for (size_t i = 0; i < settings.size(); ++i) {
        snprintf(out[i].key, sizeof out[i].key, "%s", settings[i].first);
        snprintf(out[i].value, sizeof out[i].value, "%s", settings[i].second);
    }
    return out;
}

void restart(const std::vector<std::pair<const char *, const char *>> &settings) {
    auto p = pairs(settings);
    EXPECT_EQ(util_dhcp_restart_udhcpd_server(p.data(), static_cast<int>(p.size())), 0);
}

bool in_pool(const std::string &ip, unsigned long first, unsigned long last) {
    const std::string net = "192.168.1.";
    if (ip.compare(0, net.size(), net) != 0 || ip.size() == net.size()) return false;
    char *end = nullptr;
    unsigned long n = strtoul(ip.c_str() + net.size(), &end, 10);
    return *end == '\0' && n >= first && n <= last;
}

std::string udhcpd_pids() { return devtest::sh_out("pidof udhcpd"); }

const std::vector<std::pair<const char *, const char *>> kLan = {
    {"AP_IPADDR", "192.168.1.1"},          {"AP_NETMASK", "255.255.255.0"},
    {"QX_DHCP_IP_BEGIN", "192.168.1.150"}, {"QX_DHCP_IP_END", "192.168.1.160"},
    {"QX_DHCP_EXPIRE_TIME", "600"},
};

auto with(std::vector<std::pair<const char *, const char *>> base,
          const std::vector<std::pair<const char *, const char *>> &more) {
    base.insert(base.end(), more.begin(), more.end());
    return base;
}

// ---- udhcpd -----------------------------------------------------------------------

TEST_F(LanTest, NormalModeServesThePoolWithTheConfiguredOptionsAndHostEntries) {
    const std::string hosts = "# fixed hosts\nstatic_lease 02:11:22:33:44:02 192.168.1.177\n";
    devtest::write_file("/mnt/data/etc/qxcfg/dhcp_hosts", hosts);
    restart(with(kLan, {{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", "10.64.0.53"}, {"QX_DNS_SECONDARY", "10.64.0.54"}}));
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/udhcpd.conf"),
              "interface br0\npidfile /var/run/udhcpd.pid\nlease_file /var/lib/misc/udhcpd.leases\n"
              "option router 192.168.1.1\noption subnet 255.255.255.0\nstart 192.168.1.150\n"
              "end 192.168.1.160\noption dns 10.64.0.53\noption dns 10.64.0.54\noption lease 600\n"
              "remaining\tyes\nauto_time\t2\n" + hosts);
    EXPECT_THAT(tool_calls(), ElementsAre("killall udhcpd", "udhcpd /tmp/cmdlib/udhcpd.conf"));
    ASSERT_TRUE(devtest::wait_until([] { return !udhcpd_pids().empty(); }));

    Lease got = obtain_lease("lh1");  // no wish: the server picks
    ASSERT_FALSE(got.empty()) << "no lease";
    EXPECT_TRUE(in_pool(got["ip"], 150, 160)) << got["ip"];
    EXPECT_EQ(got["router"], "192.168.1.1");
    EXPECT_EQ(got["subnet"], "255.255.255.0");
    EXPECT_EQ(got["dns"], "10.64.0.53,10.64.0.54");
    EXPECT_EQ(got["lease"], "600");
    // The host entry reached the server as it was written.
    EXPECT_EQ(obtain_lease("lh2")["ip"], "192.168.1.177");
    devtest::remove_all("/mnt/data/etc/qxcfg/dhcp_hosts");
}

TEST_F(LanTest, AutomaticDnsNamesTheRouterAndTheServerIsReplaced) {
    restart(kLan);
    ASSERT_TRUE(devtest::wait_until([] { return !udhcpd_pids().empty(); }));
    std::string before = udhcpd_pids();
    restart(with(kLan, {{"QX_GET_DNS_AUTO", "yes"}, {"QX_DNS_PRIMARY", "10.64.0.53"}}));
    // One server, a new one.
    ASSERT_TRUE(devtest::wait_until([&] {
        std::string now = udhcpd_pids();
        return !now.empty() && now != before && now.find(' ') == std::string::npos;
    })) << before << " -> " << udhcpd_pids();
    Lease got = obtain_lease("lh1", "-r 192.168.1.151");
    EXPECT_TRUE(in_pool(got["ip"], 150, 160)) << got["ip"];
    EXPECT_EQ(got["dns"], "192.168.1.1");
}

TEST_F(LanTest, DisabledServerLeavesTheRunningOneAlone) {
    restart(kLan);
    ASSERT_TRUE(devtest::wait_until([] { return !udhcpd_pids().empty(); }));
    std::string running = udhcpd_pids();
    devtest::remove_all("/tmp/tool-calls");
    restart(with(kLan, {{"QX_ENABLE_DHCP_SERVER", "no"}}));
    EXPECT_THAT(tool_calls(), ElementsAre());
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/udhcpd.conf"),
              "interface br0\npidfile /var/run/udhcpd.pid\nlease_file /var/lib/misc/udhcpd.leases\n");
    EXPECT_EQ(udhcpd_pids(), running);
}

TEST_F(LanTest, PassThroughHandsTheWanAddressToItsHost) {
    devtest::write_file("/tmp/cmdlib/.wan_network_card_gateway", "10.64.0.1\n");
    devtest::write_file("/tmp/cmdlib/.wan_network_card_ip", "10.64.0.2\r\n");
    devtest::write_file("/tmp/cmdlib/.wan_network_card_netmask", "255.255.255.0\n");
    devtest::write_file("/tmp/cmdlib/.wan_dns1_ip_address", "10.64.0.53\n");
    devtest::write_file("/tmp/cmdlib/.wan_dns2_ip_address", "10.64.0.54\n");
    devtest::write_file("/var/lib/misc/udhcpd.leases", "stale");
    restart(with(kLan, {{"QX_IP_PASS_THROUGH_ENABLE", "yes"}, {"QX_IP_PASS_THROUGH_MAC", kHost1Mac},
                        {"QX_ENABLE_DHCP_SERVER", "no"}}));
    ASSERT_TRUE(devtest::wait_until([] { return !udhcpd_pids().empty(); }));
    EXPECT_NE(devtest::read_file("/var/lib/misc/udhcpd.leases"), "stale");
    Lease got = obtain_lease("lh1");
    EXPECT_EQ(got["ip"], "10.64.0.2");
    EXPECT_EQ(got["lease"], "120");
    EXPECT_EQ(got["router"], "10.64.0.1");
    EXPECT_EQ(got["subnet"], "255.255.255.255");
    EXPECT_EQ(got["dns"], "10.64.0.53,10.64.0.54");
    devtest::sh("killall udhcpd");
}

// ---- dnsmasq leases -----------------------------------------------------------------

TEST_F(LanTest, ClientListFromRealDnsmasqLeases) {
    devtest::sh("killall udhcpd");
    ASSERT_TRUE(devtest::wait_until([] { return udhcpd_pids().empty(); }));
    devtest::remove_all("/tmp/dnsmasq.leases");
    ASSERT_EQ(devtest::sh("dnsmasq --port=0 --interface=br0 --bind-interfaces --no-ping "
                          "--dhcp-range=192.168.1.50,192.168.1.60,1h --dhcp-leasefile=/tmp/dnsmasq.leases "
                          "--pid-file=/tmp/dnsmasq-lan.pid"),
              0);
    ASSERT_FALSE(obtain_lease("lh1", "-x hostname:laptop-anna").empty());
    ASSERT_FALSE(obtain_lease("lh2", "-x hostname:phone-ben").empty());
    ASSERT_TRUE(devtest::wait_until([] {
        std::string leases = devtest::read_file("/tmp/dnsmasq.leases");
        return std::count(leases.begin(), leases.end(), '\n') == 2;
    }));

    // The time left is the file's expiry less the clock while reading.
    std::map<std::string, long> expiry;
    std::istringstream file(devtest::read_file("/tmp/dnsmasq.leases"));
    for (std::string line; std::getline(file, line);) {
        std::istringstream w(line);
        long when = 0;
        std::string mac;
        w >> when >> mac;
        expiry[mac] = when;
    }
    DHCPClientInfo list[4];
    long before = time(nullptr);
    ASSERT_EQ(util_get_dhcp_client_list(list, 0), 2);
    long after = time(nullptr);
    std::sort(list, list + 2, [](const auto &a, const auto &b) { return strcmp(a.mac, b.mac) < 0; });
    EXPECT_STREQ(list[0].mac, kHost1Mac);
    EXPECT_STREQ(list[0].hostname, "laptop-anna");
    EXPECT_STREQ(list[1].mac, kHost2Mac);
    EXPECT_STREQ(list[1].hostname, "phone-ben");
    for (const auto &c : {list[0], list[1]}) {
        EXPECT_TRUE(in_pool(c.ip, 50, 60)) << c.ip;
        EXPECT_GE(static_cast<long>(c.expires), expiry[c.mac] - after) << c.mac;
        EXPECT_LE(static_cast<long>(c.expires), expiry[c.mac] - before) << c.mac;
        EXPECT_LE(c.expires, 3600u);
    }
    EXPECT_EQ(util_get_dhcp_client_list(list, 1), 1);
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
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/cmdlib_modem_interface_id"), "::0211:22ff:fe33:4455\n");

    // Same identifier: nothing is flushed, the file is written again.
    devtest::ip("-6 addr add fe80::99/64 dev usb0 scope link");
    devtest::write_file("/tmp/cmdlib/cmdlib_modem_interface_id", "::211:22ff:fe33:4455");
    devtest::remove_all("/tmp/tool-calls");
    EXPECT_EQ(util_write_interface_id(&id, "usb0"), 0);
    EXPECT_THAT(tool_calls(), ElementsAre());
    EXPECT_NE(addrs("usb0", "link").find("fe80::99/64"), std::string::npos);
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/cmdlib_modem_interface_id"), "::0211:22ff:fe33:4455\n");

    // The MAC's identifier instead of the acquired one: the address changes.
    devtest::write_file("/tmp/cmdlib/.NOT_USE_ACQUIRED_IPV6_INTERFACE_ID", "");
    MacAddr mac;
    ASSERT_EQ(cmd_netdev_get_mac_addr("usb0", &mac), 0);
    EUI64 eui;
    util_calc_eui64(&mac, &eui);
    EXPECT_EQ(util_write_interface_id(&id, "usb0"), 0);
    EXPECT_EQ(memcmp(id.s6_addr + 8, eui.value, 8), 0);
    std::string ll = addrs("usb0", "link");
    EXPECT_EQ(ll.find("fe80::99/64"), std::string::npos) << ll;
    struct in6_addr link_local = {};
    link_local.s6_addr[0] = 0xfe, link_local.s6_addr[1] = 0x80;
    memcpy(link_local.s6_addr + 8, eui.value, 8);
    char want[INET6_ADDRSTRLEN];
    inet_ntop(AF_INET6, &link_local, want, sizeof want);
    EXPECT_EQ(ll, std::string(want) + "/64\n");
    struct in6_addr stored;
    EXPECT_EQ(util_read_interface_id(&stored), 0);
    EXPECT_EQ(memcmp(stored.s6_addr + 8, eui.value, 8), 0);
}

TEST_F(LanTest, GlobalAddressesFromPrefixAndDefaultRoute) {
    EUI64 eui = {{0x02, 0x11, 0x22, 0xff, 0xfe, 0x33, 0x44, 0x55}};
    config_ipv6_addr("2001:db8:100:7::", &eui, "usb0", 0);
    EXPECT_THAT(tool_calls(),
                ElementsAre("ip -f inet6 addr flush dev usb0 scope global", "ip -f inet6 addr flush dev br0 scope global",
                            "ip -f inet6 addr add 2001:0db8:0100:0007:0211:22ff:fe33:4455/128 dev usb0 scope global",
                            "ip -f inet6 addr add 2001:0db8:0100:0007:0211:22ff:fe33:4455/64 dev br0 scope global"));
    EXPECT_EQ(addrs("usb0", "global"), "2001:db8:100:7:211:22ff:fe33:4455/128\n");
    EXPECT_EQ(addrs("br0", "global"), "2001:db8:100:7:211:22ff:fe33:4455/64\n");

    // The stored identifier when the modem gave one.
    devtest::write_file("/tmp/cmdlib/cmdlib_modem_interface_id", "::0aff:fe40:2\n");
    config_ipv6_addr("2001:db8:200::", nullptr, "usb0", 1);
    EXPECT_EQ(addrs("usb0", "global"), "2001:db8:200::aff:fe40:2/128\n");

    // A bad prefix still takes the old addresses away.
    config_ipv6_addr("2001:db8:zz::", &eui, "usb0", 0);
    EXPECT_EQ(addrs("usb0", "global"), "");
    EXPECT_EQ(addrs("br0", "global"), "");

    // The operator's router answers on its link-local address.
    std::string gw = devtest::sh_out("nsenter --net=/var/lib/device/ns/operator ip -6 -o addr show dev wan0 "
                                     "scope link | awk '{print $4}' | cut -d/ -f1 | tr -d '\\n'");
    ASSERT_FALSE(gw.empty());
    devtest::remove_all("/tmp/tool-calls");
    config_default_ipv6_gateway(gw.c_str(), "usb0");
    EXPECT_THAT(tool_calls(), ElementsAre("ip -6 route del ::1/0", "ip -6 route del ::1/0",
                                          "route -A inet6 add ::1/0 gw " + gw + " dev usb0"));
    EXPECT_EQ(devtest::sh_out("ip -6 route show default | awk '{print $1, $2, $3, $4, $5}'"),
              "default via " + gw + " dev usb0\n");
}

TEST_F(LanTest, DnsServersRewriteTheResolverAndRestartTheServices) {
    devtest::write_file("/var/run/resolv.conf",
                        "search lan\nnameserver 10.64.0.53\nnameserver 2001:db8::1\nnameserver 10.64.0.54\n");
    config_ipv6_dns_server_address("2001:db8:64::53", "2001:db8:64::54", 2, 0);
    EXPECT_EQ(devtest::read_file("/var/run/resolv.conf"),
              "search lan\nnameserver 10.64.0.53\nnameserver 10.64.0.54\n"
              "nameserver 2001:db8:64::53\nnameserver 2001:db8:64::54\n");
    EXPECT_EQ(devtest::sh_out("stat -c %a /var/run/resolv.conf"), "666\n");
    EXPECT_FALSE(devtest::file_exists("/etc/resolv_slaac.conf"));
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list"), "2001:db8:64::53 2001:db8:64::54");
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list_comma"), "2001:db8:64::53,2001:db8:64::54");
    ASSERT_TRUE(devtest::wait_for_calls("rc.ipv6.dhcp6s", 1));
    ASSERT_TRUE(devtest::wait_for_calls("rc.ipv6.radvd", 1));
    EXPECT_TRUE(devtest::calls("rc.ipv6.totd").empty());

    // One server, NAT64 on, and no resolver file to start from.
    devtest::clear_calls();
    devtest::remove_all("/var/run/resolv.conf");
    config_ipv6_dns_server_address("2001:db8:64::53", "2001:db8:64::54", 1, 1);
    EXPECT_EQ(devtest::read_file("/var/run/resolv.conf"), "nameserver 2001:db8:64::53\n");
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list"), "2001:db8:64::53");
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.ipv6_dns_server_list_comma"), "2001:db8:64::53");
    EXPECT_THAT(devtest::calls("rc.ipv6.totd"), ElementsAre("/etc/rc.d/rc.ipv6.totd"));
    ASSERT_TRUE(devtest::wait_for_calls("rc.ipv6.radvd", 1));
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

// A record set whose every byte tells which set it is, so a mix shows.
std::unique_ptr<MacControlInfo> record_set(unsigned char tag, int units) {
    auto info = std::make_unique<MacControlInfo>();
    memset(info.get(), tag, sizeof *info);
    info->mac_count = units;
    return info;
}

// Loads `rounds` times, saving `mine` every other round; every load must be
// one of the sets whole.  Returns the number of loads that were not.
int load_and_save(const MacControlInfo &mine, const std::vector<const MacControlInfo *> &sets, int rounds) {
    int torn = 0;
    auto seen = std::make_unique<MacControlInfo>();
    for (int i = 0; i < rounds; ++i) {
        if (i % 2 == 0) util_save_mac_control_info(const_cast<MacControlInfo *>(&mine), 0);
        memset(seen.get(), 0, sizeof *seen);
        util_read_mac_control_info(seen.get(), 0);
        bool whole = std::any_of(sets.begin(), sets.end(),
                                 [&](const MacControlInfo *s) { return memcmp(s, seen.get(), sizeof *s) == 0; });
        torn += whole ? 0 : 1;
    }
    return torn;
}

TEST_F(LanTest, TwoProcessesSavingAndLoadingSeeWholeRecordSets) {
    auto a = record_set('A', 20), b = record_set('B', 7);
    std::vector<const MacControlInfo *> sets = {a.get(), b.get()};
    util_save_mac_control_info(a.get(), 0);
    constexpr int kRounds = 3000;
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(std::min(load_and_save(*b, sets, kRounds), 100));
    int torn_here = load_and_save(*a, sets, kRounds);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "torn loads in the other process";
    EXPECT_EQ(torn_here, 0);
    // No scratch file is left behind.
    EXPECT_EQ(devtest::sh_out("ls -a /tmp/cmdlib | grep -c mac_control_info_file"), "1\n");
}

}  // namespace
