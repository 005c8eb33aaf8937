#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr int kOk = QAL_OK, kBad = QAL_ERR_PARAMETER, kMem = QAL_ERR_MEMORY, kFew = QAL_ERR_TOO_FEW_POINTS;
constexpr std::size_t Index(int i) { return static_cast<std::size_t>(i); }
constexpr int kAverage = QAL_FILTER_AVERAGE, kTriangle = QAL_FILTER_TRIANGLE, kGolay = QAL_FILTER_SAVITZKY_GOLAY;

// Direct calls. Refusals leave coef untouched (the filters' table has the rest); an even width writes the triangle's middle pair twice and leaves kind 20's
// last weight 0.0; other positive kinds average whatever the degree.
TEST(SetFilterCoefficients, KindsEvenWidthsAndRefusals) {
    const double u = kUntouched, third = 1 / 3.0;
    struct Row { int kind, width, degree, status; V coef; };
    const Row rows[] = {
        {12, 3, 7, kOk, {third, third, third}}, {kTriangle, 4, 0, kOk, {1 / 8.0, 3 / 8.0, 3 / 8.0, 1 / 8.0}},
        {kTriangle, 6, 0, kOk, {1 / 14.0, 2 / 14.0, 4 / 14.0, 4 / 14.0, 2 / 14.0, 1 / 14.0}},
        {kGolay, 6, 2, kOk, {-3 / 35.0, 12 / 35.0, 17 / 35.0, 12 / 35.0, -3 / 35.0, 0}},
        {0, 2, 2, kMem, {u, u}}, {-5, 3, 2, kBad, {u, u, u}}, {kGolay, 6, 6, kBad, V(6, u)},
    };
    for (const Row& r : rows) {
        V coef(r.coef.size(), u);
        EXPECT_EQ(r.status, QAL_SetFilterCoefficients(coef.data(), r.kind, r.width, r.degree)) << "row " << &r - rows;
        for (std::size_t k = 0; k < coef.size(); ++k) EXPECT_NEAR(r.coef[k], coef[k], 1e-15) << "row " << &r - rows;
    }
    EXPECT_EQ(kMem, QAL_SetFilterCoefficients(nullptr, 0, 3, 2));
    V wide(10000, u);  // beyond the 9999 elements that QAL_Normalize sums: filled, not divided
    EXPECT_EQ(QAL_ERR_ZERO_DIVISION, QAL_SetFilterCoefficients(wide.data(), kAverage, 10000, 2));
    EXPECT_TRUE(SameBits(1.0, wide.front()) && SameBits(1.0, wide.back()));
}

// The first failing test decides: null array, count, range (after clamping into 0..n-1), width, parity,
// then the weights. Only out[from..to] may change.
template <class T>
void ExpectArgumentOrder(int (*filter)(const T*, T*, int, int, int, int, int, int), int widest) {
    struct Row { bool nullIn, nullOut; int n, first, last, kind, width, degree, status, from, to; };
    const Row rows[] = {
        {true, false, 1, 0, 0, kAverage, 3, 2, kMem, 1, 0}, {false, true, 10, 0, 9, 0, 2, 2, kMem, 1, 0},
        {false, false, 1, 5, 2, 0, 2, 2, kFew, 1, 0}, {false, false, 10, 5, 2, kAverage, 3, 2, kBad, 1, 0},
        {false, false, 10, 0, 9, kAverage, widest + 2, 2, kBad, 1, 0},
        {false, false, 10, 0, 9, kAverage, widest + 1, 2, kBad, 1, 0}, {false, false, 10, 0, 9, 1, 4, 2, kBad, 1, 0},
        {false, false, 10, 0, 9, kAverage, 1, 2, kBad, 1, 0}, {false, false, 10, 0, 9, 0, 3, 2, kBad, 1, 0},
        {false, false, 10, 0, 9, kGolay, 5, 3, kBad, 1, 0}, {false, false, 10, 0, 9, kGolay, 3, 4, kBad, 1, 0},
        {false, false, 10, 5, 1000, kGolay, 5, 2, kOk, 5, 9}, {false, false, 10, 100, 200, kTriangle, 3, 2, kOk, 9, 9},
        {false, false, 10, -3, -1, 21, 3, 2, kOk, 0, 0},
        {false, false, 2, 0, 1, kAverage, widest, 2, kOk, 0, 1},  // all taps but two missing
    };
    const T in[10] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    for (const Row& r : rows) {
        T out[10];
        std::fill(out, out + 10, static_cast<T>(kUntouched));
        EXPECT_EQ(r.status, filter(r.nullIn ? nullptr : in, r.nullOut ? nullptr : out, r.n, r.first, r.last, r.kind,
                                   r.width, r.degree)) << "row " << &r - rows;
        for (int i = 0; i < 10; ++i) EXPECT_EQ(i < r.from || i > r.to, out[i] == static_cast<T>(kUntouched)) << i;
    }
}

TEST(FilterArray, ArgumentOrderAndClampedRange) { ExpectArgumentOrder<double>(QAL_FilterArray, 299); }
TEST(FilterFloatArray, ArgumentOrderAndClampedRange) { ExpectArgumentOrder<float>(QAL_FilterFloatArray, 99); }

// Reviewed run. The ends guard the missing weight and its division, sample 5 the tap order (centre, then by
// distance the left tap before the right); the float twin sums in double and rounds once.
TEST(FilterArray, SampleStepOrder) {
    const double in[] = {2.385, -1.25, 0.7, 3.14159, -0.001, 5.5, 1.0 / 3.0, -2.2, 0.125, 9.75};
    double out[10], other[10];
    ASSERT_EQ(kOk, QAL_FilterArray(in, out, 10, 0, 9, kGolay, 7, 2));
    ASSERT_EQ(kOk, QAL_FilterArray(in, other, 10, 0, 9, kTriangle, 5, 2));
    EXPECT_TRUE(SamePoint(0x1.6e942e7bd6f23p-2, 0x1.eb2e6a76965f7p-1, out[0], out[1]));
    EXPECT_TRUE(SamePoint(0x1.fbf64f5e682ddp+0, 0x1.1a35a35a35a36p+2, out[5], out[9]));
    EXPECT_TRUE(SamePoint(0x1.c8f5c28f5c28dp-1, 0x1.0182de643d5f8p+1, other[0], other[5]));
    float in32[10], out32[10];
    std::transform(in, in + 10, in32, [](double v) { return static_cast<float>(v); });
    ASSERT_EQ(kOk, QAL_FilterFloatArray(in32, out32, 10, 0, 9, kGolay, 7, 2));
    EXPECT_TRUE(SamePoint(0x1.6e942cp-2f, 0x1.fbf65p+0f, out32[0], out32[5]));
}

// Symmetric weights that sum to 1 keep a line inside and a constant everywhere. At the ends the missing taps
// are dropped, not extrapolated: at width 5, degree 2 the ramp 0, 1, 2, ... gives 3/13 and 16/19 first.
TEST(FilterArray, RampInteriorAndConstantEnds) {
    const int n = 40, filters[][3] = {{kAverage, 5, 0}, {kTriangle, 9, 0}, {kGolay, 5, 2}, {kGolay, 25, 6}};
    V ramp(n), level(n, 2.385), out(n);
    for (int i = 0; i < n; ++i) ramp[Index(i)] = 0.75 * i - 4.0;
    for (const auto& [kind, width, degree] : filters) {
        ASSERT_EQ(kOk, QAL_FilterArray(level.data(), out.data(), n, 0, n - 1, kind, width, degree));
        for (double o : out) EXPECT_NEAR(2.385, o, 1e-14) << width;
        ASSERT_EQ(kOk, QAL_FilterArray(ramp.data(), out.data(), n, 0, n - 1, kind, width, degree));
        for (int i = width / 2; i < n - width / 2; ++i) EXPECT_NEAR(0.75 * i - 4.0, out[Index(i)], 1e-12) << width;
    }
    ASSERT_EQ(kOk, QAL_FilterArray(ramp.data(), out.data(), n, 0, n - 1, kGolay, 5, 2));
    EXPECT_TRUE(std::fabs(out[0] - (-4.0 + 0.75 * 3 / 13)) < 1e-14 && std::fabs(out[1] - (-4.0 + 0.75 * 16 / 19)) < 1e-14);
}

// In place each result is stored before the next sample is read: sample 2's left tap reads 2.25, not 2.
TEST(FilterArray, InPlaceLeftTapsReadFilteredValues) {
    V separate{1, 2, 4, 8}, inPlace = separate;
    ASSERT_EQ(kOk, QAL_FilterArray(V{1, 2, 4, 8}.data(), separate.data(), 4, 1, 2, kTriangle, 3, 0));
    ASSERT_EQ(kOk, QAL_FilterArray(inPlace.data(), inPlace.data(), 4, 1, 2, kTriangle, 3, 0));
    EXPECT_EQ((V{1, 2.25, 4.5, 8}), separate);
    EXPECT_EQ((V{1, 2.25, 4.5625, 8}), inPlace);
}

// One row per family: every failing allocation gives QAL_ERR_MEMORY, the output untouched, nothing leaked.
TEST(Smoothing, EveryAllocationFailureGivesMemoryWithOutputUntouched) {
    const V in{3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5};
    V out(in.size());
    const std::function<int()> calls[] = {
        [&] { return QAL_SavitzkyGolayCoeffizient(out.data(), Count(out), 5, 5, 1, 4); },
        [&] { return QAL_FilterArray(in.data(), out.data(), Count(in), 0, 10, kGolay, 7, 4); }};
    for (const auto& call : calls) {
        ExpectEveryAllocationFailureHandled([&] {
            std::fill(out.begin(), out.end(), kUntouched);
            const int status = call();
            EXPECT_TRUE(status == kOk || out == V(in.size(), kUntouched));
            return status;
        }, kMem);
    }
}

}  // namespace
}  // namespace qal::test
