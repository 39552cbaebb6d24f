// DNS messages of the library's own client, built and read as bytes.
// Builders write into a caller's buffer and never past its capacity;
// the answer walk reads through ByteReader over the bytes that actually
// arrived, so no count or length field of a response can move a read past
// them.  No sockets, files or clocks here.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "base/internal/byte_reader.h"
#include "cmdlib/cmdlib_dns.h"

namespace cmdlib::dns {

inline constexpr size_t kHeaderSize = 12;
inline constexpr size_t kTailSize = 4;  // QTYPE and QCLASS
inline constexpr uint16_t kTypeA = 1;
inline constexpr uint16_t kTypeAAAA = 28;
inline constexpr uint16_t kClassIn = 1;
inline constexpr uint16_t kFlagsRecursionDesired = 0x0100;
// Offsets of the counts in the header.
inline constexpr size_t kAnswerCountAt = 6;

// The probe's message buffer, the resolver's, and the resolver's name
// work buffer.
inline constexpr size_t kProbeBufferSize = 1024;
inline constexpr size_t kResolverBufferSize = 1501;
inline constexpr size_t kNameBufferSize = 256;
// reformat_domain takes at most this many bytes (strlen + 1) of a domain.
inline constexpr int kMaxDomainLen = 253;

inline void put_be16(uint8_t *p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v >> 8);
    p[1] = static_cast<uint8_t>(v);
}

// A 16-bit field already held in network order goes out byte for byte.
inline void put_raw16(uint8_t *p, uint16_t v) { memcpy(p, &v, 2); }

// The 12 header bytes of h as they go on the wire: the id and counts as
// stored (network order), the flag bits packed qr..rd and ra..rcode.
inline void put_header(uint8_t *out, const dnsHeader_t &h) {
    put_raw16(out, h.id);
    out[2] = static_cast<uint8_t>(h.qr << 7 | h.opcode << 3 | h.aa << 2 | h.tc << 1 | h.rd);
    out[3] = static_cast<uint8_t>(h.ra << 7 | h.z << 6 | h.ad << 5 | h.cd << 4 | h.rcode);
    put_raw16(out + 4, h.q_count);
    put_raw16(out + 6, h.ans_count);
    put_raw16(out + 8, h.auth_count);
    put_raw16(out + 10, h.add_count);
}

// Length-prefixed labels of name, ending in a 0 byte: the text is cut at
// every '.', each piece written after its length byte (a piece longer than
// 255 bytes keeps only the low byte of its length, as the firmware always
// wrote it), and the terminating 0 is the root label.  name.size() + 2
// bytes; 0 when they do not fit in cap (nothing is written then).
inline size_t encode_labels(uint8_t *out, size_t cap, std::string_view name) {
    size_t need = name.size() + 2;
    if (!out || need > cap) return 0;
    size_t pos = 0, start = 0;
    for (size_t i = 0; i <= name.size(); ++i) {
        if (i < name.size() && name[i] != '.') continue;
        out[pos++] = static_cast<uint8_t>(i - start);
        memcpy(out + pos, name.data() + start, i - start);
        pos += i - start;
        start = i + 1;
    }
    out[pos++] = 0;
    return pos;
}

// The resolver's name encoding: the first domain_len bytes of domain (up
// to its NUL) with a '.' appended, walked label by label, so "a.b" gives
// 01 'a' 01 'b' 00.  domain_len must be below 254; the result has strlen
// + 2 bytes, 0 when refused or when it does not fit in cap.
inline size_t encode_domain(uint8_t *out, size_t cap, const unsigned char *domain, int domain_len) {
    if (!out || !domain || domain_len > kMaxDomainLen) return 0;
    size_t n = domain_len > 0 ? strnlen(reinterpret_cast<const char *>(domain), static_cast<size_t>(domain_len)) : 0;
    return encode_labels(out, cap, std::string_view(reinterpret_cast<const char *>(domain), n));
}

// The probe's question: id 1 stored in host order (on a little-endian CPU
// the wire bytes are 01 00), recursion desired, one question, the name as
// labels, then qtype and class IN.  name.size() + 18 bytes; 0 when the
// message would not fit in cap.
inline size_t build_probe_query(uint8_t *buf, size_t cap, std::string_view name, uint16_t qtype) {
    size_t len = kHeaderSize + name.size() + 2 + kTailSize;
    if (!buf || len > cap) return 0;
    memset(buf, 0, len);
    const uint16_t id = 1;
    memcpy(buf, &id, 2);
    put_be16(buf + 2, kFlagsRecursionDesired);
    put_be16(buf + 4, 1);
    encode_labels(buf + kHeaderSize, cap - kHeaderSize, name);
    put_be16(buf + len - 4, qtype);
    put_be16(buf + len - 2, kClassIn);
    return len;
}

// The answer count of a response; false when the header did not arrive
// whole.
inline bool answer_count(const uint8_t *msg, size_t received, uint16_t *count) {
    ByteReader r(msg, received);
    return received >= kHeaderSize && r.skip(kAnswerCountAt) && r.be16(count);
}

// The resolver's host part of a name or URL: what follows "://" if present,
// up to the first ':' or '/' (port and path dropped).
[[nodiscard]] constexpr std::string_view host_of(std::string_view text) {
    size_t scheme = text.find("://");
    if (scheme != std::string_view::npos) text.remove_prefix(scheme + 3);
    return text.substr(0, text.find_first_of(":/"));
}

// The firmware's address test: "%d.%d.%d.%d" read as sscanf reads it
// (blanks before a number, a sign, digits; the scan stops at the first
// mismatch, missing octets stay 0, trailing text is ignored).  Usable when
// every octet is 0..255 and the last is neither 0 nor 255.
[[nodiscard]] constexpr bool usable_ipv4(std::string_view s) {
    long octet[4] = {0, 0, 0, 0};
    size_t i = 0;
    for (int k = 0; k < 4; ++k) {
        if (k > 0) {
            if (i >= s.size() || s[i] != '.') break;
            ++i;
        }
        while (i < s.size() && (s[i] == ' ' || (s[i] >= '\t' && s[i] <= '\r'))) ++i;
        bool neg = false;
        if (i < s.size() && (s[i] == '-' || s[i] == '+')) neg = s[i++] == '-';
        if (i >= s.size() || s[i] < '0' || s[i] > '9') break;
        long v = 0;
        while (i < s.size() && s[i] >= '0' && s[i] <= '9') {
            if (v < 100000) v = v * 10 + (s[i] - '0');  // saturates well above 255
            ++i;
        }
        octet[k] = neg ? -v : v;
    }
    for (long o : octet)
        if (o < 0 || o > 255) return false;
    return octet[3] != 0 && octet[3] != 255;
}

// "a.b.c.d" of four bytes into out (16 bytes), as inet_ntoa writes it,
// without printf's stack appetite.
inline void dotted(const uint8_t a[4], char out[16]) {
    char *p = out;
    for (int i = 0; i < 4; ++i) {
        if (i) *p++ = '.';
        unsigned v = a[i];
        if (v >= 100) *p++ = static_cast<char>('0' + v / 100);
        if (v >= 10) *p++ = static_cast<char>('0' + v / 10 % 10);
        *p++ = static_cast<char>('0' + v % 10);
    }
    *p = '\0';
}

// What the answer walk reports, record by record.
struct AnswerSink {
    // Every record's fixed part, before its data is looked at.
    virtual void record(int index, const dnsAnswerInfo_t &info) = 0;
    // An A record's address as dotted text.
    virtual void address(int index, const char *text) = 0;
    // An A record whose data is longer than 5 bytes: the walk ends here.
    virtual void too_long(uint16_t data_len) = 0;

  protected:
    ~AnswerSink() = default;
};

enum class WalkEnd {
    kDone,       // every announced record read, or enough addresses
    kTooLong,    // an A record with more than 5 bytes of data
    kTruncated,  // a record runs past the bytes that arrived
};

// Walks the answer records of a response that starts at the question's
// own length (the response is taken to repeat the question as sent).
// Every owner name is taken to be a two-byte compression pointer and is
// never followed, so pointer loops cannot trap the walk; it ends after the
// announced count, after `wanted` addresses, at a record that does not fit
// in `received`, or at an A record longer than 5 bytes.
// A template over the sink's own type, so each caller gets its own copy
// calling its sink directly: the library (built without RTTI) and a test
// or fuzz program never share one instantiation of it.
template <class Sink>
inline WalkEnd walk_answers(const uint8_t *msg, size_t received, size_t question_len, int wanted, Sink *sink) {
    uint16_t count = 0;
    if (!answer_count(msg, received, &count)) return WalkEnd::kTruncated;
    ByteReader r(msg, received);
    if (!r.skip(question_len)) return count ? WalkEnd::kTruncated : WalkEnd::kDone;
    int pushed = 0;
    for (int index = 0; index < count && pushed < wanted; ++index) {
        dnsAnswerInfo_t info{};
        uint16_t name = 0;
        if (!(r.be16(&name) && r.be16(&info.type) && r.be16(&info._class) && r.be32(&info.ttl) &&
              r.be16(&info.data_len)))
            return WalkEnd::kTruncated;
        info.name_pos = name & 0x3FFF;
        sink->record(index, info);
        const uint8_t *data = nullptr;
        if (info.type == kTypeA) {
            if (info.data_len > 5) {
                sink->too_long(info.data_len);
                return WalkEnd::kTooLong;
            }
            if (!r.view(info.data_len, &data)) return WalkEnd::kTruncated;
            dnsAnswerV4_t answer{};
            answer.an_info = &info;
            if (info.data_len) memcpy(answer.addr_v4, data, info.data_len);
            char text[16];
            dotted(answer.addr_v4, text);
            sink->address(index, text);
            ++pushed;
        } else if (!r.skip(info.data_len)) {
            return WalkEnd::kTruncated;
        }
    }
    return WalkEnd::kDone;
}

}  // namespace cmdlib::dns
