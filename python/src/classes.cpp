// The class side: the static operations of k_Qal on NumPy arrays, in the submodule k_qal.
// The index-tested containers themselves have no Python form: a float64 array goes in,
// is copied into a t_QalVector or t_QalMatrix of its size, and the results come back as
// arrays. Lengths are checked before, so the containers never raise for a short operand.
#include <cmath>
#include <cstddef>

#include "binding.h"
#include "qal/qal_classes.h"

namespace qalpy {

namespace {

t_QalVector<double> toVector(const Vec<double>& in) {
    t_QalVector<double> v(in.n);
    for (int i = 0; i < in.n; ++i) v(i) = in.data[i];
    return v;
}

t_QalMatrix<double> toMatrix(const Mat& in) {
    t_QalMatrix<double> a(in.rows, in.cols);
    for (int i = 0; i < in.rows; ++i) {
        for (int j = 0; j < in.cols; ++j) a(i, j) = in.data[static_cast<std::ptrdiff_t>(i) * in.cols + j];
    }
    return a;
}

void fromMatrix(t_QalMatrix<double>& a, double* out, int rows, int cols) {
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) out[static_cast<std::ptrdiff_t>(i) * cols + j] = a(i, j);
    }
}

// One vector in, a double out.
template <double (*F)(t_QalVector<double>&)>
double ofVector(py::handle v) {
    Vec<double> in = vec<double>(v, "v");
    py::gil_scoped_release nogil;
    t_QalVector<double> vector = toVector(in);
    return F(vector);
}

// Two vectors of one length in, a result out.
template <class R, R (*F)(t_QalVector<double>&, t_QalVector<double>&)>
R ofPair(py::handle a, py::handle b) {
    Vec<double> first = vec<double>(a, "a");
    Vec<double> second = vec<double>(b, "b");
    sameLength("a", first.n, "b", second.n);
    py::gil_scoped_release nogil;
    t_QalVector<double> va = toVector(first);
    t_QalVector<double> vb = toVector(second);
    return F(va, vb);
}

// k_Qal::Mean with the spread.
bool meanAndSpread(t_QalVector<double>& v, double& mean, double& spread) {
    return k_Qal::Mean(v, mean, spread);
}

// Two results of one vector, or TooFewPointsError when the routine answers false (empty).
template <bool (*F)(t_QalVector<double>&, double&, double&)>
py::object moments(const char* function, py::handle v, py::handle result) {
    Vec<double> in = vec<double>(v, "v");
    double first = 0.0;
    double second = 0.0;
    bool done;
    {
        py::gil_scoped_release nogil;
        t_QalVector<double> vector = toVector(in);
        done = F(vector, first, second);
    }
    if (!done) raiseStatus(QAL_ERR_TOO_FEW_POINTS, function);
    return result(first, second);
}

// Position and value of an extreme element.
template <int (*F)(t_QalVector<double>&, double&)>
py::object located(py::handle v) {
    Vec<double> in = vec<double>(v, "v");
    double extreme = 0.0;
    int index;
    {
        py::gil_scoped_release nogil;
        t_QalVector<double> vector = toVector(in);
        index = F(vector, extreme);
    }
    return types().located(index, extreme);
}

// The float twin for a numpy.float32, the double one for anything else.
template <class F>
py::object repair(py::handle value, F f) {
    if (py::isinstance(value, types().float32)) {
        float v = py::cast<float>(value);
        const bool changed = f(v);
        return types().repaired(scalar(v), changed);
    }
    double v = py::cast<double>(value);
    const bool changed = f(v);
    return types().repaired(v, changed);
}

}  // namespace

void registerClasses(py::module_& m) {
    py::module_ k = m.def_submodule(
        "k_qal",
        "The static operations of k_Qal: guarded scalars, vector statistics on float64 arrays, "
        "Gauss-Jordan elimination on float64 matrices. Sums run in index order from 0.0 in double.");

    // ---- Guarded scalars
    k.def("power", [](py::handle x, py::handle y) { return binary<double>(x, "x", y, "y", &k_Qal::Power); }, "x"_a,
          "y"_a,
          R"(k_Qal::Power: x to the power y: 1.0 when x < 1e-25 and y < 1e-25, 0.0 when x < 1e-25
otherwise, 1.0 when -1e-25 < y < 1e-25; then (x and y clamped to +-1e25) 1e-25 when
log(x) * y < -log(1e25), 1e25 when above log(1e25), else pow(x, y). Numbers or float64 arrays
of one shape.)");
    k.def("log", [](py::handle x) { return unary<double>(x, "x", &k_Qal::Log); }, "x"_a,
          "k_Qal::Log: log(x); -1e25 for x <= 0, no upper guard. A number or a float64 array.");
    k.def("sqrt", [](py::handle x) { return unary<double>(x, "x", &k_Qal::Sqrt); }, "x"_a,
          "k_Qal::Sqrt: signed root, -sqrt(-x) for x < 0, else sqrt(x). A number or a float64 array.");
    k.def(
        "inf_repair",
        [](py::handle value) { return repair(value, [](auto& v) { return k_Qal::InfRepair(v); }); }, "value"_a,
        R"(k_Qal::InfRepair: Repaired(value, changed): a value beyond +-1e25 clamped to +-1e25 (a
numpy.float32 takes the float twin and is clamped to the float32 image 9.99999956e24), and
whether it changed. NaN stays, with False.)");
    k.def(
        "zero_repair",
        [](py::handle value) { return repair(value, [](auto& v) { return k_Qal::ZeroRepair(v); }); }, "value"_a,
        R"(k_Qal::ZeroRepair: Repaired(value, changed): a magnitude below 1e-25 (0 and -0 included)
replaced by 1e-25, or -1e-25 for a negative value (a numpy.float32 takes the float twin, whose
image is 1.00000002e-25), and whether it changed.)");

    // ---- Vector statistics
    k.def("sum", &ofVector<&k_Qal::Sum>, "v"_a, "k_Qal::Sum: the sum of the float64 array v.");
    k.def("sum2", &ofVector<&k_Qal::Sum2>, "v"_a, "k_Qal::Sum2: the sum of squares of the float64 array v.");
    k.def("sum_inv", &ofVector<&k_Qal::SumInv>, "v"_a,
          "k_Qal::SumInv: the sum of 1 / v[i], skipping |v[i]| <= 1e-25 and NaN.");
    k.def("sum_inv2", &ofVector<&k_Qal::SumInv2>, "v"_a,
          "k_Qal::SumInv2: the sum of 1 / v[i]**2, skipping |v[i]| <= 1e-25 and NaN.");
    k.def("sum_mult", &ofPair<double, &k_Qal::SumMult>, "a"_a, "b"_a,
          "k_Qal::SumMult: the sum of a[i] * b[i]; a and b of one length (ValueError otherwise).");
    k.def("sum_div", &ofPair<double, &k_Qal::SumDiv>, "a"_a, "b"_a,
          "k_Qal::SumDiv: the sum of a[i] / b[i], skipping |b[i]| <= 1e-25 and NaN; a and b of one length.");
    k.def("index_max_fraction", &ofPair<int, &k_Qal::IndexMaxFraction>, "a"_a, "b"_a,
          R"(k_Qal::IndexMaxFraction: the position of the first largest a[i] / b[i], skipping
|b[i]| < 1e-25 (exactly 1e-25 and NaN pass); -1 when none. a and b of one length.)");
    k.def("max_fraction", &ofPair<double, &k_Qal::MaxFraction>, "a"_a, "b"_a,
          R"(k_Qal::MaxFraction: the largest a[i] / b[i], skipping |b[i]| < 1e-25 (exactly 1e-25 and NaN
pass); -1e25 when none. a and b of one length.)");
    k.def("min_fraction", &ofPair<double, &k_Qal::MinFraction>, "a"_a, "b"_a,
          R"(k_Qal::MinFraction: the smallest a[i] / b[i], skipping |b[i]| < 1e-25 (exactly 1e-25 and NaN
pass); 1e25 when none. a and b of one length.)");
    k.def(
        "mean", [](py::handle v) { return moments<meanAndSpread>("k_qal.mean", v, types().meanSpread); }, "v"_a,
        R"(k_Qal::Mean: MeanSpread(mean, spread) of the float64 array v, spread the sample standard
deviation (0.0 for one element). Raises TooFewPointsError for an empty array (the C++ function
answers false).)");
    k.def(
        "n_variance", [](py::handle v) { return moments<&k_Qal::NVariance>("k_qal.n_variance", v, types().meanSquares); },
        "v"_a,
        R"(k_Qal::NVariance: MeanSquares(mean, squares), the mean and the plain sum of squared
deviations of the float64 array v. Raises TooFewPointsError for an empty array (the C++
function answers false).)");
    k.def("min", &located<&k_Qal::Min>, "v"_a,
          R"(k_Qal::Min: Located(index, value) of the first smallest element (a NaN never replaces one, a
NaN at 0 stays); (-1, 0.0) for an empty array.)");
    k.def("max", &located<&k_Qal::Max>, "v"_a,
          R"(k_Qal::Max: Located(index, value) of the first largest element (a NaN never replaces one, a
NaN at 0 stays); (-1, 0.0) for an empty array.)");
    k.def(
        "lin_cor_coef",
        [](py::handle x, py::handle y, py::handle scale) {
            Vec<double> xs = vec<double>(x, "x");
            Vec<double> ys = vec<double>(y, "y");
            Vec<double> s = vec<double>(scale, "scale");
            sameLength("x", xs.n, "y", ys.n);
            sameLength("x", xs.n, "scale", s.n);
            py::gil_scoped_release nogil;
            t_QalVector<double> vx = toVector(xs);
            t_QalVector<double> vy = toVector(ys);
            t_QalVector<double> vs = toVector(s);
            return k_Qal::LinCorCoef(vx, vy, vs);
        },
        "x"_a, "y"_a, "scale"_a,
        R"(k_Qal::LinCorCoef: the correlation of x and y with their deviations divided by scale[i]
(the means unscaled); 0.0 when empty or a root of the squared deviations is below 1e-25.
x, y and scale of one length.)");

    // ---- Gauss-Jordan elimination
    k.def(
        "gauss_jordan",
        [](py::handle a, py::handle b) {
            Mat in = mat(a, "a");
            if (in.rows != in.cols) {
                throw py::value_error("a must be square, got " + std::to_string(in.rows) + " x " +
                                      std::to_string(in.cols));
            }
            const int n = in.rows;
            Mat rhs = b.is_none() ? Mat{py::none(), nullptr, n, 0} : mat(b, "b");
            sameLength("a (rows)", n, "b (rows)", rhs.rows);
            const int columns = rhs.cols;
            py::array_t<double> inverse({n, n});
            py::array_t<double> solutions({n, columns});
            double* inverseData = inverse.mutable_data();
            double* solutionData = solutions.mutable_data();
            int result;
            bool allNaN = false;
            {
                py::gil_scoped_release nogil;
                t_QalMatrix<double> ma = toMatrix(in);
                t_QalMatrix<double> mb = rhs.data ? toMatrix(rhs) : t_QalMatrix<double>(n, 0);
                try {
                    result = k_Qal::GaussJordan(ma, n, mb, columns);
                } catch (const k_QalExceptionIndex& e) {
                    // With the sizes checked, only a pivot search among NaNs alone raises (-1).
                    allNaN = true;
                    result = e.m_index;
                }
                if (!allNaN && result == 0) {
                    fromMatrix(ma, inverseData, n, n);
                    fromMatrix(mb, solutionData, n, columns);
                }
            }
            if (allNaN) throw py::value_error("a: every candidate of a pivot search is NaN");
            if (result != 0) raiseStatus(result, "k_qal.gauss_jordan");
            return types().gaussJordan(inverse, solutions);
        },
        "a"_a, "b"_a = py::none(),
        R"(k_Qal::GaussJordan: GaussJordan(inverse, solutions) by Gauss-Jordan elimination with full
pivoting: the inverse of the square float64 matrix a and the solutions for the columns of the
float64 matrix b (as many rows as a; None for no right-hand side), new arrays. Among equal
pivot magnitudes the last met wins; a NaN is never taken.

Raises SingularMatrixError with status 2 (the C++ result) when a pivot's magnitude is below
1e-25; ValueError when every candidate of a pivot search is NaN.)");
}

}  // namespace qalpy
