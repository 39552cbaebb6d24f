// USB modem discovery: the device list parser on text, the serial port walk
// on recorded /sys trees (tests/fixtures/usb-modem, usb-walk).
#include <string.h>

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdlib/internal/usb_walk.h"
#include "cmdlib/usb.h"
#include "common/golden.h"
#include "common/scratch.h"

namespace {

const std::string kModem = golden::fixture("usb-modem");
const std::string kWalk = golden::fixture("usb-walk");
const std::string kDevices = kModem + "/proc/bus/usb/devices";

TEST(UsbDeviceList, FirstLineNamingAKnownPairSelectsIt) {
    const struct {
        std::string text;
        int count, want;
    } cases[] = {
        {golden::slurp(kDevices), 18, 6},
        {"P:  Vendor=1d6b ProdID=0002 Rev= 4.14\nP:  Vendor=258d ProdID=2000\nP:  Vendor=19d2 ProdID=0117\n", 18, 17},
        {"P:  Vendor=19D2 ProdID=FFED\n", 18, -1},  // upper-case digits
        {"P:  Vendor=19d2\nProdID=0117\n", 18, -1},  // ids on different lines
        {"P: Vendor=05c6 ProdID=0117\n", 18, -1},    // vendor and product of two different pairs
        {"", 18, -1},
        {"P: Vendor=19d2 ProdID=0117\n", 1, -1},  // the count limits the pairs tried
        // lines are read 254 characters at a time: "Vendor=" ends the first piece here
        {std::string(247, ' ') + "Vendor=19d2 ProdID=0117\n", 18, -1},
        {std::string(200, ' ') + "Vendor=19d2 ProdID=0117\n", 18, 1},
    };
    for (const auto &c : cases) EXPECT_EQ(cmdlib::find_usb_pair(c.text, matched_usb_pairs, c.count), c.want) << c.text;
    EXPECT_EQ(cmdlib::find_usb_pair("P: Vendor=19d2 ProdID=0117\n", nullptr, 18), -1);
}

TEST(UsbTree, PortsOfTheModemInInterfaceOrder) {
    UsbSerialTable t;
    memset(&t, 0x55, sizeof t);
    ASSERT_EQ(cmdlib::usb_available_ports(kDevices.c_str(), kModem.c_str(), &t), 0);
    EXPECT_EQ(matched_device_index, 6);
    ASSERT_EQ(t.count, 4);
    const char *want[] = {"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyUSB2", "/dev/ttyACM0", ""};
    for (int i = 0; i < 5; ++i) EXPECT_STREQ(t.table[i].port_name, want[i]) << i;
    // no device list, or a known modem without its tree: an empty table
    const UsbSerialTable zero = {};
    memset(&t, 0x55, sizeof t);
    EXPECT_EQ(cmdlib::usb_available_ports((kModem + "/none").c_str(), kModem.c_str(), &t), -1);
    EXPECT_EQ(memcmp(&t, &zero, sizeof t), 0);
    EXPECT_EQ(cmdlib::usb_available_ports(kDevices.c_str(), kWalk.c_str(), &t), -1);
    EXPECT_EQ(t.count, 0);
    EXPECT_EQ(cmdlib::usb_available_ports(kDevices.c_str(), kModem.c_str(), nullptr), -1);
    EXPECT_EQ(cmdlib::usb_device_exist((kModem + "/none").c_str(), matched_usb_pairs, 18), 0);
}

TEST(UsbTree, SerialNameOfAnInterface) {
    const struct {
        int vendor, product, number;
        const char *want;
    } cases[] = {
        // ttyACM nodes sit under tty/; the lowest number wins, ttyUSB first on a tie
        {0x1c9e, 0x9b05, 0, "/dev/ttyACM3"}, {0x1c9e, 0x9b05, 1, "/dev/ttyUSB7"}, {0x1c9e, 0x9b05, 2, "/dev/ttyUSB5"},
        {0x1c9e, 0x9b05, 3, "/dev/ttyACM2"},
        {0x1c9e, 0x9b05, 4, "-1"},  // names "%d" never forms, numbers from 2000 on
        {0x1c9e, 0x9b05, 5, "-1"},  // no such interface
        {0x1c9e, 0x9b06, 0, "-1"},  // another product
        // interface numbers are decimal text ("0a" is neither 10 nor 0); every
        // port directory is examined and the last in the list wins
        {0x19d2, 0x0117, 9, "/dev/ttyUSB8"}, {0x19d2, 0x0117, 10, "-1"}, {0x19d2, 0x0117, 0, "/dev/ttyUSB4"},
    };
    for (const auto &c : cases) {
        char name[USB_SERIAL_NAME_SIZE] = "untouched";
        int rc = cmdlib::usb_serial_name(kWalk.c_str(), c.vendor, c.product, c.number, name);
        EXPECT_EQ(rc == 0 ? std::string(name) : std::to_string(rc) + (strcmp(name, "untouched") ? " touched" : ""), c.want)
            << std::hex << c.vendor << ":" << c.product << " " << std::dec << c.number;
    }
}

class UsbWait : public ScratchDir {};

std::vector<unsigned> g_sleeps;
std::string g_devices_to_create;

TEST_F(UsbWait, PollsEveryFiveSecondsThenWaitsForTheDrivers) {
    g_sleeps.clear();
    g_devices_to_create = path("devices");
    auto fake_sleep = [](unsigned s) {
        g_sleeps.push_back(s);
        if (g_sleeps.size() == 3) std::ofstream(g_devices_to_create) << "P: Vendor=1286 ProdID=4e3d\n";
    };
    cmdlib::usb_wait_until_ready(g_devices_to_create.c_str(), 1, fake_sleep);
    EXPECT_EQ(g_sleeps, (std::vector<unsigned>{5, 5, 5, 15}));
    EXPECT_EQ(matched_device_index, 16);
    g_sleeps.clear();
    cmdlib::usb_wait_until_ready(g_devices_to_create.c_str(), 0, fake_sleep);
    EXPECT_TRUE(g_sleeps.empty());
}

}  // namespace
