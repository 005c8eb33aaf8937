// Runs of new abscissae that fall into one cell of the knots, evaluated in vector lanes for
// the resampler (options 4 and 5 of QAL_InterpolFloatArrays).
#ifndef QAL_SRC_INTERPOLATION_RESAMPLING_LANES_H
#define QAL_SRC_INTERPOLATION_RESAMPLING_LANES_H

#include "frame/lanes.h"
#include "interpolation/spline_interval.h"

namespace qal::detail {

// The line of option 5 through the located point and the next, as QAL_LinFit gave it.
struct LineSegment {
    double intercept, slope;

    template <class V>
    QAL_LANE_KERNEL void valueAt(const V& v, V& value) const noexcept {
        value = slope * v + intercept;  // the product first
    }
};

// The points from, from + 1, ... below `to` of xNew, a vector of them at a time while every
// lane lies strictly between lower and upper: each lane's value as `cell` forms it, rounded
// once to float into yNew. Returns the first point not done, which is `from` at the scalar
// level and when fewer points than one vector remain. Made for SplineInterval and
// LineSegment cells, on float and on double abscissae.
template <class Cell, class Abscissa>
int resampleInCell(const Cell& cell, double lower, double upper, const Abscissa* xNew, float* yNew, int from,
                   int to) noexcept;

}  // namespace qal::detail

#endif  // QAL_SRC_INTERPOLATION_RESAMPLING_LANES_H
