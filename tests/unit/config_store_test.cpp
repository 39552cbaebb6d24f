// The configuration store through its C API on files of a scratch
// directory: readers, lookups, the key-list builder, the single-key read
// and the packed-file check.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/libbase.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/checksum.h"
#include "cmdlib/internal/config_cache.h"
#include "cmdlib/internal/config_parse.h"

namespace {

class ConfigStore : public ::testing::Test {
  protected:
    void SetUp() override {
        char tmpl[] = "/tmp/config_store_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
    }
    void TearDown() override { cmd_rmdir_advance(dir_.c_str()); }

    std::string write(const std::string &name, const std::string &content) {
        std::string p = dir_ + "/" + name;
        std::ofstream(p, std::ios::binary) << content;
        return p;
    }
    std::string write_bytes(const std::string &name, const std::vector<unsigned char> &bytes) {
        std::string p = dir_ + "/" + name;
        std::ofstream out(p, std::ios::binary);
        out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return p;
    }
    static std::string slurp(const std::string &p) {
        std::ifstream in(p, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    std::string dir_;
};

// ---- readers and lookups ---------------------------------------------------

TEST_F(ConfigStore, ReadSpecifiedFieldsRefusesUnusableInput) {
    ConfigKeyValuePair pairs[4];
    const char *keys[] = {"A"};
    std::string f = write("conf", "export A=1\n");
    // no name, a missing file, a directory where the file should be
    const std::string missing = dir_ + "/missing";
    for (const char *path : {static_cast<const char *>(nullptr), "", missing.c_str(), dir_.c_str()})
        EXPECT_EQ(util_config_read_specified_fields(path, keys, 1, pairs, 4), -1) << (path ? path : "(null)");
    EXPECT_EQ(util_config_read_specified_fields(f.c_str(), keys, 1, nullptr, 4), -1);
    for (int room : {0, -3}) EXPECT_EQ(util_config_read_specified_fields(f.c_str(), keys, 1, pairs, room), -1);
    if (geteuid() != 0) {
        chmod(f.c_str(), 0);
        EXPECT_EQ(util_config_read_specified_fields(f.c_str(), keys, 1, pairs, 4), -1);
    }
    // an empty file is usable and has nothing in it
    std::string empty = write("empty", "");
    EXPECT_EQ(util_config_read_specified_fields(empty.c_str(), keys, 1, pairs, 4), 0);
}

TEST_F(ConfigStore, ReadAndLookUpWithCrLfAndDuplicates) {
    std::string f = write("conf",
                          "export QX_ONE=\"1\"\r\n"
                          "export QX_TWO=two\r\n"
                          "export QX_ONE=again\r\n"
                          "export QX_EMPTY=\r\n");
    ConfigKeyValuePair pairs[8];
    const char *keys[] = {"QX_ONE", "QX_TWO", "QX_EMPTY", "QX_ABSENT"};
    int n = util_config_read_specified_fields(f.c_str(), keys, 4, pairs, 8);
    ASSERT_EQ(n, 3);
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_ONE"), "1");  // first wins
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_TWO"), "two");
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_EMPTY"), "");
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_ABSENT"), "");
    // the count limits the lookup; bad arguments give "" and not null
    EXPECT_STREQ(util_config_get_field_value(pairs, 1, "QX_TWO"), "");
    EXPECT_STREQ(util_config_get_field_value(pairs, -1, "QX_ONE"), "");
    EXPECT_STREQ(util_config_get_field_value(nullptr, 3, "QX_ONE"), "");
    EXPECT_STREQ(util_config_get_field_value(pairs, n, nullptr), "");
    // a name longer than a stored key never matches its truncated form
    ConfigKeyValuePair cut[1];
    std::string k70(70, 'K');
    std::string g = write("long", "export " + k70 + "=v\n");
    ASSERT_EQ(util_config_read_specified_fields(g.c_str(), nullptr, 0, cut, 1), 1);
    EXPECT_STREQ(util_config_get_field_value(cut, 1, std::string(63, 'K').c_str()), "v");
    EXPECT_STREQ(util_config_get_field_value(cut, 1, k70.c_str()), "");
}

TEST_F(ConfigStore, AddFieldsCopiesUntilNullOrRoom) {
    // the module lists exercise the ordinary cases; here the edges
    static const char *const list[] = {"K1", "K2", "K3", nullptr};
    const char *two[3] = {nullptr, nullptr, "keep"};
    EXPECT_EQ(util_config_add_fields_need_to_read(two, 2, list), 2);
    EXPECT_STREQ(two[1], "K2");
    EXPECT_STREQ(two[2], "keep");
    EXPECT_EQ(util_config_add_fields_need_to_read(two, -1, list), 0);
    EXPECT_EQ(util_config_add_fields_need_to_read(nullptr, 8, list), 0);
    EXPECT_EQ(util_config_add_fields_need_to_read(two, 3, nullptr), 0);
}

struct Dest {
    char name[8];
    char other[32];
};

TEST_F(ConfigStore, StructReaderThroughAFile) {
    const FieldConfigInfo fields[] = {{"QX_NAME", offsetof(Dest, name), 8, 1},
                                      {"QX_OTHER", offsetof(Dest, other), 32, 1}};
    Dest d;
    memset(&d, 0, sizeof d);
    strcpy(d.other, "kept");
    std::string f = write("conf", "export QX_NAME=\"longer than 7\"\n");
    EXPECT_EQ(util_config_read_config_file_to_one_struct(f.c_str(), fields, 2, &d), 0);
    EXPECT_STREQ(d.name, "longer ");
    EXPECT_STREQ(d.other, "kept");
    EXPECT_EQ(util_config_read_config_file_to_one_struct(nullptr, fields, 2, &d), -1);
    EXPECT_EQ(util_config_read_config_file_to_one_struct("", fields, 2, &d), -1);
    EXPECT_EQ(util_config_read_config_file_to_one_struct((dir_ + "/none").c_str(), fields, 2, &d), -1);
    EXPECT_EQ(util_config_read_config_file_to_one_struct(dir_.c_str(), fields, 2, &d), -1);
}

TEST_F(ConfigStore, OnlyOneConfig) {
    std::string f = write("conf", "export QX_A=first\nexport QX_A=second\nexport QX_B=\"" +
                                      std::string(120, 'b') + "\"\n");
    char value[CONFIG_VALUE_SIZE];
    memset(value, 'Z', sizeof value);
    util_get_only_one_config(f.c_str(), "QX_A", value);
    EXPECT_STREQ(value, "first");
    util_get_only_one_config(f.c_str(), "QX_B", value);
    EXPECT_EQ(std::string(value), std::string(95, 'b'));
    util_get_only_one_config(f.c_str(), "QX_NONE", value);
    EXPECT_STREQ(value, "");
    strcpy(value, "stale");
    util_get_only_one_config((dir_ + "/none").c_str(), "QX_A", value);
    EXPECT_STREQ(value, "");
    strcpy(value, "stale");
    util_get_only_one_config(f.c_str(), nullptr, value);
    EXPECT_STREQ(value, "");
    util_get_only_one_config(f.c_str(), "QX_A", nullptr);  // must not crash
}

// ---- packed files --------------------------------------------------------------

// Builds a packed file the way the packing tool does: the layout (length
// word, payload, pad byte when odd, check word making the carry-less sum
// 0xFFFF) is what the transform must reveal, so it is assembled first and
// the whole file is then transformed (the transform is its own inverse).
std::vector<unsigned char> pack(const std::string &payload) {
    const size_t area = payload.size() + payload.size() % 2;
    std::vector<unsigned char> f(4 + area + 2, 0);
    const uint32_t len = static_cast<uint32_t>(payload.size());
    for (int i = 0; i < 4; ++i) f[static_cast<size_t>(i)] = static_cast<unsigned char>(len >> (24 - 8 * i));
    memcpy(f.data() + 4, payload.data(), payload.size());
    const uint16_t word = static_cast<uint16_t>(0xFFFF - cmdlib::carryless_sum16(f.data(), 4 + area));
    f[4 + area] = static_cast<unsigned char>(word >> 8);
    f[4 + area + 1] = static_cast<unsigned char>(word);
    util_encrypt_file_content(f.data(), static_cast<int>(f.size()));
    return f;
}

TEST_F(ConfigStore, PackedFileValidWritesTheScript) {
    for (const std::string &payload : {std::string("export QX_A=1\n"), std::string("odd"), std::string()}) {
        std::string in = write_bytes("packed", pack(payload));
        std::string out = dir_ + "/script";
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), out.c_str(), 0), 0) << payload;
        EXPECT_EQ(slurp(out), payload);
        // no destination: checked only
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), nullptr, 0), 0);
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), "", 0), 0);
    }
    // an existing longer destination is truncated
    std::string in = write_bytes("packed", pack("short"));
    std::string out = write("script2", std::string(500, 'x'));
    EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), out.c_str(), 0), 0);
    EXPECT_EQ(slurp(out), "short");
}

TEST_F(ConfigStore, PackedFileFailureCodes) {
    EXPECT_EQ(util_check_if_config_file_is_valid(nullptr, nullptr, 0), 1);
    EXPECT_EQ(util_check_if_config_file_is_valid("", nullptr, 0), 1);
    EXPECT_EQ(util_check_if_config_file_is_valid((dir_ + "/none").c_str(), nullptr, 0), 2);

    // an empty file sums to 0: a wrong check sum
    EXPECT_EQ(util_check_if_config_file_is_valid(write("zero", "").c_str(), nullptr, 0), 5);

    // destination that can't be created
    std::string ok = write_bytes("ok", pack("x"));
    EXPECT_EQ(util_check_if_config_file_is_valid(ok.c_str(), (dir_ + "/no/such/dir").c_str(), 0), 7);
    EXPECT_EQ(util_check_if_config_file_is_valid(ok.c_str(), dir_.c_str(), 0), 7);
    // a directory as the source can't be read as a file
    EXPECT_EQ(util_check_if_config_file_is_valid(dir_.c_str(), nullptr, 0), 4);
}

TEST_F(ConfigStore, PackedFileRefusedWritesNothingAndSizeLimit) {
    std::vector<unsigned char> f = pack("abcdef");
    f[5] ^= 0x01;
    std::string out = dir_ + "/script";
    EXPECT_EQ(util_check_if_config_file_is_valid(write_bytes("bad", f).c_str(), out.c_str(), 0), 5);
    EXPECT_FALSE(cmd_file_exist(out.c_str()));

    std::vector<unsigned char> largest = pack(std::string(102392, 'p'));
    ASSERT_EQ(largest.size(), 102398u);
    EXPECT_EQ(util_check_if_config_file_is_valid(write_bytes("largest", largest).c_str(), nullptr, 0), 0);
    // one byte less than the limit is still read whole and summed
    EXPECT_EQ(util_check_if_config_file_is_valid(write("n102399", std::string(102399, 'x')).c_str(),
                                                 nullptr, 0),
              5);
}

TEST_F(ConfigStore, PackedFileMessagesOnlyWhenAsked) {
    std::string missing = dir_ + "/none";
    testing::internal::CaptureStderr();
    EXPECT_EQ(util_check_if_config_file_is_valid(missing.c_str(), nullptr, 0), 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(util_check_if_config_file_is_valid(missing.c_str(), nullptr, 1), 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\r\n The Config file does not exist! \r\n");
    std::string big = write("big", std::string(102400, 'x'));
    testing::internal::CaptureStderr();
    EXPECT_EQ(util_check_if_config_file_is_valid(big.c_str(), nullptr, 1), 6);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\r\n file is too long:102400," + big + "! \r\n");
    std::string bad = write("bad", "0123456789");
    testing::internal::CaptureStderr();
    EXPECT_EQ(util_check_if_config_file_is_valid(bad.c_str(), nullptr, 1), 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\r\n The checksum of the config file has error! \r\n");
}

}  // namespace
