// Process table in the device: its PID namespace is private, so the walk
// sees exactly the processes this test starts beside the runner and the
// test itself.  The "daemons" are copies of this binary installed under
// their names; started with CMDLIB_TEST_SLEEPER set they only sleep.
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_info.h"
#include "device.h"

namespace {

const int g_sleeper = [] {
    if (getenv("CMDLIB_TEST_SLEEPER")) {
        pause();
        _exit(0);
    }
    return 0;
}();

// Installs a copy of this binary at path (once).
void install_program(const std::string &path) {
    std::error_code ec;
    if (std::filesystem::exists(path, ec)) return;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    ASSERT_TRUE(std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe"), path, ec))
        << path << ": " << ec.message();
}

// A running program with the given argv; argv[0] is the path it is run by.
class Daemon {
  public:
    explicit Daemon(std::vector<std::string> argv) {
        pid_ = fork();
        if (pid_ == 0) {
            std::vector<char *> v;
            for (auto &a : argv) v.push_back(a.data());
            v.push_back(nullptr);
            setenv("CMDLIB_TEST_SLEEPER", "1", 1);
            execv(argv[0].c_str(), v.data());
            _exit(127);
        }
        // until it has run its exec and sits in pause(): sleeping, and its
        // name (comm) is that of the installed copy
        std::string comm = "(" + argv[0].substr(argv[0].rfind('/') + 1) + ") S";
        for (int i = 0; i < 2000; ++i) {
            if (devtest::read_file("/proc/" + std::to_string(pid_) + "/stat").find(comm) != std::string::npos)
                break;
            usleep(2000);
        }
    }
    ~Daemon() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_;
};

class ProcDevice : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        install_program("/sbin/udhcpc");
        install_program("/usr/sbin/udhcpc6");
        ASSERT_EQ(getcwd(cwd_, sizeof cwd_), cwd_);
    }
    void TearDown() override { EXPECT_EQ(chdir(cwd_), 0); }

    int running(const char *name, std::vector<const char *> match = {}, char *pid_value = nullptr) {
        std::string n = name;
        int r = cmd_ps_is_one_program_running_ex(
            n.data(), match.empty() ? nullptr : const_cast<char **>(match.data()),
            static_cast<int>(match.size()), pid_value);
        EXPECT_EQ(chdir(cwd_), 0);
        return r;
    }
    int total() {
        int t = -1;
        int started = -1;
        std::string n = "nothing-of-that-name";
        EXPECT_EQ(util_get_process_count(n.data(), nullptr, 0, nullptr, &t, &started), 0);
        EXPECT_EQ(started, 0);
        return t;
    }

    char cwd_[4096];
};

TEST_F(ProcDevice, UdhcpcIsFoundButNotUdhcpc6) {
    EXPECT_EQ(running("udhcpc"), 0);
    Daemon v6({"/usr/sbin/udhcpc6", "-i", "wan"});
    EXPECT_EQ(running("udhcpc"), 0);
    EXPECT_EQ(running("udhcpc6"), (v6.pid() << 8) | 1);
    Daemon v4({"/sbin/udhcpc", "-i", "wan"});
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
    Daemon a({"/sbin/udhcpc", "-i", "wan", "-s", "/etc/udhcpc.script"});
    Daemon b({"/sbin/udhcpc", "-i", "lan"});
    Daemon c({"/usr/sbin/udhcpc6", "-i", "wan"});
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
    // wait until it has exited but leave it unreaped
    siginfo_t info;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(zombie), &info, WEXITED | WNOWAIT), 0);
    ProcessInfo pi;
    EXPECT_EQ(util_get_process_info(zombie, &pi), -1);  // empty command line
    EXPECT_EQ(total(), before);
    EXPECT_EQ(running(""), 0);
    waitpid(zombie, nullptr, 0);
    char line[64] = "untouched";
    EXPECT_EQ(util_get_process_command_line(zombie, line, sizeof line), -1);
    EXPECT_STREQ(line, "untouched");
    EXPECT_EQ(util_get_process_info(zombie, &pi), -1);
}

TEST_F(ProcDevice, WalkSurvivesProcessesComingAndGoing) {
    Daemon a({"/sbin/udhcpc", "-i", "wan"});
    // a child that keeps starting and ending short-lived processes
    pid_t churn = fork();
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
