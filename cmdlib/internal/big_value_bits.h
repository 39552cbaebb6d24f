// Visiting the set bits of a BigValue in ascending order (word 0 first,
// position 0 first within a word).  Skips zero words whole, so a sparse
// 1024-bit map costs 32 word tests plus one step per set bit.
#pragma once

#include <stdint.h>

#include "base/libbase.h"

namespace cmdlib {

template <typename F> inline void for_each_set_bit(const BigValue &value, F &&visit) {
    for (int w = 0; w < BIG_VALUE_WORDS; ++w) {
        uint32_t bits = value.all_bits_info[w];
        while (bits) {
            int pos = __builtin_ctz(bits);
            bits &= bits - 1;
            visit(w * 32 + pos);
        }
    }
}

// Adds 2^(bit % 32) to word bit / 32: an addition, not an OR, so a bit
// that is already set carries into the next position of the same word.
// Bits outside 0..1023 are ignored.
inline void add_bit_arithmetically(BigValue *value, int bit) {
    if (bit < 0 || bit >= BIG_VALUE_BITS) return;
    value->all_bits_info[bit / 32] += UINT32_C(1) << (bit % 32);
}

}  // namespace cmdlib
