#include <vector>

#include "curves/extremum_windows.h"
#include "curves/level_crossing.h"
#include "frame/constants.h"
#include "qal/qal.h"
#include "qal/qal_curves.h"

namespace {

using qal::detail::kNoValue;
using qal::detail::kPairSize;

// What stays in a window's kind when QAL_GetExtremum finds its parabola flat.
constexpr int kNoKind = 0;
// Report the extreme sample / the vertex of the parabola.
constexpr int kSample = 0;
constexpr int kVertex = 1;

// Strictly beyond the drivers' start value, as their improvement test demands of a first
// hit; a NaN never is.
bool beatsSentinel(int kind, double value) noexcept {
    return kind == QAL_EXTREMUM_MAX ? value > -kNoValue : value < kNoValue;
}

// An earlier hit of the same kind at the same sample; only hits whose windows overlap
// this one (start above start - size) can hold it, and hits come in order of start.
bool foundBefore(const std::vector<qal::Extremum>& hits, int start, int size, int kind, int index) noexcept {
    for (auto h = hits.rbegin(); h != hits.rend() && h->start > start - size; ++h) {
        if (h->kind == kind && h->index == index) return true;
    }
    return false;
}

}  // namespace

// Boundary rules:
//   window size      as the drivers: n/2 above n, else |window|, a multiple of 3, >= 3
//   windows          start = 0 .. n-w-1; none when w >= n, and the last sample is in none
//   flat window      QAL_OK without a kind: no hit
//   beyond +-1e25    a sample or vertex that does not beat the drivers' sentinel: no hit
//   same sample      found again by a later window of the same kind: the first window's
//                    hit stands
std::vector<qal::Extremum> qal::findExtrema(const double* x, const double* y, int n, int window,
                                            float minHeightPercent) {
    std::vector<Extremum> hits;
    if (!x || !y || n < 3) return hits;
    const int size = detail::extremumWindowSize(window, n);
    for (int start = 0; start < n - size; ++start) {
        const double* xs = x + start;
        const double* ys = y + start;
        Extremum hit{start, 0, kNoKind, 0.0, 0.0, 0.0, 0.0};
        const int status = QAL_GetExtremum(xs, ys, size, &hit.vertexX, &hit.vertexY, &hit.kind, kVertex,
                                           minHeightPercent);
        if (status != QAL_OK || hit.kind == kNoKind) continue;
        // useVertex decides only what is reported, never the acceptance: this call accepts
        // the same extremum and gives the window's extreme sample.
        int kind = kNoKind;
        QAL_GetExtremum(xs, ys, size, &hit.x, &hit.y, &kind, kSample, minHeightPercent);
        if (!beatsSentinel(hit.kind, hit.vertexY) || !beatsSentinel(hit.kind, hit.y)) continue;
        // The reported sample is the first of the window with its value (a real sample: it
        // beat the sentinel, so it is no NaN and no start value).
        int i = 0;
        while (!(ys[i] == hit.y)) ++i;
        hit.index = start + i;
        if (!foundBefore(hits, start, size, hit.kind, hit.index)) hits.push_back(hit);
    }
    return hits;
}

// Boundary rules, those of the forward threshold search from each position:
//   pairs            (i, i+1) for i = 0 .. n-3; the last pair is never examined
//   sample on level  a hit in both pairs that hold it
//   NaN sample       its pairs are no hits
std::vector<qal::LevelCrossing> qal::findLevelCrossings(const double* x, const double* y, int n, float level) {
    std::vector<LevelCrossing> hits;
    if (!x || !y || n < 3) return hits;
    const double widened = static_cast<double>(level);
    for (int i = 0; i < n - 2; ++i) {
        if (!detail::crossesLevel(y[i + 1], y[i], widened)) continue;
        hits.push_back({i, x[i], y[i], QAL_CalcLinY(widened, x + i, y + i, kPairSize), widened});
    }
    return hits;
}
