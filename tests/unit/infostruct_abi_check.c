/* InfoStruct as a C compiler lays it out.  Built as C, linked into
 * infostruct_abi_test, which compares it with the C++ view of the same
 * header: a daemon written in C must see the library's offsets. */
#include <stddef.h>

#include "cmdlib/cmdlib.h"

size_t infostruct_c_layout(size_t *out, size_t capacity);

size_t infostruct_c_layout(size_t *out, size_t capacity) {
    const size_t layout[] = {
        sizeof(InfoStruct),
        offsetof(InfoStruct, AP_IPADDR),
        offsetof(InfoStruct, AP_SSID),
        offsetof(InfoStruct, PSK_KEY),
        offsetof(InfoStruct, QX_L2TP_MODE),
        offsetof(InfoStruct, QX_CONFIG_FILE_DESCRIPTION),
        offsetof(InfoStruct, QX_ENCRYPT_KEY_16),
        offsetof(InfoStruct, QX_ENABLE_LOCK_IMSI_PREFIX),
        offsetof(InfoStruct, sha1),
        offsetof(InfoStruct, customer),
        offsetof(InfoStruct, imei),
        offsetof(InfoStruct, CQI),
        offsetof(InfoStruct, modem_chip_kernel_version),
        offsetof(InfoStruct, before_nvram_parameter_field),
        offsetof(InfoStruct, is_ip_not_the_same_with_server),
        offsetof(InfoStruct, defined_fields),
    };
    size_t n = sizeof layout / sizeof layout[0];
    size_t i;
    for (i = 0; i < n && i < capacity; ++i) out[i] = layout[i];
    return n;
}
