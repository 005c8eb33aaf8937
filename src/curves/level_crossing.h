// The pair test of the threshold search, shared with the whole-curve crossing helper.
#ifndef QAL_SRC_CURVES_LEVEL_CROSSING_H
#define QAL_SRC_CURVES_LEVEL_CROSSING_H

namespace qal::detail {

// On opposite sides of the level, or at least one exactly on it; a NaN is no hit.
inline bool crossesLevel(double a, double b, double level) noexcept { return 0.0 >= (a - level) * (b - level); }

}  // namespace qal::detail

#endif  // QAL_SRC_CURVES_LEVEL_CROSSING_H
