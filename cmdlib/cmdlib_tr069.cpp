// Configuration keys of the TR-069 client.
#include "cmdlib/cmdlib_tr069.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *tr069_config_fields[TR069_CONFIG_FIELDS_COUNT + 1] = {
    "QX_TR069_ENABLED", "QX_TR069_URL", "QX_TR069_NOTICE_ENABLED", "QX_TR069_NOTICE_INTERVAL",
    "QX_TR069_USERNAME", "QX_TR069_PASSWD", "QX_TR069_LINK_USERNAME", "QX_TR069_LINK_PASSWD",
    "QX_TR069_ACS_AUTH_ENABLED", "QX_TR069_CPE_AUTH_ENABLED", "QX_TR069_HTTPD_PORT", nullptr};
static_assert(cmdlib::key_list_length(tr069_config_fields) == TR069_CONFIG_FIELDS_COUNT,
              "tr069_config_fields holds TR069_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_tr069_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, tr069_config_fields);
}
