// Is a program running: cmd_ps_is_one_program_running against the least a
// /proc walk can do and against asking pgrep in a child process.
//
// Starts 500 sleeping processes first (run it in the device, where the
// process table is private, so that the table holds those 500 and little
// else): tools/device/run-in-device ./build/ps_bench
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

#include <benchmark/benchmark.h>

#include "cmdlib/cmdlib_info.h"

namespace {

constexpr int kProcesses = 500;
// A name nobody runs: every walk goes through the whole table.
char kAbsent[] = "absent-daemon";  // pgrep matches at most 15 characters
char kPresent[] = "sleep";

std::vector<pid_t> g_children;

void start_children() {
    for (int i = 0; i < kProcesses; ++i) {
        pid_t pid = fork();
        if (pid == 0) {
            execlp("sleep", "sleep", "600", static_cast<char *>(nullptr));
            _exit(127);
        }
        if (pid > 0) g_children.push_back(pid);
    }
}

void stop_children() {
    for (pid_t pid : g_children) kill(pid, SIGKILL);
    for (pid_t pid : g_children) waitpid(pid, nullptr, 0);
}

// The floor: list /proc and read the cmdline of each numeric entry.
int minimal_walk() {
    DIR *dir = opendir("/proc");
    if (!dir) return -1;
    int seen = 0;
    char path[300];  // "/proc/" + a name of up to 255 bytes + "/cmdline"
    char buf[512];
    while (const struct dirent *e = readdir(dir)) {
        if (e->d_name[0] < '0' || e->d_name[0] > '9') continue;
        snprintf(path, sizeof path, "/proc/%s/cmdline", e->d_name);
        int fd = open(path, O_RDONLY | O_CLOEXEC);
        if (fd < 0) continue;
        seen += read(fd, buf, sizeof buf) > 0;
        close(fd);
    }
    closedir(dir);
    return seen;
}

void BM_MinimalWalk(benchmark::State &state) {
    for (auto _ : state) benchmark::DoNotOptimize(minimal_walk());
}
BENCHMARK(BM_MinimalWalk);

void BM_IsRunningAbsent(benchmark::State &state) {
    for (auto _ : state) benchmark::DoNotOptimize(cmd_ps_is_one_program_running(kAbsent));
}
BENCHMARK(BM_IsRunningAbsent);

void BM_ProcessCount(benchmark::State &state) {
    int total = 0;
    int started = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(util_get_process_count(kPresent, nullptr, 0, nullptr, &total, &started));
    state.counters["processes"] = total;
}
BENCHMARK(BM_ProcessCount);

void BM_PgrepChild(benchmark::State &state) {
    for (auto _ : state) {
        pid_t pid = fork();
        if (pid == 0) {
            int null_fd = open("/dev/null", O_WRONLY);
            dup2(null_fd, STDOUT_FILENO);
            dup2(null_fd, STDERR_FILENO);
            execlp("pgrep", "pgrep", "-x", kAbsent, static_cast<char *>(nullptr));
            _exit(127);
        }
        int st = 0;
        waitpid(pid, &st, 0);
        benchmark::DoNotOptimize(st);
    }
}
BENCHMARK(BM_PgrepChild);

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    char cwd[4096];
    if (!getcwd(cwd, sizeof cwd)) return 1;
    start_children();
    usleep(200000);  // let every child reach its exec
    benchmark::RunSpecifiedBenchmarks();
    stop_children();
    benchmark::Shutdown();
    return chdir(cwd) == 0 ? 0 : 1;
}
