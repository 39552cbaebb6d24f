// The product this library build serves, and the one way generic families
// reach it.  The build names the product (CMake cache variable
// CMDLIB_PLATFORM, default fibocom_t750, passed as a compile definition);
// nothing is chosen at run time.
//
// - Product operations: CMDLIB_PRODUCT(name) is the product's function
//   <product>_<name>, so CMDLIB_PRODUCT(get_system_features)(set) calls
//   fibocom_t750_get_system_features(set) in this build.  Generic code
//   never spells a product prefix itself.
// - Product functions without a prefix (the settings-file reader) come with
//   the product's header, included here.
// - Modem tables: the generic band, network-mode and LTE-status code reads
//   p_lte_band_ctrl, p_module_network_info and p_lte_query_lock_cell_st,
//   which the product's modem tables file defines pointing at its tables.
#pragma once

#ifndef CMDLIB_PLATFORM
#error "CMDLIB_PLATFORM names the product (set by the build)"
#endif

#define CMDLIB_PRODUCT_JOIN2(product, name) product##_##name
#define CMDLIB_PRODUCT_JOIN(product, name) CMDLIB_PRODUCT_JOIN2(product, name)
#define CMDLIB_PRODUCT(name) CMDLIB_PRODUCT_JOIN(CMDLIB_PLATFORM, name)

// "cmdlib/cmdlib_platform_<product>.h", also set by the build.
#ifndef CMDLIB_PLATFORM_HEADER
#error "CMDLIB_PLATFORM_HEADER names the product's header (set by the build)"
#endif
#include CMDLIB_PLATFORM_HEADER
