// QAL_GetExtremum's outcomes (the told statuses, 0.0 preset, the kind written only on
// acceptance, the flat outcome, a sample for useVertex 0), and the four drivers at every
// instruction set against their passes built on QAL_GetExtremum window by window: window
// sizes from every `window` and n, the sentinels, kinds outside the two, flat windows,
// outputs that lie inside the curve.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

struct Outcome {
    int status;
    double x, y;
};

int WindowSize(int window, int n) {
    long long size = window > n ? n / 2 : (window < 0 ? -static_cast<long long>(window) : window);
    size = size / 3 * 3;
    return size < 3 ? 3 : static_cast<int>(size);
}

bool Improves(int kind, double candidate, double best) {
    return (kind == QAL_EXTREMUM_MAX && candidate > best) || (kind == QAL_EXTREMUM_MIN && candidate < best);
}

// Window `start` of `size`: whether QAL_GetExtremum accepts it (with the kind it tells).
bool Judge(const std::vector<double>& x, const std::vector<double>& y, int start, int size, int useVertex, float h,
           int& kind, double& wx, double& wy) {
    kind = 0;  // no kind: a flat window tells none
    return QAL_GetExtremum(&x[start], &y[start], size, &wx, &wy, &kind, useVertex, h) == QAL_OK;
}

// Drivers 0 next, 1 range, 2 auto-range, 3 auto; outputs preset by the caller.
Outcome ModelDriver(int driver, const std::vector<double>& x, const std::vector<double>& y, int n, double xOut,
                    double yOut, int window, int kind, int useVertex, float h) {
    const double sentinel = kind == QAL_EXTREMUM_MAX ? -1e25 : 1e25;
    if (n < (driver == 3 ? 1 : 3)) return {QAL_ERR_MEMORY, xOut, yOut};
    int wk;
    double wx, wy;
    if (driver == 3) {
        int coarse = n / 5 / 3 * 3, fine;
        if (coarse >= 42) {
            coarse = 42, fine = 21;
        } else {
            coarse = coarse < 12 ? 12 : coarse;
            fine = coarse / 4 / 3 * 3;
            fine = fine < 9 ? 9 : fine;
        }
        if (coarse > n) return {QAL_ERR_PARAMETER, xOut, yOut};
        double best = sentinel;
        int bestStart = 0;
        for (int s = 0; s < n - coarse; ++s) {
            if (Judge(x, y, s, coarse, useVertex, h, wk, wx, wy) && Improves(kind, wy, best)) {
                best = yOut = wy, xOut = wx, bestStart = s;
            }
        }
        best = sentinel;
        for (int s = bestStart; s < bestStart + coarse - fine; ++s) {
            if (Judge(x, y, s, fine, useVertex, h, wk, wx, wy) && Improves(kind, wy, best)) best = yOut = wy, xOut = wx;
        }
        return {QAL_OK, xOut, yOut};
    }
    double best = sentinel;
    yOut = sentinel, xOut = x[0];
    int w = WindowSize(window, n);
    if (driver == 0) {
        if (w > n) return {QAL_ERR_OUT_OF_RANGE, xOut, yOut};
        for (int s = 0; s < n - w; ++s) {
            if (Judge(x, y, s, w, useVertex, h, wk, wx, wy) && wk == kind && Improves(kind, wy, best)) {
                return {QAL_OK, wx, wy};
            }
        }
        return {QAL_ERR_NOT_FOUND, xOut, yOut};
    }
    int status = QAL_ERR_NOT_FOUND;
    do {
        for (int s = 0; s < n - w; ++s) {
            if (Judge(x, y, s, w, useVertex, h, wk, wx, wy) && wk == kind && Improves(kind, wy, best)) {
                best = yOut = wy, xOut = wx, status = QAL_OK;
            }
        }
        w *= 2;
    } while (driver == 2 && status != QAL_OK && w < n / 3);
    return {status, xOut, yOut};
}

Outcome RunDriver(int driver, const double* x, const double* y, int n, double* xOut, double* yOut, int window,
                  int kind, int useVertex, float h) {
    int status;
    switch (driver) {
        case 0: status = QAL_GetNextExtremum(x, y, n, xOut, yOut, window, kind, useVertex, h); break;
        case 1: status = QAL_GetRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, h); break;
        case 2: status = QAL_GetAutoRangeExtremum(x, y, n, xOut, yOut, window, kind, useVertex, h); break;
        default: status = QAL_GetAutoExtremum(x, y, n, xOut, yOut, kind, useVertex, h); break;
    }
    return {status, xOut ? *xOut : 0.0, yOut ? *yOut : 0.0};
}

// A curve that has peaks and troughs: a few parabolas, noise from the input on top; or
// small whole numbers, whose means and heights meet the acceptance tests' limits exactly.
std::vector<double> Bumps(Input& in, int n) {
    std::vector<double> y = Ordinates<double>(in, n);
    if (in.Pick(4) == 0) {
        const double base = 100.0 * (in.Pick(3) - 1);
        for (int i = 0; i < n; ++i) y[i] = base + in.Pick(21) - 10;
        return y;
    }
    const double period = 3 + in.Pick(60), scale = in.Flag() ? 1.0 : in.Real();
    for (int i = 0; i < n; ++i) {
        const double t = std::fmod(i, period) - period / 2;
        y[i] = in.Flag() ? scale * (100.0 - t * t) + (in.Pick(4) == 0 ? y[i] : 0.0) : y[i];
    }
    return y;
}

// QAL_GetExtremum by its steps: the three mean points, the Lagrange parabola through them,
// the slope test against +1e-6, the flat outcome, Newton's steps, the four tests of each
// kind, the extreme sample for useVertex 0.
int ModelExtremum(const std::vector<double>& x, const std::vector<double>& y, int n, double& xo, double& yo, int& kind,
                  int useVertex, float percent) {
    xo = yo = 0.0;
    if (n < 3 || n % 3 != 0) return QAL_ERR_PARAMETER;
    const int third = n / 3;
    double mx[3], my[3];
    for (int k = 0; k < 3; ++k) {
        double sx = 0.0, sy = 0.0;
        for (int i = k * third; i < (k + 1) * third; ++i) sx += x[i], sy += y[i];
        mx[k] = sx / third, my[k] = sy / third;
    }
    const double x1 = mx[0], x2 = mx[1], x3 = mx[2], y1 = my[0], y2 = my[1], y3 = my[2];
    if (1e-25 > std::fabs(x1 - x2) || 1e-25 > std::fabs(x1 - x3) || 1e-25 > std::fabs(x2 - x3)) {
        return QAL_ERR_ZERO_DIVISION;
    }
    const double w1 = y1 / ((x1 - x3) * (x1 - x2)), w2 = y2 / ((x2 - x3) * (x2 - x1)), w3 = y3 / ((x3 - x2) * (x3 - x1));
    const auto slope = [&](double t) {
        return w1 * (2 * t - x2 - x3) + w2 * (2 * t - x1 - x3) + w3 * (2 * t - x1 - x2);
    };
    const auto value = [&](double t) {
        return (t - x3) * (t - x2) * w1 + (t - x3) * (t - x1) * w2 + (t - x2) * (t - x1) * w3;
    };
    const double s1 = slope(x1), s3 = slope(x3);
    if (!((s1 < 1e-6 && s3 > 1e-6) || (s1 > 1e-6 && s3 < 1e-6))) return QAL_ERR_NOT_FOUND;
    const double curvature = 2 * w2 + 2 * w1 + 2 * w3;
    if (std::fabs(curvature) <= 1e-6) return QAL_OK;
    double t = x1 - s1 / curvature, d = slope(t);
    for (int count = 1; std::fabs(d) >= 1e-6 && count < 40; ++count) {
        d = d / curvature;
        t = t - d;
        d = slope(t);
    }
    if (!(std::fabs(d) < 1e-6)) return QAL_ERR_NOT_FOUND;
    xo = t, yo = value(t);
    const double h = std::fabs(y2) / 100.0 * static_cast<double>(percent);
    const bool sameSide = y2 * y1 > 0 && y3 * y2 > 0;
    const bool max = curvature < 0 && y2 > y1 && y2 > y3 && sameSide && (y2 - y1 > h || y2 - y3 > h);
    const bool min = curvature > 0 && y2 < y1 && y2 < y3 && sameSide && (y1 - y2 > h || y3 - y2 > h);
    if (!max && !min) return QAL_ERR_NOT_FOUND;
    if (useVertex == 0) {
        yo = max ? -1e25 : 1e25;
        for (int i = 0; i < n; ++i) {
            if (max ? y[i] > yo : y[i] < yo) yo = y[i], xo = x[i];
        }
    }
    kind = max ? QAL_EXTREMUM_MAX : QAL_EXTREMUM_MIN;
    return QAL_OK;
}

void Single(Input& in) {
    const int n = in.Pick(8) == 0 ? in.Count() : 3 * in.Pick(12);
    const std::vector<double> xs = Abscissae<double>(in, n), ys = in.Flag() ? Bumps(in, n) : Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), out(2);
    Guarded<int> kind(1);
    const int useVertex = in.Flag() ? 0 : in.Int();
    const float h = in.Flag() ? static_cast<float>(5 * in.Pick(5)) : in.RealF();
    const int status = QAL_GetExtremum(x.data(), y.data(), n, out.data(), out.data() + 1, kind.data(), useVertex, h);
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact() && kind.GuardsIntact());
    double xo, yo;
    int expectedKind = SentinelOf(0);
    QAL_FUZZ_CHECK(status == ModelExtremum(xs, ys, n, xo, yo, expectedKind, useVertex, h));
    QAL_FUZZ_CHECK(Same(xo, out[0]) && Same(yo, out[1]) && kind[0] == expectedKind);
}

void Drivers(Input& in) {
    const int driver = in.Pick(4);
    int n = in.Count();
    int window = in.Flag() ? in.Option(0, 40) : in.Count();
    // Each pass costs n times the window: keep it affordable.
    if (n > 500) n = 500;
    if (driver != 3 && static_cast<long long>(n) * WindowSize(window, n) > 30000) window = 30000 / (n > 0 ? n : 1);
    static const int kinds[] = {QAL_EXTREMUM_MAX, QAL_EXTREMUM_MIN, 0, QAL_ERR_ZERO_DIVISION, 22};
    const int kind = kinds[in.Pick(5)];
    const int useVertex = in.Pick(3) == 0 ? 1 : 0;
    const float h = in.Flag() ? static_cast<float>(5 * in.Pick(5)) : in.RealF();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Bumps(in, n);
    const int nulls = in.Pick(24);
    // The outputs in their own places, or inside the curve (then every level must give
    // what the scalar level gives).
    const int inside = n > 0 ? in.Pick(6) : 0;
    const int at = n > 0 ? in.Pick(n) : 0;

    std::vector<double> reference;
    for (InstructionSet level : OfferedLevels()) {
        Level held(level);
        CurveOutputs c(xs, ys, inside, at);
        AllocationScope memory;
        const Outcome o = RunDriver(driver, nulls == 1 ? nullptr : c.x.data(), nulls == 2 ? nullptr : c.y.data(), n,
                                    nulls == 3 ? nullptr : c.xOut, nulls == 4 ? nullptr : c.yOut, window, kind,
                                    useVertex, h);
        QAL_FUZZ_CHECK(c.GuardsIntact() && IsStatus(o.status));
        if (nulls >= 1 && nulls <= 4) {
            QAL_FUZZ_CHECK(o.status == QAL_ERR_MEMORY && c.x.Unchanged(xs) && c.y.Unchanged(ys) && c.out.AllSentinel());
            return;
        }
        if (c.Apart()) {
            QAL_FUZZ_CHECK(c.x.Unchanged(xs) && c.y.Unchanged(ys));
            const Outcome m = ModelDriver(driver, xs, ys, n, SentinelOf(0.0), SentinelOf(0.0), window, kind, useVertex, h);
            QAL_FUZZ_CHECK(o.status == m.status && Same(m.x, o.x) && Same(m.y, o.y));
        } else if (level == InstructionSet::kScalar) {
            reference = c.State(o.status);
        } else {
            QAL_FUZZ_CHECK(SameState(reference, c.State(o.status)));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    if (in.Pick(3) == 0) {
        Single(in);
    } else {
        Drivers(in);
    }
    return 0;
}
