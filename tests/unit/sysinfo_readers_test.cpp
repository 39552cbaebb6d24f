// Readers behind the system record: version and module files, meminfo,
// the status indication line, /proc/net/dev and the radio cache.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/sysinfo_parse.h"

using namespace cmdlib;

namespace {

struct Record {
    InfoStruct info;
    Record() { memset(&info, 0, sizeof info); }
};

template <typename Fn> void each_line(const std::string &text, Fn fn) {
    TextLineReader<256> reader(text);
    std::string_view line;
    while (reader.next(&line)) fn(line);
}

TEST(VersionFile, NamesValuesAndBlanks) {
    Record r;
    each_line("type: router\n"
              "  \tversion:\t 1.2.3 \r\n"
              "build : 77\n"           // blank before the colon: no match
              ":orphan\n"              // starts with the colon: skipped
              "no colon here\n"
              "sha1:" + std::string(300, 'f') + "\n"
              "branch: main\nbranch: release\n",
              [&](std::string_view l) { apply_version_line(l, &r.info); });
    EXPECT_STREQ(r.info.type, "router");
    EXPECT_STREQ(r.info.version, "1.2.3");
    EXPECT_STREQ(r.info.build, "");
    EXPECT_STREQ(r.info.branch, "release");
    // 255-character reads: "sha1:" and 250 digits, then the rest as a line
    // of its own without a colon.
    EXPECT_EQ(std::string(r.info.sha1), std::string(250, 'f'));
}

TEST(ModuleFile, PrefixRule) {
    Record r;
    apply_module_info_line("i:123456789012345\n", &r.info);
    EXPECT_STREQ(r.info.imei, "123456789012345");
    apply_module_info_line(":v1.0  \n", &r.info);  // empty name: "phy"
    EXPECT_STREQ(r.info.module_phy_version, "v1.0");
    apply_module_info_line("imeix:999\n", &r.info);  // longer than every keyword
    EXPECT_STREQ(r.info.imei, "123456789012345");
    apply_module_info_line("modversion:  FB 1.0\t\r\n", &r.info);  // leading blanks kept
    EXPECT_STREQ(r.info.module_version, "  FB 1.0");
    apply_module_info_line("Module3G:FM350\n", &r.info);
    EXPECT_STREQ(r.info.module_type, "FM350");
    apply_module_info_line("platform_device_name:cpe\n", &r.info);
    EXPECT_STREQ(r.info.platform_device_name, "cpe");
    apply_module_info_line("no colon\n", &r.info);
}

TEST(VersionAndModuleFiles, OverlongValueStaysInItsField) {
    Record r;
    memset(r.info.hwversion, 'G', sizeof r.info.hwversion);
    memset(r.info.imsi, 'G', sizeof r.info.imsi);
    apply_version_line("version:" + std::string(100, 'v') + "\n", &r.info);
    apply_module_info_line("imei:" + std::string(200, '7') + "\n", &r.info);
    EXPECT_EQ(std::string(r.info.version), std::string(31, 'v'));
    EXPECT_EQ(std::string(r.info.imei), std::string(47, '7'));
    // the fields that follow are untouched
    EXPECT_EQ(r.info.hwversion[0], 'G');
    EXPECT_EQ(r.info.imsi[0], 'G');
}

TEST(Meminfo, TotalAndFree) {
    char total[64] = "x", freeb[64] = "x";
    each_line("MemTotal:        1024000 kB\nMemFree:          512000 kB\n"
              "MemAvailable:     700000 kB\n",
              [&](std::string_view l) { apply_meminfo_line(l, total, freeb, sizeof total); });
    EXPECT_STREQ(total, "1024000 kB");
    // "MemAvailable" is no prefix of either name.
    EXPECT_STREQ(freeb, "512000 kB");
    // Null outputs are skipped.
    apply_meminfo_line("MemTotal: 1 kB\n", nullptr, nullptr, 64);
}

TEST(StatusInd, TenNumbersOrNothing) {
    int v[10] = {};
    EXPECT_FALSE(parse_status_ind("1 0 0 25 0 1 1 1 7\n", v));
    ASSERT_TRUE(parse_status_ind("1\t0 0 25 0 1 1 1 7 1 99 98\n", v));
    const int want[10] = {1, 0, 0, 25, 0, 1, 1, 1, 7, 1};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(v[i], want[i]) << i;
    ASSERT_TRUE(parse_status_ind("a b c 4x 5 6 7 8 9 -10", v));
    EXPECT_EQ(v[0], 0);
    EXPECT_EQ(v[3], 4);
    EXPECT_EQ(v[9], -10);
    EXPECT_FALSE(parse_status_ind("", v));
    // Only 128 characters are read: numbers beyond them don't count.
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
    EXPECT_STREQ(c.rx_bytes, "123456789");
    EXPECT_STREQ(c.rx_packets, "4321");
    EXPECT_STREQ(c.tx_bytes, "987654");
    EXPECT_STREQ(c.tx_packets, "321");
    EXPECT_FALSE(parse_netdev_counters(text, "usb", &c));
    EXPECT_FALSE(parse_netdev_counters(text, "", &c));
    EXPECT_FALSE(parse_netdev_counters("  eth0: 1 2 3\n", "eth0", &c));
}

TEST(RadioCache, OnlyNonEmptyFieldsInCacheOrder) {
    Record r;
    strcpy(r.info.CQI, "12");
    strcpy(r.info.QXRSRP, "-95");
    strcpy(r.info.QXRSRP2, "-97");  // second antenna: not cached
    char out[1024];
    compose_module_status_cache(&r.info, out, sizeof out);
    EXPECT_STREQ(out, "\n+QXRSRP: -95\n+QXCQI: 12\n");

    Record empty;
    compose_module_status_cache(&empty.info, out, sizeof out);
    EXPECT_STREQ(out, "\n");
}

TEST(RadioCache, FullRecordFitsAndUnterminatedFieldsStayBounded) {
    Record r;
    // Every byte of the record set: fields without a terminator must not be
    // read past their width.
    memset(&r.info, '9', sizeof r.info);
    char out[1024];
    size_t len = compose_module_status_cache(&r.info, out, sizeof out);
    EXPECT_EQ(len, strlen(out));
    EXPECT_NE(strstr(out, "+QXRRCState: "), nullptr);
    EXPECT_NE(std::string(out).find("+QXGLBCELLID: " + std::string(32, '9') + "\n"),
              std::string::npos);
}

}  // namespace
