#include <cmath>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "qal/qal.h"
#include "qal/qal_classes.h"

namespace {

using qal::detail::kNoValue;
using qal::detail::kNoValueFloat;
using qal::detail::kNumericalZero;

// Largest exponent that QAL_exp and QAL_pow10 compute; above it they give 1e25.
constexpr double kExponentLimit = 30.0;
// What QAL_log and QAL_log10 give outside 1e-25 .. 1e25 (with the sign of the side), and
// the value that QAL_CalcLog's order tests start from.
constexpr double kLogSubstitute = 30.0;
// -log10(1e25) and log(1e25), written out so that no call recomputes them: the first is
// exactly -25 in double, the second is the double nearest log(1e25) (about 57.56).
constexpr double kPow10Floor = -25.0;
constexpr double kLogNoValue = 0x1.cc845b54b54f2p+5;

}  // namespace

// Every guard below is written with the constant on the side that makes a NaN argument
// fail it, so that NaN reaches the standard function.

double QAL_exp(double x) {
    if (x > kExponentLimit) return kNoValue;
    return std::exp(x);
}

double QAL_log(double x) {
    if (kNumericalZero > x) return -kLogSubstitute;
    if (x > kNoValue) return kLogSubstitute;
    return std::log(x);
}

double QAL_log10(double x) {
    if (kNumericalZero > x) return -kLogSubstitute;
    if (x > kNoValue) return kLogSubstitute;
    return std::log10(x);
}

// Below the floor -log10(1e25) = -25 the power is 0.0; -25 itself still computes.
double QAL_pow10(double x) {
    if (x > kExponentLimit) return kNoValue;
    if (kPow10Floor > x) return 0.0;
    return std::pow(10.0, x);
}

// The cases stand in their order; the first that applies ends the function. The limit
// 1e25^(1/|y|) serves both cases with y < -1, and is formed once.
double QAL_pow(double x, double y) {
    if (x > kNoValue && y == 0.0) return 1.0;
    if (-kNoValue > x && y == 0.0) return -1.0;
    if (x == 0.0 && y == 0.0) return kNoValue;
    // A NaN or infinite y leaves a NaN remainder, which is not 0 either.
    if (0.0 > x && std::fmod(y, 1.0) != 0.0) return 0.0;
    // The sign of x is ignored: a large negative base gives +1e25 for any y > 1.
    if (y > 1.0 && std::fabs(x) > std::pow(kNoValue, 1.0 / y)) return kNoValue;
    if (-1.0 > y) {
        const double limit = std::pow(kNoValue, 1.0 / std::fabs(y));
        if (std::fabs(x) > limit) return 0.0;
        // 1/x is +inf for +0 (taken) and negative for -0 or x < 0 (not taken).
        if (1.0 > x && 1.0 / x > limit) return kNoValue;
    }
    return std::pow(x, y);
}

// The float rounding of x is the point: the result has the precision of a float input.
double QAL_sqrt(double x) {
    const double rounded = static_cast<double>(static_cast<float>(x));
    if (0.0 > rounded) return -std::sqrt(std::fabs(rounded));
    return std::sqrt(rounded);
}

// The product of two floats is exact in double, so the comparisons see the true product
// and the final rounding equals the float multiplication.
float QAL_mult(float a, float b) {
    const double product = static_cast<double>(a) * static_cast<double>(b);
    if (product > kNoValue) return kNoValueFloat;
    if (-kNoValue > product) return -kNoValueFloat;
    return static_cast<float>(product);
}

// Decisions beyond the told steps: a null target is refused with the null source (the
// array has nowhere to go), and a failed allocation leaves a null *target.
int QAL_CalcLog(float** target, const float* source, int n, short mode) {
    if (n == 0) return QAL_OK;
    if (source == nullptr || target == nullptr) return QAL_ERR_MEMORY;
    float* const logs = qal::detail::allocateArray<float>(n);
    *target = logs;
    if (logs == nullptr) return QAL_ERR_MEMORY;

    // previous > log is a descent and previous >= log a failure to rise: equal neighbours
    // cost nothing in mode 1, and a NaN logarithm passes both tests.
    float previous = static_cast<float>(-kLogSubstitute);
    int descents = 0;
    for (int i = 0; i < n; ++i) {
        logs[i] = static_cast<float>(QAL_log10(static_cast<double>(source[i])));
        if (mode == 1 && previous > logs[i]) {
            ++descents;
            if (descents > 1) return QAL_ERR_LOG_SEQUENCE;
        } else if (mode == 2 && previous >= logs[i]) {
            return QAL_ERR_LOG_SEQUENCE;
        }
        previous = logs[i];
    }
    return QAL_OK;
}

void QAL_ReleaseArray(float* array) { qal::detail::releaseArray(array); }

// ---- k_Qal: the guarded scalars of the class side, with their own clamps ---------------

double k_Qal::Power(double x, double y) {
    // Zero and every negative base: 1.0 for an exponent below 1e-25, else 0.0.
    if (kNumericalZero > x && kNumericalZero > y) return 1.0;
    if (kNumericalZero > x) return 0.0;
    if (y > -kNumericalZero && kNumericalZero > y) return 1.0;
    InfRepair(x);
    InfRepair(y);
    // Predicts whether the power leaves 1e-25 .. 1e25 from its logarithm; at exactly
    // +-log(1e25) it is computed.
    const double logPower = std::log(x) * y;
    if (-kLogNoValue > logPower) return kNumericalZero;
    if (logPower > kLogNoValue) return kNoValue;
    return std::pow(x, y);
}

double k_Qal::Log(double x) {
    if (0.0 >= x) return -kNoValue;
    return std::log(x);
}

double k_Qal::Sqrt(double x) {
    if (0.0 > x) return -std::sqrt(-x);
    return std::sqrt(x);
}

namespace {

// Both repairs test in double against the limit itself and set the limit rounded to the
// value's type: for float its image, 9.99999956e24 (below 1e25) and 1.00000002e-25
// (above 1e-25). The tests are strict, so the limit itself and NaN stay, and a repaired
// value passes a second repair unchanged.
template <class T>
bool clampBeyondLimit(T& value) {
    const double wide = static_cast<double>(value);
    if (wide > kNoValue) {
        value = static_cast<T>(kNoValue);
        return true;
    }
    if (-kNoValue > wide) {
        value = -static_cast<T>(kNoValue);
        return true;
    }
    return false;
}

// 0 and -0 both become +1e-25.
template <class T>
bool liftAboveZero(T& value) {
    const double wide = static_cast<double>(value);
    if (kNumericalZero > std::fabs(wide)) {
        value = 0.0 > wide ? -static_cast<T>(kNumericalZero) : static_cast<T>(kNumericalZero);
        return true;
    }
    return false;
}

}  // namespace

bool k_Qal::InfRepair(double& value) { return clampBeyondLimit(value); }
bool k_Qal::InfRepair(float& value) { return clampBeyondLimit(value); }
bool k_Qal::ZeroRepair(double& value) { return liftAboveZero(value); }
bool k_Qal::ZeroRepair(float& value) { return liftAboveZero(value); }
