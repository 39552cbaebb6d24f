// The /proc text readers over arbitrary bytes: key-value files (status,
// meminfo) through the text and the stream reader, which must agree; a
// cmdline turned into words and matched; the USB device list.
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <string_view>
#include <vector>

#include "base/libbase.h"
#include "cmdlib/cmdlib_info.h"
#include "cmdlib/internal/proc_parse.h"
#include "cmdlib/internal/usb_walk.h"
#include "cmdlib/usb.h"

namespace {

void check_fields(const ProcFileInfo &info) {
    const char *p = reinterpret_cast<const char *>(&info);
    for (int i = 0; i < PROC_FILE_INFO_FIELD_COUNT; ++i)
        if (memchr(p + i * PROC_FILE_INFO_VALUE_SIZE, '\0', PROC_FILE_INFO_VALUE_SIZE) == nullptr)
            __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);

    BigValue all = {};
    for (int b = 0; b < PROC_FILE_INFO_FIELD_COUNT; ++b) util_set_one_bit_for_big_value(&all, b);
    ProcFileInfo from_text;
    cmdlib::parse_proc_key_values(text, &all, &from_text);
    check_fields(from_text);
    std::vector<char> copy(text.begin(), text.end());
    if (FILE *fp = fmemopen(copy.empty() ? nullptr : copy.data(), copy.size(), "r")) {
        ProcFileInfo from_stream;
        cmdlib::read_proc_key_values(fp, &all, &from_stream);
        fclose(fp);
        if (memcmp(&from_text, &from_stream, sizeof from_text) != 0) __builtin_trap();
    }

    // As a cmdline: at most 511 bytes are read.
    char line[cmdlib::kCmdlineBufferSize];
    size_t n = size < sizeof line - 1 ? size : sizeof line - 1;
    memcpy(line, data, n);
    size_t len = cmdlib::cmdline_to_text(line, n);
    if (len > n || strlen(line) != len || (len && line[len - 1] == ' ')) __builtin_trap();
    char *argv[cmdlib::kMaxProcessArgs];
    int argc = util_get_all_args(line, ' ', '\t', argv, cmdlib::kMaxProcessArgs);
    char wan[] = "wan";
    char *match[] = {wan, wan};
    (void)cmdlib::process_matches(argv, argc, "udhcpc", match, 2);
    if (argc > 0) (void)cmdlib::process_matches(argv, argc, argv[0], argv, argc);

    int index = cmdlib::find_usb_pair(text, matched_usb_pairs, USB_MATCHED_PAIRS_COUNT);
    if (index < -1 || index >= USB_MATCHED_PAIRS_COUNT) __builtin_trap();
    return 0;
}
