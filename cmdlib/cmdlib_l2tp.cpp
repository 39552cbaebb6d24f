// Configuration keys of the L2TP and PPTP tunnels.
#include "cmdlib/cmdlib_l2tp.h"

#include "base/internal/text.h"
#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(l2tp, L2TP_CONFIG_FIELDS_COUNT,
    "QX_L2TP_MODE", "QX_LNS_SERVER", "QX_TUNNEL_NAME", "QX_TUNNEL_PASS", "QX_AUTH_NAME", "QX_AUTH_PASS",
    // further LNS servers, 2 to 10
    "QX_LNS_SERVER2", "QX_TUNNEL_NAME2", "QX_TUNNEL_PASS2",
    "QX_LNS_SERVER3", "QX_TUNNEL_NAME3", "QX_TUNNEL_PASS3",
    "QX_LNS_SERVER4", "QX_TUNNEL_NAME4", "QX_TUNNEL_PASS4",
    "QX_LNS_SERVER5", "QX_TUNNEL_NAME5", "QX_TUNNEL_PASS5",
    "QX_LNS_SERVER6", "QX_TUNNEL_NAME6", "QX_TUNNEL_PASS6",
    "QX_LNS_SERVER7", "QX_TUNNEL_NAME7", "QX_TUNNEL_PASS7",
    "QX_LNS_SERVER8", "QX_TUNNEL_NAME8", "QX_TUNNEL_PASS8",
    "QX_LNS_SERVER9", "QX_TUNNEL_NAME9", "QX_TUNNEL_PASS9",
    "QX_LNS_SERVER10", "QX_TUNNEL_NAME10", "QX_TUNNEL_PASS10",
    "QX_L2TP_MTU", "QX_MULTI_TUNNEL_ENABLED", "QX_MULTI_TUNNEL_NAME", "QX_MULTI_TUNNEL_PASS",
    // further tunnels of the multi-tunnel mode, 2 to 4
    "QX_MULTI_TUNNEL_NAME2", "QX_MULTI_TUNNEL_PASS2",
    "QX_MULTI_TUNNEL_NAME3", "QX_MULTI_TUNNEL_PASS3",
    "QX_MULTI_TUNNEL_NAME4", "QX_MULTI_TUNNEL_PASS4",
    "QX_CHECK_IF_LNS_ALIVE", "QX_RANDOM_SEED", "QX_ALWAYS_USE_INITIAL_LNS", "QX_REDIAL_NOT_EXIST_LNS",
    "QX_RANDOM_LNS_BY_INITIATOR", "QX_L2TP_LOCAL_IP")

CMDLIB_API int util_is_pptp_function_enabled(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_PPTP_ENABLED);
}

CMDLIB_API int util_is_pptp_mppe_enabled(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_PPTP_ENABLE_MPPE);
}

CMDLIB_API int util_is_pptp_vpn_used_as_default_route(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_VPN_AS_DEFAULT_ROUTE);
}

CMDLIB_API int util_should_random_select_lns_by_initiator(const InfoStruct *info) {
    return cmdlib::record_says_yes(info, &InfoStruct::QX_RANDOM_LNS_BY_INITIATOR);
}

CMDLIB_API int util_get_pptp_mode(const InfoStruct *info) {
    return info ? cmdlib::atoi_sat(cmdlib::field_text(info->QX_PPTP_MODE)) : 0;
}
