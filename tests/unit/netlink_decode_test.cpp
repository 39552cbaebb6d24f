// Netlink decoders without a socket: messages recorded from the kernel
// (tests/golden/netlink/*.bin, made by record.sh) against their golden
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
#include "common/golden.h"

namespace {

using Bytes = std::vector<uint8_t>;

std::string fixture(const std::string &name) { return golden::data("netlink/" + name); }

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
    Msg(uint16_t type, const Bytes &family_header) {
        put(uint32_t{0}), put(type), put(uint16_t{0}), put(uint64_t{0});
        b.insert(b.end(), family_header.begin(), family_header.end());
    }
    template <class T>
    void put(T v) {
        b.insert(b.end(), reinterpret_cast<uint8_t *>(&v),
                 reinterpret_cast<uint8_t *>(&v) + sizeof v);
    }
    // An attribute; len_field overrides the length it claims.
    Msg &attr(uint16_t type, const Bytes &payload, int len_field = -1) {
        put(static_cast<uint16_t>(len_field >= 0 ? len_field : 4 + payload.size()));
        put(type);
        b.insert(b.end(), payload.begin(), payload.end());
        b.resize((b.size() + 3) / 4 * 4);
        return *this;
    }
    Msg &str(uint16_t type, const std::string &s) { return attr(type, Bytes(s.begin(), s.end())); }
    // The bytes with nlmsg_len set to their count (or a claimed length),
    // cut or zero-padded to `keep` bytes when given.
    Bytes done(int len_field = -1, size_t keep = SIZE_MAX) const {
        Bytes out = b;
        auto len =
            static_cast<uint32_t>(len_field >= 0 ? static_cast<size_t>(len_field) : out.size());
        memcpy(out.data(), &len, 4);
        if (keep != SIZE_MAX) out.resize(keep);
        return out;
    }
};

Bytes cat(Bytes a, const Bytes &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The records a buffer delivers, one line each without trailing blanks,
// joined by " | ".
std::string records(const Bytes &bytes, bool return_immediately = false) {
    std::istringstream in(delivered(bytes, return_immediately));
    std::string out;
    for (std::string l; std::getline(in, l);)
        if (!l.empty())
            out += (out.empty() ? "" : " | ") + l.substr(0, l.find_last_not_of(' ') + 1);
    return out;
}

// ifinfomsg with the flags IFF_UP | IFF_RUNNING; ifaddrmsg; rtmsg.
const Bytes kLinkUp = {0, 0, 1, 0, 7, 0, 0, 0, 0x41, 0, 0, 0, 0, 0, 0, 0};
Bytes ifaddr(uint8_t family, uint8_t prefix) { return {family, prefix, 0, 0, 7, 0, 0, 0}; }
Bytes rtm(uint8_t family, uint8_t dst_len) {
    return {family, dst_len, 0, 0, 254, 3, 0, 1, 0, 0, 0, 0};
}
const Bytes kMac = {0x02, 0, 0, 0, 0x77, 0xab}, kMtu = {0xdc, 0x05, 0, 0} /* 1500 */,
            kV4 = {10, 0, 0, 1};

// Each case's records are in tests/golden/netlink/hostile.golden.
TEST(HostileMessages, LyingLengthsEndTheWalkNeverTheBuffer) {
    Msg good(RTM_NEWLINK, kLinkUp), addr(RTM_NEWADDR, ifaddr(AF_INET, 8));
    good.str(IFLA_IFNAME, "x0").attr(IFLA_ADDRESS, kMac).attr(IFLA_MTU, kMtu);
    addr.attr(IFA_ADDRESS, kV4);
    auto link = [] { return Msg(RTM_NEWLINK, kLinkUp); };
    const struct {
        const char *what;
        Bytes bytes;
        bool once;
    } cases[] = {
        {"well formed", good.done(), false},
        {"nlmsg_len past the buffer", good.done(static_cast<int>(good.b.size()) + 4), false},
        {"nlmsg_len below the header", good.done(12), false},
        {"link header cut short", good.done(24), false},
        {"attribute shorter than its header",
         link().str(IFLA_IFNAME, "x0").attr(IFLA_ADDRESS, kMac, 2).attr(IFLA_MTU, kMtu).done(),
         false},
        {"attribute past the message",
         link().str(IFLA_IFNAME, "x0").attr(IFLA_MTU, kMtu, 200).done(), false},
        {"truncated payloads", link().attr(IFLA_ADDRESS, {1, 2, 3}).attr(IFLA_MTU, {1, 2}).done(),
         false},
        {"unterminated long name", link().str(IFLA_IFNAME, std::string(100, 'n')).done(), false},
        {"unknown and repeated types",
         link()
             .str(60, "zz")
             .str(0x8003, "nested")
             .str(IFLA_IFNAME, "a")
             .str(IFLA_IFNAME, "b")
             .done(),
         false},
        {"IPv6 family with an IPv4-sized address",
         Msg(RTM_DELADDR, ifaddr(AF_INET6, 64)).attr(IFA_ADDRESS, kV4).done(), false},
        {"unknown family", Msg(RTM_DELROUTE, rtm(AF_PACKET, 8)).attr(RTA_DST, kV4).done(), false},
        // 18 bytes, padded: the next message starts after the padding
        {"unaligned message, then an address",
         cat(Msg(NLMSG_DONE, {1, 2}).done(-1, 20), addr.done()), false},
        {"second message cut short", cat(addr.done(), good.done(-1, 40)), false},
        {"both messages", cat(addr.done(), good.done()), false},
        {"return_immediately: the first message only", cat(addr.done(), good.done()), true},
        {"return_immediately: a skipped type is the first",
         cat(Msg(NLMSG_NOOP, {}).done(), addr.done()), true},
    };
    auto want = golden::expect_pairs("netlink/hostile.golden");
    ASSERT_EQ(want.size(), sizeof cases / sizeof cases[0]);
    for (size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(cases[i].what, want[i].first);
        EXPECT_EQ(records(cases[i].bytes, cases[i].once), want[i].second) << cases[i].what;
    }
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

// The goldens print events 1 to 6 by name.
TEST(EventNames, OthersAreUnknownAndDumpsCanBeSilent) {
    EXPECT_STREQ(util_netlink_event_to_string(static_cast<NetlinkEvent>(0)), "unknown event");
    EXPECT_STREQ(util_netlink_event_to_string(static_cast<NetlinkEvent>(7)), "unknown event");
    NetlinkRouteEventData r{};
    testing::internal::CaptureStdout();
    util_netlink_dump_NetlinkRouteEventData(1, &r);
    util_netlink_dump_NetlinkRouteEventData(-3, &r);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
