#include <cmath>

#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kNoValue;

// A bad argument is reported in the result channel, as the status value itself.
constexpr double kBadArgument = static_cast<double>(QAL_ERR_PARAMETER);

// The new midpoints of a stage number 2^(stage - 2); from this stage on that count no
// longer fits a positive int.
constexpr int kFirstStageBeyondInt = 33;

constexpr int kBisectionPasses = 40;

// The estimate after the last stage, for the whole module. Stage 1 overwrites it; every
// later stage averages its midpoints into it, whatever function or limits left it there.
// Unguarded on purpose: a sequence of stages belongs to one caller at a time.
double trapezSum = 0.0;

}  // namespace

double QAL_Trapez(double (*function)(double), double lowerLimit, double upperLimit, int stage) {
    if (!function || stage < 1) return kBadArgument;
    const double width = upperLimit - lowerLimit;
    if (stage == 1) {
        const double atLower = function(lowerLimit);
        const double atUpper = function(upperLimit);
        trapezSum = (atUpper + atLower) * (width * 0.5);
        return trapezSum;
    }
    if (stage >= kFirstStageBeyondInt) return trapezSum;
    const int points = 1 << (stage - 2);
    const double step = width / points;
    // The abscissa advances by repeated addition, not as lowerLimit + k * step: the two
    // round differently.
    double abscissa = step * 0.5 + lowerLimit;
    double sum = 0.0;
    for (int k = 0; k < points; ++k) {
        sum += function(abscissa);
        abscissa += step;
    }
    trapezSum = (width * sum / points + trapezSum) * 0.5;
    return trapezSum;
}

// Boundary rules:
//   f1 * f2 not negative (a zero end, no sign change, NaN)  1e25 after two calls
//   root starts at the end where f is negative; dx points to the positive end and is
//   halved from the first distance on each pass, never recomputed from the bracket
//   fMiddle <= 0 moves root to the middle; a NaN fMiddle counts as positive
//   accuracy > |dx| or fMiddle exactly 0   root (the last point with f <= 0, not middle)
//   40 passes without either               1e25 (42 calls in all)
double QAL_RootBisection(double (*function)(double), double x1, double x2, double accuracy) {
    if (!function) return kBadArgument;
    const double f1 = function(x1);
    const double f2 = function(x2);
    if (!(f1 * f2 < 0.0)) return kNoValue;
    double root = x2;
    double dx = x1 - x2;
    if (f1 < 0.0) {
        root = x1;
        dx = x2 - x1;
    }
    for (int pass = 0; pass < kBisectionPasses; ++pass) {
        dx = dx * 0.5;
        const double middle = dx + root;
        const double fMiddle = function(middle);
        if (fMiddle <= 0.0) root = middle;
        if (accuracy > std::fabs(dx) || fMiddle == 0.0) return root;
    }
    return kNoValue;
}
