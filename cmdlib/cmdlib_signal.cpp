// Signal level schemas and the level override files.
#include "cmdlib/cmdlib_signal.h"

#include <stdio.h>
#include <strings.h>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/signal_level.h"

namespace {

// {levels, thresholds of levels 1..n in dBm, ascending}
constexpr int signal_schema_cmcc_4g_5_levels[] = {5, -120, -115, -110, -105, -97};
constexpr int signal_schema_cmcc_4g_4_levels[] = {4, -120, -113, -105, -97};
constexpr int signal_schema_dialog_4g_5_levels[] = {5, -115, -110, -105, -97, -84};

template <size_t N> constexpr bool well_formed(const int (&t)[N]) {
    if (t[0] != static_cast<int>(N) - 1) return false;
    for (size_t i = 2; i < N; ++i)
        if (t[i - 1] >= t[i]) return false;
    return true;
}
static_assert(well_formed(signal_schema_cmcc_4g_5_levels), "count and ascending thresholds");
static_assert(well_formed(signal_schema_cmcc_4g_4_levels), "count and ascending thresholds");
static_assert(well_formed(signal_schema_dialog_4g_5_levels), "count and ascending thresholds");

constexpr int kOverrideLevels = 5;
static_assert(signal_schema_cmcc_4g_5_levels[0] == kOverrideLevels,
              "the override defaults are the five cmcc5lvl thresholds");

}  // namespace

extern "C" {

const CPESignalSchema all_cpe_signal_schema[UTIL_SIGNAL_SCHEMA_COUNT] = {
    {"cmcc5lvl", signal_schema_cmcc_4g_5_levels},  // the default: first row
    {"cmcc4lvl", signal_schema_cmcc_4g_4_levels},
    {"dialog5lvl", signal_schema_dialog_4g_5_levels},
};

CMDLIB_API int util_signal_get_level_by_4g_rsrp(const char *signal_schema, int rsrp) {
    const int *values = all_cpe_signal_schema[0].signal_values;
    if (signal_schema && signal_schema[0]) {
        for (const CPESignalSchema &s : all_cpe_signal_schema) {
            if (strcasecmp(s.signal_schema, signal_schema) == 0) {
                values = s.signal_values;
                break;
            }
        }
    }
    int levels = values[0];
    for (int i = 1; i <= levels; ++i)
        if (rsrp < values[i]) return i - 1;
    return levels;
}

CMDLIB_API void util_get_min_lte_rsrp_values_for_signal_level(int *dest_signal_level_1_min_rsrp,
                                                              int *dest_signal_level_2_min_rsrp,
                                                              int *dest_signal_level_3_min_rsrp,
                                                              int *dest_signal_level_4_min_rsrp,
                                                              int *dest_signal_level_5_min_rsrp) {
    int *dest[kOverrideLevels] = {dest_signal_level_1_min_rsrp, dest_signal_level_2_min_rsrp,
                                  dest_signal_level_3_min_rsrp, dest_signal_level_4_min_rsrp,
                                  dest_signal_level_5_min_rsrp};
    for (int *d : dest)
        if (!d) return;
    // Read all five before storing any, so a caller never sees a mix of
    // old and new values in its variables.
    int value[kOverrideLevels];
    for (int level = 1; level <= kOverrideLevels; ++level) {
        char path[64];
        snprintf(path, sizeof path, "/tmp/cmdlib/.QX_LTESIG_LEVEL_%d_MIN_RSRP", level);
        char text[8] = "";  // a threshold is a few digits and a sign
        cmd_cat(path, text, sizeof text);
        value[level - 1] =
            cmdlib::signal_min_rsrp_from_text(text, signal_schema_cmcc_4g_5_levels[level]);
    }
    for (int i = 0; i < kOverrideLevels; ++i) *dest[i] = value[i];
}

}  // extern "C"

namespace cmdlib {

int signal_min_rsrp_from_text(const char *text, int fallback) {
    int v = text ? atoi_sat(text) : 0;
    return v != 0 ? v : fallback;
}

}  // namespace cmdlib
