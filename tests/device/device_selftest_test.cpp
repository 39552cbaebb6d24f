// The device itself: its isolation, fixture helpers, simulators and the
// real-kernel network, checked from inside, partly through the library's
// own calls.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <string>

#include <gmock/gmock.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib.h"
#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_info.h"
#include "device.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

bool running(const char *name) {
    return cmd_ps_is_one_program_running(const_cast<char *>(name)) != 0;
}

// True once no process of that name is left (zombies count as running).
bool ends_soon(const char *name) {
    return devtest::wait_until([name] { return !running(name); });
}

// ---- the device's file system and processes ---------------------------------

class DeviceFs : public DeviceTest {};

TEST_F(DeviceFs, FirmwareDirectoriesExistEmpty) {
    for (const char *dir : {"/tmp/cmdlib", "/mnt/data/etc/qxcfg", "/productinfo", "/data", "/var/run"}) {
        EXPECT_EQ(devtest::sh(std::string("test -d ") + dir), 0) << dir;
        EXPECT_EQ(devtest::sh_out(std::string("ls -A ") + dir), "") << dir;
    }
    // The scripts the library runs are there.
    EXPECT_TRUE(devtest::file_exists("/etc/qxscript/rc.backup-before-fota-upgrade"));
    EXPECT_TRUE(devtest::file_exists("/etc/init.d/dialer"));
    // No factory data: the library's check of /productinfo/imei fails until it is written.
    EXPECT_EQ(util_check_device_factory_imei_info(), 1);
    devtest::write_file("/productinfo/imei", "867530012345678\n");
    EXPECT_EQ(util_check_device_factory_imei_info(), 0);
    devtest::remove_all("/productinfo/imei");
}

TEST_F(DeviceFs, RootIsWritableSourcesAreNot) {
    devtest::write_file("/etc/map/probe", "x");
    EXPECT_EQ(devtest::read_file("/etc/map/probe"), "x");
    // The repository is bound read-only: a test cannot damage the sources.
    int fd = open(devtest::src_path("tests/device/.probe").c_str(), O_WRONLY | O_CREAT, 0644);
    int err = errno;
    if (fd >= 0) close(fd);
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(err, EROFS);
    // No disk of the host is reachable through /dev.
    EXPECT_FALSE(devtest::file_exists("/dev/vda"));
    EXPECT_TRUE(devtest::file_exists("/dev/null"));
    devtest::remove_all("/etc/map");
}

TEST_F(DeviceFs, OwnPidNamespace) {
    // PID 1 is the runner; the host's processes are invisible.
    EXPECT_THAT(devtest::read_file("/proc/1/cmdline"), HasSubstr("run-in-device"));
    EXPECT_LT(std::stoi(devtest::sh_out("ls /proc | grep -c '^[0-9]*$'")), 20);
}

TEST_F(DeviceFs, FinishedBackgroundToolsDoNotLinger) {
    // A tool started with '&' that has ended must not stay behind as a
    // zombie: the library's process walk would count it as running.
    ASSERT_EQ(devtest::sh("sockmsg_send -d 4 -m 4132 &"), 0);
    ASSERT_TRUE(devtest::wait_for_calls("sockmsg_send", 1));
    EXPECT_TRUE(ends_soon("sockmsg_send"));
}

// ---- fixture helpers ----------------------------------------------------------

class Fixture : public DeviceTest {};

TEST_F(Fixture, ShellExitCodesAndOutput) {
    EXPECT_EQ(devtest::sh("exit 7"), 7);
    EXPECT_EQ(devtest::sh("kill -9 $$"), 128 + SIGKILL);
    EXPECT_EQ(devtest::sh("no-such-command-here 2>/dev/null"), 127);
    EXPECT_EQ(devtest::sh_out("printf 'a b\\nc'; echo err >&2"), "a b\nc");
}

TEST_F(Fixture, ResetClearsEveryKindOfState) {
    ASSERT_EQ(devtest::sh("mdlcfg -a K=v"), 0);
    devtest::set_answer("qxsys", "x");
    devtest::sendat_answer("AT", "OK");
    devtest::write_file("/tmp/cmdlib/.flag", "");
    devtest::reset_device_state();
    EXPECT_THAT(devtest::calls(), IsEmpty());
    EXPECT_FALSE(devtest::mdlcfg_has("K"));
    EXPECT_EQ(devtest::sh_out("qxsys snrl"), "");
    EXPECT_EQ(devtest::sh_out("atcmd AT"), "\r\nERROR\r\n");
    EXPECT_FALSE(devtest::file_exists("/tmp/cmdlib/.flag"));
    EXPECT_TRUE(devtest::file_exists("/tmp/cmdlib"));
}

// ---- simulators: call log and scripted answers ---------------------------------------

class Simulators : public DeviceTest {};

TEST_F(Simulators, CallLogHoldsExactArgv) {
    // The library's reboot command line: each tool logs the argv it got.
    ASSERT_EQ(devtest::sh("/etc/init.d/dialer stop 1>/dev/null 2>&1;atcmd 'AT+CFUN=0' 1>/dev/null 2>&1;"
                          "sockmsg_send -d 13 -m 20506;/sbin/reboot"),
              0);
    EXPECT_THAT(devtest::calls(), ElementsAre("/etc/init.d/dialer stop", "atcmd AT+CFUN=0",
                                              "sockmsg_send -d 13 -m 20506", "/sbin/reboot"));
    // Still running: the reboot was simulated.
    EXPECT_THAT(devtest::calls("reboot"), ElementsAre("/sbin/reboot"));
    EXPECT_THAT(devtest::calls("/etc/init.d/dialer"), ElementsAre("/etc/init.d/dialer stop"));
    EXPECT_THAT(devtest::calls("cmd"), IsEmpty());  // no match on a name's tail
    devtest::clear_calls();
    EXPECT_THAT(devtest::calls(), IsEmpty());
    // A line feed inside an argument keeps the entry on one line.
    ASSERT_EQ(devtest::sh("qxsys 'a\nb' c"), 0);
    EXPECT_THAT(devtest::calls(), ElementsAre("qxsys a\\nb c"));
}

TEST_F(Simulators, ScriptedAnswerAndExitCode) {
    EXPECT_EQ(devtest::sh_out("qxsys snrl"), "");
    devtest::set_answer("qxsys", "SN1234567\n", 3);
    EXPECT_EQ(devtest::sh_out("qxsys snrl"), "SN1234567\n");
    EXPECT_EQ(devtest::sh("qxsys snrl >/dev/null"), 3);
    // Keyed by base name: a tool run by absolute path takes the same answer.
    devtest::set_answer("/usr/bin/qxupdate", "", 5);
    EXPECT_EQ(devtest::sh("/usr/bin/qxupdate --local --config --file /data/x"), 5);
    EXPECT_EQ(devtest::sh("qxupdate --reset"), 5);
    devtest::reset_answers();
    EXPECT_EQ(devtest::sh("qxupdate --reset"), 0);
}

TEST_F(Simulators, DelayedAndHangingTools) {
    // A delayed tool has logged its call but not answered yet, and then
    // ends by itself.
    devtest::set_answer_delay("wlanconfig", 1500);
    devtest::set_answer("wlanconfig", "sta list\n");
    ASSERT_EQ(devtest::sh("wlanconfig ath0 list sta >/tmp/sta &"), 0);
    ASSERT_TRUE(devtest::wait_for_calls("wlanconfig", 1));
    EXPECT_TRUE(running("wlanconfig"));
    EXPECT_EQ(devtest::read_file("/tmp/sta"), "");
    EXPECT_TRUE(ends_soon("wlanconfig"));
    EXPECT_EQ(devtest::read_file("/tmp/sta"), "sta list\n");
    devtest::remove_all("/tmp/sta");

    // A hanging tool is a real process that the real killall ends.
    devtest::set_answer_delay("qxfotaonsnmp", -1);
    ASSERT_EQ(devtest::sh("qxfotaonsnmp http://fota.example/x.bin &"), 0);
    ASSERT_TRUE(devtest::wait_for_calls("qxfotaonsnmp", 1));
    EXPECT_TRUE(running("qxfotaonsnmp"));
    EXPECT_EQ(devtest::sh("killall qxfotaonsnmp"), 0);
    EXPECT_TRUE(ends_soon("qxfotaonsnmp"));
}

// ---- mdlcfg: a real store -----------------------------------------------------------------

class Mdlcfg : public DeviceTest {};

TEST_F(Mdlcfg, SetGetCommitAndRefusals) {
    ASSERT_EQ(devtest::sh("mdlcfg -a QX_FOTA_URL=\"http://a b/c\" && mdlcfg -c"), 0);
    ASSERT_EQ(devtest::sh("mdlcfg -a QX_FOTA_URL=\"new\""), 0);
    EXPECT_EQ(devtest::mdlcfg_get("QX_FOTA_URL"), "new");
    EXPECT_EQ(devtest::mdlcfg_get("QX_FOTA_URL", true), "http://a b/c");  // not committed yet
    EXPECT_EQ(devtest::sh_out("mdlcfg -g QX_FOTA_URL"), "new\n");
    EXPECT_EQ(devtest::sh_out("mdlcfg -g NOT_SET"), "");
    ASSERT_EQ(devtest::sh("mdlcfg -a EMPTY="), 0);
    EXPECT_EQ(devtest::sh_out("mdlcfg -g EMPTY"), "\n");
    for (const char *bad : {"-a NOEQUALS", "-a =v", "-a ../x=v", "-x", ""})
        EXPECT_EQ(devtest::sh(std::string("mdlcfg ") + bad + " 2>/dev/null"), 1) << bad;
}

TEST_F(Mdlcfg, ExportIsSortedAndQuotedSoTheLibraryReadsItBack) {
    const std::string tricky = "a \"q\" $HOME `x` \\ end";
    devtest::mdlcfg_set("B_KEY", tricky);
    devtest::mdlcfg_set("A_KEY", "plain");
    std::string out = devtest::sh_out("mdlcfg -e");
    EXPECT_EQ(out, "export A_KEY=\"plain\"\nexport B_KEY=\"a \\\"q\\\" \\$HOME \\`x\\` \\\\ end\"\n");
    // The library's unquoting gives the stored value back.
    std::string line = out.substr(out.find("export B_KEY=") + 13);
    line.pop_back();
    char value[256];
    util_string_deconvert_special_char(line.c_str(), value, sizeof value);
    EXPECT_EQ(std::string(value), tricky);
    // And a shell reading the export agrees.
    devtest::write_file("/tmp/export.sh", out);
    EXPECT_EQ(devtest::sh_out(". /tmp/export.sh; printf %s \"$B_KEY\""), tricky);
}

// ---- configloader, sendat, atcmd, packtoolpro ------------------------------------------------

class FirmwareTools : public DeviceTest {};

TEST_F(FirmwareTools, ConfigloaderExportsRequirementFile) {
    devtest::write_file("/mnt/data/etc/qxcfg/manage_requirement_config_file.conf",
                        "# requirement\nQX_ADMIN_WEB_PAGE_HIDE=yes\nexport QX_X=\"a b\"\nnot a setting\n");
    ASSERT_EQ(devtest::sh("configloader -c /mnt/data/etc/qxcfg/manage_requirement_config_file.conf "
                          "-o /tmp/cmdlib/out -e /tmp/cmdlib/out.0 -n"),
              0);
    EXPECT_EQ(devtest::read_file("/tmp/cmdlib/out"),
              "export QX_ADMIN_WEB_PAGE_HIDE=\"yes\"\nexport QX_X=\"a b\"\n");
    EXPECT_TRUE(devtest::file_exists("/tmp/cmdlib/out.0"));
    devtest::remove_all("/tmp/cmdlib/out");
    EXPECT_NE(devtest::sh("configloader -c /mnt/data/none.conf -o /tmp/cmdlib/out -e /tmp/cmdlib/out.0 -n 2>/dev/null"), 0);
    EXPECT_FALSE(devtest::file_exists("/tmp/cmdlib/out"));
}

TEST_F(FirmwareTools, SendatAnswersFromTheTable) {
    devtest::sendat_answer("AT+CSQ", "\r\n+CSQ: 20,99\r\n\r\nOK\r\n");
    devtest::write_file("/tmp/at.cmd", "AT+CSQ\n");
    ASSERT_EQ(devtest::sh("sendat -d/dev/ttyUSB1 -f/tmp/at.cmd -o/tmp/at.out  1>/dev/null 2>&1"), 0);
    EXPECT_EQ(devtest::read_file("/tmp/at.out"), "\r\n+CSQ: 20,99\r\n\r\nOK\r\n");
    EXPECT_THAT(devtest::calls(), ElementsAre("sendat -d/dev/ttyUSB1 -f/tmp/at.cmd -o/tmp/at.out"));

    // Separate option words work too; a later entry replaces an earlier one.
    devtest::sendat_answer("AT+CSQ", "\r\n+CSQ: 31,99\r\n\r\nOK\r\n");
    ASSERT_EQ(devtest::sh("sendat -d /dev/ttyUSB1 -f /tmp/at.cmd -o /tmp/at.out"), 0);
    EXPECT_EQ(devtest::read_file("/tmp/at.out"), "\r\n+CSQ: 31,99\r\n\r\nOK\r\n");
    EXPECT_EQ(devtest::sh_out("atcmd 'AT+CSQ'"), "\r\n+CSQ: 31,99\r\n\r\nOK\r\n");

    devtest::write_file("/tmp/at.cmd", "AT+UNKNOWN");
    ASSERT_EQ(devtest::sh("sendat -d/dev/ttyUSB1 -f/tmp/at.cmd -o/tmp/at.out"), 0);
    EXPECT_EQ(devtest::read_file("/tmp/at.out"), "\r\nERROR\r\n");
    EXPECT_NE(devtest::sh("sendat -d/dev/ttyUSB1 -f/tmp/none -o/tmp/at.out 2>/dev/null"), 0);
}

TEST_F(FirmwareTools, PacktoolproListsTheFeatureLine) {
    const std::string list = "packtoolpro -l /data/web_upload/";
    devtest::make_image("/data/web_upload/fw.img", "fibocom_t750");
    EXPECT_EQ(devtest::sh_out(list + "fw.img | grep \"feature:\""), "feature: fibocom_t750\n");
    devtest::write_file("/data/web_upload/junk.img", "feature: fibocom_t750\n");
    EXPECT_EQ(devtest::sh(list + "junk.img 2>/dev/null"), 1);
    devtest::remove_all("/data/web_upload");
}

// ---- network ----------------------------------------------------------------------------------

class Network : public DeviceTest {};

TEST_F(Network, Usb0IsTheDefaultRouteAndBr0TheBridge) {
    // 10.64.0.1 as little-endian hex in the kernel's route table
    EXPECT_EQ(devtest::sh("grep -Eq '^usb0\\s+00000000\\s+0100400A\\s' /proc/net/route"), 0)
        << devtest::read_file("/proc/net/route");
    EXPECT_EQ(devtest::sh_out("ip -6 route show default"),
              "default via 2001:db8:64::1 dev usb0 metric 1024 pref medium\n");
    EXPECT_THAT(devtest::read_file("/proc/net/if_inet6"), HasSubstr("20010db8006400000000000000000002"));
    EXPECT_EQ(devtest::read_file("/sys/class/net/usb0/operstate"), "up\n");
    EXPECT_THAT(devtest::sh_out("ip -o -4 addr show dev br0"), HasSubstr("192.168.1.1/24"));
    EXPECT_EQ(devtest::sh_out("basename $(readlink /sys/class/net/eth0/master)"), "br0\n");
}

TEST_F(Network, OperatorAndLanHostAnswer) {
    EXPECT_EQ(devtest::sh("arping -q -c1 -w2 -I usb0 10.64.0.1"), 0);
    EXPECT_EQ(devtest::sh("arping -q -c1 -w2 -I br0 192.168.1.100"), 0);
    EXPECT_EQ(devtest::outside("ip -o addr show dev wan0 | grep -q 10.64.0.1/24"), 0);
}

TEST_F(Network, FirewallAndConnectionTracking) {
    ASSERT_EQ(devtest::sh("iptables -t nat -A POSTROUTING -o usb0 -j MASQUERADE"), 0);
    EXPECT_THAT(devtest::sh_out("iptables -t nat -S POSTROUTING"), HasSubstr("-A POSTROUTING -o usb0 -j MASQUERADE"));
    ASSERT_EQ(devtest::sh("ip6tables -A FORWARD -i br0 -j ACCEPT"), 0);
    // A datagram to the LAN host becomes a tracked connection.
    ASSERT_EQ(devtest::sh("bash -c 'echo x >/dev/udp/192.168.1.100/5353'"), 0);
    EXPECT_THAT(devtest::sh_out("conntrack -L -p udp 2>/dev/null"), HasSubstr("dst=192.168.1.100"));
    EXPECT_THAT(devtest::read_file("/proc/net/nf_conntrack"), HasSubstr("dport=5353"));
    EXPECT_EQ(devtest::sh("iptables -t nat -F && ip6tables -F && conntrack -F 2>/dev/null"), 0);
}

}  // namespace
