// Firewall settings: the descriptor table derived from the field list and
// the reader that fills tFirewallConfigInfo from an export.
#include "cmdlib/cmdlib_firewall_config.h"

#include <stddef.h>
#include <string.h>

#include "cmdlib/cmdlib_config.h"

#define CMDLIB_FIREWALL_DESCRIPTOR(name, width) {#name, offsetof(tFirewallConfigInfo, name), width, 1},
constexpr FieldConfigInfo firewall_config_fields[FIREWALL_CONFIG_FIELDS_COUNT] = {
    CMDLIB_FIREWALL_FIELDS(CMDLIB_FIREWALL_DESCRIPTOR)};
#undef CMDLIB_FIREWALL_DESCRIPTOR

namespace {

enum FirewallField {
#define CMDLIB_FIREWALL_ENUM(name, width) kField_##name,
    CMDLIB_FIREWALL_FIELDS(CMDLIB_FIREWALL_ENUM)
#undef CMDLIB_FIREWALL_ENUM
        kListedFields
};
static_assert(kListedFields == FIREWALL_CONFIG_FIELDS_COUNT, "the firewall has 253 fields");

constexpr size_t kWidths[] = {
#define CMDLIB_FIREWALL_WIDTH(name, width) width,
    CMDLIB_FIREWALL_FIELDS(CMDLIB_FIREWALL_WIDTH)
#undef CMDLIB_FIREWALL_WIDTH
};
constexpr size_t total_width() {
    size_t sum = 0;
    for (size_t w : kWidths) sum += w;
    return sum;
}
static_assert(sizeof(tFirewallConfigInfo) == total_width(),
              "tFirewallConfigInfo is character arrays only, without padding");

constexpr int fields_of_width(size_t width) {
    int n = 0;
    for (const FieldConfigInfo &f : firewall_config_fields) n += f.field_size == width;
    return n;
}
static_assert(fields_of_width(32) == 81 && fields_of_width(64) == 60 && fields_of_width(4) == 56 &&
                  fields_of_width(8) == 27 && fields_of_width(16) == 16 &&
                  fields_of_width(128) == 8 && fields_of_width(96) == 4 && fields_of_width(2) == 1,
              "widths of the firewall fields");

}  // namespace

CMDLIB_API int util_firewall_config_add_fields_need_to_read(const char **args, int max_args_count) {
    if (!args) return 0;
    int n = 0;
    for (; n < max_args_count && n < FIREWALL_CONFIG_FIELDS_COUNT; ++n)
        args[n] = firewall_config_fields[n].field_name;
    return n;
}

CMDLIB_API int util_firewall_read_config(const char *config_file,
                                         tFirewallConfigInfo *firewall_info) {
    if (firewall_info) memset(firewall_info, 0, sizeof *firewall_info);
    return util_config_read_config_file_to_one_struct(config_file, firewall_config_fields,
                                                      FIREWALL_CONFIG_FIELDS_COUNT, firewall_info);
}
