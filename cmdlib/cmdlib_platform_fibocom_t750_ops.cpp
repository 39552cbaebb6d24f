// fibocom_t750 operations: fixed service commands (one table), reboot,
// factory reset, configuration update, device identity, the upload
// directory, eSIM and battery readers, TR-069 helpers.
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>

#include <iterator>
#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/platform_ops.h"

using namespace cmdlib;
using cmdlib::platform::OpRow;
using cmdlib::platform::Rule;
using cmdlib::platform::Runner;

namespace {

// The product's fixed commands: X(row, command, runner, result rule, kind).
// kind P: the row is an exported operation without arguments,
// fibocom_t750_<row>(), generated below; kind W: a written-out operation
// picks the row (by its argument, or as one of several steps).
#define T750_OPS(X)                                                                               \
    X(opt_ntp_sync, "/etc/qxscript/ntp_sw.sh", System, Zero, W)                                   \
    X(opt_tr069_server_reboot, "/etc/qxscript/netcwmpd_start.sh >/dev/null 2>&1 &", System,      \
      Status, W)                                                                                  \
    X(opt_restart_yaddns, "/etc/qxscript/yaddns_start.sh >/dev/null 2>&1 &", System, Zero, P)     \
    X(set_modemlog_sw, "/etc/qxscript/modem_log_sw.sh > /dev/null 2>&1 &", System, Zero, P)       \
    X(restart_siproxy, "/etc/qxscript/siproxy_startup.sh > /dev/null 2>&1 &", System, Zero, P)    \
    X(opt_restart_telnet, "/etc/qxscript/utnd_sw.sh restart > /dev/null 2>&1 &", System, Zero, P) \
    X(opt_restart_adb, "/etc/qxscript/adb_sw.sh start > /dev/null 2>&1 &", System, Zero, P)       \
    X(opt_restart_ssh, "/etc/qxscript/dropbear_sw.sh", System, Zero, P)                           \
    X(opt_restart_rpcapd, "/etc/qxscript/rpcapd.sh restart", System, Status, P)                   \
    X(wifidog_restart, "/etc/init.d/wifidog restart > /dev/null 2>&1 &", System, Status, W)       \
    X(wifidog_stop, "/etc/init.d/wifidog stop > /dev/null 2>&1 &", System, Status, W)             \
    X(macfilter_radio0, "sockmsg_send -d 22 -m 20741", System, Status, W)                         \
    X(macfilter_radio1, "sockmsg_send -d 22 -m 20740", System, Status, W)                         \
    X(nfc_write, "/usr/bin/nfc-tool -w >/dev/null 2>&1 &", Shell, Zero, W)                        \
    X(nfc_clear, "/usr/bin/nfc-tool -c >/dev/null 2>&1 &", Shell, Zero, W)                        \
    X(opt_set_ddos, "/etc/qxscript/ddos.sh > /dev/null 2>&1 &", Shell, LowByte, P)                \
    X(opt_restart_voipclient, "/etc/qxscript/voiceEnable.sh restart >/dev/null 2>&1", System,    \
      Zero, P)                                                                                    \
    X(opt_set_firewall_level, "/etc/qxscript/firewall_level.sh > /dev/null 2>&1 &", System, Zero, \
      P)                                                                                          \
    X(sms_notify, "sockmsg_send -d 4 -m 4132 >/dev/null 2>&1", System, Zero, W)                   \
    X(sms_restart, "/etc/init.d/sms_mgr restart >/dev/null 2>&1", System, Zero, W)                \
    X(opt_set_l2tp_static_ip, "/etc/qxscript/qx_set_l2tp_5_static_ip.sh > /dev/null 2>&1 &",     \
      Shell, LowByte, P)                                                                          \
    X(esim_east_download_profile, "sockmsg_send -d 4 -m 4211 > /dev/null 2>&1", Shell, LowByte,  \
      P)                                                                                          \
    X(port_isolate_switch, "/etc/qxscript/port_isolate.sh >/dev/null 2>&1 &", Shell, Zero, P)     \
    X(restart_net_monitor, "/etc/qxscript/net_monitor.sh restart >/dev/null 2>&1 &", Shell, One, \
      P)                                                                                          \
    X(tr369_reboot, "/etc/qxscript/uspad_start.sh >/dev/null 2>&1 &", Shell, LowByteXor1, P)      \
    X(opt_restart_fota_update, "/etc/qxscript/fota_start.sh >/dev/null 2>&1 &", Shell,           \
      LowByteXor1, P)

enum class Op {
#define T750_OP_ENUM(row, command, runner, rule, kind) row,
    T750_OPS(T750_OP_ENUM)
#undef T750_OP_ENUM
        count
};

constexpr OpRow kOps[] = {
#define T750_OP_ROW(row, command, runner, rule, kind) {command, Runner::runner, Rule::rule},
    T750_OPS(T750_OP_ROW)
#undef T750_OP_ROW
};
// 22 operations: three of them choose between two commands, one runs two.
static_assert(std::size(kOps) == static_cast<size_t>(Op::count) && std::size(kOps) == 26);

int run(Op op) { return platform::run_op(kOps[static_cast<size_t>(op)]); }

}  // namespace

#define T750_OP_P(row) \
    extern "C" int fibocom_t750_##row(void) { return run(Op::row); }
#define T750_OP_W(row)
#define T750_OP_EXPORT(row, command, runner, rule, kind) T750_OP_##kind(row)
T750_OPS(T750_OP_EXPORT)
#undef T750_OP_EXPORT
#undef T750_OP_W
#undef T750_OP_P

extern "C" int fibocom_t750_opt_ntp_sync(char *, char *, char *, char *) { return run(Op::opt_ntp_sync); }

extern "C" int fibocom_t750_opt_tr069_server_reboot(const char *) {
    return run(Op::opt_tr069_server_reboot);
}

extern "C" int fibocom_t750_set_wifidog_status(int enable) {
    return run(enable == 1 ? Op::wifidog_restart : Op::wifidog_stop);
}

extern "C" int fibocom_t750_opt_wifi_macfilter_apply(int wifi_type_num) {
    if (wifi_type_num == 0) return run(Op::macfilter_radio0);
    if (wifi_type_num == 1) return run(Op::macfilter_radio1);
    return -1;
}

extern "C" int fibocom_t750_set_nfc_status(int nfc_sw) {
    if (nfc_sw == 1) return run(Op::nfc_write);
    if (nfc_sw == 0) return run(Op::nfc_clear);
    return -1;
}

extern "C" int fibocom_t750_opt_restart_sms(void) {
    run(Op::sms_notify);
    return run(Op::sms_restart);
}

// ==== Reboot, configuration update, factory reset ===========================

extern "C" void idu_reboot(void) {}

extern "C" int fibocom_t750_opt_system_reboot(const char *) {
    idu_reboot();
    // Stop the dialler, detach the modem cleanly (radio off), tell daemon 13,
    // give it a second, reboot.  124 characters: fits the 128-byte line.
    CommandLine<128> line;
    line.format("/etc/init.d/dialer stop 1>/dev/null 2>&1;atcmd 'AT+CFUN=0' 1>/dev/null 2>&1;"
                "sockmsg_send -d %d -m %d;sleep 1;/sbin/reboot",
                13, 20506);
    return run_command(line);
}

namespace cmdlib::platform {

// Runs qxupdate with the options and the file (one inert word), formatted
// as the 256-byte line the tool has always been given.  The shell is asked
// to exec the tool, so that a signal ending the tool shows in the status on
// every /bin/sh (busybox ash does so by itself, dash does not).
int run_qxupdate(const char *options, const char *path) {
    CommandLine<256> cmd;
    cmd.format("qxupdate %s --file ", options);
    if (!path || !cmd.append_word(path)) return -1;
    CommandLine<256 + 5> line;
    line.format("exec %s", cmd.c_str());
    return run_command(line);
}

}  // namespace cmdlib::platform

extern "C" int fibocom_t750_process_config_update(void *arg, int, char *, int *result_code) {
    int status = platform::run_qxupdate("--local --config", static_cast<const char *>(arg));
    if (status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0) return 0;
    // A tool ended by a signal stores 0 here: it still counts as success.
    int rc = platform::tool_result(status);
    if (result_code) *result_code = rc;
    return rc;
}

namespace {

constexpr const char *kResetFiles[] = {
    "/mnt/data/etc/qxcfg/system_config.use",  // the user configuration
    "/data/local/run/sys_total_dl_flow",      // traffic counters
    "/data/local/run/sys_total_ul_flow",
    "/data/local/run/cwmpevent.bin",  // TR-069 event store
};
constexpr const char *kResetTrees[] = {"/data/local/run", "/mnt/data/var/run", "/data/mtbflog"};
constexpr const char *kResetQxcfgFiles[] = {
    "/mnt/data/etc/qxcfg/wlan2g_macfilter", "/mnt/data/etc/qxcfg/wlan5g_macfilter",
    "/mnt/data/etc/qxcfg/apn_imsi",         "/mnt/data/etc/qxcfg/websys.log",
    "/mnt/data/etc/qxcfg/web_event_root.log", "/mnt/data/etc/qxcfg/web_event.log",
};

}  // namespace

extern "C" int fibocom_t750_process_system_reset(void *, int, char *, int *result_code) {
    CommandLine<256> stop;
    stop.format("/etc/init.d/sms_mgr stop 1>/dev/null 2>&1;%s/iptables_restore_all 1>/dev/null 2>&1",
                "/etc");
    run_command(stop);
    for (const char *f : kResetFiles) cmd_rm(f);
    for (const char *d : kResetTrees) cmd_rmdir_advance(d);
    for (const char *f : kResetQxcfgFiles) cmd_rm(f);
    cmd_rmdir_advance(T750_DEBUGLOG_DIR);
    util_shell("rm -rf /mnt/data/sms/sms_draft/* 1>/dev/null 2>&1;"
               "rm -rf /mnt/data/sms/sms_read/* 1>/dev/null 2>&1;"
               "rm -rf /mnt/data/sms/sms_send/* 1>/dev/null 2>&1;"
               "rm -rf /mnt/data/sms 1>/dev/null 2>&1");
    util_shell("rm -rf /mnt/data/pbm.db /data/wicrypt/htdocs /data/wicrypt/database 1>/dev/null 2>&1");
    cmd_rmdir_advance("/etc/map");
    util_shell("cp -rf /rom/etc/map /etc");
    util_shell("sync 1>/dev/null 2>&1");
    if (result_code) *result_code = 0;
    return 0;
}

// ==== Device identity ======================================================

namespace {

// The identity file's text with blanks and line ends cut at both ends.
int read_identity(const char *path, char *value, int len) {
    if (!value || len <= 0 || util_load_file_content(value, len, path) != 0) return -1;
    std::string_view v = strip(value);
    memmove(value, v.data(), v.size());
    value[v.size()] = '\0';
    return 0;
}

}  // namespace

extern "C" int fibocom_t750_get_device_imei(char *value, int len) {
    return read_identity(T750_IMEI_FILE, value, len);
}
extern "C" int fibocom_t750_get_device_sn(char *value, int len) {
    return read_identity(T750_SN_FILE, value, len);
}
// The IoT identifier of this product is its serial number.
extern "C" int fibocom_t750_get_device_ioti(char *value, int len) {
    return read_identity(T750_SN_FILE, value, len);
}
extern "C" int fibocom_t750_get_device_mac(char *value, int len) {
    if (read_identity(T750_MAC_FILE, value, len) != 0) return -1;
    util_strip_special_char(value, ':');
    return 0;
}

// ==== Upload directory =======================================================

namespace {

constexpr int kDirMode = 0666;

// DIR/NAME of an outside name into buf (at most size-1 characters), the
// directory created when missing; false for an unusable name.
bool path_in_dir(const char *dir, char *buf, size_t size, const char *name) {
    std::string_view file = platform::file_name_in_dir(name);
    if (file.empty()) {
        copy_bounded(buf, size, "");
        return false;
    }
    if (!util_dir_is_dir_exist(dir)) util_dir_mkdir(dir, kDirMode);
    copy_bounded(buf, size, dir);
    append_bounded(buf, size, "/");
    append_bounded(buf, size, file);
    return true;
}

}  // namespace

extern "C" int fibocom_t750_get_upload_path(char *bufpath, int bufsize, const char *uploadfile) {
    if (!bufpath || !uploadfile || bufsize <= 0) return -1;
    return path_in_dir(T750_UPLOAD_DIR, bufpath, static_cast<size_t>(bufsize), uploadfile) ? 0 : -1;
}

extern "C" int fibocom_t750_check_upload_file_size(const char *uploadfile, int filesize) {
    return uploadfile && filesize <= T750_UPLOAD_MAX_SIZE ? 0 : -1;
}

extern "C" int fibocom_t750_clean_file_in_uploadpath(void) {
    cmd_rmdir_advance(T750_DEBUGLOG_DIR);
    // An upload that failed its checks goes with everything else there.
    cmd_rmdir_advance(T750_UPLOAD_DIR);
    if (!util_dir_is_dir_exist(T750_UPLOAD_DIR)) util_dir_mkdir(T750_UPLOAD_DIR, kDirMode);
    return 1;
}

// ==== eSIM and battery ==========================================================

extern "C" int fibocom_t750_esim_east_get_download_ret(void) {
    char text[9] = "";  // the result is a small number: 8 bytes are plenty
    if (cmd_cat(T750_ESIM_RET_FILE, text, sizeof text) != 0 || text[0] == '\0') return 1;
    return atoi_sat(text);
}

extern "C" int fibocom_t750_esim_east_get_user_esim_flag(void) {
    char text[9] = "";
    util_shell_recv(text, sizeof text, "mdlcfg -g SYS_SIM_SLOT_CONFIG");
    return text[0] ? atoi_sat(text) : 0;
}

extern "C" int fibocom_t750_get_battery_graph_data(char *time, int time_size, char *capacity,
                                                   int capacity_size, char *temperature,
                                                   int temperature_size) {
    if (!time || !capacity || !temperature) return -1;
    if (time_size < 2 || capacity_size < 2 || temperature_size < 2) return -1;
    UniqueFile fp(T750_BATTERY_GRAPH_FILE, "r");
    if (!fp) return -1;
    if (!fgets(time, time_size - 1, fp.get())) return -1;
    if (!fgets(capacity, capacity_size - 1, fp.get())) return -1;
    if (!fgets(temperature, temperature_size - 1, fp.get())) return -1;
    return 0;
}

// ==== TR-069 client support =======================================================

extern "C" int fibocom_t750_tr069_system_space_clearing(void) {
    fibocom_t750_clean_file_in_uploadpath();
    util_file_save("3", 1, "/proc/sys/vm/drop_caches");  // page cache, dentries and inodes
    for (const char *dir : {T750_UPLOAD_DIR, T750_TR069_CONFIG_DIR}) {
        if (util_dir_is_dir_exist(dir)) cmd_rmdir_advance(dir);
        util_dir_mkdir(dir, kDirMode);
    }
    return 0;
}

namespace {

char *download_to(const char *dir, char *buff, int buffsize, const char *name) {
    if (!buff || !name || buffsize <= 0) return nullptr;
    memset(buff, 0, static_cast<size_t>(buffsize));
    return path_in_dir(dir, buff, static_cast<size_t>(buffsize), name) ? buff : nullptr;
}

}  // namespace

extern "C" char *fibocom_t750_tr069_firmware_download_to(char *buff, int buffsize, const char *fwname) {
    return download_to(T750_UPLOAD_DIR, buff, buffsize, fwname);
}

extern "C" char *fibocom_t750_tr069_config_download_to(char *buff, int buffsize, const char *cfname) {
    return download_to(T750_TR069_CONFIG_DIR, buff, buffsize, cfname);
}

extern "C" int fibocom_t750_tr069_system_upgrade_mode(void) { return 1; }

extern "C" int fibocom_t750_tr069_upgrade_error_str(char *errstr, int size) {
    if (errstr && size >= 2) copy_bounded(errstr, static_cast<size_t>(size), "system upgrade fail");
    return -1;
}
