// Version texts of the downgrade guard: an image name and a version-file
// line, whatever their bytes, give versions within their 15 characters and
// a comparison of -1 or 0 that never claims both directions a downgrade.
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>
#include <string_view>

#include "cmdlib/check_degraded_version_m4200x.h"
#include "cmdlib/internal/upgrade_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view in(reinterpret_cast<const char *>(data), size);
    size_t cut = in.find('\n');
    std::string name(in.substr(0, cut));
    std::string line(cut == std::string_view::npos ? "" : in.substr(cut + 1));
    char file[VERSION_TEXT_SIZE + 8];
    memset(file, 'Z', sizeof file);
    split_file_name(name.c_str(), file);
    if (memchr(file, '\0', VERSION_TEXT_SIZE) == nullptr || file[VERSION_TEXT_SIZE] != 'Z') __builtin_trap();
    std::string current(cmdlib::upgrade::line_version(line).substr(0, VERSION_TEXT_SIZE - 1));
    int a = compare_version(current.c_str(), file);
    int b = compare_version(file, current.c_str());
    if ((a != 0 && a != -1) || (b != 0 && b != -1) || (a == -1 && b == -1)) __builtin_trap();
    std::string_view feature;
    if (cmdlib::upgrade::listing_feature(in, &feature) && feature.find_first_of("\r\n") != std::string_view::npos)
        __builtin_trap();
    return 0;
}
