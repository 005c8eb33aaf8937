// Resampling a 10,000-point curve at 1,000,000 new abscissae, each form beside the plain
// per-point loop of QAL_Interpol that it replaces, and spline evaluation from a prebuilt
// table. Compare items per second: the plain loop at options 2, 4 and 12 redoes the
// whole-curve work for every point, so it runs on a subset of the points only.
#include <cmath>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

constexpr int kCurvePoints = 10000;
constexpr int kNewPoints = 1000000;

// A positive, smooth, noisy curve on unevenly spaced ascending abscissae (positive for the
// log-log options), and new abscissae ascending over its inside and in random order.
struct Data {
    std::vector<float> x, y, xNew, yNew;
    std::vector<double> xd, yd, y2, sortedNew, randomNew;
    Data() : yNew(kNewPoints), y2(kCurvePoints) {
        std::uint32_t state = 2024u;
        auto uniform = [&state] {
            state = state * 1664525u + 1013904223u;
            return static_cast<double>(state >> 8) / 16777216.0;
        };
        double t = 1.0;
        for (int i = 0; i < kCurvePoints; ++i) {
            t += 0.5 + uniform();
            x.push_back(static_cast<float>(t));
            y.push_back(static_cast<float>(10.0 + std::sin(t / 50.0) * 5.0 + 0.1 * uniform()));
            xd.push_back(static_cast<double>(x.back()));
            yd.push_back(static_cast<double>(y.back()));
        }
        const double first = xd.front(), span = xd.back() - xd.front();
        for (int i = 0; i < kNewPoints; ++i) {
            sortedNew.push_back(first + span * (i + 0.5) / kNewPoints);
            xNew.push_back(static_cast<float>(sortedNew.back()));
            randomNew.push_back(first + span * uniform());
        }
        QAL_Splines(xd.data(), yd.data(), kCurvePoints, 1e25, 1e25, y2.data());
    }
};

Data& data() {
    static Data d;
    return d;
}

// What the array form does without sharing: widen, then one QAL_Interpol per point.
int plainLoop(const Data& d, int count, float* yNew, int option) {
    const std::vector<double> x(d.x.begin(), d.x.end()), y(d.y.begin(), d.y.end());
    int status = QAL_OK;
    for (int i = 0; i < count; ++i) {
        double out = 0.0;
        status = QAL_Interpol(&out, static_cast<double>(d.xNew[static_cast<std::size_t>(i)]), x.data(), y.data(),
                              nullptr, kCurvePoints, option);
        if (status == QAL_OK) yNew[i] = static_cast<float>(out);
    }
    return status;
}

void BM_InterpolFloatArrays(benchmark::State& state) {
    Data& d = data();
    const int option = static_cast<int>(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_InterpolFloatArrays(d.x.data(), d.y.data(), kCurvePoints, d.xNew.data(),
                                                         d.yNew.data(), kNewPoints, option));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kNewPoints);
}
BENCHMARK(BM_InterpolFloatArrays)->Arg(2)->Arg(4)->Arg(5)->Arg(12)->Unit(benchmark::kMillisecond);

// Second argument: the number of points the plain loop takes (all of them at option 5).
void BM_InterpolPerPointLoop(benchmark::State& state) {
    Data& d = data();
    const int option = static_cast<int>(state.range(0)), count = static_cast<int>(state.range(1));
    for (auto _ : state) {
        benchmark::DoNotOptimize(plainLoop(d, count, d.yNew.data(), option));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_InterpolPerPointLoop)
    ->Args({2, 2000})
    ->Args({4, 200})
    ->Args({5, kNewPoints})
    ->Args({12, 500})
    ->Unit(benchmark::kMillisecond);

void splineEvaluation(benchmark::State& state, const std::vector<double>& at) {
    const Data& d = data();
    for (auto _ : state) {
        double sum = 0.0;
        for (const double v : at) {
            double out = 0.0;
            QAL_CubicSplineInterpolation(d.xd.data(), d.yd.data(), d.y2.data(), kCurvePoints, v, &out);
            sum += out;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(at.size()));
}
void BM_CubicSplineInterpolationSorted(benchmark::State& state) { splineEvaluation(state, data().sortedNew); }
void BM_CubicSplineInterpolationRandom(benchmark::State& state) { splineEvaluation(state, data().randomNew); }
BENCHMARK(BM_CubicSplineInterpolationSorted)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CubicSplineInterpolationRandom)->Unit(benchmark::kMillisecond);

}  // namespace
