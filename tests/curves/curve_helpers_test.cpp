#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "curves/extremum_windows.h"
#include "qal/qal.h"
#include "qal/qal_curves.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kMax = QAL_EXTREMUM_MAX, kMin = QAL_EXTREMUM_MIN;
const double kSteps[24] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23};

int Count(const V& v) { return static_cast<int>(v.size()); }

TEST(FindExtrema, WindowsHitsAndCollapse) {
    const V peak{84, 91, 96, 99, 100, 99, 96, 91, 84, 75, 64, 51};
    V twoPeaks = peak;
    twoPeaks.insert(twoPeaks.end(), peak.begin(), peak.end());
    V nanPeaks = twoPeaks;
    nanPeaks[4] = kNaN;
    using Hits = std::vector<std::array<int, 3>>;  // start, index, kind
    struct Row { const char* guards; V y; int window; Hits hits; };
    const Row rows[] = {
        {"windows 3-6 and 9-11 collapse; 99 > n asks for n/2", twoPeaks, 99,
         {{0, 4, kMax}, {3, 11, kMin}, {9, 16, kMax}}},
        {"windows holding a NaN find nothing", nanPeaks, 9, {{5, 11, kMin}, {11, 16, kMax}}},
        {"of equal samples the first", {87.75, 93.75, 97.75, 99.75, 99.75, 97.75, 93.75, 87.75, 79.75, 0}, 9,
         {{0, 3, kMax}}},
        {"the last sample is in no window", peak, 12, {}},
        // Maxima that QAL_GetExtremum accepts, with the sample or the vertex below -1e25.
        {"sample beyond the sentinel", {-1.16e30, -1.09e30, -1.04e30, -1.01e30, -1e30, -1.01e30, -1.04e30, -1.09e30,
                                        -1.16e30, -2e30}, 9, {}},
        {"vertex beyond the sentinel", {-4e24, -1e26, -3e25, -3e25, -6e25, -6e25, 0}, 6, {}},
        {"too few samples", {1, 2}, 3, {}},
    };
    for (const Row& r : rows) {
        Hits hits;
        for (const Extremum& h : findExtrema(kSteps, r.y.data(), Count(r.y), r.window, 5.0f)) {
            hits.push_back({h.start, h.index, h.kind});
        }
        EXPECT_EQ(r.hits, hits) << r.guards;
    }
    EXPECT_TRUE(findExtrema(nullptr, peak.data(), 12, 9, 5.0f).empty());
}

TEST(FindLevelCrossings, PairsReachingTheLevel) {
    struct Row { const char* guards; V y; float level; std::vector<int> indices; };
    const Row rows[] = {
        {"a sample on the level is in both its pairs", {0, 1, 2, 3}, 1.0f, {0, 1}},
        {"the last pair is not examined", {0, 1, 0, 1, 0}, 0.5f, {0, 1, 2}},
        {"pairs with a NaN are none", {0, kNaN, 2, 0, 3}, 1.0f, {2}},
        {"the level is a float: 0.1f lies above 0.1", {0, 0.1, 0.2, 0.3}, 0.1f, {1}},
        {"too few samples", {0, 1}, 0.5f, {}},
    };
    for (const Row& r : rows) {
        std::vector<int> indices;
        for (const LevelCrossing& h : findLevelCrossings(kSteps, r.y.data(), Count(r.y), r.level)) {
            indices.push_back(h.index);
        }
        EXPECT_EQ(r.indices, indices) << r.guards;
    }
    EXPECT_TRUE(findLevelCrossings(nullptr, nullptr, 4, 1.0f).empty());
}

// Each hit is, to the bit, what the drivers and the forward threshold search report when
// started at its position. Started anywhere, they find the next hit, or the sample of an
// earlier one (collapsed), or nothing when no hit is left.
void ExpectFlatAgreement(const V& xs, const V& ys, int window, float percent, float level) {
    const int n = Count(ys), w = detail::extremumWindowSize(window, n);
    double x, y;
    const auto next = [&](int start, int kind, int useVertex) {
        return QAL_GetNextExtremum(&xs[0] + start, &ys[0] + start, n - start, &x, &y, w, kind, useVertex, percent);
    };
    const std::vector<Extremum> extrema = findExtrema(xs.data(), ys.data(), n, window, percent);
    for (const Extremum& h : extrema) {
        EXPECT_TRUE(next(h.start, h.kind, 1) == QAL_OK && SamePoint(h.vertexX, h.vertexY, x, y)) << h.start;
        EXPECT_TRUE(SamePoint(xs[static_cast<std::size_t>(h.index)], ys[static_cast<std::size_t>(h.index)], h.x, h.y));
    }
    for (int start = 0; start < n - w; ++start) {
        for (int kind : {kMax, kMin}) {
            const bool found = next(start, kind, 0) == QAL_OK;
            EXPECT_EQ(found ? 1 : 0, std::count_if(extrema.begin(), extrema.end(), [&](const Extremum& h) {
                return h.kind == kind && (found ? static_cast<bool>(SamePoint(h.x, h.y, x, y)) : h.start >= start);
            })) << start;
        }
    }
    const std::vector<LevelCrossing> crossings = findLevelCrossings(xs.data(), ys.data(), n, level);
    for (int start = 0; start < n; ++start) {
        const auto hit = std::find_if(crossings.begin(), crossings.end(), [&](auto& h) { return h.index >= start; });
        for (int mode : {0, 2}) {
            const int status =
                QAL_FindX_at_YThreshold(&xs[0] + start, &ys[0] + start, n - start, 0, 0, mode, level, 0, &x, &y);
            ASSERT_EQ(hit != crossings.end(), status == QAL_OK) << start;
            if (status != QAL_OK) continue;
            EXPECT_TRUE(mode ? SamePoint(hit->crossX, hit->crossY, x, y) : SamePoint(hit->x, hit->y, x, y));
        }
    }
}

TEST(CurveHelpers, AgreeWithTheFlatRoutines) {
    V xs, ys;
    std::ifstream in(QAL_SAMPLE_CURVE);
    std::string header;
    std::getline(in, header);
    for (double x, y; in >> x && in.ignore(1) && in >> y;) xs.push_back(x), ys.push_back(y);
    ASSERT_EQ(601, Count(ys));
    for (int window : {9, 30}) ExpectFlatAgreement(xs, ys, window, 5.0f, 25.0f);

    // A NaN, a plateau on the level 3, equal neighbouring peaks, a constant stretch, two
    // equal abscissae, a sample on the level 0, and a flat window 130..132 of 3 (slopes
    // 0.6e-6 and 1.4e-6 at its ends, curvature 0.8e-6).
    xs.clear(), ys.clear();
    for (double i = 0; i < 150; ++i) {
        xs.push_back(0.5 * i), ys.push_back(5 * std::sin(0.37 * i) + 2 * std::sin(1.3 * i));
    }
    ys[20] = kNaN, ys[60] = ys[61] = 9, xs[100] = xs[99], ys[120] = 0;
    std::fill_n(ys.begin() + 40, 4, 3.0);
    std::fill_n(ys.begin() + 80, 6, 4.0);
    ys[130] = 1, ys[131] = 1.0000004, ys[132] = 1.000001;
    for (int window : {3, 6, 12, 1000}) {
        for (float percent : {0.0f, 5.0f}) ExpectFlatAgreement(xs, ys, window, percent, window < 10 ? 3.0f : 0.0f);
    }
}

}  // namespace
}  // namespace qal::test
