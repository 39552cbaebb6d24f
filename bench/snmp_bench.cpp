// One SNMP parameter for the agent's polling loop: the dispatcher's lookup
// plus getter (worst case, the last row), against the same getter called
// directly (the floor: copying the value out), and against re-reading the
// module file for every request (what a provider without the cached record
// would do).  The record is filled once from a module file in /tmp.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include "cmdlib/cmdlib_snmp_data.h"

namespace {

constexpr char kModuleFile[] = "/tmp/cmdlib_snmp_bench.moduleinfo";

void fill_record() {
    FILE *f = fopen(kModuleFile, "w");
    if (!f) abort();
    fputs("imei:867530012345678\nimsi:460011234567890\nmodversion:T750_V1.0.3\nCellID:123456\n", f);
    fclose(f);
    memset(&global_system_info_struct, 0, sizeof global_system_info_struct);
    strcpy(global_system_info_struct.imei, "867530012345678");
    strcpy(global_system_info_struct.QXRSRP, "-97");
    strcpy(global_system_info_struct.QXRSRP2, "-99");
    util_snmp_data_have_initialized = 1;
}

void BM_DispatchImei(benchmark::State &state) {
    fill_record();
    char value[64];
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        benchmark::DoNotOptimize(
            util_snmp_data_get_specified_parameter("IMEI", value, sizeof value));
    }
}
BENCHMARK(BM_DispatchImei);

void BM_DispatchLastRow(benchmark::State &state) {
    fill_record();
    char value[64];
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        benchmark::DoNotOptimize(
            util_snmp_data_get_specified_parameter("WLANBSSI", value, sizeof value));
    }
}
BENCHMARK(BM_DispatchLastRow);

void BM_DispatchRsrpMean(benchmark::State &state) {
    fill_record();
    char value[64];
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        benchmark::DoNotOptimize(
            util_snmp_data_get_specified_parameter("RSRP", value, sizeof value));
    }
}
BENCHMARK(BM_DispatchRsrpMean);

void BM_FloorDirectGetter(benchmark::State &state) {
    fill_record();
    char value[64];
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        benchmark::DoNotOptimize(util_snmp_data_get_IMEI(value, sizeof value));
    }
}
BENCHMARK(BM_FloorDirectGetter);

void BM_RereadModuleFile(benchmark::State &state) {
    fill_record();
    char value[64];
    for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): counts iterations
        FILE *f = fopen(kModuleFile, "r");
        char line[256];
        while (f && fgets(line, sizeof line, f))
            if (strncmp(line, "imei:", 5) == 0) snprintf(value, sizeof value, "%.63s", line + 5);
        if (f) fclose(f);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_RereadModuleFile);

}  // namespace

BENCHMARK_MAIN();
