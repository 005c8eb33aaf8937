#include <cmath>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/recorded_calls.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

double Seven(double) { return 7.0; }
double NaNEverywhere(double) { return kNaN; }
double Sin(double x) { return std::sin(x); }
double Exp(double x) { return std::exp(x); }
double Atan(double x) { return std::atan(x); }
double Sqrt(double x) { return std::sqrt(x); }

// The central differences call func at x + h, then x - h, with h the step divided by 1.4
// once per column.
std::vector<double> RidderArguments(double x, double step, int columns) {
    std::vector<double> arguments;
    for (int i = 0; i < columns; ++i, step = step / 1.4) {
        arguments.push_back(x + step);
        arguments.push_back(x - step);
    }
    return arguments;
}

TEST(FirstDerivativeRidder, TableauStopTestAndCalls) {
    struct Row { double (*func)(double); double x, step, result, error; int columns; };
    const Row rows[] = {
        {Recorded<Seven>, 2.385, 0.3, 0.0, 0.0, 2},  // the first extrapolation is exact: stop at column 1
        {Recorded<Seven>, 2.385, 1e-25, 0.0, 0.0, 2},
        {Recorded<Seven>, 2.385, std::nextafter(1e-25, 0.0), 1e25, 1e15, 0},
        {Recorded<Seven>, 2.385, 0.0, 1e25, 1e15, 0}, {Recorded<Seven>, 2.385, -1.0, 1e25, 1e15, 0},
        {Recorded<Seven>, 2.385, kNaN, 0.0, 1e15, 10},         // a NaN step runs every column, and nothing wins
        {Recorded<NaNEverywhere>, 2.385, 0.3, 0.0, 1e15, 10},  // 0.0, not 1e25, when no entry wins
        // from an independent reference: the literal 1.96 changes both, a stop test against the diagonal of the
        // column before runs atan to the end, a strict "errt < error" changes the sqrt row
        {Recorded<Atan>, 2.385, 0.01, 0x1.3235b51090448p-3, 0x1.ccp-49, 7},
        {Recorded<Sqrt>, 1.3, 0.5, 0x1.c10dbfab3c85cp-2, 0x1.92p-47, 10}};
    for (const Row& r : rows) {
        RecordedCalls().clear();
        double error = kUntouched;
        EXPECT_TRUE(SameBits(r.result, QAL_FirstDerivativeRidder(r.func, r.x, r.step, &error))) << r.step;
        EXPECT_TRUE(SameBits(r.error, error)) << r.step;
        const std::vector<double> expected = RidderArguments(r.x, r.step, r.columns);
        EXPECT_EQ(expected.size(), RecordedCalls().size()) << r.step;
        for (std::size_t k = 0; k < expected.size() && k < RecordedCalls().size(); ++k)
            EXPECT_TRUE(SameBits(expected[k], RecordedCalls()[k])) << "call " << k;
    }
}

TEST(FirstDerivativeRidder, ExpAndSinAtZero) {
    double error = kUntouched;
    EXPECT_NEAR(1.0, QAL_FirstDerivativeRidder(Exp, 0.0, 0.5, &error), 1e-12);
    EXPECT_LT(error, 1e-12);
    EXPECT_NEAR(1.0, QAL_FirstDerivativeRidder(Sin, 0.0, 0.1, &error), 1e-12);
}

TEST(FirstDerivativeRidder, NoTableauGivesNoValue) {
    double error = kUntouched;
    ExpectEveryAllocationFailureHandled(
        [&error] { return QAL_FirstDerivativeRidder(Exp, 0.0, 0.5, &error) == 1e25 ? QAL_ERR_MEMORY : QAL_OK; },
        QAL_ERR_MEMORY);
    EXPECT_TRUE(SameBits(1e15, error));
}

}  // namespace
}  // namespace qal::test
