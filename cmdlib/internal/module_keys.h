// The one shape of the module field-set families (lock_network,
// ip_passthrough, gre, l2tp, tr069, web, upnp, special_configs, dhcp,
// snmp): each module has a constant, null-terminated list of the keys its
// daemon reads, the function that appends that list to a work list, and a
// few yes/no questions over a filled record or over pairs read.  A family
// file states its keys once with CMDLIB_MODULE_KEYS and asks its questions
// with the predicates below.
#pragma once

#include <string.h>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"
#include "cmdlib/internal/record_field.h"

// Defines <module>_config_fields (COUNT keys and the null terminator, the
// count checked when compiling) and the exported
// util_<module>_add_fields_need_to_read that appends them to a work list.
#define CMDLIB_MODULE_KEYS(module, COUNT, ...)                                                    \
    constexpr const char *module##_config_fields[(COUNT) + 1] = {__VA_ARGS__, nullptr};           \
    static_assert(cmdlib::key_list_length(module##_config_fields) == (COUNT),                      \
                  #module "_config_fields holds " #COUNT " keys");                                 \
    CMDLIB_API int util_##module##_add_fields_need_to_read(const char **args, int max_args_count) { \
        return util_config_add_fields_need_to_read(args, max_args_count, module##_config_fields);  \
    }

namespace cmdlib {

// 1 when the record's field named like the key is exactly "yes" (0 for a
// null record): the usual boolean setting.
template <size_t N>
[[nodiscard]] int record_says_yes(const InfoStruct *info, const char (InfoStruct::*field)[N]) {
    return info && field_text(info->*field) == "yes" ? 1 : 0;
}

// 1 when key's value among the pairs read is exactly "yes".
[[nodiscard]] inline int pairs_say_yes(const ConfigKeyValuePair *pairs, int count, const char *key) {
    return strcmp(util_config_get_field_value(pairs, count, key), "yes") == 0 ? 1 : 0;
}

// 1 unless key's value among the pairs read is exactly "no": the settings
// that are on by default (an absent key counts as on).
[[nodiscard]] inline int pairs_say_not_no(const ConfigKeyValuePair *pairs, int count, const char *key) {
    return strcmp(util_config_get_field_value(pairs, count, key), "no") != 0 ? 1 : 0;
}

}  // namespace cmdlib
