// Configuration keys of the GRE tunnel.
#include "cmdlib/cmdlib_gre.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(gre, GRE_CONFIG_FIELDS_COUNT,
    "QX_GRE_VPN_ENABLED", "QX_GRE_VPN_NAME", "QX_GRE_VPN_SERVER", "QX_GRE_VPN_LOCAL_IP",
    "QX_GRE_VPN_REMOTE_IP", "QX_GRE_AS_DEFAULT_ROUTE", "QX_GRE_VPN_SUBNET_MASK",
    "QX_GRE_FOR_WAN_SUBNET", "QX_SIP_OVER_GRE", "QX_GRE_USE_LAN_INTERFACE")

CMDLIB_API int util_gre_check_if_service_is_enabled(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_GRE_VPN_ENABLED);
}

CMDLIB_API int util_gre_use_as_default_route(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_GRE_AS_DEFAULT_ROUTE);
}

CMDLIB_API int util_gre_use_lan_ip_as_local_ip(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_GRE_USE_LAN_INTERFACE);
}

CMDLIB_API int util_gre_for_wan_subnet(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_GRE_FOR_WAN_SUBNET);
}

CMDLIB_API int util_sip_over_gre_is_enabled(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_SIP_OVER_GRE);
}

CMDLIB_API const char *util_get_gre_tunnel_name(void) { return "tunnel_gre"; }
