#include "qal/qal.h"

namespace {

// One difference step over the abscissae x: one-sided at both ends, central over two steps
// inside. Every element is two float subtractions and one float division, with no wider
// intermediate. The end elements are written first.
void differenceStep(const float* x, const float* c, float* out, int n) noexcept {
    out[0] = (c[1] - c[0]) / (x[1] - x[0]);
    out[n - 1] = (c[n - 1] - c[n - 2]) / (x[n - 1] - x[n - 2]);
    for (int i = 1; i <= n - 2; ++i) out[i] = (c[i + 1] - c[i - 1]) / (x[i + 1] - x[i - 1]);
}

// Slope of the chord from sample `from` to sample `to`: each difference a float
// subtraction, the quotient taken in double.
double chordSlope(const float* x, const float* y, int from, int to) noexcept {
    const float rise = y[to] - y[from];
    const float run = x[to] - x[from];
    return static_cast<double>(rise) / static_cast<double>(run);
}

}  // namespace

// Below two samples the differences have no neighbour to read; nothing is written.
int QAL_Kruemmung(const float* x, const float* y, float* firstDerivative, float* secondDerivative, int n) {
    if (n < 2) return QAL_OK;
    differenceStep(x, y, firstDerivative, n);
    differenceStep(x, firstDerivative, secondDerivative, n);
    return QAL_OK;
}

// Chord ends for sample i, with half = gapWidth / 2 (toward zero):
//   rightFar   i + half + chordWidth, at most n-1
//   rightNear  i + half,              at most n-2
//   leftFar    i - half - chordWidth, at least 0
//   leftNear   i - half,              at least 1
// so each end keeps two distinct samples: the last two on the right, the first two on the
// left (also at i = 0, where they lie right of the point). A chordWidth of 0 makes a
// chord of one sample, 0/0 = NaN. The sums are taken in 64 bits so that no width
// overflows the index. One sample, a negative half or a negative chordWidth would reach
// outside the curve: nothing is written then.
int QAL_Kruemmung2(const float* x, const float* y, float* result, int n, int gapWidth, int chordWidth) {
    const int half = gapWidth / 2;
    if (n < 2 || half < 0 || chordWidth < 0) return QAL_OK;
    const long long last = n - 1;
    for (int i = 0; i < n; ++i) {
        const long long right = static_cast<long long>(i) + half;
        const long long left = static_cast<long long>(i) - half;
        const long long rightFar = right + chordWidth >= n ? last : right + chordWidth;
        const long long rightNear = right >= last ? last - 1 : right;
        const long long leftFar = left - chordWidth <= 0 ? 0 : left - chordWidth;
        const long long leftNear = left <= 1 ? 1 : left;
        const double rightSlope = chordSlope(x, y, static_cast<int>(rightNear), static_cast<int>(rightFar));
        const double leftSlope = chordSlope(x, y, static_cast<int>(leftFar), static_cast<int>(leftNear));
        result[i] = static_cast<float>(rightSlope - leftSlope);
    }
    return QAL_OK;
}
