#include "frame/allocator.h"
#include "frame/constants.h"
#include "qal/qal.h"

namespace {

using qal::detail::allocateArray;
using qal::detail::kNoValue;
using qal::detail::releaseArray;

// Number of points on each side of the gap after the located position that the local
// line takes: 3, 2 or 1, the widest set that lies inside the data.
int localHalfWidth(int index, int n) noexcept {
    if (index > 1 && index < n - 3) return 3;
    if (index > 0 && index < n - 2) return 2;
    return 1;
}

// The least-squares line through count points at xValue, the product first.
double lineValue(const double* x, const double* y, int count, double xValue) noexcept {
    double intercept = 0.0;
    double slope = 0.0;
    QAL_LinFit(x, y, count, &intercept, &slope);
    return slope * xValue + intercept;
}

// The least-squares line through count points in log-log coordinates, the guarded
// logarithms (-30 for values below 1e-25, 30 above 1e25) kept in logX and logY.
void logLogFit(const double* x, const double* y, int count, double* logX, double* logY, double* intercept,
               double* slope) noexcept {
    for (int i = 0; i < count; ++i) {
        logX[i] = QAL_log10(x[i]);
        logY[i] = QAL_log10(y[i]);
    }
    QAL_LinFit(logX, logY, count, intercept, slope);
}

// Back from log-log coordinates, limited by the guarded power (0.0 below -25, 1e25 above 30).
double logLineValue(double intercept, double slope, double xValue) noexcept {
    return QAL_pow10(slope * QAL_log10(xValue) + intercept);
}

// One curve and one option, evaluated at any number of abscissae. What depends on the
// curve alone (the fit of option 2 and of option 12, the natural spline table of option 4,
// the logarithm arrays of option 14) is made at the first abscissa that needs it and kept
// for the later ones, with the status that making it gave. It depends on nothing else, so
// every abscissa gets exactly what a call of its own would give; only a failed work
// allocation is met once and then stands for every later abscissa that needs the array.
class Resampler {
public:
    // `table` is the caller's second-derivative table for option 4, or null.
    Resampler(const double* x, const double* y, int n, int option, const double* table) noexcept
        : x_(x), y_(y), n_(n), option_(actingOption(option)), table_(table) {}
    ~Resampler() {
        releaseArray(ownTable_);
        releaseArray(logX_);
        releaseArray(logY_);
    }
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    // QAL_Interpol after its pointer tests.
    int valueAt(double xValue, double* yOut) noexcept {
        const double* x = x_;
        const double* y = y_;
        const int n = n_;
        if (n < 1) return QAL_ERR_PARAMETER;
        if (n == 1) {
            *yOut = y[0];
            return QAL_OK;
        }
        *yOut = (y[n - 1] + y[0]) * 0.5;
        int index = 0;
        const int located = QAL_LocateValue(xValue, x, n, &index);
        if (located != QAL_OK) return located;  // the midpoint stays

        switch (option_) {
            case QAL_INTERPOL_LOCATED:
                *yOut = y[index];
                return QAL_OK;
            case QAL_INTERPOL_MIDPOINT:
                return QAL_OK;
            case QAL_INTERPOL_LINE:
                prepare();
                *yOut = slope_ * xValue + intercept_;
                return QAL_OK;
            case QAL_INTERPOL_SPLINE:
                if (prepare() != QAL_OK) return status_;  // the midpoint stays
                return QAL_CubicSplineInterpolation(x, y, table_, n, xValue, yOut);
            case QAL_INTERPOL_LOG_LINE:
                if (prepare() != QAL_OK) return status_;
                *yOut = logLineValue(intercept_, slope_, xValue);
                return QAL_OK;
            default:
                break;
        }
        // The local options fit the located point and the next; the last has no next.
        if (index >= n - 1) {
            *yOut = y[index];
            return QAL_OK;
        }
        if (option_ == QAL_INTERPOL_LOG_SEGMENT) {
            if (prepare() != QAL_OK) return status_;
            double intercept = 0.0;
            double slope = 0.0;
            logLogFit(x + index, y + index, 2, logX_, logY_, &intercept, &slope);
            *yOut = logLineValue(intercept, slope, xValue);
            return QAL_OK;
        }
        const int half = option_ == QAL_INTERPOL_SEGMENT ? 1 : localHalfWidth(index, n);
        const int first = index + 1 - half;
        *yOut = lineValue(x + first, y + first, 2 * half, xValue);
        return QAL_OK;
    }

private:
    // The option a value acts as: the named ones stand for themselves, 15 acts as the
    // midpoint, and every other value (below 0 and above 15 too) as the line.
    static int actingOption(int option) noexcept {
        switch (option) {
            case QAL_INTERPOL_LOCATED:
            case QAL_INTERPOL_MIDPOINT:
            case QAL_INTERPOL_SPLINE:
            case QAL_INTERPOL_SEGMENT:
            case QAL_INTERPOL_LOCAL_LINE:
            case QAL_INTERPOL_LOG_LINE:
            case QAL_INTERPOL_LOG_SEGMENT:
                return option;
            case 15:
                return QAL_INTERPOL_MIDPOINT;
            default:
                return QAL_INTERPOL_LINE;
        }
    }

    // The curve's share of the work of the option, made once; its status stands for every
    // later abscissa.
    int prepare() noexcept {
        if (!prepared_) {
            prepared_ = true;
            status_ = makeSharedWork();
        }
        return status_;
    }

    // A failed allocation gives QAL_ERR_MEMORY at options 12 and 14 as at option 4.
    int makeSharedWork() noexcept {
        switch (option_) {
            case QAL_INTERPOL_LINE:
                QAL_LinFit(x_, y_, n_, &intercept_, &slope_);
                return QAL_OK;
            case QAL_INTERPOL_SPLINE:
                if (table_ != nullptr) return QAL_OK;
                ownTable_ = allocateArray<double>(n_);
                if (ownTable_ == nullptr) return QAL_ERR_MEMORY;
                table_ = ownTable_;
                // Both end slopes 1e25: natural ends.
                return QAL_Splines(x_, y_, n_, kNoValue, kNoValue, ownTable_);
            case QAL_INTERPOL_LOG_LINE:
            case QAL_INTERPOL_LOG_SEGMENT: {
                const int count = option_ == QAL_INTERPOL_LOG_LINE ? n_ : 2;
                logX_ = allocateArray<double>(count);
                if (logX_ == nullptr) return QAL_ERR_MEMORY;
                logY_ = allocateArray<double>(count);
                if (logY_ == nullptr) return QAL_ERR_MEMORY;
                if (option_ == QAL_INTERPOL_LOG_LINE) logLogFit(x_, y_, n_, logX_, logY_, &intercept_, &slope_);
                return QAL_OK;
            }
            default:
                return QAL_OK;
        }
    }

    const double* x_;
    const double* y_;
    int n_;
    int option_;
    const double* table_;
    double* ownTable_ = nullptr;
    double* logX_ = nullptr;
    double* logY_ = nullptr;
    bool prepared_ = false;
    int status_ = QAL_OK;
    double intercept_ = 0.0;
    double slope_ = 0.0;
};

}  // namespace

int QAL_Interpol(double* yOut, double xValue, const double* x, const double* y, const double* y2, int n,
                 int option) {
    if (!x || !y || !yOut) return QAL_ERR_PARAMETER;
    Resampler resampler(x, y, n, option, y2);
    return resampler.valueAt(xValue, yOut);
}

// Exactly one QAL_Interpol call per new abscissa on the widened curve, without a table:
// the curve's share of the work is made once (see Resampler). A point that is refused
// keeps what the caller put in yNew.
int QAL_InterpolFloatArrays(const float* x, const float* y, int n, const float* xNew, float* yNew, int nNew,
                            int option) {
    if ((n > 0 && (!x || !y)) || (nNew > 0 && (!xNew || !yNew))) return QAL_ERR_PARAMETER;
    // A negative count fails its allocation.
    qal::detail::WorkArray<double> xWide(n);
    if (!xWide) return QAL_ERR_MEMORY;
    qal::detail::WorkArray<double> yWide(n);
    if (!yWide) return QAL_ERR_MEMORY;
    qal::detail::WorkArray<double> xNewWide(nNew);
    if (!xNewWide) return QAL_ERR_MEMORY;
    qal::detail::WorkArray<double> results(nNew);
    if (!results) return QAL_ERR_MEMORY;

    for (int i = 0; i < nNew; ++i) xNewWide[i] = static_cast<double>(xNew[i]);
    for (int i = 0; i < n; ++i) {
        xWide[i] = static_cast<double>(x[i]);
        yWide[i] = static_cast<double>(y[i]);
    }

    Resampler resampler(xWide.get(), yWide.get(), n, option, nullptr);
    int status = QAL_OK;
    for (int i = 0; i < nNew; ++i) {
        status = resampler.valueAt(xNewWide[i], &results[i]);
        if (status == QAL_OK) yNew[i] = static_cast<float>(results[i]);
    }
    return status;
}

// Both tests strict, in float: a sample on a limit is inside, and a NaN on either side
// fails the comparison and is not counted. A sample is counted once, also when it lies
// beyond both limits.
int QAL_CheckInOutArrays(const float* values, const float* lower, const float* upper, int n, int* outsideCount) {
    if (!values || !upper || n < 1 || !outsideCount) return QAL_ERR_PARAMETER;
    int outside = 0;
    for (int i = 0; i < n; ++i) {
        if (values[i] > upper[i] || (lower != nullptr && lower[i] > values[i])) ++outside;
    }
    *outsideCount = outside;
    return QAL_OK;
}
