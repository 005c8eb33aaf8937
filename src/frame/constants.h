// The library's recurring numbers, named once. Every comparison against them states
// its own sense at the place of use, since equality and NaN are decided there.
#ifndef QAL_SRC_FRAME_CONSTANTS_H
#define QAL_SRC_FRAME_CONSTANTS_H

#include <cfloat>

// Every float step must round to float and every double step to double, with no wider
// intermediate; the exact results depend on it.
static_assert(FLT_EVAL_METHOD == 0, "QalLib needs IEEE float/double evaluation (FLT_EVAL_METHOD 0)");

namespace qal::detail {

// Below this magnitude a value counts as zero (denominators, interval widths, clamps).
inline constexpr double kNumericalZero = 1e-25;
// The largest accepted magnitude; as an output it means "no value", as a signed start
// value it opens a comparison loop.
inline constexpr double kNoValue = 1e25;
// Stands in for a quotient whose divisor is numerically zero.
inline constexpr double kZeroDivisorSubstitute = 1e15;
// The largest point count of the routines that bound it (splines, polynomial and
// rational interpolation, point derivatives); one more is an impossible count.
inline constexpr int kMaxCurvePoints = 10000;
// A level crossing is placed on the line through exactly the two samples around it.
inline constexpr int kPairSize = 2;

// Float images of the limits (bits 0x69045951 and 0x15F79688). The first lies below
// 1e25 and the second above 1e-25, so comparisons against a limit stay in double.
inline constexpr float kNoValueFloat = 1e25f;
inline constexpr float kNumericalZeroFloat = 1e-25f;

}  // namespace qal::detail

#endif  // QAL_SRC_FRAME_CONSTANTS_H
