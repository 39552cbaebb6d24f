// URL-filter messages: any list of URLs (split at NUL bytes) gives a
// message that cJSON parses back with every URL unchanged, twice.
#include <stddef.h>
#include <stdint.h>

#include <cjson/cJSON.h>

#include <string>
#include <vector>

#include "cmdlib/internal/platform_json.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<std::string> urls(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0)
            urls.emplace_back();
        else
            urls.back() += static_cast<char>(data[i]);
    }
    std::vector<const char *> p;
    p.reserve(urls.size());
    for (const auto &u : urls) p.push_back(u.c_str());
    char *msg = cmdlib::url_filter_message(p.data(), static_cast<int>(p.size()));
    if (!msg) __builtin_trap();
    cJSON *j = cJSON_Parse(msg);
    cJSON_free(msg);
    if (!j) __builtin_trap();
    const cJSON *datas = cJSON_GetObjectItem(j, "datas");
    if (cJSON_GetArraySize(datas) != static_cast<int>(2 * urls.size())) __builtin_trap();
    for (size_t i = 0; i < 2 * urls.size(); ++i) {
        const cJSON *url = cJSON_GetObjectItem(cJSON_GetArrayItem(datas, static_cast<int>(i)), "url");
        if (!cJSON_IsString(url) || urls[i / 2] != url->valuestring) __builtin_trap();
    }
    cJSON_Delete(j);
    return 0;
}
