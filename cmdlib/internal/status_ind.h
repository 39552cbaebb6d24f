// Readers of the status indication line that the dial tool writes to
// "/tmp/cmdlib/.system_signal_sim_status_ind": blank- or tab-separated
// decimals is_sim_exist need_pin need_puk signal_quality sms_status
// reg_status greg_status ereg_status act network_data_service.
// Each takes the line's text so it can be tested without the file.
#pragma once

namespace cmdlib {

constexpr const char *kStatusIndFile = "/tmp/cmdlib/.system_signal_sim_status_ind";

// Field 1 as atoi reads it (1 present, 0 absent, other values as they are).
int status_sim_exist(const char *text);
// 1 when field 2 (need_pin) is the number 1.
int status_need_pin(char *text);
// 1 when field 3 (need_puk) is the number 1.
int status_need_puk(char *text);

// Splits text in place.  With 8 fields or more: dial_status (when given) is
// 1 when field 6, 7 or 8 is 1 (home network; roaming does not count),
// signal_quality (when given) field 4, and the result 0.  Fewer: -1 and
// both outputs untouched.
int status_dial_and_signal(char *text, int *dial_status, int *signal_quality);

}  // namespace cmdlib
