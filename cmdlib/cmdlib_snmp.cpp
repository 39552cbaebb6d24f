// Configuration keys of the SNMP agent.
#include "cmdlib/cmdlib_snmp.h"

#include "cmdlib/internal/config_cache.h"
#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(snmp, SNMP_CONFIG_FIELDS_COUNT,
    "QX_SNMP_ENABLED", "QX_SNMP_LO_ENABLED", "QX_SNMP_CN_READ", "QX_SNMP_CN_WRITE",
    "QX_SNMP_TRAP_IP", "QX_SNMP_TRAP_PORT", "QX_ENABLE_SNMP_VIA_LAN", "QX_SNMP_TRAP_INTERVAL",
    "QX_SNMP_OPERATOR_NAME", "QX_SNMP_PORT")

// The configuration cache holds the SNMP agent's keys.  Handed in when the
// library is loaded; a static link keeps this unit through the undefined
// symbol the build adds for it (see CMakeLists.txt).
extern "C" const bool cmdlib_snmp_cache_keys_registered =
    cmdlib::use_config_cache_keys(snmp_config_fields);
