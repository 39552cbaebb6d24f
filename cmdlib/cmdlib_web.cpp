// Configuration keys of the web management server.
#include "cmdlib/cmdlib_web.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(web, WEB_CONFIG_FIELDS_COUNT,
    "QX_SUPER_USERNAME", "QX_SUPER_PASSWD", "QX_USERNAME", "QX_PASSWD", "QX_USED_LOGO_FILE",
    "QX_USED_THEME_FILE", "QX_WEB_PAGE_HIDE", "QX_ADMIN_WEB_PAGE_HIDE")
