#include "qal/qal.h"

namespace {

// Boundary modes: the distance from the base is the value times the spread curve, the
// value in percent of the base, or the value itself.
constexpr int kTimesSpread = 1;
constexpr int kPercentOfBase = 2;
constexpr int kOffset = 3;

// Float constants, so that the percentage factor is rounded as float at each step.
constexpr float kHundred = 100.0f;
constexpr float kOne = 1.0f;

// Each pass reads base (and spread) at the point it writes, through the caller's pointers,
// so an output that shares storage with an input sees exactly the point it replaces.
// A pass returns false, writing nothing, for an unknown mode or mode 1 without a spread.

bool upperPass(const float* base, const float* spread, float* upper, int n, int mode, float value) noexcept {
    switch (mode) {
        case kTimesSpread:
            if (!spread) return false;
            for (int i = 0; i < n; ++i) upper[i] = value * spread[i] + base[i];
            return true;
        case kPercentOfBase: {
            const float factor = value / kHundred + kOne;
            for (int i = 0; i < n; ++i) upper[i] = factor * base[i];
            return true;
        }
        case kOffset:
            for (int i = 0; i < n; ++i) upper[i] = value + base[i];
            return true;
        default:
            return false;
    }
}

bool lowerPass(const float* base, const float* spread, float* lower, int n, int mode, float value) noexcept {
    switch (mode) {
        case kTimesSpread:
            if (!spread) return false;
            for (int i = 0; i < n; ++i) lower[i] = base[i] - value * spread[i];
            return true;
        case kPercentOfBase: {
            const float factor = kOne - value / kHundred;
            for (int i = 0; i < n; ++i) lower[i] = factor * base[i];
            return true;
        }
        case kOffset:
            for (int i = 0; i < n; ++i) lower[i] = base[i] - value;
            return true;
        default:
            return false;
    }
}

}  // namespace

// A refused upper mode is remembered and the lower pass still runs; a refused lower mode
// ends the call at once. The upper pass is complete before the lower one reads anything.
int QAL_CalcBoundaries(const float* base, const float* spread, float* lower, float* upper, int n, int upperMode,
                       float upperValue, int lowerMode, float lowerValue) {
    if (!base || !upper || !lower || n < 1) return QAL_ERR_PARAMETER;
    int status = QAL_OK;
    if (!upperPass(base, spread, upper, n, upperMode, upperValue)) status = QAL_ERR_PARAMETER;
    if (!lowerPass(base, spread, lower, n, lowerMode, lowerValue)) return QAL_ERR_PARAMETER;
    return status;
}
