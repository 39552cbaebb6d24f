// Process table, memory figures and command lines from /proc.
#include "cmdlib/cmdlib_info.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/proc_parse.h"

namespace cmdlib {

namespace {

constexpr const char kProcRoot[] = "/proc";

struct ProcField {
    std::string_view name;
    size_t offset;
    int bit;
};

constexpr std::array<ProcField, PROC_FILE_INFO_FIELD_COUNT> kProcFields = {{
#define CMDLIB_PROC_FIELD_ROW(name, bit) {#name, offsetof(ProcFileInfo, name), bit},
    CMDLIB_PROC_FILE_FIELDS(CMDLIB_PROC_FIELD_ROW)
#undef CMDLIB_PROC_FIELD_ROW
}};
static_assert(sizeof(ProcFileInfo) == PROC_FILE_INFO_FIELD_COUNT * PROC_FILE_INFO_VALUE_SIZE,
              "13 text fields of 32 bytes");

constexpr bool bits_follow_record_order() {
    for (size_t i = 0; i < kProcFields.size(); ++i)
        if (kProcFields[i].bit != static_cast<int>(i) ||
            kProcFields[i].offset != i * PROC_FILE_INFO_VALUE_SIZE)
            return false;
    return true;
}
static_assert(bits_follow_record_order(), "field i is bit i at offset 32 * i");

// Bits of the status-file fields util_get_process_info asks for.
constexpr int kFirstStatusBit = PROC_FILE_INFO_BIT_Pid;
constexpr int kLastStatusBit = PROC_FILE_INFO_BIT_State;
// Bits of /proc/meminfo.
constexpr int kLastMeminfoBit = PROC_FILE_INFO_BIT_Cached;

// Handles one read piece of a key-value file.
void take_key_value_line(std::string_view line, const BigValue *req, ProcFileInfo *out) {
    std::string_view key;
    std::string_view value;
    if (!split_once(line, ':', &key, &value) || key.empty()) return;
    key = strip(key);
    value = strip(value);
    for (const ProcField &f : kProcFields) {
        if (f.name != key) continue;
        if (req && util_is_one_bit_set_for_big_value(req, f.bit))
            copy_bounded(reinterpret_cast<char *>(out) + f.offset, PROC_FILE_INFO_VALUE_SIZE, value);
        return;
    }
}

// Reads up to cap bytes of path (relative to the working directory or
// absolute).  A short read ends the file: /proc files and regular files
// return short only at their end.  -1 when it cannot be opened or read.
ssize_t read_small_file(const char *path, char *buf, size_t cap) {
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return -1;
    size_t got = 0;
    while (got < cap) {
        size_t want = cap - got;
        ssize_t n = ::read(fd.get(), buf + got, want);
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        got += static_cast<size_t>(n);
        if (static_cast<size_t>(n) < want) break;
    }
    return static_cast<ssize_t>(got);
}

// Command line of the process directory dir ("/proc/12" or, during a
// walk, "12") into out (capacity size, at most size-2 characters).
int command_line_at(const char *dir, char *out, int size) {
    char path[PATH_MAX];
    if (format_bounded(path, sizeof path, "%s/cmdline", dir) + 1 >= sizeof path) return -1;
    char raw[kCmdlineBufferSize];
    ssize_t n = read_small_file(path, raw, sizeof raw - 1);
    if (n < 0) {
        // Only a missing file is a failure; one that exists but cannot be
        // read gives an empty command line.
        if (!cmd_file_exist(path)) return -1;
        n = 0;
    }
    cmdline_to_text(raw, static_cast<size_t>(n));
    if (!out || size <= 0) return 0;
    memset(out, 0, static_cast<size_t>(size));
    if (size >= 2) copy_bounded(out, static_cast<size_t>(size) - 1, raw);
    return 0;
}

int args_at(const char *dir, char **argv, int *argc, int max_argv_count, char *buffer,
            int buffer_size) {
    if (!buffer || buffer_size < 2) return 0;
    if (command_line_at(dir, buffer, buffer_size - 1) != 0) return 0;
    int n = argv && max_argv_count > 0 ? util_get_all_args(buffer, ' ', '\t', argv, max_argv_count) : 0;
    if (argc) *argc = n;
    return n;
}

bool process_dir(const char *proc_root, pid_t pid, char *dir, size_t size) {
    return format_bounded(dir, size, "%s/%d", proc_root, static_cast<int>(pid)) + 1 < size;
}

// Entry of a walk: a directory (not a symbolic link) named by a pid.
bool is_process_entry(const struct dirent *e, int *pid) {
    if (!parse_pid_name(e->d_name, pid)) return false;
    if (e->d_type == DT_DIR) return true;
    if (e->d_type != DT_UNKNOWN) return false;
    struct stat st;
    return ::lstat(e->d_name, &st) == 0 && S_ISDIR(st.st_mode);
}

// Working directory of the caller, kept as a descriptor so that any path
// length comes back.
class CwdGuard {
  public:
    CwdGuard() : fd_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {}
    bool restore() { return fd_ && ::fchdir(fd_.get()) == 0; }

  private:
    UniqueFd fd_;
};

}  // namespace

void parse_proc_key_values(std::string_view text, const BigValue *req, ProcFileInfo *out) {
    memset(out, 0, sizeof *out);
    // 254 characters a read, as the stream reader below
    TextLineReader<255> reader(text);
    std::string_view line;
    while (reader.next(&line)) take_key_value_line(line, req, out);
}

void read_proc_key_values(FILE *fp, const BigValue *req, ProcFileInfo *out) {
    memset(out, 0, sizeof *out);
    LineReader<255> reader(fp);
    std::string_view line;
    while (reader.next(&line)) take_key_value_line(line, req, out);
}

size_t cmdline_to_text(char *buf, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (buf[i] == '\0') buf[i] = ' ';
    buf[n] = '\0';
    util_strip_blank_of_string_end(buf);
    return strlen(buf);
}

std::string_view program_name(const char *arg0) {
    const char *slash = strrchr(arg0, '/');
    return slash ? slash + 1 : arg0;
}

bool process_matches(char *const *argv, int argc, const char *cmd_name, char *const *match_string,
                     int match_string_count) {
    if (argc <= 0 || !cmd_name || program_name(argv[0]) != cmd_name) return false;
    if (!match_string) return true;
    // Only the even indexes are match strings; the odd ones are skipped.
    for (int i = 0; i < match_string_count; i += 2) {
        const char *want = match_string[i];
        if (!want) return false;
        bool found = false;
        for (int a = 1; a < argc && !found; ++a) found = strcmp(argv[a], want) == 0;
        if (!found) return false;
    }
    return true;
}

bool parse_pid_name(const char *name, int *pid) {
    int64_t v = 0;
    size_t len = strnlen(name, kPidTextSize);
    if (len == 0 || len >= kPidTextSize) return false;
    for (size_t i = 0; i < len; ++i)
        if (name[i] < '0' || name[i] > '9') return false;
    if (!parse_int64(std::string_view(name, len), &v) || v > INT_MAX) return false;
    *pid = static_cast<int>(v);
    return true;
}

int proc_command_line(const char *proc_root, pid_t pid, char *command_line, int size) {
    char dir[PATH_MAX];
    if (!proc_root || !process_dir(proc_root, pid, dir, sizeof dir)) return -1;
    return command_line_at(dir, command_line, size);
}

int proc_args(const char *proc_root, pid_t pid, char **argv, int *argc, int max_argv_count,
              char *buffer, int buffer_size) {
    char dir[PATH_MAX];
    if (!proc_root || !process_dir(proc_root, pid, dir, sizeof dir)) return 0;
    return args_at(dir, argv, argc, max_argv_count, buffer, buffer_size);
}

int proc_process_info(const char *proc_root, pid_t pid, ProcessInfo *info) {
    if (!info) return -1;
    memset(info, 0, sizeof *info);
    char dir[PATH_MAX];
    if (!proc_root || !process_dir(proc_root, pid, dir, sizeof dir)) return -1;
    if (command_line_at(dir, info->command_line, sizeof info->command_line) != 0) return -1;
    if (info->command_line[0] == '\0') return -1;  // kernel thread

    char path[PATH_MAX];
    format_bounded(path, sizeof path, "%s/status", dir);
    UniqueFile status(path, "re");
    if (!status) return -1;
    BigValue req = {};
    for (int bit = kFirstStatusBit; bit <= kLastStatusBit; ++bit) util_set_one_bit_for_big_value(&req, bit);
    ProcFileInfo fields;
    read_proc_key_values(status.get(), &req, &fields);
    info->Pid = atoi_sat(fields.Pid);
    info->PPid = atoi_sat(fields.PPid);
    info->VmPeak = atoi_sat(fields.VmPeak);
    info->VmSize = atoi_sat(fields.VmSize);
    info->VmRSS = atoi_sat(fields.VmRSS);
    info->VmData = atoi_sat(fields.VmData);
    info->VmStk = atoi_sat(fields.VmStk);
    memcpy(info->State, fields.State, sizeof info->State);

    // statm: size resident shared text lib data dt (pages)
    format_bounded(path, sizeof path, "%s/statm", dir);
    char statm[kCmdlineBufferSize] = {};
    if (cmd_cat(path, statm, sizeof statm) == 0) {
        util_strip_blank_of_string_end(statm);
        char *word[7];
        int n = util_get_all_args(statm, ' ', '\t', word, 7);
        if (n > 2) info->resident_minus_share = atoi_sat(word[1]) - atoi_sat(word[2]);
    }
    return 0;
}

int proc_list(const char *proc_root, int *pid_list, int max_allowed_pid_count) {
    if (!proc_root) return 0;
    UniqueDir dir(proc_root);
    if (!dir) return 0;
    CwdGuard cwd;
    if (::chdir(proc_root) != 0) return 0;
    int count = 0;
    while (const struct dirent *e = ::readdir(dir.get())) {
        int pid = 0;
        if (!is_process_entry(e, &pid)) continue;
        if (count >= max_allowed_pid_count || !pid_list) break;
        pid_list[count++] = pid;
    }
    cwd.restore();
    return count;
}

int proc_walk(const char *proc_root, const ProcQuery &query, char *pid_value, ProcCount *count) {
    ProcCount local;
    ProcCount *c = count ? count : &local;
    *c = ProcCount{};
    if (!proc_root) return -1;
    UniqueDir dir(proc_root);
    if (!dir) return -1;
    CwdGuard cwd;
    if (::chdir(proc_root) != 0) return -1;
    char *argv[kMaxProcessArgs];
    char buffer[kCmdlineBufferSize];
    while (const struct dirent *e = ::readdir(dir.get())) {
        int pid = 0;
        if (!is_process_entry(e, &pid)) continue;
        // A process that ended meanwhile has no cmdline any more: skipped.
        int argc = args_at(e->d_name, argv, nullptr, kMaxProcessArgs, buffer, sizeof buffer);
        if (argc == 0) continue;
        ++c->total;
        if (!process_matches(argv, argc, query.cmd_name, query.match_string, query.match_string_count))
            continue;
        if (pid_value) memcpy(pid_value, e->d_name, strlen(e->d_name) + 1);
        if (c->matched++ == 0) c->first_pid = pid;
        // The positive answer of the single query leaves the working
        // directory in proc_root; its callers know this.
        if (query.stop_at_first) return c->matched;
    }
    cwd.restore();
    return c->matched;
}

}  // namespace cmdlib

using namespace cmdlib;

extern "C" {

CMDLIB_API int util_get_file_content_info(BigValue *big_value, char *file_path,
                                          ProcFileInfo *proc_file_info) {
    if (!file_path || !proc_file_info) return -1;
    UniqueFile fp(file_path, "re");
    if (!fp) return -1;
    read_proc_key_values(fp.get(), big_value, proc_file_info);
    return 0;
}

CMDLIB_API int util_get_proc_meminfo(ProcFileInfo *proc_file_info) {
    BigValue req = {};
    for (int bit = 0; bit <= kLastMeminfoBit; ++bit) util_set_one_bit_for_big_value(&req, bit);
    char path[] = "/proc/meminfo";
    return util_get_file_content_info(&req, path, proc_file_info);
}

CMDLIB_API int util_get_process_command_line(pid_t pid, char *command_line, int size) {
    return proc_command_line(kProcRoot, pid, command_line, size);
}

CMDLIB_API int util_get_process_args(pid_t pid, char **argv, int *argc, int max_argv_count,
                                     char *buffer, int buffer_size) {
    return proc_args(kProcRoot, pid, argv, argc, max_argv_count, buffer, buffer_size);
}

CMDLIB_API int util_get_process_info(pid_t pid, ProcessInfo *process_info) {
    return proc_process_info(kProcRoot, pid, process_info);
}

CMDLIB_API int util_get_process_list(int *pid_list, int max_allowed_pid_count) {
    return proc_list(kProcRoot, pid_list, max_allowed_pid_count);
}

CMDLIB_API int util_get_process_count(char *cmd_name, char **match_string, int match_string_count,
                                      char *pid_value, int *total_process_count,
                                      int *process_started_count) {
    ProcCount count;
    int n = proc_walk(kProcRoot, ProcQuery{cmd_name, match_string, match_string_count, false},
                      pid_value, &count);
    if (n < 0) return -1;
    if (total_process_count) *total_process_count = count.total;
    if (process_started_count) *process_started_count = count.matched;
    return n;
}

CMDLIB_API int cmd_ps_is_one_program_running_ex(char *cmd_name, char **match_string,
                                                int match_string_count, char *pid_value) {
    ProcCount count;
    if (proc_walk(kProcRoot, ProcQuery{cmd_name, match_string, match_string_count, true}, pid_value,
                  &count) <= 0)
        return 0;
    // pids stay below 2^22 (PID_MAX_LIMIT), so the shifted value fits
    return static_cast<int>((static_cast<unsigned>(count.first_pid) << 8) | 1u);
}

CMDLIB_API int cmd_ps_is_one_program_running(char *cmd_name) {
    return cmd_ps_is_one_program_running_ex(cmd_name, nullptr, 0, nullptr);
}

}  // extern "C"
