// Where the throwaway device keeps the state of its firmware simulators.
// Shared by the simulator binary (sim/device_sim.cpp) and the test fixture
// (device.cpp), so both sides agree on one layout.  Everything lives under
// /var/lib/device, outside /tmp/cmdlib, which the library itself wipes.
#pragma once

#include <string>

namespace devtest::state {

inline constexpr const char *kDir = "/var/lib/device";
// Present only inside a device (written by run-in-device).
inline constexpr const char *kMarker = "/var/lib/device/in-device";
// One simulator call a line: argv joined by single blanks.
inline constexpr const char *kCallLog = "/var/lib/device/calls.log";
// Scripted answers: <key>.out (stdout), <key>.rc (exit code), <key>.delay (ms).
inline constexpr const char *kAnswers = "/var/lib/device/answers";
// mdlcfg: one file per key holding the raw value; -c copies store to committed.
inline constexpr const char *kMdlcfgStore = "/var/lib/device/mdlcfg/store";
inline constexpr const char *kMdlcfgCommitted = "/var/lib/device/mdlcfg/committed";
// sendat table: <n>.cmd, <n>.resp, <n>.delay; the highest matching n wins.
inline constexpr const char *kSendat = "/var/lib/device/sendat";
// The operator side's network namespace (peer of usb0 and of eth0).
inline constexpr const char *kOperatorNs = "/var/lib/device/ns/operator";

// Answer files are keyed by the tool's base name; '/' cannot occur in it,
// but a caller may pass a full path, so only its last component counts.
inline std::string tool_key(const std::string &tool) {
    auto slash = tool.rfind('/');
    return slash == std::string::npos ? tool : tool.substr(slash + 1);
}

}  // namespace devtest::state
