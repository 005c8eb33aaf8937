#include "interpolation/resampling_lanes.h"

#include "frame/cpu_dispatch.h"

#if QAL_X86_LANES
#include <immintrin.h>
#endif

namespace {

#if QAL_X86_LANES

// Per level: W abscissae widened to double (exact), the test that every lane lies strictly
// between two bounds (ordered comparisons: a NaN lane fails), and W values each rounded once
// to float as static_cast<float> rounds it. Written with the level's own instructions: the
// generic vector comparison has no direct form at 8 lanes without AVX-512DQ.

QAL_TARGET_SSE2 inline void loadLanes(__m128d& v, const float* from) noexcept {
    v = _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
}
QAL_TARGET_SSE2 inline void loadLanes(__m128d& v, const double* from) noexcept { v = _mm_loadu_pd(from); }
QAL_TARGET_SSE2 inline bool everyLaneInside(double lower, const __m128d& v, double upper) noexcept {
    const __m128d inside = _mm_and_pd(_mm_cmplt_pd(_mm_set1_pd(lower), v), _mm_cmplt_pd(v, _mm_set1_pd(upper)));
    return _mm_movemask_pd(inside) == 0x3;
}
QAL_TARGET_SSE2 inline void storeLanes(float* to, const __m128d& v) noexcept {
    _mm_storel_pi(reinterpret_cast<__m64*>(to), _mm_cvtpd_ps(v));
}

QAL_TARGET_AVX2 inline void loadLanes(__m256d& v, const float* from) noexcept {
    v = _mm256_cvtps_pd(_mm_loadu_ps(from));
}
QAL_TARGET_AVX2 inline void loadLanes(__m256d& v, const double* from) noexcept { v = _mm256_loadu_pd(from); }
QAL_TARGET_AVX2 inline bool everyLaneInside(double lower, const __m256d& v, double upper) noexcept {
    const __m256d inside = _mm256_and_pd(_mm256_cmp_pd(_mm256_set1_pd(lower), v, _CMP_LT_OQ),
                                         _mm256_cmp_pd(v, _mm256_set1_pd(upper), _CMP_LT_OQ));
    return _mm256_movemask_pd(inside) == 0xF;
}
QAL_TARGET_AVX2 inline void storeLanes(float* to, const __m256d& v) noexcept { _mm_storeu_ps(to, _mm256_cvtpd_ps(v)); }

// The zero-masked conversions with every lane selected are the plain ones; GCC 12 warns
// about the undefined source vector of the unmasked forms.
QAL_TARGET_AVX512 inline void loadLanes(__m512d& v, const float* from) noexcept {
    v = _mm512_maskz_cvtps_pd(0xFF, _mm256_loadu_ps(from));
}
QAL_TARGET_AVX512 inline void loadLanes(__m512d& v, const double* from) noexcept { v = _mm512_loadu_pd(from); }
QAL_TARGET_AVX512 inline bool everyLaneInside(double lower, const __m512d& v, double upper) noexcept {
    return (_mm512_cmp_pd_mask(_mm512_set1_pd(lower), v, _CMP_LT_OQ) &
            _mm512_cmp_pd_mask(v, _mm512_set1_pd(upper), _CMP_LT_OQ)) == 0xFF;
}
QAL_TARGET_AVX512 inline void storeLanes(float* to, const __m512d& v) noexcept {
    _mm256_storeu_ps(to, _mm512_maskz_cvtpd_ps(0xFF, v));
}

// The run itself, the same at every level; V is the level's vector of doubles, on which
// the cell's template arithmetic works lane by lane.
#define QAL_RESAMPLE_RUN(V)                                                  \
    constexpr int kLanes = static_cast<int>(sizeof(V) / sizeof(double));     \
    int i = from;                                                            \
    for (; to - i >= kLanes; i += kLanes) {                                  \
        V v;                                                                 \
        loadLanes(v, xNew + i);                                              \
        if (!everyLaneInside(lower, v, upper)) break;                        \
        V value;                                                             \
        cell.valueAt(v, value);                                              \
        storeLanes(yNew + i, value);                                         \
    }                                                                        \
    return i

template <class Cell, class Abscissa>
QAL_TARGET_SSE2 int resampleSse2(const Cell& cell, double lower, double upper, const Abscissa* xNew, float* yNew,
                                 int from, int to) noexcept {
    QAL_RESAMPLE_RUN(__m128d);
}
template <class Cell, class Abscissa>
QAL_TARGET_AVX2 int resampleAvx2(const Cell& cell, double lower, double upper, const Abscissa* xNew, float* yNew,
                                 int from, int to) noexcept {
    QAL_RESAMPLE_RUN(__m256d);
}
template <class Cell, class Abscissa>
QAL_TARGET_AVX512 int resampleAvx512(const Cell& cell, double lower, double upper, const Abscissa* xNew, float* yNew,
                                     int from, int to) noexcept {
    QAL_RESAMPLE_RUN(__m512d);
}

#undef QAL_RESAMPLE_RUN

#endif  // QAL_X86_LANES

}  // namespace

namespace qal::detail {

template <class Cell, class Abscissa>
int resampleInCell([[maybe_unused]] const Cell& cell, [[maybe_unused]] double lower, [[maybe_unused]] double upper,
                   [[maybe_unused]] const Abscissa* xNew, [[maybe_unused]] float* yNew, int from,
                   [[maybe_unused]] int to) noexcept {
#if QAL_X86_LANES
    switch (activeInstructionSet()) {
        case InstructionSet::kAvx512:
            return resampleAvx512(cell, lower, upper, xNew, yNew, from, to);
        case InstructionSet::kAvx2:
            return resampleAvx2(cell, lower, upper, xNew, yNew, from, to);
        case InstructionSet::kSse2:
            return resampleSse2(cell, lower, upper, xNew, yNew, from, to);
        case InstructionSet::kScalar:
            break;
    }
#endif
    return from;
}

template int resampleInCell(const SplineInterval&, double, double, const float*, float*, int, int) noexcept;
template int resampleInCell(const SplineInterval&, double, double, const double*, float*, int, int) noexcept;
template int resampleInCell(const LineSegment&, double, double, const float*, float*, int, int) noexcept;
template int resampleInCell(const LineSegment&, double, double, const double*, float*, int, int) noexcept;

}  // namespace qal::detail
