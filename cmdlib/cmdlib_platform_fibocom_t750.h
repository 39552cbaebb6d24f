/* cmdlib_platform_fibocom_t750: the operations of the fibocom_t750 product.
 *
 * The product's feature bits; reboot, factory reset, configuration update,
 * service restarts, device identity, the upload directory and the TR-069
 * helpers; the firmware upgrade operations (the generic image checks are in
 * cmdlib_fota.h, the downgrade guard in check_degraded_version_m4200x.h);
 * the settings-file reader and Wi-Fi site survey; the mesh topology; URL
 * interception.  Daemons normally reach these through the generic util_
 * front; the names here are the product's own.
 */
#ifndef CMDLIB_PLATFORM_FIBOCOM_T750_H
#define CMDLIB_PLATFORM_FIBOCOM_T750_H

#include "check_degraded_version_m4200x.h"
#include "cmdlib.h"
#include "cmdlib_export.h"
#include "cmdlib_features.h"
#include "cmdlib_fota.h"
#include "libbase.h"

CMDLIB_BEGIN_DECLS

struct cJSON;

/* ==== Feature bits ======================================================== */

/* Sets the product's own feature bits in big_value (other bits untouched). */
CMDLIB_API void fibocom_t750_get_system_features(BigValue *big_value);

/* ==== Settings file and Wi-Fi scan ======================================= */

#define SYSTEM_SETTINGS_FILE "/tmp/cmdlib/rc.system.conf"
#define WIFI_SCAN_SCRIPT_FILE "/tmp/wifi_scan.sh"
#define WIFI_SCAN_RESULT_FILE "/tmp/wifi_aps"

/* Fills the configuration groups of the record from a file of
 * "export KEY=value" lines.  Settings the file lacks keep their values and
 * bits; every setting found sets its bit in defined_fields.  0 after
 * reading, -1 when the file can't be opened (record untouched). */
CMDLIB_API int util_server_read_wifi_info_ex(const char *config_file, InfoStruct *server_wifi_info);
/* The same for SYSTEM_SETTINGS_FILE. */
CMDLIB_API int util_server_read_wifi_info(InfoStruct *server_wifi_info);

/* 1 for "xx:xx:xx:xx:xx:xx" with hexadecimal digits of either case, other
 * than the broadcast and the all-zero address; else 0. */
CMDLIB_API int is_valid_mac_for_api(const char *mac);

/* Appends {"macAddress": "..."} to the cJSON array wifi_aps for every
 * numbered row of a site-survey dump whose MAC column is valid.  0, or -1
 * when fpath is null or can't be opened. */
CMDLIB_API int fibocom_t750_get_wifi_info(char *fpath, struct cJSON *wifi_aps);

/* Runs a site survey on the radios that are switched on (the script
 * WIFI_SCAN_SCRIPT_FILE is written on first use) and adds the access
 * points found to the cJSON array wifi_aps.  0, or -1 on failure. */
CMDLIB_API int fibocom_t750_add_wifi_info_into_json(void *wifi_aps);

/* ==== Service and system operations ======================================
 *
 * Each runs a fixed firmware command through the shell.  Results, unless
 * noted: the shell's wait status as system() gives it ("status"), or 0.
 * Commands ending in "&" are started without waiting; their result says
 * only whether the shell could be started. */

/* "/etc/qxscript/ntp_sw.sh" (the script reads the servers from the
 * configuration; the arguments are ignored); 0. */
CMDLIB_API int fibocom_t750_opt_ntp_sync(char *s1, char *s2, char *s3, char *s4);
/* Hook of an indoor-unit variant: does nothing on this product. */
CMDLIB_API void idu_reboot(void);
/* Stops the dialler, switches the modem's radio off (AT+CFUN=0), tells
 * daemon 13 (message 20506), waits one second and reboots; the status.  The
 * reason is recorded by the caller (util_does_system_opt_reboot). */
CMDLIB_API int fibocom_t750_opt_system_reboot(const char *reason);
/* Restarts the TR-069 client in the background; the status. */
CMDLIB_API int fibocom_t750_opt_tr069_server_reboot(const char *reason);
/* Background restarts, 0: yaddns, modem log switch, SIP proxy, telnet, adb,
 * firewall level. */
CMDLIB_API int fibocom_t750_opt_restart_yaddns(void);
CMDLIB_API int fibocom_t750_set_modemlog_sw(void);
CMDLIB_API int fibocom_t750_restart_siproxy(void);
CMDLIB_API int fibocom_t750_opt_restart_telnet(void);
CMDLIB_API int fibocom_t750_opt_restart_adb(void);
CMDLIB_API int fibocom_t750_opt_set_firewall_level(void);
/* Waits for the ssh switch script; 0. */
CMDLIB_API int fibocom_t750_opt_restart_ssh(void);
/* Waits for the rpcapd restart; the status. */
CMDLIB_API int fibocom_t750_opt_restart_rpcapd(void);
/* enable 1: restart wifidog, any other value: stop it (background); the
 * status. */
CMDLIB_API int fibocom_t750_set_wifidog_status(int enable);
/* Applies the MAC filter of radio 0 (message 20741) or 1 (20740) to daemon
 * 22; the status, -1 for another radio number (nothing run). */
CMDLIB_API int fibocom_t750_opt_wifi_macfilter_apply(int wifi_type_num);
/* nfc_sw 1 writes, 0 clears the NFC tag (background); 0, -1 for another
 * value (nothing run). */
CMDLIB_API int fibocom_t750_set_nfc_status(int nfc_sw);
/* DDoS protection script (background); the status & 0xFF. */
CMDLIB_API int fibocom_t750_opt_set_ddos(void);
/* Waits for the voice client restart; 0. */
CMDLIB_API int fibocom_t750_opt_restart_voipclient(void);
/* Tells the SMS manager (daemon 4, message 4132), then restarts it; 0. */
CMDLIB_API int fibocom_t750_opt_restart_sms(void);
/* Static IP of the fifth L2TP tunnel (background); the status & 0xFF. */
CMDLIB_API int fibocom_t750_opt_set_l2tp_static_ip(void);
/* Asks the SMS manager (daemon 4) for the eSIM profile download (message
 * 4211); the status & 0xFF. */
CMDLIB_API int fibocom_t750_esim_east_download_profile(void);
/* Port isolation script (background); 0. */
CMDLIB_API int fibocom_t750_port_isolate_switch(void);
/* Restarts the network monitor (background); always 1. */
CMDLIB_API int fibocom_t750_restart_net_monitor(void);
/* Restart the TR-369 agent / the FOTA service (background); the status
 * XOR 1, & 0xFF: 1 when the shell started, 0 when it reported 1. */
CMDLIB_API int fibocom_t750_tr369_reboot(void);
CMDLIB_API int fibocom_t750_opt_restart_fota_update(void);

/* Applies an uploaded configuration file (arg: its path) with
 * "qxupdate --local --config --file PATH".  0 when the tool succeeded or
 * was ended by a signal (*result_code then untouched, respectively 0);
 * 104, also stored in *result_code, when it could not be run; otherwise
 * its exit code, also stored.  flag and result_str are not used. */
CMDLIB_API int fibocom_t750_process_config_update(void *arg, int flag, char *result_str,
                                                  int *result_code);

/* Factory reset: stops the SMS manager and restores the firewall, removes
 * the user configuration, counters, run-time state, logs, MAC filters,
 * messages and the wicrypt data, restores /etc/map from /rom/etc/map and
 * syncs.  Stores 0 in *result_code (when given) and returns 0; the steps'
 * own results are not checked.  The argument is not examined. */
CMDLIB_API int fibocom_t750_process_system_reset(void *arg, int flag, char *result_str,
                                                 int *result_code);

/* ==== Device identity ====================================================== */

#define T750_IMEI_FILE "/productinfo/imei"
#define T750_SN_FILE "/productinfo/generate_sn"
#define T750_MAC_FILE "/productinfo/mac"

/* The identity file's content (at most len-1 characters) with blanks and
 * line ends stripped at both ends; 0, or -1 when it can't be read.  The
 * IoT identifier is the serial number on this product; the MAC address
 * comes without its colons (12 hexadecimal digits). */
CMDLIB_API int fibocom_t750_get_device_imei(char *value, int len);
CMDLIB_API int fibocom_t750_get_device_sn(char *value, int len);
CMDLIB_API int fibocom_t750_get_device_ioti(char *value, int len);
CMDLIB_API int fibocom_t750_get_device_mac(char *value, int len);

/* ==== Upload directory ===================================================== */

#define T750_UPLOAD_DIR "/data/web_upload"
#define T750_DEBUGLOG_DIR "/data/debuglog"
#define T750_UPLOAD_MAX_SIZE 262144000 /* 250 MiB */

/* Creates T750_UPLOAD_DIR (mode 0666) when missing and writes
 * "/data/web_upload/NAME" into bufpath (at most bufsize-1 characters).
 * Only the last path component of uploadfile is used, so a name with "/"
 * or ".." never leads out of the directory.  0; -1 for a null pointer or a
 * name whose last component is empty, "." or ".." (bufpath then ""). */
CMDLIB_API int fibocom_t750_get_upload_path(char *bufpath, int bufsize, const char *uploadfile);
/* 0 up to T750_UPLOAD_MAX_SIZE bytes; -1 when larger or the name is null. */
CMDLIB_API int fibocom_t750_check_upload_file_size(const char *uploadfile, int filesize);
/* Removes T750_DEBUGLOG_DIR and everything in the upload directory, and
 * leaves the upload directory empty (mode 0666); always 1. */
CMDLIB_API int fibocom_t750_clean_file_in_uploadpath(void);

/* ==== eSIM and battery ======================================================= */

#define T750_ESIM_RET_FILE "/data/esim_east_MY0588_ret"
#define T750_BATTERY_GRAPH_FILE "/tmp/battery_graph_data"

/* The number in T750_ESIM_RET_FILE (its first 8 bytes); 1 when the file
 * is missing or empty (not done yet, or failed). */
CMDLIB_API int fibocom_t750_esim_east_get_download_ret(void);
/* The number "mdlcfg -g SYS_SIM_SLOT_CONFIG" prints; 0 when it prints
 * nothing. */
CMDLIB_API int fibocom_t750_esim_east_get_user_esim_flag(void);
/* The first three lines of T750_BATTERY_GRAPH_FILE, line ends kept, each
 * read with an fgets bound of its size - 1.  0 when all three were read; -1
 * otherwise, for a null pointer or a size below 2. */
CMDLIB_API int fibocom_t750_get_battery_graph_data(char *time, int time_size, char *capacity,
                                                   int capacity_size, char *temperature,
                                                   int temperature_size);

/* ==== TR-069 client support ================================================ */

#define T750_TR069_CONFIG_DIR "/tmp/tr069_config_upgrade"

/* Empties the upload directory, drops the page cache ("3" into
 * /proc/sys/vm/drop_caches) and leaves T750_UPLOAD_DIR and
 * T750_TR069_CONFIG_DIR empty (mode 0666); 0. */
CMDLIB_API int fibocom_t750_tr069_system_space_clearing(void);
/* Zeroes buff and writes the download path of the named firmware
 * ("/data/web_upload/NAME") or configuration file
 * ("/tmp/tr069_config_upgrade/NAME"), creating the directory; at most
 * buffsize-1 characters.  The name is reduced to its last component as in
 * fibocom_t750_get_upload_path.  buff, or null for a null pointer, a size
 * below 1 or an unusable name. */
CMDLIB_API char *fibocom_t750_tr069_firmware_download_to(char *buff, int buffsize, const char *fwname);
CMDLIB_API char *fibocom_t750_tr069_config_download_to(char *buff, int buffsize, const char *cfname);
/* 1: the firmware is upgraded by this library, not by the TR-069 client. */
CMDLIB_API int fibocom_t750_tr069_system_upgrade_mode(void);
/* Copies "system upgrade fail" (at most size-1 characters); -1, also
 * without copying when errstr is null or size < 2. */
CMDLIB_API int fibocom_t750_tr069_upgrade_error_str(char *errstr, int size);

/* ==== Firmware upgrade ======================================================
 *
 * Result codes: 0 success; T750_UPGRADE_TOOL_FAILED (104) the update tool
 * could not be run; T750_UPGRADE_NO_FILE (106) the image is missing; any
 * other value is qxupdate's own exit code.  A qxupdate ended by a signal
 * (stage 2 reboots the device under it) counts as success. */

#define T750_UPGRADE_TOOL_FAILED 104
#define T750_UPGRADE_NO_FILE 106

/* Upload names: 5 to 120 characters ending in ".img" or "update.bin", or
 * at least 6 ending in ".conf" (case-sensitive); 0 or -1. */
CMDLIB_API int fibocom_t750_check_upload_file_name(const char *uploadfile);
/* Firmware names: 0 for 5..120 characters ending in ".img", or at least 11
 * ending in "update.bin"; 3 for null or a length outside 5..120; 2 for any
 * other ending (configuration files included). */
CMDLIB_API int fibocom_t750_system_upgrade_filename_check(const char *filename);
/* 0 when packtoolpro lists the image as built for boardType (see
 * validate_firmware_image_packtoolpro); otherwise empties the upload
 * directory (fibocom_t750_clean_file_in_uploadpath) and returns -1. */
CMDLIB_API int fibocom_t750_validate_upload_file(const char *uploadfile, const char *boardType);
/* 0 for any non-null name, -1 for null: no further check on this product. */
CMDLIB_API int fibocom_t750_verify_upload_file(const char *fileName);
/* Stage 1 checks and unpacks the image ("qxupdate --local --system --stage
 * 1 --file PATH"); stage 2 writes it and reboots ("... --reboot --stage 2
 * ..."); the result code (106 for a missing file, nothing run). */
CMDLIB_API int fibocom_t750_system_upgrade_stage1(const char *fileName);
CMDLIB_API int fibocom_t750_system_upgrade_stage2(const char *fileName);
/* Stage 1, then, when it succeeded, stage 2; the result code. */
CMDLIB_API int fibocom_t750_local_system_upgrade(const char *fileName);
/* As the local upgrade, with a message in errstr (at most size-1
 * characters) when the file is missing (106) or stage 1 fails (its code);
 * -1 when fw or errstr is null or size < 2. */
CMDLIB_API int fibocom_t750_tr069_system_firmware_upgrade(const char *fw, char *errstr, int size);
/* 1 during the first boot after an upgrade: the persistent flag
 * (/mnt/data/upgrade_flag or /data/upgrade_flag) is moved to
 * /tmp/upgrade_flag by the first caller, which later callers then see;
 * else 0. */
CMDLIB_API int fibocom_t750_is_first_run_after_upgrade(void);

/* ==== Mesh topology ========================================================
 *
 * The mesh daemon dumps the topology as JSON into T750_MESH_DUMP_FILE: an
 * object whose "topology information" array lists this node first and then
 * the other nodes, each with the strings "AL MAC" and "Device role" ("1"
 * controller, "2" agent). */

#define T750_MESH_DUMP_FILE "/tmp/dump.txt"
/* A dump of this size or more is refused (0xFFFFF). */
#define T750_MESH_DUMP_LIMIT 1048575
#define T750_MESH_ALMAC_LEN 17

/* An AL MAC address as text, "xx:xx:xx:xx:xx:xx": exactly 17 characters,
 * no terminator. */
typedef struct fibocom_t750MeshAlMac {
    char almac[T750_MESH_ALMAC_LEN];
} meshAlmac_t;

/* The loaded topology.  Allocated by fibocom_t750_mesh_topo_get_info,
 * freed by fibocom_t750_mesh_topo_clean; both address arrays have one slot
 * for every node of the dump. */
typedef struct fibocom_t750MeshTopoInfo {
    int other_controller_cnt;
    int other_agent_cnt;
    meshAlmac_t self_almac;
    meshAlmac_t *iterator_controller_almac; /* next controller to hand out */
    meshAlmac_t *iterator_agent_almac;      /* next agent to hand out */
    meshAlmac_t *other_controller_almacs;
    meshAlmac_t *other_agent_almacs;
} meshTopoInfo_t;

/* Loads T750_MESH_DUMP_FILE into a new record at *p_mesh_topo_info (an
 * older record there is freed first); 1, or -1 with *p_mesh_topo_info null
 * when the dump is missing, empty, too large, not JSON, without the array
 * or without a valid address of this node.  Nodes with another role or an
 * invalid address are skipped. */
CMDLIB_API int fibocom_t750_mesh_topo_get_info(meshTopoInfo_t **p_mesh_topo_info);
/* Frees the record and sets *p_mesh_topo_info to null; 0. */
CMDLIB_API int fibocom_t750_mesh_topo_clean(meshTopoInfo_t **p_mesh_topo_info);
/* Copy min(out_size, 17) characters of an address into out, adding no
 * terminator: zero out and give it 18 bytes to get a C string.  0, or -1
 * without a record. */
CMDLIB_API int fibocom_t750_mesh_topo_get_self_almac(char *out, const int out_size,
                                                     meshTopoInfo_t **p_mesh_topo_info);
/* The next controller (agent) address and 0; -1 after the last one, when
 * the iteration starts over, or without a record. */
CMDLIB_API int fibocom_t750_mesh_topo_get_next_controller_almac(char *out, const int out_size,
                                                                meshTopoInfo_t **p_mesh_topo_info);
CMDLIB_API int fibocom_t750_mesh_topo_get_next_agent_almac(char *out, const int out_size,
                                                           meshTopoInfo_t **p_mesh_topo_info);
/* The number of other controllers (agents) into *out; 0, or -1 without a
 * record. */
CMDLIB_API int fibocom_t750_mesh_topo_get_controller_cnt(int *out, meshTopoInfo_t **p_mesh_topo_info);
CMDLIB_API int fibocom_t750_mesh_topo_get_agent_cnt(int *out, meshTopoInfo_t **p_mesh_topo_info);
/* 1 when almac is non-null and exactly 17 characters long (only the length
 * is checked), else 0. */
CMDLIB_API int fibocom_t750_mesh_topo_is_almac_valid(const char *almac);
/* Byte comparison over the first min(mac_size, 17) characters, stopping
 * neither at a NUL nor at a separator and case-sensitive (upper case sorts
 * first): -1, 0 or 1; -1 also when either is null. */
CMDLIB_API int fibocom_t750_mesh_topo_cmp_mac(const char *mac1, const char *mac2, const int mac_size);

/* ==== URL interception ====================================================== */

#define T750_URL_FILTER_DIR "/mnt/data/etc/qxcfg/iptables"
#define T750_URL_FILTER_FILE "/mnt/data/etc/qxcfg/iptables/iptables_url_filter"
#define T750_URL_FILTER_DEFAULT_FILE "/mnt/data/etc/qxcfg/iptables/iptables_url_filter_default"
#define T750_URL_FILTER_TMP_DEFAULT_FILE "/tmp/cmdlib/iptables/iptables_url_filter_default"

/* Replaces the URL-filter rules with the list (count entries, stopping at
 * the first null one): T750_URL_FILTER_FILE gets the web page's URL-filter
 * message (command 26) with an IPv4 and an IPv6 rule per URL, and the two
 * factory default rule files are removed.  0; -1 when url is null, count
 * is not positive or the message can't be built or written (the rule file
 * is then left as it was).  The firewall applies the file when it next
 * starts. */
CMDLIB_API int fibocom_t750_url_intercept(const char **url, const int count);

CMDLIB_END_DECLS

#endif
