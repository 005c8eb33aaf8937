// QAL_Interpol against its steps built from the routines it calls (location, line fits,
// spline, guarded logarithms), every option and out-of-range ones; QAL_InterpolFloatArrays
// at every instruction set against a QAL_Interpol loop on the widened curve, also with the
// results written over the new abscissae; QAL_CheckInOutArrays against its count.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

double Line(const double* x, const double* y, int count, double v) {
    double intercept = 0, slope = 0;
    QAL_LinFit(x, y, count, &intercept, &slope);
    return slope * v + intercept;
}

double LogLine(const double* x, const double* y, int count, double v) {
    std::vector<double> lx(count), ly(count);
    for (int i = 0; i < count; ++i) {
        lx[i] = QAL_log10(x[i]);
        ly[i] = QAL_log10(y[i]);
    }
    double intercept = 0, slope = 0;
    QAL_LinFit(lx.data(), ly.data(), count, &intercept, &slope);
    return QAL_pow10(slope * QAL_log10(v) + intercept);
}

// The outcome of QAL_Interpol on good pointers without a failing allocation.
int ModelInterpol(double v, const double* x, const double* y, const double* y2, int n, int option, double& out) {
    if (n < 1) return QAL_ERR_PARAMETER;
    if (option < 0 || option > 15) option = 2;
    if (n == 1) {
        out = y[0];
        return QAL_OK;
    }
    out = (y[n - 1] + y[0]) * 0.5;
    int index = 0;
    const int located = QAL_LocateValue(v, x, n, &index);
    if (located != QAL_OK) return located;
    switch (option) {
        case 0: out = y[index]; return QAL_OK;
        case 3: case 15: return QAL_OK;
        case 4: {
            std::vector<double> own;
            if (y2 == nullptr) {
                own.resize(n);
                const int built = QAL_Splines(x, y, n, 1e25, 1e25, own.data());
                if (built != QAL_OK) return built;
                y2 = own.data();
            }
            return QAL_CubicSplineInterpolation(x, y, y2, n, v, &out);
        }
        case 12: out = LogLine(x, y, n, v); return QAL_OK;
        case 5: case 6: case 14: break;
        default: out = Line(x, y, n, v); return QAL_OK;
    }
    if (index >= n - 1) {
        out = y[index];
        return QAL_OK;
    }
    if (option == 14) {
        out = LogLine(x + index, y + index, 2, v);
        return QAL_OK;
    }
    int half = 1;
    if (option == 6) half = index > 1 && index < n - 3 ? 3 : index > 0 && index < n - 2 ? 2 : 1;
    out = Line(x + index + 1 - half, y + index + 1 - half, 2 * half, v);
    return QAL_OK;
}

void Interpol(Input& in) {
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    const std::vector<double> table = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), y2(table), yOut(1);
    const int option = in.Option(0, 15);
    const bool withTable = in.Flag();
    const int nulls = in.Pick(20);
    const int failAt = FaultChoice(in);
    for (int k = 0; k < 3; ++k) {
        const double v = in.Real();
        yOut[0] = SentinelOf(0.0);
        int status;
        bool failed;
        {
            AllocationScope memory(failAt);
            status = QAL_Interpol(nulls == 1 ? nullptr : yOut.data(), v, nulls == 2 ? nullptr : x.data(),
                                  nulls == 3 ? nullptr : y.data(), withTable ? y2.data() : nullptr, n, option);
            failed = AllocationScope::Failed(failAt);
        }
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && y2.Unchanged(table) && yOut.GuardsIntact());
        if ((nulls >= 1 && nulls <= 3) || n < 1) {
            QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && yOut.AllSentinel());
            continue;
        }
        double expected = SentinelOf(0.0);
        const int modelStatus = ModelInterpol(v, xs.data(), ys.data(), withTable ? table.data() : nullptr, n, option,
                                              expected);
        if (failed) {
            // A failed work array leaves the midpoint (options 4, 12 and 14 allocate).
            QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && Same((ys[n - 1] + ys[0]) * 0.5, yOut[0]));
        } else {
            QAL_FUZZ_CHECK(status == modelStatus && Same(expected, yOut[0]));
        }
    }
}

void FloatArrays(Input& in) {
    int n = in.Count(), nNew = in.Count();
    // Every point of the loop below may build a spline or a fit: keep the product small.
    if (n > 0 && nNew > 0 && static_cast<long long>(n) * nNew > 400000) nNew = 400000 / n;
    const std::vector<float> xs = Abscissae<float>(in, n), ys = Ordinates<float>(in, n);
    std::vector<float> news = in.Flag() ? Abscissae<float>(in, nNew) : Ordinates<float>(in, nNew);
    if (in.Flag() && xs.size() > 1) {
        // Runs of abscissae on a knot and inside the interval after it, the cells of options
        // 4 and 5: a point on a knot may be located one position off, the points inside not.
        const std::size_t base = in.Byte();
        for (std::size_t i = 0; i < news.size(); ++i) {
            const std::size_t k = (base + i / 3) % (xs.size() - 1);
            const int part = in.Pick(3);
            news[i] = part == 0 ? xs[k] : xs[k] + (xs[k + 1] - xs[k]) * (part == 1 ? 0.25f : 0.5f);
        }
    }
    const std::vector<float> preset = Ordinates<float>(in, nNew);
    const int option = in.Option(0, 15);
    // The results in an array of their own, or over the new abscissae, in place or a few
    // elements off: every new abscissa is read before the first result is stored.
    const bool overlap = in.Pick(4) == 0 && nNew > 0;
    const int shift = overlap ? in.Pick(5) - 2 : 0;
    const int xAt = shift < 0 ? -shift : 0, yAt = xAt + shift;
    std::vector<float> start = preset;
    if (overlap) {
        start.assign(static_cast<std::size_t>(nNew + (shift < 0 ? -shift : shift)), 0.5f);
        for (int i = 0; i < nNew; ++i) start[xAt + i] = news[i];
    }
    const int nulls = in.Pick(24);
    const int failAt = FaultChoice(in);

    // The per-point loop on the widened curve.
    const std::vector<double> wx = Widened(xs), wy = Widened(ys);
    std::vector<float> expected = start;
    int expectedStatus = QAL_OK;
    for (int i = 0; i < nNew; ++i) {
        double value = 0;
        expectedStatus = QAL_Interpol(&value, static_cast<double>(news[i]), wx.data(), wy.data(), nullptr, n, option);
        if (expectedStatus == QAL_OK) expected[(overlap ? yAt : 0) + i] = static_cast<float>(value);
    }

    for (InstructionSet level : OfferedLevels()) {
        Level held(level);
        Guarded<float> x(xs), y(ys), xNew(overlap ? std::vector<float>() : news), results(start);
        float* const from = overlap ? results.data() + xAt : xNew.data();
        float* const into = overlap ? results.data() + yAt : results.data();
        int status;
        bool failed;
        {
            AllocationScope memory(failAt);
            status = QAL_InterpolFloatArrays(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n,
                                             nulls == 3 ? nullptr : from, nulls == 4 ? nullptr : into, nNew, option);
            failed = AllocationScope::Failed(failAt);
        }
        QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && x.GuardsIntact() && y.GuardsIntact());
        QAL_FUZZ_CHECK(xNew.GuardsIntact() && results.GuardsIntact() && (overlap || xNew.Unchanged(news)));
        if ((nulls == 1 || nulls == 2) && n > 0 ? true : (nulls == 3 || nulls == 4) && nNew > 0) {
            QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && results.Unchanged(start));
        } else if (n < 0 || nNew < 0) {
            QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && results.Unchanged(start));
        } else if (failed) {
            // Each point either refused (as it was) or as its own call gives it.
            QAL_FUZZ_CHECK(IsStatus(status));
            for (int i = 0; i < results.size(); ++i) {
                QAL_FUZZ_CHECK(Same(start[i], results[i]) || Same(expected[i], results[i]));
            }
        } else {
            QAL_FUZZ_CHECK(status == expectedStatus && results.Matches(expected));
        }
    }
}

void InOut(Input& in) {
    const int n = in.Count();
    const std::vector<float> v = Ordinates<float>(in, n), lo = Ordinates<float>(in, n), hi = Ordinates<float>(in, n);
    Guarded<float> values(v), lower(lo), upper(hi);
    Guarded<int> count(1);
    const int nulls = in.Pick(16);
    AllocationScope memory;
    const int status = QAL_CheckInOutArrays(nulls == 1 ? nullptr : values.data(), nulls == 2 ? nullptr : lower.data(),
                                            nulls == 3 ? nullptr : upper.data(), n,
                                            nulls == 4 ? nullptr : count.data());
    QAL_FUZZ_CHECK(values.Unchanged(v) && lower.Unchanged(lo) && upper.Unchanged(hi) && count.GuardsIntact());
    if (nulls == 1 || nulls == 3 || nulls == 4 || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && IsSentinel(count[0]));
        return;
    }
    int outside = 0;
    for (int i = 0; i < n; ++i) outside += v[i] > hi[i] || (nulls != 2 && lo[i] > v[i]) ? 1 : 0;
    QAL_FUZZ_CHECK(status == QAL_OK && count[0] == outside);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    switch (in.Pick(3)) {
        case 0: Interpol(in); break;
        case 1: FloatArrays(in); break;
        default: InOut(in); break;
    }
    return 0;
}
