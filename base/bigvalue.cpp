// 1024-bit sets and their text form (see libbase.h for the format).
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"

namespace {
constexpr char kHex[] = "0123456789abcdef";
}

extern "C" {

CMDLIB_API void util_set_one_bit_for_big_value(BigValue *value, int n) {
    if (!value || n < 0 || n >= BIG_VALUE_BITS) return;
    value->all_bits_info[n / 32] |= UINT32_C(1) << (n % 32);
}

CMDLIB_API int util_is_one_bit_set_for_big_value(const BigValue *value, int n) {
    if (!value || n < 0 || n >= BIG_VALUE_BITS) return 0;
    return (value->all_bits_info[n / 32] >> (n % 32)) & 1U;
}

CMDLIB_API int util_convert_BigValue_to_string(const BigValue *value, char *text) {
    if (!text) return 0;
    int words = 0;
    if (value)
        for (int i = 0; i < BIG_VALUE_WORDS; ++i)
            if (value->all_bits_info[i]) words = i + 1;
    if (words == 0) {
        text[0] = '0';
        text[1] = '\0';
        return 1;
    }
    char *p = text;
    for (int i = 0; i < words; ++i)
        for (int shift = 28; shift >= 0; shift -= 4) *p++ = kHex[(value->all_bits_info[i] >> shift) & 15];
    *p = '\0';
    return static_cast<int>(p - text);
}

CMDLIB_API int util_get_big_value_from_bits(const char *text, BigValue *value) {
    if (!value) return -1;
    memset(value, 0, sizeof *value);
    if (!text) return -1;
    std::string_view s = cmdlib::strip(text);
    // Up to eight digits are one word (so "0" and "5" are word 0); longer
    // texts are whole words.
    if (s.empty() || (s.size() > 8 && s.size() % 8 != 0) || s.size() > 8 * BIG_VALUE_WORDS) return -1;
    BigValue v{};
    for (size_t i = 0; i < s.size(); ++i) {
        int d = util_char2hex(s[i]);
        if (d < 0) return -1;
        v.all_bits_info[i / 8] = (v.all_bits_info[i / 8] << 4) | static_cast<uint32_t>(d);  // NOLINT
    }
    *value = v;
    return 0;
}

}  // extern "C"
