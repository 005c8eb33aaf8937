// The many-curves calls: a 2-D array of curves (rows) in, one result row and one status
// per row out, the rows worked in C++ with the GIL released. Registered last by the module.
//
// Each *_batch function runs its flat routine once per row, exactly as the 1-D function
// runs it on that row: same arguments, same preset outputs, so a row's result is the 1-D
// result to the bit. A status other than QAL_OK goes into the status array instead of
// raising; the row then holds what the routine left there. Everything that would make the
// 1-D call raise before the C++ call (dtype, shape, a too short curve) raises here too,
// for the whole batch, before any element is read.
#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "binding.h"

namespace qalpy {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The two result tuples, made once when the module is loaded and kept for the life of the
// interpreter (as the types of qallib._types).
py::handle g_batchArrays;  // (values, status)
py::handle g_batchPoints;  // (x, y, status)

std::string shapeText(const py::array& array) {
    std::string text = "(";
    for (py::ssize_t axis = 0; axis < array.ndim(); ++axis) {
        text += (axis > 0 ? ", " : "") + std::to_string(array.shape(axis));
    }
    return text + (array.ndim() == 1 ? ",)" : ")");
}

// A C-contiguous (curves x samples) array of T. Row offsets are ssize_t: rows * cols may
// exceed an int even where each row's count fits the library's int.
template <class T>
struct Curves {
    py::array array;
    const T* data;
    py::ssize_t rows;
    int cols;
    const T* row(py::ssize_t r) const { return data + r * cols; }
};

template <class T>
Curves<T> curves(py::handle object, const char* name) {
    py::array array = toArray(object, name);
    if (!holds<T>(array)) raiseDtype(name, dtypeName<T>(), array);
    if (array.ndim() != 2) {
        throw py::value_error(std::string(name) + " must be two-dimensional (curves x samples), got " +
                              std::to_string(array.ndim()) + " dimensions");
    }
    if (array.shape(1) > INT_MAX) raiseLength(name, array.shape(1));
    array = contiguous(std::move(array));
    return {array, static_cast<const T*>(array.data()), array.shape(0), static_cast<int>(array.shape(1))};
}

// Abscissae shared by every curve (one-dimensional) or one row per curve (two-dimensional,
// rows x count). A shared axis has a step of 0, so that row(r) is the same for every r.
template <class T>
struct Axis {
    py::array array;
    const T* data;
    py::ssize_t step;
    int n;
    const T* row(py::ssize_t r) const { return data + r * step; }
};

// The curves are rows x curvesCols; `count` is the length each row of the axis must have
// (curvesCols for x; -1, any length, for the abscissae to resample at).
template <class T>
Axis<T> axis(py::handle object, const char* name, const char* curvesName, py::ssize_t rows, int curvesCols,
             int count) {
    py::array array = toArray(object, name);
    if (!holds<T>(array)) raiseDtype(name, dtypeName<T>(), array);
    const std::string shared = std::string(name) + " must be one-dimensional (shared by every curve) or two-dimensional "
                               "(one row per curve)";
    if (array.ndim() != 1 && array.ndim() != 2) {
        throw py::value_error(shared + ", got " + std::to_string(array.ndim()) + " dimensions");
    }
    const py::ssize_t length = array.shape(array.ndim() - 1);
    if (length > INT_MAX) raiseLength(name, length);
    if ((array.ndim() == 2 && array.shape(0) != rows) || (count >= 0 && length != count)) {
        throw py::value_error(std::string(name) + " of shape " + shapeText(array) + " does not fit " + curvesName +
                              " of shape (" + std::to_string(rows) + ", " + std::to_string(curvesCols) + ")");
    }
    array = contiguous(std::move(array));
    return {array, static_cast<const T*>(array.data()), array.ndim() == 2 ? length : 0, static_cast<int>(length)};
}

template <class T>
py::array_t<T> newRows(py::ssize_t rows, py::ssize_t cols, T fill) {
    py::array_t<T> array({rows, cols});
    std::fill_n(array.mutable_data(), rows * cols, fill);
    return array;
}

py::object arraysResult(py::object values, py::object status) {
    return g_batchArrays(std::move(values), std::move(status));
}

// A search that leaves one point per curve: x (shared or per row) and y float64, at least
// `minimum` samples (the 1-D form's ValueError), outputs preset NaN as the 1-D form does.
// call(x, y, n, xOut, yOut) runs the routine on one row and gives its status.
template <class F>
py::object pointBatch(py::handle x, py::handle y, int minimum, F call) {
    Curves<double> c = curves<double>(y, "y");
    Axis<double> xs = axis<double>(x, "x", "y", c.rows, c.cols, c.cols);
    if (minimum > 0) atLeast("each curve (x and y)", c.cols, minimum);
    py::array_t<double> xOut = newArray<double>(c.rows, kNaN);
    py::array_t<double> yOut = newArray<double>(c.rows, kNaN);
    py::array_t<int> status(c.rows);
    double* xData = xOut.mutable_data();
    double* yData = yOut.mutable_data();
    int* statusData = status.mutable_data();
    {
        py::gil_scoped_release nogil;
        for (py::ssize_t r = 0; r < c.rows; ++r) {
            statusData[r] = call(xs.row(r), c.row(r), c.cols, xData + r, yData + r);
        }
    }
    return g_batchPoints(xOut, yOut, status);
}

const char* const kRowsNote = R"(

Arguments other than the arrays are shared by every curve. Everything that makes the 1-D
call raise before it starts (a dtype, a shape, too short a curve) raises here for the whole
batch, before any element is read; after that nothing raises: status[r] is the row's status
(0 for QAL_OK) and the row holds what the routine left there.)";

const char* const kDriverRows = R"(

Returns BatchPoints(x, y, status), float64 x and y, int32 status, one element per curve.
A row with status 0 equals the 1-D call on that row; a row with NOT_FOUND or OUT_OF_RANGE
holds the preset point (x[0], -1e25 for a maximum, else 1e25) that the 1-D call puts in
.outputs. ValueError for fewer than 3 samples per curve.)";

const char* const kSearchRows = R"(

Returns BatchPoints(x, y, status), float64 x and y, int32 status, one element per curve.
A row with status 0 equals the 1-D call on that row; a failing row holds what the 1-D call
puts in .outputs (the first sample, the far-end sample, ...), or NaN where it has none
(PARAMETER for curves of no samples).)";

template <class F>
void defDriver(py::module_& m, const char* name, const char* summary, F routine) {
    m.def(
        name,
        [routine](py::handle x, py::handle y, int window, int kind, int useVertex, float minHeightPercent) {
            return pointBatch(x, y, 3, [&](const double* xs, const double* ys, int n, double* xOut, double* yOut) {
                return routine(xs, ys, n, xOut, yOut, window, kind, useVertex, minHeightPercent);
            });
        },
        "x"_a, "y"_a, "window"_a, "kind"_a, "use_vertex"_a = true, "min_height_percent"_a = 0.0f,
        (std::string(summary) + kDriverRows + kRowsNote).c_str());
}

template <class F>
void defEndPoint(py::module_& m, const char* name, const char* summary, F routine) {
    m.def(
        name,
        [routine](py::handle x, py::handle y) {
            return pointBatch(x, y, 0, [&](const double* xs, const double* ys, int n, double* xOut, double* yOut) {
                return routine(xs, ys, n, xOut, yOut);
            });
        },
        "x"_a, "y"_a, (std::string(summary) + kSearchRows + kRowsNote).c_str());
}

void makeResultTypes(py::module_& m) {
    py::object namedtuple = py::module_::import("collections").attr("namedtuple");
    py::object arrays = namedtuple("BatchArrays", py::make_tuple("values", "status"), "module"_a = "qallib");
    arrays.attr("__doc__") =
        "The result of a batch call that gives a curve per curve: values (curves x samples, the dtype of the "
        "call) and status (int32, one per curve, 0 for QAL_OK).";
    py::object points = namedtuple("BatchPoints", py::make_tuple("x", "y", "status"), "module"_a = "qallib");
    points.attr("__doc__") =
        "The result of a batch call that gives a point per curve: x and y (float64) and status (int32, 0 for "
        "QAL_OK), one element per curve.";
    m.attr("BatchArrays") = arrays;
    m.attr("BatchPoints") = points;
    // Leaked on purpose, as the types of qallib._types: releasing them after the
    // interpreter has shut down would crash.
    g_batchArrays = arrays.release();
    g_batchPoints = points.release();
}

}  // namespace

void registerBatch(py::module_& m) {
    makeResultTypes(m);

    // ---- Filters
    m.def(
        "filter_array_batch",
        [](py::handle in, int kind, int width, int degree, int first, py::object lastArg) {
            return byDtype(in, "in_", [&](auto tag) {
                using T = decltype(tag);
                Curves<T> c = curves<T>(in, "in_");
                const int last = lastArg.is_none() ? c.cols - 1 : lastArg.cast<int>();
                py::array_t<T> out({c.rows, static_cast<py::ssize_t>(c.cols)});
                py::array_t<int> status(c.rows);
                T* target = out.mutable_data();
                int* statusData = status.mutable_data();
                {
                    py::gil_scoped_release nogil;
                    for (py::ssize_t r = 0; r < c.rows; ++r) {
                        const T* source = c.row(r);
                        T* row = target + r * c.cols;
                        // Samples outside first..last, and a failed row, keep their input values.
                        std::copy(source, source + c.cols, row);
                        if constexpr (std::is_same_v<T, float>) {
                            statusData[r] = QAL_FilterFloatArray(source, row, c.cols, first, last, kind, width, degree);
                        } else {
                            statusData[r] = QAL_FilterArray(source, row, c.cols, first, last, kind, width, degree);
                        }
                    }
                }
                return arraysResult(out, status);
            });
        },
        "in_"_a, "kind"_a, "width"_a, "degree"_a = 2, "first"_a = 0, "last"_a = py::none(),
        (std::string(R"(filter_array over each row of in_ (curves x samples, float32 or float64): BatchArrays(values,
status), values a new array of in_'s shape and dtype, values[r] = filter_array(in_[r], ...) for
status[r] == 0. The filter writes nothing when it fails, so a failing row holds in_[r]
unchanged. The statuses are those filter_array raises as exceptions; all rows share the
argument failures (too few samples, width, kind, degree), only an allocation failure can
strike one row alone.)") +
         kRowsNote)
            .c_str());

    // ---- Derivative arrays
    m.def(
        "deriv_array_batch",
        [](py::handle x, py::handle y, int method, int order, int span) {
            return byDtype(y, "y", [&](auto tag) {
                using T = decltype(tag);
                Curves<T> c = curves<T>(y, "y");
                Axis<T> xs = axis<T>(x, "x", "y", c.rows, c.cols, c.cols);
                // A method the routine does not know leaves deriv as it was: NaN here.
                py::array_t<T> deriv = newRows<T>(c.rows, c.cols, static_cast<T>(kNaN));
                py::array_t<int> status(c.rows);
                T* out = deriv.mutable_data();
                int* statusData = status.mutable_data();
                if constexpr (std::is_same_v<T, float>) {
                    // The float routine writes its widened copies back into x and y, so each
                    // row gets copies of its own, in two rows of scratch made once here;
                    // QAL_F2D refuses an empty curve as QAL_ERR_MEMORY.
                    atLeast("each curve (x and y)", c.cols, 1);
                    py::array_t<float> xScratch(c.cols);
                    py::array_t<float> yScratch(c.cols);
                    float* xWork = xScratch.mutable_data();
                    float* yWork = yScratch.mutable_data();
                    py::gil_scoped_release nogil;
                    for (py::ssize_t r = 0; r < c.rows; ++r) {
                        std::copy(xs.row(r), xs.row(r) + c.cols, xWork);
                        std::copy(c.row(r), c.row(r) + c.cols, yWork);
                        statusData[r] = QAL_DerivFloatArray(xWork, yWork, out + r * c.cols, c.cols, method, order, span);
                    }
                } else {
                    py::gil_scoped_release nogil;
                    for (py::ssize_t r = 0; r < c.rows; ++r) {
                        statusData[r] = QAL_DerivArray(xs.row(r), c.row(r), out + r * c.cols, c.cols, method, order, span);
                    }
                }
                return arraysResult(deriv, status);
            });
        },
        "x"_a, "y"_a, "method"_a, "order"_a = 1, "span"_a = 0,
        (std::string(R"(deriv_array over each row of y (curves x samples, float32 or float64; x of the same dtype,
shared (one row) or one row per curve): BatchArrays(values, status), values a new array of
y's shape and dtype, values[r] = deriv_array(x or x[r], y[r], ...) for status[r] == 0.
A failing row holds NaN, except that a float64 spline of order 1 whose last interval is
zero-wide (ZERO_DIVISION) keeps the elements it wrote, 1e15 at the last two; a float32 row
writes nothing back on any failure. ValueError for float32 curves of no samples.)") +
         kRowsNote)
            .c_str());

    // ---- Extremum drivers
    defDriver(m, "get_next_extremum_batch",
              R"(get_next_extremum over each row of y (curves x samples, float64; x shared (one row) or one
row per curve): the first window from the left that holds an extremum of kind.)",
              QAL_GetNextExtremum);
    defDriver(m, "get_range_extremum_batch",
              R"(get_range_extremum over each row of y (curves x samples, float64; x shared (one row) or one
row per curve): the highest maximum or lowest minimum of kind over all windows of one size.)",
              QAL_GetRangeExtremum);
    defDriver(m, "get_auto_range_extremum_batch",
              R"(get_auto_range_extremum over each row of y (curves x samples, float64; x shared (one row) or
one row per curve): as get_range_extremum_batch, doubling the window after each pass that
finds nothing.)",
              QAL_GetAutoRangeExtremum);
    m.def(
        "get_auto_extremum_batch",
        [](py::handle x, py::handle y, int kind, int useVertex, float minHeightPercent) {
            return pointBatch(x, y, 1, [&](const double* xs, const double* ys, int n, double* xOut, double* yOut) {
                return QAL_GetAutoExtremum(xs, ys, n, xOut, yOut, kind, useVertex, minHeightPercent);
            });
        },
        "x"_a, "y"_a, "kind"_a, "use_vertex"_a = true, "min_height_percent"_a = 0.0f,
        (std::string(R"(get_auto_extremum over each row of y (curves x samples, float64; x shared (one row) or one
row per curve): window sizes from the number of samples alone, a coarse pass, then a fine one.

Returns BatchPoints(x, y, status), float64 x and y, int32 status, one element per curve. A
row where no window was accepted has status 0 and stays NaN (the 1-D call returns None);
every row has PARAMETER and NaN for fewer than 12 samples. ValueError for curves of no
samples.)") +
         kRowsNote)
            .c_str());

    // ---- Threshold and end-point searches
    m.def(
        "find_x_at_y_threshold_batch",
        [](py::handle x, py::handle y, float threshold, int thresholdKind, int direction, int resultMode,
           float percent) {
            return pointBatch(x, y, 0, [&](const double* xs, const double* ys, int n, double* xOut, double* yOut) {
                return QAL_FindX_at_YThreshold(xs, ys, n, thresholdKind, direction, resultMode, threshold, percent,
                                               xOut, yOut);
            });
        },
        "x"_a, "y"_a, "threshold"_a = 0.0f, "threshold_kind"_a = 1, "direction"_a = 1, "result_mode"_a = 2,
        "percent"_a = 0.0f,
        (std::string(R"(find_x_at_y_threshold over each row of y (curves x samples, float64; x shared (one row) or one
row per curve): where each curve first reaches its level, the level derived per curve as
threshold_kind says.)") +
         kSearchRows + kRowsNote)
            .c_str());
    m.def(
        "get_y_at_x_diff_batch",
        [](py::handle x, py::handle y, float xDiff, int direction, int resultMode) {
            return pointBatch(x, y, 0, [&](const double* xs, const double* ys, int n, double* xOut, double* yOut) {
                return QAL_GetY_at_XDiff(xs, ys, n, 0, direction, resultMode, xDiff, xOut, yOut);
            });
        },
        "x"_a, "y"_a, "x_diff"_a, "direction"_a = 1, "result_mode"_a = 2,
        (std::string(R"(get_y_at_x_diff over each row of y (curves x samples, float64; x shared (one row) or one row
per curve): each curve at |x_diff| from its first sample, or back from its last with
direction 2.)") +
         kSearchRows + kRowsNote)
            .c_str());
    defEndPoint(m, "find_last_point_batch",
                R"(find_last_point over each row of y (curves x samples, float64; x shared (one row) or one row
per curve): the last sample of each curve.)",
                [](const double* x, const double* y, int n, double* xOut, double* yOut) {
                    return QAL_Find_LastPoint(x, y, n, 0, 0, xOut, yOut);
                });
    defEndPoint(m, "calc_abs_maximum_batch",
                R"(calc_abs_maximum over each row of y (curves x samples, float64; x shared (one row) or one row
per curve): the highest sample of each curve, of equal ones the last.)",
                QAL_Calc_AbsMaximum);
    defEndPoint(m, "calc_abs_minimum_batch",
                R"(calc_abs_minimum over each row of y (curves x samples, float64; x shared (one row) or one row
per curve): the lowest sample of each curve, of equal ones the last.)",
                QAL_Calc_AbsMinimum);

    // ---- Resampling
    m.def(
        "interpol_float_arrays_batch",
        [](py::handle x, py::handle y, py::handle xNew, int option, float fill) {
            Curves<float> c = curves<float>(y, "y");
            Axis<float> xs = axis<float>(x, "x", "y", c.rows, c.cols, c.cols);
            Axis<float> at = axis<float>(xNew, "x_new", "y", c.rows, c.cols, -1);
            py::array_t<float> yNew = newRows<float>(c.rows, at.n, fill);
            py::array_t<int> status(c.rows);
            float* out = yNew.mutable_data();
            int* statusData = status.mutable_data();
            {
                py::gil_scoped_release nogil;
                for (py::ssize_t r = 0; r < c.rows; ++r) {
                    statusData[r] =
                        QAL_InterpolFloatArrays(xs.row(r), c.row(r), c.cols, at.row(r), out + r * at.n, at.n, option);
                }
            }
            return arraysResult(yNew, status);
        },
        "x"_a, "y"_a, "x_new"_a, "option"_a = QAL_INTERPOL_LINE, "fill"_a = NAN,
        (std::string(R"(interpol_float_arrays over each row of y (curves x samples, float32; x shared (one row) or one
row per curve), at x_new (float32, shared (one row) or one row per curve): BatchArrays(values,
status), values float32 of curves x len(x_new), values[r] = interpol_float_arrays(x or x[r],
y[r], x_new or x_new[r], ...). status[r] is the status of the row's last point, as the C++
routine returns it: a refused point keeps fill whatever the status says.)") +
         kRowsNote)
            .c_str());
}

}  // namespace qalpy
