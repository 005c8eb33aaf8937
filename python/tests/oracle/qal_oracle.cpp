// The C++ side of the Python package's comparisons. Reads one request per line from stdin,
// runs the named library function on it and prints one line: the status (0 for functions
// that answer with a value) and every output, as raw bits, so the Python tests compare the
// package with the library to the last bit, NaN payloads and signed zeros included.
//
// Tokens, separated by spaces: i<decimal int>, d<16 hex digits> a double's bits,
// f<8 hex digits> a float's bits, D/F/I followed by comma-separated elements (an array of
// doubles, floats or ints; empty after the letter for none), N a null pointer.
// Outputs are preset as the Python package presets them (NaN, and 0 for a kind).
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "qal/qal_curves.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float kNaNf = std::numeric_limits<float>::quiet_NaN();

using Doubles = std::vector<double>;
using Floats = std::vector<float>;
using Ints = std::vector<int>;

// Empty arrays keep a valid pointer, as NumPy's do: only N gives a null one.
template <class T>
T* ptr(std::vector<T>& v) {
    if (v.capacity() == 0) v.reserve(1);
    return v.data();
}
template <class T>
int len(const std::vector<T>& v) {
    return static_cast<int>(v.size());
}

class Request {
public:
    explicit Request(std::istringstream& line) : m_line(line) {}

    int i() { return std::stoi(token('i')); }
    double d() { return fromBits<double, std::uint64_t>(token('d')); }
    float f() { return fromBits<float, std::uint32_t>(token('f')); }
    Doubles D() { return list<double>('D', [](const std::string& t) { return fromBits<double, std::uint64_t>(t); }); }
    Floats F() { return list<float>('F', [](const std::string& t) { return fromBits<float, std::uint32_t>(t); }); }
    Ints I() { return list<int>('I', [](const std::string& t) { return std::stoi(t); }); }
    // An optional array: N for a null pointer.
    bool null() {
        const std::streampos at = m_line.tellg();
        std::string t;
        m_line >> t;
        if (t == "N") return true;
        m_line.seekg(at);
        return false;
    }

private:
    std::string token(char kind) {
        std::string t;
        if (!(m_line >> t) || t.empty() || t[0] != kind) throw std::runtime_error(std::string("expected ") + kind);
        return t.substr(1);
    }
    template <class T, class Bits>
    static T fromBits(const std::string& hex) {
        const Bits bits = static_cast<Bits>(std::stoull(hex, nullptr, 16));
        T value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    template <class T, class Parse>
    std::vector<T> list(char kind, Parse parse) {
        std::vector<T> values;
        std::stringstream elements(token(kind));
        for (std::string t; std::getline(elements, t, ',');) values.push_back(parse(t));
        return values;
    }

    std::istringstream& m_line;
};

class Reply {
public:
    Reply& i(int value) { return put("i" + std::to_string(value)); }
    Reply& d(double value) { return put("d" + bits<std::uint64_t>(value)); }
    Reply& f(float value) { return put("f" + bits<std::uint32_t>(value)); }
    Reply& D(const Doubles& v) { return list('D', v, [](double e) { return bits<std::uint64_t>(e); }); }
    Reply& F(const Floats& v) { return list('F', v, [](float e) { return bits<std::uint32_t>(e); }); }
    Reply& I(const Ints& v) { return list('I', v, [](int e) { return std::to_string(e); }); }
    std::string text() const { return m_text; }

private:
    template <class Bits, class T>
    static std::string bits(T value) {
        Bits b;
        std::memcpy(&b, &value, sizeof b);
        char hex[17];
        std::snprintf(hex, sizeof hex, sizeof b == 8 ? "%016llx" : "%08llx", static_cast<unsigned long long>(b));
        return hex;
    }
    template <class T, class Format>
    Reply& list(char kind, const std::vector<T>& v, Format format) {
        std::string t(1, kind);
        for (std::size_t k = 0; k < v.size(); ++k) t += (k ? "," : "") + format(v[k]);
        return put(t);
    }
    Reply& put(const std::string& token) {
        m_text += (m_text.empty() ? "" : " ") + token;
        return *this;
    }
    std::string m_text;
};

using Handler = std::function<void(Request&, Reply&)>;

// The callables of the integration, root and Ridder tests; the Python tests pass the same
// arithmetic as lambdas.
double cube(double t) { return t * t * t; }
double shifted(double t) { return t - 0.3; }
double nothing(double) { return kNaN; }
double (*callable(int which))(double) {
    return which == 0 ? &cube : which == 1 ? &shifted : &nothing;
}

t_QalVector<double> vector(const Doubles& v) {
    t_QalVector<double> result(len(v));
    for (int k = 0; k < len(v); ++k) result(k) = v[static_cast<std::size_t>(k)];
    return result;
}

// ---- Handlers shared by twins and by functions of one shape

template <double (*F)(double)>
void unary(Request& q, Reply& r) {
    r.i(0).d(F(q.d()));
}

template <int (*F)(const double*, const double*, int, double*, double*)>
void pointSearch(Request& q, Reply& r) {
    Doubles x = q.D(), y = q.D();
    double xOut = kNaN, yOut = kNaN;
    r.i(F(ptr(x), ptr(y), len(x), &xOut, &yOut)).d(xOut).d(yOut);
}

template <int (*F)(const double*, const double*, int, double*, double*, int, int, int, float)>
void driver(Request& q, Reply& r) {
    Doubles x = q.D(), y = q.D();
    const int window = q.i(), kind = q.i(), useVertex = q.i();
    const float minHeight = q.f();
    double xOut = kNaN, yOut = kNaN;
    r.i(F(ptr(x), ptr(y), len(x), &xOut, &yOut, window, kind, useVertex, minHeight)).d(xOut).d(yOut);
}

template <double (*F)(t_QalVector<double>&)>
void ofVector(Request& q, Reply& r) {
    t_QalVector<double> v = vector(q.D());
    r.i(0).d(F(v));
}

template <class R, R (*F)(t_QalVector<double>&, t_QalVector<double>&)>
void ofPair(Request& q, Reply& r) {
    t_QalVector<double> a = vector(q.D()), b = vector(q.D());
    if constexpr (std::is_same_v<R, int>) {
        r.i(0).i(F(a, b));
    } else {
        r.i(0).d(F(a, b));
    }
}

template <int (*F)(const double*, const double*, int, double, double*, double*)>
void tableau(Request& q, Reply& r) {
    Doubles x = q.D(), y = q.D();
    double value = kNaN, error = kNaN;
    r.i(F(ptr(x), ptr(y), len(x), q.d(), &value, &error)).d(value).d(error);
}

template <int (*F)(const double*, const double*, const double*, int, double, double*)>
void splinePoint(Request& q, Reply& r) {
    Doubles x = q.D(), y = q.D(), y2 = q.D();
    double out = kNaN;
    r.i(F(ptr(x), ptr(y), ptr(y2), len(x), q.d(), &out)).d(out);
}

// The float twins take the same arguments as their double routines; T picks the array kind.
template <class T>
std::vector<T> arrayOf(Request& q) {
    if constexpr (std::is_same_v<T, float>) {
        return q.F();
    } else {
        return q.D();
    }
}
template <class T>
T scalarOf(Request& q) {
    if constexpr (std::is_same_v<T, float>) {
        return q.f();
    } else {
        return q.d();
    }
}
template <class T>
Reply& put(Reply& r, T value) {
    if constexpr (std::is_same_v<T, float>) {
        return r.f(value);
    } else {
        return r.d(value);
    }
}
template <class T>
Reply& put(Reply& r, const std::vector<T>& values) {
    if constexpr (std::is_same_v<T, float>) {
        return r.F(values);
    } else {
        return r.D(values);
    }
}

template <class T, void (*F)(const T*, const T*, int, T*, T*)>
void fit(Request& q, Reply& r) {
    std::vector<T> x = arrayOf<T>(q), y = arrayOf<T>(q);
    T intercept = 0, slope = 0;
    F(ptr(x), ptr(y), len(x), &intercept, &slope);
    put(put(r.i(0), intercept), slope);
}

template <class T, T (*F)(T, const T*, const T*, int)>
void alongLine(Request& q, Reply& r) {
    const T value = scalarOf<T>(q);
    std::vector<T> x = arrayOf<T>(q), y = arrayOf<T>(q);
    put(r.i(0), F(value, ptr(x), ptr(y), len(x)));
}

template <class T, int (*F)(const T*, T*, int, int, int, int, int, int)>
void filter(Request& q, Reply& r) {
    std::vector<T> in = arrayOf<T>(q);
    const int first = q.i(), last = q.i(), kind = q.i(), width = q.i(), degree = q.i();
    std::vector<T> out = in;
    const int status = F(ptr(in), ptr(out), len(in), first, last, kind, width, degree);
    r.i(status);
    if (status == QAL_OK) put(r, out);
}

// The float routine writes its widened copies back into x and y: both get non-const arrays.
template <class T, class X, int (*F)(X*, X*, T*, int, int, int, int)>
void derivative(Request& q, Reply& r) {
    std::vector<T> x = arrayOf<T>(q), y = arrayOf<T>(q);
    const int method = q.i(), order = q.i(), span = q.i();
    std::vector<T> deriv(x.size(), std::numeric_limits<T>::quiet_NaN());
    const int status = F(ptr(x), ptr(y), ptr(deriv), len(x), method, order, span);
    r.i(status);
    if (status == QAL_OK) put(r, deriv);
}

template <class T, bool (*F)(T&)>
void repair(Request& q, Reply& r) {
    T value = scalarOf<T>(q);
    const bool changed = F(value);
    put(r.i(0), value).i(changed);
}

template <bool (*F)(t_QalVector<double>&, double&, double&)>
void moments(Request& q, Reply& r) {
    t_QalVector<double> v = vector(q.D());
    double first = kNaN, second = kNaN;
    const bool done = F(v, first, second);
    r.i(done ? QAL_OK : QAL_ERR_TOO_FEW_POINTS);
    if (done) r.d(first).d(second);
}

bool meanAndSpread(t_QalVector<double>& v, double& mean, double& spread) {
    return k_Qal::Mean(v, mean, spread);
}

template <int (*F)(t_QalVector<double>&, double&)>
void located(Request& q, Reply& r) {
    t_QalVector<double> v = vector(q.D());
    double extreme = kNaN;
    const int index = F(v, extreme);
    r.i(0).i(index).d(extreme);
}

template <class T>
void sumOf(Request& q, Reply& r) {
    std::vector<T> v = arrayOf<T>(q);
    r.i(0).d(QAL_SumOf(ptr(v), len(v)));
}

const std::map<std::string, Handler>& handlers() {
    static const std::map<std::string, Handler> table = {
        // ---- Guarded arithmetic
        {"QAL_exp", unary<QAL_exp>},
        {"QAL_log", unary<QAL_log>},
        {"QAL_log10", unary<QAL_log10>},
        {"QAL_pow10", unary<QAL_pow10>},
        {"QAL_sqrt", unary<QAL_sqrt>},
        {"QAL_pow", [](Request& q, Reply& r) { const double x = q.d(); r.i(0).d(QAL_pow(x, q.d())); }},
        {"QAL_mult", [](Request& q, Reply& r) { const float a = q.f(); r.i(0).f(QAL_mult(a, q.f())); }},
        {"QAL_CalcLog",
         [](Request& q, Reply& r) {
             Floats source = q.F();
             const short mode = static_cast<short>(q.i());
             float* logs = nullptr;
             const int status = QAL_CalcLog(&logs, ptr(source), len(source), mode);
             r.i(status);
             if (status == QAL_OK) r.F(logs ? Floats(logs, logs + source.size()) : Floats());
             QAL_ReleaseArray(logs);
         }},
        {"QAL_SumOf", sumOf<double>},
        {"QAL_SumOfFloat", sumOf<float>},
        {"QAL_Mean",
         [](Request& q, Reply& r) {
             Doubles v = q.D();
             double mean = 0.0, spread = 0.0;
             r.i(QAL_Mean(ptr(v), len(v), &mean, &spread)).d(mean).d(spread);
         }},
        {"QAL_SumSquareResiduen",
         [](Request& q, Reply& r) { Doubles v = q.D(); r.i(0).d(QAL_SumSquareResiduen(ptr(v), len(v))); }},
        {"QAL_Normalize", [](Request& q, Reply& r) { Doubles v = q.D(); r.i(QAL_Normalize(ptr(v), len(v))).D(v); }},
        {"QAL_LocateValue",
         [](Request& q, Reply& r) {
             const double value = q.d();
             Doubles x = q.D();
             int index = 0;
             r.i(QAL_LocateValue(value, ptr(x), len(x), &index)).i(index);
         }},
        {"QAL_FindAbsValues",
         [](Request& q, Reply& r) {
             const double value = q.d();
             Doubles x = q.D(), y = q.D();
             double xOut = kNaN, yOut = kNaN;
             r.i(QAL_FindAbsValues(value, ptr(x), ptr(y), len(x), &xOut, &yOut)).d(xOut).d(yOut);
         }},
        {"QAL_SortStraightInsert",
         [](Request& q, Reply& r) {
             Floats keys = q.F();
             const bool noSecond = q.null();
             Floats second = noSecond ? Floats() : q.F();
             const bool noThird = q.null();
             Ints third = noThird ? Ints() : q.I();
             r.i(QAL_SortStraightInsert(ptr(keys), noSecond ? nullptr : ptr(second), noThird ? nullptr : ptr(third),
                                        len(keys), 0));
             r.F(keys);
             if (!noSecond) r.F(second);
             if (!noThird) r.I(third);
         }},
        {"QAL_IsEven", [](Request& q, Reply& r) { r.i(0).i(QAL_IsEven(q.i())); }},
        {"QAL_IsOdd", [](Request& q, Reply& r) { r.i(0).i(QAL_IsOdd(q.i())); }},

        // ---- Solvers
        {"QAL_LUDecomposition",
         [](Request& q, Reply& r) {
             const int n = q.i();
             Doubles a = q.D();
             std::vector<double*> rows;
             for (int k = 0; k < n; ++k) rows.push_back(a.data() + k * n);
             Ints pivots(static_cast<std::size_t>(n));
             double sign = 1.0;
             const int status = QAL_LUDecomposition(ptr(rows), n, ptr(pivots), &sign);
             r.i(status);
             if (status == QAL_OK) r.D(a).I(pivots).d(sign);
         }},
        {"QAL_LUSolveEqua",
         [](Request& q, Reply& r) {
             const int n = q.i();
             Doubles a = q.D();
             Ints pivots = q.I();
             Doubles b = q.D();
             std::vector<const double*> rows;
             for (int k = 0; k < n; ++k) rows.push_back(a.data() + k * n);
             r.i(QAL_LUSolveEqua(ptr(rows), n, ptr(pivots), ptr(b))).D(b);
         }},
        {"k_Qal::GaussJordan",
         [](Request& q, Reply& r) {
             const int n = q.i(), m = q.i();
             Doubles a = q.D(), b = q.D();
             t_QalMatrix<double> ma(n, n), mb(n, m);
             for (int i = 0; i < n; ++i) {
                 for (int j = 0; j < n; ++j) ma(i, j) = a[static_cast<std::size_t>(i * n + j)];
                 for (int j = 0; j < m; ++j) mb(i, j) = b[static_cast<std::size_t>(i * m + j)];
             }
             const int result = k_Qal::GaussJordan(ma, n, mb, m);
             r.i(result);
             if (result != 0) return;
             for (int i = 0; i < n; ++i) {
                 for (int j = 0; j < n; ++j) a[static_cast<std::size_t>(i * n + j)] = ma(i, j);
                 for (int j = 0; j < m; ++j) b[static_cast<std::size_t>(i * m + j)] = mb(i, j);
             }
             r.D(a).D(b);
         }},

        // ---- Lines
        {"QAL_LinFit", fit<double, QAL_LinFit>},
        {"QAL_LinFitFloat", fit<float, QAL_LinFitFloat>},
        {"QAL_CalcLinX", alongLine<double, QAL_CalcLinX>},
        {"QAL_CalcLinXFloat", alongLine<float, QAL_CalcLinXFloat>},
        {"QAL_CalcLinY", alongLine<double, QAL_CalcLinY>},
        {"QAL_CalcLinYFloat", alongLine<float, QAL_CalcLinYFloat>},
        {"QAL_StraightLineIntersection",
         [](Request& q, Reply& r) {
             const float i1 = q.f(), s1 = q.f(), i2 = q.f(), s2 = q.f();
             float xCross = kNaNf, yCross = kNaNf;
             r.i(QAL_StraightLineIntersection(&xCross, &yCross, i1, s1, i2, s2)).f(xCross).f(yCross);
         }},
        {"QAL_LinearRegression",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             double intercept = 0.0, slope = 0.0;
             // 1 means done: the Python package reports 0 as too few points.
             const int done = QAL_LinearRegression(ptr(x), ptr(y), len(x), &intercept, &slope);
             r.i(done ? QAL_OK : QAL_ERR_TOO_FEW_POINTS);
             if (done) r.d(intercept).d(slope);
         }},
        {"QAL_LinearRegressionFloat",
         [](Request& q, Reply& r) {
             Floats x = q.F(), y = q.F();
             float intercept = 0.0f, slope = 0.0f;
             r.i(QAL_LinearRegressionFloat(ptr(x), ptr(y), len(x), &intercept, &slope)).f(intercept).f(slope);
         }},

        // ---- Interpolation
        {"QAL_Splines",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const double first = q.d(), last = q.d();
             Doubles y2(x.size(), kNaN);
             const int status = QAL_Splines(ptr(x), ptr(y), len(x), first, last, ptr(y2));
             r.i(status);
             if (status == QAL_OK) r.D(y2);
         }},
        {"QAL_CubicSplineInterpolation", splinePoint<QAL_CubicSplineInterpolation>},
        {"QAL_FirstDerivative", splinePoint<QAL_FirstDerivative>},
        {"QAL_SecondDerivative", splinePoint<QAL_SecondDerivative>},
        {"QAL_Interpol",
         [](Request& q, Reply& r) {
             const double xValue = q.d();
             Doubles x = q.D(), y = q.D();
             const bool noTable = q.null();
             Doubles y2 = noTable ? Doubles() : q.D();
             double out = kNaN;
             r.i(QAL_Interpol(&out, xValue, ptr(x), ptr(y), noTable ? nullptr : ptr(y2), len(x), q.i())).d(out);
         }},
        {"QAL_InterpolFloatArrays",
         [](Request& q, Reply& r) {
             Floats x = q.F(), y = q.F(), xNew = q.F();
             const int option = q.i();
             Floats yNew(xNew.size(), q.f());
             r.i(QAL_InterpolFloatArrays(ptr(x), ptr(y), len(x), ptr(xNew), ptr(yNew), len(xNew), option)).F(yNew);
         }},
        {"QAL_CheckInOutArrays",
         [](Request& q, Reply& r) {
             Floats values = q.F(), upper = q.F();
             const bool noLower = q.null();
             Floats lower = noLower ? Floats() : q.F();
             int count = -1;
             const int status =
                 QAL_CheckInOutArrays(ptr(values), noLower ? nullptr : ptr(lower), ptr(upper), len(values), &count);
             r.i(status);
             if (status == QAL_OK) r.i(count);
         }},
        {"QAL_PolynomialInterpolation", tableau<QAL_PolynomialInterpolation>},
        {"QAL_RationialInterpolation", tableau<QAL_RationialInterpolation>},
        {"QAL_AkimaSub",
         [](Request& q, Reply& r) {
             Floats x = q.F(), y = q.F();
             Floats slopes(x.size(), kNaNf);
             const int status = QAL_AkimaSub(ptr(x), ptr(y), ptr(slopes), len(x));
             r.i(status);
             if (status == QAL_OK) r.F(slopes);
         }},

        // ---- Smoothing
        {"QAL_SavitzkyGolayCoeffizient",
         [](Request& q, Reply& r) {
             const int count = q.i(), left = q.i(), right = q.i(), deriv = q.i(), poly = q.i();
             Doubles coef(static_cast<std::size_t>(count > 0 ? count : 0), kNaN);
             const int status = QAL_SavitzkyGolayCoeffizient(ptr(coef), count, left, right, deriv, poly);
             r.i(status);
             if (status == QAL_OK) r.D(coef);
         }},
        {"QAL_SetFilterCoefficients",
         [](Request& q, Reply& r) {
             const int kind = q.i(), width = q.i(), degree = q.i();
             Doubles coef(static_cast<std::size_t>(width > 0 ? width : 0), kNaN);
             const int status = QAL_SetFilterCoefficients(ptr(coef), kind, width, degree);
             r.i(status);
             if (status == QAL_OK || status == QAL_ERR_ZERO_DIVISION) r.D(coef);
         }},
        {"QAL_FilterArray", filter<double, QAL_FilterArray>},
        {"QAL_FilterFloatArray", filter<float, QAL_FilterFloatArray>},
        {"QAL_DerivArray", derivative<double, const double, QAL_DerivArray>},
        {"QAL_DerivFloatArray", derivative<float, float, QAL_DerivFloatArray>},
        {"QAL_FirstDerivativeRidder",
         [](Request& q, Reply& r) {
             double (*func)(double) = callable(q.i());
             const double xValue = q.d(), step = q.d();
             double error = kNaN;
             const double value = QAL_FirstDerivativeRidder(func, xValue, step, &error);
             r.i(0).d(value).d(error);
         }},
        {"QAL_FirstDerivativeGolay",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             r.i(0).d(QAL_FirstDerivativeGolay(ptr(x), ptr(y), len(x), q.d()));
         }},
        {"QAL_FirstDerivativeLinReg",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int span = q.i();
             r.i(0).d(QAL_FirstDerivativeLinReg(ptr(x), ptr(y), len(x), span, q.d()));
         }},
        {"QAL_Kruemmung",
         [](Request& q, Reply& r) {
             Floats x = q.F(), y = q.F();
             Floats first(x.size(), kNaNf), second(x.size(), kNaNf);
             r.i(QAL_Kruemmung(ptr(x), ptr(y), ptr(first), ptr(second), len(x))).F(first).F(second);
         }},
        {"QAL_Kruemmung2",
         [](Request& q, Reply& r) {
             Floats x = q.F(), y = q.F();
             const int gap = q.i(), chord = q.i();
             Floats result(x.size(), kNaNf);
             r.i(QAL_Kruemmung2(ptr(x), ptr(y), ptr(result), len(x), gap, chord)).F(result);
         }},

        // ---- Curve analysis
        {"QAL_GetExtremum",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int useVertex = q.i();
             const float minHeight = q.f();
             double xOut = kNaN, yOut = kNaN;
             int kind = 0;
             r.i(QAL_GetExtremum(ptr(x), ptr(y), len(x), &xOut, &yOut, &kind, useVertex, minHeight)).d(xOut).d(yOut);
             if (kind != 0) r.i(kind);
         }},
        {"QAL_GetNextExtremum", driver<QAL_GetNextExtremum>},
        {"QAL_GetRangeExtremum", driver<QAL_GetRangeExtremum>},
        {"QAL_GetAutoRangeExtremum", driver<QAL_GetAutoRangeExtremum>},
        {"QAL_GetAutoExtremum",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int kind = q.i(), useVertex = q.i();
             const float minHeight = q.f();
             double xOut = kNaN, yOut = kNaN;
             r.i(QAL_GetAutoExtremum(ptr(x), ptr(y), len(x), &xOut, &yOut, kind, useVertex, minHeight)).d(xOut).d(yOut);
         }},
        {"QAL_FindX_at_YThreshold",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int kind = q.i(), direction = q.i(), mode = q.i();
             const float threshold = q.f(), percent = q.f();
             double xOut = kNaN, yOut = kNaN;
             r.i(QAL_FindX_at_YThreshold(ptr(x), ptr(y), len(x), kind, direction, mode, threshold, percent, &xOut,
                                         &yOut))
                 .d(xOut)
                 .d(yOut);
         }},
        {"QAL_GetY_at_XDiff",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int direction = q.i(), mode = q.i();
             const float xDiff = q.f();
             double xOut = kNaN, yOut = kNaN;
             r.i(QAL_GetY_at_XDiff(ptr(x), ptr(y), len(x), 0, direction, mode, xDiff, &xOut, &yOut)).d(xOut).d(yOut);
         }},
        {"QAL_Find_LastPoint",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             double xOut = kNaN, yOut = kNaN;
             r.i(QAL_Find_LastPoint(ptr(x), ptr(y), len(x), 0, 0, &xOut, &yOut)).d(xOut).d(yOut);
         }},
        {"QAL_Calc_AbsMaximum", pointSearch<QAL_Calc_AbsMaximum>},
        {"QAL_Calc_AbsMinimum", pointSearch<QAL_Calc_AbsMinimum>},
        {"QAL_CalcBoundaries",
         [](Request& q, Reply& r) {
             Floats base = q.F();
             const bool noSpread = q.null();
             Floats spread = noSpread ? Floats() : q.F();
             const int upperMode = q.i();
             const float upperValue = q.f();
             const int lowerMode = q.i();
             const float lowerValue = q.f();
             Floats lower(base.size(), kNaNf), upper(base.size(), kNaNf);
             r.i(QAL_CalcBoundaries(ptr(base), noSpread ? nullptr : ptr(spread), ptr(lower), ptr(upper), len(base),
                                    upperMode, upperValue, lowerMode, lowerValue))
                 .F(lower)
                 .F(upper);
         }},
        {"qal::findExtrema",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const int window = q.i();
             const float minHeight = q.f();
             const std::vector<qal::Extremum> hits = qal::findExtrema(ptr(x), ptr(y), len(x), window, minHeight);
             Ints start, index, kind;
             Doubles xs, ys, vx, vy;
             for (const qal::Extremum& e : hits) {
                 start.push_back(e.start), index.push_back(e.index), kind.push_back(e.kind);
                 xs.push_back(e.x), ys.push_back(e.y), vx.push_back(e.vertexX), vy.push_back(e.vertexY);
             }
             r.i(0).I(start).I(index).I(kind).D(xs).D(ys).D(vx).D(vy);
         }},
        {"qal::findLevelCrossings",
         [](Request& q, Reply& r) {
             Doubles x = q.D(), y = q.D();
             const float level = q.f();
             Ints index;
             Doubles xs, ys, cx, cy;
             for (const qal::LevelCrossing& c : qal::findLevelCrossings(ptr(x), ptr(y), len(x), level)) {
                 index.push_back(c.index), xs.push_back(c.x), ys.push_back(c.y);
                 cx.push_back(c.crossX), cy.push_back(c.crossY);
             }
             r.i(0).I(index).D(xs).D(ys).D(cx).D(cy);
         }},
        {"QAL_Trapez",
         [](Request& q, Reply& r) {
             double (*func)(double) = callable(q.i());
             const double lower = q.d(), upper = q.d();
             const int stages = q.i();
             r.i(0);
             for (int stage = 1; stage <= stages; ++stage) r.d(QAL_Trapez(func, lower, upper, stage));
         }},
        {"QAL_RootBisection",
         [](Request& q, Reply& r) {
             double (*func)(double) = callable(q.i());
             const double x1 = q.d(), x2 = q.d();
             r.i(0).d(QAL_RootBisection(func, x1, x2, q.d()));
         }},

        // ---- k_Qal
        {"k_Qal::Power", [](Request& q, Reply& r) { const double x = q.d(); r.i(0).d(k_Qal::Power(x, q.d())); }},
        {"k_Qal::Log", unary<k_Qal::Log>},
        {"k_Qal::Sqrt", unary<k_Qal::Sqrt>},
        {"k_Qal::InfRepair", repair<double, k_Qal::InfRepair>},
        {"k_Qal::InfRepairFloat", repair<float, k_Qal::InfRepair>},
        {"k_Qal::ZeroRepair", repair<double, k_Qal::ZeroRepair>},
        {"k_Qal::ZeroRepairFloat", repair<float, k_Qal::ZeroRepair>},
        {"k_Qal::Sum", ofVector<k_Qal::Sum>},
        {"k_Qal::Sum2", ofVector<k_Qal::Sum2>},
        {"k_Qal::SumInv", ofVector<k_Qal::SumInv>},
        {"k_Qal::SumInv2", ofVector<k_Qal::SumInv2>},
        {"k_Qal::SumMult", ofPair<double, k_Qal::SumMult>},
        {"k_Qal::SumDiv", ofPair<double, k_Qal::SumDiv>},
        {"k_Qal::IndexMaxFraction", ofPair<int, k_Qal::IndexMaxFraction>},
        {"k_Qal::MaxFraction", ofPair<double, k_Qal::MaxFraction>},
        {"k_Qal::MinFraction", ofPair<double, k_Qal::MinFraction>},
        {"k_Qal::Mean", moments<meanAndSpread>},
        {"k_Qal::NVariance", moments<k_Qal::NVariance>},
        {"k_Qal::Min", located<k_Qal::Min>},
        {"k_Qal::Max", located<k_Qal::Max>},
        {"k_Qal::LinCorCoef",
         [](Request& q, Reply& r) {
             t_QalVector<double> x = vector(q.D()), y = vector(q.D()), scale = vector(q.D());
             r.i(0).d(k_Qal::LinCorCoef(x, y, scale));
         }},
    };
    return table;
}

}  // namespace

int main() {
    std::ios::sync_with_stdio(false);
    for (std::string text; std::getline(std::cin, text);) {
        std::istringstream line(text);
        std::string name;
        line >> name;
        const auto handler = handlers().find(name);
        if (handler == handlers().end()) {
            std::cerr << "qal_oracle: unknown function " << name << '\n';
            return 2;
        }
        Request request(line);
        Reply reply;
        try {
            handler->second(request, reply);
        } catch (const std::exception& e) {
            std::cerr << "qal_oracle: bad request for " << name << ": " << e.what() << '\n';
            return 2;
        }
        std::cout << reply.text() << '\n' << std::flush;
    }
    return 0;
}
