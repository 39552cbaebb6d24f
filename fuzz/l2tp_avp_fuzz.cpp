// The L2TP probe's walk for the peer's tunnel id over arbitrary replies
// (never past the bytes given, whatever the length fields say), the
// request built around a host name from the data, and the LNS selection
// reader over the same bytes as text (values fit the 255-byte buffers).
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/l2tp_wire.h"
#include "cmdlib/internal/lns_select.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    namespace l2tp = cmdlib::l2tp;
    int nr = -7;
    int id = l2tp::peer_tunnel_id(data, size, &nr);
    if (id < -1 || id > 0xFFFF || (id != 0 && (nr < 0 || nr > 0xFFFF))) __builtin_trap();

    std::string_view text(reinterpret_cast<const char *>(data), size);
    uint8_t request[l2tp::kSccrqBufferSize];
    std::string_view name = text.substr(0, 40);
    size_t len = l2tp::build_sccrq(request, sizeof request, name, size % 2 == 0);
    if (len != 0 && (len != 119 + name.size() - (size % 2 ? 22 : 0) ||
                     (request[2] << 8 | request[3]) != static_cast<int>(len)))
        __builtin_trap();

    char lns[255], user[255], pass[255];
    memset(lns, 0, sizeof lns);
    cmdlib::TextLineReader<cmdlib::kLnsLineSize> r(text);
    cmdlib::read_lns_selection(r, lns, user, pass);
    if (!memchr(lns, '\0', sizeof lns)) __builtin_trap();
    return 0;
}
