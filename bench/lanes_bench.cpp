// The routines that compute several outputs at once, each beside the plain
// one-output-at-a-time loop of the same arithmetic, on the same data in the same binary.
// The plain loops are copies of the scalar steps, kept here so that they stay what the
// library is measured against whatever the library does. Before timing, each workload runs
// both once and they must give identical bits; a workload that does not is reported as an
// error. The summary at the end gives library / plain per workload (lower is faster) from
// the fastest repetition of each; run with --benchmark_repetitions=5 on a quiet machine.
//
// To add a workload: append a Workload to workloads() with its plain loop, its library
// call and the comparison of their outputs; a family with several may keep them in a file
// of its own, as curve_lanes_bench.cpp does (lane_workload.h).
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "lane_workload.h"
#include "qal/qal.h"

namespace {

using Workload = qal::bench::LaneWorkload;

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

std::uint32_t nextRandom(std::uint32_t& state) { return state = state * 1664525u + 1013904223u; }
double uniform(std::uint32_t& state) { return static_cast<double>(nextRandom(state) >> 8) / 16777216.0; }

// ---- QAL_FilterArray, kind 20, degree 2 -------------------------------------------------

constexpr int kFilterSamples = 1000000;

// The one-sample step of the filter, as the library had it before it had lanes.
double plainFilteredSample(const double* in, int n, int i, const double* coef, int half) {
    double value = in[i] * coef[half];
    double missing = 0.0;
    for (int j = 1; j <= half; ++j) {
        if (j <= i) {
            value += coef[half - j] * in[i - j];
        } else {
            missing += coef[half - j];
        }
        if (j <= n - 1 - i) {
            value += coef[half + j] * in[i + j];
        } else {
            missing += coef[half + j];
        }
    }
    if (missing != 0.0 && missing != 1.0) value /= 1.0 - missing;
    return value;
}

struct FilterData {
    std::vector<double> in, plainOut, libraryOut;
    FilterData() : plainOut(kFilterSamples), libraryOut(kFilterSamples) {
        std::uint32_t state = 4711u;
        for (int i = 0; i < kFilterSamples; ++i) in.push_back(50.0 + 20.0 * std::sin(0.00005 * i) + uniform(state) - 0.5);
    }
};

Workload filterWorkload(int width, double must, double aim) {
    static FilterData data;
    Workload w;
    w.name = "FilterArray kind 20 degree 2, 1e6 samples, width " + std::to_string(width);
    w.must = must;
    w.aim = aim;
    w.plain = [width] {
        std::vector<double> coef(static_cast<std::size_t>(width));
        QAL_SetFilterCoefficients(coef.data(), QAL_FILTER_SAVITZKY_GOLAY, width, 2);
        const int half = (width - 1) / 2;
        for (int i = 0; i < kFilterSamples; ++i) {
            data.plainOut[static_cast<std::size_t>(i)] =
                plainFilteredSample(data.in.data(), kFilterSamples, i, coef.data(), half);
        }
        benchmark::ClobberMemory();
    };
    w.library = [width] {
        benchmark::DoNotOptimize(QAL_FilterArray(data.in.data(), data.libraryOut.data(), kFilterSamples, 0,
                                                 kFilterSamples - 1, QAL_FILTER_SAVITZKY_GOLAY, width, 2));
        benchmark::ClobberMemory();
    };
    w.sameBits = [] { return sameBits(data.plainOut, data.libraryOut); };
    return w;
}

// ---- QAL_InterpolFloatArrays, option 4 --------------------------------------------------

constexpr int kKnots = 10000;
constexpr int kNewPoints = 1000000;

// The knot bracket and the evaluation of QAL_CubicSplineInterpolation, as the library has
// them one point at a time.
int plainSplineValue(const double* x, const double* y, const double* y2, int n, double v, double* out) {
    int lo = 0;
    int hi = n - 1;
    while (hi - lo > 1) {
        const int mid = static_cast<int>((static_cast<std::int64_t>(hi) + lo) >> 1);
        if (x[mid] > v) {
            hi = mid;
        } else {
            lo = mid;
        }
    }
    const double h = x[hi] - x[lo];
    if (!(std::fabs(h) > 1e-25)) {
        *out = y[lo];
        return QAL_ERR_ZERO_DIVISION;
    }
    const double a = (x[hi] - v) / h;
    const double b = (v - x[lo]) / h;
    const double cubic = ((b * b) * b - b) * y2[hi] + ((a * a) * a - a) * y2[lo];
    *out = cubic * (h * h) / 6.0 + (b * y[hi] + a * y[lo]);
    return QAL_OK;
}

// A smooth, noisy curve on unevenly spaced ascending knots, and new abscissae ascending
// over its inside; the plain loop gets the widened knots and the natural table prebuilt.
struct SplineData {
    std::vector<float> x, y, xNew, plainOut, libraryOut;
    std::vector<double> xd, yd, y2;
    SplineData() : plainOut(kNewPoints, -1.0f), libraryOut(kNewPoints, -1.0f), y2(kKnots) {
        std::uint32_t state = 2024u;
        double t = 1.0;
        for (int i = 0; i < kKnots; ++i) {
            t += 0.5 + uniform(state);
            x.push_back(static_cast<float>(t));
            y.push_back(static_cast<float>(10.0 + std::sin(t / 50.0) * 5.0 + 0.1 * uniform(state)));
            xd.push_back(static_cast<double>(x.back()));
            yd.push_back(static_cast<double>(y.back()));
        }
        const double first = xd.front(), span = xd.back() - xd.front();
        for (int i = 0; i < kNewPoints; ++i) xNew.push_back(static_cast<float>(first + span * (i + 0.5) / kNewPoints));
        QAL_Splines(xd.data(), yd.data(), kKnots, 1e25, 1e25, y2.data());
    }
};

Workload splineWorkload() {
    static SplineData data;
    Workload w;
    w.name = "InterpolFloatArrays option 4, 1e4 knots, 1e6 ascending points";
    w.must = 0.50;
    w.aim = 0.25;
    w.plain = [] {
        for (int i = 0; i < kNewPoints; ++i) {
            const auto k = static_cast<std::size_t>(i);
            double out = 0.0;
            if (plainSplineValue(data.xd.data(), data.yd.data(), data.y2.data(), kKnots,
                                 static_cast<double>(data.xNew[k]), &out) == QAL_OK) {
                data.plainOut[k] = static_cast<float>(out);
            }
        }
        benchmark::ClobberMemory();
    };
    w.library = [] {
        benchmark::DoNotOptimize(QAL_InterpolFloatArrays(data.x.data(), data.y.data(), kKnots, data.xNew.data(),
                                                         data.libraryOut.data(), kNewPoints, QAL_INTERPOL_SPLINE));
        benchmark::ClobberMemory();
    };
    w.sameBits = [] { return sameBits(data.plainOut, data.libraryOut); };
    return w;
}

std::vector<Workload>& workloads() {
    static std::vector<Workload> all = [] {
        std::vector<Workload> list = {
            filterWorkload(7, 0.40, 0.15),
            filterWorkload(51, 0.15, 0.12),
            filterWorkload(299, 0.10, 0.08),
            splineWorkload(),
        };
        for (Workload& w : qal::bench::curveLaneWorkloads()) list.push_back(std::move(w));
        return list;
    }();
    return all;
}

// ---- Summary ----------------------------------------------------------------------------

// The console output as usual, and the fastest repetition of each benchmark kept.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
            const std::string name = run.run_name.function_name;
            auto found = fastest_.find(name);
            if (found == fastest_.end() || seconds < found->second) fastest_[name] = seconds;
        }
    }

    void printSummary(const std::vector<Workload>& all) const {
        std::printf("\n| workload | plain ms | library ms | ratio | must | aim |\n|---|---|---|---|---|---|\n");
        for (const Workload& w : all) {
            const auto plain = fastest_.find(w.name + "/plain"), library = fastest_.find(w.name + "/library");
            if (plain == fastest_.end() || library == fastest_.end()) continue;
            const double ratio = library->second / plain->second;
            std::printf("| %s | %.2f | %.2f | %.3f%s | %.2f | %.2f |\n", w.name.c_str(), plain->second * 1e3,
                        library->second * 1e3, ratio, ratio <= w.must ? "" : " (over must)", w.must, w.aim);
        }
    }

private:
    std::map<std::string, double> fastest_;
};

// The instruction set that the library picks: the same question it asks the processor.
const char* offeredInstructionSet() {
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f")) return "AVX-512F";
    if (__builtin_cpu_supports("avx2")) return "AVX2";
    return "SSE2";
#else
    return "scalar";
#endif
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (Workload& w : workloads()) {
        w.plain();
        w.library();
        const bool same = w.sameBits();
        for (const bool library : {false, true}) {
            const std::function<void()>* run = library ? &w.library : &w.plain;
            benchmark::RegisterBenchmark((w.name + (library ? "/library" : "/plain")).c_str(),
                                         [run, same](benchmark::State& state) {
                                             if (!same) state.SkipWithError("library and plain loop differ in bits");
                                             for (auto _ : state) (*run)();
                                         })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    std::printf("instruction set picked: %s\n", offeredInstructionSet());
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printSummary(workloads());
    benchmark::Shutdown();
    return 0;
}
