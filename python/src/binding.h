// What every binding file of the qallib module shares: taking NumPy arrays in (dtype
// checked, never cast; copied only when not contiguous), making the result arrays and
// named tuples, and turning a status into the matching Python exception.
//
// Rules of the binding layer:
// - Arguments are checked and the result arrays allocated while the GIL is held; the C++
//   call itself runs under py::gil_scoped_release in an inner scope, so that no Python
//   object is created or destroyed without the GIL.
// - A float32 array goes to the float twin, a float64 one to the double routine. Nothing
//   is converted: a dtype the routine cannot take raises TypeError naming the argument.
// - Shapes and lengths are checked before the library reads an element (ValueError).
#ifndef QALLIB_PY_BINDING_H
#define QALLIB_PY_BINDING_H

#include <climits>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "qal/qal.h"

namespace qalpy {

namespace py = pybind11;
using namespace pybind11::literals;

// ---- Arrays in -------------------------------------------------------------------------

template <class T>
const char* dtypeName();
template <>
inline const char* dtypeName<float>() { return "float32"; }
template <>
inline const char* dtypeName<double>() { return "float64"; }
template <>
inline const char* dtypeName<int>() { return "int32"; }

// An ndarray as it is; any other sequence through numpy.asarray without a dtype, so that a
// list of floats becomes float64 and a list of ints int64 (which the checks then refuse).
py::array toArray(py::handle object, const char* name);

// The dtype of `array` is T in native byte order.
template <class T>
bool holds(const py::array& array) {
    return py::detail::npy_api::get().PyArray_EquivTypes_(array.dtype().ptr(), py::dtype::of<T>().ptr());
}

[[noreturn]] void raiseDtype(const char* name, const char* expected, const py::array& got);
[[noreturn]] void raiseLength(const char* name, py::ssize_t size);

// A one-dimensional, C-contiguous, aligned array of T, read-only. The array object keeps
// the data alive while the pointer is in use.
template <class T>
struct Vec {
    py::object array;  // None for an optional array not given
    const T* data;
    int n;
};

// Copies a non-contiguous or misaligned array (its own dtype kept).
py::array contiguous(py::array array);

template <class T>
Vec<T> vec(py::handle object, const char* name) {
    py::array array = toArray(object, name);
    if (!holds<T>(array)) raiseDtype(name, dtypeName<T>(), array);
    if (array.ndim() != 1) {
        throw py::value_error(std::string(name) + " must be one-dimensional, got " +
                              std::to_string(array.ndim()) + " dimensions");
    }
    if (array.size() > INT_MAX) raiseLength(name, array.size());
    array = contiguous(std::move(array));
    return {array, static_cast<const T*>(array.data()), static_cast<int>(array.size())};
}

// As vec, but None gives an empty Vec with a null pointer (an optional array).
template <class T>
Vec<T> optionalVec(py::handle object, const char* name) {
    if (object.is_none()) return {py::none(), nullptr, 0};
    return vec<T>(object, name);
}

// ValueError unless the two arrays have the same length.
void sameLength(const char* nameA, int a, const char* nameB, int b);

// A curve: x and y of one length (ValueError otherwise).
template <class T>
struct CurveOf {
    Vec<T> x;
    Vec<T> y;
};
template <class T>
CurveOf<T> curveOf(py::handle x, py::handle y) {
    CurveOf<T> c{vec<T>(x, "x"), vec<T>(y, "y")};
    sameLength("x", c.x.n, "y", c.y.n);
    return c;
}

// A square or rectangular two-dimensional float64 array, C-contiguous.
struct Mat {
    py::object array;
    const double* data;
    int rows;
    int cols;
};
Mat mat(py::handle object, const char* name);

// Calls f(float{}) for a float32 array and f(double{}) for a float64 one; TypeError
// naming the argument for any other dtype.
template <class R>
py::object asObject(R&& result) {
    if constexpr (std::is_base_of_v<py::handle, std::decay_t<R>>) {
        return py::object(std::forward<R>(result));
    } else {
        return py::cast(std::forward<R>(result));
    }
}

template <class F>
py::object byDtype(py::handle object, const char* name, F&& f) {
    py::array array = toArray(object, name);
    if (holds<float>(array)) return asObject(f(float{}));
    if (holds<double>(array)) return asObject(f(double{}));
    raiseDtype(name, "float32 or float64", array);
}

// ValueError unless the array holds at least `minimum` elements (for the routines that
// report a short array as QAL_ERR_MEMORY, a code Python keeps for allocation failures).
void atLeast(const char* names, int n, int minimum);

// ---- Results out -----------------------------------------------------------------------

template <class T>
py::array_t<T> newArray(py::ssize_t n) {
    return py::array_t<T>(n);
}
template <class T>
py::array_t<T> newArray(py::ssize_t n, T fill) {
    py::array_t<T> array(n);
    T* data = array.mutable_data();
    for (py::ssize_t i = 0; i < n; ++i) data[i] = fill;
    return array;
}

// A float result as a Python float, a float32 one as numpy.float32 (its dtype kept).
py::object scalar(double value);
py::object scalar(float value);

// The named tuples of qallib._types, fetched once when the module is loaded and kept for
// the life of the interpreter.
struct ResultTypes {
    py::handle point;        // (x, y)
    py::handle extremum;     // (x, y, kind)
    py::handle line;         // (intercept, slope)
    py::handle estimate;     // (value, error_estimate)
    py::handle lu;           // (lu, pivots, sign)
    py::handle meanSpread;   // (mean, spread)
    py::handle curvature;    // (first_derivative, second_derivative)
    py::handle boundaries;   // (lower, upper)
    py::handle sorted;       // (keys, second, third)
    py::handle located;      // (index, value)
    py::handle repaired;     // (value, changed)
    py::handle gaussJordan;  // (inverse, solutions)
    py::handle meanSquares;  // (mean, squares)
    py::handle extrema;      // arrays (start, index, kind, x, y, vertex_x, vertex_y)
    py::handle crossings;    // arrays (index, x, y, cross_x, cross_y)
    py::handle float32;      // numpy.float32
};
const ResultTypes& types();
void loadTypes();

// ---- Elementwise functions (scalar in, scalar out; array in, array of its shape out) ---

// Python numbers (and NumPy scalars) take the scalar path; arrays, lists and tuples the
// elementwise one.
inline bool isScalar(py::handle object) {
    return !py::isinstance<py::array>(object) && !py::isinstance<py::list>(object) &&
           !py::isinstance<py::tuple>(object);
}

struct Elements {
    py::array array;
    std::vector<py::ssize_t> shape;
    bool given = false;  // false for a number in place of an array
};

template <class T>
Elements elements(py::handle object, const char* name) {
    py::array array = toArray(object, name);
    if (!holds<T>(array)) raiseDtype(name, dtypeName<T>(), array);
    array = contiguous(std::move(array));
    return {array, std::vector<py::ssize_t>(array.shape(), array.shape() + array.ndim()), true};
}

template <class T, class F>
py::object unary(py::handle x, const char* name, F f) {
    if (isScalar(x)) return scalar(f(py::cast<T>(x)));
    Elements in = elements<T>(x, name);
    py::array_t<T> out(in.shape);
    const T* source = static_cast<const T*>(in.array.data());
    T* target = out.mutable_data();
    const py::ssize_t count = in.array.size();
    {
        py::gil_scoped_release nogil;
        for (py::ssize_t i = 0; i < count; ++i) target[i] = f(source[i]);
    }
    return std::move(out);
}

// Two scalars give a scalar; otherwise arrays of one shape, or an array and a scalar.
template <class T, class F>
py::object binary(py::handle a, const char* nameA, py::handle b, const char* nameB, F f) {
    if (isScalar(a) && isScalar(b)) return scalar(f(py::cast<T>(a), py::cast<T>(b)));
    Elements first;
    Elements second;
    T constantA{};
    T constantB{};
    if (isScalar(a)) {
        constantA = py::cast<T>(a);
    } else {
        first = elements<T>(a, nameA);
    }
    if (isScalar(b)) {
        constantB = py::cast<T>(b);
    } else {
        second = elements<T>(b, nameB);
    }
    if (first.given && second.given && first.shape != second.shape) {
        throw py::value_error(std::string(nameA) + " and " + nameB + " must have the same shape");
    }
    py::array_t<T> out(first.given ? first.shape : second.shape);
    const T* sourceA = first.given ? static_cast<const T*>(first.array.data()) : nullptr;
    const T* sourceB = second.given ? static_cast<const T*>(second.array.data()) : nullptr;
    T* target = out.mutable_data();
    const py::ssize_t count = out.size();
    {
        py::gil_scoped_release nogil;
        for (py::ssize_t i = 0; i < count; ++i) {
            target[i] = f(sourceA ? sourceA[i] : constantA, sourceB ? sourceB[i] : constantB);
        }
    }
    return std::move(out);
}

// ---- Statuses --------------------------------------------------------------------------

// Raises the exception of qallib._errors that belongs to `status`, naming the function and
// carrying `outputs`: what the C++ routine left in its outputs, in the form the Python
// function returns on success, or None when nothing useful stands there.
[[noreturn]] void raiseStatus(int status, const char* function, py::object outputs = py::none());

// ---- Callables -------------------------------------------------------------------------

// The library calls plain double(double) pointers without a context. A CallableScope makes
// `function` the target of trampoline() on this thread for its lifetime (nested scopes
// restore the outer one). A Python exception inside the callable is kept, the library gets
// NaN from then on without another call, and rethrow() raises it after the C++ call.
class CallableScope {
public:
    CallableScope(py::object function, const char* name);
    ~CallableScope();
    CallableScope(const CallableScope&) = delete;
    CallableScope& operator=(const CallableScope&) = delete;

    static double trampoline(double x);
    void rethrowIfFailed();

private:
    py::object m_function;
    std::exception_ptr m_error;
    CallableScope* m_outer;
};

// ---- Registration ----------------------------------------------------------------------
void registerArith(py::module_& m);
void registerSolversLines(py::module_& m);
void registerInterpolation(py::module_& m);
void registerSmoothing(py::module_& m);
void registerCurves(py::module_& m);
void registerClasses(py::module_& m);
// The many-curves calls (2-D arrays, one status per row).
void registerBatch(py::module_& m);

}  // namespace qalpy

#endif  // QALLIB_PY_BINDING_H
