// The cubic of one knot interval, as QAL_CubicSplineInterpolation evaluates it: the
// interval's numbers taken once, then any number of abscissae. The evaluation is a template
// on the value type, so that the resampler's lanes run exactly these operations, each lane
// on its own abscissa.
#ifndef QAL_SRC_INTERPOLATION_SPLINE_INTERVAL_H
#define QAL_SRC_INTERPOLATION_SPLINE_INTERVAL_H

#include <cmath>

#include "frame/constants.h"
#include "frame/lanes.h"

namespace qal::detail {

struct SplineInterval {
    double xLo, xHi, h, hSquared, yLo, yHi, y2Lo, y2Hi;

    // Negated so that a NaN width, and one of exactly 1e-25, also count as zero: the cubic
    // is then not evaluated.
    bool hasZeroWidth() const noexcept { return !(std::fabs(h) > kNumericalZero); }

    template <class V>
    QAL_LANE_KERNEL void valueAt(const V& v, V& value) const noexcept {
        const V a = (xHi - v) / h;
        const V b = (v - xLo) / h;  // not 1.0 - a, which rounds differently
        const V cubic = ((b * b) * b - b) * y2Hi + ((a * a) * a - a) * y2Lo;
        // Scaled by h * h first, then divided by 6.0.
        value = cubic * hSquared / 6.0 + (b * yHi + a * yLo);
    }
};

inline SplineInterval splineInterval(const double* x, const double* y, const double* y2, int lo, int hi) noexcept {
    const double h = x[hi] - x[lo];
    return {x[lo], x[hi], h, h * h, y[lo], y[hi], y2[lo], y2[hi]};
}

}  // namespace qal::detail

#endif  // QAL_SRC_INTERPOLATION_SPLINE_INTERVAL_H
