#include <cstdint>

#include "frame/allocator.h"
#include "frame/raw_matrix.h"
#include "qal/qal.h"

namespace {

// Sum over the offsets -leftCount..rightCount of offset^p, each power by QAL_pow with its
// clipping: the offset 0 first (1.0 for p = 0, else 0.0), then the right side, then the
// left side, each in ascending distance.
double momentSum(int p, int leftCount, int rightCount) noexcept {
    const double exponent = static_cast<double>(p);
    double sum = p == 0 ? 1.0 : 0.0;
    for (int k = 1; k <= rightCount; ++k) sum += QAL_pow(static_cast<double>(k), exponent);
    for (int k = 1; k <= leftCount; ++k) sum += QAL_pow(static_cast<double>(-k), exponent);
    return sum;
}

}  // namespace

// The normal equations of the least-squares fit: element (r, c) of the matrix is the moment
// sum of exponent r + c, so each sum is formed once and written along its anti-diagonal.
// One decomposition and one solve for the unit vector at derivOrder give the row of the
// inverse that maps the moments to the derivOrder-th fitted coefficient; each offset's
// coefficient is that row evaluated as a polynomial at the offset, power by power.
int QAL_SavitzkyGolayCoeffizient(double* coef, int coefCount, int leftCount, int rightCount, int derivOrder,
                                 int polyOrder) {
    // The window size is formed in 64 bits: two counts near INT_MAX must still be refused.
    const std::int64_t windowSize = std::int64_t{leftCount} + rightCount + 1;
    if (coefCount < windowSize || leftCount < 0 || rightCount < 0 || derivOrder > polyOrder ||
        windowSize - 1 < polyOrder || !coef)
        return QAL_ERR_PARAMETER;
    // derivOrder indexes the solution of polyOrder + 1 elements.
    if (polyOrder < 0 || derivOrder < 0) return QAL_ERR_PARAMETER;

    const int order = polyOrder + 1;
    const qal::detail::WorkArray<int> pivots(order);
    if (!pivots) return QAL_ERR_MEMORY;
    const qal::detail::RawMatrix moments(order, order);
    if (!moments) return QAL_ERR_MEMORY;
    const qal::detail::WorkArray<double> solution(order);
    if (!solution) return QAL_ERR_MEMORY;

    double** const a = moments.get();
    // 2 * polyOrder stays far inside int: a matrix of order above 46340 is never allocated.
    for (int p = 0; p <= 2 * polyOrder; ++p) {
        const double sum = momentSum(p, leftCount, rightCount);
        const int rowFrom = p > polyOrder ? p - polyOrder : 0;
        const int rowTo = p < polyOrder ? p : polyOrder;
        for (int r = rowFrom; r <= rowTo; ++r) a[r][p - r] = sum;
    }
    double sign = 0.0;
    const int status = QAL_LUDecomposition(a, order, pivots.get(), &sign);
    for (int q = 0; q < order; ++q) solution[q] = 0.0;
    solution[derivOrder] = 1.0;
    if (status != QAL_OK) return status;
    QAL_LUSolveEqua(a, order, pivots.get(), solution.get());

    for (int k = 0; k < coefCount; ++k) coef[k] = 0.0;
    for (int k = -leftCount; k <= rightCount; ++k) {
        const double offset = static_cast<double>(k);
        double sum = solution[0];
        double factor = 1.0;
        for (int q = 1; q <= polyOrder; ++q) {
            factor *= offset;
            sum += solution[q] * factor;
        }
        coef[k + leftCount] = sum;
    }
    return QAL_OK;
}
