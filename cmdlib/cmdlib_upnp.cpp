// Configuration keys of UPnP.
#include "cmdlib/cmdlib_upnp.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(upnp, UPNP_CONFIG_FIELDS_COUNT,
    "USR_FWT_UPNP_SW")
