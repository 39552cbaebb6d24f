// Configuration keys of IP pass-through, which hands the WAN address to one LAN host.
#include "cmdlib/cmdlib_ip_passthrough.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

#include <string.h>

constexpr const char *ip_passthrough_config_fields[IP_PASSTHROUGH_CONFIG_FIELDS_COUNT + 1] = {
    "QX_IP_PASS_THROUGH_ENABLE", "QX_IP_PASS_THROUGH_MAC", nullptr};
static_assert(cmdlib::key_list_length(ip_passthrough_config_fields) == IP_PASSTHROUGH_CONFIG_FIELDS_COUNT,
              "ip_passthrough_config_fields holds IP_PASSTHROUGH_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_ip_passthrough_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, ip_passthrough_config_fields);
}

CMDLIB_API int util_ip_passthrough_enabled(const ConfigKeyValuePair *result, int result_count) {
    return strcmp(util_config_get_field_value(result, result_count, "QX_IP_PASS_THROUGH_ENABLE"),
                  "yes") == 0;
}

CMDLIB_API int util_enable_ip_passthrough(void) { return 1; }

CMDLIB_API int util_disable_ip_passthrough(void) { return 1; }

CMDLIB_API int util_set_sfp_ipa(void) { return 1; }
