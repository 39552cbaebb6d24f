// The front's fixed answers, the SNMP parameters computed from a filled
// record and the SNMP setters' command lines: tables in tests/golden/
// front_answers, snmp_values and snmp_settings.
#include <gtest/gtest.h>
#include <string.h>

#include <set>
#include <sstream>
#include <string>

#include "base/internal/command_line.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_front.h"
#include "cmdlib/cmdlib_snmp_data.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/snmp_setting.h"
#include "common/golden.h"

namespace {

using golden::Args;
using golden::show;

// The fixed answers by name, called with zero and null arguments.
template <typename R, typename... Ps>
std::string call_ignoring(R (*fn)(Ps...)) {
    if constexpr (std::is_void_v<R>) {
        fn(Ps{}...);
        return "(nothing)";
    } else {
        return show(fn(Ps{}...));
    }
}

golden::Table fixed_answers() {
    golden::Table t;
// NOLINTNEXTLINE(bugprone-macro-parentheses): &name takes a function's address
#define ANSWER_CALL(value, name, params) t[#name] = [](Args &) { return call_ignoring(&name); };
#define NOTHING_CALL(name, params) ANSWER_CALL(0, name, params)
#define SKIP_OWN(ret, name, params)
#define SKIP_FORWARD(ret, name, target, params, args)
    CMDLIB_FRONT_OPERATIONS(SKIP_OWN, SKIP_FORWARD, SKIP_FORWARD, ANSWER_CALL, NOTHING_CALL)
#undef ANSWER_CALL
#undef NOTHING_CALL
#undef SKIP_OWN
#undef SKIP_FORWARD
    golden::Table calls;
    calls["call"] = [t](Args &a) {
        auto it = t.find(a[0]);
        return it == t.end() ? std::string("<not a fixed answer>") : it->second(a);
    };
    return calls;
}

TEST(Front, EveryFixedAnswerAsListed) {
    golden::check("front_answers", golden::calls(fixed_answers()));
}

// The golden list names every fixed answer of the front and nothing else.
TEST(Front, FixedAnswersListedOnce) {
    std::set<std::string> table, listed;
#define NAME_OF(value, name, params) table.insert(#name);
#define NOTHING_NAME(name, params) table.insert(#name);
#define SKIP_OWN(ret, name, params)
#define SKIP_FORWARD(ret, name, target, params, args)
    CMDLIB_FRONT_OPERATIONS(SKIP_OWN, SKIP_FORWARD, SKIP_FORWARD, NAME_OF, NOTHING_NAME)
#undef NAME_OF
#undef NOTHING_NAME
#undef SKIP_OWN
#undef SKIP_FORWARD
    std::istringstream in(golden::slurp(golden::folder("front_answers") / "answers.in"));
    int lines = 0;
    for (std::string line; std::getline(in, line);)
        if (line.rfind("call ", 0) == 0) listed.insert(line.substr(5)), ++lines;
    EXPECT_EQ(lines, static_cast<int>(listed.size())) << "a name listed twice";
    EXPECT_EQ(table, listed);
}

// ---- SNMP parameters over a record filled by the test -------------------------------
//
// "clear" empties the provider's record and marks it filled (so no file is
// read); "field NAME|VALUE" sets a record field (a value as long as the
// field leaves no terminator); "get PARAM|SIZE" calls the dispatcher with a
// buffer of SIZE bytes pre-filled with '?' and shows the result, the
// buffer's text and any byte written past SIZE.

golden::Table snmp_steps() {
    golden::Table t;
    t["clear"] = [](Args &) {
        memset(&global_system_info_struct, 0, sizeof global_system_info_struct);
        util_snmp_data_have_initialized = 1;
        return std::string("ok");
    };
    t["field"] = [](Args &a) {
        const cmdlib::InfoFieldDesc *f = cmdlib::find_info_field(a[0]);
        if (!f) return std::string("<no such field>");
        char *p = cmdlib::info_field_ptr(&global_system_info_struct, *f);
        memset(p, 0, f->width);
        memcpy(p, a[1].data(), std::min(a[1].size(), f->width));
        return std::string("ok");
    };
    t["get"] = [](Args &a) {
        size_t size = a[1].z();
        std::string buf(size + 8, '?');
        int rc = util_snmp_data_get_specified_parameter(a[0].c(), &buf[0], static_cast<int>(size));
        std::string text = buf.substr(0, std::min(size, strnlen(buf.c_str(), size)));
        bool overrun = buf.compare(size, 8, "????????") != 0;
        return show(rc, text) + (overrun ? " OVERRUN" : "");
    };
    return t;
}

TEST(SnmpValues, GettersOverTheRecord) {
    golden::check("snmp_values", golden::calls(snmp_steps()));
}

TEST(SnmpValues, DispatchTableInOrder) {
    std::string names;
    for (const GetSnmpData &row : snmp_data_get_specified_parameter_funcs)
        names += std::string(row.snmp_parameter) + " ";
    EXPECT_EQ(names,
              "IMEI IMSI EUTRACELLID PCI RSRP RSRQ RSSI SINR TxPower LTEVer SWVer TypeofCPE "
              "BrandofCPE ModelofCPE SoftwareReboot FactoryReset URLFOTA FOTASTATUS "
              "FOTATIMERTRIGGER FOTAonBOOT IPV4PDP1 IPV6PDP1 WLANSSID WLANPassword WLANBSSI ");
}

// "setting KEY|VALUE" and "number KEY|N": the mdlcfg line; a real shell
// reading it must hand mdlcfg the argument KEY=VALUE ("args" shows what
// sh -c gives printf for the line with mdlcfg replaced).
golden::Table setting_steps() {
    golden::Table t;
    t["setting"] = [](Args &a) {
        cmdlib::CommandLine<512> line;
        bool ok = cmdlib::compose_setting(line, a[0], std::string_view(a[1]));
        return ok ? std::string(line.c_str()) : "<cut>";
    };
    t["number"] = [](Args &a) {
        cmdlib::CommandLine<512> line;
        return cmdlib::compose_setting(line, a[0], a[1].i()) ? std::string(line.c_str()) : "<cut>";
    };
    t["args"] = [](Args &a) {
        cmdlib::CommandLine<512> line;
        if (!cmdlib::compose_setting(line, a[0], std::string_view(a[1])))
            return std::string("<cut>");
        std::string cmd = "printf '[%s]' " + std::string(line.c_str() + strlen("mdlcfg -a "));
        char out[512] = {};
        util_get_cmd_result(cmd.c_str(), out, sizeof out);
        return std::string(out);
    };
    return t;
}

TEST(SnmpSettings, MdlcfgLines) { golden::check("snmp_settings", golden::calls(setting_steps())); }

}  // namespace
