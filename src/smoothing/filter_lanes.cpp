#include "frame/cpu_dispatch.h"
#include "frame/lanes.h"
#include "smoothing/filter_step.h"

namespace {

using qal::detail::filterOneAtATime;

#if QAL_X86_LANES

using qal::detail::lanes::Doubles;
using qal::detail::lanes::load;
using qal::detail::lanes::store;

// Outputs i..i+K*W-1, every tap inside the data. Lane k*W+l forms output i+k*W+l in the
// order of filteredSample: in[i] * coef[half], then for j = 1..half the left product, then
// the right one, each added in turn; no tap is missing, so there is nothing to divide.
// Each lane's additions form a serial chain, so the K vectors are independent chains
// interleaved to keep the adder busy while each one waits for its last sum.
template <int W, int K, class T>
QAL_LANE_KERNEL void filterBlock(const T* in, T* out, int i, const double* coef, int half) noexcept {
    Doubles<W> value[static_cast<unsigned>(K)];
    Doubles<W> taps;
    for (int k = 0; k < K; ++k) {
        load<W>(taps, in + i + k * W);
        value[k] = taps * coef[half];
    }
    for (int j = 1; j <= half; ++j) {
        const double left = coef[half - j];
        const double right = coef[half + j];
        for (int k = 0; k < K; ++k) {
            load<W>(taps, in + i + k * W - j);
            value[k] += left * taps;
            load<W>(taps, in + i + k * W + j);
            value[k] += right * taps;
        }
    }
    for (int k = 0; k < K; ++k) store<W>(out + i + k * W, value[k]);
}

// The interior samples from..to in blocks of K vectors, then single vectors; returns the
// first sample left over (fewer than W). K is as many chains as the level's registers hold
// without spilling.
template <int W, int K, class T>
QAL_LANE_KERNEL int filterInteriorLanes(const T* in, T* out, int from, int to, const double* coef,
                                        int half) noexcept {
    constexpr int kChains = K;
    int i = from;
    for (; to - i >= kChains * W - 1; i += kChains * W) filterBlock<W, kChains>(in, out, i, coef, half);
    for (; to - i >= W - 1; i += W) filterBlock<W, 1>(in, out, i, coef, half);
    return i;
}

template <class T>
QAL_TARGET_SSE2 int filterInteriorSse2(const T* in, T* out, int from, int to, const double* coef, int half) noexcept {
    return filterInteriorLanes<2, 4>(in, out, from, to, coef, half);
}
template <class T>
QAL_TARGET_AVX2 int filterInteriorAvx2(const T* in, T* out, int from, int to, const double* coef, int half) noexcept {
    return filterInteriorLanes<4, 6>(in, out, from, to, coef, half);
}
template <class T>
QAL_TARGET_AVX512 int filterInteriorAvx512(const T* in, T* out, int from, int to, const double* coef,
                                           int half) noexcept {
    return filterInteriorLanes<8, 8>(in, out, from, to, coef, half);
}

#endif  // QAL_X86_LANES

// The interior samples from..to that the active level forms in lanes; returns the first
// one it left to the caller.
template <class T>
int filterInterior([[maybe_unused]] const T* in, [[maybe_unused]] T* out, int from, [[maybe_unused]] int to,
                   [[maybe_unused]] const double* coef, [[maybe_unused]] int half) noexcept {
#if QAL_X86_LANES
    using qal::detail::InstructionSet;
    switch (qal::detail::activeInstructionSet()) {
        case InstructionSet::kAvx512:
            return filterInteriorAvx512(in, out, from, to, coef, half);
        case InstructionSet::kAvx2:
            return filterInteriorAvx2(in, out, from, to, coef, half);
        case InstructionSet::kSse2:
            return filterInteriorSse2(in, out, from, to, coef, half);
        case InstructionSet::kScalar:
            break;
    }
#endif
    return from;
}

// The interior is half..n-1-half: there no tap is missing. Written so that no index sum
// can overflow.
template <class T>
void filterSeparate(const T* in, T* out, int n, int from, int to, const double* coef, int half) noexcept {
    const int innerFrom = from > half ? from : half;
    const int innerTo = to < n - 1 - half ? to : n - 1 - half;
    if (innerFrom > innerTo) {
        filterOneAtATime(in, out, n, from, to, coef, half);
        return;
    }
    filterOneAtATime(in, out, n, from, innerFrom - 1, coef, half);
    const int rest = filterInterior(in, out, innerFrom, innerTo, coef, half);
    filterOneAtATime(in, out, n, rest, to, coef, half);
}

}  // namespace

namespace qal::detail {

void filterSeparateArrays(const double* in, double* out, int n, int from, int to, const double* coef,
                          int half) noexcept {
    filterSeparate(in, out, n, from, to, coef, half);
}

void filterSeparateArrays(const float* in, float* out, int n, int from, int to, const double* coef,
                          int half) noexcept {
    filterSeparate(in, out, n, from, to, coef, half);
}

}  // namespace qal::detail
