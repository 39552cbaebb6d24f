/* check_degraded_version_m4200x: refuses firmware older than the running
 * one.
 *
 * Versions are texts of a capital 'V' and numbers separated by '.'
 * ("V1.2.10"), at most 15 characters.  The running version is on the
 * first line of VERSION_FILE; an image carries its version as a '_'-ended
 * segment of its file name ("product_V1.2.10_date.img").
 */
#ifndef CHECK_DEGRADED_VERSION_M4200X_H
#define CHECK_DEGRADED_VERSION_M4200X_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

#define VERSION_FILE "/version"
/* Buffers of get_current_version and split_file_name. */
#define VERSION_TEXT_SIZE 16

/* -1 when the version in fname is older than the running one, else 0
 * (also when either version is unknown). */
CMDLIB_API int service_not_allow_degraded_version(const char *fname);
/* The running version: the first line of VERSION_FILE from its first 'V'
 * on, without the line end; "" when there is none.  version must hold
 * VERSION_TEXT_SIZE bytes. */
CMDLIB_API void get_current_version(char *version);
/* The first '_'-ended segment of fname that contains a 'V' (the text
 * after the last '_' is never taken); "" when there is none.  fversion
 * must hold VERSION_TEXT_SIZE bytes. */
CMDLIB_API void split_file_name(const char *fname, char *fversion);
/* Compares the numbers after the leading 'V' pair by pair: -1 when the
 * current version is newer at the first differing pair (a downgrade),
 * else 0 (equal versions and versions that differ only in their number of
 * parts included). */
CMDLIB_API int compare_version(const char *curr_version, const char *fname_version);

CMDLIB_END_DECLS

#endif
