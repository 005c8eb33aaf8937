// The five threshold and end-point searches against their steps (the float level of every
// kind and direction, the pairs each scan examines, the far-end rule, the lines through the
// hit pair), at every instruction set; with outputs inside the curve every level must give
// what the scalar level gives, the curve included.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

struct Args {
    int fn, n, kind, direction, mode;
    float threshold, percent, xDiff;
};

int Run(const Args& a, const double* x, const double* y, double* xOut, double* yOut) {
    switch (a.fn) {
        case 0: return QAL_FindX_at_YThreshold(x, y, a.n, a.kind, a.direction, a.mode, a.threshold, a.percent, xOut, yOut);
        case 1: return QAL_GetY_at_XDiff(x, y, a.n, a.kind, a.direction, a.mode, a.xDiff, xOut, yOut);
        case 2: return QAL_Find_LastPoint(x, y, a.n, a.kind, a.direction, xOut, yOut);
        case 3: return QAL_Calc_AbsMaximum(x, y, a.n, xOut, yOut);
        default: return QAL_Calc_AbsMinimum(x, y, a.n, xOut, yOut);
    }
}

double ThresholdLevel(const Args& a, const std::vector<double>& y) {
    const int n = a.n;
    float nearValue = 0.0f, farValue = 0.0f;
    if (a.direction == 1) nearValue = static_cast<float>(y[0]), farValue = static_cast<float>(y[n - 1]);
    if (a.direction == 2) nearValue = static_cast<float>(y[n - 1]), farValue = static_cast<float>(y[0]);
    float level = a.threshold;
    if (a.kind == 2) level = farValue * 0.01f * a.percent;
    if (a.kind == 3) level = a.threshold + nearValue;
    if (a.kind == 4) level = static_cast<float>(std::fabs(y[n - 1] - y[0])) * 0.01f * a.percent + nearValue;
    if (a.kind == 5) level = nearValue * 0.01f * a.percent;
    return static_cast<double>(level);
}

int Model(const Args& a, const std::vector<double>& x, const std::vector<double>& y, double& xo, double& yo) {
    const int n = a.n;
    yo = y[0], xo = x[0];
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    const auto point = [&](int i) { yo = y[i], xo = x[i]; };
    if (a.fn == 0) {
        const double L = ThresholdLevel(a, y);
        const auto hit = [&](double p, double q) { return 0.0 >= (p - L) * (q - L); };
        if (a.direction == 2) {
            point(n - 1);
            for (int i = n - 1; i >= 1; --i) {
                if (!hit(y[i], y[i - 1])) continue;
                if (a.mode == 2 && i < n - 1) {
                    xo = QAL_CalcLinY(L, &x[i - 1], &y[i - 1], 2), yo = L;
                } else {
                    point(i);
                }
                return QAL_OK;
            }
            if (0.0 >= (y[0] - y[n - 1]) * (y[n - 1] - L)) point(0);
            return QAL_ERR_NOT_FOUND;
        }
        for (int i = 0; i < n - 2; ++i) {
            if (!hit(y[i + 1], y[i])) continue;
            if (a.mode == 2) {
                xo = QAL_CalcLinY(L, &x[i], &y[i], 2), yo = L;
            } else {
                point(i);
            }
            return QAL_OK;
        }
        if (0.0 >= (y[n - 1] - L) * (y[n - 1] - y[0])) point(n - 1);
        return QAL_ERR_NOT_FOUND;
    }
    if (a.fn == 1) {
        const double distance = static_cast<double>(std::fabs(a.xDiff));
        int found = -1;
        double target;
        if (a.direction == 2) {
            yo = y[0], target = xo = x[n - 1] - distance;
            for (int i = n - 1; i >= 0 && found < 0; --i) found = target >= x[i] ? i : -1;
        } else {
            yo = y[n - 1], target = xo = distance + x[0];
            for (int i = 0; i < n && found < 0; ++i) found = x[i] >= target ? i : -1;
        }
        if (found < 0) return QAL_ERR_OUT_OF_RANGE;
        if (a.mode == 2 && found != 0) {
            yo = QAL_CalcLinX(target, &x[found - 1], &y[found - 1], 2);
        } else {
            point(found);
        }
        return QAL_OK;
    }
    if (a.fn == 2) {
        point(n - 1);
        return QAL_OK;
    }
    int status = QAL_ERR_NOT_FOUND;
    for (int i = 0; i < n; ++i) {
        if (a.fn == 3 ? y[i] >= yo : yo >= y[i]) point(i), status = QAL_OK;
    }
    return status;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    Args a{};
    a.fn = in.Pick(5);
    a.n = in.Count();
    a.kind = in.Option(0, 6);
    a.direction = in.Option(0, 3);
    a.mode = in.Option(0, 3);
    a.threshold = in.RealF();
    a.percent = in.RealF();
    a.xDiff = in.RealF();
    const std::vector<double> xs = Abscissae<double>(in, a.n), ys = Ordinates<double>(in, a.n);
    const int nulls = in.Pick(24);
    const int inside = a.n > 0 ? in.Pick(6) : 0;
    const int at = a.n > 0 ? in.Pick(a.n) : 0;

    std::vector<double> reference;
    for (InstructionSet level : OfferedLevels()) {
        Level held(level);
        CurveOutputs c(xs, ys, inside, at);
        AllocationScope memory;
        const int status = Run(a, nulls == 1 ? nullptr : c.x.data(), nulls == 2 ? nullptr : c.y.data(),
                               nulls == 3 ? nullptr : c.xOut, nulls == 4 ? nullptr : c.yOut);
        QAL_FUZZ_CHECK(c.GuardsIntact());
        if ((nulls >= 1 && nulls <= 4) || a.n < 1) {
            QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && c.x.Unchanged(xs) && c.y.Unchanged(ys) && c.out.AllSentinel());
            return 0;
        }
        if (c.Apart()) {
            double xo, yo;
            QAL_FUZZ_CHECK(c.x.Unchanged(xs) && c.y.Unchanged(ys));
            QAL_FUZZ_CHECK(status == Model(a, xs, ys, xo, yo) && Same(xo, c.out[0]) && Same(yo, c.out[1]));
        } else if (level == InstructionSet::kScalar) {
            reference = c.State(status);
        } else {
            QAL_FUZZ_CHECK(SameState(reference, c.State(status)));
        }
    }
    return 0;
}
