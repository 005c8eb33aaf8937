#include <climits>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
constexpr float u = static_cast<float>(kUntouched), nan = static_cast<float>(kNaN);

TEST(AkimaSub, SlopesZeroWidthsAndOrder) {
    struct Row { F x, y; int status; F slopes; };
    const Row rows[] = {
        {{0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, QAL_OK, {0, 2, 4, 6, 8}}, {{0, 1, 2}, {0, 1, 0}, QAL_OK, {2, 0, -2}},
        {{0, 1, 2, 3, 4}, {0, 1, 2, 5, 8}, QAL_OK, {1, 1, 2, 3, 3}},  // at x = 1 one pair is equal, at 2 both
        // Zero width: 1000 for the segment and for the extension beside it; the smallest width still divides.
        {{0, 1, 1, 2}, {0, 1, 2, 3}, QAL_OK, {500.5f, 500.5f, 500.5f, 500.5f}},
        {{0, 0, 1}, {0, 0x1p-149f, 1}, QAL_OK, {1499.5f, 500.5f, 500.5f}},
        {{0, 0x1p-149f, 1}, {0, 0x1p-149f, 1}, QAL_OK, {1, 1, 1}},
        {{0, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, 2, 3, nan, 5, 6, 7, 8}, QAL_OK, {1, 1, nan, nan, nan, nan, nan, 1, 1}},
        // Descending by the smallest step, a NaN abscissa, too few points: refused, slopes untouched.
        {{0x1p-149f, 0, 1}, {0, 1, 2}, QAL_ERR_ORDER, {u, u, u}}, {{0, 1, nan}, {0, 1, 2}, QAL_ERR_ORDER, {u, u, u}},
        {{0, 1}, {0, 1}, QAL_ERR_TOO_FEW_POINTS, {u, u}},
        // High entropy, from a reviewed run: guards the float steps and the double weights narrowed once.
        {{2.3875f, 4.46f, 6.2275f, 8.1825f, 10.6025f, 11.0875f}, {-1.484f, -0.116f, -1.276f, -1.992f, 1.544f, 0.372f},
         QAL_OK, {0x1.517934p+0f, -0x1.aca8bp-2f, -0x1.11d6dp-1f, -0x1.e9992ep-3f, 0x1.c0b60cp-3f, -0x1.16bd9cp+2f}},
    };
    for (const Row& r : rows) {
        F slopes(r.x.size(), u);
        EXPECT_EQ(r.status, QAL_AkimaSub(r.x.data(), r.y.data(), slopes.data(), static_cast<int>(r.x.size())));
        for (std::size_t i = 0; i < slopes.size(); ++i) EXPECT_TRUE(SameBits(r.slopes[i], slopes[i])) << &r - rows;
    }
}

// Refusals come before anything is allocated or read; a count whose work arrays pass a 32-bit byte size
// fails as that allocation would, without forming n + 4.
TEST(AkimaSub, RefusedArgumentsAndAllocationFailures) {
    const float x[] = {0, 1, 2};
    float s[] = {u, u, u};
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_AkimaSub(nullptr, x, s, 3));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_AkimaSub(x, nullptr, s, 3));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_AkimaSub(x, x, nullptr, 3));
    EXPECT_EQ(QAL_ERR_TOO_FEW_POINTS, QAL_AkimaSub(x, x, s, -1));
    for (int n : {INT_MAX, INT_MAX - 4}) EXPECT_EQ(QAL_ERR_MEMORY, QAL_AkimaSub(x, x, s, n));
    const auto call = [&] {
        const int status = QAL_AkimaSub(x, x, s, 3);
        EXPECT_TRUE(status == QAL_OK || (SameBits(u, s[0]) && SameBits(u, s[2])));
        s[0] = s[2] = u;
        return status;
    };
    EXPECT_EQ(3, ExpectEveryAllocationFailureHandled(call, QAL_ERR_MEMORY));
}

}  // namespace
}  // namespace qal::test
