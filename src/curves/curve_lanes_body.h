// The lane code of the curve searches, written once for any vector width. curve_lanes.cpp
// includes it once per instruction set, inside that set's target region and namespace,
// after defining there:
//   Doubles         a GCC vector of kLanes doubles
//   Mask            what comparing two Doubles gives
//   laneBits(m)     bit l set where lane l of m is set
//   kWindowVectors  vectors of windows judged side by side
//   kScanVectors    vectors of pairs or samples tested side by side
// Several independent vectors are kept in flight so that the latency of one addition or
// comparison is hidden behind the others. Every lane does exactly the operations of the
// one-at-a-time code, in its order and precision: the arithmetic below mirrors
// judgeMeanPoints and crossesLevel line for line and must be kept in step with them.
// (No include guard: it is meant to be included more than once.)

constexpr int kWindowBlock = kLanes * kWindowVectors;
constexpr int kScanBlock = kLanes * kScanVectors;
static_assert(kWindowBlock <= kMaxWindowBlock, "a window block fits the block record");

inline Doubles load(const double* p) noexcept {
    Doubles v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void store(double* p, Doubles v) noexcept { std::memcpy(p, &v, sizeof v); }

// Every lane a copy of value, bit for bit (an added 0.0 would turn -0.0 into +0.0).
inline Doubles splat(double value) noexcept {
    Doubles v;
    for (int j = 0; j < kLanes; ++j) v[j] = value;
    return v;
}

// The magnitude by clearing the sign bit, as fabs does, -0.0 and NaN included.
inline Doubles magnitude(Doubles v) noexcept {
    return reinterpret_cast<Doubles>(reinterpret_cast<Mask>(v) & std::numeric_limits<std::int64_t>::max());
}

inline bool anyLane(Mask m) noexcept { return laneBits(m) != 0; }

// The parabola through the mean points of kLanes windows, one window per lane.
struct ParabolaLanes {
    Doubles x1, x2, x3, w1, w2, w3;

    Doubles slope(Doubles t) const noexcept {
        const Doubles twoT = 2.0 * t;
        return w1 * (twoT - x2 - x3) + w2 * (twoT - x1 - x3) + w3 * (twoT - x1 - x2);
    }
    Doubles value(Doubles t) const noexcept {
        return (t - x3) * (t - x2) * w1 + (t - x3) * (t - x1) * w2 + (t - x2) * (t - x1) * w3;
    }
};

// The window test from the mean points on, for the kLanes windows whose bits start at
// `first` in out.
inline void judgeMeanLanes(Doubles x1, Doubles y1, Doubles x2, Doubles y2, Doubles x3, Doubles y3,
                           double minHeight, int first, WindowBlock& out) noexcept {
    const Mask tooClose = (kNumericalZero > magnitude(x1 - x2)) | (kNumericalZero > magnitude(x1 - x3)) |
                          (kNumericalZero > magnitude(x2 - x3));
    const ParabolaLanes p{x1,
                          x2,
                          x3,
                          y1 / ((x1 - x3) * (x1 - x2)),
                          y2 / ((x2 - x3) * (x2 - x1)),
                          y3 / ((x3 - x2) * (x3 - x1))};
    const Doubles s1 = p.slope(p.x1);
    const Doubles s3 = p.slope(p.x3);
    const Mask across = ((s1 < kSlopeLevel) & (s3 > kSlopeLevel)) | ((s1 > kSlopeLevel) & (s3 < kSlopeLevel));
    // The windows that reach the curvature test; every set below lies inside it.
    const Mask judged = ~tooClose & across;
    if (!anyLane(judged)) return;
    const Doubles curvature = 2.0 * p.w2 + 2.0 * p.w1 + 2.0 * p.w3;
    const Mask flat = judged & (magnitude(curvature) <= kSlopeLevel);
    const Mask curved = judged & ~flat;

    const Doubles t = p.x1 - s1 / curvature;
    const Doubles d = p.slope(t);
    const Mask unsettled = curved & (magnitude(d) >= kSlopeLevel);
    const Doubles height = magnitude(y2) / 100.0 * minHeight;
    const Mask sameSign = (y2 * y1 > 0.0) & (y3 * y2 > 0.0);
    const Mask maximum = (curvature < 0.0) & (y2 > y1) & (y2 > y3) & sameSign & ((y2 - y1 > height) | (y2 - y3 > height));
    const Mask minimum = (curvature > 0.0) & (y2 < y1) & (y2 < y3) & sameSign & ((y1 - y2 > height) | (y3 - y2 > height));
    // A NaN d settles no window: neither set holds it.
    const Mask accepted = curved & (magnitude(d) < kSlopeLevel) & (maximum | minimum);

    out.flat |= laneBits(flat) << first;
    out.accepted |= laneBits(accepted) << first;
    out.maxima |= laneBits(accepted & maximum) << first;
    out.unsettled |= laneBits(unsettled) << first;
    if (anyLane(accepted)) {
        store(out.vertexX + first, t);
        store(out.vertexY + first, p.value(t));
    }
    if (anyLane(unsettled)) {
        const Doubles means[6] = {x1, y1, x2, y2, x3, y3};
        for (int k = 0; k < 6; ++k) store(out.means[k] + first, means[k]);
    }
}

// Lane j of vector v holds the window that starts v * kLanes + j samples after x, y. Each
// third is summed in index order from 0.0 in its own accumulator per lane.
void judgeWindows(const double* x, const double* y, int size, float minHeightPercent, WindowBlock& out) noexcept {
    const int third = size / 3;
    Doubles x1[kWindowVectors], y1[kWindowVectors], x2[kWindowVectors], y2[kWindowVectors],
        x3[kWindowVectors], y3[kWindowVectors];
    for (int v = 0; v < kWindowVectors; ++v) x1[v] = y1[v] = x2[v] = y2[v] = x3[v] = y3[v] = splat(0.0);
    for (int i = 0; i < third; ++i) {
        for (int v = 0; v < kWindowVectors; ++v) {
            const double* xs = x + v * kLanes + i;
            const double* ys = y + v * kLanes + i;
            x1[v] += load(xs);
            y1[v] += load(ys);
            x2[v] += load(xs + third);
            y2[v] += load(ys + third);
            x3[v] += load(xs + 2 * third);
            y3[v] += load(ys + 2 * third);
        }
    }
    out.flat = out.accepted = out.maxima = out.unsettled = 0;
    const Doubles divisor = splat(static_cast<double>(third));
    // The percentage is widened to double after |y2| / 100 has been formed.
    const double minHeight = static_cast<double>(minHeightPercent);
    for (int v = 0; v < kWindowVectors; ++v) {
        judgeMeanLanes(x1[v] / divisor, y1[v] / divisor, x2[v] / divisor, y2[v] / divisor, x3[v] / divisor,
                       y3[v] / divisor, minHeight, v * kLanes, out);
    }
}

// The pairs y[p + 1], y[p] for p = first .. first + kLanes - 1 that hold the level between
// them or on one of them; a NaN gives no hit.
inline std::uint32_t crossingBits(const double* y, int first, Doubles level) noexcept {
    return laneBits(0.0 >= (load(y + first + 1) - level) * (load(y + first) - level));
}

int firstCrossing(const double* y, int pairs, double level) {
    const Doubles lane = splat(level);
    int p = 0;
    for (; p + kScanBlock <= pairs; p += kScanBlock) {
        Mask any = 0.0 >= (load(y + p + 1) - lane) * (load(y + p) - lane);
        for (int v = 1; v < kScanVectors; ++v) {
            any |= 0.0 >= (load(y + p + v * kLanes + 1) - lane) * (load(y + p + v * kLanes) - lane);
        }
        if (!anyLane(any)) continue;
        for (int v = 0;; ++v) {
            const std::uint32_t bits = crossingBits(y, p + v * kLanes, lane);
            if (bits != 0) return p + v * kLanes + __builtin_ctz(bits);
        }
    }
    return p;
}

int lastCrossing(const double* y, int pairs, double level) {
    const Doubles lane = splat(level);
    int end = pairs;
    for (; end - kScanBlock >= 0; end -= kScanBlock) {
        const int p = end - kScanBlock;
        Mask any = 0.0 >= (load(y + p + 1) - lane) * (load(y + p) - lane);
        for (int v = 1; v < kScanVectors; ++v) {
            any |= 0.0 >= (load(y + p + v * kLanes + 1) - lane) * (load(y + p + v * kLanes) - lane);
        }
        if (!anyLane(any)) continue;
        for (int v = kScanVectors - 1;; --v) {
            const std::uint32_t bits = crossingBits(y, p + v * kLanes, lane);
            if (bits != 0) return p + v * kLanes + (31 - __builtin_clz(bits)) + 1;
        }
    }
    return end;
}

// Each lane runs the one-at-a-time search over its own samples from y[0] on: a sample
// that reaches the lane's value (equality included) takes it and its index. Of the whole
// part, the search ends on the last sample equal to the extreme value, which is the
// latest index among the lanes that end on that value. A NaN reaches nothing; a NaN
// y[0] leaves every index at -1.
template <bool kMaximum>
LaneScan lastExtreme(const double* y, int n) {
    const int end = n - n % kScanBlock;
    Doubles best[kScanVectors], index[kScanVectors], position[kScanVectors];
    for (int v = 0; v < kScanVectors; ++v) {
        best[v] = splat(y[0]);
        index[v] = splat(-1.0);
        for (int j = 0; j < kLanes; ++j) position[v][j] = static_cast<double>(v * kLanes + j);
    }
    for (int i = 0; i < end; i += kScanBlock) {
        for (int v = 0; v < kScanVectors; ++v) {
            const Doubles sample = load(y + i + v * kLanes);
            const Mask reaches = kMaximum ? sample >= best[v] : best[v] >= sample;
            best[v] = reaches ? sample : best[v];
            index[v] = reaches ? position[v] : index[v];
            position[v] += static_cast<double>(kScanBlock);
        }
    }
    double extreme = best[0][0];
    for (int v = 0; v < kScanVectors; ++v) {
        for (int j = 0; j < kLanes; ++j) {
            if (kMaximum ? best[v][j] > extreme : best[v][j] < extreme) extreme = best[v][j];
        }
    }
    double found = -1.0;
    for (int v = 0; v < kScanVectors; ++v) {
        for (int j = 0; j < kLanes; ++j) {
            if (best[v][j] == extreme && index[v][j] > found) found = index[v][j];
        }
    }
    return {end, static_cast<int>(found)};
}

const CurveLanes kCurveLanes{kWindowBlock,     judgeWindows,           firstCrossing,
                             lastCrossing,     lastExtreme<true>,      lastExtreme<false>};
