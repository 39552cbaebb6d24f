// fibocom_t750 modem tables and the platform pointers that select them.
#include "cmdlib/cmdlib_platform_fibocom_t750_modem.h"

extern "C" {

// ---- bands -------------------------------------------------------------------

CMDLIB_API int util_fibocom_t750_parse_current_used_band(char *, char *) { return -1; }
CMDLIB_API int util_fibocom_t750_parse_all_supported_band(char *, char *) { return -1; }
CMDLIB_API int util_fibocom_t750_at_to_lock_specified_band(char *, char *, char *) { return -1; }

const LTEBandControlInfo fibocom_t750_lte_band_ctrl = {
    0,  // every band step goes through AT commands
    "AT+QXBAND?",
    "AT^BANDSETEX=?",
    "AT^BANDSETEX?",
    util_fibocom_t750_parse_current_used_band,
    util_fibocom_t750_parse_all_supported_band,
    // one answer format serves both the all-supported and the enabled query
    util_fibocom_t750_parse_all_supported_band,
    util_fibocom_t750_at_to_lock_specified_band,
    1,
};

const LTEBandControlInfo *const p_lte_band_ctrl = &fibocom_t750_lte_band_ctrl;

// ---- network modes -------------------------------------------------------------

const BandNamePair
    fibocom_t750_preferred_network_mode_name_pairs[FIBOCOM_T750_NETWORK_MODE_COUNT] = {
        {0, "4G/3G/2G Multi-mode"},
        {1, "4G/3G Only"},
        {2, "3G/2G Only"},
        {3, "4G Only"},
};

const ModuleNetworkModeInfo fibocom_t750_network_mode_info = {
    fibocom_t750_preferred_network_mode_name_pairs,
    FIBOCOM_T750_NETWORK_MODE_COUNT,
    0,        // default: multi-mode
    0,        // the mode table is fixed
    nullptr,
};

const ModuleNetworkModeInfo *const p_module_network_info =
    &fibocom_t750_network_mode_info;

// ---- LTE status and one-cell lock ----------------------------------------------

CMDLIB_API int util_parse_fibocom_t750_lte_status(char *, char *) { return 0; }
CMDLIB_API int util_parse_fibocom_t750_lock_one_cell_status(char *, int *, char *, char *) {
    return -1;
}
CMDLIB_API int util_fibocom_t750_get_at_to_lock_one_cell(int, char *, char *, char *) {
    return -1;
}

const LTEQueryStatusAndLockOneCell fibocom_t750_lte_query_status_and_lock_one_cell = {
    0,
    "AT+QXEARFCN?\nAT+QXBAND?\nAT+QXBANDWIDTH?\nAT+QXTRANSMODE?\nAT+QXRSRP?\nAT+QXRSRQ?\n"
    "AT+QXSINR?\nAT+QXTA?\nAT+QXTXPOWER?\nAT+QXGLBCELLID?\nAT+QXPHYCELLID?\n",
    "AT^DPCILK?",
    "AT+QXEARFCN?\nAT+QXPHYCELLID?\n",
    util_parse_fibocom_t750_lte_status,
    util_parse_fibocom_t750_lock_one_cell_status,
    util_fibocom_t750_get_at_to_lock_one_cell,
    util_parse_fibocom_t750_lte_status,
    nullptr,
};

const LTEQueryStatusAndLockOneCell *const p_lte_query_lock_cell_st =
    &fibocom_t750_lte_query_status_and_lock_one_cell;

}  // extern "C"
