// The netlink monitor against a burst of 10,000 route events (5,000 host
// routes added, then deleted, by one "ip -batch").  Runs inside the
// throwaway device, whose kernel the burst changes:
//
//   tools/device/run-in-device --build BUILD -- BUILD/netlink_bench
//
// - read: draining the burst from a routing socket whose buffer holds all
//   of it, 2048 bytes a read as the monitor reads (the floor);
// - decode: the monitor's walk and decoders over the same messages, kept
//   from one burst;
// - monitor / ip -o monitor: a child process that follows the burst, the
//   library's monitor or iproute2's, timed by the CPU the child used.  The
//   monitor's 20480-byte receive buffer may overrun while the burst is
//   written: "events" counts what each child received.
#include <benchmark/benchmark.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/internal/raii.h"
#include "cmdlib/cmdlib_netlink.h"
#include "cmdlib/internal/netlink_parse.h"

namespace {

constexpr int kRoutes = 5000;  // each added and deleted: 10,000 events
constexpr const char *kBurst = "ip -batch /tmp/nl_burst";

bool write_burst() {
    FILE *f = fopen("/tmp/nl_burst", "w");
    if (!f) return false;
    for (const char *op : {"add", "del"})
        for (int i = 0; i < kRoutes; ++i)
            fprintf(f, "route %s 10.200.%d.%d/32 dev usb0\n", op, i / 250, i % 250 + 1);
    return fclose(f) == 0;
}

cmdlib::UniqueFd route_socket() {
    cmdlib::UniqueFd fd(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_ROUTE));
    int size = 64 << 20;  // the whole burst fits
    sockaddr_nl addr{};
    addr.nl_family = AF_NETLINK;
    addr.nl_groups = RTMGRP_IPV4_ROUTE;
    if (!fd || setsockopt(fd.get(), SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0 ||
        bind(fd.get(), reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0)
        fd.reset();
    return fd;
}

// Every datagram waiting on the socket, read 2048 bytes at a time.
size_t drain(int fd, std::vector<std::vector<uint8_t>> *keep) {
    uint8_t buf[2048];
    size_t n = 0;
    for (ssize_t got; (got = recv(fd, buf, sizeof buf, MSG_DONTWAIT)) > 0; ++n)
        if (keep) keep->emplace_back(buf, buf + got);
    return n;
}

std::vector<std::vector<uint8_t>> g_burst;  // one burst's datagrams

void BM_ReadFromSocket(benchmark::State &state) {
    cmdlib::UniqueFd fd = route_socket();
    size_t n = 0;
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        state.PauseTiming();
        if (!fd || system(kBurst) != 0) state.SkipWithError("burst failed");
        state.ResumeTiming();
        n = drain(fd.get(), g_burst.empty() ? &g_burst : nullptr);
        state.SetItemsProcessed(state.items_processed() + static_cast<int64_t>(n));
    }
    state.counters["messages"] = static_cast<double>(n);
}
BENCHMARK(BM_ReadFromSocket)->Unit(benchmark::kMillisecond)->Iterations(5);

int count_route(NetlinkRouteEventData *d) { return d->dst_len; }

void BM_Decode(benchmark::State &state) {
    if (g_burst.empty()) return state.SkipWithError("no burst kept: run BM_ReadFromSocket first");
    NLEventCallBackInfo info{};
    info.on_route_info_changed = count_route;
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        for (const auto &d : g_burst) cmdlib::deliver_buffer(d.data(), d.size(), info);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(g_burst.size()));
}
BENCHMARK(BM_Decode)->Unit(benchmark::kMillisecond);

// ---- children following the burst ----------------------------------------------

bool has_socket_of(pid_t pid) {
    char want[32];
    snprintf(want, sizeof want, " 0   %-10d ", pid);
    for (int i = 0; i < 5000; ++i) {
        FILE *f = fopen("/proc/net/netlink", "r");
        char line[256];
        bool found = false;
        while (f && !found && fgets(line, sizeof line, f)) found = strstr(line, want) != nullptr;
        if (f) fclose(f);
        if (found) return true;
        usleep(1000);
    }
    return false;
}

double cpu_seconds(const rusage &ru) {
    return static_cast<double>(ru.ru_utime.tv_sec + ru.ru_stime.tv_sec) +
           static_cast<double>(ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
}

int g_seen = 0;
int seen(NetlinkRouteEventData *) { return ++g_seen; }

// The library's monitor in a child: it returns one quiet second after the
// burst and reports how many events it saw.
void BM_MonitorChild(benchmark::State &state) {
    int events = 0;
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        int p[2];
        if (pipe(p) != 0) return state.SkipWithError("pipe");
        pid_t pid = fork();
        if (pid == 0) {
            NLEventCallBackInfo info{};
            info.timeout = 1;
            info.return_when_timeout = 1;
            info.on_route_info_changed = seen;
            util_netlink_wait_for_events(RTMGRP_IPV4_ROUTE, &info);
            _exit(write(p[1], &g_seen, sizeof g_seen) == sizeof g_seen ? 0 : 1);
        }
        close(p[1]);
        if (!has_socket_of(pid) || system(kBurst) != 0) state.SkipWithError("burst failed");
        rusage ru{};
        wait4(pid, nullptr, 0, &ru);
        if (read(p[0], &events, sizeof events) != sizeof events) events = -1;
        close(p[0]);
        state.SetIterationTime(cpu_seconds(ru));
    }
    state.counters["events"] = events;
}
BENCHMARK(BM_MonitorChild)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

// "ip -o monitor route" in a child, its lines counted until it has been
// quiet for a second.
void BM_IpMonitorChild(benchmark::State &state) {
    int events = 0;
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        int p[2];
        if (pipe(p) != 0) return state.SkipWithError("pipe");
        pid_t pid = fork();
        if (pid == 0) {
            dup2(p[1], 1);
            close(p[0]);
            close(p[1]);
            execlp("ip", "ip", "-o", "monitor", "route", static_cast<char *>(nullptr));
            _exit(127);
        }
        close(p[1]);
        if (!has_socket_of(pid) || system(kBurst) != 0) state.SkipWithError("burst failed");
        events = 0;
        char buf[65536];
        pollfd pf = {p[0], POLLIN, 0};
        while (poll(&pf, 1, 1000) == 1) {
            ssize_t n = read(p[0], buf, sizeof buf);
            if (n <= 0) break;
            for (ssize_t i = 0; i < n; ++i) events += buf[i] == '\n';
        }
        kill(pid, SIGTERM);
        rusage ru{};
        wait4(pid, nullptr, 0, &ru);
        close(p[0]);
        state.SetIterationTime(cpu_seconds(ru));
    }
    state.counters["events"] = events;
}
BENCHMARK(BM_IpMonitorChild)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (!getenv("CMDLIB_IN_DEVICE")) {
        fprintf(stderr,
                "netlink_bench changes the kernel's routes: run it through\n"
                "  tools/device/run-in-device --build BUILD -- BUILD/netlink_bench\n");
        return 2;
    }
    if (!write_burst()) {
        fprintf(stderr, "netlink_bench: cannot write the burst\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
