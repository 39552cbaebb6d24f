// LTE status and one-cell lock dispatch, band 42/43 frequencies, prestore
// frequencies, the AT command channel, modem processes and UTF-8 to code
// units.
#include "cmdlib/cmdlib_module.h"

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/internal/status_ind.h"
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

// ---- AT channel ------------------------------------------------------------------

constexpr const char *kAtPort = "/dev/ttyUSB1";
// A pass sleeps one second only while no answer is there, so this is the
// longest wait for a silent module, in seconds.
constexpr int kAtWaitPasses = 60;

// ---- modem processes ---------------------------------------------------------------

// Dial programs known on this product: none.  util_is_dial_program_running
// then assumes that one runs.
constexpr const char *const *all_4g_modem_dial_process_names = nullptr;
constexpr int kDialProcessNameCount = 0;

// Every program that may hold the modem's ports or restart a dial, killed
// in this order before a module firmware upgrade.
constexpr const char *kModemUpgradeKillList[] = {
    "checkusbnet", "lte",          "changepin",  "enablepin",          "disablepin",
    "unlockpin",   "sendsms",      "listsms",    "delsms",             "listplmn",
    "writeimei",   "pppmanager",   "linkmanager", "sendat",            "dialp500",
    "ppp4gmanager", "dialsim7100", "dialslm630b", "dialbls001",        "udhcpc",
    "ComProxy",    "rdisc6",       "checksysmanagetool", "sysmanagetool", "dial7510",
    "querymodulestatus", "diaggrab", "dialu8300", "diallm923s",
};
static_assert(sizeof kModemUpgradeKillList / sizeof kModemUpgradeKillList[0] == 29,
              "29 processes stopped before a module upgrade");

int running(const char *name) { return cmd_ps_is_one_program_running(const_cast<char *>(name)); }

int run_shell(const char *cmd) { return util_shell(cmd); }

// ---- UTF-8 ---------------------------------------------------------------------------------

// Bytes of the character that a lead byte starts.  Continuation bytes
// (0x80..0xBF) and 0xFE/0xFF count as one-byte characters, so any byte
// sequence advances.
struct Utf8LengthTable {
    uint8_t len[256];
    constexpr Utf8LengthTable() : len() {
        for (int b = 0; b < 256; ++b)
            len[b] = b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5
                     : b < 0xFE ? 6 : 1;
    }
    constexpr uint8_t operator[](int b) const { return len[b]; }
};
constexpr Utf8LengthTable Utf8_To_Byte_Table;
static_assert(Utf8_To_Byte_Table[0x7F] == 1 && Utf8_To_Byte_Table[0xBF] == 1 &&
                  Utf8_To_Byte_Table[0xC0] == 2 && Utf8_To_Byte_Table[0xEF] == 3 &&
                  Utf8_To_Byte_Table[0xF7] == 4 && Utf8_To_Byte_Table[0xFB] == 5 &&
                  Utf8_To_Byte_Table[0xFD] == 6 && Utf8_To_Byte_Table[0xFE] == 1,
              "lead byte classes");

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

// ---- AT command channel ------------------------------------------------------------------

CMDLIB_API void util_send_at_commands(const char *at, char *response, int size, int max_timeout) {
    // max_timeout is an on/off switch: any non-zero value waits the full
    // budget of passes.
    int budget = max_timeout ? kAtWaitPasses : 0;
    char cmd_file[256];
    char out_file[256];
    util_get_tmp_uuid_file_path(cmd_file);
    util_get_tmp_uuid_file_path(out_file);
    if (response && size > 0) memset(response, 0, static_cast<size_t>(size));
    if (!at || !at[0]) return;

    cmd_echo(at, cmd_file);
    cmd_rm(out_file);
    // One sender at a time system-wide: the port has one reader.
    run_shell("killall sendat 1>/dev/null 2>&1");
    // The temporary names are ours ("/tmp/.cmdlib_tmp_..."), so the line
    // needs no quoting; the AT text itself travels in the command file.
    char line[512];
    cmdlib::format_bounded(line, sizeof line, "sendat -d%s -f%s -o%s  1>/dev/null 2>&1 &", kAtPort,
                           cmd_file, out_file);
    run_shell(line);

    while (budget > 0) {
        // Once the answer is being written it is re-read without pause
        // until the sender exits.
        if (cmd_file_exist(out_file)) {
            if (response) cmd_cat(out_file, response, size);
        } else {
            sleep(1);
        }
        if (!running("sendat")) {
            if (response && cmd_file_exist(out_file)) cmd_cat(out_file, response, size);
            break;
        }
        --budget;
    }
    if (budget != 0) sleep(1);  // left early: let the sender release the port
    cmd_rm(cmd_file);
    cmd_rm(out_file);
}

CMDLIB_API char *util_get_at_port(void) { return const_cast<char *>(kAtPort); }

CMDLIB_API char *util_get_wrapped_at_cmd_for_module(char *, char *original_at_cmd_string, char *) {
    return original_at_cmd_string;
}

CMDLIB_API char *util_get_modem_log_file_name(void) { return const_cast<char *>(""); }

// ---- modem processes -----------------------------------------------------------------------

CMDLIB_API int util_is_log_tools_running(void) {
    if (running("ComProxy")) return 1;
    // remserial only counts when it serves a port ("-s ... -p ...").
    char *remserial_args[] = {const_cast<char *>("-s"), const_cast<char *>("-p")};
    if (cmd_ps_is_one_program_running_ex(const_cast<char *>("remserial"), remserial_args, 2,
                                         nullptr))
        return 1;
    if (running("diaggrab") || running("diag_socket_log")) return 1;
    return 0;
}

CMDLIB_API int util_get_all_dial_process_names(char **process_names, int max_count) {
    if (!process_names) return 0;
    int n = 0;
    for (int i = 0; i < kDialProcessNameCount && n < max_count; ++i)
        process_names[n++] = const_cast<char *>(all_4g_modem_dial_process_names[i]);
    return n;
}

CMDLIB_API int util_is_dial_program_running(void) {
    char *names[64];
    int count = util_get_all_dial_process_names(names, 64);
    // With no dial program known, assume one runs rather than have the
    // callers restart a dial that may well be up.
    if (count == 0) return 1;
    for (int i = 0; i < count; ++i)
        if (running(names[i])) return 1;
    return 0;
}

CMDLIB_API void util_kill_some_processes_for_modem_upgarde(void) {
    for (const char *name : kModemUpgradeKillList) {
        char cmd[128];
        cmdlib::format_bounded(cmd, sizeof cmd, "killall %s 1>/dev/null 2>&1", name);
        run_shell(cmd);
    }
}

CMDLIB_API int cmd_get_dial_status_and_signal_quality(int *dial_status, int *signal_quality) {
    char text[128] = "";
    cmd_cat(cmdlib::kStatusIndFile, text, sizeof text);
    return cmdlib::status_dial_and_signal(text, dial_status, signal_quality);
}

CMDLIB_API char *util_get_the_second_wan_interface_name(void) { return const_cast<char *>("eth1"); }

CMDLIB_API char *util_get_apn_for_the_second_wan_interface(InfoStruct *info_struct) {
    return info_struct ? info_struct->QX_CONFIG_APN_NAME3 : const_cast<char *>("");
}

CMDLIB_API int util_should_we_use_the_second_apn(InfoStruct *info_struct) {
    const char *ifname = util_get_the_second_wan_interface_name();
    if (!ifname || !ifname[0] || !info_struct) return 0;
    return cmdlib::field_text(info_struct->QX_CONFIG_APN_NAME3).empty() ? 0 : 1;
}

CMDLIB_API int util_get_default_cid_value_for_the_second_apn(InfoStruct *) { return 0; }

// ---- UTF-8 to hexadecimal code units -------------------------------------------------------

CMDLIB_API uint8_t util_get_one_utf8_strlen(const uint8_t one_utf8) {
    return Utf8_To_Byte_Table[one_utf8];
}

CMDLIB_API int util_get_utf8_strlen(const uint8_t *utf8, int utf8_len) {
    if (!utf8 || utf8_len <= 0) return 0;
    const int limit = static_cast<int>(
        strnlen(reinterpret_cast<const char *>(utf8), static_cast<size_t>(utf8_len)));
    int count = 0;
    // A last character may reach past the limit; it still counts.
    for (int pos = 0; pos < limit; pos += Utf8_To_Byte_Table[utf8[pos]]) ++count;
    return count;
}

CMDLIB_API int util_utf8_to_unicode_one(const uint8_t *pInput, uint32_t *Unic, int utfbytes) {
    if (!pInput || !Unic || utfbytes == 0) return -1;
    *Unic = 0;
    if (utfbytes < 1 || utfbytes > 6) return 0;
    for (int i = 1; i < utfbytes; ++i)
        if ((pInput[i] & 0xC0) != 0x80) return 0;
    const unsigned b1 = pInput[0];
    const unsigned b2 = utfbytes > 1 ? pInput[1] : 0;
    const unsigned b3 = utfbytes > 2 ? pInput[2] : 0;
    const unsigned b4 = utfbytes > 3 ? pInput[3] : 0;
    const unsigned b5 = utfbytes > 4 ? pInput[4] : 0;
    const unsigned b6 = utfbytes > 5 ? pInput[5] : 0;
    unsigned byte[4] = {0, 0, 0, 0};  // least significant first, each mod 256
    switch (utfbytes) {
        case 1:
            byte[0] = b1;
            break;
        case 2:
            byte[0] = ((b1 & 3) << 6) + (b2 & 63);
            byte[1] = (b1 >> 2) & 7;
            break;
        case 3:
            byte[0] = ((b2 & 3) << 6) + (b3 & 63);
            byte[1] = ((b1 & 15) << 4) + ((b2 >> 2) & 15);
            break;
        case 4:
            byte[0] = ((b3 & 3) << 6) + (b4 & 63);
            byte[1] = ((b2 & 15) << 4) + ((b3 >> 2) & 15);
            byte[2] = ((b1 & 7) << 2) + ((b2 >> 4) & 3);
            break;
        // The 5- and 6-byte forms lie beyond Unicode; they are assembled
        // the way the module firmware's tables expect, not as code points
        // (byte 1 of the 6-byte form does take b5 and b6).
        case 5:
            byte[0] = (b4 << 6) + (b5 & 63);
            byte[1] = (b3 << 4) + ((b4 >> 2) & 15);
            byte[2] = (b2 << 2) + ((b3 >> 4) & 3);
            byte[3] = b1 << 6;
            break;
        default:  // 6
            byte[0] = (b5 << 6) + (b6 & 63);
            byte[1] = (b5 << 4) + ((b6 >> 2) & 15);
            byte[2] = (b3 << 2) + ((b4 >> 4) & 3);
            byte[3] = ((b1 & 1) << 6) + (b2 & 63);
            break;
    }
    *Unic = (byte[0] & 0xFF) | (byte[1] & 0xFF) << 8 | (byte[2] & 0xFF) << 16 |
            static_cast<uint32_t>(byte[3] & 0xFF) << 24;
    return utfbytes;
}

CMDLIB_API int util_utf8_to_unicode_string(const uint8_t *utf8, uint8_t *output_str, int utf8_len,
                                           int output_len) {
    if (!utf8 || !output_str || utf8_len <= 0 || output_len <= 0) return -1;
    char *out = reinterpret_cast<char *>(output_str);
    out[0] = '\0';
    const int chars = util_get_utf8_strlen(utf8, utf8_len);
    int in = 0;
    int pos = 0;
    for (int c = 0; c < chars && pos < output_len - 1; ++c) {
        const int n = Utf8_To_Byte_Table[utf8[in]];
        // Bytes of a character cut off by utf8_len stay zero, so such a
        // character decodes as a bad sequence instead of reading past the
        // input.
        uint8_t scratch[16] = {0};
        for (int i = 0; i < n && in + i < utf8_len; ++i) scratch[i] = utf8[in + i];
        uint32_t code = 0;
        util_utf8_to_unicode_one(scratch, &code, n);
        pos += static_cast<int>(cmdlib::format_bounded(out + pos, static_cast<size_t>(output_len - pos),
                                                       "%04X", static_cast<unsigned>(code)));
        in += n;
    }
    return pos;
}

}  // extern "C"
