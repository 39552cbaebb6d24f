// Connection-tracking readers: the NAT session table and the collection of
// remote addresses that answered the WAN.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cmdlib/internal/conntrack_parse.h"
#include "cmdlib/internal/network_files.h"
#include "cmdlib/network.h"

namespace {

const char *kWan = "10.0.0.2";
const char *kLan = "192.168.1.1";

std::string tcp(const char *state, const char *src, const char *dst, int sport, int dport,
                const char *rsrc, const char *rdst, int rsport, int rdport) {
    char buf[512];
    snprintf(buf, sizeof buf,
             "ipv4     2 tcp      6 431999 %s src=%s dst=%s sport=%d dport=%d src=%s dst=%s "
             "sport=%d dport=%d [ASSURED] mark=0 use=2",
             state, src, dst, sport, dport, rsrc, rdst, rsport, rdport);
    return buf;
}

std::string udp(const char *src, const char *dst, int sport, int dport, const char *rsrc,
                const char *rdst, int rsport, int rdport, bool unreplied = false) {
    char buf[512];
    snprintf(buf, sizeof buf,
             "ipv4     2 udp      17 25 src=%s dst=%s sport=%d dport=%d %ssrc=%s dst=%s sport=%d "
             "dport=%d mark=0 use=2",
             src, dst, sport, dport, unreplied ? "[UNREPLIED] " : "", rsrc, rdst, rsport, rdport);
    return buf;
}

std::string feed(cmdlib::NatSessionParser &p, std::string line) {
    std::vector<char> buf(line.begin(), line.end());
    buf.push_back('\0');
    char out[256];
    size_t n = p.feed(buf.data(), out, sizeof out);
    return n ? std::string(out, n) : "";
}

TEST(NatSessions, TcpAndUdpSessionsWithDirection) {
    cmdlib::NatSessionParser p(kWan, kLan);
    EXPECT_EQ(feed(p, tcp("ESTABLISHED", "192.168.1.100", "93.184.216.34", 51234, 443,
                          "93.184.216.34", kWan, 443, 61000)),
              "TCP|192.168.1.100|51234|61000|93.184.216.34|443|WAN\n");
    EXPECT_EQ(feed(p, udp("192.168.1.100", "8.8.8.8", 5353, 53, "8.8.8.8", kWan, 53, 5353)),
              "UDP|192.168.1.100|5353|5353|8.8.8.8|53|WAN\n");
    // addressed to the router's LAN address: LAN wins even when the reply
    // also goes to the WAN address
    EXPECT_EQ(feed(p, tcp("ESTABLISHED", "192.168.1.100", kLan, 40000, 80, kLan, kWan, 80, 40000)),
              "TCP|192.168.1.100|40000|40000|192.168.1.1|80|LAN\n");
}

TEST(NatSessions, DroppedLines) {
    cmdlib::NatSessionParser p(kWan, kLan);
    // unreplied, not established, neither TCP nor UDP, not IPv4
    for (const std::string &line :
         {udp("192.168.1.100", "8.8.8.8", 5353, 53, "8.8.8.8", kWan, 53, 5353, true),
          tcp("TIME_WAIT", "a", "b", 1, 2, "b", kWan, 2, 1),
          std::string("ipv4     2 icmp     1 29 src=10.0.0.2 dst=1.1.1.1 type=8 code=0 id=1 "
                      "src=1.1.1.1 dst=10.0.0.2 type=0 code=0 id=1 mark=0 use=2"),
          std::string("ipv6     10 tcp      6 300 ESTABLISHED src=::1 dst=::2 sport=1 dport=2 "
                      "src=::2 dst=::1 sport=2 dport=1 [ASSURED] mark=0 use=2")})
        EXPECT_EQ(feed(p, line), "") << line;
}

TEST(NatSessions, ValuesAndDirectionCarryOver) {
    cmdlib::NatSessionParser p(kWan, kLan);
    // neither WAN nor LAN before any match: the direction is empty
    EXPECT_EQ(feed(p, tcp("ESTABLISHED", "192.168.1.5", "1.2.3.4", 1000, 80, "1.2.3.4", "10.9.9.9",
                          80, 1000)),
              "TCP|192.168.1.5|1000|1000|1.2.3.4|80|\n");
    feed(p, tcp("ESTABLISHED", "192.168.1.6", "1.2.3.4", 1001, 80, "1.2.3.4", kWan, 80, 1001));
    // matches neither: keeps the previous session's "WAN"
    EXPECT_EQ(feed(p, tcp("ESTABLISHED", "192.168.1.7", "1.2.3.4", 1002, 80, "1.2.3.4", "10.9.9.9",
                          80, 1002)),
              "TCP|192.168.1.7|1002|1002|1.2.3.4|80|WAN\n");
    // a word that does not parse keeps the previous value
    EXPECT_EQ(feed(p, "ipv4 2 tcp 6 100 ESTABLISHED src=192.168.1.8 dst=1.2.3.4 sport=x dport=80 "
                      "src=1.2.3.4 dst=10.9.9.9 sport=80 dport=1003 [ASSURED]"),
              "TCP|192.168.1.8|1002|1003|1.2.3.4|80|WAN\n");
    // words are cut at their conversion width
    std::string long_ip(60, '7');
    EXPECT_EQ(feed(p, tcp("ESTABLISHED", long_ip.c_str(), "1.2.3.4", 1, 2, "1.2.3.4", kWan, 2, 1)),
              "TCP|" + std::string(31, '7') + "|1|1|1.2.3.4|2|WAN\n");
    // runs of blanks separate words like single blanks
    EXPECT_EQ(feed(p, "ipv4  2  udp  17  20   src=a  dst=b  sport=1  dport=2  src=b  dst=c  "
                      "sport=2  dport=9"),
              "UDP|a|1|9|b|2|WAN\n");
}

class Dir {
  public:
    Dir() {
        char tmpl[] = "/tmp/net_ct_XXXXXX";
        if (!mkdtemp(tmpl)) throw std::runtime_error("mkdtemp");
        path_ = tmpl;
    }
    ~Dir() { system(("rm -rf " + path_).c_str()); }
    std::string file(const char *name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

std::string slurp(const std::string &path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

TEST(NatSessionTable, FileIsPublishedWholeAndCapped) {
    Dir d;
    std::string table = d.file("conntrack"), scratch = d.file("scratch"), out = d.file("out");
    {
        std::ofstream f(table);
        for (int i = 0; i < 300; ++i)
            f << tcp("ESTABLISHED", "192.168.1.100", "1.2.3.4", 10000 + i, 443, "1.2.3.4", kWan,
                     443, 20000 + i)
              << "\n";
    }
    std::ofstream(out) << "old table\n";
    ASSERT_EQ(cmdlib::nat_session_table_from(table.c_str(), kWan, kLan, scratch.c_str(),
                                             out.c_str()),
              0);
    std::string text = slurp(out);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 256);
    EXPECT_EQ(text.substr(0, text.find('\n') + 1), "TCP|192.168.1.100|10000|20000|1.2.3.4|443|WAN\n");
    EXPECT_NE(access(scratch.c_str(), F_OK), 0);  // moved, not copied

    // missing table: scratch left empty, output untouched
    ASSERT_EQ(cmdlib::nat_session_table_from(d.file("none").c_str(), kWan, kLan, scratch.c_str(),
                                             out.c_str()),
              -1);
    EXPECT_EQ(slurp(scratch), "");
    EXPECT_EQ(slurp(out), text);
}

TEST(NatSessionTable, OverlongLinesAreReadInPieces) {
    Dir d;
    std::string table = d.file("conntrack"), scratch = d.file("scratch"), out = d.file("out");
    {
        std::ofstream f(table);
        // 511 bytes a read: the session's words all lie in the first piece
        f << tcp("ESTABLISHED", "192.168.1.9", "1.2.3.4", 1, 443, "1.2.3.4", kWan, 443, 2) << " "
          << std::string(2000, 'z') << "\n";
        f << "ipv6 " << std::string(5000, ' ') << "\n";
    }
    ASSERT_EQ(cmdlib::nat_session_table_from(table.c_str(), kWan, kLan, scratch.c_str(),
                                             out.c_str()),
              0);
    std::string text = slurp(out);
    EXPECT_EQ(text.substr(0, text.find('\n') + 1), "TCP|192.168.1.9|1|2|1.2.3.4|443|WAN\n");
    for (size_t pos = 0, next; pos < text.size(); pos = next + 1) {
        next = text.find('\n', pos);
        ASSERT_NE(next, std::string::npos);
        EXPECT_LT(next - pos, 200u);
    }
}

struct Collector {
    Collector() {
        memset(&info, 0, sizeof info);
        cmdlib::make_collect_context(kWan, "10.0.0.1", &ctx);
    }
    void line(std::string text) {
        info.network_is_ok = 0;
        std::vector<char> buf(text.begin(), text.end());
        buf.push_back('\0');
        cmdlib::collect_conntrack_line(buf.data(), ctx, &info, &max_timeout);
    }
    DestIPInConntrackInfo info;
    cmdlib::CollectContext ctx;
    int max_timeout = 0;
};

std::string icmp_reply(const char *remote, bool unreplied = false) {
    char buf[400];
    snprintf(buf, sizeof buf,
             "ipv4     2 icmp     1 29 src=10.0.0.2 dst=%s type=8 code=0 id=7 %ssrc=%s "
             "dst=10.0.0.2 type=0 code=0 id=7 mark=0 use=1\n",
             remote, unreplied ? "[UNREPLIED] " : "", remote);
    return buf;
}

std::string dns_reply(const char *remote, int life, const char *proto = "udp", int port = 53) {
    char buf[400];
    snprintf(buf, sizeof buf,
             "ipv4     2 %s      17 %d src=10.0.0.2 dst=%s sport=40000 dport=%d src=%s "
             "dst=10.0.0.2 sport=%d dport=40000 [ASSURED] mark=0 use=1\n",
             proto, life, remote, port, remote, port);
    return buf;
}

TEST(Collector, IcmpAnswers) {
    Collector c;
    c.line(icmp_reply("1.1.1.1"));
    EXPECT_EQ(c.info.network_is_ok, 1);
    ASSERT_EQ(c.info.valid_icmp_ip_count, 1);
    EXPECT_STREQ(c.info.icmp_ip_address[0], "1.1.1.1");
    c.line(icmp_reply("1.1.1.1"));
    EXPECT_EQ(c.info.valid_icmp_ip_count, 1);  // no duplicate
    c.line(icmp_reply("10.0.0.1"));               // the gateway proves nothing
    EXPECT_EQ(c.info.network_is_ok, 0);
    EXPECT_EQ(c.info.valid_icmp_ip_count, 1);
    c.line(icmp_reply("9.9.9.9", true));
    EXPECT_EQ(c.info.network_is_ok, 0);
    EXPECT_EQ(c.info.valid_icmp_ip_count, 1);
}

TEST(Collector, LinesThatAreSkipped) {
    Collector c;
    c.line("ipv4 2 icmp 1\n");  // four words
    c.line("ipv6 10 icmp 1 29 src=2.2.2.2 dst=10.0.0.2 type=0 code=0\n");
    // "dst=10.0.0.20" contains the text but is not the exact word
    c.line("ipv4 2 icmp 1 29 src=3.3.3.3 dst=10.0.0.20 type=0 code=0\n");
    EXPECT_EQ(c.info.valid_icmp_ip_count, 0);
    EXPECT_EQ(c.info.network_is_ok, 0);
    // no "src=" word before the WAN word: no remote, but still live traffic
    c.line("ipv4 2 icmp 1 29 dst=10.0.0.2 type=0 code=0\n");
    EXPECT_EQ(c.info.valid_icmp_ip_count, 0);
    EXPECT_EQ(c.info.network_is_ok, 1);
}

TEST(Collector, DnsWebSipGreAndFreshness) {
    Collector c;
    c.line(dns_reply("8.8.8.8", 170));
    EXPECT_EQ(c.max_timeout, 170);
    EXPECT_EQ(c.info.network_is_ok, 1);
    EXPECT_STREQ(c.info.dns_ip[0], "8.8.8.8");
    c.line(dns_reply("8.8.4.4", 50));  // 170 - 50 = 120 < 121: still fresh
    EXPECT_EQ(c.info.network_is_ok, 1);
    c.line(dns_reply("8.8.4.4", 49));  // 121: stale
    EXPECT_EQ(c.info.network_is_ok, 0);
    EXPECT_EQ(c.info.valid_dns_ip_count, 2);
    c.line(dns_reply("5.5.5.5", 100, "tcp", 443));
    EXPECT_EQ(c.info.network_is_ok, 0);  // web answers don't prove freshness
    EXPECT_EQ(c.info.valid_dns_ip_count, 3);
    c.line(dns_reply("6.6.6.6", 100, "tcp", 80));
    c.line(dns_reply("7.7.7.7", 160, "udp", 5060));
    EXPECT_EQ(c.info.network_is_ok, 1);
    EXPECT_EQ(c.info.valid_dns_ip_count, 5);
    c.line("ipv4 2 gre 47 400 src=10.0.0.2 dst=4.4.4.4 srckey=0x0 dstkey=0x0 src=4.4.4.4 "
           "dst=10.0.0.2 srckey=0x0 dstkey=0x0 [ASSURED] mark=0 use=1\n");
    EXPECT_EQ(c.max_timeout, 400);
    EXPECT_EQ(c.info.valid_dns_ip_count, 6);
    // DNS answer that is not assured counts for nothing
    std::string unassured = dns_reply("3.3.3.3", 500);
    unassured.replace(unassured.find("[ASSURED]"), 9, "[OTHER]");
    c.line(unassured);
    EXPECT_EQ(c.max_timeout, 400);
    EXPECT_EQ(c.info.valid_dns_ip_count, 6);
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
    EXPECT_STREQ(info.dns_ip[31], "10.1.0.31");
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
    EXPECT_EQ(info.valid_icmp_ip_count, 1);

    // over-long text is stored cut and still recognised as a duplicate
    std::string longip(40, '1');
    DestIPInConntrackInfo l;
    memset(&l, 0, sizeof l);
    util_add_ip_to_buffer(&longip[0], 0, &l);
    util_add_ip_to_buffer(&longip[0], 0, &l);
    EXPECT_EQ(l.valid_icmp_ip_count, 1);
    EXPECT_EQ(strlen(l.icmp_ip_address[0]), 23u);
    // an empty address is never stored, nor taken for an empty slot
    DestIPInConntrackInfo e;
    memset(&e, 0, sizeof e);
    char empty[] = "", one[] = "1.1.1.1";
    util_add_ip_to_buffer(one, 1, &e);
    util_add_ip_to_buffer(empty, 1, &e);
    util_add_ip_to_buffer(empty, 0, &e);
    EXPECT_EQ(e.valid_dns_ip_count, 1);
    EXPECT_EQ(e.valid_icmp_ip_count, 0);
    EXPECT_STREQ(e.dns_ip[0], "1.1.1.1");
    util_add_ip_to_buffer(&longip[0], 7, &l);
    util_add_ip_to_buffer(nullptr, 0, &l);
    util_add_ip_to_buffer(&longip[0], 0, nullptr);
    EXPECT_EQ(l.valid_icmp_ip_count, 1);
    EXPECT_EQ(l.valid_dns_ip_count, 0);
}

TEST(Collector, FileReaderAndLongTable) {
    Dir d;
    std::string table = d.file("conntrack");
    {
        std::ofstream f(table);
        for (int i = 0; i < 20000; ++i)
            f << tcp("ESTABLISHED", "192.168.1.100", "1.2.3.4", i, 443, "1.2.3.4", "10.9.9.9", 443,
                     i)
              << "\n";
        f << icmp_reply("1.0.0.1") << dns_reply("9.9.9.9", 100);
        f << std::string(3000, 'q') << " dst=10.0.0.2 type=0 code=0\n";
    }
    Collector c;
    ASSERT_EQ(cmdlib::collect_conntrack_file(table.c_str(), c.ctx, &c.info, &c.max_timeout), 0);
    EXPECT_EQ(c.info.valid_icmp_ip_count, 1);
    EXPECT_EQ(c.info.valid_dns_ip_count, 1);
    EXPECT_EQ(cmdlib::collect_conntrack_file(d.file("none").c_str(), c.ctx, &c.info,
                                             &c.max_timeout),
              -1);
}

}  // namespace
