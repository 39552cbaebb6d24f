// UTF-8 to hexadecimal code units over arbitrary bytes and buffer sizes.
#include <stdint.h>
#include <string.h>

#include <vector>

#include "cmdlib/cmdlib_module.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    // First byte picks the output room, the rest is the text.
    int out_len = data[0] % 64 + 1;
    std::vector<uint8_t> in(data + 1, data + size);  // exact size: ASan sees any overread
    int in_len = static_cast<int>(in.size());
    if (in_len == 0) return 0;

    int chars = util_get_utf8_strlen(in.data(), in_len);
    if (chars < 0 || chars > in_len) __builtin_trap();

    std::vector<uint8_t> out(static_cast<size_t>(out_len) + 8, 0xA5);
    int n = util_utf8_to_unicode_string(in.data(), out.data(), in_len, out_len);
    if (n < 0 || n >= out_len) __builtin_trap();
    if (strlen(reinterpret_cast<char *>(out.data())) != static_cast<size_t>(n)) __builtin_trap();
    for (size_t i = static_cast<size_t>(out_len); i < out.size(); ++i)
        if (out[i] != 0xA5) __builtin_trap();
    // With room for everything: four hex digits per character, up to six
    // above 0xFFFF and up to eight for the 5- and 6-byte forms.
    std::vector<uint8_t> big(static_cast<size_t>(chars) * 8 + 1);
    int m = util_utf8_to_unicode_string(in.data(), big.data(), in_len, static_cast<int>(big.size()));
    if (m < chars * 4 || m > chars * 8) __builtin_trap();

    for (int k = 1; k <= 6 && k <= in_len; ++k) {
        uint32_t u = 0;
        int r = util_utf8_to_unicode_one(in.data(), &u, k);
        if (r != 0 && r != k) __builtin_trap();
        if (r == 0 && u != 0) __builtin_trap();
    }
    return 0;
}
