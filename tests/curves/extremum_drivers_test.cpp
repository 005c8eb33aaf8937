#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "curves/extremum_windows.h"
#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::kUntouched;
using qal::test::SameBits;
using V = std::vector<double>;

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kMax = QAL_EXTREMUM_MAX, kMin = QAL_EXTREMUM_MIN;
constexpr int kOk = QAL_OK, kNone = QAL_ERR_NOT_FOUND;
constexpr double kBelow = -1e25, kAbove = 1e25;  // the sentinels left in yOut

TEST(ExtremumWindows, SizesFromRequestAndFromCount) {
    const int requests[][3] = {{10, 100, 9},   {2, 100, 3},    {0, 100, 3},      {-7, 100, 6},
                               {101, 100, 48}, {100, 100, 99}, {-300, 100, 300}, {kIntMin, 100, 2147483646}};
    for (const auto& r : requests) EXPECT_EQ(r[2], qal::detail::extremumWindowSize(r[0], r[1])) << r[0];
    const int counts[][3] = {{11, 12, 9}, {74, 12, 9}, {75, 15, 9}, {209, 39, 9}, {210, 42, 21}, {2147483647, 42, 21}};
    for (const auto& c : counts) {
        EXPECT_EQ(c[1], qal::detail::autoExtremumWindowSizes(c[0]).coarse) << c[0];
        EXPECT_EQ(c[2], qal::detail::autoExtremumWindowSizes(c[0]).fine) << c[0];
    }
}

enum class Driver { Next, Range, AutoRange, Auto };

int search(Driver d, const double* x, const double* y, int n, double* xOut, double* yOut, int window, int kind,
           int useVertex, float percent) {
    switch (d) {
        case Driver::Next: return QAL_GetNextExtremum(x, y, n, xOut, yOut, window, kind, useVertex, percent);
        case Driver::Range: return QAL_GetRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, percent);
        case Driver::AutoRange: return QAL_GetAutoRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, percent);
        case Driver::Auto: return QAL_GetAutoExtremum(x, y, n, xOut, yOut, kind, useVertex, percent);
    }
    return -1;
}

TEST(ExtremumDrivers, BadArgumentsAreRefusedBeforeAnyWrite) {
    const V v(12, 1.0);
    double out[2] = {kUntouched, kUntouched};
    struct Row { Driver driver; int nullArg, n, status; };  // nullArg: 0 none, 1..4 x, y, xOut, yOut
    const Row rows[] = {{Driver::Next, 1, 12, QAL_ERR_MEMORY},      {Driver::Range, 2, 12, QAL_ERR_MEMORY},
                        {Driver::AutoRange, 3, 12, QAL_ERR_MEMORY}, {Driver::Auto, 4, 12, QAL_ERR_MEMORY},
                        {Driver::Next, 0, 2, QAL_ERR_MEMORY},       {Driver::Range, 0, 2, QAL_ERR_MEMORY},
                        {Driver::AutoRange, 0, -3, QAL_ERR_MEMORY}, {Driver::Auto, 0, 0, QAL_ERR_MEMORY},
                        {Driver::Auto, 0, 2, QAL_ERR_PARAMETER},    {Driver::Auto, 0, 11, QAL_ERR_PARAMETER}};
    for (const Row& r : rows) {
        EXPECT_EQ(r.status, search(r.driver, r.nullArg == 1 ? nullptr : v.data(), r.nullArg == 2 ? nullptr : v.data(),
                                   r.n, r.nullArg == 3 ? nullptr : &out[0], r.nullArg == 4 ? nullptr : &out[1], 9, kMax,
                                   1, 5.0f))
            << static_cast<int>(r.driver) << " n " << r.n;
        EXPECT_TRUE(SameBits(kUntouched, out[0]) && SameBits(kUntouched, out[1]));
    }
}

struct Curve {
    V x, y;
};

// n samples at x = step * i, y = level, with `values` laid in from sample `first`.
Curve curve(int n, double step, int first = 0, const V& values = {}, double level = 10.0) {
    Curve c{V(static_cast<std::size_t>(n)), V(static_cast<std::size_t>(n), level)};
    for (int i = 0; i < n; ++i) c.x[static_cast<std::size_t>(i)] = step * i;
    std::copy(values.begin(), values.end(), c.y.begin() + first);
    return c;
}

// A peak 20 samples wide at sample 75, which windows of 9 miss at a 10 % height demand;
// with `narrow`, also a narrow lower peak at sample 8.
Curve broadPeak(int n, bool narrow = false) {
    Curve c = curve(n, 0.5, 6, narrow ? V{12, 16, 20, 16, 12} : V{});
    for (int i = 0; i < n; ++i) c.y[static_cast<std::size_t>(i)] += std::max(0, 400 - (i - 75) * (i - 75)) / 20.0;
    return c;
}

TEST(ExtremumDrivers, SearchesAlongACurve) {
    Curve twoPeaks = curve(40, 0.5, 21, {11, 12, 15, 18, 19, 18, 15, 12, 11});
    std::copy_n(V{11, 13, 14, 13, 11}.begin(), 5, twoPeaks.y.begin() + 5);
    Curve equalPeaks = curve(40, 0.5, 6, {12, 16, 20, 16, 12});
    std::copy_n(equalPeaks.y.begin() + 6, 5, equalPeaks.y.begin() + 26);
    const Curve narrowAndBroad = broadPeak(120, true), broad108 = broadPeak(108), broad111 = broadPeak(111);
    const Curve needsLastSample = curve(10, 1, 0, {3, 2, 5, 2, 8, 8, 8, 7, 4, 2});  // only window 1..9 holds it
    // A maximum whose samples all lie below the sentinel -1e25: accepted, but no improvement.
    const Curve beyondSentinel =
        curve(10, 1, 0, {-1.16e30, -1.09e30, -1.04e30, -1.01e30, -1e30, -1.01e30, -1.04e30, -1.09e30, -1.16e30, -2e30});
    // Every window of 9 is flat (QAL_OK without a kind); in the second curve after an accepted minimum.
    Curve flat = curve(12, 1e6), minimumThenFlat = curve(22, 1);
    for (int i = 0; i < 12; ++i) flat.y[static_cast<std::size_t>(i)] += 0.25 * (2 * i - 11) * (2 * i - 11);
    for (std::size_t i = 0; i < 22; ++i) {
        const double d = static_cast<double>(i);
        minimumThenFlat.x[i] = i < 10 ? d : 1000010.0 + 1e6 * (d - 10);
        minimumThenFlat.y[i] += i < 10 ? (d - 4) * (d - 4) : 0.25 * (2 * d - 31) * (2 * d - 31);
    }
    const Curve peak12 = curve(12, 1, 0, {84, 91, 96, 99, 100, 99, 96, 91, 84, 75, 64, 51});
    const Curve lateMaximum = curve(30, 1, 10, {20.1, 20.1, 20.2, 20.4, 20.7, 21.2, 21.8, 22.5, 23.4, 24.3, 25.3,
                                                28.5, 34.1, 31.0, 26.1, 24.7, 23.8, 23.0, 22.1, 21.5}, 20);
    const Curve fineBeatsCoarse = curve(30, 1, 0, {20.0, 20.1, 20.5, 22.0, 25.5, 28.9, 28.7, 25.1, 21.8, 20.4}, 20);
    const Curve fifteen =
        curve(15, 1, 0, {26.1, 26.9, 26.1, 23.7, 20.1, 16.6, 14.8, 14.9, 16.2, 17.9, 19.0, 19.7, 19.9, 20.0, 20.0});

    struct Row {
        const char* guards;
        Driver driver;
        const Curve& curve;
        int window, kind, useVertex;
        float percent;
        int status;
        double xOut, yOut;
    };
    // Hand-derived, or (hexfloat) from an independent re-computation of the told order.
    const Row rows[] = {
        {"first hit", Driver::Next, twoPeaks, 9, kMax, 1, 5, kOk, 0x1.a000000000001p+1, 0x1.971c71c71c71dp+3},
        {"best of one pass", Driver::Range, twoPeaks, 9, kMax, 1, 5, kOk, 12.5, 0x1.2555555555555p+4},
        {"auto finds the high peak", Driver::Auto, twoPeaks, 0, kMax, 1, 5, kOk, 12.5, 0x1.2555555555555p+4},
        {"kind 0 matches nothing", Driver::Next, twoPeaks, 9, 0, 0, 5, kNone, 0, kAbove},
        {"kind 0 improves nothing", Driver::Auto, twoPeaks, 9, 0, 0, 5, kOk, kUntouched, kUntouched},
        {"negative window beyond n", Driver::Next, twoPeaks, -42, kMax, 0, 5, QAL_ERR_OUT_OF_RANGE, 0, kBelow},
        {"most negative window", Driver::Next, twoPeaks, kIntMin, kMax, 0, 5, QAL_ERR_OUT_OF_RANGE, 0, kBelow},
        {"equal ordinates keep the earlier window", Driver::Range, equalPeaks, 9, kMax, 0, 5, kOk, 4, 20},
        {"a hit must improve on the sentinel", Driver::Next, beyondSentinel, 9, kMax, 0, 5, kNone, 0, kBelow},
        {"the last sample enters no window", Driver::Next, needsLastSample, 9, kMax, 0, 0, kNone, 0, kBelow},
        {"the last sample enters no window", Driver::Range, needsLastSample, 9, kMax, 0, 0, kNone, 0, kBelow},
        {"a hit in the first pass ends the search", Driver::AutoRange, narrowAndBroad, 9, kMax, 0, 10, kOk, 4, 20},
        {"doubling stops at n/3: 36 is not below 36", Driver::AutoRange, broad108, 9, kMax, 0, 20, kNone, 0, kBelow},
        {"36 is below 37", Driver::AutoRange, broad111, 9, kMax, 0, 20, kOk, 37.5, 30},
        {"a flat window is no hit", Driver::Range, flat, 9, kMin, 1, 5, kNone, 0, kAbove},
        {"each window starts without a kind", Driver::Range, minimumThenFlat, 9, kMin, 1, 5, kOk, 0x1.fffffffffffffp+1,
         0x1.5555555555555p+3},
        {"auto takes a flat window's (0, 0)", Driver::Auto, flat, 0, kMin, 1, 5, kOk, 0, 0},
        {"auto: no kind test in the coarse pass", Driver::Auto, lateMaximum, 0, kMin, 0, 5, kOk, 22, 34.1},
        {"auto: the fine pass starts afresh", Driver::Auto, fineBeatsCoarse, 0, kMin, 1, 5, kOk, 0x1.702e8ba2e8ba1p+2,
         0x1.b9b42b7142b70p+4},
        {"auto: coarse and fine window counts", Driver::Auto, fifteen, 0, kMax, 1, 5, kOk, 0x1.b50d79435e50ep+2,
         0x1.e17cdb2c0397ep+3},
        {"auto, n = 12: fine pass only, earlier of equal", Driver::Auto, peak12, 0, kMax, 1, 5, kOk,
         0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        EXPECT_EQ(r.status, search(r.driver, r.curve.x.data(), r.curve.y.data(), static_cast<int>(r.curve.x.size()),
                                   &xOut, &yOut, r.window, r.kind, r.useVertex, r.percent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
    }
}

}  // namespace
