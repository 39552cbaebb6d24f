// Direct execution in the device: the firmware's tools are simulators that
// log the argv they receive, so the log shows exactly what was run and
// that nothing else was.
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "cmdlib/cmdlib_secure.h"
#include "device.h"

namespace {

class SecureDevice : public DeviceTest {
  protected:
    // Starts cmd and reaps the child; its exit status.
    static int run(std::string cmd, std::string out) {
        EXPECT_EQ(execute_command_using_execvp(cmd.data(), out.data()), 0);
        int st = 0;
        EXPECT_GT(wait(&st), 0);
        return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    }
};

TEST_F(SecureDevice, UserTextCannotStartASecondProgram) {
    // the simulator's own exit status does not matter here
    run("mdlcfg -a QX_NAME=\"x;reboot\" `reboot` $(reboot) |reboot &&reboot", "/tmp/cmdlib/exec.out");
    auto calls = devtest::calls("mdlcfg");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0], "mdlcfg -a QX_NAME=\"x;reboot\" `reboot` $(reboot) |reboot &&reboot");
    EXPECT_TRUE(devtest::calls("reboot").empty());
    EXPECT_TRUE(devtest::calls("sh").empty());
}

}  // namespace
