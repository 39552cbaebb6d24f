// Configuration store: export-line parsing, key reads into pairs and
// structures, the process-wide cache, packed-file checks and the change
// test of requirement configurations.
#include "cmdlib/cmdlib_config.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <string_view>

#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/checksum.h"
#include "cmdlib/internal/config_cache.h"
#include "cmdlib/internal/config_parse.h"

CMDLIB_API ConfigKeyValuePair system_configs[SYSTEM_CONFIGS_CAPACITY];
CMDLIB_API int system_configs_count = 0;
CMDLIB_API int have_read_system_configs = 0;

namespace cmdlib {

namespace {

constexpr std::string_view kExportWord = "export ";

// Word-at-a-time multiplicative hash: keys are 10 to 40 characters, and a
// byte-serial hash would cost more than reading the line.  Equal hashes
// are confirmed by comparing the text, so collisions only cost time.
uint32_t key_hash(std::string_view s) {
    const char *p = s.data();
    const size_t n = s.size();
    uint64_t h = (n + 1) * UINT64_C(0x9E3779B97F4A7C15);
    auto mix = [&h](uint64_t w) {
        h = (h ^ w) * UINT64_C(0xFF51AFD7ED558CCD);
        h ^= h >> 32;
    };
    if (n >= 8) {
        uint64_t w;
        size_t i = 0;
        for (; i + 8 <= n; i += 8) {
            memcpy(&w, p + i, 8);
            mix(w);
        }
        // the last partial word is read as the string's last 8 bytes
        if (i < n) {
            memcpy(&w, p + n - 8, 8);
            mix(w);
        }
    } else {
        uint64_t w = 0;
        for (size_t i = 0; i < n; ++i) w = w << 8 | static_cast<unsigned char>(p[i]);
        mix(w);
    }
    return static_cast<uint32_t>(h ^ (h >> 29));
}

template <typename Reader>
int read_pairs_from(Reader &reader, const char *const *args, int args_count,
                    ConfigKeyValuePair *result, int max_result) {
    const bool filtered = args && args_count > 0;
    const KeyIndex index(args, filtered ? args_count : 0);
    const int limit = filtered && args_count < max_result ? args_count : max_result;
    int n = 0;
    std::string_view line;
    while (n < limit && reader.next(&line)) {
        std::string_view name;
        std::string_view value;
        if (!split_pair_line(line, &name, &value)) continue;
        if (filtered && !index.contains(name)) continue;
        copy_bounded(result[n].key, sizeof result[n].key, name);
        copy_bounded(result[n].value, sizeof result[n].value, value);
        ++n;
    }
    return n;
}

template <typename Reader>
void read_struct_from(Reader &reader, const FieldConfigInfo *fields, int count, void *dest) {
    if (!fields || count <= 0 || !dest) return;
    const KeyIndex index(&fields[0].field_name, sizeof(FieldConfigInfo), count);
    // The line parser writes at most 253 characters with these sizes.
    char name[256];
    char value[256];
    std::string_view line;
    while (reader.next(&line)) {
        if (parse_export_line(line, name, 255, value, 255) != 0 || !name[0]) continue;
        index.for_each_match(name, [&](int i) {
            copy_bounded(static_cast<char *>(dest) + fields[i].field_offset, fields[i].field_size,
                         value);
        });
    }
}

// Opens a regular file (or anything but a directory) for reading.
UniqueFile open_for_reading(const char *path) {
    UniqueFile f(path, "r");
    struct stat st;
    if (f && fstat(fileno(f.get()), &st) == 0 && S_ISDIR(st.st_mode)) f.reset();
    return f;
}

}  // namespace

KeyIndex::KeyIndex(const void *first, size_t stride, int count)
    : first_(static_cast<const unsigned char *>(first)), stride_(stride),
      count_(first && count > 0 ? count : 0) {
    int want = count_ < kMaxIndexed ? count_ : kMaxIndexed;
    uint32_t slots = 16;
    while (slots < 2u * static_cast<uint32_t>(want)) slots <<= 1;
    mask_ = slots - 1;
    for (uint32_t s = 0; s < slots; ++s) slot_[s] = kNone;
    for (int i = 0; i < want; ++i) {
        next_[i] = kNone;
        const char *k = key(i);
        if (!k) continue;
        const std::string_view ks(k);
        const uint32_t h = key_hash(ks);
        hash_[i] = h;
        for (uint32_t s = h & mask_;; s = (s + 1) & mask_) {
            const uint16_t head = slot_[s];
            if (head == kNone) {
                slot_[s] = static_cast<uint16_t>(i);
                tail_[i] = static_cast<uint16_t>(i);
                break;
            }
            if (hash_[head] == h && strcmp(key(head), k) == 0) {
                next_[tail_[head]] = static_cast<uint16_t>(i);
                tail_[head] = static_cast<uint16_t>(i);
                break;
            }
        }
    }
    indexed_ = want;
}

int KeyIndex::first_indexed(std::string_view name) const {
    if (indexed_ == 0) return -1;
    const uint32_t h = key_hash(name);
    for (uint32_t s = h & mask_;; s = (s + 1) & mask_) {
        const uint16_t head = slot_[s];
        if (head == kNone) return -1;
        if (hash_[head] == h && key_equals(head, name)) return head;
    }
}

int KeyIndex::first_match(std::string_view name) const {
    int i = first_indexed(name);
    if (i >= 0) return i;
    for (i = indexed_; i < count_; ++i)
        if (key_equals(i, name)) return i;
    return -1;
}

int parse_export_line(std::string_view line, char *name, int name_size, char *value,
                      int value_size) {
    // Lines are taken as C text of at most 511 characters.
    const size_t nul = line.find('\0');
    if (nul != std::string_view::npos) line = line.substr(0, nul);
    line = line.substr(0, 511);

    std::string_view s = strip(line);
    if (!consume_prefix(&s, kExportWord)) return -1;
    std::string_view head;
    std::string_view tail;
    if (!split_once(strip_leading_blanks(s), '=', &head, &tail)) return -1;
    head = strip_trailing_space(head);
    if (head.empty()) return -1;

    char raw[512];
    copy_bounded(raw, sizeof raw, strip_leading_blanks(tail));
    char unquoted[256] = {};
    util_string_deconvert_special_char(raw, unquoted, sizeof unquoted);

    // One byte less than the buffers allow, as the exporter's readers have
    // always written them.
    if (name && name_size > 1) copy_bounded(name, static_cast<size_t>(name_size - 1), head);
    if (value && value_size > 1) copy_bounded(value, static_cast<size_t>(value_size - 1), unquoted);
    return 0;
}

bool split_pair_line(std::string_view line, std::string_view *name, std::string_view *value) {
    std::string_view s = strip(line);
    if (!consume_prefix(&s, kExportWord)) return false;
    std::string_view head;
    std::string_view tail;
    if (!split_once(strip_leading_blanks(s), '=', &head, &tail)) return false;
    head = strip_trailing_space(head);
    tail = strip(tail);
    if (!tail.empty() && tail.front() == '"' && tail.back() == '"')
        tail = tail.size() == 1 ? std::string_view() : tail.substr(1, tail.size() - 2);
    if (head.empty() || tail.empty()) return false;
    *name = head;
    *value = tail;
    return true;
}

int read_pairs(FILE *fp, const char *const *args, int args_count, ConfigKeyValuePair *result,
               int max_result) {
    LineReader<256> reader(fp);
    return read_pairs_from(reader, args, args_count, result, max_result);
}

int read_pairs(std::string_view text, const char *const *args, int args_count,
               ConfigKeyValuePair *result, int max_result) {
    TextLineReader<256> reader(text);
    return read_pairs_from(reader, args, args_count, result, max_result);
}

void read_struct(FILE *fp, const FieldConfigInfo *fields, int count, void *dest) {
    LineReader<256> reader(fp);
    read_struct_from(reader, fields, count, dest);
}

void read_struct(std::string_view text, const FieldConfigInfo *fields, int count, void *dest) {
    TextLineReader<256> reader(text);
    read_struct_from(reader, fields, count, dest);
}

int check_packed_config(const unsigned char *buf, size_t size, size_t *payload_len) {
    if (size >= CONFIG_PACKED_FILE_SIZE_LIMIT) return 6;
    if (checksum16(buf, size) != 0) return 5;
    // Length word and check word at the least; the length field is then
    // trusted only after the size agrees with it.
    if (!buf || size < 6) return 6;
    const uint64_t len = static_cast<uint64_t>(buf[0]) << 24 | static_cast<uint64_t>(buf[1]) << 16 |
                         static_cast<uint64_t>(buf[2]) << 8 | buf[3];
    if (size != ((len + 1) & ~UINT64_C(1)) + 6) return 6;
    if (payload_len) *payload_len = static_cast<size_t>(len);
    return 0;
}

}  // namespace cmdlib

using cmdlib::copy_bounded;

CMDLIB_API int util_config_parse_config_export_line(const char *one_line, char *config_name,
                                                    int config_name_size, char *config_value,
                                                    int config_value_size) {
    if (!one_line) return -1;
    return cmdlib::parse_export_line(one_line, config_name, config_name_size, config_value,
                                     config_value_size);
}

CMDLIB_API int util_config_read_specified_fields(const char *config_file, const char **args,
                                                 int args_count, ConfigKeyValuePair *result,
                                                 int max_result_count) {
    if (!config_file || !*config_file || !cmd_file_exist(config_file) || !result ||
        max_result_count <= 0)
        return -1;
    cmdlib::UniqueFile f = cmdlib::open_for_reading(config_file);
    if (!f) return -1;
    return cmdlib::read_pairs(f.get(), args, args_count, result, max_result_count);
}

CMDLIB_API int util_config_read_fields(const char **args, int args_count,
                                       ConfigKeyValuePair *result, int max_result_count) {
    return util_config_read_specified_fields(CMDLIB_SYSTEM_CONFIG_FILE, args, args_count, result,
                                             max_result_count);
}

CMDLIB_API const char *util_config_get_field_value(const ConfigKeyValuePair *result,
                                                   int result_count, const char *field_name) {
    if (!result || !field_name) return "";
    // A stored key has at most 63 characters; a longer name never matches.
    if (strnlen(field_name, CONFIG_KEY_SIZE) == CONFIG_KEY_SIZE) return "";
    for (int i = 0; i < result_count; ++i)
        if (strncmp(result[i].key, field_name, CONFIG_KEY_SIZE) == 0) return result[i].value;
    return "";
}

CMDLIB_API int util_config_add_fields_need_to_read(const char **args, int max_args_count,
                                                   const char *const *config_fields) {
    if (!args || !config_fields) return 0;
    int n = 0;
    while (n < max_args_count && config_fields[n]) {
        args[n] = config_fields[n];
        ++n;
    }
    return n;
}

CMDLIB_API int util_config_read_config_file_to_one_struct(const char *config_file,
                                                          const FieldConfigInfo *all_fields,
                                                          int all_fields_count, void *dest_struct) {
    if (!config_file || !*config_file) return -1;
    cmdlib::UniqueFile f = cmdlib::open_for_reading(config_file);
    if (!f) return -1;
    cmdlib::read_struct(f.get(), all_fields, all_fields_count, dest_struct);
    return 0;
}

void cmdlib::load_config_cache(const char *const *keys) {
    const char *work[SYSTEM_CONFIGS_MAX_KEYS];
    const int n = util_config_add_fields_need_to_read(work, SYSTEM_CONFIGS_MAX_KEYS, keys);
    system_configs_count = util_config_read_fields(work, n, system_configs, SYSTEM_CONFIGS_CAPACITY);
    have_read_system_configs = 1;
}

CMDLIB_API void util_config_read_all(void) { cmdlib::load_config_cache(cmdlib::kConfigCacheKeys); }

CMDLIB_API const char *util_config_get_config_value(const char *config_name) {
    if (!have_read_system_configs) util_config_read_all();
    return util_config_get_field_value(system_configs, system_configs_count, config_name);
}

CMDLIB_API void util_get_only_one_config(const char *config_dump_file, const char *name,
                                         char *value) {
    if (!value) return;
    value[0] = '\0';
    if (!name) return;
    // One key: reading stops at its first occurrence.
    ConfigKeyValuePair pairs[8];
    const char *keys[1] = {name};
    const int n = util_config_read_specified_fields(config_dump_file, keys, 1, pairs, 8);
    copy_bounded(value, CONFIG_VALUE_SIZE, util_config_get_field_value(pairs, n, name));
}

CMDLIB_API void util_get_original_one_config(const char *name, char *value) {
    util_get_only_one_config(CMDLIB_SYSTEM_CONFIG_FILE, name, value);
}

CMDLIB_API int util_check_if_config_file_is_valid(const char *config_file_path,
                                                  const char *dest_script_file_path,
                                                  int is_log_enable) {
    auto fail = [is_log_enable](int code, const char *msg, long size = 0, const char *path = "") {
        if (is_log_enable) fprintf(stderr, msg, static_cast<int>(size), path);
        return code;
    };
    if (!config_file_path || !*config_file_path) return 1;
    if (!cmd_file_exist(config_file_path))
        return fail(2, "\r\n The Config file does not exist! \r\n");
    const long size = util_get_file_size_by_file_name(config_file_path);
    if (size < 0) return fail(4, "\r\n Can't open source text file! \r\n");
    if (size >= CONFIG_PACKED_FILE_SIZE_LIMIT)
        return fail(6, "\r\n file is too long:%d,%s! \r\n", size, config_file_path);

    cmdlib::UniqueMalloc<unsigned char> buf(static_cast<size_t>(size));
    if (!buf) return fail(3, "\r\n Allocate buffer fails:%d,%s! \r\n", size, config_file_path);
    {
        cmdlib::UniqueFile in = cmdlib::open_for_reading(config_file_path);
        // A file that shrank or can't be read whole counts as unreadable.
        if (!in || fread(buf.get(), 1, static_cast<size_t>(size), in.get()) !=
                       static_cast<size_t>(size))
            return fail(4, "\r\n Can't open source text file! \r\n");
    }
    util_encrypt_file_content(buf.get(), static_cast<int>(size));

    size_t payload_len = 0;
    const int rc = cmdlib::check_packed_config(buf.get(), static_cast<size_t>(size), &payload_len);
    if (rc == 5) return fail(5, "\r\n The checksum of the config file has error! \r\n");
    if (rc != 0) return fail(rc, "\r\n The file size is wrong! \r\n");

    if (dest_script_file_path && *dest_script_file_path) {
        cmdlib::UniqueFile out(dest_script_file_path, "wb");
        if (!out) return fail(7, "\r\n Can't open dest script file! \r\n");
        if (fwrite(buf.get() + 4, 1, payload_len, out.get()) != payload_len || fflush(out.get()) != 0)
            return fail(7, "\r\n Can't open dest script file! \r\n");
    }
    return 0;
}

CMDLIB_API int util_check_if_config_file_work(int need_restore_default) {
    // Keys whose change in a requirement configuration calls for the
    // configuration-upgrade scripts (room for 80).
    static const char *watched[80] = {"QX_ADMIN_WEB_PAGE_HIDE"};
    constexpr int kWatchedCount = 1;

    // The exports are redirected into /tmp/cmdlib, which may not exist yet
    // this early after boot.
    util_dir_mkdir("/tmp/cmdlib", 0755);
    cmd_rm(CMDLIB_CURRENT_EXPORT_FILE);
    util_shell("mdlcfg -e >" CMDLIB_CURRENT_EXPORT_FILE);
    cmd_rm(CMDLIB_REQUIREMENT_EXPORT_FILE);

    // Remote management's requirement wins; only one of the two is loaded.
    if (cmd_file_exist(CMDLIB_MANAGE_REQUIREMENT_FILE)) {
        util_shell("configloader -c " CMDLIB_MANAGE_REQUIREMENT_FILE
                   " -o " CMDLIB_REQUIREMENT_EXPORT_FILE " -e " CMDLIB_REQUIREMENT_EXPORT_FILE_0
                   " -n");
    } else if (cmd_file_exist(CMDLIB_SYSTEM_REQUIREMENT_FILE)) {
        util_shell("configloader -c " CMDLIB_SYSTEM_REQUIREMENT_FILE
                   " -o " CMDLIB_REQUIREMENT_EXPORT_FILE " -e " CMDLIB_REQUIREMENT_EXPORT_FILE_0
                   " -n");
    } else {
        return 0;
    }
    if (!cmd_file_exist(CMDLIB_REQUIREMENT_EXPORT_FILE)) return 0;

    ConfigKeyValuePair current[80];
    ConfigKeyValuePair wanted[80];
    const int nc =
        util_config_read_specified_fields(CMDLIB_CURRENT_EXPORT_FILE, watched, kWatchedCount, current, 80);
    const int nw = util_config_read_specified_fields(CMDLIB_REQUIREMENT_EXPORT_FILE, watched,
                                                     kWatchedCount, wanted, 80);
    bool changed = false;
    for (int i = 0; i < kWatchedCount && !changed; ++i) {
        const char *want = util_config_get_field_value(wanted, nw, watched[i]);
        changed = *want && strcmp(want, util_config_get_field_value(current, nc, watched[i])) != 0;
    }
    if (!changed) return 0;
    if (need_restore_default) {
        util_shell("/etc/qxscript/rc.backup-before-fota-upgrade");
        util_shell("/etc/qxscript/rc.execute-config-fota-upgrade");
        util_shell("/etc/qxscript/rc.restore-after-fota-upgrade");
    }
    return -1;
}
