// The AT channel's clock.  util_send_at_commands waits one second per pass
// while no answer is there (60 passes at most) and one more second after an
// early end; each of those waits is a call of the channel's sleep.  The
// library sleeps for real; statically linked tests put in a short sleep
// that counts its calls, so a silent module costs them milliseconds and
// they can still see that the budget is counted in passes.  Not exported.
#pragma once

namespace cmdlib {

// One wait of the AT channel (one second in the library).
using AtSleep = void (*)();

// Replaces the channel's sleep; nullptr restores the one-second sleep.
// Returns the sleep that was in place.
AtSleep set_at_sleep(AtSleep sleep_fn);

}  // namespace cmdlib
