// The command line that changes one configuration setting for the SNMP
// agent: mdlcfg -a KEY="VALUE".  Plain values give exactly that text; a
// value the shell would read ('"', '$', '`', '\', blanks, '&', ...) goes
// instead as the one single-quoted word 'KEY=VALUE', so mdlcfg receives the
// same argument and the shell runs nothing.
#pragma once

#include <string>
#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/shell_quote.h"

namespace cmdlib {

template <size_t N>
bool compose_setting(CommandLine<N> &line, std::string_view key, std::string_view value) {
    if (!needs_shell_quoting(value))
        return line.format("mdlcfg -a %.*s=\"%.*s\"", static_cast<int>(key.size()), key.data(),
                           static_cast<int>(value.size()), value.data());
    line.format("mdlcfg -a ");
    return line.append_word(std::string(key) + "=" + std::string(value));
}

template <size_t N>
bool compose_setting(CommandLine<N> &line, std::string_view key, int value) {
    return compose_setting(line, key, std::to_string(value));
}

}  // namespace cmdlib
