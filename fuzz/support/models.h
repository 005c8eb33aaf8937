// Short models of the few steps that several targets compare against: the knot bracket and
// the spline evaluation on it.
#ifndef QAL_FUZZ_SUPPORT_MODELS_H
#define QAL_FUZZ_SUPPORT_MODELS_H

#include <cmath>

namespace qal::fuzz {

struct Bracket {
    int lo, hi;
};

// A knot opens the interval that begins at it, x[n-1] closes the last; NaN moves lo.
inline Bracket KnotBracket(const double* x, int n, double v) {
    int lo = 0, hi = n - 1;
    while (hi - lo > 1) {
        const int mid = (hi + lo) >> 1;
        if (x[mid] > v) {
            hi = mid;
        } else {
            lo = mid;
        }
    }
    return {lo, hi};
}

// The cubic of the bracket at v; false (with y[lo]) for a width not above 1e-25.
inline bool SplineValue(const double* x, const double* y, const double* y2, int n, double v, double& value) {
    const Bracket b = KnotBracket(x, n, v);
    const double h = x[b.hi] - x[b.lo];
    if (!(std::fabs(h) > 1e-25)) {
        value = y[b.lo];
        return false;
    }
    const double a = (x[b.hi] - v) / h, c = (v - x[b.lo]) / h;
    value = ((c * c * c - c) * y2[b.hi] + (a * a * a - a) * y2[b.lo]) * (h * h) / 6.0 + (c * y[b.hi] + a * y[b.lo]);
    return true;
}

}  // namespace qal::fuzz

#endif  // QAL_FUZZ_SUPPORT_MODELS_H
