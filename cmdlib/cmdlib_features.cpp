// Product feature set, web-page feature sets and small device facts.
#include "cmdlib/cmdlib_features.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include <string_view>

#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/product.h"

using namespace cmdlib;

static_assert(sizeof(system_latest_reboot_reason_info) == 72,
              "the reboot-reason file is read back by other programs as 72 bytes");
static_assert(offsetof(system_latest_reboot_reason_info, sys_latest_reboot_reason) == 8);

namespace {

// Bits every product gets on top of the platform's: FOTA, reboot after a
// FOTA upgrade, reboot right after a factory reset.
constexpr int kCommonFeatureBits[] = {16, 17, 2};

#define CMDLIB_FEATURE_COUNT_ONE(bit, name, inverted) +1  // NOLINT(bugprone-macro-parentheses)
static_assert(0 CMDLIB_SYSTEM_FEATURES(CMDLIB_FEATURE_COUNT_ONE) + 1 == CMDLIB_SYSTEM_FEATURE_COUNT,
              "one predicate per meaningful bit");
#undef CMDLIB_FEATURE_COUNT_ONE

// Any failure to rebuild or parse the text form reads as "not set".
int feature_bit_from_text(const char *text, int bit) {
    BigValue set = {};
    if (util_get_big_value_from_bits(text, &set) != 0) return 0;
    return util_is_one_bit_set_for_big_value(&set, bit);
}

void fill_set_text(void (*fill)(BigValue *), char *out) {
    if (!out) return;
    out[0] = '\0';
    BigValue set = {};
    fill(&set);
    char text[BIG_VALUE_TEXT_SIZE];
    util_convert_BigValue_to_string(&set, text);
    copy_bounded(out, SYSTEM_FEATURES_TEXT_SIZE, text);
}

void fill_system_features(BigValue *set) {
    CMDLIB_PRODUCT(get_system_features)(set);
    for (int bit : kCommonFeatureBits) util_set_one_bit_for_big_value(set, bit);
}

}  // namespace

extern "C" {

void util_get_system_features(char *system_features) {
    fill_set_text(fill_system_features, system_features);
}

int util_is_one_system_feature_set(int one_feature) {
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    util_get_system_features(text);
    return feature_bit_from_text(text, one_feature);
}

#define CMDLIB_FEATURE_DEFINE(bit, name, inverted)                      \
    int name(void) {                                                    \
        int set = util_is_one_system_feature_set(bit);                  \
        return (inverted) ? !set : set;                                 \
    }
CMDLIB_SYSTEM_FEATURES(CMDLIB_FEATURE_DEFINE)
#undef CMDLIB_FEATURE_DEFINE

int util_does_system_support_https(void) {
    if (util_does_system_use_mini_httpd_as_https_server() == 1) return 1;
    if (util_does_system_use_mongoose_as_http_server() == 1) return 1;
    return util_is_one_system_feature_set(CMDLIB_FEATURE_HTTPS_BIT);
}

// ---- Web-page feature sets ---------------------------------------------------

void util_set_supported_web_page_features_for_all(BigValue *big_value) { (void)big_value; }
void util_set_unsupported_web_page_features_for_all(BigValue *big_value) { (void)big_value; }

void util_get_supported_web_page_features_ex(char *supported_web_page_features) {
    fill_set_text(util_set_supported_web_page_features_for_all, supported_web_page_features);
}

void util_get_unsupported_web_page_features_ex(char *unsupported_web_page_features) {
    fill_set_text(util_set_unsupported_web_page_features_for_all, unsupported_web_page_features);
}

int util_is_one_feature_supported(int support_table, int bit_index) {
    char text[SYSTEM_FEATURES_TEXT_SIZE];
    if (support_table) {
        util_get_supported_web_page_features_ex(text);
        return feature_bit_from_text(text, bit_index);
    }
    util_get_unsupported_web_page_features_ex(text);
    return !feature_bit_from_text(text, bit_index);
}

// ---- Device facts ---------------------------------------------------------------

int util_should_display_wifi_settings_page(void) {
    return cmd_file_exist(DISPLAY_WIFI_SETTINGS_PAGE_FLAG_FILE) ? 1 : 0;
}

int util_has_wifi_for_this_device(void) {
    return util_should_display_wifi_settings_page() ? 1 : 0;
}

int util_is_clat_supported(void) {
    return cmd_file_exist("/proc/net/nat46/control") && cmd_file_exist("/usr/bin/clat.sh") ? 1 : 0;
}

int util_check_device_factory_mac_info(void) { return cmd_file_exist("/productinfo/mac") ? 0 : 1; }

int util_check_device_factory_imei_info(void) {
    return cmd_file_exist("/productinfo/imei") ? 0 : 1;
}

// ---- Reboot reason ------------------------------------------------------------------

int util_does_system_record_reboot_reason(const char *reason) {
    system_latest_reboot_reason_info rec;
    memset(&rec, 0, sizeof rec);
    rec.sys_latest_reboot_time = time(nullptr);
    // A limit of 63 keeps at most 62 characters: readers of the file rely
    // on the last two bytes being zero.
    if (reason && reason[0]) format_bounded(rec.sys_latest_reboot_reason, 63, "%s", reason);
    UniqueFile fp(fopen(REBOOT_REASON_INFO_FILE, "wb"));
    if (!fp) return -1;
    return fwrite(&rec, sizeof rec, 1, fp.get()) == 1 ? 0 : -1;
}

// ---- Accounts -----------------------------------------------------------------------

int access_legal(const char *user, const char *passwd) {
    if (!passwd) return -1;
    for (const char *p = user; p && *p; ++p)
        if (!isalnum(static_cast<unsigned char>(*p))) return -1;
    if (strchr(passwd, '\'') || strchr(passwd, '"')) return -2;
    return 0;
}

// With two arguments: set user $1's password to $2; with one: the current
// user's password to $1.  passwd reads the new password twice.
static constexpr char kChangePasswdScript[] =
    "#!/bin/sh\nif [ $# -eq 2 ]\nthen\npasswd $1 << EOF\n$2\n$2\nEOF\nelse\n"
    "passwd << EOF\n$1\n$1\nEOF\nfi\n";
static_assert(sizeof kChangePasswdScript - 1 == 90);

int util_chang_root_passwd(const char *user, const char *passwd) {
    int legal = access_legal(user, passwd);
    if (legal != 0) return legal;
    util_save_file_content(kChangePasswdScript, sizeof kChangePasswdScript - 1,
                           CHANGE_PASSWD_SCRIPT_FILE);
    // access_legal has kept quotes out of the password and everything but
    // letters and digits out of the user, so the single quotes make the
    // password one inert word.  The password is cut to 28 characters so
    // that the closing quote always survives the 30-character limit.
    char user_text[31] = "";
    if (user && user[0]) format_bounded(user_text, sizeof user_text, "%s", user);
    char passwd_text[31];
    format_bounded(passwd_text, sizeof passwd_text, "'%.28s'", passwd);
    char out[128] = "";
    util_shell_recv(out, sizeof out, "sh %s %s %s", CHANGE_PASSWD_SCRIPT_FILE, user_text,
                    passwd_text);
    return strstr(out, "Retype password:") ? 0 : -3;
}

// ---- "name:value" files --------------------------------------------------------------

int tr069_get_value_from_file(const char *filename, const char *name, char *value, int size) {
    if (!filename || !name || !name[0] || !value) return -1;
    UniqueFile fp(fopen(filename, "r"));
    if (!fp) return -2;
    static constexpr size_t kMaxRead = 16383;  // the files read here are small
    char buf[kMaxRead + 1];
    size_t n = fread(buf, 1, kMaxRead, fp.get());
    if (n == 0) return -3;
    std::string_view text(buf, n);

    char search[64];  // name and colon, cut to 63 characters
    format_bounded(search, sizeof search, "%s:", name);
    std::string_view key(search);

    size_t from = 0;
    for (;;) {
        size_t pos = text.find(key, from);
        if (pos == std::string_view::npos) return -4;
        if (pos == 0 || text[pos - 1] == '\n') {
            size_t start = pos + key.size();
            size_t end = text.find('\n', start);
            if (end == std::string_view::npos) end = text.find('\r', start);
            if (end == std::string_view::npos) return -4;
            std::string_view v = text.substr(start, end - start);
            v = v.substr(0, v.find('\0'));  // strncpy stops at a NUL byte
            if (size <= 0) return 0;
            size_t cap = static_cast<size_t>(size);
            // strncpy: zero-padded, unterminated when the value fills size;
            // then blanks at the head are dropped without leaving the buffer.
            size_t len = v.size() < cap ? v.size() : cap;
            size_t skip = 0;
            while (skip < len && is_blank(v[skip])) ++skip;
            memcpy(value, v.data() + skip, len - skip);
            memset(value + (len - skip), 0, cap - (len - skip));
            return 0;
        }
        // a hit in the middle of a line: go on from the next line
        size_t nl = text.find('\n', pos);
        if (nl == std::string_view::npos) return -4;
        from = nl + 1;
    }
}

long long upgrade_available_space_size(void) {
    char kb[65] = "";
    int rc = tr069_get_value_from_file("/proc/meminfo", "MemAvailable", kb, 64);
    if (rc != 0) return rc;
    int64_t figure = 0;
    std::string_view digits(kb);
    size_t n = 0;
    while (n < digits.size() && digits[n] >= '0' && digits[n] <= '9') ++n;
    if (!parse_int64(digits.substr(0, n), &figure)) figure = 0;
    if (figure > (INT64_MAX >> 10)) figure = INT64_MAX >> 10;
    return static_cast<long long>(figure) << 10;
}

}  // extern "C"
