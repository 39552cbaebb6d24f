/* fibocom_t750: the module's band-control, network-mode and LTE-status
 * tables.  The generic entry points of cmdlib_band.h and cmdlib_module.h
 * reach them through p_lte_band_ctrl, p_module_network_info and
 * p_lte_query_lock_cell_st.
 *
 * The library does not parse this module's band and lock answers: the
 * band parsers and both lock builders write nothing and return -1, and
 * the LTE status parser succeeds with an empty result (the daemons take
 * the radio values from InfoStruct).  The AT query texts are handed out
 * all the same.
 */
#ifndef CMDLIB_PLATFORM_FIBOCOM_T750_MODEM_H
#define CMDLIB_PLATFORM_FIBOCOM_T750_MODEM_H

#include "cmdlib.h"
#include "cmdlib_band.h"
#include "cmdlib_export.h"
#include "cmdlib_module.h"

CMDLIB_BEGIN_DECLS

CMDLIB_API extern const LTEBandControlInfo fibocom_t750_lte_band_ctrl;
CMDLIB_API int util_fibocom_t750_parse_current_used_band(char *current_used_band_result,
                                                         char *dest_bit_map);
CMDLIB_API int util_fibocom_t750_parse_all_supported_band(char *all_supported_band_result,
                                                          char *dest_bit_map);
CMDLIB_API int util_fibocom_t750_at_to_lock_specified_band(char *all_supported_bands,
                                                           char *current_supported_band_result,
                                                           char *dest_at_cmd);

/* Module mode numbers 0..3, the same numbers as the product-wide settings. */
#define FIBOCOM_T750_NETWORK_MODE_COUNT 4
CMDLIB_API extern const BandNamePair
    fibocom_t750_preferred_network_mode_name_pairs[FIBOCOM_T750_NETWORK_MODE_COUNT];
CMDLIB_API extern const ModuleNetworkModeInfo fibocom_t750_network_mode_info;

CMDLIB_API extern const LTEQueryStatusAndLockOneCell fibocom_t750_lte_query_status_and_lock_one_cell;
CMDLIB_API int util_parse_fibocom_t750_lte_status(char *lte_status_response,
                                                  char *lte_status_result);
CMDLIB_API int util_parse_fibocom_t750_lock_one_cell_status(char *lock_one_cell_response,
                                                            int *locked_status, char *earfcn,
                                                            char *physical_cell_id);
CMDLIB_API int util_fibocom_t750_get_at_to_lock_one_cell(int lock_or_unlock, char *earfcn,
                                                         char *physical_cell_id,
                                                         char *dest_at_command);

CMDLIB_END_DECLS

#endif
