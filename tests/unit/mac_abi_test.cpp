// The MAC records' layout is the shared file's format: the C view
// (mac_abi_check.c, built by the C compiler) must give every field the
// offset and width of the field list, and the records the file sizes.
#include <gtest/gtest.h>

#include <stddef.h>

#include <vector>

#include "cmdlib/mac.h"

extern "C" size_t mac_c_layout(size_t *out, size_t capacity) __attribute__((weak));

namespace {

TEST(MacRecordsAbi, CLayoutIsTheFileLayout) {
    // The weak reference is null when the C object is missing from the link.
    size_t (*volatile fn)(size_t *, size_t) = &mac_c_layout;
    ASSERT_NE(fn, nullptr) << "tests/unit/mac_abi_check.c is not linked into this test";
    std::vector<size_t> want = {3480, 69604, 164, 69600, 160, 0};
#define MAC_ABI_WANT(name, count, width, offset) want.push_back(offset), want.push_back((count) * (width));
    MAC_IP_PAIR_TEXT_FIELDS(MAC_ABI_WANT)
#undef MAC_ABI_WANT
    ASSERT_EQ(want.size(), 6u + 2 * MAC_IP_PAIR_TEXT_FIELD_COUNT);
    std::vector<size_t> c(want.size() + 1);
    ASSERT_EQ(fn(c.data(), c.size()), want.size());
    c.pop_back();
    EXPECT_EQ(c, want);
}

}  // namespace
