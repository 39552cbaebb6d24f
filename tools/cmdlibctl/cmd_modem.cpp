// Modem views: LTE status page, band maps, network modes, AT commands, SIM
// state and signal levels.
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_band.h"
#include "cmdlib/cmdlib_module.h"
#include "cmdlib/cmdlib_signal.h"
#include "cmdlib/sim.h"
#include "cmdlibctl.h"

namespace {

struct RadioField {
    const char *name;
    size_t offset;
    size_t width;
};

// The radio measurements of the record (group 11).
const RadioField kRadio[] = {
#define CTL_RADIO(group, name, width, bit) {#name, offsetof(InfoStruct, name), (group) == 11 ? (width) : 0},
    CMDLIB_INFO_TEXT_FIELDS(CTL_RADIO)
#undef CTL_RADIO
};

// One "+NAME: value" line of the module (or of the status cache) into the
// radio field NAME, QX-prefixed or not ("+QXDL_MCS" fills DL_MCS).
void take_line(InfoStruct *info, char *line) {
    if (line[0] != '+') return;
    char *colon = strchr(line, ':');
    if (!colon) return;
    *colon = '\0';
    const char *name = line + 1;
    char *value = colon + 1;
    while (*value == ' ') ++value;
    value[strcspn(value, "\r\n")] = '\0';
    for (const RadioField &f : kRadio) {
        if (f.width == 0) continue;
        if (strcmp(f.name, name) == 0 || (strncmp(name, "QX", 2) == 0 && strcmp(f.name, name + 2) == 0)) {
            char *dst = reinterpret_cast<char *>(info) + f.offset;
            snprintf(dst, f.width, "%s", value);
            return;
        }
    }
}

void take_text(InfoStruct *info, char *text) {
    for (char *line = strtok(text, "\n"); line; line = strtok(nullptr, "\n")) take_line(info, line);
}

int lte(int argc, char **argv) {
    if (argc < 2 || strcmp(argv[1], "status") != 0) return ctl_usage("lte");
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    static char text[4096];
    const char *source = "/tmp/cmdlib/.cached_lte_module_status";
    FILE *fp = fopen(source, "r");
    if (fp) {
        size_t n = fread(text, 1, sizeof text - 1, fp);
        text[n] = '\0';
        fclose(fp);
    } else {
        // No cache from the dial tool: ask the module.
        source = "AT channel";
        util_send_at_commands(util_get_at_to_query_lte_status(), text, sizeof text, 1);
    }
    char parsed[64];
    char *answer = text[0] ? text : nullptr;
    int r = util_parse_lte_status(answer, parsed);
    int sim_present = cmd_sim_exist();
    take_text(&info, text);
    static char list[UTIL_LTE_STATUS_LIST_SIZE];
    list[0] = '\0';
    util_generate_lte_status_response_result(&info, list);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddBoolToObject(doc, "sim", sim_present != 0);
        cJSON_AddNumberToObject(doc, "parse_result", r);
        cJSON_AddStringToObject(doc, "source", source);
        ctl_add_pairs(doc, "status", list);
        return ctl_emit(doc, 0);
    }
    printf("sim: %d   status parse: %d   source: %s\n", sim_present, r, source);
    for (char *entry = strtok(list, "$"); entry; entry = strtok(nullptr, "$")) {
        char *at = strchr(entry, '@');
        if (at) *at = '\0';
        printf("  %-20s %s\n", entry, at ? at + 1 : "");
    }
    return 0;
}

int bands(int argc, char **argv) {
    if (argc < 2) return ctl_usage("bands");
    char names[UTIL_BAND_NAMES_SIZE];
    if (util_get_all_supported_band_names(argv[1], names) != 0) return 1;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "map", argv[1]);
        ctl_add_pairs(doc, "bands", names);
        cJSON *queries = cJSON_AddObjectToObject(doc, "queries");
        cJSON_AddStringToObject(queries, "used", util_get_at_to_query_current_used_band());
        cJSON_AddStringToObject(queries, "all", util_get_at_to_query_all_supported_band());
        cJSON_AddStringToObject(queries, "enabled", util_get_at_to_query_current_supported_band());
        cJSON_AddBoolToObject(doc, "universal_lock", util_is_universal_lock_band_supported() != 0);
        return ctl_emit(doc, 0);
    }
    for (char *entry = strtok(names, "$"); entry; entry = strtok(nullptr, "$")) {
        char *at = strchr(entry, '@');
        if (at) *at = '\0';
        printf("%5s  %s\n", entry, at ? at + 1 : "");
    }
    printf("queries: used \"%s\"  all \"%s\"  enabled \"%s\"  universal lock: %d\n",
           util_get_at_to_query_current_used_band(), util_get_at_to_query_all_supported_band(),
           util_get_at_to_query_current_supported_band(), util_is_universal_lock_band_supported());
    return 0;
}

int modes(int argc, char **argv) {
    (void)argc;
    (void)argv;
    char list[UTIL_NETWORK_MODE_LIST_SIZE];
    util_get_supported_network_mode_for_this_module(list);
    cJSON *doc = ctl_json() ? cJSON_CreateObject() : nullptr;
    cJSON *rows = doc ? cJSON_AddArrayToObject(doc, "modes") : nullptr;
    if (!doc) printf("setting module  name\n");
    for (char *entry = strtok(list, "$"); entry; entry = strtok(nullptr, "$")) {
        char *at = strchr(entry, '@');
        if (!at) continue;
        *at = '\0';
        int setting = static_cast<int>(strtol(entry, nullptr, 10));
        int module = util_get_real_network_mode_from_settings(setting);
        if (!doc) {
            printf("%7s %6d  %s\n", entry, module, at + 1);
            continue;
        }
        cJSON *row = cJSON_CreateObject();
        cJSON_AddNumberToObject(row, "setting", setting);
        cJSON_AddNumberToObject(row, "module", module);
        cJSON_AddStringToObject(row, "name", at + 1);
        cJSON_AddItemToArray(rows, row);
    }
    return doc ? ctl_emit(doc, 0) : 0;
}

int at(int argc, char **argv) {
    if (argc < 2) return ctl_usage("at");
    static char response[4096];
    util_send_at_commands(argv[1], response, sizeof response, 1);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "command", argv[1]);
        ctl_add_text(doc, "response", response);
        return ctl_emit(doc, response[0] ? 0 : 1);
    }
    if (!response[0]) {
        fprintf(stderr, "at: no answer\n");
        return 1;
    }
    fputs(response, stdout);
    if (response[strlen(response) - 1] != '\n') putchar('\n');
    return 0;
}

int sim(int, char **) {
    int dial = 0, quality = 0;
    int r = cmd_get_dial_status_and_signal_quality(&dial, &quality);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddBoolToObject(doc, "present", cmd_sim_exist() != 0);
        cJSON_AddBoolToObject(doc, "need_pin", cmd_sim_need_pin() != 0);
        cJSON_AddBoolToObject(doc, "need_puk", cmd_sim_need_puk() != 0);
        // Both unknown (null) when the status file is short or missing.
        if (r == 0) {
            cJSON_AddBoolToObject(doc, "registered_home", dial != 0);
            cJSON_AddNumberToObject(doc, "signal_quality", quality);
        } else {
            cJSON_AddNullToObject(doc, "registered_home");
            cJSON_AddNullToObject(doc, "signal_quality");
        }
        return ctl_emit(doc, 0);
    }
    printf("present: %d\nneed pin: %d\nneed puk: %d\n", cmd_sim_exist(), cmd_sim_need_pin(),
           cmd_sim_need_puk());
    if (r == 0)
        printf("registered (home): %d\nsignal quality: %d\n", dial, quality);
    else
        printf("dial status: unknown (status file short or missing)\n");
    return 0;
}

int signal(int argc, char **argv) {
    if (argc < 2) return ctl_usage("signal");
    const char *schema = argc > 2 ? argv[2] : nullptr;
    int rsrp = static_cast<int>(strtol(argv[1], nullptr, 10));
    int level = util_signal_get_level_by_4g_rsrp(schema, rsrp);
    int m[5];
    util_get_min_lte_rsrp_values_for_signal_level(&m[0], &m[1], &m[2], &m[3], &m[4]);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddNumberToObject(doc, "rsrp", rsrp);
        cJSON_AddStringToObject(doc, "schema", schema ? schema : "cmcc5lvl");
        cJSON_AddNumberToObject(doc, "level", level);
        cJSON_AddItemToObject(doc, "level_minima", cJSON_CreateIntArray(m, 5));
        return ctl_emit(doc, 0);
    }
    printf("level %d (%s)\n", level, schema ? schema : "cmcc5lvl");
    printf("level minima: %d %d %d %d %d\n", m[0], m[1], m[2], m[3], m[4]);
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("lte", "status", lte);
CMDLIBCTL_COMMAND("bands", "MAP   (band bit map text, e.g. 00000085)", bands);
CMDLIBCTL_COMMAND("modes", "", modes);
CMDLIBCTL_COMMAND("at", "COMMAND", at);
CMDLIBCTL_COMMAND("sim", "", sim);
CMDLIBCTL_COMMAND("signal", "RSRP [SCHEMA]", signal);
