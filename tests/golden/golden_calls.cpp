// The calls behind the golden hashes: every exported function and overload, on seeded
// ordinary data and on the hard cases (NaN, infinities, signed zeros, subnormals, the
// 1e-25 / 1e25 / 1e15 limits and their neighbours, equal and descending abscissae, bad
// pointers and counts, raised indices). Outputs start as sentinels, so an output that a
// call leaves alone is recorded as such. Adding or reordering calls changes the hashes:
// regenerate the expected files then (see README).
#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "golden/golden_record.h"
#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "qal/qal_curves.h"
#include "qal/version.h"

namespace qal::golden {
namespace {

using Vd = std::vector<double>;
using Vf = std::vector<float>;
using Vi = std::vector<int>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr float kNaNf = std::numeric_limits<float>::quiet_NaN();
constexpr float kInff = std::numeric_limits<float>::infinity();
constexpr double kSentinel = -123.25;
constexpr float kSentinelF = -123.25f;
constexpr int kSentinelI = -12345;
constexpr int kNoRaise = INT_MIN;

double up(double v) { return std::nextafter(v, kInf); }
double down(double v) { return std::nextafter(v, -kInf); }
float upF(float v) { return std::nextafter(v, kInff); }
float downF(float v) { return std::nextafter(v, -kInff); }

Vd specials() {
    return {kNaN,      kInf,        -kInf,     0.0,       -0.0,       0x1p-1074, -0x1p-1074,  0x1.8p-1030, DBL_MIN,
            1e-25,     down(1e-25), up(1e-25), -1e-25,    1e25,       down(1e25), up(1e25),  -1e25,       1e15,
            down(1e15), up(1e15),   -1e15,     1e-8,      1.0,        -1.0,       0.5,       2.0,         3.0,
            0.1,       30.0,        up(30.0),  -30.0,     -25.0,      down(-25.0), 1e300,    -1e300,      DBL_MAX,
            -DBL_MAX};
}

Vf specialsF() {
    return {kNaNf,  kInff,  -kInff, 0.0f,   -0.0f,          0x1p-149f, -0x1p-149f, FLT_MIN, 1e-25f,
            downF(1e-25f), upF(1e-25f), -1e-25f, 1e25f, downF(1e25f), upF(1e25f), -1e25f, 1e15f, 1e-8f,
            1.0f,   -1.0f,  0.5f,   2.0f,   3.0f,           0.1f,      30.0f,      -30.0f,  3e38f,
            FLT_MAX, -FLT_MAX};
}

std::string label(const char* what, int index) { return std::string(what) + " " + std::to_string(index); }

int count(const Vd& v) { return static_cast<int>(v.size()); }
int count(const Vf& v) { return static_cast<int>(v.size()); }

Vf narrow(const Vd& v) {
    Vf out(v.size());
    for (std::size_t i = 0; i < v.size(); ++i) out[i] = static_cast<float>(v[i]);
    return out;
}

// Abscissae rising by steps of 0.5 to 1.5 times `step` from `start`.
Vd ascending(Rng& g, int n, double start, double step) {
    Vd x(static_cast<std::size_t>(n < 1 ? 1 : n));  // never an empty array: a count of 0 still gets a pointer
    double at = start;
    for (double& v : x) {
        v = at;
        at += step * g.uniform(0.5, 1.5);
    }
    return x;
}

// A curve with two bumps and some noise over x; rational terms only, no library maths.
Vd bumpy(Rng& g, const Vd& x, double noise) {
    const double c1 = g.uniform(x.front(), x.back()), c2 = g.uniform(x.front(), x.back());
    const double w = (x.back() - x.front()) * 0.1 + 1e-3;
    Vd y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double a = (x[i] - c1) / w, b = (x[i] - c2) / w;
        y[i] = 5.0 / (1.0 + a * a) - 3.0 / (1.0 + b * b) + noise * g.uniform(-1.0, 1.0);
    }
    return y;
}

// Replaces `n` random elements by random hard values.
template <class T>
void spoil(Rng& g, std::vector<T>& v, const std::vector<T>& hard, int n) {
    for (int k = 0; k < n && !v.empty(); ++k) {
        const int at = g.below(static_cast<int>(v.size()));
        v[static_cast<std::size_t>(at)] = hard[static_cast<std::size_t>(g.below(static_cast<int>(hard.size())))];
    }
}

template <class Call>
int raisedIndex(Call call) {
    try {
        call();
    } catch (const k_QalExceptionIndex& e) {
        return e.m_index;
    }
    return kNoRaise;
}

template <class Call>
bool raisesInvalidArgument(Call call) {
    try {
        call();
    } catch (const std::invalid_argument&) {
        return true;
    }
    return false;
}

// The caller's functions of the derivative, integration and root families: rational,
// so that no platform library enters them.
double cubic(double x) { return ((x - 1.5) * x - 2.0) * x + 0.25; }
double bell(double x) { return 1.0 / (1.0 + x * x); }
double steep(double x) { return 1.0 / (x - 0.3); }
double alwaysNaN(double) { return kNaN; }
double step(double x) { return x < 0.7 ? -1.0 : x * x; }
double (*const kFunctions[])(double) = {cubic, bell, steep, alwaysNaN, step};

// ---- Frame: module, containers, raw matrices, conversion -------------------------

void frame(Recorder& r, Rng& g) {
    r.family("frame");
    r.begin("module");
    InitQalLibExtDLL();
    r.put(true);

    const int dims[][2] = {{1, 1},       {2, 3},    {5, 1},        {0, 1},        {1, 0},
                           {-1, 5},      {5, -1},   {INT_MIN, 2},  {65536, 65536}, {1000, 600000},
                           {46341, 46341}};
    for (const auto& d : dims) {
        r.begin("NewMatrix " + std::to_string(d[0]) + "x" + std::to_string(d[1]));
        double** m = QAL_NewMatrix(d[0], d[1]);
        r.put(m != nullptr);
        if (m == nullptr) continue;
        for (int i = 0; i < d[0]; ++i)
            for (int j = 0; j < d[1]; ++j) m[i][j] = i * 10.0 + j;
        for (int k = 0; k < d[0] * d[1]; ++k) r.put(m[0][k]);  // one block, row after row
        QAL_DeleteMatrix(m, d[0], d[1]);
    }
    QAL_DeleteMatrix(nullptr, 2, 2);

    const Vd hard = specials();
    r.begin("Mt_Swap");
    for (std::size_t i = 0; i + 1 < hard.size(); i += 2) {
        double a = hard[i], b = hard[i + 1];
        QAL_Mt_Swap(&a, &b);
        r.put(a);
        r.put(b);
    }

    // Widening and narrowing, over random floats, the float limits and doubles beyond them.
    const Vf hardF = specialsF();
    const Vd narrowing = {1e39, -1e39, 0x1p-150, 0x1.8p-150, 0x1p-149, 0x1.7p-140, 3.4028235677973366e38,
                          up(3.4028235677973366e38), kNaN, -0.0, 1e-46, 0.1, 1.0 / 3.0};
    for (int n : {1, 7, 40}) {
        r.begin(label("F2D/D2F", n));
        Vf source(static_cast<std::size_t>(n));
        for (float& v : source) v = static_cast<float>(g.signedWide(-140, 120));
        spoil(g, source, hardF, n / 3);
        double* wide = nullptr;
        r.put(QAL_F2D(source.data(), n, &wide));
        r.put(wide, n);
        for (int i = 0; i < n; ++i) wide[i] = i % 2 == 0 ? narrowing[static_cast<std::size_t>(i) % narrowing.size()]
                                                         : wide[i] * (1.0 + 0x1p-30);
        Vf target(static_cast<std::size_t>(n), kSentinelF);
        r.put(QAL_D2F(target.data(), n, &wide));
        r.put(target);
    }
    r.begin("F2D/D2F refusals");
    const float three[3] = {1.0f, 2.0f, 3.0f};
    double* untouched = nullptr;
    r.put(QAL_F2D(nullptr, 3, &untouched));
    r.put(QAL_F2D(three, 0, &untouched));
    r.put(QAL_F2D(three, -1, &untouched));
    r.put(QAL_F2D(three, 3, nullptr));
    r.put(untouched == nullptr);
    r.put(QAL_F2D(three, INT_MAX, &untouched));  // saturated size: no memory
    r.put(untouched == nullptr);
    double* held = nullptr;
    r.put(QAL_F2D(three, 3, &held));
    float back[3] = {kSentinelF, kSentinelF, kSentinelF};
    r.put(QAL_D2F(nullptr, 3, &held));
    r.put(QAL_D2F(back, 0, &held));
    r.put(QAL_D2F(back, 3, nullptr));
    double* none = nullptr;
    r.put(QAL_D2F(back, 3, &none));
    r.put(back, 3);
    r.put(QAL_D2F(back, 3, &held));  // the held array is released here
    r.put(back, 3);

    r.begin("IsEven/IsOdd");
    for (int v : {0, 1, -1, 2, -2, -3, 7, INT_MIN, INT_MAX, INT_MIN + 1, 123456, -654321}) {
        r.put(QAL_IsEven(v));
        r.put(QAL_IsOdd(v));
    }

    r.begin("vector<double>");
    t_QalVector<double> v(3);
    r.put(v.GetSize());
    for (int i = 0; i < 3; ++i) r.put(v(i));
    v(1) = -0.0;
    v(2) = kNaN;
    r.put(raisedIndex([&] { v(3) = 1.0; }));
    r.put(raisedIndex([&] { v(-1) = 1.0; }));
    r.put(raisedIndex([&] { v(INT_MIN) = 1.0; }));
    v.SetSize(6);
    r.put(v.GetSize());
    for (int i = 0; i < 6; ++i) r.put(v(i));
    r.put(raisesInvalidArgument([&] { v.SetSize(-2); }));
    r.put(v.GetSize());
    t_QalVector<double> copy(v);
    copy(0) = 2.5;
    t_QalVector<double> moved(std::move(copy));
    t_QalVector<double> assigned(1);
    assigned = v;
    t_QalVector<double> moveAssigned(2);
    moveAssigned = std::move(moved);
    r.put(v(0));
    r.put(assigned.GetSize());
    r.put(assigned(5));
    r.put(moveAssigned.GetSize());
    r.put(moveAssigned(0));
    v.SetSize(0);
    r.put(v.GetSize());
    r.put(raisedIndex([&] { v(0) = 1.0; }));
    r.put(raisesInvalidArgument([] { t_QalVector<double> bad(-1); }));

    r.begin("vector<int>");
    t_QalVector<int> vi(2);
    r.put(vi(0));
    r.put(vi(1));
    vi(1) = 7;
    vi.SetSize(4);
    r.put(vi(1));
    r.put(vi(3));
    r.put(raisedIndex([&] { vi(4) = 1; }));
    t_QalVector<int> viCopy(vi), viMoved(std::move(viCopy)), viAssigned(9);
    viAssigned = viMoved;
    viMoved = std::move(viAssigned);
    r.put(viMoved.GetSize());
    r.put(viMoved(1));
    r.put(raisesInvalidArgument([&] { vi.SetSize(INT_MIN); }));
    r.put(vi.GetSize());

    r.begin("matrix<double>");
    t_QalMatrix<double> m(2, 3);
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j) m(i, j) = g.uniform(-1.0, 1.0);
    r.put(raisedIndex([&] { m(2, 0) = 0.0; }));
    r.put(raisedIndex([&] { m(0, 3) = 0.0; }));
    r.put(raisedIndex([&] { m(-1, 7) = 0.0; }));  // the row is tested first
    r.put(raisedIndex([&] { m(1, -1) = 0.0; }));
    t_QalMatrix<double> mCopy(m);
    mCopy(0, 0) = 9.0;
    r.put(m(0, 0) == 9.0);
    t_QalMatrix<double> mMoved(std::move(mCopy));
    r.put(mMoved(0, 0));
    r.put(raisedIndex([&] { mCopy(0, 0) = 0.0; }));
    t_QalMatrix<double> mAssigned(1, 1);
    mAssigned = m;
    r.put(raisedIndex([&] { mAssigned(1, 2) = 4.0; }));
    r.put(mAssigned(1, 2));
    mAssigned = std::move(mMoved);
    r.put(mAssigned(0, 0));
    t_QalMatrix<double> empty, flat(0, 5);
    r.put(raisedIndex([&] { empty(0, 0) = 0.0; }));
    r.put(raisedIndex([&] { flat(0, 0) = 0.0; }));
    r.put(raisedIndex([] { t_QalMatrix<double> huge(100000, 100000); }));
    r.put(raisedIndex([] { t_QalMatrix<double> huge(30000, 30000); }));

    r.begin("exception and k_Qal");
    k_QalExceptionIndex e(42), eCopy(e), eMoved(std::move(eCopy));
    k_QalExceptionIndex eAssigned(-1);
    eAssigned = e;
    eAssigned = std::move(eMoved);
    r.put(eAssigned.m_index);
    for (int index : {42, -7, INT_MIN, INT_MAX}) {
        const std::wstring text = k_QalExceptionIndex(index).GetMessageW();
        r.put(static_cast<int>(text.size()));
        for (wchar_t c : text) r.put(static_cast<int>(c));  // wchar_t is 16 bits on Windows
    }
    k_Qal q, qCopy(q);
    q = qCopy;
    q = std::move(qCopy);
    r.put(true);
}

// ---- Guarded scalar functions ---------------------------------------------------------

template <class F>
void scalars(Recorder& r, const char* name, const Vd& inputs, bool libm, F f) {
    for (std::size_t i = 0; i < inputs.size(); i += 8) {
        r.begin(label(name, static_cast<int>(i / 8)), libm);
        for (std::size_t j = i; j < i + 8 && j < inputs.size(); ++j) r.put(f(inputs[j]));
    }
}

void guarded(Recorder& r, Rng& g) {
    r.family("guarded");
    Vd x = specials();
    for (int i = 0; i < 48; ++i) x.push_back(g.uniform(-40.0, 40.0));
    for (int i = 0; i < 48; ++i) x.push_back(g.signedWide(-100, 100));
    for (int i = 0; i < 16; ++i) x.push_back(g.wide(-1074, -1023));  // subnormal and near it
    scalars(r, "exp", x, true, [](double v) { return QAL_exp(v); });
    scalars(r, "log", x, true, [](double v) { return QAL_log(v); });
    scalars(r, "log10", x, true, [](double v) { return QAL_log10(v); });
    scalars(r, "pow10", x, true, [](double v) { return QAL_pow10(v); });
    scalars(r, "sqrt", x, false, [](double v) { return QAL_sqrt(v); });
    scalars(r, "k_Qal::Log", x, true, [](double v) { return k_Qal::Log(v); });
    scalars(r, "k_Qal::Sqrt", x, false, [](double v) { return k_Qal::Sqrt(v); });
    scalars(r, "k_Qal::InfRepair", x, false, [&r](double v) {
        const bool changed = k_Qal::InfRepair(v);
        r.put(changed);
        return v;
    });
    scalars(r, "k_Qal::ZeroRepair", x, false, [&r](double v) {
        const bool changed = k_Qal::ZeroRepair(v);
        r.put(changed);
        return v;
    });
    Vf xf = specialsF();
    for (int i = 0; i < 32; ++i) xf.push_back(static_cast<float>(g.signedWide(-140, 120)));
    r.begin("k_Qal::InfRepair/ZeroRepair float");
    for (float v : xf) {
        float a = v, b = v;
        r.put(k_Qal::InfRepair(a));
        r.put(a);
        r.put(k_Qal::ZeroRepair(b));
        r.put(b);
    }

    // Powers: the guards' grid, then random pairs.
    const Vd bases = {0.0,  -0.0,  1e-25, down(1e-25), -1e-25, 1e25,  up(1e25), down(1e25), -1e25, up(-1e25),
                      0.5,  2.0,   -2.0,  10.0,        1e12,   -1e12, 1e-12,    0x1p-1074,  kNaN,  kInf,
                      -kInf, 1e300, 1.0,  -1.0,        3.0,    1e5};
    const Vd exponents = {0.0, -0.0, 1.0, 2.0, -2.0, 0.5, 1.5, -1.5, 3.0, -3.0, 12.0, -12.0, 1e-30, -1e-30,
                          1e-25, down(1e-25), kNaN, kInf, -kInf, 25.0, 1.0000001, -1.0000001, 100.0};
    for (std::size_t i = 0; i < bases.size(); ++i) {
        r.begin(label("pow grid", static_cast<int>(i)), true);
        for (double e : exponents) r.put(QAL_pow(bases[i], e));
        r.begin(label("k_Qal::Power grid", static_cast<int>(i)), true);
        for (double e : exponents) r.put(k_Qal::Power(bases[i], e));
    }
    for (int c = 0; c < 12; ++c) {
        r.begin(label("pow random", c), true);
        for (int k = 0; k < 8; ++k) {
            const double b = g.uniform(-1.0, 1.0) < 0.0 ? -g.wide(-60, 60) : g.wide(-60, 60);
            const double e = c % 2 == 0 ? static_cast<double>(g.below(41) - 20) : g.uniform(-30.0, 30.0);
            r.put(QAL_pow(b, e));
            r.put(k_Qal::Power(b, e));
        }
    }

    r.begin("mult");
    const Vf factors = {0.0f, -0.0f, 1.0f, -1.0f, 3.16227766e12f, 3.16227778e12f, 1e13f, -1e13f, 1e-25f,
                        0x1p-149f, kNaNf, kInff, -kInff, 2.5f, 1e20f, 1e5f, 99999.99f, 1e12f};
    for (float a : factors)
        for (float b : factors) r.put(QAL_mult(a, b));
    r.begin("mult random");
    for (int k = 0; k < 64; ++k) {
        const float a = static_cast<float>(g.signedWide(-60, 60)), b = static_cast<float>(g.signedWide(-60, 60));
        r.put(QAL_mult(a, b));
    }

    // Logarithm arrays: each mode over rising, flat, falling and spoiled data.
    const Vf rising = {1e-30f, 1e-25f, 0.5f, 1.0f, 2.0f, 2.0f, 10.0f, 1e20f, 1e26f};
    const Vf falling = {100.0f, 10.0f, 20.0f, 5.0f, 50.0f, 1.0f, 0.1f};
    const Vf spoiled = {1.0f, kNaNf, 2.0f, -1.0f, 0.0f, 3.0f, kInff, 4.0f};
    Vf randomF(30);
    for (float& v : randomF) v = static_cast<float>(g.wide(-90, 90));
    int arrayIndex = 0;
    const Vf* const sources[] = {&rising, &falling, &spoiled, &randomF};
    for (const Vf* source : sources) {
        for (short mode : {short{0}, short{1}, short{2}, short{5}}) {
            r.begin(label("CalcLog", arrayIndex++), true);
            float* logs = nullptr;
            const int status = QAL_CalcLog(&logs, source->data(), count(*source), mode);
            r.put(status);
            // After a refused sequence only the logarithms up to the offending one exist.
            float previous = -30.0f;
            int descents = 0;
            for (int i = 0; i < count(*source); ++i) {
                r.put(logs[i]);
                if (status == QAL_OK) continue;
                if (mode == 1 && previous > logs[i] && ++descents > 1) break;
                if (mode == 2 && previous >= logs[i]) break;
                previous = logs[i];
            }
            QAL_ReleaseArray(logs);
        }
    }
    r.begin("CalcLog refusals");
    float* target = nullptr;
    r.put(QAL_CalcLog(&target, nullptr, 0, 1));
    r.put(QAL_CalcLog(&target, nullptr, 3, 1));
    r.put(QAL_CalcLog(nullptr, rising.data(), 3, 1));
    r.put(target == nullptr);
    r.put(QAL_CalcLog(&target, rising.data(), -4, 0));
    r.put(target == nullptr);
    QAL_ReleaseArray(nullptr);
}

// ---- Vector statistics ----------------------------------------------------------------

t_QalVector<double> toVector(const Vd& values) {
    t_QalVector<double> v(count(values));
    for (int i = 0; i < count(values); ++i) v(i) = values[static_cast<std::size_t>(i)];
    return v;
}

void vectorStatistics(Recorder& r, Rng& g) {
    r.family("vector statistics");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 3 ? c : 2 + g.below(30);
        Vd a(static_cast<std::size_t>(n)), b(static_cast<std::size_t>(n + (c % 3) - 1 < 0 ? 0 : n + (c % 3) - 1));
        for (double& v : a) v = g.uniform(-10.0, 10.0);
        for (double& v : b) v = c % 4 == 0 ? g.signedWide(-90, 80) : g.uniform(-3.0, 3.0);
        if (c >= 8) spoil(g, a, hard, 1 + c % 3);
        if (c >= 12) spoil(g, b, hard, 1 + c % 2);
        t_QalVector<double> va = toVector(a), vb = toVector(b), scale = toVector(b);
        r.begin(label("vectors", c));
        r.put(k_Qal::Sum(va));
        r.put(k_Qal::Sum2(va));
        r.put(k_Qal::SumMult(va, vb));
        r.put(k_Qal::SumDiv(va, vb));
        r.put(k_Qal::SumInv(vb));
        r.put(k_Qal::SumInv2(vb));
        double mean = kSentinel, spread = kSentinel, squares = kSentinel, extreme = kSentinel;
        r.put(k_Qal::Mean(va, mean));
        r.put(mean);
        mean = kSentinel;
        r.put(k_Qal::Mean(va, mean, spread));
        r.put(mean);
        r.put(spread);
        mean = kSentinel;
        r.put(k_Qal::NVariance(va, mean, squares));
        r.put(mean);
        r.put(squares);
        r.put(k_Qal::Min(va, extreme));
        r.put(extreme);
        extreme = kSentinel;
        r.put(k_Qal::Max(va, extreme));
        r.put(extreme);
        // A shorter b raises with the first index beyond it.
        int index = kSentinelI;
        r.put(raisedIndex([&] { index = k_Qal::IndexMaxFraction(va, vb); }));
        r.put(index);
        double fraction = kSentinel;
        r.put(raisedIndex([&] { fraction = k_Qal::MaxFraction(va, vb); }));
        r.put(fraction);
        fraction = kSentinel;
        r.put(raisedIndex([&] { fraction = k_Qal::MinFraction(va, vb); }));
        r.put(fraction);
        t_QalVector<double> y = toVector(b), sameSize = toVector(a);
        y.SetSize(n);
        fraction = kSentinel;
        r.put(raisedIndex([&] { fraction = k_Qal::LinCorCoef(va, y, scale); }));
        r.put(fraction);
        fraction = kSentinel;
        r.put(raisedIndex([&] { fraction = k_Qal::LinCorCoef(va, sameSize, y); }));
        r.put(fraction);
    }
    r.begin("fractions at the zero limit");
    t_QalVector<double> a = toVector({1.0, 2.0, -3.0, 4.0, 5.0, 6.0}),
                        b = toVector({1e-25, down(1e-25), -1e-25, kNaN, 0.0, up(-1e-25)});
    r.put(k_Qal::IndexMaxFraction(a, b));
    r.put(k_Qal::MaxFraction(a, b));
    r.put(k_Qal::MinFraction(a, b));
    r.put(k_Qal::SumDiv(a, b));
    r.put(k_Qal::SumInv(b));
    r.put(k_Qal::SumInv2(b));
}

// ---- Array sums, means and normalisation ----------------------------------------------

void arrayStatistics(Recorder& r, Rng& g) {
    r.family("array statistics");
    const Vd hard = specials();
    Vd big(10001);
    for (double& v : big) v = g.uniform(0.0, 1.0);
    const Vf bigF = narrow(big);
    for (int n : {-1, 0, 1, 2, 9999, 10000, 10001}) {
        r.begin(label("SumOf count", n));
        r.put(QAL_SumOf(big.data(), n));
        r.put(QAL_SumOf(bigF.data(), n));
        r.put(QAL_SumSquareResiduen(big.data(), n));
        Vd copy = big;
        r.put(QAL_Normalize(copy.data(), n));
        r.put(copy[0]);
        r.put(copy[static_cast<std::size_t>(n > 0 ? n - 1 : 0)]);
        double mean = kSentinel, spread = kSentinel;
        r.put(QAL_Mean(big.data(), n, &mean, &spread));
        r.put(mean);
        r.put(spread);
    }
    for (int c = 0; c < 20; ++c) {
        const int n = 1 + g.below(40);
        Vd v(static_cast<std::size_t>(n));
        for (double& e : v) e = c % 3 == 0 ? g.signedWide(-80, 80) : g.uniform(-5.0, 5.0) + 1e8 * (c % 2);
        if (c >= 10) spoil(g, v, hard, 1 + c % 3);
        const Vf vf = narrow(v);
        r.begin(label("arrays", c));
        r.put(QAL_SumOf(v.data(), n));
        r.put(QAL_SumOf(vf.data(), n));
        r.put(QAL_SumSquareResiduen(v.data(), n));
        double mean = kSentinel, spread = kSentinel;
        r.put(QAL_Mean(v.data(), n, &mean, &spread));
        r.put(mean);
        r.put(spread);
        mean = kSentinel;
        r.put(QAL_Mean(v.data(), n, &mean, nullptr));
        r.put(mean);
        r.put(QAL_Normalize(v.data(), n));
        r.put(v);
    }
    r.begin("refusals and zero sums");
    double mean = kSentinel;
    Vd cancel = {1.0, -1.0, 0.5, -0.5}, zeros = {0.0, -0.0};
    r.put(QAL_SumOf(static_cast<const double*>(nullptr), 3));
    r.put(QAL_SumOf(static_cast<const float*>(nullptr), 3));
    r.put(QAL_SumSquareResiduen(nullptr, 3));
    r.put(QAL_Mean(nullptr, 3, &mean, nullptr));
    r.put(QAL_Mean(cancel.data(), 4, nullptr, nullptr));
    r.put(QAL_Mean(cancel.data(), 0, &mean, nullptr));
    r.put(mean);
    r.put(QAL_Normalize(nullptr, 3));
    r.put(QAL_Normalize(cancel.data(), 4));
    r.put(QAL_Normalize(zeros.data(), 2));
    r.put(cancel);
    r.put(zeros);
}

// ---- Ordered search and sort ----------------------------------------------------------

void search(Recorder& r, Rng& g) {
    r.family("search");
    const Vd hard = specials();
    for (int c = 0; c < 30; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(60);
        Vd x = c % 5 == 0 ? ascending(g, n, 0.0, 1e-25) : ascending(g, n, g.uniform(-50.0, 50.0), 1.0);
        if (c % 4 == 1) std::reverse(x.begin(), x.end());  // descending
        if (c % 6 == 2 && n > 2) x[static_cast<std::size_t>(n / 2)] = x[static_cast<std::size_t>(n / 2 - 1)];
        if (c % 7 == 3) spoil(g, x, hard, 1);
        if (c % 9 == 4) x.assign(x.size(), 2.0);  // equal ends count as descending
        const Vd y = bumpy(g, x, 0.1);
        Vd values = {x.front(), x.back(), up(x.front()), down(x.back()), kNaN, -kInf, kInf};
        for (int k = 0; k < 8; ++k) values.push_back(x[static_cast<std::size_t>(g.below(n))]);
        for (int k = 0; k < 8; ++k) values.push_back(g.uniform(x.front() - 5.0, x.back() + 5.0));
        r.begin(label("locate", c));
        for (double value : values) {
            int index = kSentinelI;
            r.put(QAL_LocateValue(value, x.data(), n, &index));
            r.put(index);
            double xOut = kSentinel, yOut = kSentinel;
            r.put(QAL_FindAbsValues(value, x.data(), y.data(), n, &xOut, &yOut));
            r.put(xOut);
            r.put(yOut);
        }
    }
    r.begin("locate refusals");
    const Vd two = {0.0, 1.0};
    int index = kSentinelI;
    double out = kSentinel;
    r.put(QAL_LocateValue(0.5, nullptr, 2, &index));
    r.put(QAL_LocateValue(0.5, two.data(), 2, nullptr));
    r.put(QAL_LocateValue(0.5, two.data(), 1, &index));
    r.put(index);
    index = kSentinelI;
    r.put(QAL_LocateValue(0.5, two.data(), -3, &index));
    r.put(index);
    r.put(QAL_FindAbsValues(0.5, two.data(), nullptr, 2, &out, &out));
    r.put(QAL_FindAbsValues(0.5, two.data(), two.data(), 0, &out, &out));
    r.put(QAL_FindAbsValues(0.5, two.data(), two.data(), 2, nullptr, &out));
    r.put(out);

    const Vf hardF = specialsF();
    for (int c = 0; c < 12; ++c) {
        const int n = 1 + g.below(80);
        Vf keys(static_cast<std::size_t>(n)), second(keys.size());
        Vi third(keys.size());
        for (int i = 0; i < n; ++i) {
            keys[static_cast<std::size_t>(i)] = static_cast<float>(g.below(c % 2 == 0 ? 10 : 1000)) * 0.5f;
            second[static_cast<std::size_t>(i)] = static_cast<float>(i);
            third[static_cast<std::size_t>(i)] = -i;
        }
        if (c >= 6) spoil(g, keys, hardF, 2);
        r.begin(label("sort", c));
        r.put(QAL_SortStraightInsert(keys.data(), c % 3 == 0 ? nullptr : second.data(),
                                     c % 3 == 1 ? nullptr : third.data(), n, c));
        r.put(keys);
        r.put(second);
        r.put(third);
    }
    r.begin("sort refusals");
    float keys[2] = {2.0f, 1.0f};
    r.put(QAL_SortStraightInsert(nullptr, nullptr, nullptr, 2, 0));
    r.put(QAL_SortStraightInsert(keys, nullptr, nullptr, 0, 0));
    r.put(QAL_SortStraightInsert(keys, nullptr, nullptr, -1, 0));
    r.put(keys, 2);
}

// ---- LU decomposition and solve -------------------------------------------------------

void lu(Recorder& r, Rng& g) {
    r.family("lu");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = 1 + c % 7;
        double** a = QAL_NewMatrix(n, n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) a[i][j] = c % 5 == 4 ? g.signedWide(-80, 80) : g.uniform(-10.0, 10.0);
        if (c % 6 == 1) a[n - 1][0] = a[0][0];  // equal scaled candidates
        if (c % 6 == 2 && n > 1)
            for (int j = 0; j < n; ++j) a[1][j] = a[0][j] * 2.0;  // singular: a zero pivot goes on as 1e-25
        if (c % 6 == 3)
            for (int j = 0; j < n; ++j) a[n - 1][j] = j % 2 == 0 ? 0.0 : (c % 4 == 0 ? kNaN : -0.0);
        if (c % 6 == 5) {
            const int i = g.below(n), j = g.below(n);
            a[i][j] = hard[static_cast<std::size_t>(g.below(count(hard)))];
        }
        if (c == 18)
            for (int i = 0; i < n; ++i) a[i][0] = kNaN;  // no pivot can be taken in the first column
        Vi pivots(static_cast<std::size_t>(n), kSentinelI);
        double sign = kSentinel;
        r.begin(label("decompose and solve", c));
        const int status = QAL_LUDecomposition(a, n, pivots.data(), &sign);
        r.put(status);
        r.put(sign);
        r.put(pivots);
        for (int i = 0; i < n; ++i) r.put(a[i], n);
        for (int rhs = 0; rhs < 3 && status == QAL_OK; ++rhs) {  // a refused matrix leaves no exchanges to replay
            Vd b(static_cast<std::size_t>(n));
            for (double& v : b) v = rhs == 1 ? 0.0 : g.uniform(-5.0, 5.0);
            if (rhs == 1) b[static_cast<std::size_t>(n - 1)] = 1.0;  // leading zeros
            r.put(QAL_LUSolveEqua(a, n, pivots.data(), b.data()));
            r.put(b);
        }
        QAL_DeleteMatrix(a, n, n);
    }
    r.begin("zero diagonal and refusals");
    double** a = QAL_NewMatrix(3, 3);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) a[i][j] = i == j ? (i == 1 ? 0.0 : 2.0) : 0.5;
    const int identity[3] = {0, 1, 2};
    double b[3] = {1.0, 2.0, 3.0};
    r.put(QAL_LUSolveEqua(a, 3, identity, b));
    r.put(b, 3);
    r.put(QAL_LUSolveEqua(a, 0, identity, b));
    r.put(QAL_LUSolveEqua(a, -2, identity, b));
    r.put(b, 3);
    int pivots[3] = {kSentinelI, kSentinelI, kSentinelI};
    double sign = kSentinel;
    r.put(QAL_LUDecomposition(a, 3, nullptr, &sign));
    r.put(QAL_LUDecomposition(a, 3, pivots, nullptr));
    r.put(QAL_LUDecomposition(a, -1, pivots, &sign));
    r.put(sign);
    r.put(QAL_LUDecomposition(a, 0, pivots, &sign));
    r.put(sign);
    r.put(pivots, 3);
    QAL_DeleteMatrix(a, 3, 3);
}

// ---- Gauss-Jordan elimination ---------------------------------------------------------

void gaussJordan(Recorder& r, Rng& g) {
    r.family("gauss jordan");
    for (int c = 0; c < 18; ++c) {
        const int n = 1 + c % 6, m = 1 + c % 3;
        const int rowsA = c % 9 == 7 ? n - 1 : n, colsB = c % 9 == 8 ? m - 1 : m;
        t_QalMatrix<double> a(rowsA, n), b(n, colsB);
        for (int i = 0; i < rowsA; ++i)
            for (int j = 0; j < n; ++j) a(i, j) = g.uniform(-4.0, 4.0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < colsB; ++j) b(i, j) = g.uniform(-4.0, 4.0);
        if (c % 5 == 2 && n > 1 && rowsA == n)
            for (int j = 0; j < n; ++j) a(1, j) = a(0, j);  // a pivot below 1e-25
        if (c % 5 == 3 && rowsA == n)
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) a(i, j) = kNaN;  // every candidate NaN
        if (c % 5 == 4 && rowsA == n) a(n - 1, 0) = 1e-300;
        r.begin(label("solve", c));
        int result = kSentinelI;
        r.put(raisedIndex([&] { result = k_Qal::GaussJordan(a, n, b, m); }));
        r.put(result);
        for (int i = 0; i < rowsA; ++i)
            for (int j = 0; j < n; ++j) r.put(a(i, j));
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < colsB; ++j) r.put(b(i, j));
    }
    r.begin("negative order");
    t_QalMatrix<double> a(2, 2), b(2, 1);
    r.put(raisesInvalidArgument([&] { k_Qal::GaussJordan(a, -1, b, 1); }));
}

// ---- Linear regression ----------------------------------------------------------------

void regression(Recorder& r, Rng& g) {
    r.family("regression");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 4 ? c : 2 + g.below(50);
        Vd x = ascending(g, n, c % 3 == 0 ? 1e8 : g.uniform(-5.0, 5.0), c % 4 == 0 ? 1e-3 : 1.0);
        Vd y(x.size());
        const double slope = g.uniform(-3.0, 3.0), intercept = g.uniform(-10.0, 10.0);
        for (std::size_t i = 0; i < x.size(); ++i) y[i] = intercept + slope * x[i] + g.uniform(-0.1, 0.1);
        if (c % 5 == 1) x.assign(x.size(), 3.0);  // equal abscissae
        if (c % 7 == 2) spoil(g, y, hard, 1);
        r.begin(label("fit", c));
        double a = kSentinel, b = kSentinel;
        r.put(QAL_LinearRegression(x.data(), y.data(), n, &a, &b));
        r.put(a);
        r.put(b);
        const Vf xf = narrow(x), yf = narrow(y);
        float af = kSentinelF, bf = kSentinelF;
        r.put(QAL_LinearRegressionFloat(xf.data(), yf.data(), n, &af, &bf));
        r.put(af);
        r.put(bf);
    }
}

// ---- Line fits and line evaluation ----------------------------------------------------

void lines(Recorder& r, Rng& g) {
    r.family("lines");
    const Vd hard = specials();
    for (int c = 0; c < 28; ++c) {
        const int n = c < 4 ? c : 2 + g.below(40);
        Vd x = ascending(g, n, c % 3 == 0 ? 1e9 : g.uniform(-5.0, 5.0), c % 4 == 0 ? 1e-4 : 0.5);
        Vd y(x.size());
        const double slope = c % 6 == 5 ? 1e-26 : g.uniform(-3.0, 3.0);
        for (std::size_t i = 0; i < x.size(); ++i) y[i] = 2.0 + slope * x[i] + g.uniform(-0.05, 0.05) * (c % 2);
        if (c % 5 == 1) x.assign(x.size(), 3.0);
        if (c % 7 == 2) spoil(g, y, hard, 1);
        if (c % 9 == 3) spoil(g, x, hard, 1);
        const Vf xf = narrow(x), yf = narrow(y);
        r.begin(label("fit and evaluate", c));
        double a = kSentinel, b = kSentinel;
        QAL_LinFit(x.data(), y.data(), n, &a, &b);
        r.put(a);
        r.put(b);
        float af = kSentinelF, bf = kSentinelF;
        QAL_LinFitFloat(xf.data(), yf.data(), n, &af, &bf);
        r.put(af);
        r.put(bf);
        for (double at : {0.0, 1.0, -7.5, 1e9, kNaN, g.uniform(-10.0, 10.0)}) {
            r.put(QAL_CalcLinX(at, x.data(), y.data(), n));
            r.put(QAL_CalcLinY(at, x.data(), y.data(), n));
            r.put(QAL_CalcLinXFloat(static_cast<float>(at), xf.data(), yf.data(), n));
            r.put(QAL_CalcLinYFloat(static_cast<float>(at), xf.data(), yf.data(), n));
        }
    }
    r.begin("evaluation refusals");
    const Vd two = {1.0, 2.0};
    const Vf twoF = {1.0f, 2.0f};
    r.put(QAL_CalcLinX(1.0, nullptr, two.data(), 2));
    r.put(QAL_CalcLinY(1.0, two.data(), nullptr, 2));
    r.put(QAL_CalcLinXFloat(1.0f, nullptr, twoF.data(), 2));
    r.put(QAL_CalcLinYFloat(1.0f, twoF.data(), nullptr, 2));

    // Intersections: near-parallel slopes around 1e-8, slopes around 1e25 / 100, NaN.
    const Vf slopes = {0.0f, 1.0f, -1.0f, 1e-8f, 2e-8f, 1.00000001f, 1e23f, upF(1e23f), -1e23f, 3.5f, kNaNf, kInff};
    const Vf intercepts = {0.0f, -0.0f, 1.0f, 1e20f, -1e30f, kNaNf, 2.5f};
    for (std::size_t i = 0; i < slopes.size(); ++i) {
        r.begin(label("intersection", static_cast<int>(i)));
        for (float s2 : slopes) {
            const float c1 = intercepts[i % intercepts.size()];
            const float c2 = intercepts[static_cast<std::size_t>(g.below(count(intercepts)))];
            float xc = kSentinelF, yc = kSentinelF;
            r.put(QAL_StraightLineIntersection(&xc, &yc, c1, slopes[i], c2, s2));
            r.put(xc);
            r.put(yc);
        }
    }
    r.begin("intersection random");
    for (int k = 0; k < 40; ++k) {
        float xc = kSentinelF, yc = kSentinelF;
        const float c1 = g.uniformF(-1e3, 1e3), s1 = g.uniformF(-5.0, 5.0);
        const float c2 = g.uniformF(-1e3, 1e3), s2 = g.uniformF(-5.0, 5.0);
        r.put(QAL_StraightLineIntersection(&xc, &yc, c1, s1, c2, s2));
        r.put(xc);
        r.put(yc);
    }
    float out = kSentinelF;
    r.put(QAL_StraightLineIntersection(nullptr, &out, 0.0f, 1.0f, 1.0f, 2.0f));
    r.put(QAL_StraightLineIntersection(&out, nullptr, 0.0f, 1.0f, 1.0f, 2.0f));
    r.put(out);
}

// ---- Polynomial and rational interpolation -------------------------------------------

void polynomial(Recorder& r, Rng& g) {
    r.family("polynomial");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(9);
        Vd x(static_cast<std::size_t>(n)), y(x.size());
        for (double& v : x) v = g.uniform(-4.0, 4.0);  // in no order
        for (double& v : y) v = g.uniform(-2.0, 2.0);
        if (c % 5 == 1 && n > 1) x[1] = x[0];
        if (c % 7 == 2) spoil(g, y, hard, 1);
        if (c % 8 == 3) x[0] = 1e30;
        Vd at = {x[0], up(x[0]), x[0] + 5e-26, kNaN, 1e20, -1e20, 0.0};
        for (int k = 0; k < 6; ++k) at.push_back(g.uniform(-5.0, 5.0));
        r.begin(label("interpolate", c));
        for (double v : at) {
            double yOut = kSentinel, error = kSentinel;
            r.put(QAL_PolynomialInterpolation(x.data(), y.data(), n, v, &yOut, &error));
            r.put(yOut);
            r.put(error);
            yOut = error = kSentinel;
            r.put(QAL_RationialInterpolation(x.data(), y.data(), n, v, &yOut, &error));
            r.put(yOut);
            r.put(error);
        }
    }
    r.begin("refusals and the count limit");
    Vd many(10001);
    for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i);
    double yOut = kSentinel, error = kSentinel;
    r.put(QAL_PolynomialInterpolation(many.data(), many.data(), 10001, 0.5, &yOut, &error));
    r.put(QAL_RationialInterpolation(many.data(), many.data(), 10001, 0.5, &yOut, &error));
    r.put(QAL_PolynomialInterpolation(nullptr, many.data(), 3, 0.5, &yOut, &error));
    r.put(QAL_RationialInterpolation(many.data(), many.data(), 0, 0.5, &yOut, &error));
    r.put(QAL_PolynomialInterpolation(many.data(), many.data(), 3, 0.5, nullptr, &error));
    r.put(QAL_RationialInterpolation(many.data(), many.data(), 3, 0.5, &yOut, nullptr));
    r.put(QAL_PolynomialInterpolation(many.data(), many.data(), -5, 0.5, &yOut, &error));
    r.put(yOut);
    r.put(error);
}

// ---- Cubic splines --------------------------------------------------------------------

void splines(Recorder& r, Rng& g) {
    r.family("splines");
    const Vd hard = specials();
    const Vd ends = {1e25, down(1e25), up(1e25), 0.0, -1.0, kNaN, -1e30, 3.0, kInf};
    for (int c = 0; c < 27; ++c) {
        const int n = c < 2 ? c + 1 : 2 + g.below(40);
        Vd x = c % 6 == 0 ? ascending(g, n, 0.0, 1e-25) : ascending(g, n, g.uniform(-5.0, 5.0), 1.0);
        Vd y = bumpy(g, x, 0.2);
        if (c % 5 == 2 && n > 2) x[1] = x[0];  // a zero-wide interval
        if (c % 7 == 3) spoil(g, y, hard, 1);
        Vd y2(x.size(), kSentinel);
        r.begin(label("table and values", c));
        r.put(QAL_Splines(x.data(), y.data(), n, ends[static_cast<std::size_t>(c) % ends.size()],
                          ends[static_cast<std::size_t>(c / 3) % ends.size()], y2.data()));
        r.put(y2);
        Vd at = {x.front(), x.back(), kNaN, x.front() - 1.0, x.back() + 2.0};
        for (int k = 0; k < 8; ++k) at.push_back(x[static_cast<std::size_t>(g.below(n))]);
        for (int k = 0; k < 8; ++k) at.push_back(g.uniform(x.front(), x.back()));
        for (double v : at) {
            double yOut = kSentinel;
            r.put(QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), n, v, &yOut));
            r.put(yOut);
        }
    }
    r.begin("the count limit and refusals");
    Vd x(10001), y(10001), y2(10001, kSentinel);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<double>(i) * 0.25;
        y[i] = static_cast<double>(i % 17) - 8.0;
    }
    r.put(QAL_Splines(x.data(), y.data(), 10000, 1e25, 1e25, y2.data()));
    r.put(y2[0]);
    r.put(y2[5000]);
    r.put(y2[9999]);
    r.put(y2[10000]);
    double yOut = kSentinel;
    r.put(QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), 10000, 1234.56, &yOut));
    r.put(yOut);
    r.put(QAL_Splines(x.data(), y.data(), 10001, 1e25, 1e25, y2.data()));
    r.put(QAL_Splines(nullptr, y.data(), 3, 1e25, 1e25, y2.data()));
    r.put(QAL_Splines(x.data(), y.data(), 3, 1e25, 1e25, nullptr));
    r.put(QAL_Splines(x.data(), y.data(), -3, 1e25, 1e25, y2.data()));
    r.put(QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), 10001, 1.0, &yOut));
    r.put(QAL_CubicSplineInterpolation(x.data(), nullptr, y2.data(), 3, 1.0, &yOut));
    r.put(QAL_CubicSplineInterpolation(x.data(), y.data(), y2.data(), 3, 1.0, nullptr));
    r.put(yOut);
}

// ---- Akima slopes ---------------------------------------------------------------------

void akima(Recorder& r, Rng& g) {
    r.family("akima");
    const Vf hardF = specialsF();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 4 ? c : 3 + g.below(40);
        Vf x = narrow(ascending(g, n, g.uniform(-5.0, 5.0), c % 6 == 0 ? 1e-6 : 1.0));
        Vf y = narrow(bumpy(g, ascending(g, n, 0.0, 1.0), 0.3));
        if (c % 5 == 1 && n > 3) x[2] = x[1];                       // equal abscissae pass
        if (c % 7 == 2 && n > 3) std::swap(x[1], x[2]);              // descending step
        if (c % 8 == 3 && n > 3) x[static_cast<std::size_t>(n - 1)] = kNaNf;
        if (c % 4 == 2) spoil(g, y, hardF, 1);
        if (c % 9 == 5 && n > 5) y.assign(y.size(), 1.5f);           // equal outer pairs
        Vf slopes(x.size(), kSentinelF);
        r.begin(label("slopes", c));
        r.put(QAL_AkimaSub(x.data(), y.data(), slopes.data(), n));
        r.put(slopes);
    }
    r.begin("refusals");
    const Vf three = {1.0f, 2.0f, 3.0f};
    Vf slopes(3, kSentinelF);
    r.put(QAL_AkimaSub(nullptr, three.data(), slopes.data(), 3));
    r.put(QAL_AkimaSub(three.data(), three.data(), nullptr, 3));
    r.put(QAL_AkimaSub(three.data(), three.data(), slopes.data(), -1));
    r.put(QAL_AkimaSub(three.data(), three.data(), slopes.data(), INT_MAX));  // no memory
    r.put(slopes);
}

// ---- Array resampling -----------------------------------------------------------------

bool usesLogarithms(int option) { return option == QAL_INTERPOL_LOG_LINE || option == QAL_INTERPOL_LOG_SEGMENT; }

void resampling(Recorder& r, Rng& g) {
    r.family("resampling");
    const Vd hard = specials();
    const int options[] = {-1, 0, 1, 2, 3, 4, 5, 6, 7, 11, 12, 13, 14, 15, 16};
    for (int c = 0; c < 20; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(30);
        Vd x = ascending(g, n, c % 4 == 0 ? 0.001 : g.uniform(-5.0, 5.0), c % 3 == 0 ? 2.0 : 0.5);
        Vd y = bumpy(g, x, 0.2);
        if (c % 4 == 0)
            for (double& v : y) v = v + 10.0;  // positive data for the log-log options
        if (c % 5 == 1) std::reverse(x.begin(), x.end());
        if (c % 6 == 2 && n > 2) x[1] = x[0];
        if (c % 7 == 3) spoil(g, y, hard, 1);
        if (c % 9 == 4) x.back() = x.front();  // equal ends
        Vd at = {x.front(), x.back(), kNaN, (x.front() + x.back()) * 0.5, up(x.front()), down(x.back())};
        for (int k = 0; k < 5; ++k) at.push_back(g.uniform(x.front(), x.back()));
        Vd y2(x.size());
        const bool haveTable = QAL_Splines(x.data(), y.data(), n, 1e25, 1e25, y2.data()) == QAL_OK && c % 2 == 0;
        for (int option : options) {
            r.begin(label("option", option) + " curve " + std::to_string(c), usesLogarithms(option));
            for (double v : at) {
                double yOut = kSentinel;
                r.put(QAL_Interpol(&yOut, v, x.data(), y.data(), haveTable ? y2.data() : nullptr, n, option));
                r.put(yOut);
            }
        }
        const Vf xf = narrow(x), yf = narrow(y), atF = narrow(at);
        for (int option : options) {
            r.begin(label("float arrays option", option) + " curve " + std::to_string(c), usesLogarithms(option));
            Vf yNew(atF.size(), kSentinelF);
            r.put(QAL_InterpolFloatArrays(xf.data(), yf.data(), n, atF.data(), yNew.data(), count(atF), option));
            r.put(yNew);
        }
    }
    r.begin("refusals");
    Vd many(10001);
    for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i);
    const Vf manyF = narrow(many);
    double yOut = kSentinel;
    r.put(QAL_Interpol(&yOut, 0.5, many.data(), many.data(), nullptr, 10001, QAL_INTERPOL_SPLINE));
    r.put(yOut);
    r.put(QAL_Interpol(&yOut, 0.5, nullptr, many.data(), nullptr, 3, 2));
    r.put(QAL_Interpol(nullptr, 0.5, many.data(), many.data(), nullptr, 3, 2));
    r.put(QAL_Interpol(&yOut, 0.5, many.data(), many.data(), nullptr, 0, 2));
    r.put(QAL_Interpol(&yOut, 0.5, many.data(), many.data(), nullptr, -2147483647, 2));
    r.put(yOut);
    Vf yNew(4, kSentinelF);
    r.put(QAL_InterpolFloatArrays(manyF.data(), manyF.data(), 10, manyF.data(), yNew.data(), 0, 2));
    r.put(QAL_InterpolFloatArrays(manyF.data(), manyF.data(), 10, manyF.data(), yNew.data(), -1, 2));
    r.put(QAL_InterpolFloatArrays(manyF.data(), manyF.data(), -1, manyF.data(), yNew.data(), 4, 2));
    r.put(QAL_InterpolFloatArrays(nullptr, manyF.data(), 10, manyF.data(), yNew.data(), 4, 2));
    r.put(QAL_InterpolFloatArrays(manyF.data(), manyF.data(), 10, nullptr, yNew.data(), 4, 2));
    r.put(QAL_InterpolFloatArrays(nullptr, nullptr, 0, manyF.data(), yNew.data(), 4, 2));
    r.put(yNew);

    const Vf hardF = specialsF();
    for (int c = 0; c < 8; ++c) {
        const int n = 1 + g.below(30);
        Vf values(static_cast<std::size_t>(n)), lower(values.size()), upper(values.size());
        for (int i = 0; i < n; ++i) {
            values[static_cast<std::size_t>(i)] = g.uniformF(-2.0, 2.0);
            lower[static_cast<std::size_t>(i)] = g.uniformF(-2.0, 0.0);
            upper[static_cast<std::size_t>(i)] = g.uniformF(0.0, 2.0);
        }
        if (c >= 4) {
            spoil(g, values, hardF, 2);
            spoil(g, upper, hardF, 2);
            spoil(g, lower, hardF, 1);
        }
        r.begin(label("in/out", c));
        int outside = kSentinelI;
        r.put(QAL_CheckInOutArrays(values.data(), c % 3 == 0 ? nullptr : lower.data(), upper.data(), n, &outside));
        r.put(outside);
    }
    r.begin("in/out refusals");
    const float one[1] = {1.0f};
    int outside = kSentinelI;
    r.put(QAL_CheckInOutArrays(nullptr, one, one, 1, &outside));
    r.put(QAL_CheckInOutArrays(one, one, nullptr, 1, &outside));
    r.put(QAL_CheckInOutArrays(one, one, one, 1, nullptr));
    r.put(QAL_CheckInOutArrays(one, one, one, 0, &outside));
    r.put(outside);
}

// ---- Savitzky-Golay coefficients and filtering ----------------------------------------

void filters(Recorder& r, Rng& g) {
    r.family("filter");
    // Coefficient sets: the moment sums go through QAL_pow.
    const int sets[][4] = {{2, 2, 0, 2}, {3, 3, 0, 4}, {5, 5, 1, 4}, {4, 2, 0, 3}, {0, 6, 2, 3}, {6, 0, 1, 2},
                           {12, 12, 3, 6}, {3, 3, 6, 6}, {1, 1, 0, 2}, {2, 2, 3, 2}, {-1, 3, 0, 2}, {3, 3, -1, 2},
                           {3, 3, 0, -1}, {1, 0, 0, 2}, {130, 130, 0, 6}, {0, 0, 0, 0}};
    int setIndex = 0;
    for (const auto& s : sets) {
        r.begin(label("coefficients", setIndex++), true);
        const int span = s[0] + s[1] + 1;
        for (int extra : {0, 2, -1}) {
            Vd coef(static_cast<std::size_t>(span + 2), kSentinel);
            r.put(QAL_SavitzkyGolayCoeffizient(coef.data(), span + extra, s[0], s[1], s[2], s[3]));
            r.put(coef);
        }
    }
    r.begin("coefficients refusals");
    r.put(QAL_SavitzkyGolayCoeffizient(nullptr, 5, 2, 2, 0, 2));

    const int kinds[] = {10, 11, 20, 5, 99, 0, -3};
    for (int kind : kinds) {
        for (int width : {3, 4, 5, 7, 9, 10, 25, 10000}) {
            r.begin(label("weights kind", kind) + " width " + std::to_string(width), kind == 20);
            for (int degree : {2, 3, 4, 6, 8}) {
                Vd coef(static_cast<std::size_t>(width), kSentinel);
                r.put(QAL_SetFilterCoefficients(coef.data(), kind, width, degree));
                r.put(coef.data(), width < 30 ? width : 30);
                if (width > 30) r.put(coef.back());
            }
        }
    }
    r.begin("weights refusals");
    double coef[3] = {kSentinel, kSentinel, kSentinel};
    r.put(QAL_SetFilterCoefficients(nullptr, 10, 3, 2));
    r.put(QAL_SetFilterCoefficients(coef, 10, 2, 2));
    r.put(QAL_SetFilterCoefficients(coef, 10, -3, 2));
    r.put(coef, 3);

    const Vd hard = specials();
    const Vf hardF = specialsF();
    for (int c = 0; c < 30; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(80);
        Vd in = bumpy(g, ascending(g, n, 0.0, 1.0), 0.5);
        if (c % 4 == 1)
            for (double& v : in) v = 7.25;  // a constant stays constant up to the ends
        if (c % 6 == 2) spoil(g, in, hard, 1);
        const int kind = kinds[c % 5];
        const int width = c % 9 == 0 ? 301 : (c % 11 == 1 ? 6 : 3 + 2 * g.below(c % 3 == 0 ? 60 : 8));
        const int degree = 2 + 2 * g.below(3);
        const int first = c % 4 == 3 ? -5 : g.below(n), last = c % 5 == 3 ? n + 10 : first + g.below(n);
        r.begin(label("filter", c), kind == 20);
        Vd out(in.size(), kSentinel);
        r.put(QAL_FilterArray(in.data(), out.data(), n, first, last, kind, width, degree));
        r.put(out);
        Vd inPlace = in;
        r.put(QAL_FilterArray(inPlace.data(), inPlace.data(), n, first, last, kind, width, degree));
        r.put(inPlace);
        Vf inF = narrow(in);
        if (c % 6 == 3) spoil(g, inF, hardF, 1);
        Vf outF(inF.size(), kSentinelF);
        r.put(QAL_FilterFloatArray(inF.data(), outF.data(), n, first, last, kind, width > 99 ? 99 : width, degree));
        r.put(outF);
        r.put(QAL_FilterFloatArray(inF.data(), outF.data(), n, first, last, kind, 101, degree));
    }
    r.begin("filter refusals");
    Vd in = {1.0, 2.0, 3.0, 4.0}, out(4, kSentinel);
    Vf inF = narrow(in), outF(4, kSentinelF);
    r.put(QAL_FilterArray(nullptr, out.data(), 4, 0, 3, 10, 3, 2));
    r.put(QAL_FilterArray(in.data(), nullptr, 4, 0, 3, 10, 3, 2));
    r.put(QAL_FilterArray(in.data(), out.data(), 1, 0, 3, 10, 3, 2));
    r.put(QAL_FilterArray(in.data(), out.data(), 4, 3, 1, 10, 3, 2));
    r.put(QAL_FilterArray(in.data(), out.data(), 4, 0, 3, 0, 3, 2));
    r.put(QAL_FilterArray(in.data(), out.data(), 4, 0, 3, 20, 5, 7));
    r.put(QAL_FilterFloatArray(nullptr, outF.data(), 4, 0, 3, 10, 3, 2));
    r.put(QAL_FilterFloatArray(inF.data(), outF.data(), -4, 0, 3, 10, 3, 2));
    r.put(QAL_FilterFloatArray(inF.data(), outF.data(), 4, 0, 3, 11, 2, 2));
    r.put(out);
    r.put(outF);
}

// ---- Derivative arrays ----------------------------------------------------------------

void derivativeArrays(Recorder& r, Rng& g) {
    r.family("derivative arrays");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(40);
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), c % 6 == 0 ? 1e-25 : 0.5);
        Vd y = bumpy(g, x, 0.1);
        if (c % 5 == 2 && n > 2) x[2] = x[1];
        if (c % 7 == 3) spoil(g, y, hard, 1);
        Vd y2(x.size(), kSentinel);
        r.begin(label("spline derivatives", c));
        r.put(QAL_Splines(x.data(), y.data(), n, c % 2 == 0 ? 1e25 : 0.5, 1e25, y2.data()));
        Vd at = {x.front(), x.back(), kNaN, x.front() - 3.0, x.back() + 3.0};
        for (int k = 0; k < 6; ++k) at.push_back(g.uniform(x.front(), x.back()));
        for (double v : at) {
            double d1 = kSentinel, d2 = kSentinel;
            r.put(QAL_FirstDerivative(x.data(), y.data(), y2.data(), n, v, &d1));
            r.put(d1);
            r.put(QAL_SecondDerivative(x.data(), y.data(), y2.data(), n, v, &d2));
            r.put(d2);
        }
        for (int method : {QAL_DERIV_LINE_FIT, QAL_DERIV_SPLINE, 3}) {
            r.begin(label("derivative array method", method) + " curve " + std::to_string(c));
            for (int order : {1, 2, 3}) {
                const int span = c % 4 == 0 ? 1 : 2 + g.below(12);
                Vd deriv(x.size(), kSentinel);
                r.put(QAL_DerivArray(x.data(), y.data(), deriv.data(), n, method, order, span));
                r.put(deriv);
                Vf xf = narrow(x), yf = narrow(y), derivF(x.size(), kSentinelF);
                r.put(QAL_DerivFloatArray(xf.data(), yf.data(), derivF.data(), n, method, order, span));
                r.put(xf);
                r.put(yf);
                r.put(derivF);
            }
        }
    }
    r.begin("refusals");
    Vd x = {0.0, 1.0, 2.0}, d(3, kSentinel);
    Vf xf = narrow(x), df(3, kSentinelF);
    r.put(QAL_FirstDerivative(nullptr, x.data(), x.data(), 3, 0.5, d.data()));
    r.put(QAL_FirstDerivative(x.data(), x.data(), x.data(), 10001, 0.5, d.data()));
    r.put(QAL_SecondDerivative(x.data(), nullptr, x.data(), 3, 0.5, d.data()));
    r.put(QAL_SecondDerivative(x.data(), x.data(), x.data(), 1, 0.5, d.data()));
    r.put(QAL_DerivArray(nullptr, x.data(), d.data(), 3, 2, 1, 3));
    r.put(QAL_DerivArray(x.data(), x.data(), d.data(), -3, 2, 1, 3));
    r.put(QAL_DerivArray(x.data(), x.data(), d.data(), 3, 2, 2, 3));
    r.put(QAL_DerivFloatArray(xf.data(), nullptr, df.data(), 3, 4, 1, 3));
    r.put(QAL_DerivFloatArray(xf.data(), xf.data(), df.data(), 0, 4, 1, 3));
    r.put(d);
    r.put(df);
}

// ---- Derivatives at a point -----------------------------------------------------------

void pointDerivatives(Recorder& r, Rng& g) {
    r.family("point derivatives");
    int f = 0;
    for (double (*func)(double) : kFunctions) {
        r.begin(label("Ridders function", f++));
        for (double stepSize : {0.5, 0.1, 1e-3, 1e-25, down(1e-25), 0.0, -0.2, kNaN}) {
            for (double at : {0.0, 1.25, -2.0, 0.3}) {
                double error = kSentinel;
                r.put(QAL_FirstDerivativeRidder(func, at, stepSize, &error));
                r.put(error);
            }
        }
    }
    const Vd hard = specials();
    for (int c = 0; c < 20; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(40);
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), c % 6 == 0 ? 1e-25 : 0.5);
        Vd y = bumpy(g, x, 0.1);
        if (c % 5 == 2 && n > 2) x[2] = x[1];
        if (c % 7 == 3) spoil(g, y, hard, 1);
        Vd at = {x.front(), x.back(), kNaN, x.front() - 3.0, x.back() + 3.0};
        for (int k = 0; k < 6; ++k) at.push_back(g.uniform(x.front(), x.back()));
        r.begin(label("Golay", c), true);  // the kernel's moments come from QAL_pow
        for (double v : at) r.put(QAL_FirstDerivativeGolay(x.data(), y.data(), n, v));
        r.begin(label("regression slope", c));
        for (double v : at)
            for (int span : {-1, 1, 2, 3, 6, 11, 100}) r.put(QAL_FirstDerivativeLinReg(x.data(), y.data(), n, span, v));
    }
    r.begin("refusals");
    const Vd two = {0.0, 1.0};
    r.put(QAL_FirstDerivativeGolay(nullptr, two.data(), 2, 0.5));
    r.put(QAL_FirstDerivativeGolay(two.data(), two.data(), 0, 0.5));
    r.put(QAL_FirstDerivativeLinReg(two.data(), nullptr, 2, 4, 0.5));
    r.put(QAL_FirstDerivativeLinReg(two.data(), two.data(), 0, 4, 0.5));
}

// ---- Curvature ------------------------------------------------------------------------

void curvature(Recorder& r, Rng& g) {
    r.family("curvature");
    const Vf hardF = specialsF();
    for (int c = 0; c < 20; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(40);
        Vf x = narrow(ascending(g, n, g.uniform(-5.0, 5.0), 0.5));
        Vf y = narrow(bumpy(g, ascending(g, n, 0.0, 1.0), 0.2));
        if (c % 5 == 2 && n > 2) x[2] = x[1];  // a zero step
        if (c % 7 == 3) spoil(g, y, hardF, 1);
        r.begin(label("differences", c));
        Vf first(x.size(), kSentinelF), second(x.size(), kSentinelF);
        r.put(QAL_Kruemmung(x.data(), y.data(), first.data(), second.data(), n));
        r.put(first);
        r.put(second);
        const std::pair<int, int> gapsAndChords[] = {{0, 1},  {1, 2}, {2, 3},  {-1, 2},       {-2, 2},      {4, 0},
                                                     {3, -1}, {0, 0}, {1, 40}, {INT_MAX, 2}, {6, INT_MAX}};
        for (const auto& gc : gapsAndChords) {
            Vf result(x.size(), kSentinelF);
            r.put(QAL_Kruemmung2(x.data(), y.data(), result.data(), n, gc.first, gc.second));
            r.put(result);
        }
    }
}

// ---- Extremum search ------------------------------------------------------------------

void extremum(Recorder& r, Rng& g) {
    r.family("extremum");
    const Vd hard = specials();
    for (int c = 0; c < 40; ++c) {
        const int n = c < 4 ? c : 3 * (1 + g.below(10));
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), c % 9 == 0 ? 1e-26 : 0.5);
        Vd y(x.size());
        const double centre = g.uniform(x.empty() ? 0.0 : x.front(), x.empty() ? 1.0 : x.back());
        const double bend = c % 3 == 0 ? 1e-8 : g.uniform(-3.0, 3.0);
        for (std::size_t i = 0; i < x.size(); ++i)
            y[i] = 4.0 - bend * (x[i] - centre) * (x[i] - centre) + g.uniform(-0.05, 0.05);
        if (c % 7 == 4) spoil(g, y, hard, 1);
        if (c % 11 == 5 && n > 0) x.assign(x.size(), 1.0);
        r.begin(label("parabola", c));
        for (int useVertex : {0, 1}) {
            for (float percent : {0.0f, 5.0f, 50.0f, 1e30f, -5.0f, kNaNf}) {
                double xOut = kSentinel, yOut = kSentinel;
                int kind = kSentinelI;
                // No pointer is tested: an empty curve passes a pointer to a dummy sample.
                const double dummy = 0.0;
                r.put(QAL_GetExtremum(x.empty() ? &dummy : x.data(), y.empty() ? &dummy : y.data(), n, &xOut, &yOut,
                                      &kind, useVertex, percent));
                r.put(xOut);
                r.put(yOut);
                r.put(kind);
            }
        }
    }
}

// ---- Extremum drivers -----------------------------------------------------------------

void extremumDrivers(Recorder& r, Rng& g) {
    r.family("extremum drivers");
    const Vd hard = specials();
    for (int c = 0; c < 16; ++c) {
        const int n = c < 3 ? c + 1 : 3 + g.below(c % 4 == 0 ? 250 : 60);
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), 0.25);
        Vd y = bumpy(g, x, c % 2 == 0 ? 0.05 : 0.6);
        if (c % 5 == 3) spoil(g, y, hard, 1);
        for (int kind : {QAL_EXTREMUM_MAX, QAL_EXTREMUM_MIN}) {
            r.begin(label("drivers kind", kind) + " curve " + std::to_string(c));
            for (int window : {3, 4, 9, 30, -6, n + 1, INT_MIN}) {
                const int useVertex = window % 2 == 0 ? 0 : 1;
                const float percent = window == 9 ? 20.0f : 1.0f;
                double xOut = kSentinel, yOut = kSentinel;
                r.put(QAL_GetNextExtremum(x.data(), y.data(), n, &xOut, &yOut, window, kind, useVertex, percent));
                r.put(xOut);
                r.put(yOut);
                xOut = yOut = kSentinel;
                r.put(QAL_GetRangeExtremum(x.data(), y.data(), n, &xOut, &yOut, window, kind, useVertex, percent));
                r.put(xOut);
                r.put(yOut);
                xOut = yOut = kSentinel;
                r.put(QAL_GetAutoRangeExtremum(x.data(), y.data(), n, &xOut, &yOut, window, kind, useVertex,
                                               percent));
                r.put(xOut);
                r.put(yOut);
            }
            double xOut = kSentinel, yOut = kSentinel;
            r.put(QAL_GetAutoExtremum(x.data(), y.data(), n, &xOut, &yOut, kind, c % 2, 2.0f));
            r.put(xOut);
            r.put(yOut);
        }
    }
    r.begin("refusals");
    const Vd v(12, 1.0);
    double out = kSentinel;
    r.put(QAL_GetNextExtremum(nullptr, v.data(), 12, &out, &out, 3, QAL_EXTREMUM_MAX, 1, 1.0f));
    r.put(QAL_GetRangeExtremum(v.data(), v.data(), 2, &out, &out, 3, QAL_EXTREMUM_MAX, 1, 1.0f));
    r.put(QAL_GetAutoRangeExtremum(v.data(), v.data(), 12, nullptr, &out, 3, QAL_EXTREMUM_MAX, 1, 1.0f));
    r.put(QAL_GetAutoExtremum(v.data(), v.data(), 0, &out, &out, QAL_EXTREMUM_MAX, 1, 1.0f));
    r.put(QAL_GetAutoExtremum(v.data(), v.data(), 11, &out, &out, QAL_EXTREMUM_MAX, 1, 1.0f));
    r.put(out);
}

// ---- Threshold and end-point searches -------------------------------------------------

void thresholds(Recorder& r, Rng& g) {
    r.family("thresholds");
    const Vd hard = specials();
    for (int c = 0; c < 24; ++c) {
        const int n = c < 3 ? c + 1 : 2 + g.below(40);
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), 0.5);
        Vd y = bumpy(g, x, 0.2);
        if (c % 5 == 1) std::reverse(x.begin(), x.end());
        if (c % 6 == 2) spoil(g, y, hard, 1);
        if (c % 7 == 3 && n > 2) y[1] = y[0];
        r.begin(label("level crossings", c));
        for (int thresholdKind : {1, 2, 3, 4, 5}) {
            for (int direction : {0, 1, 2}) {
                for (int resultMode : {1, 2}) {
                    const float threshold = c % 4 == 0 ? static_cast<float>(y[0]) : g.uniformF(-3.0, 5.0);
                    const float percent = g.uniformF(0.0, 100.0);
                    double xOut = kSentinel, yOut = kSentinel;
                    r.put(QAL_FindX_at_YThreshold(x.data(), y.data(), n, thresholdKind, direction, resultMode,
                                                  threshold, percent, &xOut, &yOut));
                    r.put(xOut);
                    r.put(yOut);
                }
            }
        }
        r.begin(label("distance and ends", c));
        const float span = static_cast<float>(x.back() - x.front());
        for (float xDiff : {0.0f, -0.0f, span, -span * 0.5f, span * 0.37f, span * 2.0f, kNaNf, kInff}) {
            for (int direction : {1, 2}) {
                for (int resultMode : {1, 2}) {
                    double xOut = kSentinel, yOut = kSentinel;
                    r.put(QAL_GetY_at_XDiff(x.data(), y.data(), n, 0, direction, resultMode, xDiff, &xOut, &yOut));
                    r.put(xOut);
                    r.put(yOut);
                }
            }
        }
        double xOut = kSentinel, yOut = kSentinel;
        r.put(QAL_Find_LastPoint(x.data(), y.data(), n, 0, 0, &xOut, &yOut));
        r.put(xOut);
        r.put(yOut);
        xOut = yOut = kSentinel;
        r.put(QAL_Calc_AbsMaximum(x.data(), y.data(), n, &xOut, &yOut));
        r.put(xOut);
        r.put(yOut);
        xOut = yOut = kSentinel;
        r.put(QAL_Calc_AbsMinimum(x.data(), y.data(), n, &xOut, &yOut));
        r.put(xOut);
        r.put(yOut);
    }
    r.begin("refusals");
    const Vd two = {0.0, 1.0};
    double out = kSentinel;
    r.put(QAL_FindX_at_YThreshold(nullptr, two.data(), 2, 1, 0, 1, 0.5f, 1.0f, &out, &out));
    r.put(QAL_GetY_at_XDiff(two.data(), two.data(), 0, 0, 1, 1, 0.5f, &out, &out));
    r.put(QAL_Find_LastPoint(two.data(), two.data(), 2, 0, 0, nullptr, &out));
    r.put(QAL_Calc_AbsMaximum(two.data(), nullptr, 2, &out, &out));
    r.put(QAL_Calc_AbsMinimum(two.data(), two.data(), -1, &out, &out));
    r.put(out);
}

// ---- Boundary curves ------------------------------------------------------------------

void boundaries(Recorder& r, Rng& g) {
    r.family("boundaries");
    const Vf hardF = specialsF();
    for (int c = 0; c < 16; ++c) {
        const int n = 1 + g.below(30);
        Vf base(static_cast<std::size_t>(n)), spread(base.size());
        for (float& v : base) v = g.uniformF(-10.0, 10.0);
        for (float& v : spread) v = g.uniformF(0.0, 2.0);
        if (c >= 8) {
            spoil(g, base, hardF, 1);
            spoil(g, spread, hardF, 1);
        }
        r.begin(label("bands", c));
        for (int upperMode : {1, 2, 3, 4}) {
            for (int lowerMode : {1, 2, 3, 0}) {
                Vf lower(base.size(), kSentinelF), upper(base.size(), kSentinelF);
                const float upperValue = g.uniformF(-5.0, 50.0), lowerValue = c % 4 == 0 ? 100.0f : 2.5f;
                r.put(QAL_CalcBoundaries(base.data(), c % 3 == 0 ? nullptr : spread.data(), lower.data(),
                                         upper.data(), n, upperMode, upperValue, lowerMode, lowerValue));
                r.put(lower);
                r.put(upper);
            }
        }
        // The upper array doubling as base feeds the lower pass.
        Vf shared = base, lower(base.size(), kSentinelF);
        r.put(QAL_CalcBoundaries(shared.data(), spread.data(), lower.data(), shared.data(), n, 1, 1.5f, 2, 10.0f));
        r.put(shared);
        r.put(lower);
    }
    r.begin("refusals");
    float one[1] = {1.0f};
    r.put(QAL_CalcBoundaries(nullptr, one, one, one, 1, 1, 1.0f, 1, 1.0f));
    r.put(QAL_CalcBoundaries(one, one, one, one, 0, 1, 1.0f, 1, 1.0f));
    r.put(one[0]);
}

// ---- Integration and root finding -----------------------------------------------------

void integration(Recorder& r, Rng& g) {
    r.family("integration");
    const double limits[][2] = {{0.0, 1.0}, {-2.0, 3.0}, {1.0, 1.0}, {2.0, -1.0}, {0.0, 1e-25}, {-1e15, 1e15}};
    int f = 0;
    for (double (*func)(double) : kFunctions) {
        for (const auto& l : limits) {
            r.begin(label("trapezoid function", f) + " limits " + std::to_string(&l - limits));
            for (int stage = 1; stage <= 14; ++stage) r.put(QAL_Trapez(func, l[0], l[1], stage));
            r.put(QAL_Trapez(func, l[0], l[1], 0));   // refused, estimate kept
            r.put(QAL_Trapez(func, l[0], l[1], 33));  // the last estimate, not computed
            r.put(QAL_Trapez(func, l[0], l[1], INT_MAX));
            r.put(QAL_Trapez(nullptr, l[0], l[1], 2));
        }
        r.begin(label("root function", f));
        for (const auto& l : limits)
            for (double accuracy : {1e-12, 1e-3, 0.0, -1.0, kNaN}) r.put(QAL_RootBisection(func, l[0], l[1], accuracy));
        for (int k = 0; k < 6; ++k) {
            const double x1 = g.uniform(-4.0, 0.0), x2 = g.uniform(0.0, 4.0);
            r.put(QAL_RootBisection(func, x1, x2, 1e-9));
        }
        ++f;
    }
    r.begin("root refusals");
    r.put(QAL_RootBisection(nullptr, 0.0, 1.0, 1e-6));
}

// ---- Whole-curve helpers (qal_curves.h) ----------------------------------------------

void put(Recorder& r, const std::vector<Extremum>& hits) {
    r.put(static_cast<int>(hits.size()));
    for (const Extremum& h : hits) {
        r.put(h.start);
        r.put(h.index);
        r.put(h.kind);
        r.put(h.x);
        r.put(h.y);
        r.put(h.vertexX);
        r.put(h.vertexY);
    }
}

void put(Recorder& r, const std::vector<LevelCrossing>& hits) {
    r.put(static_cast<int>(hits.size()));
    for (const LevelCrossing& h : hits) {
        r.put(h.index);
        r.put(h.x);
        r.put(h.y);
        r.put(h.crossX);
        r.put(h.crossY);
    }
}

void curveHelpers(Recorder& r, Rng& g) {
    r.family("curve helpers");
    const Vd hard = specials();
    for (int c = 0; c < 20; ++c) {
        const int n = c < 4 ? c + 1 : 3 + g.below(c % 4 == 0 ? 200 : 60);
        Vd x = ascending(g, n, g.uniform(-5.0, 5.0), c % 9 == 0 ? 1e-26 : 0.25);
        Vd y = bumpy(g, x, c % 2 == 0 ? 0.05 : 0.6);
        if (c % 4 == 1)
            for (double& v : y) v = static_cast<double>(static_cast<float>(v));  // float levels land on samples
        if (c % 5 == 3) spoil(g, y, hard, 1 + c % 3);
        if (c % 6 == 2 && n > 4) y[3] = y[2] = y[1];  // a plateau: the first equal sample is the extreme one
        if (c % 7 == 4) std::reverse(x.begin(), x.end());
        if (c % 10 == 6 && n > 6) x[4] = x[3] = x[2];  // equal abscissae in the windows that hold them
        r.begin(label("extrema", c));
        for (int window : {3, 5, 6, 9, 30, -6, 0, n + 1, INT_MIN})
            for (float percent : {0.0f, 1.0f, 20.0f, kNaNf})
                put(r, findExtrema(x.data(), y.data(), n, window, percent));
        r.begin(label("level crossings", c));
        Vf levels = {0.0f, -0.0f, kNaNf, kInff, -kInff, 1e25f, g.uniformF(-3.0, 5.0), g.uniformF(-3.0, 5.0)};
        for (int k = 0; k < 4; ++k) levels.push_back(static_cast<float>(y[static_cast<std::size_t>(g.below(n))]));
        for (float level : levels) put(r, findLevelCrossings(x.data(), y.data(), n, level));
    }
    r.begin("refusals");
    const Vd three = {0.0, 1.0, 0.0};
    put(r, findExtrema(nullptr, three.data(), 3, 3, 0.0f));
    put(r, findExtrema(three.data(), nullptr, 3, 3, 0.0f));
    put(r, findExtrema(three.data(), three.data(), 2, 3, 0.0f));
    put(r, findExtrema(three.data(), three.data(), -1, 3, 0.0f));
    put(r, findLevelCrossings(nullptr, three.data(), 3, 0.5f));
    put(r, findLevelCrossings(three.data(), nullptr, 3, 0.5f));
    put(r, findLevelCrossings(three.data(), three.data(), 2, 0.5f));
    put(r, findLevelCrossings(three.data(), three.data(), INT_MIN, 0.5f));
}

// ---- Version ------------------------------------------------------------------------

// The linked library's version string; a release changes this family's hash and no other.
void version(Recorder& r, Rng&) {
    r.family("version");
    r.begin("qal_version");
    const char* text = qal_version();
    r.put(text != nullptr);
    if (text == nullptr) return;
    r.put(static_cast<int>(std::strlen(text)));
    for (const char* c = text; *c != '\0'; ++c) r.put(static_cast<int>(static_cast<unsigned char>(*c)));
    r.put(std::strcmp(text, QAL_VERSION_STRING) == 0);
}

}  // namespace

void recordAll(Recorder& r) {
    // One generator per family, so that a family's calls do not shift another's inputs.
    struct Entry {
        void (*record)(Recorder&, Rng&);
        std::uint64_t seed;
    };
    const Entry entries[] = {{frame, 101},           {guarded, 211},         {vectorStatistics, 221},
                             {arrayStatistics, 231}, {search, 241},          {lu, 311},
                             {gaussJordan, 321},     {regression, 411},      {lines, 421},
                             {polynomial, 511},      {splines, 521},         {akima, 531},
                             {resampling, 541},      {filters, 611},         {derivativeArrays, 621},
                             {pointDerivatives, 631}, {curvature, 641},      {extremum, 711},
                             {extremumDrivers, 721}, {thresholds, 731},      {boundaries, 741},
                             {integration, 751},     {curveHelpers, 761},   {version, 801}};
    for (const Entry& e : entries) {
        Rng g(e.seed);
        e.record(r, g);
    }
}

}  // namespace qal::golden
