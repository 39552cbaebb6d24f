// Readers behind the usb family: the device list parser and the walk of
// the USB tree, parametrised by the device list's path and by a root that
// is put before the /sys paths, so that they run on fixture trees.
#pragma once

#include <stdio.h>

#include <string_view>

#include "cmdlib/usb.h"

namespace cmdlib {

// Index of the first pair (in table order) named on the first line of the
// device list text that names any, or -1.  Lines are read 254 characters
// at a time, as from the file.
[[nodiscard]] int find_usb_pair(std::string_view devices_text, const UsbPair *pairs, int count);
[[nodiscard]] int find_usb_pair(FILE *devices, const UsbPair *pairs, int count);

// check_if_usb_device_exist over the device list at devices_path.
int usb_device_exist(const char *devices_path, const UsbPair *pairs, int count);

// util_get_serial_name_by_usb_interface below sys_root ("" for the real
// tree).
int usb_serial_name(const char *sys_root, int vendor_id, int product_id, int interface_number,
                    char *serial_name);

// util_get_available_usb_ports over the given device list and tree.
int usb_available_ports(const char *devices_path, const char *sys_root, UsbSerialTable *table);

// util_wait_until_usb_ready with the device list path and the sleep made
// replaceable.
void usb_wait_until_ready(const char *devices_path, int wait_for_usb_serial,
                          void (*sleep_seconds)(unsigned));

}  // namespace cmdlib
