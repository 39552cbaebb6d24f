// The platform units' fixed commands as data, and the rules that turn a
// command's wait status into an operation's result.  Each platform unit
// keeps one table of rows {command, runner, result rule}; its exported
// operations are one-line calls into the table, so an operation differs
// from another in its row only.
#pragma once

#include <string_view>

#include "base/internal/text.h"
#include "base/libbase.h"

namespace cmdlib::platform {

// How a row's command runs.  Both System and Shell go through base's
// runner, whose status is exactly system()'s; the distinction records
// which of the two the firmware's callers know the operation by, since it
// decides the result rule they rely on.  A trailing "&" in the command
// starts it in the background: the status then says only whether the
// shell started.
enum class Runner : unsigned char { System, Shell };

// What the operation returns, given the wait status s.
enum class Rule : unsigned char {
    Zero,         // 0 whatever happened
    One,          // 1 whatever happened
    Status,       // s as it is
    LowByte,      // s & 0xFF
    LowByteXor1,  // (s ^ 1) & 0xFF
};

struct OpRow {
    const char *command;
    Runner runner;
    Rule rule;
};

[[nodiscard]] constexpr int apply_rule(Rule rule, int status) {
    switch (rule) {
        case Rule::Zero: return 0;
        case Rule::One: return 1;
        case Rule::Status: return status;
        case Rule::LowByte: return status & 0xFF;
        case Rule::LowByteXor1: return (status ^ 1) & 0xFF;
    }
    return status;
}

inline int run_op(const OpRow &row) { return apply_rule(row.rule, util_shell(row.command)); }

// A firmware tool's wait status as an upgrade result code: 0 when it
// exited with 0; 104 when the shell could not be started (-1) or could not
// find the tool (127); otherwise its exit code.  A tool ended by a signal
// has exit code 0 and so counts as success: stage 2 of an upgrade reboots
// the device under the tool.
inline constexpr int kToolNotRun = 104;
[[nodiscard]] constexpr int tool_result(int status) {
    if (status == -1) return kToolNotRun;
    int exit_code = (status >> 8) & 0xFF;
    return exit_code == 127 ? kToolNotRun : exit_code;
}

// Runs "qxupdate OPTIONS --file PATH" (PATH one inert shell word) and
// gives its wait status; -1, as for a shell that could not start, for a
// null path or a line longer than the tool's 255 characters (nothing is
// run then).
int run_qxupdate(const char *options, const char *path);

// The part of an outside file name that may be used inside a fixed
// directory: its last path component.  Empty when that is empty, "." or
// "..", so a name can never lead out of the directory.
[[nodiscard]] constexpr std::string_view file_name_in_dir(std::string_view name) {
    size_t slash = name.rfind('/');
    if (slash != std::string_view::npos) name.remove_prefix(slash + 1);
    if (name == "." || name == "..") return {};
    return name;
}

// The serial number of the PC and MT7561 builds: "qxsys snrl" prints it.
// value is zeroed (len bytes) and gets the output up to its first line end;
// 0, or -1 when the output is empty.
inline int serial_from_qxsys(char *value, int len) {
    if (!value || len <= 0) return -1;
    memset(value, 0, static_cast<size_t>(len));
    util_get_cmd_result("qxsys snrl", value, len);
    value[strcspn(value, "\n")] = '\0';
    return value[0] ? 0 : -1;
}

}  // namespace cmdlib::platform
