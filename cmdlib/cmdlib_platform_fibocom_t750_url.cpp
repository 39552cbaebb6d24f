// fibocom_t750 URL interception: a block list becomes the URL-filter rule
// file that the web page's URL-filter message (command 26) would have
// written, so the firewall scripts and the web page see it as their own.
#include <cjson/cJSON.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/platform_json.h"

using namespace cmdlib;

namespace {

// The web page's command number of its URL-filter page.
constexpr int kUrlFilterCmd = 26;

// One rule object: a URL blocked for one address family.
bool add_rule(cJSON *datas, const char *url, const char *ippro) {
    cJSON *rule = cJSON_CreateObject();
    if (!rule) return false;
    bool ok = cJSON_AddBoolToObject(rule, "enableLink", 0) && cJSON_AddStringToObject(rule, "remark", "") &&
              cJSON_AddStringToObject(rule, "ippro", ippro) && cJSON_AddStringToObject(rule, "url", url) &&
              cJSON_AddBoolToObject(rule, "enableRule", 1);
    if (ok && cJSON_AddItemToArray(datas, rule)) return true;
    cJSON_Delete(rule);
    return false;
}

}  // namespace

namespace cmdlib {

char *url_filter_message(const char *const *url, int count) {
    if (!url || count <= 0) return nullptr;
    UniqueJson root(cJSON_CreateObject());
    if (!root) return nullptr;
    cJSON *msg = root.get();
    bool ok = cJSON_AddNumberToObject(msg, "cmd", kUrlFilterCmd) &&
              cJSON_AddStringToObject(msg, "method", "POST") && cJSON_AddBoolToObject(msg, "success", 1);
    cJSON *datas = ok ? cJSON_AddArrayToObject(msg, "datas") : nullptr;
    ok = datas != nullptr;
    // Every URL blocks both address families.
    for (int i = 0; ok && i < count && url[i]; ++i)
        ok = add_rule(datas, url[i], "IPV4") && add_rule(datas, url[i], "IPV6");
    ok = ok && cJSON_AddStringToObject(msg, "token", "") && cJSON_AddStringToObject(msg, "language", "") &&
         cJSON_AddStringToObject(msg, "sessionId", "");
    return ok ? cJSON_PrintUnformatted(msg) : nullptr;
}

}  // namespace cmdlib

extern "C" int fibocom_t750_url_intercept(const char **url, const int count) {
    char *text = url_filter_message(url, count);
    if (!text) return -1;
    if (!util_dir_is_dir_exist(T750_URL_FILTER_DIR)) util_dir_mkdir(T750_URL_FILTER_DIR, 0666);
    int rc = cmd_echo(text, T750_URL_FILTER_FILE);
    cJSON_free(text);
    if (rc != 0) return -1;
    // The factory rule set no longer applies.
    cmd_rm(T750_URL_FILTER_DEFAULT_FILE);
    cmd_rm(T750_URL_FILTER_TMP_DEFAULT_FILE);
    util_sync_file_to_flash(T750_URL_FILTER_FILE);
    return 0;
}
