#include <cmath>

#include "curves/mean_points.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kMaxNewtonSteps;
using qal::detail::kNoValue;
using qal::detail::kNumericalZero;
using qal::detail::kSlopeLevel;

// The parabola through the three mean points, kept in Lagrange form throughout: it is
// never expanded into powers of t, which would round differently.
struct MeanParabola {
    double x1, x2, x3;
    double w1, w2, w3;

    // Slope at t. Each bracket is formed from the left: 2t first, then the two
    // subtractions; the three terms are added from the left.
    double slope(double t) const noexcept {
        const double twoT = 2.0 * t;
        return w1 * (twoT - x2 - x3) + w2 * (twoT - x1 - x3) + w3 * (twoT - x1 - x2);
    }
    // Value at t; in each product the two brackets are multiplied first and the weight
    // applied last.
    double value(double t) const noexcept {
        return (t - x3) * (t - x2) * w1 + (t - x3) * (t - x1) * w2 + (t - x2) * (t - x1) * w3;
    }
};

// Mean of samples [first, first + count), each coordinate summed in index order from 0.0.
void meanOf(const double* x, const double* y, int first, int count, double& meanX, double& meanY) noexcept {
    double sumX = 0.0;
    double sumY = 0.0;
    for (int i = first; i < first + count; ++i) {
        sumX += x[i];
        sumY += y[i];
    }
    const double divisor = static_cast<double>(count);
    meanX = sumX / divisor;
    meanY = sumY / divisor;
}

// The four tests of a maximum (mirrored for a minimum), every one strict: curvature
// sign, middle mean beyond both outer means, all means on one side of zero, and the
// height demanded on at least one side.
bool acceptsMaximum(double curvature, double y1, double y2, double y3, double height) noexcept {
    return curvature < 0.0 && y2 > y1 && y2 > y3 && y2 * y1 > 0.0 && y3 * y2 > 0.0 &&
           (y2 - y1 > height || y2 - y3 > height);
}

bool acceptsMinimum(double curvature, double y1, double y2, double y3, double height) noexcept {
    return curvature > 0.0 && y2 < y1 && y2 < y3 && y2 * y1 > 0.0 && y3 * y2 > 0.0 &&
           (y1 - y2 > height || y3 - y2 > height);
}

}  // namespace

namespace qal::detail {

MeanPoints meanPoints(const double* x, const double* y, int third) noexcept {
    MeanPoints m{};
    meanOf(x, y, 0, third, m.x1, m.y1);
    meanOf(x, y, third, third, m.x2, m.y2);
    meanOf(x, y, 2 * third, third, m.x3, m.y3);
    return m;
}

int judgeMeanPoints(const MeanPoints& m, const double* x, const double* y, int n, double* xOut, double* yOut,
                    int* kindOut, int useVertex, float minHeightPercent) noexcept {
    // Written as `limit > distance` so that a NaN distance passes, and exactly 1e-25 too.
    if (kNumericalZero > std::fabs(m.x1 - m.x2) || kNumericalZero > std::fabs(m.x1 - m.x3) ||
        kNumericalZero > std::fabs(m.x2 - m.x3)) {
        return QAL_ERR_ZERO_DIVISION;
    }

    const MeanParabola p{m.x1,
                         m.x2,
                         m.x3,
                         m.y1 / ((m.x1 - m.x3) * (m.x1 - m.x2)),
                         m.y2 / ((m.x2 - m.x3) * (m.x2 - m.x1)),
                         m.y3 / ((m.x3 - m.x2) * (m.x3 - m.x1))};

    const double s1 = p.slope(p.x1);
    const double s3 = p.slope(p.x3);
    // A slope of exactly 1e-6 lies on neither side; NaN on none.
    if (!((s1 < kSlopeLevel && s3 > kSlopeLevel) || (s1 > kSlopeLevel && s3 < kSlopeLevel))) {
        return QAL_ERR_NOT_FOUND;
    }

    const double curvature = 2.0 * p.w2 + 2.0 * p.w1 + 2.0 * p.w3;  // added in this order
    // The flat outcome: success with no extremum in it, outputs at 0.0, no kind written.
    if (std::fabs(curvature) <= kSlopeLevel) return QAL_OK;

    // Newton steps on the slope from the first mean: the first step and at most 39
    // corrections. The correction is divided into d itself before it is subtracted.
    double t = p.x1 - s1 / curvature;
    double d = p.slope(t);
    for (int step = 1; std::fabs(d) >= kSlopeLevel && step < kMaxNewtonSteps; ++step) {
        d = d / curvature;
        t = t - d;
        d = p.slope(t);
    }
    if (!(std::fabs(d) < kSlopeLevel)) return QAL_ERR_NOT_FOUND;

    *xOut = t;
    *yOut = p.value(t);

    // The percentage is widened to double after |y2| / 100 has been formed.
    const double height = std::fabs(m.y2) / 100.0 * static_cast<double>(minHeightPercent);
    int kind;
    if (acceptsMaximum(curvature, m.y1, m.y2, m.y3, height)) {
        kind = QAL_EXTREMUM_MAX;
    } else if (acceptsMinimum(curvature, m.y1, m.y2, m.y3, height)) {
        kind = QAL_EXTREMUM_MIN;
    } else {
        return QAL_ERR_NOT_FOUND;
    }

    if (useVertex == 0) takeExtremeSample(x, y, n, kind, xOut, yOut);
    *kindOut = kind;
    return QAL_OK;
}

// Compared with what stands in *yOut: the first of equal samples wins and a NaN never
// does (strict tests), and the vertex abscissa stays when no sample beats the start value.
void takeExtremeSample(const double* x, const double* y, int n, int kind, double* xOut, double* yOut) noexcept {
    *yOut = kind == QAL_EXTREMUM_MAX ? -kNoValue : kNoValue;
    for (int i = 0; i < n; ++i) {
        if (kind == QAL_EXTREMUM_MAX ? y[i] > *yOut : y[i] < *yOut) {
            *yOut = y[i];
            *xOut = x[i];
        }
    }
}

}  // namespace qal::detail

// Ways out, with what stands in the outputs:
//   n not a positive multiple of 3       -> QAL_ERR_PARAMETER      0.0, 0.0
//   two mean abscissae closer than 1e-25 -> QAL_ERR_ZERO_DIVISION  0.0, 0.0
//   outer slopes not across +1e-6        -> QAL_ERR_NOT_FOUND      0.0, 0.0
//   |curvature| <= 1e-6 (flat)           -> QAL_OK                 0.0, 0.0, no kind
//   Newton steps do not settle           -> QAL_ERR_NOT_FOUND      0.0, 0.0
//   vertex not accepted                  -> QAL_ERR_NOT_FOUND      the vertex
//   accepted                             -> QAL_OK                 vertex or first extreme sample, kind
// A NaN sample makes every slope NaN, so it ends at the slope test.
int QAL_GetExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int* kindOut,
                    int useVertex, float minHeightPercent) {
    *yOut = 0.0;
    *xOut = 0.0;
    const int third = n / 3;
    if (n % 3 != 0 || n < 3) return QAL_ERR_PARAMETER;
    return qal::detail::judgeMeanPoints(qal::detail::meanPoints(x, y, third), x, y, n, xOut, yOut, kindOut,
                                        useVertex, minHeightPercent);
}
