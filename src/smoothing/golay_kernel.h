// The fixed kernel of QAL_FirstDerivativeGolay: the Savitzky-Golay weights of the first
// derivative for a polynomial of degree 4 over five samples on each side, built at the
// first use and kept for the life of the library. With the running value of QAL_Trapez it
// is the only module-wide state.
#ifndef QAL_SRC_SMOOTHING_GOLAY_KERNEL_H
#define QAL_SRC_SMOOTHING_GOLAY_KERNEL_H

namespace qal::detail {

inline constexpr int kGolayKernelHalf = 5;
inline constexpr int kGolayKernelTaps = 2 * kGolayKernelHalf + 1;

// The kernel, the weight of the sample at offset k in element 5 + k; null when it cannot
// be built, and then the next call tries again. Safe from any number of threads at once:
// a call that finds no kernel yet builds one in `scratch`, the first such build to finish
// is published, and the others go on with their own copy, which has the same bits (the
// build depends on constants alone). So the pointer is the shared kernel or `scratch`.
const double* golayDerivativeKernel(double (&scratch)[kGolayKernelTaps]) noexcept;

// Present in the test build only.
namespace testing {
// Makes the kernel empty again, as at load, so that a test meets the first build. Not to
// be called while another thread may be using the kernel.
void forgetGolayKernel() noexcept;
}  // namespace testing

}  // namespace qal::detail

#endif  // QAL_SRC_SMOOTHING_GOLAY_KERNEL_H
