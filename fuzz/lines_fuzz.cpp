// The line fits and their evaluators against the two-pass fit in double and in float, and
// QAL_StraightLineIntersection against its steps: parallel and steep lines, the 1e25 and
// 1e23 limits, NaN coefficients, null outputs.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

// Two passes about the mean abscissa in T: intercept, then slope.
template <class T>
void ModelFit(const std::vector<T>& x, const std::vector<T>& y, int n, T& intercept, T& slope) {
    T sx = 0, sy = 0;
    for (int i = 0; i < n; ++i) {
        sx += x[i];
        sy += y[i];
    }
    const T count = static_cast<T>(n);
    const T mean = sx / count;
    T stt = 0, sty = 0;
    for (int i = 0; i < n; ++i) {
        const T t = x[i] - mean;
        stt += t * t;
        sty += t * y[i];
    }
    slope = sty / stt;
    intercept = (sy - slope * sx) / count;
}

void Fits(Input& in) {
    int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), out(2);
    QAL_LinFit(x.data(), y.data(), n, out.data(), out.data() + 1);
    double intercept, slope;
    ModelFit(xs, ys, n, intercept, slope);
    QAL_FUZZ_CHECK(Same(intercept, out[0]) && Same(slope, out[1]));
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact());

    const double xValue = in.Real();
    const bool nullX = in.Pick(16) == 0, nullY = in.Pick(16) == 0;
    const double* px = nullX ? nullptr : x.data();
    const double* py = nullY ? nullptr : y.data();
    const bool refused = nullX || nullY || n < 2;
    const double atX = QAL_CalcLinX(xValue, px, py, n), atY = QAL_CalcLinY(xValue, px, py, n);
    QAL_FUZZ_CHECK(Same(refused ? 0.0 : slope * xValue + intercept, atX));
    QAL_FUZZ_CHECK(Same(refused || !(std::fabs(slope) > 1e-25) ? 0.0 : (xValue - intercept) / slope, atY));
}

void FloatFits(Input& in) {
    const int n = in.Count();
    const std::vector<float> xs = Abscissae<float>(in, n), ys = Ordinates<float>(in, n);
    Guarded<float> x(xs), y(ys), out(2);
    QAL_LinFitFloat(x.data(), y.data(), n, out.data(), out.data() + 1);
    float intercept, slope;
    ModelFit(xs, ys, n, intercept, slope);
    QAL_FUZZ_CHECK(Same(intercept, out[0]) && Same(slope, out[1]));
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && out.GuardsIntact());

    const float value = in.RealF();
    const bool nullX = in.Pick(16) == 0, nullY = in.Pick(16) == 0;
    const float* px = nullX ? nullptr : x.data();
    const float* py = nullY ? nullptr : y.data();
    const bool refused = nullX || nullY || n < 2;
    const float atX = QAL_CalcLinXFloat(value, px, py, n), atY = QAL_CalcLinYFloat(value, px, py, n);
    const double wide = static_cast<double>(slope) * static_cast<double>(value) + static_cast<double>(intercept);
    QAL_FUZZ_CHECK(Same(refused ? 0.0f : static_cast<float>(wide), atX));
    const bool steep = std::fabs(static_cast<double>(slope)) > 1e-25;
    QAL_FUZZ_CHECK(Same(refused || !steep ? 0.0f : (value - intercept) / slope, atY));
}

void Intersection(Input& in) {
    const float i1 = in.RealF(), s1 = in.RealF(), i2 = in.RealF(), s2 = in.RealF();
    Guarded<float> out(2);
    const int nulls = in.Pick(12);
    const int status = QAL_StraightLineIntersection(nulls == 1 ? nullptr : out.data(),
                                                    nulls == 2 ? nullptr : out.data() + 1, i1, s1, i2, s2);
    QAL_FUZZ_CHECK(out.GuardsIntact());
    if (nulls == 1 || nulls == 2) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && out.AllSentinel());
        return;
    }
    const float far = 1e25f;  // the float nearest 1e25, below it
    const float gap = s2 - s1;
    const double limit = 1e25 / 100;
    if (1e-8 > std::fabs(static_cast<double>(gap)) || std::fabs(static_cast<double>(s1)) > limit ||
        std::fabs(static_cast<double>(s2)) > limit) {
        QAL_FUZZ_CHECK(status == QAL_ERR_OUT_OF_RANGE && Bits(out[0]) == Bits(far) && Bits(out[1]) == Bits(far));
        return;
    }
    QAL_FUZZ_CHECK(status == QAL_OK);
    const float x = (i1 - i2) / gap;
    QAL_FUZZ_CHECK(Same(x, out[0]));
    float y = SentinelOf(0.0f);
    if (1e25 > static_cast<double>(x * s1)) {
        y = x * s1 + i1;
    } else if (1e25 > static_cast<double>(x * s2)) {
        y = x * s2 + i2;
    }
    QAL_FUZZ_CHECK(Same(y, out[1]));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    switch (in.Pick(3)) {
        case 0: Fits(in); break;
        case 1: FloatFits(in); break;
        default: Intersection(in); break;
    }
    QAL_FUZZ_CHECK(qal::detail::testing::allocationsMade() == 0);
    return 0;
}
