// The L2TP probe against a real xl2tpd on the operator side of usb0 (the
// requests captured on wan0, the tunnel's teardown read from xl2tpd's own
// log), against silent, closed and garbage-speaking peers of the test's
// own, and the LNS selection files.
#include <signal.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "cmdlib/internal/net_waits.h"
#include "cmdlib/lns.h"
#include "device.h"
#include "golden.h"

namespace {

using devtest::outside;
using devtest::read_file;
using ::testing::HasSubstr;

constexpr const char *kLog = "/tmp/lns-test/xl2tpd.log";

// A fresh xl2tpd as LNS on 10.64.0.1:1701 (one per test: it remembers the
// probe's fixed tunnel id for a while after a connection).
void start_xl2tpd() {
    devtest::write_file("/tmp/lns-test/xl2tpd.conf",
                        "[global]\nlisten-addr = 10.64.0.1\nport = 1701\ndebug avp = yes\ndebug state = yes\n"
                        "debug tunnel = yes\n[lns default]\nip range = 10.99.0.10-10.99.0.20\nlocal ip = 10.99.0.1\n"
                        "hostname = lns-test\n");
    devtest::remove_all(kLog);
    ASSERT_EQ(outside("xl2tpd -D -c /tmp/lns-test/xl2tpd.conf -p /tmp/lns-test/xl2tpd.pid "
                      "-C /tmp/lns-test/control >/tmp/lns-test/xl2tpd.log 2>&1 & echo $! >/tmp/lns-test/pid"),
              0);
    ASSERT_TRUE(devtest::wait_until(
        [] { return read_file(kLog).find("Listening on IP address 10.64.0.1, port 1701") != std::string::npos; }));
}

void stop_xl2tpd() {
    int pid = atoi(read_file("/tmp/lns-test/pid").c_str());
    if (pid <= 0) return;
    kill(pid, SIGTERM);
    devtest::wait_until([pid] {
        std::string stat = read_file("/proc/" + std::to_string(pid) + "/stat");
        return stat.empty() || stat.find(") Z ") != std::string::npos;
    });
}

uint16_t be16(const std::string &m, size_t at) {
    return static_cast<uint16_t>(static_cast<uint8_t>(m[at]) << 8 | static_cast<uint8_t>(m[at + 1]));
}

class LnsTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        saved_ = cmdlib::net_waits();
    }
    void TearDown() override {
        stop_xl2tpd();
        cmdlib::set_net_waits(saved_);
    }
    cmdlib::NetWaits saved_{};
};

TEST_F(LnsTest, Xl2tpdAnswersAndTheTunnelIsTornDown) {
    start_xl2tpd();
    devtest::UdpCapture capture;
    EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1701, nullptr), 1);
    auto sent = capture.wait_for(1701, 2);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(golden::to_hex(sent[0].payload), golden::to_hex(golden::hex_file("l2tp/sccrq_default.hex")));
    // The StopCCN goes to the tunnel xl2tpd assigned, which xl2tpd reports
    // as its local end when it closes the connection.
    std::string want_stop = golden::hex_file("l2tp/stopccn_c7e2.hex");
    ASSERT_EQ(sent[1].payload.size(), want_stop.size());
    const uint16_t tunnel = be16(sent[1].payload, 4);
    want_stop[4] = sent[1].payload[4];
    want_stop[5] = sent[1].payload[5];
    EXPECT_EQ(golden::to_hex(sent[1].payload), golden::to_hex(want_stop));
    EXPECT_TRUE(devtest::wait_until([&] {
        return read_file(kLog).find("Local: " + std::to_string(tunnel) + ", Remote: 21488") != std::string::npos;
    })) << read_file(kLog);
    std::string log = read_file(kLog);
    EXPECT_THAT(log, HasSubstr("hostname_avp: peer reports hostname 'l2tp-client'"));
    EXPECT_THAT(log, HasSubstr("result_code_avp: peer closing for reason 1"));
    EXPECT_THAT(log, HasSubstr("closing down tunnel " + std::to_string(tunnel)));
}

TEST_F(LnsTest, GivenHostNameGoesOutEmptyWithTheChallenge) {
    // xl2tpd refuses a peer without a name and closes the tunnel itself;
    // its first answer is an acknowledgement without a tunnel id, so no
    // StopCCN follows.
    start_xl2tpd();
    devtest::UdpCapture capture;
    EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1701, "router-7"), 1);
    auto sent = capture.wait_for(1701, 1);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(golden::to_hex(sent[0].payload), golden::to_hex(golden::hex_file("l2tp/sccrq_hostname.hex")));
    std::string log = read_file(kLog);
    EXPECT_THAT(log, HasSubstr("hostname_avp: peer reports hostname ''"));
    EXPECT_THAT(log, HasSubstr("challenge_avp: challenge avp found"));
    EXPECT_THAT(log, HasSubstr("Peer did not specify hostname"));
}

TEST_F(LnsTest, SilentClosedAndGarbagePeers) {
    cmdlib::NetWaits w = saved_;
    w.lns_recv_ms = 300;  // the silent peer waits this out once
    cmdlib::set_net_waits(w);
    const std::string sccrq = golden::hex_file("l2tp/sccrq_default.hex");
    const std::string stop0 = golden::hex_file("l2tp/stopccn_unusable.hex");
    const std::string o_bit = golden::from_hex("ca02 0014 0000 0000 0000 0001 8008 0000 0009 1234");
    const std::string no_id = golden::from_hex("c802 0014 0000 0000 0000 0001 8008 0000 0000 0002");
    struct {
        const char *what;
        devtest::UdpResponder::Reply reply;  // nullptr: no server at all
        int open;
        std::vector<std::string> received;
    } cases[] = {
        {"silent", [](const std::string &) { return std::string(); }, 0, {sccrq}},
        {"closed port", nullptr, 0, {}},
        {"garbage", [](const std::string &) { return std::string("garbage"); }, 1, {sccrq, stop0}},
        {"one byte", [](const std::string &) { return std::string("\xc8", 1); }, 1, {sccrq, stop0}},
        {"O bit set", [&](const std::string &) { return o_bit; }, 1, {sccrq, stop0}},
        {"no tunnel id", [&](const std::string &) { return no_id; }, 1, {sccrq}},
    };
    for (const auto &c : cases) {
        std::vector<std::string> got;
        if (c.reply) {
            devtest::UdpResponder peer("10.64.0.1", 1702, c.reply);
            EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1702, ""), c.open) << c.what;
            got = peer.received(c.received.size(), 1000);
        } else {
            EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1702, ""), c.open) << c.what;
        }
        ASSERT_EQ(got.size(), c.received.size()) << c.what;
        for (size_t i = 0; i < got.size(); ++i)
            EXPECT_EQ(golden::to_hex(got[i]), golden::to_hex(c.received[i])) << c.what << " #" << i;
    }
    EXPECT_EQ(util_check_if_one_udp_port_is_open("lns.example", 1701, nullptr), 0);
    EXPECT_EQ(util_check_if_one_udp_port_is_open(nullptr, 1701, nullptr), 0);
}

TEST_F(LnsTest, SelectionFilesAndFlags) {
    char lns[255] = "-", name[255] = "-", pass[255] = "-";
    EXPECT_EQ(util_read_lns_info(lns, name, pass), 0);
    EXPECT_STREQ(lns, "-");
    devtest::write_file(UTIL_LNS_SELECTED_INFO_FILE, "lns: 10.64.0.1\nname:user7\npass: p:w \n");
    EXPECT_EQ(util_read_lns_info(lns, nullptr, pass), 1);
    EXPECT_STREQ(lns, "10.64.0.1");
    EXPECT_STREQ(name, "-");
    EXPECT_STREQ(pass, "p:w");

    EXPECT_EQ(util_have_selected_one_lns(), 0);
    devtest::write_file(UTIL_LNS_HAVE_SELECTED_FILE, "");
    EXPECT_EQ(util_have_selected_one_lns(), 1);

    InfoStruct info = {};
    snprintf(info.QX_REDIAL_NOT_EXIST_LNS, sizeof info.QX_REDIAL_NOT_EXIST_LNS, "yes");
    EXPECT_EQ(util_should_recheck_not_exist_lns_server(&info), 1);
    devtest::write_file(UTIL_LNS_USE_SPECIFIED_FILE, "");
    EXPECT_EQ(util_should_recheck_not_exist_lns_server(&info), 0);
}

}  // namespace
