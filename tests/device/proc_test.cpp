// Process table in the device: its PID namespace is private, so the walk
// sees exactly the processes this test starts beside the runner and the
// test itself.
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_info.h"
#include "device.h"

namespace {

using devtest::Process;

class ProcDevice : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        ASSERT_EQ(getcwd(cwd_, sizeof cwd_), cwd_);
    }
    void TearDown() override { EXPECT_EQ(chdir(cwd_), 0); }

    // cmd_ps_is_one_program_running_ex; the working directory put back
    int running(const char *name, std::vector<const char *> match = {}, char *pid_value = nullptr) {
        std::string n = name;
        int r = cmd_ps_is_one_program_running_ex(n.data(), match.empty() ? nullptr : const_cast<char **>(match.data()),
                                                 static_cast<int>(match.size()), pid_value);
        EXPECT_EQ(chdir(cwd_), 0);
        return r;
    }
    int total() {
        int t = -1, started = -1;
        std::string n = "nothing-of-that-name";
        EXPECT_EQ(util_get_process_count(n.data(), nullptr, 0, nullptr, &t, &started), 0);
        EXPECT_EQ(started, 0);
        return t;
    }

    char cwd_[4096];
};

TEST_F(ProcDevice, UdhcpcIsFoundButNotUdhcpc6) {
    EXPECT_EQ(running("udhcpc"), 0);
    Process v6({"/usr/sbin/udhcpc6", "-i", "wan"});
    EXPECT_EQ(running("udhcpc"), 0);
    EXPECT_EQ(running("udhcpc6"), (v6.pid() << 8) | 1);
    Process v4({"/sbin/udhcpc", "-i", "wan"});
    char pid_value[16] = "";
    EXPECT_EQ(running("udhcpc", {}, pid_value), (v4.pid() << 8) | 1);
    EXPECT_EQ(atoi(pid_value), v4.pid());
    std::string name = "udhcpc";
    EXPECT_EQ(cmd_ps_is_one_program_running(name.data()), (v4.pid() << 8) | 1);
    char here[4096];
    EXPECT_STREQ(getcwd(here, sizeof here), "/proc");  // left there by the positive answer
}

TEST_F(ProcDevice, MatchStringsAndCounts) {
    int before = total();
    Process a({"/sbin/udhcpc", "-i", "wan", "-s", "/etc/udhcpc.script"});
    Process b({"/sbin/udhcpc", "-i", "lan"});
    Process c({"/usr/sbin/udhcpc6", "-i", "wan"});
    EXPECT_EQ(total(), before + 3);
    EXPECT_EQ(running("udhcpc", {"lan"}), (b.pid() << 8) | 1);

    std::string name = "udhcpc";
    const char *wan[] = {"wan"};
    char pid_value[16] = "";
    int t = 0, started = 0;
    EXPECT_EQ(util_get_process_count(name.data(), const_cast<char **>(wan), 1, pid_value, &t, &started), 1);
    EXPECT_EQ(started, 1);
    EXPECT_EQ(t, before + 3);
    EXPECT_EQ(atoi(pid_value), a.pid());
    EXPECT_EQ(util_get_process_count(name.data(), nullptr, 0, nullptr, &t, &started), 2);
    char here[4096];
    EXPECT_STREQ(getcwd(here, sizeof here), cwd_);  // the count restores it

    char *argv[8], buf[512], line[64];
    int argc = 0;
    EXPECT_EQ(util_get_process_args(a.pid(), argv, &argc, 8, buf, sizeof buf), 5);
    EXPECT_STREQ(argv[4], "/etc/udhcpc.script");
    ASSERT_EQ(util_get_process_command_line(b.pid(), line, sizeof line), 0);
    EXPECT_STREQ(line, "/sbin/udhcpc -i lan");
}

TEST_F(ProcDevice, ZombieAndVanishedProcessesAreNotCounted) {
    int before = total();
    pid_t zombie = fork();
    if (zombie == 0) _exit(0);
    siginfo_t info;  // exited but left unreaped
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(zombie), &info, WEXITED | WNOWAIT), 0);
    ProcessInfo pi;
    EXPECT_EQ(util_get_process_info(zombie, &pi), -1);  // empty command line
    EXPECT_EQ(total(), before);
    EXPECT_EQ(running(""), 0);
    waitpid(zombie, nullptr, 0);
    char line[64] = "untouched";
    EXPECT_EQ(util_get_process_command_line(zombie, line, sizeof line), -1);
    EXPECT_STREQ(line, "untouched");
}

TEST_F(ProcDevice, WalkSurvivesProcessesComingAndGoing) {
    Process a({"/sbin/udhcpc", "-i", "wan"});
    pid_t churn = fork();  // keeps starting and ending short-lived processes
    if (churn == 0) {
        for (;;) {
            pid_t p = fork();
            if (p == 0) _exit(0);
            if (p > 0) waitpid(p, nullptr, 0);
        }
    }
    int found = 0;
    for (int i = 0; i < 300; ++i) found += running("udhcpc") == ((a.pid() << 8) | 1);
    kill(churn, SIGKILL);
    waitpid(churn, nullptr, 0);
    EXPECT_EQ(found, 300);
}

}  // namespace
