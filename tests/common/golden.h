// Golden files and tables of the tests, all under tests/golden/ (recorded
// trees that stand in for /proc or /sys are under tests/fixtures/).
//
// Golden cases: every <case>.in below tests/golden/<folder>/ is run through
// the test's renderer, and the text it gives must equal the <case>.out
// beside it, so a case is read and reviewed as a pair of files.
// CMDLIB_GOLDEN_UPDATE=1 writes the .out files instead of comparing (inside
// a device, where the checkout is read-only, below $CMDLIB_BUILD/golden);
// review the diff before committing it.
//
// Most renderers are tables of calls: each line "NAME ARG|ARG|..." is
// answered by the function of that name and the .out repeats the line with
// " => " and the answer.  Arguments take C escapes (\t \r \n \v \f \\ \| \xHH);
// "(null)" stands for a null pointer.  Lines that are empty or start with
// "#" are copied as they are.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace golden {

namespace fs = std::filesystem;

inline std::string slurp(const fs::path &p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// tests/ of the checkout: $CMDLIB_SRC/tests inside a device, else found
// from this header's own path.
inline fs::path tests_dir() {
    const char *src = getenv("CMDLIB_SRC");
    return src && *src ? fs::path(src) / "tests" : fs::path(__FILE__).parent_path().parent_path();
}
inline fs::path folder(const std::string &name) { return tests_dir() / "golden" / name; }
// A recorded tree of tests/fixtures/ (a /proc or /sys stand-in).
inline std::string fixture(const std::string &name) { return (tests_dir() / "fixtures" / name).string(); }

inline void check(const std::string &name, const std::function<std::string(const std::string &)> &render) {
    std::vector<fs::path> cases;
    std::error_code ec;
    for (const auto &e : fs::directory_iterator(folder(name), ec))
        if (e.path().extension() == ".in") cases.push_back(e.path());
    ASSERT_FALSE(cases.empty()) << "no cases in " << folder(name);
    std::sort(cases.begin(), cases.end());
    for (const auto &in : cases) {
        fs::path out = fs::path(in).replace_extension(".out");
        std::string got = render(slurp(in));
        if (!getenv("CMDLIB_GOLDEN_UPDATE")) {
            EXPECT_EQ(got, slurp(out)) << "golden case " << in;
        } else if (!(std::ofstream(out, std::ios::binary) << got)) {
            const char *build = getenv("CMDLIB_BUILD");
            fs::path copy = fs::path(build ? build : "/tmp") / "golden" / name / out.filename();
            fs::create_directories(copy.parent_path(), ec);
            std::ofstream(copy, std::ios::binary) << got;
        }
    }
}

// Renders every line of the input on its own (without its line feed).
inline std::function<std::string(const std::string &)> per_line(
    std::function<std::string(const std::string &)> f) {
    return [f](const std::string &text) {
        std::string out;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) out += f(line) + "\n";
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

// ---- tables of calls --------------------------------------------------------------

// One argument: text, a C string (null for "(null)"), a writable buffer
// holding the text, or a number.
struct Arg : std::string {
    Arg(std::string s) : std::string(std::move(s)) {}
    bool null() const { return *this == "(null)"; }
    const char *c() const { return null() ? nullptr : c_str(); }
    char *w() { return null() ? nullptr : &(*this)[0]; }
    int i() const { return std::stoi(*this); }
    size_t z() const { return std::stoul(*this); }
};
using Args = std::vector<Arg>;
// All the arguments as one text, "|" between them: for steps that take a
// whole command line, pipes included.
inline std::string joined(const Args &a) {
    std::string out;
    for (size_t i = 0; i < a.size(); ++i) out += (i ? "|" : "") + a[i];
    return out;
}
using Call = std::function<std::string(Args &)>;
using Table = std::map<std::string, Call>;

// An answer as text: numbers as they are, strings in quotes, null as "(null)";
// several values separated by blanks.
template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0> std::string show(T v) {
    return std::to_string(v);
}
inline std::string show(const char *s) { return s ? "\"" + std::string(s) + "\"" : "(null)"; }
inline std::string show(const std::string &s) { return "\"" + s + "\""; }
template <class A, class B, class... R> std::string show(const A &a, const B &b, const R &...r) {
    return show(a) + " " + show(b, r...);
}

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

// The answer with control characters as C escapes, so that it stays on its line.
inline std::string escape(const std::string &s) {
    std::string out;
    for (unsigned char c : s) {
        char hex[5];
        snprintf(hex, sizeof hex, "\\x%02x", c);
        out += c == '\n' ? "\\n" : c == '\t' ? "\\t" : c == '\r' ? "\\r" : c < 0x20 || c == 0x7f ? hex : std::string(1, static_cast<char>(c));
    }
    return out;
}

inline std::function<std::string(const std::string &)> calls(Table table) {
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
                    args.emplace_back(unescape(arg));
                    arg.clear();
                } else {
                    arg += rest[i];
                    if (rest[i] == '\\' && i + 1 < rest.size()) arg += rest[++i];  // an escape stays whole
                }
            }
            auto it = table.find(line.substr(0, sp));
            std::string answer = it == table.end() ? "<no such call>" : it->second(args);
            out += line + " => " + escape(answer) + "\n";
        }
        return out;
    };
}

// File steps for tables that work on files below base ("" for absolute
// paths): "write PATH|TEXT" (parents made, mode 0644), "read PATH", "rm PATH"
// (a whole tree).
inline Table with_files(const std::string &base, Table table) {
    auto at = [base](const std::string &p) { return base.empty() ? p : base + "/" + p; };
    table["write"] = [at](Args &a) {
        std::error_code ec;
        fs::create_directories(fs::path(at(a[0])).parent_path(), ec);
        if (fs::is_symlink(fs::symlink_status(at(a[0]), ec))) fs::remove(at(a[0]), ec);
        return (std::ofstream(at(a[0]), std::ios::binary) << a[1]) ? std::string("ok") : "failed";
    };
    table["read"] = [at](Args &a) { return fs::exists(at(a[0])) ? show(slurp(at(a[0]))) : "(missing)"; };
    table["rm"] = [at](Args &a) {
        std::error_code ec;
        fs::remove_all(at(a[0]), ec);
        return std::string("ok");
    };
    return table;
}

// ---- data files ---------------------------------------------------------------------
// Files read case by case: .bin recorded bytes; .hex bytes as hex digits
// ('#' starts a comment, blanks ignored); .tsv one case a line,
// tab-separated fields with C escapes; .cases blocks, each "== f1 | f2 | ..."
// line starting a case whose body is the lines up to the next one.

// tests/golden/<relative>.
inline std::string path(const std::string &relative) { return (tests_dir() / "golden" / relative).string(); }
inline std::string data(const std::string &relative) { return slurp(path(relative)); }

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
inline std::string hex_file(const std::string &relative) { return from_hex(data(relative)); }

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

inline std::vector<std::vector<std::string>> rows(const std::string &relative) {
    std::vector<std::vector<std::string>> out;
    std::istringstream lines(data(relative));
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
    std::istringstream lines(data(relative));
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

}  // namespace golden
