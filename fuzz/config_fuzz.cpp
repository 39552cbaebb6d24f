// Configuration parsers over arbitrary bytes: the export-line parser, the
// pair reader (its indexed lookup checked against comparing every key in
// order), the structure reader (guard bytes around every field) and the
// packed-file check.
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/config_parse.h"

namespace {

const char *const kKeys[] = {"A", "QX_A", "QX_B", "QX_A", "K", "export", "QX_SNMP_PORT"};
constexpr int kKeyCount = sizeof kKeys / sizeof kKeys[0];

struct Guarded {
    char g0[8];
    char a[4];
    char g1[8];
    char b[16];
    char g2[8];
};

const FieldConfigInfo kFields[] = {
    {"A", offsetof(Guarded, a), sizeof(Guarded::a), 1},
    {"QX_A", offsetof(Guarded, b), sizeof(Guarded::b), 1},
    {"QX_B", offsetof(Guarded, a), sizeof(Guarded::a), 1},
};

bool terminated(const char *s, size_t n) { return memchr(s, '\0', n) != nullptr; }

// The nested comparison the index must agree with.
int reference_count(std::string_view text, int max) {
    cmdlib::TextLineReader<256> reader(text);
    std::string_view line;
    int limit = max < kKeyCount ? max : kKeyCount;
    int n = 0;
    while (n < limit && reader.next(&line)) {
        std::string_view name;
        std::string_view value;
        if (!cmdlib::split_pair_line(line, &name, &value)) continue;
        for (const char *k : kKeys)
            if (name == k) {
                ++n;
                break;
            }
    }
    return n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view text(reinterpret_cast<const char *>(data), size);

    char name[64];
    char value[96];
    if (cmdlib::parse_export_line(text, name, sizeof name, value, sizeof value) == 0) {
        if (!terminated(name, sizeof name) || !terminated(value, sizeof value)) __builtin_trap();
        if (strlen(name) > 62 || strlen(value) > 94 || name[0] == '\0') __builtin_trap();
    }

    ConfigKeyValuePair pairs[8];
    for (int max : {1, 3, 8}) {
        int n = cmdlib::read_pairs(text, kKeys, kKeyCount, pairs, max);
        if (n < 0 || n > max || n != reference_count(text, max)) __builtin_trap();
        for (int i = 0; i < n; ++i)
            if (!terminated(pairs[i].key, sizeof pairs[i].key) ||
                !terminated(pairs[i].value, sizeof pairs[i].value) || pairs[i].value[0] == '\0')
                __builtin_trap();
    }
    int all = cmdlib::read_pairs(text, nullptr, 0, pairs, 8);
    if (all < 0 || all > 8) __builtin_trap();

    Guarded g;
    memset(&g, 0x5A, sizeof g);
    cmdlib::read_struct(text, kFields, 3, &g);
    for (const char *guard : {g.g0, g.g1, g.g2})
        for (int i = 0; i < 8; ++i)
            if (guard[i] != 0x5A) __builtin_trap();

    size_t payload = 0;
    if (cmdlib::check_packed_config(data, size, &payload) == 0 && (size < 6 || payload + 6 > size))
        __builtin_trap();
    return 0;
}
