// Whole-curve helpers on top of the flat functions of qal.h: every extremum and every
// level crossing of a curve in one call, each hit with its indices besides its values.
//
// A hit here is exactly what the flat routines report at its position, to the bit: the
// same window or pair, the same acceptance, the same values. Unlike the flat functions
// these allocate their result: they may throw std::bad_alloc, and nothing else. Bad
// arguments (a null array, too few samples) give an empty list, never a status. Like
// the flat functions they keep no pointer to the curve and may run on many threads at once.
#ifndef QAL_QAL_CURVES_H
#define QAL_QAL_CURVES_H

#include <new>  // std::bad_alloc, which both helpers may throw
#include <vector>

#include "qal/qal.h"  // the flat functions and the extremum kinds named below

namespace qal {

// One extremum, from the window of samples start .. start + w - 1 (w as below).
struct Extremum {
    int start;       // first sample of the window that found it
    int index;       // the extreme sample: x[index], y[index]
    int kind;        // QAL_EXTREMUM_MAX or QAL_EXTREMUM_MIN
    double x, y;     // that sample, as QAL_GetExtremum reports it with useVertex 0
    double vertexX;  // vertex of the window's parabola through the means of its thirds,
    double vertexY;  // as QAL_GetExtremum reports it with useVertex nonzero
};

// Every extremum of both kinds along x, y[0..n-1]. The window slides as in the drivers
// (QAL_GetRangeExtremum and its kin): w from `window` (n/2 when window > n, else |window|;
// down to a multiple of 3, at least 3), start = 0 .. n-w-1, so the last sample enters no
// window. A window is a hit when QAL_GetExtremum accepts a maximum or a minimum there and
// both its extreme sample and its vertex beat the drivers' sentinel (above -1e25 for a
// maximum, below +1e25 for a minimum): just where QAL_GetNextExtremum started at `start`
// with this w and kind stops, with useVertex 0 and with useVertex 1. A flat window
// (QAL_OK without a kind) is no hit.
// Each extreme sample is reported once per kind: the windows that find the same sample
// collapse into the first of them, whose start and vertex are kept. Hits come in the
// order of their windows. Of equal samples in one window the first is the extreme one; a
// window holding a NaN finds nothing.
// Empty for a null x or y, or n < 3 (where the drivers give QAL_ERR_MEMORY), and when
// no window fits.
QAL_API std::vector<Extremum> findExtrema(const double* x, const double* y, int n, int window,
                                          float minHeightPercent);

// One pair of neighbouring samples index, index + 1 that reaches the level.
struct LevelCrossing {
    int index;       // first sample of the pair
    double x, y;     // that sample, x[index], y[index] (resultMode 0)
    double crossX;   // where the line through the pair meets the level, and the level
    double crossY;   // itself widened to double (resultMode 2)
};

// Every pair that QAL_FindX_at_YThreshold with the absolute level `level` (thresholdKind
// 0), scanning forward, reports when started at its first sample: the pairs
// (i, i+1), i = 0 .. n-3, with 0 >= (y[i+1] - L)(y[i] - L), L = level as double. So the
// last pair is never examined, a sample exactly on the level makes both its pairs hits,
// and a pair holding a NaN is none. crossX comes from QAL_CalcLinY on the pair: 0.0 when
// the line through it is flat (|slope| not above 1e-25) or its abscissae are equal.
// In ascending order of index. Empty for a null x or y, or n < 3.
QAL_API std::vector<LevelCrossing> findLevelCrossings(const double* x, const double* y, int n, float level);

}  // namespace qal

#endif  // QAL_QAL_CURVES_H
