// MAC text to bytes over arbitrary bytes: the reader agrees with a direct
// model of the rule (hexadecimal digits at positions 3i and 3i+1 of the
// first 17 characters, anything between), and the C entry point, which sees
// the text up to its first NUL, gives those bytes or six zeros.
#include <stdint.h>
#include <string.h>

#include <string>
#include <string_view>

#include "cmdlib/internal/mac_files.h"
#include "cmdlib/mac.h"

namespace {

int hex(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The rule written out plainly.
bool model(std::string_view text, unsigned char out[6]) {
    if (text.size() < 17) return false;
    unsigned char bytes[6];
    for (int i = 0; i < 6; ++i) {
        int hi = hex(text[3 * i]), lo = hex(text[3 * i + 1]);
        if (hi < 0 || lo < 0) return false;
        bytes[i] = static_cast<unsigned char>(hi * 16 + lo);
    }
    memcpy(out, bytes, sizeof bytes);
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    unsigned char got[6], want[6];
    memset(got, 0xa5, sizeof got);
    bool ok = cmdlib::parse_mac_text(text, got);
    if (ok != model(text, want)) __builtin_trap();
    if (ok && memcmp(got, want, 6) != 0) __builtin_trap();
    if (!ok)
        for (unsigned char b : got)
            if (b != 0xa5) __builtin_trap();  // untouched on failure

    std::string c_text(text.substr(0, text.find('\0')));
    unsigned char mac[8];
    memset(mac, 0x5a, sizeof mac);
    util_get_mac(c_text.c_str(), mac);
    unsigned char expect[6] = {};
    model(c_text, expect);
    if (memcmp(mac, expect, 6) != 0 || mac[6] != 0x5a || mac[7] != 0x5a) __builtin_trap();
    return 0;
}
