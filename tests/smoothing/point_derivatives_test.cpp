#include <cmath>
#include <vector>

#include "qal/qal.h"
#include "smoothing/golay_kernel.h"
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

using V = std::vector<double>;

V Samples(int n, double (*f)(double)) {
    V v;
    for (int i = 0; i < n; ++i) v.push_back(f(i));
    return v;
}

// The kernel: within rounding of its fractions, exactly antisymmetric, centre 0. Then near values within
// rounding; hexfloat from a separate Python model of the sums (reviewed kernel bits) on 8 irregular
// samples, taps missing on both sides: dividing before the product, or not dividing by 1 - missing,
// changes it.
TEST(FirstDerivativeGolay, KernelSamplesBracketsAndEnds) {
    double scratch[qal::detail::kGolayKernelTaps];
    const double* const k = qal::detail::golayDerivativeKernel(scratch);
    ASSERT_NE(nullptr, k);
    const double fractions[] = {25 / 429.0, -49 / 858.0, -133 / 1287.0, -503 / 5148.0, -74 / 1287.0};
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(std::fabs(fractions[i] - k[i]) < 1e-16 && SameBits(-k[i], k[10 - i])) << i;
    EXPECT_TRUE(SameBits(0.0, k[5]));

    const V at = Samples(20, [](double i) { return i; }), twice = Samples(20, [](double i) { return 2 * i; });
    const V line = Samples(20, [](double i) { return 3 * i + 1; }), square = Samples(20, [](double i) { return i * i; });
    const V seven(20, 7.0), xs{0, 0.3, 1.1, 2.385, 2.9, 4.0, 4.4, 5.75}, ys{2.385, -1.25, 0.7, 0.1, 3.14159, -0.001, 5.5, 1 / 3.0};
    const V flatEnd{0, 1, 2, 2}, narrow{0, std::nextafter(1e-25, 0.0)}, tiny{0, 1e-25};
    struct Row { const V *x, *y; int n; double at, expected; bool exact; };
    const Row rows[] = {
        {&at, &line, 20, 10, 3, false}, {&at, &line, 20, 10.5, 3, false}, {&twice, &line, 20, 10, 3, false},
        {&at, &square, 20, 10, 20, false}, {&at, &square, 20, 10.5, 21, false},
        {&at, &seven, 20, 0, 7 * 1325 / 6473.0, false}, {&at, &seven, 20, 9.25, 0, false},
        {&xs, &ys, 8, 2.287, 0x1.1dc0b5b4a52f6p-1, true}, {&at, &line, 20, kNaN, kNaN, true},
        {&at, &line, 1, 0, 1e25, true}, {&at, &line, 0, 0, 1e25, true}, {&flatEnd, &line, 4, 3, 1e25, true},
        {&narrow, &line, 2, 0, 1e25, true}, {&tiny, &line, 2, 0, 0x1.bd69e60ae8dd5p-3, true}};  // 1e-25 wide passes
    for (const Row& r : rows) {
        const double got = QAL_FirstDerivativeGolay(r.x->data(), r.y->data(), r.n, r.at);
        EXPECT_TRUE(r.exact ? SameBits(r.expected, got) : std::fabs(r.expected - got) < 1e-12) << &r - rows << ": " << got;
    }
}

// A failed build gives 1e25, leaks nothing and leaves the kernel empty, so the next call builds it; after
// that no call allocates.
TEST(FirstDerivativeGolay, FailedBuildIsRetriedAndABuiltKernelKept) {
    namespace alloc = qal::detail::testing;
    const V x{0, 1, 2, 3}, y{1, 4, 9, 16};
    const auto derivative = [&] { return QAL_FirstDerivativeGolay(x.data(), y.data(), 4, 1.5); };
    const double built = derivative();
    ExpectEveryAllocationFailureHandled([&] {
        alloc::forgetGolayKernel();
        const double got = derivative();
        return SameBits(built, got) ? QAL_OK : got == 1e25 ? QAL_ERR_MEMORY : -1;
    }, QAL_ERR_MEMORY);
    EXPECT_TRUE(SameBits(built, derivative()));  // the retry after the last failure
    alloc::resetAllocationCounters();
    alloc::failAllocationNumber(1);
    EXPECT_TRUE(SameBits(built, derivative()) && alloc::allocationsMade() == 0);
    alloc::resetAllocationCounters();
}

// y = i^3 over x = i shows which samples enter (exact slopes by rational arithmetic): as many on each side
// of the gap, narrowed alike at the ends; every xValue of one interval alike.
TEST(FirstDerivativeLinReg, WindowsAndRefusals) {
    const V x = Samples(10, [](double i) { return i; }), y = Samples(10, [](double i) { return i * i * i; });
    const V flatEnd{0, 1, 2, 2};
    struct Row { int n, span; double at, expected; };
    const Row rows[] = {
        {10, 6, 4.5, 329 / 5.0}, {10, 7, 4.01, 329 / 5.0}, {10, 6, 0.5, 1}, {10, 6, 8.5, 217}, {10, 6, 1.5, 44 / 5.0},
        {10, 100, 4.5, 377 / 5.0}, {5, 100, 3.5, 37}, {10, 6, -1, 1}, {10, 6, 20, 217},
        {1, 6, 0, 1e25}, {10, 1, 4.5, 1e25}, {10, 0, 4.5, 1e25}, {0, 6, 0, 1e25}};
    for (const Row& r : rows) EXPECT_NEAR(r.expected, QAL_FirstDerivativeLinReg(x.data(), y.data(), r.n, r.span, r.at), 1e-9) << r.at;
    EXPECT_TRUE(SameBits(1e25, QAL_FirstDerivativeLinReg(flatEnd.data(), y.data(), 4, 4, 2.5)));
    EXPECT_TRUE(SameBits(1e25, QAL_FirstDerivativeLinReg(x.data(), nullptr, 10, 4, 2.5)));
}

}  // namespace
}  // namespace qal::test
