// Configuration keys of the LAN's DHCP server.
#include "cmdlib/cmdlib_dhcp.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(dhcp, DHCP_CONFIG_FIELDS_COUNT,
    "AP_IPADDR", "AP_NETMASK", "QX_ENABLE_DHCP_SERVER", "QX_DHCP_IP_BEGIN", "QX_DHCP_IP_END",
    "QX_DHCP_EXPIRE_TIME", "QX_GET_DNS_AUTO", "QX_DNS_PRIMARY", "QX_DNS_SECONDARY")

CMDLIB_API int util_dhcp_server_enabled(const ConfigKeyValuePair *result, int result_count) {
    return cmdlib::pairs_say_not_no(result, result_count, "QX_ENABLE_DHCP_SERVER");
}

CMDLIB_API int util_dhcp_get_dns_auto(const ConfigKeyValuePair *result, int result_count) {
    if (cmdlib::pairs_say_not_no(result, result_count, "QX_GET_DNS_AUTO")) return 1;
    // Switched off but without a server of its own: still automatic.
    return !*util_config_get_field_value(result, result_count, "QX_DNS_PRIMARY") &&
           !*util_config_get_field_value(result, result_count, "QX_DNS_SECONDARY");
}
