// The resolver rewrite over an arbitrary old file: nothing with ':' is
// kept, every kept byte comes from the old file in order, the new servers
// follow on lines of their own, and the output ends with a line feed.
#include <stdint.h>
#include <string.h>

#include <string>
#include <string_view>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/ipv6_setup.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    std::string out;
    cmdlib::TextLineReader<256> r(text);
    cmdlib::rewrite_resolver(r, "2001:db8::53", "", [&](std::string_view b) { out.append(b); });
    const std::string tail = "nameserver 2001:db8::53\n";
    if (out.size() < tail.size() || out.compare(out.size() - tail.size(), tail.size(), tail) != 0) __builtin_trap();
    std::string kept = out.substr(0, out.size() - tail.size());
    if (kept.find(':') != std::string::npos) __builtin_trap();
    if (!kept.empty() && kept.back() != '\n') __builtin_trap();
    // Kept bytes are a subsequence of the old file plus added line feeds.
    size_t j = 0;
    for (char c : kept) {
        while (j < text.size() && text[j] != c) ++j;
        if (j < text.size()) {
            ++j;
        } else if (c != '\n') {
            __builtin_trap();
        }
    }
    return 0;
}
