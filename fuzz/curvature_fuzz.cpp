// QAL_Kruemmung and QAL_Kruemmung2 against their difference steps and chord slopes in
// float and double, every gap and chord width (negative, zero, beyond the curve), with
// nothing written outside the outputs or where no sample could be read.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

std::vector<float> Step(const std::vector<float>& x, const std::vector<float>& c, int n) {
    std::vector<float> out(n);
    out[0] = (c[1] - c[0]) / (x[1] - x[0]);
    out[n - 1] = (c[n - 1] - c[n - 2]) / (x[n - 1] - x[n - 2]);
    for (int i = 1; i <= n - 2; ++i) out[i] = (c[i + 1] - c[i - 1]) / (x[i + 1] - x[i - 1]);
    return out;
}

double Chord(const std::vector<float>& x, const std::vector<float>& y, long long from, long long to) {
    const float rise = y[to] - y[from], run = x[to] - x[from];
    return static_cast<double>(rise) / static_cast<double>(run);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    const int n = in.Count();
    const std::vector<float> xs = Abscissae<float>(in, n), ys = Ordinates<float>(in, n);
    Guarded<float> x(xs), y(ys), first(n), second(n);
    if (in.Flag()) {
        QAL_FUZZ_CHECK(QAL_Kruemmung(x.data(), y.data(), first.data(), second.data(), n) == QAL_OK);
        if (n < 2) {
            QAL_FUZZ_CHECK(first.AllSentinel() && second.AllSentinel());
        } else {
            const std::vector<float> d1 = Step(xs, ys, n);
            QAL_FUZZ_CHECK(first.Matches(d1) && second.Matches(Step(xs, d1, n)));
        }
    } else {
        const int gap = in.Flag() ? in.Pick(12) - 3 : in.Int(), chord = in.Flag() ? in.Pick(8) - 1 : in.Int();
        QAL_FUZZ_CHECK(QAL_Kruemmung2(x.data(), y.data(), first.data(), n, gap, chord) == QAL_OK);
        const int half = gap / 2;
        if (n < 2 || half < 0 || chord < 0) {
            QAL_FUZZ_CHECK(first.AllSentinel());
        } else {
            std::vector<float> expected(n);
            const long long last = n - 1;
            for (int i = 0; i < n; ++i) {
                const long long right = static_cast<long long>(i) + half, left = static_cast<long long>(i) - half;
                const long long rightFar = right + chord >= n ? last : right + chord;
                const long long rightNear = right >= last ? last - 1 : right;
                const long long leftFar = left - chord <= 0 ? 0 : left - chord;
                const long long leftNear = left <= 1 ? 1 : left;
                expected[i] = static_cast<float>(Chord(xs, ys, rightNear, rightFar) - Chord(xs, ys, leftFar, leftNear));
            }
            QAL_FUZZ_CHECK(first.Matches(expected));
        }
    }
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && first.GuardsIntact() && second.GuardsIntact());
    return 0;
}
