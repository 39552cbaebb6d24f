// Configuration keys of the network lock: the PLMNs the router may register on.
#include "cmdlib/cmdlib_lock_network.h"

#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

constexpr const char *lock_network_config_fields[LOCK_NETWORK_CONFIG_FIELDS_COUNT + 1] = {
    "QX_ENABLE_LOCK_NETWORK", "QX_LOCK_NETWORK_PLMN", "QX_LOCK_NETWORK_PLMN2",
    "QX_LOCK_NETWORK_PLMN3", "QX_LOCK_NETWORK_PLMN4", "QX_LOCK_NETWORK_PLMN5",
    "QX_LOCK_NETWORK_PLMN6", "QX_LOCK_NETWORK_PLMN7", "QX_LOCK_NETWORK_PLMN8",
    "QX_LOCK_NETWORK_PLMN9", "QX_LOCK_NETWORK_PLMN10", nullptr};
static_assert(cmdlib::key_list_length(lock_network_config_fields) == LOCK_NETWORK_CONFIG_FIELDS_COUNT,
              "lock_network_config_fields holds LOCK_NETWORK_CONFIG_FIELDS_COUNT keys");

CMDLIB_API int util_lock_network_add_fields_need_to_read(const char **args, int max_args_count) {
    return util_config_add_fields_need_to_read(args, max_args_count, lock_network_config_fields);
}
