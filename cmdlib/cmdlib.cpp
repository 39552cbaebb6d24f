// cmdlib family.
//
// ==== System information record and its readers ==============================
#include "cmdlib/cmdlib.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string_view>

#include "base/internal/command_line.h"
#include "base/internal/line_reader.h"
#include "base/internal/raii.h"
#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/product.h"
#include "cmdlib/internal/sysinfo_parse.h"

using namespace cmdlib;

extern "C" {
char string_buffer[512];
char write_buffer[1024];
char util_used_module_name[UTIL_USED_MODULE_NAME_SIZE];
}

namespace {

constexpr const char *kModuleInfoFile = "/tmp/cmdlib/.moduleinfo";
constexpr const char *kModuleInfo2File = "/tmp/cmdlib/.moduleinfo2";
constexpr const char *kNewModuleStatusCache = "/tmp/cmdlib/.new_cached_lte_module_status";
constexpr const char *kModuleStatusCache = "/tmp/cmdlib/.cached_lte_module_status";
constexpr const char *kStatusIndFile = "/tmp/cmdlib/.system_signal_sim_status_ind";
constexpr const char *kSrcConfigFile = "/tmp/cmdlib/.src_tmp_config_file.conf";
constexpr const char *kSrcConfigMd5File = "/tmp/cmdlib/.src_tmp_config_file.conf.md5.txt";

using namespace info_field;

constexpr Id kVersionFields[] = {type, version, hwversion, device,   build,
                                 branch, os,     sha1,      customer, model_type};

struct Keyword {
    const char *name;
    Id field;
};
// Tested in this order; the first keyword the line's name is a prefix of wins.
constexpr Keyword kModuleKeywords[] = {
    {"phy", module_phy_version},
    {"hlp", module_hlp_version},
    {"imei", imei},
    {"imsi", imsi},
    {"modversion", module_version},
    {"modbuilddate", module_build_date},
    {"RSSI", RSSI},
    {"LAC", LAC},
    {"CellID", CellID},
    {"iccid", iccid},
    {"PLMN", PLMN},
    {"AcT", AcT},
    {"band_pref", band_pref},
    {"Module3G", module_type},
    {"platform_software_version", platform_software_version},
    {"platform_hardware_version", platform_hardware_version},
    {"platform_device_model", platform_device_model},
    {"platform_device_name", platform_device_name},
    {"platform_compile_time", platform_compile_time},
};

struct CacheLabel {
    Id field;
    const char *label;
};
// The radio cache holds these fields, in this order.
constexpr CacheLabel kCacheLabels[] = {
    {QXGLBCELLID, "+QXGLBCELLID: "}, {QXBAND, "+QXBAND: "},
    {QXBANDWIDTH, "+QXBANDWIDTH: "}, {QXRSRP, "+QXRSRP: "},
    {QXRSRQ, "+QXRSRQ: "},           {QXRSSI, "+QXRSSI: "},
    {QXSINR, "+QXSINR: "},           {QXTXPOWER, "+QXTXPOWER: "},
    {QXEARFCN, "+QXEARFCN: "},       {QXPHYCELLID, "+QXPHYCELLID: "},
    {DL_MCS, "+QXDL_MCS: "},         {CQI, "+QXCQI: "},
    {QXTRANSMODE, "+QXTRANSMODE: "}, {RRCState, "+QXRRCState: "},
};

constexpr bool is_prefix_of(std::string_view name, const char *keyword) {
    return std::string_view(keyword).substr(0, name.size()) == name;
}

void store_field(InfoStruct *info, Id id, std::string_view value) {
    copy_bounded(info_field_ptr(info, id), kInfoFields[id].width, value);
}

}  // namespace

namespace cmdlib {

void apply_version_line(std::string_view line, InfoStruct *info) {
    std::string_view name, value;
    if (line.empty() || line[0] == ':' || !split_once(line, ':', &name, &value)) return;
    name = strip_leading_blanks(name);  // trailing blanks stay: "version :" never matches
    value = strip(value);
    for (Id id : kVersionFields) {
        if (name == kInfoFields[id].name) {
            store_field(info, id, value);
            return;
        }
    }
}

void apply_module_info_line(std::string_view line, InfoStruct *info) {
    std::string_view name, value;
    if (!split_once(line, ':', &name, &value)) return;
    for (const Keyword &k : kModuleKeywords) {
        if (is_prefix_of(name, k.name)) {
            store_field(info, k.field, strip_trailing_space(value));
            return;
        }
    }
}

void apply_meminfo_line(std::string_view line, char *mem_total, char *mem_free, size_t size) {
    std::string_view name, value;
    if (!split_once(line, ':', &name, &value)) return;
    value = strip(value);
    if (is_prefix_of(name, "MemTotal")) {
        if (mem_total) copy_bounded(mem_total, size, value);
    } else if (is_prefix_of(name, "MemFree")) {
        if (mem_free) copy_bounded(mem_free, size, value);
    }
}

bool parse_status_ind(std::string_view text, int out[10]) {
    char buf[129];  // the file is read 128 characters at most
    copy_bounded(buf, sizeof buf, text);
    char *words[18];
    int n = util_get_all_args(buf, ' ', '\t', words, 18);
    if (n < 10) return false;
    for (int i = 0; i < 10; ++i) out[i] = atoi_sat(words[i]);
    return true;
}

size_t compose_module_status_cache(const InfoStruct *info, char *out, size_t size) {
    if (!out || size == 0) return 0;
    out[0] = '\0';
    size_t len = append_bounded(out, size, "\n");
    for (const CacheLabel &c : kCacheLabels) {
        const char *v = info_field_ptr(info, kInfoFields[c.field]);
        size_t n = strnlen(v, kInfoFields[c.field].width);
        if (n == 0) continue;
        append_bounded(out, size, c.label);
        append_bounded(out, size, std::string_view(v, n));
        len = append_bounded(out, size, "\n");
    }
    return len;
}

}  // namespace cmdlib

namespace {

// Runs apply(line) over every 255-character read of the file; false when
// it can't be opened.
template <typename Fn> bool for_each_line(const char *path, Fn apply) {
    UniqueFile fp(fopen(path, "r"));
    if (!fp) return false;
    LineReader<256> reader(fp.get());
    std::string_view line;
    while (reader.next(&line)) apply(line);
    return true;
}

}  // namespace

extern "C" {

int util_read_version_info(const char *config_file, InfoStruct *server_wifi_info) {
    if (!config_file || !server_wifi_info) return -1;
    bool ok = for_each_line(config_file, [&](std::string_view line) {
        apply_version_line(line, server_wifi_info);
    });
    return ok ? 0 : -1;
}

int util_load_module_info(InfoStruct *module_info) {
    if (!module_info) return 0;
    return for_each_line(kModuleInfoFile,
                         [&](std::string_view line) { apply_module_info_line(line, module_info); })
               ? 1
               : 0;
}

int util_sync_module_info(const char *network_card_name) {
    int result = 1;
    cmd_cp(kModuleInfoFile, kModuleInfo2File);

    char uptime_out[513];  // "uptime" output, 512 characters at most
    util_get_cmd_result("uptime", uptime_out, sizeof uptime_out);
    std::string_view first, rest;
    if (split_once(uptime_out, ',', &first, &rest)) {
        rest = strip(rest);
        format_bounded(write_buffer, sizeof write_buffer, "uptime:%.*s\n%.*s",
                       static_cast<int>(first.size()), first.data(), static_cast<int>(rest.size()),
                       rest.data());
        cmd_echo_append(write_buffer, kModuleInfo2File);
    }

    NetdevCounters c;
    if (network_card_name && cmd_netdev_flowstat_ex(network_card_name, c.rx_bytes, c.rx_packets,
                                                    c.tx_bytes, c.tx_packets) == 0) {
        format_bounded(write_buffer, sizeof write_buffer,
                       "wanRxBytes:%s\nwanRxPackets:%s\nwanTxBytes:%s\nwanTxPackets:%s\n",
                       c.rx_bytes, c.rx_packets, c.tx_bytes, c.tx_packets);
        cmd_echo_append_without_new_line(write_buffer, kModuleInfo2File);
    } else {
        result = 0;
    }

    if (cmd_file_exist(kSrcConfigFile)) {
        cmd_rm(kSrcConfigMd5File);
        // Fixed names: the line always fits the shared buffer.
        if (format_command(string_buffer, sizeof string_buffer, "md5sum %s|cut -f1 -d\" \" > %s",
                           kSrcConfigFile, kSrcConfigMd5File))
            util_shell(string_buffer);
        if (cmd_file_exist(kSrcConfigMd5File)) {
            char md5[513];
            cmd_cat(kSrcConfigMd5File, md5, sizeof md5);
            std::string_view digest = strip(md5);
            format_bounded(write_buffer, sizeof write_buffer, "ConfigMD5:%.*s\n",
                           static_cast<int>(digest.size()), digest.data());
            cmd_echo_append_without_new_line(write_buffer, kModuleInfo2File);
        }
    }
    return result;
}

void util_cache_module_status_info(InfoStruct *info_struct) {
    if (!info_struct) return;
    // 14 labels of at most 16 characters and values of at most 31.
    char text[1024];
    size_t len = compose_module_status_cache(info_struct, text, sizeof text);
    if (util_save_file_content(text, static_cast<int>(len), kNewModuleStatusCache) != 0) return;
    // Readers only ever see a complete cache.
    cmd_cp(kNewModuleStatusCache, kModuleStatusCache);
}

void util_read_cached_module_status_info(InfoStruct *info_struct) { (void)info_struct; }

int util_read_status_ind(int *is_sim_exist, int *need_pin, int *need_puk, int *signal_quality,
                         int *sms_status, int *reg_status, int *greg_status, int *ereg_status,
                         int *act, int *network_data_service) {
    char text[129];
    cmd_cat(kStatusIndFile, text, sizeof text);
    int v[10];
    if (!parse_status_ind(text, v)) return -1;
    int *outs[10] = {is_sim_exist, need_pin,    need_puk,    signal_quality, sms_status,
                     reg_status,   greg_status, ereg_status, act,            network_data_service};
    for (int i = 0; i < 10; ++i)
        if (outs[i]) *outs[i] = v[i];
    return 0;
}

char *util_read_system_uptime(char *uptime_value) {
    static char empty[1];
    if (!uptime_value) return empty;
    uptime_value[0] = '\0';
    char text[129];
    if (cmd_cat("/proc/uptime", text, sizeof text) != 0) return uptime_value;
    std::string_view rest(text);
    copy_bounded(uptime_value, UTIL_UPTIME_TEXT_SIZE, next_word(&rest));
    return uptime_value;
}

int util_read_meminfo(char *mem_total, char *mem_free) {
    if (mem_total) mem_total[0] = '\0';
    if (mem_free) mem_free[0] = '\0';
    return for_each_line("/proc/meminfo",
                         [&](std::string_view line) {
                             apply_meminfo_line(line, mem_total, mem_free, UTIL_MEMINFO_TEXT_SIZE);
                         })
               ? 1
               : 0;
}

char *util_get_used_module_name(void) { return util_used_module_name; }

int util_read_config_parameters(InfoStruct *server_wifi_info) {
    char path[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(path);
    CommandLine<128> cmd;
    cmd.format("mdlcfg -e > %s", path);  // our own scratch name: always fits
    run_command(cmd);
    usleep(10);  // the exporter's file is complete when the shell returns
    int rc = util_server_read_wifi_info_ex(path, server_wifi_info);
    cmd_rm(path);
    return rc;
}

}  // extern "C"
