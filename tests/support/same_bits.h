// Bit equality for results that must be exact: -0.0 differs from +0.0, any NaN equals
// any NaN, and a mismatch is reported in hexfloat.
#ifndef QAL_TESTS_SUPPORT_SAME_BITS_H
#define QAL_TESTS_SUPPORT_SAME_BITS_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

namespace qal::test {

template <class T>
::testing::AssertionResult SameBits(T expected, T actual) {
    static_assert(std::is_floating_point_v<T> && (sizeof(T) == 4 || sizeof(T) == 8), "float or double");
    std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t> e, a;
    std::memcpy(&e, &expected, sizeof e);
    std::memcpy(&a, &actual, sizeof a);
    if (e == a || (std::isnan(expected) && std::isnan(actual))) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::hexfloat << "expected " << expected << ", got " << actual;
}

// Two results at once (a point, or a line's intercept and slope), each to the bit.
template <class T>
::testing::AssertionResult SamePoint(T expectedX, T expectedY, T x, T y) {
    if (!SameBits(expectedX, x)) return SameBits(expectedX, x) << " in the first";
    return SameBits(expectedY, y) << " in the second";
}

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
// Stands in an output that a failing call must leave alone.
inline constexpr double kUntouched = -123.25;

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_SAME_BITS_H
