// QAL_Trapez stage after stage against the refinement it tells (the running estimate kept
// across calls and refusals, stage 33 on without calls) and QAL_RootBisection against its
// halving steps, with the caller's function called in the told order.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

std::vector<double> calls;
double Line(double x) { return 2.0 * x - 1.0; }
double Square(double x) { return x * x - 2.0; }
double Step(double x) { return x > 0.3 ? 1.0 : -1.0; }
double Flat(double) { return 0.0; }
double NotANumber(double x) { return x > 0 ? std::numeric_limits<double>::quiet_NaN() : -1.0; }
double Huge(double x) { return x * 1e300 * 1e10; }
double (*const functions[])(double) = {Line, Square, Step, Flat, NotANumber, Huge};
int chosen = 0;
double Recorded(double x) {
    calls.push_back(x);
    return functions[chosen](x);
}

double estimate = 0.0;  // what QAL_Trapez keeps, as far as this process has called it

double ModelTrapez(double (*f)(double), double lo, double hi, int stage) {
    if (f == nullptr || stage < 1) return 35.0;
    if (stage == 1) return estimate = (f(hi) + f(lo)) * ((hi - lo) * 0.5);
    if (stage >= 33) return estimate;
    const int points = 1 << (stage - 2);
    const double step = (hi - lo) / points;
    double x = step * 0.5 + lo, sum = 0.0;
    for (int i = 0; i < points; ++i) {
        sum += f(x);
        x += step;
    }
    return estimate = ((hi - lo) * sum / points + estimate) * 0.5;
}

double ModelRoot(double (*f)(double), double x1, double x2, double accuracy) {
    if (f == nullptr) return 35.0;
    const double f1 = f(x1), f2 = f(x2);
    if (!(f1 * f2 < 0)) return 1e25;
    double root = f1 < 0 ? x1 : x2, dx = f1 < 0 ? x2 - x1 : x1 - x2;
    for (int pass = 0; pass < 40; ++pass) {
        dx *= 0.5;
        const double middle = dx + root, fm = f(middle);
        if (fm <= 0) root = middle;
        if (accuracy > std::fabs(dx) || fm == 0) return root;
    }
    return 1e25;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    // Stage 1 first: from then on the estimate is this input's own.
    chosen = in.Pick(6);
    const double lo = in.Real(), hi = in.Real();
    calls.clear();
    QAL_FUZZ_CHECK(Same(ModelTrapez(Recorded, lo, hi, 1), QAL_Trapez(Recorded, lo, hi, 1)));
    for (int k = in.Pick(6); k > 0; --k) {
        static const int stages[] = {2, 3, 4, 5, 6, 9, 12, 0, -1, INT_MIN, 33, 34, 100, INT_MAX};
        const int stage = stages[in.Pick(14)];
        const bool nullFunction = in.Pick(10) == 0;
        std::vector<double> seen;
        calls.clear();
        const double got = QAL_Trapez(nullFunction ? nullptr : Recorded, lo, hi, stage);
        seen.swap(calls);
        const double expected = ModelTrapez(nullFunction ? nullptr : Recorded, lo, hi, stage);
        QAL_FUZZ_CHECK(Same(expected, got) && seen.size() == calls.size());
        for (std::size_t i = 0; i < seen.size(); ++i) QAL_FUZZ_CHECK(Same(calls[i], seen[i]));
    }

    chosen = in.Pick(6);
    const double x1 = in.Real(), x2 = in.Real(), accuracy = in.Real();
    const bool nullFunction = in.Pick(10) == 0;
    calls.clear();
    const double got = QAL_RootBisection(nullFunction ? nullptr : Recorded, x1, x2, accuracy);
    std::vector<double> seen;
    seen.swap(calls);
    const double expected = ModelRoot(nullFunction ? nullptr : Recorded, x1, x2, accuracy);
    QAL_FUZZ_CHECK(Same(expected, got) && seen.size() == calls.size() && seen.size() <= 42);
    for (std::size_t i = 0; i < seen.size(); ++i) QAL_FUZZ_CHECK(Same(calls[i], seen[i]));
    return 0;
}
