// Configuration keys of special settings: MTU, MSS, ARP ageing, SIP ports, signal scheme and bands.
#include "cmdlib/cmdlib_special_configs.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(special_configs, SPECIAL_CONFIGS_CONFIG_FIELDS_COUNT,
    "QX_MTU_USB0", "QX_WAN_MSS", "CONFIG_DISABLE_GSM", "QX_ARP_AGING_TIME", "QX_SIP_RTP_PORT_LOW",
    "QX_SIP_RTP_PORT_HIGH", "QX_USED_SIGNAL_SCHEME", "QX_BAND_PREF", "QX_DISPLAYED_BAND_PREF",
    "QX_NETWORK_MODE_NOT_SUPPORT", "QX_MAX_SIGNAL_LEVEL")
