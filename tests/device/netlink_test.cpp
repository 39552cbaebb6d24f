// The netlink monitor on the device's real kernel.  Each monitor runs in a
// child process (its stop flag is process-wide, and it blocks), bound to
// the groups under test, printing each record with the library's dump; the
// test changes the kernel with ip and reads what the child saw.
#include <dirent.h>
#include <fcntl.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_netlink.h"
#include "device.h"

namespace {

using devtest::ip;

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

class Monitor {
  public:
    // Starts util_netlink_wait_for_events(groups, ...) in a child; with
    // `again` the child then calls it a second time.  The child exits 0
    // when every call returned 0 and left no descriptor open.
    Monitor(unsigned groups, NLEventCallBackInfo info, bool again = false) : groups_(groups) {
        int p[2];
        if (pipe(p) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(p[1], 1);
            close(p[0]);
            close(p[1]);
            info.on_link_changed = print_link;
            info.on_ip_addr_changed = print_addr;
            info.on_route_info_changed = print_route;
            int before = open_fds();
            int r = util_netlink_wait_for_events(groups, &info);
            if (again) r |= util_netlink_wait_for_events(groups, &info);
            _exit(r == 0 && open_fds() == before ? 0 : 1);
        }
        close(p[1]);
        out_ = p[0];
    }
    ~Monitor() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (out_ >= 0) close(out_);
    }
    // The child's socket is bound: /proc/net/netlink lists a routing socket
    // with the child's port id and groups.
    bool bound() const {
        char want[64];
        snprintf(want, sizeof want, " 0   %-10d %08x", pid_, groups_);
        return devtest::wait_until([&] {
            return devtest::read_file("/proc/net/netlink").find(want) != std::string::npos;
        });
    }
    // The records printed so far, once `done` holds for them (or the wait
    // gave up).
    std::vector<std::string> records(
        const std::function<bool(const std::vector<std::string> &)> &done) {
        devtest::wait_until([&] {
            char buf[4096];
            pollfd p = {out_, POLLIN, 0};
            while (poll(&p, 1, 0) == 1) {
                ssize_t n = read(out_, buf, sizeof buf);
                if (n <= 0) break;
                text_.append(buf, static_cast<size_t>(n));
            }
            return done(lines());
        });
        return lines();
    }
    // The child's exit status once it has ended; -1 if it does not.
    int exit_status() {
        int status = -1;
        if (!devtest::wait_until([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }))
            return -1;
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    std::vector<std::string> lines() const {
        std::vector<std::string> out;
        std::istringstream in(text_);
        for (std::string l; std::getline(in, l);)
            if (!l.empty()) out.push_back(l);
        return out;
    }
    pid_t pid_ = -1;
    int out_ = -1;
    unsigned groups_;
    std::string text_;
};

// `want` appears in `got` in this order (the kernel may send more).
bool in_order(const std::vector<std::string> &got, const std::vector<std::string> &want) {
    size_t i = 0;
    for (const auto &g : got)
        if (i < want.size() && g == want[i]) ++i;
    return i == want.size();
}

std::string link(const char *event, const char *rest) {
    return std::string("link event NETLINK_EVENT_") + event + " : name: " + rest;
}
std::string addr(const char *event, const char *rest) {
    return std::string("address event NETLINK_EVENT_") + event + " : name: " + rest;
}
std::string route(const char *event, const char *rest) {
    return std::string("route event NETLINK_EVENT_") + event +
           " : in_interface_name:  out_interface_name:  " + rest;
}

class NetlinkTest : public DeviceTest {
   protected:
    // The veth pair the tests change, with fixed hardware addresses.
    static void add_pair() {
        ASSERT_EQ(ip("link add nlt0 address 02:00:00:00:88:01 type veth peer name nlt1 address "
                     "02:00:00:00:88:02"),
                  0);
    }
};

TEST_F(NetlinkTest, LinkEventsFollowTheLinkThroughItsLife) {
    Monitor m(RTMGRP_LINK, {});
    ASSERT_TRUE(m.bound());
    add_pair();
    for (const char *cmd :
         {"link set nlt0 mtu 1400", "link set nlt0 up", "link set nlt1 up", "link del nlt0"})
        ASSERT_EQ(ip(cmd), 0) << cmd;
    const std::vector<std::string> want = {
        link("NEWLINK", "nlt0 mac: 02:00:00:00:88:01 mtu: 1500 up: 0 running: 0"),
        link("NEWLINK", "nlt0 mac: 02:00:00:00:88:01 mtu: 1400 up: 0 running: 0"),
        link("NEWLINK", "nlt0 mac: 02:00:00:00:88:01 mtu: 1400 up: 1 running: 0"),
        link("NEWLINK", "nlt0 mac: 02:00:00:00:88:01 mtu: 1400 up: 1 running: 1"),
        link("DELLINK", "nlt0 mac: 02:00:00:00:88:01 mtu: 1400 up: 0 running: 0"),
        link("DELLINK", "nlt1 mac: 02:00:00:00:88:02 mtu: 1500 up: 0 running: 0"),
    };
    auto got = m.records([&](const std::vector<std::string> &r) { return in_order(r, want); });
    EXPECT_TRUE(in_order(got, want)) << testing::PrintToString(got);
}

TEST_F(NetlinkTest, AddressAndRouteEventsCarryTheirAddresses) {
    add_pair();
    ASSERT_EQ(ip("link set nlt0 up"), 0);
    Monitor m(RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE, {});
    ASSERT_TRUE(m.bound());
    for (const char *cmd :
         {"addr add 10.88.0.1/24 dev nlt0 label nlt0:a",
          "-6 addr add 2001:db8:88::1/64 dev nlt0 nodad", "route add 10.89.0.0/16 via 10.88.0.2",
          "route add default via 10.88.0.2 table 205",
          "-6 route add 2001:db8:5::/64 from 2001:db8:6::/64 via 2001:db8:88::2 dev nlt0",
          "route del 10.89.0.0/16", "addr del 10.88.0.1/24 dev nlt0",
          "-6 addr del 2001:db8:88::1/64 dev nlt0"})
        ASSERT_EQ(ip(cmd), 0) << cmd;
    const std::vector<std::string> want = {
        addr("NEWADDR", "nlt0:a address_type: 4 prefix_len: 24 ip_address: 10.88.0.1"),
        addr("NEWADDR", " address_type: 6 prefix_len: 64 ip_address: 2001:db8:88::1"),
        route("NEWROUTE",
              "address_type: 4 src_len: 0 dst_len: 16 src_addr:  dest_addr: 10.89.0.0 gateway: "
              "10.88.0.2"),
        route("NEWROUTE",
              "address_type: 4 src_len: 0 dst_len: 0 src_addr:  dest_addr:  gateway: 10.88.0.2"),
        route("NEWROUTE",
              "address_type: 6 src_len: 64 dst_len: 64 src_addr: 2001:db8:6:: dest_addr: "
              "2001:db8:5:: gateway: 2001:db8:88::2"),
        route("DELROUTE",
              "address_type: 4 src_len: 0 dst_len: 16 src_addr:  dest_addr: 10.89.0.0 gateway: "
              "10.88.0.2"),
        addr("DELADDR", "nlt0:a address_type: 4 prefix_len: 24 ip_address: 10.88.0.1"),
        addr("DELADDR", " address_type: 6 prefix_len: 64 ip_address: 2001:db8:88::1"),
    };
    auto got = m.records([&](const std::vector<std::string> &r) { return in_order(r, want); });
    EXPECT_TRUE(in_order(got, want)) << testing::PrintToString(got);
    ip("link del nlt0");
}

TEST_F(NetlinkTest, TimeOutReturnsAndTheSocketIsClosed) {
    NLEventCallBackInfo quiet{};
    quiet.timeout = 1;
    quiet.return_when_timeout = 1;
    Monitor m(RTMGRP_LINK, quiet);
    EXPECT_EQ(m.exit_status(), 0);
    EXPECT_EQ(util_netlink_wait_for_events(RTMGRP_LINK, nullptr), -1);
}

// Last in this binary's order only by habit: the stop flag it sets lives
// in the child.
TEST_F(NetlinkTest, ReturnImmediatelyEndsEveryLaterMonitorOfTheProcess) {
    add_pair();
    NLEventCallBackInfo once{};
    once.return_immediately = 1;
    Monitor m(RTMGRP_LINK | RTMGRP_IPV4_IFADDR, once, /*again=*/true);
    ASSERT_TRUE(m.bound());
    ASSERT_EQ(ip("addr add 10.88.0.9/32 dev nlt0"), 0);
    ASSERT_EQ(ip("link set nlt0 up"), 0);
    // the second call returned at once although it waits without limit
    EXPECT_EQ(m.exit_status(), 0);
    auto got = m.records([](const std::vector<std::string> &) { return true; });
    EXPECT_EQ(got, std::vector<std::string>{addr(
                       "NEWADDR", "nlt0 address_type: 4 prefix_len: 32 ip_address: 10.88.0.9")});
    ip("link del nlt0");
}

}  // namespace
