// Cubic splines, QAL_Interpol and the float resampling, polynomial and rational
// interpolation, Akima slopes, the in/out count.
#include <cmath>
#include <limits>

#include "binding.h"

namespace qalpy {

namespace {

struct Knots {
    Vec<double> x;
    Vec<double> y;
    Vec<double> y2;
};

// x, y and a table y2 of one length.
Knots knots(py::handle x, py::handle y, py::handle y2) {
    Knots k{vec<double>(x, "x"), vec<double>(y, "y"), vec<double>(y2, "y2")};
    sameLength("x", k.x.n, "y", k.y.n);
    sameLength("x", k.x.n, "y2", k.y2.n);
    return k;
}

using SplinePoint = int (*)(const double*, const double*, const double*, int, double, double*);

// A point evaluation of the spline that leaves its status and one double.
double splinePoint(const char* function, SplinePoint routine, py::handle x, py::handle y, py::handle y2,
                   double xValue) {
    Knots k = knots(x, y, y2);
    double out = std::numeric_limits<double>::quiet_NaN();
    int status;
    {
        py::gil_scoped_release nogil;
        status = routine(k.x.data, k.y.data, k.y2.data, k.x.n, xValue, &out);
    }
    // A zero-wide interval leaves a usable stand-in (y[lo], or 1e15 for a derivative).
    if (status != QAL_OK) raiseStatus(status, function, status == QAL_ERR_ZERO_DIVISION ? py::object(py::float_(out)) : py::none());
    return out;
}

using Tableau = int (*)(const double*, const double*, int, double, double*, double*);

py::object tableau(const char* function, Tableau routine, py::handle x, py::handle y, double xValue) {
    auto [xs, ys] = curveOf<double>(x, y);
    double value = std::numeric_limits<double>::quiet_NaN();
    double error = std::numeric_limits<double>::quiet_NaN();
    int status;
    {
        py::gil_scoped_release nogil;
        status = routine(xs.data, ys.data, xs.n, xValue, &value, &error);
    }
    if (status != QAL_OK) raiseStatus(status, function);
    return types().estimate(value, error);
}

}  // namespace

void registerInterpolation(py::module_& m) {
    // ---- Cubic splines
    m.def(
        "splines",
        [](py::handle x, py::handle y, double slopeFirst, double slopeLast) {
            auto [xs, ys] = curveOf<double>(x, y);
            py::array_t<double> y2(xs.n);
            double* table = y2.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_Splines(xs.data, ys.data, xs.n, slopeFirst, slopeLast, table);
            }
            if (status != QAL_OK) raiseStatus(status, "splines");
            return y2;
        },
        "x"_a, "y"_a, "slope_first"_a = INFINITY, "slope_last"_a = INFINITY,
        R"(QAL_Splines: the table y2 (a new float64 array, one second derivative per knot) of the cubic
spline through the float64 knots x (ascending, not tested) and y. An end slope at or above 1e25
(the default, inf) makes that end natural; any other value, NaN too, clamps the first
derivative there. A sweep pivot not above 1e-25 in magnitude copies the row before; equal
abscissae otherwise leave infinities or NaNs without a status.

Raises ParameterError for fewer than 2 or more than 10000 knots, AllocationError when the work
array cannot be allocated.)");
    m.def(
        "cubic_spline_interpolation",
        [](py::handle x, py::handle y, py::handle y2, double xValue) {
            return splinePoint("cubic_spline_interpolation", QAL_CubicSplineInterpolation, x, y, y2, xValue);
        },
        "x"_a, "y"_a, "y2"_a, "x_value"_a,
        R"(QAL_CubicSplineInterpolation: the spline of x, y and its table y2 (from splines) at x_value,
on the knot interval found by bisection; outside the knots (or NaN) the end interval's cubic
goes on.

Raises ParameterError for fewer than 2 or more than 10000 knots; ZeroDenominatorError when the
interval is not wider than 1e-25 (NaN too), with y[lo] in .outputs.)");
    m.def(
        "first_derivative",
        [](py::handle x, py::handle y, py::handle y2, double xValue) {
            return splinePoint("first_derivative", QAL_FirstDerivative, x, y, y2, xValue);
        },
        "x"_a, "y"_a, "y2"_a, "x_value"_a,
        R"(QAL_FirstDerivative: the first derivative at x_value of the spline of x, y and its table y2
(from splines), on the interval cubic_spline_interpolation uses; outside the knots the end
interval's cubic goes on.

Raises ParameterError for fewer than 2 or more than 10000 knots; ZeroDenominatorError when the
interval is not wider than 1e-25 (NaN too), with 1e15 in .outputs.)");
    m.def(
        "second_derivative",
        [](py::handle x, py::handle y, py::handle y2, double xValue) {
            return splinePoint("second_derivative", QAL_SecondDerivative, x, y, y2, xValue);
        },
        "x"_a, "y"_a, "y2"_a, "x_value"_a,
        R"(QAL_SecondDerivative: the second derivative at x_value of the spline of x, y and its table y2
(a y2[lo] + b y2[hi]).

Raises ParameterError for fewer than 2 or more than 10000 knots; ZeroDenominatorError when the
interval is not wider than 1e-25 (NaN too), with 1e15 in .outputs.)");

    // ---- Resampling
    m.def(
        "interpol",
        [](double xValue, py::handle x, py::handle y, py::handle y2, int option) {
            Vec<double> xs = vec<double>(x, "x");
            Vec<double> ys = vec<double>(y, "y");
            Vec<double> table = optionalVec<double>(y2, "y2");
            sameLength("x", xs.n, "y", ys.n);
            if (table.data) sameLength("x", xs.n, "y2", table.n);
            double out = std::numeric_limits<double>::quiet_NaN();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_Interpol(&out, xValue, xs.data, ys.data, table.data, xs.n, option);
            }
            // Every failure after the argument test leaves the midpoint (or, for a zero-wide
            // spline interval, its lower ordinate) in the output.
            if (status != QAL_OK) raiseStatus(status, "interpol", xs.n > 0 ? py::object(py::float_(out)) : py::none());
            return out;
        },
        "x_value"_a, "x"_a, "y"_a, "y2"_a = py::none(), "option"_a = QAL_INTERPOL_LINE,
        R"(QAL_Interpol: the float64 curve x, y at x_value, as option (InterpolOption) says:
LOCATED the ordinate at the located position, LINE (the default; also 1, 7 to 11, 13 and every
value outside 0..15) the least-squares line through all points, MIDPOINT (also 15)
(y[-1] + y[0]) * 0.5, SPLINE a cubic spline (natural unless the table y2 is given; x ascending),
SEGMENT the line through the located point and the next, LOCAL_LINE the least-squares line
through 6, 4 or 2 points there, LOG_LINE and LOG_SEGMENT those lines in log-log coordinates
(log10 clamped to -30 below 1e-25, pow10 back). x may ascend or descend. One point gives y[0]
for every option and value.

Every failure after the argument test carries the midpoint (y[-1] + y[0]) * 0.5 in .outputs:
OutOfRangeError at or beyond either end of x (for every value when x[0] == x[-1]);
ParameterError for empty arrays (no outputs) and at SPLINE for more than 10000 points;
ZeroDenominatorError at SPLINE for a bracket not wider than 1e-25 (its lower ordinate in
.outputs); AllocationError when SPLINE, LOG_LINE or LOG_SEGMENT cannot allocate.)");
    m.def(
        "interpol_float_arrays",
        [](py::handle x, py::handle y, py::handle xNew, int option, float fill) {
            Vec<float> xs = vec<float>(x, "x");
            Vec<float> ys = vec<float>(y, "y");
            Vec<float> at = vec<float>(xNew, "x_new");
            sameLength("x", xs.n, "y", ys.n);
            py::array_t<float> yNew = newArray<float>(at.n, fill);
            float* out = yNew.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_InterpolFloatArrays(xs.data, ys.data, xs.n, at.data, out, at.n, option);
            }
            if (status != QAL_OK) raiseStatus(status, "interpol_float_arrays", yNew);
            return yNew;
        },
        "x"_a, "y"_a, "x_new"_a, "option"_a = QAL_INTERPOL_LINE, "fill"_a = NAN,
        R"(QAL_InterpolFloatArrays: the float32 curve x, y resampled at the float32 abscissae x_new, a
new float32 array y_new: one interpol outcome per new abscissa on the widened curve (no
table), narrowed to float32; a refused point keeps fill (NaN by default). Work that depends on
the curve alone (the fit of LINE and LOG_LINE, the spline table) is made once per call.

The C++ routine returns the status of the last point only: when it is not QAL_OK the matching
QalError is raised with y_new in .outputs (an OutOfRangeError when x_new ends at or beyond the
data, for example); an earlier refusal shows only as fill. Raises AllocationError, y_new all
fill, when the work arrays cannot be allocated.)");
    m.def(
        "check_in_out_arrays",
        [](py::handle values, py::handle upper, py::handle lower) {
            Vec<float> v = vec<float>(values, "values");
            Vec<float> up = vec<float>(upper, "upper");
            Vec<float> low = optionalVec<float>(lower, "lower");
            sameLength("values", v.n, "upper", up.n);
            if (low.data) sameLength("values", v.n, "lower", low.n);
            int count = 0;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_CheckInOutArrays(v.data, low.data, up.data, v.n, &count);
            }
            if (status != QAL_OK) raiseStatus(status, "check_in_out_arrays");
            return count;
        },
        "values"_a, "upper"_a, "lower"_a = py::none(),
        R"(QAL_CheckInOutArrays: the number of samples with values[i] > upper[i], or else
lower[i] > values[i] (lower may be None: no lower test), each counted once; float32 arrays,
strict float comparisons, so a NaN makes its own comparison false.

Raises ParameterError for empty arrays.)");

    // ---- Polynomial and rational
    m.def(
        "polynomial_interpolation",
        [](py::handle x, py::handle y, double xValue) {
            return tableau("polynomial_interpolation", QAL_PolynomialInterpolation, x, y, xValue);
        },
        "x"_a, "y"_a, "x_value"_a,
        R"(QAL_PolynomialInterpolation: Estimate(value, error_estimate) of Neville's polynomial through the
float64 points x, y (no order needed) at x_value, extrapolating without a status; the tableau
starts at the nearest point. error_estimate is the last correction added (not an error bound;
NaN for one point). A tableau width below 1e-25 gives the quotient 1e15 and a very large value.

Raises ParameterError for empty arrays or more than 10000 points, AllocationError when the
work arrays cannot be allocated.)");
    m.def(
        "rationial_interpolation",
        [](py::handle x, py::handle y, double xValue) {
            return tableau("rationial_interpolation", QAL_RationialInterpolation, x, y, xValue);
        },
        "x"_a, "y"_a, "x_value"_a,
        R"(QAL_RationialInterpolation: Estimate(value, error_estimate) of the diagonal rational function
through the float64 points x, y at x_value (Bulirsch-Stoer). The first point closer than 1e-25
to x_value gives its y and the estimate 0.0; a pole puts 1e15 in the tableau. error_estimate is
NaN for one point.

Raises ParameterError for empty arrays or more than 10000 points, AllocationError when the
work arrays cannot be allocated.)");

    // ---- Akima
    m.def(
        "akima_sub",
        [](py::handle x, py::handle y) {
            auto [xs, ys] = curveOf<float>(x, y);
            py::array_t<float> slopes(xs.n);
            float* out = slopes.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_AkimaSub(xs.data, ys.data, out, xs.n);
            }
            if (status != QAL_OK) raiseStatus(status, "akima_sub");
            return slopes;
        },
        "x"_a, "y"_a,
        R"(QAL_AkimaSub: the Akima slope at every point of the float32 curve x, y, a new float32 array
(segment slopes in float32, 1000.0 for a segment of zero or NaN width; the weighted means in
double, narrowed once). Evaluates no curve.

Raises TooFewPointsError for fewer than 3 points, OrderError when an abscissa descends or is
NaN (equal ones pass), AllocationError when a work array cannot be allocated.)");
}

}  // namespace qalpy
