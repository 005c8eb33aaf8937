#include "curves/curve_lanes.h"

#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include "curves/mean_points.h"
#include "frame/constants.h"

// Each instruction set gets its own copy of the lane code, compiled for it alone inside a
// target region; only the copy of the set chosen at run time is ever called. Nothing here
// enables fused multiply-add, and the build's -ffp-contract=off holds inside the regions.
namespace qal::detail {
namespace {

namespace sse2 {
constexpr int kLanes = 2;
typedef double Doubles __attribute__((vector_size(16)));
using Mask = decltype(Doubles{} < Doubles{});
inline std::uint32_t laneBits(Mask m) noexcept {
    return static_cast<std::uint32_t>(_mm_movemask_pd(reinterpret_cast<__m128d>(m)));
}
constexpr int kWindowVectors = 4;
constexpr int kScanVectors = 4;
#include "curves/curve_lanes_body.h"
}  // namespace sse2

#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2 {
constexpr int kLanes = 4;
typedef double Doubles __attribute__((vector_size(32)));
using Mask = decltype(Doubles{} < Doubles{});
inline std::uint32_t laneBits(Mask m) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_pd(reinterpret_cast<__m256d>(m)));
}
constexpr int kWindowVectors = 2;
constexpr int kScanVectors = 4;
#include "curves/curve_lanes_body.h"
}  // namespace avx2
#pragma GCC pop_options

#pragma GCC push_options
#pragma GCC target("avx512f")
namespace avx512f {
constexpr int kLanes = 8;
typedef double Doubles __attribute__((vector_size(64)));
using Mask = decltype(Doubles{} < Doubles{});
inline std::uint32_t laneBits(Mask m) noexcept {
    const __m512i bits = reinterpret_cast<__m512i>(m);
    return static_cast<std::uint32_t>(_mm512_test_epi64_mask(bits, bits));
}
constexpr int kWindowVectors = 2;
constexpr int kScanVectors = 4;
#include "curves/curve_lanes_body.h"
}  // namespace avx512f
#pragma GCC pop_options

const CurveLanes kNoLanes{0, nullptr, nullptr, nullptr, nullptr, nullptr};

}  // namespace

// TEMPORARY until the dispatch layer lands.
const CurveLanes& curveLanes() noexcept {
    static const CurveLanes& chosen = __builtin_cpu_supports("avx512f") ? avx512f::kCurveLanes
                                      : __builtin_cpu_supports("avx2")  ? avx2::kCurveLanes
                                                                        : sse2::kCurveLanes;
    (void)kNoLanes;
    return chosen;
}

}  // namespace qal::detail
