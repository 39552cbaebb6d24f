/* cmdlib_info: the process table, memory figures and command lines, read
 * from /proc without starting any tool.
 *
 * The walks over /proc (util_get_process_list, util_get_process_count,
 * cmd_ps_is_one_program_running_ex) change the calling process's working
 * directory to /proc while they run: do not call them concurrently with
 * each other or with threads that use relative paths.
 */
#ifndef CMDLIB_INFO_H
#define CMDLIB_INFO_H

#include <sys/types.h>

#include "cmdlib_export.h"
#include "libbase.h"

CMDLIB_BEGIN_DECLS

/* Fields of a "key: value" file such as /proc/meminfo or /proc/PID/status,
 * in record order, with the bit that requests each one. */
#define CMDLIB_PROC_FILE_FIELDS(X) \
    X(MemTotal, 0)                 \
    X(MemFree, 1)                  \
    X(MemAvailable, 2)             \
    X(Buffers, 3)                  \
    X(Cached, 4)                   \
    X(Pid, 5)                      \
    X(PPid, 6)                     \
    X(VmPeak, 7)                   \
    X(VmSize, 8)                   \
    X(VmRSS, 9)                    \
    X(VmData, 10)                  \
    X(VmStk, 11)                   \
    X(State, 12)

#define PROC_FILE_INFO_VALUE_SIZE 32

/* Each field holds the value text of its key (at most 31 characters),
 * "" when the key was absent or not requested. */
typedef struct ProcFileInfo {
#define CMDLIB_PROC_FIELD_MEMBER(name, bit) char name[PROC_FILE_INFO_VALUE_SIZE];
    CMDLIB_PROC_FILE_FIELDS(CMDLIB_PROC_FIELD_MEMBER)
#undef CMDLIB_PROC_FIELD_MEMBER
} ProcFileInfo;

/* Request bits: PROC_FILE_INFO_BIT_MemTotal ... PROC_FILE_INFO_BIT_State. */
enum ProcFileInfoBit {
#define CMDLIB_PROC_FIELD_BIT(name, bit) PROC_FILE_INFO_BIT_##name = (bit),
    CMDLIB_PROC_FILE_FIELDS(CMDLIB_PROC_FIELD_BIT)
#undef CMDLIB_PROC_FIELD_BIT
    PROC_FILE_INFO_FIELD_COUNT = 13
};

#define PROCESS_COMMAND_LINE_SIZE 512

/* One process. Memory figures are in kB, resident_minus_share in pages. */
typedef struct ProcessInfo {
    int Pid;
    int PPid;
    int VmPeak;
    int VmSize;
    int VmRSS;
    int VmData;
    int VmStk;
    int resident_minus_share; /* resident minus shared pages (statm) */
    char State[PROC_FILE_INFO_VALUE_SIZE];
    char command_line[PROCESS_COMMAND_LINE_SIZE]; /* arguments joined by blanks */
} ProcessInfo;

/* Reads the "key: value" lines of file_path and fills the fields whose bits
 * are set in big_value (the record is zeroed first; the last line of a key
 * wins).  0, or -1 if the file cannot be opened. */
CMDLIB_API int util_get_file_content_info(BigValue *big_value, char *file_path,
                                          ProcFileInfo *proc_file_info);

/* MemTotal, MemFree, MemAvailable, Buffers and Cached of /proc/meminfo. */
CMDLIB_API int util_get_proc_meminfo(ProcFileInfo *proc_file_info);

/* The command line of pid with its arguments joined by single blanks and
 * trailing blanks removed, at most size-2 characters.  0, or -1 (output
 * untouched) when the process does not exist. */
CMDLIB_API int util_get_process_command_line(pid_t pid, char *command_line, int size);

/* Splits the command line of pid (read into buffer, buffer_size bytes) at
 * blanks and tabs into at most max_argv_count pointers; an argument that
 * contained blanks comes back as several.  Returns the count (also stored
 * in *argc), or 0 with *argc untouched if the command line is unreadable. */
CMDLIB_API int util_get_process_args(pid_t pid, char **argv, int *argc, int max_argv_count,
                                     char *buffer, int buffer_size);

/* Command line, status figures and statm of pid.  -1 when the process is
 * gone or is a kernel thread (empty command line). */
CMDLIB_API int util_get_process_info(pid_t pid, ProcessInfo *process_info);

/* Ids of the processes, in directory order, at most max_allowed_pid_count. */
CMDLIB_API int util_get_process_list(int *pid_list, int max_allowed_pid_count);

/* Walks every process.  A process matches when the last '/'-component of
 * its first argument equals cmd_name and each of match_string[0],
 * match_string[2], match_string[4], ... (the even indexes below
 * match_string_count; the odd ones are not looked at) equals one of its
 * further arguments.  *total_process_count gets the number of processes
 * with a command line, *process_started_count the number of matches; the
 * id text of the last match goes to pid_value (11 bytes suffice).  Returns
 * the number of matches, or -1 if /proc cannot be opened. */
CMDLIB_API int util_get_process_count(char *cmd_name, char **match_string, int match_string_count,
                                      char *pid_value, int *total_process_count,
                                      int *process_started_count);

/* As util_get_process_count but stops at the first match and returns
 * (pid << 8) | 1, its id text in pid_value; 0 when nothing matches.  After
 * a positive answer the working directory is left at /proc. */
CMDLIB_API int cmd_ps_is_one_program_running_ex(char *cmd_name, char **match_string,
                                                int match_string_count, char *pid_value);

/* cmd_ps_is_one_program_running_ex(cmd_name, NULL, 0, NULL) */
CMDLIB_API int cmd_ps_is_one_program_running(char *cmd_name);

CMDLIB_END_DECLS

#endif
