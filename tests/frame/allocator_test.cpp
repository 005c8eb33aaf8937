#include <limits>

#include <gtest/gtest.h>

#include "frame/allocator.h"

namespace {

using qal::detail::allocateArray;
using qal::detail::releaseArray;
namespace alloc = qal::detail::testing;

TEST(Allocator, ByteSizeSaturatesInsteadOfWrapping) {
    struct Row { int count; std::size_t elementSize; std::uint32_t bytes; };
    const Row rows[] = {
        {0, 8, 0u},
        {536870911, 8, 0xFFFFFFF8u},  // the largest double count that fits
        {536870912, 8, 0xFFFFFFFFu},  // 2^32 would wrap to 0
        {std::numeric_limits<int>::max(), 1, 0x7FFFFFFFu},
        {-2, 1, 0xFFFFFFFFu},         // 0xFFFFFFFE as unsigned: negative counts saturate too
    };
    for (const Row& r : rows) EXPECT_EQ(r.bytes, qal::detail::saturatedByteSize(r.count, r.elementSize)) << r.count;
}

// The fault injection that the failure-path tests of every allocating function rest on.
TEST(Allocator, SaturatedRequestsAndTheChosenOneFail) {
    alloc::resetAllocationCounters();
    EXPECT_EQ(nullptr, allocateArray<double>(536870912));
    EXPECT_EQ(nullptr, allocateArray<char>(-2));
    alloc::failAllocationNumber(2);
    int* const empty = allocateArray<int>(0);  // an array of no elements is a valid pointer
    EXPECT_EQ(nullptr, allocateArray<double>(4));
    double* const after = allocateArray<double>(4);
    EXPECT_TRUE(empty != nullptr && after != nullptr);
    EXPECT_EQ(5, alloc::allocationsMade());
    EXPECT_EQ(2, alloc::allocationsLive());
    releaseArray(empty);
    releaseArray(after);
    releaseArray<int>(nullptr);
    EXPECT_EQ(0, alloc::allocationsLive());
}

}  // namespace
