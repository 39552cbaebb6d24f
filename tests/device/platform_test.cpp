// The product's operations on the simulated device: the exact commands the
// firmware tools receive, the results their exit codes and signals give,
// and what reset, upload, flag and FOTA operations do to the fixed paths.
#include <cjson/cJSON.h>
#include <signal.h>
#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/cmdlib_platform_mtk7561.h"
#include "cmdlib/cmdlib_platform_pc.h"
#include "device.h"

using namespace devtest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Calls = std::vector<std::string>;

namespace {

class Platform : public DeviceTest {};

// Waits for the expected number of calls (background commands return
// before their tool has run), then gives the log.
Calls calls_after(size_t n) {
    wait_until([n] { return calls().size() >= n; }, 5000);
    return calls();
}

struct OpCase {
    const char *name;
    std::function<int()> op;
    Calls want_calls;
    int want_result;  // every tool exits 0
};

// Each fixed operation: the tool lines it runs (argv, so the shell's
// redirections and "&" do not show) and its result.
const OpCase kOps[] = {
    {"ntp_sync", [] { return fibocom_t750_opt_ntp_sync(nullptr, nullptr, nullptr, nullptr); },
     {"/etc/qxscript/ntp_sw.sh"}, 0},
    {"tr069_server_reboot", [] { return fibocom_t750_opt_tr069_server_reboot("x"); },
     {"/etc/qxscript/netcwmpd_start.sh"}, 0},
    {"yaddns", fibocom_t750_opt_restart_yaddns, {"/etc/qxscript/yaddns_start.sh"}, 0},
    {"modemlog", fibocom_t750_set_modemlog_sw, {"/etc/qxscript/modem_log_sw.sh"}, 0},
    {"siproxy", fibocom_t750_restart_siproxy, {"/etc/qxscript/siproxy_startup.sh"}, 0},
    {"telnet", fibocom_t750_opt_restart_telnet, {"/etc/qxscript/utnd_sw.sh restart"}, 0},
    {"adb", fibocom_t750_opt_restart_adb, {"/etc/qxscript/adb_sw.sh start"}, 0},
    {"ssh", fibocom_t750_opt_restart_ssh, {"/etc/qxscript/dropbear_sw.sh"}, 0},
    {"rpcapd", fibocom_t750_opt_restart_rpcapd, {"/etc/qxscript/rpcapd.sh restart"}, 0},
    {"wifidog on", [] { return fibocom_t750_set_wifidog_status(1); }, {"/etc/init.d/wifidog restart"}, 0},
    {"wifidog off", [] { return fibocom_t750_set_wifidog_status(7); }, {"/etc/init.d/wifidog stop"}, 0},
    {"macfilter 0", [] { return fibocom_t750_opt_wifi_macfilter_apply(0); }, {"sockmsg_send -d 22 -m 20741"}, 0},
    {"macfilter 1", [] { return fibocom_t750_opt_wifi_macfilter_apply(1); }, {"sockmsg_send -d 22 -m 20740"}, 0},
    {"macfilter 2", [] { return fibocom_t750_opt_wifi_macfilter_apply(2); }, {}, -1},
    {"nfc 1", [] { return fibocom_t750_set_nfc_status(1); }, {"/usr/bin/nfc-tool -w"}, 0},
    {"nfc 0", [] { return fibocom_t750_set_nfc_status(0); }, {"/usr/bin/nfc-tool -c"}, 0},
    {"nfc 2", [] { return fibocom_t750_set_nfc_status(2); }, {}, -1},
    {"ddos", fibocom_t750_opt_set_ddos, {"/etc/qxscript/ddos.sh"}, 0},
    {"voip", fibocom_t750_opt_restart_voipclient, {"/etc/qxscript/voiceEnable.sh restart"}, 0},
    {"firewall level", fibocom_t750_opt_set_firewall_level, {"/etc/qxscript/firewall_level.sh"}, 0},
    {"sms", fibocom_t750_opt_restart_sms, {"sockmsg_send -d 4 -m 4132", "/etc/init.d/sms_mgr restart"}, 0},
    {"l2tp", fibocom_t750_opt_set_l2tp_static_ip, {"/etc/qxscript/qx_set_l2tp_5_static_ip.sh"}, 0},
    {"esim", fibocom_t750_esim_east_download_profile, {"sockmsg_send -d 4 -m 4211"}, 0},
    {"port isolate", fibocom_t750_port_isolate_switch, {"/etc/qxscript/port_isolate.sh"}, 0},
    {"net monitor", fibocom_t750_restart_net_monitor, {"/etc/qxscript/net_monitor.sh restart"}, 1},
    {"tr369", fibocom_t750_tr369_reboot, {"/etc/qxscript/uspad_start.sh"}, 1},
    {"fota", fibocom_t750_opt_restart_fota_update, {"/etc/qxscript/fota_start.sh"}, 1},
    {"pc dnsmasq", pc_opt_restart_dnsmasq, {"/usr/script/dnsmasq_init.sh"}, 0},
    {"mtk dnsmasq", mtk7561_opt_restart_dnsmasq, {"/usr/script/dnsmasq_init.sh"}, 0},
    {"pc voip", pc_opt_restart_voipclient, {"/etc/qxscript/start_voice restart"}, 0},
};

TEST_F(Platform, FixedOperationsRunTheirCommands) {
    for (const OpCase &c : kOps) {
        clear_calls();
        EXPECT_EQ(c.op(), c.want_result) << c.name;
        EXPECT_EQ(calls_after(c.want_calls.size()), c.want_calls) << c.name;
    }
}

TEST_F(Platform, ResultRulesSeeTheToolsExitCode) {
    // Waited for and passed through: the raw wait status.
    set_answer("rpcapd.sh", "", 3);
    EXPECT_EQ(fibocom_t750_opt_restart_rpcapd(), 3 << 8);
    set_answer("sockmsg_send", "", 3);
    EXPECT_EQ(fibocom_t750_opt_wifi_macfilter_apply(0), 3 << 8);
    // Low byte of the status: an exit code never shows there.
    EXPECT_EQ(fibocom_t750_esim_east_download_profile(), 0);
    // Always 0 whatever the script says.
    set_answer("dropbear_sw.sh", "", 3);
    EXPECT_EQ(fibocom_t750_opt_restart_ssh(), 0);
}

TEST_F(Platform, RebootStopsDiallerDetachesModemNotifiesThenReboots) {
    EXPECT_EQ(fibocom_t750_opt_system_reboot("user"), 0);
    EXPECT_THAT(calls(), ElementsAre("/etc/init.d/dialer stop", "atcmd AT+CFUN=0", "sockmsg_send -d 13 -m 20506",
                                     "/sbin/reboot"));
}

TEST_F(Platform, FactoryResetClearsWhatItNamesAndNothingElse) {
    const std::vector<std::string> gone = {
        "/mnt/data/etc/qxcfg/system_config.use", "/data/local/run/sys_total_dl_flow",
        "/data/local/run/other", "/mnt/data/var/run/pid", "/data/mtbflog/log1",
        "/mnt/data/etc/qxcfg/wlan2g_macfilter", "/mnt/data/etc/qxcfg/wlan5g_macfilter",
        "/mnt/data/etc/qxcfg/apn_imsi", "/mnt/data/etc/qxcfg/websys.log",
        "/mnt/data/etc/qxcfg/web_event_root.log", "/mnt/data/etc/qxcfg/web_event.log", "/data/debuglog/d1",
        "/mnt/data/sms/sms_draft/1", "/mnt/data/sms/sms_read/2", "/mnt/data/sms/sms_send/3",
        "/mnt/data/sms/index", "/mnt/data/pbm.db", "/data/wicrypt/htdocs/index.html",
        "/data/wicrypt/database/db", "/etc/map/user.conf"};
    const std::vector<std::string> kept = {"/mnt/data/etc/qxcfg/system_config.def", "/mnt/data/keep",
                                           "/data/keep", "/data/wicrypt/keep", "/data/local/keep"};
    for (const auto &f : gone) write_file(f, "x");
    for (const auto &f : kept) write_file(f, "x");
    int code = -7;
    EXPECT_EQ(fibocom_t750_process_system_reset(nullptr, 0, nullptr, &code), 0);
    EXPECT_EQ(code, 0);
    for (const auto &f : gone) EXPECT_FALSE(file_exists(f)) << f;
    for (const auto &d : {"/data/local/run", "/mnt/data/var/run", "/data/mtbflog", "/data/debuglog",
                          "/mnt/data/sms", "/data/wicrypt/htdocs"})
        EXPECT_FALSE(file_exists(d)) << d;
    for (const auto &f : kept) EXPECT_EQ(read_file(f), "x") << f;
    EXPECT_EQ(read_file("/etc/map/map.conf"), read_file("/rom/etc/map/map.conf"));
    EXPECT_THAT(calls(), ElementsAre("/etc/init.d/sms_mgr stop", "/etc/iptables_restore_all"));
}

TEST_F(Platform, ConfigUpdateMapsTheToolsEnd) {
    const char *file = "/data/web_upload/a.conf";
    struct {
        const char *how;
        std::function<void()> script;
        int want, want_code;
    } cases[] = {
        {"success", [] {}, 0, -7},  // the code is left alone
        {"exit 3", [] { set_answer("qxupdate", "", 3); }, 3, 3},
        {"killed", [] { set_answer_signal("qxupdate", SIGKILL); }, 0, 0},
        {"not found", [] { ASSERT_EQ(sh("mv /usr/bin/qxupdate /usr/bin/qxupdate.off"), 0); }, 104, 104},
    };
    for (auto &c : cases) {
        reset_answers();
        clear_calls();
        c.script();
        int code = -7;
        EXPECT_EQ(fibocom_t750_process_config_update(const_cast<char *>(file), 0, nullptr, &code), c.want) << c.how;
        EXPECT_EQ(code, c.want_code) << c.how;
    }
    ASSERT_EQ(sh("mv /usr/bin/qxupdate.off /usr/bin/qxupdate"), 0);
    clear_calls();
    fibocom_t750_process_config_update(const_cast<char *>(file), 0, nullptr, nullptr);
    EXPECT_THAT(calls(), ElementsAre("qxupdate --local --config --file /data/web_upload/a.conf"));
}

TEST_F(Platform, UpgradeStagesAndTheirResults) {
    const std::string img = "/data/web_upload/M4200X_V2.0.1_x.img";
    char err[64] = "";
    EXPECT_EQ(fibocom_t750_local_system_upgrade(img.c_str()), 106);
    EXPECT_EQ(fibocom_t750_system_upgrade_stage2(img.c_str()), 106);
    EXPECT_EQ(fibocom_t750_tr069_system_firmware_upgrade(img.c_str(), err, sizeof err), 106);
    EXPECT_STREQ(err, "the system upgrade file is no exist");
    EXPECT_THAT(calls(), IsEmpty());

    write_file(img, "image");
    set_answer("qxupdate", "", 5);
    EXPECT_EQ(fibocom_t750_local_system_upgrade(img.c_str()), 5);
    EXPECT_EQ(fibocom_t750_tr069_system_firmware_upgrade(img.c_str(), err, sizeof err), 5);
    EXPECT_STREQ(err, "the system upgrade step1 is fail");
    EXPECT_EQ(fibocom_t750_tr069_system_firmware_upgrade(img.c_str(), nullptr, 10), -1);

    reset_answers();
    clear_calls();
    EXPECT_EQ(fibocom_t750_local_system_upgrade(img.c_str()), 0);
    EXPECT_THAT(calls(), ElementsAre("qxupdate --local --system --stage 1 --file " + img,
                                     "qxupdate --local --system --reboot --stage 2 --file " + img));
    // Stage 2 reboots under the tool: a kill counts as success.
    set_answer_signal("qxupdate", SIGTERM);
    EXPECT_EQ(fibocom_t750_system_upgrade_stage2(img.c_str()), 0);
}

TEST_F(Platform, ImageNamesStayOneInertArgument) {
    const std::string img = "/data/web_upload/x;touch pwned;'q $(id).img";
    write_file(img, "image");
    EXPECT_EQ(fibocom_t750_system_upgrade_stage1(img.c_str()), 0);
    EXPECT_THAT(calls(), ElementsAre("qxupdate --local --system --stage 1 --file " + img));
    EXPECT_EQ(validate_firmware_image_packtoolpro(img.c_str(), "B"), 0);
    EXPECT_THAT(calls("packtoolpro"), ElementsAre("packtoolpro -l " + img));
    EXPECT_FALSE(file_exists("pwned"));
    remove_all(img);
}

TEST_F(Platform, UploadDirectoryNamesAndBoardCheck) {
    remove_all("/data/web_upload");
    char path[64];
    ASSERT_EQ(fibocom_t750_get_upload_path(path, sizeof path, "../../etc/fw.img"), 0);
    EXPECT_STREQ(path, "/data/web_upload/fw.img");
    EXPECT_TRUE(file_exists("/data/web_upload"));
    EXPECT_EQ(fibocom_t750_get_upload_path(path, sizeof path, ".."), -1);
    EXPECT_STREQ(path, "");
    char small[20];
    ASSERT_EQ(fibocom_t750_get_upload_path(small, sizeof small, "fw.img"), 0);
    EXPECT_STREQ(small, "/data/web_upload/fw");

    make_image("/data/web_upload/fw.img", "XYZM4200X");
    write_file("/data/debuglog/trace", "x");
    EXPECT_EQ(fibocom_t750_validate_upload_file("/data/web_upload/fw.img", "M4200X"), 0);
    EXPECT_TRUE(file_exists("/data/web_upload/fw.img"));
    EXPECT_EQ(fibocom_t750_validate_upload_file("/data/web_upload/fw.img", "ABD"), -1);
    // An image for another board goes, with everything else uploaded.
    EXPECT_FALSE(file_exists("/data/web_upload/fw.img"));
    EXPECT_FALSE(file_exists("/data/debuglog"));
    EXPECT_EQ(sh_out("ls -A /data/web_upload"), "");
    EXPECT_EQ(validate_firmware_image_packtoolpro("/data/web_upload/none.img", nullptr), 0);
}

TEST_F(Platform, IdentityFiles) {
    write_file("/productinfo/imei", " 860000000000001 \n");
    write_file("/productinfo/generate_sn", "SN0042\n");
    write_file("/productinfo/mac", "00:1A:2b:3c:4d:5e\n");
    char v[32];
    ASSERT_EQ(fibocom_t750_get_device_imei(v, sizeof v), 0);
    EXPECT_STREQ(v, "860000000000001");
    ASSERT_EQ(fibocom_t750_get_device_ioti(v, sizeof v), 0);
    EXPECT_STREQ(v, "SN0042");
    ASSERT_EQ(fibocom_t750_get_device_mac(v, sizeof v), 0);
    EXPECT_STREQ(v, "001A2b3c4d5e");
    remove_all("/productinfo/generate_sn");
    EXPECT_EQ(fibocom_t750_get_device_sn(v, sizeof v), -1);

    set_answer("qxsys", "PC0007\nrest\n", 0);
    ASSERT_EQ(pc_get_device_sn(v, sizeof v), 0);
    EXPECT_STREQ(v, "PC0007");
    set_answer("qxsys", "", 0);
    EXPECT_EQ(mtk7561_get_device_sn(v, sizeof v), -1);
    EXPECT_THAT(calls(), ElementsAre("qxsys snrl", "qxsys snrl"));
}

TEST_F(Platform, EsimAndBatteryReaders) {
    remove_all("/data/esim_east_MY0588_ret");
    EXPECT_EQ(fibocom_t750_esim_east_get_download_ret(), 1);
    write_file("/data/esim_east_MY0588_ret", "0\n");
    EXPECT_EQ(fibocom_t750_esim_east_get_download_ret(), 0);
    EXPECT_EQ(fibocom_t750_esim_east_get_user_esim_flag(), 0);
    mdlcfg_set("SYS_SIM_SLOT_CONFIG", "2");
    EXPECT_EQ(fibocom_t750_esim_east_get_user_esim_flag(), 2);

    char t[16], c[16], k[16];
    EXPECT_EQ(fibocom_t750_get_battery_graph_data(t, sizeof t, c, sizeof c, k, sizeof k), -1);
    write_file("/tmp/battery_graph_data", "12:00\n80\n");
    EXPECT_EQ(fibocom_t750_get_battery_graph_data(t, sizeof t, c, sizeof c, k, sizeof k), -1);
    write_file("/tmp/battery_graph_data", "12:00\n80\n31\n");
    ASSERT_EQ(fibocom_t750_get_battery_graph_data(t, sizeof t, c, sizeof c, k, sizeof k), 0);
    EXPECT_STREQ(t, "12:00\n");
    EXPECT_STREQ(k, "31\n");
}

TEST_F(Platform, Tr069SpaceAndDownloadPaths) {
    // drop_caches is the host kernel's: the test's own file stands in for it.
    write_file("/tmp/drop_caches", "");
    ASSERT_TRUE(bind_dir("/tmp/drop_caches", "/proc/sys/vm/drop_caches"));
    write_file("/data/web_upload/old.img", "x");
    write_file("/tmp/tr069_config_upgrade/old.conf", "x");
    EXPECT_EQ(fibocom_t750_tr069_system_space_clearing(), 0);
    EXPECT_TRUE(unbind("/proc/sys/vm/drop_caches"));
    EXPECT_EQ(read_file("/tmp/drop_caches"), "3");
    EXPECT_EQ(sh_out("ls -A /data/web_upload /tmp/tr069_config_upgrade | tr -d '\\n'"),
              "/data/web_upload:/tmp/tr069_config_upgrade:");

    char buf[64] = "stale";
    EXPECT_STREQ(fibocom_t750_tr069_firmware_download_to(buf, sizeof buf, "fw.img"), "/data/web_upload/fw.img");
    EXPECT_STREQ(fibocom_t750_tr069_config_download_to(buf, sizeof buf, "a/../c.conf"),
                 "/tmp/tr069_config_upgrade/c.conf");
    EXPECT_EQ(fibocom_t750_tr069_config_download_to(buf, sizeof buf, nullptr), nullptr);
}

TEST_F(Platform, FirstRunAndConfigFlagsSurviveTheBootOnly) {
    for (const char *persistent : {"/mnt/data/upgrade_flag", "/data/upgrade_flag"}) {
        write_file(persistent, "");
        EXPECT_EQ(fibocom_t750_is_first_run_after_upgrade(), 1) << persistent;
        EXPECT_FALSE(file_exists(persistent));
        EXPECT_EQ(fibocom_t750_is_first_run_after_upgrade(), 1) << persistent;
        remove_all("/tmp/upgrade_flag");  // the next reboot
        EXPECT_EQ(fibocom_t750_is_first_run_after_upgrade(), 0) << persistent;
    }
    write_file("/mnt/data/contains_update_config_flag", "");
    EXPECT_EQ(upgrade_package_is_contains_update_config(), 1);
    EXPECT_EQ(upgrade_package_is_contains_update_config(), 1);
    remove_all("/tmp/contains_update_config_flag");
    EXPECT_EQ(upgrade_package_is_contains_update_config(), 0);
}

TEST_F(Platform, DowngradeGuardReadsTheRunningVersion) {
    const char *older = "M4200X_V1.9.9_20240101.img";
    remove_all("/version");
    EXPECT_EQ(service_not_allow_degraded_version(older), 0);  // unknown: allowed
    write_file("/version", "");
    EXPECT_EQ(service_not_allow_degraded_version(older), 0);
    write_file("/version", "V2.0.1\nbuild 7\n");
    char v[VERSION_TEXT_SIZE];
    get_current_version(v);
    EXPECT_STREQ(v, "V2.0.1");
    EXPECT_EQ(service_not_allow_degraded_version(older), -1);
    EXPECT_EQ(service_not_allow_degraded_version("M4200X_V2.0.1_20240101.img"), 0);
    remove_all("/version");
}

// FOTA against busybox httpd on the operator's side of usb0, fetched by
// the real wget.
class Fota : public Platform {
  protected:
    static void SetUpTestSuite() {
        write_file("/tmp/www/fw.img", std::string(200000, 'f') + "end");
        outside("busybox httpd -p 10.64.0.1:8080 -h /tmp/www");
    }
    std::string fetch(const std::string &url, char *file, char *md5) {
        util_fota_get_local_upgrade_file_path(file, 128, md5, 128, url.c_str());
        return util_fota_download_upgade_file(file, url.c_str(), 0, 0) == 0 ? "ok" : "failed";
    }
    char file[128] = "", md5file[128] = "";
};

TEST_F(Fota, GoodImageThenWrongSizeAndWrongDigest) {
    ASSERT_EQ(fetch("http://10.64.0.1:8080/fw.img", file, md5file), "ok");
    EXPECT_EQ(std::string(file), "/tmp/FOTA_" + std::to_string(getpid()) + "_fw.img");
    std::string digest = sh_out("md5sum /tmp/www/fw.img").substr(0, 32);
    EXPECT_EQ(util_check_if_upgrade_file_is_valid(file, md5file, "200003", digest.c_str(), 0), nullptr);
    EXPECT_EQ(read_file(md5file), digest + "  " + file + "\n");
    EXPECT_STREQ(util_check_if_upgrade_file_is_valid(file, md5file, "200002", digest.c_str(), 0),
                 "10:File length checking error");
    std::string wrong = digest;
    wrong[0] = wrong[0] == '0' ? '1' : '0';
    EXPECT_STREQ(util_check_if_upgrade_file_is_valid(file, md5file, "200003", wrong.c_str(), 0),
                 "9:MD5 checking error");
}

TEST_F(Fota, MissingFileFails) {
    EXPECT_EQ(fetch("http://10.64.0.1:8080/none.img", file, md5file), "failed");
}

TEST_F(Fota, ServerThatNeverAnswersEndsAtTheTimeOut) {
    outside("sleep 120 | busybox nc -l -p 8081 >/tmp/nc.log 2>&1 &");
    ASSERT_TRUE(wait_until([] { return outside("ss -ltn | grep -q ':8081 '") == 0; }));
    EXPECT_EQ(fetch("http://10.64.0.1:8081/fw.img", file, md5file), "failed");
    // It failed by waiting, not by being refused: the request arrived.
    EXPECT_NE(read_file("/tmp/nc.log").find("GET /fw.img"), std::string::npos);
}

TEST_F(Fota, LocalUpdateMovesTheFileFromTmp) {
    write_file("/tmp/fw2.img", "local");
    util_fota_get_local_upgrade_file_path(file, sizeof file, md5file, sizeof md5file, "http://h/fw2.img");
    ASSERT_EQ(util_fota_download_upgade_file(file, "http://h/fw2.img", 0, 1), 0);
    EXPECT_EQ(read_file(file), "local");
    EXPECT_FALSE(file_exists("/tmp/fw2.img"));
}

TEST_F(Platform, MeshDumpAtItsFixedPath) {
    write_file("/tmp/dump.txt", R"({"topology information":[{"AL MAC":"02:00:00:00:00:01"},
        {"AL MAC":"02:00:00:00:00:02","Device role":"1"},{"AL MAC":"02:00:00:00:00:03","Device role":"2"}]})");
    meshTopoInfo_t *t = nullptr;
    ASSERT_EQ(fibocom_t750_mesh_topo_get_info(&t), 1);
    // The size limit: 1,048,575 bytes is one too many.
    write_file("/tmp/dump.txt", std::string(1048575, ' '));
    EXPECT_EQ(fibocom_t750_mesh_topo_get_info(&t), -1);
    EXPECT_EQ(t, nullptr);
    remove_all("/tmp/dump.txt");
    EXPECT_EQ(fibocom_t750_mesh_topo_get_info(&t), -1);
}

TEST_F(Platform, UrlInterceptWritesTheRuleFile) {
    write_file("/mnt/data/etc/qxcfg/iptables/iptables_url_filter_default", "factory");
    write_file("/tmp/cmdlib/iptables/iptables_url_filter_default", "factory");
    const char *urls[] = {"a.example", "b.example"};
    EXPECT_EQ(fibocom_t750_url_intercept(urls, 0), -1);
    EXPECT_FALSE(file_exists("/mnt/data/etc/qxcfg/iptables/iptables_url_filter"));
    ASSERT_EQ(fibocom_t750_url_intercept(urls, 2), 0);
    cJSON *msg = cJSON_Parse(read_file("/mnt/data/etc/qxcfg/iptables/iptables_url_filter").c_str());
    ASSERT_NE(msg, nullptr);
    EXPECT_EQ(cJSON_GetArraySize(cJSON_GetObjectItem(msg, "datas")), 4);
    cJSON_Delete(msg);
    EXPECT_FALSE(file_exists("/mnt/data/etc/qxcfg/iptables/iptables_url_filter_default"));
    EXPECT_FALSE(file_exists("/tmp/cmdlib/iptables/iptables_url_filter_default"));
}

}  // namespace
