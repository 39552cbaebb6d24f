// libbase shell services: wait status, background commands, bounded capture.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstring>

#include <string>

#include "base/libbase.h"

namespace {

double now() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec + ts.tv_nsec / 1e9;
}

TEST(BaseShell, ReturnsWaitStatusLikeSystem) {
    int st = util_shell("exit 3");
    ASSERT_TRUE(WIFEXITED(st));
    EXPECT_EQ(WEXITSTATUS(st), 3);
    EXPECT_EQ(st & 255, 0);  // low byte is the signal part of the wait status
    EXPECT_EQ(util_shell("true"), 0);
    st = util_shell("/nonexistent/tool");
    EXPECT_EQ(WEXITSTATUS(st), 127);
    st = util_shell("kill -TERM $$");
    ASSERT_TRUE(WIFSIGNALED(st));
    EXPECT_EQ(WTERMSIG(st), SIGTERM);
    EXPECT_EQ(util_shell(nullptr), -1);
}

TEST(BaseShell, BackgroundCommandReturnsAtOnce) {
    char flag[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(flag);
    std::string cmd = std::string("(sleep 1; touch ") + flag + ") &";
    double t0 = now();
    EXPECT_EQ(util_shell(cmd.c_str()), 0);
    EXPECT_LT(now() - t0, 0.8);
    EXPECT_FALSE(cmd_file_exist(flag));
    for (int i = 0; i < 50 && !cmd_file_exist(flag); ++i) usleep(100000);
    EXPECT_TRUE(cmd_file_exist(flag));
    cmd_rm(flag);
}

TEST(BaseShell, CaptureIsBoundedAndDrainsTheRest) {
    char out[8];
    memset(out, 'Z', sizeof out);
    int st = util_get_cmd_result("printf 0123456789; exit 4", out, sizeof out);
    EXPECT_STREQ(out, "0123456");
    // The command ran to its end although we kept only 7 bytes.
    EXPECT_EQ(WEXITSTATUS(st), 4);
    // Large output: no SIGPIPE, status preserved.
    st = util_get_cmd_result("head -c 1000000 /dev/zero | tr '\\0' x; exit 0", out, sizeof out);
    EXPECT_TRUE(WIFEXITED(st));
    EXPECT_EQ(WEXITSTATUS(st), 0);
    EXPECT_STREQ(out, "xxxxxxx");
    char one[1] = {'Z'};
    util_get_cmd_result("echo hi", one, 1);
    EXPECT_EQ(one[0], '\0');
    EXPECT_EQ(util_get_cmd_result("echo hi", nullptr, 0), 0);
}

TEST(BaseShell, RecvFormatsTheCommand) {
    char out[64];
    util_shell_recv(out, sizeof out, "echo %s-%d", "abc", 42);
    EXPECT_STREQ(out, "abc-42\n");
    std::string huge(5000, 'a');
    EXPECT_EQ(util_shell_recv(out, sizeof out, "echo %s", huge.c_str()), -1);
    EXPECT_STREQ(out, "");
}

}  // namespace
