// Runs on the HOST: starts devices and checks that what happens inside them
// (a reboot, killall, rm -rf, writes under /etc and /tmp) leaves the build
// machine untouched, and that the runner itself behaves (exit status,
// results reaching the build tree, parallel devices, start-up time).
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::string quote(const std::string &s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// The command line of one device running `script` through sh.
std::string device_cmd(const std::string &script) {
    return std::string(DEVICE_RUNNER) + " --build " + DEVICE_BUILD_DIR + " -- sh -c " + quote(script);
}

int device(const std::string &script) { return devtest::sh(device_cmd(script)); }

bool exists(const std::string &path) {
    struct stat sb;
    return lstat(path.c_str(), &sb) == 0;
}

class Safety : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_FALSE(devtest::in_device()) << "the safety checks look at the host"; }
};

TEST_F(Safety, RebootInsideIsSimulated) {
    // The device's /sbin/reboot logs its call and returns; had it been the
    // real one, this test would not be here to check the result.
    EXPECT_EQ(device("/sbin/reboot && reboot -f && grep -qx /sbin/reboot /var/lib/device/calls.log"), 0);
}

TEST_F(Safety, KillallInsideReachesOnlyDeviceProcesses) {
    // A host process named sendat survives "killall sendat" in a device.
    char dir[] = "/tmp/devsafetyXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    std::string fake = std::string(dir) + "/sendat";
    ASSERT_EQ(devtest::sh("cp /bin/sleep " + fake), 0);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        execl(fake.c_str(), "sendat", "30", static_cast<char *>(nullptr));
        _exit(127);
    }
    usleep(50 * 1000);
    ASSERT_EQ(devtest::sh("killall -0 sendat"), 0) << "the host sentinel must be visible on the host";
    // Inside, the real killall finds no sendat at all (exit 1).
    EXPECT_EQ(device("killall sendat 2>/dev/null"), 1);
    EXPECT_EQ(device("killall -9 sendat 1>/dev/null 2>&1; exit 0"), 0);
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, WNOHANG), 0) << "host sendat was killed";
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    devtest::remove_all(dir);
}

TEST_F(Safety, RemovalsAndWritesInsideLeaveTheHostAlone) {
    // A sentinel under /mnt/data/sms on the host: the device sees it (its
    // root is an overlay over the host's), removes it, and the host keeps it.
    bool made_mnt_data = !exists("/mnt/data");
    ASSERT_FALSE(exists("/etc/map")) << "precondition: the build host has no /etc/map";
    devtest::write_file("/mnt/data/sms/sms_read/sentinel", "keep");
    EXPECT_EQ(device("test -f /mnt/data/sms/sms_read/sentinel && rm -rf /mnt/data/sms && ! test -e /mnt/data/sms"),
              0);
    EXPECT_EQ(devtest::read_file("/mnt/data/sms/sms_read/sentinel"), "keep");
    devtest::remove_all(made_mnt_data ? "/mnt/data" : "/mnt/data/sms");

    EXPECT_EQ(device("mkdir -p /etc/map && echo x >/etc/map/map.conf && rm -rf /etc/map && cp -rf /rom/etc/map /etc "
                     "&& test -f /etc/map/map.conf"),
              0);
    EXPECT_FALSE(exists("/etc/map"));
    EXPECT_FALSE(exists("/rom"));

    EXPECT_EQ(device("echo 1 >/tmp/cmdlib/.probe && echo 1 >/usr/local/bin/.probe && rm -f /bin/true"), 0);
    EXPECT_FALSE(exists("/tmp/cmdlib/.probe"));
    EXPECT_FALSE(exists("/usr/local/bin/.probe"));
    EXPECT_TRUE(exists("/bin/true"));
    // The simulators' links exist only inside.
    EXPECT_FALSE(exists("/usr/local/bin/mdlcfg"));
    EXPECT_FALSE(exists("/etc/qxscript"));
}

TEST_F(Safety, NetworkChangesStayInside) {
    EXPECT_EQ(device("ip link set usb0 down && ip route flush table main && iptables -P INPUT DROP"), 0);
    EXPECT_FALSE(exists("/sys/class/net/usb0"));
    EXPECT_THAT(devtest::sh_out("iptables -S INPUT"), HasSubstr("-P INPUT ACCEPT"));
}

// ---- the runner -----------------------------------------------------------

TEST(Runner, ExitStatusIsTheCommands) {
    EXPECT_EQ(device("exit 0"), 0);
    EXPECT_EQ(device("exit 42"), 42);
    EXPECT_EQ(device("kill -TERM $$"), 128 + SIGTERM);
}

TEST(Runner, StdinReachesTheCommand) {
    EXPECT_EQ(devtest::sh_out("echo hello | " + std::string(DEVICE_RUNNER) + " --build " + DEVICE_BUILD_DIR + " cat"),
              "hello\n");
}

TEST(Runner, ResultsReachTheBuildTree) {
    std::string probe = std::string(DEVICE_BUILD_DIR) + "/tests/device/.result-probe";
    devtest::remove_all(probe);
    EXPECT_EQ(device("echo ok >" + probe), 0);
    EXPECT_EQ(devtest::read_file(probe), "ok\n");
    devtest::remove_all(probe);
}

TEST(Runner, StateScriptRunsFirstAndItsCallsAreNotLogged) {
    char path[] = "/tmp/devstateXXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    devtest::write_file(path, "mdlcfg -a QX_STATE=ready\n");
    std::string cmd = std::string(DEVICE_RUNNER) + " --build " + DEVICE_BUILD_DIR + " --state " + path +
                      " -- sh -c " + quote("test ! -s /var/lib/device/calls.log && test \"$(mdlcfg -g QX_STATE)\" = ready");
    EXPECT_EQ(devtest::sh(cmd), 0);
    devtest::write_file(path, "exit 3\n");
    EXPECT_EQ(devtest::sh(cmd + " 2>/dev/null"), 125);
    unlink(path);
}

TEST(Runner, BadUsageAndMissingNamespacesSayWhy) {
    EXPECT_EQ(devtest::sh(std::string(DEVICE_RUNNER) + " 2>/dev/null"), 125);
    EXPECT_EQ(devtest::sh(std::string(DEVICE_RUNNER) + " --build /nonexistent true 2>/dev/null"), 125);
    // An unprivileged user cannot create the namespaces: one clear line.
    std::string out = devtest::sh_out("setpriv --reuid=65534 --regid=65534 --clear-groups " +
                                      std::string(DEVICE_RUNNER) + " --build " + DEVICE_BUILD_DIR +
                                      " true 2>&1; echo rc=$?");
    EXPECT_THAT(out, StartsWith("run-in-device: cannot create namespaces: "));
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2) << out;
    EXPECT_THAT(out, HasSubstr("rc=125"));
}

TEST(Runner, ParallelDevicesDoNotClash) {
    // Same interface names, same paths, at the same time.
    std::string a = device_cmd("ip link add dum0 type veth peer name dum1 && echo a >/tmp/cmdlib/who && sleep 0.3 && "
                               "test \"$(cat /tmp/cmdlib/who)\" = a");
    std::string b = device_cmd("ip link add dum0 type veth peer name dum1 && echo b >/tmp/cmdlib/who && sleep 0.3 && "
                               "test \"$(cat /tmp/cmdlib/who)\" = b");
    EXPECT_EQ(devtest::sh("(" + a + ") & pa=$!; (" + b + ") & pb=$!; wait $pa && wait $pb"), 0);
}

TEST(Runner, StartsQuickly) {
    // Best of three, to stay meaningful on a loaded build machine.
    auto best = std::chrono::milliseconds::max();
    for (int i = 0; i < 3; ++i) {
        auto start = std::chrono::steady_clock::now();
        ASSERT_EQ(device("true"), 0);
        best = std::min(best, std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start));
    }
    RecordProperty("device_start_ms", static_cast<int>(best.count()));
    EXPECT_LT(best.count(), 100);
}

}  // namespace
