// The instruction set of the routines that compute several independent outputs at once.
//
// The library is built for baseline x86-64, so one binary runs on every x86-64 processor.
// The wider paths are functions of their own, compiled for their instruction set (see
// frame/lanes.h), and a routine enters one only when activeInstructionSet() says so. Every
// path gives the same bits as the scalar one: lanes run across independent outputs only,
// each lane keeping the order of operations of its own output.
#ifndef QAL_SRC_FRAME_CPU_DISPATCH_H
#define QAL_SRC_FRAME_CPU_DISPATCH_H

// Lanes exist where the compiler offers per-function target attributes and vector types.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define QAL_X86_LANES 1
#else
#define QAL_X86_LANES 0
#endif

namespace qal::detail {

// Ordered: each level runs everything of the levels below it.
enum class InstructionSet : int {
    kScalar = 0,  // one output at a time; the only level off x86-64
    kSse2 = 1,    // 2 double lanes; every x86-64 processor has it
    kAvx2 = 2,    // 4 double lanes
    kAvx512 = 3,  // 8 double lanes (AVX-512F)
};

// The widest level that the processor and the operating system offer, asked once, at the
// first call from any thread, and kept.
InstructionSet offeredInstructionSet() noexcept;

// The level that the dispatched routines take: the offered one. Only the test build can
// lower it, per thread, through the hook below.
InstructionSet activeInstructionSet() noexcept;

// The hook that lets the tests reach every path, present in the test build only.
namespace testing {
// Makes this thread's dispatched routines run at `level`, clamped to the offered level (and
// to kScalar from below); returns the level now in force.
InstructionSet forceInstructionSet(InstructionSet level) noexcept;
// Back to the offered level.
void releaseInstructionSet() noexcept;
}  // namespace testing

}  // namespace qal::detail

#endif  // QAL_SRC_FRAME_CPU_DISPATCH_H
