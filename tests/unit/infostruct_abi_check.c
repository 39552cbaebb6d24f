/* InfoStruct as a C compiler lays it out.  Built as C, linked into
 * infostruct_abi_test, which compares it with the C++ view of the same
 * header: a daemon written in C must see the library's offsets. */
#include <stddef.h>

#include "cmdlib/cmdlib.h"

size_t infostruct_c_layout(size_t *out, size_t capacity);

size_t infostruct_c_layout(size_t *out, size_t capacity) {
    const size_t layout[] = {sizeof(InfoStruct), offsetof(InfoStruct, AP_SSID), offsetof(InfoStruct, sha1),
                             offsetof(InfoStruct, customer), offsetof(InfoStruct, before_nvram_parameter_field),
                             offsetof(InfoStruct, defined_fields)};
    size_t n = sizeof layout / sizeof layout[0];
    size_t i;
    for (i = 0; i < n && i < capacity; ++i) out[i] = layout[i];
    return n;
}
