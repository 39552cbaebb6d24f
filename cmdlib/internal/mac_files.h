// The MAC family's readers and writers with the file paths as arguments
// (the exported functions bind the fixed paths), and the MAC text reader.
#pragma once

#include <stddef.h>

#include <string_view>

#include "cmdlib/mac.h"

namespace cmdlib {

// Six bytes from "xx?xx?xx?xx?xx?xx" (any separators).  false, and out
// untouched, when the text is shorter than 17 characters or a digit
// position holds no hexadecimal digit.
[[nodiscard]] bool parse_mac_text(std::string_view text, unsigned char out[6]);

// The records file: loaded only when it is exactly 69604 bytes (true);
// otherwise *info is untouched.
bool load_mac_records(const char *path, MacControlInfo *info);
// Writes the records as a new file renamed over path.  true when the write
// was attempted (the scratch file could be created); the old file stays
// when a write fails.
bool save_mac_records(const char *path, const MacControlInfo *info);

enum class MacFileWrite { kUnchanged, kWritten, kFailed };
// Writes the file form (size 8 or 164 bytes) to path unless the file has
// not been replaced by one of another size and the first `compared` bytes
// equal what the writer last wrote (memory, size bytes, kept by the
// caller); a file of another size is removed first.  memory becomes the
// bytes when they are written.
MacFileWrite save_mac_file(const char *path, unsigned char *memory, const unsigned char *bytes, size_t size,
                           size_t compared);
// The MAC file into *out: 0, or -1 (a file of a size other than 8 or 164
// is removed).
int load_mac_file(const char *path, MacBuffer *out);

// The file forms: 6 bytes and two zeros; 20 MacAddr and a little-endian
// count.
void server_mac_bytes(const unsigned char mac[6], unsigned char (&out)[sizeof(MacAddr)]);
void client_macs_bytes(const MacBuffer &macs, unsigned char (&out)[MAC_BUFFER_FILE_SIZE]);

}  // namespace cmdlib
