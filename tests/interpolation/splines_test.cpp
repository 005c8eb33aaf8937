#include <cmath>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr double kNatural = 1e25, u = kUntouched;
constexpr int kBad = QAL_ERR_PARAMETER, kZeroWide = QAL_ERR_ZERO_DIVISION;

// Each row builds the table (checked where given; a refused count refuses both calls), then evaluates once.
// Hexfloats come from a separate step-by-step model of both routines (IEEE double, same libm).
TEST(CubicSpline, TablesValuesAndDegenerateKnots) {
    struct Row { V x, y; double first, last; V table; double at; int status; double out; };
    const Row rows[] = {
        {{0, 1, 2}, {0, 1, 0}, kNatural, kNatural, {0, -3, 0}, 0.5, QAL_OK, 0.6875},  // exactly 1e25 is natural
        {{0, 1, 2}, {0, 1, 0}, kNaN, kNatural, {kNaN, kNaN, kNaN}, 0.5, QAL_OK, kNaN},  // a NaN slope is clamped
        {{0, 1, kNaN, 3}, {1, 2, 3, 4}, 0, kNatural, {2.25, 1.5, 3, 0}, 0.5, QAL_OK, 1.265625},  // NaN pivots copy
        {{0, 0, 1}, {5, 6, 7}, kNatural, kNatural, {kNaN, kNaN, kNaN}, 0, QAL_OK, kNaN},  // a knot opens its interval
        // zero-wide brackets give y[lo]: a NaN knot, a width of exactly 1e-25
        {{0, 1, kNaN}, {3, 4, 5}, kNatural, kNatural, {}, 5, kZeroWide, 4},
        {{0, 1e-25}, {4, 8}, kNatural, kNatural, {0, 0}, 0, kZeroWide, 4},
        {{0}, {4}, kNatural, kNatural, {u}, 0, kBad, u}, {V(10001, 1.0), V(10001), 0, 0, {u}, 1, kBad, u},
        {V(10000, 1.0), V(10000, 2.0), 0, 0, {}, 1, kZeroWide, 2},
        // the order of operations at both clamped ends, in the sweep and in an extrapolation below x[0]
        {{1.05, 2.268, 4.482, 4.605}, {0.21, -2.984, -2.52, 0.752}, 0.63, 0.54,
         {0x1.6332f442916ep-2, -0x1.0b70fe8c0dc1ep+4, 0x1.da70abdd3b22fp+5, -0x1.4ca6a567091d2p+9}, 0.804, QAL_OK,
         0x1.9ab702fd0e57p-4}};
    for (const Row& r : rows) {
        V y2(r.x.size(), u);
        double out = u;
        EXPECT_EQ(r.status == kBad ? kBad : QAL_OK, QAL_Splines(r.x.data(), r.y.data(), Count(r.x), r.first, r.last,
                                                                 y2.data())) << "row " << &r - rows;
        for (std::size_t i = 0; i < r.table.size(); ++i) EXPECT_TRUE(SameBits(r.table[i], y2[i])) << &r - rows;
        EXPECT_EQ(r.status, QAL_CubicSplineInterpolation(r.x.data(), r.y.data(), y2.data(), Count(r.x), r.at, &out));
        EXPECT_TRUE(SameBits(r.out, out)) << "row " << &r - rows;
    }
    const V& x = rows[0].x;
    V y2(3, u);
    EXPECT_TRUE(QAL_Splines(x.data(), nullptr, 3, 0, 0, y2.data()) == kBad && SameBits(u, y2[0]));
    EXPECT_TRUE(QAL_CubicSplineInterpolation(x.data(), x.data(), y2.data(), 3, 1, nullptr) == kBad);
    ExpectEveryAllocationFailureHandled([&] {
        y2[0] = u;
        const int status = QAL_Splines(x.data(), x.data(), 3, kNatural, 0.5, y2.data());
        return status == QAL_OK || SameBits(u, y2[0]) ? status : -1;
    }, QAL_ERR_MEMORY);
}

// The natural spline by another method: the knots' second derivatives from a dense Gauss-Jordan solve of the
// whole system (diagonally dominant, so no pivoting), and each interval's cubic in powers of t.
TEST(CubicSpline, NaturalSplineAgreesWithADenseSolve) {
    const V x{0, 0.4, 0.75, 1.3, 1.9, 2.2, 2.95, 3.4, 4.1, 4.6, 5.35, 5.5};
    const std::size_t n = x.size();
    V y(n), y2(n);
    std::vector<V> a(n, V(n + 1, 0.0));  // augmented, one row per knot
    a[0][0] = a[n - 1][n - 1] = 1.0;
    for (std::size_t i = 0; i < n; ++i) y[i] = std::sin(x[i]) + 0.3 * x[i];
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double hl = x[i] - x[i - 1], hr = x[i + 1] - x[i];
        a[i][i - 1] = hl, a[i][i] = 2 * (hl + hr), a[i][i + 1] = hr;
        a[i][n] = 6 * ((y[i + 1] - y[i]) / hr - (y[i] - y[i - 1]) / hl);
    }
    for (std::size_t c = 0; c < n; ++c) {
        for (std::size_t r = 0; r < n; ++r) {
            const double f = r == c ? 0.0 : a[r][c] / a[c][c];
            for (std::size_t k = c; k <= n; ++k) a[r][k] -= f * a[c][k];
        }
    }
    ASSERT_EQ(QAL_OK, QAL_Splines(x.data(), y.data(), Count(x), kNatural, kNatural, y2.data()));
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const double m0 = a[i][n] / a[i][i], m1 = a[i + 1][n] / a[i + 1][i + 1], h = x[i + 1] - x[i], t = 0.37 * h;
        const double slope = (y[i + 1] - y[i]) / h - h * (2 * m0 + m1) / 6;
        double out = u;
        ASSERT_EQ(QAL_OK, QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), Count(x), x[i] + t, &out));
        EXPECT_NEAR(m0, y2[i], 1e-12) << i;
        EXPECT_NEAR(y[i] + t * (slope + t * (m0 / 2 + t * (m1 - m0) / (6 * h))), out, 1e-12) << i;
    }
}

}  // namespace
}  // namespace qal::test
