/* cmdlib_gre: configuration keys of the GRE tunnel. */
#ifndef CMDLIB_GRE_H
#define CMDLIB_GRE_H

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define GRE_CONFIG_FIELDS_COUNT 10

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const gre_config_fields[GRE_CONFIG_FIELDS_COUNT + 1];

/* Appends gre_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_gre_add_fields_need_to_read(const char **args, int max_args_count);

/* Switches of a filled system record: 1 when the field named like the key
 * is exactly "yes", else 0 (also for a null record). */
CMDLIB_API int util_gre_check_if_service_is_enabled(const InfoStruct *info);   /* QX_GRE_VPN_ENABLED */
CMDLIB_API int util_gre_use_as_default_route(const InfoStruct *info);          /* QX_GRE_AS_DEFAULT_ROUTE */
CMDLIB_API int util_gre_use_lan_ip_as_local_ip(const InfoStruct *info);        /* QX_GRE_USE_LAN_INTERFACE */
CMDLIB_API int util_gre_for_wan_subnet(const InfoStruct *info);                /* QX_GRE_FOR_WAN_SUBNET */
CMDLIB_API int util_sip_over_gre_is_enabled(const InfoStruct *info);           /* QX_SIP_OVER_GRE */

/* Name of the GRE tunnel interface: "tunnel_gre". */
CMDLIB_API const char *util_get_gre_tunnel_name(void);

CMDLIB_END_DECLS

#endif
