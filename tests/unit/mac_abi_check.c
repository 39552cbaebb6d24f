/* The MAC records as a C compiler lays them out.  Built as C, linked into
 * mac_abi_test, which compares every offset with the file layout: a daemon
 * written in C must read and write the same bytes as the library. */
#include <stddef.h>

#include "cmdlib/mac.h"

size_t mac_c_layout(size_t *out, size_t capacity);

size_t mac_c_layout(size_t *out, size_t capacity) {
#define MAC_ABI_OFFSET(name, count, width, offset) offsetof(MacIPPair, name), sizeof(((MacIPPair *)0)->name),
    const size_t layout[] = {
        sizeof(MacIPPair),
        sizeof(MacControlInfo),
        sizeof(MacBuffer),
        offsetof(MacControlInfo, mac_count),
        offsetof(MacBuffer, mac_count),
        offsetof(MacIPPair, mac),
        MAC_IP_PAIR_TEXT_FIELDS(MAC_ABI_OFFSET)
    };
#undef MAC_ABI_OFFSET
    size_t n = sizeof layout / sizeof layout[0];
    size_t i;
    for (i = 0; i < n && i < capacity; ++i) out[i] = layout[i];
    return n;
}
