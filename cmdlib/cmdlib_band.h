/* cmdlib band catalogue, band control and network-mode mapping.
 *
 * The daemons send the AT texts handed out here over the AT channel
 * (cmdlib_module.h), pass the module's answer back to the parse operations
 * and receive band bit maps in the text form of BigValue (libbase.h).
 * The active platform's tables are fixed when the library is built:
 * p_lte_band_ctrl and p_module_network_info point at them from the start
 * and never change.  Nothing here keeps state; any thread may call it.
 */
#ifndef CMDLIB_BAND_H
#define CMDLIB_BAND_H

#include "cmdlib.h"
#include "cmdlib_export.h"
#include "libbase.h"

CMDLIB_BEGIN_DECLS

/* ==== Value/name pairs ==================================================== */

/* One row of a value/name table: a band's bit number and display name, or
 * a network mode's number and name.  Tables are scanned from the first row;
 * the first match wins; names are compared byte for byte. */
typedef struct BandNamePair {
    int band_value;
    const char *band_name;
} BandNamePair;

/* A number and its fixed text (access technologies). */
typedef struct ValueStrPair {
    int value;
    const char *string_for_value;
} ValueStrPair;

/* The standard band catalogue: bits 0..42 are "BAND1".."BAND43", then the
 * TD-SCDMA (56..61), WCDMA (64..72, 78, 79) and GSM (80..88) bands.  Bits
 * 43..55, 62, 63, 73..77 and 89..1023 have no name and count as no band. */
#define UTIL_BAND_CATALOGUE_COUNT 69
CMDLIB_API extern const BandNamePair all_band_name_pairs[UTIL_BAND_CATALOGUE_COUNT];

/* ==== Band control ========================================================= */

/* Band answer parser: module answer -> band bit map text; 0 or -1. */
typedef int (*util_parse_band_func)(char *band_result, char *dest_bit_map);
/* Lock-command builder: wanted bands + current answer -> AT command; 0/-1. */
typedef int (*util_lock_band_func)(char *all_supported_bands, char *current_supported_band_result,
                                   char *dest_at_cmd);

/* band_process_by_api_flags bits: the step goes through the module's
 * programming interface instead of an AT command. */
#define UTIL_BAND_BY_API_CURRENT_USED 0x1
#define UTIL_BAND_BY_API_ALL_SUPPORTED 0x2
#define UTIL_BAND_BY_API_CURRENT_SUPPORTED 0x4
#define UTIL_BAND_BY_API_LOCK 0x8

/* A platform's band-control table.  Any operation may be NULL; its
 * dispatcher then fails with -1. */
typedef struct LTEBandControlInfo {
    int band_process_by_api_flags;
    const char *at_to_query_current_used_band;
    const char *at_to_query_all_supported_band;
    const char *at_to_query_current_supported_band;
    util_parse_band_func parse_current_used_band_function;
    util_parse_band_func parse_all_supported_band_function;
    util_parse_band_func parse_current_supported_band_function;
    util_lock_band_func at_to_lock_specified_band_function;
    int support_lock_band; /* non-zero: any band set can be locked */
} LTEBandControlInfo;

/* The active platform's table (fixed at build time). */
CMDLIB_API extern const LTEBandControlInfo *const p_lte_band_ctrl;

/* The query texts of the active table (may be NULL). */
CMDLIB_API char *util_get_at_to_query_current_used_band(void);
CMDLIB_API char *util_get_at_to_query_all_supported_band(void);
CMDLIB_API char *util_get_at_to_query_current_supported_band(void);

/* Parse a module answer into a bit map text.  dest_bit_map (when not NULL)
 * is emptied first, so a failure never leaves stale text.  0 or -1. */
CMDLIB_API int util_parse_current_used_band(char *current_used_band_result, char *dest_bit_map);
CMDLIB_API int util_parse_all_supported_band(char *all_supported_band_result, char *dest_bit_map);
CMDLIB_API int util_parse_current_supported_band(char *current_supported_band_result,
                                                 char *dest_bit_map);

/* Writes the AT command that restricts the module to the wanted bands.
 * dest_at_cmd (when not NULL) is emptied first; -1 when either input holds
 * "\r\n" (current_supported_band_result is required) or the platform has
 * no builder, else the builder's result. */
CMDLIB_API int util_get_at_to_lock_specified_band(char *all_supported_bands,
                                                  char *current_supported_band_result,
                                                  char *dest_at_cmd);

/* support_lock_band of the active table */
CMDLIB_API int util_is_universal_lock_band_supported(void);
/* The four band_process_by_api_flags bits, each as 0 or 1. */
CMDLIB_API int util_get_current_used_band_by_api(void);
CMDLIB_API int util_get_all_supported_band_by_api(void);
CMDLIB_API int util_get_current_supported_band_by_api(void);
CMDLIB_API int util_lock_specified_band_by_api(void);

/* Name of the first row holding band_value, NULL on a miss (also for a
 * NULL table or a count of 0 or less). */
CMDLIB_API char *util_get_band_name_by_value_ex(int band_value, const BandNamePair *pairs,
                                                int pairs_count);
CMDLIB_API char *util_get_band_name_by_value(int band_value);
/* Value of the first row named exactly band_name, -1 on a miss. */
CMDLIB_API int util_get_band_value_by_name_ex(const char *band_name, const BandNamePair *pairs,
                                              int pairs_count);
CMDLIB_API int util_get_band_value_by_name(const char *band_name);

/* Room that util_get_all_supported_band_names may need: every catalogue
 * band listed ("%d@%s" entries joined by "$") plus the terminator. */
#define UTIL_BAND_NAMES_SIZE 1024

/* The named bands of a band bit map text as "0@BAND1$2@BAND3$40@BAND41",
 * ascending; unnamed bits are skipped, text that is not a bit map lists
 * nothing.  band_names needs UTIL_BAND_NAMES_SIZE bytes.  0, or -1 when an
 * argument is NULL. */
CMDLIB_API int util_get_all_supported_band_names(const char *all_band_map, char *band_names);

/* Module bit numbering -> standard numbering.  Each set module bit is
 * named through pairs (the catalogue when pairs is NULL) and 2^(s % 32)
 * is ADDED to word s / 32 of dest for the catalogue bit s of that name:
 * dest is not cleared, so a name listed twice in pairs carries into the
 * next bit.  Names missing from the catalogue are skipped.  0, or -1 when
 * dest_big_value is NULL. */
CMDLIB_API int util_convert_bit_defintion_to_standard_definition(const char *original_bit_map,
                                                                 const BandNamePair *pairs,
                                                                 int pairs_count,
                                                                 BigValue *dest_big_value);
/* Standard numbering -> module numbering.  dest is cleared first; each set
 * catalogue band is looked up by name in pairs (no catalogue fallback) and
 * bands the module table lacks are dropped.  0, or -1 when dest_big_value
 * is NULL. */
CMDLIB_API int util_convert_standard_bit_defintion_to_module_definition(const char *original_bit_map,
                                                                        const BandNamePair *pairs,
                                                                        int pairs_count,
                                                                        BigValue *dest_big_value);

/* ==== Network modes ======================================================== */

/* The product-wide preferred network modes; band_value is the setting
 * number stored in the configuration. */
#define UTIL_PREFERRED_NETWORK_MODE_COUNT 26
CMDLIB_API extern const BandNamePair
    all_preferred_network_mode_name_pairs[UTIL_PREFERRED_NETWORK_MODE_COUNT];

/* Hands out the mode table of the module actually fitted. */
typedef int (*util_get_real_network_modes_func)(const BandNamePair **pairs, int *count);

/* A platform's network modes: supported_mode_info maps the module's own
 * mode numbers to product-wide names; default_network_mode answers a name
 * without counterpart. */
typedef struct ModuleNetworkModeInfo {
    const BandNamePair *supported_mode_info;
    int mode_count;
    int default_network_mode;
    int need_to_check_real_module_type;
    util_get_real_network_modes_func get_real_supported_network_mode_func;
} ModuleNetworkModeInfo;

CMDLIB_API extern const ModuleNetworkModeInfo *const p_module_network_info;

/* Access technology numbers (3GPP AcT, plus 8 for HSPA+) and their names. */
#define UTIL_NETWORK_MODE_ACT_COUNT 9
CMDLIB_API extern const ValueStrPair network_mode_act_pairs[UTIL_NETWORK_MODE_ACT_COUNT];

/* Room for the longest mode list util_get_supported_network_mode_for_this_module
 * can write (all 26 product-wide modes). */
#define UTIL_NETWORK_MODE_LIST_SIZE 1024

/* The module's modes as "setting@name" entries joined by "$", in the
 * module table's order, with product-wide setting numbers.  0, or -1 when
 * the buffer is NULL. */
CMDLIB_API int util_get_supported_network_mode_for_this_module(char *supported_network_mode);
/* Setting number -> module mode number; the platform default when the
 * module lacks the mode; -1 when the setting has no name or there is no
 * module table. */
CMDLIB_API int util_get_real_network_mode_from_settings(int network_mode);
/* Module mode number -> setting number; the platform default (unconverted)
 * when the name is not product-wide; -1 when the module has no such mode. */
CMDLIB_API int util_get_real_settings_from_network_mode(int network_mode);
/* Name of an access technology, NULL when unknown. */
CMDLIB_API char *util_convert_act_to_network_mode_string(int act);
/* Class of an access technology: 7 (LTE), 0 (2G: 0, 1, 3 and negatives) or
 * 2 (anything else).  network_mode (when not NULL; 32 bytes suffice) gets
 * the technology's name, or "" when it has none. */
CMDLIB_API int util_get_remapped_network_act(int act, char *network_mode);

/* QX_4G_FDD_PREFERRED: 0..3, 3 when empty or out of range. */
CMDLIB_API int util_get_lte_search_network_strategy(InfoStruct *info_struct);
/* QX_CS_PS_PREFERRED_MODE: 0..3, 4 when empty or out of range. */
CMDLIB_API int util_get_cs_ps_service_mode(InfoStruct *info_struct);
/* QX_NETWORK_MODE_NOT_SUPPORT read as hexadecimal (optional 0x); 0 when
 * empty or not a number. */
CMDLIB_API int util_get_unsupported_network_mode(InfoStruct *info_struct);
/* No APN authentication type is withheld: always 0. */
CMDLIB_API int util_get_unsupported_apn_auth_type(void);
/* 1 when the network lock is off, imsi is empty, imsi equals one of the
 * ten QX_LOCK_NETWORK_PLMN* fields or all ten are empty; else 0. */
CMDLIB_API int util_is_register_to_curent_plmn_alowed(InfoStruct *info_struct, const char *imsi);

/* Flag files set by the daemons: 1 when present, else 0. */
CMDLIB_API int is_gsm_disabled(void);
CMDLIB_API int util_is_gsm_mode_not_supported(void);
CMDLIB_API int util_is_wcdma_mode_not_supported(void);
CMDLIB_API int util_is_tdscdma_mode_not_supported(void);
CMDLIB_API int util_is_lte_mode_not_supported(void);
CMDLIB_API int util_is_wcdma_preferred(void);
CMDLIB_API int util_should_dial_lte_manually(void);
CMDLIB_API int util_should_disconnect_from_lte_network_immediately(void);
CMDLIB_API int is_ttyusb1_used(void);

CMDLIB_END_DECLS

#endif
