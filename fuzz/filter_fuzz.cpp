// QAL_FilterArray and QAL_FilterFloatArray against the weights of QAL_SetFilterCoefficients
// run over the samples one at a time, at every instruction set, on separate arrays and on
// arrays that overlap (in == out, or out a few samples off in): the argument tests in their
// order, the clamped range, the renormalisation at the ends, out untouched outside the range
// and on every failure; the float filter equals the double one on the widened samples.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

constexpr int kInPlace = 1, kShifted = 2;

struct Call {
    int n, first, last, kind, width, degree;
};

// The told sample step over one buffer holding in at inAt and out at outAt, each result
// stored before the next sample is read.
template <class T>
void ModelFilter(std::vector<T>& buffer, int inAt, int outAt, int n, int from, int to, const std::vector<double>& coef) {
    const int half = (static_cast<int>(coef.size()) - 1) / 2;
    for (int i = from; i <= to; ++i) {
        double value = static_cast<double>(buffer[inAt + i]) * coef[half];
        double missing = 0.0;
        for (int j = 1; j <= half; ++j) {
            if (i - j >= 0) {
                value += coef[half - j] * static_cast<double>(buffer[inAt + i - j]);
            } else {
                missing += coef[half - j];
            }
            if (i + j <= n - 1) {
                value += coef[half + j] * static_cast<double>(buffer[inAt + i + j]);
            } else {
                missing += coef[half + j];
            }
        }
        if (missing != 0.0 && missing != 1.0) value /= 1.0 - missing;
        buffer[outAt + i] = static_cast<T>(value);
    }
}

template <class T>
int Filter(const T* in, T* out, const Call& c) {
    if constexpr (sizeof(T) == 8) {
        return QAL_FilterArray(in, out, c.n, c.first, c.last, c.kind, c.width, c.degree);
    } else {
        return QAL_FilterFloatArray(in, out, c.n, c.first, c.last, c.kind, c.width, c.degree);
    }
}

// The status of the argument tests and the weights, and the weights themselves.
template <class T>
int Expected(const Call& c, std::vector<double>& coef, int& from, int& to) {
    if (c.n < 2) return QAL_ERR_TOO_FEW_POINTS;
    from = c.first < 0 ? 0 : c.first > c.n - 1 ? c.n - 1 : c.first;
    to = c.last < 0 ? 0 : c.last > c.n - 1 ? c.n - 1 : c.last;
    if (to < from) return QAL_ERR_PARAMETER;
    if (c.width < 3 || c.width > (sizeof(T) == 8 ? 300 : 99) || c.width % 2 == 0) return QAL_ERR_PARAMETER;
    coef.assign(c.width, 0.0);
    return QAL_SetFilterCoefficients(coef.data(), c.kind, c.width, c.degree);
}

template <class T>
void Run(Input& in, const Call& c, int layout, int failAt, bool nullIn, bool nullOut) {
    const int shift = layout == kShifted ? 1 + in.Pick(4) * (in.Flag() ? 1 : -1) : 0;
    const int span = c.n < 0 ? 0 : c.n;
    const int inAt = layout == kShifted && shift < 0 ? -shift : 0;
    const int outAt = layout == kInPlace ? inAt : layout == kShifted ? inAt + shift : span;
    const int total = layout == kInPlace ? span : layout == kShifted ? span + (shift < 0 ? -shift : shift) : 2 * span;
    const std::vector<T> start = Ordinates<T>(in, total);

    std::vector<double> coef;
    int from = 0, to = -1;
    int expected = nullIn || nullOut ? QAL_ERR_MEMORY : Expected<T>(c, coef, from, to);
    std::vector<T> model = start;
    if (expected == QAL_OK) ModelFilter(model, inAt, outAt, c.n, from, to, coef);

    for (InstructionSet level : OfferedLevels()) {
        Level held(level);
        Guarded<T> buffer(start);
        int status;
        bool failed;
        {
            AllocationScope memory(failAt);
            status = Filter<T>(nullIn ? nullptr : buffer.data() + inAt, nullOut ? nullptr : buffer.data() + outAt, c);
            failed = AllocationScope::Failed(failAt);
        }
        QAL_FUZZ_CHECK(buffer.GuardsIntact());
        if (failed && expected == QAL_OK) {
            QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && buffer.Unchanged(start));
        } else if (failed) {
            // A failure of the weights' own work arrays, or a refusal after them.
            QAL_FUZZ_CHECK((status == QAL_ERR_MEMORY || status == expected) && buffer.Unchanged(start));
        } else {
            QAL_FUZZ_CHECK(status == expected && buffer.Matches(expected == QAL_OK ? model : start));
        }
    }

    // The float filter forms each sample in double from the widened samples.
    if constexpr (sizeof(T) == 4) {
        if (layout == 0 && expected == QAL_OK && failAt == 0) {
            std::vector<double> wide = Widened(start);
            AllocationScope memory;
            QAL_FUZZ_CHECK(QAL_FilterArray(wide.data(), wide.data() + span, c.n, c.first, c.last, c.kind, c.width,
                                           c.degree) == QAL_OK);
            for (int i = 0; i < total; ++i) QAL_FUZZ_CHECK(Same(model[i], static_cast<float>(wide[i])));
        }
    }
}

int Width(Input& in) {
    static const int widths[] = {3, 5, 7, 9, 11, 13, 21, 97, 98, 99, 100, 101, 245, 297, 299, 300, 301, 2, 1, 0, -1, 4, 6};
    return widths[in.Pick(sizeof widths / sizeof widths[0])];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const bool single = in.Flag();
    Call c{};
    c.n = in.Count();
    if (c.n > 4096) c.n = 4096;  // the width limits count here, not the length
    c.first = in.Flag() ? in.Count() - 2 : in.Int();
    c.last = in.Flag() ? in.Count() : in.Int();
    static const int kinds[] = {QAL_FILTER_AVERAGE, QAL_FILTER_TRIANGLE, QAL_FILTER_SAVITZKY_GOLAY, 0, -1, 1, 12, 21, INT_MAX};
    c.kind = kinds[in.Pick(9)];
    c.width = Width(in);
    c.degree = in.Option(0, 8);
    const int layout = in.Pick(3);
    const int failAt = FaultChoice(in);
    const int nulls = in.Pick(20);
    if (single) {
        Run<float>(in, c, layout, failAt, nulls == 1, nulls == 2);
    } else {
        Run<double>(in, c, layout, failAt, nulls == 1, nulls == 2);
    }
    return 0;
}
