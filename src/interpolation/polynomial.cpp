#include <cmath>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kMaxCurvePoints;
using qal::detail::kNumericalZero;
using qal::detail::kZeroDivisorSubstitute;
using qal::detail::WorkArray;

// Neville's tableau of the interpolating polynomial.
struct Neville {
    static constexpr bool kStopsAtKnot = false;

    static double firstD(double y) noexcept { return y; }

    // Advances colC and colD to column m over rows 0..rows-1, in ascending rows: row i
    // reads colC[i+1] before row i+1 overwrites it. The width is taken as the difference
    // of the two offsets, not as x[i] - x[i+m], which rounds differently. Written
    // `1e-25 > |den|` so that a NaN width divides and carries its NaN on.
    static void nextColumn(const double* x, double xValue, int m, int rows, double* colC, double* colD) noexcept {
        for (int i = 0; i < rows; ++i) {
            const double ho = x[i] - xValue;
            const double hp = x[i + m] - xValue;
            const double den = ho - hp;
            const double quotient =
                kNumericalZero > std::fabs(den) ? kZeroDivisorSubstitute : (colC[i + 1] - colD[i]) / den;
            colD[i] = quotient * hp;
            colC[i] = quotient * ho;
        }
    }
};

// The Bulirsch-Stoer tableau of the diagonal rational function.
struct BulirschStoer {
    static constexpr bool kStopsAtKnot = true;

    // The 1e-25 keeps dd away from zero on zero ordinates; on ordinates above about 1e-9
    // it is lost to rounding.
    static double firstD(double y) noexcept { return y + kNumericalZero; }

    // As Neville::nextColumn. t is the product divided by h, not the product of a
    // quotient. Only an exact zero dd (-0.0 too) is a pole; a NaN dd divides.
    static void nextColumn(const double* x, double xValue, int m, int rows, double* colC, double* colD) noexcept {
        for (int i = 0; i < rows; ++i) {
            const double w = colC[i + 1] - colD[i];
            const double h = x[i + m] - xValue;
            const double t = (x[i] - xValue) * colD[i] / h;
            const double dd = t - colC[i + 1];
            if (dd == 0.0) {
                colC[i] = kZeroDivisorSubstitute;
                colD[i] = kZeroDivisorSubstitute;
            } else {
                const double quotient = w / dd;
                colD[i] = quotient * colC[i + 1];
                colC[i] = quotient * t;
            }
        }
    }
};

// The frame that both tableaux share: the start at the nearest point, the columns, and
// the path from the start to the apex.
// Boundary rules of the start:
//   equally near points      the first of them (`nearest > t` is strict)
//   NaN distance             replaces nothing, so a NaN xValue starts at point 0
//   rational, a point closer than 1e-25 (strictly), met in index order
//                            its ordinate, estimate 0.0, no tableau; the first such
//                            point wins even when a later one is nearer
// Outputs are written as the steps go: yOut at the start, then per column the estimate
// and the sum. With n = 1 no column runs and the estimate is not written.
template <class Scheme>
int interpolate(const double* x, const double* y, int n, double xValue, double* yOut,
                double* errorEstimate) noexcept {
    if (!x || !y || !yOut || !errorEstimate || n < 1 || n > kMaxCurvePoints) return QAL_ERR_PARAMETER;
    const WorkArray<double> colC(n);
    if (!colC) return QAL_ERR_MEMORY;
    const WorkArray<double> colD(n);
    if (!colD) return QAL_ERR_MEMORY;

    int best = 0;
    double nearest = std::fabs(xValue - x[0]);
    for (int i = 0; i < n; ++i) {
        const double t = std::fabs(xValue - x[i]);
        if constexpr (Scheme::kStopsAtKnot) {
            if (kNumericalZero > t) {
                *yOut = y[i];
                *errorEstimate = 0.0;
                return QAL_OK;
            }
        }
        if (nearest > t) {
            best = i;
            nearest = t;
        }
        colC[i] = y[i];
        colD[i] = Scheme::firstD(y[i]);
    }

    *yOut = y[best];
    int pos = best;
    for (int m = 1; m < n; ++m) {
        const int rows = n - m;
        Scheme::nextColumn(x, xValue, m, rows, colC.get(), colD.get());
        // The path keeps to the middle of the shrinking column: colC at pos while pos lies
        // in its first half, else colD one row up. The rounding of the sum and the last
        // estimate depend on it.
        double correction = 0.0;
        if (2 * pos < rows) {
            correction = colC[pos];
        } else {
            --pos;
            correction = colD[pos];
        }
        *errorEstimate = correction;
        *yOut += correction;
    }
    return QAL_OK;
}

}  // namespace

int QAL_PolynomialInterpolation(const double* x, const double* y, int n, double xValue, double* yOut,
                                double* errorEstimate) {
    return interpolate<Neville>(x, y, n, xValue, yOut, errorEstimate);
}

int QAL_RationialInterpolation(const double* x, const double* y, int n, double xValue, double* yOut,
                               double* errorEstimate) {
    return interpolate<BulirschStoer>(x, y, n, xValue, yOut, errorEstimate);
}
