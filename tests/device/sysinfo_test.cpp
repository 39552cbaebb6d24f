// System record, features, logging and Wi-Fi survey on the simulated device:
// the fixed paths, the scripts written and the commands run.
#include <cjson/cJSON.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/log.h"
#include "device.h"

using namespace devtest;

namespace {

class Sysinfo : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        memset(&info, 0, sizeof info);
    }
    InfoStruct info;
};

bool has_call(const std::string &tool, const std::string &line) {
    auto c = calls(tool);
    return std::find(c.begin(), c.end(), line) != c.end();
}

TEST_F(Sysinfo, SettingsFileAtItsFixedPath) {
    write_file("/tmp/cmdlib/rc.system.conf",
               "export AP_SSID=\"lab net\"\nexport PWD=secret\n");
    ASSERT_EQ(util_server_read_wifi_info(&info), 0);
    EXPECT_STREQ(info.AP_SSID, "lab net");
    EXPECT_STREQ(info.PSK_KEY, "secret");
    remove_all("/tmp/cmdlib/rc.system.conf");
    EXPECT_EQ(util_server_read_wifi_info(&info), -1);
}

TEST_F(Sysinfo, ConfigParametersFromAFreshExport) {
    mdlcfg_set("AP_SSID", "exported");
    mdlcfg_set("QX_DNS_PRIMARY", "9.9.9.9");
    ASSERT_EQ(util_read_config_parameters(&info), 0);
    EXPECT_STREQ(info.AP_SSID, "exported");
    EXPECT_STREQ(info.QX_DNS_PRIMARY, "9.9.9.9");
    EXPECT_TRUE(has_call("mdlcfg", "mdlcfg -e"));
    // The temporary export is gone.
    EXPECT_EQ(sh("ls /tmp/.cmdlib_tmp_* 2>/dev/null | grep -q ."), 1);
}

TEST_F(Sysinfo, ModuleFileAndVersionFile) {
    EXPECT_EQ(util_load_module_info(&info), 0);
    write_file("/tmp/cmdlib/.moduleinfo", "i:860000000000001\n");
    ASSERT_EQ(util_load_module_info(&info), 1);
    EXPECT_STREQ(info.imei, "860000000000001");
    write_file("/tmp/version", "version:2.1.0\n");
    ASSERT_EQ(util_read_version_info("/tmp/version", &info), 0);
    EXPECT_STREQ(info.version, "2.1.0");
    EXPECT_EQ(util_read_version_info("/tmp/no-version", &info), -1);
}

TEST_F(Sysinfo, StatusIndication) {
    int sim = -7, act = -7, data = -7;
    EXPECT_EQ(util_read_status_ind(&sim, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, &act, &data),
              -1);
    EXPECT_EQ(sim, -7);
    write_file("/tmp/cmdlib/.system_signal_sim_status_ind", "1 0 0 25 0 1 1 1 7 1 5 5\n");
    EXPECT_EQ(util_read_status_ind(&sim, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, &act, &data),
              0);
    EXPECT_EQ(sim, 1);
    EXPECT_EQ(act, 7);
    EXPECT_EQ(data, 1);
}

TEST_F(Sysinfo, RadioCacheIsPublishedWhole) {
    strcpy(info.QXRSRP, "-95");
    strcpy(info.CQI, "12");
    util_cache_module_status_info(&info);
    EXPECT_EQ(read_file("/tmp/cmdlib/.cached_lte_module_status"), "\n+QXRSRP: -95\n+QXCQI: 12\n");
    EXPECT_EQ(read_file("/tmp/cmdlib/.new_cached_lte_module_status"),
              "\n+QXRSRP: -95\n+QXCQI: 12\n");
}

TEST_F(Sysinfo, UptimeAndMemory) {
    write_file("/tmp/fake_uptime", "90061.52 1.00\n");
    ASSERT_TRUE(bind_dir("/tmp/fake_uptime", "/proc/uptime"));
    char up[UTIL_UPTIME_TEXT_SIZE];
    EXPECT_STREQ(util_read_system_uptime(up), "90061.52");
    util_write_exception_log("dialtool", "modem lost");
    EXPECT_EQ(read_file("/tmp/cmdlib/.reboot_module_log"),
              "dialtool\t\t1 day 1 hour 1 min 1 sec\t\tmodem lost\n");
    write_file("/tmp/fake_uptime", std::string(200, '9') + " 1\n");
    EXPECT_EQ(std::string(util_read_system_uptime(up)), std::string(31, '9'));
    write_file("/tmp/fake_uptime", "");
    EXPECT_STREQ(util_read_system_uptime(up), "");
    EXPECT_TRUE(unbind("/proc/uptime"));

    char total[UTIL_MEMINFO_TEXT_SIZE], freeb[UTIL_MEMINFO_TEXT_SIZE];
    ASSERT_EQ(util_read_meminfo(total, freeb), 1);
    EXPECT_NE(strstr(total, " kB"), nullptr);
    EXPECT_NE(strstr(freeb, " kB"), nullptr);
}

TEST_F(Sysinfo, SyncModuleInfo) {
    write_file("/tmp/cmdlib/.moduleinfo", "imei:1\n");
    write_file("/tmp/cmdlib/.src_tmp_config_file.conf", "abc");
    EXPECT_EQ(util_sync_module_info("lo"), 1);
    std::string out = read_file("/tmp/cmdlib/.moduleinfo2");
    EXPECT_EQ(out.rfind("imei:1\n", 0), 0u) << out;
    EXPECT_NE(out.find("\nwanRxBytes:"), std::string::npos) << out;
    EXPECT_NE(out.find("\nwanTxPackets:"), std::string::npos) << out;
    // md5 of "abc"
    EXPECT_NE(out.find("\nConfigMD5:900150983cd24fb0d6963f7d28e17f72\n"), std::string::npos) << out;
    EXPECT_EQ(util_sync_module_info("nosuchif0"), 0);
}

TEST_F(Sysinfo, RebootReasonRecord) {
    sh("mkdir -p /data");
    std::string reason(100, 'r');
    ASSERT_EQ(util_does_system_record_reboot_reason(reason.c_str()), 0);
    std::string rec = read_file("/data/.reboot_reason_info");
    ASSERT_EQ(rec.size(), 72u);
    EXPECT_EQ(std::string(rec.c_str() + 8), std::string(62, 'r'));
    EXPECT_EQ(rec[70], '\0');
    EXPECT_EQ(rec[71], '\0');
    time_t t;
    memcpy(&t, rec.data(), sizeof t);
    EXPECT_NEAR(static_cast<double>(t), static_cast<double>(time(nullptr)), 5.0);
}

TEST_F(Sysinfo, ChangePasswordScript) {
    // A user that does not exist: passwd refuses, nothing is changed.
    EXPECT_EQ(util_chang_root_passwd("nosuchuser1", "abc"), -3);
    std::string script = read_file("/tmp/ssh_chang_passwd.sh");
    EXPECT_EQ(script,
              "#!/bin/sh\nif [ $# -eq 2 ]\nthen\npasswd $1 << EOF\n$2\n$2\nEOF\nelse\n"
              "passwd << EOF\n$1\n$1\nEOF\nfi\n");
}

TEST_F(Sysinfo, DebugFlagFiles) {
    util_recreate_debug_flag_files("00000005");
    EXPECT_TRUE(file_exists(log_configs[0].flag_file_name));
    EXPECT_FALSE(file_exists(log_configs[1].flag_file_name));
    EXPECT_TRUE(file_exists(log_configs[2].flag_file_name));
    EXPECT_FALSE(file_exists(log_configs[3].flag_file_name));
    util_recreate_debug_flag_files("All");
    for (const LogConfigInfo &row : log_configs) EXPECT_TRUE(file_exists(row.flag_file_name));
    util_recreate_debug_flag_files("0");
    for (const LogConfigInfo &row : log_configs) EXPECT_FALSE(file_exists(row.flag_file_name));
}

TEST_F(Sysinfo, DeviceFacts) {
    remove_all("/tmp/cmdlib/.display_wifi_settings_page");
    EXPECT_EQ(util_has_wifi_for_this_device(), 0);
    write_file("/tmp/cmdlib/.display_wifi_settings_page", "");
    EXPECT_EQ(util_has_wifi_for_this_device(), 1);
    EXPECT_EQ(util_check_device_factory_mac_info(), file_exists("/productinfo/mac") ? 0 : 1);
    EXPECT_EQ(util_check_device_factory_imei_info(), 1);  // no factory data until it is written
    write_file("/productinfo/imei", "867530012345678\n");
    EXPECT_EQ(util_check_device_factory_imei_info(), 0);
    remove_all("/productinfo/imei");
}

const char *kSurvey =
    "\nNo  Ch  SSID                             BSSID               Security\n"
    "1   6   lab                              aa:bb:cc:dd:ee:01   WPA2PSK/AES\n"
    "2   6   bcast                            FF:FF:FF:FF:FF:FF   NONE\n";

TEST_F(Sysinfo, WifiSurveyWithOneRadio) {
    remove_all("/tmp/wifi_scan.sh");
    mdlcfg_set("USR_WLAN2G_SWITCH_0", "1");
    mdlcfg_set("USR_WLAN5G_SWITCH_0", "0");
    set_answer("iwpriv", kSurvey);
    cJSON *arr = cJSON_CreateArray();
    ASSERT_EQ(fibocom_t750_add_wifi_info_into_json(arr), 0);
    ASSERT_EQ(cJSON_GetArraySize(arr), 1);
    EXPECT_STREQ(cJSON_GetObjectItem(cJSON_GetArrayItem(arr, 0), "macAddress")->valuestring,
                 "aa:bb:cc:dd:ee:01");
    cJSON_Delete(arr);
    EXPECT_EQ(calls("iwpriv"),
              (std::vector<std::string>{"iwpriv ra0 set SiteSurvey=", "iwpriv ra0 get_site_survey"}));
    EXPECT_EQ(sh("test -x /tmp/wifi_scan.sh"), 0);
    EXPECT_EQ(read_file("/tmp/wifi_scan.sh").rfind("#!/bin/sh\n", 0), 0u);
}

TEST_F(Sysinfo, WifiSurveyWithBothRadiosOff) {
    write_file("/tmp/wifi_aps", "1   6   old                              aa:bb:cc:dd:ee:09\n");
    mdlcfg_set("USR_WLAN2G_SWITCH_0", "0");
    mdlcfg_set("USR_WLAN5G_SWITCH_0", "0");
    cJSON *arr = cJSON_CreateArray();
    EXPECT_EQ(fibocom_t750_add_wifi_info_into_json(arr), -1);
    EXPECT_EQ(cJSON_GetArraySize(arr), 0);
    cJSON_Delete(arr);
    EXPECT_FALSE(file_exists("/tmp/wifi_aps"));
    EXPECT_TRUE(calls("iwpriv").empty());
}

}  // namespace
