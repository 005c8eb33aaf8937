#include "frame/allocator.h"

namespace qal::detail {

#ifndef QAL_TEST_HOOKS

// The installed library: every request goes to the system, nothing is counted.
bool admitAllocation() noexcept { return true; }
void noteAllocated() noexcept {}
void noteReleased() noexcept {}

#else

namespace {

struct AllocationCounters {
    long long made = 0;    // requests, including those that fail
    long long live = 0;
    long long failAt = 0;  // number of the request that is to fail; 0: none
};

thread_local AllocationCounters counters;

}  // namespace

bool admitAllocation() noexcept { return ++counters.made != counters.failAt; }
void noteAllocated() noexcept { ++counters.live; }
void noteReleased() noexcept { --counters.live; }

namespace testing {

void failAllocationNumber(int k) noexcept { counters.failAt = k > 0 ? counters.made + k : 0; }
long long allocationsMade() noexcept { return counters.made; }
long long allocationsLive() noexcept { return counters.live; }
void resetAllocationCounters() noexcept { counters = AllocationCounters{}; }

}  // namespace testing

#endif

}  // namespace qal::detail
