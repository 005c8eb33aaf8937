#include <climits>
#include <cmath>

#include "frame/allocator.h"
#include "qal/qal.h"

namespace {

using qal::detail::WorkArray;

// The slope given to a segment of no width (or of NaN width) instead of a division.
constexpr float kZeroWidthSlope = 1000.0f;
// The extended curve has two more points at each end.
constexpr int kExtension = 2;

// Slope of the segment from extended point j to j + 1, every step in float. The width is
// widened and compared `> 0.0`: any non-zero width divides, however small, and a zero or
// NaN width fails the test and takes the fixed slope.
float segmentSlope(const float* extX, const float* extY, int j) noexcept {
    const float width = extX[j + 1] - extX[j];
    if (!(std::fabs(static_cast<double>(width)) > 0.0)) return kZeroWidthSlope;
    return (extY[j + 1] - extY[j]) / width;
}

// Slope at a point from the segments m1, m2 | m3, m4 around it. Equal pairs are exact
// float comparisons (a NaN equals nothing) and the only way that both weights vanish.
// The weights are the float differences widened; the weighted mean is double and
// narrowed to float once.
float pointSlope(float m1, float m2, float m3, float m4) noexcept {
    if (m1 == m2 && m3 == m4) return (m3 + m2) * 0.5f;
    const double w1 = std::fabs(static_cast<double>(m2 - m1));
    const double w2 = std::fabs(static_cast<double>(m4 - m3));
    return static_cast<float>((w1 * static_cast<double>(m3) + w2 * static_cast<double>(m2)) / (w1 + w2));
}

}  // namespace

// Decisions beyond the told steps: null arrays give QAL_ERR_PARAMETER and n < 3
// QAL_ERR_TOO_FEW_POINTS, before anything is allocated, read or written; a failed
// allocation gives QAL_ERR_MEMORY. slopes is untouched on every failure.
int QAL_AkimaSub(const float* x, const float* y, float* slopes, int n) {
    if (!x || !y || !slopes) return QAL_ERR_PARAMETER;
    if (n < 3) return QAL_ERR_TOO_FEW_POINTS;
    // n + 4 floats would need more bytes than a 32-bit size can hold, so the allocation
    // would fail; say so without forming n + 4, which would overflow int.
    if (n > INT_MAX - 2 * kExtension) return QAL_ERR_MEMORY;
    const int points = n + 2 * kExtension;
    const WorkArray<float> extX(points);
    if (!extX) return QAL_ERR_MEMORY;
    const WorkArray<float> extY(points);
    if (!extY) return QAL_ERR_MEMORY;
    const WorkArray<float> segSlope(points - 1);
    if (!segSlope) return QAL_ERR_MEMORY;

    // Written `!(next >= previous)` so that a NaN on either side fails; equal abscissae pass.
    for (int i = 0; i + 1 < n; ++i) {
        if (!(x[i + 1] >= x[i])) return QAL_ERR_ORDER;
    }

    float* const ex = extX.get();
    float* const ey = extY.get();
    float* const s = segSlope.get();
    for (int i = 0; i < n; ++i) {
        ex[i + kExtension] = x[i];
        ey[i + kExtension] = y[i];
    }

    // Abscissae beyond the ends, each float expression taken from the left.
    ex[0] = ex[2] * 2.0f - ex[4];
    ex[1] = ex[2] + ex[3] - ex[4];
    ex[n + 2] = ex[n] + ex[n + 1] - ex[n - 1];
    ex[n + 3] = ex[n + 1] * 2.0f - ex[n - 1];

    for (int j = 2; j <= n; ++j) s[j] = segmentSlope(ex, ey, j);

    // Each outer slope continues the two beside it (twice the nearer minus the farther);
    // the ordinate is placed to give it, then the slope is taken by the segment rule, so
    // that a zero-width outer segment gets 1000.0 too. The order matters: each step reads
    // the one before.
    ey[1] = (s[3] - s[2] * 2.0f) * (ex[2] - ex[1]) + ey[2];
    s[1] = segmentSlope(ex, ey, 1);
    ey[0] = (s[2] - s[1] * 2.0f) * (ex[1] - ex[0]) + ey[1];
    s[0] = segmentSlope(ex, ey, 0);

    ey[n + 2] = (ex[n + 2] - ex[n + 1]) * (s[n] * 2.0f - s[n - 1]) + ey[n + 1];
    s[n + 1] = segmentSlope(ex, ey, n + 1);
    ey[n + 3] = (ex[n + 3] - ex[n + 2]) * (s[n + 1] * 2.0f - s[n]) + ey[n + 2];
    s[n + 2] = segmentSlope(ex, ey, n + 2);

    for (int i = 0; i < n; ++i) slopes[i] = pointSlope(s[i], s[i + 1], s[i + 2], s[i + 3]);
    return QAL_OK;
}
