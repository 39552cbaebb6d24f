// Device steps for tables of calls (tests/common/golden.h): the device
// actions a case needs beside the library calls of its test, so that a
// scenario reads as a transcript of steps and answers.
#pragma once

#include <list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/golden.h"
#include "device.h"

namespace devtest {

// Every occurrence of `from` replaced by `to`.
inline std::string replace_all(std::string s, const std::string &from, const std::string &to) {
    for (size_t at = 0; !from.empty() && (at = s.find(from, at)) != std::string::npos; at += to.size())
        s.replace(at, from.size(), to);
    return s;
}

// The library's scratch names (/tmp/.cmdlib_tmp_<unique>) as /tmp/.cmdlib_tmp_*.
inline std::string hide_scratch_names(std::string s) {
    const std::string stem = "/tmp/.cmdlib_tmp_";
    for (size_t at = 0; (at = s.find(stem, at)) != std::string::npos; at += stem.size() + 1)
        s.replace(at + stem.size(), s.find(' ', at) == std::string::npos ? std::string::npos : s.find(' ', at) - at - stem.size(), "*");
    return s;
}

// "sh CMD" and "outside CMD" (exit code), "out CMD" (standard output),
// "wait CMD" (until it succeeds) -- CMD is the rest of the line, pipes
// included -- "calls [TOOL]" (the call log, " ; "
// between entries), "answer TOOL|TEXT[|CODE]", "mdlcfg KEY|VALUE",
// "reset" (the state every test starts with), and the file steps
// write/read/rm on absolute paths.
inline golden::Table with_device(golden::Table table) {
    using golden::Args;
    using golden::show;
    table = golden::with_files("", std::move(table));
    table["sh"] = [](Args &a) { return show(sh(golden::joined(a))); };
    table["outside"] = [](Args &a) { return show(outside(golden::joined(a))); };
    table["out"] = [](Args &a) { return show(sh_out(golden::joined(a))); };
    table["wait"] = [](Args &a) {
        return wait_until([&] { return sh(golden::joined(a)) == 0; }) ? "ok" : "timed out";
    };
    table["calls"] = [](Args &a) {
        std::string out;
        for (const std::string &c : a[0].empty() ? calls() : calls(a[0])) out += (out.empty() ? "" : " ; ") + c;
        return out.empty() ? "(none)" : hide_scratch_names(out);
    };
    table["at"] = [](Args &a) { return sendat_answer(a[0], a[1], a.size() > 2 ? a[2].i() : 0), "ok"; };
    static std::list<Process> processes;
    table["start"] = [](Args &a) {
        std::istringstream words(a[0]);
        std::vector<std::string> argv;
        for (std::string w; words >> w;) argv.push_back(w);
        processes.emplace_back(argv);
        return "started";
    };
    table["stop"] = [](Args &) { return processes.clear(), "stopped"; };
    table["answer"] = [](Args &a) { return set_answer(a[0], a[1], a.size() > 2 ? a[2].i() : 0), "ok"; };
    table["mdlcfg"] = [](Args &a) { return mdlcfg_set(a[0], a[1]), "ok"; };
    table["reset"] = [](Args &) { return reset_device_state(), "ok"; };
    return table;
}

}  // namespace devtest
