#include <algorithm>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kOk = QAL_OK, kBad = QAL_ERR_PARAMETER, kMem = QAL_ERR_MEMORY, kFew = QAL_ERR_TOO_FEW_POINTS;
constexpr int kAverage = QAL_FILTER_AVERAGE, kTriangle = QAL_FILTER_TRIANGLE, kGolay = QAL_FILTER_SAVITZKY_GOLAY;

// The first failing test decides: null array, count, range (after clamping into 0..n-1), width, parity, then the
// weights. Only out[from..to] may change. The float filter shares these tests with its own widest width, 99.
// Direct calls of the weights: other positive kinds average whatever the degree, an even width writes the
// triangle's middle pair twice, a short or null array is refused before the kind, and beyond the 9999 elements
// that QAL_Normalize sums the weights are filled but not divided.
TEST(FilterArray, ArgumentOrderClampedRangeAndWeights) {
    struct Row { bool nullIn; int n, first, last, kind, width, degree, status, from, to; };
    const Row rows[] = {
        {true, 1, 0, 0, kAverage, 3, 2, kMem, 1, 0}, {false, 1, 5, 2, 0, 2, 2, kFew, 1, 0},
        {false, 10, 5, 2, kAverage, 3, 2, kBad, 1, 0}, {false, 10, 0, 9, kAverage, 301, 2, kBad, 1, 0},
        {false, 10, 0, 9, 1, 4, 2, kBad, 1, 0}, {false, 10, 0, 9, kAverage, 1, 2, kBad, 1, 0},
        {false, 10, 0, 9, 0, 3, 2, kBad, 1, 0}, {false, 10, 0, 9, kGolay, 5, 3, kBad, 1, 0},
        {false, 10, 0, 9, kGolay, 3, 4, kBad, 1, 0}, {false, 10, 100, 200, kTriangle, 3, 2, kOk, 9, 9},
        {false, 10, -3, -1, 21, 3, 2, kOk, 0, 0}, {false, 2, 0, 1, kAverage, 299, 2, kOk, 0, 1}};
    const double in[10] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    for (const Row& r : rows) {
        double out[10];
        std::fill(out, out + 10, kUntouched);
        EXPECT_EQ(r.status, QAL_FilterArray(r.nullIn ? nullptr : in, out, r.n, r.first, r.last, r.kind, r.width,
                                            r.degree)) << "row " << &r - rows;
        for (int i = 0; i < 10; ++i) EXPECT_EQ(i < r.from || i > r.to, out[i] == kUntouched) << i;
    }
    float in32[3] = {1, 2, 3}, out32[3];
    EXPECT_EQ(kOk, QAL_FilterFloatArray(in32, out32, 3, 0, 2, kAverage, 99, 0));
    EXPECT_EQ(kBad, QAL_FilterFloatArray(in32, out32, 3, 0, 2, kAverage, 101, 0));
    V coef(4, kUntouched), wide(10000, kUntouched);
    EXPECT_EQ(kMem, QAL_SetFilterCoefficients(nullptr, 0, 3, 2));
    EXPECT_TRUE(QAL_SetFilterCoefficients(coef.data(), 0, 2, 2) == kMem && coef[0] == kUntouched);
    EXPECT_TRUE(QAL_SetFilterCoefficients(coef.data(), 12, 3, 7) == kOk && coef[0] == 1 / 3.0 && coef[2] == 1 / 3.0);
    EXPECT_EQ(kOk, QAL_SetFilterCoefficients(coef.data(), kTriangle, 4, 0));
    EXPECT_EQ(V({0.125, 0.375, 0.375, 0.125}), coef);
    EXPECT_EQ(QAL_ERR_ZERO_DIVISION, QAL_SetFilterCoefficients(wide.data(), kAverage, 10000, 2));
    EXPECT_TRUE(wide.front() == 1.0 && wide.back() == 1.0);
}

// Reviewed run: the ends guard the missing weight and its division, sample 5 the tap order (centre, then by
// distance the left tap before the right); the float twin sums in double and rounds once. Symmetric weights that
// sum to 1 keep a ramp inside and a constant everywhere; at the ends the missing taps are dropped, not
// extrapolated (3/13 and 16/19 of a step). In place each result is stored before the next sample is read:
// sample 2's left tap reads 2.25, not 2. Every failing allocation leaves out untouched.
TEST(FilterArray, SampleStepEndsAndInPlace) {
    const double in[] = {2.385, -1.25, 0.7, 3.14159, -0.001, 5.5, 1.0 / 3.0, -2.2, 0.125, 9.75};
    double out[10];
    float in32[10], out32[10];
    std::transform(in, in + 10, in32, [](double v) { return static_cast<float>(v); });
    ASSERT_EQ(kOk, QAL_FilterArray(in, out, 10, 0, 9, kGolay, 7, 2));
    ASSERT_EQ(kOk, QAL_FilterFloatArray(in32, out32, 10, 0, 9, kGolay, 7, 2));
    EXPECT_TRUE(SamePoint(0x1.6e942e7bd6f23p-2, 0x1.fbf64f5e682ddp+0, out[0], out[5]));
    EXPECT_TRUE(SamePoint(0x1.6e942cp-2f, 0x1.fbf65p+0f, out32[0], out32[5]) && SameBits(0x1.1a35a35a35a36p+2, out[9]));
    V ramp(40), level(40, 2.385), smooth(40);
    for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = 0.75 * static_cast<double>(i) - 4.0;
    ASSERT_EQ(kOk, QAL_FilterArray(level.data(), smooth.data(), 40, 0, 39, kGolay, 25, 6));
    for (double s : smooth) EXPECT_NEAR(2.385, s, 1e-14);
    ASSERT_EQ(kOk, QAL_FilterArray(ramp.data(), smooth.data(), 40, 0, 39, kGolay, 5, 2));
    for (std::size_t i = 2; i < 38; ++i) EXPECT_NEAR(ramp[i], smooth[i], 1e-14) << i;
    EXPECT_NEAR(-4.0 + 0.75 * 3 / 13, smooth[0], 1e-14);
    EXPECT_NEAR(-4.0 + 0.75 * 16 / 19, smooth[1], 1e-14);
    V separate{1, 2, 4, 8}, inPlace = separate;
    ASSERT_EQ(kOk, QAL_FilterArray(V{1, 2, 4, 8}.data(), separate.data(), 4, 1, 2, kTriangle, 3, 0));
    ASSERT_EQ(kOk, QAL_FilterArray(inPlace.data(), inPlace.data(), 4, 1, 2, kTriangle, 3, 0));
    EXPECT_TRUE(separate == V({1, 2.25, 4.5, 8}) && inPlace == V({1, 2.25, 4.5625, 8}));
    ExpectEveryAllocationFailureHandled([&] {
        std::fill(out, out + 10, kUntouched);
        const int status = QAL_FilterArray(in, out, 10, 0, 9, kGolay, 7, 4);
        return status == kOk || std::count(out, out + 10, kUntouched) == 10 ? status : -1;
    }, kMem);
}

}  // namespace
}  // namespace qal::test
