// Logging: uptime words, the exception log and its cap, capped debug files,
// the digit file and the flag table's accessors.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "cmdlib/internal/log_write.h"
#include "cmdlib/log.h"
#include "common/scratch.h"

using namespace cmdlib;

namespace {

TEST(UptimeWords, Thresholds) {
    const std::pair<long, const char *> cases[] = {
        {86400 + 3600 + 60 + 1, "1 day 1 hour 1 min 1 sec"}, {59, "59 sec"}, {3600, "1 hour 0 sec"},
        {0, "0 sec"}, {86400 * 3 + 120, "3 day 2 min 0 sec"}, {-5, "0 sec"}};
    char out[96], small[6];
    for (const auto &[s, want] : cases) {
        format_uptime_words(s, out, sizeof out);
        EXPECT_STREQ(out, want) << s;
    }
    EXPECT_EQ(format_uptime_words(86400, small, sizeof small), 5u);
    EXPECT_STREQ(small, "1 day");
    EXPECT_EQ(format_uptime_words(1, nullptr, 0), 0u);
}

class LogFiles : public ScratchDir {
  protected:
    long size_of(const std::string &p) {
        struct stat st;
        return stat(p.c_str(), &st) == 0 ? st.st_size : -1;
    }
};

TEST_F(LogFiles, ExceptionLogLineAndItsOneMebibyteCap) {
    std::string log = path("log"), uptime = write("uptime", "90061.52 180000.00\n");
    append_exception_log(log.c_str(), uptime.c_str(), "dialtool", "modem lost");
    append_exception_log(log.c_str(), path("missing").c_str(), nullptr, nullptr);
    EXPECT_EQ(read(log), "dialtool\t\t1 day 1 hour 1 min 1 sec\t\tmodem lost\n\t\t0 sec\t\t\n");
    ASSERT_EQ(truncate(log.c_str(), kExceptionLogCap), 0);
    append_exception_log(log.c_str(), uptime.c_str(), "p", "dropped");
    EXPECT_EQ(size_of(log), kExceptionLogCap);
    ASSERT_EQ(truncate(log.c_str(), kExceptionLogCap - 1), 0);
    append_exception_log(log.c_str(), uptime.c_str(), "p", "kept");
    EXPECT_GT(size_of(log), kExceptionLogCap);  // one line may cross the cap
}

TEST_F(LogFiles, DebugFileAppendsUntilTenMebibytesDigitFileIsReplaced) {
    std::string f = path("debug"), d = write("digit", "a much longer previous content\n");
    save_debug_file_content(f.c_str(), "one");
    save_debug_file_content(f.c_str(), "");
    save_debug_file_content(f.c_str(), nullptr);
    EXPECT_EQ(read(f), "one\n\n\n");
    ASSERT_EQ(truncate(f.c_str(), kDebugFileCap), 0);
    save_debug_file_content(f.c_str(), "dropped");
    EXPECT_EQ(size_of(f), kDebugFileCap);
    save_debug_file_content(nullptr, "x");
    write_digit_to_file(d.c_str(), -42);
    EXPECT_EQ(read(d), "-42\n");
    write_digit_to_file(d.c_str(), 2147483647);
    EXPECT_EQ(read(d), "2147483647\n");
    write_digit_to_file(nullptr, 1);
}

TEST(LogConfig, Accessors) {
    int count = -1;
    EXPECT_EQ(util_get_log_config_info(&count), log_configs);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(util_get_log_config_info(nullptr), nullptr);
    EXPECT_EQ(util_should_debug_log_info("/nonexistent/flag"), 0);
    EXPECT_EQ(util_should_debug_log_info("/proc/uptime"), 1);
    EXPECT_EQ(util_should_debug_log_info(nullptr), 0);
    EXPECT_EQ(util_write_system_log("x"), 0);
}

}  // namespace
