#include <sys/mman.h>

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN;
using qal::test::kUntouched;
using qal::test::SameBits;
using V = std::vector<double>;

TEST(LocateValue, PositionsEndsAndNaN) {
    const V up{0, 1, 2, 3, 4}, down{5, 4, 3, 2, 1}, flat{3, 3, 3};
    struct Row { V x; double value; int status, index; };
    const Row rows[] = {  // the result may lie one position off the enclosing interval, on either side
        {up, 1.5, QAL_OK, 0}, {{0, 1, 2, 3, 4, 5}, 2.5, QAL_OK, 3}, {{0, 1, 2}, 1.5, QAL_OK, 2}, {{0, 1, 2, 3}, 2.5, QAL_OK, 2},
        {up, 2.0, QAL_OK, 2}, {up, 1.0, QAL_OK, 0}, {{0, 1}, 0.25, QAL_OK, 0}, {up, 0.0, QAL_ERR_OUT_OF_RANGE, 0},
        {up, 4.0, QAL_ERR_OUT_OF_RANGE, 4}, {up, 9, QAL_ERR_OUT_OF_RANGE, 4}, {down, 3.5, QAL_OK, 0}, {down, 2.0, QAL_OK, 3},
        {down, 5.0, QAL_ERR_OUT_OF_RANGE, 0}, {down, 1.0, QAL_ERR_OUT_OF_RANGE, 4}, {flat, 3, QAL_ERR_OUT_OF_RANGE, 0},
        {flat, 4, QAL_ERR_OUT_OF_RANGE, 0}, {flat, 2, QAL_ERR_OUT_OF_RANGE, 2},  // equal ends count as descending
        {up, kNaN, QAL_OK, 2}, {{0, 1}, kNaN, QAL_OK, 0}, {{0, 1, kNaN, 3, 4}, 1.5, QAL_OK, 2},  // NaN stops at mid
        {{kNaN, 1, 2, 3, 4}, 2.5, QAL_ERR_OUT_OF_RANGE, 4}, {{0, 1, 2, 3, kNaN}, 2.5, QAL_ERR_OUT_OF_RANGE, 0},
        {{0}, 0.5, QAL_ERR_TOO_FEW_POINTS, 0}, {{}, 0.5, QAL_ERR_TOO_FEW_POINTS, 0}};
    for (const Row& r : rows) {
        int index = -1;
        EXPECT_EQ(r.status, QAL_LocateValue(r.value, r.x.empty() ? &r.value : r.x.data(), static_cast<int>(r.x.size()), &index));
        EXPECT_EQ(r.index, index) << r.value << " in " << r.x.size();
    }
    int index = -1;
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_LocateValue(1.0, nullptr, 5, &index));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_LocateValue(1.0, up.data(), 5, nullptr));
    EXPECT_EQ(-1, index);
}

// n = INT_MAX, so lo + hi passes INT_MAX; only the pages that the bisection reads get memory.
TEST(LocateValue, LargestCountBisectsWithoutOverflow) {
    constexpr int n = std::numeric_limits<int>::max();
    const std::size_t bytes = std::size_t{n} * sizeof(double);
    void* const block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block == MAP_FAILED) GTEST_SKIP() << "no address space for 2^31 doubles";
    static_cast<double*>(block)[n - 1] = 1.0;  // all others 0: every mid lies below 0.5, lo climbs to n-1
    int index = -1;
    EXPECT_EQ(QAL_OK, QAL_LocateValue(0.5, static_cast<double*>(block), n, &index));
    EXPECT_EQ(n - 1, index);
    munmap(block, bytes);
}

TEST(FindAbsValues, StoredPointOrEnd) {
    const V up{0, 1, 2, 3, 4}, down{4, 3, 2, 1, 0}, y{10, 11, 12, 13, 14};
    struct Row { const V* x; double value; int n, status; double xOut, yOut; };
    const Row rows[] = {  // no interpolation: the point at the position found
        {&up, 1.5, 5, QAL_OK, 0, 10}, {&up, 1.5, 3, QAL_OK, 2, 12}, {&up, kNaN, 5, QAL_OK, 2, 12},
        {&up, 0.0, 5, QAL_ERR_OUT_OF_RANGE, 0, 10}, {&up, 4.0, 5, QAL_ERR_OUT_OF_RANGE, 4, 14}, {&up, 5, 1, QAL_ERR_OUT_OF_RANGE, 0, 10},
        {&up, kNaN, 1, QAL_ERR_TOO_FEW_POINTS, kUntouched, kUntouched}, {&down, 2.0, 5, QAL_ERR_OUT_OF_RANGE, 4, 10},
        {&down, 5.0, 5, QAL_ERR_OUT_OF_RANGE, 0, 14}, {&up, 1.5, 0, QAL_ERR_PARAMETER, kUntouched, kUntouched},
        {nullptr, 1.5, 5, QAL_ERR_PARAMETER, kUntouched, kUntouched}};
    for (const Row& r : rows) {
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(r.status, QAL_FindAbsValues(r.value, r.x ? r.x->data() : nullptr, y.data(), r.n, &xOut, &yOut));
        EXPECT_TRUE(SameBits(r.xOut, xOut) && SameBits(r.yOut, yOut)) << r.value << " n " << r.n;
    }
}

TEST(SortStraightInsert, StableAscendingWithCompanions) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    using F = std::vector<float>;
    using I = std::vector<int>;
    struct Row { F keys, second; I third; int n, status; F sortedKeys, sortedSecond; I sortedThird; };
    const Row rows[] = {
        {{2, 1}, {}, {7, 9}, 2, QAL_OK, {1, 2}, {}, {9, 7}}, {{3, 2, 1}, {}, {}, 2, QAL_OK, {2, 3, 1}, {}, {}},
        {{3, 1, 2, 1}, {0.5f, 1.5f, 2.5f, 3.5f}, {10, 11, 12, 13}, 4, QAL_OK, {1, 1, 2, 3}, {1.5f, 3.5f, 2.5f, 0.5f}, {11, 13, 12, 10}},
        {{0.0f, -0.0f}, {1, 2}, {}, 2, QAL_OK, {0.0f, -0.0f}, {1, 2}, {}},  // equal keys keep their order
        {{3, nan, 1}, {}, {}, 3, QAL_OK, {3, nan, 1}, {}, {}}, {{nan, 2, 1}, {}, {1, 2, 3}, 3, QAL_OK, {nan, 1, 2}, {}, {1, 3, 2}},
        {{3, 2}, {}, {}, 1, QAL_OK, {3, 2}, {}, {}}, {{3, 2}, {}, {}, 0, QAL_ERR_MEMORY, {3, 2}, {}, {}}};
    for (Row r : rows) {
        EXPECT_EQ(r.status, QAL_SortStraightInsert(r.keys.data(), r.second.empty() ? nullptr : r.second.data(),
                                                   r.third.empty() ? nullptr : r.third.data(), r.n, 12345));
        for (std::size_t i = 0; i < r.keys.size(); ++i) EXPECT_TRUE(SameBits(r.sortedKeys[i], r.keys[i])) << i;
        EXPECT_EQ(r.sortedSecond, r.second);
        EXPECT_EQ(r.sortedThird, r.third);
    }
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_SortStraightInsert(nullptr, nullptr, nullptr, 3, 0));
}

}  // namespace
