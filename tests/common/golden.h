// Golden cases of the parser tests: every <case>.in below
// tests/unit/golden/<folder>/ is run through the test's renderer, and the
// text it gives must equal the <case>.out beside it.  A renderer turns the
// parser's result into plain text, so a case is read and reviewed as a pair
// of files.  CMDLIB_GOLDEN_UPDATE=1 writes the .out files instead of
// comparing (review the diff before committing it).
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace golden {

inline std::string slurp(const std::filesystem::path &p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// The folder beside the unit tests, found from this header's own path.
inline std::filesystem::path folder(const std::string &name) {
    return std::filesystem::path(__FILE__).parent_path().parent_path() / "unit" / "golden" / name;
}

// A recorded tree of tests/fixtures/ (a /proc or /sys stand-in).
inline std::string fixture(const std::string &name) {
    return (std::filesystem::path(__FILE__).parent_path().parent_path() / "fixtures" / name).string();
}

inline void check(const std::string &name, const std::function<std::string(const std::string &)> &render) {
    std::vector<std::filesystem::path> cases;
    std::error_code ec;
    for (const auto &e : std::filesystem::directory_iterator(folder(name), ec))
        if (e.path().extension() == ".in") cases.push_back(e.path());
    ASSERT_FALSE(cases.empty()) << "no cases in " << folder(name);
    std::sort(cases.begin(), cases.end());
    const bool update = getenv("CMDLIB_GOLDEN_UPDATE") != nullptr;
    for (const auto &in : cases) {
        std::filesystem::path out = in;
        out.replace_extension(".out");
        std::string got = render(slurp(in));
        if (update) {
            std::ofstream(out, std::ios::binary) << got;
            continue;
        }
        EXPECT_EQ(got, slurp(out)) << "golden case " << in;
    }
}

// Renders every line of the input on its own (without its line feed): one
// output line per input line.
inline std::function<std::string(const std::string &)> per_line(std::function<std::string(const std::string &)> f) {
    return [f](const std::string &text) {
        std::string out;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) out += f(line) + "\n";
        return out;
    };
}

// C escapes of a table's arguments: \t \r \n \v \f \\ \| and \xHH.
inline std::string unescape(const std::string &s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\' || i + 1 == s.size()) {
            out += s[i];
            continue;
        }
        char c = s[++i];
        if (c == 'x' && i + 2 < s.size()) {
            out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += c == 't' ? '\t' : c == 'r' ? '\r' : c == 'n' ? '\n' : c == 'v' ? '\v' : c == 'f' ? '\f' : c;
        }
    }
    return out;
}

// The answer with control characters written as C escapes, so that it
// stays on its line.
inline std::string escape(const std::string &s) {
    std::string out;
    for (unsigned char c : s) {
        if (c == '\n') out += "\\n";
        else if (c == '\t') out += "\\t";
        else if (c == '\r') out += "\\r";
        else if (c < 0x20 || c == 0x7f) {
            char hex[5];
            snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else out += static_cast<char>(c);
    }
    return out;
}

// A table of calls: each line "NAME ARG|ARG|..." of a case (arguments
// unescaped as above, "\|" for a bar inside one) is answered by the
// function of that name, and the .out repeats the line with " => " and the
// answer (escaped as above).  Empty lines and lines starting with "#" are copied as they are.
using Args = std::vector<std::string>;
using Call = std::function<std::string(const Args &)>;
inline std::function<std::string(const std::string &)> calls(std::map<std::string, Call> table) {
    return [table](const std::string &text) {
        std::string out;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            if (line.empty() || line[0] == '#') {
                out += line + "\n";
                continue;
            }
            size_t sp = line.find(' ');
            Args args;
            std::string arg, rest = sp == std::string::npos ? "" : line.substr(sp + 1);
            for (size_t i = 0; i <= rest.size(); ++i) {
                if (i == rest.size() || rest[i] == '|') {
                    args.push_back(unescape(arg));
                    arg.clear();
                } else {
                    arg += rest[i];
                    if (rest[i] == '\\' && i + 1 < rest.size()) arg += rest[++i];  // an escape stays whole
                }
            }
            auto it = table.find(line.substr(0, sp));
            out += line + " => " + escape(it == table.end() ? std::string("<no such call>") : it->second(args)) + "\n";
        }
        return out;
    };
}

// A case made of blocks: a line "# HEADER" opens a block; the lines up to
// the next such line are its body.
struct Block {
    std::string header, body;
};
inline std::vector<Block> blocks(const std::string &text) {
    std::vector<Block> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("# ", 0) == 0)
            out.push_back({line.substr(2), ""});
        else if (!out.empty())
            out.back().body += line + "\n";
    }
    return out;
}

}  // namespace golden
