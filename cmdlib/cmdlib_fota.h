/* cmdlib_fota: checks of firmware images and the FOTA download.
 *
 * Whether an image is built for this board (its packtoolpro header), the
 * flags that the upgrade leaves for the first boot of the new firmware,
 * and the download of an image from a URL with its size and MD5 check.
 * The product's upgrade stages are in the platform header.
 */
#ifndef CMDLIB_FOTA_H
#define CMDLIB_FOTA_H

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* 1 when "packtoolpro -l IMAGE" lists a "feature:" line naming boardType,
 * else 0.  The names are compared over the last n characters of both,
 * n being the shorter length: a board name matches a longer feature text
 * that ends with it (and the reverse), and an empty boardType matches any
 * feature.  Without boardType any non-empty feature is valid. */
CMDLIB_API int validate_firmware_image_packtoolpro(const char *filepath, const char *boardType);

#define FOTA_CONFIG_FLAG_FILE "/mnt/data/contains_update_config_flag"
#define FOTA_CONFIG_FLAG_TMP_FILE "/tmp/contains_update_config_flag"

/* 1 when the last upgrade package held a configuration update: the
 * persistent flag is moved to FOTA_CONFIG_FLAG_TMP_FILE by the first
 * caller, which later callers of this boot then see; else 0. */
CMDLIB_API int upgrade_package_is_contains_update_config(void);

/* 1 and the module's firmware version (module_version of the record, at
 * most buffer_size-1 characters); 0 when it is empty or a pointer null. */
CMDLIB_API int util_fota_get_modem_version(char *dest_modem_version, int buffer_size,
                                           InfoStruct *sys_info_struct);

/* For a non-empty url: upgrade_file = "/tmp/FOTA_<pid>_" + the URL's last
 * path component, every '%' removed; upgrade_md5_file = upgrade_file +
 * ".md5.txt"; each cut to its buffer.  An empty or null url writes
 * nothing. */
CMDLIB_API void util_fota_get_local_upgrade_file_path(char *upgrade_file, int upgrade_file_buffer_size,
                                                      char *upgrade_md5_file,
                                                      int upgrade_md5_file_buffer_size, const char *url);

/* Removes any old upgrade_file, then fetches it: "wget -T 15 -t 1 -O FILE
 * URL" (15 s network time-out, one try), or for a local update
 * "cd /tmp && mv NAME FILE" with the URL's last component NAME, already
 * in /tmp.  The tools' output is discarded unless is_log_enable, which
 * also prints the command ("shellcmd:...").  0, or -1 when the command
 * failed or a pointer is null. */
CMDLIB_API int util_fota_download_upgade_file(const char *upgrade_file, const char *upgrade_file_url,
                                              int is_log_enable, int is_local_update);

#define FOTA_ERR_FILE_LENGTH "10:File length checking error"
#define FOTA_ERR_MD5 "9:MD5 checking error"

/* Null when upgrade_file has file_size bytes (decimal text) and the MD5
 * file_md5 (32 hexadecimal digits); else FOTA_ERR_FILE_LENGTH or
 * FOTA_ERR_MD5 (the number is the code the FOTA tools report).  The check
 * list is written to upgrade_file_md5_file ("MD5  PATH").  With
 * is_log_enable the size is printed ("fileSize:..."). */
CMDLIB_API char *util_check_if_upgrade_file_is_valid(const char *upgrade_file,
                                                     const char *upgrade_file_md5_file,
                                                     const char *file_size, const char *file_md5,
                                                     int is_log_enable);

CMDLIB_END_DECLS

#endif
