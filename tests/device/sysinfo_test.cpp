// System record, features, logging and Wi-Fi survey on the simulated device:
// the fixed paths, the scripts written and the commands run.  How each file
// is parsed is tested on text; here, that the right file is read or written.
#include <cjson/cJSON.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

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

TEST_F(Sysinfo, RecordFilesAtTheirFixedPaths) {
    int sim = -7, act = -7, data = -7;
    EXPECT_EQ(util_server_read_wifi_info(&info), -1);
    EXPECT_EQ(util_load_module_info(&info), 0);
    EXPECT_EQ(util_read_status_ind(&sim, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &act, &data), -1);
    EXPECT_EQ(sim, -7);
    write_file("/tmp/cmdlib/rc.system.conf", "export AP_SSID=\"lab net\"\nexport PWD=secret\n");
    write_file("/tmp/cmdlib/.moduleinfo", "i:860000000000001\n");
    write_file("/tmp/cmdlib/.system_signal_sim_status_ind", "1 0 0 25 0 1 1 1 7 1 5 5\n");
    ASSERT_EQ(util_server_read_wifi_info(&info), 0);
    ASSERT_EQ(util_load_module_info(&info), 1);
    EXPECT_EQ(std::string(info.AP_SSID) + "|" + info.PSK_KEY + "|" + info.imei, "lab net|secret|860000000000001");
    EXPECT_EQ(util_read_status_ind(&sim, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &act, &data), 0);
    EXPECT_EQ((std::vector<int>{sim, act, data}), (std::vector<int>{1, 7, 1}));

    // a fresh export of the running configuration, its scratch file removed
    mdlcfg_set("QX_DNS_PRIMARY", "9.9.9.9");
    ASSERT_EQ(util_read_config_parameters(&info), 0);
    EXPECT_STREQ(info.QX_DNS_PRIMARY, "9.9.9.9");
    EXPECT_EQ(calls("mdlcfg"), (std::vector<std::string>{"mdlcfg -e"}));
    EXPECT_EQ(sh("ls /tmp/.cmdlib_tmp_* 2>/dev/null | grep -q ."), 1);
    write_file("/tmp/version", "version:2.1.0\n");
    ASSERT_EQ(util_read_version_info("/tmp/version", &info), 0);
    EXPECT_STREQ(info.version, "2.1.0");
    EXPECT_EQ(util_read_version_info("/tmp/no-version", &info), -1);

    // the radio cache is published whole under both names
    strcpy(info.QXRSRP, "-95");
    strcpy(info.CQI, "12");
    util_cache_module_status_info(&info);
    EXPECT_EQ(read_file("/tmp/cmdlib/.cached_lte_module_status") + read_file("/tmp/cmdlib/.new_cached_lte_module_status"),
              "\n+QXRSRP: -95\n+QXCQI: 12\n\n+QXRSRP: -95\n+QXCQI: 12\n");
}

TEST_F(Sysinfo, UptimeMemoryAndTheExceptionLog) {
    write_file("/tmp/fake_uptime", "90061.52 1.00\n");
    ASSERT_TRUE(bind_dir("/tmp/fake_uptime", "/proc/uptime"));
    char up[UTIL_UPTIME_TEXT_SIZE];
    EXPECT_STREQ(util_read_system_uptime(up), "90061.52");
    util_write_exception_log("dialtool", "modem lost");
    EXPECT_EQ(read_file("/tmp/cmdlib/.reboot_module_log"), "dialtool\t\t1 day 1 hour 1 min 1 sec\t\tmodem lost\n");
    write_file("/tmp/fake_uptime", std::string(200, '9') + " 1\n");
    EXPECT_EQ(std::string(util_read_system_uptime(up)), std::string(31, '9'));
    write_file("/tmp/fake_uptime", "");
    EXPECT_STREQ(util_read_system_uptime(up), "");
    EXPECT_TRUE(unbind("/proc/uptime"));
    char total[UTIL_MEMINFO_TEXT_SIZE], freeb[UTIL_MEMINFO_TEXT_SIZE];
    ASSERT_EQ(util_read_meminfo(total, freeb), 1);
    EXPECT_TRUE(strstr(total, " kB") && strstr(freeb, " kB")) << total << "|" << freeb;
}

TEST_F(Sysinfo, SyncModuleInfo) {
    write_file("/tmp/cmdlib/.moduleinfo", "imei:1\n");
    write_file("/tmp/cmdlib/.src_tmp_config_file.conf", "abc");
    EXPECT_EQ(util_sync_module_info("lo"), 1);
    std::string out = read_file("/tmp/cmdlib/.moduleinfo2");
    EXPECT_EQ(out.rfind("imei:1\n", 0), 0u) << out;
    for (const char *line : {"\nwanRxBytes:", "\nwanTxPackets:", "\nConfigMD5:900150983cd24fb0d6963f7d28e17f72\n"})  // md5 of "abc"
        EXPECT_NE(out.find(line), std::string::npos) << line << " in " << out;
    EXPECT_EQ(util_sync_module_info("nosuchif0"), 0);
}

TEST_F(Sysinfo, RebootReasonPasswordScriptAndFlags) {
    std::string reason(100, 'r');
    ASSERT_EQ(util_does_system_record_reboot_reason(reason.c_str()), 0);
    std::string rec = read_file("/data/.reboot_reason_info");
    ASSERT_EQ(rec.size(), 72u);  // the time, then the reason cut to 62 and two NULs
    EXPECT_EQ(rec.substr(8), std::string(62, 'r') + std::string(2, '\0'));
    time_t t;
    memcpy(&t, rec.data(), sizeof t);
    EXPECT_NEAR(static_cast<double>(t), static_cast<double>(time(nullptr)), 5.0);

    // a user that does not exist: passwd refuses, nothing is changed
    EXPECT_EQ(util_chang_root_passwd("nosuchuser1", "abc"), -3);
    EXPECT_EQ(read_file("/tmp/ssh_chang_passwd.sh"),
              "#!/bin/sh\nif [ $# -eq 2 ]\nthen\npasswd $1 << EOF\n$2\n$2\nEOF\nelse\npasswd << EOF\n$1\n$1\nEOF\nfi\n");

    auto flags = [] {
        std::string out;
        for (const LogConfigInfo &row : log_configs) out += file_exists(row.flag_file_name) ? "1" : "0";
        return out;
    };
    for (const auto &[bits, want] : {std::pair<const char *, const char *>{"00000005", "1010"}, {"All", "1111"}, {"0", "0000"}}) {
        util_recreate_debug_flag_files(bits);
        EXPECT_EQ(flags(), want) << bits;
    }

    EXPECT_EQ(util_has_wifi_for_this_device(), 0);
    write_file("/tmp/cmdlib/.display_wifi_settings_page", "");
    EXPECT_EQ(util_has_wifi_for_this_device(), 1);
    EXPECT_EQ(util_check_device_factory_mac_info(), file_exists("/productinfo/mac") ? 0 : 1);
    EXPECT_EQ(util_check_device_factory_imei_info(), 1);  // no factory data until it is written
    write_file("/productinfo/imei", "867530012345678\n");
    EXPECT_EQ(util_check_device_factory_imei_info(), 0);
    remove_all("/productinfo/imei");
}

TEST_F(Sysinfo, WifiSurvey) {
    // one radio on: the scan script, two iwpriv calls, the valid BSSIDs
    mdlcfg_set("USR_WLAN2G_SWITCH_0", "1");
    mdlcfg_set("USR_WLAN5G_SWITCH_0", "0");
    set_answer("iwpriv", "\nNo  Ch  SSID                             BSSID               Security\n"
                         "1   6   lab                              aa:bb:cc:dd:ee:01   WPA2PSK/AES\n"
                         "2   6   bcast                            FF:FF:FF:FF:FF:FF   NONE\n");
    cJSON *arr = cJSON_CreateArray();
    ASSERT_EQ(fibocom_t750_add_wifi_info_into_json(arr), 0);
    char *text = cJSON_PrintUnformatted(arr);
    EXPECT_STREQ(text, "[{\"macAddress\":\"aa:bb:cc:dd:ee:01\"}]");
    free(text);
    cJSON_Delete(arr);
    EXPECT_EQ(calls("iwpriv"), (std::vector<std::string>{"iwpriv ra0 set SiteSurvey=", "iwpriv ra0 get_site_survey"}));
    EXPECT_EQ(sh("test -x /tmp/wifi_scan.sh"), 0);
    EXPECT_EQ(read_file("/tmp/wifi_scan.sh").rfind("#!/bin/sh\n", 0), 0u);

    // both off: an old result is removed and nothing runs
    reset_device_state();
    write_file("/tmp/wifi_aps", "1   6   old                              aa:bb:cc:dd:ee:09\n");
    mdlcfg_set("USR_WLAN2G_SWITCH_0", "0");
    mdlcfg_set("USR_WLAN5G_SWITCH_0", "0");
    arr = cJSON_CreateArray();
    EXPECT_EQ(fibocom_t750_add_wifi_info_into_json(arr), -1);
    EXPECT_EQ(cJSON_GetArraySize(arr), 0);
    cJSON_Delete(arr);
    EXPECT_FALSE(file_exists("/tmp/wifi_aps"));
    EXPECT_TRUE(calls("iwpriv").empty());
}

}  // namespace
