// quectel_x12 module operations.
#include "cmdlib/cmdlib_platform_quectel_x12.h"

#include <string.h>

#include "base/libbase.h"

namespace {

// Speed control of the SoC's SuperSpeed USB controller.
constexpr const char *kUsbSpeedFile = "/sys/devices/platform/8a00000.ssusb/speed";

}  // namespace

extern "C" {

CMDLIB_API int quectel_x12_opt_set_usb_rate(const char *usb_rate) {
    if (!usb_rate) return -1;
    if (strcmp(usb_rate, "1") == 0)
        cmd_echo("high", kUsbSpeedFile);
    else if (strcmp(usb_rate, "2") == 0)
        cmd_echo("super", kUsbSpeedFile);
    return 0;
}

}  // extern "C"
