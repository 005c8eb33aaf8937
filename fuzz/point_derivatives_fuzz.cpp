// QAL_FirstDerivativeRidder against its tableau with the caller's function called in the
// told order (at most 20 calls, none for a refused step or a failed tableau);
// QAL_FirstDerivativeGolay against the kernel from QAL_SavitzkyGolayCoeffizient applied at
// the bracket, with the kernel forgotten and its build failing now and then;
// QAL_FirstDerivativeLinReg against QAL_LinearRegression over the told samples.
#include "smoothing/golay_kernel.h"
#include "support/fuzz_support.h"
#include "support/models.h"

using namespace qal::fuzz;

namespace {

std::vector<double> calls;
double Constant(double) { return 7.0; }
double Square(double x) { return x * x; }
double Sine(double x) { return std::sin(x); }
double Exp(double x) { return std::exp(x); }
double NotANumber(double) { return std::numeric_limits<double>::quiet_NaN(); }
double Steep(double x) { return x > 0 ? 1e300 : -1e300; }
double (*const functions[])(double) = {Constant, Square, Sine, Exp, NotANumber, Steep};
int chosen = 0;
double Recorded(double x) {
    calls.push_back(x);
    return functions[chosen](x);
}

double ModelRidder(double (*f)(double), double x, double step, double& err) {
    err = 1e15;
    double result = 0.0;
    if (1e-25 > step) return 1e25;
    double t[10][10];
    t[0][0] = (f(x + step) - f(x - step)) / (2.0 * step);
    for (int i = 1; i < 10; ++i) {
        step = step / 1.4;
        t[0][i] = (f(x + step) - f(x - step)) / (2.0 * step);
        double factor = 1.9599999999999997;
        for (int j = 1; j <= i; ++j) {
            t[j][i] = (t[j - 1][i] * factor - t[j - 1][i - 1]) / (factor - 1.0);
            factor = factor * 1.9599999999999997;
            const double e1 = std::fabs(t[j][i] - t[j - 1][i]), e2 = std::fabs(t[j][i] - t[j - 1][i - 1]);
            const double errt = e1 > e2 ? e1 : e2;
            if (errt <= err) {
                err = errt;
                result = t[j][i];
            }
        }
        if (std::fabs(t[i][i] - t[i - 1][i]) >= 2.0 * err) break;
    }
    return result;
}

void Ridder(Input& in) {
    chosen = in.Pick(6);
    const double x = in.Real(), step = in.Real();
    const int failAt = FaultChoice(in);
    Guarded<double> err(1);
    calls.clear();
    double result;
    bool failed;
    {
        AllocationScope memory(failAt);
        result = QAL_FirstDerivativeRidder(Recorded, x, step, err.data());
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(err.GuardsIntact() && calls.size() <= 20);
    if (failed) {
        QAL_FUZZ_CHECK(Bits(result) == Bits(1e25) && Bits(err[0]) == Bits(1e15) && calls.empty());
        return;
    }
    const std::vector<double> seen = calls;
    calls.clear();
    double modelErr;
    const double expected = ModelRidder(Recorded, x, step, modelErr);
    QAL_FUZZ_CHECK(Same(expected, result) && Same(modelErr, err[0]) && seen.size() == calls.size());
    for (std::size_t i = 0; i < seen.size(); ++i) QAL_FUZZ_CHECK(Same(seen[i], calls[i]));
}

void Golay(Input& in) {
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys);
    const int nulls = in.Pick(16);
    if (in.Pick(4) == 0) qal::detail::testing::forgetGolayKernel();
    const int failAt = FaultChoice(in);
    double kernel[11];
    {
        AllocationScope memory;
        QAL_FUZZ_CHECK(QAL_SavitzkyGolayCoeffizient(kernel, 11, 5, 5, 1, 4) == QAL_OK);
    }
    for (int k = 0; k < 2; ++k) {
        const double v = in.Real();
        double result;
        bool failed;
        {
            AllocationScope memory(k == 0 ? failAt : 0);
            result = QAL_FirstDerivativeGolay(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n, v);
            failed = AllocationScope::Failed(k == 0 ? failAt : 0);
        }
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys));
        if (nulls == 1 || nulls == 2 || n < 1) {
            QAL_FUZZ_CHECK(Bits(result) == Bits(1e25) && !failed);  // nothing built, nothing allocated
            continue;
        }
        if (failed) {  // the kernel was being built and could not be
            QAL_FUZZ_CHECK(Bits(result) == Bits(1e25));
            continue;
        }
        const Bracket b = KnotBracket(xs.data(), n, v);
        const double h = xs[b.hi] - xs[b.lo];
        if (1e-25 > std::fabs(h)) {
            QAL_FUZZ_CHECK(Bits(result) == Bits(1e25));
            continue;
        }
        const auto smooth = [&](int i) {
            double value = kernel[5] * ys[i], missing = 0.0;
            for (int j = 1; j <= 5; ++j) {
                if (i - j >= 0) {
                    value += kernel[5 - j] * ys[i - j];
                } else {
                    missing += kernel[5 - j];
                }
                if (i + j <= n - 1) {
                    value += kernel[5 + j] * ys[i + j];
                } else {
                    missing += kernel[5 + j];
                }
            }
            if (missing != 0.0) value /= 1.0 - missing;
            return value;
        };
        const double lo = smooth(b.lo), hi = smooth(b.hi);
        QAL_FUZZ_CHECK(Same((v - xs[b.lo]) * (hi - lo) / h + lo, result));
    }
}

void LinReg(Input& in) {
    const int n = in.Count();
    const int span = in.Flag() ? in.Pick(14) - 1 : in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys);
    const int nulls = in.Pick(16);
    AllocationScope memory;
    for (int k = 0; k < 3; ++k) {
        const double v = in.Real();
        const double result =
            QAL_FirstDerivativeLinReg(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n, span, v);
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys));
        if (nulls == 1 || nulls == 2 || n < 1 || span < 2) {
            QAL_FUZZ_CHECK(Bits(result) == Bits(1e25));
            continue;
        }
        const Bracket b = KnotBracket(xs.data(), n, v);
        if (1e-25 > std::fabs(xs[b.hi] - xs[b.lo])) {
            QAL_FUZZ_CHECK(Bits(result) == Bits(1e25));
            continue;
        }
        int used = span / 2;
        if (b.lo + 1 < used) used = b.lo + 1;
        if (n - 1 - b.lo < used) used = n - 1 - b.lo;
        const int from = b.lo + 1 - used;
        double intercept = 0, slope = 0;
        // One sample whose abscissa is NaN or infinite passes the width test with no pair.
        const int fitted = QAL_LinearRegression(&xs[from], &ys[from], 2 * used, &intercept, &slope);
        QAL_FUZZ_CHECK(Same(fitted == 1 ? slope : 1e25, result));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    switch (in.Pick(3)) {
        case 0: Ridder(in); break;
        case 1: Golay(in); break;
        default: LinReg(in); break;
    }
    return 0;
}
