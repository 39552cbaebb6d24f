// Configuration keys of the SNMP agent (the same list the configuration
// cache holds).
#include "cmdlib/cmdlib_snmp.h"

#include "cmdlib/internal/config_cache.h"
#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(snmp, SNMP_CONFIG_FIELDS_COUNT, CMDLIB_SNMP_CONFIG_KEYS)
