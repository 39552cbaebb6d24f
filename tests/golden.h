// Golden files and case tables of the tests (tests/data/): .bin recorded
// packets; .hex bytes as hex digits ('#' starts a comment, blanks ignored);
// .tsv one case a line, tab-separated fields with \n \r \t \\ escapes;
// .cases blocks, each "== f1 | f2 | ..." line starting a case whose body
// is the lines up to the next one; .golden an input line, then the
// "= expected" line after it ("=" alone: expected empty).
#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace golden {

// tests/data/<relative>, through the checkout the device runner names.
inline std::string path(const std::string &relative) {
    const char *src = getenv("CMDLIB_SRC");
    std::string here = __FILE__;
    return (src && *src ? std::string(src) + "/tests" : here.substr(0, here.rfind('/'))) + "/data/" + relative;
}

inline std::string bytes(const std::string &relative) {
    std::ostringstream s;
    s << std::ifstream(path(relative), std::ios::binary).rdbuf();
    return s.str();
}

// "" for a stray character or an odd digit count: a broken file fails.
inline std::string from_hex(const std::string &text) {
    std::string digits, out;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        for (char c : line.substr(0, line.find('#'))) digits += c == ' ' || c == '\t' || c == '\r' ? "" : std::string(1, c);
    if (digits.size() % 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return "";
    for (size_t i = 0; i < digits.size(); i += 2) out += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return out;
}

inline std::string hex_file(const std::string &relative) { return from_hex(bytes(relative)); }

// Spaced hex, 16 bytes a line: comparisons that print readably.
inline std::string to_hex(const std::string &b) {
    std::string out;
    char two[4];
    for (size_t i = 0; i < b.size(); ++i) {
        snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(b[i]));
        out += (i == 0 ? "" : i % 16 ? " " : "\n") + std::string(two);
    }
    return out;
}

inline std::string unescape(const std::string &s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\' || i + 1 == s.size()) {
            out += s[i];
            continue;
        }
        char c = s[++i];
        out += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
    }
    return out;
}

inline std::vector<std::vector<std::string>> rows(const std::string &relative) {
    std::vector<std::vector<std::string>> out;
    std::istringstream lines(bytes(relative));
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') continue;
        out.emplace_back();
        std::istringstream fields(line);
        for (std::string f; std::getline(fields, f, '\t');) out.back().push_back(unescape(f));
        if (line.back() == '\t') out.back().emplace_back();
    }
    return out;
}

struct Case {
    std::vector<std::string> fields;
    std::string body;
};

inline std::vector<Case> cases(const std::string &relative) {
    std::vector<Case> out;
    std::istringstream lines(bytes(relative));
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("== ", 0) != 0) {
            if (!out.empty()) out.back().body += line + "\n";
            continue;
        }
        out.emplace_back();
        std::string rest = line.substr(3) + " | ";
        for (size_t at; (at = rest.find(" | ")) != std::string::npos; rest.erase(0, at + 3))
            out.back().fields.push_back(rest.substr(0, at));
    }
    return out;
}

// Words of a blank-separated field.
inline std::vector<std::string> words(const std::string &field) {
    std::istringstream in(field);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

// A .golden file (a path, e.g. from beside()): pairs of input and expected
// output; '#' lines and blank lines are skipped.
inline std::vector<std::pair<std::string, std::string>> expect_pairs(const std::string &file) {
    std::ifstream in(file);
    std::vector<std::pair<std::string, std::string>> out;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        if ((line == "=" || line.rfind("= ", 0) == 0) && !out.empty())
            out.back().second = line.size() > 2 ? line.substr(2) : "";
        else
            out.emplace_back(line, "");
    }
    return out;
}

// A file beside the test source: dir_of(__FILE__) + "/" + name.
inline std::string beside(const char *source_file, const std::string &name) {
    std::string here = source_file;
    return here.substr(0, here.rfind('/') + 1) + name;
}

}  // namespace golden
