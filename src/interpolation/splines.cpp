#include <cmath>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "interpolation/knot_bracket.h"
#include "interpolation/spline_interval.h"
#include "qal/qal.h"

namespace {

using qal::detail::kMaxCurvePoints;
using qal::detail::kNoValue;
using qal::detail::kNumericalZero;

bool refusesKnots(const double* x, const double* y, const double* y2, int n) noexcept {
    return !x || !y || !y2 || n < 2 || n > kMaxCurvePoints;
}

// An end slope at or above 1e25 asks for a natural end. The test has no magnitude, so
// -1e30 is an ordinary slope, and a NaN (which fails it) is a clamped one.
bool isNaturalEnd(double slope) noexcept { return slope >= kNoValue; }

}  // namespace

// One forward sweep of the tridiagonal system, then one back-substitution. During the
// sweep y2 holds the elimination factors and `work` the right-hand sides; the
// back-substitution overwrites the factors in place with the second derivatives.
// Equal or descending abscissae are not refused: they leave IEEE infinities or NaNs.
int QAL_Splines(const double* x, const double* y, int n, double slopeFirst, double slopeLast, double* y2) {
    if (refusesKnots(x, y, y2, n)) return QAL_ERR_PARAMETER;
    qal::detail::WorkArray<double> work(n - 1);
    if (!work) return QAL_ERR_MEMORY;

    if (isNaturalEnd(slopeFirst)) {
        work[0] = 0.0;
        y2[0] = 0.0;
    } else {
        const double h = x[1] - x[0];
        y2[0] = -0.5;
        work[0] = ((y[1] - y[0]) / h - slopeFirst) * (3.0 / h);
    }

    for (int i = 1; i < n - 1; ++i) {
        const double sig = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
        const double pivot = sig * y2[i - 1] + 2.0;
        // Written so that a NaN pivot also skips the row: it copies the row before.
        if (std::fabs(pivot) > kNumericalZero) {
            y2[i] = (sig - 1.0) / pivot;
            const double d = (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
            work[i] = (6.0 * d / (x[i + 1] - x[i - 1]) - sig * work[i - 1]) / pivot;
        } else {
            y2[i] = y2[i - 1];
            work[i] = work[i - 1];
        }
    }

    // A natural end keeps q = r = 0 in the formula below, not a plain 0.0: an infinite
    // factor or right-hand side must still turn the end into a NaN.
    double q = 0.0;
    double r = 0.0;
    if (!isNaturalEnd(slopeLast)) {
        const double h = x[n - 1] - x[n - 2];
        q = 0.5;
        r = (slopeLast - (y[n - 1] - y[n - 2]) / h) * (3.0 / h);
    }
    y2[n - 1] = (r - q * work[n - 2]) / (q * y2[n - 2] + 1.0);
    for (int k = n - 2; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + work[k];
    return QAL_OK;
}

// No range test: outside the knots the cubic of the end interval goes on.
int QAL_CubicSplineInterpolation(const double* x, const double* y, const double* y2, int n, double xValue,
                                 double* yOut) {
    if (refusesKnots(x, y, y2, n) || !yOut) return QAL_ERR_PARAMETER;
    const auto [lo, hi] = qal::detail::knotBracket(x, n, xValue);
    const qal::detail::SplineInterval interval = qal::detail::splineInterval(x, y, y2, lo, hi);
    if (interval.hasZeroWidth()) {
        *yOut = y[lo];
        return QAL_ERR_ZERO_DIVISION;
    }
    interval.valueAt(xValue, *yOut);
    return QAL_OK;
}
