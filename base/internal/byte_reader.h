// Bounds-checked reading of wire formats (netlink, DNS, L2TP).  A reader
// is a window over bytes someone else owns: an offset and the bytes left.
// Every read checks the remaining length first and, when the item does not
// fit, fails: it returns false, reads nothing, and the reader stays failed
// (ok() false, every later read fails too).  So a run of reads can be
// checked once at its end, and no length field of a hostile packet can
// move a read past the end.  Multi-byte values are assembled byte by byte
// (big-endian for network order, little-endian for the kernel's host-order
// fields on this CPU), never by laying a struct over the bytes.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace cmdlib {

class ByteReader {
  public:
    constexpr ByteReader() = default;
    constexpr ByteReader(const uint8_t *data, size_t size) : data_(data), size_(data ? size : 0) {}
    ByteReader(const void *data, size_t size) : ByteReader(static_cast<const uint8_t *>(data), size) {}

    [[nodiscard]] constexpr bool ok() const { return ok_; }
    [[nodiscard]] constexpr size_t offset() const { return off_; }
    [[nodiscard]] constexpr size_t size() const { return size_; }
    [[nodiscard]] constexpr size_t remaining() const { return size_ - off_; }
    // The unread bytes (nullptr for an empty window).
    [[nodiscard]] constexpr const uint8_t *current() const { return data_ ? data_ + off_ : nullptr; }

    constexpr bool u8(uint8_t *out) {
        if (!take(1)) return false;
        if (out) *out = data_[off_ - 1];
        return true;
    }
    constexpr bool be16(uint16_t *out) {
        if (!take(2)) return false;
        const uint8_t *p = data_ + off_ - 2;
        if (out) *out = static_cast<uint16_t>(p[0] << 8 | p[1]);
        return true;
    }
    constexpr bool be32(uint32_t *out) {
        if (!take(4)) return false;
        const uint8_t *p = data_ + off_ - 4;
        if (out)
            *out = static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
                   static_cast<uint32_t>(p[2]) << 8 | p[3];
        return true;
    }
    constexpr bool le16(uint16_t *out) {
        if (!take(2)) return false;
        const uint8_t *p = data_ + off_ - 2;
        if (out) *out = static_cast<uint16_t>(p[1] << 8 | p[0]);
        return true;
    }
    constexpr bool le32(uint32_t *out) {
        if (!take(4)) return false;
        const uint8_t *p = data_ + off_ - 4;
        if (out)
            *out = static_cast<uint32_t>(p[3]) << 24 | static_cast<uint32_t>(p[2]) << 16 |
                   static_cast<uint32_t>(p[1]) << 8 | p[0];
        return true;
    }
    // Copies the next n bytes into out (which has room for n).
    bool bytes(void *out, size_t n) {
        if (!take(n)) return false;
        if (out && n) memcpy(out, data_ + off_ - n, n);
        return true;
    }
    // Points *out at the next n bytes without copying them.
    constexpr bool view(size_t n, const uint8_t **out) {
        if (!take(n)) return false;
        if (out) *out = data_ + off_ - n;
        return true;
    }
    constexpr bool skip(size_t n) { return take(n); }
    // A reader over exactly the next n bytes (an attribute's or record's
    // payload); this reader moves past them.  The sub-reader's offsets
    // count from its own start.
    constexpr bool sub(size_t n, ByteReader *out) {
        if (!take(n)) return false;
        if (out) *out = ByteReader(data_ + off_ - n, n);
        return true;
    }
    // Moves the offset up to the next multiple of alignment (counted from
    // the window's start, as netlink's 4-byte attribute padding is).
    // Padding missing after the last item is not an error (the kernel may
    // end a message with an unpadded attribute): the reader then stands at
    // the end.  An alignment of 0 fails.
    constexpr bool align(size_t alignment) {
        if (!ok_ || alignment == 0) return fail();
        size_t pad = (alignment - off_ % alignment) % alignment;
        off_ = pad < remaining() ? off_ + pad : size_;
        return true;
    }

  private:
    // Claims n bytes: false (and failed for good) when fewer remain.
    constexpr bool take(size_t n) {
        if (!ok_ || n > remaining()) return fail();
        off_ += n;
        return true;
    }
    constexpr bool fail() {
        ok_ = false;
        return false;
    }

    const uint8_t *data_ = nullptr;
    size_t size_ = 0;
    size_t off_ = 0;
    bool ok_ = true;
};

}  // namespace cmdlib
