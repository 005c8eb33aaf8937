#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using D = const double*;
using O = double*;
const V kX{10, 20, 30, 40, 50}, kRamp{0, 1, 2, 3}, kOdd{0.7, 2.9, 5.3, 8.1, 9.6};  // kX: as many as each curve uses
constexpr int kAbs = 0, kFwd = 0, kBwd = 2, kSample = 0, kLine = 2, kOk = QAL_OK, kNone = QAL_ERR_NOT_FOUND;

// The searches with their options fixed, in the shape of the whole-curve extremes.
int LevelOne(D x, D y, int n, O xo, O yo) { return QAL_FindX_at_YThreshold(x, y, n, 0, 0, 0, 1, 0, xo, yo); }
int OneAlong(D x, D y, int n, O xo, O yo) { return QAL_GetY_at_XDiff(x, y, n, 0, 0, 0, 1, xo, yo); }
int LastPoint(D x, D y, int n, O xo, O yo) { return QAL_Find_LastPoint(x, y, n, 0, 0, xo, yo); }

TEST(ThresholdSearches, SharedFrameLastPointAndExtremes) {
    const auto max = QAL_Calc_AbsMaximum, min = QAL_Calc_AbsMinimum;
    struct Row { int (*search)(D, D, int, O, O); V y; int result; double first, second; };
    // Of equal samples the last is the extreme; a NaN y[0] matches nothing, a later NaN is passed over.
    const Row rows[] = {{LastPoint, {0, 1}, kOk, 20, 1}, {max, {2, 1, 1, 3}, kOk, 40, 3},
                        {min, {2, 1, 1, 3}, kOk, 30, 1}, {max, {4, kNaN, 2}, kOk, 10, 4},
                        {min, {4, kNaN, 2}, kOk, 30, 2}, {max, {kNaN, 1, 5}, kNone, 10, kNaN},
                        {min, {kNaN, 1, 5}, kNone, 10, kNaN}};
    ExpectRows(rows, [](const Row& r, O x, O y) { return r.search(kX.data(), r.y.data(), Count(r.y), x, y); });
    // Null arrays or outputs and an empty curve are refused untouched; a single sample stands in the outputs.
    for (const auto search : {LevelOne, OneAlong, LastPoint, max, min}) {
        double x = kUntouched, y = kUntouched;
        EXPECT_EQ(QAL_ERR_PARAMETER, search(nullptr, kRamp.data(), 2, &x, &y));
        EXPECT_EQ(QAL_ERR_PARAMETER, search(kX.data(), kRamp.data(), 2, &x, nullptr));
        EXPECT_EQ(QAL_ERR_PARAMETER, search(kX.data(), kRamp.data(), 0, &x, &y));
        EXPECT_TRUE(SamePoint(kUntouched, kUntouched, x, y));
        EXPECT_EQ(QAL_ERR_TOO_FEW_POINTS, search(kX.data() + 1, kRamp.data() + 1, 1, &x, &y));
        EXPECT_TRUE(SamePoint(20.0, 1.0, x, y));
    }
}

TEST(FindX_at_YThreshold, LevelsScansAndFarEnd) {
    const float nan = static_cast<float>(kNaN);
    struct Row { V y; int kind, direction, mode; float threshold, percent; int result; double first, second; };
    const Row rows[] = {
        // A sample on the level: the pair's first sample. Backward, a hit in the last pair: its sample, also on a line.
        {kRamp, kAbs, kFwd, kSample, 1, 0, kOk, 10, 0}, {kRamp, kAbs, kBwd, kLine, 2.5f, 0, kOk, 40, 3},
        // The last pair is not examined forward. Without a hit, back where it began: to the far end.
        {kRamp, kAbs, kFwd, kSample, 3, 0, kNone, 40, 3}, {{1, 2, 1}, kAbs, kBwd, kSample, 5, 0, kNone, 10, 1},
        // Without a hit the far-end test reads y[n-1] against the level, past an inner NaN; a NaN level stays put.
        {{0, kNaN, 5}, kAbs, kFwd, kSample, 2.5f, 0, kNone, 10, 0}, {kRamp, kAbs, kFwd, kSample, nan, 0, kNone, 10, 0},
        {{0, kNaN, 5}, kAbs, kBwd, kSample, 2.5f, 0, kNone, 10, 0}, {kRamp, kAbs, kBwd, kSample, nan, 0, kNone, 40, 3},
        {kOdd, 3, 0, kSample, 7.5f, 0, kOk, 30, 5.3},  // direction 0: no base value; a hit in the last pair examined
        // Float levels 9.6 * 0.01f * 12, 9.6 * 0.01f * 24, 0.9f + 0.7 and 8.9 * 0.01f * 37.8f + 0.7, rounded at each
        // step; the same in double, narrowed once, gives another level in every row.
        {kOdd, 2, 1, kLine, 0, 12, kOk, 0x1.81bed5a2e8ba3p+3, 0x1.26e978p+0},
        {kOdd, 5, kBwd, kLine, 0, 24, kOk, 0x1.14a78fd1745d1p+4, 0x1.26e978p+1},
        {kOdd, 3, 1, kLine, 0.9f, 0, kOk, 0x1.c2e8b945d1746p+3, 0x1.999998p+0},
        {{9.6, 8.1, 5.3, 2.9, 0.7}, 4, kBwd, kLine, 0, 37.8f, kOk, 0x1.19317f8p+5, 0x1.041bd8p+2}};
    ExpectRows(rows, [](const Row& r, O x, O y) {
        return QAL_FindX_at_YThreshold(kX.data(), r.y.data(), Count(r.y), r.kind, r.direction, r.mode, r.threshold,
                                       r.percent, x, y);
    });
}

TEST(GetY_at_XDiff, ScanFromEitherEnd) {
    const V x{10, 20, 30, 40};
    struct Row { V x; int direction, mode; float xDiff; int result; double first, second; };
    const Row rows[] = {
        {x, kFwd, kLine, 15, kOk, 25, 5}, {x, kFwd, kSample, -15, kOk, 30, 7}, {x, kFwd, kSample, 0, kOk, 10, 1},
        // Backward on the line through the hit and the sample before it, continued past the hit, 15 up to rounding
        // at the last sample; a hit at sample 0 reports it.
        {x, kBwd, kLine, 15, kOk, 25, 4}, {{10, 20, 30, 40.1}, kBwd, kLine, 0, kOk, 40.1, 0x1.e000000000006p+3},
        {x, kBwd, kLine, 25, kOk, 10, 1}, {x, kFwd, kSample, 50, QAL_ERR_OUT_OF_RANGE, 60, 15},
        {x, kBwd, kSample, 50, QAL_ERR_OUT_OF_RANGE, -10, 1}, {{10, kNaN, 30, 40}, kFwd, kSample, 5, kOk, 30, 7},
        // A NaN abscissa is never a hit; 10 + 0.1f lies above the double 10.1.
        {{10, 20, kNaN, 40}, kBwd, kSample, 15, kOk, 20, 3}, {{10, 10.1, 10.2}, kFwd, kSample, 0.1f, kOk, 10.2, 7}};
    ExpectRows(rows, [](const Row& r, O xOut, O yOut) {
        static const double y[] = {1, 3, 7, 15};
        return QAL_GetY_at_XDiff(r.x.data(), y, Count(r.x), 0, r.direction, r.mode, r.xDiff, xOut, yOut);
    });
}

}  // namespace
}  // namespace qal::test
