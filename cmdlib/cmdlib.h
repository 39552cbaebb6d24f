/* cmdlib: the system information record and its readers.
 *
 * InfoStruct is the flat record in which a daemon gathers what it reports
 * about the router: a slice of the configuration, the firmware and module
 * identity, the radio measurements and a few run-time numbers.  A daemon
 * zeroes an instance, runs the readers it needs and reads fields by name.
 */
#ifndef CMDLIB_H
#define CMDLIB_H

#include "cmdlib_config.h"
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

/* ==== Shell names: configuration keys and macros ======================== */

/* A macro of the shell scripts: its name and its value text. */
typedef struct NameValueStringPair {
    const char *name;
    const char *value;
} NameValueStringPair;

#define ALL_NEED_PARSED_FIELDS_COUNT 59
#define ALL_MACROS_NEED_TO_EXPORT_COUNT 132
/* Where the macro file goes when no destination is given; its own second
 * line names this path whatever the destination. */
#define ALL_MACRO_EXPORT_DEFINITION_FILE "/tmp/.all_macro_export_definition_file"

/* The later configuration fields of InfoStruct as descriptors; field_flag
 * is the field's bit in defined_fields. */
CMDLIB_API extern const FieldConfigInfo all_need_parsed_fields[ALL_NEED_PARSED_FIELDS_COUNT];

/* Every macro the shell scripts share with the library, in a fixed order.
 * Five names occur twice, with the same value each time. */
CMDLIB_API extern const NameValueStringPair all_macros_need_to_export[ALL_MACROS_NEED_TO_EXPORT_COUNT];

/* The field of the record that holds the configuration key (exact name;
 * "PWD" is a second name of PSK_KEY), or NULL for an unknown key or a null
 * argument. */
CMDLIB_API char *util_get_config_field_value(InfoStruct *nvram_config_info,
                                             const char *config_field_name);

/* Prints the defined configuration fields of the record to standard
 * output, each as a line feed followed by export KEY="value" (so the text
 * starts with an empty line and has no final line feed).  PSK_KEY is
 * printed twice, as PWD and as PSK_KEY.  A value holding ", $, ` or \ has
 * a backslash put before each of them, so that a shell evaluating the text
 * gets the stored value back and runs nothing; other values print as
 * stored. */
CMDLIB_API void util_export_config_info(InfoStruct *nvram_config_info);

/* Writes every macro as export NAME="value" into an executable shell file:
 * dest_file, or ALL_MACRO_EXPORT_DEFINITION_FILE when it is NULL or "".
 * After the table come REAL_WAN_IF, REAL_BRIDGE_IF, REAL_WIFI_IF,
 * REAL_ETHERNET_IF and REAL_GRE_IF with the current interface names.  The
 * file is replaced whole, so a script that sources it never reads half of
 * it. */
CMDLIB_API void util_export_all_macro_definitions_to_file(const char *dest_file);

/* The value text of the first macro of that exact name, or NULL. */
CMDLIB_API const char *util_macro_get_definitions_value(const char *macro_name);

/* The value of a NAME=value line, cut in place: blanks, tabs and double
 * quotes after the first "=" are skipped; the value ends at CR, LF or a
 * double quote, and also at a blank or tab when no quote was skipped.
 * A line without "=" (or NULL) gives a constant empty string. */
CMDLIB_API char *util_get_field_value_seperated_by_equal(char *tmp_buffer);

/* In place: drops the surrounding double quotes of a quoted text (a lone
 * double quote becomes empty), then every backslash that stands before a
 * double quote, runs of them included. */
CMDLIB_API void util_strip_quote_string_from_cfg_e(char *processed_quoted_string);

/* Does nothing on this product. */
CMDLIB_API void util_overwrite_config_info(InfoStruct *sys_config_info,
                                           InfoStruct *nvram_config_info);

/* The field of that name as a number (atoi rules; 0 for a null record). */
CMDLIB_API int util_get_QX_L2TP_MODE(InfoStruct *info);
CMDLIB_API int util_get_QX_ENABLE_PPP_FORWARD(InfoStruct *info);
/* Always 0 on this product. */
CMDLIB_API int util_get_LAN_LED_AS_LTE_STATUS(InfoStruct *info);

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
