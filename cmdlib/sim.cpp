// SIM state and the other readers of the status indication line.
#include "cmdlib/sim.h"

#include <string.h>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/status_ind.h"

namespace cmdlib {

int status_sim_exist(const char *text) { return text ? atoi_sat(text) : 0; }

int status_need_pin(char *text) {
    if (!text) return 0;
    return atoi_sat(util_get_next_arg2(text, 1)) == 1 ? 1 : 0;
}

int status_need_puk(char *text) {
    if (!text) return 0;
    char *second = util_get_next_arg2(text, 1);
    return atoi_sat(util_get_next_arg2(second, 0)) == 1 ? 1 : 0;
}

int status_dial_and_signal(char *text, int *dial_status, int *signal_quality) {
    if (!text) return -1;
    char *argv[UTIL_MAX_ARGUMENTS];
    int argc = util_get_all_arguments(text, argv);
    if (argc <= 7) return -1;
    if (dial_status) {
        // 1 is "registered, home network"; 5 (roaming) deliberately does
        // not count as dialled.
        *dial_status = (atoi_sat(argv[5]) == 1 || atoi_sat(argv[6]) == 1 || atoi_sat(argv[7]) == 1)
                           ? 1
                           : 0;
    }
    if (signal_quality) *signal_quality = atoi_sat(argv[3]);
    return 0;
}

}  // namespace cmdlib

namespace {

// 64 bytes hold the ten numbers of any line the dial tool writes.
struct StatusLine {
    char text[64];
    StatusLine() : text() { cmd_cat(cmdlib::kStatusIndFile, text, sizeof text); }
};

}  // namespace

extern "C" {

CMDLIB_API int cmd_sim_exist(void) { return cmdlib::status_sim_exist(StatusLine().text); }
CMDLIB_API int cmd_sim_need_pin(void) { return cmdlib::status_need_pin(StatusLine().text); }
CMDLIB_API int cmd_sim_need_puk(void) { return cmdlib::status_need_puk(StatusLine().text); }

}  // extern "C"
