// The L2TP probe's messages against golden files, the walk for the peer's
// tunnel id over xl2tpd's recorded reply and hostile ones, the selection
// file reader on text, and the LNS policy switches of the record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/l2tp_wire.h"
#include "cmdlib/internal/lns_select.h"
#include "cmdlib/lns.h"
#include "golden.h"

namespace {

namespace l2tp = cmdlib::l2tp;

std::string as_string(const uint8_t *p, size_t n) { return std::string(reinterpret_cast<const char *>(p), n); }

TEST(L2tpMessages, RequestsAndStopAreByteExact) {
    uint8_t buf[l2tp::kSccrqBufferSize];
    size_t n = l2tp::build_sccrq(buf, sizeof buf, "l2tp-client", false);
    EXPECT_EQ(n, 108u);
    EXPECT_EQ(golden::to_hex(as_string(buf, n)), golden::to_hex(golden::hex_file("l2tp/sccrq_default.hex")));
    n = l2tp::build_sccrq(buf, sizeof buf, "", true);
    EXPECT_EQ(n, 119u);
    EXPECT_EQ(golden::to_hex(as_string(buf, n)), golden::to_hex(golden::hex_file("l2tp/sccrq_hostname.hex")));
    // the template itself: 124 bytes with the 5-byte placeholder name
    EXPECT_EQ(l2tp::build_sccrq(buf, 123, std::string(5, 'x'), true), 0u);
    EXPECT_EQ(l2tp::build_sccrq(buf, 124, std::string(5, 'x'), true), 124u);

    uint8_t stop[38];
    l2tp::build_stopccn(stop, 0xC7E2, 1);
    EXPECT_EQ(golden::to_hex(as_string(stop, 38)), golden::to_hex(golden::hex_file("l2tp/stopccn_c7e2.hex")));
}

// An SCCRP-like reply: header flags, then AVPs given as hex.
std::string reply(uint16_t flags, const std::string &avps_hex, int length = -1) {
    std::string avps = golden::from_hex(avps_hex);
    size_t len = length >= 0 ? static_cast<size_t>(length) : 12 + avps.size();
    std::string m = golden::from_hex("0000 0000 53f0 0000 0000 0007");
    m[0] = static_cast<char>(flags >> 8);
    m[1] = static_cast<char>(flags);
    m[2] = static_cast<char>(len >> 8);
    m[3] = static_cast<char>(len);
    return m + avps;
}

TEST(L2tpMessages, PeerTunnelIdWalk) {
    const std::string msg_type = "8008 0000 0000 0002 ";
    struct {
        const char *what;
        std::string msg;
        int id;
        int nr;  // -5: left alone
    } cases[] = {
        {"xl2tpd's SCCRP", golden::bytes("l2tp/xl2tpd_sccrp.bin"), 0xC7E2, 1},
        {"id after other AVPs", reply(0xC802, msg_type + "8008 0000 0009 1234"), 0x1234, 7},
        {"vendor id not examined", reply(0xC802, "8008 0009 0009 4321"), 0x4321, 7},
        {"O bit set", reply(0xCA02, "8008 0000 0009 1234"), 0, -5},
        {"T bit clear", reply(0x4802, "8008 0000 0009 1234"), 0, -5},
        {"L bit clear", reply(0x8802, "8008 0000 0009 1234"), 0, -5},
        {"S bit clear", reply(0xC002, "8008 0000 0009 1234"), 0, -5},
        {"header cut", reply(0xC802, "").substr(0, 11), 0, -5},
        {"one byte", std::string("\xc8", 1), 0, -5},
        {"no tunnel id", reply(0xC802, msg_type), -1, 7},
        {"AVP of length 0", reply(0xC802, "8000 0000 0000 " + msg_type + "8008 0000 0009 1234"), -1, 7},
        {"AVP shorter than its header", reply(0xC802, "8003 0000 0000 8008 0000 0009 1234"), -1, 7},
        {"AVP past the length field", reply(0xC802, msg_type + "8008 0000 0009 1234", 20), -1, 7},
        {"length field past the bytes", reply(0xC802, msg_type, 400), -1, 7},
        {"id value cut", reply(0xC802, msg_type + "8008 0000 0009 12"), -1, 7},
        {"length below the header", reply(0xC802, "8008 0000 0009 1234", 4), -1, 7},
    };
    for (const auto &c : cases) {
        int nr = -5;
        EXPECT_EQ(l2tp::peer_tunnel_id(reinterpret_cast<const uint8_t *>(c.msg.data()), c.msg.size(), &nr), c.id)
            << c.what;
        EXPECT_EQ(nr, c.nr) << c.what;
    }
    // through the C API: the message in the probe's 256-byte receive buffer
    unsigned char buf[256] = {};
    std::string sccrp = golden::bytes("l2tp/xl2tpd_sccrp.bin");
    memcpy(buf, sccrp.data(), sccrp.size());
    int nr = 0;
    EXPECT_EQ(util_get_sccrp_peer_tunnel_id(buf, &nr), 0xC7E2);
    EXPECT_EQ(nr, 1);
    EXPECT_EQ(util_get_sccrp_peer_tunnel_id(nullptr, &nr), 0);
}

TEST(LnsSelection, KeysByPrefixValuesStripped) {
    struct {
        const char *what, *text, *lns, *name, *pass;
    } cases[] = {
        {"all three", "lns: 10.1.2.3 \nname:bob\npass:  s3cr:et\t\r\n", "10.1.2.3", "bob", "s3cr:et"},
        {"prefix keys", "l:a\nn:b\np:c\n", "a", "b", "c"},
        {"empty key selects lns", ":x\n", "x", "-", "-"},
        {"longer keys ignored", "lnsx:a\nnames:b\npassword:c\n", "-", "-", "-"},
        {"no colon skipped", "lns 10.1.2.3\nname\n", "-", "-", "-"},
        {"later line wins", "lns:a\nlns:b\n", "b", "-", "-"},
        {"empty value", "pass:\n", "-", "-", ""},
        {"key is not stripped", " lns:a\n", "-", "-", "-"},
    };
    for (const auto &c : cases) {
        char lns[255] = "-", name[255] = "-", pass[255] = "-";
        cmdlib::TextLineReader<cmdlib::kLnsLineSize> r(c.text);
        cmdlib::read_lns_selection(r, lns, name, pass);
        EXPECT_STREQ(lns, c.lns) << c.what;
        EXPECT_STREQ(name, c.name) << c.what;
        EXPECT_STREQ(pass, c.pass) << c.what;
    }
    // a line past 254 characters comes back in pieces: the rest is its own line
    std::string text = "name:" + std::string(249, 'n') + "pass:tail\n";
    char name[255] = "", pass[255] = "";
    cmdlib::TextLineReader<cmdlib::kLnsLineSize> r(text);
    cmdlib::read_lns_selection(r, nullptr, name, pass);
    EXPECT_EQ(std::string(name), std::string(249, 'n'));
    EXPECT_STREQ(pass, "tail");
}

TEST(LnsPolicy, RecordSwitches) {
    struct {
        const char *value;
        int yes;     // always use initial / recheck
        int not_no;  // check if alive
    } cases[] = {{"yes", 1, 1}, {"no", 0, 0}, {"", 0, 1}, {"YES", 0, 1}, {"yes ", 0, 1}};
    auto info = std::make_unique<InfoStruct>();
    for (const auto &c : cases) {
        memset(info.get(), 0, sizeof *info);
        snprintf(info->QX_ALWAYS_USE_INITIAL_LNS, sizeof info->QX_ALWAYS_USE_INITIAL_LNS, "%s", c.value);
        snprintf(info->QX_REDIAL_NOT_EXIST_LNS, sizeof info->QX_REDIAL_NOT_EXIST_LNS, "%s", c.value);
        snprintf(info->QX_CHECK_IF_LNS_ALIVE, sizeof info->QX_CHECK_IF_LNS_ALIVE, "%s", c.value);
        EXPECT_EQ(util_should_always_use_initial_selected_lns(info.get()), c.yes) << c.value;
        EXPECT_EQ(util_should_check_if_lns_alive(info.get()), c.not_no) << c.value;
    }
    EXPECT_EQ(util_should_always_use_initial_selected_lns(nullptr), 0);
    EXPECT_EQ(util_should_check_if_lns_alive(nullptr), 0);
}

}  // namespace
