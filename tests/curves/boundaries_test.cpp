#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
constexpr int kBad = QAL_ERR_PARAMETER;

TEST(CalcBoundaries, ModesPerCurveAndRefusedPasses) {
    const F base{50, -20, 2.385f}, spread{3, 0.5f, 1.75f}, u(3, static_cast<float>(kUntouched));
    struct Row { const float* spread; int n, upperMode; float upperValue; int lowerMode; float lowerValue; int status;
                 F upper, lower; };
    const Row rows[] = {
        {spread.data(), 3, 1, 2, 1, 2, QAL_OK, {56, -19, 0x1.78a3d8p+2f}, {44, -21, -0x1.1d70a4p+0f}},
        {nullptr, 3, 2, 10, 3, -1, QAL_OK, {55, -22, 0x1.4fcedap+1f}, {51, -19, 3.385f}},
        // A refused upper mode leaves upper and the lower pass still runs; a refused lower mode ends the call.
        {nullptr, 3, 1, 2, 3, 1, kBad, u, {49, -21, 1.385f}}, {nullptr, 3, 3, 1, 0, 1, kBad, {51, -19, 3.385f}, u},
        {nullptr, 3, 4, 1, 1, 2, kBad, u, u}, {spread.data(), 0, 3, 1, 3, 1, kBad, u, u},
        // float steps, the factor formed once: a double factor narrowed once, the whole in double, or
        // value / 100 * base + base per point each change some of these
        {nullptr, 3, 2, 13.4f, 2, 9, QAL_OK, {0x1.c5999cp+5f, -0x1.6ae148p+4f, 0x1.5a3002p+1f},
         {0x1.6cp+5f, -0x1.233332p+4f, 0x1.15ce06p+1f}}};
    for (const Row& r : rows) {
        F upper = u, lower = u;
        EXPECT_EQ(r.status, QAL_CalcBoundaries(base.data(), r.spread, lower.data(), upper.data(), r.n, r.upperMode,
                                               r.upperValue, r.lowerMode, r.lowerValue)) << &r - rows;
        EXPECT_TRUE(upper == r.upper && lower == r.lower) << &r - rows;
    }
    F out = u, shared{50, -20, 2.5f};
    // The upper pass ends before the lower one starts, so an upper written over the base feeds it.
    EXPECT_EQ(QAL_OK, QAL_CalcBoundaries(shared.data(), nullptr, out.data(), shared.data(), 3, 3, 1, 2, 50));
    EXPECT_TRUE(out == F({25.5f, -9.5f, 1.75f}));
}

}  // namespace
}  // namespace qal::test
