#include <climits>

#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
constexpr float kU = static_cast<float>(kUntouched), kInfF = static_cast<float>(kInf);

bool SameArray(const F& expected, const F& actual) {
    for (std::size_t i = 0; i < expected.size(); ++i) if (!SameBits(expected[i], actual[i])) return false;
    return true;
}

TEST(Kruemmung, FloatDifferencesTwice) {
    struct Row { F x, y, first, second; };
    const Row rows[] = {
        {{0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, {1, 2, 4, 6, 7}, {1, 1.5f, 2, 1.5f, 1}},
        {{0, 0, 1}, {0, 1, 3}, {kInfF, 3, 2}, {-kInfF, -kInfF, -1}}, {{4}, {1}, {kU}, {kU}},
        // float throughout; in double, narrowed once, 4 of these 8 differ in the last bit
        {{0.37f, 1.9f, 2.21f, 4.05f}, {2.385f, -1.25f, 0.7f, 3.3f},
         {-0x1.301ac6p+1f, -0x1.d4de9ap-1f, 0x1.0ee23cp+1f, 0x1.69bd34p+0f},
         {0x1.e89812p-1f, 0x1.387e5ep+1f, 0x1.154a46p+0f, -0x1.875db4p-2f}}};
    for (const Row& r : rows) {
        F first(r.x.size(), kU), second(r.x.size(), kU);
        EXPECT_EQ(QAL_OK, QAL_Kruemmung(r.x.data(), r.y.data(), first.data(), second.data(), Count(r.x)));
        EXPECT_TRUE(SameArray(r.first, first) && SameArray(r.second, second)) << &r - rows;
    }
}

TEST(Kruemmung2, SlopeJumpAcrossEachPoint) {
    const F x{0, 1, 2, 3, 4, 5}, kink{0, 1, 2, 3, 5, 7}, untouched(6, kU);
    struct Row { F x, y; int n, gap, chord; F result; };
    const Row rows[] = {  // half = gap / 2 toward zero; the chords shrink at the ends; no index overflows
        {x, kink, 6, 0, 1, {0, 0, 0, 1, 0, 0}}, {x, kink, 6, -1, 1, {0, 0, 0, 1, 0, 0}},
        {x, kink, 6, 3, 1, {0, 0, 1, 1, 1, 0}}, {x, kink, 6, INT_MAX, INT_MAX, {1, 1, 1, 1, 1, 1}},
        {x, kink, 0, 0, 1, untouched}, {x, kink, 1, 0, 1, untouched}, {x, kink, 6, -2, 1, untouched},
        // float differences, double slopes, narrowed once: float slopes change elements 0 and 3, double
        // differences elements 3 and 4
        {{0.37f, 1.9f, 2.21f, 4.05f, 4.4f, 6.95f}, {2.385f, -1.25f, 0.7f, 3.3f, 1e-3f, 8.25f}, 6, 1, 2,
         {0x1.75c63ep+0f, 0x1.1f7e8p+2f, 0x1.31734cp-1f, -0x1.a3352p-2f, 0x1.c6ec1ap+1f, 0x1.872b5ep+0f}}};
    for (const Row& r : rows) {
        F result = untouched;
        EXPECT_EQ(QAL_OK, QAL_Kruemmung2(r.x.data(), r.y.data(), result.data(), r.n, r.gap, r.chord));
        EXPECT_TRUE(SameArray(r.result, result)) << &r - rows;
    }
}

}  // namespace
}  // namespace qal::test
