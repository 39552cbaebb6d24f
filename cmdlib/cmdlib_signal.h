/* cmdlib signal levels: LTE RSRP (dBm) graded into bars by named schemas.
 *   "cmcc5lvl"   (default) -120 -115 -110 -105 -97
 *   "cmcc4lvl"             -120 -113 -105 -97
 *   "dialog5lvl"           -115 -110 -105 -97 -84
 * threshold i being the lowest RSRP that reaches level i.
 */
#ifndef CMDLIB_SIGNAL_H
#define CMDLIB_SIGNAL_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* One schema: signal_values[0] is the number of levels n, then n ascending
 * thresholds. */
typedef struct CPESignalSchema {
    const char *signal_schema;
    const int *signal_values;
} CPESignalSchema;

#define UTIL_SIGNAL_SCHEMA_COUNT 3
CMDLIB_API extern const CPESignalSchema all_cpe_signal_schema[UTIL_SIGNAL_SCHEMA_COUNT];

/* Level 0..n of rsrp under the schema named signal_schema (letter case
 * ignored; NULL, empty or unknown names grade as "cmcc5lvl"). */
CMDLIB_API int util_signal_get_level_by_4g_rsrp(const char *signal_schema, int rsrp);

/* Minimum RSRP of levels 1..5: the number in
 * "/tmp/cmdlib/.QX_LTESIG_LEVEL_<n>_MIN_RSRP" when that file holds a
 * non-zero number, else the "cmcc5lvl" threshold.  All five pointers are
 * required (nothing is stored when one is NULL). */
CMDLIB_API void util_get_min_lte_rsrp_values_for_signal_level(int *dest_signal_level_1_min_rsrp,
                                                              int *dest_signal_level_2_min_rsrp,
                                                              int *dest_signal_level_3_min_rsrp,
                                                              int *dest_signal_level_4_min_rsrp,
                                                              int *dest_signal_level_5_min_rsrp);

CMDLIB_END_DECLS

#endif
