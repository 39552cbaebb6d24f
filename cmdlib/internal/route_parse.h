// Readers of the kernel's interface and route files and of the resolver
// file.  Each works on lines handed out by a LineReader or TextLineReader,
// so the same code runs on the real file and on test text.
#pragma once

#include <ctype.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"

namespace cmdlib {

// A "/proc/net/route" line whose destination (the eight hex digits after
// the first tab) is 0.0.0.0: *dev gets the text before that tab.
[[nodiscard]] constexpr bool default_route_device(std::string_view line, std::string_view *dev) {
    size_t tab = line.find('\t');
    if (tab == std::string_view::npos || line.substr(tab + 1, 8) != "00000000") return false;
    *dev = line.substr(0, tab);
    return true;
}

// WAN device from "/proc/net/route": only the first route after the header
// is examined, so a default route further down is not found and callers
// fall back to their default.
template <class Reader> bool wan_name_from_route(Reader &r, char *out, size_t size) {
    std::string_view line;
    if (!r.next(&line) || !r.next(&line)) return false;
    std::string_view dev;
    if (!default_route_device(line, &dev)) return false;
    copy_bounded(out, size, dev);
    return true;
}

// A "/proc/net/route" line that starts with wan (compared on wan's length),
// has destination 0 and a non-zero gateway: *gateway gets the gateway word
// as the kernel prints it, which is the address in network order.
inline bool wan_default_gateway(std::string_view line, std::string_view wan, uint32_t *gateway) {
    if (line.substr(0, wan.size()) != wan) return false;
    char buf[256];
    copy_bounded(buf, sizeof buf, line);
    unsigned long dst = 0, gw = 0;
    // The kernel prints these words as fixed hex; a malformed word ends the
    // match and the line is refused.
    if (sscanf(buf, "%*s%lX%lX", &dst, &gw) != 2 || dst != 0 || gw == 0) return false;  // NOLINT(cert-err34-c)
    *gateway = static_cast<uint32_t>(gw);
    return true;
}

// A "/proc/net/dev" line naming the interface (header lines have fewer
// than five fields when cut at blanks and colons).
inline bool netdev_line_names(std::string_view line, const char *name) {
    char buf[256];
    copy_bounded(buf, sizeof buf, line);
    util_strip_blank_of_string_end(buf);
    char *p = buf;
    while (*p == ' ') ++p;
    char *w[18];
    int n = util_get_all_args(p, ' ', ':', w, 18);
    return n >= 5 && strcmp(w[0], name) == 0;
}

// One line of "/proc/net/if_inet6".
struct Inet6Entry {
    unsigned char addr[16];
    unsigned ifindex, prefix_len, scope, flags;
    char dev[21];
};

constexpr unsigned kScopeGlobal = 0x00;
constexpr unsigned kScopeLink = 0x20;

inline bool parse_if_inet6_line(std::string_view line, Inet6Entry *e) {
    char buf[256];
    copy_bounded(buf, sizeof buf, line);
    unsigned b[16];
    int n = sscanf(buf,  // NOLINT(cert-err34-c): the count of fields read is checked
                   "%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x%2x %02x %02x %02x %02x %20s",
                   &b[0], &b[1], &b[2], &b[3], &b[4], &b[5], &b[6], &b[7], &b[8], &b[9], &b[10],
                   &b[11], &b[12], &b[13], &b[14], &b[15], &e->ifindex, &e->prefix_len, &e->scope,
                   &e->flags, e->dev);
    if (n != 21) return false;
    for (int i = 0; i < 16; ++i) e->addr[i] = static_cast<unsigned char>(b[i]);
    return true;
}

// First address of dev with the given scope; lines that do not parse are
// skipped.
template <class Reader> bool find_if_inet6(Reader &r, const char *dev, unsigned scope,
                                           unsigned char addr[16]) {
    std::string_view line;
    Inet6Entry e;
    while (r.next(&line)) {
        if (!parse_if_inet6_line(line, &e) || strcmp(e.dev, dev) != 0 || e.scope != scope) continue;
        memcpy(addr, e.addr, 16);
        return true;
    }
    return false;
}

// exactly three dots: the firmware's test for an IPv4 resolver line
[[nodiscard]] constexpr bool has_three_dots(std::string_view s) {
    int dots = 0;
    for (char c : s) dots += c == '.';
    return dots == 3;
}

// Nameserver addresses of a resolver file packed into buffer: each address,
// its NUL and one spare byte, the next slot of argv pointing at each.
// Returns the count.  The caller sizes buffer and argv for the file.
template <class Reader> int pack_nameservers(Reader &r, char *buffer, char **argv, bool v4,
                                             bool v6) {
    std::string_view line;
    int count = 0;
    size_t off = 0;
    while (r.next(&line)) {
        char buf[256];
        copy_bounded(buf, sizeof buf, line);
        util_strip_blank_of_string_end(buf);
        char *p = buf;
        while (*p == ' ') ++p;
        if (!*p) continue;
        char *w[18];
        int n = util_get_all_args_ext(p, ' ', '\t', 1, w, 18);
        if (n < 2 || strcmp(w[0], "nameserver") != 0 || !w[1][0]) continue;
        bool is_v6 = strchr(w[1], ':') != nullptr;
        if (is_v6 ? !v6 : !v4) continue;
        size_t len = strlen(w[1]);
        memcpy(buffer + off, w[1], len + 1);
        buffer[off + len + 1] = '\0';
        argv[count++] = buffer + off;
        off += len + 2;
    }
    return count;
}

// A resolver line util_get_dns keeps for the wanted family: its first
// non-blank character is 'n' or 'N' and it has three dots (IPv4) or not.
[[nodiscard]] inline bool dns_line_wanted(std::string_view line, bool want_v4) {
    size_t i = 0;
    while (i < line.size() && line[i] != '\n' && isspace(static_cast<unsigned char>(line[i]))) ++i;
    if (i >= line.size() || (line[i] != 'n' && line[i] != 'N')) return false;
    return has_three_dots(line) == want_v4;
}

}  // namespace cmdlib
