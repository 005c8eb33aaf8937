#include "binding.h"

#include <cmath>
#include <limits>

namespace qalpy {

namespace {

ResultTypes g_types;

std::string dtypeText(const py::array& array) {
    return py::str(array.dtype()).cast<std::string>();
}

// The callable that trampoline() calls on this thread.
thread_local CallableScope* t_currentCallable = nullptr;

}  // namespace

py::array toArray(py::handle object, const char* name) {
    if (py::isinstance<py::array>(object)) return py::reinterpret_borrow<py::array>(object);
    if (object.is_none()) throw py::type_error(std::string(name) + " must be an array, not None");
    py::array array = py::array::ensure(object);
    if (!array) throw py::error_already_set();
    return array;
}

void raiseDtype(const char* name, const char* expected, const py::array& got) {
    throw py::type_error(std::string(name) + " must be a " + expected + " array, got dtype " + dtypeText(got) +
                         " (qallib converts no dtype)");
}

void raiseLength(const char* name, py::ssize_t size) {
    throw py::value_error(std::string(name) + " has " + std::to_string(size) +
                          " elements; the library counts in 32-bit ints (at most 2147483647)");
}

py::array contiguous(py::array array) {
    constexpr int wanted = py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_ | py::detail::npy_api::NPY_ARRAY_ALIGNED_;
    if ((array.flags() & wanted) == wanted) return array;
    py::array copy = py::array::ensure(array, wanted);
    if (!copy) throw py::error_already_set();
    return copy;
}

Mat mat(py::handle object, const char* name) {
    py::array array = toArray(object, name);
    if (!holds<double>(array)) raiseDtype(name, "float64", array);
    if (array.ndim() != 2) {
        throw py::value_error(std::string(name) + " must be two-dimensional, got " + std::to_string(array.ndim()) +
                              " dimensions");
    }
    if (array.shape(0) > INT_MAX || array.shape(1) > INT_MAX || array.size() > INT_MAX) {
        raiseLength(name, array.size());
    }
    array = contiguous(std::move(array));
    return {array, static_cast<const double*>(array.data()), static_cast<int>(array.shape(0)),
            static_cast<int>(array.shape(1))};
}

void sameLength(const char* nameA, int a, const char* nameB, int b) {
    if (a != b) {
        throw py::value_error(std::string(nameA) + " and " + nameB + " must have the same length, got " +
                              std::to_string(a) + " and " + std::to_string(b));
    }
}

void atLeast(const char* names, int n, int minimum) {
    if (n < minimum) {
        throw py::value_error(std::string(names) + " must hold at least " + std::to_string(minimum) +
                              (minimum == 1 ? " element" : " elements") + ", got " + std::to_string(n));
    }
}

py::object scalar(double value) {
    return py::float_(value);
}

py::object scalar(float value) {
    // A float widens to double exactly, and numpy.float32 of that double gives the float back.
    return g_types.float32(static_cast<double>(value));
}

const ResultTypes& types() {
    return g_types;
}

void loadTypes() {
    // The handles are leaked on purpose: they must outlive every call, and releasing them
    // after the interpreter has shut down would crash.
    py::module_ results = py::module_::import("qallib._types");
    auto get = [&](const char* name) { return py::object(results.attr(name)).release(); };
    g_types.point = get("Point");
    g_types.extremum = get("Extremum");
    g_types.line = get("Line");
    g_types.estimate = get("Estimate");
    g_types.lu = get("LUDecomposition");
    g_types.meanSpread = get("MeanSpread");
    g_types.curvature = get("Curvature");
    g_types.boundaries = get("Boundaries");
    g_types.sorted = get("Sorted");
    g_types.located = get("Located");
    g_types.repaired = get("Repaired");
    g_types.gaussJordan = get("GaussJordan");
    g_types.meanSquares = get("MeanSquares");
    g_types.extrema = get("Extrema");
    g_types.crossings = get("LevelCrossings");
    g_types.float32 = py::object(py::module_::import("numpy").attr("float32")).release();
}

void raiseStatus(int status, const char* function, py::object outputs) {
    py::object error = py::module_::import("qallib._errors").attr("_error_for")(status, function, outputs);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
    throw py::error_already_set();
}

CallableScope::CallableScope(py::object function, const char* name)
    : m_function(std::move(function)), m_outer(t_currentCallable) {
    if (!PyCallable_Check(m_function.ptr())) {
        throw py::type_error(std::string(name) + " must be callable with one float, got " +
                             py::str(py::type::handle_of(m_function)).cast<std::string>());
    }
    t_currentCallable = this;
}

CallableScope::~CallableScope() {
    t_currentCallable = m_outer;
}

double CallableScope::trampoline(double x) {
    CallableScope* scope = t_currentCallable;
    // After a failure the library gets NaN without further calls; the error is raised once
    // the C++ routine has returned and released its memory.
    if (scope == nullptr || scope->m_error) return std::numeric_limits<double>::quiet_NaN();
    try {
        return py::cast<double>(scope->m_function(x));
    } catch (...) {
        scope->m_error = std::current_exception();
        return std::numeric_limits<double>::quiet_NaN();
    }
}

void CallableScope::rethrowIfFailed() {
    if (m_error) std::rethrow_exception(m_error);
}

}  // namespace qalpy
