// LAN services on their fixed paths, so it runs inside the throwaway device:
//
//   tools/device/run-in-device --build BUILD -- BUILD/lan_bench
//
// - util_get_dhcp_client_list over a 10,000-line dnsmasq lease file,
//   against the floor a developer starts from: reading the file line by
//   line and splitting each line into words (and, lower still, reading it
//   whole without looking at it).
// - The 69,604-byte records file: load and save against plain
//   open/read/close and open/write/close of the same bytes, and against
//   stdio with the file rewritten in place.  The read and write system
//   calls per operation are counted from /proc/self/io (syscr, syscw).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "base/libbase.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/mac.h"

namespace {

constexpr char kLeases[] = "/tmp/dnsmasq.leases";
constexpr char kRecords[] = "/tmp/cmdlib/.mac_control_info_file";
constexpr int kLeaseLines = 10000;

bool write_leases() {
    FILE *f = fopen(kLeases, "w");
    if (!f) return false;
    for (int i = 0; i < kLeaseLines; ++i)
        fprintf(f, "%d 3c:22:fb:%02x:%02x:%02x 10.%d.%d.%d host-%05d 01:3c:22:fb:%02x:%02x:%02x\n",
                1900000000 + i, i >> 16 & 255, i >> 8 & 255, i & 255, i >> 16 & 255, i >> 8 & 255, i & 255, i,
                i >> 16 & 255, i >> 8 & 255, i & 255);
    return fclose(f) == 0;
}

// The read and write system calls this process has made so far.
void syscalls(long *reads, long *writes) {
    char buf[512];
    int fd = open("/proc/self/io", O_RDONLY | O_CLOEXEC);
    ssize_t n = fd >= 0 ? read(fd, buf, sizeof buf - 1) : -1;
    if (fd >= 0) close(fd);
    buf[n > 0 ? n : 0] = '\0';
    const char *r = strstr(buf, "syscr: "), *w = strstr(buf, "syscw: ");
    *reads = r ? strtol(r + 7, nullptr, 10) : -1;
    *writes = w ? strtol(w + 7, nullptr, 10) : -1;
}

// Counts per iteration, less the one read of /proc/self/io itself.
class SyscallCounter {
  public:
    SyscallCounter() { syscalls(&r0_, &w0_); }
    void report(benchmark::State &state) {
        long r1, w1;
        syscalls(&r1, &w1);
        double n = static_cast<double>(state.iterations());
        state.counters["reads/op"] = static_cast<double>(r1 - r0_ - 1) / n;
        state.counters["writes/op"] = static_cast<double>(w1 - w0_) / n;
    }

  private:
    long r0_, w0_;
};

// ---- leases ------------------------------------------------------------------------

DHCPClientInfo g_clients[kLeaseLines];

void BM_LeasesReadWholeFloor(benchmark::State &state) {
    static char buf[1 << 20];
    for (auto _ : state) {
        int fd = open(kLeases, O_RDONLY | O_CLOEXEC);
        size_t total = 0;
        for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;) total += static_cast<size_t>(n);
        close(fd);
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(BM_LeasesReadWholeFloor)->Unit(benchmark::kMicrosecond);

void BM_LeasesReadAndSplitFloor(benchmark::State &state) {
    for (auto _ : state) {
        FILE *f = fopen(kLeases, "r");
        char line[512];
        char *words[16];
        int fields = 0;
        while (fgets(line, sizeof line, f)) fields += util_get_all_args(line, ' ', '\t', words, 16);
        fclose(f);
        benchmark::DoNotOptimize(fields);
    }
}
BENCHMARK(BM_LeasesReadAndSplitFloor)->Unit(benchmark::kMicrosecond);

void BM_GetDhcpClientList(benchmark::State &state) {
    for (auto _ : state) {
        int n = util_get_dhcp_client_list(g_clients, 0);
        if (n != kLeaseLines) state.SkipWithError("not every lease was read");
        benchmark::DoNotOptimize(n);
    }
}
BENCHMARK(BM_GetDhcpClientList)->Unit(benchmark::kMicrosecond);

// ---- records file ------------------------------------------------------------------

MacControlInfo g_info;

void BM_RecordsReadFloor(benchmark::State &state) {
    static unsigned char buf[MAC_CONTROL_INFO_FILE_SIZE];
    SyscallCounter count;
    for (auto _ : state) {
        int fd = open(kRecords, O_RDONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(read(fd, buf, sizeof buf));
        close(fd);
    }
    count.report(state);
}
BENCHMARK(BM_RecordsReadFloor)->Unit(benchmark::kMicrosecond);

void BM_ReadMacControlInfo(benchmark::State &state) {
    SyscallCounter count;
    for (auto _ : state) {
        g_info.mac_count = -1;
        util_read_mac_control_info(&g_info, 0);
        if (g_info.mac_count != 20) state.SkipWithError("records not loaded");
    }
    count.report(state);
}
BENCHMARK(BM_ReadMacControlInfo)->Unit(benchmark::kMicrosecond);

void BM_RecordsWriteInPlaceFloor(benchmark::State &state) {
    SyscallCounter count;
    for (auto _ : state) {
        int fd = open(kRecords, O_WRONLY | O_TRUNC | O_CLOEXEC);
        benchmark::DoNotOptimize(write(fd, &g_info, sizeof g_info));
        close(fd);
    }
    count.report(state);
}
BENCHMARK(BM_RecordsWriteInPlaceFloor)->Unit(benchmark::kMicrosecond);

void BM_RecordsStdioInPlace(benchmark::State &state) {
    SyscallCounter count;
    for (auto _ : state) {
        FILE *f = fopen(kRecords, "wb");
        benchmark::DoNotOptimize(fwrite(&g_info, sizeof g_info, 1, f));
        fclose(f);
    }
    count.report(state);
}
BENCHMARK(BM_RecordsStdioInPlace)->Unit(benchmark::kMicrosecond);

void BM_SaveMacControlInfo(benchmark::State &state) {
    SyscallCounter count;
    for (auto _ : state) util_save_mac_control_info(&g_info, 0);
    count.report(state);
}
BENCHMARK(BM_SaveMacControlInfo)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (!getenv("CMDLIB_IN_DEVICE")) {
        fprintf(stderr,
                "lan_bench writes the router's fixed paths: run it through\n"
                "  tools/device/run-in-device --build BUILD -- BUILD/lan_bench\n");
        return 2;
    }
    memset(&g_info, 'x', sizeof g_info);
    g_info.mac_count = 20;
    util_save_mac_control_info(&g_info, 0);
    if (!write_leases()) {
        fprintf(stderr, "lan_bench: cannot write %s\n", kLeases);
        return 1;
    }
    benchmark::AddCustomContext("lease_lines", std::to_string(kLeaseLines));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
