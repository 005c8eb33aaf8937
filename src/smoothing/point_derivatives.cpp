#include <cmath>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kNoValue;
using qal::detail::kNumericalZero;
using qal::detail::WorkArray;

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
    WorkArray<double> table(kTableauSize * kTableauSize);
    if (!table) return kNoValue;
    const auto at = [&table](int row, int column) -> double& { return table[row * kTableauSize + column]; };

    at(0, 0) = centralDifference(func, xValue, step);
    for (int i = 1; i < kTableauSize; ++i) {
        step = step / kStepReduction;
        at(0, i) = centralDifference(func, xValue, step);
        double factor = kSquaredReduction;
        for (int j = 1; j <= i; ++j) {
            at(j, i) = (at(j - 1, i) * factor - at(j - 1, i - 1)) / (factor - 1.0);
            factor = factor * kSquaredReduction;
            const double e1 = std::fabs(at(j, i) - at(j - 1, i));
            const double e2 = std::fabs(at(j, i) - at(j - 1, i - 1));
            const double errt = e1 > e2 ? e1 : e2;
            if (errt <= *errorEstimate) {
                *errorEstimate = errt;
                derivative = at(j, i);
            }
        }
        // Against column i on both sides, not the diagonal of the column before.
        if (std::fabs(at(i, i) - at(i - 1, i)) >= kSafety * *errorEstimate) break;
    }
    return derivative;
}
