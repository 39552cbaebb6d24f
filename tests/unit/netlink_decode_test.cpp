// Netlink decoders without a socket: messages recorded from the kernel
// (tests/unit/netlink/*.bin, made by record.sh) against their golden
// decodings, hand-made hostile messages, and the attribute index.  Every
// buffer is allocated to its exact size, so the sanitizer build catches a
// read one byte past it.
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_netlink.h"
#include "cmdlib/internal/netlink_parse.h"

namespace {

using Bytes = std::vector<uint8_t>;

std::string fixture(const std::string &name) {
    std::string here = __FILE__;
    std::ifstream in(here.substr(0, here.rfind('/')) + "/netlink/" + name, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The callbacks print the record with the library's own dump.
int on_link(NetlinkLinkEventData *d) { return util_netlink_dump_NetlinkLinkEventData(0, d), 0; }
int on_addr(NetlinkIPAddrEventData *d) { return util_netlink_dump_NetlinkIPAddrEventData(0, d), 0; }
int on_route(NetlinkRouteEventData *d) { return util_netlink_dump_NetlinkRouteEventData(0, d), 0; }

NLEventCallBackInfo printing(bool return_immediately = false) {
    NLEventCallBackInfo info{};
    info.return_immediately = return_immediately;
    info.on_link_changed = on_link;
    info.on_ip_addr_changed = on_addr;
    info.on_route_info_changed = on_route;
    return info;
}

// What the monitor delivers for a received buffer of exactly these bytes.
std::string delivered(const Bytes &bytes, bool return_immediately = false) {
    std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), exact.get());
    NLEventCallBackInfo info = printing(return_immediately);
    testing::internal::CaptureStdout();
    cmdlib::deliver_buffer(exact.get(), bytes.size(), info);
    return testing::internal::GetCapturedStdout();
}

TEST(RecordedMessages, DecodeToTheirGoldens) {
    for (const char *name : {"link", "addr", "route"}) {
        std::string rec = fixture(std::string(name) + ".bin");
        ASSERT_GT(rec.size(), 1000u) << name;
        // each message through the exported decoders, which skip the
        // types that are not theirs (the recordings hold rtmon's time stamps)
        NLEventCallBackInfo info = printing();
        testing::internal::CaptureStdout();
        cmdlib::walk_messages(reinterpret_cast<const uint8_t *>(rec.data()), rec.size(),
                              [&](uint16_t, cmdlib::ByteReader m) {
                                  Bytes msg(m.current(), m.current() + m.remaining());
                                  auto *h = reinterpret_cast<nlmsghdr *>(msg.data());
                                  util_netlink_on_new_delete_link(h, &info);
                                  util_netlink_on_new_delete_addr(h, &info);
                                  util_netlink_on_new_delete_route(h, &info);
                                  return true;
                              });
        EXPECT_EQ(testing::internal::GetCapturedStdout(), fixture(std::string(name) + ".txt"))
            << name;
    }
}

// A message built field by field in host order.
struct Msg {
    Bytes b;
    Msg(uint16_t type, Bytes family_header) {
        put32(0);
        put16(type);
        put16(0);
        put32(0);
        put32(0);
        b.insert(b.end(), family_header.begin(), family_header.end());
    }
    void put16(uint16_t v) {
        b.insert(b.end(), reinterpret_cast<uint8_t *>(&v), reinterpret_cast<uint8_t *>(&v) + 2);
    }
    void put32(uint32_t v) {
        b.insert(b.end(), reinterpret_cast<uint8_t *>(&v), reinterpret_cast<uint8_t *>(&v) + 4);
    }
    // An attribute; len_field overrides the length it claims.
    Msg &attr(uint16_t type, const Bytes &payload, int len_field = -1) {
        put16(static_cast<uint16_t>(len_field >= 0 ? len_field : 4 + payload.size()));
        put16(type);
        b.insert(b.end(), payload.begin(), payload.end());
        while (b.size() % 4) b.push_back(0);
        return *this;
    }
    Msg &str(uint16_t type, const std::string &s) { return attr(type, Bytes(s.begin(), s.end())); }
    // The bytes with nlmsg_len set to their count (or a claimed length).
    Bytes done(int len_field = -1) const {
        Bytes out = b;
        uint32_t len =
            len_field >= 0 ? static_cast<uint32_t>(len_field) : static_cast<uint32_t>(out.size());
        memcpy(out.data(), &len, 4);
        return out;
    }
};

Bytes cat(Bytes a, const Bytes &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// ifinfomsg with the flags IFF_UP | IFF_RUNNING; ifaddrmsg; rtmsg.
const Bytes kLinkUp = {0, 0, 1, 0, 7, 0, 0, 0, 0x41, 0, 0, 0, 0, 0, 0, 0};
Bytes ifaddr(uint8_t family, uint8_t prefix) { return {family, prefix, 0, 0, 7, 0, 0, 0}; }
Bytes rtm(uint8_t family, uint8_t dst_len) {
    return {family, dst_len, 0, 0, 254, 3, 0, 1, 0, 0, 0, 0};
}
const Bytes kMac = {0x02, 0, 0, 0, 0x77, 0xab}, kMtu = {0xdc, 0x05, 0, 0} /* 1500 */,
            kV4 = {10, 0, 0, 1};

std::string link_line(const std::string &rest) {
    return "\nlink event NETLINK_EVENT_NEWLINK : name: " + rest + "\n";
}

TEST(HostileMessages, LyingLengthsEndTheWalkNeverTheBuffer) {
    Msg good(RTM_NEWLINK, kLinkUp);
    good.str(IFLA_IFNAME, "x0").attr(IFLA_ADDRESS, kMac).attr(IFLA_MTU, kMtu);
    const std::string good_line = link_line("x0 mac: 02:00:00:00:77:AB mtu: 1500 up: 1 running: 1");
    Msg addr(RTM_NEWADDR, ifaddr(AF_INET, 8));
    addr.attr(IFA_ADDRESS, kV4);
    const std::string addr_line =
        "\naddress event NETLINK_EVENT_NEWADDR : name:  address_type: 4 prefix_len: 8 ip_address: "
        "10.0.0.1\n";
    Bytes odd = Msg(NLMSG_DONE, {1, 2}).done();  // 18 bytes: the next message starts after padding
    odd.resize(20);
    Bytes cut = good.done();
    cut.resize(40);

    const struct {
        const char *what;
        Bytes bytes;
        std::string want;
    } cases[] = {
        {"well formed", good.done(), good_line},
        {"nlmsg_len past the buffer", good.done(static_cast<int>(good.b.size()) + 4), ""},
        {"nlmsg_len below the header", good.done(12), ""},
        {"link header cut short", good.done(24), ""},
        {"attribute shorter than its header",
         Msg(RTM_NEWLINK, kLinkUp)
             .str(IFLA_IFNAME, "x0")
             .attr(IFLA_ADDRESS, kMac, 2)
             .attr(IFLA_MTU, kMtu)
             .done(),
         link_line("x0 mac:  mtu: 0 up: 1 running: 1")},
        {"attribute past the message",
         Msg(RTM_NEWLINK, kLinkUp).str(IFLA_IFNAME, "x0").attr(IFLA_MTU, kMtu, 200).done(),
         link_line("x0 mac:  mtu: 0 up: 1 running: 1")},
        {"truncated payloads",
         Msg(RTM_NEWLINK, kLinkUp).attr(IFLA_ADDRESS, {1, 2, 3}).attr(IFLA_MTU, {1, 2}).done(),
         link_line(" mac:  mtu: 0 up: 1 running: 1")},
        {"unterminated long name",
         Msg(RTM_NEWLINK, kLinkUp).str(IFLA_IFNAME, std::string(100, 'n')).done(),
         link_line(std::string(63, 'n') + " mac:  mtu: 0 up: 1 running: 1")},
        {"unknown and repeated types",
         Msg(RTM_NEWLINK, kLinkUp)
             .str(60, "zz")
             .str(0x8003, "nested")
             .str(IFLA_IFNAME, "a")
             .str(IFLA_IFNAME, "b")
             .done(),
         link_line("b mac:  mtu: 0 up: 1 running: 1")},
        {"IPv6 family with an IPv4-sized address",
         Msg(RTM_DELADDR, ifaddr(AF_INET6, 64)).attr(IFA_ADDRESS, kV4).done(),
         "\naddress event NETLINK_EVENT_DELADDR : name:  address_type: 6 prefix_len: 64 "
         "ip_address: \n"},
        {"unknown family", Msg(RTM_DELROUTE, rtm(AF_PACKET, 8)).attr(RTA_DST, kV4).done(),
         "\nroute event NETLINK_EVENT_DELROUTE : in_interface_name:  out_interface_name:  "
         "address_type: 6 src_len: 0 "
         "dst_len: 8 src_addr:  dest_addr:  gateway: \n"},
        {"unaligned message, then an address", cat(odd, addr.done()), addr_line},
        {"second message cut short", cat(addr.done(), cut), addr_line},
    };
    for (const auto &c : cases) EXPECT_EQ(delivered(c.bytes), c.want) << c.what;
}

TEST(Monitor, ReturnImmediatelyDeliversOnlyTheFirstMessage) {
    Msg link(RTM_NEWLINK, kLinkUp), addr(RTM_NEWADDR, ifaddr(AF_INET, 8));
    link.str(IFLA_IFNAME, "x0");
    addr.attr(IFA_ADDRESS, kV4);
    Bytes two = cat(addr.done(), link.done());
    EXPECT_EQ(delivered(two, true),
              "\naddress event NETLINK_EVENT_NEWADDR : name:  address_type: 4 prefix_len: 8 "
              "ip_address: 10.0.0.1\n");
    EXPECT_EQ(delivered(two), delivered(addr.done()) + delivered(link.done()));
    // a skipped type counts as the first message too
    EXPECT_EQ(delivered(cat(Msg(NLMSG_NOOP, {}).done(), addr.done()), true), "");
}

TEST(AttributeIndex, PointersStayInsideTheGivenLength) {
    Msg m(0, {});
    m.attr(1, {1, 1, 1, 1})
        .attr(40, {4, 4, 4, 4})
        .attr(2, {2})
        .attr(2, {9, 9, 9, 9})
        .attr(3, Bytes(8), 300);
    Bytes attrs(m.b.begin() + 16, m.b.end());
    std::unique_ptr<uint8_t[]> exact(new uint8_t[attrs.size()]);
    std::copy(attrs.begin(), attrs.end(), exact.get());
    auto *first = reinterpret_cast<rtattr *>(exact.get());
    auto offset = [&](rtattr *a) {
        return a ? static_cast<int>(reinterpret_cast<uint8_t *>(a) - exact.get()) : -1;
    };

    rtattr *idx[31] = {};
    util_netlink_parse_rtattr(idx, 30, first, static_cast<int>(attrs.size()));
    EXPECT_EQ(offset(idx[1]), 0);
    EXPECT_EQ(offset(idx[2]), 24);  // the later one; the odd-length one before it was padded over
    EXPECT_EQ(offset(idx[3]), -1);  // claims 300 bytes
    for (int t : {0, 4, 30}) EXPECT_EQ(idx[t], nullptr) << t;

    rtattr *small[3] = {};
    util_netlink_parse_rtattr(small, 2, first, 10);  // the second attribute does not fit in 10
    EXPECT_EQ(offset(small[1]), 0);
    EXPECT_EQ(small[2], nullptr);
    util_netlink_parse_rtattr(small, -1, first, 10);
    util_netlink_parse_rtattr(small, 2, first, -4);
    util_netlink_parse_rtattr(small, 2, nullptr, 10);
    EXPECT_EQ(small[0], nullptr);
}

TEST(EventNames, NamesAndSilentDumps) {
    const char *names[] = {"unknown event",          "NETLINK_EVENT_NEWLINK",
                           "NETLINK_EVENT_DELLINK",  "NETLINK_EVENT_NEWADDR",
                           "NETLINK_EVENT_DELADDR",  "NETLINK_EVENT_NEWROUTE",
                           "NETLINK_EVENT_DELROUTE", "unknown event"};
    for (int e = 0; e <= 7; ++e)
        EXPECT_STREQ(util_netlink_event_to_string(static_cast<NetlinkEvent>(e)), names[e]);
    NetlinkRouteEventData r{};
    testing::internal::CaptureStdout();
    util_netlink_dump_NetlinkRouteEventData(1, &r);
    util_netlink_dump_NetlinkRouteEventData(-3, &r);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
