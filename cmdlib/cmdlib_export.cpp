// The names shared with the shell scripts: configuration keys mapped onto
// InfoStruct, the record's export as shell assignments, the macro file,
// and the small text helpers used on exported lines.
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "base/internal/atomic_file.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_gre.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/internal/settings_parse.h"
#include "cmdlib/internal/shell_export.h"
#include "cmdlib/network.h"

using namespace cmdlib;

// ==== Tables ==========================================================================

#define CMDLIB_PARSED_FIELD_ROW(name) \
    {#name, offsetof(InfoStruct, name), sizeof(InfoStruct::name), kInfoFields[info_field::name].bit},
extern "C" const FieldConfigInfo all_need_parsed_fields[ALL_NEED_PARSED_FIELDS_COUNT] = {
    CMDLIB_TABLE_SETTINGS(CMDLIB_PARSED_FIELD_ROW)};
#undef CMDLIB_PARSED_FIELD_ROW
static_assert(kTableSettingCount == ALL_NEED_PARSED_FIELDS_COUNT);

#define CMDLIB_SHELL_MACRO_ROW(name, value) {#name, value},
extern "C" const NameValueStringPair all_macros_need_to_export[ALL_MACROS_NEED_TO_EXPORT_COUNT] = {
    CMDLIB_SHELL_MACROS(CMDLIB_SHELL_MACRO_ROW)};
#undef CMDLIB_SHELL_MACRO_ROW

namespace {

// The key lookup searches the configuration groups of the record; the
// descriptor table's keys are all among them, so one search covers both.
constexpr bool parsed_fields_are_configuration_fields() {
    for (info_field::Id id : kTableSettingFields)
        if (kInfoFields[id].group > 8 || kInfoFields[id].bit < 0) return false;
    return true;
}
static_assert(parsed_fields_are_configuration_fields());

// The configuration fields sorted by name, built when compiling: a lookup
// is a binary search instead of a walk over some 220 names, which matters
// to a daemon that looks up many keys in its polling loop.
struct KeyIndexEntry {
    std::string_view name;
    const InfoFieldDesc *field;
};

constexpr size_t configuration_field_count() {
    size_t n = 0;
    for (const InfoFieldDesc &f : kInfoFields) n += f.group <= 8;
    return n;
}

constexpr std::array<KeyIndexEntry, configuration_field_count()> make_key_index() {
    std::array<KeyIndexEntry, configuration_field_count()> index{};
    size_t n = 0;
    for (const InfoFieldDesc &f : kInfoFields) {
        if (f.group > 8) continue;
        KeyIndexEntry e{f.name, &f};
        size_t j = n++;
        for (; j > 0 && e.name < index[j - 1].name; --j) index[j] = index[j - 1];
        index[j] = e;
    }
    return index;
}
constexpr auto kKeyIndex = make_key_index();

}  // namespace

// ==== Pure helpers ====================================================================

namespace cmdlib {

void TextOut::put(std::string_view s) {
    for (char c : s) put(c);
}

void TextOut::put(char c) {
    if (len_ + 1 >= cap_) {
        cut_ = true;
        return;
    }
    buf_[len_++] = c;
    buf_[len_] = '\0';
}

void TextOut::put_double_quoted_body(std::string_view value) {
    for (char c : value) {
        if (is_double_quote_special(c)) put('\\');
        put(c);
    }
}

void TextOut::put_assignment(std::string_view name, std::string_view value) {
    put("export ");
    put(name);
    put("=\"");
    put_double_quoted_body(value);
    put('"');
}

const InfoFieldDesc *config_key_field(std::string_view key) {
    if (key == kPskKeyAlias) return &kInfoFields[info_field::PSK_KEY];
    const KeyIndexEntry *it = std::lower_bound(
        kKeyIndex.begin(), kKeyIndex.end(), key,
        [](const KeyIndexEntry &e, std::string_view k) { return e.name < k; });
    return it != kKeyIndex.end() && it->name == key ? it->field : nullptr;
}

size_t render_config_export(const InfoStruct *info, char *out, size_t cap) {
    TextOut text(out, cap);
    if (!info) return 0;
    for (info_field::Id id : kConfigExportOrder) {
        const InfoFieldDesc &f = kInfoFields[id];
        if (!info_defined_bit(info, f.bit)) continue;
        // A field filled to its last byte has no terminator: its text ends
        // at the array's end.
        const char *p = info_field_ptr(info, f);
        std::string_view value(p, strnlen(p, f.width));
        if (id == info_field::PSK_KEY) {
            text.put('\n');
            text.put_assignment(kPskKeyAlias, value);
        }
        text.put('\n');
        text.put_assignment(f.name, value);
    }
    return text.size();
}

size_t render_macro_file(const InterfaceNames &ifs, char *out, size_t cap) {
    TextOut text(out, cap);
    text.put("#!/bin/sh\n");
    // Scripts find the file by this name, wherever this copy was written.
    text.put_assignment("ALL_MACRO_EXPORT_DEFINITION_FILE", ALL_MACRO_EXPORT_DEFINITION_FILE);
    text.put('\n');
    for (const NameValueStringPair &row : all_macros_need_to_export) {
        text.put_assignment(row.name, row.value);
        text.put('\n');
    }
    for (size_t i = 0; i < kInterfaceMacroCount; ++i) {
        const char *name = ifs.name[i] ? ifs.name[i] : "";
        text.put_assignment(kInterfaceMacroNames[i],
                            std::string_view(name, strnlen(name, kInterfaceNameMax)));
        text.put('\n');
    }
    return text.size();
}

size_t strip_cfg_e_quotes(char *text, size_t len) {
    if (!text) return 0;
    size_t start = 0;
    if (len >= 1 && text[0] == '"' && text[len - 1] == '"') {
        start = 1;
        len = len >= 2 ? len - 1 : 1;  // a lone quote leaves nothing
    }
    // Removing the backslash of a backslash-quote pair may make a new pair
    // of the backslash before it; repeating that until none is left drops
    // the whole run of backslashes in front of each quote.
    size_t o = 0;
    for (size_t i = start; i < len; ++i) {
        if (text[i] == '"')
            while (o > 0 && text[o - 1] == '\\') --o;
        text[o++] = text[i];
    }
    text[o] = '\0';
    return o;
}

}  // namespace cmdlib

// ==== Exported functions =========================================================

extern "C" char *util_get_config_field_value(InfoStruct *nvram_config_info,
                                             const char *config_field_name) {
    if (!nvram_config_info || !config_field_name) return nullptr;
    const InfoFieldDesc *f = config_key_field(config_field_name);
    return f ? info_field_ptr(nvram_config_info, *f) : nullptr;
}

extern "C" void util_export_config_info(InfoStruct *nvram_config_info) {
    if (!nvram_config_info) return;
    char text[kConfigExportCapacity];
    size_t n = render_config_export(nvram_config_info, text, sizeof text);
    fwrite(text, 1, n, stdout);
    fflush(stdout);
}

extern "C" void util_export_all_macro_definitions_to_file(const char *dest_file) {
    const char *path = dest_file && *dest_file ? dest_file : ALL_MACRO_EXPORT_DEFINITION_FILE;
    InterfaceNames ifs = {{util_get_wan_interface_name(), util_get_system_network_bridge_name(),
                           util_get_wireless_interface_name(), util_get_ethernet_interface_name(),
                           util_get_gre_tunnel_name()}};
    char text[kMacroFileCapacity];
    size_t n = render_macro_file(ifs, text, sizeof text);
    // Written beside and renamed over the old file: a script sourcing it
    // meanwhile reads the old macros or the new ones, never half a file.
    if (replace_file(path, text, n)) cmd_chmodx(path);
}

extern "C" const char *util_macro_get_definitions_value(const char *macro_name) {
    if (!macro_name) return nullptr;
    for (const NameValueStringPair &row : all_macros_need_to_export)
        if (strcmp(row.name, macro_name) == 0) return row.value;
    return nullptr;
}

extern "C" char *util_get_field_value_seperated_by_equal(char *tmp_buffer) {
    // Writable so that a caller writing a terminator into the answer harms
    // nothing; it always holds "".
    static char empty[1];
    empty[0] = '\0';
    if (!tmp_buffer || !strchr(tmp_buffer, '=')) return empty;
    std::string_view value = settings_line_value(tmp_buffer);
    char *begin = tmp_buffer + (value.data() - tmp_buffer);
    begin[value.size()] = '\0';
    return begin;
}

extern "C" void util_strip_quote_string_from_cfg_e(char *processed_quoted_string) {
    if (!processed_quoted_string) return;
    strip_cfg_e_quotes(processed_quoted_string, strlen(processed_quoted_string));
}

extern "C" void util_overwrite_config_info(InfoStruct *sys_config_info,
                                           InfoStruct *nvram_config_info) {
    (void)sys_config_info;
    (void)nvram_config_info;
}

extern "C" int util_get_QX_L2TP_MODE(InfoStruct *info) {
    return info ? atoi_sat(field_text(info->QX_L2TP_MODE)) : 0;
}

extern "C" int util_get_QX_ENABLE_PPP_FORWARD(InfoStruct *info) {
    return info ? atoi_sat(field_text(info->QX_ENABLE_PPP_FORWARD)) : 0;
}

extern "C" int util_get_LAN_LED_AS_LTE_STATUS(InfoStruct *info) {
    (void)info;
    return 0;
}
