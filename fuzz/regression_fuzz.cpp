// QAL_LinearRegression against its one pass over raw sums, and QAL_LinearRegressionFloat
// against QAL_LinFit on the widened samples narrowed once: the float routine computes the
// centred fit in double.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    const int n = in.Count();
    if (in.Flag()) {
        const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
        Guarded<double> x(xs), y(ys), out(2);
        const int result = QAL_LinearRegression(x.data(), y.data(), n, out.data(), out.data() + 1);
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact());
        if (n < 2) {
            QAL_FUZZ_CHECK(result == 0 && out.AllSentinel());
        } else {
            double sy = 0, sx = 0, sxx = 0, sxy = 0;
            for (int i = 0; i < n; ++i) {
                sy += ys[i];
                sx += xs[i];
                sxx += xs[i] * xs[i];
                sxy += xs[i] * ys[i];
            }
            const double count = n;
            sxy -= sy * sx / count;
            sxx -= sx * sx / count;
            const double slope = sxy / sxx;
            QAL_FUZZ_CHECK(result == 1 && Same(slope, out[1]) && Same((sy - slope * sx) / count, out[0]));
        }
    } else {
        const std::vector<float> xs = Abscissae<float>(in, n), ys = Ordinates<float>(in, n);
        Guarded<float> x(xs), y(ys), out(2);
        QAL_FUZZ_CHECK(QAL_LinearRegressionFloat(x.data(), y.data(), n, out.data(), out.data() + 1) == QAL_OK);
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact());
        const std::vector<double> wx = Widened(xs), wy = Widened(ys);
        double intercept = 0, slope = 0;
        QAL_LinFit(wx.data(), wy.data(), n, &intercept, &slope);
        QAL_FUZZ_CHECK(Same(static_cast<float>(intercept), out[0]) && Same(static_cast<float>(slope), out[1]));
    }
    QAL_FUZZ_CHECK(qal::detail::testing::allocationsMade() == 0);
    return 0;
}
