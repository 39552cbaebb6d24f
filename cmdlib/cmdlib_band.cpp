// Band catalogue, band-control dispatch and network-mode mapping.
#include "cmdlib/cmdlib_band.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "cmdlib/internal/big_value_bits.h"
#include "cmdlib/internal/record_field.h"

namespace {

// ---- tables ----------------------------------------------------------------

#define BAND_ROW(n) {(n) - 1, "BAND" #n}

}  // namespace

extern "C" {

constexpr BandNamePair all_band_name_pairs[UTIL_BAND_CATALOGUE_COUNT] = {
    // LTE: bit n is "BAND<n+1>"
    BAND_ROW(1), BAND_ROW(2), BAND_ROW(3), BAND_ROW(4), BAND_ROW(5), BAND_ROW(6), BAND_ROW(7),
    BAND_ROW(8), BAND_ROW(9), BAND_ROW(10), BAND_ROW(11), BAND_ROW(12), BAND_ROW(13),
    BAND_ROW(14), BAND_ROW(15), BAND_ROW(16), BAND_ROW(17), BAND_ROW(18), BAND_ROW(19),
    BAND_ROW(20), BAND_ROW(21), BAND_ROW(22), BAND_ROW(23), BAND_ROW(24), BAND_ROW(25),
    BAND_ROW(26), BAND_ROW(27), BAND_ROW(28), BAND_ROW(29), BAND_ROW(30), BAND_ROW(31),
    BAND_ROW(32), BAND_ROW(33), BAND_ROW(34), BAND_ROW(35), BAND_ROW(36), BAND_ROW(37),
    BAND_ROW(38), BAND_ROW(39), BAND_ROW(40), BAND_ROW(41), BAND_ROW(42), BAND_ROW(43),
    // TD-SCDMA
    {56, "TDS_BAND A"}, {57, "TDS_BAND B"}, {58, "TDS_BAND C"}, {59, "TDS_BAND D"},
    {60, "TDS_BAND E"}, {61, "TDS_BAND F"},
    // WCDMA
    {64, "WCDMA_I_IMT_2000"}, {65, "WCDMA_II_PCS_1900"}, {66, "WCDMA_III_1700"},
    {67, "WCDMA_IV_1700"}, {68, "WCDMA_V_850"}, {69, "WCDMA_VI_800"}, {70, "WCDMA_VII_2600"},
    {71, "WCDMA_VIII_900"}, {72, "WCDMA_IX_1700"}, {78, "WCDMA/GSM Unknown 1"},
    {79, "WCDMA/GSM Unknown 2"},
    // GSM
    {80, "GSM_450"}, {81, "GSM_480"}, {82, "GSM_750"}, {83, "GSM_850"}, {84, "GSM_EGSM_900"},
    {85, "GSM_RGSM_900"}, {86, "GSM_PGSM_900"}, {87, "GSM_DCS_1800"}, {88, "GSM_PCS_1900"},
};

constexpr BandNamePair
    all_preferred_network_mode_name_pairs[UTIL_PREFERRED_NETWORK_MODE_COUNT] = {
        {0, "4G/3G/2G Multi-mode"},
        {1, "4G/3G Only"},
        {2, "3G/2G Only"},
        {3, "4G Only"},
        {4, "3G Only"},
        {5, "Automatic(LTE>TDS>Other)"},
        {6, "Automatic(LTE>UMTS>Other)"},
        {7, "Automatic(LTE>TDS>UMTS>Other)"},
        {8, "Automatic(LTE>EVDO>CDMA>TDS>UMTS>GSM)"},
        {9, "Automatic(LTE>UMTS>TDS>Other)"},
        {10, "LTE+UMTS Only(4G+3G Only)"},
        {11, "LTE+EVDO Only(4G+3G Only)"},
        {12, "LTE+TDS Only(4G+3G Only)"},
        {13, "WCDMA/TDS-CDMA(3G Only)"},
        {14, "WCDMA Only(3G Only)"},
        {15, "EVDO Only(3G Only)"},
        {16, "TDS-CDMA Only(3G Only)"},
        {17, "UMTS+GSM Only(3G+2G Only)"},
        {18, "TDS+GSM Only(3G+2G Only)"},
        {19, "EVDO+CDMA Only(3G+2G Only)"},
        {20, "GSM+CDMA Only"},
        {21, "GSM Only"},
        {22, "Auto 4G/3G"},
        {23, "Only 2G"},
        {24, "3G/4G-HSPA+"},
        {25, "Auto"},
};

constexpr ValueStrPair network_mode_act_pairs[UTIL_NETWORK_MODE_ACT_COUNT] = {
    {0, "2G"},       {1, "2G"},       {2, "3G"},
    {3, "2G/EDGE"},  {4, "3G/HSDPA"}, {5, "3G/HSUPA"},
    {6, "3G/HSDPA HSUPA"}, {7, "4G"}, {8, "3G/HSPA+"},
};

}  // extern "C"

#undef BAND_ROW

namespace {

static_assert(sizeof all_band_name_pairs / sizeof all_band_name_pairs[0] == 69,
              "the band catalogue has 69 rows");
static_assert(sizeof all_preferred_network_mode_name_pairs /
                      sizeof all_preferred_network_mode_name_pairs[0] == 26,
              "26 product-wide network modes");
static_assert(sizeof network_mode_act_pairs / sizeof network_mode_act_pairs[0] == 9,
              "9 access technology names");

// Longest text util_get_all_supported_band_names can write: every catalogue
// row as "%d@%s" plus a "$" between rows.
constexpr size_t longest_band_list() {
    size_t n = 0;
    for (const BandNamePair &p : all_band_name_pairs) {
        n += std::string_view(p.band_name).size() + 1 /* @ */ + 1 /* $ */;
        for (int v = p.band_value; v >= 10; v /= 10) ++n;
        ++n;  // last digit
    }
    return n;  // the last "$" counted pays for the terminator
}
static_assert(longest_band_list() <= UTIL_BAND_NAMES_SIZE, "band name list fits its buffer");

constexpr size_t longest_mode_list() {
    size_t n = 0;
    for (const BandNamePair &p : all_preferred_network_mode_name_pairs)
        n += std::string_view(p.band_name).size() + 2 /* @ and $ */ + 2 /* digits */;
    return n;
}
static_assert(longest_mode_list() <= UTIL_NETWORK_MODE_LIST_SIZE, "mode list fits its buffer");

const BandNamePair *find_by_value(int value, const BandNamePair *pairs, int count) {
    if (!pairs) return nullptr;
    for (int i = 0; i < count; ++i)
        if (pairs[i].band_value == value) return &pairs[i];
    return nullptr;
}

const BandNamePair *find_by_name(const char *name, const BandNamePair *pairs, int count) {
    if (!pairs || !name) return nullptr;
    for (int i = 0; i < count; ++i)
        if (pairs[i].band_name && strcmp(pairs[i].band_name, name) == 0) return &pairs[i];
    return nullptr;
}

int flag_bit(int mask) { return (p_lte_band_ctrl->band_process_by_api_flags & mask) ? 1 : 0; }

int parse_dispatch(util_parse_band_func fn, char *result, char *dest_bit_map) {
    if (dest_bit_map) dest_bit_map[0] = '\0';
    if (!fn) return -1;
    return fn(result, dest_bit_map);
}

// Appends text at *len within dest; the caller guarantees the room (the
// list writers size their buffers from the tables above).
void put(char *dest, size_t *len, std::string_view text) {
    memcpy(dest + *len, text.data(), text.size());
    *len += text.size();
    dest[*len] = '\0';
}

void put_entry(char *dest, size_t *len, int value, const char *name) {
    char number[16];
    size_t n = cmdlib::format_bounded(number, sizeof number, "%d", value);
    if (*len) put(dest, len, "$");
    put(dest, len, std::string_view(number, n));
    put(dest, len, "@");
    put(dest, len, name);
}

// The module's mode table: the fitted module's when the platform detects
// it, else the fixed one.
void module_modes(const BandNamePair **pairs, int *count) {
    const ModuleNetworkModeInfo *info = p_module_network_info;
    *pairs = info->supported_mode_info;
    *count = info->mode_count;
    if (info->need_to_check_real_module_type && info->get_real_supported_network_mode_func) {
        const BandNamePair *p = nullptr;
        int c = 0;
        info->get_real_supported_network_mode_func(&p, &c);
        *pairs = p;
        *count = c;
    }
}

int flag_file(const char *path) { return cmd_file_exist(path) ? 1 : 0; }

}  // namespace

extern "C" {

// ---- band control dispatch -------------------------------------------------

CMDLIB_API char *util_get_at_to_query_current_used_band(void) {
    return const_cast<char *>(p_lte_band_ctrl->at_to_query_current_used_band);
}
CMDLIB_API char *util_get_at_to_query_all_supported_band(void) {
    return const_cast<char *>(p_lte_band_ctrl->at_to_query_all_supported_band);
}
CMDLIB_API char *util_get_at_to_query_current_supported_band(void) {
    return const_cast<char *>(p_lte_band_ctrl->at_to_query_current_supported_band);
}

CMDLIB_API int util_parse_current_used_band(char *current_used_band_result, char *dest_bit_map) {
    return parse_dispatch(p_lte_band_ctrl->parse_current_used_band_function,
                          current_used_band_result, dest_bit_map);
}
CMDLIB_API int util_parse_all_supported_band(char *all_supported_band_result, char *dest_bit_map) {
    return parse_dispatch(p_lte_band_ctrl->parse_all_supported_band_function,
                          all_supported_band_result, dest_bit_map);
}
CMDLIB_API int util_parse_current_supported_band(char *current_supported_band_result,
                                                 char *dest_bit_map) {
    return parse_dispatch(p_lte_band_ctrl->parse_current_supported_band_function,
                          current_supported_band_result, dest_bit_map);
}

CMDLIB_API int util_get_at_to_lock_specified_band(char *all_supported_bands,
                                                  char *current_supported_band_result,
                                                  char *dest_at_cmd) {
    if (dest_at_cmd) dest_at_cmd[0] = '\0';
    // A line break inside a band list would let it carry a second AT
    // command into the lock request.
    if (all_supported_bands && strstr(all_supported_bands, "\r\n")) return -1;
    if (!current_supported_band_result || strstr(current_supported_band_result, "\r\n"))
        return -1;
    util_lock_band_func fn = p_lte_band_ctrl->at_to_lock_specified_band_function;
    if (!fn) return -1;
    return fn(all_supported_bands, current_supported_band_result, dest_at_cmd);
}

CMDLIB_API int util_is_universal_lock_band_supported(void) {
    return p_lte_band_ctrl->support_lock_band;
}
CMDLIB_API int util_get_current_used_band_by_api(void) {
    return flag_bit(UTIL_BAND_BY_API_CURRENT_USED);
}
CMDLIB_API int util_get_all_supported_band_by_api(void) {
    return flag_bit(UTIL_BAND_BY_API_ALL_SUPPORTED);
}
CMDLIB_API int util_get_current_supported_band_by_api(void) {
    return flag_bit(UTIL_BAND_BY_API_CURRENT_SUPPORTED);
}
CMDLIB_API int util_lock_specified_band_by_api(void) { return flag_bit(UTIL_BAND_BY_API_LOCK); }

// ---- lookups -----------------------------------------------------------------

CMDLIB_API char *util_get_band_name_by_value_ex(int band_value, const BandNamePair *pairs,
                                                int pairs_count) {
    const BandNamePair *p = find_by_value(band_value, pairs, pairs_count);
    return p ? const_cast<char *>(p->band_name) : nullptr;
}

CMDLIB_API char *util_get_band_name_by_value(int band_value) {
    return util_get_band_name_by_value_ex(band_value, all_band_name_pairs,
                                          UTIL_BAND_CATALOGUE_COUNT);
}

CMDLIB_API int util_get_band_value_by_name_ex(const char *band_name, const BandNamePair *pairs,
                                              int pairs_count) {
    const BandNamePair *p = find_by_name(band_name, pairs, pairs_count);
    return p ? p->band_value : -1;
}

CMDLIB_API int util_get_band_value_by_name(const char *band_name) {
    return util_get_band_value_by_name_ex(band_name, all_band_name_pairs,
                                          UTIL_BAND_CATALOGUE_COUNT);
}

// ---- band bit maps -----------------------------------------------------------

CMDLIB_API int util_get_all_supported_band_names(const char *all_band_map, char *band_names) {
    if (!all_band_map || !band_names) return -1;
    band_names[0] = '\0';
    BigValue map;
    util_get_big_value_from_bits(all_band_map, &map);  // invalid text: empty set
    size_t len = 0;
    cmdlib::for_each_set_bit(map, [&](int bit) {
        const char *name = util_get_band_name_by_value(bit);
        if (name) put_entry(band_names, &len, bit, name);
    });
    return 0;
}

CMDLIB_API int util_convert_bit_defintion_to_standard_definition(const char *original_bit_map,
                                                                 const BandNamePair *pairs,
                                                                 int pairs_count,
                                                                 BigValue *dest_big_value) {
    if (!dest_big_value) return -1;
    // dest is deliberately not cleared: callers merge several maps into one.
    BigValue map;
    util_get_big_value_from_bits(original_bit_map, &map);
    cmdlib::for_each_set_bit(map, [&](int bit) {
        const char *name = pairs ? util_get_band_name_by_value_ex(bit, pairs, pairs_count)
                                 : util_get_band_name_by_value(bit);
        if (!name) return;
        cmdlib::add_bit_arithmetically(dest_big_value, util_get_band_value_by_name(name));
    });
    return 0;
}

CMDLIB_API int util_convert_standard_bit_defintion_to_module_definition(const char *original_bit_map,
                                                                        const BandNamePair *pairs,
                                                                        int pairs_count,
                                                                        BigValue *dest_big_value) {
    if (!dest_big_value) return -1;
    memset(dest_big_value, 0, sizeof *dest_big_value);
    BigValue map;
    util_get_big_value_from_bits(original_bit_map, &map);
    cmdlib::for_each_set_bit(map, [&](int bit) {
        const char *name = util_get_band_name_by_value(bit);
        if (!name) return;
        int module_bit = util_get_band_value_by_name_ex(name, pairs, pairs_count);
        if (module_bit != -1) cmdlib::add_bit_arithmetically(dest_big_value, module_bit);
    });
    return 0;
}

// ---- network modes -----------------------------------------------------------

CMDLIB_API int util_get_supported_network_mode_for_this_module(char *supported_network_mode) {
    if (!supported_network_mode) return -1;
    supported_network_mode[0] = '\0';
    const BandNamePair *pairs;
    int count;
    module_modes(&pairs, &count);
    if (!pairs || count <= 0) return 0;
    size_t len = 0;
    for (int i = 0; i < count; ++i) {
        const BandNamePair *all = find_by_name(pairs[i].band_name, all_preferred_network_mode_name_pairs,
                                               UTIL_PREFERRED_NETWORK_MODE_COUNT);
        // A module row can only repeat product-wide names, so the list stays
        // within UTIL_NETWORK_MODE_LIST_SIZE unless a table repeats rows.
        if (all && len + strlen(all->band_name) + 16 < UTIL_NETWORK_MODE_LIST_SIZE)
            put_entry(supported_network_mode, &len, all->band_value, all->band_name);
    }
    return 0;
}

CMDLIB_API int util_get_real_network_mode_from_settings(int network_mode) {
    const BandNamePair *pairs;
    int count;
    module_modes(&pairs, &count);
    if (!pairs || count <= 0) return -1;
    const BandNamePair *setting = find_by_value(network_mode, all_preferred_network_mode_name_pairs,
                                                UTIL_PREFERRED_NETWORK_MODE_COUNT);
    if (!setting) return -1;
    const BandNamePair *module = find_by_name(setting->band_name, pairs, count);
    return module ? module->band_value : p_module_network_info->default_network_mode;
}

CMDLIB_API int util_get_real_settings_from_network_mode(int network_mode) {
    const BandNamePair *pairs;
    int count;
    module_modes(&pairs, &count);
    if (!pairs || count <= 0) return -1;
    const BandNamePair *module = find_by_value(network_mode, pairs, count);
    if (!module) return -1;
    const BandNamePair *setting = find_by_name(module->band_name, all_preferred_network_mode_name_pairs,
                                               UTIL_PREFERRED_NETWORK_MODE_COUNT);
    // The fallback is the module's default number, not converted.
    return setting ? setting->band_value : p_module_network_info->default_network_mode;
}

CMDLIB_API char *util_convert_act_to_network_mode_string(int act) {
    for (const ValueStrPair &p : network_mode_act_pairs)
        if (p.value == act) return const_cast<char *>(p.string_for_value);
    return nullptr;
}

CMDLIB_API int util_get_remapped_network_act(int act, char *network_mode) {
    if (network_mode) {
        network_mode[0] = '\0';
        const char *name = util_convert_act_to_network_mode_string(act);
        if (name) strcpy(network_mode, name);  // longest name: 15 characters
    }
    if (act == 7) return 7;
    if (act < 4 && act != 2) return 0;
    return 2;
}

// ---- settings from the record ------------------------------------------------

CMDLIB_API int util_get_lte_search_network_strategy(InfoStruct *info_struct) {
    if (!info_struct) return 3;
    std::string_view text = cmdlib::field_text(info_struct->QX_4G_FDD_PREFERRED);
    if (text.empty()) return 3;
    int v = cmdlib::atoi_sat(text);
    return (v < 0 || v > 3) ? 3 : v;
}

CMDLIB_API int util_get_cs_ps_service_mode(InfoStruct *info_struct) {
    if (!info_struct) return 4;
    std::string_view text = cmdlib::field_text(info_struct->QX_CS_PS_PREFERRED_MODE);
    if (text.empty()) return 4;
    int v = cmdlib::atoi_sat(text);
    return (v < 0 || v > 3) ? 4 : v;
}

CMDLIB_API int util_get_unsupported_network_mode(InfoStruct *info_struct) {
    if (!info_struct) return 0;
    std::string_view text =
        cmdlib::strip_leading_blanks(cmdlib::field_text(info_struct->QX_NETWORK_MODE_NOT_SUPPORT));
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
        util_char2hex(text[2]) >= 0)
        text.remove_prefix(2);
    // Read like strtol(..., 16) into a long: saturate at its maximum, then
    // keep the low 32 bits as the mask.
    uint64_t v = 0;
    for (char c : text) {
        int d = util_char2hex(c);
        if (d < 0) break;
        v = (v > (UINT64_C(0x7fffffffffffffff) >> 4)) ? UINT64_C(0x7fffffffffffffff)
                                                       : (v << 4) | static_cast<uint64_t>(d);
    }
    return static_cast<int>(static_cast<uint32_t>(v));
}

CMDLIB_API int util_get_unsupported_apn_auth_type(void) { return 0; }

CMDLIB_API int util_is_register_to_curent_plmn_alowed(InfoStruct *info_struct, const char *imsi) {
    if (!info_struct) return 1;
    if (cmdlib::field_text(info_struct->QX_ENABLE_LOCK_NETWORK) != "yes") return 1;
    if (!imsi || !imsi[0]) return 1;
    const std::string_view plmns[] = {
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN2),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN3),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN4),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN5),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN6),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN7),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN8),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN9),
        cmdlib::field_text(info_struct->QX_LOCK_NETWORK_PLMN10),
    };
    static_assert(sizeof plmns / sizeof plmns[0] == 10, "ten locked networks");
    bool any_set = false;
    for (std::string_view plmn : plmns) {
        if (plmn == imsi) return 1;
        any_set = any_set || !plmn.empty();
    }
    // The lock is on but lists nothing: nothing to refuse.
    return any_set ? 0 : 1;
}

// ---- flag files ----------------------------------------------------------------

CMDLIB_API int is_gsm_disabled(void) { return flag_file("/tmp/cmdlib/.config_disable_gsm_flag"); }
// The four "not supported" flags and the WCDMA preference live directly
// under /tmp: other firmware components write them there.
CMDLIB_API int util_is_gsm_mode_not_supported(void) {
    return flag_file("/tmp/.gsm_not_supported_bit_flag_file");
}
CMDLIB_API int util_is_wcdma_mode_not_supported(void) {
    return flag_file("/tmp/.wcdma_not_supported_bit_flag_file");
}
CMDLIB_API int util_is_tdscdma_mode_not_supported(void) {
    return flag_file("/tmp/.tdscdma_not_supported_bit_flag_file");
}
CMDLIB_API int util_is_lte_mode_not_supported(void) {
    return flag_file("/tmp/.lte_not_supported_bit_flag_file");
}
CMDLIB_API int util_is_wcdma_preferred(void) {
    return flag_file("/tmp/.wcdma_preferred_bit_flag_file");
}
CMDLIB_API int util_should_dial_lte_manually(void) {
    return flag_file("/tmp/cmdlib/.dial_lte_module_manually");
}
CMDLIB_API int util_should_disconnect_from_lte_network_immediately(void) {
    return flag_file("/tmp/cmdlib/.disconnect_from_lte_network_immediately");
}
CMDLIB_API int is_ttyusb1_used(void) { return flag_file("/tmp/cmdlib/.is_ttyUSB1_used"); }

}  // extern "C"
