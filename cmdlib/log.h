/* log: debug-flag files, the exception log and size-capped debug files.
 *
 * A program's debug output is on while its flag file exists; the set of
 * flag files is rebuilt from one bit mask.  Unexpected events go to the
 * exception log "/tmp/cmdlib/.reboot_module_log" with the system's uptime.
 * None of these functions reports errors: a full log drops new entries.
 */
#ifndef CMDLIB_LOG_H
#define CMDLIB_LOG_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* One program whose debug output can be switched. */
typedef struct LogConfigInfo {
    const char *application_name;
    const char *flag_file_name;     /* its debug output is on while this exists */
    int bit_offset_to_enable_debug; /* its bit in the debug mask */
} LogConfigInfo;

#define LOG_CONFIG_COUNT 4
#define LOG_FLAG_FILES_DIR "/tmp/log-enabled-flag-files-dir"
#define EXCEPTION_LOG_FILE "/tmp/cmdlib/.reboot_module_log"

/* dialtool (bit 0), cmdlib (1), mdlcfg (2), libplatform (3) */
CMDLIB_API extern const LogConfigInfo log_configs[LOG_CONFIG_COUNT];

/* 1 when the flag file exists, else 0 */
CMDLIB_API int util_should_debug_log_info(const char *flag_file_name);

/* log_configs with *count set to its length; null when count is null */
CMDLIB_API const LogConfigInfo *util_get_log_config_info(int *count);

/* Creates the flag file of every program whose bit is set in the mask (the
 * text form of a BigValue) and removes the others.  A mask beginning with
 * "all" in any case enables every program. */
CMDLIB_API void util_recreate_debug_flag_files(const char *debug_hex_flags);

/* Appends "<process>\t\t<uptime in words>\t\t<event>\n" to the exception
 * log, unless the log has reached 1 MiB. */
CMDLIB_API void util_write_exception_log(const char *process_name, const char *event_description);

/* Appends content and a line feed to path while the file is below 10 MiB. */
CMDLIB_API void save_debug_file_content(const char *path, const char *content);

/* Replaces the file's content by the decimal value and a line feed. */
CMDLIB_API void write_digit_to_file(const char *path, int value);

/* Does nothing on this product; 0. */
CMDLIB_API int util_write_system_log(const char *log);

CMDLIB_END_DECLS

#endif
