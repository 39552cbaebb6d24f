// Runs on the HOST: starts devices and checks that what happens inside them
// (a reboot, killall, rm -rf, writes under /etc and /tmp, network changes)
// leaves the build machine untouched, and that the runner behaves wherever
// the checkout lives (exit status, one-line failures, results reaching the
// build tree, parallel devices).  ctest passes CMDLIB_RUNNER, CMDLIB_SRC
// and CMDLIB_BUILD (host paths).
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device.h"

namespace {

std::string quote(const std::string &s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string runner() {
    const char *r = getenv("CMDLIB_RUNNER");
    if (r && *r) return r;
    ADD_FAILURE() << "CMDLIB_RUNNER is not set: run host tests through ctest";
    return "/dev/null/CMDLIB_RUNNER-unset";
}

// The command line of one device running `script` through sh.
std::string device_cmd(const std::string &script, const std::string &options = "") {
    return quote(runner()) + " --build " + quote(devtest::build_dir()) + " " + options + " -- sh -c " + quote(script);
}

int device(const std::string &script) { return devtest::sh(device_cmd(script)); }

bool exists(const std::string &path) {
    struct stat sb;
    return lstat(path.c_str(), &sb) == 0;
}

// Standard output and error of a command line, then its exit status.
struct Outcome {
    std::string out;
    int rc;
};
Outcome run(const std::string &cmd) {
    std::string text = devtest::sh_out("(" + cmd + ") 2>&1; echo \"$?\"");
    size_t cut = text.rfind('\n', text.size() >= 2 ? text.size() - 2 : 0);
    cut = cut == std::string::npos ? 0 : cut + 1;
    return {text.substr(0, cut), static_cast<int>(strtol(text.c_str() + cut, nullptr, 10))};
}

// A fresh directory (mode 0700, as mkdtemp makes it), removed at the end.
struct TempDir {
    explicit TempDir(const std::string &prefix) : path(prefix + "XXXXXX") {
        if (!mkdtemp(path.data())) path.clear();
    }
    ~TempDir() {
        if (!path.empty()) devtest::remove_all(path);
    }
    std::string path;
};

TEST(Safety, RebootKillallRemovalsAndNetworkStayInside) {
    ASSERT_FALSE(devtest::in_device()) << "the safety checks look at the host";
    // the device's reboot is the simulator, which logs its call and returns
    EXPECT_EQ(device("/sbin/reboot && reboot -f && grep -qx /sbin/reboot /var/lib/device/calls.log"), 0);

    // a host process named sendat survives "killall sendat" in a device
    TempDir dir("/tmp/devsafety");
    ASSERT_FALSE(dir.path.empty());
    ASSERT_EQ(devtest::sh("cp /bin/sleep " + dir.path + "/sendat"), 0);
    pid_t pid = fork();
    if (pid == 0) {
        execl((dir.path + "/sendat").c_str(), "sendat", "30", static_cast<char *>(nullptr));
        _exit(127);
    }
    std::string comm = "/proc/" + std::to_string(pid) + "/comm";
    ASSERT_TRUE(devtest::wait_until([&] { return devtest::read_file(comm) == "sendat\n"; }));
    EXPECT_EQ(device("killall sendat 2>/dev/null"), 1);  // inside, killall finds no sendat at all
    EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), 0) << "host sendat was killed";
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);

    // the root is an overlay over the host's: the device sees a host file,
    // removes it, and the host keeps it; its own writes vanish
    bool made_mnt_data = !exists("/mnt/data");
    ASSERT_FALSE(exists("/etc/map")) << "precondition: the build host has no /etc/map";
    devtest::write_file("/mnt/data/sms/sms_read/sentinel", "keep");
    EXPECT_EQ(device("rm -rf /mnt/data/sms && ! test -e /mnt/data/sms && mkdir -p /etc/map && cp -rf /rom/etc/map /etc && "
                     "echo 1 >/tmp/cmdlib/.probe && echo 1 >/usr/local/bin/.probe && rm -f /bin/true"),
              0);
    EXPECT_EQ(devtest::read_file("/mnt/data/sms/sms_read/sentinel"), "keep");
    devtest::remove_all(made_mnt_data ? "/mnt/data" : "/mnt/data/sms");
    for (const char *gone : {"/etc/map", "/rom", "/tmp/cmdlib/.probe", "/usr/local/bin/.probe", "/usr/local/bin/mdlcfg", "/etc/qxscript"})
        EXPECT_FALSE(exists(gone)) << gone;
    EXPECT_TRUE(exists("/bin/true"));

    EXPECT_EQ(device("ip link set usb0 down && ip route flush table main && iptables -P INPUT DROP"), 0);
    EXPECT_FALSE(exists("/sys/class/net/usb0"));
    EXPECT_THAT(devtest::sh_out("iptables -S INPUT"), ::testing::HasSubstr("-P INPUT ACCEPT"));
}

// ---- the runner -------------------------------------------------------------------

TEST(Runner, ExitStatusStateScriptAndPathsIntoTheBuildTree) {
    EXPECT_EQ(device("exit 42"), 42);
    EXPECT_EQ(device("kill -TERM $$"), 128 + SIGTERM);
    EXPECT_EQ(devtest::sh_out("echo hello | " + quote(runner()) + " --build " + quote(devtest::build_dir()) + " cat"), "hello\n");

    // the state script runs first, unlogged
    TempDir dir("/tmp/devstate");
    ASSERT_FALSE(dir.path.empty());
    devtest::write_file(dir.path + "/state.sh", "mdlcfg -a QX_STATE=ready\n");
    std::string cmd = device_cmd("test ! -s /var/lib/device/calls.log && test \"$(mdlcfg -g QX_STATE)\" = ready",
                                 "--state " + quote(dir.path + "/state.sh"));
    EXPECT_EQ(devtest::sh(cmd), 0);
    devtest::write_file(dir.path + "/state.sh", "exit 3\n");
    Outcome failed = run(cmd);
    EXPECT_EQ(failed.rc, 125);
    EXPECT_EQ(failed.out, "run-in-device: state script failed\n");

    // host paths of the build tree in the forms a test's output path comes
    // in (a plain argument, after "=" and "=xml:", GTEST_OUTPUT) are rewritten
    const std::string host = devtest::build_dir() + "/tests/device/.results";
    devtest::remove_all(host);
    ASSERT_EQ(devtest::sh("mkdir -p " + quote(host)), 0);
    std::string script = "echo a >\"$1\" && echo b >\"${2#--out=xml:}\" && echo c >\"${GTEST_OUTPUT#xml:}\" && "
                         "echo \"$1 $2 $GTEST_OUTPUT\" >\"$CMDLIB_BUILD/tests/device/.results/seen\"";
    EXPECT_EQ(devtest::sh("GTEST_OUTPUT=xml:" + quote(host + "/c") + " " + device_cmd(script) + " sh " + quote(host + "/a") +
                          " " + quote("--out=xml:" + host + "/b")),
              0);
    EXPECT_EQ(devtest::read_file(host + "/a") + devtest::read_file(host + "/b") + devtest::read_file(host + "/c"), "a\nb\nc\n");
    EXPECT_EQ(devtest::read_file(host + "/seen"),
              "/build/tests/device/.results/a --out=xml:/build/tests/device/.results/b xml:/build/tests/device/.results/c\n");
    devtest::remove_all(host);
}

TEST(Runner, FailuresAreOneLineSayingWhatFailed) {
    TempDir scratch("/tmp/devfail");
    const std::string &d = scratch.path;
    ASSERT_FALSE(d.empty());
    ASSERT_EQ(chmod(d.c_str(), 0755), 0);
    // a kernel without the namespaces, played by an unshare on PATH
    devtest::write_file(d + "/bin/unshare", "#!/bin/sh\necho 'unshare: unshare failed: Operation not permitted' >&2\nexit 1\n", 0755);
    // an ip that fails as on a kernel without veth or bridges; the set-up
    // runs it after the switch to the device's root, where the build tree is /build
    const std::string ip_dir = "tests/device/.failing-ip";
    devtest::write_file(devtest::build_dir() + "/" + ip_dir + "/ip", "#!/bin/sh\necho 'Error: Unknown device type.' >&2\nexit 2\n", 0755);
    // a build tree below a 0700 directory and a runner anyone may read
    ASSERT_EQ(devtest::sh("mkdir -p " + quote(d + "/secret/build") + " " + quote(d + "/tools/device") + " && chmod 0700 " +
                          quote(d + "/secret") + " && cp " + quote(runner()) + " " + quote(d + "/tools/device/run-in-device") +
                          " && mkdir " + quote(d + "/empty")),
              0);
    const std::string r = quote(runner()), b = " --build " + quote(devtest::build_dir());
    const struct {
        const char *what;
        std::string cmd, line;
    } cases[] = {
        {"no command", r, "run-in-device: usage: run-in-device [--build DIR] [--rw DIR]... [--state SCRIPT] [--] COMMAND [ARGS...]"},
        {"unknown option", r + b + " --bogus true", "run-in-device: unknown option --bogus"},
        {"option without its argument", r + " --build", "run-in-device: --build needs an argument"},
        {"missing build tree", r + " --build /nonexistent true", "run-in-device: cannot use build tree /nonexistent: No such file or directory"},
        {"build tree without simulators", r + " --build " + quote(d + "/empty") + " true",
         "run-in-device: simulators not built: " + d + "/empty/tools/device/device_sim"},
        {"missing --rw directory", r + b + " --rw /nonexistent true",
         "run-in-device: cannot use --rw directory /nonexistent: No such file or directory"},
        {"no namespaces", "PATH=" + quote(d + "/bin") + ":\"$PATH\" " + r + b + " true",
         "run-in-device: cannot create namespaces: unshare: unshare failed: Operation not permitted"},
        {"network set-up refused", "PATH=/build/" + ip_dir + ":\"$PATH\" " + r + b + " true",
         "run-in-device: network set-up failed (/var/lib/device/ns/inside.batch): Error: Unknown device type."},
        {"build tree the caller may not enter",
         "setpriv --reuid=65534 --regid=65534 --clear-groups " + quote(d + "/tools/device/run-in-device") + " --build " +
             quote(d + "/secret/build") + " true",
         "run-in-device: cannot use build tree " + d + "/secret/build: Permission denied"},
    };
    for (const auto &c : cases) {
        Outcome o = run(c.cmd);
        EXPECT_EQ(o.rc, 125) << c.what;
        EXPECT_EQ(o.out, c.line + "\n") << c.what;
    }
    devtest::remove_all(devtest::build_dir() + "/" + ip_dir);
}

TEST(Runner, ParallelDevicesDoNotClash) {
    // Same interface names and paths at the same time: each device marks a
    // shared --rw folder and waits for the other's mark, so both are up
    // together; each still reads its own /tmp/cmdlib.
    TempDir shared("/tmp/devpar");
    ASSERT_FALSE(shared.path.empty());
    auto one = [&](const std::string &me, const std::string &other) {
        return device_cmd("ip link add dum0 type veth peer name dum1 && echo " + me + " >/tmp/cmdlib/who && touch \"$CMDLIB_RW/" + me +
                              "\" && i=0 && while [ ! -e \"$CMDLIB_RW/" + other + "\" ] && [ $i -lt 300 ]; do sleep 0.1; i=$((i+1)); done; "
                              "test -e \"$CMDLIB_RW/" + other + "\" && test \"$(cat /tmp/cmdlib/who)\" = " + me,
                          "--rw " + quote(shared.path));
    };
    EXPECT_EQ(devtest::sh("(" + one("a", "b") + ") & pa=$!; (" + one("b", "a") + ") & pb=$!; wait $pa && wait $pb"), 0);
}

// ---- any checkout path ----------------------------------------------------------------

// Reports what the device shows (its own path, the trees, the working
// directory, the checkout's marker), writes its argument back to the build
// tree, and through the checkout when the build tree sits inside it.
constexpr const char *kProbe = R"SH(#!/bin/sh
printf '%s|%s|%s|%s|%s|' "$0" "$CMDLIB_SRC" "$CMDLIB_BUILD" "$(pwd)" "$(cat "$CMDLIB_SRC/marker")"
touch "$CMDLIB_SRC/.written" 2>/dev/null && echo "checkout writable"
echo "$1" >"$CMDLIB_BUILD/from-device"
if [ -n "$2" ]; then echo nested >"$CMDLIB_SRC/$2/nested"; fi
echo end
)SH";

TEST(Runner, DeviceFindsTheTreesAtFixedPathsWhereverTheCheckoutLives) {
    // a blank in the path under /tmp with the build tree inside; a 0700
    // directory outside /tmp with the build tree beside
    const struct {
        const char *parent, *checkout, *build;
    } layouts[] = {{"/tmp", "a b/x", "a b/x/build"}, {"/var/tmp", "x", "x-build"}};
    for (const auto &l : layouts) {
        SCOPED_TRACE(l.build);
        TempDir top(std::string(l.parent) + "/devpath ");
        ASSERT_FALSE(top.path.empty());
        const std::string src = top.path + "/" + l.checkout, build = top.path + "/" + l.build;
        ASSERT_EQ(devtest::sh("mkdir -p " + quote(src + "/tools/device") + " " + quote(build + "/tools/device") + " && cp " +
                              quote(runner()) + " " + quote(src + "/tools/device/") + " && cp " +
                              quote(devtest::build_dir() + "/tools/device/device_sim") + " " + quote(build + "/tools/device/")),
                  0);
        devtest::write_file(src + "/marker", "checkout");
        devtest::write_file(build + "/probe", kProbe, 0755);
        std::string nested = build.rfind(src + "/", 0) == 0 ? build.substr(src.size() + 1) : "";
        Outcome o = run("cd " + quote(build) + " && " + quote(src + "/tools/device/run-in-device") + " --build " + quote(build) +
                        " -- " + quote(build + "/probe") + " hello " + quote(nested));
        EXPECT_EQ(o.rc, 0) << o.out;
        EXPECT_EQ(o.out, "/build/probe|/src|/build|/build|checkout|end\n");
        EXPECT_EQ(devtest::read_file(build + "/from-device"), "hello\n");
        EXPECT_EQ(devtest::read_file(build + "/nested"), nested.empty() ? "" : "nested\n");
        EXPECT_FALSE(exists(src + "/.written"));
    }
}

}  // namespace
