// Whole-file replacement for files that other processes read while we
// write them (the MAC records shared by several daemons, the DHCP server's
// configuration, the resolver file).  The new content goes into a file of
// a unique name in the same directory, which is then renamed over the
// target: a reader that opens the target sees either the old file or the
// new one, complete, never a mix or a truncated file.  A writer that fails
// half-way leaves the target as it was and removes its scratch file.
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/magic.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <atomic>

#include "base/internal/raii.h"
#include "base/internal/text.h"

namespace cmdlib {

class AtomicFileWriter {
  public:
    // Creates the scratch file beside path (mode 0644).  ok() tells
    // whether that worked; nothing else happens until commit().
    explicit AtomicFileWriter(const char *path) {
        if (!path || !*path || strlen(path) + kSuffixRoom >= sizeof tmp_) return;
        path_ = path;
        static std::atomic<unsigned> sequence{0};
        // The pid separates processes, the sequence the writers of one
        // process; O_EXCL settles the rare clash with a stale file.
        for (int attempt = 0; attempt < 8 && !fd_; ++attempt) {
            format_bounded(tmp_, sizeof tmp_, "%s.%ld.%u.tmp", path, static_cast<long>(getpid()),
                           sequence.fetch_add(1, std::memory_order_relaxed));
            fd_.reset(::open(tmp_, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
            if (!fd_ && errno != EEXIST) break;
        }
    }
    ~AtomicFileWriter() {
        if (fd_) {
            fd_.reset();
            ::unlink(tmp_);
        }
    }
    AtomicFileWriter(const AtomicFileWriter &) = delete;
    AtomicFileWriter &operator=(const AtomicFileWriter &) = delete;

    [[nodiscard]] bool ok() const { return fd_.valid() && good_; }

    // Writes the pieces in order with one writev (more only when the kernel
    // takes them in parts).
    bool write(const struct iovec *iov, int count) {
        if (!ok()) return false;
        struct iovec rest[kMaxPieces];
        if (count < 0 || count > kMaxPieces) return fail();
        memcpy(rest, iov, sizeof rest[0] * static_cast<size_t>(count));
        struct iovec *p = rest;
        while (count > 0) {
            ssize_t n = ::writev(fd_.get(), p, count);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return fail();
            size_t done = static_cast<size_t>(n);
            while (count > 0 && done >= p->iov_len) {
                done -= p->iov_len;
                ++p;
                --count;
            }
            if (count > 0) {
                p->iov_base = static_cast<char *>(p->iov_base) + done;
                p->iov_len -= done;
            }
        }
        return true;
    }
    bool write(const void *data, size_t size) {
        struct iovec one = {const_cast<void *>(data), size};
        return size == 0 ? ok() : write(&one, 1);
    }

    // Appends the bytes of another file as they are; a missing file adds
    // nothing (and is no error).
    bool append_file(const char *src) {
        if (!ok()) return false;
        UniqueFd in(::open(src, O_RDONLY | O_CLOEXEC));
        if (!in) return errno == ENOENT ? true : fail();
        char buf[4096];
        for (;;) {
            ssize_t n = ::read(in.get(), buf, sizeof buf);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) return fail();
            if (n == 0) return true;
            if (!write(buf, static_cast<size_t>(n))) return false;
        }
    }

    // Puts the new file in place.  Files on RAM file systems (tmpfs under
    // /tmp and /var/run) are not synced: there is no disk to reach, and a
    // crash empties them anyway; elsewhere the data reaches the disk before
    // the rename makes it visible.  false (target unchanged) on any error.
    bool commit() {
        if (!ok()) return false;
        struct statfs fs;
        bool in_ram = ::fstatfs(fd_.get(), &fs) == 0 &&
                      (fs.f_type == TMPFS_MAGIC || fs.f_type == RAMFS_MAGIC);
        if (!in_ram && ::fdatasync(fd_.get()) != 0) return fail();
        if (::close(fd_.release()) != 0) {
            ::unlink(tmp_);
            return false;
        }
        if (::rename(tmp_, path_) != 0) {
            ::unlink(tmp_);
            return false;
        }
        return true;
    }

  private:
    // ".<pid>.<sequence>.tmp": at most 1 + 20 + 1 + 10 + 4 characters.
    static constexpr size_t kSuffixRoom = 40;
    static constexpr int kMaxPieces = 4;

    bool fail() {
        good_ = false;
        return false;
    }

    const char *path_ = nullptr;
    char tmp_[PATH_MAX] = {};
    UniqueFd fd_;
    bool good_ = true;
};

// Replaces path by the given bytes as one whole file.  true when the new
// file is in place.
inline bool replace_file(const char *path, const void *data, size_t size) {
    AtomicFileWriter w(path);
    return w.write(data, size) && w.commit();
}

}  // namespace cmdlib
