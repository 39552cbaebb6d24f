// The netlink event monitor: the socket, the wait loop and the callbacks.
// The message and attribute decoders are in cmdlib/internal/netlink_parse.h.
#include "cmdlib/cmdlib_netlink.h"

#include <errno.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>

#include <atomic>

#include "base/internal/byte_reader.h"
#include "base/internal/raii.h"
#include "cmdlib/internal/netlink_parse.h"

using cmdlib::ByteReader;
using cmdlib::UniqueFd;

namespace {

// Goes to 0 for good after the first return_immediately return: later
// monitors of the process, on any thread, then stop at their next check.
std::atomic<int> keep_running{1};

constexpr int kReceiveBufferBytes = 20480;  // SO_RCVBUF of the monitor socket
constexpr size_t kReadBytes = 2048;         // one read; a link message is about 1.5 KB

char g_event_names[][24] = {
    "unknown event",          "NETLINK_EVENT_NEWLINK", "NETLINK_EVENT_DELLINK",
    "NETLINK_EVENT_NEWADDR",  "NETLINK_EVENT_DELADDR", "NETLINK_EVENT_NEWROUTE",
    "NETLINK_EVENT_DELROUTE",
};
static_assert(sizeof g_event_names / sizeof g_event_names[0] == NETLINK_EVENT_DELROUTE + 1,
              "a name per event and one for the rest");

// The exported decoders: the message is trusted to be nlmsg_len bytes long.
void dispatch_trusted(const nlmsghdr *header, NLEventCallBackInfo *info, cmdlib::NetlinkKind only) {
    if (!header || !info) return;
    uint32_t len = 0;
    memcpy(&len, header, sizeof len);
    if (len < cmdlib::kNlmsgHeaderSize) return;
    ByteReader msg(header, len);
    ByteReader head = msg;
    uint16_t type = 0;
    cmdlib::read_nlmsg_header(&head, &type);
    cmdlib::deliver_message(type, msg, *info, only);
}

UniqueFd open_monitor_socket(unsigned int events) {
    UniqueFd fd(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!fd) return fd;
    int size = kReceiveBufferBytes;
    sockaddr_nl addr;
    memset(&addr, 0, sizeof addr);
    addr.nl_family = AF_NETLINK;
    addr.nl_pid = 0;  // the kernel picks the port id
    addr.nl_groups = events;
    if (setsockopt(fd.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size) != 0 ||
        bind(fd.get(), reinterpret_cast<const sockaddr *>(&addr), sizeof addr) != 0)
        fd.reset();
    return fd;
}

enum class Wait { Readable, TimedOut, Failed };

Wait wait_readable(int fd, int timeout_seconds) {
    pollfd p = {fd, POLLIN, 0};
    timespec limit = {timeout_seconds, 0};
    int n = ppoll(&p, 1, timeout_seconds ? &limit : nullptr, nullptr);
    if (n < 0) return Wait::Failed;
    return n == 0 ? Wait::TimedOut : Wait::Readable;
}

}  // namespace

extern "C" {

CMDLIB_API int util_netlink_wait_for_events(unsigned int events,
                                            NLEventCallBackInfo *nl_event_handler_info) {
    NLEventCallBackInfo *info = nl_event_handler_info;
    if (!info) return -1;
    UniqueFd fd = open_monitor_socket(events);
    if (!fd) return -1;
    while (keep_running.load(std::memory_order_relaxed)) {
        Wait w = wait_readable(fd.get(), info->timeout);
        if (w == Wait::Failed) return -1;
        if (w == Wait::TimedOut) {
            if (info->return_when_timeout) return 0;
            continue;
        }
        uint8_t buf[kReadBytes];
        memset(buf, 0, sizeof buf);
        ssize_t n = recv(fd.get(), buf, sizeof buf, 0);
        if (n <= 0) continue;
        if (cmdlib::deliver_buffer(buf, static_cast<size_t>(n), *info))
            keep_running.store(0, std::memory_order_relaxed);
    }
    return 0;
}

CMDLIB_API int util_netlink_wait_for_link_changed_events(
    NLEventCallBackInfo *nl_event_handler_info) {
    return util_netlink_wait_for_events(RTMGRP_LINK, nl_event_handler_info);
}

CMDLIB_API void util_netlink_on_new_delete_link(struct nlmsghdr *nl_msg_header,
                                                NLEventCallBackInfo *nl_event_handler_info) {
    dispatch_trusted(nl_msg_header, nl_event_handler_info, cmdlib::NetlinkKind::Link);
}

CMDLIB_API void util_netlink_on_new_delete_addr(struct nlmsghdr *nl_msg_header,
                                                NLEventCallBackInfo *nl_event_handler_info) {
    dispatch_trusted(nl_msg_header, nl_event_handler_info, cmdlib::NetlinkKind::Addr);
}

CMDLIB_API void util_netlink_on_new_delete_route(struct nlmsghdr *nl_msg_header,
                                                 NLEventCallBackInfo *nl_event_handler_info) {
    dispatch_trusted(nl_msg_header, nl_event_handler_info, cmdlib::NetlinkKind::Route);
}

CMDLIB_API void util_netlink_parse_rtattr(struct rtattr **rtattr_list, int max, struct rtattr *attr,
                                          int len) {
    if (!rtattr_list || !attr || max < 0 || len <= 0) return;
    auto *base = reinterpret_cast<uint8_t *>(attr);
    cmdlib::walk_attributes(ByteReader(base, static_cast<size_t>(len)),
                            [&](uint16_t type, size_t offset, ByteReader) {
                                if (type <= max)
                                    rtattr_list[type] = reinterpret_cast<rtattr *>(base + offset);
                            });
}

CMDLIB_API char *util_netlink_event_to_string(NetlinkEvent event) {
    int n = static_cast<int>(event);
    return g_event_names[n >= NETLINK_EVENT_NEWLINK && n <= NETLINK_EVENT_DELROUTE ? n : 0];
}

// A record's text field for "%.*s": printed no further than its width,
// whatever the caller left in it.
#define CMDLIB_FIELD(f) static_cast<int>(strnlen((f), sizeof(f))), (f)

CMDLIB_API void util_netlink_dump_NetlinkLinkEventData(int via_syslog, NetlinkLinkEventData *data) {
    if (via_syslog != 0 || !data) return;
    printf("\nlink event %s : name: %.*s mac: %.*s mtu: %u up: %d running: %d\n",
           util_netlink_event_to_string(data->event), CMDLIB_FIELD(data->interface_name),
           CMDLIB_FIELD(data->mac_addr), data->mtu, data->interface_up, data->interface_running);
}

CMDLIB_API void util_netlink_dump_NetlinkIPAddrEventData(int via_syslog,
                                                         NetlinkIPAddrEventData *data) {
    if (via_syslog != 0 || !data) return;
    printf("\naddress event %s : name: %.*s address_type: %d prefix_len: %d ip_address: %.*s\n",
           util_netlink_event_to_string(data->event), CMDLIB_FIELD(data->interface_name),
           data->address_type, data->prefix_len, CMDLIB_FIELD(data->ip_address));
}

CMDLIB_API void util_netlink_dump_NetlinkRouteEventData(int via_syslog,
                                                        NetlinkRouteEventData *data) {
    if (via_syslog != 0 || !data) return;
    printf(
        "\nroute event %s : in_interface_name: %.*s out_interface_name: %.*s address_type: %d "
        "src_len: %d dst_len: %d src_addr: %.*s dest_addr: %.*s gateway: %.*s\n",
        util_netlink_event_to_string(data->event), CMDLIB_FIELD(data->in_interface_name),
        CMDLIB_FIELD(data->out_interface_name), data->address_type, data->src_len, data->dst_len,
        CMDLIB_FIELD(data->src_addr), CMDLIB_FIELD(data->dest_addr), CMDLIB_FIELD(data->gateway));
}

#undef CMDLIB_FIELD

}  // extern "C"
