// Device start-up: what every device test binary, the demo and each
// host-side device check pay before their first line runs.
//
//   floor       unshare --mount --pid --net --fork true: the namespaces alone
//   set-up      the same namespaces plus device_sim --setup: overlay root,
//               fresh /proc, /sys, /tmp, /run, /dev, the trees bound, the
//               simulators linked, both network namespaces and their links
//   device      tools/device/run-in-device --build BUILD -- true: all of it,
//               with the runner's checks and the bash that stays PID 1
//
// Needs root.  Finds the runner and the build tree through CMDLIB_RUNNER and
// CMDLIB_BUILD, else from its own place: it sits at the top of the build
// tree, whose CMakeCache.txt names the checkout.
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

struct Trees {
    std::string src, build;
};

Trees find_trees() {
    Trees t;
    if (const char *b = getenv("CMDLIB_BUILD")) t.build = b;
    if (t.build.empty()) {
        char self[4096];
        ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
        if (n > 0) t.build.assign(self, static_cast<size_t>(n)).resize(t.build.rfind('/'));
    }
    if (const char *r = getenv("CMDLIB_RUNNER")) {
        t.src = r;
        t.src.resize(t.src.size() - std::string("/tools/device/run-in-device").size());
        return t;
    }
    std::ifstream cache(t.build + "/CMakeCache.txt");
    const std::string key = "CMAKE_HOME_DIRECTORY:INTERNAL=";
    for (std::string line; std::getline(cache, line);)
        if (line.compare(0, key.size(), key) == 0) t.src = line.substr(key.size());
    return t;
}

const Trees &trees() {
    static const Trees t = find_trees();
    return t;
}

// Runs argv with all output discarded; its wait status.
int run(const std::vector<std::string> &args) {
    std::vector<char *> argv;
    argv.reserve(args.size() + 1);
    for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&fa, 1, 2);
    pid_t pid = -1;
    int rc = posix_spawnp(&pid, argv[0], &fa, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&fa);
    if (rc != 0) return -1;
    int status = -1;
    waitpid(pid, &status, 0);
    return status;
}

void measure(benchmark::State &state, const std::vector<std::string> &args) {
    if (trees().src.empty() || run(args) != 0) {
        state.SkipWithError("cannot start (needs root, namespaces and a built device_sim)");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(run(args));
}

void BM_Floor_NamespacesOnly(benchmark::State &state) {
    measure(state, {"unshare", "--mount", "--pid", "--net", "--fork", "true"});
}

void BM_DeviceSetup(benchmark::State &state) {
    measure(state, {"unshare", "--mount", "--pid", "--net", "--fork", "--propagation", "private",
                    trees().build + "/tools/device/device_sim", "--setup", "ro", trees().src, "/src", "rw",
                    trees().build, "/build"});
}

void BM_Device(benchmark::State &state) {
    measure(state, {trees().src + "/tools/device/run-in-device", "--build", trees().build, "--", "true"});
}

}  // namespace

BENCHMARK(BM_Floor_NamespacesOnly)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DeviceSetup)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Device)->Unit(benchmark::kMillisecond)->UseRealTime();
