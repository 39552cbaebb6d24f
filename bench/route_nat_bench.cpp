// Route and rule checkers over real listings: "iptables -S" of 5,000 rules
// and "route -n" of 10,000 routes, made by the device's kernel, each checked
// by 64 checkers (half of them find a line, half find none, so most lines
// are compared with every checker).  Runs inside the throwaway device:
//
//   tools/device/run-in-device --build BUILD -- BUILD/route_nat_bench
//
// The floor reads the listing line by line and splits every line into
// words without matching.  "per-checker re-scan" is the plain way of
// writing a checker loop: every checker reads and parses the whole listing.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "base/internal/line_reader.h"
#include "base/internal/text.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "cmdlib/internal/rule_listing.h"

namespace {

constexpr int kRules = 5000;
constexpr int kRoutes = 10000;
constexpr int kCheckers = 64;
constexpr const char *kRuleListing = "/tmp/bench_rules";
constexpr const char *kRouteListing = "/tmp/bench_routes";

// The kinds of rules a router's filter table holds, in turn.
void rule_line(FILE *f, int i) {
    int a = i / 250, b = i % 250 + 1, port = 1024 + i;
    switch (i % 4) {
        case 0:
            fprintf(f, "-A INPUT -s 10.%d.%d.1/32 -i usb0 -p tcp -m tcp --dport %d -j ACCEPT\n", a,
                    b, port);
            break;
        case 1:
            fprintf(
                f,
                "-A FORWARD -s 192.168.%d.%d/32 -i br0 -o usb0 -p udp -m udp --dport %d -j DROP\n",
                a, b, port);
            break;
        case 2:
            fprintf(f, "-A INPUT -p tcp -m tcp --dport %d -j REJECT --reject-with tcp-reset\n",
                    port);
            break;
        default:
            fprintf(f, "-A OUTPUT -d 10.%d.%d.2/32 -o usb0 -j ACCEPT\n", a, b);
            break;
    }
}

bool make_listings() {
    FILE *f = fopen("/tmp/bench_rules.restore", "w");
    if (!f) return false;
    fprintf(f, "*filter\n:INPUT ACCEPT [0:0]\n:FORWARD ACCEPT [0:0]\n:OUTPUT ACCEPT [0:0]\n");
    for (int i = 0; i < kRules; ++i) rule_line(f, i);
    fprintf(f, "COMMIT\n");
    fclose(f);
    f = fopen("/tmp/bench_routes.batch", "w");
    if (!f) return false;
    for (int i = 0; i < kRoutes; ++i)
        if (i % 2)
            fprintf(f, "route add 10.%d.%d.0/24 via 10.64.0.1 dev usb0\n", 100 + i / 250, i % 250);
        else
            fprintf(f, "route add 172.%d.%d.7/32 dev br0\n", 16 + i / 250, i % 250);
    fclose(f);
    return system("iptables-restore </tmp/bench_rules.restore") == 0 &&
           system("iptables -S >/tmp/bench_rules") == 0 &&
           system("ip -batch /tmp/bench_routes.batch") == 0 &&
           system("route -n >/tmp/bench_routes") == 0;
}

std::vector<NATEntryChecker> nat_checkers() {
    std::vector<NATEntryChecker> c(kCheckers);
    for (int k = 0; k < kCheckers; ++k) {
        NATEntryChecker &x = c[k];
        memset(&x, 0, sizeof x);
        // rule 4 * (k * 19) is an INPUT rule from usb0; the second half asks
        // for ports no rule has
        int i = 4 * (k * 19), port = k < kCheckers / 2 ? 1024 + i : 65000 - k;
        snprintf(x.chain, sizeof x.chain, "INPUT");
        snprintf(x.in_interface, sizeof x.in_interface, "usb0");
        snprintf(x.protocol, sizeof x.protocol, "tcp");
        snprintf(x.destination_port, sizeof x.destination_port, "%d", port);
        snprintf(x.source, sizeof x.source, "10.%d.%d.1/32", i / 250, i % 250 + 1);
        snprintf(x.jump_action, sizeof x.jump_action, "ACCEPT");
        x.check_content = NAT_CHECK_CHAIN | NAT_CHECK_IN_INTERFACE | NAT_CHECK_PROTOCOL |
                          NAT_CHECK_DESTINATION_PORT | NAT_CHECK_SOURCE | NAT_CHECK_JUMP_ACTION;
    }
    return c;
}

std::vector<RouteEntryChecker> route_checkers() {
    std::vector<RouteEntryChecker> c(kCheckers);
    for (int k = 0; k < kCheckers; ++k) {
        RouteEntryChecker &x = c[k];
        memset(&x, 0, sizeof x);
        int i = 2 * (k * 77) + 1;  // a network route via the WAN gateway
        snprintf(x.dest_IP, sizeof x.dest_IP, "10.%d.%d.0", 100 + i / 250,
                 k < kCheckers / 2 ? i % 250 : 251);
        snprintf(x.gateway, sizeof x.gateway, "10.64.0.1");
        snprintf(x.netmask, sizeof x.netmask, "255.255.255.0");
        snprintf(x.interface, sizeof x.interface, "usb0");
        x.check_content =
            ROUTE_CHECK_DEST_IP | ROUTE_CHECK_GATEWAY | ROUTE_CHECK_NETMASK | ROUTE_CHECK_INTERFACE;
    }
    return c;
}

void BM_FloorReadAndSplit(benchmark::State &state, const char *path) {
    for (auto _ :
         state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the loop variable only counts
        size_t words = 0;
        cmdlib::read_lines<256>(path, [&](auto &r) {
            std::string_view line, w[cmdlib::kListingMaxWords];
            while (r.next(&line))
                words +=
                    cmdlib::split_words(line, cmdlib::kBlankOrEol, w, cmdlib::kListingMaxWords);
        });
        benchmark::DoNotOptimize(words);
    }
}
BENCHMARK_CAPTURE(BM_FloorReadAndSplit, rules, kRuleListing)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_FloorReadAndSplit, routes, kRouteListing)->Unit(benchmark::kMillisecond);

void BM_NatCheck(benchmark::State &state) {
    auto c = nat_checkers();
    int found = 0;
    for (auto _ :
         state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the loop variable only counts
        for (auto &x : c) x.match_count = 0;
        if (util_nat_check_if_nat_exist(kRuleListing, c.data(), kCheckers) != 0)
            state.SkipWithError("check failed");
        found = 0;
        for (const auto &x : c) found += x.match_count;
    }
    state.counters["found"] = found;
}
BENCHMARK(BM_NatCheck)->Unit(benchmark::kMillisecond);

void BM_RouteCheck(benchmark::State &state) {
    auto c = route_checkers();
    int found = 0;
    for (auto _ :
         state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the loop variable only counts
        for (auto &x : c) x.match_count = 0;
        if (util_route_check_if_route_exist(kRouteListing, c.data(), kCheckers) != 0)
            state.SkipWithError("check failed");
        found = 0;
        for (const auto &x : c) found += x.match_count;
    }
    state.counters["found"] = found;
}
BENCHMARK(BM_RouteCheck)->Unit(benchmark::kMillisecond);

// Every checker reads and parses the whole listing again.
void BM_NatPerCheckerRescan(benchmark::State &state) {
    auto c = nat_checkers();
    for (auto _ :
         state) {  // NOLINT(clang-analyzer-deadcode.DeadStores): the loop variable only counts
        for (auto &x : c) {
            x.match_count = 0;
            cmdlib::read_lines<256>(kRuleListing, [&](auto &r) {
                std::string_view line, w[cmdlib::kListingMaxWords];
                cmdlib::NatRule rule;
                while (r.next(&line)) {
                    size_t n =
                        cmdlib::split_words(line, cmdlib::kBlankOrEol, w, cmdlib::kListingMaxWords);
                    if (n < 2) continue;
                    cmdlib::parse_nat_rule(w, n, &rule);
                    x.match_count += cmdlib::nat_checker_matches(x, rule);
                }
            });
        }
        benchmark::DoNotOptimize(c.data());
    }
}
BENCHMARK(BM_NatPerCheckerRescan)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (!getenv("CMDLIB_IN_DEVICE")) {
        fprintf(stderr,
                "route_nat_bench needs the device's own kernel tables: run it through\n"
                "  tools/device/run-in-device --build BUILD -- BUILD/route_nat_bench\n");
        return 2;
    }
    if (!make_listings()) {
        fprintf(stderr, "route_nat_bench: cannot make the listings\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
