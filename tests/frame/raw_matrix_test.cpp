#include <climits>
#include <cmath>
#include <utility>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

// Rows lie cols apart in one block. Dimensions below 1, an int product beyond INT_MAX (65536 * 32768 would wrap
// to INT_MIN) and a block whose byte size saturates (2^29 doubles) give null with nothing held.
TEST(NewMatrix, OneBlockOrNullWithNothingHeld) {
    double** const m = QAL_NewMatrix(3, 4);
    EXPECT_TRUE(m[1] == m[0] + 4 && &m[1][3] + 1 == &m[2][0]);
    QAL_DeleteMatrix(m, 3, 4);
    for (const auto& d : {std::pair{-1, 4}, {3, 0}, {65536, 32768}, {1, 1 << 29}}) {
        qal::detail::testing::resetAllocationCounters();
        EXPECT_TRUE(!QAL_NewMatrix(d.first, d.second) && !qal::detail::testing::allocationsLive()) << d.first;
    }
    ExpectEveryAllocationFailureHandled([] {
        double** const failed = QAL_NewMatrix(2, 2);
        QAL_DeleteMatrix(failed, 2, 2);
        return failed == nullptr ? QAL_ERR_MEMORY : QAL_OK;
    }, QAL_ERR_MEMORY);
}

// The pair gives back the float bits (NaN, -0 and a subnormal too), narrows 1e300 to an infinity and releases the
// array. A refusal leaves *target and the array alone (releasing a stack address would not pass the sanitizers);
// a failed allocation leaves null. Parity reads the lowest bit of the two's complement.
TEST(F2DAndD2F, RoundTripRefusalsParityAndSwap) {
    const float in[] = {0.1f, -0.0f, 1e-45f, -3.4e38f, NAN};
    float back[5] = {};
    double sentinel = kUntouched, *const untouched = &sentinel, *wide = untouched, *none = nullptr;
    ExpectEveryAllocationFailureHandled([&] {
        wide = untouched;
        const int status = QAL_F2D(in, 5, &wide);
        if (status != QAL_OK) return wide == nullptr ? status : -1;
        wide[3] = 1e300;
        return QAL_D2F(back, 5, &wide);
    }, QAL_ERR_MEMORY);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(SameBits(i == 3 ? INFINITY : in[i], back[i])) << i;
    wide = untouched;
    for (const int status : {QAL_F2D(in, 0, &wide), QAL_F2D(in, 1, nullptr), QAL_D2F(back, 1, &none),
                             QAL_D2F(back, 1, nullptr)}) EXPECT_EQ(QAL_ERR_MEMORY, status);
    EXPECT_TRUE(wide == untouched && SameBits(kUntouched, sentinel));
    EXPECT_TRUE(QAL_IsEven(0) && QAL_IsEven(INT_MIN) && QAL_IsOdd(-1) && !QAL_IsOdd(-4) && !QAL_IsEven(7));
    double a = 1.5, b = -2.5;
    QAL_Mt_Swap(&a, &b);
    EXPECT_TRUE(a == -2.5 && b == 1.5);
}

}  // namespace
}  // namespace qal::test
