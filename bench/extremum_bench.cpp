// The extremum drivers on a 1,000,000-sample noisy curve.
#include <cmath>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

struct NoisyCurve {
    std::vector<double> x, y;
    explicit NoisyCurve(int n) : x(static_cast<std::size_t>(n)), y(static_cast<std::size_t>(n)) {
        std::uint32_t state = 12345u;
        for (int i = 0; i < n; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
            const double t = 0.001 * i;
            x[static_cast<std::size_t>(i)] = t;
            y[static_cast<std::size_t>(i)] = 50.0 + 20.0 * std::sin(t * 0.05) + 8.0 * std::sin(t * 0.7) + noise;
        }
    }
    int size() const { return static_cast<int>(x.size()); }
};

const NoisyCurve& curve() {
    static const NoisyCurve c(1000000);
    return c;
}

void BM_GetRangeExtremum(benchmark::State& state) {
    const NoisyCurve& c = curve();
    const int window = static_cast<int>(state.range(0));
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        benchmark::DoNotOptimize(
            QAL_GetRangeExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, window, QAL_EXTREMUM_MAX, 1, 5.0f));
        benchmark::DoNotOptimize(y);
    }
    state.SetItemsProcessed(state.iterations() * (c.size() - window));
}
BENCHMARK(BM_GetRangeExtremum)->Arg(9)->Arg(42)->Unit(benchmark::kMillisecond);

void BM_GetNextExtremumWholePass(benchmark::State& state) {
    const NoisyCurve& c = curve();
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        // kind 0 matches no window, so the whole curve is searched
        benchmark::DoNotOptimize(QAL_GetNextExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 21, 0, 1, 5.0f));
    }
    state.SetItemsProcessed(state.iterations() * (c.size() - 21));
}
BENCHMARK(BM_GetNextExtremumWholePass)->Unit(benchmark::kMillisecond);

// A 0.5 % height demand lets the first pass (windows of 9) find the valleys; with a demand
// the noise cannot meet, the windows double up to n/3 and the search costs minutes.
void BM_GetAutoRangeExtremum(benchmark::State& state) {
    const NoisyCurve& c = curve();
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        benchmark::DoNotOptimize(
            QAL_GetAutoRangeExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 9, QAL_EXTREMUM_MIN, 0, 0.5f));
    }
}
BENCHMARK(BM_GetAutoRangeExtremum)->Unit(benchmark::kMillisecond);

void BM_GetAutoExtremum(benchmark::State& state) {
    const NoisyCurve& c = curve();
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        benchmark::DoNotOptimize(QAL_GetAutoExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, QAL_EXTREMUM_MAX, 1, 5.0f));
    }
}
BENCHMARK(BM_GetAutoExtremum)->Unit(benchmark::kMillisecond);

}  // namespace
