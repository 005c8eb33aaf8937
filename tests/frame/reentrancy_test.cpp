// The reentrant functions called from several threads at once, each thread on arrays of its
// own and at an instruction-set level of its own: every result must equal the one computed
// on a single thread. The tsan preset runs this under ThreadSanitizer, which reports any
// shared state that one of them touches unordered.
#include <cmath>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "support/instruction_sets.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using F = std::vector<float>;
constexpr int kN = 300;

// A curve with peaks, troughs, an equal pair of abscissae and a NaN-free run: every path of
// the searches gets some work.
struct Curve {
    V x, y;
    F fx, fy;
    Curve() {
        for (int i = 0; i < kN; ++i) {
            x.push_back(i == 150 ? 149.0 : i * 1.0 + (i % 7) * 0.01);
            y.push_back(std::sin(i * 0.07) * 50.0 + (i % 11) * 0.3);
        }
        fx.assign(x.begin(), x.end());
        fy.assign(y.begin(), y.end());
    }
};

void Add(V& out, double v) { out.push_back(v); }
void AddAll(V& out, const V& v) { out.insert(out.end(), v.begin(), v.end()); }
void AddAll(V& out, const F& v) { out.insert(out.end(), v.begin(), v.end()); }
double Wave(double x) { return std::sin(x) * x; }

// Everything one thread computes; the status of each call enters the results too.
V Work() {
    const Curve c;
    V out;
    V filtered(kN);
    Add(out, QAL_FilterArray(c.y.data(), filtered.data(), kN, 0, kN - 1, QAL_FILTER_SAVITZKY_GOLAY, 21, 4));
    AddAll(out, filtered);
    F ffiltered(kN);
    Add(out, QAL_FilterFloatArray(c.fy.data(), ffiltered.data(), kN, 3, kN - 4, QAL_FILTER_TRIANGLE, 9, 0));
    AddAll(out, ffiltered);
    F xNew(2 * kN), yNew(2 * kN, 0.0f);
    for (int i = 0; i < 2 * kN; ++i) xNew[static_cast<std::size_t>(i)] = static_cast<float>(i) * 0.4999f;
    for (int option : {QAL_INTERPOL_SPLINE, QAL_INTERPOL_SEGMENT, QAL_INTERPOL_LOCAL_LINE}) {
        Add(out, QAL_InterpolFloatArrays(c.fx.data(), c.fy.data(), kN, xNew.data(), yNew.data(), 2 * kN, option));
        AddAll(out, yNew);
    }
    for (int kind : {QAL_EXTREMUM_MAX, QAL_EXTREMUM_MIN}) {
        double xo = 0, yo = 0;
        Add(out, QAL_GetRangeExtremum(c.x.data(), c.y.data(), kN, &xo, &yo, 12, kind, 1, 5.0f));
        Add(out, xo), Add(out, yo);
        Add(out, QAL_GetAutoExtremum(c.x.data(), c.y.data(), kN, &xo, &yo, kind, 0, 2.0f));
        Add(out, xo), Add(out, yo);
        Add(out, QAL_GetNextExtremum(c.x.data(), c.y.data(), kN, &xo, &yo, 9, kind, 1, 1.0f));
        Add(out, xo), Add(out, yo);
    }
    double xo = 0, yo = 0;
    Add(out, QAL_FindX_at_YThreshold(c.x.data(), c.y.data(), kN, 0, 2, 2, 37.5f, 0, &xo, &yo));
    Add(out, xo), Add(out, yo);
    Add(out, QAL_Calc_AbsMaximum(c.x.data(), c.y.data(), kN, &xo, &yo));
    Add(out, xo), Add(out, yo);
    Add(out, QAL_GetY_at_XDiff(c.x.data(), c.y.data(), kN, 0, 0, 2, 123.4f, &xo, &yo));
    Add(out, xo), Add(out, yo);
    V table(kN), deriv(kN);
    Add(out, QAL_Splines(c.x.data(), c.y.data(), kN, 1e25, 0.5, table.data()));
    AddAll(out, table);
    Add(out, QAL_DerivArray(c.x.data(), c.y.data(), deriv.data(), kN, QAL_DERIV_LINE_FIT, 2, 6));
    AddAll(out, deriv);
    F fx = c.fx, fy = c.fy, fd(kN, 0.0f), slopes(kN);
    Add(out, QAL_DerivFloatArray(fx.data(), fy.data(), fd.data(), kN, QAL_DERIV_SPLINE, 1, 0));
    AddAll(out, fd);
    Add(out, QAL_AkimaSub(c.fx.data(), c.fy.data(), slopes.data(), kN));
    AddAll(out, slopes);
    double estimate = 0;
    Add(out, QAL_PolynomialInterpolation(c.x.data(), c.y.data(), 12, 5.5, &yo, &estimate));
    Add(out, yo), Add(out, estimate);
    Add(out, QAL_RationialInterpolation(c.x.data(), c.y.data(), 12, 5.5, &yo, &estimate));
    Add(out, yo), Add(out, estimate);
    Add(out, QAL_FirstDerivativeRidder(Wave, 1.3, 0.4, &estimate));
    Add(out, estimate);
    Add(out, QAL_FirstDerivativeGolay(c.x.data(), c.y.data(), kN, 77.7));
    Add(out, QAL_FirstDerivativeLinReg(c.x.data(), c.y.data(), kN, 8, 77.7));
    Add(out, QAL_RootBisection(Wave, 2.0, 4.0, 1e-12));
    V coef(15);
    Add(out, QAL_SavitzkyGolayCoeffizient(coef.data(), 15, 7, 7, 1, 6));
    AddAll(out, coef);
    float* logs = nullptr;
    Add(out, QAL_CalcLog(&logs, c.fx.data() + 1, 50, 2));
    if (logs != nullptr) AddAll(out, F(logs, logs + 50));
    QAL_ReleaseArray(logs);
    F k1(kN), k2(kN), lower(kN), upper(kN);
    Add(out, QAL_Kruemmung2(c.fx.data(), c.fy.data(), k1.data(), kN, 4, 3));
    AddAll(out, k1);
    Add(out, QAL_CalcBoundaries(c.fy.data(), nullptr, lower.data(), upper.data(), kN, 2, 10.0f, 3, 1.5f));
    AddAll(out, lower), AddAll(out, upper);
    t_QalMatrix<double> a(4, 4), b(4, 1);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) a(i, j) = c.y[static_cast<std::size_t>(4 * i + j)];
        b(i, 0) = c.x[static_cast<std::size_t>(i)];
    }
    Add(out, k_Qal::GaussJordan(a, 4, b, 1));
    for (int i = 0; i < 4; ++i) Add(out, b(i, 0));
    return out;
}

bool SameResults(const V& expected, const V& got) {
    if (expected.size() != got.size()) return false;
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (!SameBits(expected[i], got[i])) return false;
    }
    return true;
}

TEST(Reentrancy, ThreadsOnTheirOwnArraysGetTheSingleThreadedResults) {
    constexpr int kThreads = 4, kRounds = 3;
    const V expected = Work();  // builds the Golay kernel: its first build is raced in GolayRace
    ASSERT_GT(expected.size(), 3000u);
    const std::vector<InstructionSet> levels = OfferedInstructionSets();
    std::vector<int> mismatches(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            // Each thread at its own level: the dispatch is per thread and every level gives the same bits.
            const ForcedInstructionSet level(levels[static_cast<std::size_t>(t) % levels.size()]);
            for (int round = 0; round < kRounds; ++round) {
                if (!SameResults(expected, Work())) ++mismatches[static_cast<std::size_t>(t)];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(0, mismatches[static_cast<std::size_t>(t)]) << "thread " << t;
}

}  // namespace
}  // namespace qal::test
