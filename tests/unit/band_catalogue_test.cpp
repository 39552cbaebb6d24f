// Band catalogue, band-control dispatch and the two bit-map converters.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "cmdlib/cmdlib_band.h"

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

// Runs a converter on map with a destination prefilled with fill (or
// holding only bit 10 when fill is 0); the destination as text.
enum class Dir { ToStandard, ToModule };
std::string convert(Dir d, const std::string &map, const BandNamePair *rows, int n, int fill = 0) {
    BigValue dest{};
    if (fill) memset(&dest, fill, sizeof dest);
    else util_set_one_bit_for_big_value(&dest, 10);
    int rc = d == Dir::ToStandard
                 ? util_convert_bit_defintion_to_standard_definition(map.c_str(), rows, n, &dest)
                 : util_convert_standard_bit_defintion_to_module_definition(map.c_str(), rows, n, &dest);
    EXPECT_EQ(0, rc);
    return text_of(dest);
}

TEST(BandCatalogue, LookupsAndDeliberateGaps) {
    EXPECT_STREQ("TDS_BAND A", util_get_band_name_by_value(56));
    EXPECT_STREQ("WCDMA/GSM Unknown 2", util_get_band_name_by_value(79));
    for (int gap : {43, 50, 55, 62, 63, 73, 77, 89, 1023, -1})
        EXPECT_EQ(nullptr, util_get_band_name_by_value(gap)) << gap;
    // names match exactly: no case folding, no trimming
    for (const char *bad : {"band1", "BAND1 ", "TDS_BANDA", ""})
        EXPECT_EQ(-1, util_get_band_value_by_name(bad)) << bad;
    EXPECT_EQ(-1, util_get_band_value_by_name(nullptr));
    for (const BandNamePair &p : all_band_name_pairs)
        EXPECT_EQ(p.band_value, util_get_band_value_by_name(p.band_name)) << p.band_name;
}

TEST(BandCatalogue, ExLookupsScanOnlyTheGivenRows) {
    const BandNamePair pairs[] = {{5, "BAND3"}, {5, "BAND7"}, {9, "BAND3"}};
    EXPECT_STREQ("BAND3", util_get_band_name_by_value_ex(5, pairs, 3));  // first match
    EXPECT_EQ(5, util_get_band_value_by_name_ex("BAND3", pairs, 3));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(9, pairs, 2));      // row 3 not scanned
    EXPECT_EQ(-1, util_get_band_value_by_name_ex("BAND3", pairs, -4));
    EXPECT_EQ(nullptr, util_get_band_name_by_value_ex(5, nullptr, 3));
}

TEST(BandNames, ListsNamedBitsAscendingAndRejectsBadMaps) {
    EXPECT_EQ("0@BAND1$2@BAND3$40@BAND41", names_of(map_of({40, 2, 0})));
    EXPECT_EQ("78@WCDMA/GSM Unknown 1$88@GSM_PCS_1900", names_of(map_of({88, 78, 89, 1023})));
    EXPECT_EQ("", names_of(map_of({43, 55, 62, 63, 73, 77, 500})));
    for (const char *bad : {"0", "", "xyz", "0000000", "00000001 1", "-0000001", "0000000g"})
        EXPECT_EQ("", names_of(bad)) << bad;
    char out[8] = "stale";
    EXPECT_EQ(-1, util_get_all_supported_band_names(nullptr, out));
    EXPECT_EQ(-1, util_get_all_supported_band_names("00000001", nullptr));
    // every bit set: the longest list still fits the documented buffer
    BigValue all{};
    memset(&all, 0xff, sizeof all);
    std::string list = names_of(text_of(all));
    EXPECT_EQ(68, std::count(list.begin(), list.end(), '$'));
}

// A module that numbers its bands its own way: module bit 0 is BAND3,
// bit 1 is BAND1, bit 33 is GSM_850; it lacks BAND41.
const BandNamePair kModule[] = {{0, "BAND3"}, {1, "BAND1"}, {33, "GSM_850"}, {7, "BAND20"}};

TEST(BandConvert, ModuleToStandard) {
    // adds to what the destination holds; bit 5 has no module name
    EXPECT_EQ(map_of({0, 2, 10, 83}), convert(Dir::ToStandard, map_of({0, 1, 33, 5}), kModule, 4));
    // two module bits with one name add the same bit twice: the sum carries
    const BandNamePair dup[] = {{0, "BAND3"}, {1, "BAND3"}};
    EXPECT_EQ(map_of({3, 10}), convert(Dir::ToStandard, map_of({0, 1}), dup, 2));
    // no module rows: the catalogue itself, unnamed bits dropped
    EXPECT_EQ(map_of({4, 10, 87}), convert(Dir::ToStandard, map_of({4, 45, 87}), nullptr, 0));
    EXPECT_EQ(map_of({10}), convert(Dir::ToStandard, "not hex!", kModule, 4));
}

TEST(BandConvert, StandardToModuleClearsAndDropsMissing) {
    std::string module = convert(Dir::ToModule, map_of({0, 2, 40, 83, 50}), kModule, 4, 0xab);
    EXPECT_EQ(map_of({0, 1, 33}), module);  // BAND41 and unnamed 50 dropped
    // and back: only the bands that survived come home
    BigValue back{};
    ASSERT_EQ(0, util_convert_bit_defintion_to_standard_definition(module.c_str(), kModule, 4, &back));
    EXPECT_EQ(map_of({0, 2, 83}), text_of(back));
    // no catalogue fallback in this direction
    EXPECT_EQ("0", convert(Dir::ToModule, map_of({0}), nullptr, 0, 0xff));
    // module rows outside the map's bit range are skipped
    const BandNamePair wild[] = {{2000, "BAND1"}, {-7, "BAND2"}, {1023, "BAND3"}};
    EXPECT_EQ(map_of({1023}), convert(Dir::ToModule, map_of({0, 1, 2}), wild, 3, 0xff));
}

TEST(BandConvert, NullDestinationFails) {
    EXPECT_EQ(-1, util_convert_bit_defintion_to_standard_definition("00000001", kModule, 4, nullptr));
    EXPECT_EQ(-1,
              util_convert_standard_bit_defintion_to_module_definition("00000001", kModule, 4, nullptr));
}

TEST(BandControl, FibocomParsersAndLockBuilderRefuseAndClear) {
    EXPECT_EQ(1, util_is_universal_lock_band_supported());
    char answer[] = "^BANDSETEX: 1,3,7\r\nOK";
    for (auto parse : {util_parse_current_used_band, util_parse_all_supported_band,
                       util_parse_current_supported_band}) {
        char map[64] = "stale";
        EXPECT_EQ(-1, parse(answer, map));
        EXPECT_STREQ("", map);
    }
    EXPECT_EQ(-1, util_parse_current_used_band(answer, nullptr));

    char bands[] = "00000005", current[] = "^BANDSETEX: 1,3";
    char bad_bands[] = "00000005\r\nAT+CFUN=0", bad_current[] = "ok\r\n";
    struct {
        char *bands, *current;
    } cases[] = {{bands, current}, {bad_bands, current}, {nullptr, bad_current}};
    for (auto &c : cases) {
        char cmd[64] = "stale";
        EXPECT_EQ(-1, util_get_at_to_lock_specified_band(c.bands, c.current, cmd));
        EXPECT_STREQ("", cmd);
    }
    EXPECT_EQ(-1, util_get_at_to_lock_specified_band(nullptr, nullptr, nullptr));
}

}  // namespace
