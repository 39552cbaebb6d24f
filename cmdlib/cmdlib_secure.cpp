// Input validators and direct program execution without a shell.
#include "cmdlib/cmdlib_secure.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <regex.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/raii.h"
#include "base/internal/text.h"

namespace {

// Room for the words of a command: 63 arguments and the closing null.
constexpr int kMaxExecArgs = 63;

// A character that is neither an ASCII letter nor a digit: a non-word
// character or an underscore.  Written with a class name because POSIX
// bracket expressions take a backslash literally ("[\W_]" would mean the
// three characters '\', 'W' and '_').
constexpr char kSpecialCharPattern[] = "[^[:alnum:]]";

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool all_digits(std::string_view s) {
    for (char c : s)
        if (!is_digit(c)) return false;
    return true;
}

// Writes "label: reason" to standard error with plain write(2): the child
// of a fork in a threaded caller must not take the stdio locks.
void report_errno(const char *label) {
    const char *reason = strerror(errno);
    const char *parts[] = {label, ": ", reason, "\n"};
    for (const char *p : parts) {
        ssize_t ignored = ::write(STDERR_FILENO, p, strlen(p));
        (void)ignored;
    }
}

// Opens path for writing (truncating) on a descriptor above the standard
// three, so that the dup2 calls below cannot overwrite one another.
int open_for_child(const char *path) {
    int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd >= 0 && fd <= STDERR_FILENO) {
        int high = ::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        ::close(fd);
        fd = high;
    }
    return fd;
}

// Cuts text in place at blanks (runs of blanks are one separator; tabs and
// quotes are ordinary characters) into at most kMaxExecArgs words followed
// by a null pointer.
int split_command(char *text, char *(&argv)[kMaxExecArgs + 1]) {
    int n = 0;
    char *p = text;
    while (n < kMaxExecArgs) {
        while (*p == ' ') ++p;
        if (!*p) break;
        argv[n++] = p;
        while (*p && *p != ' ') ++p;
        if (*p) *p++ = '\0';
    }
    argv[n] = nullptr;
    return n;
}

// Runs in the child of the fork: only async-signal-safe calls until exec.
[[noreturn]] void run_child(char *const *argv, const char *file_name) {
    ::setsid();
    int null_fd = open_for_child("/dev/null");
    int out_fd = null_fd >= 0 ? open_for_child(file_name ? file_name : "/dev/null") : -1;
    if (null_fd < 0 || out_fd < 0) {
        report_errno("fopen");
        ::_exit(1);
    }
    ::dup2(null_fd, STDIN_FILENO);
    ::dup2(out_fd, STDOUT_FILENO);
    ::dup2(out_fd, STDERR_FILENO);
    ::close(null_fd);
    ::close(out_fd);
    if (argv[0]) {
        ::execvp(argv[0], argv);
    } else {
        errno = ENOENT;  // a command of blanks names no program
    }
    report_errno("execvp failed");
    ::_exit(1);
}

}  // namespace

using namespace cmdlib;

extern "C" {

CMDLIB_API int qx_match_char(char *bematch, char *pattern) {
    if (!bematch || !pattern) return -1;
    regex_t re;
    if (::regcomp(&re, pattern, REG_EXTENDED) != 0) return -1;
    regmatch_t sub[10];
    int rc = ::regexec(&re, bematch, 10, sub, 0);
    ::regfree(&re);
    return rc == 0 ? 0 : -1;
}

CMDLIB_API bool is_valid_password(char *passwd, int min, int max) {
    if (!passwd) return false;
    size_t len = strlen(passwd);
    if (min < 0 || len < static_cast<size_t>(min) || max < 0 || len > static_cast<size_t>(max))
        return false;
    bool digit = false, letter = false, special = false;
    char pattern[sizeof kSpecialCharPattern];
    memcpy(pattern, kSpecialCharPattern, sizeof pattern);
    for (size_t i = 0; i < len; ++i) {
        char c = passwd[i];
        if (is_digit(c)) {
            digit = true;
        } else if (is_letter(c)) {
            letter = true;
        } else if (qx_match_char(passwd + i, pattern) == 0) {
            special = true;
        } else {
            return false;
        }
    }
    return digit && letter && special;
}

CMDLIB_API bool is_switch_string(const char *switchType) {
    return switchType && (strcmp(switchType, "0") == 0 || strcmp(switchType, "1") == 0);
}

CMDLIB_API bool is_valid_port(const char *portStr) {
    if (!portStr || !all_digits(portStr)) return false;
    int port = atoi_sat(portStr);  // "" reads as 0, deliberately a valid port
    return port >= 0 && port < 65536;
}

CMDLIB_API int is_valid_ip(const char *ip) {
    if (!ip || !*ip) return 0;
    unsigned char addr[sizeof(struct in6_addr)];
    if (::inet_pton(AF_INET, ip, addr) == 1) return 1;
    return ::inet_pton(AF_INET6, ip, addr) == 1 ? 1 : 0;
}

CMDLIB_API bool is_valid_number(const char *numb, int min, int max, int *specialVal) {
    if (!numb || !all_digits(numb)) return false;
    int n = atoi_sat(numb);
    if (n < min || n > max) return specialVal && n == *specialVal;
    return true;
}

CMDLIB_API int execute_command_using_execvp(char *shellcmd, char *fileName) {
    if (!shellcmd) return -1;
    // The words are cut from a private copy before the fork, so that the
    // child allocates nothing and the caller's text stays as it was.
    size_t len = strlen(shellcmd);
    UniqueMalloc<char> text(len + 1);
    if (!text) return -1;
    memcpy(text.get(), shellcmd, len + 1);
    char *argv[kMaxExecArgs + 1];
    split_command(text.get(), argv);

    pid_t pid = ::fork();
    if (pid < 0) {
        fputs("Fork failed\n", stderr);
        exit(1);  // a daemon that cannot fork is not expected to go on
    }
    if (pid == 0) run_child(argv, fileName);
    return 0;
}

}  // extern "C"
