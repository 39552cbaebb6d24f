// The record's yes/no predicates, fed through the settings reader the way
// the daemons fill the record.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <utility>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_gre.h"
#include "cmdlib/cmdlib_l2tp.h"
#include "cmdlib/internal/settings_parse.h"

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

InfoStruct record_with(const char *key, const char *value) {
    InfoStruct info;
    memset(&info, 0, sizeof info);
    cmdlib::parse_settings_text(std::string("export ") + key + "=" + value + "\n", &info);
    return info;
}

TEST(InfoPredicates, OnlyExactYesCountsAndEachReadsItsOwnField) {
    for (const Case &c : kCases) {
        EXPECT_EQ(c.pred(nullptr), 0) << c.key;
        for (const char *off : {"Yes", "YES", "1", "on", "yess", "\"yes \"", ""}) {
            InfoStruct info = record_with(c.key, off);
            EXPECT_EQ(c.pred(&info), 0) << c.key << "=" << off;
        }
        for (const char *on : {"yes", "\"yes\""}) {
            InfoStruct info = record_with(c.key, on);
            // no other switch is moved by this field
            for (const Case &other : kCases)
                EXPECT_EQ(other.pred(&info), &other == &c ? 1 : 0) << c.key << " -> " << other.key;
        }
    }
}

TEST(InfoPredicates, PptpModeIsTheLeadingNumber) {
    EXPECT_EQ(util_get_pptp_mode(nullptr), 0);
    const std::pair<const char *, int> cases[] = {{"", 0}, {"2x", 2}, {"client", 0}, {"\" 3\"", 3}};
    for (const auto &[value, want] : cases) {
        InfoStruct info = record_with("QX_PPTP_MODE", value);
        EXPECT_EQ(util_get_pptp_mode(&info), want) << value;
    }
}

}  // namespace
