#include <cstdint>

#include "qal/qal.h"

namespace {

// Bisection between the two ends, both of which are already known to lie beyond `value`.
// Both bounds move past mid, so the loop can stop one position off the enclosing
// interval; an element equal to the value is found only when a mid lands on it.
// mid is formed in 64 bits: lo + hi exceeds INT_MAX for the largest counts.
template <bool Ascending>
int bisect(double value, const double* x, int n, int* index) noexcept {
    int lo = 0;
    int hi = n - 1;
    while (hi - lo > 1) {
        const int mid = static_cast<int>((static_cast<std::int64_t>(lo) + hi) >> 1);
        // Each test in its own sense: a NaN element or value fails both and ends here.
        if (Ascending ? x[mid] > value : value > x[mid]) {
            hi = mid - 1;
        } else if (Ascending ? value > x[mid] : x[mid] > value) {
            lo = mid + 1;
        } else {
            *index = mid;
            return QAL_OK;
        }
    }
    *index = lo;
    return QAL_OK;
}

}  // namespace

// Boundary rules:
//   direction       ascending exactly when x[n-1] > x[0]; equal ends or a NaN end
//                   count as descending
//   at x[0]         QAL_ERR_OUT_OF_RANGE, index 0 (also beyond it)
//   at x[n-1]       QAL_ERR_OUT_OF_RANGE, index n-1 (also beyond it)
//   inside          QAL_OK, a position next to the value (k-1, k or k+1, k the last
//                   element at or below it on an ascending array)
//   NaN value       passes the end tests; the first mid ends the search (index 0 for n = 2)
int QAL_LocateValue(double value, const double* x, int n, int* index) {
    if (!x || !index) return QAL_ERR_PARAMETER;
    *index = 0;
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;

    if (x[n - 1] > x[0]) {
        if (x[0] >= value) return QAL_ERR_OUT_OF_RANGE;  // index stays 0
        if (value >= x[n - 1]) {
            *index = n - 1;
            return QAL_ERR_OUT_OF_RANGE;
        }
        return bisect<true>(value, x, n, index);
    }
    if (value >= x[0]) return QAL_ERR_OUT_OF_RANGE;  // index stays 0
    if (x[n - 1] >= value) {
        *index = n - 1;
        return QAL_ERR_OUT_OF_RANGE;
    }
    return bisect<false>(value, x, n, index);
}

// Boundary rules (the end tests assume ascending abscissae):
//   at or before x[0]      QAL_ERR_OUT_OF_RANGE with the first point
//   at or after x[n-1]     QAL_ERR_OUT_OF_RANGE with the last point; a descending array
//                          ends in one of these two for every value that is not NaN
//   inside                 QAL_OK with the stored point at the located position, no
//                          interpolation
//   NaN value              passes both end tests; the search's status, and its point
//                          only on QAL_OK (n = 1 gives QAL_ERR_TOO_FEW_POINTS, outputs untouched)
int QAL_FindAbsValues(double value, const double* x, const double* y, int n, double* xOut, double* yOut) {
    if (!x || !y || !xOut || !yOut || n < 1) return QAL_ERR_PARAMETER;
    if (x[0] >= value) {
        *xOut = x[0];
        *yOut = y[0];
        return QAL_ERR_OUT_OF_RANGE;
    }
    if (value >= x[n - 1]) {
        *xOut = x[n - 1];
        *yOut = y[n - 1];
        return QAL_ERR_OUT_OF_RANGE;
    }
    int index = 0;
    const int status = QAL_LocateValue(value, x, n, &index);
    if (status != QAL_OK) return status;
    *xOut = x[index];
    *yOut = y[index];
    return QAL_OK;
}

// Straight insertion, ascending. An element moves left only past strictly greater keys,
// so equal keys keep their order, a NaN key never moves, and nothing moves past a NaN.
// The companions follow the keys element by element; `third` is copied, never read as a
// number.
int QAL_SortStraightInsert(float* keys, float* second, int* third, int n, int /*reserved*/) {
    // Unlike the other searches, a missing array here is reported as a memory fault.
    if (!keys || n < 1) return QAL_ERR_MEMORY;
    for (int i = 1; i < n; ++i) {
        const float key = keys[i];
        const float secondValue = second ? second[i] : 0.0f;
        const int thirdValue = third ? third[i] : 0;
        int j = i - 1;
        for (; j >= 0 && keys[j] > key; --j) {
            keys[j + 1] = keys[j];
            if (second) second[j + 1] = second[j];
            if (third) third[j + 1] = third[j];
        }
        keys[j + 1] = key;
        if (second) second[j + 1] = secondValue;
        if (third) third[j + 1] = thirdValue;
    }
    return QAL_OK;
}
