/* cmdlib modem module: LTE status, one-cell lock, frequencies, the AT
 * command channel, modem ports and dial processes, UTF-8 to code units.
 *
 * The active platform's LTE table is fixed when the library is built:
 * p_lte_query_lock_cell_st points at it from the start and never changes.
 */
#ifndef CMDLIB_MODULE_H
#define CMDLIB_MODULE_H

#include <stdint.h>

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* ==== LTE status and one-cell lock ======================================== */

typedef int (*util_parse_lte_status_func)(char *lte_status_response, char *lte_status_result);
typedef int (*util_parse_lock_one_cell_func)(char *lock_one_cell_response, int *locked_status,
                                             char *earfcn, char *physical_cell_id);
typedef int (*util_lock_one_cell_func)(int lock_or_unlock, char *earfcn, char *physical_cell_id,
                                       char *dest_at_command);
typedef int (*util_read_module_status_func)(char *buffer, char *colon_pointer,
                                            InfoStruct *module_info);

/* get_lte_status_by_api bits */
#define UTIL_LTE_STATUS_BY_API 0x1       /* status read by programming interface */
#define UTIL_LOCK_ONE_CELL_BY_API 0x2    /* one-cell lock queried the same way */
#define UTIL_LTE_STATUS_IN_DIALTOOL 0x4  /* status gathered by the dial tool */

/* A platform's LTE status and one-cell lock table.  Operations may be
 * NULL; their dispatchers then fail with -1 (read_module_status_function:
 * answer 0). */
typedef struct LTEQueryStatusAndLockOneCell {
    int get_lte_status_by_api;
    const char *at_to_query_lte_status; /* several commands, each ended by "\n" */
    const char *at_to_query_lock_one_cell_status;
    const char *at_to_query_earfcn_physical_cell_id;
    util_parse_lte_status_func parse_lte_status_function;
    util_parse_lock_one_cell_func parse_lock_one_cell_status_function;
    util_lock_one_cell_func at_to_lock_one_cell_function;
    util_parse_lte_status_func parse_earfcn_physical_function;
    util_read_module_status_func read_module_status_function;
} LTEQueryStatusAndLockOneCell;

CMDLIB_API extern const LTEQueryStatusAndLockOneCell *const p_lte_query_lock_cell_st;

CMDLIB_API char *util_get_at_to_query_lte_status(void);
CMDLIB_API char *util_get_at_to_query_lock_one_cell_status(void);
CMDLIB_API char *util_get_at_to_query_earfcn_physical_cell_id(void);
/* The get_lte_status_by_api bits, each as 0 or 1. */
CMDLIB_API int util_should_get_lte_status_by_api(void);
CMDLIB_API int util_should_query_lock_one_cell_by_api(void);
CMDLIB_API int util_should_get_lte_status_in_dialtool(void);

/* Empties lte_status_result, then: -1 for a missing AT answer (unless the
 * status comes by programming interface); 0 with the empty result when no
 * SIM is present or the status file shows a technology other than LTE;
 * else the platform parser's result (-1 without one). */
CMDLIB_API int util_parse_lte_status(char *lte_status_response, char *lte_status_result);
/* Same path as util_parse_lte_status. */
CMDLIB_API int util_parse_query_earfcn_physical_cell_id_response(char *lte_status_response,
                                                                 char *lte_status_result);
/* Empty earfcn and physical_cell_id, then the platform parser (-1 without). */
CMDLIB_API int util_parse_lock_one_cell_status(char *lock_one_cell_response, int *locked_status,
                                               char *earfcn, char *physical_cell_id);
/* Empty dest_at_command, then the platform builder (-1 without);
 * lock_or_unlock non-zero locks, 0 unlocks. */
CMDLIB_API int util_get_at_to_lock_one_cell(int lock_or_unlock, char *earfcn,
                                            char *physical_cell_id, char *dest_at_command);
/* The platform's line reader, or 0 when it has none. */
CMDLIB_API int util_read_module_status_for_specified_modem(char *buffer, char *colon_pointer,
                                                           InfoStruct *module_info);

/* Room the status list may add to a buffer: 23 entries of label, "@",
 * up to 31 characters of value and "$". */
#define UTIL_LTE_STATUS_LIST_SIZE 1024

/* APPENDS the non-empty radio fields as "label@value" entries joined by
 * "$" (a "$" also separates them from text already in the buffer).  The
 * buffer needs its current length plus UTIL_LTE_STATUS_LIST_SIZE bytes.
 * 0, or -1 when lte_status_result is NULL. */
CMDLIB_API int util_generate_lte_status_response_result(InfoStruct *lte_status_resonse,
                                                        char *lte_status_result);

/* Band 42/43 modules.  Downlink frequency in kHz -> EARFCN, 0 outside
 * 3400000..3800000. */
CMDLIB_API int util_get_earfcn_from_downlink_frequency_value_for_b42_43_module(int frequency_value);
/* 3GPP band (42 or 43) of a downlink EARFCN, -1 outside both. */
CMDLIB_API int util_get_band_from_downlink_earfcn_value(int earfcn);
/* Downlink frequency of an EARFCN in units of 10 kHz (not kHz), -1 outside
 * bands 42 and 43. */
CMDLIB_API int util_get_frequency_from_downlink_earfcn_value(int earfcn);

/* One row of all_band_earfcn_ranges: inclusive downlink EARFCN range. */
typedef struct EARFCNToBand {
    int band;
    int EARFCN_min;
    int EARFCN_max;
} EARFCNToBand;
#define UTIL_BAND_EARFCN_RANGE_COUNT 2
CMDLIB_API extern const EARFCNToBand all_band_earfcn_ranges[UTIL_BAND_EARFCN_RANGE_COUNT];

typedef enum PRESTORE_FREQUENCY_LIST_TYPE {
    PRESTORE_FREQUENCY_LIST_TYPE_FDD = 0,
    PRESTORE_FREQUENCY_LIST_TYPE_TDD = 1
} PRESTORE_FREQUENCY_LIST_TYPE;

/* 1 when the record is NULL or its prestore list is empty once trailing
 * blanks are stripped (the field is stripped in place), else 0. */
CMDLIB_API int util_is_fdd_prestore_frequency_empty(InfoStruct *info_struct);
CMDLIB_API int util_is_tdd_prestore_frequency_empty(InfoStruct *info_struct);
/* First entry of the prestore list (blank- or comma-separated, 32 at most)
 * that is not a token of the AT answer, or NULL when none is missing.  The
 * text lives in a buffer of the library overwritten by the next call: one
 * thread of a process at a time. */
CMDLIB_API char *util_get_next_prestore_frequency_not_in_list(const char *tmp_at_response_result,
                                                              InfoStruct *info_struct,
                                                              PRESTORE_FREQUENCY_LIST_TYPE list_type);
CMDLIB_API char *util_get_next_fdd_prestore_frequency_not_in_list(const char *at_response_result,
                                                                  InfoStruct *info_struct);
CMDLIB_API char *util_get_next_tdd_prestore_frequency_not_in_list(const char *at_response_result,
                                                                  InfoStruct *info_struct);
/* 1 when nothing of the list is missing from the answer. */
CMDLIB_API int util_is_all_fdd_prestore_frequency_in_list(const char *at_response_result,
                                                          InfoStruct *info_struct);
CMDLIB_API int util_is_all_tdd_prestore_frequency_in_list(const char *at_response_result,
                                                          InfoStruct *info_struct);

/* ==== AT command channel ===================================================== */

/* Runs "sendat" on the AT port with the command text and copies its answer
 * into response (size bytes, zeroed first; cut to size - 1 characters).
 * max_timeout 0 starts the sender and returns at once; any other value
 * waits up to 60 passes (a pass sleeps one second only while no answer is
 * there yet).  An empty or NULL at runs nothing.  Any running sender is
 * killed first: callers serialise their AT traffic themselves. */
CMDLIB_API void util_send_at_commands(const char *at, char *response, int size, int max_timeout);

/* "/dev/ttyUSB1" */
CMDLIB_API char *util_get_at_port(void);
/* Hook to wrap a command for a dial device: returns original_at_cmd_string
 * and writes nothing on this product. */
CMDLIB_API char *util_get_wrapped_at_cmd_for_module(char *dial_module_device,
                                                    char *original_at_cmd_string,
                                                    char *generated_cmd);
/* "" on this product */
CMDLIB_API char *util_get_modem_log_file_name(void);
/* 1 when a modem logging tool runs (ComProxy, remserial -s -p, diaggrab,
 * diag_socket_log). */
CMDLIB_API int util_is_log_tools_running(void);
/* Up to max_count dial program names into process_names; the count. */
CMDLIB_API int util_get_all_dial_process_names(char **process_names, int max_count);
/* 1 when a known dial program runs, or when none is known. */
CMDLIB_API int util_is_dial_program_running(void);
/* Kills every modem-related process before a module firmware upgrade. */
CMDLIB_API void util_kill_some_processes_for_modem_upgarde(void);
/* From the status indication file: dial_status 1 when registered on the
 * home network (circuit, packet or LTE), signal_quality the fourth number.
 * 0, or -1 (outputs untouched) when the file holds fewer than 8 fields. */
CMDLIB_API int cmd_get_dial_status_and_signal_quality(int *dial_status, int *signal_quality);

/* "eth1" */
CMDLIB_API char *util_get_the_second_wan_interface_name(void);
/* QX_CONFIG_APN_NAME3 of the record ("" for a NULL record). */
CMDLIB_API char *util_get_apn_for_the_second_wan_interface(InfoStruct *info_struct);
/* 1 when the second interface name and its APN are both non-empty. */
CMDLIB_API int util_should_we_use_the_second_apn(InfoStruct *info_struct);
/* always 0 */
CMDLIB_API int util_get_default_cid_value_for_the_second_apn(InfoStruct *info_struct);

/* ==== UTF-8 to hexadecimal code units ======================================== */

/* Bytes of the character that starts with this byte (1..6; continuation
 * bytes and 0xFE/0xFF count as one). */
CMDLIB_API uint8_t util_get_one_utf8_strlen(const uint8_t one_utf8);
/* Characters in the first utf8_len bytes (stopping at a NUL). */
CMDLIB_API int util_get_utf8_strlen(const uint8_t *utf8, int utf8_len);
/* Decodes one character of utfbytes bytes into *Unic: utfbytes, 0 for a
 * byte after the first that is not 10xxxxxx or a length outside 1..6, -1
 * for a NULL argument or a length of 0. */
CMDLIB_API int util_utf8_to_unicode_one(const uint8_t *pInput, uint32_t *Unic, int utfbytes);
/* Each character as "%04X" (five or six digits above 0xFFFF, "0000" for a
 * bad sequence) into output_str of output_len bytes, cut at the end.  The
 * number of hex characters written, or -1 for a NULL or zero argument. */
CMDLIB_API int util_utf8_to_unicode_string(const uint8_t *utf8, uint8_t *output_str, int utf8_len,
                                           int output_len);

CMDLIB_END_DECLS

#endif
