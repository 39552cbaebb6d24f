// Settings-file text into a record: whatever the text, every write stays in
// its field, and the record's tail (ints, defined_fields) is only touched
// through the bits.
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/settings_parse.h"
#include "cmdlib/internal/sysinfo_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    std::string_view text(reinterpret_cast<const char *>(data), size);
    cmdlib::parse_settings_text(text, &info);
    if (info.before_nvram_parameter_field != 0 || info.is_ip_not_the_same_with_server != 0)
        __builtin_trap();
    if (info.defined_fields[6] >> 31) __builtin_trap();  // bit 223 is never used
    // The same bytes through the module and version line parsers.
    cmdlib::apply_module_info_line(text.substr(0, 255), &info);
    cmdlib::apply_version_line(text.substr(0, 255), &info);
    int v[10];
    cmdlib::parse_status_ind(text, v);
    return 0;
}
