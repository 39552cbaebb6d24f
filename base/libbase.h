/* libbase: file, shell, word and bit-set services of the firmware.
 *
 * Every other family of libcmdlib reaches files, the shell and text through
 * these functions.  Text is NUL-terminated; a size argument is the capacity
 * of the caller's buffer including the terminator.  None of the functions
 * keeps state between calls except the scratch-name generator.  A null
 * pointer or a zero size is never dereferenced: the function fails instead.
 */
#ifndef LIBBASE_H
#define LIBBASE_H

#include <stddef.h>
#include <stdio.h>
#include <stdint.h>

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* ---- Bit sets ---------------------------------------------------------- */

#define BIG_VALUE_BITS 1024
#define BIG_VALUE_WORDS 32

/* bit n is bit n % 32 of all_bits_info[n / 32] */
typedef struct BigValue {
    uint32_t all_bits_info[BIG_VALUE_WORDS];
} BigValue;

/* Text form of a BigValue: the words from word 0 upwards, each as exactly
 * eight lower-case hexadecimal digits (most significant digit first), with
 * the trailing all-zero words left out.  The empty set is "0".  Bits 0, 1
 * and 5 read "00000023"; bit 32 alone reads "0000000000000001".  When
 * parsing, a text of one to eight digits is word 0 alone ("5" = bits 0 and
 * 2), so short hand-written masks work.  The longest
 * form (bit 1023 set) is 256 characters: a buffer of BIG_VALUE_TEXT_SIZE
 * bytes always suffices. */
#define BIG_VALUE_TEXT_SIZE 257

/* Sets bit n; n outside 0..1023 is ignored. */
CMDLIB_API void util_set_one_bit_for_big_value(BigValue *value, int n);
/* 1 when bit n is set, 0 otherwise (also for n out of range). */
CMDLIB_API int util_is_one_bit_set_for_big_value(const BigValue *value, int n);
/* Parses the text form into *value (cleared first).  Returns 0, or -1 for
 * text that is not a valid form (value is then all zero).  Surrounding
 * blanks and line breaks are ignored. */
CMDLIB_API int util_get_big_value_from_bits(const char *text, BigValue *value);
/* Writes the text form; text must hold BIG_VALUE_TEXT_SIZE bytes.
 * Returns the text's length. */
CMDLIB_API int util_convert_BigValue_to_string(const BigValue *value, char *text);

/* ---- Files and directories -------------------------------------------- */

/* non-zero when the path exists */
CMDLIB_API int cmd_file_exist(const char *path);
/* file content into buf (at most size-1 bytes, terminated); 0 on success,
 * -1 when the file is missing or unreadable (buf then holds ""). */
CMDLIB_API int cmd_cat(const char *path, char *buf, int size);
/* Replace the file's content by text + "\n" (text alone for the
 * _without_new_line forms); the _append forms append.  0 or -1. */
CMDLIB_API int cmd_echo(const char *text, const char *path);
CMDLIB_API int cmd_echo_without_new_line(const char *text, const char *path);
CMDLIB_API int cmd_echo_append(const char *text, const char *path);
CMDLIB_API int cmd_echo_append_without_new_line(const char *text, const char *path);
/* create empty when missing (an existing file is left as it is) */
CMDLIB_API int cmd_touch(const char *path);
/* remove a file; a missing file is no error (0) */
CMDLIB_API int cmd_rm(const char *path);
/* rename, falling back to copy + remove across file systems */
CMDLIB_API int cmd_mv(const char *src, const char *dst);
CMDLIB_API int cmd_cp(const char *src, const char *dst);
/* remove an empty directory */
CMDLIB_API int cmd_rmdir(const char *path);
/* remove a directory tree (symbolic links are removed, never followed) */
CMDLIB_API int cmd_rmdir_advance(const char *path);
/* add execute permission for user, group and others */
CMDLIB_API int cmd_chmodx(const char *path);
/* make readable and writable by all (0666 plus existing execute bits) */
CMDLIB_API int cmd_chmodrw(const char *path);

/* 1 when the path is a directory */
CMDLIB_API int util_dir_is_dir_exist(const char *path);
/* mkdir with parents; 0 also when it already exists */
CMDLIB_API int util_dir_mkdir(const char *path, int mode);
/* size in bytes, -1 when the file can't be examined */
CMDLIB_API long util_get_file_size_by_file_name(const char *path);
/* size of the stream's file, -1 on error; the stream position is kept */
CMDLIB_API long util_get_file_size_by_file_handle(FILE *fp);
/* whole file into buf (at most size-1 bytes, terminated); 0 or -1 */
CMDLIB_API int util_load_file_content(char *buf, int size, const char *path);
/* write exactly len bytes as the file's content; 0 or -1 */
CMDLIB_API int util_save_file_content(const char *text, int len, const char *path);
/* write len bytes without truncating or creating (for /proc/sys files);
 * 0 or -1 */
CMDLIB_API int util_file_save(const char *text, int len, const char *path);
/* 1 when text occurs in the file.  flag 0: anywhere in the content;
 * flag non-zero: only where it begins a line. */
CMDLIB_API int util_have_string_in_the_file(const char *path, const char *text, int flag);
/* fsync the file; 0 or -1 */
CMDLIB_API int util_sync_file_to_flash(const char *path);
/* Writes "/tmp/.cmdlib_tmp_<pid>_<seq>_<random>" (at most
 * UTIL_TMP_PATH_SIZE bytes) into buf.  Unique across processes and calls:
 * the pid separates processes, the sequence number separates calls, the
 * random tail separates a reused pid.  Returns buf. */
#define UTIL_TMP_PATH_SIZE 64
CMDLIB_API char *util_get_tmp_uuid_file_path(char *buf);
/* 1 when every file listed in the checksum list (md5sum -c format: 32 hex
 * digits, two blanks or " *", a path) has its listed MD5 digest, 0 when one
 * differs, is missing or the list has no valid line.  The digests are
 * computed in-process: the router's busybox md5sum differs in its -c
 * options and exit codes across versions, and no child process is needed.
 * The first argument is unused (the library passes 0). */
CMDLIB_API int util_check_if_md5_sum_is_right(int unused, const char *list_path);
/* In-place, length-preserving, self-inverse transform of a configuration
 * file's bytes: byte i is XORed with the i-th byte of a keystream made by
 * a 32-bit xorshift generator seeded with 0x51584346 ("QXCF"), taking the
 * low byte of each state.  Applying it twice restores the input. */
CMDLIB_API void util_encrypt_file_content(unsigned char *buf, int len);

/* ---- Network devices ------------------------------------------------------ */

/* 1 when the kernel has a network device of this name, 0 otherwise (also
 * for a null or empty name). */
CMDLIB_API int cmd_netdev_exist(const char *net_dev_name);
/* Traffic counters of a device as "/proc/net/dev" gives them: received
 * bytes and packets, sent bytes and packets, each as decimal text into a
 * buffer of UTIL_NETDEV_COUNTER_SIZE bytes (a null buffer is skipped).
 * 0, or -1 when the device is not listed or the file can't be read (the
 * buffers are then untouched). */
#define UTIL_NETDEV_COUNTER_SIZE 64
CMDLIB_API int cmd_netdev_flowstat_ex(const char *net_dev_name, char *rx_bytes, char *rx_packets,
                                      char *tx_bytes, char *tx_packets);

/* ---- Shell -------------------------------------------------------------- */

/* Run through /bin/sh -c and wait; the wait status as system() gives it
 * (-1 when the shell could not be started).  A command ending in "&"
 * returns as soon as the shell has started it. */
CMDLIB_API int util_shell(const char *cmd);
/* printf-format the command, run it, copy at most size-1 bytes of its
 * standard output into out (terminated).  Returns the wait status. */
CMDLIB_API int util_shell_recv(char *out, int size, const char *fmt, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;
/* As util_shell_recv with a ready command line. */
CMDLIB_API int util_get_cmd_result(const char *cmd, char *out, int size);

/* ---- Words and strings -------------------------------------------------- */

/* capacity used by util_get_all_arguments */
#define UTIL_MAX_ARGUMENTS 64

/* Cut line in place at every run of sep1/sep2; pointers to the non-empty
 * words into argv (at most capacity); returns the count. */
CMDLIB_API int util_get_all_args(char *line, char sep1, char sep2, char **argv, int capacity);
/* flag 1 (what the library passes): as util_get_all_args; flag 0: also
 * cuts at tabs, carriage returns and line feeds. */
CMDLIB_API int util_get_all_args_ext(char *line, char sep1, char sep2, int flag, char **argv,
                                     int capacity);
/* blank and tab, capacity UTIL_MAX_ARGUMENTS (argv must hold that many) */
CMDLIB_API int util_get_all_arguments(char *line, char **argv);
/* Pointer to the next blank-separated field after the one text points
 * into.  flag 1: text points at the start of a field, skip it and the
 * blanks after it; flag 0: text points at blanks or a field, skip blanks
 * then the field then blanks.  Never null: "" at the end. */
CMDLIB_API char *util_get_next_arg2(char *text, int flag);
/* Copy of the index-th (from 0) blank-separated field into a static
 * buffer of 256 bytes; "" when absent. */
CMDLIB_API char *util_get_next_arg_cmdlib(const char *text, int index);
/* 1 when a word equals word exactly, position into *pos (when pos set).
 * flag non-zero: compare case-insensitively. */
CMDLIB_API int util_contains_specified_parameter(char **argv, int count, const char *word, int flag,
                                                 int *pos);
/* first character that is not a blank (space or tab) */
CMDLIB_API char *util_skip_all_spaces(const char *text);
CMDLIB_API void util_strip_blank_of_string_head(char *text);
/* cuts trailing blanks, tabs, CR and LF */
CMDLIB_API void util_strip_blank_of_string_end(char *text);
/* cuts trailing spaces only */
CMDLIB_API void util_strip_traling_spaces(char *text);
CMDLIB_API void util_strip_special_char(char *text, char c);
CMDLIB_API void util_remove_special_char(char *text, char c);
CMDLIB_API void util_replace_all_zero_to_space(char *buf, int len);
/* Undo the configuration exporter's quoting: a value in double quotes
 * loses them and \" \\ \$ \` inside become the bare character; a value in
 * single quotes is taken literally ('\'' joins pieces).  Unquoted text
 * has backslash escapes removed.  At most size-1 characters are written. */
CMDLIB_API int util_string_deconvert_special_char(const char *src, char *dst, int size);
/* last path component ("" for a path ending in '/') */
CMDLIB_API int util_string_get_basename(const char *path, char *dst, int size);
CMDLIB_API void util_convert_all_chars_to_upper_case(char *text);
CMDLIB_API void util_convert_all_chars_to_lower_case(char *text);
/* 0..15 for a hex digit, -1 otherwise */
CMDLIB_API int util_char2hex(char c);

CMDLIB_END_DECLS

#endif
