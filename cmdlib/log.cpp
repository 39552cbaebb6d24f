// Logging family: debug-flag files, exception log, capped debug files.
#include "cmdlib/log.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/log_write.h"

#define LOG_FLAG_FILE(app) LOG_FLAG_FILES_DIR "/.enable-debug-output-for-" app

extern "C" const LogConfigInfo log_configs[LOG_CONFIG_COUNT] = {
    {"dialtool", LOG_FLAG_FILE("dialtool"), 0},
    {"cmdlib", LOG_FLAG_FILE("cmdlib"), 1},
    {"mdlcfg", LOG_FLAG_FILE("mdlcfg"), 2},
    {"libplatform", LOG_FLAG_FILE("libplatform"), 3},
};

namespace cmdlib {

size_t format_uptime_words(long seconds, char *out, size_t size) {
    if (!out || size == 0) return 0;
    out[0] = '\0';
    if (seconds < 0) seconds = 0;
    static constexpr struct {
        long unit;
        const char *fmt;
    } kParts[] = {{86400, "%ld day "}, {3600, "%ld hour "}, {60, "%ld min "}};
    char piece[32];
    for (const auto &p : kParts) {
        if (seconds < p.unit) continue;
        format_bounded(piece, sizeof piece, p.fmt, seconds / p.unit);
        seconds %= p.unit;
        append_bounded(out, size, piece);
    }
    format_bounded(piece, sizeof piece, "%ld sec", seconds);
    return append_bounded(out, size, piece);
}

void append_exception_log(const char *log_path, const char *uptime_path,
                          const char *process_name, const char *event_description) {
    if (!log_path) return;
    // The log is never rotated: once it reaches the cap new events are lost,
    // which keeps a looping fault from filling /tmp.
    if (util_get_file_size_by_file_name(log_path) >= kExceptionLogCap) return;
    UniqueFile fp(fopen(log_path, "a"));
    if (!fp) return;
    char uptime_text[65] = "";  // 64 characters are plenty for "/proc/uptime"
    if (uptime_path) cmd_cat(uptime_path, uptime_text, sizeof uptime_text);
    char words[96];
    format_uptime_words(atoi_sat(uptime_text), words, sizeof words);
    fprintf(fp.get(), "%s\t\t%s\t\t%s\n", process_name ? process_name : "", words,
            event_description ? event_description : "");
}

}  // namespace cmdlib

using namespace cmdlib;

extern "C" {

int util_should_debug_log_info(const char *flag_file_name) {
    return flag_file_name && cmd_file_exist(flag_file_name) ? 1 : 0;
}

const LogConfigInfo *util_get_log_config_info(int *count) {
    if (!count) return nullptr;
    *count = LOG_CONFIG_COUNT;
    return log_configs;
}

void util_recreate_debug_flag_files(const char *debug_hex_flags) {
    if (!util_dir_is_dir_exist(LOG_FLAG_FILES_DIR))
        util_shell("mkdir -p " LOG_FLAG_FILES_DIR " 1>/dev/null 2>&1");
    BigValue mask = {};
    util_get_big_value_from_bits(debug_hex_flags, &mask);
    bool all = false;
    if (debug_hex_flags && strlen(debug_hex_flags) >= 3) {
        char head[4];
        for (int i = 0; i < 3; ++i)
            head[i] = static_cast<char>(tolower(static_cast<unsigned char>(debug_hex_flags[i])));
        head[3] = '\0';
        all = strcmp(head, "all") == 0;
    }
    for (const LogConfigInfo &row : log_configs) {
        if (all || util_is_one_bit_set_for_big_value(&mask, row.bit_offset_to_enable_debug))
            cmd_touch(row.flag_file_name);
        else
            cmd_rm(row.flag_file_name);
    }
}

void util_write_exception_log(const char *process_name, const char *event_description) {
    append_exception_log(EXCEPTION_LOG_FILE, "/proc/uptime", process_name, event_description);
}

void save_debug_file_content(const char *path, const char *content) {
    if (!path) return;
    // A missing file has size -1 and is created by the append.
    if (util_get_file_size_by_file_name(path) >= kDebugFileCap) return;
    UniqueFile fp(fopen(path, "a"));
    if (!fp) return;
    fprintf(fp.get(), "%s\n", content ? content : "");
}

void write_digit_to_file(const char *path, int value) {
    if (!path) return;
    UniqueFile fp(fopen(path, "w"));
    if (!fp) return;
    fprintf(fp.get(), "%d\n", value);
}

int util_write_system_log(const char *log) {
    (void)log;
    return 0;
}

}  // extern "C"
