#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "frame/allocator.h"
#include "support/allocation_faults.h"

namespace {

using qal::detail::allocateArray;
using qal::detail::releaseArray;
using qal::detail::saturatedByteSize;
using qal::detail::WorkArray;
namespace alloc = qal::detail::testing;

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();

TEST(Allocator, ByteSizeSaturatesInsteadOfWrapping) {
    struct Row {
        int count;
        std::size_t elementSize;
        std::uint32_t bytes;
    };
    const Row rows[] = {
        {0, 8, 0u},
        {3, 8, 24u},
        {536870911, 8, 0xFFFFFFF8u},  // the largest double count that fits
        {536870912, 8, 0xFFFFFFFFu},  // 2^32 exactly would wrap to 0
        {1073741823, 4, 0xFFFFFFFCu},
        {1073741824, 4, 0xFFFFFFFFu},
        {kIntMax, 8, 0xFFFFFFFFu},
        {kIntMax, 1, 0x7FFFFFFFu},
        {-1, 8, 0xFFFFFFFFu},
        {-1, 1, 0xFFFFFFFFu},  // would be 0xFFFFFFFF as unsigned anyway
        {-2, 1, 0xFFFFFFFFu},  // 0xFFFFFFFE as unsigned: negative counts saturate too
        {kIntMin, 4, 0xFFFFFFFFu},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(r.bytes, saturatedByteSize(r.count, r.elementSize)) << r.count << " x " << r.elementSize;
    }
}

TEST(Allocator, SaturatedAndNegativeRequestsGiveNull) {
    alloc::resetAllocationCounters();
    EXPECT_EQ(nullptr, allocateArray<double>(536870912));
    EXPECT_EQ(nullptr, allocateArray<double>(-1));
    EXPECT_EQ(nullptr, allocateArray<char>(-2));
    EXPECT_EQ(0, alloc::allocationsLive());
}

TEST(Allocator, EmptyArrayIsAValidPointer) {
    alloc::resetAllocationCounters();
    int* const empty = allocateArray<int>(0);
    EXPECT_NE(nullptr, empty);
    EXPECT_EQ(1, alloc::allocationsLive());
    releaseArray(empty);
    releaseArray<int>(nullptr);
    EXPECT_EQ(0, alloc::allocationsLive());
}

TEST(Allocator, TheChosenRequestFailsAndNoOther) {
    alloc::resetAllocationCounters();
    alloc::failAllocationNumber(2);
    double* const first = allocateArray<double>(4);
    double* const second = allocateArray<double>(4);
    double* const third = allocateArray<double>(4);
    EXPECT_NE(nullptr, first);
    EXPECT_EQ(nullptr, second);
    EXPECT_NE(nullptr, third);
    EXPECT_EQ(3, alloc::allocationsMade());
    EXPECT_EQ(2, alloc::allocationsLive());
    releaseArray(first);
    releaseArray(third);
    EXPECT_EQ(0, alloc::allocationsLive());
}

// A function in the style of the library: two work arrays, the second handed out.
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
    const long long allocations = qal::test::ExpectEveryAllocationFailureHandled(
        [&] {
            const int status = handsOutSecondArray(5, &target);
            if (status == 0) releaseArray(target);
            return status;
        },
        8);
    EXPECT_EQ(2, allocations);
}

}  // namespace
