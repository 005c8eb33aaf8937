// QAL_SumOf (both overloads), QAL_Mean, QAL_SumSquareResiduen and QAL_Normalize against
// their sums in index order, the 9999 limit, null arrays, and the untouched outputs of the
// refusals; the float sum equals the double sum of the widened elements.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    const int n = in.Count();
    const bool nullValues = in.Pick(16) == 0;
    const std::vector<double> vs = Ordinates<double>(in, n);
    Guarded<double> values(vs);
    const double* const pv = nullValues ? nullptr : values.data();

    double sum = 0.0;
    for (double v : vs) sum += v;
    const bool summed = !nullValues && n >= 0 && n <= 9999;
    QAL_FUZZ_CHECK(Same(summed ? sum : 0.0, QAL_SumOf(pv, n)));
    const std::vector<float> fs = Ordinates<float>(in, n);
    Guarded<float> floats(fs);
    const std::vector<double> wide = Widened(fs);
    QAL_FUZZ_CHECK(Same(QAL_SumOf(nullValues ? nullptr : wide.data(), n), QAL_SumOf(nullValues ? nullptr : floats.data(), n)));
    QAL_FUZZ_CHECK(floats.Unchanged(fs));

    // Mean and spread.
    Guarded<double> out(2);
    const int nulls = in.Pick(8);
    const int status = QAL_Mean(pv, n, nulls == 1 ? nullptr : out.data(), nulls == 2 ? nullptr : out.data() + 1);
    if (nullValues || nulls == 1 || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && out.AllSentinel());
    } else {
        double mean = sum / n, spread = 0.0;
        for (double v : vs) spread += (v - mean) * (v - mean);
        if (n > 1) spread = QAL_sqrt(spread / (n - 1));
        QAL_FUZZ_CHECK(status == QAL_OK && Same(mean, out[0]));
        QAL_FUZZ_CHECK(nulls == 2 ? IsSentinel(out[1]) : Same(spread, out[1]));
    }
    QAL_FUZZ_CHECK(out.GuardsIntact());

    // One-pass residue: no upper limit.
    double s = 0.0, squares = 0.0;
    for (double v : vs) {
        s += v;
        squares += v * v;
    }
    QAL_FUZZ_CHECK(Same(nullValues || n < 1 ? 0.0 : squares - s * s / n, QAL_SumSquareResiduen(pv, n)));
    QAL_FUZZ_CHECK(values.Unchanged(vs));

    // Normalisation in place: the array untouched when the sum is exactly zero.
    const int normalised = QAL_Normalize(nullValues ? nullptr : values.data(), n);
    const double total = summed ? sum : 0.0;
    if (total == 0.0) {
        QAL_FUZZ_CHECK(normalised == QAL_ERR_ZERO_DIVISION && values.Unchanged(vs));
    } else {
        std::vector<double> scaled = vs;
        for (double& v : scaled) v /= total;
        QAL_FUZZ_CHECK(normalised == QAL_OK && values.Matches(scaled));
    }
    QAL_FUZZ_CHECK(values.GuardsIntact() && qal::detail::testing::allocationsMade() == 0);
    return 0;
}
