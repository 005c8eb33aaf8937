// QAL_PolynomialInterpolation and QAL_RationialInterpolation against their tableaux: the
// nearest start point, the path through the columns, 1e15 for a vanishing divisor, the
// rational routine's exact hit, untouched outputs on every refusal and failed allocation.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

int Model(bool rational, const std::vector<double>& x, const std::vector<double>& y, int n, double v, double& out,
          double& estimate) {
    std::vector<double> c(n), d(n);
    int best = 0;
    double nearest = std::fabs(v - x[0]);
    for (int i = 0; i < n; ++i) {
        const double t = std::fabs(v - x[i]);
        if (rational && 1e-25 > t) {
            out = y[i];
            estimate = 0.0;
            return QAL_OK;
        }
        if (nearest > t) {
            best = i;
            nearest = t;
        }
        c[i] = y[i];
        d[i] = rational ? y[i] + 1e-25 : y[i];
    }
    out = y[best];
    int pos = best;
    for (int m = 1; m < n; ++m) {
        for (int i = 0; i < n - m; ++i) {
            if (!rational) {
                const double ho = x[i] - v, hp = x[i + m] - v, den = ho - hp;
                const double q = 1e-25 > std::fabs(den) ? 1e15 : (c[i + 1] - d[i]) / den;
                d[i] = q * hp;
                c[i] = q * ho;
            } else {
                const double w = c[i + 1] - d[i];
                const double h = x[i + m] - v;
                const double t = (x[i] - v) * d[i] / h;
                const double dd = t - c[i + 1];
                if (dd == 0.0) {
                    c[i] = d[i] = 1e15;
                } else {
                    const double q = w / dd;
                    d[i] = q * c[i + 1];
                    c[i] = q * t;
                }
            }
        }
        double correction;
        if (2 * pos < n - m) {
            correction = c[pos];
        } else {
            correction = d[pos - 1];
            --pos;
        }
        estimate = correction;
        out += correction;
    }
    return QAL_OK;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const bool rational = in.Flag();
    const int n = in.Count();
    int failAt = FaultChoice(in);
    // The tableau is quadratic in n: the large counts are met with their work arrays failing.
    if (n > 150 && n <= 10000 && (failAt == 0 || failAt > 2)) failAt = 1 + in.Pick(2);
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), out(2);
    const double v = in.Real();
    const int nulls = in.Pick(24);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        const auto call = rational ? QAL_RationialInterpolation : QAL_PolynomialInterpolation;
        status = call(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n, v,
                      nulls == 3 ? nullptr : out.data(), nulls == 4 ? nullptr : out.data() + 1);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact());
    if ((nulls >= 1 && nulls <= 4) || n < 1 || n > 10000) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && out.AllSentinel());
    } else if (failed) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && out.AllSentinel());
    } else {
        double value = SentinelOf(0.0), estimate = SentinelOf(0.0);
        QAL_FUZZ_CHECK(status == Model(rational, xs, ys, n, v, value, estimate));
        QAL_FUZZ_CHECK(Same(value, out[0]) && Same(estimate, out[1]));
    }
    return 0;
}
