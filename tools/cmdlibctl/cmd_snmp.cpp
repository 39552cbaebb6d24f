// cmdlibctl snmp: the SNMP agent's parameters as the library gives them,
// and its write actions.  "snmp get NAME" prints the value alone, so a
// net-snmp "extend" line can serve it (tools/snmp/snmpd-cmdlib.conf).
#include <cjson/cJSON.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cmdlib/cmdlib_snmp.h"
#include "cmdlib/cmdlib_snmp_data.h"
#include "cmdlibctl.h"

namespace {

constexpr int kValueSize = 256;

// The library fills the provider's record from the version and module
// files only: on this product its module-status reader leaves the radio
// fields to the calling process.  cmdlibctl, serving an SNMP manager,
// takes them from the module-status cache the dial tool keeps current.
void fill_radio_fields(InfoStruct *info) {
    struct Label {
        const char *label;
        char *field;
        size_t width;
    };
#define RADIO(name) \
    { "+" #name ": ", info->name, sizeof info->name }
    const Label labels[] = {RADIO(QXRSRP), RADIO(QXRSRQ),    RADIO(QXRSSI),
                            RADIO(QXSINR), RADIO(QXTXPOWER), RADIO(QXPHYCELLID)};
#undef RADIO
    FILE *f = fopen("/tmp/cmdlib/.cached_lte_module_status", "r");
    if (!f) return;
    char line[256];
    while (fgets(line, sizeof line, f)) {
        line[strcspn(line, "\r\n")] = '\0';
        for (const Label &l : labels) {
            size_t n = strlen(l.label);
            if (strncmp(line, l.label, n) == 0) snprintf(l.field, l.width, "%s", line + n);
        }
    }
    fclose(f);
}

cJSON *parameter_json(const char *name, const char *value, int rc) {
    cJSON *o = cJSON_CreateObject();
    cJSON_AddStringToObject(o, "name", name);
    cJSON_AddStringToObject(o, "value", value);
    cJSON_AddNumberToObject(o, "result", rc);
    return o;
}

int list(bool json) {
    cJSON *all = json ? cJSON_CreateObject() : nullptr;
    cJSON *rows = json ? cJSON_AddArrayToObject(all, "parameters") : nullptr;
    for (const GetSnmpData &row : snmp_data_get_specified_parameter_funcs) {
        char value[kValueSize];
        int rc = row.get_func(value, sizeof value);
        if (json)
            cJSON_AddItemToArray(rows, parameter_json(row.snmp_parameter, value, rc));
        else
            printf("%-17s %s\n", row.snmp_parameter, rc == -1 ? "(not readable)" : value);
    }
    if (json) return ctl_emit(all, 0);
    return 0;
}

int get(const char *name, bool json) {
    char value[kValueSize] = "";
    int rc = util_snmp_data_get_specified_parameter(name, value, sizeof value);
    if (json)
        return ctl_emit(parameter_json(name, value, rc), rc == -1 ? 1 : 0);
    if (rc != -1)
        printf("%s\n", value);
    else
        fprintf(stderr, "cmdlibctl snmp: '%s' is not a readable parameter\n", name);
    return rc == -1 ? 1 : 0;
}

// The writable parameters and the setter behind each.
int apply(const char *name, const char *value, bool *known) {
    int number = static_cast<int>(strtol(value, nullptr, 10));
    int size = static_cast<int>(strlen(value)) + 1;
    *known = true;
    if (strcmp(name, "URLFOTA") == 0) return util_snmp_set_fota_url(value, size);
    if (strcmp(name, "FOTASTATUS") == 0) return util_snmp_set_fota_status(value, size);
    if (strcmp(name, "FOTATIMERTRIGGER") == 0) return util_snmp_set_fota_timer_trigger(number);
    if (strcmp(name, "FOTAonBOOT") == 0) return util_snmp_set_fota_on_boot(number);
    if (strcmp(name, "SoftwareReboot") == 0)
        return util_snmp_set_device_info_software_reboot(number);
    if (strcmp(name, "FactoryReset") == 0) return util_snmp_set_device_info_factory_reset(number);
    *known = false;
    return -1;
}

int set(const char *name, const char *value, bool json) {
    bool known = false;
    int rc = apply(name, value, &known);
    if (!known) {
        fprintf(stderr, "cmdlibctl snmp: '%s' is not a writable parameter\n", name);
        return 1;
    }
    if (json) return ctl_emit(parameter_json(name, value, rc), 0);
    printf("%s set, result %d\n", name, rc);
    return 0;
}

// snmp list | get NAME | set NAME VALUE
int run_snmp(int argc, char **argv) {
    const bool json = ctl_json();
    const int i = 1;
    int rest = argc - i;
    util_snmp_data_prepare_to_get_parameters();
    fill_radio_fields(util_snmp_data_get_all_parameters());
    if (rest == 1 && strcmp(argv[i], "list") == 0) return list(json);
    if (rest == 2 && strcmp(argv[i], "get") == 0) return get(argv[i + 1], json);
    if (rest == 3 && strcmp(argv[i], "set") == 0) return set(argv[i + 1], argv[i + 2], json);
    return ctl_usage("snmp");
}

}  // namespace

CMDLIBCTL_COMMAND("snmp", "list | get NAME | set NAME VALUE", run_snmp);
