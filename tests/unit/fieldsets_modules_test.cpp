// Module field sets: the key lists and their add-fields functions, the
// firewall table against its structure, and the switches over pairs and
// over the system record.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cmdlib.h"
#include "cmdlib_config.h"
#include "cmdlib_dhcp.h"
#include "cmdlib_firewall_config.h"
#include "cmdlib_gre.h"
#include "cmdlib_ip_passthrough.h"
#include "cmdlib_l2tp.h"
#include "cmdlib_lock_network.h"
#include "cmdlib_snmp.h"
#include "cmdlib_special_configs.h"
#include "cmdlib_tr069.h"
#include "cmdlib_upnp.h"
#include "cmdlib_web.h"
#include "libbase.h"

namespace {

struct Module {
    const char *name;
    const char *const *list;
    int (*add)(const char **, int);
    int count;
    const char *first;
    const char *last;
};

const Module kModules[] = {
    {"lock_network", lock_network_config_fields, util_lock_network_add_fields_need_to_read, 11,
     "QX_ENABLE_LOCK_NETWORK", "QX_LOCK_NETWORK_PLMN10"},
    {"ip_passthrough", ip_passthrough_config_fields, util_ip_passthrough_add_fields_need_to_read, 2,
     "QX_IP_PASS_THROUGH_ENABLE", "QX_IP_PASS_THROUGH_MAC"},
    {"snmp", snmp_config_fields, util_snmp_add_fields_need_to_read, 10, "QX_SNMP_ENABLED",
     "QX_SNMP_PORT"},
    {"gre", gre_config_fields, util_gre_add_fields_need_to_read, 10, "QX_GRE_VPN_ENABLED",
     "QX_GRE_USE_LAN_INTERFACE"},
    {"l2tp", l2tp_config_fields, util_l2tp_add_fields_need_to_read, 49, "QX_L2TP_MODE",
     "QX_L2TP_LOCAL_IP"},
    {"tr069", tr069_config_fields, util_tr069_add_fields_need_to_read, 11, "QX_TR069_ENABLED",
     "QX_TR069_HTTPD_PORT"},
    {"web", web_config_fields, util_web_add_fields_need_to_read, 8, "QX_SUPER_USERNAME",
     "QX_ADMIN_WEB_PAGE_HIDE"},
    {"upnp", upnp_config_fields, util_upnp_add_fields_need_to_read, 1, "USR_FWT_UPNP_SW",
     "USR_FWT_UPNP_SW"},
    {"special_configs", special_configs_config_fields, util_special_configs_add_fields_need_to_read,
     11, "QX_MTU_USB0", "QX_MAX_SIGNAL_LEVEL"},
    {"dhcp", dhcp_config_fields, util_dhcp_add_fields_need_to_read, 9, "AP_IPADDR",
     "QX_DNS_SECONDARY"},
};

TEST(FieldSets, ListsAndAddFunctions) {
    for (const Module &m : kModules) {
        SCOPED_TRACE(m.name);
        int n = 0;
        std::set<std::string> seen;
        while (m.list[n]) seen.insert(m.list[n++]);
        EXPECT_EQ(n, m.count);
        EXPECT_EQ(static_cast<int>(seen.size()), n) << "a key is listed twice";
        EXPECT_STREQ(m.list[0], m.first);
        EXPECT_STREQ(m.list[n - 1], m.last);

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

TEST(FieldSets, ListOrderSamples) {
    const char *gre[4] = {};
    EXPECT_EQ(util_gre_add_fields_need_to_read(gre, 3), 3);
    EXPECT_STREQ(gre[0], "QX_GRE_VPN_ENABLED");
    EXPECT_STREQ(gre[1], "QX_GRE_VPN_NAME");
    EXPECT_STREQ(gre[2], "QX_GRE_VPN_SERVER");
    EXPECT_EQ(gre[3], nullptr);
    // the l2tp list: six keys, the 2..10 triples, four keys, the 2..4 pairs, six keys
    EXPECT_STREQ(l2tp_config_fields[6], "QX_LNS_SERVER2");
    EXPECT_STREQ(l2tp_config_fields[32], "QX_TUNNEL_PASS10");
    EXPECT_STREQ(l2tp_config_fields[33], "QX_L2TP_MTU");
    EXPECT_STREQ(l2tp_config_fields[37], "QX_MULTI_TUNNEL_NAME2");
    EXPECT_STREQ(l2tp_config_fields[42], "QX_MULTI_TUNNEL_PASS4");
    EXPECT_STREQ(l2tp_config_fields[43], "QX_CHECK_IF_LNS_ALIVE");
    EXPECT_STREQ(lock_network_config_fields[2], "QX_LOCK_NETWORK_PLMN2");
}

TEST(FieldSets, CollectingSeveralModulesInOneList) {
    const char *args[1800];
    int n = 0;
    n += util_web_add_fields_need_to_read(args + n, 1800 - n);
    n += util_dhcp_add_fields_need_to_read(args + n, 1800 - n);
    n += util_firewall_config_add_fields_need_to_read(args + n, 1800 - n);
    n += util_upnp_add_fields_need_to_read(args + n, 1800 - n);
    EXPECT_EQ(n, 8 + 9 + 253 + 1);
    EXPECT_STREQ(args[8], "AP_IPADDR");
    EXPECT_STREQ(args[17], "QX_ENABLE_DMZ");
    EXPECT_STREQ(args[n - 1], "USR_FWT_UPNP_SW");  // also a firewall key: not merged
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
    EXPECT_STREQ(firewall_config_fields[0].field_name, "QX_ENABLE_DMZ");
    EXPECT_STREQ(firewall_config_fields[252].field_name, "USR_FIREWALL_TR069_RESERVE_CR_WHITE_SW");
    EXPECT_EQ(firewall_config_fields[1].field_offset, offsetof(tFirewallConfigInfo, QX_DMZ_DEST_IP));
    EXPECT_EQ(firewall_config_fields[1].field_size, sizeof(tFirewallConfigInfo::QX_DMZ_DEST_IP));
    EXPECT_EQ(sizeof(tFirewallConfigInfo::SYS_WEB_PROTOCOL_TYPE), 2u);
    EXPECT_EQ(sizeof(tFirewallConfigInfo::USR_TR069_ACS_URL), 128u);
}

TEST(Firewall, AddFieldsAtMost253) {
    std::vector<const char *> args(300, nullptr);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args.data(), 300), 253);
    EXPECT_STREQ(args[252], "USR_FIREWALL_TR069_RESERVE_CR_WHITE_SW");
    EXPECT_EQ(args[253], nullptr);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args.data(), 5), 5);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(args.data(), 0), 0);
    EXPECT_EQ(util_firewall_config_add_fields_need_to_read(nullptr, 300), 0);
}

TEST(Firewall, ReadConfigZeroesThenFills) {
    char path[] = "/tmp/firewall_conf_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    std::ofstream(path) << "export QX_ENABLE_DMZ=yes\n"
                           "export SYS_WEB_PROTOCOL_TYPE=https\n"
                           "export USR_TR069_ACS_URL=\"http://acs.example/cwmp\"\n"
                           "export USR_ALLOW_TRUSTED_IP_14=10.0.0.14\n"
                           "export USR_DHCP_LAN_IP=192.168.1.1\n"
                           "export USR_DHCP_LAN_IP_15=192.168.15.1\n"
                           "export QX_ENABLE_DMZ=no\n"
                           "export NOT_A_FIREWALL_KEY=1\n";
    tFirewallConfigInfo info;
    memset(&info, 'J', sizeof info);
    EXPECT_EQ(util_firewall_read_config(path, &info), 0);
    EXPECT_STREQ(info.QX_ENABLE_DMZ, "no");           // last wins
    EXPECT_STREQ(info.SYS_WEB_PROTOCOL_TYPE, "h");    // width 2
    EXPECT_STREQ(info.USR_TR069_ACS_URL, "http://acs.example/cwmp");
    EXPECT_STREQ(info.USR_ALLOW_TRUSTED_IP_14, "10.0.0.14");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP, "192.168.1.1");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP_15, "192.168.15.1");
    EXPECT_STREQ(info.USR_DHCP_LAN_IP_1, "");          // absent: zeroed
    EXPECT_STREQ(info.USR_FIREWALL_TR069_RESERVE_CR_WHITE_SW, "");
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

TEST(PairSwitches, IpPassthrough) {
    for (const char *off : {"", "Yes", "YES", "1", "on", "yes "}) {
        auto v = pairs({{"QX_IP_PASS_THROUGH_ENABLE", off}});
        EXPECT_EQ(util_ip_passthrough_enabled(v.data(), count(v)), 0) << off;
    }
    auto on = pairs({{"OTHER", "no"}, {"QX_IP_PASS_THROUGH_ENABLE", "yes"}});
    EXPECT_EQ(util_ip_passthrough_enabled(on.data(), count(on)), 1);
    EXPECT_EQ(util_ip_passthrough_enabled(nullptr, 0), 0);
    EXPECT_EQ(util_enable_ip_passthrough(), 1);
    EXPECT_EQ(util_disable_ip_passthrough(), 1);
    EXPECT_EQ(util_set_sfp_ipa(), 1);
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

TEST(PairSwitches, DnsAuto) {
    EXPECT_EQ(util_dhcp_get_dns_auto(nullptr, 0), 1);
    auto a = pairs({{"QX_GET_DNS_AUTO", "No"}, {"QX_DNS_PRIMARY", "8.8.8.8"}});
    EXPECT_EQ(util_dhcp_get_dns_auto(a.data(), count(a)), 1);
    // manual without servers falls back to automatic
    auto b = pairs({{"QX_GET_DNS_AUTO", "no"}});
    EXPECT_EQ(util_dhcp_get_dns_auto(b.data(), count(b)), 1);
    auto c = pairs({{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", ""}, {"QX_DNS_SECONDARY", ""}});
    EXPECT_EQ(util_dhcp_get_dns_auto(c.data(), count(c)), 1);
    auto d = pairs({{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", ""}, {"QX_DNS_SECONDARY", "1.1.1.1"}});
    EXPECT_EQ(util_dhcp_get_dns_auto(d.data(), count(d)), 0);
    auto e = pairs({{"QX_GET_DNS_AUTO", "no"}, {"QX_DNS_PRIMARY", "9.9.9.9"}});
    EXPECT_EQ(util_dhcp_get_dns_auto(e.data(), count(e)), 0);
}

// ---- switches over the system record --------------------------------------------

TEST(RecordSwitches, YesIsExactAndEachReadsItsOwnField) {
    struct Case {
        int (*fn)(const InfoStruct *);
        char *(*field)(InfoStruct *);
    };
    const Case cases[] = {
        {util_gre_check_if_service_is_enabled, [](InfoStruct *i) { return i->QX_GRE_VPN_ENABLED; }},
        {util_gre_use_as_default_route, [](InfoStruct *i) { return i->QX_GRE_AS_DEFAULT_ROUTE; }},
        {util_gre_use_lan_ip_as_local_ip, [](InfoStruct *i) { return i->QX_GRE_USE_LAN_INTERFACE; }},
        {util_gre_for_wan_subnet, [](InfoStruct *i) { return i->QX_GRE_FOR_WAN_SUBNET; }},
        {util_sip_over_gre_is_enabled, [](InfoStruct *i) { return i->QX_SIP_OVER_GRE; }},
        {util_is_pptp_function_enabled, [](InfoStruct *i) { return i->QX_PPTP_ENABLED; }},
        {util_is_pptp_mppe_enabled, [](InfoStruct *i) { return i->QX_PPTP_ENABLE_MPPE; }},
        {util_is_pptp_vpn_used_as_default_route, [](InfoStruct *i) { return i->QX_VPN_AS_DEFAULT_ROUTE; }},
        {util_should_random_select_lns_by_initiator,
         [](InfoStruct *i) { return i->QX_RANDOM_LNS_BY_INITIATOR; }},
    };
    auto info = std::make_unique<InfoStruct>();
    for (size_t k = 0; k < std::size(cases); ++k) {
        SCOPED_TRACE(k);
        memset(info.get(), 0, sizeof *info);
        EXPECT_EQ(cases[k].fn(info.get()), 0);
        EXPECT_EQ(cases[k].fn(nullptr), 0);
        for (const char *off : {"Yes", "YES", "1", "on", "yes ", "yesy"}) {
            strcpy(cases[k].field(info.get()), off);
            EXPECT_EQ(cases[k].fn(info.get()), 0) << off;
        }
        strcpy(cases[k].field(info.get()), "yes");
        EXPECT_EQ(cases[k].fn(info.get()), 1);
        // no other switch is moved by this field
        for (size_t j = 0; j < std::size(cases); ++j) {
            if (j != k) {
                EXPECT_EQ(cases[j].fn(info.get()), 0) << j;
            }
        }
    }
}

TEST(RecordSwitches, PptpModeAndTunnelName) {
    auto info = std::make_unique<InfoStruct>();
    memset(info.get(), 0, sizeof *info);
    EXPECT_EQ(util_get_pptp_mode(info.get()), 0);
    EXPECT_EQ(util_get_pptp_mode(nullptr), 0);
    strcpy(info->QX_PPTP_MODE, "2x");
    EXPECT_EQ(util_get_pptp_mode(info.get()), 2);
    strcpy(info->QX_PPTP_MODE, "client");
    EXPECT_EQ(util_get_pptp_mode(info.get()), 0);
    strcpy(info->QX_PPTP_MODE, " 3");
    EXPECT_EQ(util_get_pptp_mode(info.get()), 3);
    EXPECT_STREQ(util_get_gre_tunnel_name(), "tunnel_gre");
}

}  // namespace
