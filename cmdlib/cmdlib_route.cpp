// Route checker and fix: the exported pair binds the listing file and the
// shell runner; the listing parser and the commands live in
// cmdlib/internal/rule_listing.h.
#include "cmdlib/cmdlib_route.h"

#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "cmdlib/internal/rule_listing.h"

using cmdlib::CommandLine;

extern "C" {

CMDLIB_API int util_route_check_if_route_exist(const char *route_n_result_file,
                                               RouteEntryChecker *route_checker,
                                               int route_checker_count) {
    int count = route_checker ? route_checker_count : 0;
    bool opened = cmdlib::read_lines<256>(route_n_result_file, [&](auto &r) {
        cmdlib::count_route_matches(r, route_checker, count);
    });
    return opened ? 0 : -1;
}

CMDLIB_API void util_route_fix_route_entry(RouteEntryChecker *route_checker,
                                           int route_checker_count) {
    if (!route_checker) return;
    for (int i = 0; i < route_checker_count; ++i) {
        const RouteEntryChecker &c = route_checker[i];
        if (c.check_content == 0 || c.match_count != 0) continue;
        CommandLine<256> cmd;
        if (cmdlib::route_fix_command(c, &cmd)) cmdlib::run_command(cmd);
    }
}

}  // extern "C"
