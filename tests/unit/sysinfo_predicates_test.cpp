// The record's yes/no predicates, fed through the settings reader the way
// the daemons fill the record.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "cmdlib.h"
#include "cmdlib_gre.h"
#include "cmdlib_l2tp.h"
#include "settings_parse.h"

namespace {

using Pred = int (*)(const InfoStruct *);

struct Case {
    const char *key;
    Pred pred;
};

const Case kCases[] = {
    {"QX_GRE_VPN_ENABLED", util_gre_check_if_service_is_enabled},
    {"QX_GRE_AS_DEFAULT_ROUTE", util_gre_use_as_default_route},
    {"QX_GRE_USE_LAN_INTERFACE", util_gre_use_lan_ip_as_local_ip},
    {"QX_GRE_FOR_WAN_SUBNET", util_gre_for_wan_subnet},
    {"QX_SIP_OVER_GRE", util_sip_over_gre_is_enabled},
    {"QX_PPTP_ENABLED", util_is_pptp_function_enabled},
    {"QX_PPTP_ENABLE_MPPE", util_is_pptp_mppe_enabled},
    {"QX_VPN_AS_DEFAULT_ROUTE", util_is_pptp_vpn_used_as_default_route},
    {"QX_RANDOM_LNS_BY_INITIATOR", util_should_random_select_lns_by_initiator},
};

int eval(const Case &c, const char *value) {
    InfoStruct info;
    memset(&info, 0, sizeof info);
    std::string line = std::string("export ") + c.key + "=" + value + "\n";
    cmdlib::parse_settings_text(line, &info);
    return c.pred(&info);
}

TEST(InfoPredicates, OnlyExactYesCounts) {
    for (const Case &c : kCases) {
        EXPECT_EQ(eval(c, "yes"), 1) << c.key;
        EXPECT_EQ(eval(c, "\"yes\""), 1) << c.key;
        EXPECT_EQ(eval(c, "Yes"), 0) << c.key;
        EXPECT_EQ(eval(c, "1"), 0) << c.key;
        EXPECT_EQ(eval(c, "on"), 0) << c.key;
        EXPECT_EQ(eval(c, "yess"), 0) << c.key;
        EXPECT_EQ(eval(c, ""), 0) << c.key;
    }
}

TEST(InfoPredicates, PptpMode) {
    InfoStruct info;
    memset(&info, 0, sizeof info);
    EXPECT_EQ(util_get_pptp_mode(&info), 0);
    cmdlib::parse_settings_text("export QX_PPTP_MODE=2x\n", &info);
    EXPECT_EQ(util_get_pptp_mode(&info), 2);
    cmdlib::parse_settings_text("export QX_PPTP_MODE=abc\n", &info);
    EXPECT_EQ(util_get_pptp_mode(&info), 0);
}

}  // namespace
