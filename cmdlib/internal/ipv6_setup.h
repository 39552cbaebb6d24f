// The IPv6 set-up's pure halves: the modified EUI-64, the identifier's
// text form, the address text handed to "ip", and the resolver rewrite over
// a reader of the old file.  network_ipv6.cpp runs the commands and binds
// the files.
#pragma once

#include <stddef.h>

#include <string_view>

#include "base/internal/text.h"
#include "cmdlib/network.h"

namespace cmdlib {

// Byte 0 gets the universal/local bit flipped; ff fe goes in the middle.
constexpr EUI64 eui64_from_mac(const unsigned char mac[6]) {
    return EUI64{{static_cast<unsigned char>(mac[0] ^ 0x02), mac[1], mac[2], 0xff, 0xfe, mac[3], mac[4],
                  mac[5]}};
}

// "::0211:22ff:fe33:4455": the eight identifier bytes as the stored form.
inline size_t format_interface_id(const unsigned char id[8], char *out, size_t size) {
    return format_bounded(out, size, "::%02x%02x:%02x%02x:%02x%02x:%02x%02x", id[0], id[1], id[2], id[3],
                          id[4], id[5], id[6], id[7]);
}

// All 16 bytes as eight groups "%02x%02x" joined by ':' (39 characters),
// the form the address commands get.
inline size_t format_ipv6_groups(const unsigned char a[16], char *out, size_t size) {
    return format_bounded(out, size, "%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x:%02x%02x",
                          a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11], a[12],
                          a[13], a[14], a[15]);
}

// A server text up to its first line break: one server, one line.
[[nodiscard]] constexpr std::string_view one_line(const char *text) {
    std::string_view s = text ? std::string_view(text) : std::string_view("");
    return s.substr(0, s.find_first_of("\r\n"));
}

// The new resolver file from the old one's pieces (255 bytes a read, as
// LineReader<256> gives them): every piece without ':' is kept as it is,
// so IPv4 servers and the other lines stay and every IPv6 server goes;
// then "nameserver S\n" for each non-empty server given.  A kept piece
// always ends its line, also when the old file's last line had no line
// feed or the piece's line end went with a dropped tail.  emit receives
// the bytes in order.
template <class Reader, class Emit>
void rewrite_resolver(Reader &old_file, std::string_view server1, std::string_view server2, Emit &&emit) {
    std::string_view piece;
    bool open_line = false;  // a kept piece awaits its line feed
    while (old_file.next(&piece)) {
        if (piece.empty()) continue;
        bool ends_line = piece.back() == '\n';
        if (piece.find(':') == std::string_view::npos) {
            emit(piece);
            open_line = !ends_line;
        } else if (open_line && ends_line) {
            emit("\n");  // the dropped tail carried the kept head's line end
            open_line = false;
        }
    }
    if (open_line) emit("\n");
    for (std::string_view server : {server1, server2}) {
        if (server.empty()) continue;
        emit("nameserver ");
        emit(server);
        emit("\n");
    }
}

}  // namespace cmdlib
