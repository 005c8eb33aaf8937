#include <gtest/gtest.h>

#include "frame/cpu_dispatch.h"
#include "support/instruction_sets.h"

namespace qal::test {
namespace {

using qal::detail::activeInstructionSet;
using qal::detail::offeredInstructionSet;

// A forced level never exceeds what the processor runs, and releasing it restores the
// offered one; every x86-64 processor has SSE2.
TEST(InstructionSetDispatch, ForcedLevelIsClampedAndReleased) {
#if defined(__x86_64__)
    EXPECT_LE(InstructionSet::kSse2, offeredInstructionSet());
#endif
    EXPECT_EQ(offeredInstructionSet(), activeInstructionSet());
    for (const InstructionSet level : {InstructionSet::kAvx512, InstructionSet::kAvx2, InstructionSet::kSse2,
                                       InstructionSet::kScalar, static_cast<InstructionSet>(-1)}) {
        const InstructionSet expected = level < InstructionSet::kScalar ? InstructionSet::kScalar
                                        : level < offeredInstructionSet() ? level
                                                                          : offeredInstructionSet();
        const ForcedInstructionSet forced(level);
        EXPECT_EQ(expected, forced.held()) << static_cast<int>(level);
        EXPECT_EQ(expected, activeInstructionSet()) << static_cast<int>(level);
    }
    EXPECT_EQ(offeredInstructionSet(), activeInstructionSet());
}

}  // namespace
}  // namespace qal::test
