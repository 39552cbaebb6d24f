// Which keys the process-wide configuration cache (system_configs) holds.
// The cache serves the SNMP agent's daemon, so its keys are the SNMP
// module's list.  The list is data here, below both the store and the SNMP
// family: the store loads whatever table it is handed and knows no module,
// and cmdlib_snmp defines its exported list from the same macro.
#pragma once

#define CMDLIB_SNMP_CONFIG_KEYS                                                             \
    "QX_SNMP_ENABLED", "QX_SNMP_LO_ENABLED", "QX_SNMP_CN_READ", "QX_SNMP_CN_WRITE",         \
        "QX_SNMP_TRAP_IP", "QX_SNMP_TRAP_PORT", "QX_ENABLE_SNMP_VIA_LAN", "QX_SNMP_TRAP_INTERVAL", \
        "QX_SNMP_OPERATOR_NAME", "QX_SNMP_PORT"

namespace cmdlib {

// The cache's key list, null-terminated.
inline constexpr const char *kConfigCacheKeys[] = {CMDLIB_SNMP_CONFIG_KEYS, nullptr};

// Loads system_configs afresh with the keys of the null-terminated table.
void load_config_cache(const char *const *keys);

}  // namespace cmdlib
