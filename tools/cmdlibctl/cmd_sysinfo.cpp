// The system record, the feature set and the debug flags from the command
// line.
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <string>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/log.h"
#include "cmdlibctl.h"

namespace {

struct FieldView {
    const char *name;
    size_t offset;
    size_t width;
    int group;
    int bit;
};

const FieldView kFields[] = {
#define CTL_FIELD(group, name, width, bit) {#name, offsetof(InfoStruct, name), width, group, bit},
    CMDLIB_INFO_TEXT_FIELDS(CTL_FIELD)
#undef CTL_FIELD
};

const char *const kGroupNames[] = {
    "",
    "LAN and Wi-Fi basics",
    "Wi-Fi access point and security",
    "SIM lock, cell-id lock, speed limit, IP stack",
    "Dynamic DNS",
    "L2TP",
    "Configuration identity, PPP, DNS, module, servers, FOTA, SNMP",
    "Prestored frequencies, device type, SIM encryption",
    "One-cell lock, timers, LNS policy, network lock, APNs, PPTP, GRE",
    "Firmware version",
    "Modem module",
    "Radio measurements",
    "Platform and modem chip",
};

bool defined(const InfoStruct &info, int bit) {
    return bit >= 0 && ((info.defined_fields[bit / 32] >> (bit % 32)) & 1u);
}

// Prints the non-empty fields group by group; "*" marks a setting whose bit
// says it was read from the settings file.
void print_record(const InfoStruct &info) {
    int shown_group = 0;
    for (const FieldView &f : kFields) {
        const char *v = reinterpret_cast<const char *>(&info) + f.offset;
        size_t n = strnlen(v, f.width);
        if (n == 0 && !defined(info, f.bit)) continue;
        if (f.group != shown_group) {
            printf("[%d] %s\n", f.group, kGroupNames[f.group]);
            shown_group = f.group;
        }
        printf("  %c %-32s %.*s\n", defined(info, f.bit) ? '*' : ' ', f.name, (int)n, v);
    }
}

// The same fields as an object {name: value}, and the names read from the
// settings file as a list.
void add_record(cJSON *doc, const InfoStruct &info) {
    cJSON *record = cJSON_AddObjectToObject(doc, "record");
    cJSON *from_settings = cJSON_AddArrayToObject(doc, "from_settings");
    for (const FieldView &f : kFields) {
        const char *v = reinterpret_cast<const char *>(&info) + f.offset;
        size_t n = strnlen(v, f.width);
        if (n == 0 && !defined(info, f.bit)) continue;
        cJSON_AddItemToObject(record, f.name, cJSON_CreateString(std::string(v, n).c_str()));
        if (defined(info, f.bit)) cJSON_AddItemToArray(from_settings, cJSON_CreateString(f.name));
    }
}

// "12345 kB" -> 12345; null when the figure is missing.
void add_kb(cJSON *doc, const char *key, const char *text) {
    char *end = nullptr;
    long kb = strtol(text, &end, 10);
    if (end == text)
        cJSON_AddNullToObject(doc, key);
    else
        cJSON_AddNumberToObject(doc, key, static_cast<double>(kb));
}

int cmd_sysinfo(int argc, char **argv) {
    if (argc > 2) return ctl_usage(argv[0]);
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    if (util_server_read_wifi_info(&info) != 0)
        fprintf(stderr, "cmdlibctl: no settings file %s\n", SYSTEM_SETTINGS_FILE);
    if (argc == 2 && util_read_version_info(argv[1], &info) != 0)
        fprintf(stderr, "cmdlibctl: cannot read %s\n", argv[1]);
    if (!util_load_module_info(&info)) fprintf(stderr, "cmdlibctl: no module information\n");
    int ind[10];
    bool have_status = util_read_status_ind(&ind[0], &ind[1], &ind[2], &ind[3], &ind[4], &ind[5], &ind[6],
                                            &ind[7], &ind[8], &ind[9]) == 0;
    char uptime[UTIL_UPTIME_TEXT_SIZE], total[UTIL_MEMINFO_TEXT_SIZE] = "", freeb[UTIL_MEMINFO_TEXT_SIZE] = "";
    util_read_system_uptime(uptime);
    util_read_meminfo(total, freeb);
    if (ctl_json()) {
        static constexpr const char *kStatusNames[10] = {"sim", "pin", "puk", "signal", "sms",
                                                         "reg", "greg", "ereg", "act", "data"};
        cJSON *doc = cJSON_CreateObject();
        add_record(doc, info);
        cJSON *status = have_status ? cJSON_AddObjectToObject(doc, "status") : cJSON_AddNullToObject(doc, "status");
        for (int i = 0; have_status && i < 10; ++i) cJSON_AddNumberToObject(status, kStatusNames[i], ind[i]);
        char *end = nullptr;
        double seconds = strtod(uptime, &end);
        if (end == uptime)
            cJSON_AddNullToObject(doc, "uptime_s");
        else
            cJSON_AddNumberToObject(doc, "uptime_s", seconds);
        add_kb(doc, "memory_total_kb", total);
        add_kb(doc, "memory_free_kb", freeb);
        return ctl_emit(doc, 0);
    }
    print_record(info);
    if (have_status)
        printf("[13] Status: sim=%d pin=%d puk=%d signal=%d sms=%d reg=%d greg=%d ereg=%d act=%d "
               "data=%d\n",
               ind[0], ind[1], ind[2], ind[3], ind[4], ind[5], ind[6], ind[7], ind[8], ind[9]);
    printf("uptime %s s, memory %s total, %s free\n", uptime, total, freeb);
    return 0;
}

int cmd_features(int argc, char **argv) {
    if (argc != 1) return ctl_usage(argv[0]);
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    util_get_system_features(text);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "feature_set", text);
        cJSON *features = cJSON_AddObjectToObject(doc, "features");
#define CTL_JSON_FEATURE(bit, name, inverted) cJSON_AddBoolToObject(features, #name, name() != 0);
        CMDLIB_SYSTEM_FEATURES(CTL_JSON_FEATURE)
#undef CTL_JSON_FEATURE
        cJSON_AddBoolToObject(features, "util_does_system_support_https", util_does_system_support_https() != 0);
        cJSON_AddBoolToObject(doc, "wifi", util_has_wifi_for_this_device() != 0);
        cJSON_AddBoolToObject(doc, "clat", util_is_clat_supported() != 0);
        return ctl_emit(doc, 0);
    }
    printf("feature set %s\n", text);
#define CTL_PRINT_FEATURE(bit, name, inverted) printf("%2d %d %s\n", bit, name(), #name);
    CMDLIB_SYSTEM_FEATURES(CTL_PRINT_FEATURE)
#undef CTL_PRINT_FEATURE
    printf("%2d %d util_does_system_support_https\n", CMDLIB_FEATURE_HTTPS_BIT,
           util_does_system_support_https());
    printf("wifi %d, clat %d\n", util_has_wifi_for_this_device(), util_is_clat_supported());
    return 0;
}

int cmd_log(int argc, char **argv) {
    if (argc != 3 || strcmp(argv[1], "flags") != 0) return ctl_usage(argv[0]);
    BigValue mask{};
    if (strncasecmp(argv[2], "all", 3) != 0 && util_get_big_value_from_bits(argv[2], &mask) != 0)
        fprintf(stderr, "cmdlibctl: %s is not a bit-set text (e.g. 00000005): all flags off\n",
                argv[2]);
    util_recreate_debug_flag_files(argv[2]);
    int count = 0;
    const LogConfigInfo *rows = util_get_log_config_info(&count);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *flags = cJSON_AddObjectToObject(doc, "flags");
        for (int i = 0; i < count; ++i)
            cJSON_AddBoolToObject(flags, rows[i].application_name,
                                  util_should_debug_log_info(rows[i].flag_file_name) != 0);
        return ctl_emit(doc, 0);
    }
    for (int i = 0; i < count; ++i)
        printf("%-12s %s\n", rows[i].application_name,
               util_should_debug_log_info(rows[i].flag_file_name) ? "on" : "off");
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("sysinfo", "[VERSION_FILE]", cmd_sysinfo);
CMDLIBCTL_COMMAND("features", "", cmd_features);
CMDLIBCTL_COMMAND("log", "flags MASK", cmd_log);
