// The shell names in a daemon's polling loop.
//
// Key lookup: every configuration key of the record looked up once by
// name (util_get_config_field_value) against the floor (strlen of each key:
// reading the input) and against what a firmware developer would write by
// hand, a chain of strcmp over the key names in record order.
//
// Export: a record with every exported setting filled (half of them with a
// character that needs escaping) rendered as export lines, against the
// floor (strnlen and memcpy of every exported value into one buffer) and
// against snprintf of each line without any escaping.
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/shell_export.h"

namespace {

using cmdlib::InfoFieldDesc;
using cmdlib::kInfoFields;

std::vector<std::string> configuration_keys() {
    std::vector<std::string> keys;
    for (const InfoFieldDesc &f : kInfoFields)
        if (f.group <= 8) keys.emplace_back(f.name);
    return keys;
}

void BM_KeyFloor(benchmark::State &state) {
    auto keys = configuration_keys();
    for (auto _ : state)
        for (const std::string &k : keys) benchmark::DoNotOptimize(strlen(k.c_str()));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}
BENCHMARK(BM_KeyFloor);

void BM_KeyLookup(benchmark::State &state) {
    auto keys = configuration_keys();
    static InfoStruct info;
    for (auto _ : state)
        for (const std::string &k : keys) benchmark::DoNotOptimize(util_get_config_field_value(&info, k.c_str()));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}
BENCHMARK(BM_KeyLookup);

void BM_KeyStrcmpChain(benchmark::State &state) {
    auto keys = configuration_keys();
    static InfoStruct info;
    for (auto _ : state)
        for (const std::string &k : keys) {
            char *hit = nullptr;
            for (const InfoFieldDesc &f : kInfoFields)
                if (f.group <= 8 && strcmp(k.c_str(), f.name) == 0) {
                    hit = reinterpret_cast<char *>(&info) + f.offset;
                    break;
                }
            benchmark::DoNotOptimize(hit);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}
BENCHMARK(BM_KeyStrcmpChain);

InfoStruct *filled_record() {
    static InfoStruct info;
    int n = 0;
    for (cmdlib::info_field::Id id : cmdlib::kConfigExportOrder) {
        const InfoFieldDesc &f = kInfoFields[id];
        snprintf(cmdlib::info_field_ptr(&info, f), f.width, n % 2 ? "value-%d" : "va$lue-%d", n);
        ++n;
        cmdlib::info_set_defined_bit(&info, f.bit);
    }
    return &info;
}

void BM_ExportFloor(benchmark::State &state) {
    InfoStruct *info = filled_record();
    static char out[cmdlib::kConfigExportCapacity];
    for (auto _ : state) {
        size_t at = 0;
        for (cmdlib::info_field::Id id : cmdlib::kConfigExportOrder) {
            const InfoFieldDesc &f = kInfoFields[id];
            const char *v = cmdlib::info_field_ptr(info, f);
            size_t n = strnlen(v, f.width);
            memcpy(out + at, v, n);
            at += n;
        }
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(at);
    }
}
BENCHMARK(BM_ExportFloor);

void BM_ExportRender(benchmark::State &state) {
    InfoStruct *info = filled_record();
    static char out[cmdlib::kConfigExportCapacity];
    for (auto _ : state) benchmark::DoNotOptimize(cmdlib::render_config_export(info, out, sizeof out));
}
BENCHMARK(BM_ExportRender);

void BM_ExportSnprintfUnescaped(benchmark::State &state) {
    InfoStruct *info = filled_record();
    static char out[cmdlib::kConfigExportCapacity];
    for (auto _ : state) {
        size_t at = 0;
        for (cmdlib::info_field::Id id : cmdlib::kConfigExportOrder) {
            const InfoFieldDesc &f = kInfoFields[id];
            const char *v = cmdlib::info_field_ptr(info, f);
            at += static_cast<size_t>(snprintf(out + at, sizeof out - at, "\nexport %s=\"%.*s\"", f.name,
                                               static_cast<int>(strnlen(v, f.width)), v));
        }
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(at);
    }
}
BENCHMARK(BM_ExportSnprintfUnescaped);

}  // namespace
