// Process table: the /proc parsers on text (key-value files are golden
// cases, tests/golden/proc_status), and the matching rules and walks
// over the recorded /proc of tests/fixtures/proc as a table of calls
// (tests/golden/proc_calls); the exported readers on the real /proc.
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/proc_parse.h"
#include "common/golden.h"

namespace fs = std::filesystem;
using golden::Args;

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

// ---- matching and walks ---------------------------------------------------------

std::string cwd() {
    char buf[PATH_MAX];
    return getcwd(buf, sizeof buf) ? buf : "";
}

std::vector<std::string> split(const std::string &s, char sep) {
    std::vector<std::string> out;
    for (size_t i = 0; !s.empty() && i <= s.size();) {
        size_t j = std::min(s.find(sep, i), s.size());
        out.push_back(s.substr(i, j - i));
        i = j + 1;
    }
    return out;
}

std::vector<char *> c_strings(std::vector<std::string> &words) {
    std::vector<char *> v;
    for (auto &w : words) v.push_back(w == "(null)" ? nullptr : &w[0]);
    return v;
}

std::string shown(const char *text) {
    std::string t = text;
    return "\"" + (t.size() > 40 ? t.substr(0, 40) + "...(" + std::to_string(t.size()) + ")" : t) + "\"";
}

TEST(ProcCalls, Golden) {
    const std::string root = golden::fixture("proc"), here = cwd();
    golden::check("proc_calls", golden::calls({
        {"match",
         [](Args &a) {
             std::vector<std::string> argv = split(a[0], ' '), match = split(a[2], ',');
             auto av = c_strings(argv), mv = c_strings(match);
             return std::to_string(cmdlib::process_matches(av.data(), static_cast<int>(av.size()), a[1] == "(null)" ? nullptr : a[1].c_str(),
                                                           mv.data(), std::stoi(a[3])));
         }},
        {"pid",
         [](Args &a) {
             int pid = -1;
             return cmdlib::parse_pid_name(a[0].c_str(), &pid) ? std::to_string(pid) : std::string("no");
         }},
        {"list",
         [&](Args &a) {
             int pids[16];
             int n = cmdlib::proc_list(root.c_str(), pids, std::stoi(a[0]));
             std::sort(pids, pids + n);
             std::string out = std::to_string(n) + (cwd() == here ? "" : " moved!");
             for (int i = 0; n < std::stoi(a[0]) && i < n; ++i) out += " " + std::to_string(pids[i]);  // all of them: in order
             return out;
         }},
        {"walk",
         [&](Args &a) {
             std::vector<std::string> match = split(a[1], ',');
             auto mv = c_strings(match);
             char pid_value[16] = "none";
             cmdlib::ProcCount c;
             int n = cmdlib::proc_walk(root.c_str(), cmdlib::ProcQuery{a[0].c_str(), mv.empty() ? nullptr : mv.data(),
                                                                       static_cast<int>(mv.size()), a[2] == "first"},
                                       pid_value, &c);
             std::string left = cwd() == here ? "back" : fs::path(cwd()) == fs::canonical(root) ? "in the tree" : "elsewhere";
             EXPECT_EQ(chdir(here.c_str()), 0);
             // which of several matches comes first, and how many processes a
             // stopped walk saw, follow the directory's order: not shown
             std::string out = std::to_string(n) + " matched=" + std::to_string(c.matched);
             if (a[2] != "first") out += " total=" + std::to_string(c.total);
             if (n <= 1) out += " first=" + std::to_string(c.first_pid) + " pid=" + pid_value;
             return out + " cwd " + left;
         }},
        {"cmdline",
         [&](Args &a) {
             char line[512];
             memset(line, '#', sizeof line);
             line[511] = '\0';
             int rc = cmdlib::proc_command_line(root.c_str(), std::stoi(a[0]), line, std::stoi(a[1]));
             return std::to_string(rc) + " " + shown(line);
         }},
        {"args",
         [&](Args &a) {
             char *argv[8], buf[512];
             int argc = -1;
             int n = cmdlib::proc_args(root.c_str(), std::stoi(a[0]), argv, &argc, std::stoi(a[1]), buf, std::stoi(a[2]));
             std::string out = std::to_string(n) + " argc=" + std::to_string(argc);
             for (int i = 0; i < n; ++i) out += " " + shown(argv[i]);
             return out;
         }},
        {"info",
         [&](Args &a) {
             ProcessInfo i;
             if (cmdlib::proc_process_info(root.c_str(), std::stoi(a[0]), &i) != 0) return std::string("-1");
             char out[1024];
             snprintf(out, sizeof out, "0 Pid=%d PPid=%d VmPeak=%d VmSize=%d VmRSS=%d VmData=%d VmStk=%d rss-share=%d State=\"%s\" cmd=\"%s\"",
                      i.Pid, i.PPid, i.VmPeak, i.VmSize, i.VmRSS, i.VmData, i.VmStk, i.resident_minus_share, i.State, i.command_line);
             return std::string(out);
         }},
    }));
    EXPECT_EQ(cwd(), here);
}

TEST(ProcCalls, NullArguments) {
    const std::string root = golden::fixture("proc"), status = root + "/101/status";
    int pids[4];
    char *argv[8], buf[64];
    int argc = 0;
    EXPECT_EQ(cmdlib::proc_list(root.c_str(), nullptr, 16), 0);
    EXPECT_EQ(cmdlib::proc_list((root + "/none").c_str(), pids, 4), 0);
    cmdlib::ProcCount c;
    EXPECT_EQ(cmdlib::proc_walk((root + "/none").c_str(), cmdlib::ProcQuery{"x", nullptr, 0, false}, nullptr, &c), -1);
    EXPECT_EQ(cmdlib::proc_command_line(root.c_str(), 101, nullptr, 0), 0);
    EXPECT_EQ(cmdlib::proc_args(root.c_str(), 101, argv, &argc, 8, buf, sizeof buf), 3);
    EXPECT_EQ(cmdlib::proc_process_info(root.c_str(), 101, nullptr), -1);
    BigValue req = request({PROC_FILE_INFO_BIT_VmRSS});
    ProcFileInfo kv;
    std::string s = status, none = root + "/none";
    ASSERT_EQ(util_get_file_content_info(&req, &s[0], &kv), 0);
    EXPECT_STREQ(kv.VmRSS, "720 kB");
    EXPECT_STREQ(kv.VmSize, "");
    EXPECT_EQ(util_get_file_content_info(&req, &none[0], &kv), -1);
    EXPECT_EQ(util_get_file_content_info(&req, nullptr, &kv), -1);
    EXPECT_EQ(util_get_file_content_info(&req, &s[0], nullptr), -1);
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
