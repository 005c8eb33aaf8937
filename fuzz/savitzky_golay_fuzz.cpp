// QAL_SavitzkyGolayCoeffizient against its composition (moment sums by QAL_pow, the LU pair,
// the evaluation per offset) with the argument tests in their order, the zero tail, and
// coef untouched on every failure; QAL_SetFilterCoefficients against its weights, the
// normalisation and its refusals (null, short widths, kinds, degrees, widths above 9999).
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

int ModelCoefficients(std::vector<double>& coef, int count, int left, int right, int deriv, int poly) {
    const long long window = static_cast<long long>(left) + right + 1;
    if (count < window || left < 0 || right < 0 || deriv > poly || window - 1 < poly) return QAL_ERR_PARAMETER;
    if (poly < 0 || deriv < 0) return QAL_ERR_PARAMETER;
    const int order = poly + 1;
    std::vector<double> block(order * order);
    std::vector<double*> rows(order);
    for (int r = 0; r < order; ++r) rows[r] = block.data() + r * order;
    for (int p = 0; p <= 2 * poly; ++p) {
        double sum = p == 0 ? 1.0 : 0.0;
        for (int k = 1; k <= right; ++k) sum += QAL_pow(k, p);
        for (int k = 1; k <= left; ++k) sum += QAL_pow(-k, p);
        for (int r = 0; r < order; ++r) {
            if (p - r >= 0 && p - r < order) rows[r][p - r] = sum;
        }
    }
    std::vector<int> pivots(order);
    double sign = 0;
    const int status = QAL_LUDecomposition(rows.data(), order, pivots.data(), &sign);
    if (status != QAL_OK) return status;
    std::vector<double> s(order, 0.0);
    s[deriv] = 1.0;
    QAL_LUSolveEqua(rows.data(), order, pivots.data(), s.data());
    coef.assign(count, 0.0);
    for (int k = -left; k <= right; ++k) {
        double sum = s[0], factor = 1.0;
        for (int q = 1; q <= poly; ++q) {
            factor *= k;
            sum += s[q] * factor;
        }
        coef[k + left] = sum;
    }
    return QAL_OK;
}

void Coefficients(Input& in) {
    const int left = in.Pick(8) == 0 ? in.Count() : in.Pick(40) - 1;
    const int right = in.Pick(8) == 0 ? in.Count() : in.Pick(40) - 1;
    const int poly = in.Pick(8) == 0 ? in.Option(0, 30) : in.Pick(10) - 1;
    const int deriv = in.Pick(8) == 0 ? in.Option(-1, 12) : in.Pick(poly > 20 || poly < 0 ? 23 : poly + 3) - 1;
    int count = in.Flag() ? left + right + 1 + in.Pick(3) - 1 : in.Count();
    // The matrix has order poly + 1: a large order is met only where it is refused.
    if (poly > 30 && static_cast<long long>(left) + right >= poly) return;
    if (count > 20000 || count < -1) count = -1;
    const int failAt = FaultChoice(in);
    const bool nullCoef = in.Pick(16) == 0;
    Guarded<double> coef(count);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_SavitzkyGolayCoeffizient(nullCoef ? nullptr : coef.data(), count, left, right, deriv, poly);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(coef.GuardsIntact());
    std::vector<double> expected;
    const int modelStatus = nullCoef && ModelCoefficients(expected, count, left, right, deriv, poly) == QAL_OK
                                ? QAL_ERR_PARAMETER
                                : ModelCoefficients(expected, count, left, right, deriv, poly);
    if (failed && modelStatus != QAL_ERR_PARAMETER) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && coef.AllSentinel());
        return;
    }
    QAL_FUZZ_CHECK(status == modelStatus);
    if (status == QAL_OK) {
        QAL_FUZZ_CHECK(coef.Matches(expected));
    } else {
        QAL_FUZZ_CHECK(coef.AllSentinel());
    }
}

void FilterWeights(Input& in) {
    static const int widths[] = {3, 4, 5, 6, 7, 9, 11, 99, 245, 299, 9999, 10000, 10001, 2, 1, 0, -1};
    const int width = widths[in.Pick(sizeof widths / sizeof widths[0])];
    static const int kinds[] = {QAL_FILTER_AVERAGE, QAL_FILTER_TRIANGLE, QAL_FILTER_SAVITZKY_GOLAY, 0, -1, 1, 12, 21};
    const int kind = kinds[in.Pick(8)];
    const int degree = in.Option(0, 8);
    const bool nullCoef = in.Pick(16) == 0;
    const int failAt = FaultChoice(in);
    Guarded<double> coef(width);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_SetFilterCoefficients(nullCoef ? nullptr : coef.data(), kind, width, degree);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(coef.GuardsIntact());
    if (nullCoef || width < 3) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && coef.AllSentinel());
        return;
    }
    if (kind <= 0 || (kind == QAL_FILTER_SAVITZKY_GOLAY && degree != 2 && degree != 4 && degree != 6)) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && coef.AllSentinel());
        return;
    }
    std::vector<double> weights(width, 1.0);
    if (kind == QAL_FILTER_SAVITZKY_GOLAY) {
        const int half = (width - 1) / 2;
        const int built = ModelCoefficients(weights, width, half, half, 0, degree);
        if (failed) {
            QAL_FUZZ_CHECK((status == QAL_ERR_MEMORY || status == built) && coef.AllSentinel());
            return;
        }
        if (built != QAL_OK) {
            QAL_FUZZ_CHECK(status == built && coef.AllSentinel());
            return;
        }
    } else if (kind == QAL_FILTER_TRIANGLE) {
        for (int i = 0; i <= width / 2; ++i) weights[i] = weights[width - 1 - i] = i + 1;
    }
    // The sum as QAL_SumOf forms it: nothing beyond 9999 elements.
    double sum = 0.0;
    if (width <= 9999) {
        for (double w : weights) sum += w;
    }
    if (sum == 0.0) {
        QAL_FUZZ_CHECK(status == QAL_ERR_ZERO_DIVISION && coef.Matches(weights));
        return;
    }
    for (double& w : weights) w /= sum;
    QAL_FUZZ_CHECK(status == QAL_OK && coef.Matches(weights));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    if (in.Flag()) {
        Coefficients(in);
    } else {
        FilterWeights(in);
    }
    return 0;
}
