// The readers behind the system record: the settings file, the version and
// module files, meminfo, the status indication line, /proc/net/dev, the
// radio cache, and the yes/no questions asked of a filled record.  Line
// rules are golden cases (tests/golden/settings*, version_file,
// module_file) rendered as the record's non-empty fields.
#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <utility>
#include <vector>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_gre.h"
#include "cmdlib/cmdlib_l2tp.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/settings_parse.h"
#include "cmdlib/internal/sysinfo_parse.h"
#include "common/golden.h"
#include "common/scratch.h"

using namespace cmdlib;

namespace {

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
};

// "NAME#bit=value" for every field that holds text or has its bit set,
// in record order, each followed by sep.
std::string render_record(const InfoStruct &info, const char *sep = "\n") {
    std::string out;
    for (const InfoFieldDesc &f : kInfoFields) {
        std::string value(info_field_ptr(&info, f), strnlen(info_field_ptr(&info, f), f.width));
        bool bit = info_defined_bit(&info, f.bit);
        if (value.empty() && !bit) continue;
        out += std::string(f.name) + (bit ? "#" + std::to_string(f.bit) : "") + "=" + value + sep;
    }
    return out;
}

template <typename Apply> std::string render_lines(const std::string &text, Apply apply) {
    Record r;
    TextLineReader<256> reader(text);
    for (std::string_view line; reader.next(&line);) apply(line, &r.info);
    return render_record(r.info);
}

// ---- the settings file ------------------------------------------------------------

TEST(Settings, GoldenLines) {
    // key|value|what the line alone writes into an empty record
    golden::check("settings_line", golden::per_line([](const std::string &line) {
        Record r;
        bool applied = apply_settings_line(line, &r.info);
        return std::string(settings_line_key(line)) + "|" + std::string(settings_line_value(line)) + "|" +
               (applied ? render_record(r.info, " ") : "none");
    }));
}

TEST(Settings, GoldenTexts) {
    // The record starts with AP_IPADDR set and its bit clear: the reader
    // never clears what it does not read.
    golden::check("settings", [](const std::string &text) {
        Record r;
        strcpy(r.info.AP_IPADDR, "preset");
        parse_settings_text(text, &r.info);
        return render_record(r.info);
    });
}

TEST(Settings, EveryListedKeySelectsItsOwnField) {
    // A key shadowed by an earlier one that it is a prefix of would never
    // be read: all 162 + 59 keys each fill their own field and bit alone.
    std::vector<std::pair<std::string, const InfoFieldDesc *>> all;
    for (size_t i = 0; i < kHandSettingCount; ++i)
        all.emplace_back(hand_setting_key(i), find_info_field(hand_setting_field(i)));
    for (info_field::Id id : kTableSettingFields) all.emplace_back(kInfoFields[id].name, &kInfoFields[id]);
    for (const auto &[key, f] : all) {
        Record r;
        ASSERT_NE(f, nullptr) << key;
        ASSERT_TRUE(apply_settings_line("export " + key + "=v\n", &r.info)) << key;
        EXPECT_EQ(render_record(r.info, ""), std::string(f->name) + "#" + std::to_string(f->bit) + "=v") << key;
    }
}

TEST(Settings, TableSettingLeavesTheLastByteOfItsField) {
    Record r;
    memset(r.info.QX_ENABLE_DMZ, 'G', sizeof r.info.QX_ENABLE_DMZ);
    apply_settings_line("export QX_ENABLE_DMZ=0123456789abcdef\n", &r.info);
    EXPECT_EQ(std::string(r.info.QX_ENABLE_DMZ, 8), std::string("012345\0G", 8));
}

class SettingsFile : public ScratchDir {};

TEST_F(SettingsFile, FileAndTextReadersAgreeAndMissingFileLeavesRecordAlone) {
    std::string text = golden::slurp(golden::folder("settings") / "long_lines_in_pieces.in");
    Record from_file, from_text;
    EXPECT_EQ(util_server_read_wifi_info_ex(write("rc.system.conf", text).c_str(), &from_file.info), 0);
    parse_settings_text(text, &from_text.info);
    EXPECT_EQ(render_record(from_file.info), render_record(from_text.info));
    EXPECT_EQ(util_server_read_wifi_info_ex(path("none").c_str(), &from_file.info), -1);
    EXPECT_EQ(std::string(from_file.info.AP_SSID), std::string(63, 'a'));
    EXPECT_EQ(util_server_read_wifi_info_ex(nullptr, &from_file.info), -1);
    EXPECT_EQ(util_server_read_wifi_info_ex("/dev/null", nullptr), -1);
}

// ---- version, module, meminfo, status, netdev, radio cache ---------------------------

TEST(VersionAndModuleFiles, Golden) {
    golden::check("version_file", [](const std::string &t) { return render_lines(t, apply_version_line); });
    golden::check("module_file", [](const std::string &t) { return render_lines(t, apply_module_info_line); });
}

TEST(Meminfo, TotalAndFreeByPrefix) {
    char total[64] = "x", freeb[64] = "x";
    for (const char *l : {"MemTotal:        1024000 kB\n", "MemFree:          512000 kB\n", "MemAvailable:     700000 kB\n"})
        apply_meminfo_line(l, total, freeb, sizeof total);
    EXPECT_STREQ(total, "1024000 kB");
    EXPECT_STREQ(freeb, "512000 kB");  // "MemAvailable" is no prefix of either name
    apply_meminfo_line("MemTotal: 1 kB\n", nullptr, nullptr, 64);
}

TEST(StatusInd, TenNumbersOrNothing) {
    int v[10] = {};
    EXPECT_FALSE(parse_status_ind("1 0 0 25 0 1 1 1 7\n", v));
    ASSERT_TRUE(parse_status_ind("1\t0 0 25 0 1 1 1 7 1 99 98\n", v));
    EXPECT_EQ(std::vector<int>(v, v + 10), (std::vector<int>{1, 0, 0, 25, 0, 1, 1, 1, 7, 1}));
    ASSERT_TRUE(parse_status_ind("a b c 4x 5 6 7 8 9 -10", v));
    EXPECT_EQ(std::vector<int>(v, v + 10), (std::vector<int>{0, 0, 0, 4, 5, 6, 7, 8, 9, -10}));
    EXPECT_FALSE(parse_status_ind("", v));
    // only 128 characters are read: numbers beyond them don't count
    EXPECT_FALSE(parse_status_ind(std::string(125, ' ') + "1 2 3 4 5 6 7 8 9 10", v));
}

TEST(Netdev, CountersOfOneInterface) {
    const char *text =
        "Inter-|   Receive                                                |  Transmit\n"
        " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets\n"
        "    lo:    1000      10    0    0    0     0          0         0     1000      10    0    0    0     0       0          0\n"
        "  usb0: 123456789  4321    0    0    0     0          0         0   987654     321    0    0    0     0       0          0\n";
    NetdevCounters c;
    ASSERT_TRUE(parse_netdev_counters(text, "usb0", &c));
    EXPECT_EQ(std::vector<std::string>({c.rx_bytes, c.rx_packets, c.tx_bytes, c.tx_packets}),
              (std::vector<std::string>{"123456789", "4321", "987654", "321"}));
    EXPECT_FALSE(parse_netdev_counters(text, "usb", &c));
    EXPECT_FALSE(parse_netdev_counters(text, "", &c));
    EXPECT_FALSE(parse_netdev_counters("  eth0: 1 2 3\n", "eth0", &c));
}

TEST(RadioCache, NonEmptyFieldsInCacheOrderAndUnterminatedFieldsStayBounded) {
    Record r;
    strcpy(r.info.CQI, "12");
    strcpy(r.info.QXRSRP, "-95");
    strcpy(r.info.QXRSRP2, "-97");  // second antenna: not cached
    char out[1024];
    compose_module_status_cache(&r.info, out, sizeof out);
    EXPECT_STREQ(out, "\n+QXRSRP: -95\n+QXCQI: 12\n");
    Record full;  // every byte set: fields without a terminator are read within their width
    memset(&full.info, '9', sizeof full.info);
    size_t len = compose_module_status_cache(&full.info, out, sizeof out);
    EXPECT_EQ(len, strlen(out));
    EXPECT_NE(std::string(out).find("+QXGLBCELLID: " + std::string(32, '9') + "\n"), std::string::npos);
}

// ---- yes/no questions of the record ---------------------------------------------------

using Pred = int (*)(const InfoStruct *);
const std::pair<const char *, Pred> kSwitches[] = {
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
    Record r;
    parse_settings_text(std::string("export ") + key + "=" + value + "\n", &r.info);
    return r.info;
}

TEST(RecordSwitches, OnlyExactYesCountsAndEachReadsItsOwnField) {
    for (const auto &[key, pred] : kSwitches) {
        EXPECT_EQ(pred(nullptr), 0) << key;
        for (const char *off : {"Yes", "YES", "1", "on", "yess", "\"yes \"", ""}) {
            InfoStruct info = record_with(key, off);
            EXPECT_EQ(pred(&info), 0) << key << "=" << off;
        }
        for (const char *on : {"yes", "\"yes\""}) {
            InfoStruct info = record_with(key, on);
            for (const auto &[other_key, other] : kSwitches)  // no other switch moves
                EXPECT_EQ(other(&info), other == pred ? 1 : 0) << key << " -> " << other_key;
        }
    }
    EXPECT_EQ(util_get_pptp_mode(nullptr), 0);
    for (const auto &[value, want] : {std::pair<const char *, int>{"", 0}, {"2x", 2}, {"client", 0}, {"\" 3\"", 3}}) {
        InfoStruct info = record_with("QX_PPTP_MODE", value);
        EXPECT_EQ(util_get_pptp_mode(&info), want) << value;
    }
}

}  // namespace
