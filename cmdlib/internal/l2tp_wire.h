// L2TP control messages of the LNS probe: the SCCRQ and StopCCN templates
// (each AVP stated once, the bytes derived when compiling), the request
// as sent, and the walk that finds the peer's Assigned Tunnel ID in a
// reply.  The walk reads through ByteReader over the bytes that arrived,
// never past them whatever the message's length fields say.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <array>
#include <string_view>

#include "base/internal/byte_reader.h"

namespace cmdlib::l2tp {

// Control message flags: T (control), L (length), S (sequence), version 2.
inline constexpr uint16_t kFlagT = 0x8000;
inline constexpr uint16_t kFlagL = 0x4000;
inline constexpr uint16_t kFlagS = 0x0800;
inline constexpr uint16_t kFlagO = 0x0200;
inline constexpr uint16_t kControlV2 = kFlagT | kFlagL | kFlagS | 0x0002;
inline constexpr size_t kHeaderSize = 12;
inline constexpr size_t kAvpHeaderSize = 6;
inline constexpr uint16_t kAvpMandatory = 0x8000;
inline constexpr uint16_t kAvpLengthMask = 0x03FF;
inline constexpr uint16_t kAssignedTunnelId = 9;
inline constexpr uint16_t kOurTunnelId = 0x53F0;

struct Avp {
    uint16_t type;
    bool mandatory;
    std::string_view value;
};

// The SCCRQ template.  Its Host Name is replaced when the request is sent
// and the Challenge, last, may be left off.
inline constexpr Avp kSccrqAvps[] = {
    {0, true, {"\x00\x01", 2}},                  // Message Type: SCCRQ
    {2, true, {"\x01\x00", 2}},                  // Protocol Version 1.0
    {3, true, {"\x00\x00\x00\x03", 4}},          // Framing Capabilities: synchronous, asynchronous
    {4, true, {"\x00\x00\x00\x00", 4}},          // Bearer Capabilities: none
    {6, false, {"\x06\x90", 2}},                 // Firmware Revision
    {7, true, "local"},                          // Host Name
    {8, false, "cmdlib router"},                 // Vendor Name
    {kAssignedTunnelId, true, {"\x53\xF0", 2}},  // Assigned Tunnel ID
    {10, true, {"\x00\x04", 2}},                 // Receive Window Size
    {11, true, {"\x5c\x3e\x91\x07\xa2\x4d\xe8\x16\x3b\xc0\x7f\x52\x19\xd4\x66\x8a", 16}},  // Challenge
};

// The StopCCN template: its tunnel id and Ns are rewritten when sent.
inline constexpr Avp kStopCcnAvps[] = {
    {0, true, {"\x00\x04", 2}},                  // Message Type: StopCCN
    {kAssignedTunnelId, true, {"\x53\xF0", 2}},  // Assigned Tunnel ID
    {1, true, {"\x00\x01\x00\x00", 4}},          // Result Code: clear the control connection, no error
};

template <size_t N> constexpr size_t message_size(const Avp (&avps)[N]) {
    size_t n = kHeaderSize;
    for (const Avp &a : avps) n += kAvpHeaderSize + a.value.size();
    return n;
}

template <size_t Size, size_t N>
constexpr std::array<uint8_t, Size> control_message(const Avp (&avps)[N], uint16_t nr) {
    std::array<uint8_t, Size> m{};
    const uint16_t header[6] = {kControlV2, static_cast<uint16_t>(Size), 0, 0, 0, nr};
    size_t pos = 0;
    for (uint16_t h : header) {
        m[pos++] = static_cast<uint8_t>(h >> 8);
        m[pos++] = static_cast<uint8_t>(h);
    }
    for (const Avp &a : avps) {
        uint16_t first = static_cast<uint16_t>((a.mandatory ? kAvpMandatory : 0) | (kAvpHeaderSize + a.value.size()));
        const uint16_t avp_header[3] = {first, 0, a.type};
        for (uint16_t h : avp_header) {
            m[pos++] = static_cast<uint8_t>(h >> 8);
            m[pos++] = static_cast<uint8_t>(h);
        }
        for (char c : a.value) m[pos++] = static_cast<uint8_t>(c);
    }
    return m;
}

inline constexpr auto l2tp_sccrq_data = control_message<message_size(kSccrqAvps)>(kSccrqAvps, 0);
inline constexpr auto l2tp_stopccn_data = control_message<message_size(kStopCcnAvps)>(kStopCcnAvps, 1);

static_assert(l2tp_sccrq_data.size() == 124, "the SCCRQ template is 124 bytes");
static_assert(l2tp_stopccn_data.size() == 38, "the StopCCN template is 38 bytes");
// Where the request is cut open for the host name: its AVP's length byte,
// its 5-byte value, and the 22-byte Challenge at the end.
inline constexpr size_t kHostNameLengthAt = 57;
inline constexpr size_t kHostNameAt = 62;
inline constexpr size_t kAfterHostName = 67;
inline constexpr size_t kChallengeSize = 22;
static_assert(l2tp_sccrq_data[56] == 0x80 && l2tp_sccrq_data[kHostNameLengthAt] == 11 &&
                  l2tp_sccrq_data[61] == 7 && l2tp_sccrq_data[kAfterHostName + 5] == 8,
              "Host Name AVP at 56, Vendor Name AVP at 67");
static_assert(l2tp_sccrq_data[102 + 1] == kChallengeSize && l2tp_sccrq_data[102 + 5] == 11,
              "Challenge AVP last, at 102");

// The request buffer's size: the template with an 11-character host name
// and the Challenge has room to spare.
inline constexpr size_t kSccrqBufferSize = 144;

// The request as sent: the template's bytes 0..61, host_name, the template
// from byte 67 on (without the Challenge unless with_challenge); the
// length field and the Host Name AVP's length byte follow the host name.
// The length, 0 when it does not fit in cap or the name is longer than an
// AVP's one length byte can tell.
inline size_t build_sccrq(uint8_t *out, size_t cap, std::string_view host_name, bool with_challenge) {
    const size_t tail = l2tp_sccrq_data.size() - kAfterHostName - (with_challenge ? 0 : kChallengeSize);
    const size_t len = kHostNameAt + host_name.size() + tail;
    if (!out || len > cap || host_name.size() + kAvpHeaderSize > 0xFF) return 0;
    memcpy(out, l2tp_sccrq_data.data(), kHostNameAt);
    memcpy(out + kHostNameAt, host_name.data(), host_name.size());
    memcpy(out + kHostNameAt + host_name.size(), l2tp_sccrq_data.data() + kAfterHostName, tail);
    out[2] = static_cast<uint8_t>(len >> 8);
    out[3] = static_cast<uint8_t>(len);
    out[kHostNameLengthAt] = static_cast<uint8_t>(host_name.size() + kAvpHeaderSize);
    return len;
}

// The StopCCN for the peer's tunnel, our Ns being the peer's Nr.
inline void build_stopccn(uint8_t out[38], uint16_t tunnel_id, uint16_t ns) {
    memcpy(out, l2tp_stopccn_data.data(), l2tp_stopccn_data.size());
    out[4] = static_cast<uint8_t>(tunnel_id >> 8);
    out[5] = static_cast<uint8_t>(tunnel_id);
    out[8] = static_cast<uint8_t>(ns >> 8);
    out[9] = static_cast<uint8_t>(ns);
}

// The peer's Assigned Tunnel ID from its reply (received bytes of msg):
//   0  not a usable control message (T, L, S must be set and O clear, the
//      12 header bytes present); *nr is left alone;
//  -1  no Assigned Tunnel ID AVP before the end of the message (the
//      smaller of its length field and what arrived), or the walk met an
//      AVP shorter than its own header, which would never move it on;
//   else the id.  The peer's Nr (bytes 10-11) goes to *nr.  The vendor
//   id of an AVP is not examined.
inline int peer_tunnel_id(const uint8_t *msg, size_t received, int *nr) {
    ByteReader r(msg, received);
    uint16_t flags = 0, length = 0, peer_nr = 0;
    if (!r.be16(&flags)) return 0;
    const uint16_t needed = kFlagT | kFlagL | kFlagS;
    if ((flags & needed) != needed || (flags & kFlagO)) return 0;
    if (!(r.be16(&length) && r.skip(6) && r.be16(&peer_nr))) return 0;
    if (nr) *nr = peer_nr;
    const size_t end = length < received ? length : received;
    size_t offset = kHeaderSize;
    while (offset < end) {
        ByteReader avp(msg + offset, end - offset);
        uint16_t first = 0, type = 0, value = 0;
        if (!(avp.be16(&first) && avp.skip(2) && avp.be16(&type))) break;
        if (type == kAssignedTunnelId) return avp.be16(&value) ? value : -1;
        const size_t avp_len = first & kAvpLengthMask;
        if (avp_len < kAvpHeaderSize) break;
        offset += avp_len;
    }
    return -1;
}

}  // namespace cmdlib::l2tp
