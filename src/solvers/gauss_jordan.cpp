#include <cmath>
#include <utility>

#include "frame/constants.h"
#include "qal/qal_classes.h"

namespace {

using qal::detail::kNumericalZero;

// Exchanges rows r1 and r2 of m over columns 0 .. count-1, reading row r1 first in each
// column, so that a matrix too small raises at the first element beyond it in that order.
void exchangeRows(t_QalMatrix<double>& m, int r1, int r2, int count) {
    for (int col = 0; col < count; ++col) {
        double& first = m(r1, col);
        double& second = m(r2, col);
        std::swap(first, second);
    }
}

}  // namespace

// Every element goes through the index-tested operator(), so a or b too small raises at
// its first access beyond the limit, and the three bookkeeping vectors are released on
// every way out, exceptions included.
int k_Qal::GaussJordan(t_QalMatrix<double>& a, int n, t_QalMatrix<double>& b, int m) {
    // A fresh vector holds zeros: every pivot count starts at 0. A negative n raises here.
    t_QalVector<int> pivotCount(n);
    t_QalVector<int> pivotRows(n);
    t_QalVector<int> pivotColumns(n);

    for (int i = 0; i < n; ++i) {
        // Full pivot search over the rows and columns not yet pivoted, row by row:
        //   - `>= best`: of equal magnitudes the last one met wins, and a zero qualifies
        //     while best is still 0.0;
        //   - a NaN never qualifies; when every candidate is NaN the column stays -1, and
        //     the pivot count access below raises with -1.
        double best = 0.0;
        int pivotRow = -1;
        int pivotColumn = -1;
        for (int j = 0; j < n; ++j) {
            if (pivotCount(j) != 0) continue;
            for (int k = 0; k < n; ++k) {
                if (pivotCount(k) != 0) continue;
                const double magnitude = std::fabs(a(j, k));
                if (magnitude >= best) {
                    best = magnitude;
                    pivotRow = j;
                    pivotColumn = k;
                }
            }
        }
        ++pivotCount(pivotColumn);
        // The pivot goes to the diagonal; row and column then share the pivot count.
        if (pivotRow != pivotColumn) {
            exchangeRows(a, pivotRow, pivotColumn, n);
            exchangeRows(b, pivotRow, pivotColumn, m);
        }
        pivotRows(i) = pivotRow;
        pivotColumns(i) = pivotColumn;
        // Absolute threshold, `1e-25 > |pivot|`: exactly 1e-25 and a NaN pivot go on.
        // The interrupted elimination stays in a and b.
        if (kNumericalZero > std::fabs(a(pivotColumn, pivotColumn))) return 2;

        // Setting the pivot to 1.0 before scaling, and the pivot column of each other row
        // to 0.0 before subtracting, builds the inverse in the storage of a.
        const double reciprocal = 1.0 / a(pivotColumn, pivotColumn);
        a(pivotColumn, pivotColumn) = 1.0;
        for (int col = 0; col < n; ++col) a(pivotColumn, col) *= reciprocal;
        for (int col = 0; col < m; ++col) b(pivotColumn, col) *= reciprocal;
        for (int r = 0; r < n; ++r) {
            if (r == pivotColumn) continue;
            const double factor = a(r, pivotColumn);
            a(r, pivotColumn) = 0.0;
            for (int col = 0; col < n; ++col) a(r, col) -= a(pivotColumn, col) * factor;
            for (int col = 0; col < m; ++col) b(r, col) -= b(pivotColumn, col) * factor;
        }
    }

    // Undo the row exchanges as column exchanges of the inverse, last step first. The
    // solutions in b need no such step.
    for (int l = n - 1; l >= 0; --l) {
        const int rowOfPivot = pivotRows(l);
        const int columnOfPivot = pivotColumns(l);
        if (rowOfPivot == columnOfPivot) continue;
        for (int k = 0; k < n; ++k) {
            double& first = a(k, rowOfPivot);
            double& second = a(k, columnOfPivot);
            std::swap(first, second);
        }
    }
    return 0;
}
