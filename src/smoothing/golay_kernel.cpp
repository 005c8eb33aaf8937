#include "smoothing/golay_kernel.h"

#include <atomic>

#include "qal/qal.h"

namespace qal::detail {

namespace {

// Empty (at load and after a failed build), being written by the one thread that won the
// publication, or published for good.
enum KernelState : int { kEmpty, kPublishing, kPublished };

double kernel[kGolayKernelTaps] = {};
std::atomic<int> state{kEmpty};

}  // namespace

const double* golayDerivativeKernel(double (&scratch)[kGolayKernelTaps]) noexcept {
    // Acquire: pairs with the release below, so the elements are complete when read.
    if (state.load(std::memory_order_acquire) == kPublished) return kernel;
    // Built outside the shared array: a failed build leaves the kernel empty, and threads
    // racing for the first build never write the same memory.
    if (QAL_SavitzkyGolayCoeffizient(scratch, kGolayKernelTaps, kGolayKernelHalf, kGolayKernelHalf, 1, 4) != QAL_OK)
        return nullptr;
    int expected = kEmpty;
    if (state.compare_exchange_strong(expected, kPublishing, std::memory_order_acq_rel, std::memory_order_acquire)) {
        for (int k = 0; k < kGolayKernelTaps; ++k) kernel[k] = scratch[k];
        state.store(kPublished, std::memory_order_release);
    }
    return scratch;
}

#ifdef QAL_TEST_HOOKS
namespace testing {
void forgetGolayKernel() noexcept { state.store(kEmpty, std::memory_order_release); }
}  // namespace testing
#endif

}  // namespace qal::detail
