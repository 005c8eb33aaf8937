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

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kMax = QAL_EXTREMUM_MAX, kMin = QAL_EXTREMUM_MIN;

TEST(ExtremumWindows, SizesFromRequestAndFromCount) {
    const int requests[][3] = {{10, 100, 9},   {2, 100, 3},   {0, 100, 3},     {-7, 100, 6},
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
    const std::vector<double> v(12, 1.0);
    double out[2] = {kUntouched, kUntouched};
    struct Row { Driver driver; int nullArg, n, status; };  // nullArg: 0 none, 1..4 x, y, xOut, yOut
    const Row rows[] = {{Driver::Next, 1, 12, QAL_ERR_MEMORY},       {Driver::Range, 2, 12, QAL_ERR_MEMORY},
                        {Driver::AutoRange, 3, 12, QAL_ERR_MEMORY},  {Driver::Auto, 4, 12, QAL_ERR_MEMORY},
                        {Driver::Next, 0, 2, QAL_ERR_MEMORY},        {Driver::Range, 0, 2, QAL_ERR_MEMORY},
                        {Driver::AutoRange, 0, -3, QAL_ERR_MEMORY},  {Driver::Auto, 0, 0, QAL_ERR_MEMORY},
                        {Driver::Auto, 0, 2, QAL_ERR_PARAMETER},     {Driver::Auto, 0, 11, QAL_ERR_PARAMETER}};
    for (const Row& r : rows) {
        EXPECT_EQ(r.status, search(r.driver, r.nullArg == 1 ? nullptr : v.data(), r.nullArg == 2 ? nullptr : v.data(), r.n,
                                   r.nullArg == 3 ? nullptr : &out[0], r.nullArg == 4 ? nullptr : &out[1], 9, kMax, 1, 5.0f))
            << static_cast<int>(r.driver) << " n " << r.n;
        EXPECT_TRUE(SameBits(kUntouched, out[0]));
        EXPECT_TRUE(SameBits(kUntouched, out[1]));
    }
}

struct Curve {
    std::vector<double> x, y;
};

// n samples at x = step * i, y = level except where bumps are laid in from their first sample.
Curve baseline(int n, double step, std::vector<std::pair<int, std::vector<double>>> bumps = {}, double level = 10.0) {
    Curve c{std::vector<double>(static_cast<std::size_t>(n)), std::vector<double>(static_cast<std::size_t>(n), level)};
    for (int i = 0; i < n; ++i) c.x[static_cast<std::size_t>(i)] = step * i;
    for (const auto& [first, values] : bumps) std::copy(values.begin(), values.end(), c.y.begin() + first);
    return c;
}

// A peak 20 samples wide at sample 75 that windows of 9 miss at a 10 % height demand.
Curve broadPeak(int n, std::vector<std::pair<int, std::vector<double>>> bumps = {}) {
    Curve c = baseline(n, 0.5);
    for (int i = 0; i < n; ++i) c.y[static_cast<std::size_t>(i)] += ((i - 75) * (i - 75) < 400 ? 400 - (i - 75) * (i - 75) : 0) / 20.0;
    for (const auto& [first, values] : bumps) std::copy(values.begin(), values.end(), c.y.begin() + first);
    return c;
}

TEST(ExtremumDrivers, SearchesAlongACurve) {
    constexpr double kMaxSentinel = -1e25, kMinSentinel = 1e25;
    const Curve twoPeaks = baseline(40, 0.5, {{5, {11, 13, 14, 13, 11}}, {21, {11, 12, 15, 18, 19, 18, 15, 12, 11}}});
    const Curve equalPeaks = baseline(40, 0.5, {{6, {12, 16, 20, 16, 12}}, {26, {12, 16, 20, 16, 12}}});
    const Curve broad = broadPeak(120), broad108 = broadPeak(108), broad111 = broadPeak(111);
    const Curve narrowAndBroad = broadPeak(120, {{6, {12, 16, 20, 16, 12}}});
    const Curve three{{1, 2, 4}, {1, 3, 2}};
    const Curve needsLastSample{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {3, 2, 5, 2, 8, 8, 8, 7, 4, 2}};  // only window 1..9 holds it
    // Every window of 9 is flat (QAL_OK without a kind); in the second curve after an accepted minimum.
    Curve flat = baseline(12, 1e6), minimumThenFlat = baseline(22, 1.0);
    for (int i = 0; i < 12; ++i) flat.y[static_cast<std::size_t>(i)] += 0.25 * (2 * i - 11) * (2 * i - 11);
    for (int i = 0; i < 22; ++i) {
        minimumThenFlat.x[static_cast<std::size_t>(i)] = i < 10 ? i : 1000010.0 + 1e6 * (i - 10);
        minimumThenFlat.y[static_cast<std::size_t>(i)] += i < 10 ? (i - 4) * (i - 4) : 0.25 * (2 * i - 31) * (2 * i - 31);
    }
    const Curve peak12 = baseline(12, 1.0, {{0, {84, 91, 96, 99, 100, 99, 96, 91, 84, 75, 64, 51}}});
    const Curve line = baseline(12, 1.0, {{0, {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22}}});
    const Curve lateMaximum = baseline(30, 1.0, {{10, {20.1, 20.1, 20.2, 20.4, 20.7, 21.2, 21.8, 22.5, 23.4, 24.3, 25.3, 28.5, 34.1, 31.0, 26.1, 24.7, 23.8, 23.0, 22.1, 21.5}}}, 20.0);
    const Curve fineBeatsCoarse = baseline(30, 1.0, {{0, {20.0, 20.1, 20.5, 22.0, 25.5, 28.9, 28.7, 25.1, 21.8, 20.4}}}, 20.0);
    const Curve fifteen = baseline(15, 1.0, {{0, {26.1, 26.9, 26.1, 23.7, 20.1, 16.6, 14.8, 14.9, 16.2, 17.9, 19.0, 19.7, 19.9, 20.0, 20.0}}});
    const Curve equalAbscissae{std::vector<double>(40, 1.0), twoPeaks.y};

    struct Row {
        const char* guards;
        Driver driver;
        const Curve* curve;
        int window, kind, useVertex;
        float percent;
        int status;
        double xOut, yOut;
    };
    // Hand-derived, or (hexfloat) from an independent re-computation of the told order.
    const Row rows[] = {
        {"first hit is the small peak", Driver::Next, &twoPeaks, 9, kMax, 0, 5.0f, QAL_OK, 3.5, 14.0},
        {"best is the high peak", Driver::Range, &twoPeaks, 9, kMax, 0, 5.0f, QAL_OK, 12.5, 19.0},
        {"first vertex", Driver::Next, &twoPeaks, 9, kMax, 1, 5.0f, QAL_OK, 0x1.a000000000001p+1, 0x1.971c71c71c71dp+3},
        {"best vertex", Driver::Range, &twoPeaks, 9, kMax, 1, 5.0f, QAL_OK, 12.5, 0x1.2555555555555p+4},
        {"auto finds the high peak", Driver::Auto, &twoPeaks, 0, kMax, 1, 5.0f, QAL_OK, 12.5, 0x1.2555555555555p+4},
        {"no window of the wanted kind", Driver::Range, &twoPeaks, 9, kMin, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMinSentinel},
        {"kind 0 matches nothing", Driver::Next, &twoPeaks, 9, 0, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMinSentinel},
        {"kind 0 improves nothing", Driver::Auto, &twoPeaks, 9, 0, 0, 5.0f, QAL_OK, kUntouched, kUntouched},
        {"negative window beyond n", Driver::Next, &twoPeaks, -42, kMax, 0, 5.0f, QAL_ERR_OUT_OF_RANGE, 0.0, kMaxSentinel},
        {"most negative window", Driver::Next, &twoPeaks, kIntMin, kMax, 0, 5.0f, QAL_ERR_OUT_OF_RANGE, 0.0, kMaxSentinel},
        {"oversize window: no windows", Driver::Range, &twoPeaks, kIntMin, kMax, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"equal ordinates keep the earlier window", Driver::Range, &equalPeaks, 9, kMax, 0, 5.0f, QAL_OK, 4.0, 20.0},
        {"n = 3, window 3: no windows", Driver::Next, &three, 3, kMax, 1, 0.0f, QAL_ERR_NOT_FOUND, 1.0, kMaxSentinel},
        {"n = 3, window 3: no windows", Driver::Range, &three, 3, kMax, 1, 0.0f, QAL_ERR_NOT_FOUND, 1.0, kMaxSentinel},
        {"the last sample enters no window", Driver::Next, &needsLastSample, 9, kMax, 0, 0.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"the last sample enters no window", Driver::Range, &needsLastSample, 9, kMax, 0, 0.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"a hit in the first pass ends the search", Driver::AutoRange, &narrowAndBroad, 9, kMax, 0, 10.0f, QAL_OK, 4.0, 20.0},
        {"wider windows see the broad peak", Driver::AutoRange, &narrowAndBroad, 36, kMax, 0, 10.0f, QAL_OK, 37.5, 30.0},
        {"windows of 9 miss the broad peak", Driver::Range, &broad, 9, kMax, 0, 10.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"doubling finds it", Driver::AutoRange, &broad, 9, kMax, 0, 10.0f, QAL_OK, 37.5, 30.0},
        {"window >= n/3: one pass only", Driver::AutoRange, &broad, 42, kMax, 0, 60.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"the doubled window would have found it", Driver::Range, &broad, 84, kMax, 0, 60.0f, QAL_OK, 37.5, 30.0},
        {"doubling stops at n/3: 36 is not below 36", Driver::AutoRange, &broad108, 9, kMax, 0, 20.0f, QAL_ERR_NOT_FOUND, 0.0, kMaxSentinel},
        {"36 is below 37", Driver::AutoRange, &broad111, 9, kMax, 0, 20.0f, QAL_OK, 37.5, 30.0},
        {"a flat window is no hit", Driver::Range, &flat, 9, kMin, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMinSentinel},
        {"a flat window is no hit", Driver::Next, &flat, 9, kMin, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMinSentinel},
        {"a flat window is no hit", Driver::AutoRange, &flat, 9, kMin, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMinSentinel},
        {"each window starts without a kind", Driver::Range, &minimumThenFlat, 9, kMin, 1, 5.0f, QAL_OK, 0x1.fffffffffffffp+1, 0x1.5555555555555p+3},
        {"auto takes a flat window's (0, 0)", Driver::Auto, &flat, 0, kMin, 1, 5.0f, QAL_OK, 0.0, 0.0},
        {"auto: no kind test in the coarse pass", Driver::Auto, &lateMaximum, 0, kMin, 0, 5.0f, QAL_OK, 22.0, 34.1},
        {"auto: the fine pass starts afresh", Driver::Auto, &fineBeatsCoarse, 0, kMin, 1, 5.0f, QAL_OK, 0x1.702e8ba2e8ba1p+2, 0x1.b9b42b7142b70p+4},
        {"auto: coarse and fine window counts", Driver::Auto, &fifteen, 0, kMax, 1, 5.0f, QAL_OK, 0x1.b50d79435e50ep+2, 0x1.e17cdb2c0397ep+3},
        {"auto, n = 12: fine pass only, earlier of equal", Driver::Auto, &peak12, 0, kMax, 1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6},
        {"auto: nothing accepted, outputs untouched", Driver::Auto, &line, 0, kMax, 1, 5.0f, QAL_OK, kUntouched, kUntouched},
        {"every window fails on equal abscissae", Driver::Range, &equalAbscissae, 9, kMax, 1, 5.0f, QAL_ERR_NOT_FOUND, 1.0, kMaxSentinel},
        {"every window fails on equal abscissae", Driver::Auto, &equalAbscissae, 0, kMax, 1, 5.0f, QAL_OK, kUntouched, kUntouched},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        const int n = static_cast<int>(r.curve->x.size());
        EXPECT_EQ(r.status, search(r.driver, r.curve->x.data(), r.curve->y.data(), n, &xOut, &yOut, r.window, r.kind,
                                   r.useVertex, r.percent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
    }
}

}  // namespace
