// The one allocator for work arrays and for arrays handed to the caller.
//
// Arrays come from the array form of new and go back by delete[], so a caller may release
// an array the library hands out with delete[]. Byte size = count x element size in
// unsigned 32 bits; a product beyond 32 bits and every negative count saturate to
// 0xFFFFFFFF, and a saturated request fails. A failed request gives a null pointer, never
// an exception: every failure path of the library starts from that null at the call site.
#ifndef QAL_SRC_FRAME_ALLOCATOR_H
#define QAL_SRC_FRAME_ALLOCATOR_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

namespace qal::detail {

inline constexpr std::uint32_t kSaturatedByteSize = 0xFFFFFFFFu;

// count x elementSize in unsigned 32 bits, saturating; negative counts saturate too.
constexpr std::uint32_t saturatedByteSize(int count, std::size_t elementSize) noexcept {
    if (count < 0) return kSaturatedByteSize;
    const std::uint64_t bytes = static_cast<std::uint64_t>(count) * elementSize;
    return bytes >= kSaturatedByteSize ? kSaturatedByteSize : static_cast<std::uint32_t>(bytes);
}

// Hooks for the tests' fault injection and accounting. The installed library admits every
// request and counts nothing; only the test build of allocator.cpp does more.
bool admitAllocation() noexcept;
void noteAllocated() noexcept;
void noteReleased() noexcept;

// Null for a saturated or unsatisfiable request. A count of 0 gives a valid, distinct
// pointer, as an array of no elements does.
template <class T>
T* allocateArray(int count) noexcept {
    static_assert(std::is_trivially_destructible_v<T>, "work arrays hold plain numbers");
    if (!admitAllocation() || saturatedByteSize(count, sizeof(T)) == kSaturatedByteSize) return nullptr;
    T* const array = new (std::nothrow) T[static_cast<std::size_t>(count)];
    if (array != nullptr) noteAllocated();
    return array;
}

// Releases what allocateArray gave; null is accepted and ignored.
template <class T>
void releaseArray(T* array) noexcept {
    if (array == nullptr) return;
    noteReleased();
    delete[] array;
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

// Fault injection and accounting, present in the test build only. The state is per thread.
namespace testing {
// Makes the k-th request from now on fail (k = 1: the next one); 0 switches it off.
void failAllocationNumber(int k) noexcept;
// Requests made on this thread since the last reset, failed ones included.
long long allocationsMade() noexcept;
// Arrays not yet released on this thread.
long long allocationsLive() noexcept;
void resetAllocationCounters() noexcept;
}  // namespace testing

}  // namespace qal::detail

#endif  // QAL_SRC_FRAME_ALLOCATOR_H
