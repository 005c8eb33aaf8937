// The Savitzky-Golay filter (degree 2) over 1,000,000 noisy samples at three widths.
#include <cmath>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

constexpr int kCount = 1000000;

const std::vector<double>& noisyCurve() {
    static const std::vector<double> y = [] {
        std::vector<double> samples;
        std::uint32_t state = 4711u;
        for (int i = 0; i < kCount; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
            samples.push_back(50.0 + 20.0 * std::sin(0.00005 * i) + noise);
        }
        return samples;
    }();
    return y;
}

void BM_FilterArraySavitzkyGolay(benchmark::State& state) {
    const std::vector<double>& in = noisyCurve();
    std::vector<double> out(in.size());
    const int width = static_cast<int>(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            QAL_FilterArray(in.data(), out.data(), kCount, 0, kCount - 1, QAL_FILTER_SAVITZKY_GOLAY, width, 2));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_FilterArraySavitzkyGolay)->Arg(7)->Arg(51)->Arg(299)->Unit(benchmark::kMillisecond);

}  // namespace
