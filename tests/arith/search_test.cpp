#include <cstdint>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kOk = QAL_OK, kOut = QAL_ERR_OUT_OF_RANGE, kFew = QAL_ERR_TOO_FEW_POINTS, kBad = QAL_ERR_PARAMETER;

// QAL_LocateValue may end one position off the enclosing interval, on either side; an element equal to the
// value is found only when a midpoint lands on it, and a NaN ends the bisection where it meets it.
// QAL_FindAbsValues gives the stored point there, or an end point by its own end tests.
TEST(LocateValueAndFindAbsValues, PositionsEndsAndNaN) {
    const V up{0, 1, 2, 3, 4}, down{5, 4, 3, 2, 1}, y{10, 11, 12, 13, 14, 15};
    const double u = kUntouched;
    struct Row { V x; double value; int status, index, result; double first, second; };
    const Row rows[] = {
        {up, 1.5, kOk, 0, kOk, 0, 10}, {{0, 1, 2, 3, 4, 5}, 2.5, kOk, 3, kOk, 3, 13}, {up, 2.0, kOk, 2, kOk, 2, 12},
        {{0, 1, 2}, 1.5, kOk, 2, kOk, 2, 12}, {up, 0.0, kOut, 0, kOut, 0, 10}, {up, 4.0, kOut, 4, kOut, 4, 14},
        {down, 5.0, kOut, 0, kOut, 5, 10}, {down, 1.0, kOut, 4, kOut, 5, 10}, {down, 3.0, kOk, 2, kOut, 5, 10},
        {{3, 3, 3}, 4, kOut, 0, kOut, 3, 12}, {{0, 1, 2, 3, kNaN}, 2.5, kOut, 0, kOut, u, u},  // both descending
        {up, kNaN, kOk, 2, kOk, 2, 12}, {down, kNaN, kOk, 2, kOk, 3, 12}, {{0}, kNaN, kFew, 0, kFew, u, u},
        {{}, 0.5, kBad, -1, kBad, u, u}};  // {}: null x
    for (const Row& r : rows) {
        const double* x = r.x.empty() ? nullptr : r.x.data();
        int index = -1;
        double xOut = u, yOut = u;
        EXPECT_EQ(r.status, QAL_LocateValue(r.value, x, Count(r.x), &index)) << r.value << " in " << Count(r.x);
        EXPECT_EQ(r.index, index) << r.value << " in " << Count(r.x);
        EXPECT_EQ(r.result, QAL_FindAbsValues(r.value, x, y.data(), Count(r.x), &xOut, &yOut)) << r.value;
        EXPECT_TRUE(SamePoint(r.first, r.second, xOut, yOut)) << r.value << " in " << Count(r.x);
    }
    double out = u;
    EXPECT_EQ(kBad, QAL_LocateValue(1.0, up.data(), 5, nullptr));
    EXPECT_EQ(kBad, QAL_FindAbsValues(1.5, up.data(), nullptr, 5, &out, &out));
    EXPECT_EQ(kBad, QAL_FindAbsValues(1.5, up.data(), y.data(), 0, &out, &out));
    EXPECT_TRUE(SameBits(u, out));
}

#if __has_include(<sys/mman.h>) && SIZE_MAX > 0xFFFFFFFFu
// n = INT_MAX, so lo + hi passes INT_MAX; only the pages that the bisection reads get memory.
TEST(LocateValue, LargestCountBisectsWithoutOverflow) {
    const int n = std::numeric_limits<int>::max(), prot = PROT_READ | PROT_WRITE, flags = MAP_PRIVATE | MAP_ANONYMOUS;
    const std::size_t bytes = std::size_t{n} * sizeof(double);
    auto* const x = static_cast<double*>(mmap(nullptr, bytes, prot, flags | MAP_NORESERVE, -1, 0));
    if (x == MAP_FAILED) GTEST_SKIP() << "no address space for 2^31 doubles";
    x[n - 1] = 1.0;  // all others 0: every mid lies below 0.5, lo climbs to n-1
    int index = -1;
    EXPECT_EQ(kOk, QAL_LocateValue(0.5, x, n, &index));
    EXPECT_EQ(n - 1, index);
    munmap(x, bytes);
}
#endif

TEST(SortStraightInsert, StableAscendingWithCompanions) {
    using F = std::vector<float>;
    using I = std::vector<int>;
    const float nan = static_cast<float>(kNaN);
    struct Row { F keys, second; I third; int n, status; F sortedKeys, sortedSecond; I sortedThird; };
    const Row rows[] = {  // equal keys keep their order, and nothing moves past a NaN
        {{3, 1, 2, 1}, {0.5f, 1.5f, 2.5f, 3.5f}, {10, 11, 12, 13}, 4, kOk,
         {1, 1, 2, 3}, {1.5f, 3.5f, 2.5f, 0.5f}, {11, 13, 12, 10}},
        {{nan, 2, 1}, {}, {1, 2, 3}, 3, kOk, {nan, 1, 2}, {}, {1, 3, 2}},
        {{3, 2}, {}, {}, 1, kOk, {3, 2}, {}, {}}, {{3, 2}, {}, {}, 0, QAL_ERR_MEMORY, {3, 2}, {}, {}}};
    for (Row r : rows) {
        EXPECT_EQ(r.status, QAL_SortStraightInsert(r.keys.data(), r.second.empty() ? nullptr : r.second.data(),
                                                   r.third.empty() ? nullptr : r.third.data(), r.n, 12345));
        for (std::size_t i = 0; i < r.keys.size(); ++i) EXPECT_TRUE(SameBits(r.sortedKeys[i], r.keys[i])) << i;
        EXPECT_TRUE(r.sortedSecond == r.second && r.sortedThird == r.third) << r.n;
    }
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_SortStraightInsert(nullptr, nullptr, nullptr, 3, 0));
}

}  // namespace
}  // namespace qal::test
