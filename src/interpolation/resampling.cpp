#include <cstdint>
#include <limits>

#include "frame/allocator.h"
#include "frame/constants.h"
#include "interpolation/knot_bracket.h"
#include "interpolation/resampling_lanes.h"
#include "interpolation/spline_interval.h"
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
// logarithms (-30 for values not above 1e-25, 30 above 1e25) kept in logX and logY.
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

    // QAL_InterpolFloatArrays' loop over xNew[0..nNew-1], each widened as it is read: the
    // value of each point whose call gives QAL_OK into yNew, `results` as the work array for
    // the rest. Returns the last point's status.
    template <class Abscissa>
    int resample(const Abscissa* xNew, float* yNew, double* results, int nNew) noexcept {
        const bool cells = formsCells();
        int status = QAL_OK;
        int i = 0;
        while (i < nNew) {
            const double v = static_cast<double>(xNew[i]);
            if (cells && (inCell(v) || enterCell(v))) {
                yNew[i] = static_cast<float>(cellValue(v));
                status = QAL_OK;
                i = continueInCell(xNew, yNew, i + 1, nNew);
                continue;
            }
            status = valueAt(v, &results[i]);
            if (status == QAL_OK) yNew[i] = static_cast<float>(results[i]);
            ++i;
        }
        return status;
    }

private:
    // Cells. Between two neighbouring knots of strictly ascending data, x[k] < v < x[k+1],
    // every comparison that QAL_LocateValue and the knot bracket make on v comes out alike
    // for every such v, since no knot lies between: the location (status QAL_OK and its
    // index, wherever the bisection stops) and the bracket (k, k + 1) belong to the cell,
    // and so do the cubic of option 4 and the line of option 5 made from them. A cell is
    // made at its first point and kept while the points stay in it; the rest go the way of
    // their own call.
    // Boundary rules:
    //   knots not strictly ascending (equal, NaN)  no cells in the whole call
    //   v on a knot, at or beyond an end, or NaN   no cell: the point's own call
    //   spline interval width not above 1e-25      no cell (the call gives QAL_ERR_ZERO_DIVISION)
    //   option 4 without its table (n > 10000, no memory)  no cell (the call gives the status)
    bool formsCells() const noexcept {
        if ((option_ != QAL_INTERPOL_SPLINE && option_ != QAL_INTERPOL_SEGMENT) || n_ < 2) return false;
        for (int i = 0; i + 1 < n_; ++i) {
            if (!(x_[i] < x_[i + 1])) return false;  // a NaN fails it too
        }
        return true;
    }

    // The open interval: a NaN v, and the NaN bounds before the first cell, compare false.
    bool inCell(double v) const noexcept { return cellLower_ < v && v < cellUpper_; }

    bool enterCell(double v) noexcept {
        const double* x = x_;
        const int n = n_;
        if (!(x[0] < v && v < x[n - 1])) return false;
        if (option_ == QAL_INTERPOL_SPLINE && prepare() != QAL_OK) return false;
        // Usually the next cell; else the bracket, whose lower knot on strictly ascending
        // knots is the last one at or below v.
        int lo = cellLo_ + 1;
        if (!(cellLo_ >= 0 && lo < n - 1 && x[lo] <= v && v < x[lo + 1])) lo = qal::detail::knotBracket(x, n, v).lo;
        if (!(x[lo] < v)) return false;  // on a knot, where the bisection may stop
        if (option_ == QAL_INTERPOL_SPLINE) {
            const qal::detail::SplineInterval interval = qal::detail::splineInterval(x, y_, table_, lo, lo + 1);
            if (interval.hasZeroWidth()) return false;
            spline_ = interval;
        } else {
            int index = 0;
            QAL_LocateValue(v, x, n, &index);  // QAL_OK inside the ends
            lineOnLast_ = index >= n - 1;
            if (lineOnLast_) {
                lastValue_ = y_[index];
            } else {
                QAL_LinFit(x + index, y_ + index, 2, &line_.intercept, &line_.slope);
            }
        }
        cellLo_ = lo;
        cellLower_ = x[lo];
        cellUpper_ = x[lo + 1];
        return true;
    }

    double cellValue(double v) const noexcept {
        double value = lastValue_;
        if (option_ == QAL_INTERPOL_SPLINE) {
            spline_.valueAt(v, value);
        } else if (!lineOnLast_) {
            line_.valueAt(v, value);
        }
        return value;
    }

    // The points from `from` on that stay in the cell, in lanes; returns the first one left.
    template <class Abscissa>
    int continueInCell(const Abscissa* xNew, float* yNew, int from, int nNew) const noexcept {
        if (option_ == QAL_INTERPOL_SPLINE) {
            return qal::detail::resampleInCell(spline_, cellLower_, cellUpper_, xNew, yNew, from, nNew);
        }
        if (lineOnLast_) return from;
        return qal::detail::resampleInCell(line_, cellLower_, cellUpper_, xNew, yNew, from, nNew);
    }

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
    // The cell in use: x[cellLo_] and x[cellLo_ + 1], and what the option made of it.
    int cellLo_ = -1;
    double cellLower_ = std::numeric_limits<double>::quiet_NaN();
    double cellUpper_ = std::numeric_limits<double>::quiet_NaN();
    qal::detail::SplineInterval spline_{};
    qal::detail::LineSegment line_{};
    bool lineOnLast_ = false;  // the located index is n - 1: its ordinate, no line
    double lastValue_ = 0.0;
};

}  // namespace

int QAL_Interpol(double* yOut, double xValue, const double* x, const double* y, const double* y2, int n,
                 int option) {
    if (!x || !y || !yOut) return QAL_ERR_PARAMETER;
    Resampler resampler(x, y, n, option, y2);
    return resampler.valueAt(xValue, yOut);
}

// Exactly one QAL_Interpol outcome per new abscissa on the widened curve, without a table:
// the curve's share of the work is made once, and at options 4 and 5 that of each cell of
// the knots (see Resampler). A point that is refused keeps what the caller put in yNew.
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

    for (int i = 0; i < n; ++i) {
        xWide[i] = static_cast<double>(x[i]);
        yWide[i] = static_cast<double>(y[i]);
    }
    Resampler resampler(xWide.get(), yWide.get(), n, option, nullptr);

    // Every new abscissa is read before the first result is stored. Where yNew shares no
    // element with xNew, reading each in its turn gives the same; addresses compare as
    // integers, since the arrays may be unrelated.
    const auto address = [](const float* p) { return reinterpret_cast<std::uintptr_t>(p); };
    if (address(yNew + nNew) <= address(xNew) || address(xNew + nNew) <= address(yNew)) {
        return resampler.resample(xNew, yNew, results.get(), nNew);
    }
    for (int i = 0; i < nNew; ++i) xNewWide[i] = static_cast<double>(xNew[i]);
    return resampler.resample(xNewWide.get(), yNew, results.get(), nNew);
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
