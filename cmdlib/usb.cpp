// USB modem presence and serial port discovery from /proc and /sys.
#include "cmdlib/usb.h"

#include <dirent.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <array>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/usb_walk.h"

extern "C" {

const UsbPair matched_usb_pairs[USB_MATCHED_PAIRS_COUNT] = {
    {0x1ab7, 0x1761}, {0x19d2, 0x0117}, {0x19d2, 0x0396}, {0x05c6, 0x9000}, {0x2020, 0x2031},
    {0x2020, 0x2032}, {0x2020, 0x2033}, {0x19d2, 0x0199}, {0x19d2, 0xffed}, {0x19d2, 0x0532},
    {0x19d2, 0x0533}, {0x1c9e, 0x9e00}, {0x1c9e, 0x9b05}, {0x1e0e, 0x9001}, {0x05c6, 0x5042},
    {0x05c6, 0x9025}, {0x1286, 0x4e3d}, {0x258d, 0x2000},
};

int matched_device_index = 0;

const char *const used_usb_devices_directories[USB_PORT_DIRECTORIES_COUNT] = {
    "/sys/bus/usb/drivers/usb/1-1.4",
    "/sys/bus/usb/drivers/usb/1-1.3",
    "/sys/bus/usb/drivers/usb/1-1.1",
};

}  // extern "C"

static_assert(sizeof matched_usb_pairs / sizeof matched_usb_pairs[0] == 18, "18 supported modems");

namespace cmdlib {

namespace {

constexpr const char kDevicesPath[] = "/proc/bus/usb/devices";
// Serial node numbers tried per interface: ttyUSB0..1999, ttyACM0..1999.
constexpr int kMaxSerialNumber = 2000;
constexpr unsigned kPresencePollSeconds = 5;
constexpr unsigned kSerialBindSeconds = 15;

// "Vendor=19d2" and "ProdID=0117" of one pair, as a product line shows
// them.
struct PairNeedles {
    char vendor[24];
    char product[24];
};

template <typename Reader> int find_pair_in_lines(Reader &reader, const UsbPair *pairs, int count) {
    if (!pairs || count <= 0) return -1;
    // Formatted once, not once per line.
    PairNeedles stack_needles[USB_MATCHED_PAIRS_COUNT];
    UniqueMalloc<PairNeedles> heap_needles(count > USB_MATCHED_PAIRS_COUNT ? static_cast<size_t>(count) : 0);
    PairNeedles *needles = count > USB_MATCHED_PAIRS_COUNT ? heap_needles.get() : stack_needles;
    if (!needles) return -1;
    for (int i = 0; i < count; ++i) {
        format_bounded(needles[i].vendor, sizeof needles[i].vendor, "Vendor=%04x",
                       static_cast<unsigned>(pairs[i].vendor_id));
        format_bounded(needles[i].product, sizeof needles[i].product, "ProdID=%04x",
                       static_cast<unsigned>(pairs[i].product_id));
    }
    std::string_view line;
    while (reader.next(&line)) {
        if (line.find("Vendor=") == std::string_view::npos) continue;
        for (int i = 0; i < count; ++i)
            if (line.find(needles[i].vendor) != std::string_view::npos &&
                line.find(needles[i].product) != std::string_view::npos)
                return i;
    }
    return -1;
}

// Value of a small hexadecimal sysfs file such as idVendor, or -1.
long read_hex_file(const char *path) {
    char buf[64];
    if (cmd_cat(path, buf, sizeof buf) != 0) return -1;
    char *end = nullptr;
    long v = strtol(buf, &end, 16);
    return end == buf ? -1 : v;
}

// The interface number of an interface directory read as decimal text;
// -1 for text that is not decimal (the hexadecimal "0a" to "ff").
int read_interface_number(const char *path) {
    char buf[64];
    if (cmd_cat(path, buf, sizeof buf) != 0) return -1;
    int64_t v = 0;
    if (!parse_int64(strip(buf), &v) || v < 0 || v > INT_MAX) return -1;
    return static_cast<int>(v);
}

// n when name is prefix followed by the decimal form of n (as "%d" writes
// it) with n below kMaxSerialNumber, else -1.
int serial_number_of(const char *name, std::string_view prefix) {
    std::string_view s(name);
    if (!consume_prefix(&s, prefix) || s.empty() || s.size() > 4) return -1;
    if (s.size() > 1 && s[0] == '0') return -1;
    int64_t v = 0;
    if (s[0] == '+' || s[0] == '-' || !parse_int64(s, &v) || v >= kMaxSerialNumber) return -1;
    return static_cast<int>(v);
}

// Lowest serial number named prefix<n> among the entries of dir, or -1.
// One directory read gives what trying the 2000 names one by one would.
int lowest_serial_in(const char *dir, std::string_view prefix) {
    UniqueDir d(dir);
    if (!d) return -1;
    int best = -1;
    while (const struct dirent *e = ::readdir(d.get())) {
        int n = serial_number_of(e->d_name, prefix);
        if (n >= 0 && (best < 0 || n < best)) best = n;
    }
    return best;
}

// The node of one interface directory: the lowest n for which ttyUSB<n>
// or tty/ttyACM<n> exists, ttyUSB first at the same n.
bool serial_of_interface(const char *iface_dir, char *serial_name) {
    char path[PATH_MAX];
    int usb = lowest_serial_in(iface_dir, "ttyUSB");
    format_bounded(path, sizeof path, "%s/tty", iface_dir);
    int acm = lowest_serial_in(path, "ttyACM");
    if (usb >= 0 && (acm < 0 || usb <= acm)) {
        format_bounded(serial_name, USB_SERIAL_NAME_SIZE, "/dev/ttyUSB%d", usb);
        return true;
    }
    if (acm >= 0) {
        format_bounded(serial_name, USB_SERIAL_NAME_SIZE, "/dev/ttyACM%d", acm);
        return true;
    }
    return false;
}

// Looks for the interface in one port directory; true when found.
bool serial_in_port_dir(const char *port_dir, int vendor_id, int product_id, int interface_number,
                        char *serial_name) {
    char path[PATH_MAX];
    format_bounded(path, sizeof path, "%s/idVendor", port_dir);
    long vendor = read_hex_file(path);
    format_bounded(path, sizeof path, "%s/idProduct", port_dir);
    long product = read_hex_file(path);
    if (vendor < 0 || product < 0 || vendor != vendor_id || product != product_id) return false;

    UniqueDir dir(port_dir);
    if (!dir) return false;
    while (const struct dirent *e = ::readdir(dir.get())) {
        if (e->d_name[0] < '0' || e->d_name[0] > '9') continue;  // interface directories only
        format_bounded(path, sizeof path, "%s/%s/bInterfaceNumber", port_dir, e->d_name);
        if (read_interface_number(path) != interface_number) continue;
        format_bounded(path, sizeof path, "%s/%s", port_dir, e->d_name);
        if (serial_of_interface(path, serial_name)) return true;
    }
    return false;
}

}  // namespace

int find_usb_pair(std::string_view devices_text, const UsbPair *pairs, int count) {
    TextLineReader<255> reader(devices_text);
    return find_pair_in_lines(reader, pairs, count);
}

int find_usb_pair(FILE *devices, const UsbPair *pairs, int count) {
    LineReader<255> reader(devices);
    return find_pair_in_lines(reader, pairs, count);
}

int usb_device_exist(const char *devices_path, const UsbPair *pairs, int count) {
    UniqueFile fp(devices_path, "re");
    if (!fp) return 0;
    int index = find_usb_pair(fp.get(), pairs, count);
    if (index < 0) return 0;
    matched_device_index = index;
    return 1;
}

int usb_serial_name(const char *sys_root, int vendor_id, int product_id, int interface_number,
                    char *serial_name) {
    if (!sys_root) return -1;
    char found[USB_SERIAL_NAME_SIZE] = "";
    bool any = false;
    // Every directory is examined; a later match overrides an earlier one.
    for (const char *dir : used_usb_devices_directories) {
        char port_dir[PATH_MAX];
        format_bounded(port_dir, sizeof port_dir, "%s%s", sys_root, dir);
        any |= serial_in_port_dir(port_dir, vendor_id, product_id, interface_number, found);
    }
    if (!any) return -1;
    if (serial_name) memcpy(serial_name, found, sizeof found);
    return 0;
}

int usb_available_ports(const char *devices_path, const char *sys_root, UsbSerialTable *table) {
    if (!table) return -1;
    memset(table, 0, sizeof *table);
    if (!usb_device_exist(devices_path, matched_usb_pairs, USB_MATCHED_PAIRS_COUNT)) return -1;
    const UsbPair &modem = matched_usb_pairs[matched_device_index];
    for (int iface = 0; iface < USB_SERIAL_TABLE_SIZE; ++iface) {
        char name[USB_SERIAL_NAME_SIZE];
        if (usb_serial_name(sys_root, modem.vendor_id, modem.product_id, iface, name) == 0)
            memcpy(table->table[table->count++].port_name, name, sizeof name);
    }
    return table->count > 0 ? 0 : -1;
}

void usb_wait_until_ready(const char *devices_path, int wait_for_usb_serial,
                          void (*sleep_seconds)(unsigned)) {
    while (!usb_device_exist(devices_path, matched_usb_pairs, USB_MATCHED_PAIRS_COUNT))
        sleep_seconds(kPresencePollSeconds);
    if (wait_for_usb_serial) sleep_seconds(kSerialBindSeconds);
}

}  // namespace cmdlib

using namespace cmdlib;

namespace {
void sleep_fully(unsigned seconds) {
    while (seconds > 0) seconds = ::sleep(seconds);
}
}  // namespace

extern "C" {

CMDLIB_API int check_if_usb_device_exist(const UsbPair *pairs, int usb_pairs_count) {
    return usb_device_exist(kDevicesPath, pairs, usb_pairs_count);
}

CMDLIB_API void util_wait_until_usb_ready(int wait_for_usb_serial) {
    usb_wait_until_ready(kDevicesPath, wait_for_usb_serial, sleep_fully);
}

CMDLIB_API int util_get_serial_name_by_usb_interface(int idVendor, int idProduct, int interface_number,
                                                     char *serial_name) {
    return usb_serial_name("", idVendor, idProduct, interface_number, serial_name);
}

CMDLIB_API int util_get_available_usb_ports(UsbSerialTable *usb_serial_table) {
    return usb_available_ports(kDevicesPath, "", usb_serial_table);
}

}  // extern "C"
