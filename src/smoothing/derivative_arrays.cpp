#include <algorithm>
#include <cstdint>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "interpolation/knot_bracket.h"
#include "qal/qal.h"

namespace {

using qal::detail::WorkArray;

// An end slope at or above 1e25 asks QAL_Splines for a natural end.
constexpr double kNaturalEnd = qal::detail::kNoValue;

// Slope of QAL_LinFit through the `count` samples from position `first` on; the intercept
// is dropped. One sample gives NaN, and so does a set of none (a negative span asks for
// one): such a set reads nothing, so its start is never formed beyond the data.
// Positions come in 64 bits, so that i +- half cannot overflow for any span.
double windowSlope(const double* x, const double* y, std::int64_t first, std::int64_t count) noexcept {
    if (count < 1) {
        first = 0;
        count = 0;
    }
    double intercept = 0.0;
    double slope = 0.0;
    QAL_LinFit(x + first, y + first, static_cast<int>(count), &intercept, &slope);
    return slope;
}

// Each sample's slope from the fit over i - half .. i + half, cut off at the ends of the
// data, so that the set moves off centre there; every fit from scratch, no running sums.
void fittedSlopes(const double* x, const double* y, double* deriv, int n, int half) noexcept {
    for (int i = 0; i < n; ++i) {
        const std::int64_t first = std::max<std::int64_t>(std::int64_t{i} - half, 0);
        const std::int64_t last = std::min<std::int64_t>(std::int64_t{i} + half, n - 1);
        deriv[i] = windowSlope(x, y, first, last - first + 1);
    }
}

// The change of slope across each sample: the fit over the `half` samples after it minus
// the fit over the `half` before it (fewer where the data end), the sample itself in
// neither. Not divided by any distance. Three samples at each end are 0.0; for n = 4 .. 6
// these writes cover the whole array and overlap.
void slopeChanges(const double* x, const double* y, double* deriv, int n, int half) noexcept {
    deriv[0] = 0.0;
    deriv[1] = 0.0;
    deriv[2] = 0.0;
    deriv[n - 3] = 0.0;
    deriv[n - 2] = 0.0;
    deriv[n - 1] = 0.0;
    for (int i = 3; i <= n - 4; ++i) {
        const std::int64_t leftFirst = std::max<std::int64_t>(std::int64_t{i} - half, 0);
        const double left = windowSlope(x, y, leftFirst, i - leftFirst);
        const double right = windowSlope(x, y, i + 1, std::min<std::int64_t>(half, n - 1 - i));
        deriv[i] = right - left;
    }
}

// The natural spline's table goes to `table`. Order 2 copies it (0.0 at both ends);
// order 1 differentiates at every knot, and the status of the last knot is the result,
// so an earlier zero-wide bracket shows only as its 1e15.
int splineDerivatives(const double* x, const double* y, double* deriv, int n, int order, double* table) noexcept {
    int status = QAL_Splines(x, y, n, kNaturalEnd, kNaturalEnd, table);
    if (status != QAL_OK) return status;
    if (order == 2) {
        for (int i = 0; i < n; ++i) deriv[i] = table[i];
        return QAL_OK;
    }
    for (int i = 0; i < n; ++i) status = QAL_FirstDerivative(x, y, table, n, x[i], &deriv[i]);
    return status;
}

// The tests after the pointers, then the work. Any method but the two leaves deriv as it
// was with QAL_OK; `span` is read by the line fits only.
int derivativeCurve(const double* x, const double* y, double* deriv, int n, int method, int order, int span,
                    double* work) noexcept {
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    if (order != 1 && order != 2) return QAL_ERR_PARAMETER;
    if (method == QAL_DERIV_LINE_FIT && order == 2 && n < 4) return QAL_ERR_PARAMETER;
    if (method == QAL_DERIV_SPLINE) return splineDerivatives(x, y, deriv, n, order, work);
    if (method == QAL_DERIV_LINE_FIT) {
        // Truncated toward zero: an odd span and the even one below it agree.
        const int half = span / 2;
        if (order == 1) {
            fittedSlopes(x, y, deriv, n, half);
        } else {
            slopeChanges(x, y, deriv, n, half);
        }
    }
    return QAL_OK;
}

// A double copy of a float array by QAL_F2D, released unless QAL_D2F has taken it back.
class WideCopy {
public:
    WideCopy() noexcept = default;
    ~WideCopy() { qal::detail::releaseArray(data_); }
    WideCopy(const WideCopy&) = delete;
    WideCopy& operator=(const WideCopy&) = delete;

    int widen(const float* source, int n) noexcept { return QAL_F2D(source, n, &data_); }
    // QAL_D2F releases the copy when it succeeds; only then is it no longer ours.
    int narrowInto(float* target, int n) noexcept {
        const int status = QAL_D2F(target, n, &data_);
        if (status == QAL_OK) data_ = nullptr;
        return status;
    }
    double* get() const noexcept { return data_; }

private:
    double* data_ = nullptr;
};

}  // namespace

// No range test: outside the knots the cubic of the end interval goes on. Where
// QAL_CubicSplineInterpolation writes y[lo] at a zero-wide bracket, this writes 1e15.
int QAL_FirstDerivative(const double* x, const double* y, const double* y2, int n, double xValue, double* deriv) {
    if (qal::detail::refusesSplineKnots(x, y, y2, n) || !deriv) return QAL_ERR_PARAMETER;
    qal::detail::KnotInterval s{};
    if (!qal::detail::knotInterval(x, n, xValue, s)) {
        *deriv = qal::detail::kZeroDivisorSubstitute;
        return QAL_ERR_ZERO_DIVISION;
    }
    // Products from the left (3.0 * b first); the bracket is scaled by h, then divided by 6.0.
    const double bend = (3.0 * s.b * s.b - 1.0) * y2[s.hi] - (3.0 * s.a * s.a - 1.0) * y2[s.lo];
    *deriv = bend * s.h / 6.0 + (y[s.hi] - y[s.lo]) / s.h;
    return QAL_OK;
}

// y is tested like the other arrays although the value does not read it.
int QAL_SecondDerivative(const double* x, const double* y, const double* y2, int n, double xValue, double* deriv2) {
    if (qal::detail::refusesSplineKnots(x, y, y2, n) || !deriv2) return QAL_ERR_PARAMETER;
    qal::detail::KnotInterval s{};
    if (!qal::detail::knotInterval(x, n, xValue, s)) {
        *deriv2 = qal::detail::kZeroDivisorSubstitute;
        return QAL_ERR_ZERO_DIVISION;
    }
    *deriv2 = s.a * y2[s.lo] + s.b * y2[s.hi];
    return QAL_OK;
}

int QAL_DerivArray(const double* x, const double* y, double* deriv, int n, int method, int order, int span) {
    // Allocated before any test and for every method, so that a negative n reports the
    // failed allocation (8) and n = 0 gets as far as the count test (38).
    const WorkArray<double> work(n);
    if (!x || !y || !deriv || !work) return QAL_ERR_MEMORY;
    return derivativeCurve(x, y, deriv, n, method, order, span, work.get());
}

// On widened copies of x, y and deriv (deriv too, so that what no step writes keeps the
// caller's value); only a call that succeeds narrows them back, so a failure writes
// nothing. x and y come back unchanged, since a widened float narrows to itself.
int QAL_DerivFloatArray(float* x, float* y, float* deriv, int n, int method, int order, int span) {
    if (!x || !y || !deriv) return QAL_ERR_MEMORY;
    WideCopy wideX, wideY, wideDeriv;
    int status = wideX.widen(x, n);
    if (status != QAL_OK) return status;
    status = wideY.widen(y, n);
    if (status != QAL_OK) return status;
    status = wideDeriv.widen(deriv, n);
    if (status != QAL_OK) return status;
    {
        const WorkArray<double> work(n);
        if (!work) return QAL_ERR_MEMORY;
        status = derivativeCurve(wideX.get(), wideY.get(), wideDeriv.get(), n, method, order, span, work.get());
    }
    if (status != QAL_OK) return status;
    wideX.narrowInto(x, n);
    wideY.narrowInto(y, n);
    return wideDeriv.narrowInto(deriv, n);
}
