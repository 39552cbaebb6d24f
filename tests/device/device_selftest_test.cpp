// The device itself, from inside: what the family tests rely on without
// exercising it themselves — the read-only checkout, the private PID
// namespace, reaped background tools and the mdlcfg simulator's store and
// quoting.  The call log's exact argv, answers keyed by base name and
// packtoolpro's listing show in every family transcript.
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include <gmock/gmock.h>

#include "base/libbase.h"
#include "cmdlib/cmdlib_info.h"
#include "device.h"

using ::testing::HasSubstr;

namespace {

class DeviceSelf : public DeviceTest {};

TEST_F(DeviceSelf, CheckoutIsReadOnlyAndThePidNamespaceIsPrivate) {
    int fd = open(devtest::src_path("tests/device/.probe").c_str(), O_WRONLY | O_CREAT, 0644);
    int err = errno;
    if (fd >= 0) close(fd);
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(err, EROFS);
    EXPECT_FALSE(devtest::file_exists("/dev/vda"));  // no disk of the host
    EXPECT_THAT(devtest::read_file("/proc/1/cmdline"), HasSubstr("run-in-device"));
    EXPECT_LT(std::stoi(devtest::sh_out("ls /proc | grep -c '^[0-9]*$'")), 20);
}

TEST_F(DeviceSelf, FinishedBackgroundToolsDoNotLinger) {
    // an ended tool left as a zombie would count as running in the library's walk
    ASSERT_EQ(devtest::sh("sockmsg_send -d 4 -m 4132 &"), 0);
    ASSERT_TRUE(devtest::wait_for_calls("sockmsg_send", 1));
    EXPECT_TRUE(devtest::wait_until([] { return cmd_ps_is_one_program_running(const_cast<char *>("sockmsg_send")) == 0; }));
}

TEST_F(DeviceSelf, MdlcfgKeepsAStoreAndExportsWhatTheLibraryReadsBack) {
    ASSERT_EQ(devtest::sh("mdlcfg -a QX_FOTA_URL=\"http://a b/c\" && mdlcfg -c && mdlcfg -a QX_FOTA_URL=new"), 0);
    EXPECT_EQ(devtest::mdlcfg_get("QX_FOTA_URL", true), "http://a b/c");  // as of the commit
    EXPECT_EQ(devtest::sh_out("mdlcfg -g QX_FOTA_URL; mdlcfg -g NOT_SET"), "new\n");
    for (const char *bad : {"-a NOEQUALS", "-a =v", "-a ../x=v", "-x", ""})
        EXPECT_EQ(devtest::sh(std::string("mdlcfg ") + bad + " 2>/dev/null"), 1) << bad;

    const std::string tricky = "a \"q\" $HOME `x` \\ end";
    devtest::reset_device_state();
    devtest::mdlcfg_set("B_KEY", tricky);
    devtest::mdlcfg_set("A_KEY", "plain");
    std::string out = devtest::sh_out("mdlcfg -e");
    EXPECT_EQ(out, "export A_KEY=\"plain\"\nexport B_KEY=\"a \\\"q\\\" \\$HOME \\`x\\` \\\\ end\"\n");
    char value[256];  // the library's unquoting and a shell both give the stored value back
    util_string_deconvert_special_char(out.substr(out.find("B_KEY=") + 6, out.size() - out.find("B_KEY=") - 7).c_str(),
                                       value, sizeof value);
    EXPECT_EQ(std::string(value), tricky);
    devtest::write_file("/tmp/export.sh", out);
    EXPECT_EQ(devtest::sh_out(". /tmp/export.sh; printf %s \"$B_KEY\""), tricky);
}

}  // namespace
