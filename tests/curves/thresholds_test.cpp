#include <vector>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
const V kX{10, 20, 30, 40, 50};  // the abscissae of the curves below, as many as each has samples
const V kRamp{0, 1, 2, 3};
constexpr int kAbs = 0, kFwd = 0, kBwd = 2, kSample = 0, kLine = 2, kOk = QAL_OK, kNone = QAL_ERR_NOT_FOUND;

TEST(ThresholdSearches, SharedFrame) {
    using Search = int (*)(const double*, const double*, int, double*, double*);
    const Search searches[] = {
        [](const double* x, const double* y, int n, double* xo, double* yo) { return QAL_FindX_at_YThreshold(x, y, n, 0, 0, 0, 1, 0, xo, yo); },
        [](const double* x, const double* y, int n, double* xo, double* yo) { return QAL_GetY_at_XDiff(x, y, n, 0, 0, 0, 1, xo, yo); },
        [](const double* x, const double* y, int n, double* xo, double* yo) { return QAL_Find_LastPoint(x, y, n, 0, 0, xo, yo); },
        QAL_Calc_AbsMaximum, QAL_Calc_AbsMinimum};
    for (const Search search : searches) {
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(QAL_ERR_PARAMETER, search(nullptr, kRamp.data(), 2, &xOut, &yOut));
        EXPECT_EQ(QAL_ERR_PARAMETER, search(kX.data(), kRamp.data(), 2, &xOut, nullptr));
        EXPECT_EQ(QAL_ERR_PARAMETER, search(kX.data(), kRamp.data(), 0, &xOut, &yOut));
        EXPECT_TRUE(SamePoint(kUntouched, kUntouched, xOut, yOut));
        EXPECT_EQ(QAL_ERR_TOO_FEW_POINTS, search(kX.data() + 1, kRamp.data() + 1, 1, &xOut, &yOut));
        EXPECT_TRUE(SamePoint(20.0, 1.0, xOut, yOut));
    }
    double xOut = kUntouched, yOut = kUntouched;
    EXPECT_EQ(kOk, QAL_Find_LastPoint(kX.data(), kRamp.data(), 2, 0, 0, &xOut, &yOut));
    EXPECT_TRUE(SamePoint(20.0, 1.0, xOut, yOut));
}

TEST(FindX_at_YThreshold, LevelsScansAndFarEnd) {
    const V falling{10, 8, 6, 4, 2}, odd{0.7, 2.9, 5.3, 8.1, 9.6};
    struct Row { V y; int kind, direction, mode; float threshold, percent; int status; double xOut, yOut; };
    const Row rows[] = {
        {kRamp, kAbs, kFwd, kSample, 1.5f, 0, kOk, 20, 1}, {kRamp, kAbs, kFwd, kLine, 1.5f, 0, kOk, 25, 1.5},
        {kRamp, kAbs, kFwd, kSample, 1, 0, kOk, 10, 0},       // a sample on the level: the pair's first sample
        {kRamp, kAbs, kFwd, kSample, 2.5f, 0, kNone, 10, 0},  // the last pair is not examined forward...
        {kRamp, kAbs, kBwd, kLine, 2.5f, 0, kOk, 40, 3},      // ...but backward, and reports its sample
        {kRamp, kAbs, kFwd, kSample, 3, 0, kNone, 40, 3}, {kRamp, kAbs, kFwd, kSample, 5, 0, kNone, 40, 3},
        {kRamp, kAbs, kFwd, kSample, -1, 0, kNone, 10, 0}, {kRamp, kAbs, kBwd, kSample, 5, 0, kNone, 40, 3},
        {kRamp, kAbs, kBwd, kSample, -1, 0, kNone, 10, 0}, {{1, 2, 1}, kAbs, kBwd, kSample, 5, 0, kNone, 10, 1},
        {kRamp, kAbs, kBwd, kLine, 0.5f, 0, kOk, 15, 0.5}, {kRamp, kAbs, kBwd, kSample, 0.5f, 0, kOk, 20, 1},
        {{0, 1}, kAbs, kFwd, kLine, 0.5f, 0, kNone, 10, 0}, {{0, 1}, kAbs, kBwd, kLine, 0.5f, 0, kOk, 20, 1},
        {{1, 1, 1, 5}, kAbs, kFwd, kLine, 1, 0, kOk, 0, 1},  // a level pair has no crossing: 0.0
        {{3, kNaN, 1, 0, -1}, kAbs, kFwd, kSample, 0.5f, 0, kOk, 30, 1},  // pairs with a NaN are no hits
        {falling, 5, 1, kSample, 0, 50, kOk, 30, 6},         // L = 10 * 0.01f * 50 = 4.9999995
        {falling, 2, 1, kSample, 0, 50, kNone, 50, 2},       // L = 1, from the far end
        {falling, 3, 0, kSample, 5, 0, kOk, 30, 6},          // no base value for direction 0
        {kRamp, 3, kBwd, kSample, -1.5f, 0, kOk, 30, 2}, {kRamp, 4, kBwd, kSample, 0, 50, kNone, 40, 3},
        // float levels; each computed in double and narrowed would be 2 ulps higher
        {odd, 4, 1, kLine, 0, 61.7f, kOk, 0x1.0977380000000p+5, 0x1.8c3e40p+2},
        {odd, 2, 1, kLine, 0, 54.9f, kOk, 0x1.de06d3d555556p+4, 0x1.514e3cp+2},
        {odd, 5, kBwd, kLine, 0, 47.1f, kOk, 0x1.ac1b4d8000001p+4, 0x1.2161e4p+2}};
    for (const Row& r : rows) {
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(r.status, QAL_FindX_at_YThreshold(kX.data(), r.y.data(), static_cast<int>(r.y.size()), r.kind, r.direction,
                                                    r.mode, r.threshold, r.percent, &xOut, &yOut)) << r.threshold << " " << r.kind;
        EXPECT_TRUE(SamePoint(r.xOut, r.yOut, xOut, yOut)) << r.threshold << " " << r.kind;
    }
}

TEST(GetY_at_XDiff, ScanFromEitherEnd) {
    const V x{10, 20, 30, 40}, y{1, 3, 7, 15};
    struct Row { V x; int direction, mode; float xDiff; int status; double xOut, yOut; };
    const Row rows[] = {
        {x, kFwd, kSample, 15, kOk, 30, 7}, {x, kFwd, kLine, 15, kOk, 25, 5}, {x, kFwd, kSample, -15, kOk, 30, 7},
        {x, kFwd, kSample, 10, kOk, 20, 3}, {x, kFwd, kLine, 0, kOk, 10, 1}, {x, kBwd, kSample, 15, kOk, 20, 3},
        {x, kBwd, kLine, 15, kOk, 25, 4},  // the line through samples 0 and 1, continued past the hit
        {x, kBwd, kLine, 0, kOk, 40, 15}, {x, kFwd, kSample, 50, QAL_ERR_OUT_OF_RANGE, 60, 15},
        {x, kBwd, kSample, 50, QAL_ERR_OUT_OF_RANGE, -10, 1}, {{10, 20, 20, 30}, kBwd, kLine, 10, kOk, 20, kNaN},
        {{10, kNaN, 30, 40}, kFwd, kSample, 5, kOk, 30, 7},
        {{10, 10.1, 10.2}, kFwd, kSample, 0.1f, kOk, 10.2, 7}};  // 10 + 0.1f lies above the double 10.1
    for (const Row& r : rows) {
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(r.status, QAL_GetY_at_XDiff(r.x.data(), y.data(), static_cast<int>(r.x.size()), 0, r.direction, r.mode,
                                              r.xDiff, &xOut, &yOut)) << r.xDiff;
        EXPECT_TRUE(SamePoint(r.xOut, r.yOut, xOut, yOut)) << r.xDiff << " " << r.direction;
    }
}

TEST(Calc_AbsExtremes, LastOfEqualSamplesAndNaN) {
    struct Row { V y; int maxStatus; double xMax, yMax; int minStatus; double xMin, yMin; };
    const Row rows[] = {{{1, 3, 3, 2}, kOk, 30, 3, kOk, 10, 1}, {{2, 1, 1, 3}, kOk, 40, 3, kOk, 30, 1},
                        {{kNaN, 1, 5}, kNone, 10, kNaN, kNone, 10, kNaN}, {{4, kNaN, 2}, kOk, 10, 4, kOk, 30, 2}};
    for (const Row& r : rows) {
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(r.maxStatus, QAL_Calc_AbsMaximum(kX.data(), r.y.data(), static_cast<int>(r.y.size()), &xOut, &yOut));
        EXPECT_TRUE(SamePoint(r.xMax, r.yMax, xOut, yOut)) << r.y[1];
        EXPECT_EQ(r.minStatus, QAL_Calc_AbsMinimum(kX.data(), r.y.data(), static_cast<int>(r.y.size()), &xOut, &yOut));
        EXPECT_TRUE(SamePoint(r.xMin, r.yMin, xOut, yOut)) << r.y[1];
    }
}

}  // namespace
}  // namespace qal::test
