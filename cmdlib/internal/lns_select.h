// The LNS selection file the VPN client manager writes: lines "key:value"
// with the keys lns (the server), name (the user) and pass (the password).
#pragma once

#include <string.h>

#include <string_view>

#include "base/internal/text.h"

namespace cmdlib {

// Lines are read 254 characters at a time.
inline constexpr size_t kLnsLineSize = 255;

// Reads every line: split at the first ':' (lines without one are
// skipped); the key selects lns, name or pass when it is a prefix of that
// word (compared over the key's own length, so "n" selects name and an
// empty key lns); the value is the text after ':' without leading spaces
// and trailing blanks.  It is copied whole (at most 253 characters) into
// the selected buffer when that is given; a later line overwrites.
template <class Reader> void read_lns_selection(Reader &r, char *lns, char *name, char *pass) {
    struct Target {
        std::string_view word;
        char *out;
    };
    const Target targets[] = {{"lns", lns}, {"name", name}, {"pass", pass}};
    std::string_view line;
    while (r.next(&line)) {
        std::string_view key, value;
        if (!split_once(line, ':', &key, &value)) continue;
        size_t lead = value.find_first_not_of(' ');
        value = strip_trailing_space(lead == std::string_view::npos ? std::string_view() : value.substr(lead));
        for (const Target &t : targets) {
            if (t.word.substr(0, key.size()) != key || key.size() > t.word.size()) continue;
            if (t.out) {
                if (!value.empty()) memcpy(t.out, value.data(), value.size());
                t.out[value.size()] = '\0';
            }
            break;
        }
    }
}

}  // namespace cmdlib
