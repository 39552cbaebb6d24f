// The DNS client against a real dnsmasq on the operator side of usb0 and
// against a hostile responder of the test's own, with the questions
// captured on the operator's end of the link and compared byte for byte.
// The resolver's 250 ms pauses are real except where a server stays
// silent: there a counting 1 ms pause stands in for the first 13 (one send
// and twelve receive attempts), so the slow path costs milliseconds.
#include <arpa/inet.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/internal/net_waits.h"
#include "device.h"
#include "golden.h"

namespace {

using devtest::outside;
using devtest::read_file;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAreArray;

constexpr const char *kHosts =
    "10.20.30.40 router.test\n10.20.30.41 router.test\n10.20.30.42 one.router.test\n"
    "2001:db8::40 router.test\n2001:db8::41 v6only.router.test\n";

// Pause of the resolver: the first `fast` calls take 1 ms, the rest 250 ms.
std::atomic<int> g_pauses{0};
std::atomic<int> g_fast{0};
void counting_pause() { usleep(++g_pauses <= g_fast ? 1000 : 250000); }

class DnsTest : public DeviceTest {
  protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(outside("ip addr add 10.64.0.53/24 dev wan0 && ip addr add 10.64.0.54/24 dev wan0 && "
                          "ip addr add 10.64.0.66/24 dev wan0 && ip addr add 2001:db8:64::53/64 dev wan0 nodad"),
                  0);
        devtest::write_file("/tmp/dns-test/hosts", kHosts);
        ASSERT_EQ(outside("dnsmasq --no-daemon --conf-file=/dev/null --no-resolv --no-hosts "
                          "--addn-hosts=/tmp/dns-test/hosts --bind-interfaces --listen-address=10.64.0.53 "
                          "--listen-address=10.64.0.54 --listen-address=2001:db8:64::53 --local=/test/ "
                          "--cname=www.router.test,router.test --cname=alias.router.test,v6only.router.test "
                          "--log-queries >/tmp/dns-test/dnsmasq.log 2>&1 & echo $! >/tmp/dns-test/dnsmasq.pid"),
                  0);
        ASSERT_TRUE(devtest::wait_until(
            [] { return read_file("/tmp/dns-test/dnsmasq.log").find("read /tmp/dns-test/hosts") != std::string::npos; }));
    }
    static void TearDownTestSuite() { kill(atoi(read_file("/tmp/dns-test/dnsmasq.pid").c_str()), SIGTERM); }

    void SetUp() override {
        DeviceTest::SetUp();
        g_pauses = 0;
        g_fast = 0;
        cmdlib::NetWaits w = cmdlib::default_net_waits();
        w.resolver_pause = counting_pause;
        w.probe_recv_ms = 300;  // only silent servers wait for it
        saved_ = cmdlib::set_net_waits(w);
        devtest::remove_all("/tmp/.dns_debug");
        devtest::remove_all("/tmp/.send_dns.log");
    }
    void TearDown() override { cmdlib::set_net_waits(saved_); }

    cmdlib::NetWaits saved_{};
};

struct Resolved {
    int result;
    std::vector<std::string> ips;  // the non-empty entries
};

Resolved resolve(const std::string &url, const std::string &primary, const std::string &secondary = "",
                 const std::string &iface = "", const std::string &src = "") {
    CmdlibDnsQueryInfo q = {};
    snprintf(q.url, sizeof q.url, "%s", url.c_str());
    snprintf(q.dns[0], sizeof q.dns[0], "%s", primary.c_str());
    snprintf(q.dns[1], sizeof q.dns[1], "%s", secondary.c_str());
    snprintf(q.iface, sizeof q.iface, "%s", iface.c_str());
    snprintf(q.wan_ip, sizeof q.wan_ip, "%s", src.c_str());
    CmdlibAnswerInfo a;
    memset(&a, 'x', sizeof a);
    Resolved r{utility_gethostbyname(&q, &a), {}};
    for (const auto &ip : a.ip)
        if (ip[0]) r.ips.emplace_back(ip, strnlen(ip, sizeof ip));
    return r;
}

// The resolver's question for router.test as this process sends it.
std::string router_test_question() {
    std::string q = golden::hex_file("dns/query_router_test.hex");
    uint16_t pid = static_cast<uint16_t>(getpid());
    q[0] = static_cast<char>(pid >> 8);
    q[1] = static_cast<char>(pid & 0xff);
    return q;
}

TEST_F(DnsTest, ResolverBindsInterfaceAndSourceAddress) {
    // A second WAN address to send from, and a host route that would take
    // the server's address out of the LAN bridge: only the binding to usb0
    // brings the question to the operator.
    ASSERT_EQ(devtest::ip("addr add 10.64.0.3/24 dev usb0"), 0);
    ASSERT_EQ(devtest::ip("route add 10.64.0.53/32 dev br0"), 0);
    devtest::UdpCapture capture;
    Resolved r = resolve("router.test", "10.64.0.53", "", "usb0", "10.64.0.3");
    devtest::ip("route del 10.64.0.53/32 dev br0");
    devtest::ip("addr del 10.64.0.3/24 dev usb0");
    EXPECT_EQ(r.result, 0);
    EXPECT_THAT(r.ips, UnorderedElementsAreArray({"10.20.30.40", "10.20.30.41"}));
    auto sent = capture.wait_for(53);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].src, "10.64.0.3");
    EXPECT_EQ(sent[0].dst, "10.64.0.53");
    EXPECT_EQ(golden::to_hex(sent[0].payload), golden::to_hex(router_test_question()));
    EXPECT_GE(g_pauses, 2);  // after the send and after the receive
}

TEST_F(DnsTest, AnswersFromDnsmasq) {
    struct {
        const char *url;
        int result;
        std::vector<std::string> ips;
    } cases[] = {
        {"http://www.router.test:8080/fw.bin", 0, {"10.20.30.40", "10.20.30.41"}},  // CNAME, then two A
        {"one.router.test", 0, {"10.20.30.42"}},
        {"alias.router.test", -3, {}},  // only a CNAME
        {"nope.test", -3, {}},          // no such name
        {"10.20.30.0", -3, {}},         // not an address literal: asked as a name
    };
    devtest::UdpCapture capture;
    for (const auto &c : cases) {
        Resolved r = resolve(c.url, "10.64.0.53");
        EXPECT_EQ(r.result, c.result) << c.url;
        EXPECT_THAT(r.ips, UnorderedElementsAreArray(c.ips)) << c.url;
    }
    // "10.20.30.0" went out as a name: labels 10, 20, 30 and 0
    auto sent = capture.wait_for(53, 5);
    ASSERT_EQ(sent.size(), 5u);
    EXPECT_EQ(sent[4].payload.substr(12, 12), golden::from_hex("02 3130 02 3230 02 3330 01 30 00"));
}

TEST_F(DnsTest, SecondaryAnswersWhenThePrimaryCannot) {
    ASSERT_EQ(outside("iptables -I INPUT -d 10.64.0.53 -p udp --dport 53 -j DROP"), 0);
    // Silent primary, no secondary: one send and twelve receive attempts.
    g_fast = 13;
    EXPECT_EQ(resolve("router.test", "10.64.0.53").result, -1);
    EXPECT_EQ(g_pauses, 13);

    struct {
        const char *primary;
        int fast;  // pauses spent on the primary
    } cases[] = {{"10.64.0.53", 13}, {"0.0.0.0", 0}, {"", 0}, {"10.64.0.255", 0}};
    for (const auto &c : cases) {
        devtest::UdpCapture capture;
        g_pauses = 0;
        g_fast = c.fast;
        Resolved r = resolve("router.test", c.primary, "10.64.0.54");
        EXPECT_EQ(r.result, 0) << c.primary;
        EXPECT_THAT(r.ips, UnorderedElementsAreArray({"10.20.30.40", "10.20.30.41"})) << c.primary;
        auto sent = capture.wait_for(53, c.fast ? 2 : 1);
        ASSERT_EQ(sent.size(), c.fast ? 2u : 1u) << c.primary;  // refused primaries are never asked
        EXPECT_EQ(sent.back().dst, "10.64.0.54") << c.primary;
    }
    outside("iptables -D INPUT -d 10.64.0.53 -p udp --dport 53 -j DROP");
}

TEST_F(DnsTest, TraceWhileTheFlagExistsAndUnbindableSocket) {
    devtest::write_file("/tmp/.dns_debug", "");
    Resolved r = resolve("one.router.test", "10.64.0.53", "", "nosuchif0", "10.9.9.9");
    EXPECT_EQ(r.result, 0);  // the bindings failed, the question went out the default route
    EXPECT_THAT(r.ips, ElementsAreArray({"10.20.30.42"}));
    EXPECT_EQ(read_file("/tmp/.send_dns.log"), golden::bytes("dns/trace_unbindable.txt"));

    devtest::remove_all("/tmp/.dns_debug");
    devtest::remove_all("/tmp/.send_dns.log");
    EXPECT_EQ(resolve("one.router.test", "10.64.0.53").result, 0);
    EXPECT_FALSE(devtest::file_exists("/tmp/.send_dns.log"));
}

TEST_F(DnsTest, ProbesAgainstDnsmasq) {
    struct {
        bool v6;
        const char *name, *server;
        int result;
        const char *question;  // golden file, "" not checked
        const char *trace;
    } cases[] = {
        {false, "router.test", "10.64.0.53", 0, "dns/probe_router_test_a.hex", "router.test address is 10.20.30."},
        {true, "router.test", "2001:db8:64::53", 0, "dns/probe_router_test_aaaa.hex",
         "router.test ipv6 address is 2001:0db8:0000:0000:0000:0000:0000:0040"},
        {false, "nope.test", "10.64.0.53", 1, "", "ack error."},
        {false, "router.test", "not-an-address", 1, "", "recvfrom timeout."},  // went to the zero address
    };
    devtest::write_file("/tmp/.dns_debug", "");
    for (const auto &c : cases) {
        devtest::remove_all("/tmp/.send_dns.log");
        devtest::UdpCapture capture;
        int fd = c.v6 ? socket_v6_init() : socket_v4_init();
        ASSERT_GT(fd, 0);
        EXPECT_EQ(c.v6 ? get_host_by_name_v6(c.name, c.server, fd) : get_host_by_name_v4(c.name, c.server, fd),
                  c.result)
            << c.name << " " << c.server;
        socket_close(fd);
        EXPECT_THAT(read_file("/tmp/.send_dns.log"), HasSubstr(c.trace)) << c.name << " " << c.server;
        if (!*c.question) continue;
        auto sent = capture.wait_for(53);
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].dst, c.server);
        EXPECT_EQ(golden::to_hex(sent[0].payload), golden::to_hex(golden::hex_file(c.question)));
    }
}

TEST_F(DnsTest, ProbeDefaultsArePublicResolversAskedOnlyInsideTheDevice) {
    // Nothing answers there from inside the device: each probe waits for its
    // (shortened) receive time-out.  The question is seen leaving usb0.
    struct {
        bool v6;
        const char *server, *question;
    } cases[] = {{false, "8.8.8.8", "dns/probe_default_v4.hex"},
                 {true, "2001:4860:4860::8888", "dns/probe_default_v6.hex"}};
    for (const auto &c : cases) {
        devtest::UdpCapture capture;
        int fd = c.v6 ? socket_v6_init() : socket_v4_init();
        EXPECT_EQ(c.v6 ? get_host_by_name_v6(nullptr, "", fd) : get_host_by_name_v4("", nullptr, fd), 1);
        socket_close(fd);
        auto sent = capture.wait_for(53);
        ASSERT_FALSE(sent.empty()) << c.server;
        EXPECT_EQ(sent[0].dst, c.server);
        EXPECT_EQ(golden::to_hex(sent[0].payload), golden::to_hex(golden::hex_file(c.question)));
    }
}

// ---- a hostile server ------------------------------------------------------------------

// The question turned into a response with the given id, answer count and
// A records (addresses 10.66.0.1, 10.66.0.2, ...), padded to `size` bytes.
std::string answer(const std::string &q, int id, uint16_t count, int records, size_t size = 0) {
    std::string m = q;
    if (id >= 0) {
        m[0] = static_cast<char>(id >> 8);
        m[1] = static_cast<char>(id);
    }
    m[2] = static_cast<char>(0x81);
    m[3] = static_cast<char>(0x80);
    m[6] = static_cast<char>(count >> 8);
    m[7] = static_cast<char>(count);
    for (int i = 1; i <= records; ++i)
        m += golden::from_hex("c00c 0001 0001 0000 003c 0004 0a42 00") + static_cast<char>(i);
    if (m.size() < size) m.append(size - m.size(), '\0');
    return m;
}

TEST_F(DnsTest, HostileServerDatagrams) {
    struct {
        const char *what;
        std::function<std::string(const std::string &)> reply;
        int resolver;
        std::vector<std::string> ips;
        int probe;
    } cases[] = {
        {"one byte", [](const std::string &) { return std::string("\x81", 1); }, -3, {}, 1},
        {"header cut at 7 bytes", [](const std::string &q) { return answer(q, -1, 1, 1).substr(0, 7); }, -3, {}, 1},
        {"1600 bytes, 100 records announced",
         [](const std::string &q) { return answer(q, -1, 100, 2, 1600); }, 0, {"10.66.0.1", "10.66.0.2"}, 0},
        {"wrong id, 40 records",
         [](const std::string &q) { return answer(q, 0x4242, 40, 40); }, 0, {"10.66.0.1", "10.66.0.2"}, 0},
        {"count above the records", [](const std::string &q) { return answer(q, -1, 300, 1); }, 0, {"10.66.0.1"}, 0},
        {"A data length past the end",
         [](const std::string &q) { return answer(q, -1, 1, 0) + golden::from_hex("c00c 0001 0001 0000 003c 0004 0a42"); },
         -3, {}, 0},
    };
    for (const auto &c : cases) {
        devtest::UdpResponder server("10.64.0.66", 53, c.reply);
        Resolved r = resolve("router.test", "10.64.0.66");
        EXPECT_EQ(r.result, c.resolver) << c.what;
        EXPECT_THAT(r.ips, ElementsAreArray(c.ips)) << c.what;
        int fd = socket_v4_init();
        EXPECT_EQ(get_host_by_name_v4("router.test", "10.64.0.66", fd), c.probe) << c.what;
        socket_close(fd);
    }
}

}  // namespace
