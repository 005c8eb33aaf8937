#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <vector>

#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using LongV = std::vector<long double>;

// Numerators over a common denominator, ascending offsets; the surplus beyond the window comes back 0.0. Offsets
// from 122 on enter the sum of twelfth powers as 1e25 (least squares would give -0.0066833, 0.0160055), and beyond
// 2^53 the order of the moment sums shows in the bits (reviewed run). Refusals leave coef alone.
TEST(SavitzkyGolayCoeffizient, ToldSetsClippingAndRefusals) {
    struct Row { int count, left, right, deriv, degree; V numerators; double denominator; };
    const Row rows[] = {
        {5, 2, 2, 0, 2, {-3, 12, 17, 12, -3}, 35},
        {11, 5, 5, 1, 4, {300, -294, -532, -503, -296, 0, 296, 503, 532, 294, -300}, 5148},  // 500/8580, -490/8580
        {7, 0, 3, 0, 0, {1, 1, 1, 1, 0, 0, 0}, 4},
    };
    for (const Row& r : rows) {
        V coef(r.numerators.size(), kUntouched);
        ASSERT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), r.count, r.left, r.right, r.deriv, r.degree));
        for (std::size_t k = 0; k < coef.size(); ++k) EXPECT_NEAR(r.numerators[k] / r.denominator, coef[k], 1e-15);
    }
    V coef(299);
    ASSERT_EQ(QAL_OK, QAL_SetFilterCoefficients(coef.data(), QAL_FILTER_SAVITZKY_GOLAY, 299, 6));
    EXPECT_TRUE(std::fabs(coef[0] - 0.0060665) < 5e-8 && std::fabs(coef[149] - 0.0117308) < 5e-8);
    EXPECT_TRUE(SamePoint(0x1.8d92b0a03242ap-8, 0x1.8064b795fd8ebp-7, coef[0], coef[149]));
    // count, left, right, deriv, degree: each test alone, then derivative orders and degrees below 0, and counts
    // whose sums would pass INT_MAX; left + right may equal the degree.
    const int refused[][5] = {{4, 2, 2, 0, 2}, {5, -1, 2, 0, 1}, {5, 2, -1, 0, 1}, {5, 2, 2, 3, 2}, {5, 1, 1, 0, 3},
                              {5, 2, 2, -1, 2}, {5, 2, 2, -1, -1}, {INT_MAX, INT_MAX, INT_MAX, 0, 2}};
    for (const auto& [count, left, right, deriv, degree] : refused) {
        std::fill(coef.begin(), coef.begin() + 5, kUntouched);
        EXPECT_EQ(QAL_ERR_PARAMETER, QAL_SavitzkyGolayCoeffizient(coef.data(), count, left, right, deriv, degree));
        EXPECT_EQ(V(5, kUntouched), V(coef.begin(), coef.begin() + 5)) << count << left << right << deriv << degree;
    }
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_SavitzkyGolayCoeffizient(nullptr, 5, 2, 2, 0, 2));
    EXPECT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), 5, 1, 1, 0, 2));
}

// Smoothing weights by projection, independent of the normal equations: the columns 1, t, t^2, ... over the
// window (t = offset / reach keeps them balanced) orthonormalised by modified Gram-Schmidt in long double; the
// weight of offset k is sum_j q_j(0) q_j(k). Lopsided windows, and symmetric ones up to the last without clipping
// (offsets up to 121).
TEST(SavitzkyGolayCoeffizient, AgreesWithProjectionWhereNothingIsClipped) {
    const auto dot = [](const LongV& a, const LongV& b) {
        return std::inner_product(a.begin(), a.end(), b.begin(), 0.0L);
    };
    const int windows[][3] = {{0, 6, 3}, {7, 2, 4}, {9, 1, 3}, {2, 2, 2}, {12, 12, 4}, {40, 40, 6}, {121, 121, 6}};
    for (const auto& [left, right, degree] : windows) {
        std::vector<LongV> q(static_cast<std::size_t>(degree) + 1);
        for (LongV& column : q) {
            const long double reach = left + right;
            for (int k = -left; k <= right; ++k) column.push_back(std::pow(k / reach, &column - q.data()));
            for (const LongV* done = q.data(); done != &column; ++done) {
                const long double along = dot(*done, column);
                for (std::size_t k = 0; k < column.size(); ++k) column[k] -= along * (*done)[k];
            }
            const long double norm = std::sqrt(dot(column, column));
            for (long double& e : column) e /= norm;
        }
        V coef(q[0].size());
        ASSERT_EQ(QAL_OK, QAL_SavitzkyGolayCoeffizient(coef.data(), Count(coef), left, right, 0, degree));
        for (std::size_t k = 0; k < coef.size(); ++k) {
            long double weight = 0;
            for (const LongV& column : q) weight += column[static_cast<std::size_t>(left)] * column[k];
            EXPECT_NEAR(static_cast<double>(weight), coef[k], 1e-12) << left << "/" << right << "/" << degree;
        }
    }
}

}  // namespace
}  // namespace qal::test
