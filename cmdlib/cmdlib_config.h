/* cmdlib_config: the configuration store.
 *
 * Settings are kept as shell assignments, one a line: "export KEY=value".
 * The running configuration is dumped to CMDLIB_SYSTEM_CONFIG_FILE; fresh
 * exports and the configuration tools' outputs use the same format.
 *
 * Lookups never fail: a key that is not found reads as "" (never a null
 * pointer).  Readers return -1 only for a file that can't be used.  Keys
 * and values are cut silently to the width of the buffer that receives
 * them.  Nothing here allocates except the one buffer of the packed-file
 * check.
 */
#ifndef CMDLIB_CONFIG_H
#define CMDLIB_CONFIG_H

#include <stddef.h>

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define CONFIG_KEY_SIZE 64   /* 63 characters and the terminator */
#define CONFIG_VALUE_SIZE 96 /* 95 characters and the terminator */

/* One setting; value without its surrounding double quotes. */
typedef struct ConfigKeyValuePair {
    char key[CONFIG_KEY_SIZE];
    char value[CONFIG_VALUE_SIZE];
} ConfigKeyValuePair;

/* Maps the key field_name onto the character array of field_size bytes at
 * field_offset in a destination structure.  field_flag belongs to the
 * table's users (a defined_fields bit for InfoStruct tables, 1 in the
 * firewall table); the structure reader ignores it. */
typedef struct FieldConfigInfo {
    const char *field_name;
    size_t field_offset;
    size_t field_size;
    int field_flag;
} FieldConfigInfo;

#define CMDLIB_SYSTEM_CONFIG_FILE "/tmp/cmdlib/rc.system.conf"
#define CMDLIB_CURRENT_EXPORT_FILE "/tmp/cmdlib/.CURRENT_CONFIG_INFO_EXPORT_RESULT"
#define CMDLIB_REQUIREMENT_EXPORT_FILE "/tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT"
#define CMDLIB_REQUIREMENT_EXPORT_FILE_0 "/tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT.0"
#define CMDLIB_MANAGE_REQUIREMENT_FILE "/mnt/data/etc/qxcfg/manage_requirement_config_file.conf"
#define CMDLIB_SYSTEM_REQUIREMENT_FILE "/mnt/data/etc/qxcfg/system_requirement_config_file.conf"

/* Capacities of the process-wide cache and of its work list. */
#define SYSTEM_CONFIGS_CAPACITY 400
#define SYSTEM_CONFIGS_MAX_KEYS 1800

/* Packed configuration files of this size or larger are refused. */
#define CONFIG_PACKED_FILE_SIZE_LIMIT 102400

/* The running configuration's cache, loaded once per process on first use
 * and never reloaded.  system_configs_count is -1 when the dump could not
 * be read; have_read_system_configs turns 1 at the first load, whatever
 * its outcome. */
CMDLIB_API extern ConfigKeyValuePair system_configs[SYSTEM_CONFIGS_CAPACITY];
CMDLIB_API extern int system_configs_count;
CMDLIB_API extern int have_read_system_configs;

/* Parses one "export KEY=value" line (at most its first 511 characters).
 * The value is unquoted and unescaped as the exporter quoted it.  Name and
 * value are written with one byte less than their buffers allow: at most
 * config_name_size - 2 and config_value_size - 2 characters.  Returns 0
 * for an assignment with a non-empty name (the value may be empty), else
 * -1 with the outputs untouched. */
CMDLIB_API int util_config_parse_config_export_line(const char *one_line, char *config_name,
                                                    int config_name_size, char *config_value,
                                                    int config_value_size);

/* Reads the assignments of config_file whose key is one of args[0 ..
 * args_count-1] (every assignment when args is null or args_count is 0)
 * into result, in file order, one pair per matching line.  Lines are read
 * 255 characters at a time; a value in double quotes loses them; an
 * assignment with an empty value is skipped.  Reading stops when
 * max_result_count pairs are stored or, with a key list, args_count pairs.
 * Repeated keys are stored each time.  Returns the number of pairs, or -1
 * when the path is null/empty/missing, result is null, max_result_count is
 * not positive or the file can't be opened. */
CMDLIB_API int util_config_read_specified_fields(const char *config_file, const char **args,
                                                 int args_count, ConfigKeyValuePair *result,
                                                 int max_result_count);

/* util_config_read_specified_fields on CMDLIB_SYSTEM_CONFIG_FILE. */
CMDLIB_API int util_config_read_fields(const char **args, int args_count,
                                       ConfigKeyValuePair *result, int max_result_count);

/* Value of the first pair whose key equals field_name exactly, or "". */
CMDLIB_API const char *util_config_get_field_value(const ConfigKeyValuePair *result,
                                                   int result_count, const char *field_name);

/* Copies key pointers of the null-terminated list config_fields into
 * args[0], args[1], ... until the null entry or until max_args_count are
 * copied.  Returns the number copied. */
CMDLIB_API int util_config_add_fields_need_to_read(const char **args, int max_args_count,
                                                   const char *const *config_fields);

/* Parses every line of config_file with the line parser (255 characters a
 * read) and writes each value into every field of dest_struct whose
 * descriptor names the key, cut to field_size - 1 characters.  A key that
 * occurs twice leaves its last value; absent keys leave their fields as
 * they were.  0 when the file was read, -1 when the path is null/empty or
 * the file can't be opened. */
CMDLIB_API int util_config_read_config_file_to_one_struct(const char *config_file,
                                                          const FieldConfigInfo *all_fields,
                                                          int all_fields_count, void *dest_struct);

/* Loads the cache: the SNMP module's keys from CMDLIB_SYSTEM_CONFIG_FILE. */
CMDLIB_API void util_config_read_all(void);

/* Value of config_name in the cache (loaded first if need be), or "". */
CMDLIB_API const char *util_config_get_config_value(const char *config_name);

/* Value of name in the export config_dump_file (at most 95 characters)
 * into value, which holds at least CONFIG_VALUE_SIZE bytes; "" when the key
 * or the file is missing. */
CMDLIB_API void util_get_only_one_config(const char *config_dump_file, const char *name,
                                         char *value);

/* util_get_only_one_config on CMDLIB_SYSTEM_CONFIG_FILE. */
CMDLIB_API void util_get_original_one_config(const char *name, char *value);

/* Checks a packed configuration file: after the in-place transform of
 * util_encrypt_file_content it holds a 4-byte big-endian payload length
 * L, the L payload bytes, a pad byte when L is odd and a 2-byte check word
 * that makes the carry-less 16-bit sum of the whole file 0xFFFF.  When the
 * file is intact and dest_script_file_path is neither null nor empty, the
 * payload is written there.  Results (a message on stderr for each failure
 * but 1 when is_log_enable is non-zero):
 *   0 valid, 1 no path, 2 file missing, 3 no memory, 4 file unreadable,
 *   5 check sum wrong, 6 file too long (102400 bytes or more) or size not
 *   matching the length field, 7 destination can't be written. */
CMDLIB_API int util_check_if_config_file_is_valid(const char *config_file_path,
                                                  const char *dest_script_file_path,
                                                  int is_log_enable);

/* Exports the running configuration with "mdlcfg -e" and the requirement
 * configuration (the remote-management file if present, else the
 * system's) with "configloader", and compares the watched keys
 * (QX_ADMIN_WEB_PAGE_HIDE).  Returns 0 when there is no requirement file,
 * no export, or no watched key with a non-empty requirement value that
 * differs; otherwise -1, after running the backup, execute and restore
 * scripts of a configuration upgrade when need_restore_default is
 * non-zero. */
CMDLIB_API int util_check_if_config_file_work(int need_restore_default);

CMDLIB_END_DECLS

#endif
