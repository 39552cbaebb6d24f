// Configuration keys of the network lock: the PLMNs the router may register on.
#include "cmdlib/cmdlib_lock_network.h"

#include "cmdlib/internal/module_keys.h"

CMDLIB_MODULE_KEYS(lock_network, LOCK_NETWORK_CONFIG_FIELDS_COUNT,
    "QX_ENABLE_LOCK_NETWORK", "QX_LOCK_NETWORK_PLMN", "QX_LOCK_NETWORK_PLMN2",
    "QX_LOCK_NETWORK_PLMN3", "QX_LOCK_NETWORK_PLMN4", "QX_LOCK_NETWORK_PLMN5",
    "QX_LOCK_NETWORK_PLMN6", "QX_LOCK_NETWORK_PLMN7", "QX_LOCK_NETWORK_PLMN8",
    "QX_LOCK_NETWORK_PLMN9", "QX_LOCK_NETWORK_PLMN10")
