// The generic front of the product's operations: every row of
// CMDLIB_FRONT_OPERATIONS (cmdlib_front.h) becomes one exported function.
// Forwarders call the product's operation directly through CMDLIB_PRODUCT,
// fixed answers return their value; reboot and reset add what every
// product needs around the product's own operation.
#include "base/libbase.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_fota.h"
#include "cmdlib/cmdlib_front.h"
#include "cmdlib/internal/product.h"

// params and args are parenthesised lists: they are pasted as they are.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define FRONT_DEFINE_OWN(ret, name, params)
#define FRONT_DEFINE_FORWARD(ret, name, target, params, args) \
    ret name params { return CMDLIB_PRODUCT(target) args; }
#define FRONT_DEFINE_FORWARD_UNPREFIXED(ret, name, target, params, args) \
    ret name params { return target args; }
#define FRONT_DEFINE_ANSWER(value, name, params) \
    int name params { return value; }
#define FRONT_DEFINE_NOTHING(name, params) \
    void name params {}

CMDLIB_FRONT_OPERATIONS(FRONT_DEFINE_OWN, FRONT_DEFINE_FORWARD, FRONT_DEFINE_FORWARD_UNPREFIXED,
                        FRONT_DEFINE_ANSWER, FRONT_DEFINE_NOTHING)
// NOLINTEND(bugprone-macro-parentheses)

// The reason goes to the record first: the reboot does not come back.
int util_does_system_opt_reboot(const char *reason) {
    util_does_system_record_reboot_reason(reason);
    return CMDLIB_PRODUCT(opt_system_reboot)(reason);
}

// The marker tells the rest of the system that a reset is under way; it
// is taken back only when the product says the reset did not happen (-1).
int util_process_system_reset(void *arg, int flag, char *result_str, int *result_code) {
    cmd_touch(SYSTEM_RESET_START_FLAG_FILE);
    int rc = CMDLIB_PRODUCT(process_system_reset)(arg, flag, result_str, result_code);
    if (rc == -1) cmd_rm(SYSTEM_RESET_START_FLAG_FILE);
    return rc;
}

// The request record itself is the reset's argument; its flag is the flag.
int util_process_system_reset_integrate(struct _reset_pre_param *param, char *result_str,
                                        int *result_code) {
    if (!param) return -1;
    return util_process_system_reset(param, param->flag, result_str, result_code);
}
