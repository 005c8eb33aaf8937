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

int Count(std::size_t size) { return static_cast<int>(size); }

Matrix Make(const Rows& rows) {
    Matrix m(Count(rows.size()), rows.empty() ? 0 : Count(rows[0].size()));
    for (std::size_t r = 0; r < rows.size(); ++r) {
        for (std::size_t c = 0; c < rows[r].size(); ++c) m(Count(r), Count(c)) = rows[r][c];
    }
    return m;
}

void ExpectHolds(const Rows& expected, Matrix& m, const char* what) {
    for (std::size_t r = 0; r < expected.size(); ++r) {
        for (std::size_t c = 0; c < expected[r].size(); ++c) {
            EXPECT_TRUE(SameBits(expected[r][c], m(Count(r), Count(c)))) << what << "(" << r << ", " << c << ")";
        }
    }
}

// Diagonally dominant after a cyclic shift of the columns, so that the pivots lie off the
// diagonal and the exchanges and their undoing are exercised.
TEST(GaussJordan, InverseTimesOriginalIsTheIdentity) {
    for (const int n : {1, 2, 7, 20, 50}) {
        Matrix a(n, n), original(n, n), none;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) a(i, j) = std::sin(0.7 * i + 1.3 * j * j) + (j == (i + n / 2) % n ? n : 0);
        }
        original = a;
        ASSERT_EQ(0, k_Qal::GaussJordan(a, n, none, 0)) << n;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                double product = 0.0;
                for (int k = 0; k < n; ++k) product += original(i, k) * a(k, j);
                EXPECT_NEAR(i == j ? 1.0 : 0.0, product, 1e-10) << n << ": " << i << ", " << j;
            }
        }
    }
}

// A result 2 leaves the interrupted elimination; a raise comes from the first access beyond a
// matrix, or with -1 from the pivot count when every candidate is NaN.
TEST(GaussJordan, ResultsRaisesAndWhatStaysInTheMatrices) {
    struct Row { const char* guards; Rows a, b; int n, m, result, raised; Rows aAfter, bAfter; };
    const double kBelow = std::nextafter(1e-25, 0.0);
    const std::vector<Row> rows = {
        {"n = 0", {{7}}, {{8}}, 0, 1, 0, kNoRaise, {{7}}, {{8}}}, {"1 x 1", {{2}}, {{4}}, 1, 1, 0, kNoRaise, {{0.5}}, {{2}}},
        {"zero pivot", {{1, 2}, {2, 4}}, {{1}, {1}}, 2, 1, 2, kNoRaise, {{0, -0.5}, {0.5, 0.25}}, {{0.5}, {0.25}}},
        {"last of equals", {{1, 1}, {1, 1}}, {{1}, {1}}, 2, 1, 2, kNoRaise, {{0, -1}, {1, 1}}, {{0}, {1}}},
        {"off the diagonal", {{0, 1}, {1, 0}}, {{3}, {5}}, 2, 1, 0, kNoRaise, {{0, 1}, {1, 0}}, {{5}, {3}}},
        {"exactly 1e-25", {{1e-25}}, {{1}}, 1, 1, 0, kNoRaise, {{1 / 1e-25}}, {{1 / 1e-25}}},
        {"below 1e-25", {{kBelow}}, {{1}}, 1, 1, 2, kNoRaise, {{kBelow}}, {{1}}},
        {"leading blocks only", {{2, 0, 7}, {0, 4, 7}, {7, 7, 7}}, {{2, 9}, {4, 9}}, 2, 1, 0, kNoRaise,
         {{0.5, 0, 7}, {0, 0.25, 7}, {7, 7, 7}}, {{1, 9}, {1, 9}}},
        {"operation order", {{0.15, 1.12, -0.0}, {1.3, -0.34, -1.77}, {3.98, 3.97, 2.72}},
         {{1.66, -1.48}, {-2.16, -1.69}, {-3.44, 2.13}}, 3, 2, 0, kNoRaise,
         {{-0x1.1db6e60b9205dp-1, 0x1.1d476c8e53f42p-2, 0x1.7348401b1e345p-3},
          {0x1.ef687ecf438e6p-1, -0x1.31a7f44f59f34p-5, -0x1.8dcd6941a05c8p-6},
          {-0x1.31028a5bb3866p-1, -0x1.69aa38814fba3p-2, 0x1.1a3eb2b20ed35p-3}},
         {{-0x1.136c294819c2cp+1, 0x1.7b81214604750p-1}, {0x1.c533d433500aep+0, -0x1.6bb2eeccb04c6p+0},
          {-0x1.6672f06841ef8p-1, 0x1.c5a89250f0e16p+0}}},
        {"a has 2 columns", {{1, 0}, {0, 1}, {0, 0}}, {{1}, {1}, {1}}, 3, 1, 0, 2, {}, {}},
        {"b has 1 column", {{1, 0}, {0, 1}}, {{1}, {1}}, 2, 2, 0, 1, {}, {}},
        {"exchange reads the pivot row first", {{1, 0, 0}, {0, 1, 0}, {0, 5, 1}}, {{1}}, 3, 1, 0, 2, {}, {}},
        {"all NaN at the second step", {{1, kNaN}, {kNaN, kNaN}}, {{1}, {1}}, 2, 1, 0, -1, {}, {}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        Matrix a = Make(r.a), b = Make(r.b);
        int result = 0;
        EXPECT_EQ(r.raised, qal::test::RaisedIndex([&] { result = k_Qal::GaussJordan(a, r.n, b, r.m); }));
        EXPECT_EQ(r.result, result);
        ExpectHolds(r.aAfter, a, "a");
        ExpectHolds(r.bAfter, b, "b");
    }
    Matrix empty;
    EXPECT_THROW(k_Qal::GaussJordan(empty, -1, empty, 0), std::invalid_argument);
}

}  // namespace
