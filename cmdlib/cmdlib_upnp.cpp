// Configuration keys of UPnP.
#include "cmdlib/cmdlib_upnp.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *upnp_config_fields[UPNP_CONFIG_FIELDS_COUNT + 1] = {
    "USR_FWT_UPNP_SW", nullptr};
static_assert(cmdlib::key_list_length(upnp_config_fields) == UPNP_CONFIG_FIELDS_COUNT,
              "upnp_config_fields holds UPNP_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_upnp_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, upnp_config_fields);
}
