/* cmdlib_route: keeps the router's routes in place.
 *
 * A daemon describes the routes that must exist as an array of checkers.
 * The check pass reads a saved "route -n" listing (the caller writes it to
 * a file) and counts, per checker, the listing lines that match it; the fix
 * pass then adds every enabled route that was not found.  Fields are
 * compared as text, exactly as the listing prints them (case-sensitive),
 * never as numbers or addresses.
 *
 * Calling order: zero match_count, write the listing, check, fix with the
 * same array.
 */
#ifndef CMDLIB_ROUTE_H
#define CMDLIB_ROUTE_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* check_content bits: which fields take part in the match, and the
 * listing column each is compared with.  Other bits are ignored. */
#define ROUTE_CHECK_DEST_IP 0x1u   /* column 1, Destination */
#define ROUTE_CHECK_GATEWAY 0x2u   /* column 2, Gateway */
#define ROUTE_CHECK_NETMASK 0x4u   /* column 3, Genmask */
#define ROUTE_CHECK_INTERFACE 0x8u /* column 8, Iface */

typedef struct RouteEntryChecker {
    char dest_IP[64]; /* "0.0.0.0" for the default route */
    char netmask[64]; /* "255.255.255.255" for a host route */
    char gateway[64];
    char interface[64];         /* device name */
    int match_count;            /* matching listing lines; the caller sets it to 0 */
    unsigned int check_content; /* ROUTE_CHECK_* bits; 0 disables the checker */
} RouteEntryChecker;

/* Counts the lines of the listing file that match each checker.  A line is
 * read up to 255 bytes at a time (a longer one continues as the next
 * line), split at blanks and tabs into at most 64 words, and considered
 * only with at least 8 words.  Checkers are tried in array order; the first
 * whose selected fields all equal their columns gets one more match and
 * the line is done.  0, or -1 when the file cannot be opened (the counts
 * are then untouched). */
CMDLIB_API int util_route_check_if_route_exist(const char *route_n_result_file,
                                               RouteEntryChecker *route_checker,
                                               int route_checker_count);

/* Adds every enabled route whose match_count is 0, one command each:
 *   dest_IP "0.0.0.0":            "route add default gw GATEWAY dev INTERFACE"
 *   netmask "255.255.255.255":    "route add -host DEST_IP dev INTERFACE"
 *   otherwise:                    "route add -net DEST_IP netmask NETMASK dev INTERFACE"
 * A network or host route is bound to the device alone (no gateway).  The
 * fields are passed as single shell words (text with shell syntax is
 * quoted, never interpreted); a command longer than 255 characters is not
 * run.  Results are not looked at: a route that failed to install is found
 * missing again by the next check. */
CMDLIB_API void util_route_fix_route_entry(RouteEntryChecker *route_checker,
                                           int route_checker_count);

CMDLIB_END_DECLS

#endif
