// Netlink buffers over arbitrary bytes: the monitor's delivery of a
// received buffer, the exported decoders on each message the walk accepts,
// and the exported attribute index over the whole input.  Records must be
// terminated within their widths and carry valid enumerators; attribute
// pointers must stay inside the input.
#include <stdint.h>
#include <string.h>

#include <vector>

#include "cmdlib/cmdlib_netlink.h"
#include "cmdlib/internal/netlink_parse.h"

namespace {

template <size_t N>
void check_text(const char (&field)[N]) {
    if (!memchr(field, '\0', N)) __builtin_trap();
}
void check_type(IPAddressType t) {
    if (t != IP_ADDRESS_TYPE_IPV4 && t != IP_ADDRESS_TYPE_IPV6) __builtin_trap();
}

int on_link(NetlinkLinkEventData *d) {
    check_text(d->interface_name);
    check_text(d->mac_addr);
    if (d->event != NETLINK_EVENT_NEWLINK && d->event != NETLINK_EVENT_DELLINK) __builtin_trap();
    if (d->event == NETLINK_EVENT_DELLINK && (d->interface_up || d->interface_running))
        __builtin_trap();
    return 0;
}
int on_addr(NetlinkIPAddrEventData *d) {
    check_text(d->interface_name);
    check_text(d->ip_address);
    check_type(d->address_type);
    if (d->event != NETLINK_EVENT_NEWADDR && d->event != NETLINK_EVENT_DELADDR) __builtin_trap();
    return 0;
}
int on_route(NetlinkRouteEventData *d) {
    for (const auto *f : {&d->src_addr, &d->dest_addr, &d->gateway}) check_text(*f);
    if (d->in_interface_name[0] || d->out_interface_name[0]) __builtin_trap();
    check_type(d->address_type);
    if (d->event != NETLINK_EVENT_NEWROUTE && d->event != NETLINK_EVENT_DELROUTE) __builtin_trap();
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    NLEventCallBackInfo info{};
    info.on_link_changed = on_link;
    info.on_ip_addr_changed = on_addr;
    info.on_route_info_changed = on_route;
    cmdlib::deliver_buffer(data, size, info);
    info.return_immediately = 1;
    cmdlib::deliver_buffer(data, size, info);

    cmdlib::walk_messages(data, size, [&](uint16_t, cmdlib::ByteReader m) {
        // a copy of exactly the message's bytes: nlmsg_len is all a decoder has
        std::vector<uint8_t> msg(m.current(), m.current() + m.remaining());
        auto *h = reinterpret_cast<struct nlmsghdr *>(msg.data());
        util_netlink_on_new_delete_link(h, &info);
        util_netlink_on_new_delete_addr(h, &info);
        util_netlink_on_new_delete_route(h, &info);
        return true;
    });

    rtattr *index[31] = {};
    std::vector<uint8_t> copy(data, data + size);
    util_netlink_parse_rtattr(index, 30, reinterpret_cast<rtattr *>(copy.data()),
                              static_cast<int>(size));
    for (rtattr *a : index) {
        auto *p = reinterpret_cast<uint8_t *>(a);
        if (a && (p < copy.data() || p + 4 > copy.data() + size)) __builtin_trap();
    }
    return 0;
}
