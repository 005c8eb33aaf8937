#include "frame/cpu_dispatch.h"

namespace qal::detail {

namespace {

// __builtin_cpu_supports reports AVX2 and AVX-512F only where the operating system also
// saves the wide registers, so an offered level is a usable one.
InstructionSet detectedInstructionSet() noexcept {
#if QAL_X86_LANES
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f")) return InstructionSet::kAvx512;
    if (__builtin_cpu_supports("avx2")) return InstructionSet::kAvx2;
    return InstructionSet::kSse2;
#else
    return InstructionSet::kScalar;
#endif
}

}  // namespace

InstructionSet offeredInstructionSet() noexcept {
    // A function-local static: made once, at the first call, safely among threads.
    static const InstructionSet offered = detectedInstructionSet();
    return offered;
}

#ifndef QAL_INSTRUCTION_SET_HOOK

InstructionSet activeInstructionSet() noexcept { return offeredInstructionSet(); }

#else

namespace {

constexpr int kNotForced = -1;
thread_local int forcedLevel = kNotForced;

}  // namespace

InstructionSet activeInstructionSet() noexcept {
    return forcedLevel == kNotForced ? offeredInstructionSet() : static_cast<InstructionSet>(forcedLevel);
}

namespace testing {

InstructionSet forceInstructionSet(InstructionSet level) noexcept {
    const InstructionSet offered = offeredInstructionSet();
    // Never above what the processor runs.
    InstructionSet held = level < offered ? level : offered;
    if (held < InstructionSet::kScalar) held = InstructionSet::kScalar;
    forcedLevel = static_cast<int>(held);
    return held;
}

void releaseInstructionSet() noexcept { forcedLevel = kNotForced; }

}  // namespace testing

#endif

}  // namespace qal::detail
