// Band bit map texts from the daemons: name listing and both converters
// over arbitrary text, with invariants that must hold for any input.
#include <stdint.h>
#include <string.h>

#include <vector>

#include "cmdlib/cmdlib_band.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<char> map(data, data + size);
    map.push_back('\0');

    // Guard bytes after the documented room catch an overrun.
    std::vector<char> names(UTIL_BAND_NAMES_SIZE + 16, '\x5a');
    if (util_get_all_supported_band_names(map.data(), names.data()) != 0) __builtin_trap();
    size_t len = strnlen(names.data(), UTIL_BAND_NAMES_SIZE);
    if (len >= UTIL_BAND_NAMES_SIZE) __builtin_trap();
    for (size_t i = UTIL_BAND_NAMES_SIZE; i < names.size(); ++i)
        if (names[i] != '\x5a') __builtin_trap();

    // Standard -> module -> standard through the identity table of the
    // catalogue keeps exactly the named bits.
    BigValue module{}, back{}, original{};
    if (util_convert_standard_bit_defintion_to_module_definition(
            map.data(), all_band_name_pairs, UTIL_BAND_CATALOGUE_COUNT, &module) != 0)
        __builtin_trap();
    char text[BIG_VALUE_TEXT_SIZE];
    util_convert_BigValue_to_string(&module, text);
    if (util_convert_bit_defintion_to_standard_definition(text, nullptr, 0, &back) != 0)
        __builtin_trap();
    util_get_big_value_from_bits(map.data(), &original);
    for (int bit = 0; bit < BIG_VALUE_BITS; ++bit) {
        bool want = util_is_one_bit_set_for_big_value(&original, bit) &&
                    util_get_band_name_by_value(bit) != nullptr;
        if (want != (util_is_one_bit_set_for_big_value(&back, bit) != 0)) __builtin_trap();
    }

    // A lock request never gets through with a line break in it.
    std::vector<char> cmd(256, 'x');
    if (util_get_at_to_lock_specified_band(map.data(), map.data(), cmd.data()) != -1 || cmd[0])
        __builtin_trap();
    return 0;
}
