// Process table: the /proc parsers on text (key-value files are golden
// cases, tests/unit/golden/proc_status), the walk on a fixture tree that
// stands in for /proc, and the exported readers on the real /proc.
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/proc_parse.h"
#include "common/golden.h"

namespace fs = std::filesystem;
using cmdlib::ProcCount;
using cmdlib::ProcQuery;

namespace {

// ---- parsers ------------------------------------------------------------------

BigValue request(std::initializer_list<int> bits) {
    BigValue req = {};
    for (int b : bits) util_set_one_bit_for_big_value(&req, b);
    return req;
}

TEST(ProcKeyValues, Golden) {
    // every field requested; the record starts filled with junk
    golden::check("proc_status", [](const std::string &text) {
        BigValue all = {};
        for (int b = 0; b < PROC_FILE_INFO_FIELD_COUNT; ++b) util_set_one_bit_for_big_value(&all, b);
        ProcFileInfo info;
        memset(&info, 'z', sizeof info);
        cmdlib::parse_proc_key_values(text, &all, &info);
        std::string out;
#define CMDLIB_RENDER_FIELD(name, bit) \
    if (info.name[0]) out += std::string(#name "=") + std::string(info.name, strnlen(info.name, sizeof info.name)) + "\n";
        CMDLIB_PROC_FILE_FIELDS(CMDLIB_RENDER_FIELD)
#undef CMDLIB_RENDER_FIELD
        return out;
    });
}

TEST(ProcKeyValues, OnlyRequestedFields) {
    ProcFileInfo info;
    BigValue req = request({PROC_FILE_INFO_BIT_MemTotal});
    cmdlib::parse_proc_key_values("MemTotal: 1 kB\nMemFree: 2 kB\n", &req, &info);
    EXPECT_STREQ(info.MemTotal, "1 kB");
    EXPECT_STREQ(info.MemFree, "");
    cmdlib::parse_proc_key_values("MemTotal: 1 kB\n", nullptr, &info);  // a null request fills nothing
    EXPECT_STREQ(info.MemTotal, "");
}

TEST(ProcCmdline, NulsBecomeBlanksAndTrailingBlanksGo) {
    std::string raw("/sbin/udhcpc\0-i\0wan \0", 21);
    std::vector<char> buf(raw.begin(), raw.end());
    buf.push_back('#');  // must be overwritten by the terminator
    EXPECT_EQ(cmdlib::cmdline_to_text(buf.data(), raw.size()), 19u);
    EXPECT_STREQ(buf.data(), "/sbin/udhcpc -i wan");
    char empty[1] = {'x'};
    EXPECT_EQ(cmdlib::cmdline_to_text(empty, 0), 0u);
}

TEST(ProcMatch, ProgramNameAndEvenIndexedMatchStrings) {
    char a0[] = "/sbin/udhcpc", a1[] = "-s", a2[] = "x", a3[] = "-q", b0[] = "trailing/";
    char *argv[] = {a0, a1, a2, a3}, *slash[] = {b0};
    struct Case {
        int argc;
        const char *name;
        std::vector<const char *> match;
        bool want;
    } cases[] = {
        {4, "udhcpc", {}, true},        {4, "udhcpc6", {}, false},        {4, "udhcp", {}, false},
        {4, "/sbin/udhcpc", {}, false}, {0, "udhcpc", {}, false},         {4, nullptr, {}, false},
        {4, "udhcpc", {"-s", "-p"}, true},        // "-p" sits at an odd index: not tested
        {4, "udhcpc", {"-s", "-p", "-q"}, true},
        {4, "udhcpc", {"-s", "x", "-z"}, false},
        {4, "udhcpc", {"udhcpc"}, false},  // the program name is not one of the arguments
        {4, "udhcpc", {nullptr}, false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(c.want, cmdlib::process_matches(argv, c.argc, c.name, const_cast<char **>(c.match.data()),
                                                  static_cast<int>(c.match.size())))
            << (c.name ? c.name : "null") << " " << c.match.size();
    const char *sxz[] = {"-s", "x", "-z"};
    EXPECT_TRUE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(sxz), -1));  // a count below 1 tests nothing
    EXPECT_TRUE(cmdlib::process_matches(slash, 1, "", nullptr, 0));
}

TEST(ProcMatch, PidNames) {
    int pid = -1;
    EXPECT_TRUE(cmdlib::parse_pid_name("2147483647", &pid));
    EXPECT_EQ(pid, INT_MAX);
    for (const char *bad : {"2147483648", "12345678901", "", "12a", "-1", "self"})
        EXPECT_FALSE(cmdlib::parse_pid_name(bad, &pid)) << bad;
}

// ---- walks on a fixture tree ------------------------------------------------------

std::string cwd() {
    char buf[PATH_MAX];
    return getcwd(buf, sizeof buf) ? buf : "";
}

// The recorded /proc of tests/fixtures/proc:
//   101 /sbin/udhcpc -i wan        102 /usr/sbin/udhcpc6 -i wan
//   103 kernel thread (empty)      104 -> 101 (symbolic link)
//   105 exited (no cmdline)        106 command line of 600 bytes
//   107 udhcpc -s "a b"            108 udhcpc -p -x (status without most keys)
//   109 cmdline unreadable (a directory)
//   abc, 12345678901 (not pids)    self -> 101
class FixtureProc : public ::testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(chdir(before_.c_str()), 0); }
    std::string path(const std::string &name) const { return root_ + "/" + name; }
    // A walk; after it, the working directory it left and then the old one back.
    int walk(const char *name, std::vector<const char *> match, bool first, char *pid_value, ProcCount *count) {
        ProcQuery q{name, match.empty() ? nullptr : const_cast<char *const *>(match.data()),
                    static_cast<int>(match.size()), first};
        int n = cmdlib::proc_walk(root_.c_str(), q, pid_value, count);
        after_walk_ = cwd();
        EXPECT_EQ(chdir(before_.c_str()), 0);
        return n;
    }
    const std::string root_ = golden::fixture("proc"), before_ = cwd();
    const char *dir() const { return root_.c_str(); }
    std::string after_walk_;
};

TEST_F(FixtureProc, ListKeepsDigitNamedDirectoriesOnly) {
    int pids[16];
    int n = cmdlib::proc_list(dir(), pids, 16);
    EXPECT_EQ(cwd(), before_);
    EXPECT_THAT(std::vector<int>(pids, pids + n), ::testing::UnorderedElementsAre(101, 102, 103, 105, 106, 107, 108, 109));
    EXPECT_EQ(cmdlib::proc_list(dir(), pids, 3), 3);
    EXPECT_EQ(cmdlib::proc_list(dir(), nullptr, 16), 0);
    EXPECT_EQ(cmdlib::proc_list(path("missing").c_str(), pids, 16), 0);
}

TEST_F(FixtureProc, CountAndFirstMatch) {
    ProcCount c;
    char pid_value[16] = "";
    EXPECT_EQ(walk("udhcpc", {}, false, pid_value, &c), 3);  // 101, 107, 108
    // 101, 102, 106, 107, 108 have a command line; 103 is a kernel thread,
    // 105 has ended, 104 is a link to 101
    EXPECT_EQ(c.total, 5);
    EXPECT_EQ(after_walk_, before_);
    EXPECT_EQ(walk("", {}, false, nullptr, &c), 0);  // kernel threads never match
    // match strings select among the processes; "a b" was split in two
    EXPECT_EQ(walk("udhcpc", {"wan"}, false, pid_value, &c), 1);
    EXPECT_STREQ(pid_value, "101");
    EXPECT_EQ(walk("udhcpc", {"a b"}, false, nullptr, &c), 0);
    EXPECT_EQ(walk("udhcpc", {"b"}, false, pid_value, &c), 1);
    EXPECT_STREQ(pid_value, "107");
    EXPECT_EQ(cmdlib::proc_walk(path("missing").c_str(), ProcQuery{"x", nullptr, 0, false}, nullptr, &c), -1);
    // the first match stops the walk and leaves it in the walked directory
    EXPECT_EQ(walk("udhcpc6", {}, true, pid_value, &c), 1);
    EXPECT_EQ(c.first_pid, 102);
    EXPECT_STREQ(pid_value, "102");
    EXPECT_EQ(fs::path(after_walk_), fs::canonical(root_));
    EXPECT_EQ(walk("absent", {}, true, pid_value, &c), 0);
    EXPECT_EQ(after_walk_, before_);
    EXPECT_STREQ(pid_value, "102");  // untouched without a match
}

TEST_F(FixtureProc, CommandLineAndArguments) {
    char line[512], small[8];
    memset(line, '#', sizeof line);
    ASSERT_EQ(cmdlib::proc_command_line(dir(), 106, line, sizeof line), 0);
    EXPECT_EQ(strlen(line), 510u);  // 511 bytes read, then at most size-2 kept
    ASSERT_EQ(cmdlib::proc_command_line(dir(), 101, small, sizeof small), 0);
    EXPECT_STREQ(small, "/sbin/");
    memset(small, '#', sizeof small);
    EXPECT_EQ(cmdlib::proc_command_line(dir(), 105, small, sizeof small), -1);
    EXPECT_EQ(small[0], '#');  // untouched
    EXPECT_EQ(cmdlib::proc_command_line(dir(), 101, nullptr, 0), 0);
    ASSERT_EQ(cmdlib::proc_command_line(dir(), 109, small, sizeof small), 0);  // unreadable: empty
    EXPECT_STREQ(small, "");

    char *argv[8], buf[512];
    int argc = -1;
    EXPECT_EQ(cmdlib::proc_args(dir(), 107, argv, &argc, 8, buf, sizeof buf), 4);
    EXPECT_EQ(std::vector<std::string>(argv, argv + argc), (std::vector<std::string>{"udhcpc", "-s", "a", "b"}));
    EXPECT_EQ(cmdlib::proc_args(dir(), 107, argv, &argc, 2, buf, sizeof buf), 2);
    EXPECT_EQ(cmdlib::proc_args(dir(), 106, argv, &argc, 8, buf, sizeof buf), 2);
    EXPECT_EQ(strlen(argv[1]), 509u - strlen("longprog "));  // read with a size of 511
    argc = -1;
    EXPECT_EQ(cmdlib::proc_args(dir(), 105, argv, &argc, 8, buf, sizeof buf), 0);
    EXPECT_EQ(argc, -1);  // untouched when unreadable
    EXPECT_EQ(cmdlib::proc_args(dir(), 103, argv, &argc, 8, buf, sizeof buf), 0);
    EXPECT_EQ(argc, 0);
    EXPECT_EQ(cmdlib::proc_args(dir(), 107, argv, &argc, 8, buf, 0), 0);
}

TEST_F(FixtureProc, ProcessInfoFromStatusAndStatm) {
    ProcessInfo info;
    ASSERT_EQ(cmdlib::proc_process_info(dir(), 101, &info), 0);
    EXPECT_EQ((std::vector<int>{info.Pid, info.PPid, info.VmPeak, info.VmSize, info.VmRSS, info.VmData, info.VmStk,
                                info.resident_minus_share}),
              (std::vector<int>{101, 1, 1404, 1400, 720, 120, 132, 60}));
    EXPECT_STREQ(info.State, "S (sleeping)");
    EXPECT_STREQ(info.command_line, "/sbin/udhcpc -i wan");
    // status without most keys, no statm: zeros, still a result
    ASSERT_EQ(cmdlib::proc_process_info(dir(), 108, &info), 0);
    EXPECT_EQ((std::vector<int>{info.Pid, info.VmRSS, info.resident_minus_share}), (std::vector<int>{108, 0, 0}));
    EXPECT_STREQ(info.State, "");
    // a kernel thread, a process without status file, one that is gone
    for (pid_t pid : {103, 102, 105}) EXPECT_EQ(cmdlib::proc_process_info(dir(), pid, &info), -1) << pid;
    EXPECT_EQ(cmdlib::proc_process_info(dir(), 101, nullptr), -1);

    BigValue req = request({PROC_FILE_INFO_BIT_VmRSS});
    ProcFileInfo kv;
    std::string status = path("101/status"), none = path("none");
    ASSERT_EQ(util_get_file_content_info(&req, status.data(), &kv), 0);
    EXPECT_STREQ(kv.VmRSS, "720 kB");
    EXPECT_EQ(util_get_file_content_info(&req, none.data(), &kv), -1);
    EXPECT_EQ(util_get_file_content_info(&req, nullptr, &kv), -1);
    EXPECT_EQ(util_get_file_content_info(&req, status.data(), nullptr), -1);
}

// ---- the exported readers on the real /proc (queries for processes of
// known names run in the device) -----------------------------------------------------

TEST(RealProc, OwnProcessListAndMeminfo) {
    ProcessInfo info;
    ASSERT_EQ(util_get_process_info(getpid(), &info), 0);
    EXPECT_EQ(info.PPid, getppid());
    EXPECT_GT(info.VmRSS, 0);
    EXPECT_NE(strstr(info.command_line, "proc_table_test"), nullptr);
    std::vector<int> pids(100000);
    int n = util_get_process_list(pids.data(), static_cast<int>(pids.size()));
    EXPECT_NE(std::find(pids.begin(), pids.begin() + n, getpid()), pids.begin() + n);
    ProcFileInfo mem;
    ASSERT_EQ(util_get_proc_meminfo(&mem), 0);
    EXPECT_GT(atol(mem.MemTotal), 0);
    EXPECT_STREQ(mem.VmRSS, "");  // not requested
}

}  // namespace
