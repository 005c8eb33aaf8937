// One output sample of the moving filters, shared by the double and the float filter.
#ifndef QAL_SRC_SMOOTHING_FILTER_STEP_H
#define QAL_SRC_SMOOTHING_FILTER_STEP_H

namespace qal::detail {

// The filtered value of sample i of in[0..n-1] under the weights coef[0..2*half], formed in
// double whatever the sample type: each sample is widened exactly, and the caller rounds
// the result once when it stores it. Taps in the order centre, then left and right for
// j = 1..half; a tap beyond the data adds its weight to `missing` instead of a product.
// Boundary rules:
//   no tap missing (missing == 0.0)   the plain weighted sum
//   missing exactly 1.0               the plain sum too: no division by 0
//   otherwise, a NaN weight included  the sum divided by 1.0 - missing
// The tap tests are written j <= i and j <= n - 1 - i so that no index sum can overflow.
template <class T>
double filteredSample(const T* in, int n, int i, const double* coef, int half) noexcept {
    double value = static_cast<double>(in[i]) * coef[half];
    double missing = 0.0;
    for (int j = 1; j <= half; ++j) {
        if (j <= i) {
            value += coef[half - j] * static_cast<double>(in[i - j]);
        } else {
            missing += coef[half - j];
        }
        if (j <= n - 1 - i) {
            value += coef[half + j] * static_cast<double>(in[i + j]);
        } else {
            missing += coef[half + j];
        }
    }
    if (missing != 0.0 && missing != 1.0) value /= 1.0 - missing;
    return value;
}

// Samples from..to in ascending order, each stored before the next one is formed: with
// in == out the left taps then read filtered values.
template <class T>
void filterOneAtATime(const T* in, T* out, int n, int from, int to, const double* coef, int half) noexcept {
    for (int i = from; i <= to; ++i) out[i] = static_cast<T>(filteredSample(in, n, i, coef, half));
}

// Samples from..to of two arrays that share no element between out[from..to] and the
// samples these outputs read: the order of the stores can then change nothing, and the
// samples whose taps all lie inside the data are formed several at a time, at the active
// instruction set, each exactly as filteredSample forms it.
void filterSeparateArrays(const double* in, double* out, int n, int from, int to, const double* coef,
                          int half) noexcept;
void filterSeparateArrays(const float* in, float* out, int n, int from, int to, const double* coef,
                          int half) noexcept;

}  // namespace qal::detail

#endif  // QAL_SRC_SMOOTHING_FILTER_STEP_H
