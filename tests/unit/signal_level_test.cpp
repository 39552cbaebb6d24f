// Signal level schemas and the override-file reader.
#include <gtest/gtest.h>

#include "cmdlib/cmdlib_signal.h"
#include "cmdlib/internal/signal_level.h"

namespace {

TEST(SignalLevel, Cmcc5Boundaries) {
    const std::pair<int, int> cases[] = {{-121, 0}, {-120, 1}, {-116, 1}, {-115, 2}, {-110, 3},
                                         {-106, 3}, {-105, 4}, {-98, 4},  {-97, 5},  {0, 5},
                                         {-2147483647 - 1, 0}, {2147483647, 5}};
    for (auto &c : cases) EXPECT_EQ(c.second, util_signal_get_level_by_4g_rsrp("cmcc5lvl", c.first)) << c.first;
}

TEST(SignalLevel, SchemaNamesIgnoreCaseAndUnknownNamesGetTheDefault) {
    struct Case {
        const char *schema;
        int rsrp, level;
    } cases[] = {{"CMCC4LVL", -113, 2}, {"Cmcc4Lvl", -114, 1}, {"cmcc4lvl", -50, 4},
                 {"dialog5lvl", -84, 5}, {"DIALOG5LVL", -85, 4}, {"dialog5lvl", -116, 0},
                 {nullptr, -97, 5}, {"", -98, 4}, {"cmcc", -121, 0}, {"cmcc5lvl ", -98, 4},
                 {"unknown", -97, 5}};
    for (const Case &c : cases)
        EXPECT_EQ(c.level, util_signal_get_level_by_4g_rsrp(c.schema, c.rsrp))
            << (c.schema ? c.schema : "null") << " " << c.rsrp;
}

TEST(SignalOverride, TextOrDefault) {
    EXPECT_EQ(-118, cmdlib::signal_min_rsrp_from_text("-118\n", -120));
    EXPECT_EQ(-99, cmdlib::signal_min_rsrp_from_text("-99dBm", -120));
    for (const char *text : {"0", "", "abc", (const char *)nullptr})
        EXPECT_EQ(-120, cmdlib::signal_min_rsrp_from_text(text, -120)) << (text ? text : "null");
}

}  // namespace
