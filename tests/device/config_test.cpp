// The configuration store on its fixed paths inside the device: the
// process-wide cache, the single-key reads of the running configuration
// and the change test with its mdlcfg / configloader / script calls.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "cmdlib/cmdlib_config.h"
#include "device.h"

namespace {

const char kManage[] = "/mnt/data/etc/qxcfg/manage_requirement_config_file.conf";
const char kSystem[] = "/mnt/data/etc/qxcfg/system_requirement_config_file.conf";
const char kSysConf[] = "/tmp/cmdlib/rc.system.conf";

const std::string kCurrentExportCall = "mdlcfg -e";
std::string loader_call(const std::string &requirement) {
    return "configloader -c " + requirement +
           " -o /tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT -e /tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT.0 -n";
}
const std::vector<std::string> kScripts = {"/etc/qxscript/rc.backup-before-fota-upgrade",
                                           "/etc/qxscript/rc.execute-config-fota-upgrade",
                                           "/etc/qxscript/rc.restore-after-fota-upgrade"};

class ConfigDevice : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        devtest::remove_all(kManage);
        devtest::remove_all(kSystem);
    }
    static std::vector<std::string> script_calls() {
        std::vector<std::string> out;
        for (const std::string &c : devtest::calls())
            if (c.rfind("/etc/qxscript/", 0) == 0) out.push_back(c);
        return out;
    }
};

// The cache is filled once per process: each case runs in a child of its
// own, which reports what it saw as text.
std::string in_child(const std::function<std::string()> &body) {
    int fds[2];
    if (pipe(fds) != 0) return "pipe failed";
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        std::string text = body();
        ssize_t w = write(fds[1], text.data(), text.size());
        _exit(w == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(fds[1]);
    std::string text;
    char buf[256];
    ssize_t n;
    while ((n = read(fds[0], buf, sizeof buf)) > 0) text.append(buf, static_cast<size_t>(n));
    close(fds[0]);
    int st = 0;
    waitpid(pid, &st, 0);
    return text;
}

// ---- the cache and the running configuration -----------------------------------

TEST_F(ConfigDevice, CacheHoldsTheSnmpKeysAndIsNeverReloaded) {
    devtest::write_file(kSysConf,
                        "export QX_SNMP_ENABLED=yes\n"
                        "export QX_SNMP_CN_READ=\"public read\"\n"
                        "export QX_SNMP_PORT=161\n"
                        "export QX_WAN_MSS=1400\n");
    std::string seen = in_child([] {
        std::string s = std::to_string(have_read_system_configs) + "|";
        s += std::string(util_config_get_config_value("QX_SNMP_CN_READ")) + "|";
        s += std::to_string(have_read_system_configs) + "|" + std::to_string(system_configs_count) + "|";
        // not an SNMP key: not cached
        s += std::string(util_config_get_config_value("QX_WAN_MSS")) + "|";
        devtest::write_file(kSysConf, "export QX_SNMP_PORT=9161\n");
        s += std::string(util_config_get_config_value("QX_SNMP_PORT")) + "|";
        util_config_read_all();  // an explicit load does read again
        s += std::string(util_config_get_config_value("QX_SNMP_PORT"));
        return s;
    });
    EXPECT_EQ(seen, "0|public read|1|3||161|9161");
}

TEST_F(ConfigDevice, MissingDumpAtFirstUseLeavesTheCacheEmpty) {
    devtest::remove_all(kSysConf);
    std::string seen = in_child([] {
        std::string s = util_config_get_config_value("QX_SNMP_PORT");
        s += "|" + std::to_string(system_configs_count) + "|" + std::to_string(have_read_system_configs);
        devtest::write_file(kSysConf, "export QX_SNMP_PORT=161\n");
        s += "|" + std::string(util_config_get_config_value("QX_SNMP_PORT"));
        return s;
    });
    EXPECT_EQ(seen, "|-1|1|");
}

TEST_F(ConfigDevice, OriginalOneConfigAndReadFieldsReadTheDumpAfresh) {
    devtest::write_file(kSysConf, "export QX_WAN_MSS=1400\nexport QX_MTU_USB0=1500\n");
    char value[CONFIG_VALUE_SIZE];
    util_get_original_one_config("QX_WAN_MSS", value);
    EXPECT_STREQ(value, "1400");
    devtest::write_file(kSysConf, "export QX_WAN_MSS=1300\n");
    util_get_original_one_config("QX_WAN_MSS", value);
    EXPECT_STREQ(value, "1300");
    util_get_original_one_config("QX_MTU_USB0", value);
    EXPECT_STREQ(value, "");

    ConfigKeyValuePair pairs[4];
    const char *keys[] = {"QX_WAN_MSS"};
    ASSERT_EQ(util_config_read_fields(keys, 1, pairs, 4), 1);
    EXPECT_STREQ(pairs[0].value, "1300");
    devtest::remove_all(kSysConf);
    EXPECT_EQ(util_config_read_fields(keys, 1, pairs, 4), -1);
    // reading a file never runs a tool
    EXPECT_TRUE(devtest::calls().empty());
}

// ---- the change test --------------------------------------------------------------

TEST_F(ConfigDevice, NoRequirementFileMeansNothingToApply) {
    devtest::mdlcfg_set("QX_ADMIN_WEB_PAGE_HIDE", "a");
    EXPECT_EQ(util_check_if_config_file_work(1), 0);
    EXPECT_EQ(devtest::calls(), (std::vector<std::string>{kCurrentExportCall}));
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/.CURRENT_CONFIG_INFO_EXPORT_RESULT"),
              "export QX_ADMIN_WEB_PAGE_HIDE=\"a\"\n");
}

TEST_F(ConfigDevice, StaleExportsAreRemovedFirst) {
    // A failing configloader leaves no export: a stale one must not count.
    devtest::write_file("/tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT", "export QX_ADMIN_WEB_PAGE_HIDE=x\n");
    devtest::write_file(kManage, "QX_ADMIN_WEB_PAGE_HIDE=x\n");
    devtest::set_answer("configloader", "", 1);
    EXPECT_EQ(util_check_if_config_file_work(1), 0);
    EXPECT_FALSE(devtest::file_exists("/tmp/cmdlib/.CONFIG_INFO_EXPORT_RESULT"));
    EXPECT_TRUE(script_calls().empty());
}

TEST_F(ConfigDevice, WatchedKeyAgainstTheRequirementFiles) {
    const std::string hide = "QX_ADMIN_WEB_PAGE_HIDE=";
    struct Case {
        const char *running;  // null: not in the running configuration
        std::string manage, system;  // "": no such file
        int apply, rc;
        const char *loaded;  // the requirement file handed to configloader
        bool scripts;
    };
    const Case cases[] = {
        // the manage file takes precedence over the system file
        {"same", hide + "same\n", hide + "different\n", 1, 0, kManage, false},
        {"same", "", hide + "different\n", 0, -1, kSystem, false},
        // unchanged, missing or empty watched key: no change
        {"status,wifi", hide + "status,wifi\n", "", 1, 0, kManage, false},
        {"status,wifi", "QX_OTHER=1\n", "", 1, 0, kManage, false},
        {"status,wifi", hide + "\n", "", 1, 0, kManage, false},
        {"status,wifi", hide + "\"\"\n", "", 1, 0, kManage, false},
        // the comparison is exact: a case change is a change
        {"status,wifi", hide + "Status,wifi\n", "", 0, -1, kManage, false},
        // a change runs the scripts only when asked
        {"status", hide + "\"status wifi\"\n", "", 0, -1, kManage, false},
        {"status", hide + "\"status wifi\"\n", "", 1, -1, kManage, true},
        // a key absent from the running configuration counts as changed
        {nullptr, "", hide + "wifi\n", 1, -1, kSystem, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.manage + "|" + c.system + "|" + std::to_string(c.apply));
        devtest::reset_device_state();
        devtest::remove_all(kManage);
        devtest::remove_all(kSystem);
        if (c.running) devtest::mdlcfg_set("QX_ADMIN_WEB_PAGE_HIDE", c.running);
        if (!c.manage.empty()) devtest::write_file(kManage, c.manage);
        if (!c.system.empty()) devtest::write_file(kSystem, c.system);
        EXPECT_EQ(util_check_if_config_file_work(c.apply), c.rc);
        std::vector<std::string> want = {kCurrentExportCall, loader_call(c.loaded)};
        if (c.scripts) want.insert(want.end(), kScripts.begin(), kScripts.end());
        EXPECT_EQ(devtest::calls(), want);
    }
}

}  // namespace
