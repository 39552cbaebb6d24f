// Configuration keys of special settings: MTU, MSS, ARP ageing, SIP ports, signal scheme and bands.
#include "cmdlib/cmdlib_special_configs.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *special_configs_config_fields[SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT + 1] = {
    "QX_MTU_USB0", "QX_WAN_MSS", "CONFIG_DISABLE_GSM", "QX_ARP_AGING_TIME", "QX_SIP_RTP_PORT_LOW",
    "QX_SIP_RTP_PORT_HIGH", "QX_USED_SIGNAL_SCHEME", "QX_BAND_PREF", "QX_DISPLAYED_BAND_PREF",
    "QX_NETWORK_MODE_NOT_SUPPORT", "QX_MAX_SIGNAL_LEVEL", nullptr};
static_assert(cmdlib::key_list_length(special_configs_config_fields) == SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT,
              "special_configs_config_fields holds SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_special_configs_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, special_configs_config_fields);
}
