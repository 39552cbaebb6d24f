// The macro file and the record's export read by the real shells of the
// device (busybox ash, dash, bash): every variable must come back as the
// library holds it, and no value, however hostile, may run anything.  The
// text itself is checked in tests/unit/shell_names_test.cpp.
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <map>
#include <sstream>
#include <string>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"
#include "device.h"

using namespace devtest;

namespace {

const char *const kShells[] = {"busybox ash", "dash", "bash"};
// Created only if a value runs as a command.
const char *const kRan = "/tmp/value-ran";

// The environment a shell has after running script (env -0: values may
// hold line feeds).
std::map<std::string, std::string> shell_env(const std::string &shell, const std::string &script) {
    std::map<std::string, std::string> vars;
    std::istringstream out(sh_out(shell + " -c '" + script + " && exec env -0'"));
    for (std::string kv; std::getline(out, kv, '\0');)
        if (kv.find('=') != std::string::npos) vars[kv.substr(0, kv.find('='))] = kv.substr(kv.find('=') + 1);
    return vars;
}

class ShellNames : public DeviceTest {
  protected:
    void TearDown() override {
        EXPECT_FALSE(file_exists(kRan)) << "a value ran as a command";
        EXPECT_TRUE(calls("reboot").empty());
        remove_all(kRan);
        DeviceTest::TearDown();
    }

    // Every row of the table and the five interface names, as each shell
    // sees them after sourcing path.
    void expect_sourced(const std::string &path, const std::map<std::string, std::string> &interfaces) {
        for (const char *shell : kShells) {
            auto vars = shell_env(shell, ". " + path);
            ASSERT_FALSE(vars.empty()) << shell;
            for (const NameValueStringPair &row : all_macros_need_to_export)
                EXPECT_EQ(vars[row.name], row.value) << shell << " " << row.name;
            for (const auto &[name, value] : interfaces) EXPECT_EQ(vars[name], value) << shell << " " << name;
            EXPECT_EQ(vars["ALL_MACRO_EXPORT_DEFINITION_FILE"], ALL_MACRO_EXPORT_DEFINITION_FILE) << shell;
        }
    }
};

const std::map<std::string, std::string> kDeviceInterfaces = {
    {"REAL_WAN_IF", "usb0"},          {"REAL_BRIDGE_IF", "br0"}, {"REAL_WIFI_IF", "ath0"},
    {"REAL_ETHERNET_IF", "eth0"}, {"REAL_GRE_IF", "tunnel_gre"},
};

TEST_F(ShellNames, MacroFileSourcedByEveryShell) {
    for (const char *dest : {static_cast<const char *>(nullptr), ""}) {
        remove_all(ALL_MACRO_EXPORT_DEFINITION_FILE);
        util_export_all_macro_definitions_to_file(dest);
        EXPECT_EQ(sh("test -x " ALL_MACRO_EXPORT_DEFINITION_FILE), 0) << (dest ? "empty" : "null") << " destination";
    }
    expect_sourced(ALL_MACRO_EXPORT_DEFINITION_FILE, kDeviceInterfaces);
    // Elsewhere it replaces what was there, and still names the default
    // path in ALL_MACRO_EXPORT_DEFINITION_FILE (checked by expect_sourced).
    write_file("/tmp/cmdlib/macros.sh", "old content\n", 0600);
    util_export_all_macro_definitions_to_file("/tmp/cmdlib/macros.sh");
    EXPECT_EQ(sh("test -x /tmp/cmdlib/macros.sh"), 0);
    expect_sourced("/tmp/cmdlib/macros.sh", kDeviceInterfaces);
    remove_all(ALL_MACRO_EXPORT_DEFINITION_FILE);
}

// An interface may be named with shell characters; as the WAN it lands in
// the file and must stay text.
TEST_F(ShellNames, HostileWanNameStaysText) {
    const std::string wan = "w\"$(reboot)`";
    ASSERT_EQ(ip("link add '" + wan + "' type veth peer name wan-peer"), 0);
    ASSERT_EQ(ip("link set wan-peer up"), 0);
    ASSERT_EQ(ip("link set '" + wan + "' up"), 0);
    ASSERT_EQ(ip("addr add 10.77.0.2/24 dev '" + wan + "'"), 0);
    ASSERT_EQ(ip("route replace default via 10.77.0.1 dev '" + wan + "'"), 0);
    util_export_all_macro_definitions_to_file("/tmp/cmdlib/macros.sh");
    ip("route replace default via 10.64.0.1 dev usb0");
    ip("link del '" + wan + "'");
    auto interfaces = kDeviceInterfaces;
    interfaces["REAL_WAN_IF"] = wan;
    expect_sourced("/tmp/cmdlib/macros.sh", interfaces);
}

// What util_export_config_info prints, caught from standard output.
std::string export_of(InfoStruct *info) {
    int saved = dup(1), fd = open("/tmp/export.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    fflush(stdout);
    dup2(fd, 1);
    util_export_config_info(info);
    dup2(saved, 1);
    close(fd);
    close(saved);
    return read_file("/tmp/export.txt");
}

TEST_F(ShellNames, ExportEvaluatedByEveryShell) {
    // Each exported field gets its own value, hostile ones among them.
    const char *hostile[] = {
        "$(touch /tmp/value-ran)", "`touch /tmp/value-ran`", "\"; touch /tmp/value-ran; \"",
        "back\\slash\\", "\\\"quoted\\\"", "$HOME ${PATH} $1 $$", "it's 'single'", "two\nlines",
        "Café & <tags> | ; *", "   ",
    };
    static InfoStruct info;
    memset(&info, 0, sizeof info);
    size_t n = 0;
    for (const cmdlib::InfoFieldDesc &f : cmdlib::kInfoFields) {
        if (f.group > 8 || f.bit < 0) continue;
        std::string v = n < std::size(hostile) ? hostile[n] : std::string(f.name).substr(0, 6) + "-" + std::to_string(n);
        snprintf(cmdlib::info_field_ptr(&info, f), f.width, "%s", v.c_str());
        cmdlib::info_set_defined_bit(&info, f.bit);
        ++n;
    }
    // A field filled to its last byte has no terminator.
    memcpy(info.TXPOWER, "12345678", 8);
    std::string text = export_of(&info);
    ASSERT_EQ(text.substr(0, 8), "\nexport ");
    for (const char *shell : kShells) {
        auto vars = shell_env(shell, "eval \"$(cat /tmp/export.txt)\"");
        size_t seen = 0;
        for (const cmdlib::InfoFieldDesc &f : cmdlib::kInfoFields) {
            std::string line = std::string("\nexport ") + f.name + "=";
            if (text.find(line) == std::string::npos) continue;
            ++seen;
            const char *field = cmdlib::info_field_ptr(&info, f);
            EXPECT_EQ(vars[f.name], std::string(field, strnlen(field, f.width))) << shell << " " << f.name;
        }
        EXPECT_EQ(seen, 67u) << shell;
        EXPECT_EQ(vars["PWD"], info.PSK_KEY) << shell;
    }
}

}  // namespace
