// Derivative curves by QAL_DerivArray: the line-fit paths (one fit of 11 samples per sample, no
// running sums) over 100,000 samples, and the spline path (one table, then a bisection per knot)
// over 10,000, the most its spline takes.
#include <cmath>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

struct Curve {
    std::vector<double> x, y, deriv;
    explicit Curve(int n) : deriv(static_cast<std::size_t>(n)) {
        std::uint32_t state = 31337u;
        double t = 0.0;
        for (int i = 0; i < n; ++i) {
            state = state * 1664525u + 1013904223u;
            const double uniform = static_cast<double>(state >> 8) / 16777216.0;
            t += 0.75 + 0.5 * uniform;
            x.push_back(t);
            y.push_back(20.0 * std::sin(t / 400.0) + uniform - 0.5);
        }
    }
    int size() const { return static_cast<int>(x.size()); }
};

Curve& curve(int n) {
    static Curve large(100000), small(10000);
    return n == 100000 ? large : small;
}

// Arguments: sample count, method, order.
void BM_DerivArray(benchmark::State& state) {
    Curve& c = curve(static_cast<int>(state.range(0)));
    const int method = static_cast<int>(state.range(1)), order = static_cast<int>(state.range(2));
    for (auto _ : state) {
        benchmark::DoNotOptimize(QAL_DerivArray(c.x.data(), c.y.data(), c.deriv.data(), c.size(), method, order, 11));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * c.size());
}
BENCHMARK(BM_DerivArray)
    ->Args({100000, QAL_DERIV_LINE_FIT, 1})
    ->Args({100000, QAL_DERIV_LINE_FIT, 2})
    ->Args({10000, QAL_DERIV_SPLINE, 1})
    ->Args({10000, QAL_DERIV_SPLINE, 2})
    ->Unit(benchmark::kMillisecond);

}  // namespace
