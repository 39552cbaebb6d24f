// cmdlibctl ps / usb: is a program running, and the modem's serial ports.
#include <stdio.h>
#include <string.h>

#include <vector>

#include "cmdlib/cmdlib_info.h"
#include "cmdlib/usb.h"
#include "cmdlibctl.h"

namespace {

// ps NAME [MATCH...]: every MATCH must be one of the process's arguments.
int run_ps(int argc, char **argv) {
    if (argc < 2) return ctl_usage("ps");
    // The query tests only the even-indexed match strings; each MATCH is
    // put at an even index so that all of them count.
    char unused[] = "";
    std::vector<char *> match;
    for (int i = 2; i < argc; ++i) {
        match.push_back(argv[i]);
        match.push_back(unused);
    }
    char pid_value[16] = "";
    int r = cmd_ps_is_one_program_running_ex(argv[1], match.empty() ? nullptr : match.data(),
                                             static_cast<int>(match.size()), pid_value);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "name", argv[1]);
        ctl_add_strings(doc, "match", argv + 2, argc - 2);
        cJSON_AddBoolToObject(doc, "running", r != 0);
        if (r != 0)
            cJSON_AddNumberToObject(doc, "pid", r >> 8);
        else
            cJSON_AddNullToObject(doc, "pid");
        return ctl_emit(doc, r != 0 ? 0 : 1);
    }
    if (r == 0) {
        printf("%s: not running\n", argv[1]);
        return 1;
    }
    printf("%s: running, pid %d (%s)\n", argv[1], r >> 8, pid_value);
    return 0;
}

// usb ports: the serial ports of the attached modem, by interface order.
int run_usb(int argc, char **argv) {
    if (argc != 2 || strcmp(argv[1], "ports") != 0) return ctl_usage("usb");
    UsbSerialTable table;
    bool found = util_get_available_usb_ports(&table) == 0;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        if (found) {
            const UsbPair &modem = matched_usb_pairs[matched_device_index];
            char id[8];
            cJSON *m = cJSON_AddObjectToObject(doc, "modem");
            snprintf(id, sizeof id, "%04x", static_cast<unsigned>(modem.vendor_id));
            cJSON_AddStringToObject(m, "vendor_id", id);
            snprintf(id, sizeof id, "%04x", static_cast<unsigned>(modem.product_id));
            cJSON_AddStringToObject(m, "product_id", id);
        } else {
            cJSON_AddNullToObject(doc, "modem");
        }
        cJSON *ports = cJSON_AddArrayToObject(doc, "ports");
        for (int i = 0; found && i < table.count; ++i)
            cJSON_AddItemToArray(ports, cJSON_CreateString(table.table[i].port_name));
        return ctl_emit(doc, found ? 0 : 1);
    }
    if (!found) {
        printf("no supported modem or no serial port\n");
        return 1;
    }
    const UsbPair &modem = matched_usb_pairs[matched_device_index];
    printf("modem %04x:%04x\n", static_cast<unsigned>(modem.vendor_id),
           static_cast<unsigned>(modem.product_id));
    for (int i = 0; i < table.count; ++i) printf("%d %s\n", i, table.table[i].port_name);
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("ps", "NAME [MATCH...]   is NAME running (with every MATCH among its arguments)",
                  run_ps);
CMDLIBCTL_COMMAND("usb", "ports             serial ports of the USB modem", run_usb);
