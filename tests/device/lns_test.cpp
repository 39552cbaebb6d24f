// The L2TP probe against a real xl2tpd on the operator side of usb0 (the
// requests captured on wan0, the teardown read from xl2tpd's own log) and
// against silent, closed and garbage-speaking peers of the test's own; the
// LNS selection files.
#include <signal.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "cmdlib/internal/net_waits.h"
#include "cmdlib/lns.h"
#include "device.h"
#include "common/golden.h"

namespace {

using devtest::read_file;
using golden::to_hex;
using ::testing::HasSubstr;

constexpr const char *kLog = "/tmp/lns-test/xl2tpd.log";

class LnsTest : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        saved_ = cmdlib::net_waits();
    }
    void TearDown() override {
        cmdlib::set_net_waits(saved_);
        int pid = atoi(read_file("/tmp/lns-test/pid").c_str());
        if (pid <= 0) return;
        kill(pid, SIGTERM);
        devtest::wait_until([pid] {
            std::string stat = read_file("/proc/" + std::to_string(pid) + "/stat");
            return stat.empty() || stat.find(") Z ") != std::string::npos;
        });
    }
    // A fresh xl2tpd on 10.64.0.1:1701 for each test: it remembers the
    // probe's fixed tunnel id for a while after a connection.
    static void start_xl2tpd() {
        // The log goes first: the shell truncates it only once the
        // background job runs, and the last test's "Listening" must not
        // pass for this one's.
        ::unlink(kLog);
        devtest::write_file("/tmp/lns-test/xl2tpd.conf",
                            "[global]\nlisten-addr = 10.64.0.1\ndebug avp = yes\ndebug tunnel = yes\n[lns default]\n"
                            "ip range = 10.99.0.10-10.99.0.20\nlocal ip = 10.99.0.1\nhostname = lns-test\n");
        ASSERT_EQ(devtest::outside("xl2tpd -D -c /tmp/lns-test/xl2tpd.conf -p /tmp/lns-test/xl2tpd.pid -C "
                                   "/tmp/lns-test/control >" + std::string(kLog) + " 2>&1 & echo $! >/tmp/lns-test/pid"),
                  0);
        ASSERT_TRUE(devtest::wait_until([] { return read_file(kLog).find("Listening on IP address") != std::string::npos; }));
    }
    cmdlib::NetWaits saved_{};
};

TEST_F(LnsTest, Xl2tpdAnswersAndTheTunnelIsTornDown) {
    start_xl2tpd();
    devtest::UdpCapture capture;
    EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1701, nullptr), 1);
    auto sent = capture.wait_for(1701, 2);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(to_hex(sent[0].payload), to_hex(golden::hex_file("l2tp/sccrq_default.hex")));
    // the StopCCN goes to the tunnel xl2tpd assigned, which it reports as
    // its local end when it closes the connection
    std::string want = golden::hex_file("l2tp/stopccn_c7e2.hex");
    ASSERT_EQ(sent[1].payload.size(), want.size());
    want.replace(4, 2, sent[1].payload.substr(4, 2));
    EXPECT_EQ(to_hex(sent[1].payload), to_hex(want));
    const std::string tunnel = std::to_string(static_cast<uint8_t>(want[4]) << 8 | static_cast<uint8_t>(want[5]));
    EXPECT_TRUE(devtest::wait_until([&] { return read_file(kLog).find("Local: " + tunnel + ", Remote: 21488") != std::string::npos; }))
        << read_file(kLog);
    EXPECT_THAT(read_file(kLog), HasSubstr("peer reports hostname 'l2tp-client'"));
    EXPECT_THAT(read_file(kLog), HasSubstr("peer closing for reason 1"));
}

TEST_F(LnsTest, GivenHostNameGoesOutEmptyWithTheChallenge) {
    // xl2tpd refuses a peer without a name and closes the tunnel itself; its
    // first answer, an acknowledgement, carries no tunnel id: no StopCCN.
    start_xl2tpd();
    devtest::UdpCapture capture;
    EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1701, "router-7"), 1);
    auto sent = capture.wait_for(1701, 1);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(to_hex(sent[0].payload), to_hex(golden::hex_file("l2tp/sccrq_hostname.hex")));
    EXPECT_THAT(read_file(kLog), HasSubstr("peer reports hostname ''"));
    EXPECT_THAT(read_file(kLog), HasSubstr("challenge avp found"));
}

TEST_F(LnsTest, SilentClosedAndGarbagePeers) {
    cmdlib::NetWaits w = saved_;
    w.lns_recv_ms = 300;  // the silent peer waits this out once
    cmdlib::set_net_waits(w);
    for (const auto &r : golden::rows("l2tp/peers_device.tsv")) {
        auto want = golden::words(r[3]);
        std::vector<std::string> got;
        if (r[1] == "closed") {
            EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1702, ""), std::stoi(r[2])) << r[0];
        } else {
            const std::string reply = r[1] == "silent" ? "" : golden::from_hex(r[1]);
            devtest::UdpResponder peer("10.64.0.1", 1702, [&](const std::string &) { return reply; });
            EXPECT_EQ(util_check_if_one_udp_port_is_open("10.64.0.1", 1702, ""), std::stoi(r[2])) << r[0];
            got = peer.received(want.size(), 1000);
        }
        ASSERT_EQ(got.size(), want.size()) << r[0];
        for (size_t i = 0; i < got.size(); ++i) EXPECT_EQ(to_hex(got[i]), to_hex(golden::hex_file(want[i]))) << r[0];
    }
    EXPECT_EQ(util_check_if_one_udp_port_is_open("lns.example", 1701, nullptr), 0);
}

TEST_F(LnsTest, SelectionFilesAndFlags) {
    char lns[255] = "-", name[255] = "-", pass[255] = "-";
    EXPECT_EQ(util_read_lns_info(lns, name, pass), 0);
    devtest::write_file(UTIL_LNS_SELECTED_INFO_FILE, "lns: 10.64.0.1\nname:user7\npass: p:w \n");
    EXPECT_EQ(util_read_lns_info(lns, nullptr, pass), 1);
    EXPECT_EQ(std::string(lns) + "|" + name + "|" + pass, "10.64.0.1|-|p:w");
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
