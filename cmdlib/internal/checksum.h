// The 16-bit check sum of packed configuration files and of the network
// family's ip_checksum: big-endian 16-bit words added into a 16-bit
// accumulator whose carries out of bit 15 are dropped.  There is no
// end-around carry, so this is not the RFC 1071 sum; packed files are
// sealed with this exact arithmetic and must be checked with it.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace cmdlib {

// Carry-less sum of the buffer's big-endian words; a final odd byte counts
// as the high byte of a word whose low byte is zero.
[[nodiscard]] inline uint16_t carryless_sum16(const void *data, size_t len) {
    const unsigned char *p = static_cast<const unsigned char *>(data);
    if (!p) return 0;
    uint32_t sum = 0;  // only the low 16 bits matter; wrap-around is the point
    size_t i = 0;
    for (; i + 1 < len; i += 2) sum += static_cast<uint32_t>(p[i]) << 8 | p[i + 1];
    if (i < len) sum += static_cast<uint32_t>(p[i]) << 8;
    return static_cast<uint16_t>(sum);
}

// Complement of the carry-less sum, stored in network byte order: the
// first byte in memory of the returned value is the high byte.  Zero
// exactly when the carry-less sum is 0xFFFF (the value is symmetric under
// byte order then), which is how a sealed buffer is recognised.
[[nodiscard]] inline uint16_t checksum16(const void *data, size_t len) {
    uint16_t v = static_cast<uint16_t>(~carryless_sum16(data, len));
    unsigned char be[2] = {static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
    uint16_t out;
    __builtin_memcpy(&out, be, sizeof out);
    return out;
}

}  // namespace cmdlib
