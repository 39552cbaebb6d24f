// Attached-device tables: neighbour listing, ARP, PPPoE, switch ports,
// Wi-Fi stations, the pair merge, leases and the lease/scan join.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/neigh_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"

using cmdlib::TextLineReader;

namespace {

struct TempFile {
    explicit TempFile(const std::string &text) {
        char tmpl[] = "/tmp/net_neigh_XXXXXX";
        int fd = mkstemp(tmpl);
        if (fd < 0) throw std::runtime_error("mkstemp");
        close(fd);
        path = tmpl;
        std::ofstream(path) << text;
    }
    ~TempFile() { unlink(path.c_str()); }
    std::string path;
};

Neighbour_Info parse_neigh(const std::string &text, bool ll = false, bool global = false) {
    Neighbour_Info info;
    memset(&info, 0x5a, sizeof info);
    TextLineReader<256> r(text);
    cmdlib::parse_neigh_listing(r, &info, ll, global);
    return info;
}

TEST(Neighbours, FieldsStatesAndFilters) {
    std::string text =
        "fe80::1 dev br0 lladdr 00:11:22:33:44:55 router REACHABLE\n"
        "2001:db8::5 dev br0 lladdr aa:bb:cc:dd:ee:ff STALE\n"
        "2001:db8::6 dev br0  FAILED\n"
        "2001:db8::7 dev br0 INCOMPLETE\n"
        "2001:db8::8/64 dev br0 lladdr\t11:22:33:44:55:66/x PROBE\n"
        "2001:db8::9 dev br0 DELAY\n"
        "\t fe80::2 dev br0 lladdr 02:00:00:00:00:02 PERMANENT\n";
    const struct {
        const char *ip, *mac;
        int status, router;
    } want[] = {
        {"fe80::1", "00:11:22:33:44:55", 5, 1},
        {"2001:db8::5", "aa:bb:cc:dd:ee:ff", 4, 0},
        {"2001:db8::8", "11:22:33:44:55:66", 2, 0},  // '/' ends a word
        {"2001:db8::9", "", 3, 0},                   // no lladdr
        {"fe80::2", "02:00:00:00:00:02", 0, 0},
    };
    Neighbour_Info all = parse_neigh(text);
    ASSERT_EQ(all.neighbour_count, 5);
    for (int i = 0; i < 5; ++i) {
        const Neighbour_T &n = all.neighbours[i];
        EXPECT_STREQ(n.ipv6_addr, want[i].ip) << i;
        EXPECT_STREQ(n.mac_addr, want[i].mac) << i;
        EXPECT_EQ(n.status, want[i].status) << i;
        EXPECT_EQ(n.is_router, want[i].router) << i;
    }
    Neighbour_Info ll = parse_neigh(text, true, false);
    ASSERT_EQ(ll.neighbour_count, 2);
    EXPECT_STREQ(ll.neighbours[1].ipv6_addr, "fe80::2");
    EXPECT_EQ(parse_neigh(text, false, true).neighbour_count, 3);
}

TEST(Neighbours, CapAndOverlongWords) {
    std::string text;
    for (int i = 0; i < 15; ++i)
        text += "2001:db8::" + std::to_string(i) + " dev br0 lladdr 00:00:00:00:00:01 REACHABLE\n";
    Neighbour_Info info = parse_neigh(text);
    ASSERT_EQ(info.neighbour_count, 10);
    EXPECT_STREQ(info.neighbours[9].ipv6_addr, "2001:db8::9");

    Neighbour_Info one =
        parse_neigh(std::string(200, 'a') + " lladdr " + std::string(40, 'b') + "\n");
    ASSERT_EQ(one.neighbour_count, 1);
    EXPECT_EQ(std::string(one.neighbours[0].ipv6_addr), std::string(63, 'a'));
    EXPECT_EQ(std::string(one.neighbours[0].mac_addr), std::string(31, 'b'));
}

const char kArpHeader[] =
    "IP address       HW type     Flags       HW address            Mask     Device\n";

TEST(ArpTable, CompleteRowsOfOneDeviceUpToForty) {
    std::string text = std::string(kArpHeader) +
                       "192.168.1.10     0x1         0x2         00:11:22:33:44:55     *        br0\n"
                       "192.168.1.11     0x1         0x0         00:00:00:00:00:00     *        br0\n"
                       "10.0.0.1         0x1         0x2         66:77:88:99:aa:bb     *        usb0\n"
                       "192.168.1.12     0x1         0x6         00:11:22:33:44:66     *        br0   \n"
                       "bad line\n"
                       "1.2.3.4 0x1 0 aa * br0\n";  // flags without the 0x prefix: 0
    ARPTable t;
    TextLineReader<256> r(text);
    cmdlib::parse_arp_rows(r, &t, "br0");
    ASSERT_EQ(t.count, 2u);
    EXPECT_STREQ(t.table[0].ip, "192.168.1.10");
    EXPECT_STREQ(t.table[0].mac, "00:11:22:33:44:55");
    EXPECT_STREQ(t.table[1].ip, "192.168.1.12");
    TextLineReader<256> any(text);
    cmdlib::parse_arp_rows(any, &t, "");
    EXPECT_EQ(t.count, 3u);

    text = kArpHeader;
    for (int i = 0; i < 60; ++i)
        text += "192.168.1." + std::to_string(i) + " 0x1 0x2 00:11:22:33:44:55 * br0\n";
    TextLineReader<256> many(text);
    cmdlib::parse_arp_rows(many, &t, nullptr);
    ASSERT_EQ(t.count, 40u);
    EXPECT_STREQ(t.table[39].ip, "192.168.1.39");
}

TEST(Pppoe, SessionsUsersAndPorts) {
    TempFile pppoe(
        "Id       Address              Device     User\n"
        "00000001 00:11:22:33:44:55        br0 \"alice\\\"\n"
        "00000002 00:11:22:33:44:66        br0\n"
        "00000003 00:11:22:33:44:77       eth1 carol\n"
        "00000004 00:11:22:33:44:88        br0 " +
        std::string(150, 'u') + "\n");
    // switch table: physical port 3 is label "1", 5 is "3"; out-of-map
    // port numbers and unknown MACs change nothing
    TempFile ports(
        "00:11:22:33:44:55 3\n"
        "00:11:22:33:44:66 5 \n"
        "00:11:22:33:44:88 99\n"
        "00:11:22:33:44:88 -1\n"
        "ff:ff:ff:ff:ff:ff 2\n"
        "lonely\n");
    ARPTable t;
    ASSERT_EQ(cmdlib::read_pppoe_table_file(pppoe.path.c_str(), &t, "br0"), 0);
    ASSERT_EQ(t.count, 3u);  // the eth1 session is not the bridge's
    EXPECT_STREQ(t.table[0].ip, "00000001");
    EXPECT_EQ(cmdlib::apply_switch_ports_file("/nonexistent/table", &t), -1);
    EXPECT_EQ(cmdlib::read_pppoe_table_file("/nonexistent/pppoe", &t, "br0"), -1);
    EXPECT_EQ(t.count, 0u);

    // users lose quotes and backslashes and are cut at 99 bytes
    char list[512];
    cmdlib::pppoe_users_from(pppoe.path.c_str(), ports.path.c_str(), list, sizeof list);
    EXPECT_EQ(std::string(list), "alice/00:11:22:33:44:55/1,/00:11:22:33:44:66/3," +
                                     std::string(99, 'u') + "/00:11:22:33:44:88/");
    char small[20];
    cmdlib::pppoe_users_from(pppoe.path.c_str(), ports.path.c_str(), small, sizeof small);
    EXPECT_STREQ(small, "alice/00:11:22:33:4");
}

void merge(ARPTable *t, const std::string &text, int ip_first, int action) {
    TextLineReader<256> r(text);
    cmdlib::merge_pair_lines(r, ip_first, t, action);
}

TEST(PairMerge, AddRemoveAndCompact) {
    ARPTable t;
    memset(&t, 0, sizeof t);
    merge(&t,
          "00:00:00:00:00:01 192.168.1.1\n"
          "00:00:00:00:00:02 192.168.1.2\n"
          "00:00:00:00:00:03\t192.168.1.3  \n"
          "00:00:00:00:00:01 192.168.1.1\n"  // already there
          "one two three\n"
          "lonely\n",
          0, 1);
    ASSERT_EQ(t.count, 3u);
    EXPECT_STREQ(t.table[2].ip, "192.168.1.3");

    // IP-first columns; case-insensitive: same pair in other case is no conflict
    merge(&t, "192.168.1.2 00:00:00:00:00:0A\n", 1, 2);  // same IP, other MAC: .2 removed
    ASSERT_EQ(t.count, 2u);
    EXPECT_STREQ(t.table[0].ip, "192.168.1.1");
    EXPECT_STREQ(t.table[1].ip, "192.168.1.3");  // moved up, order kept
    EXPECT_STREQ(t.table[2].ip, "");
    merge(&t, "192.168.1.3 00:00:00:00:00:03\n192.168.1.1 00:00:00:00:00:01\n", 1, 3);
    EXPECT_EQ(t.count, 2u);
    // MAC moved to another IP: the old row is cleared first, so the new
    // pair takes its slot
    merge(&t, "192.168.1.9 00:00:00:00:00:01\n", 1, 3);
    ASSERT_EQ(t.count, 2u);
    EXPECT_STREQ(t.table[0].ip, "192.168.1.9");
    EXPECT_STREQ(t.table[1].ip, "192.168.1.3");

    // rejected lines: over-long IP or MAC, other column orders
    merge(&t, std::string(64, '1') + " aa\n" + "aa " + std::string(64, '1') + "\n", 1, 1);
    merge(&t, "192.168.1.50 " + std::string(32, 'a') + "\n", 1, 1);
    merge(&t, "192.168.1.51 00:00:00:00:00:51\n", 2, 1);
    EXPECT_EQ(t.count, 2u);
}

TEST(PairMerge, FullTableDropsNewPairButStillRemovesConflicts) {
    ARPTable t;
    memset(&t, 0, sizeof t);
    std::string text;
    for (int i = 0; i < 45; ++i)
        text += "aa:00:00:00:00:" + std::to_string(10 + i) + " 10.0.0." + std::to_string(i) + "\n";
    merge(&t, text, 0, 1);
    ASSERT_EQ(t.count, 40u);
    EXPECT_STREQ(t.table[39].ip, "10.0.0.39");
    // new MAC for 10.0.0.5: with removal the old row goes and the new pair fits
    merge(&t, "bb:00:00:00:00:05 10.0.0.5\n", 0, 3);
    ASSERT_EQ(t.count, 40u);
    EXPECT_STREQ(t.table[5].ip, "10.0.0.5");
    EXPECT_STREQ(t.table[5].mac, "bb:00:00:00:00:05");
    // a conflicting pair that is only removed (no add): the table shrinks
    merge(&t, "cc:00:00:00:00:00 10.0.0.0\n", 0, 2);
    ASSERT_EQ(t.count, 39u);
    EXPECT_STREQ(t.table[0].ip, "10.0.0.1");
    // full again: an unrelated new pair is dropped
    merge(&t, "dd:00:00:00:00:01 10.0.1.1\ndd:00:00:00:00:02 10.0.1.2\n", 0, 1);
    ASSERT_EQ(t.count, 40u);
    EXPECT_STREQ(t.table[39].ip, "10.0.1.1");
}

TEST(Leases, HostsAndRemainingTime) {
    std::string text =
        "1000 00:11:22:33:44:55 192.168.1.10 laptop 01:00:11:22:33:44:55\n"
        "500 00:11:22:33:44:66 192.168.1.11 * *\n"
        "garbage 00:11:22:33:44:77 192.168.1.12 phone\n"
        "too few\n"
        "99999999999999 00:11:22:33:44:88 192.168.1.13 " +
        std::string(100, 'h') + "\r\n";
    AllHostsInfo h;
    memset(&h, 0, sizeof h);
    TextLineReader<512> r(text);
    cmdlib::read_lease_hosts(r, 700, &h);
    ASSERT_EQ(h.count, 4);
    EXPECT_EQ(h.host[0].leases, 300);
    EXPECT_STREQ(h.host[0].host_name, "laptop");
    EXPECT_EQ(h.host[0].stat, 1);
    EXPECT_EQ(h.host[0].addr_src, 0);
    EXPECT_EQ(h.host[1].leases, 0);  // expired
    EXPECT_EQ(h.host[2].leases, 0);  // garbage expiry reads as 0
    EXPECT_EQ(h.host[3].leases, 2147483647 - 700);  // saturated, then reduced
    EXPECT_EQ(std::string(h.host[3].host_name), std::string(63, 'h'));

    std::string many;
    for (int i = 0; i < 100; ++i) many += "1 m" + std::to_string(i) + " ip host\n";
    TextLineReader<512> m(many);
    cmdlib::read_lease_hosts(m, 0, &h);
    EXPECT_EQ(h.count, 80);
}

TEST(ConnectedDevices, LeasesJoinedWithScan) {
    AllHostsInfo h;
    memset(&h, 0, sizeof h);
    TextLineReader<512> leases(
        "900 00:00:00:00:00:01 192.168.1.10 same\n"
        "900 00:00:00:00:00:02 192.168.1.20 ipstolen\n"
        "900 00:00:00:00:00:03 192.168.1.30 moved\n"
        "900 00:00:00:00:00:04 192.168.1.40 gone\n");
    cmdlib::read_lease_hosts(leases, 600, &h);
    ARPTable scan;
    memset(&scan, 0, sizeof scan);
    merge(&scan,
          "00:00:00:00:00:01 192.168.1.10\n"
          "00:00:00:00:00:99 192.168.1.20\n"
          "00:00:00:00:00:03 192.168.1.31\n"
          "00:00:00:00:00:50 192.168.1.50\n",
          0, 1);
    cmdlib::merge_hosts_with_scan(&h, &scan);
    const struct {
        const char *mac, *ip, *name;
        int leases, addr_src, stat;
    } want[] = {
        {"00:00:00:00:00:01", "192.168.1.10", "same", 300, 0, 1},
        // address now used by another MAC: no name, from the scan, online
        {"00:00:00:00:00:99", "192.168.1.20", "", 0, 1, 1},
        {"00:00:00:00:00:03", "192.168.1.31", "moved", 0, 1, 1},  // same MAC keeps its name
        {"00:00:00:00:00:04", "192.168.1.40", "gone", 300, 0, 0},  // no scan row: offline
        {"00:00:00:00:00:50", "192.168.1.50", "", 0, 1, 1},      // unused scan row appended
    };
    ASSERT_EQ(h.count, 5);
    for (int i = 0; i < 5; ++i) {
        const OneHost &o = h.host[i];
        EXPECT_STREQ(o.mac, want[i].mac) << i;
        EXPECT_STREQ(o.ip, want[i].ip) << i;
        EXPECT_STREQ(o.host_name, want[i].name) << i;
        EXPECT_EQ(o.leases, want[i].leases) << i;
        EXPECT_EQ(o.addr_src, want[i].addr_src) << i;
        EXPECT_EQ(o.stat, want[i].stat) << i;
    }
}

TEST(ConnectedDevices, NeverMoreThanEightyHosts) {
    AllHostsInfo h;
    memset(&h, 0, sizeof h);
    std::string text;
    for (int i = 0; i < 79; ++i) text += "1 aa:" + std::to_string(i) + " 10.0.0." + std::to_string(i) + " h\n";
    TextLineReader<512> r(text);
    cmdlib::read_lease_hosts(r, 0, &h);
    ARPTable scan;
    memset(&scan, 0, sizeof scan);
    std::string rows;
    for (int i = 0; i < 40; ++i) rows += "bb:" + std::to_string(i) + " 10.1.0." + std::to_string(i) + "\n";
    merge(&scan, rows, 0, 1);
    cmdlib::merge_hosts_with_scan(&h, &scan);
    EXPECT_EQ(h.count, 80);
    EXPECT_STREQ(h.host[79].ip, "10.1.0.0");
}

}  // namespace
