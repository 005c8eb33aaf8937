#include <cmath>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr double kNatural = 1e25;
constexpr int kZeroWide = QAL_ERR_ZERO_DIVISION;
const V kX{0, 0.3, 1.1, 2.385}, kY{2.385, -1.25, 0.7, 0.1};

// Each row builds the table (checked where given), then evaluates once. Hexfloat values
// come from a separate step-by-step model of both routines in Python (IEEE double, same libm).
TEST(CubicSpline, TablesValuesAndDegenerateKnots) {
    struct Row { V x, y; double first, last; V table; double at; int status; double out; };
    const Row rows[] = {
        {{0, 1, 2}, {0, 1, 0}, kNatural, kNatural, {0, -3, 0}, 0.5, QAL_OK, 0.6875},  // hand-derived
        // 1e25 is natural, 9.9e24 a slope; a NaN slope runs through the whole table
        {{0, 1, 2}, {0, 1, 0}, kNatural, 9.9e24, {0, -0x1.c13adf904fff7p+82, 0x1.c13adf904fff7p+84}, 2, QAL_OK, 0},
        {{0, 1, 2}, {0, 1, 0}, kNaN, kNatural, {kNaN, kNaN, kNaN}, 0.5, QAL_OK, kNaN},
        {{0, 1, kNaN, 3}, {1, 2, 3, 4}, 0, kNatural, {2.25, 1.5, 3, 0}, 0.5, QAL_OK, 1.265625},  // NaN pivots copy
        {{0, 0, 1}, {5, 6, 7}, kNatural, kNatural, {kNaN, kNaN, kNaN}, 0, QAL_OK, kNaN},  // a knot opens its interval
        {kX, kY, kNatural, -0.4, {}, 2.385, QAL_OK, 0.1}, {kX, kY, kNatural, -0.4, {}, kNaN, QAL_OK, kNaN},
        // zero-wide brackets give y[lo]: an equal last pair, a NaN knot, a width of exactly 1e-25
        {{0, 1, 1}, {0, 5, 7}, kNatural, kNatural, {}, 3, kZeroWide, 5},
        {{0, 1, kNaN}, {3, 4, 5}, kNatural, kNatural, {}, 5, kZeroWide, 4},
        {{0, 1e-25}, {4, 8}, kNatural, kNatural, {0, 0}, 0, kZeroWide, 4},
        // the order of operations, and extrapolation from a clamped end
        {kX, kY, kNatural, -0.4, {0, 0x1.69ee3828f2a54p+5, -0x1.e83c69c26d1a6p+3, 0x1.f23c5fd64f423p+2}, 0.175,
         QAL_OK, 0x1.c0e14be4eef8p-9},
        {kX, kY, kNatural, -0.4, {}, 0.9875, QAL_OK, 0x1.029e000b376d4p-3},
        {kX, kY, 0.85, kNatural, {-0x1.47a6f468aeb74p+7, 0x1.11467c4d6587ap+6, -0x1.14927a1950ae6p+4, 0}, -0.6,
         QAL_OK, -0x1.bbc4c83e462fap+5}};
    for (const Row& r : rows) {
        V y2(r.x.size(), kUntouched);
        ASSERT_EQ(QAL_OK, QAL_Splines(r.x.data(), r.y.data(), Count(r.x), r.first, r.last, y2.data()));
        for (std::size_t i = 0; i < r.table.size(); ++i) EXPECT_TRUE(SameBits(r.table[i], y2[i])) << &r - rows;
        double out = kUntouched;
        EXPECT_EQ(r.status, QAL_CubicSplineInterpolation(r.x.data(), r.y.data(), y2.data(), Count(r.x), r.at, &out));
        EXPECT_TRUE(SameBits(r.out, out)) << "row " << &r - rows;
    }
}

TEST(CubicSpline, RefusesArgumentsAndReleasesWorkOnFailure) {
    const V x(10001, 1.0);
    V y2(10001, kUntouched);
    double out = kUntouched;
    for (int n : {1, 10001}) {
        EXPECT_EQ(QAL_ERR_PARAMETER, QAL_Splines(x.data(), x.data(), n, kNatural, kNatural, y2.data()));
        EXPECT_EQ(QAL_ERR_PARAMETER, QAL_CubicSplineInterpolation(x.data(), x.data(), y2.data(), n, 1, &out));
    }
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_Splines(x.data(), nullptr, 3, kNatural, kNatural, y2.data()));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_CubicSplineInterpolation(x.data(), x.data(), y2.data(), 3, 1, nullptr));
    EXPECT_TRUE(SameBits(kUntouched, y2[0]) && SameBits(kUntouched, out));
    EXPECT_EQ(QAL_OK, QAL_Splines(x.data(), x.data(), 10000, kNatural, kNatural, y2.data()));
    ExpectEveryAllocationFailureHandled([&] {
        y2[0] = kUntouched;
        const int status = QAL_Splines(kX.data(), kY.data(), 4, kNatural, 0.5, y2.data());
        return status == QAL_OK || SameBits(kUntouched, y2[0]) ? status : -1;
    }, QAL_ERR_MEMORY);
}

// The natural spline by another method: the whole system in the knots' second derivatives,
// solved densely by Gauss-Jordan with partial pivoting, and each interval's cubic in powers of t.
TEST(CubicSpline, NaturalSplineAgreesWithADenseSolve) {
    const std::size_t n = 24;
    V x(n), y(n), y2(n);
    std::vector<V> a(n, V(n + 1, 0.0));  // augmented, one row per knot
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = 0.37 * static_cast<double>(i) + 0.05 * std::sin(3.1 * static_cast<double>(i));
        y[i] = std::sin(x[i]) + 0.3 * x[i];
    }
    a[0][0] = a[n - 1][n - 1] = 1.0;
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double hl = x[i] - x[i - 1], hr = x[i + 1] - x[i];
        a[i][i - 1] = hl, a[i][i] = 2 * (hl + hr), a[i][i + 1] = hr;
        a[i][n] = 6 * ((y[i + 1] - y[i]) / hr - (y[i] - y[i - 1]) / hl);
    }
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t p = c;
        for (std::size_t r = c + 1; r < n; ++r) p = std::fabs(a[r][c]) > std::fabs(a[p][c]) ? r : p;
        std::swap(a[c], a[p]);
        for (std::size_t r = 0; r < n; ++r) {
            const double f = r == c ? 0.0 : a[r][c] / a[c][c];
            for (std::size_t k = c; k <= n; ++k) a[r][k] -= f * a[c][k];
        }
    }
    ASSERT_EQ(QAL_OK, QAL_Splines(x.data(), y.data(), Count(x), kNatural, kNatural, y2.data()));
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const double m0 = a[i][n] / a[i][i], m1 = a[i + 1][n] / a[i + 1][i + 1], h = x[i + 1] - x[i], t = 0.37 * h;
        const double slope = (y[i + 1] - y[i]) / h - h * (2 * m0 + m1) / 6;
        double out = kUntouched;
        ASSERT_EQ(QAL_OK, QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), Count(x), x[i] + t, &out));
        EXPECT_NEAR(m0, y2[i], 1e-12) << i;
        EXPECT_NEAR(y[i] + t * (slope + t * (m0 / 2 + t * (m1 - m0) / (6 * h))), out, 1e-12) << i;
    }
}

}  // namespace
}  // namespace qal::test
