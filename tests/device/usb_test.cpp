// USB discovery at the fixed paths: the recorded modem of
// tests/fixtures/usb-modem is bound over /proc/bus and /sys/bus.
#include <string.h>

#include <string>

#include "cmdlib/usb.h"
#include "device.h"

namespace {

class UsbDevice : public DeviceTest {};

TEST_F(UsbDevice, NoDeviceListThenTheRecordedModem) {
    UsbSerialTable t;
    memset(&t, 0x55, sizeof t);
    EXPECT_EQ(util_get_available_usb_ports(&t), -1);
    EXPECT_EQ(t.count, 0);
    EXPECT_EQ(check_if_usb_device_exist(matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 0);

    const std::string fixture = devtest::src_path("tests/fixtures/usb-modem");
    ASSERT_TRUE(devtest::bind_dir(fixture + "/proc/bus", "/proc/bus"));
    ASSERT_TRUE(devtest::bind_dir(fixture + "/sys/bus", "/sys/bus"));
    EXPECT_EQ(check_if_usb_device_exist(matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 1);
    EXPECT_EQ(matched_device_index, 6);
    util_wait_until_usb_ready(0);  // present: returns at once
    ASSERT_EQ(util_get_available_usb_ports(&t), 0);
    ASSERT_EQ(t.count, 4);
    EXPECT_STREQ(t.table[3].port_name, "/dev/ttyACM0");
    char name[USB_SERIAL_NAME_SIZE] = "";
    EXPECT_EQ(util_get_serial_name_by_usb_interface(0x2020, 0x2033, 3, name), 0);
    EXPECT_STREQ(name, "/dev/ttyUSB2");
    EXPECT_EQ(util_get_serial_name_by_usb_interface(0x2020, 0x2033, 1, name), -1);
    devtest::unbind("/sys/bus");
    devtest::unbind("/proc/bus");
}

}  // namespace
