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
double LessTenth(double x) { return x - 0.1; }
double NaNEverywhere(double) { return kNaN; }

struct Row { double (*function)(double); double a, b; double stageOrAccuracy, result; int calls; };

template <std::size_t N, class Call>
void ExpectResultsAndCalls(const Row (&rows)[N], Call call) {
    for (const Row& r : rows) {
        RecordedCalls().clear();
        EXPECT_TRUE(SameBits(r.result, call(r))) << &r - rows;
        EXPECT_EQ(r.calls, static_cast<int>(RecordedCalls().size())) << &r - rows;
    }
}

// Rows run in order: every stage after the first builds on the estimate the row before left.
TEST(Trapez, StagesShareOneRunningEstimate) {
    const Row rows[] = {
        {Recorded<Square>, 0, 1, 1, 0.5, 2}, {Recorded<Square>, 0, 1, 2, 0.375, 1},
        {Recorded<Square>, 0, 1, 3, 0.34375, 2}, {Recorded<Square>, 0, 1, 0, 35.0, 0}, {nullptr, 0, 1, 4, 35.0, 0},
        {Recorded<Square>, 0, 1, 4, 0.3359375, 4}, {Recorded<Square>, 0, 1, 33, 0.3359375, 0},  // still stage 3's
        {Recorded<Square>, 1, 0, 1, -0.5, 2},
        // from an independent reference, stages 4 and 5 left out; the abscissa advances by repeated addition
        // (lower + k * step gives ...ad4p-1)
        {Recorded<Cos>, 0.1, 2.385, 1, 0x1.3955736645ad8p-2, 2},
        {Recorded<Cos>, 0.1, 2.385, 2, 0x1.0af14ca53307ap-1, 1},
        {Recorded<Cos>, 0.1, 2.385, 3, 0x1.242257863a07bp-1, 2},
        {Recorded<Cos>, 0.1, 2.385, 6, 0x1.285e369c15ad2p-1, 16}};
    ExpectResultsAndCalls(rows, [](const Row& r) {
        return QAL_Trapez(r.function, r.a, r.b, static_cast<int>(r.stageOrAccuracy));
    });
}

TEST(RootBisection, OrientationHalvingAndFailures) {
    const Row rows[] = {
        // 3 * 2^-32 is the first step below 1e-9; root starts at 0 both ways and stays at or below 1.
        {Recorded<LessOne>, 0, 3, 1e-9, 1 - 0x1p-32, 34}, {Recorded<LessOne>, 3, 0, 1e-9, 1 - 0x1p-32, 34},
        // root starts at 3, dx = -3: the last point at or above 1, not the last middle (1 - 2^-32)
        {Recorded<OneLess>, 0, 3, 1e-9, 1 + 0x1p-31, 34},
        {Recorded<LessOne>, 0, 4, 1e-9, 1.0, 4},  // an exact zero ends the search however wide dx is
        {Recorded<LessOne>, 1, 3, 1e-9, 1e25, 2}, {Recorded<NaNEverywhere>, 0, 1, 1e-9, 1e25, 2},
        {Recorded<LessTenth>, 0, 1, 0.0, 1e25, 42}, {nullptr, 0, 3, 1e-9, 35.0, 0}};
    ExpectResultsAndCalls(rows,
                          [](const Row& r) { return QAL_RootBisection(r.function, r.a, r.b, r.stageOrAccuracy); });
    EXPECT_NEAR(std::sqrt(2.0), QAL_RootBisection([](double x) { return x * x - 2.0; }, 0, 2, 1e-9), 1e-9);
}

}  // namespace
}  // namespace qal::test
