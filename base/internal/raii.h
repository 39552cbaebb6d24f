// RAII owners for the C resources the library touches: file descriptors,
// stdio streams, directory streams and heap buffers from malloc.  Children
// are owned by base's runner (base/shell.cpp), never started elsewhere.
#pragma once

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <utility>

namespace cmdlib {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd() { reset(); }
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;
    UniqueFd(UniqueFd &&o) noexcept : fd_(o.release()) {}
    UniqueFd &operator=(UniqueFd &&o) noexcept {
        if (this != &o) reset(o.release());
        return *this;
    }
    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool valid() const { return fd_ >= 0; }
    explicit operator bool() const { return valid(); }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd = -1) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = fd;
    }

  private:
    int fd_ = -1;
};

class UniqueFile {
  public:
    UniqueFile() = default;
    explicit UniqueFile(FILE *fp) : fp_(fp) {}
    UniqueFile(const char *path, const char *mode) : fp_(path ? ::fopen(path, mode) : nullptr) {}
    ~UniqueFile() { reset(); }
    UniqueFile(const UniqueFile &) = delete;
    UniqueFile &operator=(const UniqueFile &) = delete;
    UniqueFile(UniqueFile &&o) noexcept : fp_(o.release()) {}
    UniqueFile &operator=(UniqueFile &&o) noexcept {
        if (this != &o) reset(o.release());
        return *this;
    }
    [[nodiscard]] FILE *get() const { return fp_; }
    explicit operator bool() const { return fp_ != nullptr; }
    FILE *release() { return std::exchange(fp_, nullptr); }
    void reset(FILE *fp = nullptr) {
        if (fp_) ::fclose(fp_);
        fp_ = fp;
    }

  private:
    FILE *fp_ = nullptr;
};

class UniqueDir {
  public:
    explicit UniqueDir(const char *path) : dir_(path ? ::opendir(path) : nullptr) {}
    ~UniqueDir() {
        if (dir_) ::closedir(dir_);
    }
    UniqueDir(const UniqueDir &) = delete;
    UniqueDir &operator=(const UniqueDir &) = delete;
    [[nodiscard]] DIR *get() const { return dir_; }
    explicit operator bool() const { return dir_ != nullptr; }

  private:
    DIR *dir_;
};

// Owner of a malloc'ed block (the library never uses operator new for
// buffers, so an allocation failure is a result, not an exception).
template <typename T> class UniqueMalloc {
  public:
    explicit UniqueMalloc(size_t count) : p_(static_cast<T *>(::calloc(count ? count : 1, sizeof(T)))) {}
    ~UniqueMalloc() { ::free(p_); }
    UniqueMalloc(const UniqueMalloc &) = delete;
    UniqueMalloc &operator=(const UniqueMalloc &) = delete;
    [[nodiscard]] T *get() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }

  private:
    T *p_;
};

}  // namespace cmdlib
