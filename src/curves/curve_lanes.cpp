#include "curves/curve_lanes.h"

#include <cstdint>

#include "curves/mean_points.h"
#include "frame/constants.h"
#include "frame/cpu_dispatch.h"
#include "frame/lanes.h"

namespace {

using qal::detail::CurveLanes;
using qal::detail::LaneScan;
using qal::detail::WindowBlock;

#if QAL_X86_LANES

using qal::detail::kNumericalZero;
using qal::detail::kSlopeLevel;
using qal::detail::lanes::Doubles;
using qal::detail::lanes::load;
using qal::detail::lanes::store;

// The result of a lane comparison, held as unsigned 64-bit words, all ones or zero. Held
// as it comes (signed), GCC 12 turns `&` and `|` of two comparisons of 512-bit lanes into
// element-by-element code in a kernel that is compiled outside its target; as words they
// stay one vector instruction each.
template <int W>
struct MaskType;
template <>
struct MaskType<2> {
    typedef std::uint64_t Mask __attribute__((vector_size(16)));
};
template <>
struct MaskType<4> {
    typedef std::uint64_t Mask __attribute__((vector_size(32)));
};
template <>
struct MaskType<8> {
    typedef std::uint64_t Mask __attribute__((vector_size(64)));
};
template <int W>
using Mask = typename MaskType<W>::Mask;
#define QAL_HELD(comparison) reinterpret_cast<Mask<W>>(comparison)

// Every lane a copy of value, bit for bit (an added 0.0 would turn -0.0 into +0.0).
template <int W>
QAL_LANE_KERNEL void splat(Doubles<W>& lanes, double value) noexcept {
    for (int k = 0; k < W; ++k) lanes[k] = value;
}

// The magnitude by clearing the sign bit, as fabs does, -0.0 and NaN included.
template <int W>
QAL_LANE_KERNEL void magnitude(Doubles<W>& lanes, const Doubles<W>& of) noexcept {
    lanes = reinterpret_cast<Doubles<W>>(reinterpret_cast<Mask<W>>(of) & std::uint64_t{0x7FFFFFFFFFFFFFFF});
}

// Bit 8 * s + k set where lane k of sets[s] is set: up to four sets of lanes gathered in
// one reduction.
template <int W, unsigned S>
QAL_LANE_KERNEL std::uint32_t laneBits(const Mask<W> (&sets)[S]) noexcept {
    static_assert(W <= 8 && S <= 4, "each set in a byte of its own");
    Mask<W> weighted{};
    for (unsigned s = 0; s < S; ++s) {
        Mask<W> weights;
        for (int k = 0; k < W; ++k) weights[k] = std::uint64_t{1} << (8 * s + static_cast<unsigned>(k));
        weighted |= sets[s] & weights;
    }
    std::uint64_t bits = 0;
    for (int k = 0; k < W; ++k) bits |= weighted[k];
    return static_cast<std::uint32_t>(bits);
}

// Bit k set where lane k of a comparison's result is set.
template <int W>
QAL_LANE_KERNEL std::uint32_t laneBits(const Mask<W>& mask) noexcept {
    const Mask<W> sets[1] = {mask};
    return laneBits<W, 1>(sets);
}

// ---- Extremum windows ----
//
// Lane l of vector v holds the window that starts v * W + l samples after the first of the
// block. Every lane does the operations of meanPoints and judgeMeanPoints in their order
// and precision, so this code must be kept in step with them.

// The parabola through the mean points of W windows, one window per lane.
template <int W>
struct ParabolaLanes {
    Doubles<W> x1, x2, x3, w1, w2, w3;

    // Each bracket from the left: 2t first, then the two subtractions; terms added from the left.
    QAL_LANE_KERNEL void slope(Doubles<W>& s, const Doubles<W>& t) const noexcept {
        const Doubles<W> twoT = 2.0 * t;
        s = w1 * (twoT - x2 - x3) + w2 * (twoT - x1 - x3) + w3 * (twoT - x1 - x2);
    }
    // The two brackets multiplied first, the weight applied last.
    QAL_LANE_KERNEL void value(Doubles<W>& p, const Doubles<W>& t) const noexcept {
        p = (t - x3) * (t - x2) * w1 + (t - x3) * (t - x1) * w2 + (t - x2) * (t - x1) * w3;
    }
};

// The window test from the mean points on, for the W windows whose bits start at `first`:
// the distance test, the slopes across +1e-6, the flat outcome, the first Newton step and
// the four acceptance tests. A window whose first step leaves |slope| >= 1e-6 is handed
// back with its mean points for the further steps.
template <int W>
QAL_LANE_KERNEL void judgeMeanLanes(const Doubles<W> (&mean)[6], double minHeight, int first,
                                    WindowBlock& out) noexcept {
    const Doubles<W>& x1 = mean[0];
    const Doubles<W>& y1 = mean[1];
    const Doubles<W>& x2 = mean[2];
    const Doubles<W>& y2 = mean[3];
    const Doubles<W>& x3 = mean[4];
    const Doubles<W>& y3 = mean[5];
    Doubles<W> d12, d13, d23;
    magnitude<W>(d12, x1 - x2);
    magnitude<W>(d13, x1 - x3);
    magnitude<W>(d23, x2 - x3);
    // `limit > distance`: a NaN distance passes, and exactly 1e-25 too.
    const Mask<W> tooClose =
        QAL_HELD(kNumericalZero > d12) | QAL_HELD(kNumericalZero > d13) | QAL_HELD(kNumericalZero > d23);
    const ParabolaLanes<W> p{x1,
                             x2,
                             x3,
                             y1 / ((x1 - x3) * (x1 - x2)),
                             y2 / ((x2 - x3) * (x2 - x1)),
                             y3 / ((x3 - x2) * (x3 - x1))};
    Doubles<W> s1, s3;
    p.slope(s1, p.x1);
    p.slope(s3, p.x3);
    // A slope of exactly 1e-6 lies on neither side; NaN on none.
    const Mask<W> across = (QAL_HELD(s1 < kSlopeLevel) & QAL_HELD(s3 > kSlopeLevel)) |
                           (QAL_HELD(s1 > kSlopeLevel) & QAL_HELD(s3 < kSlopeLevel));
    // The windows that reach the curvature test; every set below lies inside it.
    const Mask<W> judged = ~tooClose & across;
    if (laneBits<W>(judged) == 0) return;

    const Doubles<W> curvature = 2.0 * p.w2 + 2.0 * p.w1 + 2.0 * p.w3;
    Doubles<W> size;
    magnitude<W>(size, curvature);
    const Mask<W> flat = judged & QAL_HELD(size <= kSlopeLevel);
    const Mask<W> curved = judged & ~flat;
    const Doubles<W> t = p.x1 - s1 / curvature;
    Doubles<W> d;
    p.slope(d, t);
    magnitude<W>(d, d);
    const Mask<W> unsettled = curved & QAL_HELD(d >= kSlopeLevel);
    Doubles<W> height;
    magnitude<W>(height, y2);
    height = height / 100.0 * minHeight;
    const Mask<W> sameSign = QAL_HELD(y2 * y1 > 0.0) & QAL_HELD(y3 * y2 > 0.0);
    const Mask<W> maximum =
        QAL_HELD(curvature < 0.0) & QAL_HELD(y2 > y1) & QAL_HELD(y2 > y3) & sameSign &
        (QAL_HELD(y2 - y1 > height) | QAL_HELD(y2 - y3 > height));
    const Mask<W> minimum =
        QAL_HELD(curvature > 0.0) & QAL_HELD(y2 < y1) & QAL_HELD(y2 < y3) & sameSign &
        (QAL_HELD(y1 - y2 > height) | QAL_HELD(y3 - y2 > height));
    // A NaN slope after the first step settles nothing: it is in neither set.
    const Mask<W> accepted = curved & QAL_HELD(d < kSlopeLevel) & (maximum | minimum);

    const Mask<W> sets[4] = {flat, accepted, accepted & maximum, unsettled};
    const std::uint32_t bits = laneBits<W, 4>(sets);
    const std::uint32_t acceptedBits = bits >> 8 & 0xFFu;
    const std::uint32_t unsettledBits = bits >> 24;
    out.flat |= (bits & 0xFFu) << first;
    out.accepted |= acceptedBits << first;
    out.maxima |= (bits >> 16 & 0xFFu) << first;
    out.unsettled |= unsettledBits << first;
    if (acceptedBits != 0) {
        store<W>(out.vertexX + first, t);
        Doubles<W> vertexY;
        p.value(vertexY, t);
        store<W>(out.vertexY + first, vertexY);
    }
    if (unsettledBits != 0) {
        for (int k = 0; k < 6; ++k) store<W>(out.means[k] + first, mean[k]);
    }
}

// K vectors of windows side by side: each third summed in index order from 0.0 in its own
// accumulator per lane, the 6 * K sums being independent chains that keep the adder busy.
template <int W, int K>
QAL_LANE_KERNEL void judgeWindowLanes(const double* x, const double* y, int size, float minHeightPercent,
                                      WindowBlock& out) noexcept {
    const int third = size / 3;
    Doubles<W> sum[static_cast<unsigned>(K)][6];
    for (int v = 0; v < K; ++v) {
        for (int k = 0; k < 6; ++k) splat<W>(sum[v][k], 0.0);
    }
    Doubles<W> sample;
    for (int i = 0; i < third; ++i) {
        for (int v = 0; v < K; ++v) {
            for (int k = 0; k < 3; ++k) {
                load<W>(sample, x + v * W + k * third + i);
                sum[v][2 * k] += sample;
                load<W>(sample, y + v * W + k * third + i);
                sum[v][2 * k + 1] += sample;
            }
        }
    }
    out.flat = out.accepted = out.maxima = out.unsettled = 0;
    const double divisor = static_cast<double>(third);
    // The percentage is widened to double after |y2| / 100 has been formed.
    const double minHeight = static_cast<double>(minHeightPercent);
    for (int v = 0; v < K; ++v) {
        Doubles<W> mean[6];
        for (int k = 0; k < 6; ++k) mean[k] = sum[v][k] / divisor;
        judgeMeanLanes<W>(mean, minHeight, v * W, out);
    }
}

// ---- Threshold pairs ----
//
// A pair y[p + 1], y[p] is a hit when 0.0 >= (y[p + 1] - level) * (y[p] - level), in
// double, as crossesLevel tests it; a NaN gives no hit. K vectors of W pairs are tested
// side by side, the block being searched lane by lane only once it holds a hit.

template <int W>
QAL_LANE_KERNEL std::uint32_t crossingBits(const double* y, int first, const Doubles<W>& level) noexcept {
    Doubles<W> upper, lower;
    load<W>(upper, y + first + 1);
    load<W>(lower, y + first);
    return laneBits<W>(QAL_HELD(0.0 >= (upper - level) * (lower - level)));
}

template <int W, int K>
QAL_LANE_KERNEL std::uint32_t blockHasCrossing(const double* y, int first, const Doubles<W>& level) noexcept {
    Doubles<W> upper, lower;
    load<W>(upper, y + first + 1);
    load<W>(lower, y + first);
    Mask<W> any = QAL_HELD(0.0 >= (upper - level) * (lower - level));
    for (int v = 1; v < K; ++v) {
        load<W>(upper, y + first + v * W + 1);
        load<W>(lower, y + first + v * W);
        any |= QAL_HELD(0.0 >= (upper - level) * (lower - level));
    }
    return laneBits<W>(any);
}

template <int W, int K>
QAL_LANE_KERNEL int firstCrossingLanes(const double* y, int pairs, double level) noexcept {
    Doubles<W> lane;
    splat<W>(lane, level);
    int p = 0;
    for (; p + K * W <= pairs; p += K * W) {
        if (blockHasCrossing<W, K>(y, p, lane) == 0) continue;
        for (int v = 0;; ++v) {
            const std::uint32_t bits = crossingBits<W>(y, p + v * W, lane);
            if (bits != 0) return p + v * W + __builtin_ctz(bits);
        }
    }
    return p;
}

template <int W, int K>
QAL_LANE_KERNEL int lastCrossingLanes(const double* y, int pairs, double level) noexcept {
    Doubles<W> lane;
    splat<W>(lane, level);
    int end = pairs;
    for (; end >= K * W; end -= K * W) {
        const int p = end - K * W;
        if (blockHasCrossing<W, K>(y, p, lane) == 0) continue;
        for (int v = K - 1;; --v) {
            const std::uint32_t bits = crossingBits<W>(y, p + v * W, lane);
            if (bits != 0) return p + v * W + (31 - __builtin_clz(bits)) + 1;
        }
    }
    return end;
}

// ---- Whole-curve extremes ----
//
// Each lane runs the one-at-a-time search over its own samples from y[0] on: a sample that
// reaches the lane's value (equality included) takes it and its index. Over the part
// scanned that search ends on the last sample equal to the extreme value, which is the
// latest index among the lanes that end on that value. A NaN reaches nothing; a NaN y[0]
// leaves every index at -1. Indices are held as doubles, exact far beyond any int.
template <int W, int K, bool kMaximum>
QAL_LANE_KERNEL LaneScan lastExtremeLanes(const double* y, int n) noexcept {
    const int end = n - n % (K * W);
    constexpr auto kVectors = static_cast<unsigned>(K);
    Doubles<W> best[kVectors], index[kVectors], position[kVectors], sample;
    for (int v = 0; v < K; ++v) {
        splat<W>(best[v], y[0]);
        splat<W>(index[v], -1.0);
        for (int k = 0; k < W; ++k) position[v][k] = static_cast<double>(v * W + k);
    }
    for (int i = 0; i < end; i += K * W) {
        for (int v = 0; v < K; ++v) {
            load<W>(sample, y + i + v * W);
            const auto reaches = kMaximum ? sample >= best[v] : best[v] >= sample;
            best[v] = reaches ? sample : best[v];
            index[v] = reaches ? position[v] : index[v];
            position[v] += static_cast<double>(K * W);
        }
    }
    double extreme = best[0][0];
    for (int v = 0; v < K; ++v) {
        for (int k = 0; k < W; ++k) {
            if (kMaximum ? best[v][k] > extreme : best[v][k] < extreme) extreme = best[v][k];
        }
    }
    double found = -1.0;
    for (int v = 0; v < K; ++v) {
        for (int k = 0; k < W; ++k) {
            if (best[v][k] == extreme && index[v][k] > found) found = index[v][k];
        }
    }
    return {end, static_cast<int>(found)};
}

// ---- One entry per instruction set ----

// Vectors side by side: two of windows keep twelve independent sums in flight (more
// measured no faster at any level); four of pairs or samples, one reduction per block.
constexpr int kWindowVectors = 2;
constexpr int kScanVectors = 4;

#define QAL_CURVE_LANE_ENTRIES(TARGET, W, SUFFIX)                                                               \
    TARGET void judgeWindows##SUFFIX(const double* x, const double* y, int size, float minHeightPercent,       \
                                     WindowBlock& out) noexcept {                                               \
        judgeWindowLanes<W, kWindowVectors>(x, y, size, minHeightPercent, out);                                 \
    }                                                                                                           \
    TARGET int firstCrossing##SUFFIX(const double* y, int pairs, double level) noexcept {                       \
        return firstCrossingLanes<W, kScanVectors>(y, pairs, level);                                            \
    }                                                                                                           \
    TARGET int lastCrossing##SUFFIX(const double* y, int pairs, double level) noexcept {                        \
        return lastCrossingLanes<W, kScanVectors>(y, pairs, level);                                             \
    }                                                                                                           \
    TARGET LaneScan lastMaximum##SUFFIX(const double* y, int n) noexcept {                                      \
        return lastExtremeLanes<W, kScanVectors, true>(y, n);                                                   \
    }                                                                                                           \
    TARGET LaneScan lastMinimum##SUFFIX(const double* y, int n) noexcept {                                      \
        return lastExtremeLanes<W, kScanVectors, false>(y, n);                                                  \
    }                                                                                                           \
    const CurveLanes kCurveLanes##SUFFIX{W * kWindowVectors, judgeWindows##SUFFIX, firstCrossing##SUFFIX,     \
                                         lastCrossing##SUFFIX,   lastMaximum##SUFFIX,  lastMinimum##SUFFIX};

QAL_CURVE_LANE_ENTRIES(QAL_TARGET_SSE2, 2, Sse2)
QAL_CURVE_LANE_ENTRIES(QAL_TARGET_AVX2, 4, Avx2)
QAL_CURVE_LANE_ENTRIES(QAL_TARGET_AVX512, 8, Avx512)

#undef QAL_CURVE_LANE_ENTRIES

#undef QAL_HELD

#endif  // QAL_X86_LANES

const CurveLanes kOneAtATime{0, nullptr, nullptr, nullptr, nullptr, nullptr};

}  // namespace

namespace qal::detail {

const CurveLanes& curveLanes() noexcept {
#if QAL_X86_LANES
    switch (activeInstructionSet()) {
        case InstructionSet::kAvx512:
            return kCurveLanesAvx512;
        case InstructionSet::kAvx2:
            return kCurveLanesAvx2;
        case InstructionSet::kSse2:
            return kCurveLanesSse2;
        case InstructionSet::kScalar:
            break;
    }
#endif
    return kOneAtATime;
}

}  // namespace qal::detail
