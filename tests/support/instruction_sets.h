// Runs the dispatched routines at every instruction set that this processor offers, so that
// each path can be compared with the scalar one to the bit.
#ifndef QAL_TESTS_SUPPORT_INSTRUCTION_SETS_H
#define QAL_TESTS_SUPPORT_INSTRUCTION_SETS_H

#include <vector>

#include "frame/cpu_dispatch.h"

namespace qal::test {

using qal::detail::InstructionSet;

// kScalar first, then each wider level up to the offered one.
inline std::vector<InstructionSet> OfferedInstructionSets() {
    std::vector<InstructionSet> levels;
    const int offered = static_cast<int>(qal::detail::offeredInstructionSet());
    for (int level = 0; level <= offered; ++level) levels.push_back(static_cast<InstructionSet>(level));
    return levels;
}

inline const char* Name(InstructionSet level) {
    static const char* const names[] = {"scalar", "SSE2", "AVX2", "AVX-512F"};
    return names[static_cast<int>(level)];
}

// Holds a level on this thread while it lives.
class ForcedInstructionSet {
public:
    explicit ForcedInstructionSet(InstructionSet level) : held_(qal::detail::testing::forceInstructionSet(level)) {}
    ~ForcedInstructionSet() { qal::detail::testing::releaseInstructionSet(); }
    ForcedInstructionSet(const ForcedInstructionSet&) = delete;
    ForcedInstructionSet& operator=(const ForcedInstructionSet&) = delete;
    InstructionSet held() const { return held_; }

private:
    InstructionSet held_;
};

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_INSTRUCTION_SETS_H
