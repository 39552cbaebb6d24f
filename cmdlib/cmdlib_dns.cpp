// The library's own DNS client: the one-shot probes and the resolver that
// asks a chosen server out of a chosen interface.  Messages are built and
// read by cmdlib/internal/dns_wire.h; this file owns the sockets (closed on
// every path), the waits and the debug trace.
#include "cmdlib/cmdlib_dns.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/dns_wire.h"
#include "cmdlib/internal/net_waits.h"

static_assert(sizeof(dnsHeader_t) == 12, "the header record is the 12 bytes sent");
static_assert(sizeof(dns_header) == 12 && sizeof(dns_query) == 4, "probe layer's header and question tail");
static_assert(sizeof(dnsQueryInfo_t) == 4, "the question tail is 4 bytes");
static_assert(sizeof(dnsAnswerAddrQueue_t) == 65, "a queue slot is 65 bytes");
static_assert(sizeof(CmdlibDnsQueryInfo) == 384 && sizeof(CmdlibAnswerInfo) == 64,
              "query and answer records of utility_gethostbyname");
static_assert(sizeof(struct ifreq) == 40, "SO_BINDTODEVICE gets a 40-byte interface request");

namespace {

namespace dns = cmdlib::dns;
using cmdlib::UniqueFd;

// ---- debug trace -------------------------------------------------------------

constexpr const char *kDebugFlag = "/tmp/.dns_debug";
constexpr const char *kDebugLog = "/tmp/.send_dns.log";

// Formats one trace line into its 1024-byte buffer and appends it.  Kept
// out of line so that the buffer is on the stack only while tracing.
__attribute__((noinline)) void dns_log_write(const char *func, int stmt, const char *fmt, va_list ap) {
    char line[1024];
    size_t n = cmdlib::format_bounded(line, sizeof line, "=====>%s[%d] ", func, stmt);
    vsnprintf(line + n, sizeof line - n, fmt, ap);
    cmd_echo_append(line, kDebugLog);
}

// Appends "=====>FUNC[STMT] text" to the trace while the flag file exists
// (looked up anew for every message, so tracing can be switched on and off
// under a running daemon).
void dns_log(const char *func, int stmt, const char *fmt, ...) __attribute__((format(printf, 3, 4)));
void dns_log(const char *func, int stmt, const char *fmt, ...) {
    if (access(kDebugFlag, F_OK) != 0) return;
    va_list ap;
    va_start(ap, fmt);
    dns_log_write(func, stmt, fmt, ap);
    va_end(ap);
}

// ---- probe layer ---------------------------------------------------------------

// What differs between the A and the AAAA probe.
struct ProbeFamily {
    int af;
    uint16_t qtype;
    const char *default_server;
    const char *default_host;
    size_t addr_len;  // bytes of the address at the end of the response
};

constexpr ProbeFamily kProbeV4{AF_INET, dns::kTypeA, "8.8.8.8", "www.google.com", 4};
constexpr ProbeFamily kProbeV6{AF_INET6, dns::kTypeAAAA, "2001:4860:4860::8888", "ipv6.google.com", 16};

void log_probe_address(const char *func, const ProbeFamily &f, const char *name, const uint8_t *msg,
                       size_t received) {
    // For the trace only: the last record is taken to be the wanted one.
    uint8_t a[16] = {};
    size_t n = received < f.addr_len ? received : f.addr_len;
    memcpy(a + f.addr_len - n, msg + received - n, n);
    if (f.af == AF_INET) {
        dns_log(func, 77, "%s address is %u.%u.%u.%u", name, a[0], a[1], a[2], a[3]);
        return;
    }
    char text[40];
    size_t pos = 0;
    for (int g = 0; g < 8; ++g)
        pos += cmdlib::format_bounded(text + pos, sizeof text - pos, "%s%02x%02x", g ? ":" : "", a[2 * g],
                                      a[2 * g + 1]);
    dns_log(func, 78, "%s ipv6 address is %s", name, text);
}

int probe(const ProbeFamily &f, const char *func, const char *name, const char *sev, int fd) {
    if (!name || !*name) name = f.default_host;
    if (!sev || !*sev) sev = f.default_server;
    dns_log(func, 51, "name:%s, sev:%s", name, sev);

    const int ms = cmdlib::net_waits().probe_recv_ms;
    struct timeval tv = {ms / 1000, (ms % 1000) * 1000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);

    // Only a failing conversion call is an error: text that does not parse
    // leaves the all-zero address, and the question goes there.
    struct sockaddr_in sin = {};
    struct sockaddr_in6 sin6 = {};
    int converted;
    if (f.af == AF_INET) {
        sin.sin_family = AF_INET;
        sin.sin_port = htons(53);
        converted = inet_pton(AF_INET, sev, &sin.sin_addr);
    } else {
        sin6.sin6_family = AF_INET6;
        sin6.sin6_port = htons(53);
        converted = inet_pton(AF_INET6, sev, &sin6.sin6_addr);
    }
    if (converted < 0) {
        dns_log(func, 58, "inet_pton error.");
        return 1;
    }

    uint8_t buf[dns::kProbeBufferSize] = {};
    size_t len = dns::build_probe_query(buf, sizeof buf, name, f.qtype);
    ssize_t sent = -1;
    if (len) {
        sent = f.af == AF_INET
                   ? sendto(fd, buf, len, 0, reinterpret_cast<struct sockaddr *>(&sin), sizeof sin)
                   : sendto(fd, buf, len, 0, reinterpret_cast<struct sockaddr *>(&sin6), sizeof sin6);
    }
    if (sent < 0) {
        dns_log(func, 66, "sendto error.");
        return 1;
    }
    ssize_t got = recvfrom(fd, buf, sizeof buf, 0, nullptr, nullptr);
    if (got < 0) {
        if (errno == EAGAIN)
            dns_log(func, 70, "recvfrom timeout.");
        else
            dns_log(func, 72, "recvfrom error.");
        return 1;
    }
    uint16_t count = 0;
    if (!dns::answer_count(buf, static_cast<size_t>(got), &count) || count == 0) {
        dns_log(func, 81, "ack error.");
        return 1;
    }
    log_probe_address(func, f, name, buf, static_cast<size_t>(got));
    return 0;
}

// ---- resolver ----------------------------------------------------------------------

constexpr int kAttempts = 12;
constexpr int kExpectedAnswers = 2;

// Pushes the walk's addresses into the answer queue and traces each record.
class QueueSink final : public dns::AnswerSink {
  public:
    QueueSink(dnsAnswerAddrQueue_t *queue, int slots) : queue_(queue), slots_(slots) {}
    void record(int index, const dnsAnswerInfo_t &i) override {
        dns_log("get_ip_from_answer_v4", 143,
                "ans_index[%d]: name_pos(%u) type(%u) _class(%u) ttl(%u) data_len(%u) ", index, i.name_pos,
                i.type, i._class, i.ttl, i.data_len);
    }
    void address(int index, const char *text) override {
        dns_ans_queue_push(reinterpret_cast<const unsigned char *>(text), DNS_ANS_ADDR_STR_SIZE, queue_, slots_);
        dns_log("get_ip_from_answer_v4", 152, "ans_index[%d]: %s", index, text);
    }
    void too_long(uint16_t data_len) override {
        dns_log("get_ip_from_answer_v4", 147, "too long address data_len %u", data_len);
    }

  private:
    dnsAnswerAddrQueue_t *queue_;
    int slots_;
};

int32_t walk_into_queue(dnsAnswerAddrQueue_t *queue, int32_t slots, const uint8_t *msg, size_t received,
                        int32_t question_len) {
    uint16_t count = 0;
    if (dns::answer_count(msg, received, &count))
        dns_log("get_ip_from_answer_v4", 137, "got answer cnt %d", count);
    QueueSink sink(queue, slots);
    return dns::walk_answers(msg, received, static_cast<size_t>(question_len), slots, &sink) ==
                   dns::WalkEnd::kDone
               ? 0
               : -1;
}

// The answer queue of one utility_gethostbyname call, freed on every path.
struct QueueOwner {
    dnsAnswerAddrQueue_t *queue = nullptr;
    QueueOwner() = default;
    QueueOwner(const QueueOwner &) = delete;
    QueueOwner &operator=(const QueueOwner &) = delete;
    ~QueueOwner() { utility_dns_ans_queue_delete(queue); }
};

// Text of a fixed-width field that may lack its terminator, as a C string.
template <size_t N> void terminated_copy(char (&out)[N], const char *text, size_t width) {
    out[0] = '\0';
    if (text) cmdlib::copy_bounded(out, N, std::string_view(text, strnlen(text, width)));
}

}  // namespace

// ---- probe layer (exported) ------------------------------------------------------------

CMDLIB_API int socket_v4_init(void) {
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    if (fd < 0) dns_log(__func__, 31, "socket init error.");
    return fd;
}

CMDLIB_API int socket_v6_init(void) {
    int fd = socket(AF_INET6, SOCK_DGRAM, 0);
    if (fd < 0) dns_log(__func__, 41, "socket init error.");
    return fd;
}

CMDLIB_API void socket_close(int fd) {
    if (fd > 0) close(fd);
}

CMDLIB_API int get_host_by_name_v4(const char *name, const char *sev, int fd) {
    return probe(kProbeV4, __func__, name, sev, fd);
}

CMDLIB_API int get_host_by_name_v6(const char *name, const char *sev, int fd) {
    return probe(kProbeV6, __func__, name, sev, fd);
}

// ---- resolver building blocks (exported) -------------------------------------------------

CMDLIB_API int32_t create_udp_socket(const char *iface, const char *src_ip) {
    int fd = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    if (fd < 0) {
        dns_log(__func__, 201, "socket init error.");
        return -1;
    }
    int flags = fcntl(fd, F_GETFL);
    if (flags >= 0) fcntl(fd, F_SETFL, flags | O_NONBLOCK);
    if (iface && *iface) {
        struct ifreq ifr = {};
        memcpy(ifr.ifr_name, iface, strnlen(iface, sizeof ifr.ifr_name));
        if (setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, &ifr, sizeof ifr) < 0)
            dns_log(__func__, 214, "fail to setsockopt SO_BINDTODEVICE");
    }
    if (src_ip && *src_ip) {
        struct sockaddr_in local = {};
        local.sin_family = AF_INET;
        local.sin_addr.s_addr = inet_addr(src_ip);
        local.sin_port = 0;
        if (bind(fd, reinterpret_cast<struct sockaddr *>(&local), sizeof local) < 0)
            dns_log(__func__, 224, "fail to bind src ip");
    }
    return fd;
}

CMDLIB_API int32_t create_request_sockaddr_in(struct sockaddr_in *p_s_in, const unsigned char *dns_server) {
    if (!p_s_in || !dns_server) return -1;
    memset(p_s_in, 0, sizeof *p_s_in);
    p_s_in->sin_family = AF_INET;
    p_s_in->sin_port = htons(53);
    // inet_addr's failure value is also the broadcast address: both refused.
    p_s_in->sin_addr.s_addr = inet_addr(reinterpret_cast<const char *>(dns_server));
    return p_s_in->sin_addr.s_addr == INADDR_NONE ? -1 : 0;
}

CMDLIB_API int32_t setup_dns_header(dnsHeader_t *p_header) {
    if (!p_header) return -1;
    memset(p_header, 0, sizeof *p_header);
    p_header->id = htons(static_cast<uint16_t>(getpid()));
    p_header->rd = 1;
    p_header->q_count = htons(1);
    return static_cast<int32_t>(dns::kHeaderSize);
}

CMDLIB_API int32_t setup_dns_query_info(dnsQueryInfo_t *p_query_info, const int32_t query_type,
                                        const int32_t query_class) {
    if (!p_query_info) return -1;
    p_query_info->qtype = htons(static_cast<uint16_t>(query_type));
    p_query_info->qclass = htons(static_cast<uint16_t>(query_class));
    return static_cast<int32_t>(dns::kTailSize);
}

CMDLIB_API void reformat_domain(unsigned char *o_buf, const int32_t buf_size, const unsigned char *domain,
                                const int32_t domain_len) {
    if (buf_size > 0) dns::encode_domain(o_buf, static_cast<size_t>(buf_size), domain, domain_len);
}

CMDLIB_API int32_t build_quest_payload(unsigned char *o_buf, const int32_t buf_size, const unsigned char *domain,
                                       const int32_t domain_len) {
    if (!o_buf || !domain) return -1;
    const size_t cap = buf_size > 0 ? static_cast<size_t>(buf_size) : 0;
    if (cap < dns::kHeaderSize + 1 + dns::kTailSize) return -1;
    dnsHeader_t header;
    setup_dns_header(&header);
    dns::put_header(o_buf, header);
    // A refused name leaves the root label alone: an empty name.
    size_t name_len = dns::encode_domain(o_buf + dns::kHeaderSize, cap - dns::kHeaderSize - dns::kTailSize,
                                         domain, domain_len);
    if (name_len == 0) {
        o_buf[dns::kHeaderSize] = 0;
        name_len = 1;
    } else {
        // the encoded name ends at its first 0 byte (an empty label inside
        // "a..b" ends it early, as it does for the server)
        name_len = strnlen(reinterpret_cast<const char *>(o_buf + dns::kHeaderSize), name_len) + 1;
    }
    dnsQueryInfo_t tail;
    setup_dns_query_info(&tail, dns::kTypeA, dns::kClassIn);
    dns::put_raw16(o_buf + dns::kHeaderSize + name_len, tail.qtype);
    dns::put_raw16(o_buf + dns::kHeaderSize + name_len + 2, tail.qclass);
    return static_cast<int32_t>(dns::kHeaderSize + name_len + dns::kTailSize);
}

CMDLIB_API int32_t send_request(unsigned char *msg_buf, const int32_t payload_len, const int32_t sock,
                                struct sockaddr *dest_addr, const int32_t addr_len) {
    if (!msg_buf || !dest_addr || payload_len < 0 || addr_len < 0) return -1;
    ssize_t result = -1;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        result = sendto(sock, msg_buf, static_cast<size_t>(payload_len), 0, dest_addr,
                        static_cast<socklen_t>(addr_len));
        cmdlib::net_waits().resolver_pause();
        if (result >= 0) break;
    }
    return static_cast<int32_t>(result);
}

CMDLIB_API int32_t recv_answer(unsigned char *o_buf, const int32_t buf_size, const int32_t sock,
                               struct sockaddr *dest_addr, int32_t *addr_len) {
    if (!o_buf || buf_size < 0 || (dest_addr && !addr_len)) return -1;
    ssize_t result = -1;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        socklen_t len = addr_len && *addr_len > 0 ? static_cast<socklen_t>(*addr_len) : 0;
        result = recvfrom(sock, o_buf, static_cast<size_t>(buf_size), 0, dest_addr, dest_addr ? &len : nullptr);
        if (addr_len && dest_addr) *addr_len = static_cast<int32_t>(len);
        cmdlib::net_waits().resolver_pause();
        if (result >= 0) break;
    }
    return static_cast<int32_t>(result);
}

CMDLIB_API int32_t get_ip_from_answer_v4(dnsAnswerAddrQueue_t *o_ans_queue, const int32_t expect_ans_cnt,
                                         unsigned char *msg_buf, const int32_t quest_payload_size) {
    if (!o_ans_queue || !msg_buf || quest_payload_size < 0) return -1;
    return walk_into_queue(o_ans_queue, expect_ans_cnt, msg_buf, dns::kResolverBufferSize, quest_payload_size);
}

// ---- answer queue -----------------------------------------------------------------------------

CMDLIB_API int32_t utility_dns_ans_queue_init(dnsAnswerAddrQueue_t **o_queue, const int32_t expect_ans_cnt) {
    if (!o_queue || expect_ans_cnt <= 0) return -1;
    auto *slots = static_cast<dnsAnswerAddrQueue_t *>(calloc(static_cast<size_t>(expect_ans_cnt), sizeof **o_queue));
    if (!slots) return -1;
    for (int i = 0; i < expect_ans_cnt; ++i) slots[i].is_poped = 1;
    *o_queue = slots;
    return 0;
}

CMDLIB_API void utility_dns_ans_queue_delete(dnsAnswerAddrQueue_t *p_queue) { free(p_queue); }

CMDLIB_API void utility_dns_ans_queue_pop(unsigned char *o_buf, const int32_t buf_size,
                                          dnsAnswerAddrQueue_t *p_ans_queue, const int32_t expect_ans_cnt) {
    if (!o_buf || buf_size <= 0) return;
    char *out = reinterpret_cast<char *>(o_buf);
    out[0] = '\0';
    if (!p_ans_queue) return;
    for (int i = 0; i < expect_ans_cnt; ++i) {
        dnsAnswerAddrQueue_t &slot = p_ans_queue[i];
        if (slot.is_poped != 0) continue;
        slot.is_poped = 1;
        const char *text = reinterpret_cast<const char *>(slot.addr_str);
        cmdlib::copy_bounded(out, static_cast<size_t>(buf_size), std::string_view(text, strnlen(text, sizeof slot.addr_str)));
        return;
    }
}

CMDLIB_API void dns_ans_queue_push(const unsigned char *addr_str, const int32_t addr_len,
                                   dnsAnswerAddrQueue_t *p_ans_queue, const int32_t expect_ans_cnt) {
    if (!addr_str || !p_ans_queue) return;
    for (int i = 0; i < expect_ans_cnt; ++i) {
        dnsAnswerAddrQueue_t &slot = p_ans_queue[i];
        if (slot.is_poped == 0) continue;
        slot.is_poped = 0;
        size_t bound = addr_len > 0 ? static_cast<size_t>(addr_len) : 0;
        if (bound > sizeof slot.addr_str) bound = sizeof slot.addr_str;
        const char *text = reinterpret_cast<const char *>(addr_str);
        // the text is read no further than the bound allows it to be copied
        size_t len = strnlen(text, bound ? bound - 1 : 0);
        slot.addr_str[0] = '\0';
        cmdlib::copy_bounded(reinterpret_cast<char *>(slot.addr_str), bound, std::string_view(text, len));
        return;
    }
}

CMDLIB_API int32_t is_available_ipv4_addr(const unsigned char *addr, const int32_t addr_len) {
    (void)addr_len;
    if (!addr) return 0;
    return dns::usable_ipv4(reinterpret_cast<const char *>(addr)) ? 1 : 0;
}

// ---- resolver -----------------------------------------------------------------------------------

CMDLIB_API int32_t utility_get_host_name_v4_no_truncated(dnsAnswerAddrQueue_t *o_ans_queue,
                                                         const int32_t expect_ans_cnt, const unsigned char *domain,
                                                         const int32_t domain_len, const unsigned char *dns_server,
                                                         const int32_t dns_s_len, const char *iface,
                                                         const char *wan_ip) {
    if (!o_ans_queue || !domain) return -1;
    // The name or URL, at most 256 bytes of it, in the work buffer, cut in
    // place to its host: what follows "://" up to the first ':' or '/'.
    char work[dns::kNameBufferSize];
    const char *text = reinterpret_cast<const char *>(domain);
    size_t limit = domain_len > 0 ? static_cast<size_t>(domain_len) : 0;
    if (limit > sizeof work - 1) limit = sizeof work - 1;
    const size_t text_len = strnlen(text, limit);
    memcpy(work, text, text_len);
    work[text_len] = '\0';
    const std::string_view cut = dns::host_of(std::string_view(work, text_len));
    char *host = work + (cut.data() - work);
    const size_t host_len = cut.size();
    host[host_len] = '\0';
    dns_log(__func__, 311, "start nslookup %s (before strip: %.*s)", host, static_cast<int>(text_len), text);

    if (dns::usable_ipv4(host)) {
        dns_log(__func__, 316, "domain(%s) is an ipv4 addr...", host);
        dns_ans_queue_push(reinterpret_cast<const unsigned char *>(host), static_cast<int32_t>(host_len + 1),
                           o_ans_queue, expect_ans_cnt);
        return 0;
    }

    if (!dns_server) return -1;
    char server[64];  // a dotted address is at most 15 characters
    terminated_copy(server, reinterpret_cast<const char *>(dns_server),
                    dns_s_len > 0 ? static_cast<size_t>(dns_s_len) : 0);
    if (!dns::usable_ipv4(server)) {
        dns_log(__func__, 326, "invalid dns server:%s, abort...", server);
        return -1;
    }

    UniqueFd sock(create_udp_socket(iface, wan_ip));
    if (!sock) {
        dns_log(__func__, 333, "create_udp_socket failed...");
        return -1;
    }
    struct sockaddr_in to;
    create_request_sockaddr_in(&to, reinterpret_cast<const unsigned char *>(server));

    uint8_t msg[dns::kResolverBufferSize] = {};
    int32_t question_len = build_quest_payload(msg, sizeof msg, reinterpret_cast<const unsigned char *>(host),
                                               static_cast<int32_t>(host_len + 1));
    int32_t sent = send_request(msg, question_len, sock.get(), reinterpret_cast<struct sockaddr *>(&to), sizeof to);
    dns_log(__func__, 345, "send result:%d", sent);
    if (sent < 0) {
        dns_log(__func__, 347, "send msg got failure...");
        return sent;
    }

    memset(msg, 0, sizeof msg);
    struct sockaddr_in from = {};
    int32_t from_len = sizeof from;
    int32_t got = recv_answer(msg, sizeof msg, sock.get(), reinterpret_cast<struct sockaddr *>(&from), &from_len);
    dns_log(__func__, 355, "recv result:%d", got);
    if (got < 0) {
        dns_log(__func__, 357, "recv msg got failure...");
        return got;
    }
    // A parse error keeps the addresses pushed before it.
    (void)walk_into_queue(o_ans_queue, expect_ans_cnt, msg, static_cast<size_t>(got), question_len);
    return 0;
}

CMDLIB_API int utility_gethostbyname(pCmdlibDnsQueryInfo pQuery, pCmdlibAnswerInfo pAnswer) {
    if (!pQuery || !pAnswer || pQuery->url[0] == '\0') return -1;
    memset(pAnswer, 0, sizeof *pAnswer);
    QueueOwner owner;
    if (utility_dns_ans_queue_init(&owner.queue, kExpectedAnswers) != 0) return -2;
    dnsAnswerAddrQueue_t *queue = owner.queue;
    char iface[sizeof pQuery->iface + 1];
    char wan_ip[sizeof pQuery->wan_ip + 1];
    terminated_copy(iface, pQuery->iface, sizeof pQuery->iface);
    terminated_copy(wan_ip, pQuery->wan_ip, sizeof pQuery->wan_ip);

    auto ask = [&](int server) {
        int32_t rc = utility_get_host_name_v4_no_truncated(
            queue, kExpectedAnswers, reinterpret_cast<const unsigned char *>(pQuery->url), sizeof pQuery->url,
            reinterpret_cast<const unsigned char *>(pQuery->dns[server]), sizeof pQuery->dns[server], iface, wan_ip);
        if (rc == 0) {
            for (auto &ip : pAnswer->ip)
                utility_dns_ans_queue_pop(reinterpret_cast<unsigned char *>(ip), sizeof ip, queue, kExpectedAnswers);
        }
        return rc;
    };
    int32_t rc = ask(0);
    if (pAnswer->ip[0][0] == '\0' && pQuery->dns[1][0] != '\0') rc = ask(1);
    if (rc != 0) return rc;
    return pAnswer->ip[0][0] != '\0' ? 0 : -3;
}
