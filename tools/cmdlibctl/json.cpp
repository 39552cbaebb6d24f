// The JSON side of cmdlibctl: the --json switch and the small builders the
// commands share, so every command prints its object the same way.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "cmdlibctl.h"

namespace {
bool g_json = false;
}  // namespace

bool ctl_json() { return g_json; }
void ctl_set_json(bool on) { g_json = on; }

int ctl_emit(cJSON *doc, int rc) {
    char *text = doc ? cJSON_PrintUnformatted(doc) : nullptr;
    cJSON_Delete(doc);
    if (!text) {
        fprintf(stderr, "cmdlibctl: out of memory for the JSON output\n");
        return 1;
    }
    puts(text);
    fflush(stdout);  // one complete line at a time for readers of a pipe
    cJSON_free(text);
    return rc;
}

cJSON *ctl_add_text(cJSON *obj, const char *key, const char *text, size_t width) {
    size_t n = text ? strnlen(text, width) : 0;
    if (n == 0 || (n == 1 && text[0] == '-')) return cJSON_AddNullToObject(obj, key);
    return cJSON_AddStringToObject(obj, key, std::string(text, n).c_str());
}

cJSON *ctl_add_strings(cJSON *obj, const char *key, const char *const *items, int count) {
    cJSON *array = cJSON_AddArrayToObject(obj, key);
    for (int i = 0; i < count && array; ++i) cJSON_AddItemToArray(array, cJSON_CreateString(items[i]));
    return array;
}

cJSON *ctl_add_pairs(cJSON *obj, const char *key, const char *list) {
    cJSON *pairs = cJSON_AddObjectToObject(obj, key);
    std::string rest = list ? list : "";
    size_t start = 0;
    while (pairs && start < rest.size()) {
        size_t end = rest.find('$', start);
        if (end == std::string::npos) end = rest.size();
        std::string entry = rest.substr(start, end - start);
        start = end + 1;
        if (entry.empty()) continue;
        size_t at = entry.find('@');
        std::string name = entry.substr(0, at);
        std::string value = at == std::string::npos ? "" : entry.substr(at + 1);
        cJSON_AddStringToObject(pairs, name.c_str(), value.c_str());
    }
    return pairs;
}
