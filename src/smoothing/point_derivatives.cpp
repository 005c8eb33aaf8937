#include <algorithm>
#include <cmath>

#include "frame/constants.h"
#include "frame/raw_matrix.h"
#include "interpolation/knot_bracket.h"
#include "qal/qal.h"
#include "smoothing/filter_step.h"
#include "smoothing/golay_kernel.h"

namespace {

using qal::detail::kNoValue;
using qal::detail::kNumericalZero;

// Ridders' tableau: 10 columns of shrinking steps, each extrapolated up to its diagonal.
constexpr int kTableauSize = 10;
constexpr double kStepReduction = 1.4;
// 1.4 * 1.4 rounded to double, not the literal 1.96 (which is one unit in the last place
// higher).
constexpr double kSquaredReduction = kStepReduction * kStepReduction;
static_assert(kSquaredReduction == 1.9599999999999997, "1.4 squared in double");
// A column stops the work when its last extrapolation moves this many times the best
// error figure so far.
constexpr double kSafety = 2.0;
// The error figure until an extrapolation beats it.
constexpr double kInitialError = 1e15;

// The upper point is evaluated first.
double centralDifference(double (*func)(double), double xValue, double step) {
    const double atUpper = func(xValue + step);
    const double atLower = func(xValue - step);
    return (atUpper - atLower) / (2.0 * step);
}

}  // namespace

// Boundary rules:
//   step below 1e-25 (0, negatives)   1e25, func not called; a NaN step passes and runs
//   tableau not allocated             1e25
//   errt <= best error so far         that entry wins, so of equal figures the later one;
//                                     a NaN errt never wins
//   no entry ever wins (NaN values)   0.0 with *errorEstimate still 1e15
//   stop test                         |T[i][i] - T[i-1][i]| >= 2 * best error; NaN goes on
double QAL_FirstDerivativeRidder(double (*func)(double), double xValue, double step, double* errorEstimate) {
    *errorEstimate = kInitialError;
    double derivative = 0.0;
    if (kNumericalZero > step) return kNoValue;
    // Row j holds the j-th extrapolation, column i the i-th step.
    const qal::detail::RawMatrix tableau(kTableauSize, kTableauSize);
    if (!tableau) return kNoValue;
    double** const table = tableau.get();

    table[0][0] = centralDifference(func, xValue, step);
    for (int i = 1; i < kTableauSize; ++i) {
        step = step / kStepReduction;
        table[0][i] = centralDifference(func, xValue, step);
        double factor = kSquaredReduction;
        for (int j = 1; j <= i; ++j) {
            table[j][i] = (table[j - 1][i] * factor - table[j - 1][i - 1]) / (factor - 1.0);
            factor = factor * kSquaredReduction;
            const double e1 = std::fabs(table[j][i] - table[j - 1][i]);
            const double e2 = std::fabs(table[j][i] - table[j - 1][i - 1]);
            const double errt = e1 > e2 ? e1 : e2;
            if (errt <= *errorEstimate) {
                *errorEstimate = errt;
                derivative = table[j][i];
            }
        }
        // Against column i on both sides, not the diagonal of the column before.
        if (std::fabs(table[i][i] - table[i - 1][i]) >= kSafety * *errorEstimate) break;
    }
    return derivative;
}

// Boundary rules of the bracket (the knot bracket, here from n = 1 on):
//   n == 1                           lo = hi = 0: a width of 0, 1e25
//   width below 1e-25                1e25; written `limit > magnitude`, so a width of
//                                    exactly 1e-25 passes, and so does a NaN one
//   xValue outside the data or NaN   the end interval, interpolated or extrapolated
// Each of the two samples is smoothed by the filter's sample step. That step leaves a
// missing weight of exactly 1.0 undivided, which this routine would divide; but no set of
// this kernel's weights sums to 1.0 (their magnitudes add up to about 0.75), so the test
// never fires here and the results are the same. The kernel sees sample positions, not
// abscissae: the result is the slope per sample step.
double QAL_FirstDerivativeGolay(const double* x, const double* y, int n, double xValue) {
    using qal::detail::kGolayKernelHalf;
    if (!x || !y || n < 1) return kNoValue;
    double scratch[qal::detail::kGolayKernelTaps];
    const double* const kernel = qal::detail::golayDerivativeKernel(scratch);
    if (!kernel) return kNoValue;
    const auto [lo, hi] = qal::detail::knotBracket(x, n, xValue);
    const double h = x[hi] - x[lo];
    if (kNumericalZero > std::fabs(h)) return kNoValue;
    const double atLo = qal::detail::filteredSample(y, n, lo, kernel, kGolayKernelHalf);
    const double atHi = qal::detail::filteredSample(y, n, hi, kernel, kGolayKernelHalf);
    // The product first, then the division.
    return (xValue - x[lo]) * (atHi - atLo) / h + atLo;
}

// The regression takes as many samples on each side of the gap between lo and hi, half
// of them or fewer where an end of the data is nearer: always an even count holding lo
// and hi, so xValue chooses the bracket and nothing else.
// Boundary rules:
//   n < 1, span < 2, null array       1e25
//   width below 1e-25 (n == 1 too)    1e25; a width of exactly 1e-25, or NaN, passes
//   odd span                          acts as the even one below it
double QAL_FirstDerivativeLinReg(const double* x, const double* y, int n, int span, double xValue) {
    if (n < 1 || span < 2 || !x || !y) return kNoValue;
    const int half = span / 2;
    const auto [lo, hi] = qal::detail::knotBracket(x, n, xValue);
    if (kNumericalZero > std::fabs(x[hi] - x[lo])) return kNoValue;
    const int halfUsed = std::min({half, lo + 1, n - 1 - lo});
    const int first = lo + 1 - halfUsed;
    double intercept = 0.0;
    double slope = 0.0;
    // 0 means that nothing was computed, which the count 2 * halfUsed >= 2 rules out.
    if (QAL_LinearRegression(x + first, y + first, 2 * halfUsed, &intercept, &slope) == 0) return kNoValue;
    return slope;
}
