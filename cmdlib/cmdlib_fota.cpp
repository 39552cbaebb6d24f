// Image checks and the FOTA download.
#include "cmdlib/cmdlib_fota.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/platform_ops.h"
#include "cmdlib/internal/upgrade_parse.h"

using namespace cmdlib;

extern "C" int validate_firmware_image_packtoolpro(const char *filepath, const char *boardType) {
    if (!filepath) return 0;
    CommandLine<256> cmd;
    cmd.format("packtoolpro -l ");
    cmd.append_word(filepath);
    cmd.append(" | grep \"feature:\"");
    if (!cmd.ok()) return 0;
    char listing[256];
    util_get_cmd_result(cmd.c_str(), listing, sizeof listing);
    std::string_view feature;
    if (!upgrade::listing_feature(listing, &feature)) return 0;
    return upgrade::board_matches(feature, boardType) ? 1 : 0;
}

extern "C" int upgrade_package_is_contains_update_config(void) {
    if (cmd_file_exist(FOTA_CONFIG_FLAG_FILE)) {
        cmd_mv(FOTA_CONFIG_FLAG_FILE, FOTA_CONFIG_FLAG_TMP_FILE);
        return 1;
    }
    return cmd_file_exist(FOTA_CONFIG_FLAG_TMP_FILE) ? 1 : 0;
}

extern "C" int util_fota_get_modem_version(char *dest_modem_version, int buffer_size,
                                           InfoStruct *sys_info_struct) {
    if (!dest_modem_version || buffer_size <= 0 || !sys_info_struct) return 0;
    const char *v = sys_info_struct->module_version;
    size_t n = strnlen(v, sizeof sys_info_struct->module_version);
    if (n == 0) return 0;
    copy_bounded(dest_modem_version, static_cast<size_t>(buffer_size), std::string_view(v, n));
    return 1;
}

extern "C" void util_fota_get_local_upgrade_file_path(char *upgrade_file, int upgrade_file_buffer_size,
                                                      char *upgrade_md5_file,
                                                      int upgrade_md5_file_buffer_size, const char *url) {
    if (!url || !url[0] || !upgrade_file || upgrade_file_buffer_size <= 0) return;
    std::string_view u(url);
    size_t slash = u.rfind('/');
    std::string_view name = slash == std::string_view::npos ? u : u.substr(slash + 1);
    size_t size = static_cast<size_t>(upgrade_file_buffer_size);
    format_bounded(upgrade_file, size, "/tmp/FOTA_%d_", static_cast<int>(getpid()));
    append_bounded(upgrade_file, size, name);
    // '%' of URL escapes never reaches the file name.
    util_remove_special_char(upgrade_file, '%');
    if (upgrade_md5_file && upgrade_md5_file_buffer_size > 0) {
        size_t md5_size = static_cast<size_t>(upgrade_md5_file_buffer_size);
        copy_bounded(upgrade_md5_file, md5_size, upgrade_file);
        append_bounded(upgrade_md5_file, md5_size, ".md5.txt");
    }
}

extern "C" int util_fota_download_upgade_file(const char *upgrade_file, const char *upgrade_file_url,
                                              int is_log_enable, int is_local_update) {
    if (!upgrade_file || !upgrade_file[0] || !upgrade_file_url) return -1;
    const char *quiet = is_log_enable ? "" : " 1>/dev/null 2>&1";
    CommandLine<512> cmd;
    if (is_local_update) {
        // The file was put into /tmp beforehand under the URL's last name.
        std::string_view name = platform::file_name_in_dir(upgrade_file_url);
        if (name.empty()) return -1;
        cmd.format("cd /tmp && mv ");
        cmd.append_word(name);
        cmd.append(" ");
        cmd.append_word(upgrade_file);
        cmd.append(" %s", quiet);
    } else {
        // 15 s network time-out, one try: a dead server fails the FOTA run
        // instead of holding it.
        cmd.format("wget -T 15 -t 1 -O ");
        cmd.append_word(upgrade_file);
        cmd.append(" ");
        cmd.append_word(upgrade_file_url);
        cmd.append("%s", quiet);
    }
    if (!cmd.ok()) return -1;
    util_sync_file_to_flash(upgrade_file);
    cmd_rm(upgrade_file);
    if (is_log_enable) {
        printf("shellcmd:%s\n", cmd.c_str());
        fflush(stdout);
    }
    return run_command(cmd) == 0 ? 0 : -1;
}

namespace {

char g_length_error[] = FOTA_ERR_FILE_LENGTH;
char g_md5_error[] = FOTA_ERR_MD5;

bool is_md5_text(std::string_view s) {
    if (s.size() != 32) return false;
    for (char c : s)
        if (util_char2hex(c) < 0) return false;
    return true;
}

}  // namespace

extern "C" char *util_check_if_upgrade_file_is_valid(const char *upgrade_file,
                                                     const char *upgrade_file_md5_file,
                                                     const char *file_size, const char *file_md5,
                                                     int is_log_enable) {
    if (!upgrade_file || !file_size) return g_length_error;
    long size = util_get_file_size_by_file_name(upgrade_file);
    if (is_log_enable) {
        printf("fileSize:%d\n", static_cast<int>(size));
        fflush(stdout);
    }
    int64_t want = 0;
    if (size < 0 || !parse_int64(strip(file_size), &want) || want != size) return g_length_error;
    // The expected digest is a checksum-list line of its own: anything but
    // 32 hexadecimal digits could never match (nor add lines to the list).
    if (!upgrade_file_md5_file || !file_md5 || !is_md5_text(file_md5)) return g_md5_error;
    char line[1024];
    if (!format_command(line, sizeof line, "%s  %s", file_md5, upgrade_file)) return g_md5_error;
    if (cmd_echo(line, upgrade_file_md5_file) != 0) return g_md5_error;
    return util_check_if_md5_sum_is_right(0, upgrade_file_md5_file) ? nullptr : g_md5_error;
}
