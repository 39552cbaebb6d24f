// USB discovery at the fixed paths: a fixture device list is bound over
// /proc/bus and a fixture USB tree over /sys/bus inside the device.
#include <string.h>
#include <unistd.h>

#include <string>

#include "cmdlib/usb.h"
#include "device.h"

namespace {

const std::string kFixture = "/tmp/usb_fixture";
const std::string kPort = kFixture + "/sys/usb/drivers/usb/1-1.3";

class UsbDevice : public DeviceTest {
  protected:
    static void SetUpTestSuite() {
        // A Fibocom-style modem (2020:2033) on port 1-1.3: interfaces 0, 2
        // and 3 carry option serial ports, interface 4 a cdc-acm port,
        // interface 1 is the network function.
        devtest::write_file(kFixture + "/proc/usb/devices",
                            "T:  Bus=01 Lev=00 Prnt=00 Port=00 Cnt=00 Dev#=  1 Spd=480  MxCh= 1\n"
                            "P:  Vendor=1d6b ProdID=0002 Rev= 5.10\n"
                            "T:  Bus=01 Lev=02 Prnt=02 Port=02 Cnt=01 Dev#=  3 Spd=480  MxCh= 0\n"
                            "P:  Vendor=2020 ProdID=2033 Rev= 3.18\n");
        devtest::write_file(kPort + "/idVendor", "2020\n");
        devtest::write_file(kPort + "/idProduct", "2033\n");
        const char *ifaces[][2] = {{"00", "ttyUSB0"}, {"01", ""}, {"02", "ttyUSB1"}, {"03", "ttyUSB2"},
                                   {"04", "tty/ttyACM0"}};
        for (auto &i : ifaces) {
            std::string dir = kPort + "/1-1.3:1." + std::to_string(atoi(i[0]));
            devtest::write_file(dir + "/bInterfaceNumber", std::string(i[0]) + "\n");
            if (*i[1]) devtest::write_file(dir + "/" + i[1] + "/dev", "188:0\n");
        }
        // the same ids on a port directory that is not searched
        devtest::write_file(kFixture + "/sys/usb/drivers/usb/1-1.2/idVendor", "2020\n");
    }
};

TEST_F(UsbDevice, NoDeviceListMeansNoModem) {
    UsbSerialTable t;
    memset(&t, 0x55, sizeof t);
    EXPECT_EQ(util_get_available_usb_ports(&t), -1);
    EXPECT_EQ(t.count, 0);
    EXPECT_EQ(check_if_usb_device_exist(matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 0);
}

TEST_F(UsbDevice, PortsOfTheFixtureModemAtTheFixedPaths) {
    ASSERT_TRUE(devtest::bind_dir(kFixture + "/proc", "/proc/bus"));
    ASSERT_TRUE(devtest::bind_dir(kFixture + "/sys", "/sys/bus"));

    EXPECT_EQ(check_if_usb_device_exist(matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 1);
    EXPECT_EQ(matched_device_index, 6);
    util_wait_until_usb_ready(0);  // present: returns at once

    UsbSerialTable t;
    ASSERT_EQ(util_get_available_usb_ports(&t), 0);
    ASSERT_EQ(t.count, 4);
    const char *want[] = {"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyUSB2", "/dev/ttyACM0"};
    for (int i = 0; i < 4; ++i) EXPECT_STREQ(t.table[i].port_name, want[i]);

    char name[USB_SERIAL_NAME_SIZE] = "";
    EXPECT_EQ(util_get_serial_name_by_usb_interface(0x2020, 0x2033, 3, name), 0);
    EXPECT_STREQ(name, "/dev/ttyUSB2");
    EXPECT_EQ(util_get_serial_name_by_usb_interface(0x2020, 0x2033, 1, name), -1);
}

}  // namespace
