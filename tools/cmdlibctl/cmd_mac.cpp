// The attached units' records seen from the command line: list, show one,
// set fields of one (registering it when new), delete one.  Changes are
// saved as a web page saves them (the change marker is set).
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "cmdlib/mac.h"
#include "cmdlib/network.h"
#include "cmdlibctl.h"

namespace {

// The record's text fields, from the library's own field list.
struct FieldRef {
    const char *name;
    size_t offset, count, width;
};
constexpr FieldRef kFields[] = {
#define CTL_MAC_FIELD(name, count, width, offset) {#name, offset, count, width},
    MAC_IP_PAIR_TEXT_FIELDS(CTL_MAC_FIELD)
#undef CTL_MAC_FIELD
};

const char *field_text(const MacIPPair &p, const FieldRef &f, size_t index) {
    return reinterpret_cast<const char *>(&p) + f.offset + index * f.width;
}

bool parse_mac(const char *text, unsigned char mac[6]) {
    util_get_mac(text, mac);
    static const unsigned char zero[6] = {};
    return strlen(text) == 17 && memcmp(mac, zero, 6) != 0;
}

struct MacListView {
    int count;
    MacIPPair units[MAC_RECORDS_MAX];
};

// Every field of a unit, empty ones as null, five-slot fields as arrays:
// the same object for list, get and set.
cJSON *unit_json(const MacIPPair &u) {
    cJSON *o = cJSON_CreateObject();
    char mac[18];
    util_network_get_mac_string(const_cast<unsigned char *>(u.mac.value), mac, sizeof mac);
    cJSON_AddStringToObject(o, "mac", mac);
    for (const FieldRef &f : kFields) {
        if (f.count == 1) {
            ctl_add_text(o, f.name, field_text(u, f, 0), f.width);
            continue;
        }
        cJSON *slots = cJSON_AddArrayToObject(o, f.name);
        for (size_t i = 0; i < f.count; ++i) {
            const char *text = field_text(u, f, i);
            size_t n = strnlen(text, f.width);
            cJSON_AddItemToArray(slots, n ? cJSON_CreateString(std::string(text, n).c_str()) : cJSON_CreateNull());
        }
    }
    return o;
}

int print_list(const MacListView &v) {
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *units = cJSON_AddArrayToObject(doc, "units");
        for (int i = 0; i < v.count; ++i) cJSON_AddItemToArray(units, unit_json(v.units[i]));
        return ctl_emit(doc, 0);
    }
    printf("%-17s %-15s %-20s %-20s %s\n", "MAC", "LAN", "SSID 2.4G", "SSID 5G", "FIRMWARE");
    for (int i = 0; i < v.count; ++i) {
        const MacIPPair &u = v.units[i];
        char mac[18];
        util_network_get_mac_string(const_cast<unsigned char *>(u.mac.value), mac, sizeof mac);
        printf("%-17s %-15s %-20s %-20s %s\n", mac, u.AP_IPADDR, u.WIFI2G_SSID[0], u.WIFI5G_SSID[0],
               u.firmware_version);
    }
    return 0;
}

int print_unit(const MacIPPair &u) {
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddItemToObject(doc, "unit", unit_json(u));
        return ctl_emit(doc, 0);
    }
    char mac[18];
    util_network_get_mac_string(const_cast<unsigned char *>(u.mac.value), mac, sizeof mac);
    printf("mac=%s\n", mac);
    for (const FieldRef &f : kFields)
        for (size_t i = 0; i < f.count; ++i) {
            const char *text = field_text(u, f, i);
            if (!*text) continue;
            if (f.count == 1)
                printf("%s=%.*s\n", f.name, static_cast<int>(f.width), text);
            else
                printf("%s[%zu]=%.*s\n", f.name, i, static_cast<int>(f.width), text);
        }
    return 0;
}

// "NAME=VALUE" or "NAME[i]=VALUE" into the unit; false for an unknown
// field, an index out of 0..4 or a value too long for the field.
bool set_field(MacIPPair *u, const char *assignment) {
    const char *eq = strchr(assignment, '=');
    if (!eq) return false;
    size_t name_len = static_cast<size_t>(eq - assignment), index = 0;
    const char *bracket = static_cast<const char *>(memchr(assignment, '[', name_len));
    if (bracket) {
        index = strtoul(bracket + 1, nullptr, 10);
        name_len = static_cast<size_t>(bracket - assignment);
    }
    for (const FieldRef &f : kFields) {
        if (strlen(f.name) != name_len || strncmp(f.name, assignment, name_len) != 0) continue;
        if (index >= f.count || strlen(eq + 1) >= f.width) return false;
        char *dst = reinterpret_cast<char *>(u) + f.offset + index * f.width;
        memset(dst, 0, f.width);
        memcpy(dst, eq + 1, strlen(eq + 1));
        return true;
    }
    return false;
}

int cmd_mac(int argc, char **argv) {
    if (argc < 2) return ctl_usage(argv[0]);
    const char *sub = argv[1];
    static MacControlInfo info;
    util_read_mac_control_info(&info, 1);
    if (strcmp(sub, "list") == 0 && argc == 2) {
        static MacListView view;
        view.count = 0;
        for (int i = 0; i < info.mac_count && i < MAC_RECORDS_MAX; ++i) view.units[view.count++] = info.ip_pair_info[i];
        return print_list(view);
    }
    unsigned char mac[6];
    if (argc < 3 || !parse_mac(argv[2], mac)) return ctl_usage(argv[0]);
    static MacIPPair unit;
    if (strcmp(sub, "get") == 0 && argc == 3) {
        if (util_get_mac_info(&info, mac, &unit) != 0) {
            fprintf(stderr, "cmdlibctl: %s is not registered\n", argv[2]);
            return 1;
        }
        return print_unit(unit);
    }
    if (strcmp(sub, "set") == 0) {
        if (util_get_mac_info(&info, mac, &unit) != 0) {
            memset(&unit, 0, sizeof unit);
            memcpy(unit.mac.value, mac, sizeof mac);
        }
        for (int i = 3; i < argc; ++i)
            if (!set_field(&unit, argv[i])) {
                fprintf(stderr, "cmdlibctl: cannot set %s\n", argv[i]);
                return 2;
            }
        if (util_set_mac_info2(&info, &unit) != 0) {
            fprintf(stderr, "cmdlibctl: %d units are registered already\n", MAC_RECORDS_MAX);
            return 1;
        }
        util_save_mac_control_info(&info, 1);
        return print_unit(unit);
    }
    if (strcmp(sub, "del") == 0 && argc == 3) {
        util_delete_mac_info(&info, mac);
        util_save_mac_control_info(&info, 1);
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            cJSON_AddStringToObject(doc, "deleted", argv[2]);
            return ctl_emit(doc, 0);
        }
        return 0;
    }
    return ctl_usage(argv[0]);
}

}  // namespace

CMDLIBCTL_COMMAND("mac", "list | get MAC | set MAC [FIELD=VALUE | FIELD[0-4]=VALUE]... | del MAC", cmd_mac);
