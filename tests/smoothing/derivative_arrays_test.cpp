#include <algorithm>
#include <cmath>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using F = std::vector<float>;
constexpr int kOk = QAL_OK, kBad = QAL_ERR_PARAMETER, kMem = QAL_ERR_MEMORY, kFew = QAL_ERR_TOO_FEW_POINTS;
constexpr int kZeroWide = QAL_ERR_ZERO_DIVISION, kFit = QAL_DERIV_LINE_FIT, kSpline = QAL_DERIV_SPLINE;
const V kX{0, 0.3, 1.1, 2.385}, kY{2.385, -1.25, 0.7, 0.1};
// The clamped table of kX, kY (natural start, end slope -0.4), as the spline tests pin it.
const V kTable{0, 0x1.69ee3828f2a54p+5, -0x1.e83c69c26d1a6p+3, 0x1.f23c5fd64f423p+2};

// First and second derivative at one abscissa. Hexfloat values from a separate step-by-step model
// in Python (IEEE double); at 2.0962 the forms (3.0 * (b * b)), h / 6.0 first, a division before the
// scaling by h and b = 1.0 - a would each change the result.
TEST(SplineDerivative, ValuesOrderOfOperationsAndZeroWideBrackets) {
    struct Row { V x, y, y2; double at; int result; double first, second; };
    const Row rows[] = {
        {{0, 1, 2}, {0, 1, 0}, {0, -3, 0}, 0, kOk, 1.5, 0}, {{0, 1, 2}, {0, 1, 0}, {0, -3, 0}, 1, kOk, 0, -3},
        {{0, 1, 2}, {0, 1, 0}, {0, -3, 0}, 2, kOk, -1.5, 0}, {{0, 1, 2}, {0, 1, 0}, {0, -3, 0}, 0.5, kOk, 1.125, -1.5},
        {kX, kY, kTable, 2.0962, kOk, -0x1.e686420baa5b9p+0, 0x1.4d995fdfc3399p+1},
        {kX, kY, kTable, -0.6, kOk, 0x1.98838c9e5a164p+3, -0x1.69ee3828f2a54p+6},  // extrapolated
        // zero-wide brackets write 1e15 (not y[lo]): an equal last pair, a NaN knot, a width of exactly 1e-25
        {{0, 1, 1}, {0, 5, 7}, {0, 0, 0}, 3, kZeroWide, 1e15, 1e15},
        {{0, 1, kNaN}, {3, 4, 5}, {0, 0, 0}, 5, kZeroWide, 1e15, 1e15},
        {{0, 1e-25}, {4, 8}, {0, 0}, 0, kZeroWide, 1e15, 1e15}};
    ExpectRows(rows, [](const Row& r, double* first, double* second) {
        const int status = QAL_FirstDerivative(r.x.data(), r.y.data(), r.y2.data(), Count(r.x), r.at, first);
        return status == QAL_SecondDerivative(r.x.data(), r.y.data(), r.y2.data(), Count(r.x), r.at, second) ? status
                                                                                                                : -1;
    });
    // Refusals leave the output: a null array (y too for the second derivative, which never reads it), n 1 or 10001.
    const V x(10001, 1.0);
    double out = kUntouched;
    for (int n : {1, 10001}) EXPECT_EQ(kBad, QAL_FirstDerivative(x.data(), x.data(), x.data(), n, 0.5, &out));
    EXPECT_EQ(kBad, QAL_SecondDerivative(kX.data(), nullptr, kTable.data(), 4, 0.5, &out));
    EXPECT_EQ(kBad, QAL_FirstDerivative(kX.data(), kY.data(), nullptr, 4, 0.5, &out));
    EXPECT_TRUE(SameBits(kUntouched, out));
}

// Both array functions through one body: the float twin runs on float copies of the same values.
int Derive(V& x, V& y, V& d, int n, int method, int order, int span, bool nullX) {
    return QAL_DerivArray(nullX ? nullptr : x.data(), y.data(), d.data(), n, method, order, span);
}
int Derive(F& x, F& y, F& d, int n, int method, int order, int span, bool nullX) {
    return QAL_DerivFloatArray(nullX ? nullptr : x.data(), y.data(), d.data(), n, method, order, span);
}

// Argument tests in their order and the derivative curves on y = x * x over x = 0..9 (and 0, 1, 2 under
// 0, 1, 0). A failure writes nothing; an unknown method neither. Near values: within rounding.
template <class T>
void ExpectDerivativeCurves() {
    using A = std::vector<T>;
    const double u = kUntouched;
    struct Row { int n, method, order, span; bool nullX; int status, floatStatus; V deriv; };
    const Row rows[] = {
        {3, kSpline, 1, 0, true, kMem, kMem, {u}}, {-1, kSpline, 1, 0, false, kMem, kMem, {u}},
        {0, kSpline, 1, 0, false, kFew, kMem, {u}}, {1, kSpline, 1, 0, false, kFew, kFew, {u}},
        {3, 7, 3, 0, false, kBad, kBad, {u}},  // the order before the method
        {3, kFit, 2, 5, false, kBad, kBad, {u, u, u}}, {3, 7, 1, 0, false, kOk, kOk, {u, u, u}},
        {3, kSpline, 2, 0, false, kOk, kOk, {0, -3, 0}}, {3, kSpline, 1, 0, false, kOk, kOk, {1.5, 0, -1.5}},
        {3, kFit, 1, 2, false, kOk, kOk, {1, 0, -1}},  // order 1 has no lower limit; span 2 acts as 3
        {10, kFit, 1, 3, false, kOk, kOk, {1, 2, 4, 6, 8, 10, 12, 14, 16, 17}},  // windows cut at the ends
        {10, kFit, 1, 100, false, kOk, kOk, V(10, 9)},                           // every window the whole curve
        {10, kFit, 2, 5, false, kOk, kOk, {0, 0, 0, 6, 6, 6, 6, 0, 0, 0}},
        {10, kFit, 2, 100, false, kOk, kOk, {0, 0, 0, 11, 11, 11, 11, 0, 0, 0}},  // i points left, all right
        {6, kFit, 2, 100, false, kOk, kOk, V(6, 0)},                                // the zeros cover n = 4 .. 6
        {10, kFit, 1, 1, false, kOk, kOk, V(10, kNaN)}, {10, kFit, 1, -4, false, kOk, kOk, V(10, kNaN)},
        {10, kFit, 2, 3, false, kOk, kOk, {0, 0, 0, kNaN, kNaN, kNaN, kNaN, 0, 0, 0}}};
    for (const Row& r : rows) {
        const bool parabola = r.n == 10 || r.n == 6;
        A x(10), y(10), d(10, static_cast<T>(u));
        for (int i = 0; i < 10; ++i) {
            x[static_cast<std::size_t>(i)] = static_cast<T>(i);
            y[static_cast<std::size_t>(i)] = static_cast<T>(parabola ? i * i : i == 1);
        }
        const int status = Derive(x, y, d, r.n, r.method, r.order, r.span, r.nullX);
        EXPECT_EQ(sizeof(T) == 8 ? r.status : r.floatStatus, status) << "row " << &r - rows;
        for (std::size_t i = 0; i < 10; ++i) {
            const double expected = i < r.deriv.size() ? r.deriv[i] : u, got = static_cast<double>(d[i]);
            EXPECT_TRUE(std::isnan(expected) ? std::isnan(got) : std::fabs(expected - got) < 1e-12)
                << "row " << &r - rows << " at " << i << ": " << got;
        }
    }
}
TEST(DerivArray, ArgumentOrderAndCurves) { ExpectDerivativeCurves<double>(); }
TEST(DerivFloatArray, ArgumentOrderAndCurves) { ExpectDerivativeCurves<float>(); }

// An equal last pair: every element written (what the table's NaNs give), 1e15 at the last two, status 11, which the float
// twin reports without writing anything back. Otherwise the twin rounds the double result once.
TEST(DerivFloatArray, WritesBackOnlyOnSuccessAndRoundsOnce) {
    V x{0, 0.3, 1.1, 2.385, 2.385}, y{2.385, -1.25, 0.7, 0.1, 3.14159}, d(5, kUntouched);
    F xf(x.begin(), x.end()), yf(y.begin(), y.end()), df(5, 0.5f);
    EXPECT_EQ(kZeroWide, QAL_DerivArray(x.data(), y.data(), d.data(), 5, kSpline, 1, 0));
    EXPECT_TRUE(SamePoint(1e15, 1e15, d[3], d[4]) && std::count(d.begin(), d.end(), kUntouched) == 0);
    EXPECT_EQ(kZeroWide, QAL_DerivFloatArray(xf.data(), yf.data(), df.data(), 5, kSpline, 1, 0));
    EXPECT_EQ(F(5, 0.5f), df);
    x.assign(xf.begin(), xf.end() - 1), y.assign(yf.begin(), yf.end() - 1);
    for (int order : {1, 2}) {
        ASSERT_EQ(kOk, QAL_DerivArray(x.data(), y.data(), d.data(), 4, kSpline, order, 0));
        ASSERT_EQ(kOk, QAL_DerivFloatArray(xf.data(), yf.data(), df.data(), 4, kSpline, order, 0));
        for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(SameBits(static_cast<float>(d[i]), df[i])) << i;
    }
}

// One row per function: each failing allocation gives QAL_ERR_MEMORY with every array untouched and
// nothing leaked; the double function allocates its work array even for a method that needs none.
TEST(DerivArray, EveryAllocationFailureGivesMemoryWithArraysUntouched) {
    V d(4);
    F xf(kX.begin(), kX.end()), yf(kY.begin(), kY.end()), df(4);
    EXPECT_EQ(2, ExpectEveryAllocationFailureHandled([&] {
        d.assign(4, kUntouched);
        const int status = QAL_DerivArray(kX.data(), kY.data(), d.data(), 4, kSpline, 1, 0);
        return status == kOk || d == V(4, kUntouched) ? status : -1;
    }, kMem));
    EXPECT_EQ(1, ExpectEveryAllocationFailureHandled([&] {
        return QAL_DerivArray(kX.data(), kY.data(), d.data(), 4, 7, 1, 0);
    }, kMem));
    EXPECT_EQ(5, ExpectEveryAllocationFailureHandled([&] {
        df.assign(4, 0.5f);
        const int status = QAL_DerivFloatArray(xf.data(), yf.data(), df.data(), 4, kSpline, 1, 0);
        return status == kOk || df == F(4, 0.5f) ? status : -1;
    }, kMem));
    EXPECT_EQ(F(kX.begin(), kX.end()), xf);
}

}  // namespace
}  // namespace qal::test
