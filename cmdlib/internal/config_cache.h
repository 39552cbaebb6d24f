// Which keys the process-wide configuration cache (system_configs) holds.
// The store knows no module: the family whose daemon reads the cache (the
// SNMP agent's, cmdlib_snmp) hands its key list in when the library is
// loaded.  Until one is handed in the cache loads no key.
#pragma once

namespace cmdlib {

// Makes keys (null-terminated, constant for the life of the process) the
// cache's key list for its next load.  Returns true, so a family can use
// the call to initialise a variable at load time.
bool use_config_cache_keys(const char *const *keys);

// The key list in use (nullptr when none was handed in).
[[nodiscard]] const char *const *config_cache_keys();

}  // namespace cmdlib
