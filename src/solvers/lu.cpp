#include <cmath>
#include <utility>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::kNumericalZero;
using qal::detail::kZeroDivisorSubstitute;

// The row's largest magnitude by `m > largest`, so NaN elements are passed over and an
// all-NaN row ends at 0.0 like an all-zero one.
double largestMagnitude(const double* row, int n) noexcept {
    double largest = 0.0;
    for (int j = 0; j < n; ++j) {
        const double m = std::fabs(row[j]);
        if (m > largest) largest = m;
    }
    return largest;
}

// a[i][j] minus a[i][k] * a[k][j] for k = 0 .. count-1, subtracted one at a time in
// ascending k, and stored back.
double eliminate(double** a, int i, int j, int count) noexcept {
    const double* const row = a[i];
    double sum = row[j];
    for (int k = 0; k < count; ++k) sum -= row[k] * a[k][j];
    a[i][j] = sum;
    return sum;
}

}  // namespace

int QAL_LUDecomposition(double** a, int n, int* pivots, double* sign) {
    if (pivots == nullptr || sign == nullptr) return QAL_ERR_PARAMETER;
    qal::detail::WorkArray<double> scale(n);
    if (!scale) return QAL_ERR_MEMORY;
    *sign = 1.0;
    if (n == 0) return QAL_OK;

    // Every row is scaled before the first element changes, so a singular row leaves a
    // untouched. The test is for exact zero: a tiny largest magnitude is divided by.
    for (int i = 0; i < n; ++i) {
        const double largest = largestMagnitude(a[i], n);
        if (largest == 0.0) return QAL_ERR_SINGULAR;
        scale[i] = 1.0 / largest;
    }

    double parity = 1.0;
    int pivotRow = 0;  // carries over: an all-NaN column selects nothing and keeps it
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < j; ++i) eliminate(a, i, j, i);
        // `figure >= best` from 0.0: the later of equal figures wins, a column of zeros
        // selects its last row, and a NaN figure is never selected.
        double best = 0.0;
        for (int i = j; i < n; ++i) {
            const double figure = std::fabs(eliminate(a, i, j, j)) * scale[i];
            if (figure >= best) {
                best = figure;
                pivotRow = i;
            }
        }
        if (pivotRow != j) {
            double* const upper = a[j];
            double* const lower = a[pivotRow];
            for (int k = 0; k < n; ++k) std::swap(upper[k], lower[k]);
            parity = -parity;
            scale[pivotRow] = scale[j];  // row j's own scale is not needed again
        }
        pivots[j] = pivotRow;
        // -0.0 compares equal too; a NaN pivot stays.
        if (a[j][j] == 0.0) a[j][j] = kNumericalZero;
        if (j != n - 1) {
            // One reciprocal, then products: the rounding differs from n - j - 1 divisions.
            const double reciprocal = 1.0 / a[j][j];
            for (int i = j + 1; i < n; ++i) a[i][j] *= reciprocal;
        }
    }
    *sign = parity;
    return QAL_OK;
}

int QAL_LUSolveEqua(const double* const* a, int n, const int* pivots, double* b) {
    // Forward: `first` is the first row whose permuted right-hand side is not 0.0 (a NaN
    // counts as not 0.0); the rows before it contribute nothing, so their terms are skipped.
    int first = -1;
    for (int i = 0; i < n; ++i) {
        const int p = pivots[i];
        double sum = b[p];
        b[p] = b[i];
        if (first != -1) {
            const double* const row = a[i];
            for (int j = first; j < i; ++j) sum -= row[j] * b[j];
        } else if (sum != 0.0) {
            first = i;
        }
        b[i] = sum;
    }
    for (int i = n - 1; i >= 0; --i) {
        const double* const row = a[i];
        double sum = b[i];
        for (int j = i + 1; j < n; ++j) sum -= row[j] * b[j];
        // Only an exact zero (or -0.0) is substituted; a tiny diagonal is divided by.
        b[i] = row[i] == 0.0 ? kZeroDivisorSubstitute : sum / row[i];
    }
    return QAL_OK;
}
