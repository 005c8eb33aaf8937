// Vector lanes for the dispatched routines: W doubles side by side, W = 2 (SSE2), 4 (AVX2)
// or 8 (AVX-512F).
//
// A routine writes its lane kernel once, as a template on W marked QAL_LANE_KERNEL, and
// calls it from one small entry function per level marked QAL_TARGET_SSE2, QAL_TARGET_AVX2
// or QAL_TARGET_AVX512. The kernel is always inlined, so it is compiled for the
// instruction set of the entry that calls it; nothing else in the library is. Lane
// arithmetic is element by element, IEEE double, with the build's -ffp-contract=off in
// force inside the target functions too: a * b + c stays two roundings, never a fused
// multiply-add (no target here enables "fma").
//
// The helpers take vectors by reference and return none by value: a vector returned by
// value from a function of baseline x86-64 would be passed differently from one of a
// target function.
//
// Comparisons of these vectors work, but GCC 12 turns an 8-lane comparison into one
// comparison per lane (AVX-512F alone has no mask-to-vector move), and the 8-lane float
// widening into two halves. Where that matters, an entry writes those steps with its
// level's intrinsics and keeps only the arithmetic shared (see
// interpolation/resampling_lanes.cpp).
#ifndef QAL_SRC_FRAME_LANES_H
#define QAL_SRC_FRAME_LANES_H

#include "frame/cpu_dispatch.h"

// Also for arithmetic shared between the scalar path and the lanes, written once as a
// template on the value type (double or Doubles<W>).
#if defined(__GNUC__) || defined(__clang__)
#define QAL_LANE_KERNEL inline __attribute__((always_inline))
#else
#define QAL_LANE_KERNEL inline
#endif

#if QAL_X86_LANES

#include <cstring>

#define QAL_TARGET_SSE2 __attribute__((target("sse2")))
#define QAL_TARGET_AVX2 __attribute__((target("avx2")))
#define QAL_TARGET_AVX512 __attribute__((target("avx512f")))

namespace qal::detail::lanes {

template <int W>
struct LaneTypes;
template <>
struct LaneTypes<2> {
    typedef double Doubles __attribute__((vector_size(16)));
    typedef float Floats __attribute__((vector_size(8)));
};
template <>
struct LaneTypes<4> {
    typedef double Doubles __attribute__((vector_size(32)));
    typedef float Floats __attribute__((vector_size(16)));
};
template <>
struct LaneTypes<8> {
    typedef double Doubles __attribute__((vector_size(64)));
    typedef float Floats __attribute__((vector_size(32)));
};

// W doubles; `scalar * lanes` multiplies every lane by the scalar.
template <int W>
using Doubles = typename LaneTypes<W>::Doubles;
template <int W>
using Floats = typename LaneTypes<W>::Floats;

// from[0..W-1], any alignment.
template <int W>
QAL_LANE_KERNEL void load(Doubles<W>& lanes, const double* from) noexcept {
    std::memcpy(&lanes, from, sizeof lanes);
}

// from[0..W-1] widened to double, which is exact.
template <int W>
QAL_LANE_KERNEL void load(Doubles<W>& lanes, const float* from) noexcept {
    Floats<W> narrow;
    std::memcpy(&narrow, from, sizeof narrow);
    lanes = __builtin_convertvector(narrow, Doubles<W>);
}

template <int W>
QAL_LANE_KERNEL void store(double* to, const Doubles<W>& lanes) noexcept {
    std::memcpy(to, &lanes, sizeof lanes);
}

// Each lane rounded once to float, in the current rounding mode, as static_cast<float> does.
template <int W>
QAL_LANE_KERNEL void store(float* to, const Doubles<W>& lanes) noexcept {
    const Floats<W> narrow = __builtin_convertvector(lanes, Floats<W>);
    std::memcpy(to, &narrow, sizeof narrow);
}

}  // namespace qal::detail::lanes

#endif  // QAL_X86_LANES

#endif  // QAL_SRC_FRAME_LANES_H
