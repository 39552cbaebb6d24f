/* cmdlib_platform_fibocom_t750: the operations of the fibocom_t750 product.
 *
 * Settings-file reader and Wi-Fi site survey (this section); the product's
 * feature bits.
 */
#ifndef CMDLIB_PLATFORM_FIBOCOM_T750_H
#define CMDLIB_PLATFORM_FIBOCOM_T750_H

#include "cmdlib.h"
#include "cmdlib_export.h"
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

CMDLIB_END_DECLS

#endif
