// Quoting of outside text (URLs, file names, configuration values) that is
// placed into a shell command line.  Benign text is left exactly as it is,
// so the command lines of well-formed input are byte for byte the usual
// ones; any other text becomes one single-quoted word that the shell takes
// literally (an embedded ' is written as '\'').
#pragma once

#include <stddef.h>

#include <string_view>

namespace cmdlib {

// Characters that never mean anything to the shell.
[[nodiscard]] constexpr bool is_shell_benign(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           c == '_' || c == '-' || c == '.' || c == '/' || c == ':' || c == '@' || c == '%' ||
           c == '+' || c == ',' || c == '=';
}

[[nodiscard]] constexpr bool needs_shell_quoting(std::string_view s) {
    for (char c : s)
        if (!is_shell_benign(c)) return true;
    return false;
}

// Writes the shell-safe form of s into out (capacity size).  Returns the
// length written, or -1 when it does not fit (out then holds "").  Empty
// text stays empty: callers that need an explicit empty word quote it
// themselves.
inline long shell_quote(std::string_view s, char *out, size_t size) {
    if (!out || size == 0) return -1;
    size_t o = 0;
    auto put = [&](char c) {
        if (o + 1 >= size) return false;
        out[o++] = c;
        return true;
    };
    bool ok = true;
    if (!needs_shell_quoting(s)) {
        for (char c : s) ok = ok && put(c);
    } else {
        ok = put('\'');
        for (char c : s) {
            if (c == '\'') {
                ok = ok && put('\'') && put('\\') && put('\'') && put('\'');
            } else {
                ok = ok && put(c);
            }
        }
        ok = ok && put('\'');
    }
    if (!ok) {
        out[0] = '\0';
        return -1;
    }
    out[o] = '\0';
    return static_cast<long>(o);
}

}  // namespace cmdlib
