// Configuration keys of IP pass-through, which hands the WAN address to one LAN host.
#include "cmdlib/cmdlib_ip_passthrough.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(ip_passthrough, IP_PASSTHROUGH_CONFIG_FIELDS_COUNT,
    "QX_IP_PASS_THROUGH_ENABLE", "QX_IP_PASS_THROUGH_MAC")

CMDLIB_API int util_ip_passthrough_enabled(const ConfigKeyValuePair *result, int result_count) {
    return cmdlib::pairs_say_yes(result, result_count, "QX_IP_PASS_THROUGH_ENABLE");
}

CMDLIB_API int util_enable_ip_passthrough(void) { return 1; }

CMDLIB_API int util_disable_ip_passthrough(void) { return 1; }

CMDLIB_API int util_set_sfp_ipa(void) { return 1; }
