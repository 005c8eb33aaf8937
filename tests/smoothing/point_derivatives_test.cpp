#include <cmath>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/recorded_calls.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

double Seven(double) { return 7.0; }
double NaNEverywhere(double) { return kNaN; }
double Atan(double x) { return std::atan(x); }
double Sqrt(double x) { return std::sqrt(x); }

TEST(FirstDerivativeRidder, TableauStopTestAndCallSequence) {
    struct Row { double (*func)(double); double step, result, error; int columns; };
    const Row rows[] = {
        {Recorded<Seven>, 1e-25, 0.0, 0.0, 2},  // the first extrapolation is exact: the stop test ends column 1
        {Recorded<Seven>, std::nextafter(1e-25, 0.0), 1e25, 1e15, 0}, {Recorded<Seven>, -1.0, 1e25, 1e15, 0},
        {Recorded<Seven>, kNaN, 0.0, 1e15, 10}, {Recorded<NaNEverywhere>, 0.3, 0.0, 1e15, 10},  // nothing wins
        // From an independent reference: the literal 1.96 changes both rows, a stop test against the diagonal
        // of the column before runs atan to the end, a strict "errt < error" changes the sqrt row.
        {Recorded<Atan>, 0.01, 0x1.3235b51090448p-3, 0x1.ccp-49, 7},
        {Recorded<Sqrt>, 0.7, 0x1.4b8840f285a58p-2, 0x1.4cp-48, 10}};
    for (const Row& r : rows) {
        RecordedCalls().clear();
        double error = kUntouched;
        EXPECT_TRUE(SameBits(r.result, QAL_FirstDerivativeRidder(r.func, 2.385, r.step, &error))) << r.step;
        EXPECT_TRUE(SameBits(r.error, error)) << r.step;
        // Each column calls at 2.385 + h, then 2.385 - h, h divided by 1.4 from column to column.
        std::vector<double> told;
        for (double h = r.step; told.size() < 2u * static_cast<unsigned>(r.columns); h = h / 1.4) {
            told.push_back(2.385 + h);
            told.push_back(2.385 - h);
        }
        EXPECT_TRUE(told.size() == RecordedCalls().size() &&
                    std::equal(told.begin(), told.end(), RecordedCalls().begin(), [](double a, double b) {
                        return SameBits(a, b);
                    })) << r.step;
    }
    double error = kUntouched;
    EXPECT_NEAR(1.0, QAL_FirstDerivativeRidder([](double x) { return std::exp(x); }, 0.0, 0.5, &error), 1e-12);
    EXPECT_LT(error, 1e-12);
    EXPECT_NEAR(1.0, QAL_FirstDerivativeRidder([](double x) { return std::sin(x); }, 0.0, 0.1, &error), 1e-12);
    ExpectEveryAllocationFailureHandled(
        [&error] { return QAL_FirstDerivativeRidder(Sqrt, 2.385, 0.5, &error) == 1e25 ? QAL_ERR_MEMORY : QAL_OK; },
        QAL_ERR_MEMORY);
    EXPECT_TRUE(SameBits(1e15, error));
}

}  // namespace
}  // namespace qal::test
