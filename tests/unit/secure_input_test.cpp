// Validators and direct execution: boundary values of each validator, and
// programs started through execute_command_using_execvp observed through
// their output file and exit status.
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

namespace fs = std::filesystem;

namespace {

bool password_ok(std::string s, int min = 8, int max = 32) { return is_valid_password(s.data(), min, max); }

int match(std::string text, std::string pattern) { return qx_match_char(text.data(), pattern.data()); }

TEST(SecureMatch, ExtendedRegexAnywhereInText) {
    EXPECT_EQ(match("abc123", "[0-9]+$"), 0);
    EXPECT_EQ(match("abc123", "^[0-9]"), -1);
    EXPECT_EQ(match("a|b", "a|x"), 0);  // alternation: extended syntax
    EXPECT_EQ(match("ab", "(a"), -1);   // does not compile
    EXPECT_EQ(match("", ""), 0);
    std::string t = "x";
    EXPECT_EQ(qx_match_char(nullptr, t.data()), -1);
    EXPECT_EQ(qx_match_char(t.data(), nullptr), -1);
}

TEST(SecurePassword, NeedsDigitLetterAndSpecialWithinLength) {
    const std::pair<std::string, bool> cases[] = {
        {"abc12345", false},  // no special character
        {"abc123!x", true},   {"abc 123x", true}, {"abc_123x", true},  // blank, underscore: special
        {"abcdef!x", false},  // no digit
        {"1234567!", false},  // no letter
        {"W\\12345a", true},  {"p\xc3\xa4ss1234", true},  // bytes above ASCII are special
        // both ends of the length range are included
        {"a1!" + std::string(29, 'b'), true}, {"a1!" + std::string(30, 'b'), false},
        {"a1!bbbbb", true}, {"a1!bbbb", false}};
    for (auto &c : cases) EXPECT_EQ(c.second, password_ok(c.first)) << c.first;
    EXPECT_FALSE(password_ok("a1!", 8, 2));
    EXPECT_FALSE(is_valid_password(nullptr, 0, 32));
}

TEST(SecureValidators, SwitchPortAndIpTexts) {
    struct Case {
        const char *what;
        int (*check)(const char *);
        std::vector<const char *> good, bad;
    } cases[] = {
        {"switch", [](const char *s) { return int(is_switch_string(s)); }, {"0", "1"},
         {"", "2", "01", "1 ", " 1", "yes", "10"}},
        {"port", [](const char *s) { return int(is_valid_port(s)); }, {"0", "80", "65535", "", "00080"},
         {"65536", "-1", " 80", "80 ", "+80", "8a", "99999999999999999999"}},
        {"ip", [](const char *s) { return is_valid_ip(s); },
         {"192.168.1.1", "0.0.0.0", "fe80::1", "::", "2001:db8::ff00:42:8329", "::ffff:10.0.0.1"},
         {"192.168.1", "", "256.1.1.1", "1.2.3.4 ", "fe80::1%eth0", "host", "1.2.3.4.5"}},
    };
    for (const Case &c : cases) {
        for (const char *g : c.good) EXPECT_EQ(1, c.check(g)) << c.what << " '" << g << "'";
        for (const char *b : c.bad) EXPECT_EQ(0, c.check(b)) << c.what << " '" << b << "'";
        EXPECT_EQ(0, c.check(nullptr)) << c.what;
    }
}

TEST(SecureNumber, RangeWithOneSpecialValue) {
    int off = 0, high = 9999;
    struct Case {
        const char *text;
        int min, max;
        int *special;
        bool ok;
    } cases[] = {{"0", 60, 3600, &off, true},     {"0", 60, 3600, nullptr, false},
                 {"59", 60, 3600, &off, false},   {"60", 60, 3600, &off, true},
                 {"3600", 60, 3600, &off, true},  {"3601", 60, 3600, &off, false},
                 {"abc", 60, 3600, &off, false},  {"-5", -10, 10, nullptr, false},  // signs are refused
                 {"+5", 0, 10, nullptr, false},   {"", 0, 10, nullptr, true},  // empty reads as 0
                 {"9999", 60, 3600, &high, true},  // special above the range
                 {"99999999999999999999", 0, INT_MAX - 1, nullptr, false}};
    for (const Case &c : cases)
        EXPECT_EQ(c.ok, is_valid_number(c.text, c.min, c.max, c.special)) << c.text << " " << c.min;
    EXPECT_FALSE(is_valid_number(nullptr, 0, 10, &off));
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
