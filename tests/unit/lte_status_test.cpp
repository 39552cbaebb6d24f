// LTE status list, band 42/43 conversions, prestore lists and the second
// APN, all from a record.
#include <gtest/gtest.h>

#include <string.h>

#include <algorithm>
#include <string>

#include "cmdlib/cmdlib_module.h"
#include "cmdlib/cmdlib_platform_fibocom_t750_modem.h"

namespace {

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
};

template <size_t N> void set(char (&field)[N], const std::string &text) {
    size_t n = std::min(text.size(), N - 1);
    memcpy(field, text.data(), n);
    field[n] = '\0';
}

TEST(LteStatusList, NonEmptyFieldsInFixedOrderAppendedToTheBuffer) {
    Record r;
    set(r.info.CQI, "12");
    set(r.info.QXRSRP, "-95");
    char appended[UTIL_LTE_STATUS_LIST_SIZE + 16] = "IMEI@1";
    ASSERT_EQ(0, util_generate_lte_status_response_result(&r.info, appended));
    EXPECT_STREQ("IMEI@1$RSRP@-95$CQI@12", appended);
    // every field filled to its last byte, no terminator: each read within its width
    memset(&r.info, 'v', sizeof r.info);
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
}

TEST(Earfcn, Band42And43Conversions) {
    // frequency in kHz to EARFCN
    const std::pair<int, int> to_earfcn[] = {{3400000, 41590}, {3500050, 42590}, {3600000, 43590}, {3600001, 43590},
                                             {3600100, 43591}, {3800000, 45590}, {3399999, 0},     {3800001, 0},
                                             {-3400000, 0},    {2147483647, 0}};
    for (auto &c : to_earfcn)
        EXPECT_EQ(c.second, util_get_earfcn_from_downlink_frequency_value_for_b42_43_module(c.first)) << c.first;
    // EARFCN to band and to frequency in 10 kHz
    const struct {
        int earfcn, band, freq;
    } back[] = {{41589, -1, -1},     {41590, 42, 340000}, {43589, 42, 359990}, {43590, 43, 360000},
                {45589, 43, 379990}, {45590, -1, -1},     {-41590, -1, -1}};
    for (const auto &c : back) {
        EXPECT_EQ(c.band, util_get_band_from_downlink_earfcn_value(c.earfcn)) << c.earfcn;
        EXPECT_EQ(c.freq, util_get_frequency_from_downlink_earfcn_value(c.earfcn)) << c.earfcn;
    }
}

TEST(Prestore, EmptinessAndTheFirstMissingEntry) {
    EXPECT_EQ(1, util_is_fdd_prestore_frequency_empty(nullptr));
    Record r;
    set(r.info.QX_PRESTORE_FREQUENCY_FDD, " \t \r\n");
    EXPECT_EQ(1, util_is_fdd_prestore_frequency_empty(&r.info));
    set(r.info.QX_PRESTORE_FREQUENCY_TDD, "100 \n");
    EXPECT_EQ(0, util_is_tdd_prestore_frequency_empty(&r.info));
    EXPECT_STREQ("100", r.info.QX_PRESTORE_FREQUENCY_TDD);  // stripped in place

    set(r.info.QX_PRESTORE_FREQUENCY_FDD, "100,200 300");
    EXPECT_STREQ("200", util_get_next_fdd_prestore_frequency_not_in_list("100 300", &r.info));
    EXPECT_EQ(1, util_is_all_fdd_prestore_frequency_in_list("300,200 100", &r.info));
    EXPECT_STREQ("100", util_get_next_fdd_prestore_frequency_not_in_list("1000 200 300", &r.info));  // whole words
    EXPECT_STREQ("100", util_get_next_fdd_prestore_frequency_not_in_list(nullptr, &r.info));
    set(r.info.QX_PRESTORE_FREQUENCY_TDD, "38950");
    EXPECT_STREQ("38950", util_get_next_prestore_frequency_not_in_list("100", &r.info, PRESTORE_FREQUENCY_LIST_TYPE_TDD));
    EXPECT_EQ(nullptr, util_get_next_prestore_frequency_not_in_list("x 38950", &r.info,
                                                                    static_cast<PRESTORE_FREQUENCY_LIST_TYPE>(5)));
    // only 32 words of each side count, and a huge answer is cut, never overrun
    std::string list, answer, late;
    for (int i = 0; i < 40; ++i) list += std::to_string(i) + ",", answer += std::to_string(i) + " ";
    for (int i = 100; i < 132; ++i) late += std::to_string(i) + " ";
    set(r.info.QX_PRESTORE_FREQUENCY_FDD, list);
    EXPECT_EQ(nullptr, util_get_next_fdd_prestore_frequency_not_in_list(answer.c_str(), &r.info));
    set(r.info.QX_PRESTORE_FREQUENCY_FDD, "0");
    EXPECT_STREQ("0", util_get_next_fdd_prestore_frequency_not_in_list((late + "0").c_str(), &r.info));
    EXPECT_STREQ("0", util_get_next_fdd_prestore_frequency_not_in_list(std::string(5000, '7').c_str(), &r.info));
}

TEST(LteOperations, PlaceholdersFailAndClearMissingAnswersAndTheSecondApn) {
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

    Record r;
    EXPECT_EQ(0, util_should_we_use_the_second_apn(&r.info));
    EXPECT_EQ(0, util_should_we_use_the_second_apn(nullptr));
    set(r.info.QX_CONFIG_APN_NAME3, "iot.apn");
    EXPECT_EQ(1, util_should_we_use_the_second_apn(&r.info));
    EXPECT_STREQ("iot.apn", util_get_apn_for_the_second_wan_interface(&r.info));
}

}  // namespace
