// Route and rule listings: the parsers of "route -n" and "iptables -S"
// lines, the checker compares, and the fix commands.  Each listing line is
// split and parsed once; every checker is then a cheap compare against the
// parsed line, so a pass costs lines x checkers compares, never lines x
// checkers x options.  Everything here works on text (lines handed out by a
// LineReader or TextLineReader), so tests and fuzz targets feed it directly.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"

namespace cmdlib {

// At most this many words of a listing line are looked at.
constexpr size_t kListingMaxWords = 64;

// ---- checker fields -----------------------------------------------------------

// A text field of a checker record: a character array at an offset.  The
// caller may have filled it to the last byte without a terminator, so it is
// never read past its width.
struct RecordText {
    size_t offset;
    size_t width;
};

[[nodiscard]] inline std::string_view record_text(const void *record, RecordText f) {
    const char *p = static_cast<const char *>(record) + f.offset;
    return {p, strnlen(p, f.width)};
}

[[nodiscard]] constexpr char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] constexpr bool equals_nocase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (ascii_lower(a[i]) != ascii_lower(b[i])) return false;
    return true;
}

// The field equals v.  Costs at most v's length: the field is not measured
// first, its terminator is looked for right after v's length.
template <bool NoCase>
[[nodiscard]] inline bool record_text_equals(const void *record, RecordText f, std::string_view v) {
    if (v.size() > f.width) return false;
    const char *p = static_cast<const char *>(record) + f.offset;
    if (v.size() < f.width && p[v.size()] != '\0') return false;
    if constexpr (NoCase) {
        return equals_nocase(std::string_view(p, v.size()), v);
    } else {
        return v.empty() || memcmp(p, v.data(), v.size()) == 0;
    }
}

#define CMDLIB_RECORD_TEXT(type, member) \
    RecordText { offsetof(type, member), sizeof(type::member) }

// ---- route -n -------------------------------------------------------------------

// Only the first 8 words of a line take part: columns 1 to 3 and 8
// (Destination, Gateway, Genmask, Iface), and lines with fewer than 8 words
// are not considered.
constexpr size_t kRouteListingWords = 8;

struct RouteColumn {
    unsigned bit;      // ROUTE_CHECK_*
    size_t word;       // 0-based word of the listing line
    RecordText field;  // field of RouteEntryChecker
};

constexpr RouteColumn kRouteColumns[] = {
    {ROUTE_CHECK_DEST_IP, 0, CMDLIB_RECORD_TEXT(RouteEntryChecker, dest_IP)},
    {ROUTE_CHECK_GATEWAY, 1, CMDLIB_RECORD_TEXT(RouteEntryChecker, gateway)},
    {ROUTE_CHECK_NETMASK, 2, CMDLIB_RECORD_TEXT(RouteEntryChecker, netmask)},
    {ROUTE_CHECK_INTERFACE, 7, CMDLIB_RECORD_TEXT(RouteEntryChecker, interface)},
};
static_assert(sizeof kRouteColumns / sizeof kRouteColumns[0] == 4, "four route check bits");

// The first 8 words of a listing line; false when it has fewer.
[[nodiscard]] constexpr bool split_route_line(std::string_view line,
                                              std::string_view (&words)[kRouteListingWords]) {
    return split_words(line, kBlankOrEol, words, kRouteListingWords) == kRouteListingWords;
}

[[nodiscard]] inline bool route_checker_matches(
    const RouteEntryChecker &c, const std::string_view (&words)[kRouteListingWords]) {
    for (const RouteColumn &col : kRouteColumns)
        if ((c.check_content & col.bit) &&
            !record_text_equals<false>(&c, col.field, words[col.word]))
            return false;
    return true;
}

// The first enabled checker matching the line gets the count.
inline void count_route_line(const std::string_view (&words)[kRouteListingWords],
                             RouteEntryChecker *checkers, int count) {
    for (int i = 0; i < count; ++i) {
        if (checkers[i].check_content == 0 || !route_checker_matches(checkers[i], words)) continue;
        ++checkers[i].match_count;
        return;
    }
}

template <class Reader>
void count_route_matches(Reader &r, RouteEntryChecker *checkers, int count) {
    std::string_view line;
    std::string_view words[kRouteListingWords];
    while (r.next(&line))
        if (split_route_line(line, words)) count_route_line(words, checkers, count);
}

// The command that adds the checker's route; false when it does not fit.
template <size_t N>
bool route_fix_command(const RouteEntryChecker &c, CommandLine<N> *cmd) {
    auto text = [&](const RouteColumn &col) { return record_text(&c, col.field); };
    std::string_view dest = text(kRouteColumns[0]), gateway = text(kRouteColumns[1]),
                     netmask = text(kRouteColumns[2]), dev = text(kRouteColumns[3]);
    if (dest == "0.0.0.0") {
        cmd->format("route add default gw ");
        cmd->append_word(gateway);
    } else if (netmask == "255.255.255.255") {
        cmd->format("route add -host ");
        cmd->append_word(dest);
    } else {
        cmd->format("route add -net ");
        cmd->append_word(dest);
        cmd->append(" netmask ");
        cmd->append_word(netmask);
    }
    cmd->append(" dev ");
    cmd->append_word(dev);
    return cmd->ok();
}

// ---- iptables -S ---------------------------------------------------------------

// The NAT checker's fields, in check_content bit order: name, member of
// NATEntryChecker, bit.
#define CMDLIB_NAT_FIELDS(X)                                         \
    X(Chain, chain, NAT_CHECK_CHAIN)                                 \
    X(InInterface, in_interface, NAT_CHECK_IN_INTERFACE)             \
    X(Protocol, protocol, NAT_CHECK_PROTOCOL)                        \
    X(Destination, destination, NAT_CHECK_DESTINATION)               \
    X(DestinationPort, destination_port, NAT_CHECK_DESTINATION_PORT) \
    X(Nat, nat, NAT_CHECK_NAT)                                       \
    X(DefaultPolicy, default_policy, NAT_CHECK_DEFAULT_POLICY)       \
    X(OutInterface, out_interface, NAT_CHECK_OUT_INTERFACE)          \
    X(JumpAction, jump_action, NAT_CHECK_JUMP_ACTION)                \
    X(Source, source, NAT_CHECK_SOURCE)                              \
    X(SourcePort, source_port, NAT_CHECK_SOURCE_PORT)                \
    X(IcmpType, icmp_type, NAT_CHECK_ICMP_TYPE)

enum NatField : uint8_t {
#define CMDLIB_NAT_ENUM(name, member, bit) kNat##name,
    CMDLIB_NAT_FIELDS(CMDLIB_NAT_ENUM)
#undef CMDLIB_NAT_ENUM
        kNatFieldCount
};
static_assert(kNatFieldCount == 12, "twelve NAT check bits");

constexpr RecordText kNatFieldText[kNatFieldCount] = {
#define CMDLIB_NAT_TEXT(name, member, bit) CMDLIB_RECORD_TEXT(NATEntryChecker, member),
    CMDLIB_NAT_FIELDS(CMDLIB_NAT_TEXT)
#undef CMDLIB_NAT_TEXT
};

// Field n is check_content bit 1 << n, so a parsed line's set of options
// and a checker's selection are compared as masks.
#define CMDLIB_NAT_BIT_CHECK(name, member, bit) \
    static_assert((bit) == 1u << kNat##name, "NAT field order follows the check bits");
CMDLIB_NAT_FIELDS(CMDLIB_NAT_BIT_CHECK)
#undef CMDLIB_NAT_BIT_CHECK
constexpr uint32_t kNatKnownBits = (1u << kNatFieldCount) - 1;

enum class NatOptionKind : uint8_t {
    Value,           // the next word is the field
    ChainAndPolicy,  // "-P CHAIN POLICY": only with both words
    TargetArgument,  // the next word is the target's argument, only after that target
};

struct NatOption {
    std::string_view text;
    NatField field;
    NatOptionKind kind;
    // TargetArgument: the target it belongs to.  ICMP types: the protocol
    // the fix writes this option for.
    std::string_view qualifier;
};

// The options a listing line is scanned for; every other word is ignored.
constexpr NatOption kNatOptions[] = {
    {"-A", kNatChain, NatOptionKind::Value, {}},
    {"-P", kNatChain, NatOptionKind::ChainAndPolicy, {}},
    {"-j", kNatJumpAction, NatOptionKind::Value, {}},
    {"-i", kNatInInterface, NatOptionKind::Value, {}},
    {"-o", kNatOutInterface, NatOptionKind::Value, {}},
    {"-p", kNatProtocol, NatOptionKind::Value, {}},
    {"-d", kNatDestination, NatOptionKind::Value, {}},
    {"--dport", kNatDestinationPort, NatOptionKind::Value, {}},
    {"-s", kNatSource, NatOptionKind::Value, {}},
    {"--sport", kNatSourcePort, NatOptionKind::Value, {}},
    {"--to-ports", kNatNat, NatOptionKind::TargetArgument, "REDIRECT"},
    {"--to-destination", kNatNat, NatOptionKind::TargetArgument, "DNAT"},
    {"--to-source", kNatNat, NatOptionKind::TargetArgument, "SNAT"},
    {"--reject-with", kNatNat, NatOptionKind::TargetArgument, "REJECT"},
    {"--icmp-type", kNatIcmpType, NatOptionKind::Value, "icmp"},
    {"--icmpv6-type", kNatIcmpType, NatOptionKind::Value, "icmpv6"},
};

[[nodiscard]] constexpr const NatOption *find_nat_option(std::string_view word) {
    if (word.size() < 2 || word[0] != '-') return nullptr;  // most words are values
    for (const NatOption &o : kNatOptions)
        if (o.text == word) return &o;
    return nullptr;
}

// The options of one rule line.  Views point into the line.
struct NatRule {
    std::string_view value[kNatFieldCount];
    uint32_t present = 0;  // bit 1 << field for each option found

    constexpr void set(NatField f, std::string_view v) {
        value[f] = v;
        present |= 1u << f;
    }
    [[nodiscard]] constexpr bool has(NatField f) const { return (present >> f) & 1u; }
};

// Scans the words left to right; an option takes (and skips) the word or
// two after it.  An option without its value(s) is ignored, as is a target
// argument after another target: its value is then scanned as a word.
constexpr void parse_nat_rule(const std::string_view *w, size_t n, NatRule *rule) {
    *rule = NatRule{};
    for (size_t i = 0; i < n; ++i) {
        const NatOption *o = find_nat_option(w[i]);
        if (!o || i + 1 >= n) continue;
        switch (o->kind) {
            case NatOptionKind::ChainAndPolicy:
                if (i + 2 >= n) continue;
                rule->set(kNatChain, w[i + 1]);
                rule->set(kNatDefaultPolicy, w[i + 2]);
                i += 2;
                break;
            case NatOptionKind::TargetArgument:
                if (!rule->has(kNatJumpAction) || rule->value[kNatJumpAction] != o->qualifier)
                    continue;
                rule->set(o->field, w[++i]);
                break;
            case NatOptionKind::Value:
                rule->set(o->field, w[++i]);
                break;
        }
    }
}

// Every selected option is on the line with an equal value (ASCII case
// ignored).  Bits outside the table select nothing.
[[nodiscard]] inline bool nat_checker_matches(const NATEntryChecker &c, const NatRule &rule) {
    uint32_t want = c.check_content & kNatKnownBits;
    if (want & ~rule.present) return false;
    for (; want; want &= want - 1) {
        auto f = static_cast<NatField>(__builtin_ctz(want));
        if (!record_text_equals<true>(&c, kNatFieldText[f], rule.value[f])) return false;
    }
    return true;
}

inline void count_nat_rule(const NatRule &rule, NATEntryChecker *checkers, int count) {
    for (int i = 0; i < count; ++i) {
        if (checkers[i].check_content == 0 || !nat_checker_matches(checkers[i], rule)) continue;
        ++checkers[i].match_count;
        return;
    }
}

// FNV-1a of the text with ASCII case ignored.
[[nodiscard]] constexpr uint32_t hash_nocase(std::string_view s) {
    uint32_t h = 2166136261u;
    for (char c : s) {
        h ^= static_cast<uint8_t>(ascii_lower(c));
        h *= 16777619u;
    }
    return h;
}

// The field a checker is looked up by: the first it selects in this order,
// the fields that tell rules apart best coming first.
constexpr NatField kNatKeyOrder[] = {
    kNatDestinationPort, kNatSourcePort,  kNatSource,       kNatDestination, kNatNat,
    kNatIcmpType,        kNatInInterface, kNatOutInterface, kNatProtocol,    kNatJumpAction,
    kNatDefaultPolicy,   kNatChain,
};
static_assert(sizeof kNatKeyOrder / sizeof kNatKeyOrder[0] == kNatFieldCount,
              "every field can be a key");

// The enabled checkers hashed by the value of their key field, so a rule
// line is compared only with the checkers whose key value it carries: a
// pass costs about the same whatever the number of checkers.  Each bucket
// chain runs in array order, and the lowest index that matches wins, as in
// the plain scan.
class NatCheckerIndex {
  public:
    NatCheckerIndex(const NATEntryChecker *checkers, int count)
        : c_(checkers),
          count_(count > 0 ? static_cast<size_t>(count) : 0),
          buckets_(bucket_count(count_)),
          head_(buckets_),
          next_(count_),
          hash_(count_),
          key_(count_) {
        if (!ok()) return;
        for (size_t b = 0; b < buckets_; ++b) head_.get()[b] = -1;
        for (size_t i = count_; i-- > 0;) {  // from the end, so each chain is in array order
            uint32_t want = c_[i].check_content & kNatKnownBits;
            if (c_[i].check_content == 0) continue;
            if (want == 0) {  // only unknown bits: matches every line
                always_ = static_cast<int>(i);
                continue;
            }
            NatField f = kNatChain;
            for (NatField k : kNatKeyOrder)
                if ((want >> k) & 1u) {
                    f = k;
                    break;
                }
            key_.get()[i] = f;
            hash_.get()[i] = hash_nocase(record_text(&c_[i], kNatFieldText[f]));
            int *head = &head_.get()[bucket(f, hash_.get()[i])];
            next_.get()[i] = *head;
            *head = static_cast<int>(i);
            keyed_ |= 1u << f;
        }
    }

    // false when memory was short: the caller scans the checkers instead.
    [[nodiscard]] bool ok() const { return head_ && next_ && hash_ && key_; }

    // The index of the first checker in array order that matches, or -1.
    [[nodiscard]] int first_match(const NatRule &rule) const {
        int best = always_ >= 0 ? always_ : static_cast<int>(count_);
        for (uint32_t fields = keyed_ & rule.present; fields; fields &= fields - 1) {
            auto f = static_cast<NatField>(__builtin_ctz(fields));
            uint32_t h = hash_nocase(rule.value[f]);
            for (int i = head_.get()[bucket(f, h)]; i >= 0 && i < best; i = next_.get()[i]) {
                if (key_.get()[i] == f && hash_.get()[i] == h && nat_checker_matches(c_[i], rule)) {
                    best = i;
                    break;
                }
            }
        }
        return best < static_cast<int>(count_) ? best : -1;
    }

  private:
    static size_t bucket_count(size_t n) {
        size_t b = 1;
        while (b < 2 * n) b <<= 1;
        return b;
    }
    [[nodiscard]] size_t bucket(NatField f, uint32_t h) const {
        return (h ^ (static_cast<uint32_t>(f) * 0x9e3779b9u)) & (buckets_ - 1);
    }

    const NATEntryChecker *c_;
    size_t count_, buckets_;
    UniqueMalloc<int> head_, next_;
    UniqueMalloc<uint32_t> hash_;
    UniqueMalloc<uint8_t> key_;
    int always_ = -1;
    uint32_t keyed_ = 0;  // the fields some checker is keyed on
};

// Counts the matches over a listing; returns the number of counting lines
// (lines of at least two words).
template <class Reader>
int count_nat_matches(Reader &r, NATEntryChecker *checkers, int count) {
    std::string_view line;
    std::string_view words[kListingMaxWords];
    NatRule rule;
    NatCheckerIndex index(checkers, count);
    int lines = 0;
    while (r.next(&line)) {
        size_t n = split_words(line, kBlankOrEol, words, kListingMaxWords);
        if (n < 2) continue;
        ++lines;
        parse_nat_rule(words, n, &rule);
        if (!index.ok()) {
            count_nat_rule(rule, checkers, count);
        } else if (int i = index.first_match(rule); i >= 0) {
            ++checkers[i].match_count;
        }
    }
    return lines;
}

// ---- the rule fix -----------------------------------------------------------------

[[nodiscard]] inline bool nat_fix_deletes(const NATEntryChecker &c) {
    return (c.match_flags & NAT_MATCH_DELETE) != 0;
}

// Whether the checker needs a command: a rule to delete that is there, or
// a rule to add that is not.
[[nodiscard]] inline bool nat_fix_needed(const NATEntryChecker &c) {
    if (c.check_content == 0) return false;
    return nat_fix_deletes(c) ? c.match_count != 0 : c.match_count == 0;
}

// The field when its bit is selected, else empty.
[[nodiscard]] inline std::string_view nat_selected(const NATEntryChecker &c, NatField f) {
    return (c.check_content >> f) & 1u ? record_text(&c, kNatFieldText[f]) : std::string_view();
}

[[nodiscard]] inline bool nat_fix_writes_chain(const NATEntryChecker &c) {
    return !nat_selected(c, kNatChain).empty();
}

// The option written before a field whose option depends on another
// field: the ICMP type's on the protocol, the target argument's on the
// target.  Empty when that other field names none.
[[nodiscard]] inline std::string_view nat_dependent_option(const NATEntryChecker &c, NatField f) {
    std::string_view by =
        record_text(&c, kNatFieldText[f == kNatIcmpType ? kNatProtocol : kNatJumpAction]);
    for (const NatOption &o : kNatOptions)
        if (o.field == f && !o.qualifier.empty() && equals_nocase(o.qualifier, by)) return o.text;
    return {};
}

// The pieces after the chain, in the order the command writes them.  An
// empty option is chosen by another field (nat_dependent_option).
struct NatFixPiece {
    NatField field;
    std::string_view option;
};
constexpr NatFixPiece kNatFixOrder[] = {
    {kNatInInterface, "-i"},
    {kNatOutInterface, "-o"},
    {kNatProtocol, "-p"},
    {kNatIcmpType, {}},
    {kNatDestination, "-d"},
    {kNatDestinationPort, "--dport"},
    {kNatSource, "-s"},
    {kNatSourcePort, "--sport"},
    {kNatDefaultPolicy, "-P"},
    {kNatJumpAction, "-j"},
    {kNatNat, {}},
};

// The command that adds or deletes the checker's rule; false when it does
// not fit.
template <size_t N>
bool nat_fix_command(const NATEntryChecker &c, CommandLine<N> *cmd) {
    cmd->format("%s", (c.match_flags & NAT_MATCH_IPV6) ? "ip6tables" : "iptables");
    if (nat_fix_writes_chain(c)) {
        if (c.match_flags & NAT_MATCH_NAT_TABLE) cmd->append(" -t nat");
        cmd->append(nat_fix_deletes(c) ? " -D " : c.append_item ? " -A " : " -I ");
        cmd->append_word(nat_selected(c, kNatChain));
    }
    for (const NatFixPiece &p : kNatFixOrder) {
        // the target is written whenever it is set, selected or not
        std::string_view value = p.field == kNatJumpAction ? record_text(&c, kNatFieldText[p.field])
                                                           : nat_selected(c, p.field);
        std::string_view option = p.option.empty() ? nat_dependent_option(c, p.field) : p.option;
        if (value.empty() || option.empty()) continue;
        cmd->append(" %.*s ", static_cast<int>(option.size()), option.data());
        cmd->append_word(value);
    }
    return cmd->ok();
}

// Adding to a chain of the nat table: existing connections must be flushed
// to pick up the new translation.
[[nodiscard]] inline bool nat_fix_flushes_conntrack(const NATEntryChecker &c) {
    return nat_fix_writes_chain(c) && (c.match_flags & NAT_MATCH_NAT_TABLE) && !nat_fix_deletes(c);
}

}  // namespace cmdlib
