#include <sys/mman.h>

#include <vector>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kOk = QAL_OK, kOut = QAL_ERR_OUT_OF_RANGE, kFew = QAL_ERR_TOO_FEW_POINTS, kBad = QAL_ERR_PARAMETER;

TEST(LocateValue, PositionsEndsAndNaN) {
    const V up{0, 1, 2, 3, 4}, down{5, 4, 3, 2, 1}, flat{3, 3, 3};
    struct Row { V x; double value; int status, index; };
    const Row rows[] = {  // the result may lie one position off the enclosing interval, on either side
        {up, 1.5, kOk, 0}, {{0, 1, 2, 3, 4, 5}, 2.5, kOk, 3}, {{0, 1, 2}, 1.5, kOk, 2}, {{0, 1, 2, 3}, 2.5, kOk, 2},
        {up, 2.0, kOk, 2}, {up, 1.0, kOk, 0}, {{0, 1}, 0.25, kOk, 0}, {up, 0.0, kOut, 0}, {up, 4.0, kOut, 4},
        {down, 3.5, kOk, 0}, {down, 2.0, kOk, 3}, {down, 5.0, kOut, 0}, {down, 1.0, kOut, 4}, {{0}, 0.5, kFew, 0},
        {flat, 3, kOut, 0}, {flat, 4, kOut, 0}, {flat, 2, kOut, 2},  // equal ends count as descending
        {up, kNaN, kOk, 2}, {{0, 1}, kNaN, kOk, 0}, {{0, 1, kNaN, 3, 4}, 1.5, kOk, 2},  // a NaN ends the bisection
        {{kNaN, 1, 2, 3, 4}, 2.5, kOut, 4}, {{0, 1, 2, 3, kNaN}, 2.5, kOut, 0}, {{}, 0.5, kBad, -1}};  // {}: null x
    for (const Row& r : rows) {
        int index = -1;
        EXPECT_EQ(r.status, QAL_LocateValue(r.value, r.x.empty() ? nullptr : r.x.data(), static_cast<int>(r.x.size()), &index));
        EXPECT_EQ(r.index, index) << r.value << " in " << r.x.size();
    }
    EXPECT_EQ(kBad, QAL_LocateValue(1.0, up.data(), 5, nullptr));
}

// n = INT_MAX, so lo + hi passes INT_MAX; only the pages that the bisection reads get memory.
TEST(LocateValue, LargestCountBisectsWithoutOverflow) {
    constexpr int n = std::numeric_limits<int>::max();
    const std::size_t bytes = std::size_t{n} * sizeof(double);
    void* const x = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (x == MAP_FAILED) GTEST_SKIP() << "no address space for 2^31 doubles";
    static_cast<double*>(x)[n - 1] = 1.0;  // all others 0: every mid lies below 0.5, lo climbs to n-1
    int index = -1;
    EXPECT_EQ(kOk, QAL_LocateValue(0.5, static_cast<double*>(x), n, &index));
    EXPECT_EQ(n - 1, index);
    munmap(x, bytes);
}

TEST(FindAbsValues, StoredPointOrEnd) {
    const V up{0, 1, 2, 3, 4}, down{4, 3, 2, 1, 0}, y{10, 11, 12, 13, 14};
    const double u = kUntouched;
    struct Row { const V* x; double value; int n, status; double xOut, yOut; };
    const Row rows[] = {  // no interpolation: the point at the position found
        {&up, 1.5, 5, kOk, 0, 10}, {&up, 1.5, 3, kOk, 2, 12}, {&up, kNaN, 5, kOk, 2, 12}, {&up, 0.0, 5, kOut, 0, 10},
        {&up, 4.0, 5, kOut, 4, 14}, {&up, 5, 1, kOut, 0, 10}, {&up, kNaN, 1, kFew, u, u}, {&down, 2.0, 5, kOut, 4, 10},
        {&down, 5.0, 5, kOut, 0, 14}, {&up, 1.5, 0, kBad, u, u}, {nullptr, 1.5, 5, kBad, u, u}};
    for (const Row& r : rows) {
        double xOut = u, yOut = u;
        EXPECT_EQ(r.status, QAL_FindAbsValues(r.value, r.x ? r.x->data() : nullptr, y.data(), r.n, &xOut, &yOut));
        EXPECT_TRUE(SamePoint(r.xOut, r.yOut, xOut, yOut)) << r.value << " n " << r.n;
    }
}

TEST(SortStraightInsert, StableAscendingWithCompanions) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    using F = std::vector<float>;
    struct Row { F keys, second; std::vector<int> third; int n, status; F sortedKeys, sortedSecond; std::vector<int> sortedThird; };
    const Row rows[] = {
        {{2, 1}, {}, {7, 9}, 2, kOk, {1, 2}, {}, {9, 7}}, {{3, 2, 1}, {}, {}, 2, kOk, {2, 3, 1}, {}, {}},
        {{3, 1, 2, 1}, {0.5f, 1.5f, 2.5f, 3.5f}, {10, 11, 12, 13}, 4, kOk, {1, 1, 2, 3}, {1.5f, 3.5f, 2.5f, 0.5f}, {11, 13, 12, 10}},
        {{0.0f, -0.0f}, {1, 2}, {}, 2, kOk, {0.0f, -0.0f}, {1, 2}, {}},  // equal keys keep their order
        {{3, nan, 1}, {}, {}, 3, kOk, {3, nan, 1}, {}, {}}, {{nan, 2, 1}, {}, {1, 2, 3}, 3, kOk, {nan, 1, 2}, {}, {1, 3, 2}},
        {{3, 2}, {}, {}, 1, kOk, {3, 2}, {}, {}}, {{3, 2}, {}, {}, 0, QAL_ERR_MEMORY, {3, 2}, {}, {}}};
    for (Row r : rows) {
        EXPECT_EQ(r.status, QAL_SortStraightInsert(r.keys.data(), r.second.empty() ? nullptr : r.second.data(),
                                                   r.third.empty() ? nullptr : r.third.data(), r.n, 12345));
        for (std::size_t i = 0; i < r.keys.size(); ++i) EXPECT_TRUE(SameBits(r.sortedKeys[i], r.keys[i])) << i;
        EXPECT_TRUE(r.sortedSecond == r.second && r.sortedThird == r.third);
    }
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_SortStraightInsert(nullptr, nullptr, nullptr, 3, 0));
}

}  // namespace
}  // namespace qal::test
