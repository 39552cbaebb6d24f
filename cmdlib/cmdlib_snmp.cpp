// Configuration keys of the SNMP agent (the same list the configuration
// cache holds) and the settings and actions the agent writes: FOTA controls
// through "mdlcfg", the FOTA download trigger, reboot and factory-reset
// requests.
#include "cmdlib/cmdlib_snmp.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/config_cache.h"
#include "cmdlib/internal/module_keys.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/internal/snmp_setting.h"
#include "cmdlib/mac.h"
#include "cmdlib/network.h"

CMDLIB_MODULE_KEYS(snmp, SNMP_CONFIG_FIELDS_COUNT, CMDLIB_SNMP_CONFIG_KEYS)

namespace {

using cmdlib::CommandLine;
using cmdlib::field_text;

// Refilled from a fresh export (FOTA settings) or the version file on every
// call that reads it; the SNMP agent calls from one thread.
InfoStruct server_wifi_info;
// The MAC records, for the device MAC address of a product without Wi-Fi.
MacControlInfo mac_control_info;

constexpr size_t kCommandSize = 512;

// One setting changed and committed; mdlcfg's exit status is not examined.
template <typename Value>
void set_setting(const char *key, Value value) {
    CommandLine<kCommandSize> line;
    cmdlib::compose_setting(line, key, value);
    cmdlib::run_command(line);
    util_shell("mdlcfg -c");
}

// The text of a caller's buffer of size bytes (not necessarily terminated).
std::string_view caller_text(const char *text, int size) {
    return std::string_view(text, strnlen(text, static_cast<size_t>(size)));
}

void refill_settings() {
    memset(&server_wifi_info, 0, sizeof server_wifi_info);
    util_read_config_parameters(&server_wifi_info);
}

void copy_out(char *value, int size, std::string_view text) {
    if (value && size > 0) cmdlib::copy_bounded(value, static_cast<size_t>(size), text);
}

void print_mac(char *out, int size, const unsigned char *m) {
    if (size <= 0) return;
    cmdlib::format_bounded(out, static_cast<size_t>(size), "%02X:%02X:%02X:%02X:%02X:%02X", m[0],
                           m[1], m[2], m[3], m[4], m[5]);
}

}  // namespace

// ---- FOTA controls ------------------------------------------------------------------

int util_snmp_set_fota_on_boot(int value) {
    set_setting("QX_FOTA_ON_BOOT", value ? 1 : 0);
    return -1;
}

int util_snmp_get_fota_on_boot(void) {
    refill_settings();
    return cmdlib::atoi_sat(field_text(server_wifi_info.QX_FOTA_ON_BOOT));
}

int util_snmp_set_fota_timer_trigger(int value) {
    set_setting("QX_FOTA_TIMER_START", value);
    return -1;
}

int util_snmp_get_fota_timer_trigger(int *value) {
    refill_settings();
    if (value) *value = cmdlib::atoi_sat(field_text(server_wifi_info.QX_FOTA_TIMER_START));
    return -1;
}

int util_snmp_set_fota_status(const char *status, int size) {
    if (!status || size <= 0) return -1;
    set_setting("QX_FOTA_STATUS", caller_text(status, size));
    return -1;
}

int util_snmp_get_fota_status(char *value, int size) {
    refill_settings();
    copy_out(value, size, field_text(server_wifi_info.QX_FOTA_STATUS));
    return 0;
}

int util_snmp_set_fota_url(const char *url, int size) {
    if (!url || size <= 0) return -1;
    std::string_view text = caller_text(url, size);
    // An unchanged URL is not written again (a write commits the whole
    // configuration).
    char current[128] = {};
    util_snmp_get_fota_url(current, sizeof current);
    if (strncmp(current, std::string(text).c_str(), sizeof current) != 0)
        set_setting("QX_FOTA_URL", text);

    CommandLine<kCommandSize> start;
    start.format("qxfotaonsnmp ");
    start.append_word(text);
    start.append(" &");
    // Give an upgrade that was just started a moment to show up in the
    // process table: one running upgrade is never joined by a second.
    sleep(1);
    char program[] = "qxfotaonsnmp";
    if (!cmd_ps_is_one_program_running(program)) cmdlib::run_command(start);
    return 0;
}

int util_snmp_get_fota_url(char *value, int size) {
    refill_settings();
    copy_out(value, size, field_text(server_wifi_info.QX_FOTA_URL));
    return 0;
}

// ---- Device actions -----------------------------------------------------------------

// The SNMP path only clears the restored-defaults marker and stops what is
// named by the base name of the update command; the update itself is left
// to the supervisor.
int util_snmp_set_device_info_factory_reset(int value) {
    if (!value) return 0;
    cmd_rm(SNMP_RESTORED_DEFAULTS_FLAG_FILE);
    static constexpr char kUpdate[] = "/usr/bin/qxupdate --reset --reboot > /dev/null 2>&1 &";
    std::string_view update(kUpdate);
    std::string_view base = update.substr(update.rfind('/') + 1);
    CommandLine<kCommandSize> kill;
    kill.format("killall %.*s", static_cast<int>(base.size()), base.data());
    cmdlib::run_command(kill);
    return 0;
}

int util_snmp_get_device_info_factory_reset(void) { return 0; }

int util_snmp_set_device_info_software_reboot(int value) {
    if (value) cmd_touch(SNMP_NEED_TO_REBOOT_FLAG_FILE);
    return 0;
}

int util_snmp_get_device_info_software_reboot(void) { return 0; }

// ---- Identity -----------------------------------------------------------------------

int util_snmp_get_device_info_cpe_brand(char *value, int size) {
    copy_out(value, size, SNMP_CPE_BRAND);
    return 0;
}

int util_snmp_get_software_version(char *value, int size) {
    memset(&server_wifi_info, 0, sizeof server_wifi_info);
    util_read_version_info("/version", &server_wifi_info);
    if (value && size > 0) {
        std::string_view device = field_text(server_wifi_info.device);
        std::string_view version = field_text(server_wifi_info.version);
        cmdlib::format_bounded(value, static_cast<size_t>(size), "%.*s_R%.*s",
                               static_cast<int>(device.size()), device.data(),
                               static_cast<int>(version.size()), version.data());
    }
    return 0;
}

void util_snmp_get_ssid_mac(char *mac, int size) {
    if (!mac) return;
    if (util_has_wifi_for_this_device()) {
        MacAddr addr{};
        const char *wlan = util_get_wireless_interface_name();
        if (wlan && cmd_netdev_get_mac_addr(wlan, &addr) == 0) print_mac(mac, size, addr.value);
        return;
    }
    util_read_mac_control_info(&mac_control_info, 0);
    if (mac_control_info.mac_count != 0)
        print_mac(mac, size, mac_control_info.ip_pair_info[0].mac.value);
}
