// QAL_LocateValue, QAL_FindAbsValues and QAL_SortStraightInsert against short models of
// the bisection and the insertion sort, with their refusals and untouched outputs.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

// The bisection that moves both bounds past the middle; the direction from the ends.
int ModelLocate(double value, const std::vector<double>& x, int n, int& index) {
    index = 0;
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    const bool ascending = x[n - 1] > x[0];
    if (ascending ? x[0] >= value : value >= x[0]) return QAL_ERR_OUT_OF_RANGE;
    if (ascending ? value >= x[n - 1] : x[n - 1] >= value) {
        index = n - 1;
        return QAL_ERR_OUT_OF_RANGE;
    }
    int lo = 0, hi = n - 1;
    while (hi - lo > 1) {
        const int mid = (lo + hi) >> 1;
        const bool below = ascending ? x[mid] > value : value > x[mid];
        const bool above = ascending ? value > x[mid] : x[mid] > value;
        if (below) {
            hi = mid - 1;
        } else if (above) {
            lo = mid + 1;
        } else {
            index = mid;
            return QAL_OK;
        }
    }
    index = lo;
    return QAL_OK;
}

void Locate(Input& in) {
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n);
    Guarded<double> x(xs);
    Guarded<int> index(1);
    const double value = in.Real();
    const bool nullX = in.Pick(16) == 0, nullIndex = in.Pick(16) == 0;
    const int status = QAL_LocateValue(value, nullX ? nullptr : x.data(), n, nullIndex ? nullptr : index.data());
    QAL_FUZZ_CHECK(x.Unchanged(xs) && x.GuardsIntact() && index.GuardsIntact());
    if (nullX || nullIndex) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && (nullIndex || IsSentinel(index[0])));
        return;
    }
    int expected = 0;
    QAL_FUZZ_CHECK(status == ModelLocate(value, xs, n, expected));
    QAL_FUZZ_CHECK(index[0] == expected);
}

void FindAbs(Input& in) {
    const int n = in.Count();
    const std::vector<double> xs = Abscissae<double>(in, n), ys = Ordinates<double>(in, n);
    Guarded<double> x(xs), y(ys), xOut(1), yOut(1);
    const double value = in.Real();
    const int nulls = in.Pick(24);
    const int status = QAL_FindAbsValues(value, nulls == 1 ? nullptr : x.data(), nulls == 2 ? nullptr : y.data(), n,
                                         nulls == 3 ? nullptr : xOut.data(), nulls == 4 ? nullptr : yOut.data());
    QAL_FUZZ_CHECK(x.Unchanged(xs) && y.Unchanged(ys) && xOut.GuardsIntact() && yOut.GuardsIntact());
    if ((nulls >= 1 && nulls <= 4) || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && xOut.AllSentinel() && yOut.AllSentinel());
        return;
    }
    // The ends first, as for an ascending array; then the search decides.
    int at = -1, expected;
    if (xs[0] >= value) {
        expected = QAL_ERR_OUT_OF_RANGE, at = 0;
    } else if (value >= xs[n - 1]) {
        expected = QAL_ERR_OUT_OF_RANGE, at = n - 1;
    } else {
        int index = 0;
        expected = ModelLocate(value, xs, n, index);
        if (expected == QAL_OK) at = index;
    }
    QAL_FUZZ_CHECK(status == expected);
    if (at < 0) {
        QAL_FUZZ_CHECK(xOut.AllSentinel() && yOut.AllSentinel());
    } else {
        QAL_FUZZ_CHECK(Same(xOut[0], xs[at]) && Same(yOut[0], ys[at]));
    }
}

void Sort(Input& in) {
    int n = in.Count();
    if (n > 3000) n %= 3000;  // quadratic: the limits add nothing here
    std::vector<float> keys = Ordinates<float>(in, n), second = Ordinates<float>(in, n);
    std::vector<int> third(keys.size());
    for (std::size_t i = 0; i < third.size(); ++i) third[i] = static_cast<int>(i);
    Guarded<float> k(keys), s(second);
    Guarded<int> t(third);
    const int which = in.Pick(8);  // which companions exist, and a null key array
    const bool withSecond = (which & 1) != 0, withThird = (which & 2) != 0, nullKeys = which == 4 && in.Flag();
    const int status = QAL_SortStraightInsert(nullKeys ? nullptr : k.data(), withSecond ? s.data() : nullptr,
                                              withThird ? t.data() : nullptr, n, in.Int());
    QAL_FUZZ_CHECK(k.GuardsIntact() && s.GuardsIntact() && t.GuardsIntact());
    if (nullKeys || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && k.Unchanged(keys) && s.Unchanged(second) && t.Unchanged(third));
        return;
    }
    QAL_FUZZ_CHECK(status == QAL_OK);
    const std::vector<float> secondBefore = second;
    const std::vector<int> thirdBefore = third;
    // Straight insertion: an element moves left past strictly greater keys only.
    for (int i = 1; i < n; ++i) {
        const float key = keys[i], other = second[i];
        const int index = third[i];
        int j = i - 1;
        for (; j >= 0 && keys[j] > key; --j) {
            keys[j + 1] = keys[j];
            second[j + 1] = second[j];
            third[j + 1] = third[j];
        }
        keys[j + 1] = key;
        second[j + 1] = other;
        third[j + 1] = index;
    }
    QAL_FUZZ_CHECK(k.Unchanged(keys));
    // A companion that was not passed stays as it was.
    QAL_FUZZ_CHECK(s.Unchanged(withSecond ? second : secondBefore));
    QAL_FUZZ_CHECK(t.Unchanged(withThird ? third : thirdBefore));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;  // none of these allocates
    switch (in.Pick(3)) {
        case 0: Locate(in); break;
        case 1: FindAbs(in); break;
        default: Sort(in); break;
    }
    QAL_FUZZ_CHECK(qal::detail::testing::allocationsMade() == 0);
    return 0;
}
