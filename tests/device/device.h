// Helpers for tests that run inside the throwaway device (run-in-device).
//
// A device test is a GoogleTest binary under tests/device/ named *_test.cpp;
// CTest runs the whole binary in one fresh device.  Derive fixtures from
// DeviceTest: each test starts with an empty call log, no scripted answers,
// an empty mdlcfg store, no sendat table and an empty /tmp/cmdlib.  Files,
// processes and network changes made by a test are NOT undone between
// tests of one binary (only at the device's end): clean up what a later
// test of the same binary could trip over.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace devtest {

// True inside the throwaway device (never on the build host).
bool in_device();

// ---- trees -----------------------------------------------------------------
// Where the checkout and the build tree are, from where the test runs: the
// runner exports them (CMDLIB_SRC, CMDLIB_BUILD; inside a device always
// /src and /build), so no host path is compiled into a test.  A missing
// variable fails the calling test.
std::string src_dir();
std::string build_dir();
// A file of the checkout, e.g. src_path("tests/device/fixtures/usb").
std::string src_path(const std::string &relative);

// ---- files ---------------------------------------------------------------
// Writes the file whole, creating parent directories; mode is applied.
void write_file(const std::string &path, const std::string &content, int mode = 0644);
// The file's content, "" when it is missing or unreadable.
std::string read_file(const std::string &path);
bool file_exists(const std::string &path);
// Removes a file or a whole directory tree; missing is fine.
void remove_all(const std::string &path);
// Binds a directory (or file) of the test over a path of the device, e.g. a
// fixture tree over a part of read-only /sys.  Creates dst when missing.
// Returns false (and the test should fail) when the mount is refused.
bool bind_dir(const std::string &src, const std::string &dst);
// Undoes bind_dir.
bool unbind(const std::string &dst);

// ---- waiting -----------------------------------------------------------------
// Polls until the condition holds; false if it still does not after
// timeout_ms.  Tests wait for events this way and never assert how long
// something took: the cap only ends a wait that has already failed, so make
// it generous.
bool wait_until(const std::function<bool()> &condition, int timeout_ms = 10000);

// ---- shell ---------------------------------------------------------------
// Runs the command line through /bin/sh; its exit code (128+n if killed by
// signal n, -1 if it could not be run).
int sh(const std::string &cmd);
// Standard output of the command line (standard error is not captured).
std::string sh_out(const std::string &cmd);

// ---- simulators ------------------------------------------------------------
// The call log: one entry per simulator call, the argv the tool received
// joined by single blanks, argv[0] as invoked ("mdlcfg -e",
// "/etc/init.d/dialer stop", "/sbin/reboot").  A line feed inside an
// argument shows as the two characters \n.
std::vector<std::string> calls();
// Only the calls of one tool: entries whose argv[0] equals `tool`, or whose
// argv[0] ends in "/" + tool ("reboot" matches "/sbin/reboot").
std::vector<std::string> calls(const std::string &tool);
void clear_calls();
// Waits until the tool has been called at least `count` times (for tools
// the library starts in the background); false on time-out.
bool wait_for_calls(const std::string &tool, size_t count, int timeout_ms = 3000);

// From now on the tool (base name, e.g. "qxsys" or "ntp_sw.sh") prints
// stdout_text and exits with exit_code instead of its own behaviour.
void set_answer(const std::string &tool, const std::string &stdout_text, int exit_code = 0);
// From now on the tool waits delay_ms before doing anything; negative: it
// never finishes (it hangs until killed, still visible as a process).
void set_answer_delay(const std::string &tool, int delay_ms);
void reset_answers();

// mdlcfg's store: what "mdlcfg -g/-e" see, and what "-a" wrote.
void mdlcfg_set(const std::string &key, const std::string &value);
// The stored value, "" when absent; committed = the value as of the last
// "mdlcfg -c".
std::string mdlcfg_get(const std::string &key, bool committed = false);
bool mdlcfg_has(const std::string &key, bool committed = false);

// sendat's (and atcmd's) table: the reply written for this AT command (the
// content of the command file with surrounding blanks and line ends
// removed).  A later entry for the same command replaces an earlier one.
// delay_ms < 0: sendat never answers and keeps running until killed.
// Unknown commands are answered with "\r\nERROR\r\n".
void sendat_answer(const std::string &at_command, const std::string &response, int delay_ms = 0);

// A firmware image that packtoolpro lists with the line "feature: <feature>"
// (an empty feature leaves the line out).
void make_image(const std::string &path, const std::string &feature, const std::string &payload = "payload");

// Clears the call log, answers and delays, the mdlcfg store, the sendat
// table and the contents of /tmp/cmdlib.
void reset_device_state();

// ---- network ---------------------------------------------------------------
// Runs "ip ARGS" in the device; its exit code.
int ip(const std::string &args);
// Runs a command line in the outside namespace: the operator's end of usb0
// (wan0, 10.64.0.1) and the LAN host at the far end of eth0 (lan0,
// 192.168.1.100).
int outside(const std::string &cmd);
// A neighbour entry (default on br0, state reachable).
bool add_neighbour(const std::string &ip_addr, const std::string &mac, const std::string &dev = "br0",
                   const std::string &nud = "reachable");
// An interface (a veth whose far end is in the outside namespace) with one
// address ("10.9.0.1/24"), up with carrier.  "ip link del NAME" removes it.
bool add_interface(const std::string &name, const std::string &cidr);

}  // namespace devtest

namespace devtest {
// From now on the tool prints its scripted answer (if any) and then ends by
// the signal (e.g. SIGKILL), as a tool killed under its caller does.
void set_answer_signal(const std::string &tool, int signal_number);
}  // namespace devtest

// Base fixture of device tests: fails at once outside a device, and resets
// the simulators and /tmp/cmdlib before every test.
class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
};

namespace devtest {

// A LAN host of its own: a veth whose near end joins br0 and whose far end,
// named `name` with the given MAC, is up in the outside namespace (beside
// lan0), so a DHCP client there is one more device on the LAN.  "ip link
// del NAME-br" removes it.
bool add_lan_host(const std::string &name, const std::string &mac);

}  // namespace devtest

// ---- servers and captures on the operator side -------------------------------
namespace devtest {

// A socket made in the outside namespace: a test's own server on the
// operator's side of usb0 (bind it to an address of wan0) or a raw watch
// of what arrives there.  -1 (errno set) on failure.
int outside_socket(int domain, int type, int protocol);

// One UDP datagram as it arrived at wan0 from the device.
struct UdpDatagram {
    std::string src, dst;  // addresses as text
    uint16_t sport = 0, dport = 0;
    std::string payload;
};

// Records the UDP datagrams (IPv4 and IPv6) that arrive at wan0, the
// operator's end of usb0, from construction on: what the library put on
// the wire, byte for byte, whoever (if anyone) answers it.
class UdpCapture {
  public:
    UdpCapture();  // fails the calling test when no capture can be opened
    ~UdpCapture();
    UdpCapture(const UdpCapture &) = delete;
    UdpCapture &operator=(const UdpCapture &) = delete;
    // The datagrams to dport seen so far, in order of arrival, after
    // waiting until there are at least n of them (or timeout_ms passed).
    std::vector<UdpDatagram> wait_for(uint16_t dport, size_t n = 1, int timeout_ms = 5000);

  private:
    void read_ready(int timeout_ms);
    int fd_ = -1;
    std::vector<UdpDatagram> seen_;
};

}  // namespace devtest

namespace devtest {

// A UDP server of the test's own on the operator side (a hostile or
// silent peer): bound to addr:port in the outside namespace, it answers
// each datagram with what reply() makes of it (nothing for ""), and keeps
// every datagram it received.
class UdpResponder {
  public:
    using Reply = std::function<std::string(const std::string &request)>;
    UdpResponder(const std::string &addr, uint16_t port, Reply reply);
    ~UdpResponder();
    UdpResponder(const UdpResponder &) = delete;
    UdpResponder &operator=(const UdpResponder &) = delete;
    // What arrived so far, after waiting until there are at least n
    // datagrams (or timeout_ms passed).
    std::vector<std::string> received(size_t n = 0, int timeout_ms = 5000);

  private:
    Reply reply_;
    int fd_ = -1;
    std::mutex mutex_;
    std::vector<std::string> received_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

// ---- processes -----------------------------------------------------------------
// A process with a daemon's name and command line, running until the object
// goes: argv[0] (an absolute path) is replaced by a link to the simulator,
// told to hang, so the library's /proc walk, killall and pidof see a
// sleeping process of that name.  The call is logged like any other.
class Process {
  public:
    explicit Process(const std::vector<std::string> &argv);
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    int pid() const { return pid_; }

  private:
    int pid_ = -1;
};

}  // namespace devtest
