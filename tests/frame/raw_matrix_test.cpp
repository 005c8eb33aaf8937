#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

namespace alloc = qal::detail::testing;

TEST(NewMatrix, OneBlockRowAfterRowOrNullWithNothingHeld) {
    double** const m = QAL_NewMatrix(3, 4);
    ASSERT_NE(nullptr, m);
    EXPECT_TRUE(m[1] == m[0] + 4 && m[2] == m[0] + 8);
    m[1][3] = 1.5;  // the last of row 1 and the first of row 2 are neighbours
    m[2][0] = 2.5;
    EXPECT_EQ(2.5, *(&m[1][3] + 1));
    QAL_DeleteMatrix(m, 3, 4);
    QAL_DeleteMatrix(nullptr, 3, 4);
    // Dimensions below 1, an int product beyond INT_MAX (65536 * 32768 = 2^31 would wrap to INT_MIN), and a block
    // whose byte size saturates (2^28 doubles): null, and nothing left allocated.
    struct Row { int rows, cols; };
    const Row rows[] = {{0, 4}, {-1, 4}, {3, 0}, {3, -2}, {65536, 32768}, {INT_MAX, 2}, {1, 1 << 29}};
    for (const Row& r : rows) {
        alloc::resetAllocationCounters();
        EXPECT_EQ(nullptr, QAL_NewMatrix(r.rows, r.cols)) << r.rows << " x " << r.cols;
        EXPECT_EQ(0, alloc::allocationsLive()) << r.rows << " x " << r.cols;
    }
    ExpectEveryAllocationFailureHandled([] {
        double** const failed = QAL_NewMatrix(2, 2);
        QAL_DeleteMatrix(failed, 2, 2);
        return failed == nullptr ? QAL_ERR_MEMORY : QAL_OK;
    }, QAL_ERR_MEMORY);
}

// The pair gives the float bits back, NaN and signed zero included; a double beyond the float range narrows to
// an infinity; D2F releases the array that F2D handed out.
TEST(F2DAndD2F, RoundTripNarrowingAndBadArguments) {
    const std::vector<float> in{0.1f, -0.0f, 1e-45f, -3.4e38f, static_cast<float>(kInf), static_cast<float>(kNaN)};
    std::vector<float> back(in.size(), 7.0f);
    double* wide = nullptr;
    const int n = static_cast<int>(in.size());
    alloc::resetAllocationCounters();
    EXPECT_EQ(QAL_OK, QAL_F2D(in.data(), n, &wide));
    EXPECT_TRUE(SameBits(static_cast<double>(0.1f), wide[0]));
    wide[3] = 1e300;
    EXPECT_EQ(QAL_OK, QAL_D2F(back.data(), n, &wide));
    EXPECT_EQ(0, alloc::allocationsLive());
    for (std::size_t i = 0; i < in.size(); ++i) {
        EXPECT_TRUE(SameBits(i == 3 ? static_cast<float>(kInf) : in[i], back[i])) << i;
    }

    double sentinel = kUntouched;
    double* const untouched = &sentinel;
    double* target = untouched;
    for (const int count : {0, -1}) EXPECT_EQ(QAL_ERR_MEMORY, QAL_F2D(in.data(), count, &target));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_F2D(nullptr, 1, &target));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_F2D(in.data(), 1, nullptr));
    EXPECT_EQ(untouched, target);
    double* none = nullptr;
    EXPECT_TRUE(QAL_D2F(back.data(), 1, &none) == QAL_ERR_MEMORY && QAL_D2F(back.data(), 1, nullptr) == QAL_ERR_MEMORY);
    ASSERT_EQ(QAL_OK, QAL_F2D(in.data(), 1, &wide));
    EXPECT_TRUE(QAL_D2F(nullptr, 1, &wide) == QAL_ERR_MEMORY && QAL_D2F(back.data(), 0, &wide) == QAL_ERR_MEMORY);
    EXPECT_EQ(1, alloc::allocationsLive());  // nothing released by the refusals
    EXPECT_EQ(QAL_OK, QAL_D2F(back.data(), 1, &wide));
    ExpectEveryAllocationFailureHandled([&] {
        target = untouched;
        const int status = QAL_F2D(in.data(), n, &target);
        if (status != QAL_OK) return target == nullptr ? status : -1;  // a failed allocation leaves null
        return QAL_D2F(back.data(), n, &target);
    }, QAL_ERR_MEMORY);
}

TEST(Parity, LowestBitOfTwosComplement) {
    for (const int v : {0, 7, -1, -3, -4, INT_MIN, INT_MAX}) {
        EXPECT_EQ((v % 2) == 0, QAL_IsEven(v)) << v;
        EXPECT_NE(QAL_IsEven(v), QAL_IsOdd(v)) << v;
    }
    double a = 1.5, b = -2.5;
    QAL_Mt_Swap(&a, &b);
    EXPECT_TRUE(a == -2.5 && b == 1.5);
}

}  // namespace
}  // namespace qal::test
