#include <cmath>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "support/raised_index.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN, qal::test::kNoRaise, qal::test::SameBits;
using Rows = std::vector<std::vector<double>>;
using Matrix = t_QalMatrix<double>;

// Calls visit(row, column, value) for every element of a table of rows.
template <class Visit>
void ForEach(const Rows& rows, Visit visit) {
    for (std::size_t r = 0; r < rows.size(); ++r) {
        for (std::size_t c = 0; c < rows[r].size(); ++c) visit(static_cast<int>(r), static_cast<int>(c), rows[r][c]);
    }
}

Matrix Make(const Rows& rows) {
    Matrix m(static_cast<int>(rows.size()), rows.empty() ? 0 : static_cast<int>(rows[0].size()));
    ForEach(rows, [&](int r, int c, double value) { m(r, c) = value; });
    return m;
}

// Diagonally dominant after a cyclic shift of the columns, so that the pivots lie off the diagonal and the
// exchanges and their undoing are exercised.
TEST(GaussJordan, InverseTimesOriginalIsTheIdentity) {
    for (const int n : {1, 2, 7, 20, 50}) {
        Matrix a(n, n), original(n, n), none;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) a(i, j) = std::sin(0.7 * i + 1.3 * j * j) + (j == (i + n / 2) % n ? n : 0);
        }
        original = a;
        ASSERT_EQ(0, k_Qal::GaussJordan(a, n, none, 0)) << n;
        for (int e = 0; e < n * n; ++e) {
            double product = 0.0;
            for (int k = 0; k < n; ++k) product += original(e / n, k) * a(k, e % n);
            EXPECT_NEAR(e / n == e % n ? 1.0 : 0.0, product, 1e-10) << n << ": " << e / n << ", " << e % n;
        }
    }
}

// A result 2 leaves the interrupted elimination, the failing step's row exchange included; a raise comes from
// the first access beyond a matrix, or with -1 from the pivot count when every candidate is NaN.
TEST(GaussJordan, ResultsRaisesAndWhatStaysInTheMatrices) {
    struct Row { const char* guards; Rows a, b; int n, m, result, raised; Rows aAfter, bAfter; };
    const double kBelow = std::nextafter(1e-25, 0.0);
    const std::vector<Row> rows = {
        {"n = 0", {{7}}, {{8}}, 0, 1, 0, kNoRaise, {{7}}, {{8}}},
        {"zero pivot", {{1, 2}, {2, 4}}, {{1}, {1}}, 2, 1, 2, kNoRaise, {{0, -0.5}, {0.5, 0.25}}, {{0.5}, {0.25}}},
        {"last of equals", {{1, 1}, {1, 1}}, {{1}, {1}}, 2, 1, 2, kNoRaise, {{0, -1}, {1, 1}}, {{0}, {1}}},
        {"exactly 1e-25", {{1e-25}}, {{1}}, 1, 1, 0, kNoRaise, {{1 / 1e-25}}, {{1 / 1e-25}}},
        {"below, exchanged", {{0, kBelow}, {0, 0}}, {{1}, {2}}, 2, 1, 2, kNoRaise, {{0, 0}, {0, kBelow}}, {{2}, {1}}},
        // (2, 0) is the last of the two largest met row by row; then the order of the operations in a and b
        {"operation order", {{-2.1, 0.35, -1.04}, {0.83, 1.01, -3.73}, {3.73, 2.7, -1.93}}, {{0.98}, {1.93}, {2.36}},
         3, 1, 0, kNoRaise, {{-0x1.a484b539daab0p-2, 0x1.b9a8b3f9080b4p-4, 0x1.a6aac9ca0e7c0p-7},
         {0x1.3eb6d47747a29p-1, -0x1.9ab4e5354462bp-2, 0x1.c243ace11720dp-2},
         {0x1.3c1c1b281d2d8p-4, -0x1.692be310dec44p-2, 0x1.f371397b64175p-4}},
         {{-0x1.4fabf5348e35ap-3}, {0x1.bf51e7fd049f0p-1}, {-0x1.44f169d454b28p-2}}},
        {"a has 2 columns", {{1, 0}, {0, 1}, {0, 0}}, {{1}, {1}, {1}}, 3, 1, 0, 2, {}, {}},
        {"b has 1 column", {{1, 0}, {0, 1}}, {{1}, {1}}, 2, 2, 0, 1, {}, {}},
        {"all NaN at the second step", {{1, kNaN}, {kNaN, kNaN}}, {{1}, {1}}, 2, 1, 0, -1, {}, {}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        Matrix a = Make(r.a), b = Make(r.b);
        int result = 0;
        EXPECT_EQ(r.raised, qal::test::RaisedIndex([&] { result = k_Qal::GaussJordan(a, r.n, b, r.m); }));
        EXPECT_EQ(r.result, result);
        ForEach(r.aAfter, [&](int i, int j, double v) { EXPECT_TRUE(SameBits(v, a(i, j))) << "a " << i << ", " << j; });
        ForEach(r.bAfter, [&](int i, int j, double v) { EXPECT_TRUE(SameBits(v, b(i, j))) << "b " << i << ", " << j; });
    }
    Matrix empty;
    EXPECT_THROW(k_Qal::GaussJordan(empty, -1, empty, 0), std::invalid_argument);
}

}  // namespace
