/* cmdlib_url: the server host of a download URL, and paths of files that
 * lie beside it. */
#ifndef CMDLIB_URL_H
#define CMDLIB_URL_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* The IPv4 address of the URL's host: the host is what follows "://" up to
 * the first '/', past user information ("user:pass@") and before a port.
 * A dotted address is taken as it is (no lookup); a name is looked up with
 * the system resolver (util_resolv_domain_name).  0 and the dotted address
 * in host_ip (at least 16 bytes), -1 when there is none.  Only the first
 * 255 bytes of the URL are read. */
CMDLIB_API int util_get_host_ip_from_url(const char *url, char *host_ip);

/* Path of file_name in the directory of original_url (up to its last '/',
 * or last '\' when it has no '/').
 *   0: file_name is empty or already a path ('/' or '\'): nothing changed.
 *  -1: otherwise.  When original_url has a directory part, the path was
 *      built: into new_file_name_path when given, else into file_name
 *      itself (its buffer must hold the whole path); inspect the output.
 * Neither output is bounded: size them for directory + file name. */
CMDLIB_API int util_get_same_relative_new_path(const char *original_url, char *file_name,
                                               char *new_file_name_path);

CMDLIB_END_DECLS

#endif
