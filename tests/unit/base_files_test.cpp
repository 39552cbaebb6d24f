// libbase file services on the scratch directory: single calls as a table
// (tests/golden/base_files), unique scratch names across threads and
// processes.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/libbase.h"
#include "common/golden.h"
#include "common/scratch.h"

namespace {

class BaseFiles : public ScratchDir {};

// The file services as a table of calls on paths below the scratch
// directory (tests/golden/base_files): "(null)" and "/" stand for
// themselves, other paths are relative.
TEST_F(BaseFiles, Golden) {
    using golden::Args;
    using golden::show;
    const std::string base = dir_;
    auto at = [base](const golden::Arg &a) {
        return a.null() ? std::string() : a.empty() || a[0] == '/' ? std::string(a) : base + "/" + a;
    };
    auto p = [at](const golden::Arg &a) {  // kept alive by the caller's string
        return a.null() ? nullptr : strdup(at(a).c_str());
    };
    auto path_call = [p](int (*f)(const char *)) {
        return [p, f](Args &a) {
            char *q = p(a[0]);
            int rc = f(q);
            free(q);
            return show(rc);
        };
    };
    auto text_call = [at](int (*f)(const char *, const char *)) {
        return [at, f](Args &a) { return show(f(a[0].c(), at(a[1]).c_str())); };
    };
    golden::check("base_files", golden::calls(golden::with_files(base, {
        {"echo", text_call(cmd_echo)},
        {"echo_nonl", text_call(cmd_echo_without_new_line)},
        {"echo_append", text_call(cmd_echo_append)},
        {"echo_append_nonl", text_call(cmd_echo_append_without_new_line)},
        {"cat", [p](Args &a) {
             char buf[64] = "keep";
             char *q = p(a[0]);
             int rc = cmd_cat(q, a[1] == "nobuf" ? nullptr : buf, a[1] == "nobuf" ? 10 : a[1].i());
             free(q);
             return show(rc, buf);
         }},
        {"load", [at](Args &a) {
             char buf[64] = "keep";
             return show(util_load_file_content(buf, a[1].i(), at(a[0]).c_str()), buf);
         }},
        {"save", [at](Args &a) { return show(util_save_file_content(a[1].c(), a[2].i(), at(a[0]).c_str())); }},
        {"file_save", [at](Args &a) { return show(util_file_save(a[1].c(), a[2].i(), at(a[0]).c_str())); }},
        {"size", [p](Args &a) {
             char *q = p(a[0]);
             long n = util_get_file_size_by_file_name(q);
             FILE *fp = q ? fopen(q, "r") : nullptr;
             long h = util_get_file_size_by_file_handle(fp);
             if (fp) fclose(fp);
             free(q);
             return show(n, h);
         }},
        {"touch", path_call(cmd_touch)},
        {"cmd_rm", path_call(cmd_rm)},
        {"exists", path_call(cmd_file_exist)},
        {"is_dir", path_call(util_dir_is_dir_exist)},
        {"rmdir", path_call(cmd_rmdir)},
        {"rmdir_advance", path_call(cmd_rmdir_advance)},
        {"mkdir", [at](Args &a) { return show(util_dir_mkdir(at(a[0]).c_str(), 0755)); }},
        {"cp", [at](Args &a) { return show(cmd_cp(at(a[0]).c_str(), at(a[1]).c_str())); }},
        {"mv", [at](Args &a) { return show(cmd_mv(at(a[0]).c_str(), at(a[1]).c_str())); }},
        {"symlink", [at](Args &a) { return show(symlink(at(a[0]).c_str(), at(a[1]).c_str())); }},
        {"have", [at](Args &a) { return show(util_have_string_in_the_file(at(a[0]).c_str(), a[1].c(), a[2].i())); }},
        // the mode after the call on a file of mode 0600
        {"chmod", [at](Args &a) {
             std::string f = at(a[1]);
             struct stat st = {};
             chmod(f.c_str(), 0600);
             int rc = a[0] == "x" ? cmd_chmodx(f.c_str()) : cmd_chmodrw(f.c_str());
             stat(f.c_str(), &st);
             char mode[8];
             snprintf(mode, sizeof mode, "%03o", st.st_mode & 0777);
             return show(rc) + " " + mode;
         }},
    })));
}

TEST(BaseTmpPath, UniqueAcrossThreadsAndProcesses) {
    std::vector<std::string> names(8 * 200);
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&names, t] {
            for (int i = 0; i < 200; ++i) {
                char buf[UTIL_TMP_PATH_SIZE];
                util_get_tmp_uuid_file_path(buf);
                names[t * 200 + i] = buf;
            }
        });
    for (auto &th : threads) th.join();
    std::set<std::string> uniq(names.begin(), names.end());
    EXPECT_EQ(uniq.size(), names.size());
    EXPECT_EQ(uniq.begin()->rfind("/tmp/", 0), 0u);
    int pfd[2];  // another process (a child) gets names of its own
    ASSERT_EQ(pipe(pfd), 0);
    pid_t pid = fork();
    if (pid == 0) {
        char buf[UTIL_TMP_PATH_SIZE];
        util_get_tmp_uuid_file_path(buf);
        _exit(write(pfd[1], buf, strlen(buf)) > 0 ? 0 : 1);
    }
    close(pfd[1]);
    char child[UTIL_TMP_PATH_SIZE] = {};
    ASSERT_GT(read(pfd[0], child, sizeof child - 1), 0);
    close(pfd[0]);
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(uniq.count(child), 0u);
}

}  // namespace
