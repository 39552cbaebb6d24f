// Base library text services over arbitrary bytes: word splitting, field
// stepping, exporter unquoting and the BigValue text form.
#include <stdint.h>
#include <string.h>

#include <vector>

#include "base/libbase.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<char> line(data, data + size);
    line.push_back('\0');
    char *argv[18];
    int n = util_get_all_args(line.data(), ' ', '\t', argv, 18);
    if (n < 0 || n > 18) __builtin_trap();
    for (int i = 0; i < n; ++i)
        if (argv[i] < line.data() || argv[i] >= line.data() + line.size()) __builtin_trap();

    std::vector<char> copy(data, data + size);
    copy.push_back('\0');
    char *second = util_get_next_arg2(copy.data(), 1);
    util_get_next_arg2(second, 0);
    util_get_next_arg_cmdlib(copy.data(), 2);

    char out[96];
    int len = util_string_deconvert_special_char(copy.data(), out, sizeof out);
    if (len < 0 || len > 95 || strlen(out) != static_cast<size_t>(len)) __builtin_trap();

    BigValue v;
    if (util_get_big_value_from_bits(copy.data(), &v) == 0) {
        // Whatever parses must print back to a text that parses to the same set.
        char text[BIG_VALUE_TEXT_SIZE];
        util_convert_BigValue_to_string(&v, text);
        BigValue w;
        if (util_get_big_value_from_bits(text, &w) != 0 || memcmp(&v, &w, sizeof v) != 0) __builtin_trap();
    }
    return 0;
}
