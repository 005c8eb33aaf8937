#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "frame/allocator.h"
#include "support/raised_index.h"

namespace {

using qal::test::kNoRaise, qal::test::RaisedIndex;
using Matrix = t_QalMatrix<double>;
namespace alloc = qal::detail::testing;

// Reaches the capacity, which the interface does not show.
struct VectorProbe : t_QalVector<int> {
    using t_QalVector<int>::t_QalVector;
    std::size_t capacity() const { return m_array.capacity(); }
};

// Built with the first size, then set to the others: each element reads 0 and any other index raises with
// itself. A full vector grows by size / 8 kept within 4 and 1024, or to the new size; shrinking keeps the
// capacity, and size 0 releases it.
TEST(QalVector, SizingAndIndexTests) {
    struct Row { std::vector<int> sizes; std::size_t capacity; };
    const Row rows[] = {{{3, 4}, 7}, {{100, 101}, 112}, {{10000, 10001}, 11024}, {{100, 150}, 150}, {{8, 3, 8}, 8},
                        {{8, 0}, 0}, {{100, 3, 101}, 104}};  // the last: 3 / 8 raised to 4, added to 100
    for (const Row& r : rows) {
        VectorProbe v(r.sizes[0]);
        for (std::size_t k = 1; k < r.sizes.size(); ++k) v.SetSize(r.sizes[k]);
        for (int i = -1, n = r.sizes.back(); i <= n + 1; ++i) {
            EXPECT_EQ(i < 0 || i >= n ? i : kNoRaise, RaisedIndex([&] { EXPECT_EQ(0, v(i)); })) << &r - rows;
        }
        EXPECT_EQ(r.capacity, v.capacity()) << &r - rows;
    }
    EXPECT_THROW(t_QalVector<double>(-1), std::invalid_argument);
    EXPECT_EQ(L"Internal error: bad index 7", k_QalExceptionIndex(7).GetMessageW());
}

// Row-major block, the row tested first. A block only for positive dimensions; one that cannot be allocated
// (2^32 bytes saturate) raises with the element count, the wrapped int product without a request where it
// exceeds int. A copy owns a duplicate, and a failed one leaves the target; a move leaves the source 0 x 0.
TEST(QalMatrix, AccessAllocationCopiesAndMoves) {
    struct Row { int rows, cols, row, col; long long requests; int raised; };
    const Row rows[] = {{2, 3, 2, 3, 1, 2}, {2, 3, 1, 3, 1, 3}, {2, 3, -1, 0, 1, -1}, {2, 3, 0, -4, 1, -4},
                        {3, 0, 1, 2, 0, 2}, {0, 3, 1, 2, 0, 1}, {-3, -4, 0, 0, 0, 0},
                        {1, 536870912, 0, 0, 1, 536870912}, {65536, 65536, 0, 0, 0, 0}};
    for (const Row& r : rows) {
        alloc::resetAllocationCounters();
        EXPECT_EQ(r.raised, RaisedIndex([&] { Matrix(r.rows, r.cols)(r.row, r.col); })) << &r - rows;
        EXPECT_TRUE(alloc::allocationsMade() == r.requests && alloc::allocationsLive() == 0) << &r - rows;
    }
    {
        Matrix source(2, 3), target(3, 3);
        EXPECT_EQ(&source(0, 0) + 5, &source(1, 2));
        source(1, 1) = 3.0;
        target(2, 2) = 5.0;
        alloc::failAllocationNumber(1);
        EXPECT_TRUE(RaisedIndex([&] { target = source; }) == 6 && target(2, 2) == 5.0);
        target = source;  // releases the 3 x 3 block
        source(1, 1) = 30.0;
        EXPECT_TRUE(target(1, 1) == 3.0 && alloc::allocationsLive() == 2 && RaisedIndex([&] { target(2, 0); }) == 2);
        target = Matrix(std::move(source));
        EXPECT_TRUE(target(1, 1) == 30.0 && alloc::allocationsLive() == 1 && RaisedIndex([&] { source(0, 0); }) == 0);
    }
    EXPECT_EQ(0, alloc::allocationsLive());
}

}  // namespace
