/* cmdlib_l2tp: configuration keys of the L2TP and PPTP tunnels. */
#ifndef CMDLIB_L2TP_H
#define CMDLIB_L2TP_H

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define L2TP_CONFIG_FIELDS_COUNT 49

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const l2tp_config_fields[L2TP_CONFIG_FIELDS_COUNT + 1];

/* Appends l2tp_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_l2tp_add_fields_need_to_read(const char **args, int max_args_count);

/* Switches of a filled system record: 1 when the field named like the key
 * is exactly "yes", else 0 (also for a null record). */
CMDLIB_API int util_is_pptp_function_enabled(const InfoStruct *info);          /* QX_PPTP_ENABLED */
CMDLIB_API int util_is_pptp_mppe_enabled(const InfoStruct *info);              /* QX_PPTP_ENABLE_MPPE */
CMDLIB_API int util_is_pptp_vpn_used_as_default_route(const InfoStruct *info); /* QX_VPN_AS_DEFAULT_ROUTE */
CMDLIB_API int util_should_random_select_lns_by_initiator(const InfoStruct *info); /* QX_RANDOM_LNS_BY_INITIATOR */

/* QX_PPTP_MODE as a number, read as atoi reads it ("2x" is 2; empty or
 * non-numeric text is 0); 0 for a null record. */
CMDLIB_API int util_get_pptp_mode(const InfoStruct *info);

CMDLIB_END_DECLS

#endif
