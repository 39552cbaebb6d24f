// fibocom_t750 firmware upgrade: name checks, the board check of an upload,
// the two qxupdate stages, the local and TR-069 upgrades, the first-run
// flag.
#include <string.h>

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/platform_ops.h"

using namespace cmdlib;

namespace {

// Names of uploads and images: 5 to 120 characters.
constexpr size_t kNameMin = 5;
constexpr size_t kNameMax = 120;

constexpr bool ends_with(std::string_view s, std::string_view tail) {
    return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

}  // namespace

extern "C" int fibocom_t750_check_upload_file_name(const char *uploadfile) {
    if (!uploadfile) return -1;
    std::string_view n(uploadfile);
    if (n.size() < kNameMin || n.size() > kNameMax) return -1;
    // A firmware image, an update package or (one letter at least) a
    // configuration file.
    if (ends_with(n, ".img") || ends_with(n, "update.bin")) return 0;
    return n.size() >= 6 && ends_with(n, ".conf") ? 0 : -1;
}

extern "C" int fibocom_t750_system_upgrade_filename_check(const char *filename) {
    if (!filename) return 3;
    std::string_view n(filename);
    if (n.size() < kNameMin || n.size() > kNameMax) return 3;
    if (ends_with(n, ".img")) return 0;
    // A package needs a name before "update.bin"; configuration files are
    // not firmware.
    return n.size() >= 11 && ends_with(n, "update.bin") ? 0 : 2;
}

extern "C" int fibocom_t750_validate_upload_file(const char *uploadfile, const char *boardType) {
    if (validate_firmware_image_packtoolpro(uploadfile, boardType)) return 0;
    fibocom_t750_clean_file_in_uploadpath();
    return -1;
}

extern "C" int fibocom_t750_verify_upload_file(const char *fileName) { return fileName ? 0 : -1; }

extern "C" int fibocom_t750_system_upgrade_stage1(const char *fileName) {
    if (!fileName || !cmd_file_exist(fileName)) return T750_UPGRADE_NO_FILE;
    return platform::tool_result(platform::run_qxupdate("--local --system --stage 1", fileName));
}

extern "C" int fibocom_t750_system_upgrade_stage2(const char *fileName) {
    if (!fileName || !cmd_file_exist(fileName)) return T750_UPGRADE_NO_FILE;
    return platform::tool_result(platform::run_qxupdate("--local --system --reboot --stage 2", fileName));
}

extern "C" int fibocom_t750_local_system_upgrade(const char *fileName) {
    if (!fileName || !cmd_file_exist(fileName)) return T750_UPGRADE_NO_FILE;
    int rc = fibocom_t750_system_upgrade_stage1(fileName);
    return rc != 0 ? rc : fibocom_t750_system_upgrade_stage2(fileName);
}

extern "C" int fibocom_t750_tr069_system_firmware_upgrade(const char *fw, char *errstr, int size) {
    if (!fw || !errstr || size < 2) return -1;
    size_t cap = static_cast<size_t>(size);
    if (!cmd_file_exist(fw)) {
        copy_bounded(errstr, cap, "the system upgrade file is no exist");
        return T750_UPGRADE_NO_FILE;
    }
    int rc = fibocom_t750_system_upgrade_stage1(fw);
    if (rc != 0) {
        copy_bounded(errstr, cap, "the system upgrade step1 is fail");
        return rc;
    }
    return fibocom_t750_system_upgrade_stage2(fw);
}

namespace {
constexpr const char *kUpgradeFlag = "/tmp/upgrade_flag";
}  // namespace

extern "C" int fibocom_t750_is_first_run_after_upgrade(void) {
    // The upgrade leaves its flag on persistent storage; the first caller of
    // the new firmware's first boot moves it to /tmp, where every later
    // caller of this boot finds it and the next reboot drops it.
    if (cmd_file_exist("/mnt/data/upgrade_flag")) {
        cmd_mv("/mnt/data/upgrade_flag", kUpgradeFlag);
        return 1;
    }
    if (cmd_file_exist(kUpgradeFlag)) return 1;
    if (cmd_file_exist("/data/upgrade_flag")) {
        cmd_mv("/data/upgrade_flag", kUpgradeFlag);
        return 1;
    }
    return 0;
}
