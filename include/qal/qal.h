// QalLib: numerical routines for sampled curves.
//
// Every function here is a plain call on the caller's arrays. None throws, none keeps a
// pointer to an argument after it returns, and none allocates unless its line says so.
// Counts, indices and options are signed 32-bit ints; a negative count is too small.
// Results are exact to the bit: each routine fixes the precision and the order of its
// operations, and the sense of each comparison (which decides equality and NaN).
#ifndef QAL_QAL_H
#define QAL_QAL_H

#include "qal/qal_export.h"

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
// logarithms (a flat step is no descent); mode 2: QAL_ERR_LOG_SEQUENCE unless each
// logarithm rises above the one before, the first above -30; other modes: no test.
// n == 0: QAL_OK, nothing allocated or looked at. QAL_ERR_MEMORY for a null source or
// target, or when the array cannot be allocated (*target is then null; a negative n
// always fails so). On QAL_OK and on QAL_ERR_LOG_SEQUENCE the array belongs to the
// caller, who releases it with QAL_ReleaseArray; after QAL_ERR_LOG_SEQUENCE it holds the
// logarithms up to the offending one and nothing defined behind it.
QAL_API int QAL_CalcLog(float** target, const float* source, int n, short mode);
// Releases an array that QAL_CalcLog handed out; null is accepted.
QAL_API void QAL_ReleaseArray(float* array);

// ---- Curve analysis: extremum search ---------------------------------------------------
// Judges the run x, y[0..n-1] for one maximum or minimum: parabola through the means of
// its three thirds, vertex by Newton steps, accepted by the sign test and by the middle
// mean standing out by minHeightPercent of |middle mean|. Writes 0.0 to *yOut and *xOut
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

#endif  // QAL_QAL_H
