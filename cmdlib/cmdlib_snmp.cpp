// Configuration keys of the SNMP agent.
#include "cmdlib/cmdlib_snmp.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *snmp_config_fields[SNMP_CONFIG_FIELDS_COUNT + 1] = {
    "QX_SNMP_ENABLED", "QX_SNMP_LO_ENABLED", "QX_SNMP_CN_READ", "QX_SNMP_CN_WRITE",
    "QX_SNMP_TRAP_IP", "QX_SNMP_TRAP_PORT", "QX_ENABLE_SNMP_VIA_LAN", "QX_SNMP_TRAP_INTERVAL",
    "QX_SNMP_OPERATOR_NAME", "QX_SNMP_PORT", nullptr};
static_assert(cmdlib::key_list_length(snmp_config_fields) == SNMP_CONFIG_FIELDS_COUNT,
              "snmp_config_fields holds SNMP_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_snmp_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, snmp_config_fields);
}
