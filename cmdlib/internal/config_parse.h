// Parsers of the configuration store, apart from any fixed path: the
// export-line parser, the pair reader and the structure reader over text
// or an open stream, the key index that lets a reader match a line against
// a long key list in one probe, and the packed-file check over bytes.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "cmdlib/cmdlib_config.h"

namespace cmdlib {

// Entries before the null terminator of a constant key list.
[[nodiscard]] constexpr int key_list_length(const char *const *keys) {
    int n = 0;
    while (keys[n]) ++n;
    return n;
}

// "export KEY=value" with the exporter's quoting undone; see
// util_config_parse_config_export_line.  The line counts up to its first
// NUL and at most 511 characters.
int parse_export_line(std::string_view line, char *name, int name_size, char *value,
                      int value_size);

// The pair reader's view of one line: leading and trailing blanks dropped,
// "export " required, name up to the first '=' without its trailing blanks,
// value stripped and, when it starts and ends with a double quote, without
// them.  false for anything else and for an empty name or value.  The
// views point into line.
bool split_pair_line(std::string_view line, std::string_view *name, std::string_view *value);

// Exact-match index over a list of keys.  Key i is the text pointer found
// at first + i * stride bytes, so it serves both plain key lists and
// tables whose records start with a key pointer.  Null keys never match.
// Up to kMaxIndexed keys go into an open-addressed hash table; keys past
// that are compared one by one, so any count works and the answers equal
// those of comparing the name with every key in order.
class KeyIndex {
  public:
    static constexpr int kMaxIndexed = 2048;

    KeyIndex(const void *first, size_t stride, int count);
    explicit KeyIndex(const char *const *keys, int count)
        : KeyIndex(keys, sizeof(const char *), count) {}
    KeyIndex(const KeyIndex &) = delete;
    KeyIndex &operator=(const KeyIndex &) = delete;

    [[nodiscard]] bool contains(std::string_view name) const { return first_match(name) >= 0; }

    // Calls f(i) for every i whose key equals name, in ascending order.
    template <typename F> void for_each_match(std::string_view name, F f) const {
        for (int i = first_indexed(name); i >= 0; i = next_[i] == kNone ? -1 : next_[i]) f(i);
        for (int i = indexed_; i < count_; ++i)
            if (key_equals(i, name)) f(i);
    }

  private:
    static constexpr uint16_t kNone = 0xFFFF;
    static constexpr int kSlots = 2 * kMaxIndexed;  // load factor at most one half

    [[nodiscard]] const char *key(int i) const {
        const char *p;
        memcpy(&p, first_ + static_cast<size_t>(i) * stride_, sizeof p);
        return p;
    }
    [[nodiscard]] bool key_equals(int i, std::string_view name) const {
        const char *k = key(i);
        return k && strncmp(k, name.data(), name.size()) == 0 && k[name.size()] == '\0';
    }
    [[nodiscard]] int first_indexed(std::string_view name) const;
    [[nodiscard]] int first_match(std::string_view name) const;

    const unsigned char *first_;
    size_t stride_;
    int count_;
    int indexed_ = 0;           // keys [0, indexed_) are in the table
    uint32_t mask_ = 0;         // slots in use: mask_ + 1, a power of two
    uint16_t slot_[kSlots];     // first key index of a distinct key, or kNone
    uint32_t hash_[kMaxIndexed];
    uint16_t next_[kMaxIndexed];  // next key index with the same text
    uint16_t tail_[kMaxIndexed];  // last of the chain, kept at its head
};

// The pair reader over a stream or over text (255 characters a read).
// args may be null for "every assignment"; result must hold max_result
// pairs (max_result > 0).  Returns the number of pairs stored.
int read_pairs(FILE *fp, const char *const *args, int args_count, ConfigKeyValuePair *result,
               int max_result);
int read_pairs(std::string_view text, const char *const *args, int args_count,
               ConfigKeyValuePair *result, int max_result);

// The structure reader over a stream or over text: every parsed line
// writes its value into every field whose descriptor names its key.
void read_struct(FILE *fp, const FieldConfigInfo *fields, int count, void *dest);
void read_struct(std::string_view text, const FieldConfigInfo *fields, int count, void *dest);

// Checks a packed configuration file whose bytes have already been passed
// through the transform.  Returns 0 with *payload_len set, 5 for a wrong
// check sum, 6 for a size of CONFIG_PACKED_FILE_SIZE_LIMIT or more or one
// that does not match the length field.  Never reads outside buf[0, size).
int check_packed_config(const unsigned char *buf, size_t size, size_t *payload_len);

}  // namespace cmdlib
