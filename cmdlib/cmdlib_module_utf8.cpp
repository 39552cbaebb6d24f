// cmdlib_module: UTF-8 text to hexadecimal code units, four digits a
// character, for the daemons that hand text to the module.
#include <stdint.h>
#include <string.h>

#include "base/internal/text.h"
#include "cmdlib/cmdlib_module.h"

namespace {

// ---- UTF-8 ---------------------------------------------------------------------------------

// Bytes of the character that a lead byte starts.  Continuation bytes
// (0x80..0xBF) and 0xFE/0xFF count as one-byte characters, so any byte
// sequence advances.
struct Utf8LengthTable {
    uint8_t len[256];
    constexpr Utf8LengthTable() : len() {
        for (int b = 0; b < 256; ++b)
            len[b] = b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5
                     : b < 0xFE ? 6 : 1;
    }
    constexpr uint8_t operator[](int b) const { return len[b]; }
};
constexpr Utf8LengthTable Utf8_To_Byte_Table;
static_assert(Utf8_To_Byte_Table[0x7F] == 1 && Utf8_To_Byte_Table[0xBF] == 1 &&
                  Utf8_To_Byte_Table[0xC0] == 2 && Utf8_To_Byte_Table[0xEF] == 3 &&
                  Utf8_To_Byte_Table[0xF7] == 4 && Utf8_To_Byte_Table[0xFB] == 5 &&
                  Utf8_To_Byte_Table[0xFD] == 6 && Utf8_To_Byte_Table[0xFE] == 1,
              "lead byte classes");

}  // namespace

extern "C" {

// ---- UTF-8 to hexadecimal code units -------------------------------------------------------

CMDLIB_API uint8_t util_get_one_utf8_strlen(const uint8_t one_utf8) {
    return Utf8_To_Byte_Table[one_utf8];
}

CMDLIB_API int util_get_utf8_strlen(const uint8_t *utf8, int utf8_len) {
    if (!utf8 || utf8_len <= 0) return 0;
    const int limit = static_cast<int>(
        strnlen(reinterpret_cast<const char *>(utf8), static_cast<size_t>(utf8_len)));
    int count = 0;
    // A last character may reach past the limit; it still counts.
    for (int pos = 0; pos < limit; pos += Utf8_To_Byte_Table[utf8[pos]]) ++count;
    return count;
}

CMDLIB_API int util_utf8_to_unicode_one(const uint8_t *pInput, uint32_t *Unic, int utfbytes) {
    if (!pInput || !Unic || utfbytes == 0) return -1;
    *Unic = 0;
    if (utfbytes < 1 || utfbytes > 6) return 0;
    for (int i = 1; i < utfbytes; ++i)
        if ((pInput[i] & 0xC0) != 0x80) return 0;
    const unsigned b1 = pInput[0];
    const unsigned b2 = utfbytes > 1 ? pInput[1] : 0;
    const unsigned b3 = utfbytes > 2 ? pInput[2] : 0;
    const unsigned b4 = utfbytes > 3 ? pInput[3] : 0;
    const unsigned b5 = utfbytes > 4 ? pInput[4] : 0;
    const unsigned b6 = utfbytes > 5 ? pInput[5] : 0;
    unsigned byte[4] = {0, 0, 0, 0};  // least significant first, each mod 256
    switch (utfbytes) {
        case 1:
            byte[0] = b1;
            break;
        case 2:
            byte[0] = ((b1 & 3) << 6) + (b2 & 63);
            byte[1] = (b1 >> 2) & 7;
            break;
        case 3:
            byte[0] = ((b2 & 3) << 6) + (b3 & 63);
            byte[1] = ((b1 & 15) << 4) + ((b2 >> 2) & 15);
            break;
        case 4:
            byte[0] = ((b3 & 3) << 6) + (b4 & 63);
            byte[1] = ((b2 & 15) << 4) + ((b3 >> 2) & 15);
            byte[2] = ((b1 & 7) << 2) + ((b2 >> 4) & 3);
            break;
        // The 5- and 6-byte forms lie beyond Unicode; they are assembled
        // the way the module firmware's tables expect, not as code points
        // (byte 1 of the 6-byte form does take b5 and b6).
        case 5:
            byte[0] = (b4 << 6) + (b5 & 63);
            byte[1] = (b3 << 4) + ((b4 >> 2) & 15);
            byte[2] = (b2 << 2) + ((b3 >> 4) & 3);
            byte[3] = b1 << 6;
            break;
        default:  // 6
            byte[0] = (b5 << 6) + (b6 & 63);
            byte[1] = (b5 << 4) + ((b6 >> 2) & 15);
            byte[2] = (b3 << 2) + ((b4 >> 4) & 3);
            byte[3] = ((b1 & 1) << 6) + (b2 & 63);
            break;
    }
    *Unic = (byte[0] & 0xFF) | (byte[1] & 0xFF) << 8 | (byte[2] & 0xFF) << 16 |
            static_cast<uint32_t>(byte[3] & 0xFF) << 24;
    return utfbytes;
}

CMDLIB_API int util_utf8_to_unicode_string(const uint8_t *utf8, uint8_t *output_str, int utf8_len,
                                           int output_len) {
    if (!utf8 || !output_str || utf8_len <= 0 || output_len <= 0) return -1;
    char *out = reinterpret_cast<char *>(output_str);
    out[0] = '\0';
    const int chars = util_get_utf8_strlen(utf8, utf8_len);
    int in = 0;
    int pos = 0;
    for (int c = 0; c < chars && pos < output_len - 1; ++c) {
        const int n = Utf8_To_Byte_Table[utf8[in]];
        // Bytes of a character cut off by utf8_len stay zero, so such a
        // character decodes as a bad sequence instead of reading past the
        // input.
        uint8_t scratch[16] = {0};
        for (int i = 0; i < n && in + i < utf8_len; ++i) scratch[i] = utf8[in + i];
        uint32_t code = 0;
        util_utf8_to_unicode_one(scratch, &code, n);
        pos += static_cast<int>(cmdlib::format_bounded(out + pos, static_cast<size_t>(output_len - pos),
                                                       "%04X", static_cast<unsigned>(code)));
        in += n;
    }
    return pos;
}

}  // extern "C"
