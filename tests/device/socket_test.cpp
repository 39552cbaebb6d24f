// TCP connect against a listening port, a closed one and one behind an
// iptables DROP rule on the operator side; a URL's host found by name.
#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include "cmdlib/cmdlib_socket.h"
#include "cmdlib/cmdlib_url.h"
#include "cmdlib/internal/net_waits.h"
#include "device.h"

namespace {

int open_descriptors() {
    int n = 0;
    DIR *d = opendir("/proc/self/fd");
    while (d && readdir(d)) ++n;
    if (d) closedir(d);
    return n;
}

int timeout_seconds(int fd, int option) {
    struct timeval tv = {};
    socklen_t len = sizeof tv;
    getsockopt(fd, SOL_SOCKET, option, &tv, &len);
    return static_cast<int>(tv.tv_sec);
}

class SocketTest : public DeviceTest {};

TEST_F(SocketTest, ConnectWithBoundedWait) {
    int server = devtest::outside_socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in a = {};
    a.sin_family = AF_INET;
    a.sin_port = htons(8443);
    inet_pton(AF_INET, "10.64.0.1", &a.sin_addr);
    ASSERT_EQ(bind(server, reinterpret_cast<struct sockaddr *>(&a), sizeof a) + listen(server, 4), 0);
    int fd = -1;
    ASSERT_EQ(util_create_socket("10.64.0.1", 8443, &fd), 0);
    // handed over blocking, with 1 s receive and 10 s send time-outs, connected
    EXPECT_EQ(fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(timeout_seconds(fd, SO_RCVTIMEO) * 100 + timeout_seconds(fd, SO_SNDTIMEO), 110);
    int peer = accept(server, nullptr, nullptr);
    char buf[2];
    EXPECT_EQ(write(fd, "hi", 2) + read(peer, buf, 2), 4);
    close(peer);
    close(fd);
    close(server);

    // refused, dropped (the wait cut short), not an address: -1, no descriptor left behind
    ASSERT_EQ(devtest::outside("iptables -I INPUT -p tcp --dport 8445 -j DROP"), 0);
    const cmdlib::NetWaits saved = cmdlib::net_waits();
    cmdlib::NetWaits w = saved;
    w.connect_wait_ms = 300;
    cmdlib::set_net_waits(w);
    for (const auto &[host, port] : {std::pair{"10.64.0.1", 8444}, {"10.64.0.1", 8445}, {"lns.example", 80}, {"", 80}}) {
        int before = open_descriptors();
        fd = 12345;
        EXPECT_EQ(util_create_socket(host, port, &fd), -1) << host << ":" << port;
        EXPECT_EQ(fd, 12345);
        EXPECT_EQ(open_descriptors(), before) << host << ":" << port;
    }
    cmdlib::set_net_waits(saved);
    devtest::outside("iptables -D INPUT -p tcp --dport 8445 -j DROP");
}

TEST_F(SocketTest, UrlHostByName) {
    std::string hosts = devtest::read_file("/etc/hosts");
    devtest::write_file("/etc/hosts", hosts + "10.20.30.50 fota.router.test\n2001:db8::50 v6.router.test\n");
    for (const auto &[url, want] : {std::pair{"https://fota.router.test:8443/fw.bin", "10.20.30.50"},
                                    {"ftp://user:pw@fota.router.test/fw.bin", "10.20.30.50"},
                                    {"http://v6.router.test/fw.bin", ""}}) {  // no IPv4 address
        char ip[16] = "";
        EXPECT_EQ(util_get_host_ip_from_url(url, ip), *want ? 0 : -1) << url;
        EXPECT_STREQ(ip, want) << url;
    }
    devtest::write_file("/etc/hosts", hosts);
}

}  // namespace
