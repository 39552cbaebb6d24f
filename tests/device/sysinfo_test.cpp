// System record, features, logging and Wi-Fi survey on the simulated device,
// as transcripts in tests/golden/device_sysinfo: the fixed paths, the
// scripts written and the commands run.  How each file is parsed is tested
// on text; here, that the right file is read or written.
#include <cjson/cJSON.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <memory>
#include <string>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/log.h"
#include "device.h"
#include "device_steps.h"

namespace {

using golden::Args;
using golden::show;

class Sysinfo : public DeviceTest {};

// A record that every step fills and reads.
std::unique_ptr<InfoStruct> g_info;

// The reboot reason record: its size, the reason part, and whether the
// time stamp in front is now.
std::string reboot_reason(Args &a) {
    int rc = util_does_system_record_reboot_reason(a[0].c());
    std::string rec = devtest::read_file("/data/.reboot_reason_info");
    time_t t = 0;
    if (rec.size() >= sizeof t) memcpy(&t, rec.data(), sizeof t);
    return show(rc, rec.size()) + " " + golden::escape(rec.substr(std::min(rec.size(), size_t{8}))) +
           (std::abs(static_cast<double>(t - time(nullptr))) < 5 ? " stamped now" : " stamp?");
}

std::string wifi_survey(Args &) {
    cJSON *arr = cJSON_CreateArray();
    int rc = fibocom_t750_add_wifi_info_into_json(arr);
    char *text = cJSON_PrintUnformatted(arr);
    std::string out = show(rc, text);
    free(text);
    cJSON_Delete(arr);
    return out;
}

TEST_F(Sysinfo, Transcripts) {
    g_info = std::make_unique<InfoStruct>();
    memset(g_info.get(), 0, sizeof *g_info);
    InfoStruct *info = g_info.get();
    golden::check("device_sysinfo", golden::calls(devtest::with_device({
        {"wifi_info", [info](Args &) {
             int rc = util_server_read_wifi_info(info);
             return show(rc, info->AP_SSID, info->PSK_KEY);
         }},
        {"module_info", [info](Args &) { return show(util_load_module_info(info), info->imei); }},
        {"status_ind", [](Args &) {
             int sim = -7, act = -7, data = -7;
             int rc = util_read_status_ind(&sim, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &act, &data);
             return show(rc, sim, act, data);
         }},
        {"config_parameters", [info](Args &) { return show(util_read_config_parameters(info), info->QX_DNS_PRIMARY); }},
        {"version", [info](Args &a) { return show(util_read_version_info(a[0].c(), info), info->version); }},
        {"cache_radio", [info](Args &a) {
             snprintf(info->QXRSRP, sizeof info->QXRSRP, "%s", a[0].c());
             snprintf(info->CQI, sizeof info->CQI, "%s", a[1].c());
             return util_cache_module_status_info(info), "done";
         }},
        {"uptime", [](Args &) {
             char up[UTIL_UPTIME_TEXT_SIZE];
             return show(util_read_system_uptime(up));
         }},
        {"exception_log", [](Args &a) { return util_write_exception_log(a[0].c(), a[1].c()), "done"; }},
        {"meminfo_in_kb", [](Args &) {
             char total[UTIL_MEMINFO_TEXT_SIZE], freeb[UTIL_MEMINFO_TEXT_SIZE];
             int rc = util_read_meminfo(total, freeb);
             return show(rc, strstr(total, " kB") != nullptr, strstr(freeb, " kB") != nullptr);
         }},
        {"sync_module", [](Args &a) { return show(util_sync_module_info(a[0].c())); }},
        {"reboot_reason", reboot_reason},
        {"passwd", [](Args &a) { return show(util_chang_root_passwd(a[0].c(), a[1].c())); }},
        {"debug_flags", [](Args &a) {
             util_recreate_debug_flag_files(a[0].c());
             std::string out;
             for (const LogConfigInfo &row : log_configs) out += devtest::file_exists(row.flag_file_name) ? "1" : "0";
             return out;
         }},
        {"has_wifi", [](Args &) { return show(util_has_wifi_for_this_device()); }},
        {"factory_imei", [](Args &) { return show(util_check_device_factory_imei_info()); }},
        {"factory_mac", [](Args &) { return show(util_check_device_factory_mac_info()); }},
        {"wifi_survey", wifi_survey},
    })));
    g_info.reset();
}

}  // namespace
