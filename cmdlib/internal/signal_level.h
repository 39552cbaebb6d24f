// Level override files of the signal bars: pure reader of one file's text.
#pragma once

namespace cmdlib {

// The override in text (a decimal number, as atoi reads it) or fallback
// when text is NULL, empty, not a number or 0.
int signal_min_rsrp_from_text(const char *text, int fallback);

}  // namespace cmdlib
