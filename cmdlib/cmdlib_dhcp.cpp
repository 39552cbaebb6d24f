// Configuration keys of the LAN's DHCP server.
#include "cmdlib/cmdlib_dhcp.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

#include <string.h>

constexpr const char *dhcp_config_fields[DHCP_CONFIG_FIELDS_COUNT + 1] = {
    "AP_IPADDR", "AP_NETMASK", "QX_ENABLE_DHCP_SERVER", "QX_DHCP_IP_BEGIN", "QX_DHCP_IP_END",
    "QX_DHCP_EXPIRE_TIME", "QX_GET_DNS_AUTO", "QX_DNS_PRIMARY", "QX_DNS_SECONDARY", nullptr};
static_assert(cmdlib::key_list_length(dhcp_config_fields) == DHCP_CONFIG_FIELDS_COUNT,
              "dhcp_config_fields holds DHCP_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_dhcp_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, dhcp_config_fields);
}

CMDLIB_API int util_dhcp_server_enabled(const ConfigKeyValuePair *result, int result_count) {
    return strcmp(util_config_get_field_value(result, result_count, "QX_ENABLE_DHCP_SERVER"), "no") != 0;
}

CMDLIB_API int util_dhcp_get_dns_auto(const ConfigKeyValuePair *result, int result_count) {
    if (strcmp(util_config_get_field_value(result, result_count, "QX_GET_DNS_AUTO"), "no") != 0)
        return 1;
    return !*util_config_get_field_value(result, result_count, "QX_DNS_PRIMARY") &&
           !*util_config_get_field_value(result, result_count, "QX_DNS_SECONDARY");
}
