#include <cmath>

#include "qal/qal.h"
#include "support/recorded_calls.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

double Square(double x) { return x * x; }
double Cos(double x) { return std::cos(x); }
double LessOne(double x) { return x - 1.0; }
double OneLess(double x) { return 1.0 - x; }
double NaNEverywhere(double) { return kNaN; }

// Rows run in order, and each QAL_Trapez stage after the first builds on the estimate that the row before left,
// also across refused calls. The cosine rows come from an independent reference: stage 6 after stage 1 guards
// the abscissa advancing by repeated addition (lower + k * step gives ...299p-2). For the bisection, 3 * 2^-32
// is the first step below 1e-9: from 0 the root stays at or below 1; from 3 (dx = -3) it is the last point at or
// above 1, not the last middle. An exact zero ends the search however wide dx is.
TEST(TrapezAndRootBisection, ResultsAndCalls) {
    struct Row { bool trapez; double (*function)(double); double a, b, stageOrAccuracy, result; int calls; };
    const Row rows[] = {
        {true, Recorded<Square>, 0, 1, 1, 0.5, 2}, {true, Recorded<Square>, 0, 1, 2, 0.375, 1},
        {true, Recorded<Square>, 0, 1, 3, 0.34375, 2}, {true, Recorded<Square>, 0, 1, 0, 35.0, 0},
        {true, nullptr, 0, 1, 4, 35.0, 0}, {true, Recorded<Square>, 0, 1, 4, 0.3359375, 4},
        {true, Recorded<Square>, 0, 1, 33, 0.3359375, 0},  // still stage 4's
        {true, Recorded<Cos>, 0.1, 2.385, 1, 0x1.3955736645ad8p-2, 2},
        {true, Recorded<Cos>, 0.1, 2.385, 6, 0x1.c944cf6514295p-2, 16},
        {false, Recorded<LessOne>, 0, 3, 1e-9, 1 - 0x1p-32, 34},
        {false, Recorded<OneLess>, 0, 3, 1e-9, 1 + 0x1p-31, 34},
        {false, Recorded<LessOne>, 0, 4, 1e-9, 1.0, 4}, {false, Recorded<LessOne>, 1, 3, 1e-9, 1e25, 2},
        {false, Recorded<NaNEverywhere>, 0, 1, 1e-9, 1e25, 2}, {false, Recorded<LessOne>, 0, 3, 0.0, 1e25, 42},
        {false, nullptr, 0, 3, 1e-9, 35.0, 0}};
    for (const Row& r : rows) {
        RecordedCalls().clear();
        EXPECT_TRUE(SameBits(r.result, r.trapez ? QAL_Trapez(r.function, r.a, r.b, static_cast<int>(r.stageOrAccuracy))
                                                : QAL_RootBisection(r.function, r.a, r.b, r.stageOrAccuracy)))
            << &r - rows;
        EXPECT_EQ(r.calls, static_cast<int>(RecordedCalls().size())) << &r - rows;
    }
    EXPECT_NEAR(std::sqrt(2.0), QAL_RootBisection([](double x) { return x * x - 2.0; }, 0, 2, 1e-9), 1e-9);
}

}  // namespace
}  // namespace qal::test
