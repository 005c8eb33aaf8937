#include <climits>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
constexpr float u = static_cast<float>(kUntouched), nan = static_cast<float>(kNaN);

// Refusals (too few points, a null array, descending or NaN abscissae, a count whose work arrays pass a 32-bit
// byte size) leave the slopes untouched; so does every failing allocation.
TEST(AkimaSub, SlopesZeroWidthsOrderAndRefusals) {
    struct Row { F x, y; int n, status; F slopes; };
    const Row rows[] = {
        {{0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, 5, QAL_OK, {0, 2, 4, 6, 8}}, {{0, 1, 2}, {0, 1, 0}, 3, QAL_OK, {2, 0, -2}},
        {{0, 1, 2, 3, 4}, {0, 1, 2, 5, 8}, 5, QAL_OK, {1, 1, 2, 3, 3}},  // at x = 1 one pair is equal, at 2 both
        // Zero width: 1000 for the segment and for the extension beside it; the smallest width still divides.
        {{0, 1, 1, 2}, {0, 1, 2, 3}, 4, QAL_OK, {500.5f, 500.5f, 500.5f, 500.5f}},
        {{0, 0x1p-149f, 1}, {0, 0x1p-149f, 1}, 3, QAL_OK, {1, 1, 1}},
        {{0, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, 2, 3, nan, 5, 6, 7, 8}, 9, QAL_OK, {1, 1, nan, nan, nan, nan, nan, 1, 1}},
        {{0x1p-149f, 0, 1}, {0, 1, 2}, 3, QAL_ERR_ORDER, F(3, u)}, {{0, 1, nan}, {0, 1, 2}, 3, QAL_ERR_ORDER, F(3, u)},
        {{0, 1}, {0, 1}, 2, QAL_ERR_TOO_FEW_POINTS, {u, u}}, {{0, 1, 2}, {}, 3, QAL_ERR_PARAMETER, {u, u, u}},
        {{0, 1, 2}, {0, 1, 2}, INT_MAX, QAL_ERR_MEMORY, {u, u, u}},
        // High entropy, from a reviewed run: guards the float steps and the double weights narrowed once.
        {{2.3875f, 4.46f, 6.2275f, 8.1825f, 10.6025f, 11.0875f}, {-1.484f, -0.116f, -1.276f, -1.992f, 1.544f, 0.372f},
         6, QAL_OK, {0x1.517934p+0f, -0x1.aca8bp-2f, -0x1.11d6dp-1f, -0x1.e9992ep-3f, 0x1.c0b60cp-3f, -0x1.16bd9cp+2f}},
    };
    for (const Row& r : rows) {
        F slopes(r.x.size(), u);
        EXPECT_EQ(r.status, QAL_AkimaSub(r.x.data(), r.y.empty() ? nullptr : r.y.data(), slopes.data(), r.n));
        for (std::size_t i = 0; i < slopes.size(); ++i) EXPECT_TRUE(SameBits(r.slopes[i], slopes[i])) << &r - rows;
    }
    F slopes(3, u);
    EXPECT_EQ(3, ExpectEveryAllocationFailureHandled([&] {
        slopes.assign(3, u);
        const int status = QAL_AkimaSub(rows[1].x.data(), rows[1].y.data(), slopes.data(), 3);
        return status == QAL_OK || slopes == F(3, u) ? status : -1;
    }, QAL_ERR_MEMORY));
}

}  // namespace
}  // namespace qal::test
