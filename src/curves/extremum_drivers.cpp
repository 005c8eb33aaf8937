#include <cstdint>

#include "curves/curve_lanes.h"
#include "curves/extremum_windows.h"
#include "curves/mean_points.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::CurveLanes;
using qal::detail::curveLanes;
using qal::detail::judgeMeanPoints;
using qal::detail::kNoValue;
using qal::detail::MeanPoints;
using qal::detail::outputsApart;
using qal::detail::takeExtremeSample;
using qal::detail::WindowBlock;

// No kind at all: what a window's kind variable holds until QAL_GetExtremum writes one.
// QAL_GetExtremum leaves it there on its flat outcome (QAL_OK, 0.0, 0.0, no kind), so a
// flat window never counts as a hit in the drivers that compare kinds.
constexpr int kNoKind = 0;

// The running best starts at -1e25 for a maximum and at +1e25 for any other kind.
double sentinelFor(int kind) noexcept { return kind == QAL_EXTREMUM_MAX ? -kNoValue : kNoValue; }

// Strictly better only: of equal ordinates the earlier stands, a NaN never improves, and a
// kind that is neither maximum nor minimum never improves at all.
bool improves(int kind, double candidate, double best) noexcept {
    return (kind == QAL_EXTREMUM_MAX && candidate > best) || (kind == QAL_EXTREMUM_MIN && candidate < best);
}

struct Search {
    const double* x;
    const double* y;
    int kind;
    int useVertex;
    float minHeightPercent;
    // Several windows may be judged ahead of the one in turn: the outputs do not lie in
    // the curve, so an improvement written to them cannot change a later window.
    bool lanes;
    // The driver takes only windows of `kind`.
    bool kindTested;
};

struct WindowResult {
    int status;
    int kind;
    double x;
    double y;
};

// One QAL_GetExtremum on the window at start.
WindowResult judgeWindow(const Search& s, int start, int size) noexcept {
    WindowResult r{QAL_OK, kNoKind, 0.0, 0.0};
    r.status = QAL_GetExtremum(s.x + start, s.y + start, size, &r.x, &r.y, &r.kind, s.useVertex,
                               s.minHeightPercent);
    return r;
}

// What the lanes decided for window j of a block at start, completed one at a time where
// they left it: the further Newton steps from the mean points, or the extreme sample.
WindowResult completeWindow(const Search& s, const WindowBlock& block, int j, int start, int size) noexcept {
    WindowResult r{QAL_OK, kNoKind, 0.0, 0.0};
    const double* const x = s.x + start;
    const double* const y = s.y + start;
    if ((block.unsettled >> j & 1u) != 0) {
        const MeanPoints m{block.means[0][j], block.means[1][j], block.means[2][j],
                           block.means[3][j], block.means[4][j], block.means[5][j]};
        r.status = judgeMeanPoints(m, x, y, size, &r.x, &r.y, &r.kind, s.useVertex, s.minHeightPercent);
    } else if ((block.accepted >> j & 1u) != 0) {
        r.kind = (block.maxima >> j & 1u) != 0 ? QAL_EXTREMUM_MAX : QAL_EXTREMUM_MIN;
        r.x = block.vertexX[j];
        r.y = block.vertexY[j];
        if (s.useVertex == 0) takeExtremeSample(x, y, size, r.kind, &r.x, &r.y);
    }
    return r;
}

// The windows of a block that the lanes judged of another kind than the wanted one: a
// driver that tests the kind skips them, flat windows (no kind) among them.
std::uint32_t otherKinds(const Search& s, const WindowBlock& block) noexcept {
    if (!s.kindTested) return 0;
    if (s.kind == QAL_EXTREMUM_MAX) return block.flat | (block.accepted & ~block.maxima);
    if (s.kind == QAL_EXTREMUM_MIN) return block.flat | (block.accepted & block.maxima);
    return 0;
}

// Hands every window of `size` at start = first .. end - 1 that QAL_GetExtremum answers
// with QAL_OK to visit(start, result), in ascending order, until visit returns true. The
// other windows are skipped by every driver whatever their status, so they are not
// reported, nor are those of another kind when the driver tests it. Whole blocks of
// neighbouring windows go to the lanes; the rest, and all windows when the lanes are off,
// one at a time.
template <class Visit>
void forEachAcceptedWindow(const Search& s, int first, int end, int size, Visit visit) noexcept {
    const CurveLanes& lanes = curveLanes();
    int start = first;
    if (s.lanes && lanes.judgeWindows != nullptr) {
        WindowBlock block;
        for (; end - start >= lanes.windowBlock; start += lanes.windowBlock) {
            lanes.judgeWindows(s.x + start, s.y + start, size, s.minHeightPercent, block);
            const std::uint32_t judged = block.flat | block.accepted | block.unsettled;
            for (std::uint32_t pending = judged & ~otherKinds(s, block); pending != 0;
                 pending &= pending - 1) {
                const int j = __builtin_ctz(pending);
                const WindowResult w = completeWindow(s, block, j, start + j, size);
                if (w.status == QAL_OK && visit(start + j, w)) return;
            }
        }
    }
    for (; start < end; ++start) {
        const WindowResult w = judgeWindow(s, start, size);
        if (w.status == QAL_OK && visit(start, w)) return;
    }
}

// One pass of windows of `size` over the curve, keeping the best window of the wanted
// kind in best/xOut/yOut; returns QAL_OK if any window improved, else `status`.
int rangePass(const Search& s, int n, int size, double& best, double* xOut, double* yOut, int status) noexcept {
    forEachAcceptedWindow(s, 0, n - size, size, [&](int, const WindowResult& w) {
        if (w.kind == s.kind && improves(s.kind, w.y, best)) {
            best = w.y;
            *yOut = w.y;
            *xOut = w.x;
            status = QAL_OK;
        }
        return false;
    });
    return status;
}

Search searchOf(const double* x, const double* y, int n, const double* xOut, const double* yOut, int kind,
                int useVertex, float minHeightPercent, bool kindTested) noexcept {
    return {x, y, kind, useVertex, minHeightPercent, outputsApart(x, y, n, xOut, yOut), kindTested};
}

}  // namespace

namespace qal::detail {

// The magnitude is taken in 64 bits, so the most negative int counts as 2^31 (and ends as
// 2147483646) instead of overflowing.
int extremumWindowSize(int window, int n) noexcept {
    std::int64_t size = window > n ? n / 2 : (window < 0 ? -static_cast<std::int64_t>(window) : window);
    size = (size / 3) * 3;
    return size < 3 ? 3 : static_cast<int>(size);
}

// coarse: the largest multiple of 3 not above n/5, capped at 42 (fine then 21) and raised
// to 12; fine: the largest multiple of 3 not above coarse/4, raised to 9.
AutoWindowSizes autoExtremumWindowSizes(int n) noexcept {
    const int coarse = (n / 5 / 3) * 3;
    if (coarse >= 42) return {42, 21};
    const int raised = coarse < 12 ? 12 : coarse;
    const int fine = (raised / 4 / 3) * 3;
    return {raised, fine < 9 ? 9 : fine};
}

}  // namespace qal::detail

int QAL_GetNextExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int window,
                        int kind, int useVertex, float minHeightPercent) {
    if (!x || !y || !xOut || !yOut || n < 3) return QAL_ERR_MEMORY;
    const double sentinel = sentinelFor(kind);
    *yOut = sentinel;
    *xOut = x[0];
    const int size = qal::detail::extremumWindowSize(window, n);
    // Only a negative request of large magnitude gets here.
    if (size > n) return QAL_ERR_OUT_OF_RANGE;

    int status = QAL_ERR_NOT_FOUND;
    const Search s = searchOf(x, y, n, xOut, yOut, kind, useVertex, minHeightPercent, true);
    forEachAcceptedWindow(s, 0, n - size, size, [&](int, const WindowResult& w) {
        if (w.kind != kind || !improves(kind, w.y, sentinel)) return false;
        *yOut = w.y;
        *xOut = w.x;
        status = QAL_OK;
        return true;
    });
    return status;
}

int QAL_GetRangeExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int window,
                         int kind, int useVertex, float minHeightPercent) {
    if (!x || !y || !xOut || !yOut || n < 3) return QAL_ERR_MEMORY;
    double best = sentinelFor(kind);
    *yOut = best;
    *xOut = x[0];
    const Search s = searchOf(x, y, n, xOut, yOut, kind, useVertex, minHeightPercent, true);
    return rangePass(s, n, qal::detail::extremumWindowSize(window, n), best, xOut, yOut, QAL_ERR_NOT_FOUND);
}

int QAL_GetAutoRangeExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int window,
                             int kind, int useVertex, float minHeightPercent) {
    if (!x || !y || !xOut || !yOut || n < 3) return QAL_ERR_MEMORY;
    double best = sentinelFor(kind);
    *yOut = best;
    *xOut = x[0];
    const Search s = searchOf(x, y, n, xOut, yOut, kind, useVertex, minHeightPercent, true);
    // The first pass is always made; a pass that finds something runs to its end and ends
    // the search, so wider windows are tried only after a pass without a hit. Doubling
    // keeps the size a multiple of 3; it is done in 64 bits, where it cannot overflow.
    std::int64_t size = qal::detail::extremumWindowSize(window, n);
    int status = QAL_ERR_NOT_FOUND;
    for (;;) {
        status = rangePass(s, n, static_cast<int>(size), best, xOut, yOut, status);
        size *= 2;
        if (status == QAL_OK || !(size < n / 3)) return status;
    }
}

int QAL_GetAutoExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int kind,
                        int useVertex, float minHeightPercent) {
    if (!x || !y || !xOut || !yOut || n < 1) return QAL_ERR_MEMORY;

    const auto [coarse, fine] = qal::detail::autoExtremumWindowSizes(n);
    if (coarse > n) return QAL_ERR_PARAMETER;

    // No kind test here, unlike the other drivers: any accepted window whose ordinate
    // improves is taken, a flat window (0.0, 0.0) included.
    const Search s = searchOf(x, y, n, xOut, yOut, kind, useVertex, minHeightPercent, false);
    double best = sentinelFor(kind);
    int bestStart = 0;
    forEachAcceptedWindow(s, 0, n - coarse, coarse, [&](int start, const WindowResult& w) {
        if (improves(kind, w.y, best)) {
            best = w.y;
            *yOut = w.y;
            *xOut = w.x;
            bestStart = start;
        }
        return false;
    });

    // Fine pass inside the best coarse window (the first coarse samples if none was
    // found). The best starts afresh, so the first accepted fine window replaces the
    // coarse result whatever its ordinate.
    best = sentinelFor(kind);
    forEachAcceptedWindow(s, bestStart, bestStart + (coarse - fine), fine, [&](int, const WindowResult& w) {
        if (improves(kind, w.y, best)) {
            best = w.y;
            *yOut = w.y;
            *xOut = w.x;
        }
        return false;
    });
    return QAL_OK;
}
