#include <cmath>

#include "curves/curve_lanes.h"
#include "curves/level_crossing.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::crossesLevel;
using qal::detail::kPairSize;

// Scans run toward the first sample with this direction, toward the last with any other.
constexpr int kBackward = 2;
// With direction 1 the derived levels take their base values from the ends as well.
constexpr int kForwardFromEnds = 1;
// Report the point on the line through the two samples of the hit pair.
constexpr int kResultOnLine = 2;

// Level kinds; any other value is an absolute level.
constexpr int kPercentOfFarEnd = 2;
constexpr int kOffsetFromNearEnd = 3;
constexpr int kPercentOfRise = 4;
constexpr int kPercentOfNearEnd = 5;

// The single-precision constant nearest 0.01 (bits 0x3C23D70A) that turns percent into a
// factor; the level is rounded as float with it.
constexpr float kPerCent = 0.01f;

// Every search opens alike: bad pointers or no sample at all are refused untouched; then
// the first sample stands in the outputs, also when a single sample is too few.
int openFrame(const double* x, const double* y, int n, double* xOut, double* yOut) noexcept {
    if (!x || !y || !xOut || !yOut || n < 1) return QAL_ERR_PARAMETER;
    *yOut = y[0];
    *xOut = x[0];
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    return QAL_OK;
}

// The level in single precision, each sample narrowed to float before use and every
// product and sum a float operation taken from the left, then widened for the scan.
// nearValue and farValue are the samples at the start and the end of the scan, both 0 for
// a direction other than 1 or 2. The rise is formed in double and narrowed once.
double thresholdLevel(const double* y, int n, int thresholdKind, int direction, float threshold,
                      float percent) noexcept {
    float nearValue = 0.0f;
    float farValue = 0.0f;
    if (direction == kForwardFromEnds) {
        nearValue = static_cast<float>(y[0]);
        farValue = static_cast<float>(y[n - 1]);
    } else if (direction == kBackward) {
        nearValue = static_cast<float>(y[n - 1]);
        farValue = static_cast<float>(y[0]);
    }
    float level = threshold;
    switch (thresholdKind) {
        case kPercentOfFarEnd:
            level = farValue * kPerCent * percent;
            break;
        case kOffsetFromNearEnd:
            level = threshold + nearValue;
            break;
        case kPercentOfRise: {
            const float rise = static_cast<float>(std::fabs(y[n - 1] - y[0]));
            level = rise * kPerCent * percent + nearValue;
            break;
        }
        case kPercentOfNearEnd:
            level = nearValue * kPerCent * percent;
            break;
        default:
            break;
    }
    return static_cast<double>(level);
}

}  // namespace

// Boundary rules of both scans:
//   a sample exactly at the level        a hit, in the first pair in scan order holding it
//   NaN sample                           its pairs are no hits; the scan goes on
//   forward (direction not 2)            pairs (i, i+1) for i = 0 .. n-3: the last pair is
//                                        never examined, so n = 2 never finds anything
//   backward (direction 2)               pairs (i-1, i) for i = n-1 .. 1, all of them; a hit
//                                        in the last pair reports the last sample even on
//                                        the line
//   no hit                               QAL_ERR_NOT_FOUND; the far-end sample when the curve
//                                        ends short of the level, on it, or where it began,
//                                        else the start sample
int QAL_FindX_at_YThreshold(const double* x, const double* y, int n, int thresholdKind, int direction,
                            int resultMode, float threshold, float percent, double* xOut, double* yOut) {
    const int frame = openFrame(x, y, n, xOut, yOut);
    if (frame != QAL_OK) return frame;
    const double level = thresholdLevel(y, n, thresholdKind, direction, threshold, percent);

    // The lanes test whole blocks of pairs and tell where the one-at-a-time scan goes on:
    // at the first hit in scan order, or past the pairs they found without one. That scan
    // then tests the hit again and reports it.
    const qal::detail::CurveLanes& lanes = qal::detail::curveLanes();
    if (direction == kBackward) {
        *yOut = y[n - 1];
        *xOut = x[n - 1];
        const int from = lanes.lastCrossing != nullptr ? lanes.lastCrossing(y, n - 1, level) : n - 1;
        for (int i = from; i >= 1; --i) {
            if (!crossesLevel(y[i], y[i - 1], level)) continue;
            if (resultMode == kResultOnLine && i < n - 1) {
                *xOut = QAL_CalcLinY(level, x + i - 1, y + i - 1, kPairSize);
                *yOut = level;
                return QAL_OK;
            }
            *yOut = y[i];
            *xOut = x[i];
            return QAL_OK;
        }
        // To the far end when the curve, seen from its last sample, ends short of the level,
        // on it, or level with where it began.
        if (0.0 >= (y[0] - y[n - 1]) * (y[n - 1] - level)) {
            *yOut = y[0];
            *xOut = x[0];
        }
        return QAL_ERR_NOT_FOUND;
    }

    // The frame's outputs are the forward scan's start; written again in the scan's own
    // order, which shows only when an output shares storage with an input.
    *yOut = y[0];
    *xOut = x[0];
    const int from = lanes.firstCrossing != nullptr ? lanes.firstCrossing(y, n - 2, level) : 0;
    for (int i = from; i < n - 2; ++i) {
        if (!crossesLevel(y[i + 1], y[i], level)) continue;
        if (resultMode == kResultOnLine) {
            *xOut = QAL_CalcLinY(level, x + i, y + i, kPairSize);
            *yOut = level;
            return QAL_OK;
        }
        *yOut = y[i];
        *xOut = x[i];
        return QAL_OK;
    }
    // To the far end when the curve ends short of the level, on it, or level with y[0].
    if (0.0 >= (y[n - 1] - level) * (y[n - 1] - y[0])) {
        *yOut = y[n - 1];
        *xOut = x[n - 1];
    }
    return QAL_ERR_NOT_FOUND;
}

// Boundary rules (the scan assumes ascending abscissae):
//   distance        |xDiff| as float, widened; a negative xDiff counts as its magnitude
//   forward         target x[0] + distance; the first sample at or beyond it is the hit
//   backward (2)    target x[n-1] - distance; the first sample at or below it, from the end
//   exactly on a    a hit at that sample; on the line (resultMode 2, i > 0) the value is
//   sample          that of the line through i-1 and i there
//   NaN abscissa    never a hit
//   no hit          QAL_ERR_OUT_OF_RANGE, the target and the y at the far end of the scan
int QAL_GetY_at_XDiff(const double* x, const double* y, int n, int /*reserved*/, int direction, int resultMode,
                      float xDiff, double* xOut, double* yOut) {
    const int frame = openFrame(x, y, n, xOut, yOut);
    if (frame != QAL_OK) return frame;
    const double distance = static_cast<double>(std::fabs(xDiff));

    int hit = -1;
    double target;
    if (direction == kBackward) {
        *yOut = y[0];
        target = x[n - 1] - distance;
        *xOut = target;
        for (int i = n - 1; i >= 0 && hit < 0; --i) {
            if (target >= x[i]) hit = i;
        }
    } else {
        *yOut = y[n - 1];
        target = distance + x[0];
        *xOut = target;
        for (int i = 0; i < n && hit < 0; ++i) {
            if (x[i] >= target) hit = i;
        }
    }
    if (hit < 0) return QAL_ERR_OUT_OF_RANGE;
    // Both directions read the line through the hit and the sample before it; backward
    // that line is continued past the hit, since the target lies at or above it.
    if (resultMode == kResultOnLine && hit != 0) {
        *yOut = QAL_CalcLinX(target, x + hit - 1, y + hit - 1, kPairSize);
        return QAL_OK;
    }
    *yOut = y[hit];
    *xOut = x[hit];
    return QAL_OK;
}

int QAL_Find_LastPoint(const double* x, const double* y, int n, int /*reserved1*/, int /*reserved2*/, double* xOut,
                       double* yOut) {
    const int frame = openFrame(x, y, n, xOut, yOut);
    if (frame != QAL_OK) return frame;
    *yOut = y[n - 1];
    *xOut = x[n - 1];
    return QAL_OK;
}

namespace {

using LaneExtreme = qal::detail::LaneScan (*)(const double*, int);

// Whole-curve extreme against what stands in *yOut, the frame's first sample to begin
// with. `reaches(a, b)` holds equality, so of equal samples the last one wins; a NaN
// y[0] matches nothing (QAL_ERR_NOT_FOUND with the first sample) and a later NaN is
// passed over. The lanes run the search over a leading part of the curve and name the
// sample it ends that part on; the one-at-a-time loop takes over from there. Since the
// loop compares with *yOut, the lanes stay off when an output lies in the curve or both
// outputs share one cell.
template <class Reaches>
int wholeCurveExtreme(const double* x, const double* y, int n, double* xOut, double* yOut, LaneExtreme lanes,
                      Reaches reaches) {
    int status = openFrame(x, y, n, xOut, yOut);
    if (status != QAL_OK) return status;
    status = QAL_ERR_NOT_FOUND;
    int i = 0;
    if (lanes != nullptr && qal::detail::outputsApart(x, y, n, xOut, yOut)) {
        const qal::detail::LaneScan scan = lanes(y, n);
        if (scan.found >= 0) {
            *yOut = y[scan.found];
            *xOut = x[scan.found];
            status = QAL_OK;
        }
        i = scan.resume;
    }
    for (; i < n; ++i) {
        if (reaches(y[i], *yOut)) {
            *yOut = y[i];
            *xOut = x[i];
            status = QAL_OK;
        }
    }
    return status;
}

}  // namespace

int QAL_Calc_AbsMaximum(const double* x, const double* y, int n, double* xOut, double* yOut) {
    return wholeCurveExtreme(x, y, n, xOut, yOut, qal::detail::curveLanes().lastMaximum,
                             [](double sample, double best) { return sample >= best; });
}

int QAL_Calc_AbsMinimum(const double* x, const double* y, int n, double* xOut, double* yOut) {
    return wholeCurveExtreme(x, y, n, xOut, yOut, qal::detail::curveLanes().lastMinimum,
                             [](double sample, double best) { return best >= sample; });
}
