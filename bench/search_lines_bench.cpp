// Ordered search and line fits on 1,000,000 samples.
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

constexpr int kCount = 1000000;

// Ascending, unevenly spaced abscissae and a noisy line over them.
struct Samples {
    std::vector<double> x, y;
    std::vector<float> xf, yf;
    Samples() {
        std::uint32_t state = 2024u;
        double t = 0.0;
        for (int i = 0; i < kCount; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0;
            t += 0.5 + noise;
            x.push_back(t);
            y.push_back(3.0 + 0.25 * t + noise);
            xf.push_back(static_cast<float>(t));
            yf.push_back(static_cast<float>(y.back()));
        }
    }
};

const Samples& samples() {
    static const Samples s;
    return s;
}

// One lookup per iteration, cycling through 4096 values spread over the whole range.
void BM_LocateValue(benchmark::State& state) {
    const Samples& s = samples();
    std::vector<double> values;
    for (int k = 0; k < 4096; ++k) values.push_back(s.x.front() + (s.x.back() - s.x.front()) * (k + 0.5) / 4096.0);
    std::size_t k = 0;
    for (auto _ : state) {
        int index = 0;
        benchmark::DoNotOptimize(QAL_LocateValue(values[k], s.x.data(), kCount, &index));
        benchmark::DoNotOptimize(index);
        k = (k + 1) & 4095u;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LocateValue);

void BM_LinFit(benchmark::State& state) {
    const Samples& s = samples();
    for (auto _ : state) {
        double intercept = 0.0, slope = 0.0;
        QAL_LinFit(s.x.data(), s.y.data(), kCount, &intercept, &slope);
        benchmark::DoNotOptimize(intercept);
        benchmark::DoNotOptimize(slope);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_LinFit)->Unit(benchmark::kMillisecond);

void BM_LinFitFloat(benchmark::State& state) {
    const Samples& s = samples();
    for (auto _ : state) {
        float intercept = 0.0f, slope = 0.0f;
        QAL_LinFitFloat(s.xf.data(), s.yf.data(), kCount, &intercept, &slope);
        benchmark::DoNotOptimize(intercept);
        benchmark::DoNotOptimize(slope);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_LinFitFloat)->Unit(benchmark::kMillisecond);

}  // namespace
