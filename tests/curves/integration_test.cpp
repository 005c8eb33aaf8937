#include <cmath>

#include "qal/qal.h"
#include "support/recorded_calls.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

double Square(double x) { return x * x; }
double SquareLessTwo(double x) { return x * x - 2.0; }
double LessOne(double x) { return x - 1.0; }
double OneLess(double x) { return 1.0 - x; }
double LessOneAndHalf(double x) { return x - 1.5; }
double SquarePlusOne(double x) { return x * x + 1.0; }
double LessTenth(double x) { return x - 0.1; }
double Cos(double x) { return std::cos(x); }
double NaNEverywhere(double) { return kNaN; }

// Rows run in order: every stage after the first builds on the estimate the row before left.
TEST(Trapez, StagesShareOneRunningEstimate) {
    struct Row { double (*function)(double); double lower, upper; int stage; double result; int calls; };
    const Row rows[] = {
        {Recorded<Square>, 0, 1, 1, 0.5, 2}, {Recorded<Square>, 0, 1, 2, 0.375, 1},
        {Recorded<Square>, 0, 1, 3, 0.34375, 2}, {Recorded<Square>, 0, 1, 0, 35.0, 0}, {nullptr, 0, 1, 4, 35.0, 0},
        {Recorded<Square>, 0, 1, 4, 0.3359375, 4},  // still on the estimate of stage 3
        {Recorded<Square>, 0, 1, 33, 0.3359375, 0}, {Recorded<Square>, 0, 1, 100, 0.3359375, 0},
        {Recorded<Square>, 1, 1, 1, 0.0, 2}, {Recorded<Square>, 1, 0, 1, -0.5, 2},
        // from an independent reference; the abscissa advances by repeated addition (lower + k * step: ...ad4p-1)
        {Recorded<Cos>, 0.1, 2.385, 1, 0x1.3955736645ad8p-2, 2},
        {Recorded<Cos>, 0.1, 2.385, 2, 0x1.0af14ca53307ap-1, 1},
        {Recorded<Cos>, 0.1, 2.385, 3, 0x1.242257863a07bp-1, 2},
        {Recorded<Cos>, 0.1, 2.385, 6, 0x1.285e369c15ad2p-1, 16}};  // stages 4 and 5 left out
    for (const Row& r : rows) {
        RecordedCalls().clear();
        EXPECT_TRUE(SameBits(r.result, QAL_Trapez(r.function, r.lower, r.upper, r.stage))) << &r - rows;
        EXPECT_EQ(r.calls, static_cast<int>(RecordedCalls().size())) << &r - rows;
    }
}

TEST(RootBisection, OrientationHalvingAndFailures) {
    struct Row { double (*function)(double); double x1, x2, accuracy, result; int calls; };
    const Row rows[] = {
        // 3 * 2^-32 is the first step below 1e-9; root starts at 0 both ways and stays at or below 1.
        {Recorded<LessOne>, 0, 3, 1e-9, 1 - 0x1p-32, 34}, {Recorded<LessOne>, 3, 0, 1e-9, 1 - 0x1p-32, 34},
        // root starts at 3, dx = -3: the last point at or above 1, not the last middle (1 - 2^-32)
        {Recorded<OneLess>, 0, 3, 1e-9, 1 + 0x1p-31, 34},
        {Recorded<LessOneAndHalf>, 0, 3, 1e-9, 1.5, 3},  // an exact zero ends the search however wide dx is
        {Recorded<SquarePlusOne>, -1, 1, 1e-9, 1e25, 2}, {Recorded<LessOne>, 1, 3, 1e-9, 1e25, 2},
        {Recorded<NaNEverywhere>, 0, 1, 1e-9, 1e25, 2}, {Recorded<LessTenth>, 0, 1, 0.0, 1e25, 42},
        {nullptr, 0, 3, 1e-9, 35.0, 0}};
    for (const Row& r : rows) {
        RecordedCalls().clear();
        EXPECT_TRUE(SameBits(r.result, QAL_RootBisection(r.function, r.x1, r.x2, r.accuracy))) << &r - rows;
        EXPECT_EQ(r.calls, static_cast<int>(RecordedCalls().size())) << &r - rows;
    }
    EXPECT_NEAR(std::sqrt(2.0), QAL_RootBisection(SquareLessTwo, 0, 2, 1e-9), 1e-9);
}

}  // namespace
}  // namespace qal::test
