/* cmdlib_secure: validators for user input and direct program execution
 * that keeps user text away from any shell.
 *
 * The validators are reentrant and never report anything but their
 * result.
 */
#ifndef CMDLIB_SECURE_H
#define CMDLIB_SECURE_H

#include <stdbool.h>

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* 0 when the POSIX extended regular expression pattern matches somewhere in
 * bematch; -1 when it does not, when pattern does not compile, or when
 * either argument is null. */
CMDLIB_API int qx_match_char(char *bematch, char *pattern);

/* Length within [min, max], at least one ASCII digit, one ASCII letter and
 * one other character (a blank counts as one). */
CMDLIB_API bool is_valid_password(char *passwd, int min, int max);

/* Exactly "0" or "1". */
CMDLIB_API bool is_switch_string(const char *switchType);

/* Decimal digits alone with a value in 0..65535; no sign, no blanks.  The
 * empty text counts as port 0. */
CMDLIB_API bool is_valid_port(const char *portStr);

/* 1 for an IPv4 dotted quad or an IPv6 address text, else 0. */
CMDLIB_API int is_valid_ip(const char *ip);

/* Decimal digits alone (no sign; "" counts as 0) with a value in
 * [min, max], or equal to *specialVal when specialVal is given (such as 0
 * for "off" beside a range of 60-3600). */
CMDLIB_API bool is_valid_number(const char *numb, int min, int max, int *specialVal);

/* Starts the program named by the first blank-separated word of shellcmd
 * (searched on PATH) with the words as its arguments (at most 63, further
 * words dropped) in a new session, standard input from /dev/null and
 * standard output and error into fileName (truncated; /dev/null when
 * null).  No shell is involved: quotes, redirections, pipes, variables and
 * wildcards arrive as literal text.  Returns 0 once the child is started,
 * without waiting for it or reaping it (that is the caller's business); -1
 * when shellcmd is null.  The child exits with status 1 if the file cannot
 * be opened or the program cannot be run (the reason is written to the
 * file).  A failing fork is fatal: "Fork failed" goes to standard error and
 * the calling process exits with status 1. */
CMDLIB_API int execute_command_using_execvp(char *shellcmd, char *fileName);

CMDLIB_END_DECLS

#endif
