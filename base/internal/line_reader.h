// Line readers with the firmware's fgets() semantics: each read returns at
// most Size-1 bytes (255 with the usual 256-byte buffer), ending after the
// first line feed if one comes earlier.  The rest of a longer line comes
// back as a further "line".  The file reader and the text reader return the
// same sequence for the same bytes, so a parser written against the text
// reader behaves exactly as it does on the file.
#pragma once

#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/raii.h"

namespace cmdlib {

// Reads from a stream into an internal buffer of Size bytes.
template <size_t Size = 256> class LineReader {
    static_assert(Size >= 2, "a read needs room for one byte and the terminator");

  public:
    explicit LineReader(FILE *fp) : fp_(fp) {}
    // Next piece, or false at end of file.  The view ends at the first NUL
    // byte of the piece, as C string handling of the buffer would see it;
    // the buffer itself (c_str()) is terminated and may be modified.
    bool next(std::string_view *line) {
        if (!fp_ || !fgets(buf_, Size, fp_)) return false;
        *line = std::string_view(buf_, strlen(buf_));
        return true;
    }
    char *c_str() { return buf_; }

  private:
    FILE *fp_;
    char buf_[Size] = {};
};

// The same pieces over text held in memory.
template <size_t Size = 256> class TextLineReader {
    static_assert(Size >= 2, "a read needs room for one byte and the terminator");

  public:
    explicit TextLineReader(std::string_view text) : rest_(text) {}
    bool next(std::string_view *line) {
        if (rest_.empty()) return false;
        size_t n = rest_.size() < Size - 1 ? rest_.size() : Size - 1;
        size_t nl = rest_.substr(0, n).find('\n');
        if (nl != std::string_view::npos) n = nl + 1;
        std::string_view piece = rest_.substr(0, n);
        rest_.remove_prefix(n);
        size_t nul = piece.find('\0');
        *line = nul == std::string_view::npos ? piece : piece.substr(0, nul);
        return true;
    }

  private:
    std::string_view rest_;
};

// Opens path and hands fn a LineReader<Size> over it; false when the file
// cannot be opened (fn is then not called).
template <size_t Size, class Fn> bool read_lines(const char *path, Fn &&fn) {
    UniqueFile f(path, "r");
    if (!f) return false;
    LineReader<Size> r(f.get());
    fn(r);
    return true;
}

}  // namespace cmdlib
