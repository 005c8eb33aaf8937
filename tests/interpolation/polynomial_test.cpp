#include <cmath>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr double u = kUntouched;

// Each row runs both routines: the polynomial's value and estimate, then the rational one's. Hexfloats are
// from a reviewed run, the others hand-derived. Refusals leave both outputs alone; 10000 points will do.
TEST(PolynomialAndRationalInterpolation, ValuesEstimatesAndSubstitutes) {
    struct Row { V x, y; double at, polyY, polyE, ratY, ratE; };
    const Row rows[] = {
        // 2.5 is as near to x[1] as to x[2]: the path starts at x[1].
        {{1, 2, 3}, {1, 4, 9}, 2.5, 6.25, 0.75, 0x1.8924924924924p+2, 0x1.c492492492492p+3},
        // The first point closer than 1e-25 stops the rational routine, not the nearest; exactly 1e-25 is no
        // hit, and n = 1 writes no estimate otherwise.
        {{3, 5e-26, 1e-30}, {1, 2, 3}, 0, 0x1.8000000000002p+1, 0x1.73add89f474cfp-136, 2, 0},
        {{1e-25}, {5}, 0, 5, u, 5, u}, {{1e-26}, {5}, 0, 5, u, 5, 0},
        // 1e15 for the polynomial's quotient at equal abscissae, in both rational entries at a pole.
        {{1, 1}, {2, 3}, 1.5, 2 - 5e14, -5e14, 0, -2}, {{1, 2, 3}, {2, 2, 2}, 2.5, 2, 0, 1e15 + 2, 1e15},
        {{1, 2, 3}, {0, 0, 0}, 2.5, 0, 0, 0, -0.0},  // the 1e-25 start of colD keeps this from a pole
        {{1, 2, 3}, {1, 4, 9}, kNaN, kNaN, kNaN, kNaN, kNaN},
        // High entropy: guards the path through the tableau and the order of each step.
        {{0.3, 1.1, 2.385, 3.7, 4.45, 6.1}, {2.385, -1.25, 0.7, 0.1, 1.9, -0.6}, 1.7, -0x1.b4b09565dfcb8p-5,
         0x1.8969d82751811p-2, -0x1.fc43d6bca94a4p-3, -0x1.5be93734b3579p-1},
    };
    for (const Row& r : rows) {
        const int n = static_cast<int>(r.x.size());
        double value = u, estimate = u;
        EXPECT_EQ(QAL_OK, QAL_PolynomialInterpolation(r.x.data(), r.y.data(), n, r.at, &value, &estimate));
        EXPECT_TRUE(SamePoint(r.polyY, r.polyE, value, estimate)) << "polynomial, row " << &r - rows;
        value = estimate = u;
        EXPECT_EQ(QAL_OK, QAL_RationialInterpolation(r.x.data(), r.y.data(), n, r.at, &value, &estimate));
        EXPECT_TRUE(SamePoint(r.ratY, r.ratE, value, estimate)) << "rational, row " << &r - rows;
    }
    V many(10001);
    for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i);
    double value = u, estimate = u, *const v = &value, *const e = &estimate;
    for (auto interpolate : {QAL_PolynomialInterpolation, QAL_RationialInterpolation}) {
        for (int n : {0, 10001}) EXPECT_EQ(QAL_ERR_PARAMETER, interpolate(many.data(), many.data(), n, 1, v, e));
        EXPECT_EQ(QAL_ERR_PARAMETER, interpolate(nullptr, many.data(), 2, 1.5, v, e));
        EXPECT_EQ(QAL_ERR_PARAMETER, interpolate(many.data(), many.data(), 2, 1.5, v, nullptr));
        EXPECT_TRUE(SamePoint(u, u, value, estimate));
        EXPECT_EQ(QAL_OK, interpolate(many.data(), many.data(), 10000, 0.5, v, e));
        EXPECT_EQ(2, ExpectEveryAllocationFailureHandled([&] {
            value = estimate = u;
            const int status = interpolate(rows[0].x.data(), rows[0].y.data(), 3, 2.5, v, e);
            return status == QAL_OK || SamePoint(u, u, value, estimate) ? status : -1;
        }, QAL_ERR_MEMORY));
    }
}

// Through n points of a polynomial of degree n-1 (abscissae out of order) the interpolant is that polynomial,
// inside and outside the points.
TEST(PolynomialInterpolation, ReproducesPolynomialsOfDegreeNMinusOne) {
    const double c[] = {0.75, -1.5, 0.3, 0.125, -0.02, 0.004, -0.0005, 0.00002};
    const auto p = [&](int degree, double t) {  // Horner
        double sum = 0;
        for (int k = degree; k >= 0; --k) sum = sum * t + c[k];
        return sum;
    };
    for (int n = 1; n <= 8; ++n) {
        V x, y;
        for (int i = 0; i < n; ++i) x.push_back(0.37 + 0.61 * i * (i % 2 ? -1 : 1)), y.push_back(p(n - 1, x.back()));
        for (double at : {-2.25, 0.9, 2.385, 4.5}) {
            double value = u, estimate = u;
            EXPECT_EQ(QAL_OK, QAL_PolynomialInterpolation(x.data(), y.data(), n, at, &value, &estimate));
            EXPECT_NEAR(p(n - 1, at), value, 1e-13 * (1 + std::fabs(value))) << n << " points at " << at;
        }
    }
}

}  // namespace
}  // namespace qal::test
