// The checksum-list verification of libbase.  The digest itself is
// nettle's MD5 (shipped by Debian and OpenWrt alike), which runs at the
// speed of md5sum; the list format and the verdict are ours.
#include <errno.h>
#include <fcntl.h>
#include <nettle/md5.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"

namespace {

// Read size of the digest loop: large enough that the per-read system call
// cost vanishes next to the digest; taken from the heap, as a daemon's
// thread stack is small.
constexpr size_t kReadChunk = 64 * 1024;

// MD5 of the file as 32 lower-case hex digits; false when unreadable.
bool md5_file(const char *path, char hex[33]) {
    cmdlib::UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return false;
    // The file is read once, front to back: let the kernel read ahead.
    (void)::posix_fadvise(fd.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    cmdlib::UniqueMalloc<unsigned char> buf(kReadChunk);
    if (!buf) return false;
    md5_ctx md;
    md5_init(&md);
    for (;;) {
        ssize_t n = ::read(fd.get(), buf.get(), kReadChunk);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (n == 0) break;
        md5_update(&md, static_cast<size_t>(n), buf.get());
    }
    unsigned char d[MD5_DIGEST_SIZE];
    md5_digest(&md, sizeof d, d);
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
