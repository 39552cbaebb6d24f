/* lns: whether an L2TP network server answers, and the LNS selection the
 * VPN client manager leaves in files. */
#ifndef CMDLIB_LNS_H
#define CMDLIB_LNS_H

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define UTIL_LNS_SELECTED_INFO_FILE "/tmp/cmdlib/.selected_lns_server_info"
#define UTIL_LNS_HAVE_SELECTED_FILE "/tmp/cmdlib/.have_selected_one_lns"
#define UTIL_LNS_USE_SPECIFIED_FILE "/tmp/cmdlib/.use_specified_lns_server_index"

/* Sends an L2TP SCCRQ to ip_addr (dotted IPv4) and port and waits up to
 * 4 s for any answer; an answering server's half-open tunnel is closed
 * again with a StopCCN (waiting up to 4 s more for its acknowledgement).
 * Without a hostname the request names the host "l2tp-client" and carries
 * no Challenge (108 bytes); with one, the Host Name is sent empty and the
 * Challenge kept (119 bytes).  1 if the server answered, else 0.  The
 * messages are built in buffers shared by the process: do not probe from
 * two threads at once. */
CMDLIB_API int util_check_if_one_udp_port_is_open(const char *ip_addr, int port, const char *hostname);

/* The peer's Assigned Tunnel ID from a reply to the SCCRQ; the peer's Nr
 * goes to *nr.  0 when it is not a usable control message (T, L, S set and
 * O clear), -1 when the AVP is missing.  At most 256 bytes of the message
 * are read (the probe's receive size) and never past its length field. */
CMDLIB_API int util_get_sccrp_peer_tunnel_id(const unsigned char *l2tp_message, int *nr);

/* Reads UTIL_LNS_SELECTED_INFO_FILE: 1 if it exists (each given buffer,
 * at least 255 bytes, gets its key's value), else 0. */
CMDLIB_API int util_read_lns_info(char *lns, char *name, char *pass);
/* whether UTIL_LNS_HAVE_SELECTED_FILE exists */
CMDLIB_API int util_have_selected_one_lns(void);
/* QX_ALWAYS_USE_INITIAL_LNS is "yes" */
CMDLIB_API int util_should_always_use_initial_selected_lns(const InfoStruct *info_struct);
/* 0 while UTIL_LNS_USE_SPECIFIED_FILE exists, else QX_REDIAL_NOT_EXIST_LNS is "yes" */
CMDLIB_API int util_should_recheck_not_exist_lns_server(const InfoStruct *info_struct);
/* QX_CHECK_IF_LNS_ALIVE is anything but "no": on by default */
CMDLIB_API int util_should_check_if_lns_alive(const InfoStruct *info_struct);

CMDLIB_END_DECLS

#endif
