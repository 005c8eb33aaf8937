#include "frame/allocator.h"

#include <cstdlib>

namespace qal::detail {
namespace {

struct AllocationCounters {
    long long made = 0;    // requests, including those that fail
    long long live = 0;
    long long failAt = 0;  // number of the request that is to fail; 0: none
};

thread_local AllocationCounters counters;

}  // namespace

void* allocateBytes(std::uint32_t bytes) noexcept {
    const long long number = ++counters.made;
    // A saturated size stands for a request that cannot be represented; it must fail
    // even where the system would hand out four gigabytes.
    if (bytes == kSaturatedByteSize || number == counters.failAt) return nullptr;
    void* const block = std::malloc(bytes == 0 ? 1 : static_cast<std::size_t>(bytes));
    if (block != nullptr) ++counters.live;
    return block;
}

void releaseBytes(void* block) noexcept {
    if (block == nullptr) return;
    --counters.live;
    std::free(block);
}

namespace testing {

void failAllocationNumber(int k) noexcept {
    counters.failAt = k > 0 ? counters.made + k : 0;
}

long long allocationsMade() noexcept { return counters.made; }

long long allocationsLive() noexcept { return counters.live; }

void resetAllocationCounters() noexcept { counters = AllocationCounters{}; }

}  // namespace testing
}  // namespace qal::detail
