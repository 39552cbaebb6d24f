// libbase file services on the scratch directory.
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
#include "common/scratch.h"

namespace {

class BaseFiles : public ScratchDir {};

TEST_F(BaseFiles, EchoCatSaveLoadAndSizes) {
    std::string f = path("a");
    ASSERT_EQ(cmd_echo("one", f.c_str()), 0);
    ASSERT_EQ(cmd_echo_append("two", f.c_str()), 0);
    ASSERT_EQ(cmd_echo_append_without_new_line("3", f.c_str()), 0);
    EXPECT_EQ(read(f), "one\ntwo\n3");
    ASSERT_EQ(cmd_echo_without_new_line("abcdefghij", f.c_str()), 0);
    ASSERT_EQ(cmd_echo_append("first", path("by_append").c_str()), 0);  // append creates
    EXPECT_EQ(read(path("by_append")), "first\n");
    char buf[5], one[1] = {'Z'}, big[64];
    ASSERT_EQ(cmd_cat(f.c_str(), buf, sizeof buf), 0);  // cut at size-1
    EXPECT_STREQ(buf, "abcd");
    ASSERT_EQ(cmd_cat(f.c_str(), one, 1), 0);
    EXPECT_EQ(one[0], '\0');
    ASSERT_EQ(util_load_file_content(big, sizeof big, f.c_str()), 0);
    EXPECT_STREQ(big, "abcdefghij");

    const char data[] = {'a', '\0', 'b', '\n'};
    ASSERT_EQ(util_save_file_content(data, 4, f.c_str()), 0);
    EXPECT_EQ(util_get_file_size_by_file_name(f.c_str()), 4);
    FILE *fp = fopen(f.c_str(), "r");
    ASSERT_NE(fp, nullptr);
    EXPECT_EQ(util_get_file_size_by_file_handle(fp), 4);
    fclose(fp);
    ASSERT_EQ(cmd_echo("zzz", f.c_str()), 0);
    ASSERT_EQ(util_file_save("1", 1, f.c_str()), 0);  // overwrites in place, no truncation
    EXPECT_EQ(read(f), "1zz\n");
    ASSERT_EQ(cmd_touch(f.c_str()), 0);  // keeps the content
    EXPECT_EQ(read(f), "1zz\n");
}

TEST_F(BaseFiles, MissingAndBadInputsFailWithoutCrashing) {
    char buf[16] = "keep";
    const std::string missing = path("missing");
    EXPECT_NE(cmd_cat(missing.c_str(), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_NE(cmd_cat(nullptr, buf, sizeof buf), 0);
    EXPECT_NE(cmd_cat(missing.c_str(), nullptr, 10), 0);
    EXPECT_NE(cmd_cat(dir_.c_str(), buf, sizeof buf), 0);  // a directory is not a file
    EXPECT_NE(cmd_cat(missing.c_str(), buf, 0), 0);
    EXPECT_LT(util_get_file_size_by_file_name(missing.c_str()), 0);
    EXPECT_LT(util_get_file_size_by_file_name(nullptr), 0);
    EXPECT_EQ(util_get_file_size_by_file_handle(nullptr), -1);
    EXPECT_EQ(cmd_rm(missing.c_str()), 0);  // missing is no error
    EXPECT_EQ(cmd_file_exist(nullptr), 0);
    EXPECT_EQ(cmd_file_exist(""), 0);
    EXPECT_NE(util_file_save("1", 1, missing.c_str()), 0);  // never creates
    EXPECT_EQ(cmd_file_exist(missing.c_str()), 0);
    EXPECT_EQ(util_have_string_in_the_file(missing.c_str(), "x", 0), 0);
    EXPECT_NE(cmd_cp(missing.c_str(), path("b").c_str()), 0);
}

TEST_F(BaseFiles, CopyMoveChmod) {
    std::string a = write("a", "payload\n"), b = path("b"), c = path("c");
    ASSERT_EQ(cmd_cp(a.c_str(), b.c_str()), 0);
    ASSERT_EQ(cmd_mv(b.c_str(), c.c_str()), 0);
    EXPECT_FALSE(cmd_file_exist(b.c_str()));
    EXPECT_EQ(read(c), "payload\n");
    struct stat st;
    for (const auto &[fn, mode] : {std::pair<int (*)(const char *), unsigned>{cmd_chmodx, 0711u}, {cmd_chmodrw, 0666u}}) {
        ASSERT_EQ(chmod(a.c_str(), 0600), 0);
        ASSERT_EQ(fn(a.c_str()), 0);
        ASSERT_EQ(stat(a.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, mode);
    }
}

TEST_F(BaseFiles, DirectoriesAndRecursiveRemoveDoesNotFollowLinks) {
    std::string deep = path("x/y/z"), outside = path("outside");
    ASSERT_EQ(util_dir_mkdir(deep.c_str(), 0755), 0);
    EXPECT_TRUE(util_dir_is_dir_exist(deep.c_str()));
    EXPECT_EQ(util_dir_mkdir(deep.c_str(), 0755), 0);  // already there
    write("outside/f", "keep\n");
    ASSERT_EQ(symlink(outside.c_str(), path("x/y/link").c_str()), 0);  // a link out of the tree
    write("x/y/z/file", "1\n");
    EXPECT_NE(cmd_rmdir(path("x").c_str()), 0);  // not empty
    ASSERT_EQ(cmd_rmdir_advance(path("x").c_str()), 0);
    EXPECT_FALSE(cmd_file_exist(path("x").c_str()));
    EXPECT_EQ(read(outside + "/f"), "keep\n");
    EXPECT_EQ(cmd_rmdir_advance(path("never").c_str()), 0);
    EXPECT_EQ(util_dir_is_dir_exist((outside + "/f").c_str()), 0);
}

TEST_F(BaseFiles, HaveStringAcrossBlockBoundaries) {
    // the needle straddles the 16 KiB read boundary, at a line start
    std::string f = write("big", std::string(16384 - 3, 'a') + "\nNEEDLE-in\n"), g = write("start", "head rest\n");
    const struct {
        std::string file;
        const char *needle;
        int at_line_start, want;
    } cases[] = {{f, "NEEDLE", 0, 1}, {f, "NEEDLE", 1, 1}, {f, "EEDLE", 1, 0}, {f, "EEDLE", 0, 1},
                 {f, "absent", 0, 0}, {g, "head", 1, 1},   {g, "rest", 1, 0}};
    for (const auto &c : cases)
        EXPECT_EQ(util_have_string_in_the_file(c.file.c_str(), c.needle, c.at_line_start), c.want)
            << c.needle << " " << c.at_line_start;
}

TEST(BaseTmpPath, UniqueAcrossThreadsAndProcesses) {
    std::vector<std::string> names(8 * 200);
    std::vector<std::thread> threads;
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
