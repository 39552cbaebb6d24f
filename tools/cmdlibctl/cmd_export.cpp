// The shell's view of the library: the record's configuration as export
// lines, and the macro file the scripts source.  With "--json" each prints
// one JSON object instead.
#include <stdio.h>
#include <string.h>

#include <cjson/cJSON.h>

#include "base/internal/raii.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/shell_export.h"
#include "cmdlibctl.h"

namespace {

// The variables the export sets, in its order, as one object.
cJSON *export_json(InfoStruct *info) {
    cJSON *obj = cJSON_CreateObject();
    for (cmdlib::info_field::Id id : cmdlib::kConfigExportOrder) {
        const cmdlib::InfoFieldDesc &f = cmdlib::kInfoFields[id];
        if (!cmdlib::info_defined_bit(info, f.bit)) continue;
        const char *field = util_get_config_field_value(info, f.name);
        char value[1024];
        snprintf(value, sizeof value, "%.*s", static_cast<int>(strnlen(field, f.width)), field);
        if (id == cmdlib::info_field::PSK_KEY) cJSON_AddStringToObject(obj, "PWD", value);
        cJSON_AddStringToObject(obj, f.name, value);
    }
    return obj;
}

// export [--json] [SETTINGS_FILE]: the record as the settings reader fills
// it from the settings file (the running configuration by default).
int cmd_export(int argc, char **argv) {
    const bool json = ctl_json();
    if (argc > 2) return ctl_usage(argv[0]);
    const char *settings = argc == 2 ? argv[1] : SYSTEM_SETTINGS_FILE;
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    if (util_server_read_wifi_info_ex(settings, &info) != 0) {
        fprintf(stderr, "cmdlibctl: cannot read %s\n", settings);
        return 1;
    }
    if (json) return ctl_emit(export_json(&info), 0);
    util_export_config_info(&info);
    putchar('\n');  // the export ends without one
    return 0;
}

// The macro file read back line by line through the configuration parser.
cJSON *macros_json(const char *path) {
    cmdlib::UniqueFile fp(fopen(path, "r"));
    if (!fp) return nullptr;
    cJSON *obj = cJSON_CreateObject();
    cJSON_AddStringToObject(obj, "file", path);
    cJSON *macros = cJSON_CreateObject();
    int lines = 0;
    char line[512], name[CONFIG_KEY_SIZE], value[256];
    while (fgets(line, sizeof line, fp.get())) {
        if (util_config_parse_config_export_line(line, name, sizeof name, value, sizeof value) != 0)
            continue;
        ++lines;
        // The five names the table holds twice carry the same value twice.
        if (!cJSON_GetObjectItemCaseSensitive(macros, name)) cJSON_AddStringToObject(macros, name, value);
    }
    cJSON_AddNumberToObject(obj, "lines", lines);
    cJSON_AddItemToObject(obj, "macros", macros);
    return obj;
}

// macros [--json] [FILE]: writes the macro file and shows it.
int cmd_macros(int argc, char **argv) {
    const bool json = ctl_json();
    if (argc > 2) return ctl_usage(argv[0]);
    const char *path = argc == 2 && *argv[1] ? argv[1] : ALL_MACRO_EXPORT_DEFINITION_FILE;
    util_export_all_macro_definitions_to_file(path);
    if (json) {
        cJSON *obj = macros_json(path);
        if (!obj) {
            fprintf(stderr, "cmdlibctl: cannot write %s\n", path);
            return 1;
        }
        return ctl_emit(obj, 0);
    }
    cmdlib::UniqueFile fp(fopen(path, "r"));
    if (!fp) {
        fprintf(stderr, "cmdlibctl: cannot write %s\n", path);
        return 1;
    }
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, fp.get())) > 0;) fwrite(buf, 1, n, stdout);
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("export", "[--json] [SETTINGS_FILE]", cmd_export);
CMDLIBCTL_COMMAND("macros", "[--json] [FILE]", cmd_macros);
