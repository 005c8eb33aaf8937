// QAL_DerivArray against its tests in their order and its spline and line paths built from
// the routines they call; QAL_DerivFloatArray against QAL_DerivArray on the widened curve
// (the same status, deriv narrowed once on QAL_OK, all three arrays as they were on every
// failure); QAL_FirstDerivative and QAL_SecondDerivative against the bracket and formulas.
#include "support/fuzz_support.h"
#include "support/models.h"

using namespace qal::fuzz;

namespace {

double Slope(const double* x, const double* y, int count) {
    double intercept = 0, slope = 0;
    QAL_LinFit(x, y, count, &intercept, &slope);
    return slope;
}

// The outcome on good pointers and a granted work array.
int ModelDeriv(const std::vector<double>& x, const std::vector<double>& y, std::vector<double>& d, int n, int method,
               int order, int span) {
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    if (order != 1 && order != 2) return QAL_ERR_PARAMETER;
    if (method == QAL_DERIV_LINE_FIT && order == 2 && n < 4) return QAL_ERR_PARAMETER;
    if (method == QAL_DERIV_SPLINE) {
        std::vector<double> table(n);
        const int built = QAL_Splines(x.data(), y.data(), n, 1e25, 1e25, table.data());
        if (built != QAL_OK) return built;
        if (order == 2) {
            d = table;
            return QAL_OK;
        }
        int status = QAL_OK;
        for (int i = 0; i < n; ++i) status = QAL_FirstDerivative(x.data(), y.data(), table.data(), n, x[i], &d[i]);
        return status;
    }
    if (method != QAL_DERIV_LINE_FIT) return QAL_OK;
    const int half = span / 2;
    if (order == 1) {
        for (int i = 0; i < n; ++i) {
            const int from = i - half > 0 ? i - half : 0, to = i + half < n - 1 ? i + half : n - 1;
            d[i] = Slope(&x[from], &y[from], to - from + 1);
        }
        return QAL_OK;
    }
    d[0] = d[1] = d[2] = d[n - 3] = d[n - 2] = d[n - 1] = 0.0;
    for (int i = 3; i <= n - 4; ++i) {
        const int leftFrom = i - half < 0 ? 0 : i - half;
        const int rightCount = half < n - 1 - i ? half : n - 1 - i;
        const double left = Slope(&x[leftFrom], &y[leftFrom], i - leftFrom);
        const double right = Slope(&x[i + 1], &y[i + 1], rightCount);
        d[i] = right - left;
    }
    return QAL_OK;
}

void Arrays(Input& in) {
    const int n = in.Count();
    const int method = in.Option(0, 5), order = in.Option(0, 3);
    int span = in.Flag() ? in.Pick(12) - 1 : in.Count();
    // The line paths cost n times the span: keep it affordable.
    if (n > 0 && span > 0 && static_cast<long long>(n) * (span < n ? span : n) > 300000) span = 300000 / n;
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n), ds = Ordinates<double>(in, n);
    const int nulls = in.Pick(20);
    const int failAt = FaultChoice(in);

    Guarded<double> x(xs), y(ys), d(ds);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_DerivArray(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(),
                                nulls == 3 ? nullptr : d.data(), n, method, order, span);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && d.GuardsIntact());
    std::vector<double> expected = ds;
    const bool refused = (nulls >= 1 && nulls <= 3) || n < 0 || failed;
    const int modelStatus = refused ? QAL_ERR_MEMORY : ModelDeriv(xs, ys, expected, n, method, order, span);
    if (refused) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && d.Unchanged(ds));
    } else {
        QAL_FUZZ_CHECK(status == modelStatus);
        // The spline path writes every element also when its last point reports a zero width.
        const bool written = modelStatus == QAL_OK || (method == QAL_DERIV_SPLINE && order == 1 &&
                                                       modelStatus == QAL_ERR_ZERO_DIVISION);
        QAL_FUZZ_CHECK(written ? d.Matches(expected) : d.Unchanged(ds));
    }

    // The float twin on the widened curve.
    const std::vector<float> fx(xs.begin(), xs.end()), fy(ys.begin(), ys.end()), fd(ds.begin(), ds.end());
    const std::vector<double> wx = Widened(fx), wy = Widened(fy);
    std::vector<double> wd = Widened(fd);
    const int wideStatus = refused ? QAL_ERR_MEMORY : n < 1 ? QAL_ERR_MEMORY : ModelDeriv(wx, wy, wd, n, method, order, span);
    Guarded<float> gx(fx), gy(fy), gd(fd);
    {
        AllocationScope memory(failAt);
        status = QAL_DerivFloatArray(nulls == 1 ? nullptr : gx.data(), nulls == 2 ? nullptr : gy.data(),
                                     nulls == 3 ? nullptr : gd.data(), n, method, order, span);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(gx.Unchanged(fx) && gy.Unchanged(fy) && gx.GuardsIntact() && gy.GuardsIntact() && gd.GuardsIntact());
    if (failed || (nulls >= 1 && nulls <= 3)) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && gd.Unchanged(fd));
    } else if (wideStatus != QAL_OK) {
        QAL_FUZZ_CHECK(status == wideStatus && gd.Unchanged(fd));
    } else {
        std::vector<float> narrowed(wd.begin(), wd.end());
        QAL_FUZZ_CHECK(status == QAL_OK && gd.Matches(narrowed));
    }
}

void AtPoint(Input& in) {
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n), ts = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), table(ts), out(1);
    AllocationScope memory;
    for (int k = 0; k < 3; ++k) {
        const double v = in.Real();
        const bool second = in.Flag();
        const int nulls = in.Pick(24);
        out[0] = SentinelOf(0.0);
        const auto call = second ? QAL_SecondDerivative : QAL_FirstDerivative;
        const int status = call(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(),
                                nulls == 3 ? nullptr : table.data(), n, v, nulls == 4 ? nullptr : out.data());
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && table.Unchanged(ts) && out.GuardsIntact());
        if ((nulls >= 1 && nulls <= 4) || n < 2 || n > 10000) {
            QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && out.AllSentinel());
            continue;
        }
        const Bracket b = KnotBracket(xs.data(), n, v);
        const double h = xs[b.hi] - xs[b.lo];
        if (!(std::fabs(h) > 1e-25)) {
            QAL_FUZZ_CHECK(status == QAL_ERR_ZERO_DIVISION && Bits(out[0]) == Bits(1e15));
            continue;
        }
        const double a = (xs[b.hi] - v) / h, c = (v - xs[b.lo]) / h;
        const double value = second ? a * ts[b.lo] + c * ts[b.hi]
                                    : ((3.0 * c * c - 1.0) * ts[b.hi] - (3.0 * a * a - 1.0) * ts[b.lo]) * h / 6.0 +
                                          (ys[b.hi] - ys[b.lo]) / h;
        QAL_FUZZ_CHECK(status == QAL_OK && Same(value, out[0]));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    if (in.Flag()) {
        Arrays(in);
    } else {
        AtPoint(in);
    }
    return 0;
}
