// The parts of the logging family that tests feed with their own paths.
#pragma once

#include <stddef.h>

namespace cmdlib {

// Uptime in words: "%d day " when at least a day, "%d hour " and "%d min "
// when the remainder reaches them, always "%d sec".  Negative seconds
// count as 0.  Returns the length written (cut to size-1).
size_t format_uptime_words(long seconds, char *out, size_t size);

// util_write_exception_log with the log and the uptime source given.
void append_exception_log(const char *log_path, const char *uptime_path,
                          const char *process_name, const char *event_description);

// Largest exception log that still takes entries: 1 MiB.
inline constexpr long kExceptionLogCap = 1048576;
// Largest debug file that still takes text: 10 MiB.
inline constexpr long kDebugFileCap = 10485760;

}  // namespace cmdlib
