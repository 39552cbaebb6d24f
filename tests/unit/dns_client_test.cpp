// The DNS client on bytes: questions against golden files, the address
// test, the answer walk over answers recorded from dnsmasq and hostile ones
// (tests/golden/dns/walk.cases), the answer queue, and the resolver through
// the C API where it needs no server.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/internal/dns_wire.h"
#include "common/golden.h"

namespace {

namespace dns = cmdlib::dns;
using golden::to_hex;

const unsigned char *uc(const std::string &s) { return reinterpret_cast<const unsigned char *>(s.c_str()); }
std::string str(const uint8_t *p, size_t n) { return std::string(reinterpret_cast<const char *>(p), n); }

TEST(DnsQuestion, ProbeAndResolverQuestions) {
    uint8_t buf[dns::kResolverBufferSize];
    for (uint16_t qtype : {dns::kTypeA, dns::kTypeAAAA}) {
        size_t n = dns::build_probe_query(buf, dns::kProbeBufferSize, "router.test", qtype);
        EXPECT_EQ(to_hex(str(buf, n)), to_hex(golden::hex_file(qtype == dns::kTypeA ? "dns/probe_router_test_a.hex"
                                                                                   : "dns/probe_router_test_aaaa.hex")));
    }
    EXPECT_EQ(dns::build_probe_query(buf, dns::kProbeBufferSize, std::string(1006, 'a'), 1), 1024u);
    EXPECT_EQ(dns::build_probe_query(buf, dns::kProbeBufferSize, std::string(1007, 'a'), 1), 0u);

    std::string want = golden::hex_file("dns/query_router_test.hex");
    want[0] = static_cast<char>(getpid() >> 8 & 0xff);
    want[1] = static_cast<char>(getpid() & 0xff);
    memset(buf, 0xee, sizeof buf);  // a dirty buffer changes nothing
    EXPECT_EQ(to_hex(str(buf, static_cast<size_t>(build_quest_payload(buf, sizeof buf, uc("router.test"), 12)))),
              to_hex(want));
    // name lengths: an empty label ends the name; 252 characters are the
    // most encoded, 253 (domain_len 254) give an empty name
    struct {
        std::string domain;
        int32_t length;
    } cases[] = {{"", 17}, {"a..b", 19}, {std::string(252, 'a'), 270}, {std::string(253, 'a'), 17}};
    for (const auto &c : cases)
        EXPECT_EQ(build_quest_payload(buf, sizeof buf, uc(c.domain), static_cast<int32_t>(c.domain.size() + 1)), c.length);
    EXPECT_EQ(build_quest_payload(buf, 16, uc("a"), 2), -1);
    buf[0] = 0xee;
    reformat_domain(buf, 3, uc("ab"), 3);  // needs 4 bytes: nothing written
    EXPECT_EQ(buf[0], 0xee);
}

TEST(DnsAddress, UsableIpv4AndHostOf) {
    for (const auto &r : golden::rows("dns/ipv4_text.tsv"))
        EXPECT_EQ(is_available_ipv4_addr(uc(r[0]), 0), std::stoi(r[1])) << "'" << r[0] << "'";
    for (const auto &r : golden::rows("dns/host_of.tsv")) EXPECT_EQ(dns::host_of(r[0]), r[1]) << r[0];
}

struct Recorded final : dns::AnswerSink {
    std::vector<std::string> addresses;
    void record(int, const dnsAnswerInfo_t &) override {}
    void address(int, const char *text) override { addresses.emplace_back(text); }
    void too_long(uint16_t) override {}
};

TEST(DnsAnswerWalk, RecordedAndHostileAnswers) {
    const char *ends[] = {"done", "too_long", "truncated"};
    auto cases = golden::cases("dns/walk.cases");
    ASSERT_EQ(cases.size(), 18u);
    for (const auto &c : cases) {
        std::string msg = c.body[0] == '@' ? golden::data("dns/" + c.body.substr(1, c.body.size() - 2))
                                           : golden::from_hex(c.body);
        ASSERT_FALSE(msg.empty()) << c.fields[0];
        Recorded r;
        auto end = dns::walk_answers(reinterpret_cast<const uint8_t *>(msg.data()), msg.size(),
                                     std::stoul(c.fields[1]), 2, &r);
        EXPECT_STREQ(ends[static_cast<int>(end)], c.fields[2].c_str()) << c.fields[0];
        EXPECT_EQ(r.addresses, golden::words(c.fields.size() > 3 ? c.fields[3] : "")) << c.fields[0];
    }
}

TEST(DnsCApi, QueueAndAnswerIntoQueue) {
    dnsAnswerAddrQueue_t *q = nullptr;
    ASSERT_EQ(utility_dns_ans_queue_init(&q, 2), 0);
    unsigned char out[64];
    auto pop = [&](int size = 64) {
        utility_dns_ans_queue_pop(out, size, q, 2);
        return std::string(reinterpret_cast<char *>(out));
    };
    for (const char *a : {"10.0.0.1", "10.0.0.2", "10.0.0.3"}) dns_ans_queue_push(uc(a), 64, q, 2);  // 3rd dropped
    EXPECT_EQ(pop(), "10.0.0.1");
    dns_ans_queue_push(uc("10.0.0.4"), 64, q, 2);  // into slot 0: slot order, not arrival order
    EXPECT_EQ(pop(), "10.0.0.4");
    EXPECT_EQ(pop(), "10.0.0.2");
    EXPECT_EQ(pop(), "");
    dns_ans_queue_push(uc("10.0.0.5"), 4, q, 2);  // bounded by the push's length,
    dns_ans_queue_push(uc(std::string(100, '7')), 1000, q, 2);  // the slot,
    EXPECT_EQ(pop(3), "10");                                    // and the caller's buffer
    EXPECT_EQ(pop().size(), 63u);

    // the resolver's 1501-byte buffer, zeroed past what arrived
    unsigned char buf[dns::kResolverBufferSize] = {};
    std::string msg = golden::data("dns/dnsmasq_cname_two_a.bin");
    memcpy(buf, msg.data(), msg.size());
    EXPECT_EQ(get_ip_from_answer_v4(q, 2, buf, 33), 0);
    EXPECT_EQ(pop(), "10.20.30.41");
    EXPECT_EQ(pop(), "10.20.30.40");
    utility_dns_ans_queue_delete(q);
    EXPECT_EQ(utility_dns_ans_queue_init(&q, 0), -1);
}

TEST(DnsCApi, ResolverWithoutTraffic) {
    CmdlibDnsQueryInfo q = {};
    CmdlibAnswerInfo a;
    memset(&a, 'x', sizeof a);
    snprintf(q.url, sizeof q.url, "http://10.1.2.3:8080/fw.bin");  // a literal: answered at once
    EXPECT_EQ(utility_gethostbyname(&q, &a), 0);
    EXPECT_EQ(std::string(a.ip[0]) + "|" + a.ip[1], "10.1.2.3|");
    snprintf(q.url, sizeof q.url, "router.test");
    snprintf(q.dns[0], sizeof q.dns[0], "0.0.0.0");  // refused before any socket
    EXPECT_EQ(utility_gethostbyname(&q, &a), -1);
    q.url[0] = '\0';
    EXPECT_EQ(utility_gethostbyname(&q, &a), -1);
    struct sockaddr_in sin;
    EXPECT_EQ(create_request_sockaddr_in(&sin, uc("10.64.0.53")), 0);
    EXPECT_EQ(sin.sin_port, htons(53));
    EXPECT_EQ(create_request_sockaddr_in(&sin, uc("255.255.255.255")), -1);

    // socket_close never closes descriptor 0
    int saved = dup(0), null_fd = open("/dev/null", O_RDONLY);
    ASSERT_EQ(dup2(null_fd, 0), 0);
    socket_close(0);
    EXPECT_NE(fcntl(0, F_GETFD), -1);
    dup2(saved, 0);
    close(saved);
    close(null_fd);
}

}  // namespace
