// Readers of "/proc/net/nf_conntrack" lines: the NAT session table and the
// collection of remote addresses that answered the router's WAN address.
#pragma once

#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/network.h"

namespace cmdlib {

constexpr int kMaxNatSessions = 256;

// The conversions the session table reads words with: "%Ns" (blank-skipping,
// at most N characters up to the next white space), "prefix%Ns" and
// "prefix%d".  On failure the target keeps its value.
inline bool scan_word(const char *s, char *out, size_t size) {
    while (*s && isspace(static_cast<unsigned char>(*s))) ++s;
    if (!*s) return false;
    size_t n = 0;
    while (s[n] && !isspace(static_cast<unsigned char>(s[n])) && n + 1 < size) {
        out[n] = s[n];
        ++n;
    }
    out[n] = '\0';
    return true;
}

inline bool scan_prefixed_word(const char *s, std::string_view prefix, char *out, size_t size) {
    if (strncmp(s, prefix.data(), prefix.size()) != 0) return false;
    return scan_word(s + prefix.size(), out, size);
}

inline bool scan_prefixed_int(const char *s, std::string_view prefix, int *out) {
    if (strncmp(s, prefix.data(), prefix.size()) != 0) return false;
    std::string_view v = s + prefix.size();
    while (!v.empty() && isspace(static_cast<unsigned char>(v[0]))) v.remove_prefix(1);
    size_t digits = (!v.empty() && (v[0] == '-' || v[0] == '+')) ? 1 : 0;
    if (digits >= v.size() || v[digits] < '0' || v[digits] > '9') return false;
    *out = atoi_sat(v);
    return true;
}

// Turns conntrack lines into session-table lines
// "PROTO|src|sport|translated port|dst|dport|direction".  The parsed values
// and the direction carry over from one line to the next on purpose: a word
// that does not parse keeps the previous session's value, and a session
// matching neither WAN nor LAN keeps the previous direction.
class NatSessionParser {
  public:
    NatSessionParser(const char *wan_ip, const char *lan_ip) {
        copy_bounded(wan_ip_, sizeof wan_ip_, wan_ip ? wan_ip : "");
        copy_bounded(lan_ip_, sizeof lan_ip_, lan_ip ? lan_ip : "");
    }

    // Parses one line (without its newline; cut in place).  Returns the
    // length of the table line written into out, 0 when the line is no
    // established IPv4 TCP/UDP session.
    size_t feed(char *line, char *out, size_t size) {
        int pos = 0;
        char *save = nullptr;
        for (char *w = strtok_r(line, " ", &save); w; w = strtok_r(nullptr, " ", &save), ++pos) {
            if (!take_word(w, &pos)) return 0;
        }
        if (strncmp(rep_dst_, wan_ip_, sizeof rep_dst_) == 0) copy_bounded(dir_, sizeof dir_, "WAN");
        if (strncmp(req_dst_, lan_ip_, sizeof req_dst_) == 0) copy_bounded(dir_, sizeof dir_, "LAN");
        char proto[sizeof proto_];
        memcpy(proto, proto_, sizeof proto);
        for (char *p = proto; *p; ++p) *p = static_cast<char>(toupper(static_cast<unsigned char>(*p)));
        return format_bounded(out, size, "%s|%s|%d|%d|%s|%d|%s\n", proto, req_src_, req_sport_,
                              rep_dport_, req_dst_, req_dport_, dir_);
    }

  private:
    // false drops the line
    bool take_word(const char *w, int *pos) {
        switch (*pos) {
        case IPVX:
            scan_word(w, family_, sizeof family_);
            return strcmp(family_, "ipv6") != 0;
        case PROTOCOL:
            scan_word(w, proto_, sizeof proto_);
            return strcmp(proto_, "tcp") == 0 || strcmp(proto_, "udp") == 0;
        case CONNECT_STATUS:
            if (strcmp(proto_, "tcp") == 0) {
                scan_word(w, state_, sizeof state_);
                return strcmp(state_, "ESTABLISHED") == 0;
            }
            ++*pos;  // no state word: this is already the request source
            scan_prefixed_word(w, "src=", req_src_, sizeof req_src_);
            return true;
        case INSIDE_SRC_IP: scan_prefixed_word(w, "src=", req_src_, sizeof req_src_); return true;
        case INSIDE_DST_IP: scan_prefixed_word(w, "dst=", req_dst_, sizeof req_dst_); return true;
        case INSIDE_SRC_PORT: scan_prefixed_int(w, "sport=", &req_sport_); return true;
        case INSIDE_DST_PORT: scan_prefixed_int(w, "dport=", &req_dport_); return true;
        case OUTSIDE_SRC_IP:
            if (strstr(w, "UNREPLIED")) return false;
            scan_prefixed_word(w, "src=", rep_src_, sizeof rep_src_);
            return true;
        case OUTSIDE_DST_IP: scan_prefixed_word(w, "dst=", rep_dst_, sizeof rep_dst_); return true;
        case OUTSIDE_SRC_PORT: scan_prefixed_int(w, "sport=", &rep_sport_); return true;
        case OUTSIDE_DST_PORT: scan_prefixed_int(w, "dport=", &rep_dport_); return true;
        case REPLY_FLAG:
            if (strcmp(proto_, "tcp") != 0) ++*pos;
            return true;
        default: return true;
        }
    }

    char wan_ip_[32], lan_ip_[32];
    char family_[8] = "", proto_[8] = "", state_[16] = "";
    char req_src_[32] = "", req_dst_[32] = "", rep_src_[32] = "", rep_dst_[32] = "";
    int req_sport_ = 0, req_dport_ = 0, rep_sport_ = 0, rep_dport_ = 0;
    char dir_[4] = "";
};

// Adds ip to the ICMP list (type 0) or the DNS list (type 1) without
// duplicates; an address proven by ping leaves the DNS list.
inline void add_conntrack_ip(const char *ip, int type, DestIPInConntrackInfo *info) {
    if (!ip || !info || (type != 0 && type != 1)) return;
    char want[CONNTRACK_IP_WIDTH];
    copy_bounded(want, sizeof want, ip);  // compare as it would be stored
    if (want[0] == '\0') return;           // would match every empty slot
    char(*list)[CONNTRACK_IP_WIDTH] = type == 0 ? info->icmp_ip_address : info->dns_ip;
    int *count = type == 0 ? &info->valid_icmp_ip_count : &info->valid_dns_ip_count;
    for (int i = 0; i < CONNTRACK_IP_SLOTS; ++i) {
        if (strncmp(list[i], want, CONNTRACK_IP_WIDTH) == 0) break;
        if (list[i][0] == '\0') {
            memcpy(list[i], want, sizeof want);
            ++*count;
            break;
        }
    }
    if (type != 0) return;
    for (int i = 0; i < CONNTRACK_IP_SLOTS; ++i) {
        if (strncmp(info->dns_ip[i], want, CONNTRACK_IP_WIDTH) != 0) continue;
        memmove(info->dns_ip[i], info->dns_ip[i + 1],
                static_cast<size_t>(CONNTRACK_IP_SLOTS - 1 - i) * CONNTRACK_IP_WIDTH);
        memset(info->dns_ip[CONNTRACK_IP_SLOTS - 1], 0, CONNTRACK_IP_WIDTH);
        --info->valid_dns_ip_count;
        break;
    }
}

// What the collector compares lines with: the router's WAN address, its
// gateway and the word "dst=<WAN address>".
struct CollectContext {
    char wan_ip[32];
    char gateway[64];
    char dst_word[40];
};

inline void make_collect_context(const char *wan_ip, const char *gateway, CollectContext *c) {
    copy_bounded(c->wan_ip, sizeof c->wan_ip, wan_ip ? wan_ip : "");
    copy_bounded(c->gateway, sizeof c->gateway, gateway ? gateway : "");
    format_bounded(c->dst_word, sizeof c->dst_word, "dst=%s", c->wan_ip);
}

// Remaining lifetime within this span of the longest seen counts as fresh.
constexpr int kFreshUdpSpan = 121;

// One conntrack line (cut in place) for the destination collector.
inline void collect_conntrack_line(char *line, const CollectContext &c,
                                   DestIPInConntrackInfo *info, int *max_timeout) {
    // Cheap test first: the exact word must at least occur as text.
    if (!strstr(line, c.dst_word)) return;
    util_strip_blank_of_string_end(line);
    char *w[64];
    int n = util_get_all_args(line, ' ', '\t', w, 64);
    int pos = 0;
    if (n <= 4 || strcmp(w[IPVX], "ipv4") != 0 ||
        !util_contains_specified_parameter(w, n, c.dst_word, 0, &pos))
        return;
    const char *remote = pos > 0 && strncmp(w[pos - 1], "src=", 4) == 0 ? w[pos - 1] + 4 : nullptr;
    int life = atoi_sat(w[LIVE_TIME]);
    const char *proto = w[PROTOCOL];
    auto has = [&](const char *word) {
        return util_contains_specified_parameter(w, n, word, 0, nullptr) != 0;
    };
    auto fresh_udp_like = [&]() {
        if (remote) add_conntrack_ip(remote, 1, info);
        if (life > *max_timeout) *max_timeout = life;
        if (static_cast<long long>(*max_timeout) - life < kFreshUdpSpan) info->network_is_ok = 1;
    };
    bool icmp = strcmp(proto, "icmp") == 0, udp = strcmp(proto, "udp") == 0,
         tcp = strcmp(proto, "tcp") == 0;
    if (icmp && has("type=0") && has("code=0") && !has("[UNREPLIED]")) {
        // our own echo or the gateway's proves nothing about the Internet
        if (remote && (strcmp(remote, c.wan_ip) == 0 || strcmp(remote, c.gateway) == 0)) return;
        if (remote) add_conntrack_ip(remote, 0, info);
        info->network_is_ok = 1;
    }
    bool assured = has("[ASSURED]");
    if (!assured) return;
    if (udp && has("sport=53")) fresh_udp_like();
    if (tcp && (has("sport=80") || has("sport=443")) && remote) add_conntrack_ip(remote, 1, info);
    if (udp && has("sport=5060")) fresh_udp_like();
    if (strcmp(proto, "gre") == 0) fresh_udp_like();
}

}  // namespace cmdlib
