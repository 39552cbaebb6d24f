// InfoStruct's layout is ABI: the C view (infostruct_abi_check.c, built by
// the C compiler) and the C++ view must agree, and a few offsets are pinned
// so that a change of the field list that moves fields is noticed.
#include <gtest/gtest.h>

#include <stddef.h>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"

extern "C" size_t infostruct_c_layout(size_t *out, size_t capacity) __attribute__((weak));

namespace {

// The weak reference is null when the C object is missing from the link; the
// volatile read keeps the compiler from assuming a declared function exists.
bool c_layout_linked() {
    size_t (*volatile fn)(size_t *, size_t) = &infostruct_c_layout;
    return fn != nullptr;
}

const size_t kCxxLayout[] = {
    sizeof(InfoStruct),
    offsetof(InfoStruct, AP_IPADDR),
    offsetof(InfoStruct, AP_SSID),
    offsetof(InfoStruct, PSK_KEY),
    offsetof(InfoStruct, QX_L2TP_MODE),
    offsetof(InfoStruct, QX_CONFIG_FILE_DESCRIPTION),
    offsetof(InfoStruct, QX_ENCRYPT_KEY_16),
    offsetof(InfoStruct, QX_ENABLE_LOCK_IMSI_PREFIX),
    offsetof(InfoStruct, sha1),
    offsetof(InfoStruct, customer),
    offsetof(InfoStruct, imei),
    offsetof(InfoStruct, CQI),
    offsetof(InfoStruct, modem_chip_kernel_version),
    offsetof(InfoStruct, before_nvram_parameter_field),
    offsetof(InfoStruct, is_ip_not_the_same_with_server),
    offsetof(InfoStruct, defined_fields),
};

TEST(InfoStructAbi, CAndCxxAgree) {
    ASSERT_TRUE(c_layout_linked())
        << "tests/unit/infostruct_abi_check.c is not linked into this test";
    size_t c_layout[32] = {};
    size_t n = infostruct_c_layout(c_layout, 32);
    ASSERT_EQ(n, std::size(kCxxLayout));
    for (size_t i = 0; i < n; ++i) EXPECT_EQ(c_layout[i], kCxxLayout[i]) << "entry " << i;
}

TEST(InfoStructAbi, PinnedOffsets) {
    // Group 1 is 5*32 + 9*16 + 32 + 3*16 = 384 bytes.
    EXPECT_EQ(offsetof(InfoStruct, AP_SSID), 384u);
    EXPECT_EQ(offsetof(InfoStruct, PSK_KEY), 384u + 64 + 16 * 2 + 8 + 16 * 3);
    // sha1 (257) leaves customer unaligned; the ints after the text are
    // padded to a 4-byte boundary.
    EXPECT_EQ(offsetof(InfoStruct, customer), offsetof(InfoStruct, sha1) + 257);
    EXPECT_EQ(offsetof(InfoStruct, before_nvram_parameter_field) % 4, 0u);
    EXPECT_EQ(offsetof(InfoStruct, defined_fields),
              offsetof(InfoStruct, before_nvram_parameter_field) + 5 * sizeof(int));
    EXPECT_EQ(sizeof(((InfoStruct *)nullptr)->defined_fields), 7 * sizeof(unsigned));
    EXPECT_EQ(offsetof(InfoStruct, defined_fields), 16576u);
    EXPECT_EQ(sizeof(InfoStruct), 16604u);
}

TEST(InfoStructAbi, FieldTableMatchesTheStructure) {
    // The descriptor table is derived from the same list; offsets must be
    // increasing and contiguous, each field ending where the next begins.
    const auto &f = cmdlib::kInfoFields;
    EXPECT_EQ(f[0].offset, 0u);
    for (size_t i = 1; i < f.size(); ++i)
        EXPECT_EQ(f[i].offset, f[i - 1].offset + f[i - 1].width) << f[i].name;
    const auto &last = f[f.size() - 1];
    EXPECT_LE(last.offset + last.width, offsetof(InfoStruct, before_nvram_parameter_field));
    EXPECT_EQ(cmdlib::find_info_field("QX_LOCKED_Enode_ID")->offset,
              offsetof(InfoStruct, QX_LOCKED_Enode_ID));
    EXPECT_EQ(cmdlib::find_info_field("qx_locked_enode_id"), nullptr);
}

}  // namespace
