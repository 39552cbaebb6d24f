// libbase shell services: wait status, background commands, bounded capture.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "base/libbase.h"
#include "common/scratch.h"

namespace {

class BaseShell : public ScratchDir {};

TEST_F(BaseShell, ReturnsWaitStatusLikeSystem) {
    int st = util_shell("exit 3");
    ASSERT_TRUE(WIFEXITED(st));
    EXPECT_EQ(st, 3 << 8);  // exit code in the high byte, no signal part
    EXPECT_EQ(util_shell("true"), 0);
    EXPECT_EQ(WEXITSTATUS(util_shell("/nonexistent/tool")), 127);
    st = util_shell("kill -TERM $$");
    ASSERT_TRUE(WIFSIGNALED(st));
    EXPECT_EQ(WTERMSIG(st), SIGTERM);
    EXPECT_EQ(util_shell(nullptr), -1);
}

TEST_F(BaseShell, BackgroundCommandReturnsOnceStarted) {
    // The command waits for a file made only after util_shell has returned
    // (or gives up after 20 s): a util_shell that waited for it would
    // return after "done" exists.
    const std::string go = path("go"), done = path("done");
    std::string cmd = "(i=0; while [ ! -e " + go + " ] && [ $i -lt 200 ]; do sleep 0.1; i=$((i+1)); done; touch " +
                      done + ") &";
    EXPECT_EQ(util_shell(cmd.c_str()), 0);
    EXPECT_FALSE(cmd_file_exist(done.c_str()));
    write("go", "");
    for (int i = 0; i < 200 && !cmd_file_exist(done.c_str()); ++i) usleep(100000);
    EXPECT_TRUE(cmd_file_exist(done.c_str()));
}

TEST_F(BaseShell, CaptureIsBoundedAndDrainsTheRest) {
    char out[8], one[1] = {'Z'}, recv[64];
    memset(out, 'Z', sizeof out);
    int st = util_get_cmd_result("printf 0123456789; exit 4", out, sizeof out);
    EXPECT_STREQ(out, "0123456");
    EXPECT_EQ(WEXITSTATUS(st), 4);  // the command ran to its end though only 7 bytes were kept
    st = util_get_cmd_result("head -c 1000000 /dev/zero | tr '\\0' x; exit 0", out, sizeof out);
    EXPECT_EQ(st, 0);  // large output: no SIGPIPE, status kept
    EXPECT_STREQ(out, "xxxxxxx");
    util_get_cmd_result("echo hi", one, 1);
    EXPECT_EQ(one[0], '\0');
    EXPECT_EQ(util_get_cmd_result("echo hi", nullptr, 0), 0);
    util_shell_recv(recv, sizeof recv, "echo %s-%d", "abc", 42);
    EXPECT_STREQ(recv, "abc-42\n");
    EXPECT_EQ(util_shell_recv(recv, sizeof recv, "echo %s", std::string(5000, 'a').c_str()), -1);  // a cut line never runs
    EXPECT_STREQ(recv, "");
}

}  // namespace
