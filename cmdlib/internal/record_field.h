// Reading the fixed-width text fields of InfoStruct.  A caller may fill a
// field to the last byte without a terminator, so a field is never read
// with strlen: its text ends at the first NUL or at the array's end.
#pragma once

#include <string.h>

#include <string_view>

namespace cmdlib {

template <size_t N>
[[nodiscard]] inline std::string_view field_text(const char (&field)[N]) {
    return std::string_view(field, strnlen(field, N));
}

}  // namespace cmdlib
