// The netlink monitor on the device's real kernel.  Each monitor runs in a
// child process (it blocks, and its stop flag is process-wide) that prints
// every record with the library's dump to /tmp/monitor.out; the test
// changes the kernel with ip and reads what the child saw.  The scenarios
// are tests/golden/netlink_events/*.events.
#include <dirent.h>
#include <linux/rtnetlink.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_netlink.h"
#include "device.h"

namespace {

int print_link(NetlinkLinkEventData *d) {
    return util_netlink_dump_NetlinkLinkEventData(0, d), fflush(stdout);
}
int print_addr(NetlinkIPAddrEventData *d) {
    return util_netlink_dump_NetlinkIPAddrEventData(0, d), fflush(stdout);
}
int print_route(NetlinkRouteEventData *d) {
    return util_netlink_dump_NetlinkRouteEventData(0, d), fflush(stdout);
}

int open_fds() {
    int n = 0;
    if (DIR *d = opendir("/proc/self/fd")) {
        while (readdir(d)) ++n;
        closedir(d);
    }
    return n;
}

// Starts util_netlink_wait_for_events(groups, info) in a child (with
// `again`, a second call after the first) and waits until its socket is
// bound: /proc/net/netlink lists a routing socket with the child's port id
// and groups.  The child exits 0 when every call returned 0 and left no
// descriptor open.
pid_t start_monitor(unsigned groups, NLEventCallBackInfo info, bool again = false) {
    pid_t pid = fork();
    if (pid == 0) {
        if (!freopen("/tmp/monitor.out", "w", stdout)) _exit(2);
        info.on_link_changed = print_link;
        info.on_ip_addr_changed = print_addr;
        info.on_route_info_changed = print_route;
        int before = open_fds();
        int r = util_netlink_wait_for_events(groups, &info);
        if (again) r |= util_netlink_wait_for_events(groups, &info);
        _exit(r == 0 && open_fds() == before ? 0 : 1);
    }
    char want[64];
    snprintf(want, sizeof want, " 0   %-10d %08x", pid, groups);
    EXPECT_TRUE(devtest::wait_until(
        [&] { return devtest::read_file("/proc/net/netlink").find(want) != std::string::npos; }));
    return pid;
}

// The child's exit status once it has ended; -1 (and the child killed)
// when it does not end.
int exit_status(pid_t pid) {
    int status = -1;
    if (!devtest::wait_until([&] { return waitpid(pid, &status, WNOHANG) == pid; })) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> records() {
    std::vector<std::string> out;
    std::istringstream in(devtest::read_file("/tmp/monitor.out"));
    for (std::string l; std::getline(in, l);)
        if (!l.empty()) out.push_back(l);
    return out;
}

// `want` appears in `got` in this order (the kernel may send more).
bool in_order(const std::vector<std::string> &got, const std::vector<std::string> &want) {
    size_t i = 0;
    for (const auto &g : got)
        if (i < want.size() && g == want[i]) ++i;
    return i == want.size();
}

class NetlinkTest : public DeviceTest {
   protected:
    // Runs a scenario: the monitor bound to its groups, its commands, then
    // its records awaited in order.
    static void run_scenario(const std::string &name) {
        std::istringstream in(
            devtest::read_file(devtest::src_path("tests/golden/netlink_events/" + name)));
        unsigned groups = 0;
        std::vector<std::string> commands, want;
        for (std::string l; std::getline(in, l);) {
            if (l.rfind("groups ", 0) == 0)
                groups = static_cast<unsigned>(strtoul(&l[7], nullptr, 0));
            if (l.rfind("$ ", 0) == 0) commands.push_back(l.substr(2));
            if (!l.empty() && l[0] != '#' && l[0] != '$' && l.rfind("groups ", 0) != 0)
                want.push_back(l);
        }
        ASSERT_TRUE(groups != 0 && !commands.empty() && !want.empty()) << name;
        pid_t pid = start_monitor(groups, {});
        for (const auto &cmd : commands) EXPECT_EQ(devtest::sh(cmd), 0) << cmd;
        devtest::wait_until([&] { return in_order(records(), want); });
        EXPECT_TRUE(in_order(records(), want)) << testing::PrintToString(records());
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
};

TEST_F(NetlinkTest, LinkEventsFollowTheLinkThroughItsLife) { run_scenario("links.events"); }

TEST_F(NetlinkTest, AddressAndRouteEventsCarryTheirAddresses) {
    run_scenario("addresses_routes.events");
}

TEST_F(NetlinkTest, TimeOutReturnsAndTheSocketIsClosed) {
    NLEventCallBackInfo quiet{};
    quiet.timeout = 1;
    quiet.return_when_timeout = 1;
    EXPECT_EQ(exit_status(start_monitor(RTMGRP_LINK, quiet)), 0);
    EXPECT_EQ(util_netlink_wait_for_events(RTMGRP_LINK, nullptr), -1);
}

TEST_F(NetlinkTest, ReturnImmediatelyEndsEveryLaterMonitorOfTheProcess) {
    ASSERT_EQ(devtest::ip("link add nlt0 type veth peer name nlt1"), 0);
    NLEventCallBackInfo once{};
    once.return_immediately = 1;
    pid_t pid = start_monitor(RTMGRP_LINK | RTMGRP_IPV4_IFADDR, once, /*again=*/true);
    ASSERT_EQ(devtest::ip("addr add 10.88.0.9/32 dev nlt0"), 0);
    ASSERT_EQ(devtest::ip("link set nlt0 up"), 0);
    // the second call returned at once although it waits without limit
    EXPECT_EQ(exit_status(pid), 0);
    EXPECT_EQ(records(),
              std::vector<std::string>{"address event NETLINK_EVENT_NEWADDR : name: nlt0 "
                                       "address_type: 4 prefix_len: 32 ip_address: 10.88.0.9"});
    devtest::ip("link del nlt0");
}

}  // namespace
