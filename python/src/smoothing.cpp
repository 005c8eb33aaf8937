// Savitzky-Golay coefficients and the moving filters, derivative arrays, derivatives at a
// point, curvature.
#include <algorithm>
#include <cmath>
#include <limits>

#include "binding.h"

namespace qalpy {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

void registerSmoothing(py::module_& m) {
    // ---- Savitzky-Golay coefficients and filtering
    m.def(
        "savitzky_golay_coeffizient",
        [](int leftCount, int rightCount, int derivOrder, int polyOrder, py::object coefCountArg) {
            // The default: exactly the taps, as long as the counts make sense (the C++
            // routine refuses the rest).
            const long long taps = static_cast<long long>(leftCount) + rightCount + 1;
            const int coefCount =
                coefCountArg.is_none() ? static_cast<int>(std::clamp(taps, 0LL, 1LL << 30)) : coefCountArg.cast<int>();
            py::array_t<double> coef(std::max(coefCount, 0));
            double* out = coef.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_SavitzkyGolayCoeffizient(out, coefCount, leftCount, rightCount, derivOrder, polyOrder);
            }
            if (status != QAL_OK) raiseStatus(status, "savitzky_golay_coeffizient");
            return coef;
        },
        "left_count"_a, "right_count"_a, "deriv_order"_a, "poly_order"_a, "coef_count"_a = py::none(),
        R"(QAL_SavitzkyGolayCoeffizient: the least-squares convolution coefficients for the samples at
offsets -left_count..right_count, in ascending order of offset, in a new float64 array of
coef_count elements (default left_count + right_count + 1; the rest is 0.0). Summed against
those samples they give the coefficient of offset**deriv_order in the polynomial of degree
poly_order fitted to them (deriv_order 0 smooths, 1 gives the slope per sample step). Not
normalised. With poly_order 6 every offset of 122 or more enters the twelfth-power sum as 1e25.

Raises ParameterError for coef_count below the taps, a negative count or order, deriv_order >
poly_order, or left_count + right_count < poly_order; SingularMatrixError from the
decomposition; AllocationError when work memory cannot be allocated.)");
    m.def(
        "set_filter_coefficients",
        [](int kind, int width, int degree) {
            atLeast("width", width, 3);
            py::array_t<double> coef(width);
            double* out = coef.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_SetFilterCoefficients(out, kind, width, degree);
            }
            // A zero sum (or a width above 9999) leaves the weights filled but unscaled.
            if (status != QAL_OK) raiseStatus(status, "set_filter_coefficients",
                                              status == QAL_ERR_ZERO_DIVISION ? py::object(coef) : py::none());
            return coef;
        },
        "kind"_a, "width"_a, "degree"_a = 2,
        R"(QAL_SetFilterCoefficients: the weights of a filter of width taps, scaled to a sum of 1, a new
float64 array. kind (FilterKind): AVERAGE all equal, TRIANGLE 1, 2, ... up to the centre and
down again (an even width overwrites the middle pair: width 4 gives 1, 3, 3, 1), SAVITZKY_GOLAY
least squares of degree 2, 4 or 6 over width // 2 samples on each side (an even width keeps a
last 0.0); any other positive kind acts as AVERAGE and ignores degree.

ValueError for a width below 3 (QAL_ERR_MEMORY in C++). Raises ParameterError for kind <= 0,
and at SAVITZKY_GOLAY for a degree other than 2, 4, 6 or above 2 * (width // 2);
ZeroDenominatorError when the weights sum to exactly 0.0 or width exceeds 9999, with the
unscaled weights in .outputs; the failures of savitzky_golay_coeffizient.)");
    m.def(
        "filter_array",
        [](py::handle in, int kind, int width, int degree, int first, py::object lastArg) {
            return byDtype(in, "in_", [&](auto tag) {
                using T = decltype(tag);
                Vec<T> samples = vec<T>(in, "in_");
                const int last = lastArg.is_none() ? samples.n - 1 : lastArg.cast<int>();
                py::array_t<T> out(samples.n);
                T* target = out.mutable_data();
                int status;
                {
                    py::gil_scoped_release nogil;
                    // Samples outside first..last keep their input values.
                    std::copy(samples.data, samples.data + samples.n, target);
                    if constexpr (std::is_same_v<T, float>) {
                        status = QAL_FilterFloatArray(samples.data, target, samples.n, first, last, kind, width, degree);
                    } else {
                        status = QAL_FilterArray(samples.data, target, samples.n, first, last, kind, width, degree);
                    }
                }
                if (status != QAL_OK) raiseStatus(status, "filter_array");
                return out;
            });
        },
        "in_"_a, "kind"_a, "width"_a, "degree"_a = 2, "first"_a = 0, "last"_a = py::none(),
        R"(QAL_FilterArray / QAL_FilterFloatArray: the moving filter of kind (FilterKind) and width taps
(see set_filter_coefficients) over in_, a new array of its dtype; samples outside first..last
(clamped into the array; last defaults to the last sample) keep their input values. Samples
count as equally spaced. Per sample in double: in_[i] times the centre weight, then for each
j = 1..width // 2 the left and then the right tap; a tap beyond the data adds its weight to a
missing weight instead, and unless that is exactly 0.0 or 1.0 the sum is divided by
1 - missing, so a constant curve stays constant up to both ends (nothing mirrored or padded).
A float32 array gives float32 results, each rounded once from the double sum.

Raises TooFewPointsError for fewer than 2 samples; ParameterError when last < first after
clamping, for an even width or one outside 3..299 (float32: 3..99), and for the refused kinds
and degrees of set_filter_coefficients; ZeroDenominatorError, SingularMatrixError and
AllocationError as the coefficient build fails.)");

    // ---- Derivative arrays
    m.def(
        "deriv_array",
        [](py::handle x, py::handle y, int method, int order, int span) {
            return byDtype(x, "x", [&](auto tag) {
                using T = decltype(tag);
                auto [xs, ys] = curveOf<T>(x, y);
                // A method the routine does not know leaves deriv as it was: NaN here.
                py::array_t<T> deriv = newArray<T>(xs.n, static_cast<T>(kNaN));
                T* out = deriv.mutable_data();
                int status;
                if constexpr (std::is_same_v<T, float>) {
                    // The float routine writes its widened copies back into x and y, so it
                    // gets copies of its own; QAL_F2D refuses an empty curve as QAL_ERR_MEMORY.
                    atLeast("x and y", xs.n, 1);
                    py::array_t<float> xCopy(xs.n);
                    py::array_t<float> yCopy(ys.n);
                    float* xWork = xCopy.mutable_data();
                    float* yWork = yCopy.mutable_data();
                    py::gil_scoped_release nogil;
                    std::copy(xs.data, xs.data + xs.n, xWork);
                    std::copy(ys.data, ys.data + ys.n, yWork);
                    status = QAL_DerivFloatArray(xWork, yWork, out, xs.n, method, order, span);
                } else {
                    py::gil_scoped_release nogil;
                    status = QAL_DerivArray(xs.data, ys.data, out, xs.n, method, order, span);
                }
                if (status != QAL_OK) raiseStatus(status, "deriv_array");
                return deriv;
            });
        },
        "x"_a, "y"_a, "method"_a, "order"_a = 1, "span"_a = 0,
        R"(QAL_DerivArray / QAL_DerivFloatArray: the derivative curve of x, y (ascending), a new array
of their dtype, worked in double (float32 curves are widened and the result rounded once).
order is 1 or 2. method (DerivMethod): SPLINE the natural spline (order 2 its table, 0.0 at both
ends; order 1 first_derivative at every x[i], whose zero-wide intervals show as 1e15; span not
read; at most 10000 points); LINE_FIT lin_fit slopes over span samples (half = span // 2 on
each side, cut at the ends; order 2 the slope over the half samples after i minus that over
the half before, not divided by a distance, 0.0 at three samples at each end; span < 2 at
order 1, < 4 at order 2, gives NaN). Any other method computes nothing: all NaN.

Raises TooFewPointsError for fewer than 2 points (float32: ValueError for none);
ParameterError for an order other than 1 or 2, LINE_FIT at order 2 with fewer than 4 points,
and the spline's refusals; ZeroDenominatorError when the last spline interval is zero-wide;
AllocationError when the work memory cannot be allocated.)");

    // ---- Derivatives at a point
    m.def(
        "first_derivative_ridder",
        [](py::object func, double xValue, double step) {
            CallableScope scope(std::move(func), "func");
            double error = kNaN;
            const double value = QAL_FirstDerivativeRidder(&CallableScope::trampoline, xValue, step, &error);
            scope.rethrowIfFailed();
            return types().estimate(value, error);
        },
        "func"_a, "x_value"_a, "step"_a,
        R"(QAL_FirstDerivativeRidder: Estimate(value, error_estimate) of the derivative of the Python
callable func (one float in, one float out) at x_value by Ridders' method: central
differences at step, then step / 1.4 nine times, extrapolated to zero step. Calls func at most
20 times. value is 1e25 (error 1e15) for a step below 1e-25 or when the tableau cannot be
allocated; 0.0 with 1e15 when func gives NaN. An exception raised by func propagates after
the C++ call has ended (it then got NaN without further calls). Never raises a QalError.)");
    m.def(
        "first_derivative_golay",
        [](py::handle x, py::handle y, double xValue) {
            auto [xs, ys] = curveOf<double>(x, y);
            py::gil_scoped_release nogil;
            return QAL_FirstDerivativeGolay(xs.data, ys.data, xs.n, xValue);
        },
        "x"_a, "y"_a, "x_value"_a,
        R"(QAL_FirstDerivativeGolay: the slope per sample step at x_value: the 11-tap Savitzky-Golay
first-derivative kernel (degree 4) applied at both samples of x_value's knot interval,
interpolated linearly between them; near an end the missing taps rescale the sum. 1e25 for
empty arrays, when the kernel cannot be built, or for an interval narrower than 1e-25.
Never raises a QalError.)");
    m.def(
        "first_derivative_lin_reg",
        [](py::handle x, py::handle y, int span, double xValue) {
            auto [xs, ys] = curveOf<double>(x, y);
            py::gil_scoped_release nogil;
            return QAL_FirstDerivativeLinReg(xs.data, ys.data, xs.n, span, xValue);
        },
        "x"_a, "y"_a, "span"_a, "x_value"_a,
        R"(QAL_FirstDerivativeLinReg: the slope of linear_regression over min(span // 2, lo + 1,
n - 1 - lo) samples on each side of x_value's knot interval lo, hi. 1e25 for empty arrays,
span < 2, or an interval narrower than 1e-25. Never raises a QalError.)");

    // ---- Curvature
    m.def(
        "kruemmung",
        [](py::handle x, py::handle y) {
            auto [xs, ys] = curveOf<float>(x, y);
            const float nan = std::numeric_limits<float>::quiet_NaN();
            py::array_t<float> first = newArray<float>(xs.n, nan);
            py::array_t<float> second = newArray<float>(xs.n, nan);
            float* firstData = first.mutable_data();
            float* secondData = second.mutable_data();
            {
                py::gil_scoped_release nogil;
                QAL_Kruemmung(xs.data, ys.data, firstData, secondData, xs.n);
            }
            return types().curvature(first, second);
        },
        "x"_a, "y"_a,
        R"(QAL_Kruemmung: Curvature(first_derivative, second_derivative), new float32 arrays of
differences in float32: the first from y, the second from the first, one-sided at both ends
and central over two steps inside (the second derivative, no curvature formula). Fewer than 2
points: all NaN. A zero step leaves an infinity or NaN. Never raises a QalError.)");
    m.def(
        "kruemmung2",
        [](py::handle x, py::handle y, int gapWidth, int chordWidth) {
            auto [xs, ys] = curveOf<float>(x, y);
            py::array_t<float> result = newArray<float>(xs.n, std::numeric_limits<float>::quiet_NaN());
            float* out = result.mutable_data();
            {
                py::gil_scoped_release nogil;
                QAL_Kruemmung2(xs.data, ys.data, out, xs.n, gapWidth, chordWidth);
            }
            return result;
        },
        "x"_a, "y"_a, "gap_width"_a, "chord_width"_a,
        R"(QAL_Kruemmung2: a new float32 array, result[i] = the slope of a chord of chord_width samples
right of i minus that of one left of i, the inner chord ends gap_width // 2 from i; the chords
shrink to the last or first two samples at the ends. Differences in float32, slopes in
double, narrowed once. chord_width 0 gives NaN where a chord keeps one sample. Fewer than 2
points, gap_width below -1 or chord_width below 0: all NaN. Never raises a QalError.)");
}

}  // namespace qalpy
