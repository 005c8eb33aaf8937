// What every fuzz target shares: decoding the input bytes into the arguments that reach the
// library's branches (the special numbers, the count limits, the options and out-of-range
// ones), arrays whose surroundings trap and whose contents can be compared to the bit,
// the accounting that proves nothing leaked, and the instruction-set levels to compare.
//
// A broken invariant aborts with a message, so libFuzzer keeps the input as a crash.
#ifndef QAL_FUZZ_SUPPORT_FUZZ_SUPPORT_H
#define QAL_FUZZ_SUPPORT_FUZZ_SUPPORT_H

#include <sanitizer/asan_interface.h>

// The harnesses index std::vector with the library's int counts.
#pragma clang diagnostic ignored "-Wsign-conversion"

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include "frame/allocator.h"
#include "frame/cpu_dispatch.h"
#include "qal/qal.h"
#include "support/instruction_sets.h"

namespace qal::fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* what) {
    std::fprintf(stderr, "%s:%d: invariant broken: %s\n", file, line, what);
    std::abort();
}

#define QAL_FUZZ_CHECK(condition)                                             \
    do {                                                                      \
        if (!(condition)) ::qal::fuzz::Fail(__FILE__, __LINE__, #condition); \
    } while (0)

// ---- Bits ---------------------------------------------------------------------------------

template <class T>
auto Bits(T value) {
    if constexpr (sizeof(T) == 8) {
        std::uint64_t b;
        std::memcpy(&b, &value, 8);
        return b;
    } else if constexpr (sizeof(T) == 4) {
        std::uint32_t b;
        std::memcpy(&b, &value, 4);
        return b;
    }
}

// Equal bits, or both NaN (a NaN's payload and sign are not part of any result) unless
// one is the sentinel of an untouched output.
template <class T>
bool IsSentinel(T value);

template <class T>
bool Same(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (IsSentinel(a) != IsSentinel(b)) return false;
        if (std::isnan(a) && std::isnan(b)) return true;
    }
    return Bits(a) == Bits(b);
}

// Stands in every output that a call may leave alone: NaNs with a payload that no
// computation makes, and that the decoded inputs never hold (see Input::Real).
inline double SentinelOf(double) {
    const std::uint64_t b = 0x7FF8DEADBEEF0001ULL;
    double d;
    std::memcpy(&d, &b, 8);
    return d;
}
inline float SentinelOf(float) {
    const std::uint32_t b = 0x7FC0BEEFu;
    float f;
    std::memcpy(&f, &b, 4);
    return f;
}
inline int SentinelOf(int) { return INT_MIN + 0x5EED; }

template <class T>
bool IsSentinel(T value) {
    return Bits(value) == Bits(SentinelOf(T{}));
}

// True when a decoded value could turn into a sentinel inside a computation: the sentinel
// itself, a signalling NaN that quiets to it, or a double NaN that narrows to the float one.
inline bool BecomesSentinel(double value) {
    if (!std::isnan(value)) return false;
    const std::uint64_t quiet = Bits(value) | 0x0008000000000000ULL;
    return quiet == Bits(SentinelOf(0.0)) || IsSentinel(static_cast<float>(value));
}
inline bool BecomesSentinel(float value) {
    return std::isnan(value) && (Bits(value) | 0x00400000u) == Bits(SentinelOf(0.0f));
}

// ---- Arrays -------------------------------------------------------------------------------

// An array of `size` elements between two poisoned guards: any access beyond either end
// traps at once (AddressSanitizer), and the guards' bits are checked besides. Contents
// are compared to the bit with a snapshot taken before the call.
template <class T>
class Guarded {
public:
    static constexpr int kGuard = 8;

    Guarded() : Guarded(0) {}
    explicit Guarded(int size) : size_(size < 0 ? 0 : size), store_(new T[static_cast<std::size_t>(size_ + 2 * kGuard)]) {
        for (int i = 0; i < size_ + 2 * kGuard; ++i) store_[i] = SentinelOf(T{});
        Poison(true);
    }
    explicit Guarded(const std::vector<T>& values) : Guarded(static_cast<int>(values.size())) {
        for (int i = 0; i < size_; ++i) data()[i] = values[static_cast<std::size_t>(i)];
    }
    ~Guarded() { Poison(false); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    T* data() { return store_.get() + kGuard; }
    const T* data() const { return store_.get() + kGuard; }
    int size() const { return size_; }
    T& operator[](int i) { return data()[i]; }
    const T& operator[](int i) const { return data()[i]; }
    std::vector<T> Snapshot() const { return std::vector<T>(data(), data() + size_); }

    bool GuardsIntact() {
        Poison(false);
        bool intact = true;
        for (int i = 0; i < kGuard; ++i) {
            intact = intact && IsSentinel(store_[i]) && IsSentinel(store_[size_ + kGuard + i]);
        }
        Poison(true);
        return intact;
    }
    // Every element as in `before`, to the bit.
    bool Unchanged(const std::vector<T>& before) const {
        for (int i = 0; i < size_; ++i) {
            if (Bits(data()[i]) != Bits(before[static_cast<std::size_t>(i)])) return false;
        }
        return true;
    }
    // Every element as in `expected`, a NaN matching any NaN: the sign and payload of a NaN
    // that arithmetic makes are not part of any result.
    bool Matches(const std::vector<T>& expected) const {
        for (int i = 0; i < size_; ++i) {
            if (!Same(data()[i], expected[static_cast<std::size_t>(i)])) return false;
        }
        return true;
    }
    bool AllSentinel() const {
        for (int i = 0; i < size_; ++i) {
            if (!IsSentinel(data()[i])) return false;
        }
        return true;
    }

private:
    void Poison(bool on) {
        const std::size_t bytes = kGuard * sizeof(T);
        if (on) {
            ASAN_POISON_MEMORY_REGION(store_.get(), bytes);
            ASAN_POISON_MEMORY_REGION(store_.get() + size_ + kGuard, bytes);
        } else {
            ASAN_UNPOISON_MEMORY_REGION(store_.get(), bytes);
            ASAN_UNPOISON_MEMORY_REGION(store_.get() + size_ + kGuard, bytes);
        }
    }

    int size_;
    std::unique_ptr<T[]> store_;
};

// A curve and the two outputs of a search on it: in places of their own, or one of them on
// element `at` of the curve (placement 1: xOut in x, 2: xOut in y, 3: yOut in y, 4: yOut in
// x), where a search that writes while it still reads must go one sample at a time.
class CurveOutputs {
public:
    CurveOutputs(const std::vector<double>& xs, const std::vector<double>& ys, int placement, int at)
        : x(xs), y(ys), out(2), placement_(placement) {
        xOut = placement == 1 ? x.data() + at : placement == 2 ? y.data() + at : out.data();
        yOut = placement == 3 ? y.data() + at : placement == 4 ? x.data() + at : out.data() + 1;
    }
    bool Apart() const { return placement_ < 1 || placement_ > 4; }
    bool GuardsIntact() { return x.GuardsIntact() && y.GuardsIntact() && out.GuardsIntact(); }
    // What a call left: its status, the curve and the outputs, for the wider instruction
    // sets to match what the scalar one left.
    std::vector<double> State(int status) const {
        std::vector<double> state{static_cast<double>(status)};
        for (const Guarded<double>* g : {&x, &y, &out}) {
            const std::vector<double> part = g->Snapshot();
            state.insert(state.end(), part.begin(), part.end());
        }
        return state;
    }

    Guarded<double> x, y, out;
    double* xOut;
    double* yOut;

private:
    int placement_;
};

inline bool SameState(const std::vector<double>& a, const std::vector<double>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!Same(a[i], b[i])) return false;
    }
    return true;
}

// ---- Decoding -----------------------------------------------------------------------------

// The numbers where the library's tests change sense, with their neighbours.
inline const std::vector<double>& SpecialDoubles() {
    static const std::vector<double> values = [] {
        const double inf = std::numeric_limits<double>::infinity();
        const auto around = [](std::vector<double>& v, double x) {
            v.push_back(x);
            v.push_back(std::nextafter(x, -HUGE_VAL));
            v.push_back(std::nextafter(x, HUGE_VAL));
            v.push_back(-x);
            const double image = static_cast<double>(static_cast<float>(x));  // its float image
            v.push_back(image);
            v.push_back(std::nextafter(image, -HUGE_VAL));
            v.push_back(std::nextafter(image, HUGE_VAL));
        };
        std::vector<double> v{std::numeric_limits<double>::quiet_NaN(),
                              -std::numeric_limits<double>::quiet_NaN(),
                              inf,
                              -inf,
                              0.0,
                              -0.0,
                              std::numeric_limits<double>::denorm_min(),
                              -std::numeric_limits<double>::denorm_min(),
                              std::nextafter(std::numeric_limits<double>::min(), 0.0),
                              std::numeric_limits<double>::min(),
                              std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::lowest(),
                              static_cast<double>(std::numeric_limits<float>::max()),
                              static_cast<double>(std::numeric_limits<float>::denorm_min()),
                              1.0000000000000001e23,  // 1e25 / 100 in double
                              0.5,
                              2.0,
                              3.0,
                              100.0,
                              1.4,
                              1e300,
                              1e-300};
        for (double x : {1e-25, 1e25, 1e15, 1e-8, 1e-6, 30.0, 25.0, 1.0, 57.564627324851145, 1e-9})
            around(v, x);
        return v;
    }();
    return values;
}

inline const std::vector<int>& SpecialCounts() {
    static const std::vector<int> values{-1, 0,   1,   2,   3,    4,    5,    6,     7,     9,    11,  12,
                                         13, 21,  42,  98,  99,   100,  101,  298,   299,   300,  301, 1024,
                                         2048, 4096, 9998, 9999, 10000, 10001, -2, -3};
    return values;
}

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::size_t Left() const { return size_ - pos_; }
    std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
    std::uint32_t U32() {
        std::uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = (v << 8) | Byte();
        return v;
    }
    std::uint64_t U64() { return (static_cast<std::uint64_t>(U32()) << 32) | U32(); }
    bool Flag() { return (Byte() & 1) != 0; }
    // 0 .. count - 1.
    int Pick(int count) { return count <= 1 ? 0 : static_cast<int>(Byte() % static_cast<unsigned>(count)); }
    int Int() { return static_cast<int>(U32()); }

    // A double: a special number, a small multiple of a quarter, or any bits at all.
    double Real() {
        const std::uint8_t selector = Byte();
        double value;
        if (selector < 192) {
            value = RealFrom(selector);
        } else {
            const std::uint64_t bits = U64();
            std::memcpy(&value, &bits, 8);
        }
        return BecomesSentinel(value) ? 0.0 : value;
    }
    // A float: as Real, or a float neighbour of a special number's float image.
    float RealF() {
        const std::uint8_t selector = Byte();
        float value;
        if (selector < 192) {
            value = static_cast<float>(RealFrom(selector));
        } else if (selector < 224) {
            value = static_cast<float>(RealFrom(Byte() % 96));
            value = std::nextafter(value, selector < 208 ? -HUGE_VALF : HUGE_VALF);
        } else {
            const std::uint32_t bits = U32();
            std::memcpy(&value, &bits, 4);
        }
        return BecomesSentinel(value) ? 0.0f : value;
    }
    // A count: small ones, the told limits and their neighbours, -1 and below.
    int Count() {
        const std::uint8_t selector = Byte();
        if (selector < 160) return selector % 42 - 1;
        if (selector < 240) {
            const auto& counts = SpecialCounts();
            return counts[selector % counts.size()];
        }
        return static_cast<int>(U32() % 3000u);
    }
    // An option: the told values low .. high most of the time, else anything.
    int Option(int low, int high) {
        const std::uint8_t selector = Byte();
        if (selector < 224) return low + selector % (high - low + 1);
        static const int odd[] = {INT_MIN, -1000, -2, -1, 0, 1, 16, 99, 1000, INT_MAX};
        return odd[selector % 10];
    }

private:
    double RealFrom(std::uint8_t selector) {
        if (selector < 96) {
            const auto& specials = SpecialDoubles();
            return specials[selector % specials.size()];
        }
        return static_cast<double>(static_cast<std::int16_t>(U32() & 0xFFFF)) * 0.25;
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

// ---- Curves -------------------------------------------------------------------------------

// Replaces up to three elements by special numbers.
template <class T>
void Sprinkle(Input& in, std::vector<T>& v) {
    const int k = in.Pick(4);
    for (int j = 0; j < k && !v.empty(); ++j) {
        const std::size_t at = in.U32() % v.size();
        v[at] = static_cast<T>(in.Real());
    }
}

// n abscissae in one of the orders the routines meet: ascending evenly or unevenly,
// with runs of equal ones, descending, constant, or as the bytes give them; a few
// elements then replaced by special numbers.
template <class T>
std::vector<T> Abscissae(Input& in, int n) {
    std::vector<T> x(static_cast<std::size_t>(n < 0 ? 0 : n));
    const double start = in.Flag() ? 0.0 : in.Real();
    double step = in.Flag() ? 1.0 : in.Real();
    const int mode = in.Pick(7);
    double value = start;
    for (std::size_t i = 0; i < x.size(); ++i) {
        switch (mode) {
            case 0: value = start + static_cast<double>(i) * step; break;
            case 1: value = start + static_cast<double>(i / 2) * step; break;
            case 2: value = start - static_cast<double>(i) * step; break;
            case 3: value = start; break;
            case 4: value = i < 64 ? in.Real() : value + 1.0; break;
            case 5: value = (i == 0 ? start : value + static_cast<double>(in.Byte() % 4) * step); break;
            default: value = start + static_cast<double>(i) * step * (1.0 + 1e-3 * static_cast<double>(i % 7)); break;
        }
        x[i] = static_cast<T>(value);
    }
    Sprinkle(in, x);
    return x;
}

// n ordinates: as the bytes give them, a parabola, a constant, or a saw.
template <class T>
std::vector<T> Ordinates(Input& in, int n) {
    std::vector<T> y(static_cast<std::size_t>(n < 0 ? 0 : n));
    const int mode = in.Pick(4);
    const double a = in.Real(), b = in.Real();
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double t = static_cast<double>(i);
        double value;
        switch (mode) {
            case 0: value = i < 96 ? in.Real() : a; break;
            case 1: value = a * (t - b) * (t - b) + 1.0; break;
            case 2: value = a; break;
            default: value = a * static_cast<double>(i % 5) - b; break;
        }
        y[i] = static_cast<T>(value);
    }
    Sprinkle(in, y);
    return y;
}

// ---- Memory and instruction sets ----------------------------------------------------------

// Lets the input make one allocation fail (the k-th from now, 0: none) and checks, when it
// ends, that every array the library took is back.
class AllocationScope {
public:
    explicit AllocationScope(int failAt = 0) {
        qal::detail::testing::resetAllocationCounters();
        qal::detail::testing::failAllocationNumber(failAt);
    }
    ~AllocationScope() {
        qal::detail::testing::failAllocationNumber(0);
        QAL_FUZZ_CHECK(qal::detail::testing::allocationsLive() == 0);
    }
    AllocationScope(const AllocationScope&) = delete;
    AllocationScope& operator=(const AllocationScope&) = delete;
    // Whether the chosen allocation was reached, so that it failed.
    static bool Failed(int failAt) {
        return failAt > 0 && qal::detail::testing::allocationsMade() >= failAt;
    }
};

// Mostly no fault; now and then one of the first few allocations fails.
inline int FaultChoice(Input& in) {
    const std::uint8_t b = in.Byte();
    return b < 224 ? 0 : 1 + b % 6;
}

using qal::detail::InstructionSet;
// The levels this processor offers, scalar first, and the hold on one of them.
inline std::vector<InstructionSet> OfferedLevels() { return qal::test::OfferedInstructionSets(); }
using Level = qal::test::ForcedInstructionSet;

inline bool IsStatus(int status) {
    switch (status) {
        case QAL_OK:
        case QAL_ERR_ORDER:
        case QAL_ERR_MEMORY:
        case QAL_ERR_ZERO_DIVISION:
        case QAL_ERR_SINGULAR:
        case QAL_ERR_PARAMETER:
        case QAL_ERR_NOT_FOUND:
        case QAL_ERR_OUT_OF_RANGE:
        case QAL_ERR_TOO_FEW_POINTS:
        case QAL_ERR_LOG_SEQUENCE:
            return true;
        default:
            return false;
    }
}

template <class T>
std::vector<double> Widened(const std::vector<T>& v) {
    return std::vector<double>(v.begin(), v.end());
}

}  // namespace qal::fuzz

#endif  // QAL_FUZZ_SUPPORT_FUZZ_SUPPORT_H
