// L2TP server probing and the LNS selection files.
#include "cmdlib/lns.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "cmdlib/internal/l2tp_wire.h"
#include "cmdlib/internal/lns_select.h"
#include "cmdlib/internal/module_keys.h"
#include "cmdlib/internal/net_waits.h"
#include "cmdlib/internal/record_field.h"

namespace l2tp = cmdlib::l2tp;

namespace {

// The messages as sent, shared by every probe of the process.
uint8_t l2tp_sccrq_data_new[l2tp::kSccrqBufferSize];
uint8_t l2tp_stopccn_data_new[l2tp::l2tp_stopccn_data.size()];

constexpr size_t kReceiveSize = 256;
constexpr const char *kDefaultHostName = "l2tp-client";

bool file_exists(const char *path) { return access(path, F_OK) == 0; }

}  // namespace

CMDLIB_API int util_check_if_one_udp_port_is_open(const char *ip_addr, int port, const char *hostname) {
    // Deliberately, a caller's host name is not sent: the Host Name goes
    // out empty (with the Challenge); only without one is "l2tp-client"
    // named, and the Challenge left off.
    const bool default_name = !hostname || !*hostname;
    const size_t len = l2tp::build_sccrq(l2tp_sccrq_data_new, sizeof l2tp_sccrq_data_new,
                                         default_name ? kDefaultHostName : "", !default_name);

    struct sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    if (!ip_addr || inet_pton(AF_INET, ip_addr, &to.sin_addr) <= 0) return 0;
    cmdlib::UniqueFd fd(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!fd) return 0;
    const int ms = cmdlib::net_waits().lns_recv_ms;
    struct timeval tv = {ms / 1000, (ms % 1000) * 1000};
    // Connected, so that a port-unreachable answer ends the wait at once.
    if (setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv) != 0 ||
        connect(fd.get(), reinterpret_cast<struct sockaddr *>(&to), sizeof to) != 0)
        return 0;

    (void)send(fd.get(), l2tp_sccrq_data_new, len, 0);
    uint8_t answer[kReceiveSize];
    ssize_t got = recv(fd.get(), answer, sizeof answer, 0);
    if (got <= 0) return 0;

    // Tear down the tunnel the server opened for us.  Without a usable
    // reply the StopCCN still goes out, to tunnel 0 with Ns 1.
    int nr = 1;
    int peer_tunnel = l2tp::peer_tunnel_id(answer, static_cast<size_t>(got), &nr);
    if (peer_tunnel != -1) {
        l2tp::build_stopccn(l2tp_stopccn_data_new, static_cast<uint16_t>(peer_tunnel), static_cast<uint16_t>(nr));
        if (send(fd.get(), l2tp_stopccn_data_new, sizeof l2tp_stopccn_data_new, 0) > 0)
            (void)recv(fd.get(), answer, sizeof answer, 0);
    }
    return 1;
}

CMDLIB_API int util_get_sccrp_peer_tunnel_id(const unsigned char *l2tp_message, int *nr) {
    if (!l2tp_message) return 0;
    return l2tp::peer_tunnel_id(l2tp_message, kReceiveSize, nr);
}

CMDLIB_API int util_read_lns_info(char *lns, char *name, char *pass) {
    return cmdlib::read_lines<cmdlib::kLnsLineSize>(UTIL_LNS_SELECTED_INFO_FILE, [&](auto &r) {
               cmdlib::read_lns_selection(r, lns, name, pass);
           })
               ? 1
               : 0;
}

CMDLIB_API int util_have_selected_one_lns(void) { return file_exists(UTIL_LNS_HAVE_SELECTED_FILE) ? 1 : 0; }

CMDLIB_API int util_should_always_use_initial_selected_lns(const InfoStruct *info_struct) {
    return cmdlib::record_says_yes(info_struct, &InfoStruct::QX_ALWAYS_USE_INITIAL_LNS);
}

CMDLIB_API int util_should_recheck_not_exist_lns_server(const InfoStruct *info_struct) {
    if (file_exists(UTIL_LNS_USE_SPECIFIED_FILE)) return 0;
    return cmdlib::record_says_yes(info_struct, &InfoStruct::QX_REDIAL_NOT_EXIST_LNS);
}

CMDLIB_API int util_should_check_if_lns_alive(const InfoStruct *info_struct) {
    return info_struct && cmdlib::field_text(info_struct->QX_CHECK_IF_LNS_ALIVE) != "no" ? 1 : 0;
}
