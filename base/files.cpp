// File and directory services of libbase.
#include <errno.h>
#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <string_view>

#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"

using cmdlib::UniqueFd;

namespace {

// Writes all of [data, data + len) to fd, retrying short writes.
bool write_all(int fd, const char *data, size_t len) {
    while (len > 0) {
        ssize_t n = ::write(fd, data, len);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        len -= static_cast<size_t>(n);
    }
    return true;
}

// Reads up to cap bytes from fd into buf; returns the count or -1.
ssize_t read_up_to(int fd, char *buf, size_t cap) {
    size_t got = 0;
    while (got < cap) {
        ssize_t n = ::read(fd, buf + got, cap - got);
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (n == 0) break;
        got += static_cast<size_t>(n);
    }
    return static_cast<ssize_t>(got);
}

int write_file(const char *path, const char *text, size_t len, int flags, bool newline) {
    if (!path || !*path) return -1;
    UniqueFd fd(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0644));
    if (!fd) return -1;
    if (text && len && !write_all(fd.get(), text, len)) return -1;
    if (newline && !write_all(fd.get(), "\n", 1)) return -1;
    return 0;
}

int echo(const char *text, const char *path, int flags, bool newline) {
    return write_file(path, text ? text : "", text ? strlen(text) : 0, flags, newline);
}

// Reads the file into buf (capacity size, terminated).  -1 when the path
// can't be opened or is not a regular file/character device.
int load(const char *path, char *buf, int size) {
    if (!buf || size <= 0) return -1;
    buf[0] = '\0';
    if (!path || !*path) return -1;
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return -1;
    struct stat st;
    if (::fstat(fd.get(), &st) != 0 || S_ISDIR(st.st_mode)) return -1;
    ssize_t n = read_up_to(fd.get(), buf, static_cast<size_t>(size) - 1);
    if (n < 0) {
        buf[0] = '\0';
        return -1;
    }
    buf[n] = '\0';
    return 0;
}

int copy_file(const char *src, const char *dst) {
    if (!src || !dst || !*src || !*dst) return -1;
    UniqueFd in(::open(src, O_RDONLY | O_CLOEXEC));
    if (!in) return -1;
    struct stat st;
    if (::fstat(in.get(), &st) != 0 || S_ISDIR(st.st_mode)) return -1;
    UniqueFd out(::open(dst, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, st.st_mode & 07777));
    if (!out) return -1;
    char buf[8192];
    for (;;) {
        ssize_t n = ::read(in.get(), buf, sizeof buf);
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (n == 0) break;
        if (!write_all(out.get(), buf, static_cast<size_t>(n))) return -1;
    }
    return 0;
}

int remove_entry(const char *path, const struct stat *, int, struct FTW *) {
    return ::remove(path) == 0 || errno == ENOENT ? 0 : -1;
}

}  // namespace

extern "C" {

CMDLIB_API int cmd_file_exist(const char *path) {
    struct stat st;
    return path && *path && ::lstat(path, &st) == 0 ? 1 : 0;
}

CMDLIB_API int cmd_cat(const char *path, char *buf, int size) { return load(path, buf, size); }

CMDLIB_API int cmd_echo(const char *text, const char *path) { return echo(text, path, O_TRUNC, true); }

CMDLIB_API int cmd_echo_without_new_line(const char *text, const char *path) {
    return echo(text, path, O_TRUNC, false);
}

CMDLIB_API int cmd_echo_append(const char *text, const char *path) {
    return echo(text, path, O_APPEND, true);
}

CMDLIB_API int cmd_echo_append_without_new_line(const char *text, const char *path) {
    return echo(text, path, O_APPEND, false);
}

CMDLIB_API int cmd_touch(const char *path) { return write_file(path, nullptr, 0, 0, false); }

CMDLIB_API int cmd_rm(const char *path) {
    if (!path || !*path) return -1;
    return ::unlink(path) == 0 || errno == ENOENT ? 0 : -1;
}

CMDLIB_API int cmd_mv(const char *src, const char *dst) {
    if (!src || !dst || !*src || !*dst) return -1;
    if (::rename(src, dst) == 0) return 0;
    if (errno != EXDEV) return -1;
    if (copy_file(src, dst) != 0) return -1;
    return ::unlink(src) == 0 ? 0 : -1;
}

CMDLIB_API int cmd_cp(const char *src, const char *dst) { return copy_file(src, dst); }

CMDLIB_API int cmd_rmdir(const char *path) {
    if (!path || !*path) return -1;
    return ::rmdir(path) == 0 ? 0 : -1;
}

CMDLIB_API int cmd_rmdir_advance(const char *path) {
    if (!path || !*path) return -1;
    struct stat st;
    if (::lstat(path, &st) != 0) return errno == ENOENT ? 0 : -1;
    // Depth first, never following links: a link inside the tree is removed
    // as a link, its target is left alone.
    return ::nftw(path, remove_entry, 16, FTW_DEPTH | FTW_PHYS) == 0 ? 0 : -1;
}

CMDLIB_API int cmd_chmodx(const char *path) {
    struct stat st;
    if (!path || ::stat(path, &st) != 0) return -1;
    return ::chmod(path, (st.st_mode & 07777) | 0111) == 0 ? 0 : -1;
}

CMDLIB_API int cmd_chmodrw(const char *path) {
    struct stat st;
    if (!path || ::stat(path, &st) != 0) return -1;
    return ::chmod(path, (st.st_mode & 07777) | 0666) == 0 ? 0 : -1;
}

CMDLIB_API int util_dir_is_dir_exist(const char *path) {
    struct stat st;
    return path && ::stat(path, &st) == 0 && S_ISDIR(st.st_mode) ? 1 : 0;
}

CMDLIB_API int util_dir_mkdir(const char *path, int mode) {
    if (!path || !*path) return -1;
    char buf[4096];
    size_t len = strlen(path);
    if (len >= sizeof buf) return -1;
    memcpy(buf, path, len + 1);
    // Create each parent in turn; existing ones are fine.
    for (size_t i = 1; i <= len; ++i) {
        if (buf[i] != '/' && buf[i] != '\0') continue;
        char saved = buf[i];
        buf[i] = '\0';
        if (::mkdir(buf, static_cast<mode_t>(mode)) != 0 && errno != EEXIST) return -1;
        buf[i] = saved;
    }
    return util_dir_is_dir_exist(path) ? 0 : -1;
}

CMDLIB_API long util_get_file_size_by_file_name(const char *path) {
    struct stat st;
    if (!path || ::stat(path, &st) != 0) return -1;
    return static_cast<long>(st.st_size);
}

CMDLIB_API long util_get_file_size_by_file_handle(FILE *fp) {
    struct stat st;
    if (!fp || ::fstat(::fileno(fp), &st) != 0) return -1;
    return static_cast<long>(st.st_size);
}

CMDLIB_API int util_load_file_content(char *buf, int size, const char *path) {
    return load(path, buf, size);
}

CMDLIB_API int util_save_file_content(const char *text, int len, const char *path) {
    if (len < 0 || (!text && len > 0)) return -1;
    return write_file(path, text, static_cast<size_t>(len), O_TRUNC, false);
}

CMDLIB_API int util_file_save(const char *text, int len, const char *path) {
    if (!path || !*path || len < 0 || (!text && len > 0)) return -1;
    UniqueFd fd(::open(path, O_WRONLY | O_CLOEXEC));
    if (!fd) return -1;
    return write_all(fd.get(), text, static_cast<size_t>(len)) ? 0 : -1;
}

CMDLIB_API int util_have_string_in_the_file(const char *path, const char *text, int flag) {
    if (!path || !text || !*text) return 0;
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return 0;
    const size_t tlen = strlen(text);
    if (tlen > 4096) return 0;
    // Sliding window: keep the last tlen bytes of the previous block (and
    // one byte more, to know whether a match starts a line).
    static constexpr size_t kBlock = 16384;
    char buf[kBlock + 4096 + 1];
    size_t keep = 0;
    bool at_file_start = true;
    for (;;) {
        ssize_t n = ::read(fd.get(), buf + keep, kBlock);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        size_t have = keep + static_cast<size_t>(n);
        std::string_view view(buf, have);
        for (size_t pos = view.find(std::string_view(text, tlen)); pos != std::string_view::npos;
             pos = view.find(std::string_view(text, tlen), pos + 1)) {
            if (!flag) return 1;
            if ((pos == 0 && at_file_start) || (pos > 0 && buf[pos - 1] == '\n')) return 1;
        }
        size_t k = tlen < have ? tlen : have;
        memmove(buf, buf + have - k, k);
        // A match at offset 0 of a later window lies wholly in the kept
        // bytes and was already judged in the window before.
        at_file_start = false;
        keep = k;
    }
    return 0;
}

CMDLIB_API int util_sync_file_to_flash(const char *path) {
    if (!path || !*path) return -1;
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return -1;
    return ::fsync(fd.get()) == 0 ? 0 : -1;
}

CMDLIB_API char *util_get_tmp_uuid_file_path(char *buf) {
    if (!buf) return buf;
    static std::atomic<unsigned> seq{0};
    unsigned rnd = 0;
    if (::getrandom(&rnd, sizeof rnd, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof rnd)) {
        struct timespec ts;
        ::clock_gettime(CLOCK_MONOTONIC, &ts);
        rnd = static_cast<unsigned>(ts.tv_nsec) ^ static_cast<unsigned>(ts.tv_sec << 20);
    }
    cmdlib::format_bounded(buf, UTIL_TMP_PATH_SIZE, "/tmp/.cmdlib_tmp_%d_%u_%08x",
                           static_cast<int>(::getpid()), seq.fetch_add(1) + 1, rnd);
    return buf;
}

}  // extern "C"
