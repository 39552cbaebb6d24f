// Validating a 256 MiB firmware image: size check + MD5 through
// util_check_if_upgrade_file_is_valid (util_check_if_md5_sum_is_right
// underneath), against "md5sum -c" on the same list (what the FOTA script
// would otherwise run) and against reading the image alone (the floor).
// Wall time, warm page cache; the image lives in /tmp.
#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib_fota.h"

namespace {

constexpr size_t kImageSize = 256u << 20;
const std::string kDir = "/tmp/cmdlib_md5_bench";
const std::string kImage = kDir + "/fw.img";
const std::string kList = kDir + "/fw.img.md5.txt";
std::string g_digest;

// The image (pseudo-random bytes, so nothing compresses or repeats) and its
// checksum list, made once.
void make_image() {
    if (!g_digest.empty()) return;
    util_dir_mkdir(kDir.c_str(), 0755);
    int fd = open(kImage.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<unsigned char> chunk(1 << 20);
    uint64_t x = 88172645463325252ull;
    for (size_t done = 0; done < kImageSize; done += chunk.size()) {
        for (auto &b : chunk) {
            x ^= x << 13, x ^= x >> 7, x ^= x << 17;
            b = static_cast<unsigned char>(x);
        }
        if (write(fd, chunk.data(), chunk.size()) != static_cast<ssize_t>(chunk.size())) abort();
    }
    close(fd);
    char out[64] = "";
    util_get_cmd_result(("md5sum " + kImage).c_str(), out, 33);
    g_digest = out;
    cmd_echo((g_digest + "  " + kImage).c_str(), kList.c_str());
}

void BM_ReadImageFloor(benchmark::State &state) {
    make_image();
    std::vector<char> buf(64 * 1024);
    for (auto _ : state) {
        int fd = open(kImage.c_str(), O_RDONLY);
        ssize_t n;
        size_t total = 0;
        while ((n = read(fd, buf.data(), buf.size())) > 0) total += static_cast<size_t>(n);
        close(fd);
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImageSize));
}

void BM_ValidateImage(benchmark::State &state) {
    make_image();
    std::string size = std::to_string(kImageSize);
    for (auto _ : state) {
        char *err = util_check_if_upgrade_file_is_valid(kImage.c_str(), kList.c_str(), size.c_str(),
                                                        g_digest.c_str(), 0);
        if (err) state.SkipWithError(err);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImageSize));
}

void BM_Md5sumCheck(benchmark::State &state) {
    make_image();
    std::string cmd = "md5sum -c --status " + kList;
    for (auto _ : state)
        if (util_shell(cmd.c_str()) != 0) state.SkipWithError("md5sum -c failed");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kImageSize));
}

BENCHMARK(BM_ReadImageFloor)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ValidateImage)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Md5sumCheck)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
