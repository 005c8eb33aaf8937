#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

template <class T>
struct FitRow { std::vector<T> x, y; T intercept, slope, atX, linX, atY, linY; };

// The fit, then the ordinate of the fitted line at atX and the abscissa where it reaches atY.
template <class T, std::size_t N>
void ExpectFits(const FitRow<T> (&rows)[N], void (*fit)(const T*, const T*, int, T*, T*),
                T (*linX)(T, const T*, const T*, int), T (*linY)(T, const T*, const T*, int)) {
    for (const FitRow<T>& r : rows) {
        T intercept = 0, slope = 0;
        fit(r.x.data(), r.y.data(), Count(r.x), &intercept, &slope);
        EXPECT_TRUE(SamePoint(r.intercept, r.slope, intercept, slope)) << "row " << &r - rows;
        EXPECT_TRUE(SamePoint(r.linX, r.linY, linX(r.atX, r.x.data(), r.y.data(), Count(r.x)),
                              linY(r.atY, r.x.data(), r.y.data(), Count(r.x)))) << "row " << &r - rows;
    }
}

TEST(LinFit, CentredTwoPassFitAndItsEvaluators) {
    const double above = 0x1.ef2d0f5da7ddap-84;  // the double after 1e-25
    const std::vector<double> x{0.31, 1.07, 1.93, 2.48, 3.62, 4.05}, y{2.9, 4.71, 6.02, 6.93, 7.31, 7.33};
    const FitRow<double> rows[] = {
        {{2, 2, 2}, {1, 2, 3}, kNaN, kNaN, 1, kNaN, 1, 0},  // equal abscissae: a NaN slope, which the inverse refuses
        {{0, 1}, {0, 1e-25}, 0, 1e-25, 2e-25, 0x1.dee7a4ad4b820p-166, 2e-25, 0},  // |slope| 1e-25 is not above it
        {{0, 1}, {0, above}, 0, above, 2e-25, 0x1.dee7a4ad4b821p-166, 2e-25, 0x1.fffffffffffffp+0},
        {x, y, 0x1.a6818edfecc48p+1, 0x1.24cd8a834cdddp+0, 2.8, 0x1.a0370ecbdf63ep+2, 2.8, -0x1.c0634b1d699a7p-2},
        {{5}, {1}, kNaN, kNaN, 1, 0, 1, 0}};  // fitted without a test, never evaluated
    ExpectFits(rows, QAL_LinFit, QAL_CalcLinX, QAL_CalcLinY);
    EXPECT_EQ(0.0, QAL_CalcLinX(1.0, nullptr, y.data(), 6) + QAL_CalcLinY(1.0, x.data(), nullptr, 6));
}

// The last two rows: each result differs from the double fit on the widened samples, narrowed at the end.
TEST(LinFitFloat, EveryStepInSinglePrecision) {
    const float below = 0x1.ef2d0ep-84f;  // the float before 1e-25f, which lies below 1e-25
    const FitRow<float> rows[] = {
        {{0, 1}, {0, 1e-25f}, 0, 1e-25f, 1, 1e-25f, 2e-25f, 2},  // the widened slope is above 1e-25
        {{0, 1}, {0, below}, 0, below, 1, below, 2e-25f, 0},
        {{0.06f, 7.99f, 3.13f}, {1.81f, 0.85f, 4.18f}, 0x1.75fd6ap+1f, -0x1.60b374p-3f,
         3.4f, 0x1.2b0a7ap+1f, 7, -0x1.7ae3a2p+4f},
        // t * t is rounded before it is added: the fused sum gives 0x1.775a14p+0f, 0x1.0e39aep+0f
        {{1.14f, 4.73f, 4.51f, 0.15f}, {0.23f, 4.87f, 8.45f, 3.43f}, 0x1.775a18p+0f, 0x1.0e39acp+0f,
         1, 0x1.42c9e2p+1f, 1, -0x1.c446ap-2f}};
    ExpectFits(rows, QAL_LinFitFloat, QAL_CalcLinXFloat, QAL_CalcLinYFloat);
}

TEST(StraightLineIntersection, ComparisonsInDoubleArithmeticInFloat) {
    const float gapBelow = 1e-8f, gapAbove = 0x1.5798f0p-27f;      // the floats around the double 1e-8
    const float limitBelow = 1e23f, limitAbove = 0x1.52d02ep+76f;  // the floats around 1e25 / 100
    const float none = 1e25f, nan = static_cast<float>(kNaN), u = static_cast<float>(kUntouched);
    struct Row { float i1, s1, i2, s2; int result; float first, second; };
    const Row rows[] = {
        {0, -1e-16f, 0, gapBelow, QAL_ERR_OUT_OF_RANGE, none, none},  // the float gap: gapBelow again, not 1e-8 + 1e-16
        {0, 0, 0, gapAbove, QAL_OK, 0, 0}, {0, limitBelow, 0, 0, QAL_OK, -0.0f, 0},
        {0, 0, 0, -limitAbove, QAL_ERR_OUT_OF_RANGE, none, none}, {1, nan, 0, 2, QAL_OK, nan, u},
        // no magnitude: far below -1e25 still takes the first line (the second's: -0x1.aa3b04p+84f)
        {-0x1.50aa6ap+78f, 1.5f, -0x1.232ae6p+83f, 1, QAL_OK, -0x1.18a592p+84f, -0x1.aa3b06p+84f},
        // x * slope1 is above 1e25 but its float 1e25f is below: the first line (the second's: ...704p+83f)
        {1.5e24f, 0x1.000018p+0f, 0x1.5eb96ap+84f, -1.5f, QAL_OK, 0x1.08b28ap+83f, 0x1.306708p+83f},
        // x * slope1 reaches 1e25: the second line, for a product of 1e25f (below 1e25) and one far below
        {0, 4, 3e25f, 1, QAL_OK, 1e25f, 4e25f}, {0, 1, 4e25f, -1, QAL_OK, 2e25f, 2e25f}};
    ExpectRows(rows, [](const Row& r, float* x, float* y) {
        return QAL_StraightLineIntersection(x, y, r.i1, r.s1, r.i2, r.s2);
    });
    float out = u;
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_StraightLineIntersection(&out, nullptr, 1, 2, 4, -1));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_StraightLineIntersection(nullptr, &out, 1, 2, 4, -1));
    EXPECT_TRUE(SameBits(u, out));
}

}  // namespace
}  // namespace qal::test
