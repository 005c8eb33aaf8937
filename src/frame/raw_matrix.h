// Ownership of a raw matrix for the length of a call.
#ifndef QAL_SRC_FRAME_RAW_MATRIX_H
#define QAL_SRC_FRAME_RAW_MATRIX_H

#include "qal/qal.h"

namespace qal::detail {

// Holds a matrix from QAL_NewMatrix and gives it back by QAL_DeleteMatrix on every way out.
// QAL_NewMatrix never hands out a table with a null row 0, so a non-null table is whole.
class RawMatrix {
public:
    RawMatrix(int rows, int cols) noexcept : table_(QAL_NewMatrix(rows, cols)), rows_(rows), cols_(cols) {}
    ~RawMatrix() { QAL_DeleteMatrix(table_, rows_, cols_); }  // accepts null
    RawMatrix(const RawMatrix&) = delete;
    RawMatrix& operator=(const RawMatrix&) = delete;

    explicit operator bool() const noexcept { return table_ != nullptr; }
    double** get() const noexcept { return table_; }

private:
    double** table_;
    int rows_;
    int cols_;
};

}  // namespace qal::detail

#endif  // QAL_SRC_FRAME_RAW_MATRIX_H
