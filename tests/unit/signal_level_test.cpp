// Signal level schemas and the override-file reader.
#include <gtest/gtest.h>

#include "cmdlib_signal.h"
#include "signal_level.h"

namespace {

TEST(SignalLevel, Cmcc5Boundaries) {
    const std::pair<int, int> cases[] = {{-121, 0}, {-120, 1}, {-116, 1}, {-115, 2}, {-110, 3},
                                         {-106, 3}, {-105, 4}, {-98, 4},  {-97, 5},  {0, 5},
                                         {-2147483647 - 1, 0}, {2147483647, 5}};
    for (auto &c : cases) EXPECT_EQ(c.second, util_signal_get_level_by_4g_rsrp("cmcc5lvl", c.first)) << c.first;
}

TEST(SignalLevel, SchemaNamesIgnoreCase) {
    EXPECT_EQ(2, util_signal_get_level_by_4g_rsrp("CMCC4LVL", -113));
    EXPECT_EQ(1, util_signal_get_level_by_4g_rsrp("Cmcc4Lvl", -114));
    EXPECT_EQ(4, util_signal_get_level_by_4g_rsrp("cmcc4lvl", -50));
    EXPECT_EQ(5, util_signal_get_level_by_4g_rsrp("dialog5lvl", -84));
    EXPECT_EQ(4, util_signal_get_level_by_4g_rsrp("DIALOG5LVL", -85));
    EXPECT_EQ(0, util_signal_get_level_by_4g_rsrp("dialog5lvl", -116));
}

TEST(SignalLevel, DefaultSchema) {
    for (const char *name : {(const char *)nullptr, "", "cmcc", "cmcc5lvl ", "unknown"}) {
        EXPECT_EQ(5, util_signal_get_level_by_4g_rsrp(name, -97)) << (name ? name : "null");
        EXPECT_EQ(4, util_signal_get_level_by_4g_rsrp(name, -98)) << (name ? name : "null");
        EXPECT_EQ(0, util_signal_get_level_by_4g_rsrp(name, -121)) << (name ? name : "null");
    }
}

TEST(SignalOverride, TextOrDefault) {
    EXPECT_EQ(-118, cmdlib::signal_min_rsrp_from_text("-118\n", -120));
    EXPECT_EQ(-120, cmdlib::signal_min_rsrp_from_text("0", -120));
    EXPECT_EQ(-120, cmdlib::signal_min_rsrp_from_text("", -120));
    EXPECT_EQ(-120, cmdlib::signal_min_rsrp_from_text("abc", -120));
    EXPECT_EQ(-120, cmdlib::signal_min_rsrp_from_text(nullptr, -120));
    EXPECT_EQ(-99, cmdlib::signal_min_rsrp_from_text("-99dBm", -120));
}

}  // namespace
