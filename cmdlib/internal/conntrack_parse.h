// Readers of "/proc/net/nf_conntrack" lines: the NAT session table and the
// collection of remote addresses that answered the router's WAN address.
#pragma once

#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "cmdlib/network.h"

namespace cmdlib {

constexpr int kMaxNatSessions = 256;

// The conversions the session table reads words with: "%Ns" (blank-skipping,
// at most N-1 characters up to the next white space), "prefix%Ns" and
// "prefix%d".  On failure the target keeps its value.
inline bool scan_word(std::string_view w, char *out, size_t size) {
    std::string_view t = next_word(&w, kWhiteSpace);
    if (t.empty()) return false;
    copy_bounded(out, size, t);
    return true;
}

inline bool scan_prefixed_word(std::string_view w, std::string_view prefix, char *out, size_t size) {
    return consume_prefix(&w, prefix) && scan_word(w, out, size);
}

inline bool scan_prefixed_int(std::string_view w, std::string_view prefix, int *out) {
    if (!consume_prefix(&w, prefix)) return false;
    size_t start = w.find_first_not_of(kWhiteSpace);
    if (start == std::string_view::npos) return false;
    w.remove_prefix(start);
    size_t digits = (w[0] == '-' || w[0] == '+') ? 1 : 0;
    if (digits >= w.size() || w[digits] < '0' || w[digits] > '9') return false;
    *out = atoi_sat(w);
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

    // Parses one line (without its newline).  Returns the length of the
    // table line written into out, 0 when the line is no established IPv4
    // TCP/UDP session.
    size_t feed(std::string_view line, char *out, size_t size) {
        int pos = 0;
        for (std::string_view w = next_word(&line, " "); !w.empty(); w = next_word(&line, " "), ++pos) {
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
    bool take_word(std::string_view w, int *pos) {
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
            if (w.find("UNREPLIED") != std::string_view::npos) return false;
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

// One conntrack line for the destination collector.
inline void collect_conntrack_line(std::string_view line, const CollectContext &c,
                                   DestIPInConntrackInfo *info, int *max_timeout) {
    // Cheap test first: the exact word must at least occur as text.
    if (line.find(c.dst_word) == std::string_view::npos) return;
    std::string_view w[64];  // words past the 64th are not looked at
    const size_t n = split_words(strip_trailing_space(line), " \t", w, 64);
    if (n <= 4 || w[IPVX] != "ipv4") return;
    // Position of the first word equal to "dst=<WAN address>".
    auto find = [&](std::string_view word) {
        for (size_t i = 0; i < n; ++i)
            if (w[i] == word) return i;
        return n;
    };
    auto has = [&](std::string_view word) { return find(word) < n; };
    const size_t pos = find(c.dst_word);
    if (pos == n) return;
    // The remote address is the "src=" word just before it.
    std::string_view remote_word = pos > 0 ? w[pos - 1] : std::string_view();
    const bool have_remote = consume_prefix(&remote_word, "src=");
    char remote[CONNTRACK_IP_WIDTH * 2] = "";
    if (have_remote) copy_bounded(remote, sizeof remote, remote_word);
    const int life = atoi_sat(w[LIVE_TIME]);
    const std::string_view proto = w[PROTOCOL];
    auto fresh_udp_like = [&]() {
        if (have_remote) add_conntrack_ip(remote, 1, info);
        if (life > *max_timeout) *max_timeout = life;
        if (static_cast<long long>(*max_timeout) - life < kFreshUdpSpan) info->network_is_ok = 1;
    };
    const bool icmp = proto == "icmp", udp = proto == "udp", tcp = proto == "tcp";
    if (icmp && has("type=0") && has("code=0") && !has("[UNREPLIED]")) {
        // our own echo or the gateway's proves nothing about the Internet
        if (have_remote && (remote_word == c.wan_ip || remote_word == c.gateway)) return;
        if (have_remote) add_conntrack_ip(remote, 0, info);
        info->network_is_ok = 1;
    }
    if (!has("[ASSURED]")) return;
    if (udp && has("sport=53")) fresh_udp_like();
    if (tcp && (has("sport=80") || has("sport=443")) && have_remote) add_conntrack_ip(remote, 1, info);
    if (udp && has("sport=5060")) fresh_udp_like();
    if (proto == "gre") fresh_udp_like();
}

}  // namespace cmdlib
