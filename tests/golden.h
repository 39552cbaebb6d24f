// Golden files of the tests (tests/data/): recorded packets (.bin) and
// expected bytes written as commented hex (.hex: hex digits, blanks and
// line ends ignored, '#' to the end of a line is a comment).
#pragma once

#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>

namespace golden {

// tests/data/<relative>: through the checkout the device runner names
// (CMDLIB_SRC), else beside this header.
inline std::string path(const std::string &relative) {
    const char *src = getenv("CMDLIB_SRC");
    std::string here = __FILE__;
    std::string dir = src && *src ? std::string(src) + "/tests" : here.substr(0, here.rfind('/'));
    return dir + "/data/" + relative;
}

// The file's bytes; "" when it cannot be read.
inline std::string bytes(const std::string &relative) {
    std::ifstream in(path(relative), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Hex text to bytes: blanks, line ends and comments skipped; "" for a
// stray character or an odd number of digits, so a broken file fails.
inline std::string from_hex(const std::string &text) {
    std::string out;
    int high = -1;
    bool comment = false;
    for (char c : text) {
        if (c == '\n') comment = false;
        if (comment || c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
        if (c == '#') {
            comment = true;
            continue;
        }
        int d = hex_digit(c);
        if (d < 0) return "";
        if (high < 0) {
            high = d;
        } else {
            out += static_cast<char>(high << 4 | d);
            high = -1;
        }
    }
    return high < 0 ? out : "";
}

// A .hex golden file's bytes.
inline std::string hex_file(const std::string &relative) { return from_hex(bytes(relative)); }

// Bytes as spaced hex, for readable failure messages.
inline std::string to_hex(const std::string &b) {
    static const char *digits = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < b.size(); ++i) {
        if (i) out += (i % 16 == 0) ? '\n' : ' ';
        out += digits[static_cast<unsigned char>(b[i]) >> 4];
        out += digits[static_cast<unsigned char>(b[i]) & 15];
    }
    return out;
}

}  // namespace golden
