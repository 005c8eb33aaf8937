// QalLib: numerical routines for sampled curves.
//
// Every function here is a plain call on the caller's arrays. None throws, none keeps a
// pointer to an argument after it returns, and none allocates unless its line says so.
// Counts, indices and options are signed 32-bit ints; a negative count is too small.
// Results are exact to the bit: each routine fixes the precision and the order of its
// operations, and the sense of each comparison (which decides equality and NaN).
// Any number of threads may call the library on separate arrays. Two functions keep
// module-wide state: QAL_Trapez (its running estimate), which must not be called from two
// threads at once, and QAL_FirstDerivativeGolay (its kernel, built at the first call),
// which may be: concurrent first calls each build the kernel and one build is kept.
#ifndef QAL_QAL_H
#define QAL_QAL_H

#include "qal/qal_export.h"
#include "qal/version.h"  // QAL_VERSION_* and qal_version(), the linked library's version

// ---- Status codes ---------------------------------------------------------------------
// The values are not contiguous; these ten are all that occur.
inline constexpr int QAL_OK = 0;                   // the call did what was asked
inline constexpr int QAL_ERR_ORDER = 1;            // abscissae do not ascend
inline constexpr int QAL_ERR_MEMORY = 8;           // allocation failed; bad pointer/count in some families
inline constexpr int QAL_ERR_ZERO_DIVISION = 11;   // a denominator or interval width is numerically zero
inline constexpr int QAL_ERR_SINGULAR = 12;        // a matrix is singular
inline constexpr int QAL_ERR_PARAMETER = 35;       // null pointer, impossible count or option
inline constexpr int QAL_ERR_NOT_FOUND = 36;       // the search ran through the data and found nothing
inline constexpr int QAL_ERR_OUT_OF_RANGE = 37;    // at or beyond the ends of the data, or no finite result
inline constexpr int QAL_ERR_TOO_FEW_POINTS = 38;  // fewer points than the operation needs
inline constexpr int QAL_ERR_LOG_SEQUENCE = 39;    // log-transformed values break the demanded order

// ---- Extremum kinds (not status codes) -------------------------------------------------
inline constexpr int QAL_EXTREMUM_MAX = 11;  // parabola through the means opens downward
inline constexpr int QAL_EXTREMUM_MIN = 21;  // parabola through the means opens upward

// ---- Module ----------------------------------------------------------------------------
// Kept for hosts that call it after loading the module; it has no effect on this platform.
QAL_API void InitQalLibExtDLL();
// qal_version(), the version of the linked library as "MAJOR.MINOR.PATCH", is declared in
// qal/version.h (included above) beside the macros QAL_VERSION_MAJOR, _MINOR, _PATCH and
// QAL_VERSION_STRING of these headers.

// ---- Frame: raw matrices and precision conversion --------------------------------------
// A raw matrix is a table of `rows` row pointers over one block of rows * cols doubles,
// row after row: element (i, j) is matrix[i][j], matrix[0] is the block. It does not know
// its size; callers carry rows and cols along. Elements are not initialised.

// A new rows x cols matrix, or null with nothing allocated when either dimension is below
// 1, when rows * cols exceeds INT_MAX (never a block smaller than the dimensions), or when
// the table or the block cannot be allocated (a failed block releases the table first).
QAL_API double** QAL_NewMatrix(int rows, int cols);
// Releases a matrix from QAL_NewMatrix (block, then table); null is accepted. rows and
// cols are not used.
QAL_API void QAL_DeleteMatrix(double** matrix, int rows, int cols);
// Exchanges *a and *b. No test.
QAL_API void QAL_Mt_Swap(double* a, double* b);
// Copies source[0..n-1], widened exactly, into a new double array stored in *target.
// QAL_ERR_MEMORY (not QAL_ERR_PARAMETER) for a null pointer or n < 1, *target untouched;
// QAL_ERR_MEMORY with *target null when the array cannot be allocated. The array belongs
// to the caller: QAL_D2F releases it.
QAL_API int QAL_F2D(const float* source, int n, double** target);
// Narrows (*source)[0..n-1] to the nearest floats into target (beyond the float range an
// infinity, no clamp), then releases *source; *source keeps its old value and must not be
// used again. QAL_ERR_MEMORY for a null target or source, n < 1, or a null *source:
// nothing written or released.
QAL_API int QAL_D2F(float* target, int n, double** source);
// The lowest bit of value decides: even when it is 0, odd when it is 1 (-3 is odd).
QAL_API bool QAL_IsEven(int value);
QAL_API bool QAL_IsOdd(int value);

// ---- Guarded arithmetic: scalar functions ----------------------------------------------
// The standard functions with their domain errors and overflows replaced by fixed
// substitutes. None fails; a NaN argument reaches the standard function unless a line
// below says otherwise.

// exp(x); 1e25 for x > 30. A very negative x underflows to 0.
QAL_API double QAL_exp(double x);
// log(x); -30.0 for x < 1e-25 (every negative x too), 30.0 for x > 1e25.
QAL_API double QAL_log(double x);
// log10(x); -30.0 for x < 1e-25 (every negative x too), 30.0 for x > 1e25.
QAL_API double QAL_log10(double x);
// x to the power y, the first case that applies: 1.0 for x > 1e25 and y == 0; -1.0 for
// x < -1e25 and y == 0; 1e25 for 0 to the power 0; 0.0 for x < 0 and a y that is not a
// whole number (NaN and infinite y included); 1e25 for y > 1 and |x| > 1e25^(1/y); 0.0
// for y < -1 and |x| > 1e25^(1/|y|); 1e25 for x < 1, y < -1 and 1/x > 1e25^(1/|y|)
// (+0 included, -0 not); else pow(x, y).
QAL_API double QAL_pow(double x, double y);
// 10 to the power x; 1e25 for x > 30, 0.0 for x < -25.
QAL_API double QAL_pow10(double x);
// Signed root of x rounded to float first: -sqrt(-x) below 0, else sqrt(x). A double
// result of float precision; an x beyond the float range gives an infinity.
QAL_API double QAL_sqrt(double x);
// a * b, formed exactly in double and rounded to float; a product above 1e25 gives the
// float image of 1e25 (9.99999956e24), one below -1e25 its negative.
QAL_API float QAL_mult(float a, float b);
// Decimal logarithms of source[0..n-1] by QAL_log10, rounded to float, into a new array
// stored in *target. mode 1: QAL_ERR_LOG_SEQUENCE at the second descent of the
// logarithms (a flat step is no descent); mode 2: QAL_ERR_LOG_SEQUENCE at the first
// logarithm not above the one before, the first compared with -30; other modes: no test.
// Both tests are false for a NaN on either side, so a NaN logarithm and the one after it
// pass them.
// n == 0: QAL_OK, nothing allocated or looked at. QAL_ERR_MEMORY for a null source or
// target, or when the array cannot be allocated (*target is then null; a negative n
// always fails so). On QAL_OK and on QAL_ERR_LOG_SEQUENCE the array belongs to the
// caller, who releases it with QAL_ReleaseArray (it comes from new[], so delete[] does
// too); after QAL_ERR_LOG_SEQUENCE it holds the logarithms up to the offending one and
// nothing defined behind it.
QAL_API int QAL_CalcLog(float** target, const float* source, int n, short mode);
// Releases an array that QAL_CalcLog handed out; null is accepted.
QAL_API void QAL_ReleaseArray(float* array);

// ---- Guarded arithmetic: array statistics ---------------------------------------------
// Sums run in index order from 0.0 in a double accumulator. None allocates.

// Sum of values[0..n-1]; 0.0 for a null array or n outside 0 .. 9999 (9999 is summed,
// 10000 is not). The float overload adds each element widened to double, so it returns
// the double sum, not the float one.
QAL_API double QAL_SumOf(const double* values, int n);
QAL_API double QAL_SumOf(const float* values, int n);
// Mean of values[0..n-1] (sum / n) and, when spread is not null, the sample standard
// deviation about it: QAL_sqrt(sum of squared deviations / (n - 1)), so of float
// precision; 0.0 for n = 1 (NaN for an infinite or NaN element).
// QAL_ERR_PARAMETER for null values or mean, or n < 1: nothing written.
QAL_API int QAL_Mean(const double* values, int n, double* mean, double* spread);
// Sum of squared deviations about the mean by one pass: squares - sum * sum / n. May come
// out slightly negative through cancellation. 0.0 for a null array or n < 1; no upper
// limit on n.
QAL_API double QAL_SumSquareResiduen(const double* values, int n);
// Divides each of values[0..n-1] by their QAL_SumOf sum (one division per element).
// QAL_ERR_ZERO_DIVISION, array untouched, when that sum is exactly 0.0: so also for a
// null array and n outside 1 .. 9999. A tiny or NaN sum is divided by.
QAL_API int QAL_Normalize(double* values, int n);

// ---- Guarded arithmetic: ordered search and sort ---------------------------------------
// Position of `value` in the monotonic x[0..n-1] (ascending exactly when x[n-1] > x[0];
// equal ends, and a NaN at either end, count as descending) by a bisection that moves both bounds past the middle,
// so *index may be one position off the enclosing interval on either side, n-1 included.
// An element equal to the value is found only when the bisection lands on it. A NaN
// value or element ends the search at the middle it meets. QAL_ERR_PARAMETER (null x or
// index, nothing written); then *index = 0; QAL_ERR_TOO_FEW_POINTS (n < 2);
// QAL_ERR_OUT_OF_RANGE at or beyond x[0] (index 0) or x[n-1] (index n-1).
QAL_API int QAL_LocateValue(double value, const double* x, int n, int* index);
// The stored point at the position QAL_LocateValue gives, no interpolation. At or beyond
// x[0] or x[n-1] (ends of an ascending array): QAL_ERR_OUT_OF_RANGE with that end point.
// QAL_ERR_PARAMETER (null pointer or n < 1); a failing search passes its status on with
// the outputs untouched.
QAL_API int QAL_FindAbsValues(double value, const double* x, const double* y, int n, double* xOut, double* yOut);
// Stable ascending straight-insertion sort of keys[0..n-1] in place; the optional
// companions `second` and `third` (may be null) are moved with the keys. An element moves
// left only past strictly greater keys, so a NaN key stays and stops others. `reserved`
// is ignored. QAL_ERR_MEMORY, not QAL_ERR_PARAMETER, for null keys or n < 1. Quadratic in
// the worst case; no allocation.
QAL_API int QAL_SortStraightInsert(float* keys, float* second, int* third, int n, int reserved);

// ---- Solvers: LU decomposition -------------------------------------------------------
// `a` is a raw matrix (or any table of n row pointers); only its elements are touched, and
// an exchange of rows exchanges their contents.

// Replaces a[0..n-1][0..n-1] by the LU factors of its row-permuted self (Crout, implicit
// row scaling, partial pivoting; U on and above the diagonal, L below with its unit
// diagonal not stored). pivots[j] is the row exchanged with row j at step j (j where none),
// a record to replay in ascending j, not a permutation. *sign is +-1.0, negated at each
// exchange. Of equal scaled pivot candidates the later row wins; a NaN one is never taken
// (an all-NaN column keeps the previous column's pivot row, even one above j). A zero
// pivot becomes 1e-25 and the call goes on with QAL_OK. QAL_ERR_PARAMETER (null pivots or
// sign), QAL_ERR_MEMORY (no memory for the n scale factors, a negative n too): nothing
// written. QAL_ERR_SINGULAR when a row holds only zeros and NaNs: a and pivots
// untouched, *sign = 1.0. n = 0: QAL_OK with *sign = 1.0. Allocates n doubles
// for the call.
QAL_API int QAL_LUDecomposition(double** a, int n, int* pivots, double* sign);
// Solves the decomposed system for the right-hand side b[0..n-1], in place: forward
// substitution replaying the exchanges (leading zeros of the permuted b cost nothing),
// then back substitution. A diagonal element equal to 0.0 gives 1e15 in that b[i]
// whatever the sum (never after QAL_LUDecomposition, which leaves none). No test:
// always QAL_OK, nothing done for n <= 0. a and pivots are not changed, so any number of
// right-hand sides may follow one decomposition.
QAL_API int QAL_LUSolveEqua(const double* const* a, int n, const int* pivots, double* b);

// ---- Lines: line fits and evaluation ---------------------------------------------------
// A line is (intercept, slope): y = intercept + slope * x. Nothing here allocates.
// Two-pass least-squares fit about the mean abscissa, in double. No tests at all: n = 1
// or equal abscissae with an exact mean (always so for two points) give NaN in both
// outputs, n <= 0 too. Writes intercept, then slope. Only x is centred: the rounding of
// its mean enters the slope times the sum of y, and the intercept is the line at x = 0,
// so abscissae far from 0 for their spread lose digits, here and in the crossing of
// QAL_CalcLinY: subtract an offset from x first.
QAL_API void QAL_LinFit(const double* x, const double* y, int n, double* intercept, double* slope);
// The same fit with every step a single-precision operation (n converted to float).
QAL_API void QAL_LinFitFloat(const float* x, const float* y, int n, float* intercept, float* slope);
// Ordinate of the fitted line at xValue: slope * xValue + intercept. 0.0 for null x or y
// or n < 2 (indistinguishable from a true 0.0).
QAL_API double QAL_CalcLinX(double xValue, const double* x, const double* y, int n);
// Abscissa where the fitted line reaches yValue. 0.0 for null x or y, n < 2, or a slope
// not above 1e-25 in magnitude (a flat line, or a NaN slope from equal abscissae with an
// exact mean).
QAL_API double QAL_CalcLinY(double yValue, const double* x, const double* y, int n);
// QAL_CalcLinX on the float fit; the final product and sum in double, rounded to float once.
QAL_API float QAL_CalcLinXFloat(float xValue, const float* x, const float* y, int n);
// QAL_CalcLinY on the float fit; the widened slope is tested against the double 1e-25,
// the quotient is float.
QAL_API float QAL_CalcLinYFloat(float yValue, const float* x, const float* y, int n);
// Crossing of y = intercept1 + slope1 x and y = intercept2 + slope2 x, in float.
// QAL_ERR_PARAMETER (null output, nothing written). QAL_ERR_OUT_OF_RANGE when the slopes
// are less than 1e-8 apart or one exceeds 1e25 / 100 in magnitude: both outputs the float
// nearest 1e25. QAL_OK otherwise: *yCross from the first line whose x * slope lies below
// 1e25 (signed, so far below -1e25 counts), untouched when neither does; a NaN coefficient
// passes every test and leaves NaN in *xCross.
QAL_API int QAL_StraightLineIntersection(float* xCross, float* yCross, float intercept1, float slope1,
                                         float intercept2, float slope2);

// ---- Lines: linear regression ----------------------------------------------------------
// Least-squares line by one pass over raw sums in double (not the centred fit above).
// Returns 1 when computed and 0, writing nothing, when n < 2: a yes/no answer, not a status.
// Equal abscissae are not reported (NaN or a residue quotient, result 1). Writes slope,
// then intercept.
QAL_API int QAL_LinearRegression(const double* x, const double* y, int n, double* intercept, double* slope);
// Centred two-pass fit of float samples with double sums, narrowed to float at the end.
// No tests: n <= 1 gives NaN in both outputs. Always returns QAL_OK (0).
QAL_API int QAL_LinearRegressionFloat(const float* x, const float* y, int n, float* intercept, float* slope);

// ---- Interpolation: cubic splines ---------------------------------------------------
// Knots x[0..n-1] (expected ascending, not tested) with 2 <= n <= 10000, and a table y2 of
// one second derivative per knot that the caller owns, built once and read by every
// evaluation on the same x and y.

// The table of the cubic spline through (x[i], y[i]), by one forward sweep and one
// back-substitution in double. An end slope at or above 1e25 makes that end natural
// (second derivative 0), any other value (NaN and -1e30 too) clamps its first derivative.
// A sweep pivot not above 1e-25 in magnitude, or NaN, copies the row before; equal
// abscissae otherwise leave infinities or NaNs in y2 without a status. Allocates n - 1
// doubles for the call. QAL_ERR_PARAMETER (null pointer, n < 2 or n > 10000),
// QAL_ERR_MEMORY (no work memory); y2 untouched then.
QAL_API int QAL_Splines(const double* x, const double* y, int n, double slopeFirst, double slopeLast, double* y2);
// The spline of x, y and its table y2 at xValue, on the knot interval found by bisection:
// a knot opens the interval that begins at it, x[n-1] closes the last one, and a value
// outside the knots or NaN takes the end interval, extrapolated with QAL_OK. No
// allocation, about log2(n) comparisons per call whatever the order of the calls; for
// many ascending points QAL_InterpolFloatArrays (option 4) builds the natural table once
// and walks the intervals in one sweep. QAL_ERR_PARAMETER (null pointer, n < 2 or
// n > 10000; yOut untouched), QAL_ERR_ZERO_DIVISION with y[lo] in yOut when the interval
// is not wider than 1e-25 (NaN too).
QAL_API int QAL_CubicSplineInterpolation(const double* x, const double* y, const double* y2, int n, double xValue,
                                         double* yOut);

// ---- Interpolation: array resampling -------------------------------------------------
// Values of `option` for QAL_Interpol; 15 acts as QAL_INTERPOL_MIDPOINT, every other value
// (1, 7 to 11, 13, below 0, above 15) as QAL_INTERPOL_LINE.
inline constexpr int QAL_INTERPOL_LOCATED = 0;       // y at the located position (either side of xValue)
inline constexpr int QAL_INTERPOL_LINE = 2;          // least-squares line through all points
inline constexpr int QAL_INTERPOL_MIDPOINT = 3;      // (y[n-1] + y[0]) * 0.5
inline constexpr int QAL_INTERPOL_SPLINE = 4;        // cubic spline, natural unless y2 is given
inline constexpr int QAL_INTERPOL_SEGMENT = 5;       // line through the located point and the next
inline constexpr int QAL_INTERPOL_LOCAL_LINE = 6;    // least-squares line through 6, 4 or 2 points there
inline constexpr int QAL_INTERPOL_LOG_LINE = 12;     // least-squares line through all points in log-log
inline constexpr int QAL_INTERPOL_LOG_SEGMENT = 14;  // log-log line through the located point and the next

// The curve at xValue by `option`, in double. n == 1: y[0] with QAL_OK for every option
// and value. Otherwise *yOut = (y[n-1] + y[0]) * 0.5 first, then xValue is located by
// QAL_LocateValue (x ascending or descending; ascending at option 4), whose refusal passes
// on with that midpoint: QAL_ERR_OUT_OF_RANGE at or beyond either end, and for every value
// when x[0] == x[n-1]. A NaN xValue passes the location. Options 0, 5, 6 and 14 work
// from the located position, which may be one off the interval that holds xValue, so
// their segment or local line need not enclose it; they give y[n-1] where the location
// ends on n - 1. Logarithms go through QAL_log10 (-30 for values below
// 1e-25) and the result of options 12 and 14 through QAL_pow10. Equal abscissae
// under a fit give its NaN or infinity with QAL_OK. y2 is read at option 4 only (null:
// a natural table is built for this call). QAL_ERR_PARAMETER for a null x, y or yOut or
// n < 1 (nothing written), and at option 4 for n > 10000 (the midpoint stays);
// QAL_ERR_ZERO_DIVISION at option 4 with the lower ordinate of a bracket not wider than
// 1e-25; QAL_ERR_MEMORY with the midpoint when the work memory of option 4 (n doubles),
// 12 (2 x n) or 14 (2 x 2) cannot be allocated. The other options allocate nothing.
QAL_API int QAL_Interpol(double* yOut, double xValue, const double* x, const double* y, const double* y2, int n,
                         int option);
// Resamples the float curve x, y at xNew[0..nNew-1]: exactly one QAL_Interpol outcome
// per new abscissa on the widened curve without a table, narrowed to float into yNew on
// QAL_OK; a refused point keeps what the caller put in yNew, and the loop goes on.
// Returns the status of the last point (QAL_OK when nNew == 0), so an earlier refusal
// does not show. Work that depends on the curve alone (the fit of options 2 and 12, the
// spline table of option 4) is made once per call. Allocates four double arrays (n, n,
// nNew, nNew), plus that shared work; QAL_ERR_MEMORY with yNew unwritten when one of the
// four fails (a negative count always does), and for every point needing the shared work
// when that allocation fails. QAL_ERR_PARAMETER, nothing written, for a null x or y with
// n > 0 or a null xNew or yNew with nNew > 0.
QAL_API int QAL_InterpolFloatArrays(const float* x, const float* y, int n, const float* xNew, float* yNew, int nNew,
                                    int option);
// Counts into *outsideCount the samples with values[i] > upper[i], or else
// lower[i] > values[i] (lower may be null: no lower test), each once; float comparisons,
// strict, so a NaN makes its own comparison false (a sample with a NaN upper limit still
// counts when it lies below its lower one). QAL_ERR_PARAMETER for a null values, upper or
// outsideCount or n < 1 (nothing written).
QAL_API int QAL_CheckInOutArrays(const float* values, const float* lower, const float* upper, int n,
                                 int* outsideCount);

// ---- Interpolation: polynomial and rational --------------------------------------------
// Both evaluate at xValue the function through the n points (x[i], y[i]), whose abscissae
// need no order, by a tableau in double started at the nearest point (of equally near ones
// the first; a NaN xValue starts at point 0), and extrapolate without a status.
// *errorEstimate receives the last correction added to *yOut: a measure of the last
// column's change, not an error bound; it is not written when n = 1 (except by the
// rational routine's hit below). A vanishing divisor never fails the call: 1e15 stands in
// and the result comes out very large, or just wrong (see below), with QAL_OK.
// QAL_ERR_PARAMETER (null pointer, n < 1 or n > 10000) and QAL_ERR_MEMORY (the two work
// arrays of n doubles) leave both outputs untouched.

// Neville's polynomial of degree n-1. Where a tableau width (x[i] - xValue) -
// (x[i+m] - xValue) is below 1e-25 in magnitude, the quotient is 1e15 in place of a
// division: for equal abscissae, and for distinct ones whose offsets from a far xValue
// round alike.
QAL_API int QAL_PolynomialInterpolation(const double* x, const double* y, int n, double xValue, double* yOut,
                                        double* errorEstimate);
// The diagonal rational function by the Bulirsch-Stoer recurrence. The first point in
// index order closer than 1e-25 to xValue (strictly) gives its y and an estimate of 0.0,
// with no tableau. A pole (a zero denominator in the tableau) puts 1e15 in both entries.
// A denominator is exactly 0.0 whenever two numbers of the tableau agree to the last bit,
// which smooth data without any pole meet too (1/(1 + 25 x^2) at 4 or 9 equally spaced
// nodes on [-1, 1], at some abscissae): the result is then about 1e15, or wrong without
// being large when a later step takes the 1e15 back out (even 0.0 with an estimate of
// 0.0), always with QAL_OK.
QAL_API int QAL_RationialInterpolation(const double* x, const double* y, int n, double xValue, double* yOut,
                                       double* errorEstimate);

// ---- Interpolation: Akima slopes -------------------------------------------------------
// The Akima slope at every point of the float curve x, y[0..n-1] into slopes[0..n-1]: two
// points extrapolated beyond each end, segment slopes in float (a segment of zero or NaN
// width has the slope 1000.0, any other width divides), then per point the mean of the two
// neighbouring segment slopes weighted in double by the change of slope beyond each,
// narrowed once to float (the plain float mean when both outer pairs are equal). Evaluates
// no curve. Allocates three work arrays of about n floats. On every failure slopes is
// untouched: QAL_ERR_PARAMETER (a null array), QAL_ERR_TOO_FEW_POINTS (n < 3, nothing
// allocated or read), QAL_ERR_MEMORY (a work array not allocated; tested before the
// order), QAL_ERR_ORDER (an x[i+1] below x[i], or a NaN abscissa; equal ones pass).
QAL_API int QAL_AkimaSub(const float* x, const float* y, float* slopes, int n);

// ---- Smoothing: Savitzky-Golay coefficients and filtering ------------------------------
// Samples count as equally spaced: the filters see indices, never abscissae. A filter of
// `width` taps weights the sample itself with coef[half], half = (width - 1) / 2, and the
// sample j places to the left (right) with coef[half - j] (coef[half + j]).

// Filter kinds (the `kind` argument; not status codes). Any other positive kind filters as
// QAL_FILTER_AVERAGE and ignores `degree`; zero and negative kinds are refused.
inline constexpr int QAL_FILTER_AVERAGE = 10;         // all weights equal
inline constexpr int QAL_FILTER_TRIANGLE = 11;        // 1, 2, ... up to the centre, down again
inline constexpr int QAL_FILTER_SAVITZKY_GOLAY = 20;  // least squares, `degree` 2, 4 or 6

// Least-squares convolution coefficients for the samples at offsets -leftCount..rightCount,
// in ascending order of offset, in coef[0..leftCount + rightCount]; the rest of
// coef[0..coefCount-1] is set to 0.0. Summed against those samples they give the
// coefficient of offset^derivOrder in the polynomial of degree polyOrder fitted to them:
// derivOrder 0 smooths, 1 gives the slope per sample step, d the d-th derivative over d!.
// Not normalised. The moment sums go through QAL_pow, so with polyOrder 6 every offset of
// 122 or more enters the sum of twelfth powers as 1e25, and the set differs from the exact
// one without a status (kind 20 from width 245 on). QAL_ERR_PARAMETER for coefCount below
// leftCount + rightCount + 1, a negative leftCount or rightCount, derivOrder > polyOrder,
// leftCount + rightCount < polyOrder, a null coef, and also (nothing else would keep
// derivOrder inside the solution) a negative polyOrder or derivOrder; QAL_ERR_MEMORY when
// a work array or the matrix cannot be had; QAL_ERR_SINGULAR from QAL_LUDecomposition.
// coef is untouched on every failure. Work memory: polyOrder + 1 ints and doubles and a
// raw matrix of that order, released before the return.
QAL_API int QAL_SavitzkyGolayCoeffizient(double* coef, int coefCount, int leftCount, int rightCount,
                                         int derivOrder, int polyOrder);
// Weights of a filter of `width` taps (kinds above), scaled by QAL_Normalize to a sum of 1.
// Kind 11 sets coef[i] and then coef[width-1-i] to i + 1 for i = 0..width/2, so an even
// width overwrites the middle pair (width 4: 1, 3, 3, 1); kind 20 asks
// QAL_SavitzkyGolayCoeffizient for half samples on each side (an even width keeps a last
// 0.0) and returns its failure at once, unnormalised. QAL_ERR_MEMORY, not
// QAL_ERR_PARAMETER, for a null coef or width < 3; QAL_ERR_PARAMETER for kind <= 0, for a
// degree other than 2, 4, 6 at kind 20, and there for a degree above 2 * half;
// QAL_ERR_ZERO_DIVISION with the weights filled but unscaled when they sum to exactly 0.0
// or width exceeds 9999. coef is untouched on the argument failures. Allocates only at
// kind 20, the work memory of QAL_SavitzkyGolayCoeffizient and QAL_LUDecomposition.
QAL_API int QAL_SetFilterCoefficients(double* coef, int kind, int width, int degree);
// Moving filter of in[0..n-1] into out[first..last]; first and last are first clamped into
// 0..n-1, and the rest of out stays. Per sample, in double: in[i] * coef[half], then for
// j = 1..half the left tap, then the right tap, each product added in turn; a tap beyond
// the data adds its weight to a missing weight instead, and unless that is exactly 0.0 or
// 1.0 the sum is divided by 1 - missing. So a constant curve stays constant up to both
// ends; nothing is mirrored or padded, and width may exceed n. in == out is allowed: each
// result is stored before the next sample is read, so the left taps read filtered values
// and the result differs from that of two arrays. In this order: QAL_ERR_MEMORY (null in
// or out), QAL_ERR_TOO_FEW_POINTS (n < 2), QAL_ERR_PARAMETER (last < first after
// clamping, width outside 3..299, even width), QAL_ERR_MEMORY (no memory for the weights),
// then the failure of QAL_SetFilterCoefficients; out is untouched on every failure.
// Allocates `width` doubles per call, and at kind 20 the coefficient build's work memory.
QAL_API int QAL_FilterArray(const double* in, double* out, int n, int first, int last, int kind, int width,
                            int degree);
// QAL_FilterArray on float samples, with widths 3..99: each sample is widened to double,
// the weighted sum and the renormalisation are formed exactly as there, and the result is
// rounded to float once, when it is stored.
QAL_API int QAL_FilterFloatArray(const float* in, float* out, int n, int first, int last, int kind, int width,
                                 int degree);

// ---- Smoothing: derivative arrays ------------------------------------------------------
// Values of `method` for QAL_DerivArray (not status codes); any other value computes
// nothing and returns QAL_OK with deriv as it was.
inline constexpr int QAL_DERIV_LINE_FIT = 2;  // least-squares lines over `span` samples
inline constexpr int QAL_DERIV_SPLINE = 4;    // natural cubic spline; `span` not read

// First derivative at xValue of the spline of x, y and its table y2 (from QAL_Splines), on
// the knot interval found as QAL_CubicSplineInterpolation finds it, in double:
// ((3 b b - 1) y2[hi] - (3 a a - 1) y2[lo]) h / 6 + (y[hi] - y[lo]) / h, products from
// the left, the bracket scaled by h before the division by 6. Outside the knots the end
// interval's cubic goes on with QAL_OK. No allocation. QAL_ERR_PARAMETER (null pointer,
// n < 2 or n > 10000; deriv untouched), QAL_ERR_ZERO_DIVISION with 1e15 in *deriv when the
// interval is not wider than 1e-25 (NaN too).
QAL_API int QAL_FirstDerivative(const double* x, const double* y, const double* y2, int n, double xValue,
                                double* deriv);
// Second derivative of the same spline at xValue: a y2[lo] + b y2[hi]. Tests y for null
// though it does not read it; fails as QAL_FirstDerivative, 1e15 in *deriv2 included.
QAL_API int QAL_SecondDerivative(const double* x, const double* y, const double* y2, int n, double xValue,
                                 double* deriv2);
// The derivative curve deriv[0..n-1] of x, y (ascending), in double. `order` 1 or 2.
// QAL_DERIV_SPLINE: the natural spline's table, copied for order 2 (0.0 at both ends),
// QAL_FirstDerivative at every x[i] for order 1, whose status for the last point is the
// result (an earlier zero-wide interval shows only as its 1e15); the spline's limit of
// 10000 points applies. QAL_DERIV_LINE_FIT, half = span / 2 (toward zero): order 1 the
// QAL_LinFit slope over samples i - half .. i + half, cut off at the ends; order 2 the
// slope over the half samples after i minus that over the half before it (fewer near the
// ends, the sample itself in neither), not divided by any distance, and 0.0 at three
// samples at each end. A fit over one sample or none (span < 2 at order 1, < 4 at order
// 2) gives NaN. Allocates n doubles at every call, before any test and for every method.
// In this order, deriv untouched: QAL_ERR_MEMORY (not QAL_ERR_PARAMETER) for a null
// array or when the n doubles cannot be had (a negative n always), QAL_ERR_TOO_FEW_POINTS
// (n < 2), QAL_ERR_PARAMETER (order not 1 or 2, then QAL_DERIV_LINE_FIT at order 2 with
// n < 4), then the failure of QAL_Splines.
QAL_API int QAL_DerivArray(const double* x, const double* y, double* deriv, int n, int method, int order,
                           int span);
// QAL_DerivArray on float curves, worked in double on copies widened by QAL_F2D (x, y,
// then deriv, so that what no step writes keeps its value), then the n work doubles.
// Only QAL_OK narrows the copies back by QAL_D2F (x and y keep their values, a
// signalling NaN among them quieted; deriv is rounded to float once); every failure
// leaves all three arrays as they were, a zero-wide spline interval too. QAL_ERR_MEMORY
// for a null array before any allocation, for n < 1 (from QAL_F2D) and when a copy or
// the work array cannot be had; then the failures of QAL_DerivArray from
// QAL_ERR_TOO_FEW_POINTS on.
QAL_API int QAL_DerivFloatArray(float* x, float* y, float* deriv, int n, int method, int order, int span);

// ---- Smoothing: derivatives at a point -------------------------------------------------
// All three give the derivative as a double, 1e25 meaning that there is none.

// Derivative of the caller's function at xValue by Ridders' method: central differences
// (the upper point evaluated first) at `step`, then step / 1.4 nine times, extrapolated
// to step zero in a 10 x 10 tableau, all in double. Returns the tableau entry with the
// smallest error figure (of equal ones the later) and writes that figure to
// *errorEstimate; stops after a column whose last extrapolation moves at least 2 x that
// figure. Calls func at most 20 times, allocates the tableau (a QAL_NewMatrix of
// 10 x 10) for the call; reentrant as far as func is. Tests neither func nor
// errorEstimate. *errorEstimate = 1e15 first; then 1e25 for a step below 1e-25 (func
// not called) or when the tableau cannot be allocated; 0.0 with 1e15 when no entry has
// a comparable error figure (func gives NaN).
QAL_API double QAL_FirstDerivativeRidder(double (*func)(double), double xValue, double step,
                                         double* errorEstimate);
// Slope per sample step at xValue: the 11-tap Savitzky-Golay first-derivative kernel
// (degree 4, offsets -5..5; -5..-1 weigh 25/429, -49/858, -133/1287, -503/5148,
// -74/1287, the centre 0, the right side the negatives) applied to y at both samples of
// xValue's knot interval (bisection as for the splines, n = 1 giving one sample), then
// interpolated linearly between them, in double. The spacing of x enters only there.
// Taps beyond the data add their weight to a missing weight, and a missing weight not
// 0.0 divides the sum by 1 - missing, so near an end the value is rescaled, not a
// derivative of a constant 0. The kernel is built at the first call (a few small work
// arrays) and kept for the life of the library; a failed build is retried at the next
// call. Threads may call this at once, the first calls included: a call that finds no
// kernel yet builds its own copy, with the same bits, and one of them is kept. 1e25 for a null x or y or n < 1
// (nothing built), when the kernel cannot be built, or when the interval is narrower than
// 1e-25 (exactly 1e-25 and NaN pass).
QAL_API double QAL_FirstDerivativeGolay(const double* x, const double* y, int n, double xValue);
// Slope of QAL_LinearRegression over the samples around xValue's knot interval lo, hi:
// halfUsed = min(span / 2, lo + 1, n - 1 - lo) samples on each side of the gap, so an odd
// span acts as the even one below it, and every xValue inside one interval gives the same
// result. No allocation; reentrant. 1e25 for n < 1, span < 2, a null array, or an
// interval narrower than 1e-25 (exactly 1e-25 and NaN pass).
QAL_API double QAL_FirstDerivativeLinReg(const double* x, const double* y, int n, int span, double xValue);

// ---- Smoothing: curvature --------------------------------------------------------------
// Both always return QAL_OK, allocate nothing and test no pointer. A zero step in x
// leaves an infinity or NaN in the elements that divide by it.

// Differences in float: firstDerivative from y, then secondDerivative from
// firstDerivative, one-sided at both ends and central over two steps inside (the second
// derivative itself, no curvature formula). n < 2 writes nothing.
QAL_API int QAL_Kruemmung(const float* x, const float* y, float* firstDerivative, float* secondDerivative, int n);
// result[i] = slope of a chord of chordWidth samples right of i minus that of one left of
// i, the inner chord ends gapWidth / 2 (toward zero) from i; the chords shrink to the
// last two or the first two samples at the ends. Differences in float, slopes and their
// difference in double, narrowed once. chordWidth 0 gives NaN (0/0) wherever a chord
// keeps one sample; the end clamps keep two. Writes nothing for n < 2, gapWidth below -1
// or chordWidth below 0.
QAL_API int QAL_Kruemmung2(const float* x, const float* y, float* result, int n, int gapWidth, int chordWidth);

// ---- Curve analysis: extremum search ---------------------------------------------------
// Judges the run x, y[0..n-1] for one maximum or minimum: parabola through the means of
// its three thirds, vertex by Newton steps, accepted when the slopes at the outer means
// lie on either side of 1e-6, all three means have one sign (a run whose curve crosses
// zero, or a mean of exactly 0, is never accepted: lift the baseline), and the middle
// mean stands out from an outer one by minHeightPercent of |middle mean| (not of the
// peak's height). The vertex is the parabola's, not a refinement of the extreme sample:
// it moves with the run's width and position. Writes 0.0 to *yOut and *xOut
// first; on acceptance the vertex (useVertex != 0) or the first extreme sample, and the
// kind to *kindOut. No pointer is tested. QAL_ERR_PARAMETER (n not a positive multiple
// of 3), QAL_ERR_ZERO_DIVISION (two mean abscissae closer than 1e-25), QAL_ERR_NOT_FOUND
// (vertex left in the outputs if one was found). QAL_OK without writing *kindOut when
// the parabola is flat (|curvature| <= 1e-6): preset *kindOut to tell.
QAL_API int QAL_GetExtremum(const double* x, const double* y, int n, double* xOut, double* yOut,
                            int* kindOut, int useVertex, float minHeightPercent);

// ---- Curve analysis: extremum drivers --------------------------------------------------
// The drivers slide a window of w samples (a multiple of 3) one sample at a time over
// start = 0 .. n-w-1 and call QAL_GetExtremum on each; the last sample enters no window.
// `window` > n asks for n/2; a negative `window` counts as its magnitude; w = 3 at least.
// `kind` is QAL_EXTREMUM_MAX or QAL_EXTREMUM_MIN. None allocates.
// QAL_GetNextExtremum, QAL_GetRangeExtremum, QAL_GetAutoRangeExtremum: QAL_ERR_MEMORY for a
// null pointer or n < 3 (nothing written); then *xOut = x[0] and *yOut = -1e25 for a
// maximum, +1e25 otherwise, which stay when nothing is found (QAL_ERR_NOT_FOUND).

// First window from the left that holds an extremum of `kind`. QAL_ERR_OUT_OF_RANGE when
// w > n.
QAL_API int QAL_GetNextExtremum(const double* x, const double* y, int n, double* xOut, double* yOut,
                                int window, int kind, int useVertex, float minHeightPercent);
// Highest maximum or lowest minimum of `kind` over all windows of size w; of equal ones
// the earliest.
QAL_API int QAL_GetRangeExtremum(const double* x, const double* y, int n, double* xOut, double* yOut,
                                 int window, int kind, int useVertex, float minHeightPercent);
// As QAL_GetRangeExtremum, doubling w after each pass that finds nothing while w < n/3.
QAL_API int QAL_GetAutoRangeExtremum(const double* x, const double* y, int n, double* xOut,
                                     double* yOut, int window, int kind, int useVertex,
                                     float minHeightPercent);
// Window sizes from n alone (coarse up to 42, fine up to 21): a coarse pass over the curve,
// then a fine pass inside the best coarse window. Takes any accepted extremum whose
// ordinate improves, whatever its kind. Always QAL_OK once the arguments pass; outputs
// are untouched when nothing was accepted. QAL_ERR_MEMORY (null pointer or n < 1),
// QAL_ERR_PARAMETER (n < 12).
QAL_API int QAL_GetAutoExtremum(const double* x, const double* y, int n, double* xOut, double* yOut,
                                int kind, int useVertex, float minHeightPercent);

// ---- Curve analysis: threshold and end-point searches ----------------------------------
// All five: QAL_ERR_PARAMETER for a null pointer or n < 1 (nothing written); then
// *yOut = y[0] and *xOut = x[0], which stay with QAL_ERR_TOO_FEW_POINTS when n < 2.
// `direction` 2 scans from the last sample back, any other value forward; `resultMode` 2
// reports the point on the line through the hit pair, any other value a sample.

// Where the curve first reaches the level L. L is float arithmetic on the samples
// narrowed to float, with near/far the ends where the scan starts/finishes (both 0 unless
// direction is 1 or 2): kind 2 far * 0.01f * percent, 3 threshold + near, 4
// rise * 0.01f * percent + near, with the rise |y[n-1] - y[0]| taken in double and
// narrowed once (whatever the direction), 5 near * 0.01f * percent, other: threshold.
// The percentages are of end samples, never of the curve's maximum: for a share of the
// maximum, compute that level and pass it as an absolute threshold.
// A pair hits when 0 >= (a - L)(b - L). Forward skips the last pair; backward examines
// all and reports the last sample for a hit in the last pair. A hit gives QAL_OK and the
// sample of the pair that the scan meets first (the upper one when scanning backward), or
// (crossing x, L). QAL_ERR_NOT_FOUND otherwise, with the
// far-end sample when the curve ends short of L, on it, or level with its start, else
// the start sample.
QAL_API int QAL_FindX_at_YThreshold(const double* x, const double* y, int n, int thresholdKind, int direction,
                                    int resultMode, float threshold, float percent, double* xOut, double* yOut);
// The curve at |xDiff| (as float) from the first sample, or back from the last with
// direction 2: forward the first sample at or above the target, backward the first at or
// below it; with resultMode 2 and a hit i != 0, (target, the line through samples i-1 and
// i at the target) instead. QAL_ERR_OUT_OF_RANGE when no sample reaches the target:
// *xOut the target, *yOut the y at the far end of the scan. `reserved` unread.
QAL_API int QAL_GetY_at_XDiff(const double* x, const double* y, int n, int reserved, int direction, int resultMode,
                              float xDiff, double* xOut, double* yOut);
// The last sample. The reserved arguments are not read.
QAL_API int QAL_Find_LastPoint(const double* x, const double* y, int n, int reserved1, int reserved2, double* xOut,
                               double* yOut);
// Highest sample of the whole curve; of equal ones the last. QAL_ERR_NOT_FOUND with the
// first sample when y[0] is NaN; later NaNs are passed over.
QAL_API int QAL_Calc_AbsMaximum(const double* x, const double* y, int n, double* xOut, double* yOut);
// Lowest sample of the whole curve; as QAL_Calc_AbsMaximum otherwise.
QAL_API int QAL_Calc_AbsMinimum(const double* x, const double* y, int n, double* xOut, double* yOut);

// ---- Curve analysis: boundary curves ---------------------------------------------------
// upper and lower around base, in float, each by its own mode: 1 value * spread[i] added
// to (upper) or taken from (lower) base[i]; 2 base[i] times (value / 100 + 1) or
// (1 - value / 100); 3 value added to or taken from base[i]. spread may be null unless a
// mode 1 needs it. QAL_ERR_PARAMETER (null base, lower or upper, or n < 1: nothing
// written). A refused mode (not 1, 2 or 3, or 1 with a null spread) gives
// QAL_ERR_PARAMETER and leaves its array untouched, but the other array is still
// written: the status does not tell which. The upper pass runs first, so an upper that
// is also base or spread feeds the lower pass.
QAL_API int QAL_CalcBoundaries(const float* base, const float* spread, float* lower, float* upper, int n,
                               int upperMode, float upperValue, int lowerMode, float lowerValue);

// ---- Curve analysis: integration and root finding --------------------------------------
// The caller's function gets one double and gives one; no context pointer passes.

// One stage of the extended trapezoidal rule on [lowerLimit, upperLimit]: call it with
// stage 1, 2, 3, ... and the same function and limits until successive results agree.
// Stage k evaluates only its 2^(k-2) new midpoints and averages them into the estimate
// of stage k-1. That running estimate is ONE value for the whole module: QAL_Trapez is
// not safe to call from two threads at once, and two interleaved integrations spoil each
// other. 35.0 (QAL_ERR_PARAMETER as a value) for a null function or stage < 1, the
// estimate unchanged; from stage 33 on the last estimate, the function not called.
QAL_API double QAL_Trapez(double (*function)(double), double lowerLimit, double upperLimit, int stage);
// A root in [x1, x2] by bisection: starts at the end where f is negative and halves the
// step toward the other end on each of at most 40 passes; returns the last point with
// f <= 0 once accuracy > |step| or f is exactly 0 at a middle. 35.0 for a null function;
// 1e25 when f(x1) * f(x2) is not negative (an end exactly on a root too) or after 40
// passes: the step is then |x2 - x1| / 2^40, so a bracket wider than about 1.1e12 times
// accuracy fails unless a middle hits an exact zero. A NaN from f counts as positive.
QAL_API double QAL_RootBisection(double (*function)(double), double x1, double x2, double accuracy);

#endif  // QAL_QAL_H
