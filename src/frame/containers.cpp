#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "frame/allocator.h"
#include "qal/qal_classes.h"

// ---- k_QalExceptionIndex ------------------------------------------------------------

k_QalExceptionIndex::k_QalExceptionIndex(int index) : m_index(index) {}

k_QalExceptionIndex& k_QalExceptionIndex::operator=(const k_QalExceptionIndex& other) {
    m_index = other.m_index;
    return *this;
}

k_QalExceptionIndex& k_QalExceptionIndex::operator=(k_QalExceptionIndex&& other) {
    m_index = other.m_index;
    return *this;
}

// std::to_wstring of an int writes what %d writes.
std::wstring k_QalExceptionIndex::GetMessageW() const {
    return L"Internal error: bad index " + std::to_wstring(m_index);
}

// ---- t_QalVector ---------------------------------------------------------------------

namespace {

// Growth of a vector whose storage is too small for `newSize`: a first sizing takes
// exactly newSize; later the capacity grows by size / 8, kept within 4 and 1024, or to
// newSize when that is larger. The vectors never set a grow-by value of their own.
std::size_t grownCapacity(std::size_t capacity, std::size_t size, std::size_t newSize) noexcept {
    if (capacity == 0) return newSize;
    const std::size_t step = std::clamp<std::size_t>(size / 8, 4, 1024);
    return std::max(newSize, capacity + step);
}

}  // namespace

template <class T>
t_QalVector<T>::t_QalVector(int size) {
    SetSize(size);
}

template <class T>
t_QalVector<T>::~t_QalVector() = default;

template <class T>
void t_QalVector<T>::SetSize(int size) {
    if (size < 0) throw std::invalid_argument("t_QalVector::SetSize: negative size");
    const auto newSize = static_cast<std::size_t>(size);
    if (newSize == 0) {
        std::vector<T>().swap(m_array);
        return;
    }
    if (newSize > m_array.capacity()) m_array.reserve(grownCapacity(m_array.capacity(), m_array.size(), newSize));
    m_array.resize(newSize);  // value-initialised: new elements are 0
}

template <class T>
int t_QalVector<T>::GetSize() const {
    return static_cast<int>(m_array.size());
}

template <class T>
T& t_QalVector<T>::operator()(int index) {
    if (index < 0 || index >= GetSize()) throw k_QalExceptionIndex(index);
    return m_array[static_cast<std::size_t>(index)];
}

// ---- t_QalMatrix ---------------------------------------------------------------------

namespace {

// rows * cols as two's-complement int multiplication gives it, formed in unsigned
// arithmetic so that an overflowing product wraps instead of being undefined.
int wrappedProduct(int rows, int cols) noexcept {
    return static_cast<int>(static_cast<std::uint32_t>(rows) * static_cast<std::uint32_t>(cols));
}

}  // namespace

template <class T>
t_QalMatrix<T>::t_QalMatrix(int rows, int cols) : m_rows(rows), m_cols(cols), m_data(nullptr) {
    Allocate();
}

template <class T>
t_QalMatrix<T>::t_QalMatrix(const t_QalMatrix& other) : m_rows(other.m_rows), m_cols(other.m_cols), m_data(nullptr) {
    static_assert(std::is_trivially_copyable_v<T>, "the block is copied bytewise");
    Allocate();
    // The elements may never have been written: copy the bytes, whatever they are.
    if (m_data != nullptr && other.m_data != nullptr) {
        const std::size_t count = static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_cols);
        std::memcpy(m_data, other.m_data, sizeof(T) * count);
    }
}

template <class T>
t_QalMatrix<T>::t_QalMatrix(t_QalMatrix&& other) noexcept
    : m_rows(other.m_rows), m_cols(other.m_cols), m_data(other.m_data) {
    other.m_rows = 0;
    other.m_cols = 0;
    other.m_data = nullptr;
}

template <class T>
t_QalMatrix<T>& t_QalMatrix<T>::operator=(const t_QalMatrix& other) {
    if (this == &other) return *this;
    t_QalMatrix copy(other);
    std::swap(m_rows, copy.m_rows);
    std::swap(m_cols, copy.m_cols);
    std::swap(m_data, copy.m_data);
    return *this;  // `copy` releases the block this matrix held
}

template <class T>
t_QalMatrix<T>& t_QalMatrix<T>::operator=(t_QalMatrix&& other) noexcept {
    if (this == &other) return *this;
    qal::detail::releaseArray(m_data);
    m_rows = other.m_rows;
    m_cols = other.m_cols;
    m_data = other.m_data;
    other.m_rows = 0;
    other.m_cols = 0;
    other.m_data = nullptr;
    return *this;
}

template <class T>
t_QalMatrix<T>::~t_QalMatrix() {
    qal::detail::releaseArray(m_data);
}

template <class T>
void t_QalMatrix<T>::Allocate() {
    if (m_data != nullptr) {
        qal::detail::releaseArray(m_data);
        m_data = nullptr;
    }
    if (m_rows <= 0 || m_cols <= 0) return;
    // The element count is an int product. Where the true product exceeds int, the
    // request fails like a saturated one and reports the wrapped product, which is what
    // int multiplication would have given; it is never allowed to wrap into a small
    // block that the caller would then index past.
    const std::int64_t count = static_cast<std::int64_t>(m_rows) * static_cast<std::int64_t>(m_cols);
    const int elements = wrappedProduct(m_rows, m_cols);
    if (count <= INT_MAX) m_data = qal::detail::allocateArray<T>(elements);
    if (m_data == nullptr) throw k_QalExceptionIndex(elements);
}

template <class T>
T& t_QalMatrix<T>::operator()(int row, int col) {
    if (row < 0 || row >= m_rows) throw k_QalExceptionIndex(row);
    if (col < 0 || col >= m_cols) throw k_QalExceptionIndex(col);
    return m_data[m_cols * row + col];  // below rows * cols, which fits in int
}

template class t_QalVector<double>;
template class t_QalVector<int>;
template class t_QalMatrix<double>;

// ---- k_Qal ---------------------------------------------------------------------------

// k_Qal has no state: assigning leaves both objects as they are.
k_Qal& k_Qal::operator=(const k_Qal&) { return *this; }
k_Qal& k_Qal::operator=(k_Qal&&) { return *this; }
