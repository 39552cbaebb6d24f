/* cmdlib_socket: a TCP connect with a bounded wait, for daemons that must
 * not hang on a server that does not answer. */
#ifndef CMDLIB_SOCKET_H
#define CMDLIB_SOCKET_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* Connects to host (a dotted IPv4 address; names are not resolved here)
 * and port, waiting at most 10 s for the connection.  0 and a connected,
 * blocking TCP descriptor in *socket_handle, whose receive time-out is 1 s
 * and send time-out 10 s; -1 on any failure (no descriptor is left open). */
CMDLIB_API int util_create_socket(const char *host, int port, int *socket_handle);

CMDLIB_END_DECLS

#endif
