#include <algorithm>
#include <climits>

#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
constexpr float kU = static_cast<float>(kUntouched);

bool SameArray(const F& e, const F& a) { return std::equal(e.begin(), e.end(), a.begin(), SameBits<float>); }

// The hexfloat rows are float throughout for QAL_Kruemmung (in double, narrowed once, 4 of its 8 elements differ
// in the last bit) and float differences with double slopes for QAL_Kruemmung2 (float slopes change elements 0
// and 3, double differences elements 3 and 4).
TEST(Kruemmung, DifferencesTwiceAndSlopeJumps) {
    struct Row { F x, y, first, second; };
    const Row rows[] = {
        {{0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, {1, 2, 4, 6, 7}, {1, 1.5f, 2, 1.5f, 1}},
        {{0.37f, 1.9f, 2.21f, 4.05f}, {2.385f, -1.25f, 0.7f, 3.3f},
         {-0x1.301ac6p+1f, -0x1.d4de9ap-1f, 0x1.0ee23cp+1f, 0x1.69bd34p+0f},
         {0x1.e89812p-1f, 0x1.387e5ep+1f, 0x1.154a46p+0f, -0x1.875db4p-2f}}};
    for (const Row& r : rows) {
        F first(r.x.size(), kU), second(r.x.size(), kU);
        EXPECT_EQ(QAL_OK, QAL_Kruemmung(r.x.data(), r.y.data(), first.data(), second.data(), Count(r.x)));
        EXPECT_TRUE(SameArray(r.first, first) && SameArray(r.second, second)) << &r - rows;
    }
    const F x{0, 1, 2, 3, 4, 5}, kink{0, 1, 2, 3, 5, 7};
    struct Row2 { F x, y; int n, gap, chord; F result; };
    const Row2 rows2[] = {  // half = 3 / 2 = 1; the chords shrink at the ends; no index overflows
        {x, kink, 6, 3, 1, {0, 0, 1, 1, 1, 0}}, {x, kink, 6, INT_MAX, INT_MAX, {1, 1, 1, 1, 1, 1}},
        {x, kink, 0, 0, 1, F(6, kU)},
        {{0.37f, 1.9f, 2.21f, 4.05f, 4.4f, 6.95f}, {2.385f, -1.25f, 0.7f, 3.3f, 1e-3f, 8.25f}, 6, 1, 2,
         {0x1.75c63ep+0f, 0x1.1f7e8p+2f, 0x1.31734cp-1f, -0x1.a3352p-2f, 0x1.c6ec1ap+1f, 0x1.872b5ep+0f}}};
    for (const Row2& r : rows2) {
        F result(6, kU);
        EXPECT_EQ(QAL_OK, QAL_Kruemmung2(r.x.data(), r.y.data(), result.data(), r.n, r.gap, r.chord));
        EXPECT_TRUE(SameArray(r.result, result)) << &r - rows2;
    }
}

}  // namespace
}  // namespace qal::test
