// Netlink decoders without a socket: messages recorded from the kernel
// (tests/golden/netlink/*.bin, made by record.sh) against their golden
// decodings; hand-made hostile messages and the attribute index as a table
// of calls (tests/golden/netlink_hostile).  Every
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

using golden::Args;

// The bytes of hex text in a buffer of exactly their size.
std::unique_ptr<uint8_t[]> exact(const std::string &hex, size_t *size) {
    std::string b = golden::from_hex(hex);
    std::unique_ptr<uint8_t[]> out(new uint8_t[b.size()]);
    std::copy(b.begin(), b.end(), out.get());
    *size = b.size();
    return out;
}

// The records a buffer delivers, one line each without trailing blanks,
// joined by " | ".
std::string records(Args &a, bool return_immediately) {
    size_t n = 0;
    auto bytes = exact(a[0], &n);
    NLEventCallBackInfo info = printing(return_immediately);
    testing::internal::CaptureStdout();
    cmdlib::deliver_buffer(bytes.get(), n, info);
    std::istringstream in(testing::internal::GetCapturedStdout());
    std::string out;
    for (std::string l; std::getline(in, l);)
        if (!l.empty()) out += (out.empty() ? "" : " | ") + l.substr(0, l.find_last_not_of(' ') + 1);
    return out;
}

// Hand-made messages (host order) whose lengths lie, and the attribute
// index: the offset of each type's attribute up to one past a[1], "-" for
// none, within the first a[2] bytes.
TEST(HostileMessages, Golden) {
    golden::check("netlink_hostile", golden::calls({
        {"deliver", [](Args &a) { return records(a, false); }},
        {"deliver_once", [](Args &a) { return records(a, true); }},
        {"index", [](Args &a) {
             size_t n = 0;
             auto bytes = exact(a[0], &n);
             rtattr *idx[32] = {};
             int max = a[1].i();
             util_netlink_parse_rtattr(idx, max, a[3] == "null" ? nullptr : reinterpret_cast<rtattr *>(bytes.get()),
                                       a[2].i());
             std::string out;
             for (int t = 0; t <= std::min(max + 1, 31); ++t)  // one past max: never written
                 out += idx[t] ? std::to_string(reinterpret_cast<uint8_t *>(idx[t]) - bytes.get()) + " " : "- ";
             return out;
         }},
    }));
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
