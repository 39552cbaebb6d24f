// Parsers of the files behind the system information record: version file,
// module file, /proc/meminfo, the status indication line and the radio
// cache; the /proc/net/dev counters are base's (base/internal/netdev_parse.h).
// Each works on text so that tests can feed fixtures.
#pragma once

#include <stddef.h>

#include <string_view>

#include "base/internal/netdev_parse.h"
#include "cmdlib/cmdlib.h"

namespace cmdlib {

// "name: value" line of the firmware version file into group 9.  The name
// starts at the first non-blank and must equal a field name exactly; the
// value loses the blanks after the colon and the trailing blanks and line
// end.  Lines without a colon or starting with one are ignored.
void apply_version_line(std::string_view line, InfoStruct *info);

// "name:value" line of the module file into groups 10 and 12.  The name
// selects the first keyword it is a prefix of (an empty name selects
// "phy"); the value keeps its leading blanks and loses trailing ones.
void apply_module_info_line(std::string_view line, InfoStruct *info);

// "MemTotal:   123 kB" lines: the name selects "MemTotal" or "MemFree" by
// the same prefix rule; the value, blanks stripped, goes to the matching
// output (size bytes each, may be null).
void apply_meminfo_line(std::string_view line, char *mem_total, char *mem_free, size_t size);

// The status indication text: its first ten blank-separated words as
// numbers (atoi).  false when it holds fewer than ten words.
bool parse_status_ind(std::string_view text, int out[10]);

// The radio cache's content for the record: an empty line, then
// "<label><value>\n" for each non-empty cached field in the cache's order.
// Returns the length written (cut to size-1).
size_t compose_module_status_cache(const InfoStruct *info, char *out, size_t size);

}  // namespace cmdlib
