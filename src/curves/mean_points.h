// The window test of QAL_GetExtremum, split at its three mean points so that the drivers
// can form the means of several windows at once and still judge each window alike.
#ifndef QAL_SRC_CURVES_MEAN_POINTS_H
#define QAL_SRC_CURVES_MEAN_POINTS_H

namespace qal::detail {

// Level of the slope and curvature tests; slopes are compared with +kSlopeLevel on
// both sides, not with a band around zero.
inline constexpr double kSlopeLevel = 1e-6;
// The first Newton step and at most 39 corrections.
inline constexpr int kMaxNewtonSteps = 40;

// The mean points of a run's three thirds.
struct MeanPoints {
    double x1, y1, x2, y2, x3, y3;
};

// Each third of x and y summed in index order in its own accumulator from 0.0, then
// divided by `third` as a double.
MeanPoints meanPoints(const double* x, const double* y, int third) noexcept;

// The rest of the test of the run x, y of n samples (a positive multiple of 3) from its
// mean points: the outcome, outputs and kind that QAL_GetExtremum gives, the outputs
// written in the same order (they hold 0.0 on entry).
int judgeMeanPoints(const MeanPoints& m, const double* x, const double* y, int n, double* xOut, double* yOut,
                    int* kindOut, int useVertex, float minHeightPercent) noexcept;

// The extreme sample of an accepted run of `kind` in place of its vertex: *yOut starts at
// the sentinel of the kind, and the first sample beyond what stands there takes both
// outputs; xOut keeps the vertex when none does.
void takeExtremeSample(const double* x, const double* y, int n, int kind, double* xOut, double* yOut) noexcept;

}  // namespace qal::detail

#endif  // QAL_SRC_CURVES_MEAN_POINTS_H
