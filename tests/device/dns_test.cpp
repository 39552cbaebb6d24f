// The DNS client against a real dnsmasq on the operator side of usb0 and a
// hostile responder of the test's own; the questions are captured on the
// operator's end of the link and compared byte for byte.  The resolver's
// 250 ms pauses are real except on a silent server, where 1 ms pauses that
// are counted stand in for its one send and twelve receive attempts.
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include <gmock/gmock.h>

#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/internal/net_waits.h"
#include "device.h"
#include "common/golden.h"

namespace {

using devtest::outside;
using devtest::read_file;
using golden::to_hex;

std::atomic<int> g_pauses{0}, g_fast{0};
void counting_pause() { usleep(++g_pauses <= g_fast ? 1000 : 250000); }

class DnsTest : public DeviceTest {
  protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(outside("for a in 53 54 55 66; do ip addr add 10.64.0.$a/24 dev wan0; done && "
                          "ip addr add 2001:db8:64::53/64 dev wan0 nodad && "
                          "iptables -I INPUT -d 10.64.0.55 -p udp --dport 53 -j DROP"),
                  0);
        devtest::write_file("/tmp/dns-test/hosts", "10.20.30.40 router.test\n10.20.30.41 router.test\n"
                                                   "10.20.30.42 one.router.test\n2001:db8::40 router.test\n2001:db8::41 v6.router.test\n");
        ASSERT_EQ(outside("dnsmasq --no-daemon --conf-file=/dev/null --no-resolv --no-hosts --bind-interfaces "
                          "--addn-hosts=/tmp/dns-test/hosts --listen-address=10.64.0.53,10.64.0.54,2001:db8:64::53 "
                          "--local=/test/ --cname=www.router.test,router.test --cname=alias.router.test,v6.router.test "
                          ">/tmp/dns-test/log 2>&1 & echo $! >/tmp/dns-test/pid"),
                  0);
        ASSERT_TRUE(devtest::wait_until([] { return read_file("/tmp/dns-test/log").find("read /tmp/") != std::string::npos; }));
    }
    static void TearDownTestSuite() { kill(atoi(read_file("/tmp/dns-test/pid").c_str()), SIGTERM); }
    void SetUp() override {
        DeviceTest::SetUp();
        g_pauses = g_fast = 0;
        cmdlib::NetWaits w = saved_ = cmdlib::net_waits();
        w.resolver_pause = counting_pause;
        w.probe_recv_ms = 300;  // only silent servers wait for it
        cmdlib::set_net_waits(w);
        devtest::remove_all("/tmp/.send_dns.log");
    }
    void TearDown() override { cmdlib::set_net_waits(saved_); }
    cmdlib::NetWaits saved_{};
};

// The non-empty addresses of a query, after the result.
std::string resolve(const std::string &url, const std::string &primary, const std::string &secondary = "",
                    const std::string &iface = "", const std::string &src = "") {
    CmdlibDnsQueryInfo q = {};
    CmdlibAnswerInfo a;
    snprintf(q.url, sizeof q.url, "%s", url.c_str());
    snprintf(q.dns[0], sizeof q.dns[0], "%s", primary.c_str());
    snprintf(q.dns[1], sizeof q.dns[1], "%s", secondary.c_str());
    snprintf(q.iface, sizeof q.iface, "%s", iface.c_str());
    snprintf(q.wan_ip, sizeof q.wan_ip, "%s", src.c_str());
    std::string out = std::to_string(utility_gethostbyname(&q, &a));
    for (const auto &ip : a.ip)
        if (ip[0]) out += " " + std::string(ip);
    return out;
}

TEST_F(DnsTest, ResolverBindsInterfaceAndSourceAddress) {
    // A second WAN address to send from, and a host route that would take
    // the server's address into the LAN bridge: only the binding to usb0
    // brings the question to the operator.
    ASSERT_EQ(devtest::ip("addr add 10.64.0.3/24 dev usb0") + devtest::ip("route add 10.64.0.53/32 dev br0"), 0);
    devtest::UdpCapture capture;
    std::string got = resolve("router.test", "10.64.0.53", "", "usb0", "10.64.0.3");
    devtest::ip("route del 10.64.0.53/32 dev br0");
    devtest::ip("addr del 10.64.0.3/24 dev usb0");
    EXPECT_THAT(got, ::testing::AnyOf("0 10.20.30.40 10.20.30.41", "0 10.20.30.41 10.20.30.40"));
    auto sent = capture.wait_for(53);
    ASSERT_EQ(sent.size(), 1u);
    std::string want = golden::hex_file("dns/query_router_test.hex");
    want[0] = static_cast<char>(getpid() >> 8 & 0xff);
    want[1] = static_cast<char>(getpid() & 0xff);
    EXPECT_EQ(sent[0].src + " " + sent[0].dst + "\n" + to_hex(sent[0].payload), "10.64.0.3 10.64.0.53\n" + to_hex(want));
}

TEST_F(DnsTest, AnswersAndTheSecondary) {
    for (const auto &r : golden::rows("dns/resolver_device.tsv")) {
        devtest::UdpCapture capture;
        g_pauses = 0;
        g_fast = std::stoi(r[3]);
        std::string got = resolve(r[0], r[1], r[2]);
        auto want = golden::words(r[5]), got_words = golden::words(got);
        EXPECT_EQ(got_words[0], r[4]) << r[0] << " via " << r[1] << "," << r[2];
        EXPECT_THAT(std::vector<std::string>(got_words.begin() + 1, got_words.end()),
                    ::testing::UnorderedElementsAreArray(want))
            << r[0] << " via " << r[1] << "," << r[2];
        auto asked = golden::words(r[6]);
        std::string seen;
        for (const auto &d : capture.wait_for(53, asked.size(), asked.empty() ? 0 : 5000)) seen += d.dst + " ";
        EXPECT_EQ(seen, r[6].empty() ? "" : r[6] + " ") << r[0] << " via " << r[1] << "," << r[2];
        if (g_fast && r[2].empty()) {
            EXPECT_EQ(g_pauses, 13);  // one send and twelve receives
        }
    }
}

TEST_F(DnsTest, TraceWhileTheFlagExistsAndUnbindableSocket) {
    devtest::write_file("/tmp/.dns_debug", "");
    // the bindings fail and are only logged: the question takes the default route
    EXPECT_EQ(resolve("one.router.test", "10.64.0.53", "", "nosuchif0", "10.9.9.9"), "0 10.20.30.42");
    EXPECT_EQ(read_file("/tmp/.send_dns.log"), golden::data("dns/trace_unbindable.txt"));
    devtest::remove_all("/tmp/.dns_debug");
    devtest::remove_all("/tmp/.send_dns.log");
    EXPECT_EQ(resolve("one.router.test", "10.64.0.53"), "0 10.20.30.42");
    EXPECT_FALSE(devtest::file_exists("/tmp/.send_dns.log"));
}

TEST_F(DnsTest, ProbesAndTheirPublicDefaults) {
    devtest::write_file("/tmp/.dns_debug", "");
    for (const auto &r : golden::rows("dns/probe_device.tsv")) {
        devtest::remove_all("/tmp/.send_dns.log");
        devtest::UdpCapture capture;
        const bool v6 = r[0] == "6";
        int fd = v6 ? socket_v6_init() : socket_v4_init();
        EXPECT_EQ(v6 ? get_host_by_name_v6(r[1].c_str(), r[2].c_str(), fd) : get_host_by_name_v4(r[1].c_str(), r[2].c_str(), fd),
                  std::stoi(r[3]))
            << r[1] << " via " << r[2];
        socket_close(fd);
        EXPECT_THAT(read_file("/tmp/.send_dns.log"), ::testing::HasSubstr(r[6])) << r[1] << " via " << r[2];
        if (r[4] == "-") continue;
        auto sent = capture.wait_for(53);  // defaults loop inside the device: the first copy counts
        ASSERT_FALSE(sent.empty()) << r[1] << " via " << r[2];
        EXPECT_EQ(sent[0].dst + "\n" + to_hex(sent[0].payload), r[5] + "\n" + to_hex(golden::hex_file(r[4])));
    }
}

// The question answered with the given id (-1: its own), answer count and
// A records 10.66.0.1, 10.66.0.2, ..., padded with zeros to `size` bytes.
std::string answer(std::string m, int id, uint16_t count, int records, size_t size = 0) {
    if (id >= 0) m[0] = static_cast<char>(id >> 8), m[1] = static_cast<char>(id);
    m[2] = static_cast<char>(0x81), m[3] = static_cast<char>(0x80);
    m[6] = static_cast<char>(count >> 8), m[7] = static_cast<char>(count);
    for (int i = 1; i <= records; ++i) m += golden::from_hex("c00c 0001 0001 0000 003c 0004 0a42 00") + static_cast<char>(i);
    return m.size() < size ? m + std::string(size - m.size(), '\0') : m;
}

TEST_F(DnsTest, HostileServerDatagrams) {
    // What the answer walk does with lying counts and lengths is a unit
    // test; here, what the sockets deliver: datagrams too short for a
    // header, longer than the receive buffers, and foreign identifiers.
    struct {
        const char *what;
        devtest::UdpResponder::Reply reply;
        const char *resolver;
        int probe;
    } cases[] = {
        {"one byte", [](const std::string &) { return std::string("\x81", 1); }, "-3", 1},
        {"header cut at 7 bytes", [](const std::string &q) { return answer(q, -1, 1, 1).substr(0, 7); }, "-3", 1},
        {"1600 bytes, 100 announced", [](const std::string &q) { return answer(q, -1, 100, 2, 1600); },
         "0 10.66.0.1 10.66.0.2", 0},
        {"foreign id", [](const std::string &q) { return answer(q, 0x4242, 1, 1); }, "0 10.66.0.1", 0},
    };
    for (const auto &c : cases) {
        devtest::UdpResponder server("10.64.0.66", 53, c.reply);
        EXPECT_EQ(resolve("router.test", "10.64.0.66"), c.resolver) << c.what;
        int fd = socket_v4_init();
        EXPECT_EQ(get_host_by_name_v4("router.test", "10.64.0.66", fd), c.probe) << c.what;
        socket_close(fd);
    }
}

}  // namespace
