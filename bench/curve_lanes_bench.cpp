// The curve searches with vector lanes, each beside the plain one-at-a-time loop that the
// library ran before it had lanes: QAL_GetRangeExtremum as one QAL_GetExtremum per
// window, and the forward threshold scan one pair at a time. The plain loops are copies
// of the scalar code, kept here so that they stay what the library is measured against.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "lane_workload.h"
#include "qal/qal.h"

namespace qal::bench {
namespace {

constexpr int kSamples = 1000000;

// ---- QAL_GetExtremum, one window at a time --------------------------------------------

constexpr double kSlopeLevel = 1e-6;

struct Parabola {
    double x1, x2, x3, w1, w2, w3;
    double slope(double t) const {
        const double twoT = 2.0 * t;
        return w1 * (twoT - x2 - x3) + w2 * (twoT - x1 - x3) + w3 * (twoT - x1 - x2);
    }
    double value(double t) const {
        return (t - x3) * (t - x2) * w1 + (t - x3) * (t - x1) * w2 + (t - x2) * (t - x1) * w3;
    }
};

void plainMean(const double* x, const double* y, int first, int count, double& meanX, double& meanY) {
    double sumX = 0.0;
    double sumY = 0.0;
    for (int i = first; i < first + count; ++i) {
        sumX += x[i];
        sumY += y[i];
    }
    meanX = sumX / static_cast<double>(count);
    meanY = sumY / static_cast<double>(count);
}

// QAL_GetExtremum with the vertex reported (the only use below), n a multiple of 3.
int plainExtremum(const double* x, const double* y, int n, double* xOut, double* yOut, int* kindOut,
                  float minHeightPercent) {
    *yOut = 0.0;
    *xOut = 0.0;
    const int third = n / 3;
    double x1, y1, x2, y2, x3, y3;
    plainMean(x, y, 0, third, x1, y1);
    plainMean(x, y, third, third, x2, y2);
    plainMean(x, y, 2 * third, third, x3, y3);
    if (1e-25 > std::fabs(x1 - x2) || 1e-25 > std::fabs(x1 - x3) || 1e-25 > std::fabs(x2 - x3)) {
        return QAL_ERR_ZERO_DIVISION;
    }
    const Parabola p{x1, x2, x3, y1 / ((x1 - x3) * (x1 - x2)), y2 / ((x2 - x3) * (x2 - x1)),
                     y3 / ((x3 - x2) * (x3 - x1))};
    const double s1 = p.slope(p.x1);
    const double s3 = p.slope(p.x3);
    if (!((s1 < kSlopeLevel && s3 > kSlopeLevel) || (s1 > kSlopeLevel && s3 < kSlopeLevel))) {
        return QAL_ERR_NOT_FOUND;
    }
    const double curvature = 2.0 * p.w2 + 2.0 * p.w1 + 2.0 * p.w3;
    if (std::fabs(curvature) <= kSlopeLevel) return QAL_OK;
    double t = p.x1 - s1 / curvature;
    double d = p.slope(t);
    for (int step = 1; std::fabs(d) >= kSlopeLevel && step < 40; ++step) {
        d = d / curvature;
        t = t - d;
        d = p.slope(t);
    }
    if (!(std::fabs(d) < kSlopeLevel)) return QAL_ERR_NOT_FOUND;
    *xOut = t;
    *yOut = p.value(t);
    const double h = std::fabs(y2) / 100.0 * static_cast<double>(minHeightPercent);
    const bool sameSign = y2 * y1 > 0.0 && y3 * y2 > 0.0;
    if (curvature < 0.0 && y2 > y1 && y2 > y3 && sameSign && (y2 - y1 > h || y2 - y3 > h)) {
        *kindOut = QAL_EXTREMUM_MAX;
    } else if (curvature > 0.0 && y2 < y1 && y2 < y3 && sameSign && (y1 - y2 > h || y3 - y2 > h)) {
        *kindOut = QAL_EXTREMUM_MIN;
    } else {
        return QAL_ERR_NOT_FOUND;
    }
    return QAL_OK;
}

// QAL_GetRangeExtremum for a maximum with the vertex reported, window within 3..n.
int plainRangeMaximum(const double* x, const double* y, int n, double* xOut, double* yOut, int window,
                      float minHeightPercent) {
    double best = -1e25;
    *yOut = best;
    *xOut = x[0];
    const int size = window / 3 * 3;
    int status = QAL_ERR_NOT_FOUND;
    for (int start = 0; start < n - size; ++start) {
        int kind = 0;
        double xWindow = 0.0, yWindow = 0.0;
        const int windowStatus =
            plainExtremum(x + start, y + start, size, &xWindow, &yWindow, &kind, minHeightPercent);
        if (windowStatus == QAL_OK && kind == QAL_EXTREMUM_MAX && yWindow > best) {
            best = yWindow;
            *yOut = yWindow;
            *xOut = xWindow;
            status = QAL_OK;
        }
    }
    return status;
}

// ---- QAL_FindX_at_YThreshold, an absolute level, forward, one pair at a time ----------

int plainForwardScan(const double* x, const double* y, int n, float threshold, double* xOut, double* yOut) {
    const double level = static_cast<double>(threshold);
    *yOut = y[0];
    *xOut = x[0];
    for (int i = 0; i < n - 2; ++i) {
        if (!(0.0 >= (y[i + 1] - level) * (y[i] - level))) continue;
        *yOut = y[i];
        *xOut = x[i];
        return QAL_OK;
    }
    if (0.0 >= (y[n - 1] - level) * (y[n - 1] - y[0])) {
        *yOut = y[n - 1];
        *xOut = x[n - 1];
    }
    return QAL_ERR_NOT_FOUND;
}

// ---- Workloads ------------------------------------------------------------------------

// A slow wave with a faster one on it and noise of +-0.5: at a 0.5 % height demand some
// windows of every size hold an accepted peak.
struct NoisyCurve {
    std::vector<double> x, y;
    NoisyCurve() {
        std::uint32_t state = 12345u;
        for (int i = 0; i < kSamples; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
            const double t = 0.001 * i;
            x.push_back(t);
            y.push_back(50.0 + 20.0 * std::sin(t * 0.05) + 8.0 * std::sin(t * 0.7) + noise);
        }
    }
};

const NoisyCurve& noisyCurve() {
    static const NoisyCurve curve;
    return curve;
}

// What one search left: its status and both outputs.
struct Result {
    int status = -1;
    double x = 0.0, y = 0.0;
    bool operator==(const Result& other) const {
        return status == other.status && std::memcmp(&x, &other.x, sizeof x) == 0 &&
               std::memcmp(&y, &other.y, sizeof y) == 0;
    }
};

struct Pair {
    Result plain, library;
};

LaneWorkload rangeWorkload(int window, double must, double aim) {
    static Pair results[2];
    Pair& r = results[window == 42 ? 0 : 1];
    constexpr float kHeight = 0.5f;
    LaneWorkload w;
    w.name = "GetRangeExtremum, 1e6 samples, window " + std::to_string(window);
    w.must = must;
    w.aim = aim;
    w.plain = [&r, window] {
        const NoisyCurve& c = noisyCurve();
        r.plain.status = plainRangeMaximum(c.x.data(), c.y.data(), kSamples, &r.plain.x, &r.plain.y, window, kHeight);
        benchmark::ClobberMemory();
    };
    w.library = [&r, window] {
        const NoisyCurve& c = noisyCurve();
        r.library.status = QAL_GetRangeExtremum(c.x.data(), c.y.data(), kSamples, &r.library.x, &r.library.y, window,
                                                QAL_EXTREMUM_MAX, 1, kHeight);
        benchmark::ClobberMemory();
    };
    w.sameBits = [&r] { return r.plain == r.library; };
    return w;
}

// The level lies above the whole curve: every pair is tested and none is a hit.
LaneWorkload thresholdWorkload() {
    static Pair r;
    constexpr float kLevel = 1000.0f;
    LaneWorkload w;
    w.name = "FindX_at_YThreshold, forward scan of 1e6 samples without a hit";
    w.must = 0.80;
    w.aim = 0.40;
    w.plain = [] {
        const NoisyCurve& c = noisyCurve();
        r.plain.status = plainForwardScan(c.x.data(), c.y.data(), kSamples, kLevel, &r.plain.x, &r.plain.y);
        benchmark::ClobberMemory();
    };
    w.library = [] {
        const NoisyCurve& c = noisyCurve();
        r.library.status = QAL_FindX_at_YThreshold(c.x.data(), c.y.data(), kSamples, 0, 0, 0, kLevel, 0.0f,
                                                   &r.library.x, &r.library.y);
        benchmark::ClobberMemory();
    };
    w.sameBits = [] { return r.plain == r.library; };
    return w;
}

}  // namespace

std::vector<LaneWorkload> curveLaneWorkloads() {
    return {rangeWorkload(42, 0.45, 0.30), rangeWorkload(9, 0.60, 0.40), thresholdWorkload()};
}

}  // namespace qal::bench
