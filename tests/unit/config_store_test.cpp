// The configuration store through its C API on scratch files: what the
// readers refuse, lookups, the key-list builder, the single-key read and
// the packed-file check with its result codes and messages.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/libbase.h"
#include "cmdlib/cmdlib_config.h"
#include "cmdlib/internal/checksum.h"
#include "common/scratch.h"

namespace {

class ConfigStore : public ScratchDir {
  protected:
    std::string write_bytes(const std::string &name, const std::vector<unsigned char> &bytes) {
        return write(name, std::string(bytes.begin(), bytes.end()));
    }
};

TEST_F(ConfigStore, ReadersRefuseUnusableInput) {
    ConfigKeyValuePair pairs[4];
    const char *keys[] = {"A"};
    std::string f = write("conf", "export A=1\n");
    const std::string missing = path("missing");
    for (const char *p : {static_cast<const char *>(nullptr), "", missing.c_str(), dir_.c_str()}) {
        EXPECT_EQ(util_config_read_specified_fields(p, keys, 1, pairs, 4), -1) << (p ? p : "(null)");
        EXPECT_EQ(util_config_read_config_file_to_one_struct(p, nullptr, 0, pairs), -1) << (p ? p : "(null)");
    }
    EXPECT_EQ(util_config_read_specified_fields(f.c_str(), keys, 1, nullptr, 4), -1);
    for (int room : {0, -3}) EXPECT_EQ(util_config_read_specified_fields(f.c_str(), keys, 1, pairs, room), -1);
    // an empty file is usable and has nothing in it
    EXPECT_EQ(util_config_read_specified_fields(write("empty", "").c_str(), keys, 1, pairs, 4), 0);
}

TEST_F(ConfigStore, ReadAndLookUp) {
    std::string f = write("conf", "export QX_ONE=\"1\"\r\nexport QX_TWO=two\r\nexport QX_ONE=again\r\nexport QX_EMPTY=\r\n");
    ConfigKeyValuePair pairs[8];
    const char *keys[] = {"QX_ONE", "QX_TWO", "QX_EMPTY", "QX_ABSENT"};
    int n = util_config_read_specified_fields(f.c_str(), keys, 4, pairs, 8);
    ASSERT_EQ(n, 3);
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_ONE"), "1");  // first wins
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_TWO"), "two");
    EXPECT_STREQ(util_config_get_field_value(pairs, n, "QX_ABSENT"), "");
    // the count limits the lookup; bad arguments give "" and not null
    EXPECT_STREQ(util_config_get_field_value(pairs, 1, "QX_TWO"), "");
    EXPECT_STREQ(util_config_get_field_value(pairs, -1, "QX_ONE"), "");
    EXPECT_STREQ(util_config_get_field_value(nullptr, 3, "QX_ONE"), "");
    EXPECT_STREQ(util_config_get_field_value(pairs, n, nullptr), "");
    // a name longer than a stored key never matches its truncated form
    std::string k70(70, 'K');
    ASSERT_EQ(util_config_read_specified_fields(write("long", "export " + k70 + "=v\n").c_str(), nullptr, 0, pairs, 1), 1);
    EXPECT_STREQ(util_config_get_field_value(pairs, 1, std::string(63, 'K').c_str()), "v");
    EXPECT_STREQ(util_config_get_field_value(pairs, 1, k70.c_str()), "");
}

TEST_F(ConfigStore, AddFieldsCopiesUntilNullOrRoom) {
    static const char *const list[] = {"K1", "K2", "K3", nullptr};
    const char *two[3] = {nullptr, nullptr, "keep"};
    EXPECT_EQ(util_config_add_fields_need_to_read(two, 2, list), 2);
    EXPECT_STREQ(two[1], "K2");
    EXPECT_STREQ(two[2], "keep");
    const char *all[5] = {};
    EXPECT_EQ(util_config_add_fields_need_to_read(all, 5, list), 3);
    EXPECT_EQ(util_config_add_fields_need_to_read(two, -1, list), 0);
    EXPECT_EQ(util_config_add_fields_need_to_read(nullptr, 8, list), 0);
    EXPECT_EQ(util_config_add_fields_need_to_read(two, 3, nullptr), 0);
}

TEST_F(ConfigStore, StructReaderThroughAFile) {
    struct Dest {
        char name[8];
        char other[32];
    } d = {"", "kept"};
    const FieldConfigInfo fields[] = {{"QX_NAME", offsetof(Dest, name), 8, 1}, {"QX_OTHER", offsetof(Dest, other), 32, 1}};
    EXPECT_EQ(util_config_read_config_file_to_one_struct(write("conf", "export QX_NAME=\"longer than 7\"\n").c_str(),
                                                          fields, 2, &d),
              0);
    EXPECT_STREQ(d.name, "longer ");
    EXPECT_STREQ(d.other, "kept");
}

TEST_F(ConfigStore, OnlyOneConfig) {
    std::string f = write("conf", "export QX_A=first\nexport QX_A=second\nexport QX_B=\"" + std::string(120, 'b') + "\"\n");
    char value[CONFIG_VALUE_SIZE];
    memset(value, 'Z', sizeof value);
    util_get_only_one_config(f.c_str(), "QX_A", value);
    EXPECT_STREQ(value, "first");
    util_get_only_one_config(f.c_str(), "QX_B", value);
    EXPECT_EQ(std::string(value), std::string(95, 'b'));
    for (const char *key : {"QX_NONE", static_cast<const char *>(nullptr)}) {
        strcpy(value, "stale");
        util_get_only_one_config(f.c_str(), key, value);
        EXPECT_STREQ(value, "");
    }
    strcpy(value, "stale");
    util_get_only_one_config(path("none").c_str(), "QX_A", value);
    EXPECT_STREQ(value, "");
    util_get_only_one_config(f.c_str(), "QX_A", nullptr);  // must not crash
}

// ---- packed files ----------------------------------------------------------------

// A packed file as the packing tool makes it: length word, payload, pad
// byte when odd, check word making the carry-less sum 0xFFFF, the whole
// then passed through the (self-inverse) transform.
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
    const std::string out = path("script");
    for (const std::string &payload : {std::string("export QX_A=1\n"), std::string("odd"), std::string()}) {
        std::string in = write_bytes("packed", pack(payload));
        write("script", std::string(500, 'x'));  // a longer destination is truncated
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), out.c_str(), 0), 0) << payload;
        EXPECT_EQ(read(out), payload);
        // no destination: checked only
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), nullptr, 0), 0);
        EXPECT_EQ(util_check_if_config_file_is_valid(in.c_str(), "", 0), 0);
    }
    std::vector<unsigned char> largest = pack(std::string(102392, 'p'));
    ASSERT_EQ(largest.size(), 102398u);
    EXPECT_EQ(util_check_if_config_file_is_valid(write_bytes("largest", largest).c_str(), nullptr, 0), 0);
}

TEST_F(ConfigStore, PackedFileFailureCodes) {
    std::vector<unsigned char> bad = pack("abcdef");
    bad[5] ^= 0x01;
    const std::string ok = write_bytes("ok", pack("x")), none = path("none"), script = path("script");
    struct Case {
        std::string in, out;
        int rc;
    } cases[] = {
        {"", "", 1},
        {none, "", 2},
        {dir_, "", 4},                             // a directory can't be read as a file
        {write("zero", ""), "", 5},                // 0 bytes sum to 0: a wrong check sum
        {write_bytes("bad", bad), script, 5},      // refused: nothing written
        {write("n102399", std::string(102399, 'x')), "", 5},  // one less than the limit is still summed
        {write("n102400", std::string(102400, 'x')), "", 6},
        {ok, path("no/such/dir"), 7},
        {ok, dir_, 7},
    };
    for (const Case &c : cases)
        EXPECT_EQ(util_check_if_config_file_is_valid(c.in.c_str(), c.out.empty() ? nullptr : c.out.c_str(), 0), c.rc)
            << c.in;
    EXPECT_EQ(util_check_if_config_file_is_valid(nullptr, nullptr, 0), 1);
    EXPECT_FALSE(cmd_file_exist(script.c_str()));
}

TEST_F(ConfigStore, PackedFileMessagesOnlyWhenAsked) {
    const std::string missing = path("none"), big = write("big", std::string(102400, 'x'));
    const struct {
        std::string file;
        int log, rc;
        std::string message;
    } cases[] = {
        {missing, 0, 2, ""},
        {missing, 1, 2, "\r\n The Config file does not exist! \r\n"},
        {big, 1, 6, "\r\n file is too long:102400," + big + "! \r\n"},
        {write("bad", "0123456789"), 1, 5, "\r\n The checksum of the config file has error! \r\n"},
    };
    for (const auto &c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(util_check_if_config_file_is_valid(c.file.c_str(), nullptr, c.log), c.rc);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.message);
    }
}

}  // namespace
