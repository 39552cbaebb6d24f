// The product's operations on the simulated device, as transcripts in
// tests/golden/device_platform: the exact commands the firmware tools
// receive, the results their exit codes and signals give, what reset,
// upload, flag and FOTA operations do to the fixed paths, and FOTA
// downloads from busybox httpd on the operator's side of usb0 through the
// real wget.
#include <signal.h>
#include <unistd.h>

#include <string>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/cmdlib_platform_mtk7561.h"
#include "cmdlib/cmdlib_platform_pc.h"
#include "device.h"
#include "device_steps.h"

namespace {

using golden::Args;
using golden::show;

// An operation without arguments: its result.
template <int (*F)()> golden::Call op() {
    return [](Args &) { return show(F()); };
}

// A reader into a caller's buffer of a[0] bytes: result and text.
template <int (*F)(char *, int)> golden::Call text() {
    return [](Args &a) {
        char v[64] = "";
        int rc = F(v, a[0].empty() ? static_cast<int>(sizeof v) : a[0].i());
        return show(rc, v);
    };
}

// The process id in FOTA's scratch names, as "PID".
std::string no_pid(const std::string &s) {
    return devtest::replace_all(s, "FOTA_" + std::to_string(getpid()) + "_", "FOTA_PID_");
}

int ntp_sync() { return fibocom_t750_opt_ntp_sync(nullptr, nullptr, nullptr, nullptr); }
int tr069_reboot() { return fibocom_t750_opt_tr069_server_reboot("x"); }
int reboot() { return fibocom_t750_opt_system_reboot("user"); }
int mesh_info() {
    meshTopoInfo_t *t = nullptr;
    int rc = fibocom_t750_mesh_topo_get_info(&t);
    return fibocom_t750_mesh_topo_clean(&t), rc;
}
int url_intercept_none() { return fibocom_t750_url_intercept(nullptr, 0); }

class Platform : public DeviceTest {};

TEST_F(Platform, Transcripts) {
    golden::Table t = devtest::with_device({
        {"ntp_sync", op<ntp_sync>()},
        {"tr069_server_reboot", op<tr069_reboot>()},
        {"yaddns", op<fibocom_t750_opt_restart_yaddns>()},
        {"modemlog", op<fibocom_t750_set_modemlog_sw>()},
        {"siproxy", op<fibocom_t750_restart_siproxy>()},
        {"telnet", op<fibocom_t750_opt_restart_telnet>()},
        {"adb", op<fibocom_t750_opt_restart_adb>()},
        {"ssh", op<fibocom_t750_opt_restart_ssh>()},
        {"rpcapd", op<fibocom_t750_opt_restart_rpcapd>()},
        {"ddos", op<fibocom_t750_opt_set_ddos>()},
        {"voip", op<fibocom_t750_opt_restart_voipclient>()},
        {"firewall_level", op<fibocom_t750_opt_set_firewall_level>()},
        {"sms", op<fibocom_t750_opt_restart_sms>()},
        {"l2tp_static_ip", op<fibocom_t750_opt_set_l2tp_static_ip>()},
        {"esim_download", op<fibocom_t750_esim_east_download_profile>()},
        {"port_isolate", op<fibocom_t750_port_isolate_switch>()},
        {"net_monitor", op<fibocom_t750_restart_net_monitor>()},
        {"tr369", op<fibocom_t750_tr369_reboot>()},
        {"fota_restart", op<fibocom_t750_opt_restart_fota_update>()},
        {"pc_dnsmasq", op<pc_opt_restart_dnsmasq>()},
        {"mtk_dnsmasq", op<mtk7561_opt_restart_dnsmasq>()},
        {"pc_voip", op<pc_opt_restart_voipclient>()},
        {"reboot", op<reboot>()},
        {"first_run", op<fibocom_t750_is_first_run_after_upgrade>()},
        {"contains_config", op<upgrade_package_is_contains_update_config>()},
        {"esim_ret", op<fibocom_t750_esim_east_get_download_ret>()},
        {"esim_flag", op<fibocom_t750_esim_east_get_user_esim_flag>()},
        {"space_clearing", op<fibocom_t750_tr069_system_space_clearing>()},
        {"mesh_info", op<mesh_info>()},
        {"url_intercept_none", op<url_intercept_none>()},
        {"imei", text<fibocom_t750_get_device_imei>()},
        {"ioti", text<fibocom_t750_get_device_ioti>()},
        {"mac", text<fibocom_t750_get_device_mac>()},
        {"sn", text<fibocom_t750_get_device_sn>()},
        {"pc_sn", text<pc_get_device_sn>()},
        {"mtk_sn", text<mtk7561_get_device_sn>()},
        {"wifidog", [](Args &a) { return show(fibocom_t750_set_wifidog_status(a[0].i())); }},
        {"macfilter", [](Args &a) { return show(fibocom_t750_opt_wifi_macfilter_apply(a[0].i())); }},
        {"nfc", [](Args &a) { return show(fibocom_t750_set_nfc_status(a[0].i())); }},
        {"factory_reset", [](Args &) {
             int code = -7;
             int rc = fibocom_t750_process_system_reset(nullptr, 0, nullptr, &code);
             return show(rc, code);
         }},
        {"config_update", [](Args &a) {
             int code = -7;
             int rc = fibocom_t750_process_config_update(a[0].w(), 0, nullptr, &code);
             return show(rc, code);
         }},
        {"local_upgrade", [](Args &a) { return show(fibocom_t750_local_system_upgrade(a[0].c())); }},
        {"stage1", [](Args &a) { return show(fibocom_t750_system_upgrade_stage1(a[0].c())); }},
        {"stage2", [](Args &a) { return show(fibocom_t750_system_upgrade_stage2(a[0].c())); }},
        {"tr069_upgrade", [](Args &a) {
             char err[64] = "";
             bool buffer = a[1] != "nobuf";
             int rc = fibocom_t750_tr069_system_firmware_upgrade(a[0].c(), buffer ? err : nullptr, buffer ? 64 : 10);
             return show(rc, err);
         }},
        {"packtoolpro_check", [](Args &a) { return show(validate_firmware_image_packtoolpro(a[0].c(), a[1].c())); }},
        {"validate_upload", [](Args &a) { return show(fibocom_t750_validate_upload_file(a[0].c(), a[1].c())); }},
        {"upload_path", [](Args &a) {
             char path[64] = "stale";
             int rc = fibocom_t750_get_upload_path(path, a[1].i(), a[0].c());
             return show(rc, path);
         }},
        {"image", [](Args &a) { return devtest::make_image(a[0], a[1]), "ok"; }},
        {"answer_signal", [](Args &a) { return devtest::set_answer_signal(a[0], a[1].i()), "ok"; }},
        {"bind", [](Args &a) { return show(devtest::bind_dir(a[0], a[1])); }},
        {"unbind", [](Args &a) { return show(devtest::unbind(a[0])); }},
        {"log", [](Args &a) {
             devtest::wait_until([&] { return devtest::calls().size() >= a[0].z(); }, 5000);
             std::string out;
             for (const std::string &c : devtest::calls()) out += (out.empty() ? "" : " ; ") + c;
             devtest::clear_calls();
             return out.empty() ? "(none)" : out;
         }},
        {"battery", [](Args &a) {
             char t[16] = "", c[16] = "", k[16] = "";
             int rc = fibocom_t750_get_battery_graph_data(t, sizeof t, c, sizeof c, k, a[0].i());
             return show(rc, t, c, k);
         }},
        {"firmware_to", [](Args &a) {
             char buf[64] = "stale";
             return show(fibocom_t750_tr069_firmware_download_to(buf, sizeof buf, a[0].c()));
         }},
        {"config_to", [](Args &a) {
             char buf[64] = "stale";
             return show(fibocom_t750_tr069_config_download_to(buf, sizeof buf, a[0].c()));
         }},
        {"degraded", [](Args &a) { return show(service_not_allow_degraded_version(a[0].c())); }},
        {"current_version", [](Args &) {
             char v[VERSION_TEXT_SIZE] = "";
             get_current_version(v);
             return show(v);
         }},
        {"url_intercept", [](Args &a) {
             std::vector<const char *> urls;
             for (const auto &u : a) urls.push_back(u.c_str());
             return show(fibocom_t750_url_intercept(urls.data(), static_cast<int>(urls.size())));
         }},
        // FOTA: the local names for a URL, the download (a[1]: local update),
        // and the checks of size and digest.
        {"fota_fetch", [](Args &a) {
             char file[128] = "", md5[128] = "";
             util_fota_get_local_upgrade_file_path(file, sizeof file, md5, sizeof md5, a[0].c());
             int rc = util_fota_download_upgade_file(file, a[0].c(), 0, a.size() > 1 ? a[1].i() : 0);
             return no_pid(show(rc, file, md5));
         }},
        {"fota_check", [](Args &a) {
             std::string file = "/tmp/FOTA_" + std::to_string(getpid()) + "_" + a[0];
             return show(util_check_if_upgrade_file_is_valid(file.c_str(), (file + ".md5.txt").c_str(), a[1].c(),
                                                             a[2].c(), 0));
         }},
        {"fota_md5_list", [](Args &a) {
             return no_pid(show(devtest::read_file("/tmp/FOTA_" + std::to_string(getpid()) + "_" + a[0] + ".md5.txt")));
         }},
    });
    golden::check("device_platform", golden::calls(t));
}

}  // namespace
