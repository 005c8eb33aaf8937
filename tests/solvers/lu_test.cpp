#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using Rows = std::vector<std::vector<double>>;
using V = std::vector<double>;
constexpr int kNone = -7;  // a pivot entry that the call must not write

// A raw matrix over a copy of the rows, as QAL_NewMatrix lays one out.
struct Matrix {
    V block;
    std::vector<double*> table;
    explicit Matrix(const Rows& rows) {
        for (const V& r : rows) block.insert(block.end(), r.begin(), r.end());
        for (std::size_t i = 0; i < rows.size(); ++i) table.push_back(block.data() + i * rows.size());
    }
};

// Golden factors and solution of "operation order" from an independent replay of the steps in Python (IEEE
// double, no fused operations); its solution satisfies the system to 1e-15. The tie in column 0 goes to row 2,
// whose exchange must hand row 0's scale on to decide column 1, and 3.727 * (1 / 3.727) is not 1.
TEST(LUDecomposition, PivotsSignFactorsAndSolution) {
    struct Row { const char* guards; Rows a; int status; double sign; std::vector<int> pivots; Rows lu; V b, x; };
    const Row rows[] = {
        {"n = 0", {}, QAL_OK, 1, {}, {}, {}, {}},
        {"1 x 1", {{5}}, QAL_OK, 1, {0}, {{5}}, {10}, {2}},
        {"zero row", {{0}}, QAL_ERR_SINGULAR, 1, {kNone}, {{0}}, {}, {}},
        {"NaN row, a untouched", {{3, 2}, {kNaN, kNaN}}, QAL_ERR_SINGULAR, 1, {kNone, kNone}, {{3, 2}, {kNaN, kNaN}},
         {}, {}},
        {"exchange replayed", {{0, 1}, {1, 0}}, QAL_OK, -1, {1, 1}, {{1, 0}, {0, 1}}, {3, 4}, {4, 3}},
        {"tie: the later row", {{2, 0}, {2, 1}}, QAL_OK, -1, {1, 1}, {{2, 1}, {1, -1}}, {2, 5}, {1, 3}},
        {"zero pivot: 1e-25", {{1, 0}, {1, 0}}, QAL_OK, -1, {1, 1}, {{1, 0}, {1, 1e-25}}, {1, 2},
         {2, -0x1.08b2a2c280290p+83}},
        {"all-NaN columns keep pivot row 0", {{4, 1, 0}, {1, kNaN, 4}, {1, kNaN, 4}}, QAL_OK, 1, {0, 0, 0}, {}, {}, {}},
        {"operation order", {{1.57, -1.91, -1.07}, {3.727, -2.48, 2.03}, {3.727, 0.24, 2.08}}, QAL_OK, 1, {2, 2, 2},
         {{0x1.dd0e560418937p+1, 0x1.eb851eb851eb8p-3, 0x1.0a3d70a3d70a4p+1},
          {0x1.af5c3f77b91d3p-2, -0x1.016bba395a089p+1, -0x1.f23a357bb22dfp+0},
          {0x1.fffffffffffffp-1, 0x1.5a3d055e0bbffp+0, 0x1.4a8650e6a5e3fp+1}},
         {0.98, -1.93, 2.36}, {0x1.73e723f79d8e6p+0, 0x1.9b8c48be741ddp+0, -0x1.a7690edf13286p+0}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        const int n = static_cast<int>(r.a.size());
        Matrix m(r.a);
        std::vector<int> pivots(r.a.size() + 1, kNone);  // one beyond, so that n = 0 passes a valid pointer
        double sign = kUntouched;
        EXPECT_EQ(r.status, QAL_LUDecomposition(m.table.data(), n, pivots.data(), &sign));
        EXPECT_TRUE(SameBits(r.sign, sign));
        pivots.pop_back();
        EXPECT_EQ(r.pivots, pivots);
        for (std::size_t e = 0; e < (r.lu.empty() ? 0 : m.block.size()); ++e) {
            EXPECT_TRUE(SameBits(r.lu[e / r.a.size()][e % r.a.size()], m.block[e])) << e;
        }
        V b = r.b;
        EXPECT_EQ(QAL_OK, QAL_LUSolveEqua(m.table.data(), static_cast<int>(b.size()), pivots.data(), b.data()));
        for (std::size_t i = 0; i < b.size(); ++i) EXPECT_TRUE(SameBits(r.x[i], b[i])) << i;
    }
}

TEST(LUDecomposition, ArgumentsAndTheScaleArray) {
    Matrix m({{2, 1}, {1, 3}});
    int pivots[2] = {kNone, kNone};
    double sign = kUntouched;
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_LUDecomposition(m.table.data(), 2, nullptr, &sign));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_LUDecomposition(m.table.data(), 2, pivots, nullptr));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_LUDecomposition(m.table.data(), -1, pivots, &sign));  // the size saturates
    EXPECT_TRUE(SameBits(kUntouched, sign) && pivots[0] == kNone);
    ExpectEveryAllocationFailureHandled([&] { return QAL_LUDecomposition(m.table.data(), 2, pivots, &sign); },
                                        QAL_ERR_MEMORY);
}

// A matrix not from QAL_LUDecomposition: an infinite L element meets only the skipped leading zero, and an
// exactly zero diagonal gives 1e15 whatever the sum.
TEST(LUSolveEqua, SkipsLeadingZerosAndSubstitutesZeroDiagonals) {
    Matrix lower({{1, 0}, {kInf, 1}}), zeroDiagonal({{0, 1}, {0, 2}});
    const int pivots[2] = {0, 1};
    V b{0, 3}, c{1, 4}, untouched{5};
    EXPECT_EQ(QAL_OK, QAL_LUSolveEqua(lower.table.data(), 2, pivots, b.data()));
    EXPECT_EQ(QAL_OK, QAL_LUSolveEqua(zeroDiagonal.table.data(), 2, pivots, c.data()));
    EXPECT_EQ(QAL_OK, QAL_LUSolveEqua(nullptr, -1, nullptr, untouched.data()));
    EXPECT_TRUE(b == V({0, 3}) && c == V({1e15, 2}) && untouched == V{5});
}

}  // namespace
}  // namespace qal::test
