// MD5 (RFC 1321) and the checksum-list verification of libbase.
#include <fcntl.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"

namespace {

struct Md5 {
    uint32_t h[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    uint64_t len = 0;
    unsigned char block[64] = {};
    size_t fill = 0;

    static uint32_t rol(uint32_t x, int c) { return (x << c) | (x >> (32 - c)); }

    void compress(const unsigned char *p) {
        static constexpr uint32_t K[64] = {
            0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613,
            0xfd469501, 0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193,
            0xa679438e, 0x49b40821, 0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d,
            0x02441453, 0xd8a1e681, 0xe7d3fbc8, 0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed,
            0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a, 0xfffa3942, 0x8771f681, 0x6d9d6122,
            0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70, 0x289b7ec6, 0xeaa127fa,
            0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665, 0xf4292244,
            0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
            0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb,
            0xeb86d391};
        static constexpr int R[64] = {7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22,
                                      5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20,
                                      4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23,
                                      6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21};
        uint32_t m[16];
        for (int i = 0; i < 16; ++i)
            m[i] = uint32_t(p[i * 4]) | uint32_t(p[i * 4 + 1]) << 8 | uint32_t(p[i * 4 + 2]) << 16 |
                   uint32_t(p[i * 4 + 3]) << 24;
        uint32_t a = h[0], b = h[1], c = h[2], d = h[3];
        for (int i = 0; i < 64; ++i) {
            uint32_t f;
            int g;
            if (i < 16) {
                f = (b & c) | (~b & d);
                g = i;
            } else if (i < 32) {
                f = (d & b) | (~d & c);
                g = (5 * i + 1) % 16;
            } else if (i < 48) {
                f = b ^ c ^ d;
                g = (3 * i + 5) % 16;
            } else {
                f = c ^ (b | ~d);
                g = (7 * i) % 16;
            }
            uint32_t t = d;
            d = c;
            c = b;
            b = b + rol(a + f + K[i] + m[g], R[i]);
            a = t;
        }
        h[0] += a;
        h[1] += b;
        h[2] += c;
        h[3] += d;
    }

    void update(const unsigned char *p, size_t n) {
        len += n;
        while (n > 0) {
            size_t take = 64 - fill < n ? 64 - fill : n;
            memcpy(block + fill, p, take);
            fill += take;
            p += take;
            n -= take;
            if (fill == 64) {
                compress(block);
                fill = 0;
            }
        }
    }

    void finish(unsigned char out[16]) {
        uint64_t bits = len * 8;
        unsigned char pad = 0x80;
        update(&pad, 1);
        unsigned char zero = 0;
        while (fill != 56) update(&zero, 1);
        unsigned char lenb[8];
        for (int i = 0; i < 8; ++i) lenb[i] = static_cast<unsigned char>(bits >> (8 * i));
        update(lenb, 8);
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) out[i * 4 + j] = static_cast<unsigned char>(h[i] >> (8 * j));
    }
};

// MD5 of the file as 32 lower-case hex digits; false when unreadable.
bool md5_file(const char *path, char hex[33]) {
    cmdlib::UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return false;
    Md5 md;
    unsigned char buf[8192];
    for (;;) {
        ssize_t n = ::read(fd.get(), buf, sizeof buf);
        if (n < 0) return false;
        if (n == 0) break;
        md.update(buf, static_cast<size_t>(n));
    }
    unsigned char d[16];
    md.finish(d);
    static constexpr char kHex[] = "0123456789abcdef";
    for (int i = 0; i < 16; ++i) {
        hex[2 * i] = kHex[d[i] >> 4];
        hex[2 * i + 1] = kHex[d[i] & 15];
    }
    hex[32] = '\0';
    return true;
}

}  // namespace

extern "C" {

CMDLIB_API int util_check_if_md5_sum_is_right(int, const char *list_path) {
    cmdlib::UniqueFile fp(list_path, "r");
    if (!fp) return 0;
    cmdlib::LineReader<1024> reader(fp.get());
    std::string_view line;
    int checked = 0;
    while (reader.next(&line)) {
        line = cmdlib::strip_trailing_space(line);
        if (line.empty()) continue;
        // "<32 hex digits><blank><blank or *><path>"
        if (line.size() < 35 || line[32] != ' ' || (line[33] != ' ' && line[33] != '*')) return 0;
        char want[33];
        for (int i = 0; i < 32; ++i) {
            int d = util_char2hex(line[static_cast<size_t>(i)]);
            if (d < 0) return 0;
            want[i] = "0123456789abcdef"[d];
        }
        want[32] = '\0';
        char path[1024];
        cmdlib::copy_bounded(path, sizeof path, line.substr(34));
        char got[33];
        if (!md5_file(path, got) || memcmp(got, want, 32) != 0) return 0;
        ++checked;
    }
    return checked > 0 ? 1 : 0;
}

CMDLIB_API void util_encrypt_file_content(unsigned char *buf, int len) {
    if (!buf || len <= 0) return;
    uint32_t x = 0x51584346;  // "QXCF"
    for (int i = 0; i < len; ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        buf[i] ^= static_cast<unsigned char>(x);
    }
}

}  // extern "C"
