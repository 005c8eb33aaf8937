// QAL_LUDecomposition followed by QAL_LUSolveEqua on 100,000 systems of order 5.
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "qal/qal.h"

namespace {

constexpr int kOrder = 5;
constexpr int kSystems = 100000;

// Matrices and right-hand sides with elements in -1 .. 1, so that the pivots vary from system to system.
struct Systems {
    std::vector<double> a, b;
    Systems() : a(std::size_t{kSystems} * kOrder * kOrder), b(std::size_t{kSystems} * kOrder) {
        std::uint32_t state = 2024u;
        const auto next = [&state] {
            state = state * 1664525u + 1013904223u;
            return static_cast<double>(state >> 8) / 8388608.0 - 1.0;
        };
        for (double& e : a) e = next();
        for (double& e : b) e = next();
    }
};

const Systems& systems() {
    static const Systems s;
    return s;
}

// The decomposition works in place, so each system is first copied into one work matrix; the copy of 30
// doubles is part of the figure.
void BM_LUDecomposeAndSolve(benchmark::State& state) {
    const Systems& s = systems();
    double block[kOrder * kOrder], b[kOrder], sign = 0.0;
    double* rows[kOrder];
    for (int i = 0; i < kOrder; ++i) rows[i] = block + i * kOrder;
    int pivots[kOrder];
    for (auto _ : state) {
        for (std::size_t k = 0; k < kSystems; ++k) {
            std::memcpy(block, &s.a[k * kOrder * kOrder], sizeof block);
            std::memcpy(b, &s.b[k * kOrder], sizeof b);
            benchmark::DoNotOptimize(QAL_LUDecomposition(rows, kOrder, pivots, &sign));
            QAL_LUSolveEqua(rows, kOrder, pivots, b);
            benchmark::DoNotOptimize(b);
        }
    }
    state.SetItemsProcessed(state.iterations() * kSystems);
}
BENCHMARK(BM_LUDecomposeAndSolve)->Unit(benchmark::kMillisecond);

}  // namespace
