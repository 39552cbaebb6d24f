// Compile-time view of InfoStruct's text fields, derived from the one field
// list in cmdlib_info_fields.h: position, width, group and defined_fields
// bit of every field, addressable by an enum and searchable by name.
#pragma once

#include <stddef.h>
#include <string.h>

#include <array>
#include <string_view>

#include "cmdlib/cmdlib.h"

namespace cmdlib {

// One enumerator per text field, in declaration order: info_field::AP_SSID ...
namespace info_field {
enum Id : int {
#define CMDLIB_INFO_ENUM(group, name, width, bit) name,
    CMDLIB_INFO_TEXT_FIELDS(CMDLIB_INFO_ENUM)
#undef CMDLIB_INFO_ENUM
        count
};
}  // namespace info_field

struct InfoFieldDesc {
    const char *name;  // field name; for groups 1..8 also the configuration key
    size_t offset;     // inside InfoStruct
    size_t width;      // array size, terminator included
    int group;         // 1..12
    int bit;           // bit in defined_fields, -1 when none
};

inline constexpr std::array<InfoFieldDesc, info_field::count> kInfoFields = {{
#define CMDLIB_INFO_DESC(group, name, width, bit) \
    {#name, offsetof(InfoStruct, name), width, group, bit},
    CMDLIB_INFO_TEXT_FIELDS(CMDLIB_INFO_DESC)
#undef CMDLIB_INFO_DESC
}};

inline constexpr int kDefinedFieldBits = CMDLIB_INFO_DEFINED_FIELDS_WORDS * 32;
inline constexpr int kInfoGroupCount = 12;

// Every bit belongs to at most one field and lies inside defined_fields.
constexpr bool info_bits_are_unique() {
    bool seen[kDefinedFieldBits] = {};
    for (const InfoFieldDesc &f : kInfoFields) {
        if (f.bit < 0) continue;
        if (f.bit >= kDefinedFieldBits || seen[f.bit]) return false;
        seen[f.bit] = true;
    }
    return true;
}
static_assert(info_bits_are_unique(), "two fields share a defined_fields bit");

// The settings reader fills 162 fields one by one and 59 through its table;
// each of them has a bit, the two other configuration fields (RTS and
// QX_ISOLATE_WLAN_CLIENTS) have none.
constexpr int info_fields_with_bit() {
    int n = 0;
    for (const InfoFieldDesc &f : kInfoFields) n += f.bit >= 0;
    return n;
}
static_assert(info_fields_with_bit() == 162 + 59, "every read setting has its bit");

// Fields of the record by name (exact comparison), or nullptr.
constexpr const InfoFieldDesc *find_info_field(std::string_view name) {
    for (const InfoFieldDesc &f : kInfoFields)
        if (name == f.name) return &f;
    return nullptr;
}

inline char *info_field_ptr(InfoStruct *info, const InfoFieldDesc &f) {
    return reinterpret_cast<char *>(info) + f.offset;
}
inline const char *info_field_ptr(const InfoStruct *info, const InfoFieldDesc &f) {
    return reinterpret_cast<const char *>(info) + f.offset;
}
inline char *info_field_ptr(InfoStruct *info, info_field::Id id) {
    return info_field_ptr(info, kInfoFields[id]);
}

inline void info_set_defined_bit(InfoStruct *info, int bit) {
    if (bit < 0 || bit >= kDefinedFieldBits) return;
    info->defined_fields[bit / 32] |= 1u << (bit % 32);
}
inline bool info_defined_bit(const InfoStruct *info, int bit) {
    if (bit < 0 || bit >= kDefinedFieldBits) return false;
    return (info->defined_fields[bit / 32] >> (bit % 32)) & 1u;
}

}  // namespace cmdlib
