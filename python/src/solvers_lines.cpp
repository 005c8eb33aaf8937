// LU decomposition and solve, line fits, line evaluation and intersection, regression.
#include <algorithm>
#include <cmath>
#include <vector>

#include "binding.h"

namespace qalpy {

namespace {

// The row-pointer table that the LU routines take, over a C-contiguous n x n block.
std::vector<double*> rowTable(double* block, int n) {
    std::vector<double*> rows(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) rows[static_cast<std::size_t>(i)] = block + static_cast<std::ptrdiff_t>(i) * n;
    return rows;
}

Mat squareMat(py::handle object, const char* name) {
    Mat a = mat(object, name);
    if (a.rows != a.cols) {
        throw py::value_error(std::string(name) + " must be square, got " + std::to_string(a.rows) + " x " +
                              std::to_string(a.cols));
    }
    return a;
}

// A line fitted by `fit` (the double or the float routine by the arrays' dtype), or
// TooFewPointsError when it answers false.
template <class Fit>
py::object fitLine(const char* function, py::handle x, py::handle y, Fit fit) {
    return byDtype(x, "x", [&](auto tag) {
        using T = decltype(tag);
        auto [xs, ys] = curveOf<T>(x, y);
        T intercept{};
        T slope{};
        bool done;
        {
            py::gil_scoped_release nogil;
            done = fit(xs.data, ys.data, xs.n, &intercept, &slope);
        }
        if (!done) raiseStatus(QAL_ERR_TOO_FEW_POINTS, function);
        return types().line(scalar(intercept), scalar(slope));
    });
}

// QAL_CalcLinX or QAL_CalcLinY and their float twins: one coordinate on the fitted line.
py::object alongLine(double value, py::handle x, py::handle y, double (*ofDouble)(double, const double*, const double*, int),
                     float (*ofFloat)(float, const float*, const float*, int)) {
    return byDtype(x, "x", [&](auto tag) {
        using T = decltype(tag);
        auto [xs, ys] = curveOf<T>(x, y);
        T result;
        {
            py::gil_scoped_release nogil;
            if constexpr (std::is_same_v<T, float>) {
                result = ofFloat(static_cast<float>(value), xs.data, ys.data, xs.n);
            } else {
                result = ofDouble(value, xs.data, ys.data, xs.n);
            }
        }
        return scalar(result);
    });
}

}  // namespace

void registerSolversLines(py::module_& m) {
    // ---- LU decomposition
    m.def(
        "lu_decomposition",
        [](py::handle a) {
            Mat in = squareMat(a, "a");
            const int n = in.rows;
            py::array_t<double> lu({n, n});
            py::array_t<int> pivots(n);
            double* block = lu.mutable_data();
            int* pivotData = pivots.mutable_data();
            double sign = 1.0;
            int status;
            {
                py::gil_scoped_release nogil;
                std::copy(in.data, in.data + static_cast<std::ptrdiff_t>(n) * n, block);
                std::vector<double*> rows = rowTable(block, n);
                status = QAL_LUDecomposition(rows.data(), n, pivotData, &sign);
            }
            if (status != QAL_OK) raiseStatus(status, "lu_decomposition");
            return types().lu(lu, pivots, sign);
        },
        "a"_a,
        R"(QAL_LUDecomposition: LUDecomposition(lu, pivots, sign) of the square float64 matrix a (a
new matrix; Crout with implicit row scaling and partial pivoting). lu holds U on and above the
diagonal and L below it (unit diagonal not stored); pivots (int32) is the row exchanged with
row j at step j, a record to replay in ascending j, not a permutation; sign is +-1.0. Of equal
scaled pivot candidates the later row wins, a NaN one is never taken; a zero pivot becomes
1e-25 and the call succeeds.

Raises SingularMatrixError when a row holds only zeros and NaNs, AllocationError when the
scale factors cannot be allocated.)");
    m.def(
        "lu_solve_equa",
        [](py::handle a, py::handle pivots, py::handle b) {
            Mat lu = squareMat(a, "a");
            Vec<int> p = vec<int>(pivots, "pivots");
            Vec<double> rhs = vec<double>(b, "b");
            sameLength("a", lu.rows, "pivots", p.n);
            sameLength("a", lu.rows, "b", rhs.n);
            // The pivots are row indices that the solve follows without a test.
            for (int j = 0; j < p.n; ++j) {
                if (p.data[j] < 0 || p.data[j] >= p.n) {
                    throw py::value_error("pivots[" + std::to_string(j) + "] = " + std::to_string(p.data[j]) +
                                          " is not a row of a");
                }
            }
            const int n = lu.rows;
            py::array_t<double> x(n);
            double* solution = x.mutable_data();
            {
                py::gil_scoped_release nogil;
                std::copy(rhs.data, rhs.data + n, solution);
                std::vector<const double*> rows(static_cast<std::size_t>(n));
                for (int i = 0; i < n; ++i) rows[static_cast<std::size_t>(i)] = lu.data + static_cast<std::ptrdiff_t>(i) * n;
                QAL_LUSolveEqua(rows.data(), n, p.data, solution);
            }
            return x;
        },
        "a"_a, "pivots"_a, "b"_a,
        R"(QAL_LUSolveEqua: the solution of the system decomposed by lu_decomposition (a = its lu,
pivots its pivots) for the right-hand side b, a new float64 array: forward substitution
replaying the exchanges, then back substitution. A diagonal element equal to 0.0 gives 1e15
in that element. Never raises a QalError; ValueError for a pivot that is not a row of a.)");

    // ---- Line fits and evaluation
    m.def(
        "lin_fit",
        [](py::handle x, py::handle y) {
            return fitLine("lin_fit", x, y, [](auto x_, auto y_, int n, auto* intercept, auto* slope) {
                if constexpr (std::is_same_v<decltype(x_), const float*>) {
                    QAL_LinFitFloat(x_, y_, n, intercept, slope);
                } else {
                    QAL_LinFit(x_, y_, n, intercept, slope);
                }
                return true;
            });
        },
        "x"_a, "y"_a,
        R"(QAL_LinFit / QAL_LinFitFloat: Line(intercept, slope) of the two-pass least-squares fit about
the mean abscissa; float32 arrays are fitted with every step in float32 (numpy.float32
results), float64 ones in double. Nothing is tested: fewer than 2 points, or equal abscissae
with an exact mean, give NaN in both. Never raises a QalError.)");
    m.def(
        "calc_lin_x",
        [](double xValue, py::handle x, py::handle y) {
            return alongLine(xValue, x, y, QAL_CalcLinX, QAL_CalcLinXFloat);
        },
        "x_value"_a, "x"_a, "y"_a,
        R"(QAL_CalcLinX / QAL_CalcLinXFloat: the ordinate of the fitted line (lin_fit) at x_value.
With float32 arrays x_value is rounded to float32 and the result is a numpy.float32. 0.0 for
fewer than 2 points (indistinguishable from a true 0.0). Never raises a QalError.)");
    m.def(
        "calc_lin_y",
        [](double yValue, py::handle x, py::handle y) {
            return alongLine(yValue, x, y, QAL_CalcLinY, QAL_CalcLinYFloat);
        },
        "y_value"_a, "x"_a, "y"_a,
        R"(QAL_CalcLinY / QAL_CalcLinYFloat: the abscissa where the fitted line reaches y_value. With
float32 arrays y_value is rounded to float32 and the result is a numpy.float32. 0.0 for fewer
than 2 points or a slope not above 1e-25 in magnitude (a level line, or NaN). Never raises a
QalError.)");
    m.def(
        "straight_line_intersection",
        [](float intercept1, float slope1, float intercept2, float slope2) {
            float xCross = NAN;
            float yCross = NAN;
            const int status = QAL_StraightLineIntersection(&xCross, &yCross, intercept1, slope1, intercept2, slope2);
            py::object point = types().point(scalar(xCross), scalar(yCross));
            if (status != QAL_OK) raiseStatus(status, "straight_line_intersection", point);
            return point;
        },
        "intercept1"_a, "slope1"_a, "intercept2"_a, "slope2"_a,
        R"(QAL_StraightLineIntersection: Point(x, y) where y = intercept1 + slope1 x crosses
y = intercept2 + slope2 x, in float32 (the arguments are rounded to float32; numpy.float32
results). y comes from the first line whose x * slope lies below 1e25, and is NaN when neither
does; a NaN coefficient gives a NaN x.

Raises OutOfRangeError when the slopes are less than 1e-8 apart or one exceeds 1e25 / 100 in
magnitude, with both coordinates the float32 nearest 1e25 in .outputs.)");

    // ---- Linear regression
    m.def(
        "linear_regression",
        [](py::handle x, py::handle y) {
            return fitLine("linear_regression", x, y, [](auto x_, auto y_, int n, auto* intercept, auto* slope) {
                if constexpr (std::is_same_v<decltype(x_), const float*>) {
                    // Tests nothing and always answers QAL_OK.
                    return QAL_LinearRegressionFloat(x_, y_, n, intercept, slope) == QAL_OK;
                } else {
                    return QAL_LinearRegression(x_, y_, n, intercept, slope) != 0;
                }
            });
        },
        "x"_a, "y"_a,
        R"(QAL_LinearRegression / QAL_LinearRegressionFloat: Line(intercept, slope), least squares.

float64: one pass over raw sums in double; raises TooFewPointsError for fewer than 2 points
(the C++ function answers 0, not a status). Equal abscissae are not reported (NaN or a
residue quotient).
float32: a centred two-pass fit with double sums, narrowed to float32 at the end
(numpy.float32 results); tests nothing: fewer than 2 points give NaN in both.)");
}

}  // namespace qalpy
