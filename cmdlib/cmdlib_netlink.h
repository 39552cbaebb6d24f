/* cmdlib_netlink: waits for the kernel's link, address and route
 * notifications and hands each, decoded into a flat record, to the
 * caller's callback.
 *
 * util_netlink_wait_for_events opens a routing netlink socket bound to the
 * multicast groups asked for (the kernel's RTMGRP_* bits), waits, decodes
 * and calls back on the calling thread, one message at a time, and returns
 * when the caller's settings say so.  The socket lives only for the call
 * and is closed on every return.
 *
 * The decoders read the kernel's standard layouts (nlmsghdr, ifinfomsg,
 * ifaddrmsg, rtmsg, rtattr) by offset, checking every length against the
 * bytes that remain: a message or attribute whose length field lies is
 * skipped or ends the walk, never read past.
 */
#ifndef CMDLIB_NETLINK_H
#define CMDLIB_NETLINK_H

#include "cmdlib_export.h"

/* From <linux/netlink.h> and <linux/rtnetlink.h>; only pointers are used. */
struct nlmsghdr;
struct rtattr;

CMDLIB_BEGIN_DECLS

typedef enum NetlinkEvent {
    NETLINK_EVENT_NEWLINK = 1,
    NETLINK_EVENT_DELLINK = 2,
    NETLINK_EVENT_NEWADDR = 3,
    NETLINK_EVENT_DELADDR = 4,
    NETLINK_EVENT_NEWROUTE = 5,
    NETLINK_EVENT_DELROUTE = 6
} NetlinkEvent;

typedef enum IPAddressType { IP_ADDRESS_TYPE_IPV4 = 4, IP_ADDRESS_TYPE_IPV6 = 6 } IPAddressType;

typedef struct NetlinkLinkEventData {
    NetlinkEvent event;      /* NEWLINK or DELLINK */
    char interface_name[64]; /* IFLA_IFNAME */
    char mac_addr[32];       /* IFLA_ADDRESS as "%02X:%02X:%02X:%02X:%02X:%02X"; "" when absent or
                                shorter than 6 bytes */
    unsigned int mtu;        /* IFLA_MTU */
    int interface_up;        /* IFF_UP in the link flags (NEWLINK only) */
    int interface_running;   /* IFF_RUNNING in the link flags (NEWLINK only) */
} NetlinkLinkEventData;

typedef struct NetlinkIPAddrEventData {
    NetlinkEvent event;         /* NEWADDR or DELADDR */
    char interface_name[64];    /* IFA_LABEL; empty when absent, as is usual for IPv6 */
    IPAddressType address_type; /* 4 for AF_INET, else 6 */
    int prefix_len;
    char ip_address[96]; /* IFA_ADDRESS as text */
} NetlinkIPAddrEventData;

typedef struct NetlinkRouteEventData {
    NetlinkEvent event;          /* NEWROUTE or DELROUTE */
    char in_interface_name[64];  /* always empty */
    char out_interface_name[64]; /* always empty */
    IPAddressType address_type;  /* 4 for AF_INET, else 6 */
    int src_len;
    int dst_len;
    char src_addr[96];  /* RTA_SRC as text, empty when absent */
    char dest_addr[96]; /* RTA_DST as text, empty when absent (the default route) */
    char gateway[96];   /* RTA_GATEWAY as text, empty when absent */
} NetlinkRouteEventData;

/* Callbacks get a record that lives only for the call; their result is
 * ignored. */
typedef int (*nl_event_callback_func_for_link)(NetlinkLinkEventData *data);
typedef int (*nl_event_callback_func_for_ip_addr)(NetlinkIPAddrEventData *data);
typedef int (*nl_event_callback_func_for_route)(NetlinkRouteEventData *data);

typedef struct NLEventCallBackInfo {
    int return_immediately;  /* return after the first message read */
    int timeout;             /* seconds per wait; 0 waits without limit */
    int return_when_timeout; /* return 0 when a wait times out; else wait again */
    nl_event_callback_func_for_link on_link_changed;        /* may be null */
    nl_event_callback_func_for_ip_addr on_ip_addr_changed;  /* may be null */
    nl_event_callback_func_for_route on_route_info_changed; /* may be null */
} NLEventCallBackInfo;

/* The monitor loop.  events: the routing multicast groups to bind to
 * (RTMGRP_LINK 0x1, RTMGRP_IPV4_IFADDR 0x10, RTMGRP_IPV4_ROUTE 0x40,
 * RTMGRP_IPV6_IFADDR 0x100, RTMGRP_IPV6_ROUTE 0x400, ...).  Reads up to 2048
 * bytes a time with a 20480-byte receive buffer; a failed read (e.g. the
 * buffer overran during a burst) is skipped and the loop waits again.
 * Link, address and route messages go to their decoders; other types are
 * skipped.  Returns 0 after the first message when return_immediately is
 * set, or on a time-out with return_when_timeout; -1 for a null record, a
 * socket, option or bind failure, a negative timeout, or a failed wait
 * (including one interrupted by a signal).
 * The first return_immediately return ends every monitor of the process
 * for good: later calls (and monitors on other threads, at their next
 * wake-up) return 0 without delivering anything. */
CMDLIB_API int util_netlink_wait_for_events(unsigned int events,
                                            NLEventCallBackInfo *nl_event_handler_info);
/* The same with events = 1 (the link group). */
CMDLIB_API int util_netlink_wait_for_link_changed_events(
    NLEventCallBackInfo *nl_event_handler_info);

/* Decoders of one message, called by the monitor; they return at once for
 * other message types, null arguments or a message shorter than its
 * headers.  nlmsg_len is the only length they get: the caller must own
 * nlmsg_len bytes at nl_msg_header (the monitor passes only messages whose
 * length it checked against the bytes received).  Each fills a zeroed
 * record and calls its callback when it is not null. */
CMDLIB_API void util_netlink_on_new_delete_link(struct nlmsghdr *nl_msg_header,
                                                NLEventCallBackInfo *nl_event_handler_info);
CMDLIB_API void util_netlink_on_new_delete_addr(struct nlmsghdr *nl_msg_header,
                                                NLEventCallBackInfo *nl_event_handler_info);
CMDLIB_API void util_netlink_on_new_delete_route(struct nlmsghdr *nl_msg_header,
                                                 NLEventCallBackInfo *nl_event_handler_info);

/* Attribute index: walks the attributes in [attr, attr + len) and stores a
 * pointer to each whose type is at most max at rtattr_list[type] (a later
 * one of the same type replaces an earlier one).  The walk ends at the
 * first attribute shorter than its header or longer than what remains;
 * nothing outside [attr, attr + len) is read.  The caller zeroes the max + 1
 * entries first; absent attributes stay null. */
CMDLIB_API void util_netlink_parse_rtattr(struct rtattr **rtattr_list, int max, struct rtattr *attr,
                                          int len);

/* "NETLINK_EVENT_NEWLINK" ... "NETLINK_EVENT_DELROUTE", or "unknown event". */
CMDLIB_API char *util_netlink_event_to_string(NetlinkEvent event);

/* Print a record to standard output between two newlines when via_syslog
 * is 0; with any other value nothing is written (the decoders pass 1). */
CMDLIB_API void util_netlink_dump_NetlinkLinkEventData(int via_syslog, NetlinkLinkEventData *data);
CMDLIB_API void util_netlink_dump_NetlinkIPAddrEventData(int via_syslog,
                                                         NetlinkIPAddrEventData *data);
CMDLIB_API void util_netlink_dump_NetlinkRouteEventData(int via_syslog,
                                                        NetlinkRouteEventData *data);

CMDLIB_END_DECLS

#endif
