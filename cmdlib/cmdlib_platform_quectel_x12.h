/* quectel_x12 module: operations specific to that module. */
#ifndef CMDLIB_PLATFORM_QUECTEL_X12_H
#define CMDLIB_PLATFORM_QUECTEL_X12_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* USB speed of the module's port: "1" selects high speed, "2" super
 * speed; other values change nothing.  0, or -1 for NULL. */
CMDLIB_API int quectel_x12_opt_set_usb_rate(const char *usb_rate);

CMDLIB_END_DECLS

#endif
