// The front and the SNMP provider where they need the device: forwarders
// and the reboot/reset paths through "cmdlibctl front" against the
// simulators (transcripts in tests/golden/front_calls), the SNMP record
// filled from the device's files, the setters against mdlcfg, the FOTA
// trigger against the process table, and the real net-snmp agent serving
// the parameters to snmpget.
// GCC 12 with -fsanitize=address sees std::regex's moved-from states (used
// by device_steps.h) as maybe uninitialised in this file: a false positive.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <stddef.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_front.h"
#include "cmdlib/cmdlib_snmp.h"
#include "cmdlib/cmdlib_snmp_data.h"
#include "cmdlib/mac.h"
#include "device.h"
#include "device_steps.h"

namespace {

using golden::Args;

// "await TOOL|N": until the tool was called N times (background commands);
// "reason": the text of the reboot-reason record; "exists PATH".
golden::Table front_steps() {
    golden::Table t = devtest::with_device({});
    t["await"] = [](Args &a) {
        return devtest::wait_for_calls(a[0], a[1].z()) ? "ok" : "timed out";
    };
    t["reason"] = [](Args &) {
        std::string rec = devtest::read_file(REBOOT_REASON_INFO_FILE);
        if (rec.size() != sizeof(system_latest_reboot_reason_info))
            return std::string("(no record)");
        return golden::show(rec.c_str() +
                            offsetof(system_latest_reboot_reason_info, sys_latest_reboot_reason));
    };
    t["exists"] = [](Args &a) { return devtest::file_exists(a[0]) ? "yes" : "no"; };
    return t;
}

TEST_F(DeviceTest, FrontCallsReachTheProduct) {
    golden::check("front_calls", golden::calls(front_steps()));
}

// ---- SNMP ---------------------------------------------------------------------------

void write_identity_files() {
    devtest::write_file("/version",
                        "type: router\ndevice: M4200X\nversion: 1.0\nmodel_type: CPE\n");
    devtest::write_file("/tmp/cmdlib/.moduleinfo",
                        "imei:867530012345678\nimsi:460011234567890\nmodversion:T750_V1.0.3\n"
                        "CellID:123456\n");
}

std::string get(const char *name) {
    char value[128];
    int rc = util_snmp_data_get_specified_parameter(name, value, sizeof value);
    return std::to_string(rc) + " " + value;
}

// The record is read once per process; the version is read on every call.
TEST_F(DeviceTest, SnmpRecordFilledOnceFromTheDeviceFiles) {
    write_identity_files();
    EXPECT_EQ(get("IMEI"), "0 867530012345678");
    EXPECT_EQ(util_snmp_data_is_initialized(), 1);
    EXPECT_EQ(get("IMSI"), "0 460011234567890");
    EXPECT_EQ(get("EUTRACELLID"), "0 1E240");
    EXPECT_EQ(get("LTEVer"), "0 T750_V1.0.3");
    EXPECT_EQ(get("ModelofCPE"), "0 M4200X");
    EXPECT_EQ(get("TypeofCPE"), "0 CPE");
    EXPECT_EQ(get("SWVer"), "0 M4200X_R1.0");
    EXPECT_EQ(get("RSRP"), "1 ");  // this product's status reader adds no radio values

    devtest::write_file("/tmp/cmdlib/.moduleinfo", "imei:111111111111111\n");
    devtest::write_file("/version", "device: M4200X\nversion: 2.0\n");
    EXPECT_EQ(get("IMEI"), "0 867530012345678");
    EXPECT_EQ(get("SWVer"), "0 M4200X_R2.0");
    EXPECT_TRUE(devtest::calls().empty());
}

TEST_F(DeviceTest, SnmpWanAddresses) {
    EXPECT_EQ(get("IPV4PDP1"), "0 10.64.0.2");
    EXPECT_EQ(get("IPV6PDP1"), "0 2001:db8:64::2");
}

// The FOTA values come from a fresh export on every call.
TEST_F(DeviceTest, SnmpFotaSettingsThroughMdlcfg) {
    EXPECT_EQ(util_snmp_set_fota_on_boot(7), -1);
    EXPECT_EQ(util_snmp_set_fota_timer_trigger(-30), -1);
    EXPECT_EQ(util_snmp_set_fota_status("downloading", 64), -1);
    EXPECT_THAT(devtest::calls("mdlcfg"),
                ::testing::ElementsAre("mdlcfg -a QX_FOTA_ON_BOOT=1", "mdlcfg -c",
                                       "mdlcfg -a QX_FOTA_TIMER_START=-30", "mdlcfg -c",
                                       "mdlcfg -a QX_FOTA_STATUS=downloading", "mdlcfg -c"));
    EXPECT_EQ(util_snmp_get_fota_on_boot(), 1);
    int trigger = 0;
    EXPECT_EQ(util_snmp_get_fota_timer_trigger(&trigger), -1);
    EXPECT_EQ(trigger, -30);
    EXPECT_EQ(get("FOTASTATUS"), "0 downloading");
    EXPECT_EQ(get("FOTAonBOOT"), "0 1");
    EXPECT_EQ(get("FOTATIMERTRIGGER"), "0 -30");

    // A hostile status reaches the store as it is and runs nothing.
    const char *hostile = "a\"b$(touch /tmp/pwned)`touch /tmp/pwned2`\\'c";
    util_snmp_set_fota_status(hostile, 256);
    EXPECT_EQ(devtest::mdlcfg_get("QX_FOTA_STATUS", true), hostile);
    EXPECT_FALSE(devtest::file_exists("/tmp/pwned"));
    EXPECT_FALSE(devtest::file_exists("/tmp/pwned2"));
    EXPECT_EQ(util_snmp_set_fota_status(nullptr, 8), -1);
}

// The download tool is started when none runs, never a second time; an
// unchanged URL is not written again.
TEST_F(DeviceTest, SnmpFotaUrlStartsTheDownloadOnce) {
    devtest::set_answer_delay("qxfotaonsnmp", -1);  // stays running
    const char *url = "http://fota.example.com/fw.img";
    EXPECT_EQ(util_snmp_set_fota_url(url, 128), 0);
    ASSERT_TRUE(devtest::wait_for_calls("qxfotaonsnmp", 1));
    EXPECT_EQ(devtest::mdlcfg_get("QX_FOTA_URL", true), url);
    EXPECT_EQ(get("URLFOTA"), std::string("0 ") + url);

    devtest::clear_calls();
    EXPECT_EQ(util_snmp_set_fota_url(url, 128), 0);
    EXPECT_THAT(devtest::calls(), ::testing::ElementsAre("mdlcfg -e"));
    devtest::sh("killall qxfotaonsnmp");
    ASSERT_TRUE(
        devtest::wait_until([] { return devtest::sh("pidof qxfotaonsnmp >/dev/null") != 0; }));

    // Unchanged URL, nothing running: no write, but the download starts.
    devtest::clear_calls();
    devtest::reset_answers();
    EXPECT_EQ(util_snmp_set_fota_url(url, 128), 0);
    ASSERT_TRUE(devtest::wait_for_calls("qxfotaonsnmp", 1));
    EXPECT_THAT(devtest::calls(),
                ::testing::ElementsAre("mdlcfg -e", std::string("qxfotaonsnmp ") + url));
    EXPECT_EQ(util_snmp_set_fota_url(nullptr, 128), -1);
}

TEST_F(DeviceTest, SnmpRebootAndResetRequests) {
    EXPECT_EQ(util_snmp_set_device_info_software_reboot(0), 0);
    EXPECT_FALSE(devtest::file_exists(SNMP_NEED_TO_REBOOT_FLAG_FILE));
    EXPECT_EQ(util_snmp_set_device_info_software_reboot(1), 0);
    EXPECT_TRUE(devtest::file_exists(SNMP_NEED_TO_REBOOT_FLAG_FILE));

    // The reset path clears the marker and kills what is named "null".
    devtest::write_file(SNMP_RESTORED_DEFAULTS_FLAG_FILE, "");
    devtest::Process victim({"/tmp/bin/null"});  // a stand-in process named "null"
    devtest::clear_calls();
    EXPECT_EQ(util_snmp_set_device_info_factory_reset(0), 0);
    EXPECT_TRUE(devtest::file_exists(SNMP_RESTORED_DEFAULTS_FLAG_FILE));
    EXPECT_EQ(devtest::sh("pidof null >/dev/null"), 0);
    EXPECT_EQ(util_snmp_set_device_info_factory_reset(1), 0);
    EXPECT_FALSE(devtest::file_exists(SNMP_RESTORED_DEFAULTS_FLAG_FILE));
    EXPECT_TRUE(devtest::wait_until([] { return devtest::sh("pidof null >/dev/null") != 0; }));
    EXPECT_TRUE(devtest::calls().empty());  // the update tool itself is not run
}

// The device MAC: the wireless interface's when the product shows Wi-Fi,
// else the first MAC record's, else the buffer stays as it was.
TEST_F(DeviceTest, SnmpDeviceMac) {
    char mac[32] = "untouched";
    util_snmp_get_ssid_mac(mac, sizeof mac);
    EXPECT_STREQ(mac, "untouched");

    static MacControlInfo records;
    memset(&records, 0, sizeof records);
    const unsigned char unit[6] = {0x02, 0x00, 0xc0, 0xa8, 0x01, 0x6f};
    memcpy(records.ip_pair_info[0].mac.value, unit, sizeof unit);
    records.mac_count = 1;
    util_save_mac_control_info(&records, 0);
    util_snmp_get_ssid_mac(mac, sizeof mac);
    EXPECT_STREQ(mac, "02:00:C0:A8:01:6F");
    util_snmp_get_ssid_mac(mac, 9);  // cut to the buffer
    EXPECT_STREQ(mac, "02:00:C0");

    devtest::write_file(DISPLAY_WIFI_SETTINGS_PAGE_FLAG_FILE, "");
    ASSERT_TRUE(devtest::add_interface("ath0", "10.77.0.1/24"));
    devtest::ip("link set ath0 address 0e:11:22:aa:bb:cc");
    util_snmp_get_ssid_mac(mac, sizeof mac);
    EXPECT_STREQ(mac, "0E:11:22:AA:BB:CC");
    devtest::ip("link del ath0");
    devtest::remove_all(DISPLAY_WIFI_SETTINGS_PAGE_FLAG_FILE);
}

// A real program run as a child of the test, killed at the end.
class Child {
   public:
    explicit Child(const std::vector<std::string> &argv) {
        pid_ = ::fork();
        if (pid_ == 0) {
            int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, 1);
            ::dup2(null, 2);
            std::vector<char *> v;
            for (const std::string &a : argv) v.push_back(const_cast<char *>(a.c_str()));
            v.push_back(nullptr);
            ::execvp(v[0], v.data());
            ::_exit(127);
        }
    }
    ~Child() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

   private:
    pid_t pid_ = -1;
};

// The real net-snmp agent with the shipped configuration answers snmpget
// with the library's values.
TEST_F(DeviceTest, SnmpgetReadsTheParametersThroughSnmpd) {
    write_identity_files();
    devtest::write_file("/tmp/cmdlib/.cached_lte_module_status", "+QXRSRP: -97\n+QXSINR: 12\n");
    devtest::write_file("/usr/bin/cmdlibctl",
                        "#!/bin/sh\nexec \"$CMDLIB_BUILD/cmdlibctl\" \"$@\"\n", 0755);
    Child agent({"snmpd", "-f", "-Lo", "-C", "-c",
                 devtest::src_path("tools/snmp/snmpd-cmdlib.conf"), "-p", "/tmp/snmpd.pid"});
    auto snmpget = [](const std::string &name) {
        std::string oid = ".1.3.6.1.4.1.8072.1.3.2.3.1.1." + std::to_string(name.size());
        for (char c : name) oid += "." + std::to_string(static_cast<unsigned char>(c));
        std::string out =
            devtest::sh_out("snmpget -v2c -c public -Oqv -t 2 -r 1 127.0.0.1 " + oid + " 2>&1");
        out = out.substr(0, out.find_last_not_of("\n") + 1);
        // -Oqv prints a text value in double quotes
        return out.size() >= 2 && out.front() == '"' && out.back() == '"'
                   ? out.substr(1, out.size() - 2)
                   : out;
    };
    ASSERT_TRUE(devtest::wait_until([&] { return snmpget("IMEI") == "867530012345678"; }, 20000))
        << snmpget("IMEI");
    EXPECT_EQ(snmpget("RSRP"), "-97");
    EXPECT_EQ(snmpget("SWVer"), "M4200X_R1.0");
    EXPECT_EQ(snmpget("SINR"), "12");
    EXPECT_EQ(snmpget("BrandofCPE"), "Qubix");
}

}  // namespace
