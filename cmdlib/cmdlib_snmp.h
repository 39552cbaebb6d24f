/* cmdlib_snmp: configuration keys of the SNMP agent and the settings and
 * actions the agent can write (FOTA controls, reboot and factory-reset
 * requests).  The values it reads are in cmdlib_snmp_data.h. */
#ifndef CMDLIB_SNMP_H
#define CMDLIB_SNMP_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define SNMP_CONFIG_FIELDS_COUNT 10

/* The keys the module reads, in a fixed order, null-terminated. */
CMDLIB_API extern const char *const snmp_config_fields[SNMP_CONFIG_FIELDS_COUNT + 1];

/* Appends snmp_config_fields to args, at most max_args_count keys;
 * returns how many. */
CMDLIB_API int util_snmp_add_fields_need_to_read(const char **args, int max_args_count);

/* ---- FOTA controls ------------------------------------------------------
 * A setting is changed with "mdlcfg -a KEY=\"VALUE\"" then "mdlcfg -c"
 * (a value with shell metacharacters is passed as one single-quoted word
 * instead, so the tool receives the same argument and the shell runs
 * nothing).  The tool's exit status is not examined.  The getters read a
 * fresh "mdlcfg -e" export on every call. */

/* QX_FOTA_ON_BOOT := 1 when value is non-zero, else 0.  Returns -1 always:
 * callers must not take the result as success. */
CMDLIB_API int util_snmp_set_fota_on_boot(int value);
/* atoi of QX_FOTA_ON_BOOT */
CMDLIB_API int util_snmp_get_fota_on_boot(void);
/* QX_FOTA_TIMER_START := value; returns -1 always. */
CMDLIB_API int util_snmp_set_fota_timer_trigger(int value);
/* *value := atoi of QX_FOTA_TIMER_START (when value is not null); returns
 * -1 always. */
CMDLIB_API int util_snmp_get_fota_timer_trigger(int *value);
/* QX_FOTA_STATUS := the text of status (at most size characters); -1, also
 * for a null status or a size below 1. */
CMDLIB_API int util_snmp_set_fota_status(const char *status, int size);
/* QX_FOTA_STATUS into value (size bytes, cut to fit); 0. */
CMDLIB_API int util_snmp_get_fota_status(char *value, int size);
/* Writes QX_FOTA_URL when it differs from url in the first 128 characters,
 * then, one second later, starts "qxfotaonsnmp URL &" unless a process
 * named qxfotaonsnmp is running already.  0; -1 for a null url or a size
 * below 1 (url is read up to size characters).  A URL too long for the
 * 512-byte command lines is neither written nor started. */
CMDLIB_API int util_snmp_set_fota_url(const char *url, int size);
/* QX_FOTA_URL into value (size bytes, cut to fit); 0. */
CMDLIB_API int util_snmp_get_fota_url(char *value, int size);

/* ---- Device actions ----------------------------------------------------- */

#define SNMP_RESTORED_DEFAULTS_FLAG_FILE "/tmp/cmdlib/.system_have_restored_default_settings"
#define SNMP_NEED_TO_REBOOT_FLAG_FILE "/tmp/cmdlib/.need_to_reboot"

/* value non-zero: removes the restored-defaults marker and runs
 * "killall null 2>&1 &" (the base name of the update command
 * "/usr/bin/qxupdate --reset --reboot > /dev/null 2>&1 &", which itself is
 * not run on the SNMP path).  0. */
CMDLIB_API int util_snmp_set_device_info_factory_reset(int value);
/* 0 */
CMDLIB_API int util_snmp_get_device_info_factory_reset(void);
/* value non-zero: creates SNMP_NEED_TO_REBOOT_FLAG_FILE, which the system's
 * supervisor acts on.  0 either way. */
CMDLIB_API int util_snmp_set_device_info_software_reboot(int value);
/* 0 */
CMDLIB_API int util_snmp_get_device_info_software_reboot(void);

/* ---- Identity ----------------------------------------------------------- */

#define SNMP_CPE_BRAND "Qubix"
/* SNMP_CPE_BRAND into value (size bytes, cut to fit); 0. */
CMDLIB_API int util_snmp_get_device_info_cpe_brand(char *value, int size);
/* "DEVICE_RVERSION" from the version file "/version" (device M4200X and
 * version 1.0 give "M4200X_R1.0"), cut to size bytes; 0. */
CMDLIB_API int util_snmp_get_software_version(char *value, int size);
/* The device's MAC address as "%02X:%02X:%02X:%02X:%02X:%02X": the
 * wireless interface's when the product has Wi-Fi, else the first MAC
 * record's when there is one; otherwise (and for a null mac) the buffer is
 * left as it is. */
CMDLIB_API void util_snmp_get_ssid_mac(char *mac, int size);

CMDLIB_END_DECLS

#endif
