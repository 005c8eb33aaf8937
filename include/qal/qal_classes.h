// QalLib, the class side: index-tested containers and the static operations of k_Qal.
//
// Every element access of t_QalVector and t_QalMatrix tests its index and raises
// k_QalExceptionIndex for a bad one, which passes through the k_Qal operations untouched;
// a negative size raises std::invalid_argument. Nothing else raises: the flat functions
// of qal.h never throw.
//
//   t_QalVector<double> v(3);           // three elements, all 0.0
//   v(0) = 1.0;
//   try {
//       v(3) = 2.0;                     // raises with m_index 3
//   } catch (const k_QalExceptionIndex& e) {
//       std::wstring text = e.GetMessageW();   // "Internal error: bad index 3"
//   }
//
// The templates are built into the library for t_QalVector<double>, t_QalVector<int> and
// t_QalMatrix<double> only; other element types do not link.
#ifndef QAL_QAL_CLASSES_H
#define QAL_QAL_CLASSES_H

#include <stdexcept>  // std::invalid_argument, raised for a negative size
#include <string>
#include <vector>

#include "qal/qal_export.h"

// What a bad index raises. m_index is the offending index, or after a failed matrix
// allocation the element count that was asked for.
class QAL_API k_QalExceptionIndex {
public:
    k_QalExceptionIndex(int index);
    k_QalExceptionIndex(const k_QalExceptionIndex&) = default;
    k_QalExceptionIndex(k_QalExceptionIndex&&) = default;
    k_QalExceptionIndex& operator=(const k_QalExceptionIndex& other);
    k_QalExceptionIndex& operator=(k_QalExceptionIndex&& other);

    // "Internal error: bad index %d" with m_index.
    std::wstring GetMessageW() const;

    int m_index;
};

// A growable array of T whose element access is index-tested. A fresh vector of n
// elements holds n zeros.
template <class T>
class t_QalVector {
public:
    // std::invalid_argument for a negative size.
    explicit t_QalVector(int size);
    t_QalVector(const t_QalVector&) = default;
    t_QalVector(t_QalVector&&) = default;
    t_QalVector& operator=(const t_QalVector&) = default;
    t_QalVector& operator=(t_QalVector&&) = default;
    virtual ~t_QalVector();

    // New elements are 0; size 0 releases the storage; a negative size raises
    // std::invalid_argument and leaves the vector as it was.
    void SetSize(int size);
    int GetSize() const;
    // k_QalExceptionIndex with `index` unless 0 <= index < GetSize().
    T& operator()(int index);

protected:
    std::vector<T> m_array;
};

// A rows x cols matrix in one row-major block from the library's allocator, with
// index-tested element access. The elements of a new matrix are not initialised.
// A copy duplicates the block, so each matrix owns its own; a move hands the block over
// and leaves the source a 0 x 0 matrix without one.
template <class T>
class t_QalMatrix {
public:
    // No block when a dimension is not positive. k_QalExceptionIndex with rows * cols
    // when the block cannot be allocated (nothing is left behind).
    explicit t_QalMatrix(int rows = 0, int cols = 0);
    // Raises like the constructor when the duplicate block cannot be allocated.
    t_QalMatrix(const t_QalMatrix& other);
    t_QalMatrix(t_QalMatrix&& other) noexcept;
    // Duplicates first and releases the target's block after; a failed duplicate raises
    // and leaves the target as it was.
    t_QalMatrix& operator=(const t_QalMatrix& other);
    t_QalMatrix& operator=(t_QalMatrix&& other) noexcept;
    virtual ~t_QalMatrix();

    // The row is tested first: k_QalExceptionIndex with `row` unless 0 <= row < rows,
    // then with `col` unless 0 <= col < cols.
    T& operator()(int row, int col);

protected:
    // Releases the block held, then allocates rows * cols elements if both are positive.
    void Allocate();

    int m_rows;
    int m_cols;
    T* m_data;  // null when a dimension is not positive
};

extern template class QAL_API t_QalVector<double>;
extern template class QAL_API t_QalVector<int>;
extern template class QAL_API t_QalMatrix<double>;

// The static operations on scalars, vectors and matrices. No data; the object is never
// needed, and its assignments do nothing.
class QAL_API k_Qal {
public:
    k_Qal() = default;
    k_Qal(const k_Qal&) = default;
    k_Qal& operator=(const k_Qal& other);
    k_Qal& operator=(k_Qal&& other);

    // ---- Guarded scalars. None raises.
    // x to the power y: 1.0 when x < 1e-25 and y < 1e-25, 0.0 when x < 1e-25 otherwise,
    // 1.0 when -1e-25 < y < 1e-25; then (x and y clamped to +-1e25) 1e-25 when
    // log(x) * y < -log(1e25), 1e25 when above log(1e25), else pow(x, y).
    static double Power(double x, double y);
    // log(x); -1e25 when x <= 0. No upper guard.
    static double Log(double x);
    // Signed root: -sqrt(-x) for x < 0, else sqrt(x).
    static double Sqrt(double x);
    // Clamps a value beyond +-1e25 to +-1e25 (float: to the float image 9.99999956e24,
    // which lies below 1e25); true when it changed it. NaN stays, with false.
    static bool InfRepair(double& value);
    static bool InfRepair(float& value);
    // Replaces a magnitude below 1e-25 (0 and -0 included) by 1e-25, or -1e-25 for a
    // negative value (float: the image 1.00000002e-25); true when it changed it.
    static bool ZeroRepair(double& value);
    static bool ZeroRepair(float& value);

    // ---- Vector statistics, in double, sums in index order from 0.0. Vectors are read
    // through operator(), so a vector shorter than a loop's range raises
    // k_QalExceptionIndex with the first index beyond it.
    static double Sum(t_QalVector<double>& v);
    static double Sum2(t_QalVector<double>& v);  // sum of squares
    // Over the smaller of both sizes; never raises.
    static double SumMult(t_QalVector<double>& a, t_QalVector<double>& b);
    // Sum of a(i) / b(i) over the smaller size, skipping |b(i)| <= 1e-25 and NaN.
    static double SumDiv(t_QalVector<double>& a, t_QalVector<double>& b);
    // Sums of 1 / v(i) and 1 / v(i)^2, skipping |v(i)| <= 1e-25 and NaN.
    static double SumInv(t_QalVector<double>& v);
    static double SumInv2(t_QalVector<double>& v);
    // false with mean (and spread) 0.0 for an empty vector. spread is the sample standard
    // deviation, 0.0 for one element.
    static bool Mean(t_QalVector<double>& v, double& mean);
    static bool Mean(t_QalVector<double>& v, double& mean, double& spread);
    // mean and the plain sum of squared deviations; false with both 0.0 when empty.
    static bool NVariance(t_QalVector<double>& v, double& mean, double& squares);
    // Position of the first smallest / largest element (a NaN never replaces, a NaN at 0
    // stays); -1 with extreme = 0.0 for an empty vector.
    static int Min(t_QalVector<double>& v, double& extreme);
    static int Max(t_QalVector<double>& v, double& extreme);
    // Over the range of a, skipping |b(i)| < 1e-25 (exactly 1e-25 and NaN pass): the
    // position of the first largest a(i) / b(i) (-1 if none), the largest (-1e25 if
    // none), the smallest (1e25 if none). A shorter b raises.
    static int IndexMaxFraction(t_QalVector<double>& a, t_QalVector<double>& b);
    static double MaxFraction(t_QalVector<double>& a, t_QalVector<double>& b);
    static double MinFraction(t_QalVector<double>& a, t_QalVector<double>& b);
    // Correlation of x and y with deviations divided by scale(i) (means unscaled); 0.0
    // when x or y is empty, their sizes differ or a root of the squared deviations is
    // below 1e-25. A shorter scale raises.
    static double LinCorCoef(t_QalVector<double>& x, t_QalVector<double>& y, t_QalVector<double>& scale);

    // ---- Gauss-Jordan elimination with full pivoting on the leading n x n block of a and
    // the leading n x m block of b: a becomes the inverse, b the solutions. 0 on success,
    // 2 when a pivot's magnitude is below 1e-25 (a and b then hold the interrupted
    // elimination). Raises k_QalExceptionIndex when a or b is too small (from the first
    // access beyond it) and with -1 when every pivot candidate is NaN; a negative n
    // raises std::invalid_argument.
    static int GaussJordan(t_QalMatrix<double>& a, int n, t_QalMatrix<double>& b, int m);
};

#endif  // QAL_QAL_CLASSES_H
