// Building shell command lines in fixed buffers.  A command cut in the
// middle can mean something else than the whole one ("rm -rf /tmp/x"
// cut to "rm -rf /"), so truncation is reported, never silent: the
// formatter returns false, the builder remembers it, and run_command()
// refuses to run a cut line.  Each caller decides what a cut command means
// for its result (normally: nothing is run and the function fails).
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/shell_quote.h"
#include "base/internal/text.h"
#include "base/libbase.h"

namespace cmdlib {

// printf into out (capacity size).  true when the whole text fit; on
// truncation or a formatting error out holds "" (so a cut line cannot be
// run by mistake) and the result is false.
[[nodiscard]] inline bool vformat_command(char *out, size_t size, const char *fmt, va_list ap) {
    if (!out || size == 0) return false;
    int n = vsnprintf(out, size, fmt, ap);
    if (n < 0 || static_cast<size_t>(n) >= size) {
        out[0] = '\0';
        return false;
    }
    return true;
}

[[nodiscard]] inline bool format_command(char *out, size_t size, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
inline bool format_command(char *out, size_t size, const char *fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    bool ok = vformat_command(out, size, fmt, ap);
    va_end(ap);
    return ok;
}

// A command line of at most N-1 characters, built piece by piece.  Once a
// piece does not fit the line is marked cut and stays so; its text is then
// empty.
template <size_t N> class CommandLine {
    static_assert(N >= 2, "a command needs room for one character and the terminator");

  public:
    CommandLine() = default;
    // Starts the line afresh with printf text.
    bool format(const char *fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        cut_ = !vformat_command(buf_, N, fmt, ap);
        va_end(ap);
        len_ = cut_ ? 0 : strnlen(buf_, N);
        return !cut_;
    }
    // Appends printf text.
    bool append(const char *fmt, ...) __attribute__((format(printf, 2, 3))) {
        if (cut_) return false;
        va_list ap;
        va_start(ap, fmt);
        bool fit = vformat_command(buf_ + len_, N - len_, fmt, ap);
        va_end(ap);
        if (!fit) return mark_cut();
        len_ += strnlen(buf_ + len_, N - len_);
        return true;
    }
    // Appends outside text (a file name, a configuration value) as one
    // inert shell word: benign text as it is, anything else single-quoted
    // (see shell_quote).  Empty text adds nothing.
    bool append_word(std::string_view text) {
        if (cut_) return false;
        long n = shell_quote(text, buf_ + len_, N - len_);
        if (n < 0) return mark_cut();
        len_ += static_cast<size_t>(n);
        return true;
    }

    // true while every piece fit.
    [[nodiscard]] bool ok() const { return !cut_; }
    [[nodiscard]] const char *c_str() const { return buf_; }
    [[nodiscard]] size_t size() const { return len_; }
    static constexpr size_t capacity() { return N; }

  private:
    bool mark_cut() {
        cut_ = true;
        len_ = 0;
        buf_[0] = '\0';
        return false;
    }

    char buf_[N] = {};
    size_t len_ = 0;
    bool cut_ = false;
};

// Runs a whole line through base's runner (util_shell) and returns the wait
// status; a cut line is not run and gives -1, as a command that could not
// be started does.
template <size_t N> int run_command(const CommandLine<N> &line) {
    return line.ok() ? util_shell(line.c_str()) : -1;
}

}  // namespace cmdlib
