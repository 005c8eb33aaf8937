// The one allocator for work arrays and for arrays handed to the caller.
//
// Byte size = count x element size in unsigned 32 bits; a product beyond 32 bits and
// every negative count saturate to 0xFFFFFFFF, and a saturated request fails. A failed
// request gives a null pointer, never an exception: every failure path of the library
// starts from that null at the call site.
#ifndef QAL_SRC_FRAME_ALLOCATOR_H
#define QAL_SRC_FRAME_ALLOCATOR_H

#include <cstddef>
#include <cstdint>

namespace qal::detail {

inline constexpr std::uint32_t kSaturatedByteSize = 0xFFFFFFFFu;

// count x elementSize in unsigned 32 bits, saturating; negative counts saturate too.
constexpr std::uint32_t saturatedByteSize(int count, std::size_t elementSize) noexcept {
    if (count < 0) return kSaturatedByteSize;
    const std::uint64_t bytes = static_cast<std::uint64_t>(count) * elementSize;
    return bytes >= kSaturatedByteSize ? kSaturatedByteSize : static_cast<std::uint32_t>(bytes);
}

// Null for a saturated or unsatisfiable request. A request of 0 bytes gives a valid,
// distinct pointer, as an array of no elements does.
void* allocateBytes(std::uint32_t bytes) noexcept;
// Releases what allocateBytes gave; null is accepted and ignored.
void releaseBytes(void* block) noexcept;

template <class T>
T* allocateArray(int count) noexcept {
    return static_cast<T*>(allocateBytes(saturatedByteSize(count, sizeof(T))));
}

template <class T>
void releaseArray(T* array) noexcept {
    releaseBytes(array);
}

// Owns one work array for the length of a call, so that every way out releases it.
template <class T>
class WorkArray {
public:
    explicit WorkArray(int count) noexcept : data_(allocateArray<T>(count)) {}
    ~WorkArray() { releaseArray(data_); }
    WorkArray(const WorkArray&) = delete;
    WorkArray& operator=(const WorkArray&) = delete;

    explicit operator bool() const noexcept { return data_ != nullptr; }
    T* get() const noexcept { return data_; }
    T& operator[](int i) const noexcept { return data_[i]; }
    // Hands the array over to the caller; this object no longer releases it.
    T* release() noexcept {
        T* const out = data_;
        data_ = nullptr;
        return out;
    }

private:
    T* data_;
};

// Fault injection and accounting for the tests. The state is per thread, so tests
// running in parallel threads do not disturb each other.
namespace testing {
// Makes the k-th allocation from now on fail (k = 1: the next one); 0 switches it off.
void failAllocationNumber(int k) noexcept;
// Requests made on this thread since the last reset, failed ones included.
long long allocationsMade() noexcept;
// Allocations not yet released on this thread.
long long allocationsLive() noexcept;
void resetAllocationCounters() noexcept;
}  // namespace testing

}  // namespace qal::detail

#endif  // QAL_SRC_FRAME_ALLOCATOR_H
