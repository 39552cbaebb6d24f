// Attached-device tables: the neighbour listing, ARP rows, the pair merge,
// leases and their join with a scan are golden cases (tests/golden/
// neigh, arp, arp_merge, hosts); PPPoE sessions, switch ports and the
// neighbour file go through their file readers.
#include <gtest/gtest.h>

#include <string>

#include "base/internal/line_reader.h"
#include "cmdlib/internal/neigh_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"
#include "common/golden.h"
#include "common/scratch.h"

using cmdlib::TextLineReader;

namespace {

std::string rows_of(const ARPTable &t) {
    std::string out = "count " + std::to_string(t.count) + "\n";
    for (unsigned i = 0; i < t.count && i < ARP_TABLE_SIZE; ++i)
        out += std::string(t.table[i].ip) + " " + t.table[i].mac + "\n";
    return out;
}

std::string hosts_of(const AllHostsInfo &h) {
    std::string out = "count " + std::to_string(h.count) + "\n";
    for (int i = 0; i < h.count && i < ALL_HOSTS_MAX; ++i) {
        const OneHost &o = h.host[i];
        out += std::string(o.mac) + " " + o.ip + " name=" + o.host_name + " leases=" + std::to_string(o.leases) +
               " src=" + std::to_string(o.addr_src) + " online=" + std::to_string(o.stat) + "\n";
    }
    return out;
}

TEST(Neighbours, Golden) {
    // every neighbour, then the link-local ones, then the global ones
    golden::check("neigh", [](const std::string &text) {
        std::string out;
        for (auto [title, ll, global] : {std::tuple{"all", false, false}, {"link-local", true, false}, {"global", false, true}}) {
            Neighbour_Info info;
            memset(&info, 0x5a, sizeof info);
            TextLineReader<256> r(text);
            cmdlib::parse_neigh_listing(r, &info, ll, global);
            out += std::string(title) + " " + std::to_string(info.neighbour_count) + "\n";
            for (int i = 0; i < info.neighbour_count; ++i)
                out += std::string(info.neighbours[i].ipv6_addr) + " mac=" + info.neighbours[i].mac_addr +
                       " status=" + std::to_string(info.neighbours[i].status) +
                       " router=" + std::to_string(info.neighbours[i].is_router) + "\n";
        }
        return out;
    });
}

TEST(ArpTable, Golden) {
    // the rows of br0, then of any device
    golden::check("arp", [](const std::string &text) {
        std::string out;
        for (const char *dev : {"br0", ""}) {
            ARPTable t;
            TextLineReader<256> r(text);
            cmdlib::parse_arp_rows(r, &t, dev);
            out += "device '" + std::string(dev) + "' " + rows_of(t);
        }
        return out;
    });
}

TEST(PairMerge, Golden) {
    // "# <column order> <action>" blocks merged into one table, shown after each
    golden::check("arp_merge", [](const std::string &text) {
        ARPTable t;
        memset(&t, 0, sizeof t);
        std::string out;
        for (const golden::Block &b : golden::blocks(text)) {
            int order = b.header.rfind("mac-first", 0) == 0 ? 0 : b.header.rfind("ip-first", 0) == 0 ? 1 : 2;
            int action = b.header.find(" add") != std::string::npos      ? cmdlib::kArpAdd
                         : b.header.find(" remove") != std::string::npos ? cmdlib::kArpRemoveConflicts
                                                                         : cmdlib::kArpAdd | cmdlib::kArpRemoveConflicts;
            TextLineReader<256> r(b.body);
            cmdlib::merge_pair_lines(r, order, &t, action);
            out += "# " + b.header + "\n" + rows_of(t);
        }
        return out;
    });
}

TEST(Hosts, Golden) {
    // "# leases NOW" appends lease hosts; "# join" joins them with the scan
    // rows of its body; the hosts are shown after each block
    golden::check("hosts", [](const std::string &text) {
        AllHostsInfo h;
        memset(&h, 0, sizeof h);
        std::string out;
        for (const golden::Block &b : golden::blocks(text)) {
            if (b.header.rfind("leases ", 0) == 0) {
                TextLineReader<512> r(b.body);
                cmdlib::read_lease_hosts(r, std::stoll(b.header.substr(7)), &h);
            } else {
                ARPTable scan;
                memset(&scan, 0, sizeof scan);
                TextLineReader<256> r(b.body);
                cmdlib::merge_pair_lines(r, 0, &scan, cmdlib::kArpAdd);
                cmdlib::merge_hosts_with_scan(&h, &scan);
            }
            out += "# " + b.header + "\n" + hosts_of(h);
        }
        return out;
    });
}

class NeighFiles : public ScratchDir {};

TEST_F(NeighFiles, PppoeSessionsUsersAndSwitchPorts) {
    std::string pppoe = write("pppoe",
                              "Id       Address              Device     User\n"
                              "00000001 00:11:22:33:44:55        br0 \"alice\\\"\n"
                              "00000002 00:11:22:33:44:66        br0\n"
                              "00000003 00:11:22:33:44:77       eth1 carol\n"
                              "00000004 00:11:22:33:44:88        br0 " + std::string(150, 'u') + "\n");
    // physical port 3 is label "1", 5 is "3"; out-of-map ports and unknown MACs change nothing
    std::string ports = write("ports",
                              "00:11:22:33:44:55 3\n00:11:22:33:44:66 5 \n00:11:22:33:44:88 99\n"
                              "00:11:22:33:44:88 -1\nff:ff:ff:ff:ff:ff 2\nlonely\n");
    ARPTable t;
    ASSERT_EQ(cmdlib::read_pppoe_table_file(pppoe.c_str(), &t, "br0"), 0);
    EXPECT_EQ(rows_of(t), "count 3\n00000001 00:11:22:33:44:55\n00000002 00:11:22:33:44:66\n00000004 00:11:22:33:44:88\n");
    EXPECT_EQ(cmdlib::apply_switch_ports_file(path("none").c_str(), &t), -1);
    EXPECT_EQ(cmdlib::read_pppoe_table_file(path("none").c_str(), &t, "br0"), -1);
    EXPECT_EQ(t.count, 0u);
    // users lose quotes and backslashes and are cut at 99 bytes
    char list[512], small[20];
    cmdlib::pppoe_users_from(pppoe.c_str(), ports.c_str(), list, sizeof list);
    EXPECT_EQ(std::string(list), "alice/00:11:22:33:44:55/1,/00:11:22:33:44:66/3," + std::string(99, 'u') + "/00:11:22:33:44:88/");
    cmdlib::pppoe_users_from(pppoe.c_str(), ports.c_str(), small, sizeof small);
    EXPECT_STREQ(small, "alice/00:11:22:33:4");
}

TEST_F(NeighFiles, NeighbourFileAsIpSavesIt) {
    // "ip -6 neigh show dev br0" output as the firmware saves it
    std::string f = write("neigh6", "2001:db8:1::1 lladdr 02:00:00:00:02:01 STALE\n"
                                    "fe80::99 lladdr 02:00:00:00:02:99 router REACHABLE\n");
    Neighbour_Info info;
    ASSERT_EQ(util_parse_neigh_info(f.c_str(), &info, 1, 0), 0);
    ASSERT_EQ(info.neighbour_count, 1);
    EXPECT_STREQ(info.neighbours[0].mac_addr, "02:00:00:00:02:99");
    EXPECT_EQ(info.neighbours[0].is_router, 1);
    EXPECT_EQ(util_parse_neigh_info(path("none").c_str(), &info, 0, 0), -1);
}

}  // namespace
