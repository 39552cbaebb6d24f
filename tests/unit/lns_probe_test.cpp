// The L2TP probe's messages against golden files, the walk for the peer's
// tunnel id and the selection file reader over case tables
// (tests/golden/l2tp/), and the LNS policy switches of the record.
#include <gtest/gtest.h>

#include <memory>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/l2tp_wire.h"
#include "cmdlib/internal/lns_select.h"
#include "cmdlib/lns.h"
#include "common/golden.h"

namespace {

namespace l2tp = cmdlib::l2tp;
using golden::to_hex;

std::string str(const uint8_t *p, size_t n) { return std::string(reinterpret_cast<const char *>(p), n); }

TEST(L2tpMessages, RequestsAndStop) {
    uint8_t buf[l2tp::kSccrqBufferSize];
    size_t n = l2tp::build_sccrq(buf, sizeof buf, "l2tp-client", false);
    EXPECT_EQ(to_hex(str(buf, n)), to_hex(golden::hex_file("l2tp/sccrq_default.hex")));
    n = l2tp::build_sccrq(buf, sizeof buf, "", true);
    EXPECT_EQ(to_hex(str(buf, n)), to_hex(golden::hex_file("l2tp/sccrq_hostname.hex")));
    EXPECT_EQ(l2tp::build_sccrq(buf, 123, "local", true), 0u);  // the template: 124 bytes
    l2tp::build_stopccn(buf, 0xC7E2, 1);
    EXPECT_EQ(to_hex(str(buf, 38)), to_hex(golden::hex_file("l2tp/stopccn_c7e2.hex")));
}

TEST(L2tpMessages, PeerTunnelId) {
    auto cases = golden::cases("l2tp/peer_tunnel_id.cases");
    ASSERT_EQ(cases.size(), 16u);
    for (const auto &c : cases) {
        std::string msg = c.body[0] == '@' ? golden::data("l2tp/" + c.body.substr(1, c.body.size() - 2))
                                           : golden::from_hex(c.body);
        int nr = -5;
        EXPECT_EQ(l2tp::peer_tunnel_id(reinterpret_cast<const uint8_t *>(msg.data()), msg.size(), &nr),
                  std::stoi(c.fields[1]))
            << c.fields[0];
        EXPECT_EQ(nr, std::stoi(c.fields[2])) << c.fields[0];
    }
    // the C API reads the probe's 256-byte receive buffer
    unsigned char buf[256] = {};
    std::string sccrp = golden::data("l2tp/xl2tpd_sccrp.bin");
    memcpy(buf, sccrp.data(), sccrp.size());
    int nr = 0;
    EXPECT_EQ(util_get_sccrp_peer_tunnel_id(buf, &nr), 0xC7E2);
    EXPECT_EQ(util_get_sccrp_peer_tunnel_id(nullptr, &nr), 0);
}

TEST(LnsSelection, KeysByPrefixValuesStripped) {
    for (const auto &c : golden::cases("l2tp/lns_selection.cases")) {
        char out[3][255] = {"-", "-", "-"};
        const std::string text = golden::unescape(c.body);
        cmdlib::TextLineReader<cmdlib::kLnsLineSize> r(text);
        cmdlib::read_lns_selection(r, out[0], out[1], out[2]);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(out[i], c.fields.size() > size_t(i + 1) ? c.fields[i + 1] : "") << c.fields[0];
    }
    // a line past 254 characters comes back in pieces: the rest is a line of its own
    char name[255] = "", pass[255] = "";
    const std::string text = "name:" + std::string(249, 'n') + "pass:tail\n";
    cmdlib::TextLineReader<cmdlib::kLnsLineSize> r(text);
    cmdlib::read_lns_selection(r, nullptr, name, pass);
    EXPECT_EQ(std::string(name) + "|" + pass, std::string(249, 'n') + "|tail");
}

TEST(LnsPolicy, RecordSwitches) {
    struct {
        const char *value;
        int yes, not_no;
    } cases[] = {{"yes", 1, 1}, {"no", 0, 0}, {"", 0, 1}, {"YES", 0, 1}};
    auto info = std::make_unique<InfoStruct>();
    for (const auto &c : cases) {
        memset(info.get(), 0, sizeof *info);
        snprintf(info->QX_ALWAYS_USE_INITIAL_LNS, sizeof info->QX_ALWAYS_USE_INITIAL_LNS, "%s", c.value);
        snprintf(info->QX_CHECK_IF_LNS_ALIVE, sizeof info->QX_CHECK_IF_LNS_ALIVE, "%s", c.value);
        EXPECT_EQ(util_should_always_use_initial_selected_lns(info.get()), c.yes) << c.value;
        EXPECT_EQ(util_should_check_if_lns_alive(info.get()), c.not_no) << c.value;
    }
}

}  // namespace
