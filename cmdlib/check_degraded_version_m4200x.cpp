// The downgrade guard: the running version against the one in an image's
// file name.
#include "cmdlib/check_degraded_version_m4200x.h"

#include <string.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "cmdlib/internal/upgrade_parse.h"

using namespace cmdlib;

extern "C" void get_current_version(char *version) {
    if (!version) return;
    version[0] = '\0';
    UniqueFile fp(VERSION_FILE, "r");
    if (!fp) return;
    LineReader<256> reader(fp.get());  // the first line, 255 characters at most
    std::string_view line;
    if (reader.next(&line)) copy_bounded(version, VERSION_TEXT_SIZE, upgrade::line_version(line));
}

extern "C" void split_file_name(const char *fname, char *fversion) {
    if (!fversion) return;
    copy_bounded(fversion, VERSION_TEXT_SIZE, fname ? upgrade::file_name_version(fname) : "");
}

extern "C" int compare_version(const char *curr_version, const char *fname_version) {
    if (!curr_version || !fname_version) return 0;
    return upgrade::compare_versions(curr_version, fname_version);
}

extern "C" int service_not_allow_degraded_version(const char *fname) {
    char current[VERSION_TEXT_SIZE] = "";
    char file[VERSION_TEXT_SIZE] = "";
    split_file_name(fname, file);
    get_current_version(current);
    return compare_version(current, file);
}
