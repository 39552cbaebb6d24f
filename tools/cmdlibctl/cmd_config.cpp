// The configuration store seen from the command line: single keys and the
// whole running configuration, packed-file checks and the change test.
#include <stdio.h>
#include <string.h>

#include "cmdlib/cmdlib_config.h"
#include "cmdlibctl.h"

namespace {

int config_get(int argc, char **argv) {
    if (argc < 2 || argc > 3) return ctl_usage("config");
    char value[CONFIG_VALUE_SIZE];
    util_get_only_one_config(argc == 3 ? argv[2] : CMDLIB_SYSTEM_CONFIG_FILE, argv[1], value);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "key", argv[1]);
        ctl_add_text(doc, "value", value);
        return ctl_emit(doc, value[0] ? 0 : 1);
    }
    // Assignments without a value are never stored: "" means not set.
    if (!value[0]) {
        fprintf(stderr, "cmdlibctl: %s is not set\n", argv[1]);
        return 1;
    }
    printf("%s\n", value);
    return 0;
}

int config_dump(int argc, char **argv) {
    if (argc > 2) return ctl_usage("config");
    const char *file = argc == 2 ? argv[1] : CMDLIB_SYSTEM_CONFIG_FILE;
    static ConfigKeyValuePair pairs[SYSTEM_CONFIGS_CAPACITY];
    int n = util_config_read_specified_fields(file, nullptr, 0, pairs, SYSTEM_CONFIGS_CAPACITY);
    if (n < 0) {
        fprintf(stderr, "cmdlibctl: cannot read %s\n", file);
        return 1;
    }
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "file", file);
        cJSON *settings = cJSON_AddObjectToObject(doc, "settings");
        for (int i = 0; i < n; ++i) cJSON_AddStringToObject(settings, pairs[i].key, pairs[i].value);
        return ctl_emit(doc, 0);
    }
    for (int i = 0; i < n; ++i) printf("%s=%s\n", pairs[i].key, pairs[i].value);
    return 0;
}

int config_check(int argc, char **argv) {
    if (argc < 2 || argc > 3) return ctl_usage("config");
    // The check prints its own message on failure.
    int rc = util_check_if_config_file_is_valid(argv[1], argc == 3 ? argv[2] : nullptr, 1);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "file", argv[1]);
        cJSON_AddBoolToObject(doc, "valid", rc == 0);
        cJSON_AddNumberToObject(doc, "result", rc);
        return ctl_emit(doc, rc);
    }
    if (rc == 0) printf("valid\n");
    return rc;
}

int config_changed(int argc, char **argv) {
    bool apply = argc == 2 && strcmp(argv[1], "--apply") == 0;
    if (argc > 2 || (argc == 2 && !apply)) return ctl_usage("config");
    bool changed = util_check_if_config_file_work(apply ? 1 : 0) != 0;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddBoolToObject(doc, "changed", changed);
        cJSON_AddBoolToObject(doc, "applied", apply);
        return ctl_emit(doc, 0);
    }
    printf("%s\n", changed ? "changed" : "unchanged");
    return 0;
}

int cmd_config(int argc, char **argv) {
    if (argc < 2) return ctl_usage(argv[0]);
    const char *sub = argv[1];
    if (strcmp(sub, "get") == 0) return config_get(argc - 1, argv + 1);
    if (strcmp(sub, "dump") == 0) return config_dump(argc - 1, argv + 1);
    if (strcmp(sub, "check") == 0) return config_check(argc - 1, argv + 1);
    if (strcmp(sub, "changed") == 0) return config_changed(argc - 1, argv + 1);
    return ctl_usage(argv[0]);
}

}  // namespace

CMDLIBCTL_COMMAND("config",
                  "get KEY [FILE] | dump [FILE] | check PACKED_FILE [SCRIPT_OUT] | changed [--apply]"
                  "  (settings of the running configuration or of an export)",
                  cmd_config);
