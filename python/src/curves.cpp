// Extremum search and drivers, threshold and end-point searches, boundary curves,
// integration and root finding.
#include <cmath>
#include <limits>

#include <vector>

#include "binding.h"
#include "qal/qal_curves.h"

namespace qalpy {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Curve = CurveOf<double>;

Curve curve(py::handle x, py::handle y) {
    return curveOf<double>(x, y);
}

// The drivers and searches leave a point; QAL_ERR_NOT_FOUND gives None when asked to.
template <class F>
py::object pointSearch(const char* function, py::handle x, py::handle y, int minimum, bool noneIfNotFound,
                       F call, bool (*carries)(int status)) {
    Curve c = curve(x, y);
    if (minimum > 0) atLeast("x and y", c.x.n, minimum);
    double xOut = kNaN;
    double yOut = kNaN;
    int status;
    {
        py::gil_scoped_release nogil;
        status = call(c, &xOut, &yOut);
    }
    if (status == QAL_OK) return types().point(xOut, yOut);
    if (status == QAL_ERR_NOT_FOUND && noneIfNotFound) return py::none();
    raiseStatus(status, function, carries(status) ? types().point(xOut, yOut) : py::none());
}

// The drivers preset x[0] and the sentinel before any failure they report.
bool driverCarries(int status) {
    return status == QAL_ERR_NOT_FOUND || status == QAL_ERR_OUT_OF_RANGE;
}

// The searches preset the first sample once the arrays are not empty.
bool searchCarries(int status) {
    return status != QAL_ERR_PARAMETER;
}

const char* const kDriverFailures = R"(

ValueError for fewer than 3 points (QAL_ERR_MEMORY in C++). Raises NotFoundError when no
window holds an extremum of kind, with Point(x[0], -1e25 for a maximum, else 1e25) in
.outputs; none_if_not_found=True returns None instead.)";

using Driver = int (*)(const double*, const double*, int, double*, double*, int, int, int, float);

// The three drivers that slide one window size differ only in their routine.
void defDriver(py::module_& m, const char* name, Driver routine, const char* doc) {
    m.def(
        name,
        [name, routine](py::object x, py::object y, int window, int kind, int useVertex, float minHeightPercent,
                        bool noneIfNotFound) {
            return pointSearch(
                name, x, y, 3, noneIfNotFound,
                [&](const Curve& c, double* xOut, double* yOut) {
                    return routine(c.x.data, c.y.data, c.x.n, xOut, yOut, window, kind, useVertex, minHeightPercent);
                },
                driverCarries);
        },
        "x"_a, "y"_a, "window"_a, "kind"_a, "use_vertex"_a = true, "min_height_percent"_a = 0.0f,
        "none_if_not_found"_a = false, (std::string(doc) + kDriverFailures).c_str());
}

using CurveSearch = int (*)(const double*, const double*, int, double*, double*);

int lastPoint(const double* x, const double* y, int n, double* xOut, double* yOut) {
    return QAL_Find_LastPoint(x, y, n, 0, 0, xOut, yOut);
}

// The searches over the whole curve without options.
void defCurveSearch(py::module_& m, const char* name, CurveSearch routine, const char* doc) {
    m.def(
        name,
        [name, routine](py::object x, py::object y) {
            return pointSearch(
                name, x, y, 0, false,
                [&](const Curve& c, double* xOut, double* yOut) { return routine(c.x.data, c.y.data, c.x.n, xOut, yOut); },
                searchCarries);
        },
        "x"_a, "y"_a, doc);
}

// One field of every hit, as a new array.
template <class T, class Hit, class Field>
py::array_t<T> column(const std::vector<Hit>& hits, Field field) {
    py::array_t<T> out(static_cast<py::ssize_t>(hits.size()));
    T* data = out.mutable_data();
    for (const Hit& hit : hits) *data++ = field(hit);
    return out;
}

}  // namespace

void registerCurves(py::module_& m) {
    // ---- Extremum search
    m.def(
        "get_extremum",
        [](py::object x, py::object y, int useVertex, float minHeightPercent, bool noneIfNotFound) -> py::object {
            Curve c = curve(x, y);
            double xOut = kNaN;
            double yOut = kNaN;
            int kind = 0;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_GetExtremum(c.x.data, c.y.data, c.x.n, &xOut, &yOut, &kind, useVertex, minHeightPercent);
            }
            // kind stays 0 for the flat outcome and on every failure.
            py::object result = types().extremum(xOut, yOut, kind == 0 ? py::object(py::none()) : py::int_(kind));
            if (status == QAL_OK) return result;
            if (status == QAL_ERR_NOT_FOUND && noneIfNotFound) return py::none();
            raiseStatus(status, "get_extremum", status == QAL_ERR_NOT_FOUND ? result : py::none());
        },
        "x"_a, "y"_a, "use_vertex"_a = true, "min_height_percent"_a = 0.0f, "none_if_not_found"_a = false,
        R"(QAL_GetExtremum: Extremum(x, y, kind) of the whole run x, y (float64, a positive multiple of
3 samples): the parabola through the means of its three thirds, its vertex by Newton steps,
accepted when the slopes at the outer means lie on either side of 1e-6, the means share one
sign, the middle mean lies beyond both outer ones and stands out from one of them by
min_height_percent (rounded to float32) of its magnitude. The result is the vertex, or with
use_vertex=False the first extreme sample; kind is EXTREMUM_MAX or EXTREMUM_MIN. A flat
parabola (|curvature| <= 1e-6) succeeds with Extremum(0.0, 0.0, None).

Raises ParameterError when the length is not a positive multiple of 3; ZeroDenominatorError
when two mean abscissae are closer than 1e-25; NotFoundError otherwise, with the vertex (or
0.0, 0.0 when none was found) in .outputs; none_if_not_found=True returns None instead.)");

    // ---- Extremum drivers
    defDriver(m, "get_next_extremum", QAL_GetNextExtremum,
              R"(QAL_GetNextExtremum: Point(x, y) of the first window from the left that holds an extremum of
kind (ExtremumKind), as get_extremum judges it. The window of w samples slides one sample at a
time over start = 0 .. n - w - 1 (the last sample enters no window); w is window rounded down
to a multiple of 3, at least 3, n // 2 for a window above n, and a negative window counts as
its magnitude.

Raises OutOfRangeError when w exceeds n (a large negative window), with the preset point in
.outputs.)");
    defDriver(m, "get_range_extremum", QAL_GetRangeExtremum,
              R"(QAL_GetRangeExtremum: Point(x, y) of the highest maximum or lowest minimum of kind over all
windows of one size (as get_next_extremum slides them); of equal ones the earliest.)");
    defDriver(m, "get_auto_range_extremum", QAL_GetAutoRangeExtremum,
              R"(QAL_GetAutoRangeExtremum: as get_range_extremum, doubling the window after each pass that finds
nothing while it is below n // 3; the first pass that finds something gives the result.)");
    m.def(
        "get_auto_extremum",
        [](py::object x, py::object y, int kind, int useVertex, float minHeightPercent) -> py::object {
            Curve c = curve(x, y);
            atLeast("x and y", c.x.n, 1);
            // Untouched outputs tell that nothing was accepted: an accepted ordinate improves
            // on a sentinel, which NaN never does.
            double xOut = kNaN;
            double yOut = kNaN;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_GetAutoExtremum(c.x.data, c.y.data, c.x.n, &xOut, &yOut, kind, useVertex,
                                             minHeightPercent);
            }
            if (status != QAL_OK) raiseStatus(status, "get_auto_extremum");
            if (std::isnan(yOut)) return py::none();
            return types().point(xOut, yOut);
        },
        "x"_a, "y"_a, "kind"_a, "use_vertex"_a = true, "min_height_percent"_a = 0.0f,
        R"(QAL_GetAutoExtremum: Point(x, y) from window sizes chosen by n alone (coarse up to 42, fine up
to 21 samples): a coarse pass over the curve, then a fine pass inside the best coarse window.
Takes any accepted extremum whose ordinate improves on the best so far, whatever its kind.
Returns None when no window was accepted (the C++ call succeeds with its outputs untouched).

ValueError for empty arrays (QAL_ERR_MEMORY in C++); raises ParameterError for fewer than 12
points.)");

    // ---- Threshold and end-point searches
    m.def(
        "find_x_at_y_threshold",
        [](py::object x, py::object y, float threshold, int thresholdKind, int direction, int resultMode,
           float percent, bool noneIfNotFound) {
            return pointSearch(
                "find_x_at_y_threshold", x, y, 0, noneIfNotFound,
                [&](const Curve& c, double* xOut, double* yOut) {
                    return QAL_FindX_at_YThreshold(c.x.data, c.y.data, c.x.n, thresholdKind, direction, resultMode,
                                                   threshold, percent, xOut, yOut);
                },
                searchCarries);
        },
        "x"_a, "y"_a, "threshold"_a = 0.0f, "threshold_kind"_a = 1, "direction"_a = 1, "result_mode"_a = 2,
        "percent"_a = 0.0f, "none_if_not_found"_a = false,
        R"(QAL_FindX_at_YThreshold: Point(x, y) where the float64 curve first reaches the level L.

L is float32 arithmetic on the samples narrowed to float32 (threshold and percent are float32
in C++), with near/far the ends where the scan starts/finishes (both 0 unless direction is 1
or 2): threshold_kind 2 far * 0.01f * percent, 3 threshold + near, 4 rise * 0.01f * percent +
near, the rise |y[-1] - y[0]| taken in float64 and rounded to float32 once (whatever the
direction), 5 near * 0.01f * percent, any other (the default 1) threshold itself.
direction 2 scans from the last sample back, any other value (default 1) forward. A pair of
samples hits when 0 >= (a - L)(b - L); forward skips the last pair, backward examines all and
reports the last sample for a hit in the last pair. result_mode 2 (the default) reports the
crossing (x on the line through the pair, L), any other value the pair's first sample met.

Raises ParameterError for empty arrays; TooFewPointsError for one point, with it in .outputs;
NotFoundError when no pair hits, with the far-end sample (the curve ends short of L, on it, or
level with its start) or else the start sample in .outputs; none_if_not_found=True returns
None instead.)");
    m.def(
        "get_y_at_x_diff",
        [](py::object x, py::object y, float xDiff, int direction, int resultMode) {
            return pointSearch(
                "get_y_at_x_diff", x, y, 0, false,
                [&](const Curve& c, double* xOut, double* yOut) {
                    return QAL_GetY_at_XDiff(c.x.data, c.y.data, c.x.n, 0, direction, resultMode, xDiff, xOut, yOut);
                },
                searchCarries);
        },
        "x"_a, "y"_a, "x_diff"_a, "direction"_a = 1, "result_mode"_a = 2,
        R"(QAL_GetY_at_XDiff: Point(x, y) of the float64 curve (x ascending) at |x_diff| (rounded to
float32) from the first sample, or back from the last with direction 2: forward the first
sample at or above the target, backward the first at or below it; with result_mode 2 (the
default) and a hit past the first sample scanned, (target, the line through that sample and
the one before it at the target) instead.

Raises ParameterError for empty arrays; TooFewPointsError for one point, with it in .outputs;
OutOfRangeError when no sample reaches the target, with (target, y at the far end of the
scan) in .outputs.)");
    defCurveSearch(m, "find_last_point", lastPoint,
                   R"(QAL_Find_LastPoint: Point(x, y) of the last sample of the float64 curve.

Raises ParameterError for empty arrays; TooFewPointsError for one point, with it in
.outputs.)");
    defCurveSearch(m, "calc_abs_maximum", QAL_Calc_AbsMaximum,
                   R"(QAL_Calc_AbsMaximum: Point(x, y) of the highest sample of the whole float64 curve; of equal
ones the last. Later NaNs are passed over.

Raises ParameterError for empty arrays; TooFewPointsError for one point and NotFoundError
when y[0] is NaN, each with the first sample in .outputs.)");
    defCurveSearch(m, "calc_abs_minimum", QAL_Calc_AbsMinimum,
                   R"(QAL_Calc_AbsMinimum: Point(x, y) of the lowest sample of the whole float64 curve; of equal
ones the last. Later NaNs are passed over.

Raises ParameterError for empty arrays; TooFewPointsError for one point and NotFoundError
when y[0] is NaN, each with the first sample in .outputs.)");

    // ---- Whole-curve helpers
    m.def(
        "find_extrema",
        [](py::object x, py::object y, int window, float minHeightPercent) {
            Curve c = curve(x, y);
            std::vector<qal::Extremum> hits;
            {
                py::gil_scoped_release nogil;
                hits = qal::findExtrema(c.x.data, c.y.data, c.x.n, window, minHeightPercent);
            }
            using E = qal::Extremum;
            return types().extrema(column<int>(hits, [](const E& e) { return e.start; }),
                                   column<int>(hits, [](const E& e) { return e.index; }),
                                   column<int>(hits, [](const E& e) { return e.kind; }),
                                   column<double>(hits, [](const E& e) { return e.x; }),
                                   column<double>(hits, [](const E& e) { return e.y; }),
                                   column<double>(hits, [](const E& e) { return e.vertexX; }),
                                   column<double>(hits, [](const E& e) { return e.vertexY; }));
        },
        "x"_a, "y"_a, "window"_a, "min_height_percent"_a = 0.0f,
        R"(qal::findExtrema: Extrema(start, index, kind, x, y, vertex_x, vertex_y), every maximum and
minimum of the float64 curve, one array element per hit, in the order of their windows.

The window slides as in get_range_extremum (w from window, start = 0 .. n - w - 1). A window
is a hit where get_extremum accepts a maximum or a minimum (min_height_percent, rounded to
float32) and both its extreme sample and its vertex beat the drivers' sentinel: just where
get_next_extremum started at that window stops, with use_vertex False (x, y: the extreme
sample x[index], y[index]) and True (vertex_x, vertex_y). Each extreme sample is reported
once per kind, by the first window that finds it. Flat windows and windows holding a NaN are
no hits. Empty for fewer than 3 points or when no window fits; never raises a QalError
(MemoryError when the list cannot be allocated).

Select the peaks with result.kind == EXTREMUM_MAX.)");
    m.def(
        "find_level_crossings",
        [](py::object x, py::object y, float level) {
            Curve c = curve(x, y);
            std::vector<qal::LevelCrossing> hits;
            {
                py::gil_scoped_release nogil;
                hits = qal::findLevelCrossings(c.x.data, c.y.data, c.x.n, level);
            }
            using L = qal::LevelCrossing;
            return types().crossings(column<int>(hits, [](const L& h) { return h.index; }),
                                     column<double>(hits, [](const L& h) { return h.x; }),
                                     column<double>(hits, [](const L& h) { return h.y; }),
                                     column<double>(hits, [](const L& h) { return h.crossX; }),
                                     column<double>(hits, [](const L& h) { return h.crossY; }));
        },
        "x"_a, "y"_a, "level"_a,
        R"(qal::findLevelCrossings: LevelCrossings(index, x, y, cross_x, cross_y), every pair of
neighbouring samples index, index + 1 that find_x_at_y_threshold with the absolute level
(rounded to float32), scanning forward, reports when started at its first sample: the pairs
i = 0 .. n - 3 with 0 >= (y[i+1] - L)(y[i] - L). The last pair is never examined, a sample
exactly on the level makes both its pairs hits, a pair holding a NaN is none. x, y are the
pair's first sample, cross_x, cross_y the crossing on the line through the pair and the
level (cross_x 0.0 for a flat pair). In ascending order of index; empty for fewer than 3
points. Never raises a QalError (MemoryError when the list cannot be allocated).)");

    // ---- Boundary curves
    m.def(
        "calc_boundaries",
        [](py::object base, int upperMode, float upperValue, int lowerMode, float lowerValue, py::object spread) {
            Vec<float> b = vec<float>(base, "base");
            Vec<float> s = optionalVec<float>(spread, "spread");
            if (s.data) sameLength("base", b.n, "spread", s.n);
            const float nan = std::numeric_limits<float>::quiet_NaN();
            py::array_t<float> lower = newArray<float>(b.n, nan);
            py::array_t<float> upper = newArray<float>(b.n, nan);
            float* lowerData = lower.mutable_data();
            float* upperData = upper.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_CalcBoundaries(b.data, s.data, lowerData, upperData, b.n, upperMode, upperValue,
                                            lowerMode, lowerValue);
            }
            py::object result = types().boundaries(lower, upper);
            // A refused mode leaves its own array NaN, but the other one is written.
            if (status != QAL_OK) raiseStatus(status, "calc_boundaries", b.n > 0 ? result : py::none());
            return result;
        },
        "base"_a, "upper_mode"_a, "upper_value"_a, "lower_mode"_a, "lower_value"_a, "spread"_a = py::none(),
        R"(QAL_CalcBoundaries: Boundaries(lower, upper), new float32 arrays around the float32 base, in
float32, each by its own mode: 1 value * spread[i] added to (upper) or taken from (lower)
base[i]; 2 base[i] * (value / 100 + 1) or (1 - value / 100); 3 value added or taken. spread
(float32, as long as base) may be None unless a mode 1 needs it.

Raises ParameterError for an empty base, and for a refused mode (not 1, 2 or 3, or 1 without
spread): its array is then all NaN, but the other one is computed, and both are in .outputs.)");

    // ---- Integration and root finding
    m.def(
        "trapez",
        [](py::object function, double lowerLimit, double upperLimit, int stage) {
            CallableScope scope(std::move(function), "function");
            const double result = QAL_Trapez(&CallableScope::trampoline, lowerLimit, upperLimit, stage);
            scope.rethrowIfFailed();
            return result;
        },
        "function"_a, "lower_limit"_a, "upper_limit"_a, "stage"_a,
        R"(QAL_Trapez: stage `stage` of the extended trapezoidal rule for the Python callable function
on [lower_limit, upper_limit]: call with stage 1, 2, 3, ... and the same function and limits
until successive results agree. Stage k adds 2**(k-2) new midpoints to the estimate of stage
k-1, which the library keeps as ONE module-wide value: two interleaved integrations spoil each
other. 35.0 for a stage below 1 (the estimate unchanged); from stage 33 on the last estimate,
function not called. An exception raised by function propagates (the estimate is then NaN).
Never raises a QalError.)");
    m.def(
        "root_bisection",
        [](py::object function, double x1, double x2, double accuracy) {
            CallableScope scope(std::move(function), "function");
            const double result = QAL_RootBisection(&CallableScope::trampoline, x1, x2, accuracy);
            scope.rethrowIfFailed();
            return result;
        },
        "function"_a, "x1"_a, "x2"_a, "accuracy"_a,
        R"(QAL_RootBisection: a root of the Python callable function in [x1, x2] by bisection, starting
at the end where it is negative, at most 40 halvings; the last point with f <= 0 once accuracy
exceeds the step or f is exactly 0 at a middle. 1e25 when f(x1) * f(x2) is not negative (an
end exactly on a root too) or after 40 passes; a NaN from function counts as positive. An
exception raised by function propagates. Never raises a QalError.)");
}

}  // namespace qalpy
