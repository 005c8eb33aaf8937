// Single calls on a curve of 100 samples: the C++ side of the Python package's overhead
// figures (python/bench/bench_binding.py times the same calls through qallib).
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

constexpr int kCount = 100;

// One peak on a sloping baseline, x = 0, 0.5, 1, ...
struct SmallCurve {
    std::vector<double> x, y;
    SmallCurve() {
        for (int i = 0; i < kCount; ++i) {
            x.push_back(0.5 * i);
            y.push_back(10.0 + 0.1 * i + 30.0 * std::exp(-((i - 50.0) / 10.0) * ((i - 50.0) / 10.0)));
        }
    }
};

const SmallCurve& curve() {
    static const SmallCurve c;
    return c;
}

void BM_Small_FilterArray(benchmark::State& state) {
    const SmallCurve& c = curve();
    std::vector<double> out(kCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_FilterArray(c.y.data(), out.data(), kCount, 0, kCount - 1, QAL_FILTER_AVERAGE, 5, 2));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Small_FilterArray);

void BM_Small_LinFit(benchmark::State& state) {
    const SmallCurve& c = curve();
    double intercept = 0.0, slope = 0.0;
    for (auto _ : state) {
        QAL_LinFit(c.x.data(), c.y.data(), kCount, &intercept, &slope);
        benchmark::DoNotOptimize(slope);
    }
}
BENCHMARK(BM_Small_LinFit);

void BM_Small_Interpol(benchmark::State& state) {
    const SmallCurve& c = curve();
    double y = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_Interpol(&y, 20.25, c.x.data(), c.y.data(), nullptr, kCount, QAL_INTERPOL_SEGMENT));
    }
}
BENCHMARK(BM_Small_Interpol);

void BM_Small_FindX_at_YThreshold(benchmark::State& state) {
    const SmallCurve& c = curve();
    double x = 0.0, y = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_FindX_at_YThreshold(c.x.data(), c.y.data(), kCount, 1, 1, 2, 25.0f, 0.0f, &x, &y));
    }
}
BENCHMARK(BM_Small_FindX_at_YThreshold);

void BM_Small_GetRangeExtremum(benchmark::State& state) {
    const SmallCurve& c = curve();
    double x = 0.0, y = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            QAL_GetRangeExtremum(c.x.data(), c.y.data(), kCount, &x, &y, 15, QAL_EXTREMUM_MAX, 1, 0.0f));
    }
}
BENCHMARK(BM_Small_GetRangeExtremum);

void BM_Small_DerivArray(benchmark::State& state) {
    const SmallCurve& c = curve();
    std::vector<double> deriv(kCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_DerivArray(c.x.data(), c.y.data(), deriv.data(), kCount, QAL_DERIV_SPLINE, 1, 0));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Small_DerivArray);

}  // namespace
