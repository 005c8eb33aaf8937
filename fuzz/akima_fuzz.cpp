// QAL_AkimaSub against its steps in float: the order test (equal abscissae pass, NaN and a
// descent fail), the extrapolated points, the 1000.0 of a zero-wide segment, the two cases
// of the weighted mean; slopes untouched on every failure.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

float SegmentSlope(const std::vector<float>& ex, const std::vector<float>& ey, int j) {
    const float width = ex[j + 1] - ex[j];
    if (!(std::fabs(static_cast<double>(width)) > 0.0)) return 1000.0f;
    return (ey[j + 1] - ey[j]) / width;
}

std::vector<float> Model(const std::vector<float>& x, const std::vector<float>& y, int n) {
    std::vector<float> ex(n + 4), ey(n + 4), m(n + 3), slopes(n);
    for (int i = 0; i < n; ++i) {
        ex[i + 2] = x[i];
        ey[i + 2] = y[i];
    }
    ex[0] = ex[2] * 2.0f - ex[4];
    ex[1] = ex[2] + ex[3] - ex[4];
    ex[n + 2] = ex[n] + ex[n + 1] - ex[n - 1];
    ex[n + 3] = ex[n + 1] * 2.0f - ex[n - 1];
    for (int j = 2; j <= n; ++j) m[j] = SegmentSlope(ex, ey, j);
    ey[1] = (m[3] - m[2] * 2.0f) * (ex[2] - ex[1]) + ey[2];
    m[1] = SegmentSlope(ex, ey, 1);
    ey[0] = (m[2] - m[1] * 2.0f) * (ex[1] - ex[0]) + ey[1];
    m[0] = SegmentSlope(ex, ey, 0);
    ey[n + 2] = (ex[n + 2] - ex[n + 1]) * (m[n] * 2.0f - m[n - 1]) + ey[n + 1];
    m[n + 1] = SegmentSlope(ex, ey, n + 1);
    ey[n + 3] = (ex[n + 3] - ex[n + 2]) * (m[n + 1] * 2.0f - m[n]) + ey[n + 2];
    m[n + 2] = SegmentSlope(ex, ey, n + 2);
    for (int i = 0; i < n; ++i) {
        const float m1 = m[i], m2 = m[i + 1], m3 = m[i + 2], m4 = m[i + 3];
        if (m1 == m2 && m3 == m4) {
            slopes[i] = (m3 + m2) * 0.5f;
        } else {
            const double w1 = std::fabs(static_cast<double>(m2 - m1)), w2 = std::fabs(static_cast<double>(m4 - m3));
            slopes[i] = static_cast<float>((w1 * static_cast<double>(m3) + w2 * static_cast<double>(m2)) / (w1 + w2));
        }
    }
    return slopes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const int n = in.Count();
    const std::vector<float> xs = Abscissae<float>(in, n), ys = Ordinates<float>(in, n);
    Guarded<float> x(xs), y(ys), slopes(n);
    const int nulls = in.Pick(20);
    const int failAt = FaultChoice(in);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_AkimaSub(nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(),
                              nulls == 3 ? nullptr : slopes.data(), n);
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && slopes.GuardsIntact());
    bool ordered = true;
    for (int i = 0; i + 1 < n; ++i) ordered = ordered && xs[i + 1] >= xs[i];
    if (nulls >= 1 && nulls <= 3) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && slopes.AllSentinel());
    } else if (n < 3) {
        QAL_FUZZ_CHECK(status == QAL_ERR_TOO_FEW_POINTS && slopes.AllSentinel());
    } else if (failed) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && slopes.AllSentinel());
    } else if (!ordered) {
        QAL_FUZZ_CHECK(status == QAL_ERR_ORDER && slopes.AllSentinel());
    } else {
        QAL_FUZZ_CHECK(status == QAL_OK);
        const std::vector<float> expected = Model(xs, ys, n);
        for (int i = 0; i < n; ++i) QAL_FUZZ_CHECK(Same(expected[i], slopes[i]));
    }
    return 0;
}
