// Host and directory parts of URLs and paths, as text.
#pragma once

#include <stddef.h>

#include <string_view>

namespace cmdlib::url {

// The firmware reads URLs through a 256-byte buffer: 255 bytes of text.
inline constexpr size_t kUrlBufferSize = 256;

// The host of a URL: the text is cut to 255 bytes; what follows "://" if
// present, up to the first '/'; past the last '@' (user information); up
// to the first ':' (port).  "http://u:p@10.1.2.3:8080/x" gives "10.1.2.3";
// an IPv6 literal gives "[" and its first group, which no lookup accepts.
[[nodiscard]] constexpr std::string_view host(std::string_view url) {
    url = url.substr(0, kUrlBufferSize - 1);
    size_t scheme = url.find("://");
    if (scheme != std::string_view::npos) url.remove_prefix(scheme + 3);
    url = url.substr(0, url.find('/'));
    size_t at = url.rfind('@');
    if (at != std::string_view::npos) url.remove_prefix(at + 1);
    return url.substr(0, url.find(':'));
}

// Whether a host name may be handed to the system's resolver: letters,
// digits, '-', '_' and '.' only, so control characters, blanks and shell
// text never reach a lookup.
[[nodiscard]] constexpr bool plausible_host_name(std::string_view name) {
    if (name.empty()) return false;
    for (char c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
              c == '_' || c == '.'))
            return false;
    return true;
}

// A file name that is used as it stands: empty, or already a path.
[[nodiscard]] constexpr bool used_as_is(std::string_view file_name) {
    return file_name.empty() || file_name.find_first_of("/\\") != std::string_view::npos;
}

// Length of the directory part of a URL or path, its last '/' included
// (the last '\' when there is no '/'); 0 when it has neither.
[[nodiscard]] constexpr size_t directory_length(std::string_view path) {
    size_t pos = path.rfind('/');
    if (pos == std::string_view::npos) pos = path.rfind('\\');
    return pos == std::string_view::npos ? 0 : pos + 1;
}

}  // namespace cmdlib::url
