// Configuration keys and macros shared with the shell scripts: the key
// lookup, the record's export, the macro file and the exported-line text
// helpers.  Rules are golden cases (tests/golden/shell_names); the real
// shells read the results in tests/device/shells_test.cpp.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"
#include "cmdlib/internal/shell_export.h"
#include "common/golden.h"

namespace {

using golden::Args;

// A record filled from "FIELD|value" lines: the value (C escapes) goes into
// the field, cut to its width without a terminator when it is longer, and
// the field's bit is set; "FIELD" alone sets the bit only, "!FIELD|value"
// the value only.
std::unique_ptr<InfoStruct> record_of(const std::string &body) {
    auto info = std::make_unique<InfoStruct>();
    std::memset(info.get(), 0, sizeof(InfoStruct));
    std::istringstream in(body);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) continue;
        bool bit = line[0] != '!';
        std::string name = line.substr(bit ? 0 : 1, line.find('|') - (bit ? 0 : 1));
        const cmdlib::InfoFieldDesc *f = cmdlib::find_info_field(name);
        if (!f) {
            ADD_FAILURE() << "no field " << name;
            continue;
        }
        if (bit) cmdlib::info_set_defined_bit(info.get(), f->bit);
        if (line.find('|') == std::string::npos) continue;
        std::string value = golden::unescape(line.substr(line.find('|') + 1));
        std::memcpy(cmdlib::info_field_ptr(info.get(), *f), value.data(), std::min(value.size(), f->width));
    }
    return info;
}

std::string render_export(const std::string &text) {
    std::string out;
    for (const golden::Block &b : golden::blocks(text)) {
        auto info = record_of(b.body);
        char buf[cmdlib::kConfigExportCapacity];
        size_t n = cmdlib::render_config_export(info.get(), buf, sizeof buf);
        out += "# " + b.header + "\n" + std::string(buf, n) + "\n";
    }
    return out;
}

TEST(ConfigExport, GoldenRecords) { golden::check("shell_names/export", render_export); }

// Each line: the five interface names, "|" between them; "(null)" for none.
std::string render_macro_file(const std::string &text) {
    std::string out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> names;
        std::stringstream parts(line);
        for (std::string p; std::getline(parts, p, '|');) names.push_back(golden::unescape(p));
        cmdlib::InterfaceNames ifs{};
        for (size_t i = 0; i < names.size() && i < cmdlib::kInterfaceMacroCount; ++i)
            ifs.name[i] = names[i] == "(null)" ? nullptr : names[i].c_str();
        char buf[cmdlib::kMacroFileCapacity];
        size_t n = cmdlib::render_macro_file(ifs, buf, sizeof buf);
        out += "# " + line + "\n" + std::string(buf, n);
    }
    return out;
}

TEST(MacroFile, GoldenFiles) { golden::check("shell_names/macro_file", render_macro_file); }

// The C functions on text, by name: "value LINE", "strip TEXT", "key NAME"
// (the field it finds), "macro NAME".
const golden::Table kHelpers = {
    {"value",
     [](Args &a) {
         std::string line = a[0];
         char *v = util_get_field_value_seperated_by_equal(a[0].null() ? nullptr : line.data());
         bool inside = v >= line.data() && v <= line.data() + line.size();
         return golden::show(v) + (inside ? "" : " (constant)");
     }},
    {"strip",
     [](Args &a) {
         util_strip_quote_string_from_cfg_e(a[0].w());
         return a[0].null() ? std::string("(null)") : golden::show(a[0].c_str());
     }},
    {"key",
     [](Args &a) {
         static InfoStruct info;
         char *p = util_get_config_field_value(&info, a[0].c());
         if (!p) return std::string("(null)");
         for (const cmdlib::InfoFieldDesc &f : cmdlib::kInfoFields)
             if (reinterpret_cast<char *>(&info) + f.offset == p) return std::string(f.name);
         return std::string("<not a field>");
     }},
    {"macro", [](Args &a) { return golden::show(util_macro_get_definitions_value(a[0].c())); }},
    // Row N of all_need_parsed_fields: key, width, bit, and whether the
    // key lookup finds the same field.
    {"parsed",
     [](Args &a) {
         const FieldConfigInfo &r = all_need_parsed_fields[std::min<size_t>(a[0].z(), ALL_NEED_PARSED_FIELDS_COUNT - 1)];
         static InfoStruct info;
         bool same = reinterpret_cast<char *>(&info) + r.field_offset == util_get_config_field_value(&info, r.field_name);
         return std::string(r.field_name) + " " + std::to_string(r.field_size) + " " + std::to_string(r.field_flag) +
                (same ? "" : " <another field>");
     }},
};

TEST(ShellNames, GoldenHelperCalls) { golden::check("shell_names/helpers", golden::calls(kHelpers)); }

// Whatever is cut, the text stays a terminated prefix inside the buffer.
TEST(ConfigExport, SmallBuffersStayTerminated) {
    auto info = record_of("AP_SSID|Cafe \"$HOME\"\nPSK_KEY|k\n");
    char full[cmdlib::kConfigExportCapacity];
    std::string whole(full, cmdlib::render_config_export(info.get(), full, sizeof full));
    for (size_t cap : {1, 2, 10}) {
        char buf[16];
        std::memset(buf, 'x', sizeof buf);
        size_t n = cmdlib::render_config_export(info.get(), buf, cap);
        EXPECT_EQ(std::string(buf, n + 2), whole.substr(0, cap - 1) + std::string("\0x", 2));
    }
    EXPECT_EQ(cmdlib::render_config_export(info.get(), nullptr, 0), 0u);
    EXPECT_EQ(cmdlib::render_config_export(nullptr, full, sizeof full), 0u);
}

// The C surface beyond the golden calls: null records, numbers of
// full-width fields (no terminator).
TEST(ShellNames, CApi) {
    InfoStruct info{};
    EXPECT_EQ(util_get_config_field_value(nullptr, "PSK_KEY"), nullptr);
    std::memcpy(info.QX_L2TP_MODE, "1234", 4);
    std::memcpy(info.QX_ENABLE_PPP_FORWARD, "7x", 3);
    std::memcpy(info.LAN_LED_AS_LTE_STATUS, "1", 2);
    EXPECT_EQ(util_get_QX_L2TP_MODE(&info), 1234);
    EXPECT_EQ(util_get_QX_ENABLE_PPP_FORWARD(&info), 7);
    EXPECT_EQ(util_get_LAN_LED_AS_LTE_STATUS(&info), 0);
    EXPECT_EQ(util_get_QX_L2TP_MODE(nullptr), 0);
}

}  // namespace
