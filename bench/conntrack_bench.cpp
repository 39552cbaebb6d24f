// Connection-tracking readers against a real kernel table of 20,000
// entries.  Runs only inside the throwaway device, which gives the process
// its own network namespace and so its own conntrack table:
//
//   tools/device/run-in-device --build BUILD -- BUILD/conntrack_bench
//
// The table mixes what a busy router holds: closed TCP connections,
// unanswered DNS over UDP, a few established TCP sessions and answered DNS
// exchanges (200 sessions in all, fewer than the 256 the session table
// stops at, so both readers go through the whole file).  The floor is reading "/proc/net/nf_conntrack" whole
// without parsing; "conntrack -L" is what a developer would run instead.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "cmdlib/network.h"

namespace {

constexpr int kEntries = 20000;
constexpr int kEstablished = 100;

bool load_table() {
    if (system("iptables -t nat -A POSTROUTING -o usb0 -j MASQUERADE") != 0) return false;
    FILE *f = fopen("/tmp/ct_bench_load", "w");
    if (!f) return false;
    for (int i = 0; i < kEntries; ++i) {
        int a = 2 + i / 250, b = 1 + i % 250;
        if (i < kEstablished) {
            fprintf(f,
                    "-I -p tcp -s 192.168.%d.%d -d 93.184.216.34 --sport %d --dport 443 "
                    "--reply-src 93.184.216.34 --reply-dst 10.64.0.2 --reply-port-src 443 "
                    "--reply-port-dst %d --state ESTABLISHED --status ASSURED,SEEN_REPLY -t 3000\n",
                    a, b, 10000 + i, 30000 + i);
        } else if (i < 2 * kEstablished) {
            fprintf(f,
                    "-I -p udp -s 10.64.0.2 -d 8.8.%d.%d --sport %d --dport 53 --reply-src 8.8.%d.%d "
                    "--reply-dst 10.64.0.2 --reply-port-src 53 --reply-port-dst %d "
                    "--status ASSURED,SEEN_REPLY -t 3000\n",
                    a, b, 1024 + i, a, b, 1024 + i);
        } else if (i % 2 == 0) {
            fprintf(f,
                    "-I -p udp -s 192.168.%d.%d -d 9.9.9.9 --sport %d --dport 53 --reply-src 9.9.9.9 "
                    "--reply-dst 10.64.0.2 --reply-port-src 53 --reply-port-dst %d -t 3000\n",
                    a, b, 1024 + i, 1024 + i);
        } else {
            fprintf(f,
                    "-I -p tcp -s 192.168.%d.%d -d 93.184.216.34 --sport %d --dport 80 "
                    "--reply-src 93.184.216.34 --reply-dst 10.64.0.2 --reply-port-src 80 "
                    "--reply-port-dst %d --state TIME_WAIT --status ASSURED,SEEN_REPLY -t 3000\n",
                    a, b, 1024 + i, 1024 + i);
        }
    }
    fclose(f);
    return system("conntrack -R /tmp/ct_bench_load >/dev/null 2>&1") == 0;
}

void BM_ReadWholeFloor(benchmark::State &state) {
    static char buf[64 * 1024];
    for (auto _ : state) {
        int fd = open("/proc/net/nf_conntrack", O_RDONLY | O_CLOEXEC);
        size_t total = 0;
        ssize_t n;
        while ((n = read(fd, buf, sizeof buf)) > 0) total += static_cast<size_t>(n);
        close(fd);
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(BM_ReadWholeFloor)->Unit(benchmark::kMillisecond);

void BM_CollectDnsAndIcmpDestIp(benchmark::State &state) {
    for (auto _ : state) {
        DestIPInConntrackInfo info;
        memset(&info, 0, sizeof info);
        if (util_collect_dns_and_icmp_dest_ip(&info) != 0) state.SkipWithError("collector failed");
        benchmark::DoNotOptimize(info.valid_dns_ip_count);
        state.counters["dns_list"] = info.valid_dns_ip_count;
    }
}
BENCHMARK(BM_CollectDnsAndIcmpDestIp)->Unit(benchmark::kMillisecond);

void BM_GenNatSessionTable(benchmark::State &state) {
    for (auto _ : state)
        if (util_gen_nat_session_table("/tmp/ct_bench_sessions") != 0)
            state.SkipWithError("session table failed");
    FILE *f = fopen("/tmp/ct_bench_sessions", "r");
    int lines = 0;
    for (int c; f && (c = fgetc(f)) != EOF;) lines += c == '\n';
    if (f) fclose(f);
    state.counters["sessions"] = lines;
}
BENCHMARK(BM_GenNatSessionTable)->Unit(benchmark::kMillisecond);

void BM_ConntrackListTool(benchmark::State &state) {
    for (auto _ : state)
        if (system("conntrack -L >/dev/null 2>&1") != 0) state.SkipWithError("conntrack -L failed");
}
BENCHMARK(BM_ConntrackListTool)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (!getenv("CMDLIB_IN_DEVICE")) {
        fprintf(stderr,
                "conntrack_bench needs its own conntrack table: run it through\n"
                "  tools/device/run-in-device --build BUILD -- BUILD/conntrack_bench\n");
        return 2;
    }
    if (!load_table()) {
        fprintf(stderr, "conntrack_bench: cannot load the conntrack table\n");
        return 1;
    }
    FILE *p = popen("wc -l < /proc/net/nf_conntrack", "r");
    int lines = 0;
    if (p) {
        if (fscanf(p, "%d", &lines) != 1) lines = 0;
        pclose(p);
    }
    benchmark::AddCustomContext("conntrack_entries", std::to_string(lines));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
