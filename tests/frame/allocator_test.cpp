#include <limits>

#include <gtest/gtest.h>

#include "frame/allocator.h"
#include "support/allocation_faults.h"

namespace {

using qal::detail::allocateArray;
using qal::detail::releaseArray;
using qal::detail::WorkArray;
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

TEST(Allocator, SaturatedRequestsAndTheChosenOneFail) {
    alloc::resetAllocationCounters();
    EXPECT_EQ(nullptr, allocateArray<double>(536870912));
    EXPECT_EQ(nullptr, allocateArray<char>(-2));
    alloc::failAllocationNumber(2);
    int* const empty = allocateArray<int>(0);  // an array of no elements is a valid pointer
    double* const failed = allocateArray<double>(4);
    double* const after = allocateArray<double>(4);
    EXPECT_NE(nullptr, empty);
    EXPECT_EQ(nullptr, failed);
    EXPECT_NE(nullptr, after);
    EXPECT_EQ(5, alloc::allocationsMade());
    EXPECT_EQ(2, alloc::allocationsLive());
    releaseArray(empty);
    releaseArray(after);
    releaseArray<int>(nullptr);
    EXPECT_EQ(0, alloc::allocationsLive());
}

// A function in the library's style: two work arrays, the second handed to the caller.
int handsOutSecondArray(int n, float** target) {
    WorkArray<double> work(n);
    if (!work) return 8;
    WorkArray<float> out(n);
    if (!out) return 8;
    for (int i = 0; i < n; ++i) out[i] = static_cast<float>(work[i] = i);
    *target = out.release();
    return 0;
}

TEST(Allocator, FaultHarnessReachesEveryFailurePath) {
    float* target = nullptr;
    const auto call = [&] {
        const int status = handsOutSecondArray(5, &target);
        if (status == 0) releaseArray(target);
        return status;
    };
    EXPECT_EQ(2, qal::test::ExpectEveryAllocationFailureHandled(call, 8));
}

}  // namespace
