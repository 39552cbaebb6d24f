// Connection-tracking readers: the NAT session table and the collection of
// remote addresses that answered the WAN.  The line rules are golden cases
// (tests/golden/nat_sessions, conntrack_collector) fed line by line to
// one parser, so what carries over from line to line shows too.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/libbase.h"
#include "cmdlib/internal/conntrack_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"
#include "common/golden.h"
#include "common/scratch.h"

namespace {

const char *kWan = "10.0.0.2";
const char *kLan = "192.168.1.1";

std::string session(const char *src, int sport, int rdport, const char *rdst = kWan) {
    char buf[400];
    snprintf(buf, sizeof buf,
             "ipv4     2 tcp      6 431999 ESTABLISHED src=%s dst=1.2.3.4 sport=%d dport=443 src=1.2.3.4 "
             "dst=%s sport=443 dport=%d [ASSURED] mark=0 use=2\n",
             src, sport, rdst, rdport);
    return buf;
}

TEST(NatSessions, Golden) {
    // each line's table line, or "-" when it is dropped
    golden::check("nat_sessions", [](const std::string &text) {
        cmdlib::NatSessionParser p(kWan, kLan);
        return golden::per_line([&p](const std::string &line) {
            char out[256];
            size_t n = p.feed(line, out, sizeof out);
            return n ? std::string(out, n - 1) : std::string("-");
        })(text);
    });
}

std::string list(const char (*slots)[CONNTRACK_IP_WIDTH], int count) {
    std::string out;
    for (int i = 0; i < count; ++i) out += std::string(i ? "," : "") + slots[i];
    return out;
}

TEST(Collector, Golden) {
    // after each line: whether it proved the network, the longest lifetime
    // seen, the ICMP and the DNS lists
    golden::check("conntrack_collector", [](const std::string &text) {
        DestIPInConntrackInfo info;
        memset(&info, 0, sizeof info);
        cmdlib::CollectContext ctx;
        cmdlib::make_collect_context(kWan, "10.0.0.1", &ctx);
        int max_timeout = 0;
        return golden::per_line([&](const std::string &line) {
            info.network_is_ok = 0;
            cmdlib::collect_conntrack_line(line, ctx, &info, &max_timeout);
            return "ok=" + std::to_string(info.network_is_ok) + " max=" + std::to_string(max_timeout) +
                   " icmp=" + list(info.icmp_ip_address, info.valid_icmp_ip_count) +
                   " dns=" + list(info.dns_ip, info.valid_dns_ip_count);
        })(text);
    });
}

TEST(Collector, AddressLists) {
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    char ip[32];
    for (int i = 0; i < 33; ++i) {
        snprintf(ip, sizeof ip, "10.1.0.%d", i);
        util_add_ip_to_buffer(ip, 1, &info);
    }
    EXPECT_EQ(info.valid_dns_ip_count, 32);  // the 33rd is dropped
    char again[] = "10.1.0.3";
    util_add_ip_to_buffer(again, 1, &info);
    EXPECT_EQ(info.valid_dns_ip_count, 32);
    // proven by ping: leaves the DNS list, later slots move up
    util_add_ip_to_buffer(again, 0, &info);
    EXPECT_EQ(info.valid_icmp_ip_count, 1);
    EXPECT_EQ(info.valid_dns_ip_count, 31);
    EXPECT_STREQ(info.dns_ip[3], "10.1.0.4");
    EXPECT_STREQ(info.dns_ip[31], "");
    // a DNS addition does not look at the ICMP list
    util_add_ip_to_buffer(again, 1, &info);
    EXPECT_EQ(info.valid_dns_ip_count, 32);

    // over-long text is stored cut and still recognised as a duplicate; an
    // empty address is never stored, nor taken for an empty slot
    DestIPInConntrackInfo l;
    memset(&l, 0, sizeof l);
    std::string longip(40, '1');
    char empty[] = "", one[] = "1.1.1.1";
    for (char *a : {&longip[0], &longip[0], empty, one, empty}) util_add_ip_to_buffer(a, a == one ? 1 : 0, &l);
    EXPECT_EQ(list(l.icmp_ip_address, l.valid_icmp_ip_count), std::string(23, '1'));
    EXPECT_EQ(list(l.dns_ip, l.valid_dns_ip_count), "1.1.1.1");
    util_add_ip_to_buffer(&longip[0], 7, &l);
    util_add_ip_to_buffer(nullptr, 0, &l);
    util_add_ip_to_buffer(&longip[0], 0, nullptr);
    EXPECT_EQ(l.valid_icmp_ip_count + l.valid_dns_ip_count, 2);
}

class ConntrackFiles : public ScratchDir {};

TEST_F(ConntrackFiles, SessionTableIsPublishedWholeCappedAndReadInPieces) {
    std::string text = session("192.168.1.9", 1, 2) + " " + std::string(2000, 'z') + "\n" +  // words all in the first 511 bytes
                       "ipv6 " + std::string(5000, ' ') + "\n";
    for (int i = 0; i < 300; ++i) text += session("192.168.1.100", 10000 + i, 20000 + i);
    std::string table = write("conntrack", text), scratch = path("scratch"), out = write("out", "old table\n");
    ASSERT_EQ(cmdlib::nat_session_table_from(table.c_str(), kWan, kLan, scratch.c_str(), out.c_str()), 0);
    std::string got = read(out);
    EXPECT_EQ(std::count(got.begin(), got.end(), '\n'), 256);
    EXPECT_EQ(got.substr(0, got.find('\n') + 1), "TCP|192.168.1.9|1|2|1.2.3.4|443|WAN\n");
    EXPECT_EQ(got.find("zzz"), std::string::npos);
    EXPECT_FALSE(cmd_file_exist(scratch.c_str()));  // moved, not copied
    // missing table: scratch left empty, output untouched
    ASSERT_EQ(cmdlib::nat_session_table_from(path("none").c_str(), kWan, kLan, scratch.c_str(), out.c_str()), -1);
    EXPECT_EQ(read(scratch), "");
    EXPECT_EQ(read(out), got);
}

TEST_F(ConntrackFiles, CollectorReadsALongTable) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += session("192.168.1.100", i, i, "10.9.9.9");
    text += "ipv4 2 icmp 1 29 src=10.0.0.2 dst=1.0.0.1 type=8 code=0 id=7 src=1.0.0.1 dst=10.0.0.2 type=0 code=0 id=7\n" +
            std::string(3000, 'q') + " dst=10.0.0.2 type=0 code=0\n" + session("9.9.9.9", 1, 1);
    DestIPInConntrackInfo info;
    memset(&info, 0, sizeof info);
    cmdlib::CollectContext ctx;
    cmdlib::make_collect_context(kWan, "10.0.0.1", &ctx);
    int max_timeout = 0;
    ASSERT_EQ(cmdlib::collect_conntrack_file(write("conntrack", text).c_str(), ctx, &info, &max_timeout), 0);
    EXPECT_EQ(list(info.icmp_ip_address, info.valid_icmp_ip_count), "1.0.0.1");
    EXPECT_EQ(list(info.dns_ip, info.valid_dns_ip_count), "1.2.3.4");
    EXPECT_EQ(cmdlib::collect_conntrack_file(path("none").c_str(), ctx, &info, &max_timeout), -1);
}

}  // namespace
