#include <algorithm>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using F = std::vector<float>;
constexpr int kOk = QAL_OK, kOut = QAL_ERR_OUT_OF_RANGE;
const V kLineX{1, 2, 3, 4, 5}, kLineY{10, 20, 30, 40, 50};
// Uneven data with a zero ordinate, which the log-log fits take as -30.
const V kX{0.31, 1.07, 1.93, 2.48, 3.62, 4.05, 5.2, 6.11}, kY{2.9, 4.71, 6.02, 6.93, 7.31, 7.33, 0.0, 9.8};

// Hexfloat values come from a separate step-by-step model of the routine in Python (IEEE
// double, same libm). The midpoint of the line data is 30, of the uneven data 6.35.
TEST(Interpol, OptionsLocationAndFallbacks) {
    struct Row { V x, y; double at; int option, status; double out; };
    const V lx = kLineX, ly = kLineY;
    const Row rows[] = {
        {lx, ly, 2.5, QAL_INTERPOL_LOCATED, kOk, 10}, {lx, ly, 3.5, 0, kOk, 40}, {lx, ly, 3.0, 0, kOk, 30},
        {lx, ly, kNaN, 0, kOk, 30}, {lx, ly, 2.5, QAL_INTERPOL_SPLINE, kOk, 25}, {lx, ly, 2.5, 15, kOk, 30},
        {lx, ly, 1.0, 0, kOut, 30}, {lx, ly, 5.0, 4, kOut, 30}, {lx, ly, 9.0, 2, kOut, 30},  // the midpoint stays
        {lx, ly, 2.5, QAL_INTERPOL_LOG_LINE, kOk, 0x1.9000000000002p+4},
        {lx, ly, 2.5, QAL_INTERPOL_LOG_SEGMENT, kOk, 0x1.8fffffffffffep+4},
        {{5, 4, 3, 2, 1}, {50, 40, 30, 20, 10}, 3.5, QAL_INTERPOL_SEGMENT, kOk, 35},  // descending, position 0
        {{0, 1, 2}, {4, 5, 9}, 1.5, QAL_INTERPOL_LOCAL_LINE, kOk, 9},                 // position n-1: no line
        {{3}, {7}, 100, 4, kOk, 7}, {{0, 0, 0}, {1, 2, 3}, 0, 0, kOut, 2},  // equal ends refuse every value
        {{0, 1, 1, 2}, {1, 2, 3, 4}, 1, QAL_INTERPOL_SEGMENT, kOk, kNaN},   // equal abscissae under a fit
        {{0, 1, 2, 2}, {1, 2, 3, 4}, kNaN, 4, QAL_ERR_ZERO_DIVISION, 3},    // NaN: last bracket, zero wide
        {{0, 1e-26, 1}, {1, 2, 3}, 5e-27, 4, QAL_ERR_ZERO_DIVISION, 1},
        {kX, kY, 2.2, QAL_INTERPOL_LINE, kOk, 0x1.50d0c2d7afadcp+2}, {kX, kY, 2.2, -1, kOk, 0x1.50d0c2d7afadcp+2},
        {kX, kY, 2.2, 16, kOk, 0x1.50d0c2d7afadcp+2}, {kX, kY, 4.5, 4, kOk, 0x1.0c96ec8538ba4p+2},
        {kX, kY, 2.2, 5, kOk, 0x1.9ddedc1120f44p+2}, {kX, kY, 2.2, 12, kOk, 0x1.32b2537f371a6p-10},
        {kX, kY, 2.2, 14, kOk, 0x1.9eab7cbf84becp+2},
        // option 6 at positions 3, 1, 6 and 5 (n-3): 6, 4, 2 and 4 points
        {kX, kY, 2.2, 6, kOk, 0x1.744b6d382d75ep+2}, {kX, kY, 1.5, 6, kOk, 0x1.410ddb6133357p+2},
        {kX, kY, 4.5, 6, kOk, -0x1.e276276276278p+2}, {kX, kY, 4.05, 6, kOk, 0x1.865a9dea25f03p+2}};
    for (const Row& r : rows) {
        double out = kUntouched;
        EXPECT_EQ(r.status, QAL_Interpol(&out, r.at, r.x.data(), r.y.data(), nullptr, Count(r.x), r.option))
            << "row " << &r - rows;
        EXPECT_TRUE(SameBits(r.out, out)) << "row " << &r - rows;
    }
}

TEST(Interpol, RefusalsAndWorkMemoryFailures) {
    V rising(10001);
    for (std::size_t i = 0; i < rising.size(); ++i) rising[i] = static_cast<double>(i);
    double out = kUntouched;
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_Interpol(&out, 1.5, nullptr, kLineY.data(), nullptr, 5, 0));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_Interpol(&out, 1.5, kLineX.data(), kLineY.data(), nullptr, 0, 0));
    EXPECT_TRUE(SameBits(kUntouched, out));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_Interpol(&out, 1.5, rising.data(), rising.data(), nullptr, 10001, 4));
    EXPECT_TRUE(SameBits(5000.0, out));  // the midpoint
    for (int option : {QAL_INTERPOL_SPLINE, QAL_INTERPOL_LOG_LINE, QAL_INTERPOL_LOG_SEGMENT}) {
        ExpectEveryAllocationFailureHandled([&] {
            out = kUntouched;
            const int status = QAL_Interpol(&out, 2.5, kLineX.data(), kLineY.data(), nullptr, 5, option);
            EXPECT_TRUE(status == kOk || SameBits(30.0, out)) << option;
            return status;
        }, QAL_ERR_MEMORY);
    }
    const F xf{1, 2, 3, 4}, yf{1, 3, 2, 5}, xNew{2.5f, 3.5f};
    ExpectEveryAllocationFailureHandled([&] {
        F yNew{-1, -1};
        const int status = QAL_InterpolFloatArrays(xf.data(), yf.data(), 4, xNew.data(), yNew.data(), 2, 4);
        EXPECT_TRUE(status == kOk || yNew == F({-1, -1}));
        return status;
    }, QAL_ERR_MEMORY);
}

// The resampler shares the curve's work among the points; each point must still get what its own call gives.
TEST(InterpolFloatArrays, EqualsOneInterpolCallPerPoint) {
    const float nan = static_cast<float>(kNaN);
    F longX(10001);
    for (std::size_t i = 0; i < longX.size(); ++i) longX[i] = 0.5f * static_cast<float>(i);
    const std::vector<F> curves[] = {
        {F(kX.begin(), kX.end()), F(kY.begin(), kY.end())}, {{6.11f, 5.2f, 4.05f, 3.62f, 2.48f}, {1, 3, 2, 5, 4}},
        {{0.31f, 1.07f, nan, 2.48f, 3.62f}, {2, 4, 1, 6, 5}}, {{0, 1, 1, 2, 2}, {1, 2, 3, 4, 5}},
        {{2}, {7}}, {{}, {}}, {longX, longX}};
    F xNew{0.31f, 2.2f, 6.11f, 1.0f, nan, 4.5f, 1.93f, -3.0f, 5.5f, 0.7f, 3.62f, 9.0f, 1.5f};
    for (int pass = 0; pass < 2; ++pass, std::reverse(xNew.begin(), xNew.end())) {
        for (const auto& c : curves) {
            const V x(c[0].begin(), c[0].end()), y(c[1].begin(), c[1].end());
            for (int option = -1; option <= 16; ++option) {
                F batch(xNew.size(), -1.0f), each = batch;
                int expected = kOk;
                for (std::size_t i = 0; i < xNew.size(); ++i) {
                    double out = 0.0;
                    expected = QAL_Interpol(&out, xNew[i], x.data(), y.data(), nullptr, Count(x), option);
                    if (expected == kOk) each[i] = static_cast<float>(out);
                }
                EXPECT_EQ(expected, QAL_InterpolFloatArrays(c[0].data(), c[1].data(), Count(x), xNew.data(),
                                                            batch.data(), Count(xNew), option));
                for (std::size_t i = 0; i < xNew.size(); ++i) EXPECT_TRUE(SameBits(each[i], batch[i])) << option;
            }
        }
    }
    float untouched = -1.0f;
    EXPECT_EQ(kOk, QAL_InterpolFloatArrays(nullptr, nullptr, 0, nullptr, &untouched, 0, 2));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_InterpolFloatArrays(nullptr, nullptr, 3, xNew.data(), &untouched, 1, 2));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_InterpolFloatArrays(xNew.data(), xNew.data(), -1, xNew.data(), &untouched, 1, 2));
    EXPECT_EQ(-1.0f, untouched);
}

// 3 > 2 counts; the NaN and a value on a limit are inside; the third, beyond both limits, counts once.
TEST(CheckInOutArrays, StrictLimitsCountedOnce) {
    const F values{1, 2, 3, static_cast<float>(kNaN), -1}, lower{0, 0, 4, 0, -1}, upper{2, 2, 2, 2, 2};
    int counts[4] = {-1, -1, -1, -1};
    EXPECT_EQ(kOk, QAL_CheckInOutArrays(values.data(), nullptr, upper.data(), 5, &counts[0]));
    EXPECT_EQ(kOk, QAL_CheckInOutArrays(values.data(), lower.data(), upper.data(), 5, &counts[1]));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_CheckInOutArrays(values.data(), lower.data(), nullptr, 5, &counts[2]));
    EXPECT_EQ(QAL_ERR_PARAMETER, QAL_CheckInOutArrays(values.data(), lower.data(), upper.data(), 0, &counts[3]));
    EXPECT_TRUE(counts[0] == 1 && counts[1] == 1 && counts[2] == -1 && counts[3] == -1);
}

}  // namespace
}  // namespace qal::test
