// Readers behind cmdlib_info: the parsers of /proc texts and the walk of
// the process table, parametrised by the directory that plays /proc so
// that they run on fixture trees as well as on the real one.
#pragma once

#include <stddef.h>
#include <stdio.h>
#include <sys/types.h>

#include <string_view>

#include "base/libbase.h"
#include "cmdlib/cmdlib_info.h"

namespace cmdlib {

// Room for the command line of one process: 511 bytes are read.
constexpr int kCmdlineBufferSize = 512;
// Argument pointers a walk keeps per process.
constexpr int kMaxProcessArgs = 128;
// A pid fits in int; its text in 10 digits.
constexpr size_t kPidTextSize = 11;

// Fills *out from "key: value" text, taking only the fields requested in
// req (null requests nothing).  *out is zeroed first.
void parse_proc_key_values(std::string_view text, const BigValue *req, ProcFileInfo *out);
// The same over a stream, read as the file reader does (254 characters a
// read).
void read_proc_key_values(FILE *fp, const BigValue *req, ProcFileInfo *out);

// Turns the n raw bytes of a cmdline file in buf into one line: NULs become
// blanks and trailing blanks go.  buf must hold n + 1 bytes; returns the
// text's length.
size_t cmdline_to_text(char *buf, size_t n);

// The program name of a first argument: what follows its last '/'.
[[nodiscard]] std::string_view program_name(const char *arg0);

// True when argv (argc words, argv[0] the program) is cmd_name run with
// every even-indexed match string among its further arguments.
[[nodiscard]] bool process_matches(char *const *argv, int argc, const char *cmd_name,
                                   char *const *match_string, int match_string_count);

// True for a name of digits alone whose value fits in a pid (int); the
// value goes to *pid.
[[nodiscard]] bool parse_pid_name(const char *name, int *pid);

// ---- Readers of one process below proc_root ---------------------------------

// Command line of pid under proc_root; see util_get_process_command_line.
int proc_command_line(const char *proc_root, pid_t pid, char *command_line, int size);
// See util_get_process_args.
int proc_args(const char *proc_root, pid_t pid, char **argv, int *argc, int max_argv_count,
              char *buffer, int buffer_size);
// See util_get_process_info.
int proc_process_info(const char *proc_root, pid_t pid, ProcessInfo *info);

// ---- Walks over proc_root ---------------------------------------------------

// See util_get_process_list.
int proc_list(const char *proc_root, int *pid_list, int max_allowed_pid_count);

struct ProcQuery {
    const char *cmd_name;
    char *const *match_string;
    int match_string_count;
    bool stop_at_first;  // cmd_ps_is_one_program_running_ex rather than counting
};

struct ProcCount {
    int total = 0;    // processes with a command line
    int matched = 0;  // processes that matched
    int first_pid = 0;
};

// Walks proc_root with the working directory set to it.  Returns the
// number of matches, or -1 when proc_root cannot be opened.  With
// stop_at_first the walk ends at the first match and leaves the working
// directory in proc_root; otherwise the working directory is restored.
int proc_walk(const char *proc_root, const ProcQuery &query, char *pid_value, ProcCount *count);

}  // namespace cmdlib
