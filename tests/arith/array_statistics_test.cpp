#include <vector>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;

// 9999 elements are summed, 10000 are not; only an exactly zero sum is refused, and a NaN one divides. The last
// row's quotients (from a replay in Python) differ from products with the reciprocal.
TEST(SumOfAndNormalize, LimitsExactZeroAndOneDivisionPerElement) {
    const V many(10000, 1.0);
    const float tenths[] = {0.1f, 0.2f};  // the double sum of the widened floats, not their float sum
    EXPECT_TRUE(SameBits(9999.0, QAL_SumOf(many.data(), 9999)) && SameBits(0.0, QAL_SumOf(many.data(), 10000)));
    EXPECT_TRUE(SameBits(0x1.3333338p-2, QAL_SumOf(tenths, 2)));
    struct Row { V values; int n, status; V after; };
    const Row rows[] = {
        {{1, -1}, 2, QAL_ERR_ZERO_DIVISION, {1, -1}}, {{1e-300, 0}, 2, QAL_OK, {1, 0}},
        {{1, kNaN}, 2, QAL_OK, {kNaN, kNaN}}, {{}, 2, QAL_ERR_ZERO_DIVISION, {}},
        {{3.789, -4.025, -3.64}, 3, QAL_OK, {-0x1.f481fb3e9cedcp-1, 0x1.09d75093f2432p+0, 0x1.e0d35a16b8679p-1}},
    };
    for (Row r : rows) {
        EXPECT_EQ(r.status, QAL_Normalize(r.values.empty() ? nullptr : r.values.data(), r.n)) << &r - rows;
        for (std::size_t i = 0; i < r.after.size(); ++i) EXPECT_TRUE(SameBits(r.after[i], r.values[i])) << i;
    }
}

// The spread's root goes through QAL_sqrt, whose float rounding of the argument shows in {1, 2, 4}; the residual
// sum keeps the single-pass order (sum * sum / n, then the difference) and has no limit of 9999.
TEST(MeanAndResiduals, OutputsLimitsAndOperationOrder) {
    V alternating(20000, 0.0);
    for (std::size_t i = 1; i < alternating.size(); i += 2) alternating[i] = 1;
    struct Row { V values; int status; double mean, spread, residuals; };
    const Row rows[] = {
        {{4}, QAL_OK, 4, 0, 0}, {{}, QAL_ERR_PARAMETER, kUntouched, kUntouched, 0},
        {{1, 2, 4}, QAL_OK, 0x1.2aaaaaaaaaaabp+1, 0x1.870be4520849bp+0, 0x1.2aaaaaaaaaaacp+2},
        {{0.843, 4.042, 1.82}, QAL_OK, 0x1.1e147ae147ae1p+1, 0x1.a3ae7334e83e4p+0, 0x1.580242d05f288p+2},
        {alternating, QAL_OK, 0.5, 0x1.0001a2fea91dbp-1, 5000},
    };
    for (const Row& r : rows) {
        const int n = static_cast<int>(r.values.size());
        double mean = kUntouched, spread = kUntouched, meanOnly = kUntouched;
        EXPECT_EQ(r.status, QAL_Mean(r.values.data(), n, &mean, &spread)) << &r - rows;
        EXPECT_EQ(r.status, QAL_Mean(r.values.data(), n, &meanOnly, nullptr)) << &r - rows;
        EXPECT_TRUE(SamePoint(r.mean, r.spread, mean, spread) && SameBits(r.mean, meanOnly)) << &r - rows;
        EXPECT_TRUE(SameBits(r.residuals, QAL_SumSquareResiduen(r.values.data(), n))) << &r - rows;
    }
    double mean = kUntouched;
    EXPECT_TRUE(QAL_Mean(nullptr, 1, &mean, nullptr) == QAL_ERR_PARAMETER && SameBits(kUntouched, mean));
    EXPECT_TRUE(QAL_Mean(&mean, 1, nullptr, nullptr) == QAL_ERR_PARAMETER && QAL_SumSquareResiduen(nullptr, 3) == 0);
}

}  // namespace
}  // namespace qal::test
