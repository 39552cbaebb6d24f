// InfoStruct's layout is ABI: the C view (infostruct_abi_check.c, built by
// the C compiler) and the C++ view must agree, and its size is pinned so
// that a change of the field list that moves fields is noticed.
#include <gtest/gtest.h>

#include <stddef.h>

#include "cmdlib/cmdlib.h"

extern "C" size_t infostruct_c_layout(size_t *out, size_t capacity) __attribute__((weak));

namespace {

TEST(InfoStructAbi, CAndCxxAgreeAndTheSizeIsPinned) {
    // The weak reference is null when the C object is missing from the
    // link; the volatile read keeps the compiler from assuming it exists.
    size_t (*volatile c_layout)(size_t *, size_t) = &infostruct_c_layout;
    ASSERT_NE(c_layout, nullptr) << "tests/unit/infostruct_abi_check.c is not linked into this test";
    const size_t cxx[] = {sizeof(InfoStruct), offsetof(InfoStruct, AP_SSID), offsetof(InfoStruct, sha1),
                          offsetof(InfoStruct, customer), offsetof(InfoStruct, before_nvram_parameter_field),
                          offsetof(InfoStruct, defined_fields)};
    size_t c[8] = {};
    ASSERT_EQ(c_layout(c, 8), std::size(cxx));
    for (size_t i = 0; i < std::size(cxx); ++i) EXPECT_EQ(c[i], cxx[i]) << "entry " << i;
    EXPECT_EQ(sizeof(InfoStruct), 16604u);
    EXPECT_EQ(offsetof(InfoStruct, defined_fields), 16576u);
}

}  // namespace
