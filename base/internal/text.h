// Small string_view helpers used by every parser.  Nothing here allocates.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

namespace cmdlib {

// The library's notion of a blank inside a line: space and tab.
[[nodiscard]] constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
// Trailing junk stripped from ends of lines: blanks and line breaks.
[[nodiscard]] constexpr bool is_space_or_eol(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

[[nodiscard]] constexpr std::string_view strip_leading_blanks(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && is_blank(s[i])) ++i;
    return s.substr(i);
}

[[nodiscard]] constexpr std::string_view strip_trailing_space(std::string_view s) {
    size_t n = s.size();
    while (n > 0 && is_space_or_eol(s[n - 1])) --n;
    return s.substr(0, n);
}

[[nodiscard]] constexpr std::string_view strip(std::string_view s) {
    return strip_trailing_space(strip_leading_blanks(s));
}

// Removes prefix from *s and returns true when *s starts with it.
[[nodiscard]] constexpr bool consume_prefix(std::string_view *s, std::string_view prefix) {
    if (s->substr(0, prefix.size()) != prefix) return false;
    s->remove_prefix(prefix.size());
    return true;
}

// Splits s once at the first c: *head gets what is before it, *tail what
// follows.  false (outputs untouched) when c does not occur.
[[nodiscard]] constexpr bool split_once(std::string_view s, char c, std::string_view *head,
                                        std::string_view *tail) {
    size_t pos = s.find(c);
    if (pos == std::string_view::npos) return false;
    *head = s.substr(0, pos);
    *tail = s.substr(pos + 1);
    return true;
}

// Separator sets of the word splitter.
// Blanks and line ends: fields of /proc files and tool output.
inline constexpr std::string_view kBlankOrEol = " \t\r\n";
// Everything isspace() accepts in the C locale.
inline constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// The word splitter of every parser: skips any run of separators, returns
// the word up to the next separator (empty when none is left) and advances
// *s past it.  Unlike strtok() nothing is written; unlike
// util_get_all_args() the line need not be a writable C string.
[[nodiscard]] constexpr std::string_view next_word(std::string_view *s,
                                                   std::string_view separators = kBlankOrEol) {
    size_t start = s->find_first_not_of(separators);
    if (start == std::string_view::npos) {
        *s = s->substr(s->size());
        return {};
    }
    size_t end = s->find_first_of(separators, start);
    if (end == std::string_view::npos) end = s->size();
    std::string_view w = s->substr(start, end - start);
    *s = s->substr(end);
    return w;
}

// The words of s into out[0..cap), in order; returns how many (at most
// cap: words past the capacity are not looked at).
constexpr size_t split_words(std::string_view s, std::string_view separators, std::string_view *out,
                             size_t cap) {
    size_t n = 0;
    while (n < cap) {
        std::string_view w = next_word(&s, separators);
        if (w.empty()) break;
        out[n++] = w;
    }
    return n;
}

// Decimal integer without locale, optional sign, overflow checked.  The
// whole view must be digits.  false on empty text, junk or overflow.
[[nodiscard]] constexpr bool parse_int64(std::string_view s, int64_t *out) {
    bool neg = false;
    if (!s.empty() && (s[0] == '-' || s[0] == '+')) {
        neg = s[0] == '-';
        s.remove_prefix(1);
    }
    if (s.empty()) return false;
    uint64_t v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') return false;
        uint64_t d = static_cast<uint64_t>(c - '0');
        if (v > (UINT64_C(9223372036854775808) - d) / 10) return false;
        v = v * 10 + d;
    }
    if (!neg && v > UINT64_C(9223372036854775807)) return false;
    *out = neg ? static_cast<int64_t>(0 - v) : static_cast<int64_t>(v);
    return true;
}

// atoi() semantics without undefined behaviour: leading blanks, optional
// sign, digits up to the first non-digit; 0 when there are none; the value
// saturates at the int range.
[[nodiscard]] constexpr int atoi_sat(std::string_view s) {
    s = strip_leading_blanks(s);
    bool neg = false;
    if (!s.empty() && (s[0] == '-' || s[0] == '+')) {
        neg = s[0] == '-';
        s.remove_prefix(1);
    }
    int64_t v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') break;
        v = v * 10 + (c - '0');
        if (v > INT64_C(2147483648)) v = INT64_C(2147483648);
    }
    if (neg) v = -v;
    if (v > INT32_MAX) v = INT32_MAX;
    return static_cast<int>(v);
}

// Copies s into dst (capacity size), cutting it to size-1 bytes; always
// terminates when size > 0.  Returns the number of bytes copied.
inline size_t copy_bounded(char *dst, size_t size, std::string_view s) {
    if (!dst || size == 0) return 0;
    size_t n = s.size() < size - 1 ? s.size() : size - 1;
    if (n) memmove(dst, s.data(), n);
    dst[n] = '\0';
    return n;
}

// snprintf into dst that never fails loudly: returns the length written
// (after truncation), 0 for a null/zero-size destination.
inline size_t format_bounded(char *dst, size_t size, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
inline size_t format_bounded(char *dst, size_t size, const char *fmt, ...) {
    if (!dst || size == 0) return 0;
    va_list ap;
    va_start(ap, fmt);
    int n = vsnprintf(dst, size, fmt, ap);
    va_end(ap);
    if (n < 0) {
        dst[0] = '\0';
        return 0;
    }
    return static_cast<size_t>(n) < size ? static_cast<size_t>(n) : size - 1;
}

// Appends s to the NUL-terminated text in dst (capacity size), cutting at
// size-1.  Returns the new length.
inline size_t append_bounded(char *dst, size_t size, std::string_view s) {
    if (!dst || size == 0) return 0;
    size_t len = strnlen(dst, size - 1);
    return len + copy_bounded(dst + len, size - len, s);
}

}  // namespace cmdlib
