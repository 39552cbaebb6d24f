// Connection-tracking lines over arbitrary bytes: the session-table parser
// and the destination collector, in 511-byte reads as the files are read.
// Every session line must keep its shape and the address lists their
// bounds and counts.
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/conntrack_parse.h"

namespace {

void check_list(const char (*list)[CONNTRACK_IP_WIDTH], int count) {
    int filled = 0;
    for (int i = 0; i < CONNTRACK_IP_SLOTS; ++i) {
        if (!memchr(list[i], '\0', CONNTRACK_IP_WIDTH)) __builtin_trap();
        filled += list[i][0] != '\0';
    }
    if (count != filled || count < 0 || count > CONNTRACK_IP_SLOTS) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    cmdlib::NatSessionParser parser("10.0.0.2", "192.168.1.1");
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    cmdlib::CollectContext ctx;
    cmdlib::make_collect_context("10.0.0.2", "10.0.0.1", &ctx);
    int max_timeout = 0;

    cmdlib::TextLineReader<512> r(text);
    std::string_view line;
    while (r.next(&line)) {
        char buf[512], copy[512];
        memcpy(buf, line.data(), line.size());
        buf[line.size()] = '\0';
        memcpy(copy, buf, line.size() + 1);
        char out[256];
        memset(out, 0x5a, sizeof out);
        size_t n = parser.feed(buf, out, sizeof out);
        if (n >= sizeof out || (n && (out[n] != '\0' || out[n - 1] != '\n'))) __builtin_trap();
        // seven fields (the words come from the input and may hold '|'
        // themselves), one line
        int bars = 0;
        for (size_t i = 0; i < n; ++i) {
            bars += out[i] == '|';
            if (out[i] == '\n' && i + 1 != n) __builtin_trap();
        }
        if (n && bars < 6) __builtin_trap();

        int before = max_timeout;
        cmdlib::collect_conntrack_line(copy, ctx, &info, &max_timeout);
        if (max_timeout < before) __builtin_trap();
        check_list(info.icmp_ip_address, info.valid_icmp_ip_count);
        check_list(info.dns_ip, info.valid_dns_ip_count);
    }
    return 0;
}
