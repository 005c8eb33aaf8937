#include <climits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "frame/allocator.h"
#include "support/raised_index.h"

namespace {

using qal::test::kNoRaise, qal::test::RaisedIndex;
namespace alloc = qal::detail::testing;

// Reach the storage that the public interface does not show.
struct VectorProbe : t_QalVector<int> {
    using t_QalVector<int>::t_QalVector;
    std::size_t capacity() const { return m_array.capacity(); }
};
struct MatrixProbe : t_QalMatrix<double> {
    using t_QalMatrix<double>::t_QalMatrix;
    const double* block() const { return m_data; }
};

// Sized once to `from`, then to `to`: new elements read 0, other indices raise with themselves, and
// the capacity grows by size / 8 within 4 and 1024.
TEST(QalVector, SizingAndIndexTests) {
    struct Row { int from, to, index, raised; std::size_t capacity; };
    const Row rows[] = {{3, 3, 2, kNoRaise, 3}, {3, 3, 3, 3, 3}, {3, 3, -1, -1, 3}, {0, 0, 0, 0, 0}, {1, 1, INT_MAX, INT_MAX, 1},
                        {100, 101, 100, kNoRaise, 112}, {3, 4, 3, kNoRaise, 7}, {10000, 10001, 10000, kNoRaise, 11024},
                        {100, 300, 299, kNoRaise, 300}, {8, 3, 3, 3, 8}, {8, 0, 0, 0, 0}};
    for (const Row& r : rows) {
        VectorProbe v(r.from);
        v.SetSize(r.to);
        EXPECT_EQ(r.raised, RaisedIndex([&] { EXPECT_EQ(0, v(r.index)); })) << r.from << " -> " << r.to;
        EXPECT_EQ(r.capacity, v.capacity()) << r.from << " -> " << r.to;
    }
    VectorProbe regrown(8);  // the step adds to the capacity 8 kept by shrinking; it is 3 / 8 raised to 4
    regrown.SetSize(3);
    regrown.SetSize(9);
    EXPECT_EQ(12u, regrown.capacity());
    EXPECT_THROW(t_QalVector<double>(-1), std::invalid_argument);
    EXPECT_EQ(L"Internal error: bad index 7", k_QalExceptionIndex(7).GetMessageW());
}

// The row is tested first; a block only for positive dimensions; a failed block raises with the
// element count (the wrapped int product where it exceeds int) and leaves nothing allocated.
TEST(QalMatrix, AccessAndAllocation) {
    struct Row { int rows, cols, row, col; bool faulted; long long requests; int raised; };
    const Row rows[] = {{2, 3, 1, 2, false, 1, kNoRaise}, {2, 3, 2, 3, false, 1, 2}, {2, 3, 1, 3, false, 1, 3},
                        {2, 3, -1, 0, false, 1, -1}, {2, 3, 0, -4, false, 1, -4}, {3, 0, 1, 2, false, 0, 2}, {0, 3, 1, 2, false, 0, 1},
                        {-3, -4, 0, 0, false, 0, 0}, {100, 200, 0, 0, true, 1, 20000}, {536870912, 1, 0, 0, false, 1, 536870912},
                        {46341, 46341, 0, 0, false, 0, -2147479015}, {65536, 65536, 0, 0, false, 0, 0}};
    for (const Row& r : rows) {
        alloc::resetAllocationCounters();
        if (r.faulted) alloc::failAllocationNumber(1);
        EXPECT_EQ(r.raised, RaisedIndex([&] {
            MatrixProbe m(r.rows, r.cols);
            const double* const element = &m(r.row, r.col);
            EXPECT_EQ(m.block() + r.row * r.cols + r.col, element);
        })) << r.rows << " x " << r.cols;
        EXPECT_EQ(r.requests, alloc::allocationsMade());
        EXPECT_EQ(0, alloc::allocationsLive());
    }
}

TEST(QalMatrix, CopiesOwnTheirBlockAndMovesHandItOver) {
    alloc::resetAllocationCounters();
    {
        MatrixProbe source(2, 2), target(3, 3);
        source(1, 1) = 3.0;
        target(2, 2) = 5.0;
        alloc::failAllocationNumber(1);  // a failed duplicate leaves the target as it was
        EXPECT_EQ(4, RaisedIndex([&] { target = source; }));
        EXPECT_EQ(5.0, target(2, 2));
        MatrixProbe copy(source);
        copy(1, 1) = 30.0;
        target = source;  // releases the 3 x 3 block
        EXPECT_EQ(3, alloc::allocationsLive());
        EXPECT_TRUE(target(1, 1) == 3.0 && source(1, 1) == 3.0 && RaisedIndex([&] { target(2, 0); }) == 2);
        target = MatrixProbe(std::move(copy));
        EXPECT_TRUE(copy.block() == nullptr && target(1, 1) == 30.0 && alloc::allocationsLive() == 2);
    }
    EXPECT_EQ(0, alloc::allocationsLive());
}

}  // namespace
