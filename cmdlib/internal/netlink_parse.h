// Decoders of routing netlink messages over bytes: the message walk of a
// received buffer, the attribute walk, and the link, address and route
// records.  Every step goes through ByteReader: a length field is checked
// against the bytes that remain before it is followed, so a lying message
// ends the walk instead of moving a read past the buffer.  Recorded kernel
// messages are replayed through the same functions without a socket.
#pragma once

#include <arpa/inet.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/socket.h>

#include <string_view>

#include "base/internal/byte_reader.h"
#include "base/internal/text.h"
#include "cmdlib/cmdlib_netlink.h"
#include "cmdlib/network.h"

namespace cmdlib {

// Message types (linux/rtnetlink.h).
constexpr uint16_t kRtmNewLink = 16;
constexpr uint16_t kRtmDelLink = 17;
constexpr uint16_t kRtmNewAddr = 20;
constexpr uint16_t kRtmDelAddr = 21;
constexpr uint16_t kRtmNewRoute = 24;
constexpr uint16_t kRtmDelRoute = 25;

// Header sizes: nlmsghdr, then ifinfomsg, ifaddrmsg or rtmsg; rtattr.
constexpr size_t kNlmsgHeaderSize = 16;
constexpr size_t kIfinfomsgSize = 16;
constexpr size_t kIfaddrmsgSize = 8;
constexpr size_t kRtmsgSize = 12;
constexpr size_t kRtattrHeaderSize = 4;
// Messages and attributes start on 4-byte boundaries.
constexpr size_t kNetlinkAlign = 4;

// Highest attribute number each decoder indexes (IFLA_*, IFA_*, RTA_*).
constexpr size_t kLinkAttrMax = 51;
constexpr size_t kAddrAttrMax = 10;
constexpr size_t kRouteAttrMax = 30;

// Attribute numbers the decoders read.
constexpr uint16_t kIflaAddress = 1, kIflaIfname = 3, kIflaMtu = 4;
constexpr uint16_t kIfaAddress = 1, kIfaLabel = 3;
constexpr uint16_t kRtaDst = 1, kRtaSrc = 2, kRtaGateway = 5;

// Link flags (IFF_UP, IFF_RUNNING).
constexpr uint32_t kIffUp = 0x1;
constexpr uint32_t kIffRunning = 0x40;

// Netlink's own fields are in the CPU's byte order.
inline bool host16(ByteReader &r, uint16_t *out) { return r.bytes(out, sizeof *out); }
inline bool host32(ByteReader &r, uint32_t *out) { return r.bytes(out, sizeof *out); }

// Calls fn(type, offset, payload) for each attribute of r, offset counted
// from r's start.  Loop invariant: the attribute's length is at least its
// header and at most what remains; the first one that is not ends the walk.
template <class Fn>
void walk_attributes(ByteReader r, Fn &&fn) {
    while (r.remaining() >= kRtattrHeaderSize) {
        size_t offset = r.offset();
        ByteReader head = r;
        uint16_t len = 0, type = 0;
        host16(head, &len);
        host16(head, &type);
        ByteReader attr;
        if (len < kRtattrHeaderSize || !r.sub(len, &attr)) return;
        attr.skip(kRtattrHeaderSize);
        fn(type, offset, attr);
        r.align(kNetlinkAlign);
    }
}

// Payloads by attribute number 0..Max; an absent one is an empty reader
// with a null start.
template <size_t Max>
struct AttrIndex {
    ByteReader at[Max + 1];

    explicit AttrIndex(ByteReader attrs) {
        walk_attributes(attrs, [this](uint16_t type, size_t, ByteReader payload) {
            if (type <= Max) at[type] = payload;  // a later one replaces an earlier one
        });
    }
    [[nodiscard]] bool has(uint16_t type) const {
        return type <= Max && at[type].current() != nullptr;
    }
};

// A string attribute, up to its first NUL, cut to the field's width.
template <size_t Max, size_t N>
void attr_text(const AttrIndex<Max> &a, uint16_t type, char (&out)[N]) {
    if (!a.has(type)) return;
    ByteReader p = a.at[type];
    std::string_view s(reinterpret_cast<const char *>(p.current()), p.remaining());
    copy_bounded(out, N, s.substr(0, s.find('\0')));
}

// An address attribute as text in the message's family; stays empty when
// absent, of another family, or shorter than an address.
template <size_t Max, size_t N>
void attr_address(const AttrIndex<Max> &a, uint16_t type, uint8_t family, char (&out)[N]) {
    if (!a.has(type)) return;
    size_t need = family == AF_INET ? 4 : family == AF_INET6 ? 16 : 0;
    unsigned char addr[16];
    ByteReader p = a.at[type];
    if (need == 0 || !p.bytes(addr, need)) return;
    if (!inet_ntop(family, addr, out, N)) out[0] = '\0';
}

// The address family as the records carry it.
[[nodiscard]] constexpr IPAddressType address_type_of(uint8_t family) {
    return family == AF_INET ? IP_ADDRESS_TYPE_IPV4 : IP_ADDRESS_TYPE_IPV6;
}

// The netlink header of msg (a reader over exactly one message): its type;
// the reader is left at the family header.  false when it is too short.
inline bool read_nlmsg_header(ByteReader *msg, uint16_t *type) {
    uint32_t len = 0;
    return host32(*msg, &len) && host16(*msg, type) && msg->skip(kNlmsgHeaderSize - 6);
}

// RTM_NEWLINK / RTM_DELLINK.  false for other types or a message shorter
// than its headers (out is then zeroed).
inline bool decode_link(ByteReader msg, NetlinkLinkEventData *out) {
    memset(out, 0, sizeof *out);
    uint16_t type = 0;
    uint32_t flags = 0;
    // ifinfomsg: family, pad, type (2), index (4), flags (4), change (4)
    if (!read_nlmsg_header(&msg, &type) || (type != kRtmNewLink && type != kRtmDelLink) ||
        !msg.skip(8) || !host32(msg, &flags) || !msg.skip(4))
        return false;
    AttrIndex<kLinkAttrMax> a(msg);
    out->event = type == kRtmNewLink ? NETLINK_EVENT_NEWLINK : NETLINK_EVENT_DELLINK;
    if (type == kRtmNewLink) {
        out->interface_up = (flags & kIffUp) != 0;
        out->interface_running = (flags & kIffRunning) != 0;
    }
    attr_text(a, kIflaIfname, out->interface_name);
    unsigned char mac[6];
    ByteReader hw = a.at[kIflaAddress];
    if (a.has(kIflaAddress) && hw.bytes(mac, sizeof mac))
        util_network_get_mac_string(mac, out->mac_addr, sizeof out->mac_addr);
    ByteReader mtu = a.at[kIflaMtu];
    uint32_t value = 0;
    if (a.has(kIflaMtu) && host32(mtu, &value)) out->mtu = value;
    return true;
}

// RTM_NEWADDR / RTM_DELADDR.
inline bool decode_addr(ByteReader msg, NetlinkIPAddrEventData *out) {
    memset(out, 0, sizeof *out);
    uint16_t type = 0;
    uint8_t family = 0, prefix_len = 0;
    // ifaddrmsg: family, prefixlen, flags, scope, index (4)
    if (!read_nlmsg_header(&msg, &type) || (type != kRtmNewAddr && type != kRtmDelAddr) ||
        !msg.u8(&family) || !msg.u8(&prefix_len) || !msg.skip(kIfaddrmsgSize - 2))
        return false;
    AttrIndex<kAddrAttrMax> a(msg);
    out->event = type == kRtmNewAddr ? NETLINK_EVENT_NEWADDR : NETLINK_EVENT_DELADDR;
    out->address_type = address_type_of(family);
    out->prefix_len = prefix_len;
    attr_text(a, kIfaLabel, out->interface_name);
    attr_address(a, kIfaAddress, family, out->ip_address);
    return true;
}

// RTM_NEWROUTE / RTM_DELROUTE.  The interface attributes are not read: the
// two interface names stay empty.
inline bool decode_route(ByteReader msg, NetlinkRouteEventData *out) {
    memset(out, 0, sizeof *out);
    uint16_t type = 0;
    uint8_t family = 0, dst_len = 0, src_len = 0;
    // rtmsg: family, dst_len, src_len, tos, table, protocol, scope, type, flags (4)
    if (!read_nlmsg_header(&msg, &type) || (type != kRtmNewRoute && type != kRtmDelRoute) ||
        !msg.u8(&family) || !msg.u8(&dst_len) || !msg.u8(&src_len) || !msg.skip(kRtmsgSize - 3))
        return false;
    AttrIndex<kRouteAttrMax> a(msg);
    out->event = type == kRtmNewRoute ? NETLINK_EVENT_NEWROUTE : NETLINK_EVENT_DELROUTE;
    out->address_type = address_type_of(family);
    out->src_len = src_len;
    out->dst_len = dst_len;
    attr_address(a, kRtaSrc, family, out->src_addr);
    attr_address(a, kRtaDst, family, out->dest_addr);
    attr_address(a, kRtaGateway, family, out->gateway);
    return true;
}

enum class NetlinkKind : uint8_t { Other, Link, Addr, Route };

[[nodiscard]] constexpr NetlinkKind netlink_kind(uint16_t type) {
    switch (type) {
        case kRtmNewLink:
        case kRtmDelLink:
            return NetlinkKind::Link;
        case kRtmNewAddr:
        case kRtmDelAddr:
            return NetlinkKind::Addr;
        case kRtmNewRoute:
        case kRtmDelRoute:
            return NetlinkKind::Route;
        default:
            return NetlinkKind::Other;
    }
}

// Calls fn(type, msg) for each message of a received buffer, msg a reader
// over exactly its nlmsg_len bytes; fn returns false to stop.  Loop
// invariant: a message's length is at least its header and at most what
// remains; the first one that is not ends the walk.
template <class Fn>
void walk_messages(const uint8_t *buf, size_t len, Fn &&fn) {
    ByteReader r(buf, len);
    while (r.remaining() >= kNlmsgHeaderSize) {
        ByteReader head = r;
        uint32_t msg_len = 0;
        uint16_t type = 0;
        host32(head, &msg_len);
        host16(head, &type);
        ByteReader msg;
        if (msg_len < kNlmsgHeaderSize || !r.sub(msg_len, &msg)) return;
        if (!fn(type, msg)) return;
        r.align(kNetlinkAlign);
    }
}

// Decodes one message whose length was checked and hands the record to
// its callback.  only: the kind the caller handles (Other: any kind).
inline void deliver_message(uint16_t type, ByteReader msg, const NLEventCallBackInfo &info,
                            NetlinkKind only = NetlinkKind::Other) {
    NetlinkKind kind = netlink_kind(type);
    if (only != NetlinkKind::Other && kind != only) return;
    switch (kind) {
        case NetlinkKind::Link: {
            NetlinkLinkEventData d;
            if (!decode_link(msg, &d)) return;
            util_netlink_dump_NetlinkLinkEventData(1, &d);
            if (info.on_link_changed) info.on_link_changed(&d);
            break;
        }
        case NetlinkKind::Addr: {
            NetlinkIPAddrEventData d;
            if (!decode_addr(msg, &d)) return;
            util_netlink_dump_NetlinkIPAddrEventData(1, &d);
            if (info.on_ip_addr_changed) info.on_ip_addr_changed(&d);
            break;
        }
        case NetlinkKind::Route: {
            NetlinkRouteEventData d;
            if (!decode_route(msg, &d)) return;
            util_netlink_dump_NetlinkRouteEventData(1, &d);
            if (info.on_route_info_changed) info.on_route_info_changed(&d);
            break;
        }
        case NetlinkKind::Other:
            break;
    }
}

// Delivers the messages of one received buffer in order.  With
// return_immediately the first message, whatever its type, is the last:
// true is then returned and the monitor ends.
inline bool deliver_buffer(const uint8_t *buf, size_t len, const NLEventCallBackInfo &info) {
    bool stop = false;
    walk_messages(buf, len, [&](uint16_t type, ByteReader msg) {
        deliver_message(type, msg, info);
        stop = info.return_immediately != 0;
        return !stop;
    });
    return stop;
}

}  // namespace cmdlib
