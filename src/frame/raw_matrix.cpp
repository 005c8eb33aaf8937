#include <climits>
#include <cstdint>
#include <utility>

#include "frame/allocator.h"
#include "qal/qal.h"

using qal::detail::allocateArray;
using qal::detail::releaseArray;

// A table with a null row 0 would be a matrix that no caller may touch, so a failed block
// gives null like a failed table. The dimensions are tested first: a product beyond INT_MAX
// would otherwise wrap to a block smaller than the rows and columns promise, and a zero
// row count leaves no room for row 0.
double** QAL_NewMatrix(int rows, int cols) {
    if (rows < 1 || cols < 1) return nullptr;
    const std::int64_t elements = static_cast<std::int64_t>(rows) * cols;
    if (elements > INT_MAX) return nullptr;

    double** const table = allocateArray<double*>(rows);
    if (table == nullptr) return nullptr;
    double* const block = allocateArray<double>(static_cast<int>(elements));
    if (block == nullptr) {
        releaseArray(table);
        return nullptr;
    }
    table[0] = block;
    for (int i = 1; i < rows; ++i) table[i] = table[i - 1] + cols;
    return table;
}

void QAL_DeleteMatrix(double** matrix, int /*rows*/, int /*cols*/) {
    if (matrix == nullptr) return;
    releaseArray(matrix[0]);
    releaseArray(matrix);
}

void QAL_Mt_Swap(double* a, double* b) { std::swap(*a, *b); }

int QAL_F2D(const float* source, int n, double** target) {
    if (source == nullptr || target == nullptr || n < 1) return QAL_ERR_MEMORY;
    double* const wide = allocateArray<double>(n);
    *target = wide;
    if (wide == nullptr) return QAL_ERR_MEMORY;
    for (int i = 0; i < n; ++i) wide[i] = static_cast<double>(source[i]);
    return QAL_OK;
}

// The narrowing rounds to nearest; a value beyond the float range becomes an infinity.
int QAL_D2F(float* target, int n, double** source) {
    if (target == nullptr || source == nullptr || n < 1) return QAL_ERR_MEMORY;
    double* const wide = *source;
    if (wide == nullptr) return QAL_ERR_MEMORY;
    for (int i = 0; i < n; ++i) target[i] = static_cast<float>(wide[i]);
    releaseArray(wide);
    return QAL_OK;
}

// Through unsigned, so that the lowest bit of a negative value is its two's-complement bit.
bool QAL_IsEven(int value) { return (static_cast<unsigned>(value) & 1u) == 0u; }
bool QAL_IsOdd(int value) { return (static_cast<unsigned>(value) & 1u) == 1u; }
