#include <cstdint>

#include "frame/allocator.h"
#include "qal/qal.h"
#include "smoothing/filter_step.h"

namespace {

// Fewest taps of a filter: the sample and one neighbour on each side.
constexpr int kMinWidth = 3;
// Upper width tests of the two filters; both limits are even, so the widest filters that
// pass are 299 and 99 taps.
constexpr int kMaxWidthDouble = 300;
constexpr int kMaxWidthFloat = 99;

int clampedIndex(int index, int n) noexcept {
    if (index < 0) return 0;
    if (index > n - 1) return n - 1;
    return index;
}

// True when out[from..to] holds none of the samples that these outputs read,
// in[from - half .. to + half] cut to the data. Only then may outputs be formed several at
// a time; any overlap, in == out among others, takes the samples one at a time, each
// stored before the next is read. Addresses compare as integers: the arrays may be
// unrelated.
template <class T>
bool writesNoSampleRead(const T* in, const T* out, int n, int from, int to, int half) noexcept {
    const int firstRead = from > half ? from - half : 0;
    const int lastRead = to < n - 1 - half ? to + half : n - 1;
    const auto address = [](const T* p) { return reinterpret_cast<std::uintptr_t>(p); };
    return address(out + to + 1) <= address(in + firstRead) || address(in + lastRead + 1) <= address(out + from);
}

// Both filters: the argument tests in their order, one allocation for the weights, then
// the samples first..last: in ascending order, each stored before the next one is formed,
// wherever out overlaps what they read (which is what lets in == out read filtered values
// on the left); from two separate arrays the interior samples come several at a time,
// with the same bits.
// Boundary rules of the range:
//   first or last below 0          taken as 0
//   first or last above n - 1      taken as n - 1 (so first = 100, last = 200, n = 10
//                                  filters sample 9 alone)
//   last < first after that        QAL_ERR_PARAMETER
template <class T>
int filterArray(const T* in, T* out, int n, int first, int last, int kind, int width, int degree,
                int maxWidth) noexcept {
    if (!in || !out) return QAL_ERR_MEMORY;
    if (n < 2) return QAL_ERR_TOO_FEW_POINTS;
    const int from = clampedIndex(first, n);
    const int to = clampedIndex(last, n);
    if (to < from) return QAL_ERR_PARAMETER;
    if (width < kMinWidth || width > maxWidth) return QAL_ERR_PARAMETER;
    if (QAL_IsEven(width)) return QAL_ERR_PARAMETER;

    const qal::detail::WorkArray<double> coef(width);
    if (!coef) return QAL_ERR_MEMORY;
    const int status = QAL_SetFilterCoefficients(coef.get(), kind, width, degree);
    if (status != QAL_OK) return status;

    const int half = (width - 1) / 2;
    if (writesNoSampleRead(in, out, n, from, to, half)) {
        qal::detail::filterSeparateArrays(in, out, n, from, to, coef.get(), half);
    } else {
        qal::detail::filterOneAtATime(in, out, n, from, to, coef.get(), half);
    }
    return QAL_OK;
}

}  // namespace

int QAL_SetFilterCoefficients(double* coef, int kind, int width, int degree) {
    // A missing or too short weight array is reported as a memory fault, unlike the kind.
    if (!coef || width < kMinWidth) return QAL_ERR_MEMORY;
    if (kind <= 0) return QAL_ERR_PARAMETER;
    if (kind == QAL_FILTER_SAVITZKY_GOLAY) {
        if (degree != 2 && degree != 4 && degree != 6) return QAL_ERR_PARAMETER;
        const int half = (width - 1) / 2;
        // A degree above 2 * half is refused in there; any failure passes on unnormalised.
        const int status = QAL_SavitzkyGolayCoeffizient(coef, width, half, half, 0, degree);
        if (status != QAL_OK) return status;
    } else if (kind == QAL_FILTER_TRIANGLE) {
        // For an even width the last pass writes the middle pair once more, with the larger
        // value: width 4 gives 1, 3, 3, 1.
        for (int i = 0; i <= width / 2; ++i) {
            coef[i] = static_cast<double>(i + 1);
            coef[width - 1 - i] = static_cast<double>(i + 1);
        }
    } else {
        for (int i = 0; i < width; ++i) coef[i] = 1.0;
    }
    return QAL_Normalize(coef, width);
}

int QAL_FilterArray(const double* in, double* out, int n, int first, int last, int kind, int width, int degree) {
    return filterArray(in, out, n, first, last, kind, width, degree, kMaxWidthDouble);
}

int QAL_FilterFloatArray(const float* in, float* out, int n, int first, int last, int kind, int width, int degree) {
    return filterArray(in, out, n, first, last, kind, width, degree, kMaxWidthFloat);
}
