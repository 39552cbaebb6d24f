// USB modem discovery: the device list parser on text, the serial port walk
// on a fixture /sys tree built in a temporary directory.
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdlib/internal/usb_walk.h"
#include "cmdlib/usb.h"

namespace fs = std::filesystem;

namespace {

constexpr char kProductLine[] =
    "T:  Bus=01 Lev=02 Prnt=02 Port=03 Cnt=01 Dev#=  3 Spd=480  MxCh= 0\n"
    "D:  Ver= 2.00 Cls=00(>ifc ) Sub=00 Prot=00 MxPS=64 #Cfgs=  1\n";

TEST(UsbDeviceList, ProductLineSelectsItsPair) {
    std::string text = std::string(kProductLine) + "P:  Vendor=19d2 ProdID=0117 Rev= 0.00\n";
    EXPECT_EQ(cmdlib::find_usb_pair(text, matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 1);
    // the first line naming a known pair wins
    text = std::string("P:  Vendor=1d6b ProdID=0002 Rev= 4.14\n") + kProductLine +
           "P:  Vendor=258d ProdID=2000 Rev= 1.00\nP:  Vendor=19d2 ProdID=0117 Rev= 0.00\n";
    EXPECT_EQ(cmdlib::find_usb_pair(text, matched_usb_pairs, USB_MATCHED_PAIRS_COUNT), 17);
    // upper-case digits, ids on different lines, a vendor and product of two
    // different pairs, an empty list: no match
    for (const char *none : {"P:  Vendor=19D2 ProdID=FFED\n", "P:  Vendor=19d2\nProdID=0117\n",
                             "P: Vendor=05c6 ProdID=0117\n", ""})
        EXPECT_EQ(cmdlib::find_usb_pair(none, matched_usb_pairs, 18), -1) << none;
    // the count limits the pairs tried
    EXPECT_EQ(cmdlib::find_usb_pair("P: Vendor=19d2 ProdID=0117\n", matched_usb_pairs, 1), -1);
    EXPECT_EQ(cmdlib::find_usb_pair("P: Vendor=19d2 ProdID=0117\n", nullptr, 18), -1);
    // lines are read 254 characters at a time: here "Vendor=" ends the
    // first piece and "19d2" begins the second
    EXPECT_EQ(cmdlib::find_usb_pair(std::string(247, ' ') + "Vendor=19d2 ProdID=0117\n", matched_usb_pairs, 18), -1);
    EXPECT_EQ(cmdlib::find_usb_pair(std::string(200, ' ') + "Vendor=19d2 ProdID=0117\n", matched_usb_pairs, 18), 1);
}

class UsbTree : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = fs::temp_directory_path() / ("usb_fixture_" + std::to_string(getpid()));
        fs::remove_all(root_);
        fs::create_directories(root_);
        devices_ = (root_ / "devices").string();
    }
    void TearDown() override { fs::remove_all(root_); }

    static void put(const fs::path &p, const std::string &text) {
        fs::create_directories(p.parent_path());
        std::ofstream(p) << text;
    }
    fs::path port(const char *name) { return root_ / "sys/bus/usb/drivers/usb" / name; }
    void modem(const char *port_name, const char *vendor, const char *product) {
        put(port(port_name) / "idVendor", std::string(vendor) + "\n");
        put(port(port_name) / "idProduct", std::string(product) + "\n");
    }
    // Interface directory iface ("1-1.4:1.2") with bInterfaceNumber number
    // and the given nodes ("ttyUSB1" or "tty/ttyACM0").
    void iface(const char *port_name, const std::string &dir, const char *number,
               std::vector<std::string> nodes) {
        put(port(port_name) / dir / "bInterfaceNumber", std::string(number) + "\n");
        for (const auto &n : nodes) fs::create_directories(port(port_name) / dir / n);
    }
    std::string serial(int vendor, int product, int number) {
        char name[USB_SERIAL_NAME_SIZE] = "untouched";
        int rc = cmdlib::usb_serial_name(root_.c_str(), vendor, product, number, name);
        return rc == 0 ? name : "-1:" + std::string(name);
    }

    fs::path root_;
    std::string devices_;
};

TEST_F(UsbTree, InterfacesMapToTheirNodesInOrder) {
    put(devices_, std::string(kProductLine) + "P:  Vendor=2020 ProdID=2033 Rev= 3.18\n");
    modem("1-1.4", "2020", "2033");
    iface("1-1.4", "1-1.4:1.0", "00", {"ttyUSB0"});
    iface("1-1.4", "1-1.4:1.1", "01", {});  // network interface: no node
    iface("1-1.4", "1-1.4:1.2", "02", {"ttyUSB1"});
    iface("1-1.4", "1-1.4:1.3", "03", {"ttyUSB2"});
    fs::create_directories(port("1-1.4") / "power");  // not an interface

    UsbSerialTable t;
    memset(&t, 0x55, sizeof t);
    ASSERT_EQ(cmdlib::usb_available_ports(devices_.c_str(), root_.c_str(), &t), 0);
    EXPECT_EQ(matched_device_index, 6);
    ASSERT_EQ(t.count, 3);
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(t.table[i].port_name, i < 3 ? ("/dev/ttyUSB" + std::to_string(i)).c_str() : "");
}

TEST_F(UsbTree, AcmNodesUnderTtyAndTheLowestNumberWins) {
    modem("1-1.3", "1c9e", "9b05");
    iface("1-1.3", "1-1.3:1.0", "00", {"tty/ttyACM3"});
    iface("1-1.3", "1-1.3:1.1", "01", {"ttyUSB12", "ttyUSB7", "tty/ttyACM9"});
    iface("1-1.3", "1-1.3:1.2", "02", {"ttyUSB5", "tty/ttyACM5"});  // same n: ttyUSB first
    iface("1-1.3", "1-1.3:1.3", "03", {"ttyUSB9", "tty/ttyACM2"});
    // names that "%d" never forms, and numbers from 2000 on
    iface("1-1.3", "1-1.3:1.4", "04", {"ttyUSB01", "ttyUSB+1", "ttyUSB2000", "ttyUSB", "tty/ttyACM-1", "ttyACM1"});
    const char *want[] = {"/dev/ttyACM3", "/dev/ttyUSB7", "/dev/ttyUSB5", "/dev/ttyACM2",
                          "-1:untouched", "-1:untouched"};
    for (int n = 0; n < 6; ++n) EXPECT_EQ(serial(0x1c9e, 0x9b05, n), want[n]) << n;
    EXPECT_EQ(serial(0x1c9e, 0x9b06, 0), "-1:untouched");  // other product
}

TEST_F(UsbTree, InterfaceNumbersAreDecimalText) {
    modem("1-1.4", "19d2", "0117");
    iface("1-1.4", "1-1.4:1.10", "0a", {"ttyUSB9"});
    iface("1-1.4", "1-1.4:1.9", "09", {"ttyUSB8"});
    iface("1-1.4", "1-1.4:1.0", "00", {"ttyUSB0"});
    EXPECT_EQ(serial(0x19d2, 0x0117, 9), "/dev/ttyUSB8");
    EXPECT_EQ(serial(0x19d2, 0x0117, 10), "-1:untouched");
    EXPECT_EQ(serial(0x19d2, 0x0117, 0), "/dev/ttyUSB0");  // "0a" is not 0
}

TEST_F(UsbTree, EveryPortDirectoryIsExaminedAndTheLastWins) {
    modem("1-1.4", "19d2", "0117");
    iface("1-1.4", "1-1.4:1.0", "00", {"ttyUSB0"});
    modem("1-1.1", "19d2", "0117");
    iface("1-1.1", "1-1.1:1.0", "00", {"ttyUSB4"});
    modem("1-1.3", "19d2", "0118");  // another device: skipped
    iface("1-1.3", "1-1.3:1.0", "00", {"ttyUSB2"});
    EXPECT_EQ(serial(0x19d2, 0x0117, 0), "/dev/ttyUSB4");
    // a port directory without idProduct is skipped
    fs::remove(port("1-1.1") / "idProduct");
    EXPECT_EQ(serial(0x19d2, 0x0117, 0), "/dev/ttyUSB0");
}

TEST_F(UsbTree, NoDeviceListOrNoPortLeavesTheTableEmpty) {
    UsbSerialTable t;
    memset(&t, 0x55, sizeof t);
    EXPECT_EQ(cmdlib::usb_available_ports(devices_.c_str(), root_.c_str(), &t), -1);
    const UsbSerialTable zero = {};
    EXPECT_EQ(memcmp(&t, &zero, sizeof t), 0);
    EXPECT_EQ(cmdlib::usb_device_exist(devices_.c_str(), matched_usb_pairs, 18), 0);

    put(devices_, "P:  Vendor=05c6 ProdID=9025 Rev= 3.18\n");
    EXPECT_EQ(cmdlib::usb_available_ports(devices_.c_str(), root_.c_str(), &t), -1);  // no tree
    EXPECT_EQ(matched_device_index, 15);
    EXPECT_EQ(t.count, 0);
    EXPECT_EQ(cmdlib::usb_available_ports(devices_.c_str(), root_.c_str(), nullptr), -1);
}

std::vector<unsigned> g_sleeps;
std::string g_devices_to_create;

void fake_sleep(unsigned s) {
    g_sleeps.push_back(s);
    if (g_sleeps.size() == 3) std::ofstream(g_devices_to_create) << "P: Vendor=1286 ProdID=4e3d\n";
}

TEST_F(UsbTree, WaitPollsEveryFiveSecondsThenWaitsForTheDrivers) {
    g_sleeps.clear();
    g_devices_to_create = devices_;
    cmdlib::usb_wait_until_ready(devices_.c_str(), 1, fake_sleep);
    EXPECT_EQ(g_sleeps, (std::vector<unsigned>{5, 5, 5, 15}));
    EXPECT_EQ(matched_device_index, 16);
    g_sleeps.clear();
    cmdlib::usb_wait_until_ready(devices_.c_str(), 0, fake_sleep);
    EXPECT_TRUE(g_sleeps.empty());
}

}  // namespace
