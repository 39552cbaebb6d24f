// Configuration keys of the web management server.
#include "cmdlib/cmdlib_web.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *web_config_fields[WEB_CONFIG_FIELDS_COUNT + 1] = {
    "QX_SUPER_USERNAME", "QX_SUPER_PASSWD", "QX_USERNAME", "QX_PASSWD", "QX_USED_LOGO_FILE",
    "QX_USED_THEME_FILE", "QX_WEB_PAGE_HIDE", "QX_ADMIN_WEB_PAGE_HIDE", nullptr};
static_assert(cmdlib::key_list_length(web_config_fields) == WEB_CONFIG_FIELDS_COUNT,
              "web_config_fields holds WEB_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_web_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, web_config_fields);
}
