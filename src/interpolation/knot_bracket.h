// The knot bracket: the two neighbouring knots of an abscissa, as the spline evaluation
// and the derivative routines find them. Unlike QAL_LocateValue it refuses no value and
// always ends on an interval (for n >= 2), with the lower knot at or below the value.
// Beside it, the argument test and the interval weights that every reader of a spline
// table shares.
#ifndef QAL_SRC_INTERPOLATION_KNOT_BRACKET_H
#define QAL_SRC_INTERPOLATION_KNOT_BRACKET_H

#include <cmath>
#include <cstdint>

#include "frame/constants.h"

namespace qal::detail {

struct KnotBracket {
    int lo;
    int hi;
};

// Bisection of x[0..n-1], which should ascend; nothing tests it, and descending knots end
// on some interval without a report. hi == lo + 1 for n >= 2; n == 1 gives lo == hi == 0.
// Boundary rules on ascending knots:
//   v == x[k], k < n-1    lo = k: a knot opens the interval that begins at it (of equal
//                         knots the last, so an equal pair below x[n-1] is never the bracket)
//   v == x[n-1]           lo = n-2: the last knot closes the last interval
//   v < x[0]              lo = 0, the first interval
//   v > x[n-1]            lo = n-2, the last interval
//   v NaN                 lo = n-2: `x[mid] > v` is false for NaN, so lo moves at every step
inline KnotBracket knotBracket(const double* x, int n, double v) noexcept {
    int lo = 0;
    int hi = n - 1;
    while (hi - lo > 1) {
        // (hi + lo) >> 1, summed in 64 bits so that no count overflows it.
        const int mid = static_cast<int>((static_cast<std::int64_t>(hi) + lo) >> 1);
        if (x[mid] > v) {
            hi = mid;
        } else {
            lo = mid;
        }
    }
    return {lo, hi};
}

// The argument test of the routines that read a spline table: a null array, or a count
// outside 2 .. 10000.
inline bool refusesSplineKnots(const double* x, const double* y, const double* y2, int n) noexcept {
    return !x || !y || !y2 || n < 2 || n > kMaxCurvePoints;
}

// The bracket of v with what the spline routines form from it: the width h and the
// weights a = (x[hi] - v) / h and b = (v - x[lo]) / h (b is not 1.0 - a, which rounds
// differently).
struct KnotInterval {
    int lo;
    int hi;
    double h;
    double a;
    double b;
};

// False when the bracket is not wider than 1e-25: the test is negated so that a NaN
// width, and one of exactly 1e-25, fail it too. a and b are then not formed; lo is set.
inline bool knotInterval(const double* x, int n, double v, KnotInterval& s) noexcept {
    const KnotBracket bracket = knotBracket(x, n, v);
    s.lo = bracket.lo;
    s.hi = bracket.hi;
    s.h = x[s.hi] - x[s.lo];
    if (!(std::fabs(s.h) > kNumericalZero)) return false;
    s.a = (x[s.hi] - v) / s.h;
    s.b = (v - x[s.lo]) / s.h;
    return true;
}

}  // namespace qal::detail

#endif  // QAL_SRC_INTERPOLATION_KNOT_BRACKET_H
