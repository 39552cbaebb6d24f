// TCP connect with a bounded wait, and the waits of the library's own
// network clients (cmdlib/internal/net_waits.h).
#include "cmdlib/cmdlib_socket.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "base/internal/raii.h"
#include "cmdlib/internal/net_waits.h"

namespace {

void pause_250_ms() { usleep(250000); }

constexpr cmdlib::NetWaits kFirmwareWaits{pause_250_ms, 5000, 4000, 10000};
cmdlib::NetWaits g_waits = kFirmwareWaits;

bool set_timeout(int fd, int option, int seconds) {
    struct timeval tv = {seconds, 0};
    return setsockopt(fd, SOL_SOCKET, option, &tv, sizeof tv) == 0;
}

bool set_nonblocking(int fd, int on) { return ioctl(fd, FIONBIO, &on) == 0; }

}  // namespace

cmdlib::NetWaits cmdlib::default_net_waits() { return kFirmwareWaits; }

const cmdlib::NetWaits &cmdlib::net_waits() { return g_waits; }

cmdlib::NetWaits cmdlib::set_net_waits(const NetWaits &waits) {
    NetWaits previous = g_waits;
    g_waits = waits;
    if (!g_waits.resolver_pause) g_waits.resolver_pause = pause_250_ms;
    return previous;
}

CMDLIB_API int util_create_socket(const char *host, int port, int *socket_handle) {
    if (!host || !socket_handle) return -1;
    cmdlib::UniqueFd fd(socket(AF_INET, SOCK_STREAM, 0));
    if (!fd || !set_nonblocking(fd.get(), 1)) return -1;
    if (!set_timeout(fd.get(), SO_RCVTIMEO, 1) || !set_timeout(fd.get(), SO_SNDTIMEO, 10)) return -1;

    struct sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    if (inet_pton(AF_INET, host, &to.sin_addr) <= 0) return -1;

    int connect_errno = 0;
    if (connect(fd.get(), reinterpret_cast<struct sockaddr *>(&to), sizeof to) != 0) {
        connect_errno = errno;
        // Wait for the handshake to finish (or fail); poll rather than
        // select, so a daemon's descriptor numbers above FD_SETSIZE are safe.
        struct pollfd p = {fd.get(), POLLOUT, 0};
        int ready;
        do {
            ready = poll(&p, 1, cmdlib::net_waits().connect_wait_ms);
        } while (ready < 0 && errno == EINTR);
        if (ready <= 0) return -1;
        int error = 0;
        socklen_t len = sizeof error;
        if (getsockopt(fd.get(), SOL_SOCKET, SO_ERROR, &error, &len) != 0 || error != 0) return -1;
        if (connect_errno != EINPROGRESS) return -1;
    }
    if (!set_nonblocking(fd.get(), 0)) return -1;
    *socket_handle = fd.release();
    return 0;
}
