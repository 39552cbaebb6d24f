// Host extraction from URLs and paths beside a URL over arbitrary text:
// the host lies inside the first 255 bytes and holds none of the cut
// characters; a built path is exactly directory + file name.
#include <stdint.h>
#include <string.h>

#include <string>
#include <string_view>

#include "cmdlib/cmdlib_url.h"
#include "cmdlib/internal/url_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    namespace url = cmdlib::url;
    std::string_view text(reinterpret_cast<const char *>(data), size);
    std::string_view host = url::host(text);
    if (host.size() > 255 || host.find_first_of("/:@") != std::string_view::npos) __builtin_trap();
    if (!host.empty() && (host.data() < text.data() || host.data() + host.size() > text.data() + 255))
        __builtin_trap();
    (void)url::plausible_host_name(host);

    // original URL and file name: the text split at its first NUL
    std::string original(text.substr(0, text.find('\0')));
    std::string file = text.find('\0') == std::string_view::npos ? "" : std::string(text.substr(text.find('\0') + 1));
    file = file.substr(0, file.find('\0'));
    std::string out(original.size() + file.size() + 1, '\x7f');
    std::string name = file + '\0';
    int r = util_get_same_relative_new_path(original.c_str(), name.data(), out.data());
    size_t dir = url::directory_length(original);
    if (url::used_as_is(file)) {
        if (r != 0 || out[0] != '\x7f') __builtin_trap();
    } else if (r != -1 || (dir && std::string(out.c_str()) != original.substr(0, dir) + file) ||
               (!dir && out[0] != '\x7f')) {
        __builtin_trap();
    }
    // in place: the name's buffer holds the whole path
    std::string in_place = file + '\0' + std::string(original.size(), '\x7f');
    r = util_get_same_relative_new_path(original.c_str(), in_place.data(), nullptr);
    if (!url::used_as_is(file) && dir && std::string(in_place.c_str()) != original.substr(0, dir) + file)
        __builtin_trap();
    return 0;
}
