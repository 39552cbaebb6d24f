// Process table: the /proc parsers on text, the walk on a fixture tree that
// stands in for /proc, and the exported readers on the real /proc.
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/proc_parse.h"

namespace fs = std::filesystem;
using cmdlib::ProcCount;
using cmdlib::ProcQuery;
using ::testing::UnorderedElementsAre;

namespace {

std::string cwd() {
    char buf[PATH_MAX];
    return getcwd(buf, sizeof buf) ? buf : "";
}

// Restores the working directory a walk may leave behind.
struct CwdRestore {
    std::string dir = cwd();
    ~CwdRestore() { EXPECT_EQ(chdir(dir.c_str()), 0); }
};

void write_file(const fs::path &p, const std::string &content) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << content;
}

std::string cmdline(std::initializer_list<std::string> args) {
    std::string s;
    for (const auto &a : args) s += a + '\0';
    return s;
}

// A fixture /proc:
//   101 /sbin/udhcpc -i wan        102 /usr/sbin/udhcpc6 -i wan
//   103 kernel thread (empty)      104 -> 101 (symbolic link)
//   105 exited (no cmdline)        106 command line of 600 bytes
//   107 udhcpc -s "a b"            108 udhcpc -p -x
//   109 cmdline unreadable (a directory)
//   abc, 12345678901 (not pids)    self -> 101
class FixtureProc : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = fs::temp_directory_path() / ("proc_fixture_" + std::to_string(getpid()));
        fs::remove_all(root_);
        write_file(root_ / "101/cmdline", cmdline({"/sbin/udhcpc", "-i", "wan"}));
        write_file(root_ / "101/status",
                   "Name:\tudhcpc\nState:\tS (sleeping)\nPid:\t101\nPPid:\t1\n"
                   "VmPeak:\t    1404 kB\nVmSize:\t    1400 kB\nVmRSS:\t     720 kB\n"
                   "VmData:\t     120 kB\nVmStk:\t     132 kB\n");
        write_file(root_ / "101/statm", "350 180 120 40 0 30 0\n");
        write_file(root_ / "102/cmdline", cmdline({"/usr/sbin/udhcpc6", "-i", "wan"}));
        write_file(root_ / "103/cmdline", "");
        write_file(root_ / "103/status", "Name:\tkworker\nPid:\t103\n");
        fs::create_directory_symlink("101", root_ / "104");
        fs::create_directories(root_ / "105");
        write_file(root_ / "106/cmdline", cmdline({"longprog", std::string(600, 'x')}));
        write_file(root_ / "107/cmdline", cmdline({"udhcpc", "-s", "a b"}));
        write_file(root_ / "108/cmdline", cmdline({"udhcpc", "-p", "-x"}));
        write_file(root_ / "108/status", "Pid:\t108\n");
        fs::create_directories(root_ / "109/cmdline");
        write_file(root_ / "abc/cmdline", cmdline({"udhcpc"}));
        write_file(root_ / "12345678901/cmdline", cmdline({"udhcpc"}));
        fs::create_directory_symlink("101", root_ / "self");
    }
    void TearDown() override { fs::remove_all(root_); }

    int walk(const char *name, std::vector<const char *> match, bool first, char *pid_value,
             ProcCount *count) {
        CwdRestore restore;
        ProcQuery q{name, match.empty() ? nullptr : const_cast<char *const *>(match.data()),
                    static_cast<int>(match.size()), first};
        int n = cmdlib::proc_walk(root_.c_str(), q, pid_value, count);
        after_walk_cwd_ = cwd();
        return n;
    }

    fs::path root_;
    std::string after_walk_cwd_;
};

// ---- Parsers -------------------------------------------------------------

// Parses text into a record first filled with junk, requesting the
// fields of bits (every field when bits is empty).
ProcFileInfo key_values(const std::string &text, std::initializer_list<int> bits = {}) {
    BigValue req = {};
    for (int b : bits) util_set_one_bit_for_big_value(&req, b);
    if (bits.size() == 0)
        for (int b = 0; b < PROC_FILE_INFO_FIELD_COUNT; ++b) util_set_one_bit_for_big_value(&req, b);
    ProcFileInfo info;
    memset(&info, 'z', sizeof info);
    cmdlib::parse_proc_key_values(text, &req, &info);
    return info;
}

TEST(ProcKeyValues, RequestedFieldsOnlyWithExactKeysAndBlanksTrimmed) {
    ProcFileInfo info = key_values(
        "MemTotal:        1024 kB\nMemFree:  512 kB\n  Cached \t:  77 kB \r\nSwapCached: 5 kB\n",
        {PROC_FILE_INFO_BIT_MemTotal, PROC_FILE_INFO_BIT_Cached});
    EXPECT_STREQ(info.MemTotal, "1024 kB");
    EXPECT_STREQ(info.MemFree, "");  // present but not requested
    EXPECT_STREQ(info.Cached, "77 kB");

    info = key_values("no colon here\n:MemTotal 5\nmemtotal: 6\nPid : 9\nState\n");
    EXPECT_STREQ(info.MemTotal, "");
    EXPECT_STREQ(info.Pid, "9");
    EXPECT_STREQ(info.State, "");
    info = key_values("a b c\nd e f\n");
    const ProcFileInfo empty = {};
    EXPECT_EQ(memcmp(&info, &empty, sizeof info), 0);
}

TEST(ProcKeyValues, LastLineWinsValuesAreCutTo31AndLongLinesComeInPieces) {
    ProcFileInfo info = key_values("State: R\nState: " + std::string(40, 'q') + "\nPid: 1\nPid: 2");
    EXPECT_EQ(std::string(info.State), std::string(31, 'q'));
    EXPECT_STREQ(info.Pid, "2");
    // a line is read 254 characters at a time: the second piece of this
    // one starts with "Pid: 7"
    EXPECT_STREQ(key_values("Name: " + std::string(248, 'n') + "Pid: 7\n").Pid, "7");
    // a null request fills nothing
    cmdlib::parse_proc_key_values("Pid: 3\n", nullptr, &info);
    EXPECT_STREQ(info.Pid, "");
}

TEST(ProcCmdline, NulsBecomeBlanksAndTrailingBlanksGo) {
    std::string raw = cmdline({"/sbin/udhcpc", "-i", "wan "});
    std::vector<char> buf(raw.begin(), raw.end());
    buf.push_back('#');  // must be overwritten by the terminator
    EXPECT_EQ(cmdlib::cmdline_to_text(buf.data(), raw.size()), 19u);
    EXPECT_STREQ(buf.data(), "/sbin/udhcpc -i wan");
    char empty[1] = {'x'};
    EXPECT_EQ(cmdlib::cmdline_to_text(empty, 0), 0u);
}

TEST(ProcMatch, ProgramNameIsTheLastPathComponentCompareExactly) {
    char a0[] = "/sbin/udhcpc", a1[] = "-i", a2[] = "wan";
    char *argv[] = {a0, a1, a2};
    struct Case {
        int argc;
        const char *name;
        bool match;
    } cases[] = {{3, "udhcpc", true},       {3, "udhcpc6", false}, {3, "udhcp", false},
                 {3, "/sbin/udhcpc", false}, {0, "udhcpc", false},  {3, nullptr, false}};
    for (const Case &c : cases)
        EXPECT_EQ(c.match, cmdlib::process_matches(argv, c.argc, c.name, nullptr, 0)) << c.name;
    char b0[] = "trailing/";
    char *argv2[] = {b0};
    EXPECT_TRUE(cmdlib::process_matches(argv2, 1, "", nullptr, 0));
}

TEST(ProcMatch, OnlyEvenIndexedMatchStringsAreTested) {
    char a0[] = "udhcpc", a1[] = "-s", a2[] = "x", a3[] = "-q";
    char *argv[] = {a0, a1, a2, a3};
    const char *sp[] = {"-s", "-p"};
    EXPECT_TRUE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(sp), 2));
    const char *spq[] = {"-s", "-p", "-q"};
    EXPECT_TRUE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(spq), 3));
    const char *sxz[] = {"-s", "x", "-z"};
    EXPECT_FALSE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(sxz), 3));
    // the program name itself is not one of the arguments searched
    const char *self[] = {"udhcpc"};
    EXPECT_FALSE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(self), 1));
    const char *null_entry[] = {nullptr};
    EXPECT_FALSE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(null_entry), 1));
    // a count of 0 or below tests nothing
    EXPECT_TRUE(cmdlib::process_matches(argv, 4, "udhcpc", const_cast<char **>(sxz), -1));
}

TEST(ProcMatch, PidNames) {
    int pid = -1;
    EXPECT_TRUE(cmdlib::parse_pid_name("1", &pid));
    EXPECT_EQ(pid, 1);
    EXPECT_TRUE(cmdlib::parse_pid_name("2147483647", &pid));
    EXPECT_EQ(pid, INT_MAX);
    for (const char *bad : {"2147483648", "12345678901", "", "12a", "-1", "self"})
        EXPECT_FALSE(cmdlib::parse_pid_name(bad, &pid)) << bad;
}

// ---- Walks on the fixture -------------------------------------------------

TEST_F(FixtureProc, ListKeepsDigitNamedDirectoriesOnly) {
    int pids[16];
    CwdRestore restore;
    std::string before = cwd();
    int n = cmdlib::proc_list(root_.c_str(), pids, 16);
    EXPECT_EQ(cwd(), before);
    EXPECT_THAT(std::vector<int>(pids, pids + n), UnorderedElementsAre(101, 102, 103, 105, 106, 107, 108, 109));
    EXPECT_EQ(cmdlib::proc_list(root_.c_str(), pids, 0), 0);
    EXPECT_EQ(cmdlib::proc_list(root_.c_str(), pids, 3), 3);
    EXPECT_EQ(cmdlib::proc_list(root_.c_str(), nullptr, 16), 0);
    EXPECT_EQ(cmdlib::proc_list((root_ / "missing").c_str(), pids, 16), 0);
}

TEST_F(FixtureProc, CountFindsEveryMatchAndRestoresTheWorkingDirectory) {
    ProcCount c;
    char pid_value[16] = "";
    std::string before = cwd();
    EXPECT_EQ(walk("udhcpc", {}, false, pid_value, &c), 3);  // 101, 107, 108
    EXPECT_EQ(c.matched, 3);
    // 101, 102, 106, 107, 108 have a command line; 103 is a kernel thread,
    // 105 has ended, 104 is a link to 101
    EXPECT_EQ(c.total, 5);
    EXPECT_EQ(after_walk_cwd_, before);
    EXPECT_EQ(walk("udhcpc6", {}, false, pid_value, &c), 1);
    EXPECT_STREQ(pid_value, "102");
    EXPECT_EQ(walk("nothing", {}, false, nullptr, &c), 0);
    EXPECT_EQ(c.total, 5);
    EXPECT_EQ(walk("", {}, false, nullptr, &c), 0);  // kernel threads never match
    // match strings select among the processes; "a b" was split in two
    EXPECT_EQ(walk("udhcpc", {"wan"}, false, pid_value, &c), 1);
    EXPECT_STREQ(pid_value, "101");
    EXPECT_EQ(walk("udhcpc", {"a b"}, false, nullptr, &c), 0);
    EXPECT_EQ(walk("udhcpc", {"b"}, false, pid_value, &c), 1);
    EXPECT_STREQ(pid_value, "107");
    EXPECT_EQ(cmdlib::proc_walk((root_ / "missing").c_str(), ProcQuery{"x", nullptr, 0, false}, nullptr, &c), -1);
}

TEST_F(FixtureProc, FirstMatchStopsAndLeavesTheWalkDirectory) {
    ProcCount c;
    char pid_value[16] = "";
    EXPECT_EQ(walk("udhcpc6", {}, true, pid_value, &c), 1);
    EXPECT_EQ(c.first_pid, 102);
    EXPECT_STREQ(pid_value, "102");
    EXPECT_EQ(fs::path(after_walk_cwd_), fs::canonical(root_));
    std::string before = cwd();
    EXPECT_EQ(walk("absent", {}, true, pid_value, &c), 0);
    EXPECT_EQ(after_walk_cwd_, before);
    EXPECT_STREQ(pid_value, "102");  // untouched without a match
}

TEST_F(FixtureProc, CommandLineIsCutToTheBuffer) {
    char line[512];
    memset(line, '#', sizeof line);
    ASSERT_EQ(cmdlib::proc_command_line(root_.c_str(), 106, line, sizeof line), 0);
    // 511 bytes read, then at most size-2 = 510 characters kept
    EXPECT_EQ(strlen(line), 510u);
    EXPECT_EQ(std::string(line, 9), "longprog ");
    char small[8];
    ASSERT_EQ(cmdlib::proc_command_line(root_.c_str(), 101, small, sizeof small), 0);
    EXPECT_STREQ(small, "/sbin/");
    memset(small, '#', sizeof small);
    EXPECT_EQ(cmdlib::proc_command_line(root_.c_str(), 105, small, sizeof small), -1);
    EXPECT_EQ(small[0], '#');  // untouched
    EXPECT_EQ(cmdlib::proc_command_line(root_.c_str(), 101, nullptr, 0), 0);
    // present but unreadable: an empty line, not a failure
    ASSERT_EQ(cmdlib::proc_command_line(root_.c_str(), 109, small, sizeof small), 0);
    EXPECT_STREQ(small, "");
}

TEST_F(FixtureProc, ArgumentsAreSplitAtBlanks) {
    char *argv[8];
    char buf[512];
    int argc = -1;
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 107, argv, &argc, 8, buf, sizeof buf), 4);
    EXPECT_EQ(argc, 4);
    EXPECT_STREQ(argv[2], "a");
    EXPECT_STREQ(argv[3], "b");
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 107, argv, &argc, 2, buf, sizeof buf), 2);
    // the line is read with a size of 511: at most 509 characters survive
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 106, argv, &argc, 8, buf, sizeof buf), 2);
    EXPECT_EQ(strlen(argv[1]), 509u - strlen("longprog "));
    argc = -1;
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 105, argv, &argc, 8, buf, sizeof buf), 0);
    EXPECT_EQ(argc, -1);  // untouched when unreadable
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 103, argv, &argc, 8, buf, sizeof buf), 0);
    EXPECT_EQ(argc, 0);
    EXPECT_EQ(cmdlib::proc_args(root_.c_str(), 107, argv, &argc, 8, buf, 0), 0);
}

TEST_F(FixtureProc, ProcessInfoFromStatusAndStatm) {
    ProcessInfo info;
    ASSERT_EQ(cmdlib::proc_process_info(root_.c_str(), 101, &info), 0);
    EXPECT_EQ((std::vector<int>{info.Pid, info.PPid, info.VmPeak, info.VmSize, info.VmRSS,
                                 info.VmData, info.VmStk, info.resident_minus_share}),
              (std::vector<int>{101, 1, 1404, 1400, 720, 120, 132, 60}));
    EXPECT_STREQ(info.State, "S (sleeping)");
    EXPECT_STREQ(info.command_line, "/sbin/udhcpc -i wan");

    // status without most keys, no statm: zeros, still a result
    ASSERT_EQ(cmdlib::proc_process_info(root_.c_str(), 108, &info), 0);
    EXPECT_EQ(info.Pid, 108);
    EXPECT_EQ(info.VmRSS, 0);
    EXPECT_EQ(info.resident_minus_share, 0);
    EXPECT_STREQ(info.State, "");

    // a kernel thread, a process without status file, one that is gone
    for (pid_t pid : {103, 102, 105}) EXPECT_EQ(cmdlib::proc_process_info(root_.c_str(), pid, &info), -1) << pid;
    EXPECT_EQ(cmdlib::proc_process_info(root_.c_str(), 101, nullptr), -1);
}

TEST_F(FixtureProc, KeyValueFileByPath) {
    BigValue req = {};
    util_set_one_bit_for_big_value(&req, PROC_FILE_INFO_BIT_VmRSS);
    ProcFileInfo info;
    std::string path = (root_ / "101/status").string();
    ASSERT_EQ(util_get_file_content_info(&req, path.data(), &info), 0);
    EXPECT_STREQ(info.VmRSS, "720 kB");
    EXPECT_STREQ(info.VmSize, "");
    EXPECT_EQ(util_get_file_content_info(&req, &(root_ / "none").string()[0], &info), -1);
    EXPECT_EQ(util_get_file_content_info(&req, nullptr, &info), -1);
    EXPECT_EQ(util_get_file_content_info(&req, path.data(), nullptr), -1);
}

// ---- The exported readers on the real /proc (the queries with processes
// of known names are tested in the device) ----------------------------------

TEST(RealProc, ProcessInfoAndListOfOwnProcess) {
    ProcessInfo info;
    ASSERT_EQ(util_get_process_info(getpid(), &info), 0);
    EXPECT_EQ(info.Pid, getpid());
    EXPECT_EQ(info.PPid, getppid());
    EXPECT_GT(info.VmRSS, 0);
    EXPECT_NE(info.State[0], '\0');
    EXPECT_NE(strstr(info.command_line, "proc_table_test"), nullptr);

    std::vector<int> pids(100000);
    int n = util_get_process_list(pids.data(), static_cast<int>(pids.size()));
    EXPECT_NE(std::find(pids.begin(), pids.begin() + n, getpid()), pids.begin() + n);

    ProcFileInfo mem;
    ASSERT_EQ(util_get_proc_meminfo(&mem), 0);
    EXPECT_GT(atol(mem.MemTotal), 0);
    EXPECT_NE(strstr(mem.MemTotal, "kB"), nullptr);
    EXPECT_STREQ(mem.VmRSS, "");  // not requested
}

}  // namespace
