// A private scratch directory for unit tests that need files: made fresh
// under /tmp before each test and removed with everything in it after.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class ScratchDir : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/cmdlib_test_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }
    std::string path(const std::string &name) const { return dir_ + "/" + name; }
    // Writes the file whole (parent directories made); returns its path.
    std::string write(const std::string &name, const std::string &content) const {
        std::string p = path(name);
        std::filesystem::create_directories(std::filesystem::path(p).parent_path());
        std::ofstream(p, std::ios::binary) << content;
        return p;
    }
    // The file's content, "" when it cannot be read.
    static std::string read(const std::string &p) {
        std::ifstream in(p, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    std::string dir_;
};
