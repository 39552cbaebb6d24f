// The modem side's pure rules: band catalogue and bit-map converters,
// network modes and access technologies, band 42/43 frequencies, UTF-8 to
// code units, the status indication line, signal bars, the LTE status
// list, prestore lists and the registration lock.  Single calls are tables
// in tests/golden/modem_calls; rules of a record take it field by field.
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_module.h"
#include "cmdlib/cmdlib_platform_fibocom_t750_modem.h"
#include "cmdlib/cmdlib_signal.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/signal_level.h"
#include "cmdlib/internal/status_ind.h"
#include "common/golden.h"

namespace {

using golden::Args;
using golden::show;

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
    InfoStruct *p() { return &info; }
};

// A record filled from "FIELD=value;FIELD=value" (a value as long as its
// field leaves no terminator).
Record rec(const std::string &desc) {
    Record r;
    for (size_t i = 0; i < desc.size();) {
        size_t end = std::min(desc.find(';', i), desc.size()), eq = desc.find('=', i);
        const cmdlib::InfoFieldDesc *f = cmdlib::find_info_field(desc.substr(i, eq - i));
        EXPECT_NE(f, nullptr) << desc.substr(i, eq - i);
        if (f) memcpy(cmdlib::info_field_ptr(&r.info, *f), &desc[eq + 1], std::min(end - eq - 1, f->width));
        i = end + 1;
    }
    return r;
}

std::string map_text(const BigValue &v) {
    char buf[BIG_VALUE_TEXT_SIZE];
    util_convert_BigValue_to_string(&v, buf);
    return buf;
}

std::string map_of(const std::vector<int> &bits) {
    BigValue v{};
    for (int b : bits) util_set_one_bit_for_big_value(&v, b);
    return map_text(v);
}

// "40,2,0" as a map of those bits
std::string map_of_list(const std::string &list) {
    std::vector<int> bits;
    for (size_t i = 0; i < list.size(); i = list.find(',', i) == std::string::npos ? list.size() : list.find(',', i) + 1)
        bits.push_back(std::stoi(list.substr(i)));
    return map_of(bits);
}

std::vector<uint8_t> bytes(const std::string &hex) {
    std::vector<uint8_t> out(hex.size() / 2 + 1);
    for (size_t i = 0; i + 1 < hex.size(); i += 2) out[i / 2] = static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return out;
}

std::string band_names(const std::string &map) {
    char out[UTIL_BAND_NAMES_SIZE];
    memset(out, 'x', sizeof out);
    return show(util_get_all_supported_band_names(map.c_str(), out), out);
}

std::string utf8_string(const std::string &hex, int size) {
    std::vector<uint8_t> in = bytes(hex), out(300, 0xEE);
    int n = util_utf8_to_unicode_string(in.data(), out.data(), static_cast<int>(hex.size() / 2), size);
    const char *past = out[static_cast<size_t>(size)] != 0xEE ? " past the end!" : "";
    return show(n, n < 0 ? "" : reinterpret_cast<char *>(out.data())) + past;
}

std::string prestore(Args &a) {
    Record r = rec(a[0]);
    auto type = a[2] == "fdd" ? PRESTORE_FREQUENCY_LIST_TYPE_FDD
                : a[2] == "tdd" ? PRESTORE_FREQUENCY_LIST_TYPE_TDD : static_cast<PRESTORE_FREQUENCY_LIST_TYPE>(5);
    int all = a[2] == "fdd" ? util_is_all_fdd_prestore_frequency_in_list(a[1].c(), &r.info)
                            : util_is_all_tdd_prestore_frequency_in_list(a[1].c(), &r.info);
    return show(util_get_next_prestore_frequency_not_in_list(a[1].c(), &r.info, type), all);
}

TEST(ModemCalls, Golden) {
    using namespace cmdlib;
    golden::check("modem_calls", golden::calls({
        {"band_name", [](Args &a) { return show(util_get_band_name_by_value(a[0].i())); }},
        {"band_value", [](Args &a) { return show(util_get_band_value_by_name(a[0].c())); }},
        {"band_names_bits", [](Args &a) { return band_names(map_of_list(a[0])); }},
        {"band_names_text", [](Args &a) { return band_names(a[0]); }},
        {"mode_from_setting", [](Args &a) { return show(util_get_real_network_mode_from_settings(a[0].i())); }},
        {"setting_from_mode", [](Args &a) { return show(util_get_real_settings_from_network_mode(a[0].i())); }},
        {"act", [](Args &a) {
             char name[32] = "stale";
             int cls = util_get_remapped_network_act(a[0].i(), name);
             return show(cls, name, util_convert_act_to_network_mode_string(a[0].i()));
         }},
        {"lte_strategy", [](Args &a) { return show(util_get_lte_search_network_strategy(rec(a[0]).p())); }},
        {"cs_ps", [](Args &a) { return show(util_get_cs_ps_service_mode(rec(a[0]).p())); }},
        {"unsupported", [](Args &a) { return show(util_get_unsupported_network_mode(rec(a[0]).p())); }},
        {"earfcn_of_khz",
         [](Args &a) { return show(util_get_earfcn_from_downlink_frequency_value_for_b42_43_module(a[0].i())); }},
        {"band_and_freq", [](Args &a) {
             return show(util_get_band_from_downlink_earfcn_value(a[0].i()),
                         util_get_frequency_from_downlink_earfcn_value(a[0].i()));
         }},
        {"strlen", [](Args &a) { return show(util_get_utf8_strlen(bytes(a[0]).data(), a[1].i())); }},
        {"one", [](Args &a) {
             uint32_t code = 99;
             int n = util_utf8_to_unicode_one(bytes(a[0]).data(), &code, a[1].i());
             char hex[16];
             snprintf(hex, sizeof hex, "%X", code);
             return show(n) + " " + hex;
         }},
        {"string", [](Args &a) { return utf8_string(a[0], a[1].i()); }},
        {"sim", [](Args &a) {
             Args b = a, c = a;
             return show(status_sim_exist(a[0].c()), status_need_pin(b[0].w()), status_need_puk(c[0].w()));
         }},
        {"dial", [](Args &a) {
             int st = -5, sig = -5;
             return show(status_dial_and_signal(a[0].w(), &st, &sig), st, sig);
         }},
        {"level", [](Args &a) { return show(util_signal_get_level_by_4g_rsrp(a[0].c(), a[1].i())); }},
        {"override", [](Args &a) { return show(signal_min_rsrp_from_text(a[0].c(), a[1].i())); }},
        {"lte_list", [](Args &a) {
             char list[UTIL_LTE_STATUS_LIST_SIZE + 16];
             snprintf(list, sizeof list, "%s", a[1].c_str());
             return show(util_generate_lte_status_response_result(rec(a[0]).p(), list), list);
         }},
        {"prestore_empty", [](Args &a) {
             Record r = rec(a[0]);
             bool fdd = a[1] == "fdd";
             int rc = fdd ? util_is_fdd_prestore_frequency_empty(&r.info) : util_is_tdd_prestore_frequency_empty(&r.info);
             return show(rc, fdd ? r.info.QX_PRESTORE_FREQUENCY_FDD : r.info.QX_PRESTORE_FREQUENCY_TDD);
         }},
        {"prestore_next", prestore},
        {"second_apn", [](Args &a) {
             Record r = rec(a[0]);
             return show(util_should_we_use_the_second_apn(&r.info), util_get_apn_for_the_second_wan_interface(&r.info));
         }},
        {"plmn", [](Args &a) { return show(util_is_register_to_curent_plmn_alowed(rec(a[0]).p(), a[1].c())); }},
    }));
}

// ---- band maps ---------------------------------------------------------------------

// A module that numbers its bands its own way: module bit 0 is BAND3, bit 1
// BAND1, bit 33 GSM_850; it lacks BAND41.
const BandNamePair kModule[] = {{0, "BAND3"}, {1, "BAND1"}, {33, "GSM_850"}, {7, "BAND20"}};

// A converter's result on a destination prefilled with fill bytes, or
// holding bit 10 alone when fill is 0.
std::string convert(bool to_standard, const std::string &map, const BandNamePair *rows, int n, int fill = 0) {
    BigValue dest{};
    if (fill) memset(&dest, fill, sizeof dest);
    else util_set_one_bit_for_big_value(&dest, 10);
    int rc = to_standard ? util_convert_bit_defintion_to_standard_definition(map.c_str(), rows, n, &dest)
                         : util_convert_standard_bit_defintion_to_module_definition(map.c_str(), rows, n, &dest);
    return rc == 0 ? map_text(dest) : "failed";
}

TEST(BandMaps, ConvertersAndLookups) {
    // module to standard adds to what the destination holds; bit 5 has no module name
    EXPECT_EQ(map_of({0, 2, 10, 83}), convert(true, map_of({0, 1, 33, 5}), kModule, 4));
    // two module bits with one name add the same bit twice: the sum carries
    const BandNamePair dup[] = {{0, "BAND3"}, {1, "BAND3"}};
    EXPECT_EQ(map_of({3, 10}), convert(true, map_of({0, 1}), dup, 2));
    // no module rows: the catalogue itself, unnamed bits dropped
    EXPECT_EQ(map_of({4, 10, 87}), convert(true, map_of({4, 45, 87}), nullptr, 0));
    EXPECT_EQ(map_of({10}), convert(true, "not hex!", kModule, 4));
    // standard to module clears first and drops what the module lacks, with
    // no catalogue fallback; module rows outside the map's bit range are skipped
    std::string module = convert(false, map_of({0, 2, 40, 83, 50}), kModule, 4, 0xab);
    EXPECT_EQ(map_of({0, 1, 33}), module);
    EXPECT_EQ(map_of({0, 2, 10, 83}), convert(true, module, kModule, 4));  // only the bands that survived come home
    EXPECT_EQ("0", convert(false, map_of({0}), nullptr, 0, 0xff));
    const BandNamePair wild[] = {{2000, "BAND1"}, {-7, "BAND2"}, {1023, "BAND3"}};
    EXPECT_EQ(map_of({1023}), convert(false, map_of({0, 1, 2}), wild, 3, 0xff));
    EXPECT_EQ(-1, util_convert_bit_defintion_to_standard_definition("00000001", kModule, 4, nullptr));
    EXPECT_EQ(-1, util_convert_standard_bit_defintion_to_module_definition("00000001", kModule, 4, nullptr));

    // every bit set: the longest list still fits the documented buffer
    BigValue all;
    memset(&all, 0xff, sizeof all);
    char names[UTIL_BAND_NAMES_SIZE], stale[8] = "stale";
    ASSERT_EQ(0, util_get_all_supported_band_names(map_text(all).c_str(), names));
    EXPECT_EQ(68, std::count(names, names + strlen(names), '$'));
    EXPECT_EQ(-1, util_get_all_supported_band_names(nullptr, stale));
    EXPECT_EQ(-1, util_get_all_supported_band_names("00000001", nullptr));
    for (const BandNamePair &p : all_band_name_pairs) EXPECT_EQ(p.band_value, util_get_band_value_by_name(p.band_name)) << p.band_name;
    // the _ex lookups scan only the rows given, first match first
    const BandNamePair pairs[] = {{5, "BAND3"}, {5, "BAND7"}, {9, "BAND3"}};
    EXPECT_STREQ("BAND3", util_get_band_name_by_value_ex(5, pairs, 3));
    EXPECT_EQ(5, util_get_band_value_by_name_ex("BAND3", pairs, 3));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(9, pairs, 2));
    EXPECT_EQ(-1, util_get_band_value_by_name_ex("BAND3", pairs, -4));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(5, nullptr, 3));
}

TEST(BandControl, ThisModuleRefusesAndClears) {
    EXPECT_EQ(1, util_is_universal_lock_band_supported());
    char answer[] = "^BANDSETEX: 1,3,7\r\nOK";
    for (auto parse : {util_parse_current_used_band, util_parse_all_supported_band, util_parse_current_supported_band}) {
        char map[64] = "stale";
        EXPECT_EQ(-1, parse(answer, map));
        EXPECT_STREQ("", map);
    }
    EXPECT_EQ(-1, util_parse_current_used_band(answer, nullptr));
    char bands[] = "00000005", current[] = "^BANDSETEX: 1,3", bad_bands[] = "00000005\r\nAT+CFUN=0", bad_current[] = "ok\r\n";
    for (auto [b, c] : {std::pair<char *, char *>{bands, current}, {bad_bands, current}, {nullptr, bad_current}}) {
        char cmd[64] = "stale";
        EXPECT_EQ(-1, util_get_at_to_lock_specified_band(b, c, cmd));
        EXPECT_STREQ("", cmd);
    }
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(nullptr, nullptr, nullptr));
    char modes[UTIL_NETWORK_MODE_LIST_SIZE] = "stale";
    ASSERT_EQ(0, util_get_supported_network_mode_for_this_module(modes));
    EXPECT_STREQ("0@4G/3G/2G Multi-mode$1@4G/3G Only$2@3G/2G Only$3@4G Only", modes);
    EXPECT_EQ(-1, util_get_supported_network_mode_for_this_module(nullptr));
}

TEST(Utf8, NullArguments) {
    uint8_t out[8];
    uint32_t code = 0;
    const uint8_t in[] = {0x41};
    EXPECT_EQ(-1, util_utf8_to_unicode_string(nullptr, out, 1, 8));
    EXPECT_EQ(-1, util_utf8_to_unicode_string(in, nullptr, 1, 8));
    EXPECT_EQ(-1, util_utf8_to_unicode_one(nullptr, &code, 1));
    EXPECT_EQ(-1, util_utf8_to_unicode_one(in, nullptr, 1));
    EXPECT_EQ(0, util_get_utf8_strlen(nullptr, 5));
    EXPECT_EQ(0, cmdlib::status_sim_exist(nullptr));
    EXPECT_EQ(0, cmdlib::status_need_pin(nullptr) + cmdlib::status_need_puk(nullptr));
    EXPECT_EQ(-1, cmdlib::status_dial_and_signal(nullptr, nullptr, nullptr));
    EXPECT_EQ(3, util_get_lte_search_network_strategy(nullptr));
}

// ---- from a record -----------------------------------------------------------------

TEST(LteStatusList, EveryFieldAtFullWidthIsReadWithinItsWidth) {
    Record r;
    memset(&r.info, 'v', sizeof r.info);  // no terminator anywhere
    std::string buf(UTIL_LTE_STATUS_LIST_SIZE, '\0');
    ASSERT_EQ(0, util_generate_lte_status_response_result(&r.info, &buf[0]));
    std::string list(buf.c_str()), v32(32, 'v');
    EXPECT_EQ(22, std::count(list.begin(), list.end(), '$'));
    EXPECT_EQ(0u, list.find("EARFCN/ARFCN@" + v32 + "$Frequency Band@"));
    EXPECT_NE(std::string::npos, list.find("$Physical CellID@" + v32 + "$RSSI@"));
    EXPECT_EQ(list.size() - 4 - 32, list.rfind("CQI@"));
    EXPECT_EQ(-1, util_generate_lte_status_response_result(&r.info, nullptr));
    char keep[8] = "keep";
    EXPECT_EQ(0, util_generate_lte_status_response_result(nullptr, keep));
    EXPECT_STREQ("keep", keep);
    EXPECT_EQ(1, util_is_fdd_prestore_frequency_empty(nullptr));
    EXPECT_EQ(0, util_should_we_use_the_second_apn(nullptr));
}

TEST(LteOperations, QueriesAndThePlaceholdersThatFailAndClear) {
    // the status queries: one a line, each line ended
    std::string q = util_get_at_to_query_lte_status();
    EXPECT_EQ(11, std::count(q.begin(), q.end(), '\n'));
    EXPECT_EQ('\n', q.back());
    // operations this platform lacks fail and clear what they write
    char earfcn[16] = "old", pci[16] = "old", cmd[32] = "old", result[16] = "stale";
    int locked = 5;
    char answer[] = "^DPCILK: 1,38950,12", e[] = "38950", p[] = "12", empty[] = "";
    EXPECT_EQ(-1, util_parse_lock_one_cell_status(answer, &locked, earfcn, pci));
    EXPECT_EQ(std::string(earfcn) + pci, "");
    EXPECT_EQ(-1, util_get_at_to_lock_one_cell(1, e, p, cmd));
    EXPECT_STREQ("", cmd);
    // a missing answer fails before any file is read
    EXPECT_EQ(-1, util_parse_lte_status(nullptr, result));
    EXPECT_STREQ("", result);
    strcpy(result, "stale");
    EXPECT_EQ(-1, util_parse_query_earfcn_physical_cell_id_response(empty, result));
    EXPECT_STREQ("", result);
}

}  // namespace
