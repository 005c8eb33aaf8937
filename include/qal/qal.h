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
// caller, who releases it with QAL_ReleaseArray (it comes from new[], so delete[] does
// too); after QAL_ERR_LOG_SEQUENCE it holds the logarithms up to the offending one and
// nothing defined behind it.
QAL_API int QAL_CalcLog(float** target, const float* source, int n, short mode);
// Releases an array that QAL_CalcLog handed out; null is accepted.
QAL_API void QAL_ReleaseArray(float* array);

// ---- Guarded arithmetic: ordered search and sort ---------------------------------------
// Position of `value` in the monotonic x[0..n-1] (ascending exactly when x[n-1] > x[0];
// equal ends count as descending) by a bisection that moves both bounds past the middle,
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

// ---- Lines: line fits and evaluation ---------------------------------------------------
// A line is (intercept, slope): y = intercept + slope * x. Nothing here allocates.
// Two-pass least-squares fit about the mean abscissa, in double. No tests at all: n = 1
// or equal abscissae with an exact mean (always so for two points) give NaN in both
// outputs, n <= 0 too. Writes intercept, then slope.
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
// allocation, about log2(n) comparisons. QAL_ERR_PARAMETER (null pointer, n < 2 or
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
// when x[0] == x[n-1]. A NaN xValue passes the location. Options 5, 6 and 14 give y[n-1]
// where the location ends on n - 1. Logarithms go through QAL_log10 (-30 for values not
// above 1e-25) and the result of options 12 and 14 through QAL_pow10. Equal abscissae
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
// strict, a NaN counts as inside. QAL_ERR_PARAMETER for a null values, upper or
// outsideCount or n < 1 (nothing written).
QAL_API int QAL_CheckInOutArrays(const float* values, const float* lower, const float* upper, int n,
                                 int* outsideCount);

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

// ---- Curve analysis: threshold and end-point searches ----------------------------------
// All five: QAL_ERR_PARAMETER for a null pointer or n < 1 (nothing written); then
// *yOut = y[0] and *xOut = x[0], which stay with QAL_ERR_TOO_FEW_POINTS when n < 2.
// `direction` 2 scans from the last sample back, any other value forward; `resultMode` 2
// reports the point on the line through the hit pair, any other value a sample.

// Where the curve first reaches the level L. L is float arithmetic on the samples
// narrowed to float, with near/far the ends where the scan starts/finishes (both 0 unless
// direction is 1 or 2): kind 2 far * 0.01f * percent, 3 threshold + near, 4
// |y[n-1] - y[0]| * 0.01f * percent + near, 5 near * 0.01f * percent, other: threshold.
// A pair hits when 0 >= (a - L)(b - L). Forward skips the last pair; backward examines
// all and reports the last sample for a hit in the last pair. A hit gives QAL_OK and the
// first sample of the pair met, or (crossing x, L). QAL_ERR_NOT_FOUND otherwise, with the
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

#endif  // QAL_QAL_H
