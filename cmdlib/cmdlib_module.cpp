// cmdlib_module: LTE status and one-cell lock dispatch, band 42/43
// frequencies and the prestore frequency lists.  The AT channel, modem
// ports and dial processes are in cmdlib_module_at.cpp, the UTF-8
// conversion in cmdlib_module_utf8.cpp.
#include "cmdlib/cmdlib_module.h"

#include <stddef.h>
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/sim.h"

namespace {

// ---- LTE status list ---------------------------------------------------------

struct RadioField {
    const char *label;
    size_t offset;
};

constexpr size_t kRadioFieldWidth = 32;

#define RADIO_FIELD(field, label) {label, offsetof(InfoStruct, field)}
// The order is that of the web page.
const RadioField kRadioFields[] = {
    RADIO_FIELD(QXEARFCN, "EARFCN/ARFCN"),
    RADIO_FIELD(QXBAND, "Frequency Band"),
    RADIO_FIELD(QXBANDWIDTH, "Downlink Bandwidth"),
    RADIO_FIELD(QXTRANSMODE, "QXTRANSMODE"),
    RADIO_FIELD(QXRSRP, "RSRP"),
    RADIO_FIELD(QXRSRP2, "RSRP2"),
    RADIO_FIELD(QXRSRQ, "RSRQ"),
    RADIO_FIELD(QXSINR, "SINR"),
    RADIO_FIELD(QXSINR2, "SINR2"),
    RADIO_FIELD(QXTA, "QXTA"),
    RADIO_FIELD(QXTXPOWER, "QXTXPOWER"),
    RADIO_FIELD(QXGLBCELLID, "Serving CellID"),
    RADIO_FIELD(QXPHYCELLID, "Physical CellID"),
    RADIO_FIELD(QXRSSI, "RSSI"),
    RADIO_FIELD(QXRSSI2, "RSSI2"),
    RADIO_FIELD(QXCINR, "CINR"),
    RADIO_FIELD(QXCINR2, "CINR2"),
    RADIO_FIELD(RRCState, "RRCState"),
    RADIO_FIELD(QXULFREQUENCY, "ULFREQUENCY"),
    RADIO_FIELD(QXDLFREQUENCY, "DLFREQUENCY"),
    RADIO_FIELD(UL_MCS, "UL_MCS"),
    RADIO_FIELD(DL_MCS, "DL_MCS"),
    RADIO_FIELD(CQI, "CQI"),
};
#undef RADIO_FIELD
static_assert(sizeof kRadioFields / sizeof kRadioFields[0] == 23, "23 radio fields");
static_assert(sizeof(InfoStruct{}.QXEARFCN) == kRadioFieldWidth &&
                  sizeof(InfoStruct{}.CQI) == kRadioFieldWidth &&
                  sizeof(InfoStruct{}.RRCState) == kRadioFieldWidth,
              "radio fields are char[32]");

int lte_flag(int mask) { return (p_lte_query_lock_cell_st->get_lte_status_by_api & mask) ? 1 : 0; }

// ---- prestore frequencies ------------------------------------------------------

// The answer and the list are split in place, so both are copied first;
// the returned entry points into the list's copy.
char tmp_buffered_at_response_result[256];
char tmp_buffered_prestore_frequency_list[256];
constexpr int kMaxPrestoreEntries = 32;

template <size_t N> int strip_and_test_empty(char (&field)[N]) {
    size_t n = strnlen(field, N);
    if (n == N) field[--n] = '\0';  // an unterminated field is cut to its width
    while (n > 0 && cmdlib::is_space_or_eol(field[n - 1])) field[--n] = '\0';
    return n == 0 ? 1 : 0;
}

}  // namespace

extern "C" {

const EARFCNToBand all_band_earfcn_ranges[UTIL_BAND_EARFCN_RANGE_COUNT] = {
    {42, 41590, 43589},
    {43, 43590, 45589},
};

// ---- LTE status and one-cell lock ----------------------------------------------

CMDLIB_API char *util_get_at_to_query_lte_status(void) {
    return const_cast<char *>(p_lte_query_lock_cell_st->at_to_query_lte_status);
}
CMDLIB_API char *util_get_at_to_query_lock_one_cell_status(void) {
    return const_cast<char *>(p_lte_query_lock_cell_st->at_to_query_lock_one_cell_status);
}
CMDLIB_API char *util_get_at_to_query_earfcn_physical_cell_id(void) {
    return const_cast<char *>(p_lte_query_lock_cell_st->at_to_query_earfcn_physical_cell_id);
}
CMDLIB_API int util_should_get_lte_status_by_api(void) { return lte_flag(UTIL_LTE_STATUS_BY_API); }
CMDLIB_API int util_should_query_lock_one_cell_by_api(void) {
    return lte_flag(UTIL_LOCK_ONE_CELL_BY_API);
}
CMDLIB_API int util_should_get_lte_status_in_dialtool(void) {
    return lte_flag(UTIL_LTE_STATUS_IN_DIALTOOL);
}

CMDLIB_API int util_parse_lte_status(char *lte_status_response, char *lte_status_result) {
    if (lte_status_result) lte_status_result[0] = '\0';
    if (util_should_get_lte_status_by_api()) {
        if (lte_status_response) lte_status_response[0] = '\0';
    } else if (!lte_status_response || !lte_status_response[0]) {
        return -1;
    }
    if (cmd_sim_exist() != 1) return 0;  // no SIM, no LTE status
    int act = 0;
    if (util_read_status_ind(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, &act, nullptr) == 0 &&
        act != 7)
        return 0;  // registered on another technology than LTE
    util_parse_lte_status_func fn = p_lte_query_lock_cell_st->parse_lte_status_function;
    return fn ? fn(lte_status_response, lte_status_result) : -1;
}

CMDLIB_API int util_parse_query_earfcn_physical_cell_id_response(char *lte_status_response,
                                                                 char *lte_status_result) {
    return util_parse_lte_status(lte_status_response, lte_status_result);
}

CMDLIB_API int util_parse_lock_one_cell_status(char *lock_one_cell_response, int *locked_status,
                                               char *earfcn, char *physical_cell_id) {
    if (earfcn) earfcn[0] = '\0';
    if (physical_cell_id) physical_cell_id[0] = '\0';
    util_parse_lock_one_cell_func fn = p_lte_query_lock_cell_st->parse_lock_one_cell_status_function;
    return fn ? fn(lock_one_cell_response, locked_status, earfcn, physical_cell_id) : -1;
}

CMDLIB_API int util_get_at_to_lock_one_cell(int lock_or_unlock, char *earfcn,
                                            char *physical_cell_id, char *dest_at_command) {
    if (dest_at_command) dest_at_command[0] = '\0';
    util_lock_one_cell_func fn = p_lte_query_lock_cell_st->at_to_lock_one_cell_function;
    return fn ? fn(lock_or_unlock, earfcn, physical_cell_id, dest_at_command) : -1;
}

CMDLIB_API int util_read_module_status_for_specified_modem(char *buffer, char *colon_pointer,
                                                           InfoStruct *module_info) {
    util_read_module_status_func fn = p_lte_query_lock_cell_st->read_module_status_function;
    return fn ? fn(buffer, colon_pointer, module_info) : 0;
}

CMDLIB_API int util_generate_lte_status_response_result(InfoStruct *lte_status_resonse,
                                                        char *lte_status_result) {
    if (!lte_status_result) return -1;
    if (!lte_status_resonse) return 0;
    // Appends to what the buffer holds: the caller may have put entries
    // of its own first.
    size_t len = strlen(lte_status_result);
    const char *record = reinterpret_cast<const char *>(lte_status_resonse);
    for (const RadioField &f : kRadioFields) {
        std::string_view value(record + f.offset, strnlen(record + f.offset, kRadioFieldWidth));
        if (value.empty()) continue;
        if (len) lte_status_result[len++] = '$';
        std::string_view label(f.label);
        memcpy(lte_status_result + len, label.data(), label.size());
        len += label.size();
        lte_status_result[len++] = '@';
        memcpy(lte_status_result + len, value.data(), value.size());
        len += value.size();
        lte_status_result[len] = '\0';
    }
    return 0;
}

// ---- band 42/43 frequencies ---------------------------------------------------------

CMDLIB_API int util_get_earfcn_from_downlink_frequency_value_for_b42_43_module(int frequency_value) {
    // kHz; 3600000 belongs to the first range and so gives 43590 as well.
    if (frequency_value >= 3400000 && frequency_value <= 3600000)
        return (frequency_value - 3400000) / 100 + 41590;
    if (frequency_value >= 3600001 && frequency_value <= 3800000)
        return (frequency_value - 3600000) / 100 + 43590;
    return 0;
}

CMDLIB_API int util_get_band_from_downlink_earfcn_value(int earfcn) {
    for (const EARFCNToBand &r : all_band_earfcn_ranges)
        if (earfcn >= r.EARFCN_min && earfcn <= r.EARFCN_max) return r.band;
    return -1;
}

CMDLIB_API int util_get_frequency_from_downlink_earfcn_value(int earfcn) {
    // In units of 10 kHz, unlike the kHz of the reverse conversion.
    if (earfcn >= 41590 && earfcn <= 43589) return (earfcn - 41590) * 10 + 340000;
    if (earfcn >= 43590 && earfcn <= 45589) return (earfcn - 43590) * 10 + 360000;
    return -1;
}

// ---- prestore frequencies -------------------------------------------------------------

CMDLIB_API int util_is_fdd_prestore_frequency_empty(InfoStruct *info_struct) {
    return info_struct ? strip_and_test_empty(info_struct->QX_PRESTORE_FREQUENCY_FDD) : 1;
}

CMDLIB_API int util_is_tdd_prestore_frequency_empty(InfoStruct *info_struct) {
    return info_struct ? strip_and_test_empty(info_struct->QX_PRESTORE_FREQUENCY_TDD) : 1;
}

CMDLIB_API char *util_get_next_prestore_frequency_not_in_list(const char *tmp_at_response_result,
                                                              InfoStruct *info_struct,
                                                              PRESTORE_FREQUENCY_LIST_TYPE list_type) {
    cmdlib::copy_bounded(tmp_buffered_at_response_result, sizeof tmp_buffered_at_response_result,
                         tmp_at_response_result ? tmp_at_response_result : "");
    const char *list;
    if (list_type != PRESTORE_FREQUENCY_LIST_TYPE_FDD) {
        if (util_is_tdd_prestore_frequency_empty(info_struct)) return nullptr;
        list = info_struct->QX_PRESTORE_FREQUENCY_TDD;
    } else {
        if (util_is_fdd_prestore_frequency_empty(info_struct)) return nullptr;
        list = info_struct->QX_PRESTORE_FREQUENCY_FDD;
    }
    cmdlib::copy_bounded(tmp_buffered_prestore_frequency_list,
                         sizeof tmp_buffered_prestore_frequency_list, list);
    char *entries[kMaxPrestoreEntries];
    int entry_count = util_get_all_args(tmp_buffered_prestore_frequency_list, ' ', ',', entries,
                                        kMaxPrestoreEntries);
    if (entry_count <= 0) return nullptr;
    char *tokens[kMaxPrestoreEntries];
    int token_count = util_get_all_args(tmp_buffered_at_response_result, ' ', ',', tokens,
                                        kMaxPrestoreEntries);
    // At most 32 x 32 comparisons of short words.
    for (int i = 0; i < entry_count; ++i) {
        bool found = false;
        for (int j = 0; j < token_count && !found; ++j) found = strcmp(entries[i], tokens[j]) == 0;
        if (!found) return entries[i];
    }
    return nullptr;
}

CMDLIB_API char *util_get_next_fdd_prestore_frequency_not_in_list(const char *at_response_result,
                                                                  InfoStruct *info_struct) {
    return util_get_next_prestore_frequency_not_in_list(at_response_result, info_struct,
                                                        PRESTORE_FREQUENCY_LIST_TYPE_FDD);
}

CMDLIB_API char *util_get_next_tdd_prestore_frequency_not_in_list(const char *at_response_result,
                                                                  InfoStruct *info_struct) {
    return util_get_next_prestore_frequency_not_in_list(at_response_result, info_struct,
                                                        PRESTORE_FREQUENCY_LIST_TYPE_TDD);
}

CMDLIB_API int util_is_all_fdd_prestore_frequency_in_list(const char *at_response_result,
                                                          InfoStruct *info_struct) {
    return util_get_next_fdd_prestore_frequency_not_in_list(at_response_result, info_struct) ? 0 : 1;
}

CMDLIB_API int util_is_all_tdd_prestore_frequency_in_list(const char *at_response_result,
                                                          InfoStruct *info_struct) {
    return util_get_next_tdd_prestore_frequency_not_in_list(at_response_result, info_struct) ? 0 : 1;
}

}  // extern "C"
