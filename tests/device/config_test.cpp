// The configuration store on its fixed paths inside the device: the
// process-wide cache, the single-key reads of the running configuration
// and the change test with its mdlcfg / configloader / script calls.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "cmdlib/cmdlib_config.h"
#include "device.h"
#include "device_steps.h"

namespace {

const char kSysConf[] = "/tmp/cmdlib/rc.system.conf";

class ConfigDevice : public DeviceTest {};

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

// Single-key reads of the dump, and the change test against the
// requirement files with its mdlcfg / configloader / script calls, as
// transcripts in tests/golden/device_config.
TEST_F(ConfigDevice, Transcripts) {
    using golden::Args;
    using golden::show;
    golden::check("device_config", golden::calls(devtest::with_device({
        {"original_one", [](Args &a) {
             char value[CONFIG_VALUE_SIZE] = "stale";
             util_get_original_one_config(a[0].c(), value);
             return show(value);
         }},
        {"read_fields", [](Args &a) {
             ConfigKeyValuePair pairs[4] = {};
             const char *keys[] = {a[0].c()};
             int n = util_config_read_fields(keys, 1, pairs, 4);
             return show(n, pairs[0].key, pairs[0].value);
         }},
        {"config_work", [](Args &a) { return show(util_check_if_config_file_work(a[0].i())); }},
    })));
}

}  // namespace
