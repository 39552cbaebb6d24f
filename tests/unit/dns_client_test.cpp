// The DNS client on bytes: questions against golden files, the name
// encoding and address test, the answer walk over answers recorded from
// dnsmasq and over hostile ones, the answer queue, and the resolver through
// the C API where it needs no server.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/internal/dns_wire.h"
#include "golden.h"

namespace {

namespace dns = cmdlib::dns;
using ::testing::ElementsAreArray;

const uint8_t *u8(const std::string &s) { return reinterpret_cast<const uint8_t *>(s.data()); }
const unsigned char *uc(const char *s) { return reinterpret_cast<const unsigned char *>(s); }
std::string hex(const uint8_t *p, size_t n) { return golden::to_hex(std::string(reinterpret_cast<const char *>(p), n)); }
std::string hex(const std::string &s) { return golden::to_hex(s); }

TEST(DnsQuestion, ProbeQuestionIsNameLengthPlus18Bytes) {
    struct {
        uint16_t qtype;
        const char *file;
    } cases[] = {{dns::kTypeA, "dns/probe_router_test_a.hex"}, {dns::kTypeAAAA, "dns/probe_router_test_aaaa.hex"}};
    for (const auto &c : cases) {
        std::string want = golden::hex_file(c.file);
        ASSERT_EQ(want.size(), 29u) << c.file;
        uint8_t buf[dns::kProbeBufferSize];
        size_t n = dns::build_probe_query(buf, sizeof buf, "router.test", c.qtype);
        EXPECT_EQ(hex(buf, n), hex(want)) << c.file;
    }
    // the longest name that fits the 1024-byte buffer, and one byte more
    uint8_t buf[dns::kProbeBufferSize];
    EXPECT_EQ(dns::build_probe_query(buf, sizeof buf, std::string(1006, 'a'), dns::kTypeA), 1024u);
    EXPECT_EQ(dns::build_probe_query(buf, sizeof buf, std::string(1007, 'a'), dns::kTypeA), 0u);
}

TEST(DnsQuestion, ResolverQuestionCarriesProcessIdBigEndian) {
    std::string want = golden::hex_file("dns/query_router_test.hex");
    ASSERT_EQ(want.size(), 29u);
    uint16_t pid = static_cast<uint16_t>(getpid());
    want[0] = static_cast<char>(pid >> 8);
    want[1] = static_cast<char>(pid & 0xff);
    uint8_t buf[dns::kResolverBufferSize];
    memset(buf, 0xee, sizeof buf);  // a dirty buffer changes nothing
    int32_t n = build_quest_payload(buf, sizeof buf, uc("router.test"), 12);
    ASSERT_EQ(n, 29);
    EXPECT_EQ(hex(buf, 29), hex(want));
}

TEST(DnsQuestion, NameEncodingAndQuestionLengths) {
    const std::string a252(252, 'a'), a253(253, 'a');
    struct {
        std::string domain;
        std::string name_hex;  // encoded name as it stands in the question
        int32_t length;        // whole question
    } cases[] = {
        {"a.b", "01 61 01 62 00", 21},
        {"", "00", 17},
        {"a..b", "01 61 00", 19},  // the empty label ends the name early
        {a252, "", 12 + 254 + 4},  // the longest name still encoded
        {a253, "00", 17},          // domain_len 254: refused, empty name
    };
    for (const auto &c : cases) {
        uint8_t buf[dns::kResolverBufferSize] = {};
        int32_t n = build_quest_payload(buf, sizeof buf, uc(c.domain.c_str()),
                                        static_cast<int32_t>(c.domain.size() + 1));
        EXPECT_EQ(n, c.length) << c.domain.size();
        if (!c.name_hex.empty()) {
            EXPECT_EQ(hex(buf + 12, static_cast<size_t>(n) - 16), c.name_hex) << c.domain;
        } else {
            EXPECT_EQ(buf[12], 252);
            EXPECT_EQ(buf[12 + 253], 0);
        }
        EXPECT_EQ(hex(buf + n - 4, 4), "00 01 00 01") << c.domain;
    }
    // a buffer too small for the encoded name is left alone
    uint8_t small[4] = {9, 9, 9, 9};
    reformat_domain(small, sizeof small, uc("a.b"), 4);
    EXPECT_EQ(hex(small, 4), "09 09 09 09");
    reformat_domain(small, sizeof small, uc("ab"), 3);  // "ab" needs 4 bytes: fits exactly
    EXPECT_EQ(hex(small, 4), "02 61 62 00");
    uint8_t tiny[16];
    EXPECT_EQ(build_quest_payload(tiny, sizeof tiny, uc("a"), 2), -1);
    EXPECT_EQ(build_quest_payload(nullptr, 100, uc("a"), 2), -1);
}

TEST(DnsAddress, UsableIpv4AsTheFirmwareReadsIt) {
    struct {
        const char *text;
        int usable;
    } cases[] = {
        {"10.1.2.3", 1},        {"10.1.2.0", 0},      {"10.1.2.255", 0},   {"0.0.0.0", 0},
        {"255.255.255.255", 0}, {"1.2.3", 0},         {"1", 0},            {"", 0},
        {"1.2.3.4.5", 1},       {"1.2.3.4abc", 1},    {" 1. 2.+3. 4", 1},  {"256.1.1.1", 0},
        {"-1.2.3.4", 0},        {"1.2.3.-4", 0},      {"a.b.c.d", 0},      {"1.2.3.99999999999999", 0},
        {"255.255.255.254", 1}, {"1.2.3.4:53", 1},    {"1..3.4", 0},
    };
    for (const auto &c : cases) EXPECT_EQ(is_available_ipv4_addr(uc(c.text), 0), c.usable) << c.text;
    EXPECT_EQ(is_available_ipv4_addr(nullptr, 0), 0);
}

TEST(DnsAddress, HostOfNameOrUrl) {
    struct {
        const char *text, *host;
    } cases[] = {
        {"router.test", "router.test"},   {"http://10.1.2.3:8080/fw.bin", "10.1.2.3"},
        {"router.test/x", "router.test"}, {"https://a.b:443", "a.b"},
        {"ftp://", ""},                   {"user@host", "user@host"},  // no user information here
        {"a://b://c", "b"},
    };
    for (const auto &c : cases) EXPECT_EQ(dns::host_of(c.text), c.host) << c.text;
}

// ---- the answer walk ------------------------------------------------------------

struct Recorded final : dns::AnswerSink {
    std::vector<std::string> addresses;
    int records = 0;
    int too_long_len = -1;
    void record(int, const dnsAnswerInfo_t &) override { ++records; }
    void address(int, const char *text) override { addresses.emplace_back(text); }
    void too_long(uint16_t len) override { too_long_len = len; }
};

// Question length of the recorded answers: the question sent for the name.
size_t question_len(const char *name) { return 12 + strlen(name) + 2 + 4; }

TEST(DnsAnswerWalk, RecordedDnsmasqAnswers) {
    struct {
        const char *file, *name;
        std::vector<std::string> addresses;
    } cases[] = {
        {"dns/dnsmasq_two_a.bin", "router.test", {"10.20.30.40", "10.20.30.41"}},
        {"dns/dnsmasq_cname_two_a.bin", "www.router.test", {"10.20.30.41", "10.20.30.40"}},
        {"dns/dnsmasq_cname_only.bin", "alias.router.test", {}},
        {"dns/dnsmasq_nxdomain.bin", "nope.test", {}},
    };
    for (const auto &c : cases) {
        std::string msg = golden::bytes(c.file);
        ASSERT_FALSE(msg.empty()) << c.file;
        Recorded r;
        EXPECT_EQ(dns::walk_answers(u8(msg), msg.size(), question_len(c.name), 2, &r), dns::WalkEnd::kDone) << c.file;
        EXPECT_THAT(r.addresses, ElementsAreArray(c.addresses)) << c.file;
    }
}

// A response to the 29-byte "router.test" question with the given answer
// count and records (owner name field, type, data).
struct Rec {
    uint16_t name;
    uint16_t type;
    std::string data;
    int data_len = -1;  // the length field when it lies about the data
};

std::string response(uint16_t ancount, const std::vector<Rec> &recs) {
    std::string m = golden::hex_file("dns/query_router_test.hex");
    m[2] = static_cast<char>(0x81);
    m[3] = static_cast<char>(0x80);
    m[6] = static_cast<char>(ancount >> 8);
    m[7] = static_cast<char>(ancount);
    auto be16 = [&](uint16_t v) {
        m += static_cast<char>(v >> 8);
        m += static_cast<char>(v);
    };
    for (const Rec &r : recs) {
        be16(r.name);
        be16(r.type);
        be16(1);
        be16(0);
        be16(60);
        be16(static_cast<uint16_t>(r.data_len >= 0 ? r.data_len : static_cast<int>(r.data.size())));
        m += r.data;
    }
    return m;
}

const std::string kA1("\x0a\x01\x02\x03", 4), kA2("\x0a\x01\x02\x04", 4), kA3("\x0a\x01\x02\x05", 4);

TEST(DnsAnswerWalk, HostileAnswersEndTheWalkKeepingWhatWasRead) {
    struct {
        const char *what;
        std::string msg;
        dns::WalkEnd end;
        std::vector<std::string> addresses;
    } cases[] = {
        {"three A, two wanted", response(3, {{0xc00c, 1, kA1}, {0xc00c, 1, kA2}, {0xc00c, 1, kA3}}),
         dns::WalkEnd::kDone, {"10.1.2.3", "10.1.2.4"}},
        {"A of 5 bytes", response(1, {{0xc00c, 1, kA1 + "x"}}), dns::WalkEnd::kDone, {"10.1.2.3"}},
        {"widest and zero octets", response(1, {{0xc00c, 1, std::string("\xc0\xa8\x00\xff", 4)}}), dns::WalkEnd::kDone,
         {"192.168.0.255"}},
        {"A of 6 bytes after an A", response(2, {{0xc00c, 1, kA1}, {0xc00c, 1, kA2 + "xy"}}),
         dns::WalkEnd::kTooLong, {"10.1.2.3"}},
        {"count above the records", response(9, {{0xc00c, 1, kA1}}), dns::WalkEnd::kTruncated, {"10.1.2.3"}},
        {"CNAME data past the end", response(2, {{0xc00c, 5, "\x01x", 0xffff}, {0xc00c, 1, kA1}}),
         dns::WalkEnd::kTruncated, {}},
        {"A data cut short", response(1, {{0xc00c, 1, kA1.substr(0, 2), 4}}), dns::WalkEnd::kTruncated, {}},
        {"pointer to itself", response(1, {{0xc01d, 1, kA1}}), dns::WalkEnd::kDone, {"10.1.2.3"}},
        {"pointer past the end", response(1, {{0xffff, 1, kA1}}), dns::WalkEnd::kDone, {"10.1.2.3"}},
        {"count 0 with records", response(0, {{0xc00c, 1, kA1}}), dns::WalkEnd::kDone, {}},
        {"record header cut", response(1, {{0xc00c, 1, kA1}}).substr(0, 29 + 7), dns::WalkEnd::kTruncated, {}},
        {"question cut", response(1, {}).substr(0, 20), dns::WalkEnd::kTruncated, {}},
        {"header cut", response(1, {}).substr(0, 11), dns::WalkEnd::kTruncated, {}},
        {"one byte", std::string("\x81", 1), dns::WalkEnd::kTruncated, {}},
    };
    for (const auto &c : cases) {
        Recorded r;
        EXPECT_EQ(dns::walk_answers(u8(c.msg), c.msg.size(), 29, 2, &r), c.end) << c.what;
        EXPECT_THAT(r.addresses, ElementsAreArray(c.addresses)) << c.what;
    }
}

// ---- the C API ----------------------------------------------------------------------

TEST(DnsQueue, SlotOrderNotArrivalOrder) {
    dnsAnswerAddrQueue_t *q = nullptr;
    ASSERT_EQ(utility_dns_ans_queue_init(&q, 2), 0);
    unsigned char out[64];
    auto pop = [&] {
        utility_dns_ans_queue_pop(out, sizeof out, q, 2);
        return std::string(reinterpret_cast<char *>(out));
    };
    dns_ans_queue_push(uc("10.0.0.1"), 64, q, 2);
    dns_ans_queue_push(uc("10.0.0.2"), 64, q, 2);
    dns_ans_queue_push(uc("10.0.0.3"), 64, q, 2);  // full: dropped
    EXPECT_EQ(pop(), "10.0.0.1");
    dns_ans_queue_push(uc("10.0.0.4"), 64, q, 2);  // reuses slot 0
    EXPECT_EQ(pop(), "10.0.0.4");
    EXPECT_EQ(pop(), "10.0.0.2");
    EXPECT_EQ(pop(), "");
    // bounds: the push's length and the caller's buffer
    dns_ans_queue_push(uc("10.0.0.5"), 4, q, 2);
    EXPECT_EQ(pop(), "10.");
    dns_ans_queue_push(uc(std::string(100, '7').c_str()), 1000, q, 2);
    EXPECT_EQ(pop().size(), 63u);
    dns_ans_queue_push(uc("10.0.0.6"), 64, q, 2);
    utility_dns_ans_queue_pop(out, 3, q, 2);
    EXPECT_STREQ(reinterpret_cast<char *>(out), "10");
    utility_dns_ans_queue_delete(q);
    EXPECT_EQ(utility_dns_ans_queue_init(&q, 0), -1);
}

TEST(DnsCApi, AnswerIntoQueueFromTheResolverBuffer) {
    struct {
        std::string msg;
        int32_t result;
        std::vector<std::string> addresses;
    } cases[] = {
        {golden::bytes("dns/dnsmasq_cname_two_a.bin"), 0, {"10.20.30.41", "10.20.30.40"}},
        {response(2, {{0xc00c, 1, kA1}, {0xc00c, 1, kA2 + "xy"}}), -1, {"10.1.2.3"}},
    };
    for (const auto &c : cases) {
        unsigned char buf[dns::kResolverBufferSize] = {};
        memcpy(buf, c.msg.data(), c.msg.size());
        dnsAnswerAddrQueue_t *q = nullptr;
        ASSERT_EQ(utility_dns_ans_queue_init(&q, 2), 0);
        int32_t qlen = c.result == 0 ? static_cast<int32_t>(question_len("www.router.test")) : 29;
        EXPECT_EQ(get_ip_from_answer_v4(q, 2, buf, qlen), c.result);
        std::vector<std::string> got;
        for (int i = 0; i < 2; ++i) {
            unsigned char out[32];
            utility_dns_ans_queue_pop(out, sizeof out, q, 2);
            if (out[0]) got.emplace_back(reinterpret_cast<char *>(out));
        }
        EXPECT_THAT(got, ElementsAreArray(c.addresses));
        utility_dns_ans_queue_delete(q);
    }
}

TEST(DnsCApi, ResolverWithoutTraffic) {
    // an address literal is answered at once, scheme, port and path dropped
    CmdlibDnsQueryInfo q = {};
    CmdlibAnswerInfo a;
    memset(&a, 'x', sizeof a);
    snprintf(q.url, sizeof q.url, "http://10.1.2.3:8080/fw.bin");
    EXPECT_EQ(utility_gethostbyname(&q, &a), 0);
    EXPECT_STREQ(a.ip[0], "10.1.2.3");
    EXPECT_STREQ(a.ip[1], "");
    // a name with no usable server: refused before any socket
    snprintf(q.url, sizeof q.url, "router.test");
    snprintf(q.dns[0], sizeof q.dns[0], "0.0.0.0");
    EXPECT_EQ(utility_gethostbyname(&q, &a), -1);
    EXPECT_STREQ(a.ip[0], "");
    q.url[0] = '\0';
    EXPECT_EQ(utility_gethostbyname(&q, &a), -1);
    EXPECT_EQ(utility_gethostbyname(nullptr, &a), -1);

    struct sockaddr_in sin;
    EXPECT_EQ(create_request_sockaddr_in(&sin, uc("10.64.0.53")), 0);
    EXPECT_EQ(sin.sin_port, htons(53));
    EXPECT_EQ(create_request_sockaddr_in(&sin, uc("255.255.255.255")), -1);
    EXPECT_EQ(create_request_sockaddr_in(&sin, uc("dns.example")), -1);
}

TEST(DnsCApi, SocketCloseNeverClosesDescriptorZero) {
    int saved = dup(0);
    int null_fd = open("/dev/null", O_RDONLY);
    ASSERT_GE(null_fd, 0);
    ASSERT_EQ(dup2(null_fd, 0), 0);
    socket_close(0);
    EXPECT_NE(fcntl(0, F_GETFD), -1);
    int fd = socket_v4_init();
    ASSERT_GT(fd, 0);
    socket_close(fd);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    close(null_fd);
    if (saved >= 0) {
        dup2(saved, 0);
        close(saved);
    }
}

}  // namespace
