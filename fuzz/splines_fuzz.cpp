// QAL_Splines against its sweep and back-substitution (natural and clamped ends, NaN and
// near-zero pivots, the 10000-knot limit, a failing work array), and
// QAL_CubicSplineInterpolation against the bracket and cubic, zero-width brackets included.
#include "support/fuzz_support.h"
#include "support/models.h"

using namespace qal::fuzz;

namespace {

std::vector<double> ModelTable(const std::vector<double>& x, const std::vector<double>& y, int n, double first,
                               double last) {
    std::vector<double> y2(n), work(n - 1);
    if (first >= 1e25) {
        work[0] = y2[0] = 0.0;
    } else {
        const double h = x[1] - x[0];
        y2[0] = -0.5;
        work[0] = ((y[1] - y[0]) / h - first) * (3.0 / h);
    }
    for (int i = 1; i < n - 1; ++i) {
        const double sig = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
        const double pivot = sig * y2[i - 1] + 2.0;
        if (std::fabs(pivot) > 1e-25) {
            y2[i] = (sig - 1.0) / pivot;
            const double d = (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
            work[i] = (6.0 * d / (x[i + 1] - x[i - 1]) - sig * work[i - 1]) / pivot;
        } else {
            y2[i] = y2[i - 1];
            work[i] = work[i - 1];
        }
    }
    double q = 0.0, r = 0.0;
    if (!(last >= 1e25)) {
        const double h = x[n - 1] - x[n - 2];
        q = 0.5;
        r = (last - (y[n - 1] - y[n - 2]) / h) * (3.0 / h);
    }
    y2[n - 1] = (r - q * work[n - 2]) / (q * y2[n - 2] + 1.0);
    for (int k = n - 2; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + work[k];
    return y2;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), y2(n);
    const double first = in.Real(), last = in.Real();
    const int nulls = in.Pick(20);
    const int failAt = FaultChoice(in);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_Splines(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n, first, last,
                             nulls == 3 ? nullptr : y2.data());
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && y2.GuardsIntact());
    std::vector<double> table;
    if ((nulls >= 1 && nulls <= 3) || n < 2 || n > 10000) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && y2.AllSentinel());
        table = Ordinates<double>(in, n);  // any table will do for the evaluation
    } else if (failed) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && y2.AllSentinel());
        table = Ordinates<double>(in, n);
    } else {
        QAL_FUZZ_CHECK(status == QAL_OK);
        table = ModelTable(xs, ys, n, first, last);
        for (int i = 0; i < n; ++i) QAL_FUZZ_CHECK(Same(table[i], y2[i]));
    }

    // Evaluation, on the table just built or on any table.
    Guarded<double> t(table), yOut(1);
    AllocationScope memory;
    for (int k = 0; k < 4; ++k) {
        const double v = in.Real();
        const int evalNulls = in.Pick(24);
        const int result = QAL_CubicSplineInterpolation(evalNulls == 1 ? nullptr : x.data(),
                                                        evalNulls == 2 ? nullptr : y.data(),
                                                        evalNulls == 3 ? nullptr : t.data(), n, v,
                                                        evalNulls == 4 ? nullptr : yOut.data());
        QAL_FUZZ_CHECK(yOut.GuardsIntact() && t.Unchanged(table));
        if ((evalNulls >= 1 && evalNulls <= 4) || n < 2 || n > 10000) {
            QAL_FUZZ_CHECK(result == QAL_ERR_PARAMETER && yOut.AllSentinel());
            continue;
        }
        double value;
        const bool wide = SplineValue(xs.data(), ys.data(), table.data(), n, v, value);
        QAL_FUZZ_CHECK(result == (wide ? QAL_OK : QAL_ERR_ZERO_DIVISION) && Same(value, yOut[0]));
        yOut[0] = SentinelOf(0.0);
    }
    QAL_FUZZ_CHECK(qal::detail::testing::allocationsMade() == 0);
    return 0;
}
