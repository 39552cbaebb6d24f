/* cmdlib: the system information record and its readers.
 *
 * InfoStruct is the flat record in which a daemon gathers what it reports
 * about the router: a slice of the configuration, the firmware and module
 * identity, the radio measurements and a few run-time numbers.  A daemon
 * zeroes an instance, runs the readers it needs and reads fields by name.
 */
#ifndef CMDLIB_H
#define CMDLIB_H

#include "cmdlib_export.h"
#include "cmdlib_info_fields.h"

CMDLIB_BEGIN_DECLS

/* ==== System information record ========================================= */

#define CMDLIB_INFO_DECLARE_TEXT_FIELD(group, name, width, bit) char name[width];
#define CMDLIB_INFO_DECLARE_INT_FIELD(name) int name;

/* Text fields are NUL-terminated arrays; configuration fields (groups 1 to
 * 8) carry the name of the key they hold.  defined_fields has one bit per
 * configuration field, set when the settings reader found the key: bit k is
 * bit k % 32 of word k / 32. */
typedef struct InfoStruct {
    CMDLIB_INFO_TEXT_FIELDS(CMDLIB_INFO_DECLARE_TEXT_FIELD)
    CMDLIB_INFO_INT_FIELDS(CMDLIB_INFO_DECLARE_INT_FIELD)
    unsigned int defined_fields[CMDLIB_INFO_DEFINED_FIELDS_WORDS];
} InfoStruct;

#undef CMDLIB_INFO_DECLARE_TEXT_FIELD
#undef CMDLIB_INFO_DECLARE_INT_FIELD

/* Shared composition buffers of the module-information sync (not
 * reentrant: one thread of a process at a time). */
CMDLIB_API extern char string_buffer[512];
CMDLIB_API extern char write_buffer[1024];

/* Name of the modem module in use; set by the program that selects it. */
#define UTIL_USED_MODULE_NAME_SIZE 64
CMDLIB_API extern char util_used_module_name[UTIL_USED_MODULE_NAME_SIZE];

/* Firmware identity (group 9) from a file of "name: value" lines.
 * 0 when read, -1 when the file can't be opened. */
CMDLIB_API int util_read_version_info(const char *config_file, InfoStruct *server_wifi_info);

/* Module identity (groups 10 and 12) from "/tmp/cmdlib/.moduleinfo".
 * A line's name selects the first keyword it is a prefix of.
 * 1 when read, 0 when the file can't be opened. */
CMDLIB_API int util_load_module_info(InfoStruct *module_info);

/* Builds "/tmp/cmdlib/.moduleinfo2": the module file plus uptime, the WAN
 * interface's traffic counters and the configuration's MD5.  1, or 0 when
 * the counters could not be read. */
CMDLIB_API int util_sync_module_info(const char *network_card_name);

/* Writes the radio measurements to "/tmp/cmdlib/.cached_lte_module_status"
 * (built aside and copied over, so readers never see half a cache). */
CMDLIB_API void util_cache_module_status_info(InfoStruct *info_struct);

/* Does nothing on this product: the cache is written for other readers. */
CMDLIB_API void util_read_cached_module_status_info(InfoStruct *info_struct);

/* The status indication file: ten numbers, each stored into its pointer
 * when that is not null.  0, or -1 when fewer than ten numbers. */
CMDLIB_API int util_read_status_ind(int *is_sim_exist, int *need_pin, int *need_puk,
                                    int *signal_quality, int *sms_status, int *reg_status,
                                    int *greg_status, int *ereg_status, int *act,
                                    int *network_data_service);

/* First number of "/proc/uptime" as text (seconds with fraction), or ""
 * when the file can't be read.  uptime_value holds UTIL_UPTIME_TEXT_SIZE
 * bytes; longer words are cut.  Returns uptime_value. */
#define UTIL_UPTIME_TEXT_SIZE 32
CMDLIB_API char *util_read_system_uptime(char *uptime_value);

/* "MemTotal" and "MemFree" figures of "/proc/meminfo" ("12345 kB"), each
 * into its buffer of UTIL_MEMINFO_TEXT_SIZE bytes when given.  1 when read,
 * 0 when the file can't be opened. */
#define UTIL_MEMINFO_TEXT_SIZE 64
CMDLIB_API int util_read_meminfo(char *mem_total, char *mem_free);

/* util_used_module_name */
CMDLIB_API char *util_get_used_module_name(void);

/* Groups 1 to 8 from a fresh "mdlcfg -e" export (kept in a temporary file
 * that is removed afterwards).  The settings reader's result: 0, or -1 when
 * the export could not be read. */
CMDLIB_API int util_read_config_parameters(InfoStruct *server_wifi_info);

CMDLIB_END_DECLS

#endif
