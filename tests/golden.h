// Golden files of test cases: an input line, then the "= expected" line
// after it ("=" alone: expected empty); '#' lines and blank lines are
// skipped.
#pragma once

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace golden {

inline std::vector<std::pair<std::string, std::string>> cases(const std::string &path) {
    std::ifstream in(path);
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
