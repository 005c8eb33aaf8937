// Guarded scalar functions, array statistics, ordered search and sort, the parity tests.
#include <algorithm>
#include <cmath>
#include <vector>

#include "binding.h"

namespace qalpy {

namespace {

const char* const kElementwise =
    "\n\nx is a number (the result is a float) or a float64 array of any shape (the result is a new "
    "array of that shape, computed element by element). Never raises a QalError.";

}  // namespace

void registerArith(py::module_& m) {
    // ---- Guarded scalar functions
    m.def("exp", [](py::handle x) { return unary<double>(x, "x", QAL_exp); }, "x"_a,
          (std::string("QAL_exp: exp(x); 1e25 for x > 30 (a very negative x underflows to 0).") + kElementwise)
              .c_str());
    m.def("log", [](py::handle x) { return unary<double>(x, "x", QAL_log); }, "x"_a,
          (std::string("QAL_log: natural logarithm; -30.0 below 1e-25 (every negative x too), 30.0 above 1e25.") +
           kElementwise)
              .c_str());
    m.def("log10", [](py::handle x) { return unary<double>(x, "x", QAL_log10); }, "x"_a,
          (std::string("QAL_log10: decimal logarithm; -30.0 below 1e-25 (every negative x too), 30.0 above 1e25.") +
           kElementwise)
              .c_str());
    m.def("pow10", [](py::handle x) { return unary<double>(x, "x", QAL_pow10); }, "x"_a,
          (std::string("QAL_pow10: 10 to the power x; 1e25 for x > 30, 0.0 for x < -25.") + kElementwise).c_str());
    m.def("sqrt", [](py::handle x) { return unary<double>(x, "x", QAL_sqrt); }, "x"_a,
          (std::string("QAL_sqrt: signed root of x rounded to float32 first: -sqrt(-x) below 0, else sqrt(x); "
                       "a float64 result of float32 precision.") +
           kElementwise)
              .c_str());
    m.def(
        "pow",
        [](py::handle x, py::handle y) {
            return binary<double>(x, "x", y, "y", [](double a, double b) { return QAL_pow(a, b); });
        },
        "x"_a, "y"_a,
        R"(QAL_pow: x to the power y with guarded results, the first case that applies:
1.0 for x > 1e25 and y == 0; -1.0 for x < -1e25 and y == 0; 1e25 for 0 ** 0; 0.0 for x < 0 and
a y that is not whole (NaN, infinite); 1e25 for y > 1 and |x| > 1e25 ** (1/y); 0.0 for y < -1 and
|x| > 1e25 ** (1/|y|); 1e25 for x < 1, y < -1 and 1/x > 1e25 ** (1/|y|); else pow(x, y).

x and y are numbers or float64 arrays of one shape (or one array and one number). Never
raises a QalError.)");
    m.def(
        "mult",
        [](py::handle a, py::handle b) {
            return binary<float>(a, "a", b, "b", [](float p, float q) { return QAL_mult(p, q); });
        },
        "a"_a, "b"_a,
        R"(QAL_mult: a * b formed exactly in double and rounded to float32; a product above 1e25 gives
the float32 image of 1e25 (9.99999956e24), one below -1e25 its negative.

a and b are float32 in C++: numbers are rounded to float32 first and the result is a
numpy.float32; arrays must be float32 (one shape, or one array and one number).)");
    m.def(
        "calc_log",
        [](py::handle source, short mode) {
            Vec<float> in = vec<float>(source, "source");
            if (in.n == 0) return py::array_t<float>(0);
            float* logs = nullptr;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_CalcLog(&logs, in.data, in.n, mode);
            }
            if (logs == nullptr) raiseStatus(status, "calc_log");
            // The array from QAL_CalcLog becomes the result's memory, released with it.
            py::capsule owner(logs, [](void* memory) { QAL_ReleaseArray(static_cast<float*>(memory)); });
            py::array_t<float> result(in.n, logs, owner);
            if (status != QAL_OK) raiseStatus(status, "calc_log");
            return result;
        },
        "source"_a, "mode"_a = 0,
        R"(QAL_CalcLog: decimal logarithms of the float32 array source by log10 (-30 below 1e-25), rounded
to float32; a new float32 array.

mode 1 demands at most one descent of the logarithms (a flat step is none), mode 2 strictly
rising logarithms, the first above -30; any other mode tests nothing.

Raises LogSequenceError when the order breaks (the C++ routine does not tell where, so no
outputs are carried), AllocationError when the array cannot be allocated.)");

    // ---- Array statistics
    m.def(
        "sum_of",
        [](py::handle values) {
            return byDtype(values, "values", [&](auto tag) {
                using T = decltype(tag);
                Vec<T> in = vec<T>(values, "values");
                double sum;
                {
                    py::gil_scoped_release nogil;
                    sum = QAL_SumOf(in.data, in.n);
                }
                return sum;
            });
        },
        "values"_a,
        R"(QAL_SumOf: the sum of values in index order from 0.0 in a float64 accumulator (float32
elements are widened exactly), returned as a float; 0.0 for more than 9999 elements.
Never raises a QalError.)");
    m.def(
        "mean",
        [](py::handle values) {
            Vec<double> in = vec<double>(values, "values");
            double mean = 0.0;
            double spread = 0.0;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_Mean(in.data, in.n, &mean, &spread);
            }
            if (status != QAL_OK) raiseStatus(status, "mean");
            return types().meanSpread(mean, spread);
        },
        "values"_a,
        R"(QAL_Mean: MeanSpread(mean, spread) of the float64 array values: the mean (sum / n) and the
sample standard deviation about it, of float32 precision (0.0 for one element).

Raises ParameterError for an empty array.)");
    m.def(
        "sum_square_residuen",
        [](py::handle values) {
            Vec<double> in = vec<double>(values, "values");
            py::gil_scoped_release nogil;
            return QAL_SumSquareResiduen(in.data, in.n);
        },
        "values"_a,
        R"(QAL_SumSquareResiduen: the sum of squared deviations about the mean by one pass
(squares - sum * sum / n; may come out slightly negative by cancellation); 0.0 for an empty
array. Never raises a QalError.)");
    m.def(
        "normalize",
        [](py::handle values) {
            Vec<double> in = vec<double>(values, "values");
            py::array_t<double> out(in.n);
            double* data = out.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                std::copy(in.data, in.data + in.n, data);
                status = QAL_Normalize(data, in.n);
            }
            if (status != QAL_OK) raiseStatus(status, "normalize");
            return out;
        },
        "values"_a,
        R"(QAL_Normalize: a new float64 array, values divided by their sum (sum_of).

Raises ZeroDenominatorError when that sum is exactly 0.0, so also for an empty array and
for more than 9999 elements (a tiny or NaN sum is divided by).)");

    // ---- Ordered search and sort
    m.def(
        "locate_value",
        [](double value, py::handle x) {
            Vec<double> xs = vec<double>(x, "x");
            int index = 0;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_LocateValue(value, xs.data, xs.n, &index);
            }
            if (status != QAL_OK) raiseStatus(status, "locate_value", py::int_(index));
            return index;
        },
        "value"_a, "x"_a,
        R"(QAL_LocateValue: the position of value in the monotonic float64 array x (ascending when
x[-1] > x[0]; equal ends count as descending), by a bisection that may end one position off
the enclosing interval on either side. An element equal to value is found only when the
bisection lands on it; a NaN ends the search at the middle it meets.

Raises TooFewPointsError for fewer than 2 elements (outputs 0), OutOfRangeError at or
beyond x[0] (outputs 0) or x[-1] (outputs len(x) - 1).)");
    m.def(
        "find_abs_values",
        [](double value, py::handle x, py::handle y) {
            auto [xs, ys] = curveOf<double>(x, y);
            double xOut = NAN;
            double yOut = NAN;
            int status;
            {
                py::gil_scoped_release nogil;
                status = QAL_FindAbsValues(value, xs.data, ys.data, xs.n, &xOut, &yOut);
            }
            if (status != QAL_OK) {
                raiseStatus(status, "find_abs_values",
                            status == QAL_ERR_OUT_OF_RANGE && xs.n > 0 ? types().point(xOut, yOut) : py::none());
            }
            return types().point(xOut, yOut);
        },
        "value"_a, "x"_a, "y"_a,
        R"(QAL_FindAbsValues: the stored Point(x, y) at the position locate_value gives for value, no
interpolation.

Raises ParameterError for empty arrays; OutOfRangeError at or beyond either end of an
ascending x, carrying that end point in .outputs; a failing search (TooFewPointsError, or
OutOfRangeError for a NaN value with one point) with no outputs.)");
    m.def(
        "sort_straight_insert",
        [](py::handle keys, py::handle second, py::handle third) {
            Vec<float> k = vec<float>(keys, "keys");
            Vec<float> s = optionalVec<float>(second, "second");
            Vec<int> t = optionalVec<int>(third, "third");
            if (s.data) sameLength("keys", k.n, "second", s.n);
            if (t.data) sameLength("keys", k.n, "third", t.n);
            atLeast("keys", k.n, 1);
            py::array_t<float> keysOut(k.n);
            py::object secondOut = py::none();
            py::object thirdOut = py::none();
            float* secondData = nullptr;
            int* thirdData = nullptr;
            if (s.data) {
                py::array_t<float> array(s.n);
                secondData = array.mutable_data();
                secondOut = array;
            }
            if (t.data) {
                py::array_t<int> array(t.n);
                thirdData = array.mutable_data();
                thirdOut = array;
            }
            float* keysData = keysOut.mutable_data();
            int status;
            {
                py::gil_scoped_release nogil;
                std::copy(k.data, k.data + k.n, keysData);
                if (secondData) std::copy(s.data, s.data + s.n, secondData);
                if (thirdData) std::copy(t.data, t.data + t.n, thirdData);
                status = QAL_SortStraightInsert(keysData, secondData, thirdData, k.n, 0);
            }
            if (status != QAL_OK) raiseStatus(status, "sort_straight_insert");
            return types().sorted(keysOut, secondOut, thirdOut);
        },
        "keys"_a, "second"_a = py::none(), "third"_a = py::none(),
        R"(QAL_SortStraightInsert: Sorted(keys, second, third), new arrays: the float32 keys in stable
ascending order by straight insertion, the optional companions (float32 second, int32 third,
each as long as keys, or None) moved with them. An element moves left only past strictly
greater keys, so a NaN key stays where it is and stops the others. Quadratic in the worst case.

ValueError for an empty keys array (QAL_ERR_MEMORY in C++).)");
    m.def("is_even", &QAL_IsEven, "value"_a,
          "QAL_IsEven: True when the lowest bit of the int is 0 (-4 is even, -3 is not).");
    m.def("is_odd", &QAL_IsOdd, "value"_a, "QAL_IsOdd: True when the lowest bit of the int is 1 (-3 is odd).");
}

}  // namespace qalpy
