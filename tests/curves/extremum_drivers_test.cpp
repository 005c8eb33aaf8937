#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "curves/extremum_windows.h"
#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::SameBits;
using qal::test::kUntouched;

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();

TEST(ExtremumWindows, SizeFromRequest) {
    struct Row {
        int window, n, size;
    };
    const Row rows[] = {
        {10, 100, 9}, {2, 100, 3},  {0, 100, 3},   {-7, 100, 6},
        {101, 100, 48}, {4, 100, 3}, {5, 100, 3},  {100, 100, 99},  // equal to n is not above it
        {-300, 100, 300},  // a negative request may exceed n
        {kIntMin, 100, 2147483646},  // magnitude 2^31, not an overflow
    };
    for (const Row& r : rows) {
        EXPECT_EQ(r.size, qal::detail::extremumWindowSize(r.window, r.n)) << r.window << " of " << r.n;
    }
}

TEST(ExtremumWindows, AutoSizesFromCount) {
    struct Row {
        int n, coarse, fine;
    };
    const Row rows[] = {{1, 12, 9},    {11, 12, 9},   {74, 12, 9},   {75, 15, 9},  {89, 15, 9},
                        {90, 18, 9},   {209, 39, 9},  {210, 42, 21}, {1000000, 42, 21}, {kIntMax, 42, 21}};
    for (const Row& r : rows) {
        const auto sizes = qal::detail::autoExtremumWindowSizes(r.n);
        EXPECT_EQ(r.coarse, sizes.coarse) << r.n;
        EXPECT_EQ(r.fine, sizes.fine) << r.n;
    }
}

enum class Driver { Next, Range, AutoRange, Auto };

int callDriver(Driver d, const double* x, const double* y, int n, double* xOut, double* yOut, int window,
               int kind, int useVertex, float minHeightPercent) {
    switch (d) {
        case Driver::Next:
            return QAL_GetNextExtremum(x, y, n, xOut, yOut, window, kind, useVertex, minHeightPercent);
        case Driver::Range:
            return QAL_GetRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, minHeightPercent);
        case Driver::AutoRange:
            return QAL_GetAutoRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, minHeightPercent);
        case Driver::Auto:
            return QAL_GetAutoExtremum(x, y, n, xOut, yOut, kind, useVertex, minHeightPercent);
    }
    return -1;
}

TEST(ExtremumDrivers, BadArgumentsAreRefusedBeforeAnyWrite) {
    const std::vector<double> x(12, 1.0), y(12, 2.0);
    double xOut = kUntouched, yOut = kUntouched;
    struct Row {
        Driver driver;
        bool nullX, nullY, nullXOut, nullYOut;
        int n, status;
    };
    const Row rows[] = {
        {Driver::Next, true, false, false, false, 12, QAL_ERR_MEMORY},
        {Driver::Range, false, true, false, false, 12, QAL_ERR_MEMORY},
        {Driver::AutoRange, false, false, true, false, 12, QAL_ERR_MEMORY},
        {Driver::Auto, false, false, false, true, 12, QAL_ERR_MEMORY},
        {Driver::Next, false, false, false, false, 2, QAL_ERR_MEMORY},
        {Driver::Range, false, false, false, false, 2, QAL_ERR_MEMORY},
        {Driver::AutoRange, false, false, false, false, -3, QAL_ERR_MEMORY},
        {Driver::Auto, false, false, false, false, 0, QAL_ERR_MEMORY},
        {Driver::Auto, false, false, false, false, 2, QAL_ERR_PARAMETER},
        {Driver::Auto, false, false, false, false, 11, QAL_ERR_PARAMETER},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(r.status, callDriver(r.driver, r.nullX ? nullptr : x.data(), r.nullY ? nullptr : y.data(), r.n,
                                       r.nullXOut ? nullptr : &xOut, r.nullYOut ? nullptr : &yOut, 9,
                                       QAL_EXTREMUM_MAX, 1, 5.0f))
            << static_cast<int>(r.driver) << " n " << r.n;
        EXPECT_TRUE(SameBits(kUntouched, xOut));
        EXPECT_TRUE(SameBits(kUntouched, yOut));
    }
}

// x = 0, 0.5, 1, ...
std::vector<double> halfSteps(int n) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = 0.5 * i;
    return x;
}

std::vector<double> withBumps(int n, const std::vector<std::pair<int, std::vector<double>>>& bumps) {
    std::vector<double> y(static_cast<std::size_t>(n), 10.0);
    for (const auto& [first, values] : bumps) {
        for (std::size_t k = 0; k < values.size(); ++k) y[static_cast<std::size_t>(first) + k] = values[k];
    }
    return y;
}

// A peak 20 samples wide at sample 75 that windows of 9 miss at a 10 % height demand.
std::vector<double> broadPeak(int n) {
    std::vector<double> y(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const int d = i - 75;
        y[static_cast<std::size_t>(i)] = 10.0 + (d * d < 400 ? 400 - d * d : 0) / 20.0;
    }
    return y;
}

struct Curve {
    std::vector<double> x, y;
};

TEST(ExtremumDrivers, SearchesAlongACurve) {
    constexpr double kMax = -1e25, kMin = 1e25;  // the sentinels in yOut
    const Curve small14ThenHigh19{halfSteps(40), withBumps(40, {{5, {11, 13, 14, 13, 11}},
                                                                {21, {11, 12, 15, 18, 19, 18, 15, 12, 11}}})};
    const Curve twoEqualPeaks{halfSteps(40), withBumps(40, {{6, {12, 16, 20, 16, 12}}, {26, {12, 16, 20, 16, 12}}})};
    const Curve broad{halfSteps(120), broadPeak(120)};
    Curve narrowAndBroad{halfSteps(120), broadPeak(120)};
    const double narrow[] = {12, 16, 20, 16, 12};
    std::copy(std::begin(narrow), std::end(narrow), narrowAndBroad.y.begin() + 6);
    const Curve threePoints{{1, 2, 4}, {1, 3, 2}};
    // Window 0..8 holds no extremum; only the window 1..9, which no driver forms, does.
    const Curve peakNeedsLastSample{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {3, 2, 5, 2, 8, 8, 8, 7, 4, 2}};
    // Every window of 9 is flat: QAL_OK with no kind.
    Curve flat{{}, {}};
    for (int i = 0; i < 12; ++i) {
        flat.x.push_back(i * 1e6);
        flat.y.push_back(10.0 + 0.25 * (2 * i - 11) * (2 * i - 11));
    }
    const Curve peak12{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {84, 91, 96, 99, 100, 99, 96, 91, 84, 75, 64, 51}};
    const Curve line{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22}};
    const Curve equalAbscissae{std::vector<double>(40, 1.0), small14ThenHigh19.y};

    struct Row {
        const char* guards;
        Driver driver;
        const Curve* curve;
        int window, kind, useVertex;
        float minHeightPercent;
        int status;
        double xOut, yOut;
    };
    // Hand-derived, or (hexfloat) from an independent re-computation of the told order.
    const Row rows[] = {
        {"first hit is the small peak", Driver::Next, &small14ThenHigh19, 9, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_OK, 3.5, 14.0},
        {"best is the high peak", Driver::Range, &small14ThenHigh19, 9, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_OK, 12.5, 19.0},
        {"first vertex", Driver::Next, &small14ThenHigh19, 9, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, 0x1.a000000000001p+1, 0x1.971c71c71c71dp+3},
        {"best vertex", Driver::Range, &small14ThenHigh19, 9, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, 12.5, 0x1.2555555555555p+4},
        {"one pass suffices", Driver::AutoRange, &small14ThenHigh19, 9, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, 12.5, 0x1.2555555555555p+4},
        {"auto finds the high peak", Driver::Auto, &small14ThenHigh19, 0, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, 12.5, 0x1.2555555555555p+4},
        {"auto takes a maximum when asked for a minimum", Driver::Auto, &small14ThenHigh19, 0, QAL_EXTREMUM_MIN, 0, 5.0f, QAL_OK, 3.5, 14.0},
        {"no window of the wanted kind", Driver::Range, &small14ThenHigh19, 9, QAL_EXTREMUM_MIN, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMin},
        {"kind 0 matches nothing", Driver::Next, &small14ThenHigh19, 9, 0, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMin},
        {"kind 0 matches nothing, auto", Driver::Auto, &small14ThenHigh19, 9, 0, 0, 5.0f, QAL_OK, kUntouched, kUntouched},
        {"negative window beyond n", Driver::Next, &small14ThenHigh19, -42, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_ERR_OUT_OF_RANGE, 0.0, kMax},
        {"most negative window", Driver::Next, &small14ThenHigh19, kIntMin, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_ERR_OUT_OF_RANGE, 0.0, kMax},
        {"oversize window: no windows", Driver::Range, &small14ThenHigh19, kIntMin, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMax},
        {"equal ordinates keep the earlier window", Driver::Range, &twoEqualPeaks, 9, QAL_EXTREMUM_MAX, 0, 5.0f, QAL_OK, 4.0, 20.0},
        {"n = 3, window 3: no windows", Driver::Next, &threePoints, 3, QAL_EXTREMUM_MAX, 1, 0.0f, QAL_ERR_NOT_FOUND, 1.0, kMax},
        {"n = 3, window 3: no windows", Driver::Range, &threePoints, 3, QAL_EXTREMUM_MAX, 1, 0.0f, QAL_ERR_NOT_FOUND, 1.0, kMax},
        {"the last sample enters no window", Driver::Next, &peakNeedsLastSample, 9, QAL_EXTREMUM_MAX, 0, 0.0f, QAL_ERR_NOT_FOUND, 0.0, kMax},
        {"the last sample enters no window", Driver::Range, &peakNeedsLastSample, 9, QAL_EXTREMUM_MAX, 0, 0.0f, QAL_ERR_NOT_FOUND, 0.0, kMax},
        {"a hit in the first pass ends the search", Driver::AutoRange, &narrowAndBroad, 9, QAL_EXTREMUM_MAX, 0, 10.0f, QAL_OK, 4.0, 20.0},
        {"wider windows see the broad peak", Driver::AutoRange, &narrowAndBroad, 36, QAL_EXTREMUM_MAX, 0, 10.0f, QAL_OK, 37.5, 30.0},
        {"windows of 9 miss the broad peak", Driver::Range, &broad, 9, QAL_EXTREMUM_MAX, 0, 10.0f, QAL_ERR_NOT_FOUND, 0.0, kMax},
        {"doubling finds it", Driver::AutoRange, &broad, 9, QAL_EXTREMUM_MAX, 0, 10.0f, QAL_OK, 37.5, 30.0},
        {"window >= n/3: one pass only", Driver::AutoRange, &broad, 42, QAL_EXTREMUM_MAX, 0, 60.0f, QAL_ERR_NOT_FOUND, 0.0, kMax},
        {"the doubled window would have found it", Driver::Range, &broad, 84, QAL_EXTREMUM_MAX, 0, 60.0f, QAL_OK, 37.5, 30.0},
        {"a flat window is no hit", Driver::Range, &flat, 9, QAL_EXTREMUM_MIN, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMin},
        {"a flat window is no hit", Driver::Next, &flat, 9, QAL_EXTREMUM_MIN, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMin},
        {"a flat window is no hit", Driver::AutoRange, &flat, 9, QAL_EXTREMUM_MIN, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, kMin},
        {"auto takes a flat window's (0, 0)", Driver::Auto, &flat, 0, QAL_EXTREMUM_MIN, 1, 5.0f, QAL_OK, 0.0, 0.0},
        {"n = 12: fine pass only, earlier of equal windows", Driver::Auto, &peak12, 0, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6},
        {"nothing accepted: outputs untouched", Driver::Auto, &line, 0, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, kUntouched, kUntouched},
        {"every window fails on equal abscissae", Driver::Range, &equalAbscissae, 9, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_ERR_NOT_FOUND, 1.0, kMax},
        {"every window fails on equal abscissae", Driver::Auto, &equalAbscissae, 0, QAL_EXTREMUM_MAX, 1, 5.0f, QAL_OK, kUntouched, kUntouched},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        const int n = static_cast<int>(r.curve->x.size());
        EXPECT_EQ(r.status, callDriver(r.driver, r.curve->x.data(), r.curve->y.data(), n, &xOut, &yOut, r.window,
                                       r.kind, r.useVertex, r.minHeightPercent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
    }
}

}  // namespace
