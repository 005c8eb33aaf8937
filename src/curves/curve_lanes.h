// Vector lanes for the curve searches: several windows, sample pairs or samples at once,
// each lane doing exactly the operations of the one-at-a-time code in the same order.
// The searches call the lanes of the instruction set chosen at first use; a null entry
// (the scalar level) leaves them on their one-at-a-time loops.
#ifndef QAL_SRC_CURVES_CURVE_LANES_H
#define QAL_SRC_CURVES_CURVE_LANES_H

#include <cstdint>
#include <functional>

namespace qal::detail {

inline constexpr int kMaxWindowBlock = 32;

// What the lanes decided for a block of neighbouring windows, bit j for the window that
// starts j samples after the first. A window in none of the three sets ends in a status
// other than QAL_OK.
struct WindowBlock {
    std::uint32_t flat;       // QAL_OK without a kind
    std::uint32_t accepted;   // QAL_OK at the vertex (vertexX[j], vertexY[j])
    std::uint32_t maxima;     // of the accepted ones, those of kind QAL_EXTREMUM_MAX
    std::uint32_t unsettled;  // the first Newton step left |slope| >= 1e-6: judged again from means[.][j]
    double vertexX[kMaxWindowBlock];
    double vertexY[kMaxWindowBlock];
    double means[6][kMaxWindowBlock];  // x1, y1, x2, y2, x3, y3
};

// Where a lane scan over sample pairs or samples left off, and what it found before that.
struct LaneScan {
    int resume;  // the one-at-a-time loop goes on from here
    int found;   // the index found in the part scanned, or -1
};

struct CurveLanes {
    int windowBlock;  // windows judged per call of judgeWindows
    // The windows of `size` samples starting at x, y and at the windowBlock - 1 samples after.
    void (*judgeWindows)(const double* x, const double* y, int size, float minHeightPercent, WindowBlock& out);
    // Pairs p = 0 .. pairs - 1 of y[p + 1], y[p] against level: resume is the lowest hit,
    // or the first pair past those scanned, which are a leading part of all.
    int (*firstCrossing)(const double* y, int pairs, double level);
    // The same from the top: resume is one above the highest hit, or the count of the
    // leading pairs left unscanned.
    int (*lastCrossing)(const double* y, int pairs, double level);
    // The whole-curve extremes over a leading part of y[0 .. n-1]: found is the sample
    // on which the one-at-a-time search ends that part (-1 if y[0] is NaN).
    LaneScan (*lastMaximum)(const double* y, int n);
    LaneScan (*lastMinimum)(const double* y, int n);
};

// The lanes of the instruction set in use.
const CurveLanes& curveLanes() noexcept;

// True when the two outputs are different cells and neither lies inside x[0 .. n-1] or
// y[0 .. n-1]. A search that writes its outputs while it still reads the curve or one of
// them must go one at a time otherwise, since a write may change what a later step reads
// (the whole-curve extremes compare with *yOut, which a shared cell leaves holding x).
inline bool outputsApart(const double* x, const double* y, int n, const double* xOut, const double* yOut) noexcept {
    const std::less<const double*> before;
    const auto inside = [&](const double* out, const double* array) {
        return !before(out, array) && before(out, array + n);
    };
    return xOut != yOut && !inside(xOut, x) && !inside(xOut, y) && !inside(yOut, x) && !inside(yOut, y);
}

}  // namespace qal::detail

#endif  // QAL_SRC_CURVES_CURVE_LANES_H
