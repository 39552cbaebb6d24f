// The resolver's answer walk over answers of 256 to 1501 bytes (the most it
// can receive), each holding records up to its end, against a plain byte
// loop over the same bytes: the walk is linear in what arrived when its
// bytes per second stay flat.  Before the benchmarks, one whole query to a
// responder of this program's own on 127.0.0.1:53 reports the heap blocks
// and stack it used; run it where that port is free, inside the device:
//   tools/device/run-in-device --build build -- build/dns_bench
// (the query itself takes its fixed pauses, about 500 ms: not measured).
#include <arpa/inet.h>
#include <poll.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "cmdlib/cmdlib_dns.h"
#include "cmdlib/internal/dns_wire.h"

// ---- heap blocks taken by the querying thread ---------------------------------
// The program's malloc family forwards to glibc's and counts the calls made
// while the querying thread has counting switched on.
extern "C" void *__libc_malloc(size_t);
extern "C" void *__libc_calloc(size_t, size_t);
extern "C" void *__libc_realloc(void *, size_t);
extern "C" void __libc_free(void *);

namespace {
thread_local bool t_counting = false;
size_t g_blocks = 0, g_bytes = 0;
void count(size_t n) {
    if (t_counting) ++g_blocks, g_bytes += n;
}
}  // namespace

extern "C" void *malloc(size_t n) {
    count(n);
    return __libc_malloc(n);
}
extern "C" void *calloc(size_t n, size_t size) {
    count(n * size);
    return __libc_calloc(n, size);
}
extern "C" void *realloc(void *p, size_t n) {
    count(n);
    return __libc_realloc(p, n);
}
extern "C" void free(void *p) { __libc_free(p); }

namespace {

namespace dns = cmdlib::dns;

// The resolver's question for "router.test" (29 bytes) turned into an
// answer of exactly `size` bytes: TXT records up to the end, the last two
// of them A records, so the walk has to cross every byte to find them.
std::vector<uint8_t> answer_of(size_t size) {
    std::vector<uint8_t> m(dns::kResolverBufferSize);
    int32_t q = build_quest_payload(m.data(), static_cast<int32_t>(m.size()),
                                    reinterpret_cast<const unsigned char *>("router.test"), 12);
    m.resize(static_cast<size_t>(q));
    m[2] = 0x81;
    m[3] = 0x80;
    const size_t a_size = 16, txt_size = 32;
    m[7] = 0;  // counted up as records are added (at most 91 fit in 1501 bytes)
    size_t room = size - m.size() - 2 * a_size;
    size_t txts = room / txt_size;
    size_t first_extra = room % txt_size;
    auto record = [&](uint16_t type, size_t data_len) {
        const uint8_t fixed[] = {0xc0, 0x0c, 0, static_cast<uint8_t>(type), 0, 1, 0, 0, 0, 60,
                                 static_cast<uint8_t>(data_len >> 8), static_cast<uint8_t>(data_len)};
        m.insert(m.end(), fixed, fixed + sizeof fixed);
        for (size_t i = 0; i < data_len; ++i) m.push_back(static_cast<uint8_t>(type == 1 ? 10 + i + m[7] : 'x'));
        ++m[7];  // the answer count, one record more
    };
    for (size_t i = 0; i < txts; ++i) record(16, txt_size - 12 + (i == 0 ? first_extra : 0));
    record(1, 4);
    record(1, 4);
    return m;
}

struct Keep final : dns::AnswerSink {
    char last[16] = "";
    int n = 0;
    void record(int, const dnsAnswerInfo_t &) override {}
    void address(int, const char *text) override {
        memcpy(last, text, sizeof last);
        ++n;
    }
    void too_long(uint16_t) override {}
};

void BM_AnswerWalk(benchmark::State &state) {
    auto msg = answer_of(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        Keep k;
        dns::walk_answers(msg.data(), msg.size(), 29, 2, &k);
        if (k.n != 2) state.SkipWithError("walk did not reach the A records");
        benchmark::DoNotOptimize(k.last);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * msg.size()));
}

// The floor: every byte read once.
void BM_ByteLoop(benchmark::State &state) {
    auto msg = answer_of(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        unsigned sum = 0;
        for (uint8_t b : msg) sum += b;
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * msg.size()));
}

// The exported walk as the resolver calls it: queue made and freed, and
// the trace flag looked up for every record.
void BM_GetIpFromAnswerV4(benchmark::State &state) {
    auto msg = answer_of(dns::kResolverBufferSize);
    for (auto _ : state) {
        dnsAnswerAddrQueue_t *q = nullptr;
        utility_dns_ans_queue_init(&q, 2);
        benchmark::DoNotOptimize(get_ip_from_answer_v4(q, 2, msg.data(), 29));
        utility_dns_ans_queue_delete(q);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * msg.size()));
}

BENCHMARK(BM_AnswerWalk)->Arg(256)->Arg(512)->Arg(1024)->Arg(1501);
BENCHMARK(BM_ByteLoop)->Arg(256)->Arg(512)->Arg(1024)->Arg(1501);
BENCHMARK(BM_GetIpFromAnswerV4);

// ---- one whole query: heap and stack --------------------------------------------

// Answers every question on 127.0.0.1:53 with the 1501-byte answer.
std::atomic<bool> g_stop{false};
void respond(int fd) {
    auto answer = answer_of(dns::kResolverBufferSize);
    while (!g_stop) {
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, 20) <= 0) continue;
        uint8_t q[512];
        struct sockaddr_in from;
        socklen_t len = sizeof from;
        if (recvfrom(fd, q, sizeof q, 0, reinterpret_cast<struct sockaddr *>(&from), &len) > 0)
            sendto(fd, answer.data(), answer.size(), 0, reinterpret_cast<struct sockaddr *>(&from), len);
    }
}

struct QueryRun {
    int result = 0;
    CmdlibAnswerInfo answer = {};
};

void *query(void *arg) {
    auto *run = static_cast<QueryRun *>(arg);
    CmdlibDnsQueryInfo q = {};
    snprintf(q.url, sizeof q.url, "router.test");
    snprintf(q.dns[0], sizeof q.dns[0], "127.0.0.1");
    t_counting = true;
    run->result = utility_gethostbyname(&q, &run->answer);
    t_counting = false;
    return nullptr;
}

void *idle(void *) { return nullptr; }

// Bytes of a fresh, painted stack that fn's thread touched.
size_t stack_touched(void *(*fn)(void *), void *arg) {
    const size_t size = 256 * 1024;
    void *stack = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (stack == MAP_FAILED) return 0;
    memset(stack, 0xa5, size);
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstack(&attr, stack, size);
    pthread_t t;
    if (pthread_create(&t, &attr, fn, arg) == 0) pthread_join(t, nullptr);
    pthread_attr_destroy(&attr);
    const auto *bytes = static_cast<const uint8_t *>(stack);
    size_t untouched = 0;
    while (untouched < size && bytes[untouched] == 0xa5) ++untouched;
    munmap(stack, size);
    return size - untouched;
}

void report_query_memory() {
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in a = {};
    a.sin_family = AF_INET;
    a.sin_port = htons(53);
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(fd, reinterpret_cast<struct sockaddr *>(&a), sizeof a) != 0) {
        printf("query memory: 127.0.0.1:53 is taken here (run inside the device)\n");
        close(fd);
        return;
    }
    std::thread server(respond, fd);
    // A first query binds the library's and libc's symbols (lazy binding
    // saves the whole register file on the stack the first time a function
    // is reached); the second is the one measured.
    QueryRun warm_up, run;
    stack_touched(query, &warm_up);
    g_blocks = g_bytes = 0;
    size_t baseline = stack_touched(idle, nullptr);
    size_t used = stack_touched(query, &run);
    g_stop = true;
    server.join();
    close(fd);
    printf("query memory: result %d (%s, %s); heap blocks %zu (%zu bytes); stack %zu bytes "
           "(a thread doing nothing: %zu)\n",
           run.result, run.answer.ip[0], run.answer.ip[1], g_blocks, g_bytes, used - baseline, baseline);
}

}  // namespace

int main(int argc, char **argv) {
    report_query_memory();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
