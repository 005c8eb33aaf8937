// Proves the failure paths of an allocating call: run it once with no fault to count its
// allocations, then once per allocation with that one failing. Each faulted run must
// return `failStatus` and leave nothing allocated.
#ifndef QAL_TESTS_SUPPORT_ALLOCATION_FAULTS_H
#define QAL_TESTS_SUPPORT_ALLOCATION_FAULTS_H

#include <gtest/gtest.h>

#include "frame/allocator.h"

namespace qal::test {

// `call` runs the function under test and returns its status; it must release whatever
// the function hands out (a caller-owned array) before returning. Returns the number of
// allocations of the clean run.
template <class Call>
long long ExpectEveryAllocationFailureHandled(Call call, int failStatus) {
    namespace alloc = qal::detail::testing;
    alloc::resetAllocationCounters();
    call();
    const long long total = alloc::allocationsMade();
    EXPECT_EQ(0, alloc::allocationsLive()) << "clean run leaks";
    for (long long k = 1; k <= total; ++k) {
        alloc::resetAllocationCounters();
        alloc::failAllocationNumber(static_cast<int>(k));
        EXPECT_EQ(failStatus, call()) << "allocation " << k << " of " << total << " failing";
        EXPECT_EQ(0, alloc::allocationsLive()) << "leak with allocation " << k << " failing";
    }
    alloc::resetAllocationCounters();
    return total;
}

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_ALLOCATION_FAULTS_H
