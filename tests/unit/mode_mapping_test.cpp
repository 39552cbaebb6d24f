// Network-mode mapping, access technologies and the settings and
// registration policy read from InfoStruct.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_platform_fibocom_t750_modem.h"

namespace {

TEST(ModeList, FibocomListsItsFourModesWithSettingNumbers) {
    char buf[UTIL_NETWORK_MODE_LIST_SIZE] = "stale";
    ASSERT_EQ(0, util_get_supported_network_mode_for_this_module(buf));
    EXPECT_STREQ("0@4G/3G/2G Multi-mode$1@4G/3G Only$2@3G/2G Only$3@4G Only", buf);
    EXPECT_EQ(-1, util_get_supported_network_mode_for_this_module(nullptr));
}

TEST(ModeMapping, BothDirections) {
    // setting -> module mode: named settings the module lacks fall back to
    // its default; numbers past the named list fail
    const std::pair<int, int> to_module[] = {{3, 3}, {0, 0}, {4, 0}, {25, 0}, {26, -1}, {-1, -1}};
    for (auto &c : to_module) EXPECT_EQ(c.second, util_get_real_network_mode_from_settings(c.first)) << c.first;
    const std::pair<int, int> to_setting[] = {{0, 0}, {3, 3}, {4, -1}, {7, -1}, {-100, -1}};
    for (auto &c : to_setting) EXPECT_EQ(c.second, util_get_real_settings_from_network_mode(c.first)) << c.first;
}

TEST(Act, NamesAndClasses) {
    EXPECT_EQ(nullptr, util_convert_act_to_network_mode_string(9));
    EXPECT_EQ(nullptr, util_convert_act_to_network_mode_string(-1));
    struct Case {
        int act;
        int cls;
        const char *name;
    } cases[] = {{1, 0, "2G"}, {2, 2, "3G"}, {3, 0, "2G/EDGE"}, {7, 7, "4G"}, {8, 2, "3G/HSPA+"},
                 {9, 2, ""}, {-1, 0, ""}, {-2147483647 - 1, 0, ""}, {2147483647, 2, ""}};
    for (const Case &c : cases) {
        char buf[32] = "stale";
        EXPECT_EQ(c.cls, util_get_remapped_network_act(c.act, buf)) << c.act;
        EXPECT_STREQ(c.name, buf) << c.act;
        EXPECT_EQ(c.cls, util_get_remapped_network_act(c.act, nullptr)) << c.act;
    }
}

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
};

template <size_t N> void set(char (&field)[N], const char *text) {
    size_t n = strnlen(text, N - 1);
    memcpy(field, text, n);
    field[n] = '\0';
}

// Sets the field to each text in turn and expects fn's reading of it; an
// empty field reads as empty_value.
using Cases = std::initializer_list<std::pair<const char *, int>>;
template <size_t N>
void expect_setting(char (InfoStruct::*field)[N], int (*fn)(InfoStruct *), int empty_value, Cases cases) {
    Record r;
    EXPECT_EQ(empty_value, fn(&r.info));
    for (auto &c : cases) {
        set(r.info.*field, c.first);
        EXPECT_EQ(c.second, fn(&r.info)) << c.first;
    }
}

TEST(Settings, DecimalAndHexFields) {
    expect_setting(&InfoStruct::QX_4G_FDD_PREFERRED, util_get_lte_search_network_strategy, 3,
                   {{"0", 0}, {"2", 2}, {"7", 3}, {"-2", 3}, {"abc", 0}, {"99999999999999", 3}});
    EXPECT_EQ(3, util_get_lte_search_network_strategy(nullptr));
    expect_setting(&InfoStruct::QX_CS_PS_PREFERRED_MODE, util_get_cs_ps_service_mode, 4,
                   {{"3", 3}, {"0", 0}, {"-1", 4}, {"4", 4}, {"1x", 1}});
    expect_setting(&InfoStruct::QX_NETWORK_MODE_NOT_SUPPORT, util_get_unsupported_network_mode, 0,
                   {{"10", 0x10}, {"0x1f", 0x1f}, {"0XA", 0xA}, {"ff;", 0xff}, {"zz", 0}, {"0x", 0},
                    {"7fffffff", 0x7fffffff}, {"123456789", 0x23456789}, {"ffffffffffffffffffff", -1}});
    // a field filled to its last byte is read within its width
    Record r;
    memset(r.info.QX_NETWORK_MODE_NOT_SUPPORT, '1', sizeof r.info.QX_NETWORK_MODE_NOT_SUPPORT);
    EXPECT_EQ(-1, util_get_unsupported_network_mode(&r.info));  // 32 digits saturate
}

TEST(Registration, LockPolicy) {
    Record r;
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&r.info, "46002"));  // lock off
    set(r.info.QX_LOCK_NETWORK_PLMN, "46000");
    set(r.info.QX_ENABLE_LOCK_NETWORK, "Yes");
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&r.info, "46002"));  // not exactly "yes"
    set(r.info.QX_ENABLE_LOCK_NETWORK, "yes");
    set(r.info.QX_LOCK_NETWORK_PLMN2, "46001");
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&r.info, "46001"));
    EXPECT_EQ(0, util_is_register_to_curent_plmn_alowed(&r.info, "46002"));
    EXPECT_EQ(0, util_is_register_to_curent_plmn_alowed(&r.info, "4600"));   // whole string
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&r.info, ""));
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&r.info, nullptr));

    Record last;
    set(last.info.QX_ENABLE_LOCK_NETWORK, "yes");
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&last.info, "46002"));  // lists nothing
    set(last.info.QX_LOCK_NETWORK_PLMN10, "46009");
    EXPECT_EQ(1, util_is_register_to_curent_plmn_alowed(&last.info, "46009"));
    EXPECT_EQ(0, util_is_register_to_curent_plmn_alowed(&last.info, "46002"));
}

}  // namespace
