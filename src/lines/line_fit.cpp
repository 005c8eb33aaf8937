#include <cmath>

#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kNoValue;
using qal::detail::kNoValueFloat;
using qal::detail::kNumericalZero;

// Two slopes closer than this (strictly) make the lines parallel.
constexpr double kParallelSlopeGap = 1e-8;
// Largest slope magnitude that the intersection accepts: 1e25 / 100 in double, which is
// one unit in the last place above the double nearest 1e23 (bits 0x44B52D02C7E14AF7).
constexpr double kSlopeLimit = 0x1.52d02c7e14af7p+76;
static_assert(kSlopeLimit == kNoValue / 100.0, "the slope limit is 1e25 / 100 in double");

// Two-pass centred least-squares fit, instantiated for double and for float. T is the
// type of every accumulator, the mean, t, the products and quotients, and of n: the float
// fit rounds each step to float, with no wider intermediate.
// Sums run in index order from 0; the ordinate is not centred. n <= 0 leaves 0/0 = NaN.
template <class T>
void centredFit(const T* x, const T* y, int n, T* intercept, T* slope) noexcept {
    T sumX = 0;
    T sumY = 0;
    for (int i = 0; i < n; ++i) {
        sumX += x[i];
        sumY += y[i];
    }
    const T count = static_cast<T>(n);
    const T meanX = sumX / count;
    T sumTT = 0;
    T sumTY = 0;
    for (int i = 0; i < n; ++i) {
        const T t = x[i] - meanX;
        sumTT += t * t;
        sumTY += t * y[i];
    }
    const T fittedSlope = sumTY / sumTT;
    *intercept = (sumY - fittedSlope * sumX) / count;
    *slope = fittedSlope;
}

bool refusesFit(const void* x, const void* y, int n) noexcept { return !x || !y || n < 2; }

}  // namespace

void QAL_LinFit(const double* x, const double* y, int n, double* intercept, double* slope) {
    centredFit(x, y, n, intercept, slope);
}

void QAL_LinFitFloat(const float* x, const float* y, int n, float* intercept, float* slope) {
    centredFit(x, y, n, intercept, slope);
}

double QAL_CalcLinX(double xValue, const double* x, const double* y, int n) {
    if (refusesFit(x, y, n)) return 0.0;
    double intercept = 0.0;
    double slope = 0.0;
    QAL_LinFit(x, y, n, &intercept, &slope);
    return slope * xValue + intercept;
}

// Boundary rules: |slope| exactly 1e-25, and a NaN slope, give 0.0 like a flat line.
double QAL_CalcLinY(double yValue, const double* x, const double* y, int n) {
    if (refusesFit(x, y, n)) return 0.0;
    double intercept = 0.0;
    double slope = 0.0;
    QAL_LinFit(x, y, n, &intercept, &slope);
    if (std::fabs(slope) > kNumericalZero) return (yValue - intercept) / slope;
    return 0.0;
}

// The fit is in float; the final product and sum are in double (the product of two
// floats is exact there) and rounded to float once.
float QAL_CalcLinXFloat(float xValue, const float* x, const float* y, int n) {
    if (refusesFit(x, y, n)) return 0.0f;
    float intercept = 0.0f;
    float slope = 0.0f;
    QAL_LinFitFloat(x, y, n, &intercept, &slope);
    return static_cast<float>(static_cast<double>(slope) * static_cast<double>(xValue) +
                              static_cast<double>(intercept));
}

// The slope test is made on the widened slope against the double 1e-25, so a float slope
// of 1e-25f (which lies above 1e-25) passes; the quotient itself is float.
float QAL_CalcLinYFloat(float yValue, const float* x, const float* y, int n) {
    if (refusesFit(x, y, n)) return 0.0f;
    float intercept = 0.0f;
    float slope = 0.0f;
    QAL_LinFitFloat(x, y, n, &intercept, &slope);
    if (std::fabs(static_cast<double>(slope)) > kNumericalZero) return (yValue - intercept) / slope;
    return 0.0f;
}

// Arithmetic on the lines is float; each comparison widens its float operand to double.
// Boundary rules:
//   slopes apart by less than 1e-8 (strictly)     parallel: QAL_ERR_OUT_OF_RANGE
//   a |slope| above 1e25 / 100 (strictly)         QAL_ERR_OUT_OF_RANGE
//   x * slope1 below 1e25 (signed, no magnitude)  ordinate from line 1
//   else x * slope2 below 1e25                    ordinate from line 2
//   else (also infinities)                        *yCross untouched, still QAL_OK
//   NaN coefficient                               fails every test: *xCross NaN,
//                                                 *yCross untouched, QAL_OK
int QAL_StraightLineIntersection(float* xCross, float* yCross, float intercept1, float slope1, float intercept2,
                                 float slope2) {
    if (!xCross || !yCross) return QAL_ERR_PARAMETER;
    const float slopeGap = slope2 - slope1;
    // Written as `limit > magnitude` so that a NaN gap passes on to the next tests.
    if (kParallelSlopeGap > static_cast<double>(std::fabs(slopeGap)) ||
        std::fabs(static_cast<double>(slope1)) > kSlopeLimit || std::fabs(static_cast<double>(slope2)) > kSlopeLimit) {
        *xCross = kNoValueFloat;
        *yCross = kNoValueFloat;
        return QAL_ERR_OUT_OF_RANGE;
    }
    const float x = (intercept1 - intercept2) / slopeGap;
    *xCross = x;

    const float product1 = x * slope1;
    if (kNoValue > static_cast<double>(product1)) {
        *yCross = product1 + intercept1;
        return QAL_OK;
    }
    const float product2 = x * slope2;
    if (kNoValue > static_cast<double>(product2)) *yCross = product2 + intercept2;
    return QAL_OK;
}
