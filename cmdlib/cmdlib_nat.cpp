// Rule checker and fix: the exported pair binds the listing file and the
// shell runner; the rule parser and the commands live in
// cmdlib/internal/rule_listing.h.
#include "cmdlib/cmdlib_nat.h"

#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/libbase.h"
#include "cmdlib/internal/rule_listing.h"

using cmdlib::CommandLine;

namespace {
// Fewer counting lines than this mean the listing command failed: even an
// empty filter table lists its three chain policies.
constexpr int kMinRuleLines = 3;
}  // namespace

extern "C" {

CMDLIB_API int util_nat_check_if_nat_exist(const char *iptables_s_result_file,
                                           NATEntryChecker *nat_checker, int nat_checker_count) {
    int count = nat_checker ? nat_checker_count : 0;
    int lines = 0;
    bool opened = cmdlib::read_lines<256>(iptables_s_result_file, [&](auto &r) {
        lines = cmdlib::count_nat_matches(r, nat_checker, count);
    });
    return opened && lines >= kMinRuleLines ? 0 : -1;
}

CMDLIB_API void util_nat_fix_nat_entry(NATEntryChecker *nat_checker, int nat_checker_count) {
    if (!nat_checker) return;
    for (int i = 0; i < nat_checker_count; ++i) {
        const NATEntryChecker &c = nat_checker[i];
        if (!cmdlib::nat_fix_needed(c)) continue;
        CommandLine<256> cmd;
        // A rule cut short could mean another rule: it is not run.
        if (!cmdlib::nat_fix_command(c, &cmd)) continue;
        cmdlib::run_command(cmd);
        if (cmdlib::nat_fix_flushes_conntrack(c)) util_shell("conntrack -F");
    }
}

}  // extern "C"
