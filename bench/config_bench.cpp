// Reading selected keys of an export: util_config_read_specified_fields
// against the floor (reading the same file line by line and doing nothing
// else) and against comparing every line with every requested key.
//
// The file has 3,000 assignments; the request is the union of every
// module's key list and the firewall keys (about 400 keys with the
// duplicates between lists), spread over the file so that the reader goes
// through all of it.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/internal/line_reader.h"
#include "base/internal/text.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_dhcp.h"
#include "cmdlib/cmdlib_firewall_config.h"
#include "cmdlib/cmdlib_gre.h"
#include "cmdlib/cmdlib_ip_passthrough.h"
#include "cmdlib/cmdlib_l2tp.h"
#include "cmdlib/cmdlib_lock_network.h"
#include "cmdlib/cmdlib_snmp.h"
#include "cmdlib/cmdlib_special_configs.h"
#include "cmdlib/cmdlib_tr069.h"
#include "cmdlib/cmdlib_upnp.h"
#include "cmdlib/cmdlib_web.h"
#include "cmdlib/internal/config_parse.h"

namespace {

constexpr int kLines = 3000;
constexpr int kCapacity = 1800;

struct Fixture {
    std::string path;
    std::vector<const char *> keys;
    int distinct = 0;

    Fixture() {
        keys.resize(kCapacity);
        int n = 0;
        for (auto add : {util_lock_network_add_fields_need_to_read, util_ip_passthrough_add_fields_need_to_read,
                         util_snmp_add_fields_need_to_read, util_gre_add_fields_need_to_read,
                         util_l2tp_add_fields_need_to_read, util_tr069_add_fields_need_to_read,
                         util_web_add_fields_need_to_read, util_upnp_add_fields_need_to_read,
                         util_special_configs_add_fields_need_to_read, util_dhcp_add_fields_need_to_read,
                         util_firewall_config_add_fields_need_to_read})
            n += add(keys.data() + n, kCapacity - n);
        keys.resize(static_cast<size_t>(n));

        // Requested keys appear once each, evenly spread; the other lines
        // are settings nobody asked for.
        std::vector<std::string> wanted;
        for (const char *k : keys) {
            bool dup = false;
            for (const std::string &w : wanted) dup = dup || w == k;
            if (!dup) wanted.emplace_back(k);
        }
        distinct = static_cast<int>(wanted.size());
        std::string text;
        size_t next = 0;
        for (int i = 0; i < kLines; ++i) {
            bool requested = next < wanted.size() &&
                             static_cast<size_t>(i) * wanted.size() / kLines >= next;
            std::string key = requested ? wanted[next++] : "QX_UNREQUESTED_SETTING_" + std::to_string(i);
            text += "export " + key + "=\"value of setting " + std::to_string(i) + "\"\n";
        }
        char tmpl[] = "/tmp/config_bench_XXXXXX";
        int fd = mkstemp(tmpl);
        if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) abort();
        close(fd);
        path = tmpl;
    }
    ~Fixture() { unlink(path.c_str()); }
};

Fixture &fixture() {
    static Fixture f;
    return f;
}

// The floor: open, read every line with the same 256-byte reads, close.
void BM_ReadLinesOnly(benchmark::State &state) {
    Fixture &f = fixture();
    for (auto _ : state) {
        FILE *fp = fopen(f.path.c_str(), "r");
        cmdlib::LineReader<256> reader(fp);
        std::string_view line;
        size_t bytes = 0;
        while (reader.next(&line)) bytes += line.size();
        fclose(fp);
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(BM_ReadLinesOnly);

void BM_ReadSpecifiedFields(benchmark::State &state) {
    Fixture &f = fixture();
    static ConfigKeyValuePair pairs[kCapacity];
    int n = 0;
    for (auto _ : state) {
        n = util_config_read_specified_fields(f.path.c_str(), f.keys.data(), static_cast<int>(f.keys.size()),
                                              pairs, kCapacity);
        benchmark::DoNotOptimize(n);
    }
    if (n != f.distinct) state.SkipWithError("not every requested key was read");
    state.counters["keys"] = static_cast<double>(f.keys.size());
    state.counters["pairs"] = n;
}
BENCHMARK(BM_ReadSpecifiedFields);

// Every line against every requested key in order, as a straightforward
// reader would do it.
void BM_NestedComparison(benchmark::State &state) {
    Fixture &f = fixture();
    static ConfigKeyValuePair pairs[kCapacity];
    const int nkeys = static_cast<int>(f.keys.size());
    int n = 0;
    for (auto _ : state) {
        FILE *fp = fopen(f.path.c_str(), "r");
        cmdlib::LineReader<256> reader(fp);
        std::string_view line;
        n = 0;
        char name[256];
        while (n < nkeys && reader.next(&line)) {
            std::string_view k;
            std::string_view v;
            if (!cmdlib::split_pair_line(line, &k, &v)) continue;
            cmdlib::copy_bounded(name, sizeof name, k);
            for (int i = 0; i < nkeys; ++i) {
                if (strcmp(name, f.keys[static_cast<size_t>(i)]) == 0) {
                    cmdlib::copy_bounded(pairs[n].key, sizeof pairs[n].key, k);
                    cmdlib::copy_bounded(pairs[n].value, sizeof pairs[n].value, v);
                    ++n;
                    break;
                }
            }
        }
        fclose(fp);
        benchmark::DoNotOptimize(n);
    }
    if (n != f.distinct) state.SkipWithError("not every requested key was read");
}
BENCHMARK(BM_NestedComparison);

}  // namespace

BENCHMARK_MAIN();
