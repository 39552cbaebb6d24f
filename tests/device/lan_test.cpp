// LAN services against the real things inside the device, as transcripts
// in tests/golden/device_lan: udhcpd started from the generated
// configuration and busybox udhcpc on LAN hosts, the lease file of a real
// dnsmasq, the kernel's IPv6 addresses and routes, and the resolver file.
// The real tools the library runs (ip, route, udhcpd, killall) are logged
// by wrappers first on PATH into /tmp/tool-calls.  The composed texts
// themselves are checked in the unit tests.  Below: the MAC records file
// shared by two processes.
#include <arpa/inet.h>
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
#include "device_steps.h"

namespace {

using golden::Args;
using golden::show;

class LanTest : public DeviceTest {
  protected:
    static void SetUpTestSuite() {
        if (!devtest::in_device()) return;
        for (std::string tool : {"ip", "route", "udhcpd", "killall"}) {
            std::string real = devtest::sh_out("command -v " + tool);
            devtest::write_file("/tmp/logbin/" + tool, "#!/bin/sh\necho \"" + tool + " $*\" >>/tmp/tool-calls\nexec " +
                                                           real.substr(0, real.find('\n')) + " \"$@\"\n",
                                0755);
        }
        const char *path = getenv("PATH");
        setenv("PATH", ("/tmp/logbin:" + std::string(path ? path : "/usr/bin:/bin")).c_str(), 1);
        ASSERT_TRUE(devtest::add_lan_host("lh1", "02:11:22:33:44:01"));
        ASSERT_TRUE(devtest::add_lan_host("lh2", "02:11:22:33:44:02"));
        devtest::write_file("/tmp/udhcpc-script",
                            "#!/bin/sh\n[ \"$1\" = bound ] && echo $ip $router $subnet $lease $dns >/tmp/lease-$interface\n",
                            0755);
    }
};

// busybox udhcpc on a LAN host until it holds a lease (five tries):
// "address router netmask seconds dns...", an address of the pool
// 192.168.1.150-160 shown as (pool); "" without a lease.
std::string lease(Args &a) {
    devtest::remove_all("/tmp/lease-" + a[0]);
    devtest::outside("busybox udhcpc -i " + a[0] + " -q -n -f -t 5 -T 1 " + (a.size() > 1 ? std::string(a[1]) : "") +
                     " -s /tmp/udhcpc-script >/dev/null 2>&1");
    std::string got = devtest::read_file("/tmp/lease-" + a[0]);
    got = got.substr(0, got.find('\n'));
    long last = got.rfind("192.168.1.", 0) == 0 ? strtol(got.c_str() + 10, nullptr, 10) : 0;
    return last >= 150 && last <= 160 ? "(pool)" + got.substr(got.find(' ')) : got;
}

// Restarts udhcpd from the LAN's usual settings plus KEY=VALUE arguments.
std::string restart(Args &a) {
    std::vector<std::string> s = {"AP_IPADDR=192.168.1.1", "AP_NETMASK=255.255.255.0", "QX_DHCP_IP_BEGIN=192.168.1.150",
                                  "QX_DHCP_IP_END=192.168.1.160", "QX_DHCP_EXPIRE_TIME=600"};
    for (const auto &x : a)
        if (!x.empty()) s.push_back(x);
    std::vector<ConfigKeyValuePair> pairs(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        snprintf(pairs[i].key, sizeof pairs[i].key, "%s", s[i].substr(0, s[i].find('=')).c_str());
        snprintf(pairs[i].value, sizeof pairs[i].value, "%s", s[i].substr(s[i].find('=') + 1).c_str());
    }
    return show(util_dhcp_restart_udhcpd_server(pairs.data(), static_cast<int>(pairs.size())));
}

// The DHCP clients the library lists: "mac ip name" each, sorted, and
// whether each time left is the lease file's expiry less the clock while
// reading.
std::string clients(Args &) {
    DHCPClientInfo list[4];
    long before = time(nullptr);
    int n = util_get_dhcp_client_list(list, 0);
    long after = time(nullptr);
    std::vector<std::string> out;
    std::istringstream in(devtest::read_file("/tmp/dnsmasq.leases"));
    for (std::string line; std::getline(in, line);) {
        std::istringstream w(line);
        long expiry = 0;
        std::string mac;
        w >> expiry >> mac;
        for (int i = 0; i < std::max(n, 0); ++i)
            if (mac == list[i].mac)
                out.push_back(mac + " " + list[i].ip + " " + list[i].hostname +
                              (list[i].expires >= expiry - after && list[i].expires <= expiry - before ? " time ok" : " time?"));
    }
    std::sort(out.begin(), out.end());
    std::string text = show(n);
    for (const auto &c : out) text += " ; " + c;
    return text;
}

in6_addr addr6(const std::string &text) {
    in6_addr a = {};
    inet_pton(AF_INET6, text.c_str(), &a);
    return a;
}

TEST_F(LanTest, Transcripts) {
    golden::check("device_lan", golden::calls(devtest::with_device({
        {"restart", restart},
        {"lease", lease},
        {"clients", clients},
        {"interface_id", [](Args &a) {
             in6_addr id = addr6(a[0]);
             return show(util_write_interface_id(&id, a[1].c()));
         }},
        {"ipv6_addr", [](Args &a) {
             EUI64 eui = {{0x02, 0x11, 0x22, 0xff, 0xfe, 0x33, 0x44, 0x55}};
             config_ipv6_addr(a[0].c(), a[1] == "eui" ? &eui : nullptr, a[2].c(), a[3].i());
             return "done";
         }},
        // The operator's router on its link-local address, shown as GW.
        {"operator_gateway", [](Args &a) {
             std::string gw = devtest::sh_out("nsenter --net=/var/lib/device/ns/operator ip -6 -o addr show dev wan0 "
                                              "scope link | awk '{print $4}' | cut -d/ -f1 | tr -d '\\n'");
             devtest::remove_all("/tmp/tool-calls");
             config_default_ipv6_gateway(gw.c_str(), a[0].c());
             std::string out = devtest::read_file("/tmp/tool-calls");
             out += devtest::sh_out("ip -6 route show default | awk '{print $1, $2, $3, $4, $5}'");
             return gw.empty() ? "no gateway" : devtest::replace_all(out, gw, "GW");
         }},
        {"gateway", [](Args &a) { return config_default_ipv6_gateway(a[0].c(), a[1].c()), "done"; }},
        {"share_prefix", [](Args &a) { return config_enable_sharing_64prefix_to_a_lan(a[0].c(), a[1].c()), "done"; }},
        {"ipv6_dns", [](Args &a) {
             config_ipv6_dns_server_address(a[0].c(), a[1].c(), a[2].i(), a[3].i());
             return "done";
         }},
    })));
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
