// Module field sets: the firewall structure read through its descriptor
// table, and the switches asked of pairs read from the configuration.  The
// key lists themselves are data checked when compiling; the shared builder
// of work lists is tested with the configuration store.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/cmdlib_firewall_config.h"
#include "cmdlib/cmdlib_ip_passthrough.h"
#include "common/scratch.h"

namespace {

class Firewall : public ScratchDir {};

TEST_F(Firewall, ReadConfigZeroesThenFills) {
    std::string conf = write("conf", "export QX_ENABLE_DMZ=yes\n"
                                     "export SYS_WEB_PROTOCOL_TYPE=https\n"
                                     "export USR_TR069_ACS_URL=\"http://acs.example/cwmp\"\n"
                                     "export USR_DHCP_LAN_IP_15=192.168.15.1\n"
                                     "export QX_ENABLE_DMZ=no\n"
                                     "export NOT_A_FIREWALL_KEY=1\n");
    tFirewallConfigInfo info, zero;
    memset(&zero, 0, sizeof zero);
    memset(&info, 'J', sizeof info);
    EXPECT_EQ(util_firewall_read_config(conf.c_str(), &info), 0);
    EXPECT_STREQ(info.QX_ENABLE_DMZ, "no");         // last wins
    EXPECT_STREQ(info.SYS_WEB_PROTOCOL_TYPE, "h");  // width 2
    EXPECT_STREQ(info.USR_TR069_ACS_URL, "http://acs.example/cwmp");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP_15, "192.168.15.1");  // the last field
    EXPECT_STREQ(info.USR_DHCP_LAN_IP, "");                 // absent: zeroed
    memset(&info, 'J', sizeof info);
    EXPECT_EQ(util_firewall_read_config(path("none").c_str(), &info), -1);
    EXPECT_EQ(memcmp(&info, &zero, sizeof info), 0);
    EXPECT_EQ(util_firewall_read_config(nullptr, &info), -1);
    const char *args[300];
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args, 300), FIREWALL_CONFIG_FIELDS_COUNT);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args, 5), 5);  // cut by the room left
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(nullptr, 300), 0);
}

std::vector<ConfigKeyValuePair> pairs(std::initializer_list<std::pair<const char *, const char *>> kv) {
    std::vector<ConfigKeyValuePair> v;
    for (auto &p : kv) {
        if (!p.second) continue;  // a null value: the key is absent
        ConfigKeyValuePair c{};
        snprintf(c.key, sizeof c.key, "%s", p.first);
        snprintf(c.value, sizeof c.value, "%s", p.second);
        v.push_back(c);
    }
    return v;
}

TEST(PairSwitches, YesNoAndDnsRules) {
    // ip passthrough: only an exact "yes"; the DHCP server: on unless exactly "no"
    for (const char *value : {"", "Yes", "YES", "1", "on", "yes ", "yes", "no", "No", "NO", "0", "no "}) {
        auto v = pairs({{"OTHER", "no"}, {"QX_IP_PASS_THROUGH_ENABLE", value}, {"QX_ENABLE_DHCP_SERVER", value}});
        EXPECT_EQ(util_ip_passthrough_enabled(v.data(), static_cast<int>(v.size())), strcmp(value, "yes") == 0) << value;
        EXPECT_EQ(util_dhcp_server_enabled(v.data(), static_cast<int>(v.size())), strcmp(value, "no") != 0) << value;
    }
    EXPECT_EQ(util_ip_passthrough_enabled(nullptr, 0), 0);
    EXPECT_EQ(util_dhcp_server_enabled(nullptr, 0), 1);
    EXPECT_EQ(util_dhcp_get_dns_auto(nullptr, 0), 1);
    // DNS is automatic unless manual with a server; null: the key is absent
    const struct {
        const char *mode, *primary, *secondary;
        int want;
    } dns[] = {{"No", "8.8.8.8", nullptr, 1}, {"no", nullptr, nullptr, 1}, {"no", "", "", 1},
               {"no", "", "1.1.1.1", 0},      {"no", "9.9.9.9", nullptr, 0}};
    for (const auto &c : dns) {
        auto v = pairs({{"QX_GET_DNS_AUTO", c.mode}, {"QX_DNS_PRIMARY", c.primary}, {"QX_DNS_SECONDARY", c.secondary}});
        EXPECT_EQ(util_dhcp_get_dns_auto(v.data(), static_cast<int>(v.size())), c.want)
            << c.mode << "|" << (c.primary ? c.primary : "-") << "|" << (c.secondary ? c.secondary : "-");
    }
}

}  // namespace
