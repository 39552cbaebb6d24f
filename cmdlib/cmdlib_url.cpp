// Host addresses of URLs and paths beside a URL.
#include "cmdlib/cmdlib_url.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <string.h>

#include "base/internal/text.h"
#include "cmdlib/internal/url_parse.h"
#include "cmdlib/network.h"

namespace url = cmdlib::url;

CMDLIB_API int util_get_host_ip_from_url(const char *url_text, char *host_ip) {
    if (!url_text || !host_ip) return -1;
    char host[url::kUrlBufferSize];
    cmdlib::copy_bounded(host, sizeof host,
                         url::host(std::string_view(url_text, strnlen(url_text, url::kUrlBufferSize - 1))));
    struct in_addr addr;
    if (inet_aton(host, &addr)) {
        // written back in canonical dotted form ("10.1" is 10.0.0.1)
        inet_ntop(AF_INET, &addr, host_ip, INET_ADDRSTRLEN);
        return 0;
    }
    if (!url::plausible_host_name(host)) return -1;
    char ipv4[INET_ADDRSTRLEN + 16] = "";
    int families = 0;
    // An IPv4 answer is known by the address it wrote, whichever bit the
    // lookup uses to report it.
    if (util_resolv_domain_name(host, ipv4, nullptr, &families) != 1 || ipv4[0] == '\0') return -1;
    cmdlib::copy_bounded(host_ip, INET_ADDRSTRLEN, ipv4);
    return 0;
}

CMDLIB_API int util_get_same_relative_new_path(const char *original_url, char *file_name,
                                               char *new_file_name_path) {
    if (!file_name || url::used_as_is(file_name)) return 0;
    if (!original_url) return -1;
    const size_t dir = url::directory_length(original_url);
    if (dir == 0) return -1;
    const size_t name_len = strlen(file_name);
    if (new_file_name_path) {
        memmove(new_file_name_path, original_url, dir);
        memmove(new_file_name_path + dir, file_name, name_len + 1);
    } else {
        memmove(file_name + dir, file_name, name_len + 1);
        memmove(file_name, original_url, dir);
    }
    // -1 also when the path was built: 0 is kept for "use the name as it is".
    return -1;
}
