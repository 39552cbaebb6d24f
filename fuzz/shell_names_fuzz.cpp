// Exported-line helpers and the two shell writers over arbitrary bytes:
// answers stay inside the caller's buffer, the strip leaves no backslash
// before a quote, and a record or interface names of any content fit the
// buffers sized for them and read back through the export-line parser.
#include <stdint.h>
#include <string.h>

#include <string_view>
#include <vector>

#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/shell_export.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view bytes(reinterpret_cast<const char *>(data), size);

    std::vector<char> line(bytes.begin(), bytes.end());
    line.push_back('\0');
    char *v = util_get_field_value_seperated_by_equal(line.data());
    bool inside = v >= line.data() && v < line.data() + line.size();
    if (!inside && *v != '\0') __builtin_trap();

    std::vector<char> quoted(bytes.begin(), bytes.end());
    quoted.push_back('\0');
    size_t before = strlen(quoted.data());
    util_strip_quote_string_from_cfg_e(quoted.data());
    size_t after = strlen(quoted.data());
    if (after > before) __builtin_trap();
    for (size_t i = 1; i < after; ++i)
        if (quoted[i] == '"' && quoted[i - 1] == '\\') __builtin_trap();

    // The bytes spread over every exported field, to its full width.
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    size_t at = 0;
    for (cmdlib::info_field::Id id : cmdlib::kConfigExportOrder) {
        const cmdlib::InfoFieldDesc &f = cmdlib::kInfoFields[id];
        size_t n = bytes.size() - at < f.width ? bytes.size() - at : f.width;
        memcpy(cmdlib::info_field_ptr(&info, f), bytes.data() + at, n);
        at = bytes.empty() ? 0 : (at + n) % bytes.size();
        cmdlib::info_set_defined_bit(&info, f.bit);
    }
    static char text[cmdlib::kConfigExportCapacity];
    size_t len = cmdlib::render_config_export(&info, text, sizeof text);
    if (len + 1 >= sizeof text || strlen(text) != len) __builtin_trap();

    // A value without line ends comes back whole through the line parser.
    std::string_view value = bytes.substr(0, bytes.find_first_of(std::string_view("\0\r\n", 3)));
    value = value.substr(0, 255);  // what the line parser keeps of a value
    memset(&info, 0, sizeof info);
    memcpy(info.QX_CONFIG_FILE_DESCRIPTION, value.data(), value.size());
    cmdlib::info_set_defined_bit(&info, cmdlib::kInfoFields[cmdlib::info_field::QX_CONFIG_FILE_DESCRIPTION].bit);
    len = cmdlib::render_config_export(&info, text, sizeof text);
    static char name[CONFIG_KEY_SIZE], back[2048];
    if (len < 512 && util_config_parse_config_export_line(text + 1, name, sizeof name, back, sizeof back) == 0 &&
        value.find_first_of(" \t") == std::string_view::npos && std::string_view(back) != value)
        __builtin_trap();

    cmdlib::InterfaceNames ifs{};
    std::vector<char> names(bytes.begin(), bytes.end());
    names.push_back('\0');
    for (size_t i = 0; i < cmdlib::kInterfaceMacroCount; ++i) ifs.name[i] = names.data() + (size ? i * 7 % size : 0);
    static char file[cmdlib::kMacroFileCapacity];
    len = cmdlib::render_macro_file(ifs, file, sizeof file);
    if (len + 1 >= sizeof file || strlen(file) != len) __builtin_trap();
    return 0;
}
