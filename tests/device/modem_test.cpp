// Modem family inside the device: the AT channel against the sendat
// simulator; the flag files, the status indication file and the signal
// override files as transcripts; the modem process checks.
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_info.h"
#include "cmdlib/cmdlib_module.h"
#include "cmdlib/cmdlib_platform_quectel_x12.h"
#include "cmdlib/cmdlib_signal.h"
#include "cmdlib/internal/at_channel.h"
#include "cmdlib/sim.h"
#include "device.h"
#include "device_steps.h"

namespace {

// Scratch files of the AT channel left behind in /tmp.
int leftover_tmp_files() {
    int n = 0;
    for (auto &e : std::filesystem::directory_iterator("/tmp"))
        if (e.path().filename().string().rfind(".cmdlib_tmp_", 0) == 0) ++n;
    return n;
}

class ModemDevice : public DeviceTest {};

// ---- AT channel -----------------------------------------------------------------

TEST_F(ModemDevice, AtAnswerFoundAndCutToTheBuffer) {
    devtest::sendat_answer("AT+CSQ", "\r\n+CSQ: 23,99\r\n\r\nOK\r\n");
    int before = leftover_tmp_files();
    char resp[128];
    memset(resp, 'x', sizeof resp);
    util_send_at_commands("AT+CSQ", resp, sizeof resp, 5);
    EXPECT_STREQ("\r\n+CSQ: 23,99\r\n\r\nOK\r\n", resp);
    auto calls = devtest::calls("sendat");
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(0u, calls[0].find("sendat -d/dev/ttyUSB1 -f/tmp/.cmdlib_tmp_")) << calls[0];
    EXPECT_NE(std::string::npos, calls[0].find(" -o/tmp/.cmdlib_tmp_")) << calls[0];
    EXPECT_EQ(before, leftover_tmp_files());  // both scratch files removed

    // an answer larger than the buffer is cut; nothing written past size
    devtest::sendat_answer("ATI", std::string(300, 'A'));
    memset(resp, 'x', sizeof resp);
    util_send_at_commands("ATI", resp, 16, 1);
    EXPECT_EQ(std::string(15, 'A'), std::string(resp));
    EXPECT_EQ('x', resp[16]);
}

// The channel's one-second sleep, made short and counted.  The first one
// lasts until the sender runs, as the real second does: the shell starts
// it in the background and a first look at once could miss it.
int g_at_sleeps = 0;
void counted_short_sleep() {
    if (g_at_sleeps++ == 0) {
        devtest::wait_for_calls("sendat", 1);
    } else {
        usleep(1000);
    }
}

TEST_F(ModemDevice, AtNoAnswerEndsAfterTheBudgetOfPasses) {
    devtest::sendat_answer("AT+HANG", "never", -1);
    char resp[32];
    memset(resp, 'x', sizeof resp);
    g_at_sleeps = 0;
    cmdlib::AtSleep previous = cmdlib::set_at_sleep(counted_short_sleep);
    util_send_at_commands("AT+HANG", resp, sizeof resp, 1);
    cmdlib::set_at_sleep(previous);
    EXPECT_EQ(std::string(32, '\0'), std::string(resp, 32));  // all zero: no answer
    // Each pass without an answer sleeps once; the budget runs out, so no
    // extra sleep follows: exactly 60.
    EXPECT_EQ(g_at_sleeps, 60);
    EXPECT_EQ(devtest::calls("sendat").size(), 1u);
    util_kill_some_processes_for_modem_upgarde();  // the hung sender goes too
}

TEST_F(ModemDevice, AtWithoutWaitReturnsAtOnceAndEmptyCommandStartsNothing) {
    char resp[8] = "old";
    util_send_at_commands("", resp, sizeof resp, 60);
    EXPECT_STREQ("", resp);
    util_send_at_commands(nullptr, resp, sizeof resp, 60);
    util_send_at_commands("AT", nullptr, 0, 0);  // no response buffer: runs, never writes
    ASSERT_TRUE(devtest::wait_for_calls("sendat", 1));

    // Without waiting the call is back although the sender never finishes;
    // a waiting call would spend its whole budget of 60 one-second passes.
    devtest::set_answer_delay("sendat", -1);
    strcpy(resp, "old");
    std::atomic<bool> back{false};
    std::thread caller([&] {
        util_send_at_commands("AT", resp, sizeof resp, 0);
        back = true;
    });
    EXPECT_TRUE(devtest::wait_until([&] { return back.load(); }, 20000));
    caller.join();
    EXPECT_STREQ("", resp);
    EXPECT_TRUE(devtest::wait_for_calls("sendat", 2));
    EXPECT_EQ(2u, devtest::calls("sendat").size());  // none for the empty commands
    devtest::sh("killall sendat");
}

TEST_F(ModemDevice, AtConcurrentCallersNeitherHangsNorOverruns) {
    devtest::sendat_answer("AT+A", "ANSWER-A", 1500);
    devtest::sendat_answer("AT+B", "ANSWER-B", 1500);
    char a[32], b[32];
    std::thread ta([&] { util_send_at_commands("AT+A", a, sizeof a, 60); });
    EXPECT_TRUE(devtest::wait_for_calls("sendat", 1));  // no ASSERT: ta must be joined
    std::thread tb([&] { util_send_at_commands("AT+B", b, sizeof b, 60); });
    // A caller that hung would end the binary at the test time-out.
    ta.join();
    tb.join();
    // The later caller kills the earlier sender: the first caller gets its
    // own answer or nothing, never the other's; the second waits
    // past its first pass for its late answer.
    EXPECT_TRUE(std::string(a).empty() || std::string(a) == "ANSWER-A") << a;
    EXPECT_STREQ("ANSWER-B", b);
    EXPECT_EQ(2u, devtest::calls("sendat").size());
}

// ---- flag files, the status indication file, signal overrides -------------------

// A yes/no question answered from a flag file.
template <int (*F)()> golden::Call flag() {
    return [](golden::Args &) { return golden::show(F()); };
}

// The flag files, the status indication file with the LTE parser, and the
// signal override files, as a transcript in tests/golden/device_modem.
TEST_F(ModemDevice, Transcripts) {
    using golden::Args;
    using golden::show;
    golden::check("device_modem", golden::calls(devtest::with_device({
        {"gsm_disabled", flag<is_gsm_disabled>()},
        {"gsm_not_supported", flag<util_is_gsm_mode_not_supported>()},
        {"wcdma_not_supported", flag<util_is_wcdma_mode_not_supported>()},
        {"tdscdma_not_supported", flag<util_is_tdscdma_mode_not_supported>()},
        {"lte_not_supported", flag<util_is_lte_mode_not_supported>()},
        {"wcdma_preferred", flag<util_is_wcdma_preferred>()},
        {"dial_lte_manually", flag<util_should_dial_lte_manually>()},
        {"disconnect_lte", flag<util_should_disconnect_from_lte_network_immediately>()},
        {"ttyusb1_used", flag<is_ttyusb1_used>()},
        {"sim", [](Args &) { return show(cmd_sim_exist(), cmd_sim_need_pin(), cmd_sim_need_puk()); }},
        {"dial_and_signal", [](Args &) {
             int st = -5, sig = -5;
             int rc = cmd_get_dial_status_and_signal_quality(&st, &sig);
             return show(rc, st, sig);
         }},
        {"lte_status", [](Args &a) {
             char result[32] = "stale";
             int rc = util_parse_lte_status(a[0].w(), result);
             return show(rc, result);
         }},
        {"dial_running", flag<util_is_dial_program_running>()},
        {"log_tools_running", flag<util_is_log_tools_running>()},
        {"dial_names", [](Args &) {
             char *names[4] = {};
             return show(util_get_all_dial_process_names(names, 4));
         }},
        {"running", [](Args &a) { return show(cmd_ps_is_one_program_running(a[0].w()) != 0); }},
        {"kill_for_upgrade", [](Args &) { return util_kill_some_processes_for_modem_upgarde(), "done"; }},
        {"usb_rate", [](Args &a) { return show(quectel_x12_opt_set_usb_rate(a[0].c())); }},
        {"rsrp_levels", [](Args &) {
             int l[5] = {1, 1, 1, 1, 1};
             util_get_min_lte_rsrp_values_for_signal_level(&l[0], &l[1], &l[2], &l[3], &l[4]);
             util_get_min_lte_rsrp_values_for_signal_level(&l[0], nullptr, &l[2], &l[3], &l[4]);
             return show(l[0], l[1], l[2], l[3], l[4]);
         }},
    })));
}

// ---- modem processes: in tests/golden/device_modem/processes.in ----------------------

}  // namespace
