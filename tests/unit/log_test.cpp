// Logging: uptime words, the exception log and its cap, capped debug files,
// the flag table.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include "cmdlib/internal/log_write.h"
#include "cmdlib/log.h"

using namespace cmdlib;

namespace {

std::string words(long s) {
    char out[96];
    format_uptime_words(s, out, sizeof out);
    return out;
}

TEST(UptimeWords, Thresholds) {
    const std::pair<long, const char *> cases[] = {
        {86400 + 3600 + 60 + 1, "1 day 1 hour 1 min 1 sec"}, {59, "59 sec"}, {3600, "1 hour 0 sec"},
        {0, "0 sec"}, {86400 * 3 + 120, "3 day 2 min 0 sec"}, {-5, "0 sec"}};
    for (const auto &[s, want] : cases) EXPECT_EQ(words(s), want) << s;
    char small[6];
    EXPECT_EQ(format_uptime_words(86400, small, sizeof small), 5u);
    EXPECT_STREQ(small, "1 day");
    EXPECT_EQ(format_uptime_words(1, nullptr, 0), 0u);
}

class TempDir : public ::testing::Test {
  protected:
    void SetUp() override {
        strcpy(dir_, "/tmp/log_test_XXXXXX");
        ASSERT_NE(mkdtemp(dir_), nullptr);
    }
    void TearDown() override {
        std::string cmd = std::string("rm -rf ") + dir_;
        ASSERT_EQ(system(cmd.c_str()), 0);
    }
    std::string path(const char *name) { return std::string(dir_) + "/" + name; }
    static std::string slurp(const std::string &p) {
        std::ifstream in(p);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    static void put(const std::string &p, const std::string &text) { std::ofstream(p) << text; }
    char dir_[64];
};

TEST_F(TempDir, ExceptionLogLine) {
    put(path("uptime"), "90061.52 180000.00\n");
    append_exception_log(path("log").c_str(), path("uptime").c_str(), "dialtool", "modem lost");
    append_exception_log(path("log").c_str(), path("missing").c_str(), nullptr, nullptr);
    EXPECT_EQ(slurp(path("log")),
              "dialtool\t\t1 day 1 hour 1 min 1 sec\t\tmodem lost\n"
              "\t\t0 sec\t\t\n");
}

TEST_F(TempDir, ExceptionLogCapAtOneMebibyte) {
    std::string log = path("log");
    ASSERT_EQ(truncate(log.c_str(), 0), -1);  // not there yet
    put(log, "");
    ASSERT_EQ(truncate(log.c_str(), kExceptionLogCap), 0);
    append_exception_log(log.c_str(), "/proc/uptime", "p", "dropped");
    struct stat st;
    ASSERT_EQ(stat(log.c_str(), &st), 0);
    EXPECT_EQ(st.st_size, kExceptionLogCap);

    ASSERT_EQ(truncate(log.c_str(), kExceptionLogCap - 1), 0);
    append_exception_log(log.c_str(), "/proc/uptime", "p", "kept");
    ASSERT_EQ(stat(log.c_str(), &st), 0);
    EXPECT_GT(st.st_size, kExceptionLogCap);  // one line may cross the cap
}

TEST_F(TempDir, DebugFileAppendsUntilTenMebibytes) {
    std::string f = path("debug");
    save_debug_file_content(f.c_str(), "one");
    save_debug_file_content(f.c_str(), "");
    save_debug_file_content(f.c_str(), nullptr);
    EXPECT_EQ(slurp(f), "one\n\n\n");
    ASSERT_EQ(truncate(f.c_str(), kDebugFileCap), 0);
    save_debug_file_content(f.c_str(), "dropped");
    struct stat st;
    ASSERT_EQ(stat(f.c_str(), &st), 0);
    EXPECT_EQ(st.st_size, kDebugFileCap);
    save_debug_file_content(nullptr, "x");
}

TEST_F(TempDir, DigitFileIsReplaced) {
    std::string f = path("digit");
    put(f, "a much longer previous content\n");
    write_digit_to_file(f.c_str(), -42);
    EXPECT_EQ(slurp(f), "-42\n");
    write_digit_to_file(f.c_str(), 2147483647);
    EXPECT_EQ(slurp(f), "2147483647\n");
    write_digit_to_file(nullptr, 1);
}

TEST(LogConfig, TableAndAccessors) {
    int count = -1;
    const LogConfigInfo *t = util_get_log_config_info(&count);
    ASSERT_EQ(count, 4);
    ASSERT_EQ(t, log_configs);
    // the bit of an application is its row; its flag file is named after it
    EXPECT_STREQ(t[2].application_name, "mdlcfg");
    EXPECT_EQ(t[2].bit_offset_to_enable_debug, 2);
    EXPECT_STREQ(t[2].flag_file_name, "/tmp/log-enabled-flag-files-dir/.enable-debug-output-for-mdlcfg");
    EXPECT_EQ(util_get_log_config_info(nullptr), nullptr);
    EXPECT_EQ(util_should_debug_log_info("/nonexistent/flag"), 0);
    EXPECT_EQ(util_should_debug_log_info("/proc/uptime"), 1);
    EXPECT_EQ(util_should_debug_log_info(nullptr), 0);
    EXPECT_EQ(util_write_system_log("x"), 0);
}

}  // namespace
