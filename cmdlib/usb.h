/* usb: finds the USB-attached cellular modem by vendor and product id and
 * maps its USB interface numbers to the serial device nodes the kernel gave
 * them (/dev/ttyUSBn, /dev/ttyACMn).
 *
 * Meant for one thread (the dial tool's start-up): matched_device_index is
 * process state written by every successful presence check.
 */
#ifndef CMDLIB_USB_H
#define CMDLIB_USB_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

typedef struct UsbPair {
    int vendor_id;
    int product_id;
} UsbPair;

#define USB_SERIAL_NAME_SIZE 32
#define USB_SERIAL_TABLE_SIZE 20
#define USB_MATCHED_PAIRS_COUNT 18
#define USB_PORT_DIRECTORIES_COUNT 3

typedef struct UsbSerialEntry {
    char port_name[USB_SERIAL_NAME_SIZE]; /* such as /dev/ttyUSB2 */
} UsbSerialEntry;

/* The modem's serial ports in the order of their interface numbers
 * 0..19, without gaps. */
typedef struct UsbSerialTable {
    UsbSerialEntry table[USB_SERIAL_TABLE_SIZE];
    int count;
} UsbSerialTable;

/* The supported modems, in search order. */
CMDLIB_API extern const UsbPair matched_usb_pairs[USB_MATCHED_PAIRS_COUNT];
/* Index in matched_usb_pairs of the modem found by the last successful
 * check_if_usb_device_exist. */
CMDLIB_API extern int matched_device_index;
/* The USB port directories the modem may sit in, in search order. */
CMDLIB_API extern const char *const used_usb_devices_directories[USB_PORT_DIRECTORIES_COUNT];

/* 1 when a product line of /proc/bus/usb/devices names one of the pairs
 * (the first pair in table order on the first such line wins; its index
 * goes to matched_device_index), 0 otherwise or without that file. */
CMDLIB_API int check_if_usb_device_exist(const UsbPair *matched_usb_pairs, int usb_pairs_count);

/* Returns once a supported modem is present, checking every 5 s; then
 * waits 15 s more when wait_for_usb_serial is non-zero, for the serial
 * drivers to bind.  Never gives up. */
CMDLIB_API void util_wait_until_usb_ready(int wait_for_usb_serial);

/* The device path of the serial port on interface interface_number of the
 * modem idVendor:idProduct into serial_name (32 bytes).  All three port
 * directories are examined and a later one overrides an earlier one.
 * Interface numbers are compared as decimal text, so the hexadecimal
 * numbers from 10 on are never found.  0, or -1 when none was found. */
CMDLIB_API int util_get_serial_name_by_usb_interface(int idVendor, int idProduct, int interface_number,
                                                     char *serial_name);

/* The serial ports of the present modem, interfaces 0..19.  0 when at
 * least one was found, else -1 (the table is zeroed first). */
CMDLIB_API int util_get_available_usb_ports(UsbSerialTable *usb_serial_table);

CMDLIB_END_DECLS

#endif
