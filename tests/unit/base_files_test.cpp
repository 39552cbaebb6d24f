// libbase file services on a private scratch directory.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/libbase.h"

namespace {

class BaseFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/base_files_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
    }
    void TearDown() override { cmd_rmdir_advance(dir_.c_str()); }
    std::string path(const std::string &name) const { return dir_ + "/" + name; }
    static std::string slurp(const std::string &p) {
        std::ifstream in(p, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    std::string dir_;
};

TEST_F(BaseFiles, EchoFamilyWritesAndAppends) {
    std::string f = path("a");
    ASSERT_EQ(cmd_echo("one", f.c_str()), 0);
    EXPECT_EQ(slurp(f), "one\n");
    ASSERT_EQ(cmd_echo_append("two", f.c_str()), 0);
    ASSERT_EQ(cmd_echo_append_without_new_line("3", f.c_str()), 0);
    EXPECT_EQ(slurp(f), "one\ntwo\n3");
    ASSERT_EQ(cmd_echo_without_new_line("x", f.c_str()), 0);
    EXPECT_EQ(slurp(f), "x");
    std::string g = path("created_by_append");
    ASSERT_EQ(cmd_echo_append("first", g.c_str()), 0);
    EXPECT_EQ(slurp(g), "first\n");
}

TEST_F(BaseFiles, CatTruncatesAtSizeMinusOne) {
    std::string f = path("long");
    ASSERT_EQ(cmd_echo_without_new_line("abcdefghij", f.c_str()), 0);
    char buf[5];
    memset(buf, 'Z', sizeof buf);
    ASSERT_EQ(cmd_cat(f.c_str(), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "abcd");
    char one[1] = {'Z'};
    ASSERT_EQ(cmd_cat(f.c_str(), one, 1), 0);
    EXPECT_EQ(one[0], '\0');
    char big[64];
    ASSERT_EQ(util_load_file_content(big, sizeof big, f.c_str()), 0);
    EXPECT_STREQ(big, "abcdefghij");
}

TEST_F(BaseFiles, MissingAndBadInputsFailWithoutCrashing) {
    char buf[16] = "keep";
    EXPECT_NE(cmd_cat(path("missing").c_str(), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_NE(cmd_cat(nullptr, buf, sizeof buf), 0);
    EXPECT_NE(cmd_cat(path("x").c_str(), nullptr, 10), 0);
    EXPECT_NE(cmd_cat(dir_.c_str(), buf, sizeof buf), 0);  // a directory is not a file
    EXPECT_NE(cmd_cat(path("x").c_str(), buf, 0), 0);
    EXPECT_LT(util_get_file_size_by_file_name(path("missing").c_str()), 0);
    EXPECT_LT(util_get_file_size_by_file_name(nullptr), 0);
    EXPECT_EQ(cmd_rm(path("missing").c_str()), 0);  // missing is no error
    EXPECT_EQ(cmd_file_exist(nullptr), 0);
    EXPECT_EQ(cmd_file_exist(""), 0);
    EXPECT_NE(util_file_save("1", 1, path("nofile").c_str()), 0);  // never creates
    EXPECT_EQ(cmd_file_exist(path("nofile").c_str()), 0);
    EXPECT_EQ(util_have_string_in_the_file(path("missing").c_str(), "x", 0), 0);
    EXPECT_EQ(util_get_file_size_by_file_handle(nullptr), -1);
}

TEST_F(BaseFiles, SaveLoadBinaryAndSizes) {
    std::string f = path("bin");
    const char data[] = {'a', '\0', 'b', '\n'};
    ASSERT_EQ(util_save_file_content(data, 4, f.c_str()), 0);
    EXPECT_EQ(util_get_file_size_by_file_name(f.c_str()), 4);
    FILE *fp = fopen(f.c_str(), "r");
    ASSERT_NE(fp, nullptr);
    EXPECT_EQ(util_get_file_size_by_file_handle(fp), 4);
    fclose(fp);
    ASSERT_EQ(util_save_file_content("", 0, f.c_str()), 0);
    EXPECT_EQ(util_get_file_size_by_file_name(f.c_str()), 0);
    ASSERT_EQ(cmd_echo("zzz", f.c_str()), 0);
    ASSERT_EQ(util_file_save("1", 1, f.c_str()), 0);  // overwrite in place, no truncation
    EXPECT_EQ(slurp(f), "1zz\n");
}

TEST_F(BaseFiles, TouchKeepsExistingContent) {
    std::string f = path("flag");
    ASSERT_EQ(cmd_touch(f.c_str()), 0);
    EXPECT_TRUE(cmd_file_exist(f.c_str()));
    EXPECT_EQ(util_get_file_size_by_file_name(f.c_str()), 0);
    ASSERT_EQ(cmd_echo("data", f.c_str()), 0);
    ASSERT_EQ(cmd_touch(f.c_str()), 0);
    EXPECT_EQ(slurp(f), "data\n");
}

TEST_F(BaseFiles, CopyMoveChmod) {
    std::string a = path("a"), b = path("b"), c = path("c");
    ASSERT_EQ(cmd_echo("payload", a.c_str()), 0);
    ASSERT_EQ(cmd_cp(a.c_str(), b.c_str()), 0);
    EXPECT_EQ(slurp(b), "payload\n");
    ASSERT_EQ(cmd_mv(b.c_str(), c.c_str()), 0);
    EXPECT_FALSE(cmd_file_exist(b.c_str()));
    EXPECT_EQ(slurp(c), "payload\n");
    EXPECT_NE(cmd_cp(path("missing").c_str(), b.c_str()), 0);
    ASSERT_EQ(chmod(a.c_str(), 0600), 0);
    ASSERT_EQ(cmd_chmodx(a.c_str()), 0);
    struct stat st;
    ASSERT_EQ(stat(a.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0711u);
    ASSERT_EQ(chmod(a.c_str(), 0600), 0);
    ASSERT_EQ(cmd_chmodrw(a.c_str()), 0);
    ASSERT_EQ(stat(a.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0666u);
}

TEST_F(BaseFiles, DirectoriesAndRecursiveRemoveDoesNotFollowLinks) {
    std::string deep = path("x/y/z");
    ASSERT_EQ(util_dir_mkdir(deep.c_str(), 0755), 0);
    EXPECT_TRUE(util_dir_is_dir_exist(deep.c_str()));
    EXPECT_EQ(util_dir_mkdir(deep.c_str(), 0755), 0);  // already there
    // a link inside the tree pointing outside it
    std::string outside = path("outside");
    ASSERT_EQ(util_dir_mkdir(outside.c_str(), 0755), 0);
    ASSERT_EQ(cmd_echo("keep", (outside + "/f").c_str()), 0);
    ASSERT_EQ(symlink(outside.c_str(), path("x/y/link").c_str()), 0);
    ASSERT_EQ(cmd_echo("1", path("x/y/z/file").c_str()), 0);
    EXPECT_NE(cmd_rmdir(path("x").c_str()), 0);  // not empty
    ASSERT_EQ(cmd_rmdir_advance(path("x").c_str()), 0);
    EXPECT_FALSE(cmd_file_exist(path("x").c_str()));
    EXPECT_EQ(slurp(outside + "/f"), "keep\n");
    EXPECT_EQ(cmd_rmdir_advance(path("never").c_str()), 0);
    EXPECT_FALSE(util_dir_is_dir_exist(outside.c_str()) == 0);
    EXPECT_EQ(util_dir_is_dir_exist((outside + "/f").c_str()), 0);
}

TEST_F(BaseFiles, HaveStringAcrossBlockBoundaries) {
    std::string f = path("big");
    // Put the needle across the 16 KiB read boundary and at a line start.
    std::string content(16384 - 3, 'a');
    content += "\nNEEDLE-in\n";
    ASSERT_EQ(util_save_file_content(content.data(), static_cast<int>(content.size()), f.c_str()), 0);
    EXPECT_EQ(util_have_string_in_the_file(f.c_str(), "NEEDLE", 0), 1);
    EXPECT_EQ(util_have_string_in_the_file(f.c_str(), "NEEDLE", 1), 1);
    EXPECT_EQ(util_have_string_in_the_file(f.c_str(), "EEDLE", 1), 0);  // not at a line start
    EXPECT_EQ(util_have_string_in_the_file(f.c_str(), "EEDLE", 0), 1);
    EXPECT_EQ(util_have_string_in_the_file(f.c_str(), "absent", 0), 0);
    std::string g = path("start");
    ASSERT_EQ(cmd_echo("head rest", g.c_str()), 0);
    EXPECT_EQ(util_have_string_in_the_file(g.c_str(), "head", 1), 1);
    EXPECT_EQ(util_have_string_in_the_file(g.c_str(), "rest", 1), 0);
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
    for (const auto &n : uniq) EXPECT_EQ(n.rfind("/tmp/", 0), 0u) << n;
    // Another process (a child) gets names of its own.
    int pfd[2];
    ASSERT_EQ(pipe(pfd), 0);
    pid_t pid = fork();
    if (pid == 0) {
        char buf[UTIL_TMP_PATH_SIZE];
        util_get_tmp_uuid_file_path(buf);
        ssize_t w = write(pfd[1], buf, strlen(buf));
        _exit(w > 0 ? 0 : 1);
    }
    close(pfd[1]);
    char child[UTIL_TMP_PATH_SIZE] = {};
    ASSERT_GT(read(pfd[0], child, sizeof child - 1), 0);
    close(pfd[0]);
    int st = 0;
    waitpid(pid, &st, 0);
    EXPECT_EQ(uniq.count(child), 0u);
}

}  // namespace
