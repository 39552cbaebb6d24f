// cmdlib_module: the AT command channel through "sendat", the modem's ports,
// the log and dial processes and the status indication's dial status.
#include <string.h>
#include <unistd.h>

#include "base/internal/command_line.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_info.h"
#include "cmdlib/cmdlib_module.h"
#include "cmdlib/internal/at_channel.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/internal/status_ind.h"

namespace {

// ---- AT channel ------------------------------------------------------------------

constexpr const char *kAtPort = "/dev/ttyUSB1";
// A pass sleeps one second only while no answer is there, so this is the
// longest wait for a silent module, in seconds.
constexpr int kAtWaitPasses = 60;

void sleep_one_second() { sleep(1); }
cmdlib::AtSleep g_at_sleep = sleep_one_second;

// ---- modem processes ---------------------------------------------------------------

// Dial programs known on this product: none.  util_is_dial_program_running
// then assumes that one runs.
constexpr const char *const *all_4g_modem_dial_process_names = nullptr;
constexpr int kDialProcessNameCount = 0;

// Every program that may hold the modem's ports or restart a dial, killed
// in this order before a module firmware upgrade.
constexpr const char *kModemUpgradeKillList[] = {
    "checkusbnet", "lte",          "changepin",  "enablepin",          "disablepin",
    "unlockpin",   "sendsms",      "listsms",    "delsms",             "listplmn",
    "writeimei",   "pppmanager",   "linkmanager", "sendat",            "dialp500",
    "ppp4gmanager", "dialsim7100", "dialslm630b", "dialbls001",        "udhcpc",
    "ComProxy",    "rdisc6",       "checksysmanagetool", "sysmanagetool", "dial7510",
    "querymodulestatus", "diaggrab", "dialu8300", "diallm923s",
};
static_assert(sizeof kModemUpgradeKillList / sizeof kModemUpgradeKillList[0] == 29,
              "29 processes stopped before a module upgrade");

int running(const char *name) { return cmd_ps_is_one_program_running(const_cast<char *>(name)); }

}  // namespace

cmdlib::AtSleep cmdlib::set_at_sleep(AtSleep sleep_fn) {
    AtSleep previous = g_at_sleep;
    g_at_sleep = sleep_fn ? sleep_fn : sleep_one_second;
    return previous;
}

extern "C" {

// ---- AT command channel ------------------------------------------------------------------

CMDLIB_API void util_send_at_commands(const char *at, char *response, int size, int max_timeout) {
    // max_timeout is an on/off switch: any non-zero value waits the full
    // budget of passes.
    int budget = max_timeout ? kAtWaitPasses : 0;
    char cmd_file[256];
    char out_file[256];
    util_get_tmp_uuid_file_path(cmd_file);
    util_get_tmp_uuid_file_path(out_file);
    if (response && size > 0) memset(response, 0, static_cast<size_t>(size));
    if (!at || !at[0]) return;

    cmd_echo(at, cmd_file);
    cmd_rm(out_file);
    // One sender at a time system-wide: the port has one reader.
    util_shell("killall sendat 1>/dev/null 2>&1");
    // The temporary names are ours ("/tmp/.cmdlib_tmp_..."), so the line
    // needs no quoting and always fits; the AT text itself travels in the
    // command file.
    cmdlib::CommandLine<512> line;
    if (!line.format("sendat -d%s -f%s -o%s  1>/dev/null 2>&1 &", kAtPort, cmd_file, out_file))
        budget = 0;
    cmdlib::run_command(line);

    while (budget > 0) {
        // Once the answer is being written it is re-read without pause
        // until the sender exits.
        if (cmd_file_exist(out_file)) {
            if (response) cmd_cat(out_file, response, size);
        } else {
            g_at_sleep();
        }
        if (!running("sendat")) {
            if (response && cmd_file_exist(out_file)) cmd_cat(out_file, response, size);
            break;
        }
        --budget;
    }
    if (budget != 0) g_at_sleep();  // left early: let the sender release the port
    cmd_rm(cmd_file);
    cmd_rm(out_file);
}

CMDLIB_API char *util_get_at_port(void) { return const_cast<char *>(kAtPort); }

CMDLIB_API char *util_get_wrapped_at_cmd_for_module(char *, char *original_at_cmd_string, char *) {
    return original_at_cmd_string;
}

CMDLIB_API char *util_get_modem_log_file_name(void) { return const_cast<char *>(""); }

// ---- modem processes -----------------------------------------------------------------------

CMDLIB_API int util_is_log_tools_running(void) {
    if (running("ComProxy")) return 1;
    // remserial only counts when it serves a port ("-s ... -p ...").
    char *remserial_args[] = {const_cast<char *>("-s"), const_cast<char *>("-p")};
    if (cmd_ps_is_one_program_running_ex(const_cast<char *>("remserial"), remserial_args, 2,
                                         nullptr))
        return 1;
    if (running("diaggrab") || running("diag_socket_log")) return 1;
    return 0;
}

CMDLIB_API int util_get_all_dial_process_names(char **process_names, int max_count) {
    if (!process_names) return 0;
    int n = 0;
    for (int i = 0; i < kDialProcessNameCount && n < max_count; ++i)
        process_names[n++] = const_cast<char *>(all_4g_modem_dial_process_names[i]);
    return n;
}

CMDLIB_API int util_is_dial_program_running(void) {
    char *names[64];
    int count = util_get_all_dial_process_names(names, 64);
    // With no dial program known, assume one runs rather than have the
    // callers restart a dial that may well be up.
    if (count == 0) return 1;
    for (int i = 0; i < count; ++i)
        if (running(names[i])) return 1;
    return 0;
}

CMDLIB_API void util_kill_some_processes_for_modem_upgarde(void) {
    for (const char *name : kModemUpgradeKillList) {
        cmdlib::CommandLine<128> cmd;
        cmd.format("killall %s 1>/dev/null 2>&1", name);
        cmdlib::run_command(cmd);
    }
}

CMDLIB_API int cmd_get_dial_status_and_signal_quality(int *dial_status, int *signal_quality) {
    char text[128] = "";
    cmd_cat(cmdlib::kStatusIndFile, text, sizeof text);
    return cmdlib::status_dial_and_signal(text, dial_status, signal_quality);
}

CMDLIB_API char *util_get_the_second_wan_interface_name(void) { return const_cast<char *>("eth1"); }

CMDLIB_API char *util_get_apn_for_the_second_wan_interface(InfoStruct *info_struct) {
    return info_struct ? info_struct->QX_CONFIG_APN_NAME3 : const_cast<char *>("");
}

CMDLIB_API int util_should_we_use_the_second_apn(InfoStruct *info_struct) {
    const char *ifname = util_get_the_second_wan_interface_name();
    if (!ifname || !ifname[0] || !info_struct) return 0;
    return cmdlib::field_text(info_struct->QX_CONFIG_APN_NAME3).empty() ? 0 : 1;
}

CMDLIB_API int util_get_default_cid_value_for_the_second_apn(InfoStruct *) { return 0; }

}  // extern "C"
