// Shell services of libbase: run a command line through /bin/sh, with or
// without capturing its standard output.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/internal/raii.h"
#include "base/libbase.h"


namespace {

// Starts "/bin/sh -c cmd"; when out_fd >= 0 the child's standard output is
// that descriptor.  Returns the child's pid or -1.
pid_t spawn_shell(const char *cmd, int out_fd) {
    posix_spawn_file_actions_t fa;
    if (posix_spawn_file_actions_init(&fa) != 0) return -1;
    if (out_fd >= 0) {
        posix_spawn_file_actions_adddup2(&fa, out_fd, STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&fa, out_fd);
    }
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    // The child starts with default SIGCHLD/SIGPIPE handling whatever the
    // calling daemon installed, as a shell started by system() would.
    sigset_t def;
    sigemptyset(&def);
    sigaddset(&def, SIGCHLD);
    sigaddset(&def, SIGPIPE);
    posix_spawnattr_setsigdefault(&attr, &def);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    char sh[] = "/bin/sh", dash_c[] = "-c";
    char *argv[] = {sh, dash_c, const_cast<char *>(cmd), nullptr};
    pid_t pid = -1;
    int rc = posix_spawn(&pid, "/bin/sh", &fa, &attr, argv, environ);
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&fa);
    return rc == 0 ? pid : -1;
}

int wait_child(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return status;
}

// Runs cmd and copies at most size-1 bytes of its output into out.  The
// rest of the output is read and dropped, so the command is never killed
// by SIGPIPE and its status stays meaningful.
int run_capture(const char *cmd, char *out, int size) {
    if (out && size > 0) out[0] = '\0';
    if (!cmd) return -1;
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return -1;
    cmdlib::UniqueFd rd(fds[0]);
    cmdlib::UniqueFd wr(fds[1]);
    pid_t pid = spawn_shell(cmd, wr.get());
    wr.reset();
    if (pid < 0) return -1;
    size_t cap = out && size > 0 ? static_cast<size_t>(size) - 1 : 0;
    size_t got = 0;
    char sink[4096];
    for (;;) {
        char *dst = got < cap ? out + got : sink;
        size_t room = got < cap ? cap - got : sizeof sink;
        ssize_t n = ::read(rd.get(), dst, room);
        if (n < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (n == 0) break;
        if (got < cap) got += static_cast<size_t>(n);
    }
    if (out && size > 0) out[got] = '\0';
    return wait_child(pid);
}

}  // namespace

extern "C" {

CMDLIB_API int util_shell(const char *cmd) {
    if (!cmd) return -1;
    pid_t pid = spawn_shell(cmd, -1);
    if (pid < 0) return -1;
    return wait_child(pid);
}

CMDLIB_API int util_get_cmd_result(const char *cmd, char *out, int size) {
    return run_capture(cmd, out, size);
}

CMDLIB_API int util_shell_recv(char *out, int size, const char *fmt, ...) {
    if (out && size > 0) out[0] = '\0';
    if (!fmt) return -1;
    char cmd[4096];
    va_list ap;
    va_start(ap, fmt);
    int n = vsnprintf(cmd, sizeof cmd, fmt, ap);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(ap);
    // A command cut short could mean something else: refuse it.
    if (n < 0 || static_cast<size_t>(n) >= sizeof cmd) return -1;
    return run_capture(cmd, out, size);
}

}  // extern "C"
