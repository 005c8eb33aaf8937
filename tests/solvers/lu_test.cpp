#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kNone = -7;  // a pivot entry that the call must not write

// Row pointers n elements apart into `block`, as QAL_NewMatrix lays a matrix out.
std::vector<double*> Table(V& block, std::size_t n) {
    std::vector<double*> rows(n);
    for (std::size_t i = 0; i < n; ++i) rows[i] = block.data() + i * n;
    return rows;
}

// The solution of "operation order" comes from a replay of the steps in Python (IEEE double, nothing fused) and
// solves the system to 1e-15. Its column-0 tie goes to row 2, whose exchange must pass row 0's scale on for column
// 1, and 3.727 * (1 / 3.727) is not 1: the solution's bits show both. Rows without factors check pivots and sign.
TEST(LUDecompositionAndSolve, PivotsSignFactorsAndSolution) {
    struct Row { const char* guards; std::size_t n; V a; int status; double sign; std::vector<int> pivots;
                 V lu = {}, b = {}, x = {}; };
    const Row rows[] = {
        {"n = 0", 0, {}, QAL_OK, 1, {}},
        {"NaN row, a untouched", 2, {3, 2, kNaN, kNaN}, QAL_ERR_SINGULAR, 1, {kNone, kNone}, {3, 2, kNaN, kNaN}},
        {"tie: the later row, replayed", 2, {2, 0, 2, 1}, QAL_OK, -1, {1, 1}, {2, 1, 1, -1}, {2, 5}, {1, 3}},
        {"zero pivot: 1e-25", 2, {1, 0, 1, 0}, QAL_OK, -1, {1, 1}, {1, 0, 1, 1e-25}, {1, 2},
         {2, -0x1.08b2a2c28029p+83}},
        {"all-NaN columns keep row 0", 3, {4, 1, 0, 1, kNaN, 4, 1, kNaN, 4}, QAL_OK, 1, {0, 0, 0}},
        {"operation order", 3, {1.57, -1.91, -1.07, 3.727, -2.48, 2.03, 3.727, 0.24, 2.08}, QAL_OK, 1, {2, 2, 2}, {},
         {0.98, -1.93, 2.36}, {0x1.73e723f79d8e6p+0, 0x1.9b8c48be741ddp+0, -0x1.a7690edf13286p+0}},
    };
    for (Row r : rows) {  // a copy: the call works on r.a and r.b
        SCOPED_TRACE(r.guards);
        std::vector<double*> m = Table(r.a, r.n);
        std::vector<int> pivots(r.n + 1, kNone);  // one more, so that n = 0 passes a valid pointer
        double sign = kUntouched;
        EXPECT_EQ(r.status, QAL_LUDecomposition(m.data(), static_cast<int>(r.n), pivots.data(), &sign));
        pivots.pop_back();
        EXPECT_TRUE(SameBits(r.sign, sign) && r.pivots == pivots);
        for (std::size_t e = 0; e < r.lu.size(); ++e) EXPECT_TRUE(SameBits(r.lu[e], r.a[e])) << e;
        EXPECT_EQ(QAL_OK, QAL_LUSolveEqua(m.data(), static_cast<int>(r.b.size()), pivots.data(), r.b.data()));
        for (std::size_t i = 0; i < r.x.size(); ++i) EXPECT_TRUE(SameBits(r.x[i], r.b[i])) << i;
    }
    V a{2, 1, 1, 3};
    std::vector<double*> m = Table(a, 2);
    int pivots[2] = {kNone, kNone};
    double sign = kUntouched;  // a negative n saturates the scale array's size
    EXPECT_TRUE(QAL_LUDecomposition(m.data(), 2, nullptr, &sign) == QAL_ERR_PARAMETER &&
                QAL_LUDecomposition(m.data(), -1, pivots, &sign) == QAL_ERR_MEMORY);
    EXPECT_TRUE(SameBits(kUntouched, sign) && pivots[0] == kNone);
    ExpectEveryAllocationFailureHandled([&] { return QAL_LUDecomposition(m.data(), 2, pivots, &sign); },
                                        QAL_ERR_MEMORY);
    // The solve on matrices from elsewhere: an infinite L element meets only the skipped leading zero of b, and an
    // exactly zero diagonal gives 1e15 whatever the sum.
    V lower{1, 0, kInf, 1}, zeroDiagonal{0, 1, 0, 2}, b{0, 3}, c{1, 4};
    const int none[2] = {0, 1};
    EXPECT_TRUE(QAL_LUSolveEqua(Table(lower, 2).data(), 2, none, b.data()) == QAL_OK && b == V({0, 3}));
    EXPECT_TRUE(QAL_LUSolveEqua(Table(zeroDiagonal, 2).data(), 2, none, c.data()) == QAL_OK && c == V({1e15, 2}));
}

}  // namespace
}  // namespace qal::test
