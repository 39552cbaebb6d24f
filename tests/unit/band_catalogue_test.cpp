// Band catalogue, band-control dispatch and the two bit-map converters.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "cmdlib_band.h"

namespace {

std::string text_of(const BigValue &v) {
    char buf[BIG_VALUE_TEXT_SIZE];
    util_convert_BigValue_to_string(&v, buf);
    return buf;
}

std::string map_of(std::initializer_list<int> bits) {
    BigValue v{};
    for (int b : bits) util_set_one_bit_for_big_value(&v, b);
    return text_of(v);
}

std::string names_of(const std::string &map) {
    char out[UTIL_BAND_NAMES_SIZE];
    memset(out, 'x', sizeof out);
    EXPECT_EQ(0, util_get_all_supported_band_names(map.c_str(), out));
    return out;
}

TEST(BandCatalogue, NamedAndUnnamedBits) {
    EXPECT_STREQ("BAND1", util_get_band_name_by_value(0));
    EXPECT_STREQ("BAND43", util_get_band_name_by_value(42));
    EXPECT_STREQ("TDS_BAND A", util_get_band_name_by_value(56));
    EXPECT_STREQ("WCDMA/GSM Unknown 2", util_get_band_name_by_value(79));
    EXPECT_STREQ("GSM_PCS_1900", util_get_band_name_by_value(88));
    // The deliberate gaps: 43-55, 62-63, 73-77, 89 and above.
    std::set<int> named;
    for (int bit = -5; bit < 1100; ++bit)
        if (util_get_band_name_by_value(bit)) named.insert(bit);
    EXPECT_EQ(69u, named.size());
    for (int gap : {43, 50, 55, 62, 63, 73, 77, 89, 1023, -1}) EXPECT_EQ(0u, named.count(gap)) << gap;
}

TEST(BandCatalogue, NameToValueIsExactAndRoundTrips) {
    EXPECT_EQ(56, util_get_band_value_by_name("TDS_BAND A"));
    EXPECT_EQ(-1, util_get_band_value_by_name("band1"));
    EXPECT_EQ(-1, util_get_band_value_by_name("BAND1 "));
    EXPECT_EQ(-1, util_get_band_value_by_name("TDS_BANDA"));
    EXPECT_EQ(-1, util_get_band_value_by_name(""));
    EXPECT_EQ(-1, util_get_band_value_by_name(nullptr));
    for (const BandNamePair &p : all_band_name_pairs)
        EXPECT_EQ(p.band_value, util_get_band_value_by_name(p.band_name)) << p.band_name;
}

TEST(BandCatalogue, ExLookupsScanOnlyTheGivenRows) {
    const BandNamePair pairs[] = {{5, "BAND3"}, {5, "BAND7"}, {9, "BAND3"}};
    EXPECT_STREQ("BAND3", util_get_band_name_by_value_ex(5, pairs, 3));  // first match
    EXPECT_EQ(5, util_get_band_value_by_name_ex("BAND3", pairs, 3));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(9, pairs, 2));      // row 3 not scanned
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(5, pairs, 0));
    EXPECT_EQ(-1, util_get_band_value_by_name_ex("BAND3", pairs, -4));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(5, nullptr, 3));
}

TEST(BandNames, ListsNamedBitsAscending) {
    EXPECT_EQ("0@BAND1$2@BAND3$40@BAND41", names_of(map_of({40, 2, 0})));
    EXPECT_EQ("78@WCDMA/GSM Unknown 1$88@GSM_PCS_1900", names_of(map_of({88, 78, 89, 1023})));
    EXPECT_EQ("", names_of(map_of({43, 55, 62, 63, 73, 77, 500})));
    EXPECT_EQ("", names_of("0"));
}

TEST(BandNames, InvalidMapsListNothing) {
    for (const char *bad : {"", "xyz", "0000000", "00000001 1", "-0000001", "0000000g"})
        EXPECT_EQ("", names_of(bad)) << bad;
    char out[8] = "stale";
    EXPECT_EQ(-1, util_get_all_supported_band_names(nullptr, out));
    EXPECT_EQ(-1, util_get_all_supported_band_names("00000001", nullptr));
}

TEST(BandNames, EveryBandFitsTheDocumentedBuffer) {
    BigValue all{};
    memset(&all, 0xff, sizeof all);
    std::string list = names_of(text_of(all));
    EXPECT_LT(list.size(), static_cast<size_t>(UTIL_BAND_NAMES_SIZE));
    EXPECT_EQ(68, std::count(list.begin(), list.end(), '$'));
}

// A module that numbers its bands its own way: module bit 0 is BAND3,
// bit 1 is BAND1, bit 33 is GSM_850; it lacks BAND41.
const BandNamePair kModule[] = {{0, "BAND3"}, {1, "BAND1"}, {33, "GSM_850"}, {7, "BAND20"}};

TEST(BandConvert, ModuleToStandardAddsWithoutClearing) {
    BigValue dest{};
    util_set_one_bit_for_big_value(&dest, 10);  // an earlier merge survives
    ASSERT_EQ(0, util_convert_bit_defintion_to_standard_definition(map_of({0, 1, 33, 5}).c_str(),
                                                                   kModule, 4, &dest));
    // bit 5 has no module name and is dropped
    EXPECT_EQ(map_of({0, 2, 10, 83}), text_of(dest));
}

TEST(BandConvert, ModuleToStandardCarriesOnDuplicateNames) {
    // Two module bits with one name add the same standard bit twice: the
    // sum carries into the next bit.
    const BandNamePair dup[] = {{0, "BAND3"}, {1, "BAND3"}};
    BigValue dest{};
    ASSERT_EQ(0, util_convert_bit_defintion_to_standard_definition(map_of({0, 1}).c_str(), dup, 2,
                                                                   &dest));
    EXPECT_EQ(map_of({3}), text_of(dest));
}

TEST(BandConvert, ModuleToStandardFallsBackToCatalogue) {
    BigValue dest{};
    ASSERT_EQ(0, util_convert_bit_defintion_to_standard_definition(map_of({4, 45, 87}).c_str(),
                                                                   nullptr, 0, &dest));
    EXPECT_EQ(map_of({4, 87}), text_of(dest));
}

TEST(BandConvert, StandardToModuleClearsAndDropsMissing) {
    BigValue dest;
    memset(&dest, 0xab, sizeof dest);
    ASSERT_EQ(0, util_convert_standard_bit_defintion_to_module_definition(
                     map_of({0, 2, 40, 83, 50}).c_str(), kModule, 4, &dest));
    EXPECT_EQ(map_of({0, 1, 33}), text_of(dest));  // BAND41 and unnamed 50 dropped

    // and back: only the bands that survived come home
    BigValue back{};
    ASSERT_EQ(0, util_convert_bit_defintion_to_standard_definition(text_of(dest).c_str(), kModule,
                                                                   4, &back));
    EXPECT_EQ(map_of({0, 2, 83}), text_of(back));
}

TEST(BandConvert, StandardToModuleHasNoCatalogueFallback) {
    BigValue dest;
    memset(&dest, 0xff, sizeof dest);
    ASSERT_EQ(0, util_convert_standard_bit_defintion_to_module_definition(map_of({0}).c_str(),
                                                                          nullptr, 0, &dest));
    EXPECT_EQ("0", text_of(dest));
}

TEST(BandConvert, ModuleRowsOutsideTheMapAreIgnored) {
    const BandNamePair wild[] = {{2000, "BAND1"}, {-7, "BAND2"}, {1023, "BAND3"}};
    BigValue dest{};
    ASSERT_EQ(0, util_convert_standard_bit_defintion_to_module_definition(map_of({0, 1, 2}).c_str(),
                                                                          wild, 3, &dest));
    EXPECT_EQ(map_of({1023}), text_of(dest));
}

TEST(BandConvert, NullDestinationFails) {
    EXPECT_EQ(-1, util_convert_bit_defintion_to_standard_definition("00000001", kModule, 4, nullptr));
    EXPECT_EQ(-1,
              util_convert_standard_bit_defintion_to_module_definition("00000001", kModule, 4, nullptr));
    BigValue dest{};
    EXPECT_EQ(0, util_convert_bit_defintion_to_standard_definition("not hex!", kModule, 4, &dest));
    EXPECT_EQ("0", text_of(dest));
}

TEST(BandControl, Fibocom) {
    EXPECT_STREQ("AT+QXBAND?", util_get_at_to_query_current_used_band());
    EXPECT_STREQ("AT^BANDSETEX=?", util_get_at_to_query_all_supported_band());
    EXPECT_STREQ("AT^BANDSETEX?", util_get_at_to_query_current_supported_band());
    EXPECT_EQ(1, util_is_universal_lock_band_supported());
    EXPECT_EQ(0, util_get_current_used_band_by_api());
    EXPECT_EQ(0, util_get_all_supported_band_by_api());
    EXPECT_EQ(0, util_get_current_supported_band_by_api());
    EXPECT_EQ(0, util_lock_specified_band_by_api());

    char answer[] = "^BANDSETEX: 1,3,7\r\nOK";
    char map[64] = "stale";
    EXPECT_EQ(-1, util_parse_current_used_band(answer, map));
    EXPECT_STREQ("", map);
    strcpy(map, "stale");
    EXPECT_EQ(-1, util_parse_all_supported_band(answer, map));
    EXPECT_STREQ("", map);
    strcpy(map, "stale");
    EXPECT_EQ(-1, util_parse_current_supported_band(answer, map));
    EXPECT_STREQ("", map);
    EXPECT_EQ(-1, util_parse_current_used_band(answer, nullptr));

    char bands[] = "00000005";
    char current[] = "^BANDSETEX: 1,3";
    char cmd[64] = "stale";
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(bands, current, cmd));
    EXPECT_STREQ("", cmd);
}

TEST(BandControl, LockRefusesLineBreaksAndMissingAnswer) {
    char cmd[64] = "stale";
    char bad_bands[] = "00000005\r\nAT+CFUN=0";
    char current[] = "x";
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(bad_bands, current, cmd));
    EXPECT_STREQ("", cmd);
    char bad_current[] = "ok\r\n";
    strcpy(cmd, "stale");
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(nullptr, bad_current, cmd));
    EXPECT_STREQ("", cmd);
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(nullptr, nullptr, nullptr));
}

}  // namespace
