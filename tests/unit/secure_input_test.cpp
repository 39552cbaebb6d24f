// Validators and direct execution: the validators' boundary values are a
// table of calls (tests/golden/secure_calls); programs started through
// execute_command_using_execvp are observed through their output file and
// exit status.
#include <limits.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdlib/cmdlib_secure.h"
#include "common/golden.h"

namespace fs = std::filesystem;
using golden::Args;
using golden::show;

namespace {

TEST(SecureValidators, Golden) {
    golden::check("secure_calls", golden::calls({
        {"match", [](Args &a) { return show(qx_match_char(a[0].w(), a[1].w())); }},
        {"password", [](Args &a) { return show(is_valid_password(a[0].w(), a[1].i(), a[2].i())); }},
        {"switch", [](Args &a) { return show(is_switch_string(a[0].c())); }},
        {"port", [](Args &a) { return show(is_valid_port(a[0].c())); }},
        {"ip", [](Args &a) { return show(is_valid_ip(a[0].c())); }},
        {"number", [](Args &a) {
             int special = a[3].null() ? 0 : a[3].i();
             return show(is_valid_number(a[0].c(), a[1].i(), a[2].i(), a[3].null() ? nullptr : &special));
         }},
    }));
}

// ---- Direct execution -------------------------------------------------------

class SecureExec : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("secure_exec_" + std::to_string(getpid()));
        fs::create_directories(dir_);
        out_ = (dir_ / "out.txt").string();
    }
    void TearDown() override { fs::remove_all(dir_); }

    // Starts cmd and waits for the child; returns its exit status.
    int run(std::string cmd, const char *file) {
        std::string f = file ? file : "";
        EXPECT_EQ(execute_command_using_execvp(cmd.data(), file ? f.data() : nullptr), 0);
        int st = 0;
        EXPECT_GT(wait(&st), 0);
        return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    }
    int run(const std::string &cmd) { return run(cmd, out_.c_str()); }

    std::string output() const {
        std::ifstream in(out_);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }

    fs::path dir_;
    std::string out_;
};

TEST_F(SecureExec, ShellMetacharactersArriveAsLiteralArguments) {
    std::string marker = (dir_ / "pwned").string();
    EXPECT_EQ(run("echo a;touch " + marker + " $HOME 'q' >x |y * `id` \"z\"\ttab"), 0);
    EXPECT_EQ(output(), "a;touch " + marker + " $HOME 'q' >x |y * `id` \"z\"\ttab\n");
    EXPECT_FALSE(fs::exists(marker));
    EXPECT_FALSE(fs::exists(dir_ / "x"));
    // runs of blanks give no empty arguments
    EXPECT_EQ(run("   printf  [%s]  a   b  "), 0);
    EXPECT_EQ(output(), "[a][b]");
}

TEST_F(SecureExec, SeventyWordsRunWithTheFirst63) {
    std::string cmd = "echo";
    std::string want;
    for (int i = 2; i <= 70; ++i) {
        cmd += " w" + std::to_string(i);
        if (i <= 63) want += (want.empty() ? "w" : " w") + std::to_string(i);
    }
    EXPECT_EQ(run(cmd), 0);
    EXPECT_EQ(output(), want + "\n");
}

TEST_F(SecureExec, OutputFileIsTruncatedAndCollectsStderrAndFailures) {
    { std::ofstream(out_) << std::string(1000, 'o'); }
    EXPECT_EQ(run("ls /nonexistent-cmdlib-path"), 2);
    std::string text = output();
    EXPECT_NE(text.find("nonexistent-cmdlib-path"), std::string::npos);
    EXPECT_EQ(text.find('o' + std::string(10, 'o')), std::string::npos);
    // an unknown program, an empty command or an output file that cannot
    // be made: the child exits with status 1
    EXPECT_EQ(run("cmdlib-no-such-program arg"), 1);
    EXPECT_EQ(output().rfind("execvp failed: ", 0), 0u);
    EXPECT_EQ(run("    "), 1);
    EXPECT_EQ(run("echo x", (dir_ / "no/such/dir/out").c_str()), 1);
    EXPECT_EQ(execute_command_using_execvp(nullptr, nullptr), -1);
}

TEST_F(SecureExec, ChildRunsDetachedWithStdinFromDevNull) {
    // /proc/self/stat of the program: "pid (comm) state ppid pgrp session ..."
    EXPECT_EQ(run("cat /proc/self/stat"), 0);
    std::string stat = output();
    std::istringstream rest(stat.substr(stat.rfind(')') + 2));
    std::string state;
    long ppid = 0, pgrp = 0, session = 0;
    rest >> state >> ppid >> pgrp >> session;
    long pid = std::stol(stat);
    EXPECT_EQ(ppid, getpid());
    EXPECT_EQ(session, pid);  // a session leader of its own
    EXPECT_NE(session, getsid(0));

    EXPECT_EQ(run("readlink /proc/self/fd/0"), 0);
    EXPECT_EQ(output(), "/dev/null\n");
    // the caller's text is not cut by the split
    std::string cmd = "echo a b";
    EXPECT_EQ(execute_command_using_execvp(cmd.data(), nullptr), 0);
    EXPECT_GT(wait(nullptr), 0);
    EXPECT_EQ(cmd, "echo a b");
}

}  // namespace
