// Module field sets: the key lists and their add-fields functions, the
// firewall table against its structure, and the switches over pairs.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/cmdlib_firewall_config.h"
#include "cmdlib/cmdlib_gre.h"
#include "cmdlib/cmdlib_ip_passthrough.h"
#include "cmdlib/cmdlib_l2tp.h"
#include "cmdlib/cmdlib_lock_network.h"
#include "cmdlib/cmdlib_snmp.h"
#include "cmdlib/cmdlib_special_configs.h"
#include "cmdlib/cmdlib_tr069.h"
#include "cmdlib/cmdlib_upnp.h"
#include "cmdlib/cmdlib_web.h"

namespace {

struct Module {
    const char *name;
    const char *const *list;
    int (*add)(const char **, int);
    int count;
};

const Module kModules[] = {
    {"lock_network", lock_network_config_fields, util_lock_network_add_fields_need_to_read, 11},
    {"ip_passthrough", ip_passthrough_config_fields, util_ip_passthrough_add_fields_need_to_read, 2},
    {"snmp", snmp_config_fields, util_snmp_add_fields_need_to_read, 10},
    {"gre", gre_config_fields, util_gre_add_fields_need_to_read, 10},
    {"l2tp", l2tp_config_fields, util_l2tp_add_fields_need_to_read, 49},
    {"tr069", tr069_config_fields, util_tr069_add_fields_need_to_read, 11},
    {"web", web_config_fields, util_web_add_fields_need_to_read, 8},
    {"upnp", upnp_config_fields, util_upnp_add_fields_need_to_read, 1},
    {"special_configs", special_configs_config_fields, util_special_configs_add_fields_need_to_read, 11},
    {"dhcp", dhcp_config_fields, util_dhcp_add_fields_need_to_read, 9},
};

TEST(FieldSets, ListsAndAddFunctions) {
    for (const Module &m : kModules) {
        SCOPED_TRACE(m.name);
        int n = 0;
        std::set<std::string> seen;
        while (m.list[n]) seen.insert(m.list[n++]);
        EXPECT_EQ(n, m.count);
        EXPECT_EQ(static_cast<int>(seen.size()), n) << "a key is listed twice";

        // room for all, for fewer, for none; the slot after the room is untouched
        std::vector<const char *> args(80, "sentinel");
        EXPECT_EQ(m.add(args.data(), 80), n);
        for (int i = 0; i < n; ++i) EXPECT_EQ(args[static_cast<size_t>(i)], m.list[i]);
        EXPECT_STREQ(args[static_cast<size_t>(n)], "sentinel");
        std::fill(args.begin(), args.end(), "sentinel");
        EXPECT_EQ(m.add(args.data(), 1), 1);
        EXPECT_STREQ(args[1], "sentinel");
        EXPECT_EQ(m.add(args.data(), 0), 0);
        EXPECT_EQ(m.add(nullptr, 10), 0);
    }
}

TEST(FieldSets, CollectingSeveralModulesInOneList) {
    const char *args[300];
    int n = 0;
    n += util_web_add_fields_need_to_read(args + n, 300 - n);
    n += util_dhcp_add_fields_need_to_read(args + n, 300 - n);
    n += util_firewall_config_add_fields_need_to_read(args + n, 300 - n);
    n += util_upnp_add_fields_need_to_read(args + n, 300 - n);
    EXPECT_EQ(n, 8 + 9 + 253 + 1);
    EXPECT_STREQ(args[8], "AP_IPADDR");
    EXPECT_STREQ(args[17], "QX_ENABLE_DMZ");
    EXPECT_STREQ(args[n - 2], "USR_FIREWALL_TR069_RESERVE_CR_WHITE_SW");
    EXPECT_STREQ(args[n - 1], "USR_FWT_UPNP_SW");  // also a firewall key: not merged
    // the firewall list is cut by the room left, like the others
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args, 5), 5);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args, 0), 0);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(nullptr, 300), 0);
}

// ---- firewall ----------------------------------------------------------------

TEST(Firewall, TableMatchesTheStructure) {
    // Descriptors tile the structure in order: each starts where the last ended.
    size_t offset = 0;
    std::set<std::string> names;
    for (int i = 0; i < FIREWALL_CONFIG_FIELDS_COUNT; ++i) {
        const FieldConfigInfo &f = firewall_config_fields[i];
        EXPECT_EQ(f.field_offset, offset) << f.field_name;
        EXPECT_EQ(f.field_flag, 1);
        EXPECT_TRUE(names.insert(f.field_name).second) << f.field_name;
        offset += f.field_size;
    }
    EXPECT_EQ(offset, sizeof(tFirewallConfigInfo));
    EXPECT_EQ(firewall_config_fields[1].field_offset, offsetof(tFirewallConfigInfo, QX_DMZ_DEST_IP));
}

TEST(Firewall, ReadConfigZeroesThenFills) {
    char path[] = "/tmp/firewall_conf_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    std::ofstream(path) << "export QX_ENABLE_DMZ=yes\n"
                           "export SYS_WEB_PROTOCOL_TYPE=https\n"
                           "export USR_TR069_ACS_URL=\"http://acs.example/cwmp\"\n"
                           "export USR_DHCP_LAN_IP_15=192.168.15.1\n"
                           "export QX_ENABLE_DMZ=no\n"
                           "export NOT_A_FIREWALL_KEY=1\n";
    tFirewallConfigInfo info;
    memset(&info, 'J', sizeof info);
    EXPECT_EQ(util_firewall_read_config(path, &info), 0);
    EXPECT_STREQ(info.QX_ENABLE_DMZ, "no");           // last wins
    EXPECT_STREQ(info.SYS_WEB_PROTOCOL_TYPE, "h");    // width 2
    EXPECT_STREQ(info.USR_TR069_ACS_URL, "http://acs.example/cwmp");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP_15, "192.168.15.1");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP, "");          // absent: zeroed
    unlink(path);

    memset(&info, 'J', sizeof info);
    EXPECT_EQ(util_firewall_read_config(path, &info), -1);
    tFirewallConfigInfo zero;
    memset(&zero, 0, sizeof zero);
    EXPECT_EQ(memcmp(&info, &zero, sizeof info), 0);
    EXPECT_EQ(util_firewall_read_config(nullptr, &info), -1);
}

// ---- switches over pairs --------------------------------------------------------

std::vector<ConfigKeyValuePair> pairs(std::initializer_list<std::pair<const char *, const char *>> kv) {
    std::vector<ConfigKeyValuePair> v;
    for (auto &p : kv) {
        ConfigKeyValuePair c{};
        snprintf(c.key, sizeof c.key, "%s", p.first);
        snprintf(c.value, sizeof c.value, "%s", p.second);
        v.push_back(c);
    }
    return v;
}

int count(const std::vector<ConfigKeyValuePair> &v) { return static_cast<int>(v.size()); }

TEST(PairSwitches, IpPassthroughOnlyForExactYes) {
    for (const char *off : {"", "Yes", "YES", "1", "on", "yes "}) {
        auto v = pairs({{"QX_IP_PASS_THROUGH_ENABLE", off}});
        EXPECT_EQ(util_ip_passthrough_enabled(v.data(), count(v)), 0) << off;
    }
    auto on = pairs({{"OTHER", "no"}, {"QX_IP_PASS_THROUGH_ENABLE", "yes"}});
    EXPECT_EQ(util_ip_passthrough_enabled(on.data(), count(on)), 1);
    EXPECT_EQ(util_ip_passthrough_enabled(nullptr, 0), 0);
}

TEST(PairSwitches, DhcpServerIsOnUnlessExactlyNo) {
    EXPECT_EQ(util_dhcp_server_enabled(nullptr, 0), 1);
    for (const char *on : {"", "yes", "No", "NO", "0", "no "}) {
        auto v = pairs({{"QX_ENABLE_DHCP_SERVER", on}});
        EXPECT_EQ(util_dhcp_server_enabled(v.data(), count(v)), 1) << on;
    }
    auto off = pairs({{"QX_ENABLE_DHCP_SERVER", "no"}});
    EXPECT_EQ(util_dhcp_server_enabled(off.data(), count(off)), 0);
}

TEST(PairSwitches, DnsAutoUnlessManualWithAServer) {
    EXPECT_EQ(util_dhcp_get_dns_auto(nullptr, 0), 1);
    struct Case {
        const char *mode, *primary, *secondary;
        int want;
    };
    // manual without servers falls back to automatic; null: key absent
    const Case cases[] = {{"No", "8.8.8.8", nullptr, 1}, {"no", nullptr, nullptr, 1},
                          {"no", "", "", 1},             {"no", "", "1.1.1.1", 0},
                          {"no", "9.9.9.9", nullptr, 0}};
    for (const Case &c : cases) {
        auto v = pairs({{"QX_GET_DNS_AUTO", c.mode}});
        if (c.primary) v.push_back(pairs({{"QX_DNS_PRIMARY", c.primary}})[0]);
        if (c.secondary) v.push_back(pairs({{"QX_DNS_SECONDARY", c.secondary}})[0]);
        EXPECT_EQ(util_dhcp_get_dns_auto(v.data(), count(v)), c.want)
            << c.mode << "|" << (c.primary ? c.primary : "-") << "|" << (c.secondary ? c.secondary : "-");
    }
}

}  // namespace
