// Word splitting and in-place string services of libbase.
#include <ctype.h>
#include <string.h>

#include "base/internal/text.h"
#include "base/libbase.h"

namespace {

bool is_sep(char c, char s1, char s2, bool line_breaks) {
    return c == s1 || c == s2 || (line_breaks && (c == '\r' || c == '\n'));
}

// Cuts line in place; line breaks always end a word, since most callers
// split lines just read with fgets().  With all_white the tab also
// separates.
int split(char *line, char s1, char s2, bool all_white, char **argv, int capacity) {
    if (!line || !argv || capacity <= 0) return 0;
    int count = 0;
    char *p = line;
    while (*p && count < capacity) {
        while (*p && (is_sep(*p, s1, s2, true) || (all_white && *p == '\t'))) ++p;
        if (!*p) break;
        argv[count++] = p;
        while (*p && !is_sep(*p, s1, s2, true) && !(all_white && *p == '\t')) ++p;
        if (*p) *p++ = '\0';
    }
    return count;
}

}  // namespace

extern "C" {

CMDLIB_API int util_get_all_args(char *line, char sep1, char sep2, char **argv, int capacity) {
    return split(line, sep1, sep2, false, argv, capacity);
}

CMDLIB_API int util_get_all_args_ext(char *line, char sep1, char sep2, int flag, char **argv,
                                     int capacity) {
    return split(line, sep1, sep2, flag == 0, argv, capacity);
}

CMDLIB_API int util_get_all_arguments(char *line, char **argv) {
    return split(line, ' ', '\t', false, argv, UTIL_MAX_ARGUMENTS);
}

CMDLIB_API char *util_get_next_arg2(char *text, int flag) {
    static char empty[1] = "";
    if (!text) return empty;
    char *p = text;
    if (!flag)
        while (cmdlib::is_blank(*p)) ++p;
    while (*p && !cmdlib::is_space_or_eol(*p)) ++p;
    while (cmdlib::is_blank(*p)) ++p;
    return p;
}

CMDLIB_API char *util_get_next_arg_cmdlib(const char *text, int index) {
    static char field[256];
    field[0] = '\0';
    if (!text || index < 0) return field;
    std::string_view rest(text);
    std::string_view word;
    for (int i = 0; i <= index; ++i) {
        word = cmdlib::next_word(&rest);
        if (word.empty()) return field;
    }
    cmdlib::copy_bounded(field, sizeof field, word);
    return field;
}

CMDLIB_API int util_contains_specified_parameter(char **argv, int count, const char *word, int flag,
                                                 int *pos) {
    if (!argv || !word) return 0;
    for (int i = 0; i < count; ++i) {
        if (!argv[i]) continue;
        if (flag ? strcasecmp(argv[i], word) == 0 : strcmp(argv[i], word) == 0) {
            if (pos) *pos = i;
            return 1;
        }
    }
    return 0;
}

CMDLIB_API char *util_skip_all_spaces(const char *text) {
    if (!text) return nullptr;
    while (cmdlib::is_blank(*text)) ++text;
    return const_cast<char *>(text);
}

CMDLIB_API void util_strip_blank_of_string_head(char *text) {
    if (!text) return;
    char *p = text;
    while (cmdlib::is_blank(*p)) ++p;
    if (p != text) memmove(text, p, strlen(p) + 1);
}

CMDLIB_API void util_strip_blank_of_string_end(char *text) {
    if (!text) return;
    size_t n = strlen(text);
    while (n > 0 && cmdlib::is_space_or_eol(text[n - 1])) --n;
    text[n] = '\0';
}

CMDLIB_API void util_strip_traling_spaces(char *text) {
    if (!text) return;
    size_t n = strlen(text);
    while (n > 0 && text[n - 1] == ' ') --n;
    text[n] = '\0';
}

CMDLIB_API void util_strip_special_char(char *text, char c) {
    if (!text) return;
    char *w = text;
    for (char *r = text; *r; ++r)
        if (*r != c) *w++ = *r;
    *w = '\0';
}

CMDLIB_API void util_remove_special_char(char *text, char c) { util_strip_special_char(text, c); }

CMDLIB_API void util_replace_all_zero_to_space(char *buf, int len) {
    if (!buf) return;
    for (int i = 0; i < len; ++i)
        if (buf[i] == '\0') buf[i] = ' ';
}

CMDLIB_API int util_string_deconvert_special_char(const char *src, char *dst, int size) {
    if (!dst || size <= 0) return -1;
    dst[0] = '\0';
    if (!src) return -1;
    size_t cap = static_cast<size_t>(size) - 1;
    size_t o = 0;
    auto put = [&](char c) {
        if (o < cap) dst[o++] = c;
    };
    // The exporter writes values as "..." with \" \\ \$ \` escaped, or as
    // '...' pieces; bare text may carry backslash escapes.
    const char *p = src;
    char quote = 0;
    while (*p) {
        char c = *p++;
        if (quote == '\'') {
            if (c == '\'') quote = 0;
            else put(c);
        } else if (quote == '"') {
            if (c == '"') {
                quote = 0;
            } else if (c == '\\' && (*p == '"' || *p == '\\' || *p == '$' || *p == '`')) {
                put(*p++);
            } else {
                put(c);
            }
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '\\' && *p) {
            put(*p++);
        } else {
            put(c);
        }
    }
    dst[o] = '\0';
    return static_cast<int>(o);
}

CMDLIB_API int util_string_get_basename(const char *path, char *dst, int size) {
    if (!dst || size <= 0) return -1;
    dst[0] = '\0';
    if (!path) return -1;
    const char *slash = strrchr(path, '/');
    return static_cast<int>(
        cmdlib::copy_bounded(dst, static_cast<size_t>(size), slash ? slash + 1 : path));
}

CMDLIB_API void util_convert_all_chars_to_upper_case(char *text) {
    if (!text) return;
    for (; *text; ++text) *text = static_cast<char>(toupper(static_cast<unsigned char>(*text)));
}

CMDLIB_API void util_convert_all_chars_to_lower_case(char *text) {
    if (!text) return;
    for (; *text; ++text) *text = static_cast<char>(tolower(static_cast<unsigned char>(*text)));
}

CMDLIB_API int util_char2hex(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // extern "C"
