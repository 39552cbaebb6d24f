// network: connection tracking: the NAT session table and the collection of
// DNS and ICMP destinations that prove the WAN works.
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/conntrack_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"

using cmdlib::LineReader;
using cmdlib::UniqueFile;

namespace {

constexpr const char kConntrackFile[] = "/proc/net/nf_conntrack";
constexpr const char kNatOutput[] = "/tmp/.nat_output";
constexpr const char kWanGatewayFile[] = "/tmp/cmdlib/.wan_network_card_gateway";

}  // namespace

// The largest remaining lifetime seen on a DNS, SIP or GRE connection
// during this process; it only grows.
CMDLIB_API int max_udp_timeout = 0;

namespace {

// The conntrack file is read in large blocks: every read() makes the kernel
// walk the table again up to the current position.
constexpr size_t kConntrackReadBuffer = 64 * 1024;

UniqueFile open_conntrack(const char *path, char *buf) {
    UniqueFile f(path, "r");
    if (f && buf) setvbuf(f.get(), buf, _IOFBF, kConntrackReadBuffer);
    return f;
}

}  // namespace

namespace cmdlib {

int nat_session_table_from(const char *conntrack_path, const char *wan_ip, const char *lan_ip,
                           const char *scratch_path, const char *output_path) {
    cmd_rm(scratch_path);
    cmd_touch(scratch_path);
    cmdlib::UniqueMalloc<char> buf(kConntrackReadBuffer);  // outlives the stream using it
    UniqueFile in = open_conntrack(conntrack_path, buf.get());
    if (!in) return -1;
    UniqueFile out(scratch_path, "a");
    if (!out) return -1;
    NatSessionParser parser(wan_ip, lan_ip);
    LineReader<512> r(in.get());
    std::string_view line;
    int sessions = 0;
    while (sessions < kMaxNatSessions && r.next(&line)) {
        if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
        char session[256];
        size_t n = parser.feed(line, session, sizeof session);
        if (n == 0) continue;
        fwrite(session, 1, n, out.get());
        ++sessions;
    }
    out.reset();
    cmd_rm(output_path);
    cmd_mv(scratch_path, output_path);
    return 0;
}

int collect_conntrack_file(const char *path, const CollectContext &ctx,
                           DestIPInConntrackInfo *info, int *max_timeout) {
    cmdlib::UniqueMalloc<char> buf(kConntrackReadBuffer);  // outlives the stream using it
    UniqueFile in = open_conntrack(path, buf.get());
    if (!in) return -1;
    LineReader<512> r(in.get());
    std::string_view line;
    while (r.next(&line)) collect_conntrack_line(line, ctx, info, max_timeout);
    return 0;
}

}  // namespace cmdlib

CMDLIB_API int util_gen_nat_session_table(const char *output_path) {
    if (!output_path) return -1;
    char wan_ip[16] = "", lan_ip[16] = "";
    if (cmd_get_ipv4_address(util_get_wan_interface_name(), wan_ip) != 0) wan_ip[0] = '\0';
    if (cmd_get_ipv4_address(cmdlib::kBridgeName, lan_ip) != 0) lan_ip[0] = '\0';
    return cmdlib::nat_session_table_from(kConntrackFile, wan_ip, lan_ip, kNatOutput, output_path);
}

CMDLIB_API int util_collect_dns_and_icmp_dest_ip(DestIPInConntrackInfo *conntrack_info) {
    if (!conntrack_info) return -1;
    conntrack_info->network_is_ok = 0;
    const char *wan = util_get_wan_interface_name();
    char wan_ip[16];
    if (!wan || !wan[0] || cmd_get_ipv4_address(wan, wan_ip) != 0) return -1;
    char gateway[64];
    util_read_ip_address(kWanGatewayFile, gateway, sizeof gateway);
    cmdlib::CollectContext ctx;
    cmdlib::make_collect_context(wan_ip, gateway, &ctx);
    return cmdlib::collect_conntrack_file(kConntrackFile, ctx, conntrack_info, &max_udp_timeout);
}

CMDLIB_API void util_add_ip_to_buffer(char *ip, int ip_type, DestIPInConntrackInfo *conntrack_info) {
    cmdlib::add_conntrack_ip(ip, ip_type, conntrack_info);
}
