#include <vector>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using F = std::vector<float>;

const V kX{0.31, 1.07, 1.93, 2.48, 3.62, 4.05}, kY{2.9, 4.71, 6.02, 6.93, 7.31, 7.33};
constexpr float kNaNf = std::numeric_limits<float>::quiet_NaN(), kUntouchedF = -123.25f, kNoValueF = 1e25f;

TEST(LinFit, CentredTwoPassFitAndItsEvaluators) {
    const double above = 0x1.ef2d0f5da7ddap-84;  // the double after 1e-25
    struct Row { V x, y; double intercept, slope, at, linX, linY; };
    const Row rows[] = {
        {{0, 2}, {1, 5}, 1, 2, 3, 7, 1}, {{0, 1}, {4, 4}, 4, 0, 4, 4, 0},  // a level line reaches no level
        {{2, 2, 2}, {1, 2, 3}, kNaN, kNaN, 1, kNaN, 0}, {{0, 1, 2}, {1, kNaN, 3}, kNaN, kNaN, 1, kNaN, 0},
        {{1e8, 1e8 + 1, 1e8 + 2}, {0, 1, 2}, -1e8, 1, 1e8, 0, 2e8},  // centred sums lose nothing here
        {{0, 1}, {0, 1e-25}, 0, 1e-25, 2e-25, 0x1.dee7a4ad4b820p-166, 0},  // |slope| 1e-25 is not above it
        {{0, 1}, {0, above}, 0, above, 2e-25, 0x1.dee7a4ad4b821p-166, 0x1.fffffffffffffp+0},
        {kX, kY, 0x1.a6818edfecc48p+1, 0x1.24cd8a834cdddp+0, 2.7, 0x1.98e51e889711ap+2, -0x1.0cf561624645cp-1},
        {{}, {}, kNaN, kNaN, 1, 0, 0}, {{5}, {1}, kNaN, kNaN, 1, 0, 0}};  // fitted without a test, never evaluated
    for (const Row& r : rows) {
        const int n = static_cast<int>(r.x.size());
        double intercept = 0.0, slope = 0.0;
        QAL_LinFit(r.x.data(), r.y.data(), n, &intercept, &slope);
        EXPECT_TRUE(SamePoint(r.intercept, r.slope, intercept, slope)) << r.at;
        EXPECT_TRUE(SamePoint(r.linX, r.linY, QAL_CalcLinX(r.at, r.x.data(), r.y.data(), n), QAL_CalcLinY(r.at, r.x.data(), r.y.data(), n)));
    }
    EXPECT_EQ(0.0, QAL_CalcLinX(1.0, nullptr, kY.data(), 6) + QAL_CalcLinY(1.0, kX.data(), nullptr, 6));
}

// Each result differs from the double fit on the widened samples, narrowed at the end.
TEST(LinFitFloat, EveryStepInSinglePrecision) {
    const F xf(kX.begin(), kX.end()), yf(kY.begin(), kY.end());
    const float below = 0x1.ef2d0ep-84f;  // the float before 1e-25f, which lies below 1e-25
    struct Row { F x, y; float intercept, slope, atX, linX, atY, linY; };
    const Row rows[] = {
        {xf, yf, 0x1.a6818ap+1f, 0x1.24cd8cp+0f, 3.3f, 0x1.c4d0bep+2f, 7.35f, 0x1.c5260ep+1f},
        {{0, 1}, {0, 1e-25f}, 0, 1e-25f, 1, 1e-25f, 2e-25f, 2},  // the widened slope is above 1e-25
        {{0, 1}, {0, below}, 0, below, 1, below, 2e-25f, 0}, {{2, 2}, {1, 3}, kNaNf, kNaNf, 1, kNaNf, 2, 0},
        {{5}, {1}, kNaNf, kNaNf, 1, 0, 1, 0}};
    for (const Row& r : rows) {
        const int n = static_cast<int>(r.x.size());
        float intercept = 0.0f, slope = 0.0f;
        QAL_LinFitFloat(r.x.data(), r.y.data(), n, &intercept, &slope);
        EXPECT_TRUE(SamePoint(r.intercept, r.slope, intercept, slope)) << r.atX;
        EXPECT_TRUE(SamePoint(r.linX, r.linY, QAL_CalcLinXFloat(r.atX, r.x.data(), r.y.data(), n),
                              QAL_CalcLinYFloat(r.atY, r.x.data(), r.y.data(), n))) << r.atX;
    }
    const V x(xf.begin(), xf.end()), y(yf.begin(), yf.end());
    double intercept = 0.0, slope = 0.0;
    QAL_LinFit(x.data(), y.data(), 6, &intercept, &slope);
    EXPECT_TRUE(SamePoint(0x1.a68190p+1f, 0x1.24cd8ap+0f, static_cast<float>(intercept), static_cast<float>(slope)));
    EXPECT_TRUE(SamePoint(0x1.c4d0c0p+2f, 0x1.c52610p+1f, static_cast<float>(QAL_CalcLinX(double{3.3f}, x.data(), y.data(), 6)),
                          static_cast<float>(QAL_CalcLinY(double{7.35f}, x.data(), y.data(), 6))));
    // The float fit with its last step in the other precision gives these same two values.
}

TEST(StraightLineIntersection, ComparisonsInDoubleArithmeticInFloat) {
    const float gapBelow = 1e-8f, gapAbove = 0x1.5798f0p-27f;      // the floats around the double 1e-8
    const float limitBelow = 1e23f, limitAbove = 0x1.52d02ep+76f;  // the floats around 1e25 / 100
    const float none = kNoValueF, u = kUntouchedF;
    struct Row { float i1, s1, i2, s2; int status; float x, y; };
    const Row rows[] = {
        {1, 2, 4, -1, QAL_OK, 1, 3}, {0, 0, 0, gapBelow, QAL_ERR_OUT_OF_RANGE, none, none}, {0, 0, 0, gapAbove, QAL_OK, 0, 0},
        {0, limitBelow, 0, 0, QAL_OK, -0.0f, 0}, {0, limitAbove, 0, 0, QAL_ERR_OUT_OF_RANGE, none, none},
        {0, 0, 0, -limitAbove, QAL_ERR_OUT_OF_RANGE, none, none}, {kNaNf, 1, 0, 2, QAL_OK, kNaNf, u}, {1, kNaNf, 0, 2, QAL_OK, kNaNf, u},
        // x * slope1 reaches 1e25: the second line's ordinate (the first's would be 0x1.05ac4ap+84f)
        {0x1.2261e0p+78f, 2.5f, 0x1.3da32ap+83f, 1, QAL_OK, 0x1.9b6ad0p+82f, 0x1.05ac48p+84f},
        // no magnitude: far below -1e25 still takes the first line (the second's: -0x1.aa3b04p+84f)
        {-0x1.50aa6ap+78f, 1.5f, -0x1.232ae6p+83f, 1, QAL_OK, -0x1.18a592p+84f, -0x1.aa3b06p+84f},
        {6e25f, 4, 0, 8, QAL_OK, 0x1.8d0bf4p+83f, u},  // both products reach 1e25
        {0, 1, -1e25f, 2, QAL_OK, 1e25f, 1e25f}, {0, 4, 3e25f, 1, QAL_OK, 1e25f, 4e25f},  // a product of 1e25f is below 1e25
        // float steps; the double computation narrowed would give 0x1.971396p-1f, -0x1.1865e6p+1f
        {1.26f, -4.34f, -4.87f, 3.37f, QAL_OK, 0x1.971398p-1f, -0x1.1865e8p+1f}};
    for (const Row& r : rows) {
        float x = u, y = u;
        EXPECT_EQ(r.status, QAL_StraightLineIntersection(&x, &y, r.i1, r.s1, r.i2, r.s2)) << r.s1 << " " << r.s2;
        EXPECT_TRUE(SamePoint(r.x, r.y, x, y)) << r.s1 << " " << r.s2;
    }
    float out = u;
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_StraightLineIntersection(&out, nullptr, 1, 2, 4, -1));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_StraightLineIntersection(nullptr, &out, 1, 2, 4, -1));
    EXPECT_TRUE(SameBits(u, out));
}

}  // namespace
}  // namespace qal::test
