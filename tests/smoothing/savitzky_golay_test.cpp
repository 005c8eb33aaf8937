#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <numeric>
#include <vector>

#include "frame/allocator.h"
#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using LongV = std::vector<long double>;

// Smoothing weights by projection, independent of the normal equations: the columns 1, t, t^2, ... over
// the window (t = offset / reach keeps them balanced) are orthonormalised by modified Gram-Schmidt, twice,
// in long double; the weight of offset k is sum_j q_j(0) q_j(k).
V ProjectionWeights(int left, int right, int degree) {
    const long double reach = std::max({left, right, 1});
    std::vector<LongV> q(static_cast<std::size_t>(degree) + 1);
    const auto dot = [](const LongV& a, const LongV& b) { return std::inner_product(a.begin(), a.end(), b.begin(), 0.0L); };
    for (LongV& column : q) {
        for (int k = -left; k <= right; ++k) column.push_back(std::pow(k / reach, &column - q.data()));
        for (int pass = 0; pass < 2; ++pass) {
            for (const LongV* done = q.data(); done != &column; ++done) {
                const long double along = dot(*done, column);
                for (std::size_t k = 0; k < column.size(); ++k) column[k] -= along * (*done)[k];
            }
        }
        const long double norm = std::sqrt(dot(column, column));
        for (long double& e : column) e /= norm;
    }
    V weights;
    for (std::size_t k = 0; k < q[0].size(); ++k) {
        long double sum = 0;
        for (const LongV& column : q) sum += column[static_cast<std::size_t>(left)] * column[k];
        weights.push_back(static_cast<double>(sum));
    }
    return weights;
}

// Numerators over a common denominator, ascending offsets; the surplus beyond the window comes back 0.0.
TEST(SavitzkyGolayCoeffizient, ToldSetsInAscendingOrderWithZeroSurplus) {
    struct Row { int count, left, right, deriv, degree; V numerators; double denominator; };
    const Row rows[] = {
        {5, 2, 2, 0, 2, {-3, 12, 17, 12, -3}, 35},
        {11, 5, 5, 1, 4, {300, -294, -532, -503, -296, 0, 296, 503, 532, 294, -300}, 5148},  // 500/8580, -490/8580
        {7, 0, 3, 0, 0, {1, 1, 1, 1, 0, 0, 0}, 4},
    };
    for (const Row& r : rows) {
        V coef(r.numerators.size(), kUntouched);
        ASSERT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), r.count, r.left, r.right, r.deriv, r.degree));
        for (std::size_t k = 0; k < coef.size(); ++k) {
            EXPECT_NEAR(r.numerators[k] / r.denominator, coef[k], 1e-15) << "row " << &r - rows << ", tap " << k;
        }
    }
}

// Every symmetric window of kind 20 below the clipping (offsets up to 121), and a few unequal ones. The
// normal equations square the condition: one-sided windows of degree 5 and 6 drift to 1e-11 .. 1e-10.
TEST(SavitzkyGolayCoeffizient, AgreesWithProjectionWhereNothingIsClipped) {
    std::vector<std::array<int, 3>> windows{{0, 6, 3}, {7, 2, 4}, {0, 4, 4}, {9, 1, 3}};
    for (int degree = 2; degree <= 6; degree += 2) {
        for (int half = degree / 2; half <= 121; ++half) windows.push_back({half, half, degree});
    }
    for (const auto& [left, right, degree] : windows) {
        const V expected = ProjectionWeights(left, right, degree);
        V coef(expected.size());
        ASSERT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), Count(coef), left, right, 0, degree));
        for (std::size_t k = 0; k < coef.size(); ++k) {
            EXPECT_NEAR(expected[k], coef[k], 1e-12) << left << "/" << right << "/" << degree << ", tap " << k;
        }
    }
}

// Offsets from 122 on enter the sum of twelfth powers as 1e25 (least squares: -0.0066833, 0.0160055).
// Beyond 2^53 the order of the moment sums shows in the bits (reviewed run).
TEST(SavitzkyGolayCoeffizient, ClippedTwelfthPowersAtWidth299) {
    V coef(299);
    ASSERT_EQ(QAL_OK, QAL_SetFilterCoefficients(coef.data(), QAL_FILTER_SAVITZKY_GOLAY, 299, 6));
    EXPECT_NEAR(0.0060665, coef[0], 5e-8);
    EXPECT_NEAR(0.0117308, coef[149], 5e-8);
    EXPECT_TRUE(SamePoint(0x1.8d92b0a03242ap-8, 0x1.8064b795fd8ebp-7, coef[0], coef[149]));
}

// Every refusal comes before any allocation and leaves coef alone; counts near INT_MAX must not wrap.
TEST(SavitzkyGolayCoeffizient, RefusalsAllocateAndWriteNothing) {
    const int rows[][5] = {{4, 2, 2, 0, 2}, {5, -1, 2, 0, 1}, {5, 2, -1, 0, 1}, {5, 2, 2, 3, 2}, {5, 1, 1, 0, 3},
                           {5, 2, 2, -1, 2}, {5, 2, 2, -1, -1}, {INT_MAX, INT_MAX, INT_MAX, 0, 2}};
    namespace alloc = qal::detail::testing;
    for (const auto& [count, left, right, deriv, degree] : rows) {
        V coef(5, kUntouched);
        alloc::resetAllocationCounters();
        EXPECT_EQ(QAL_ERR_PARAMETER, QAL_SavitzkyGolayCoeffizient(coef.data(), count, left, right, deriv, degree));
        EXPECT_EQ(0, alloc::allocationsMade());
        EXPECT_EQ(V(5, kUntouched), coef) << count << " " << left << " " << right << " " << deriv << " " << degree;
    }
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_SavitzkyGolayCoeffizient(nullptr, 5, 2, 2, 0, 2));
    V coef(5);
    EXPECT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), 5, 1, 1, 0, 2));  // left + right == degree will do
}

}  // namespace
}  // namespace qal::test
