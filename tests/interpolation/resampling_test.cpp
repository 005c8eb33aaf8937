#include <numeric>
#include <vector>

#include "qal/qal.h"
#include "support/allocation_faults.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
using F = std::vector<float>;
constexpr int kOk = QAL_OK, kOut = QAL_ERR_OUT_OF_RANGE, kBad = QAL_ERR_PARAMETER;
// Uneven data with a zero ordinate, which the log-log fits take as -30.
const V kX{0.31, 1.07, 1.93, 2.48, 3.62, 4.05, 5.2, 6.11}, kY{2.9, 4.71, 6.02, 6.93, 7.31, 7.33, 0.0, 9.8};

// Hexfloat values come from a separate step-by-step model of the routine in Python (IEEE double, same libm).
// The midpoint of the line data is 30; a refusal leaves it, n = 1 answers y[0] whatever the option.
TEST(Interpol, OptionsLocationAndFallbacks) {
    struct Row { V x, y; double at; int option, status; double out; };
    const V lx{1, 2, 3, 4, 5}, ly{10, 20, 30, 40, 50};
    V rising(10001);
    std::iota(rising.begin(), rising.end(), 0.0);
    const Row rows[] = {
        {lx, ly, 2.5, QAL_INTERPOL_LOCATED, kOk, 10}, {lx, ly, 2.5, 15, kOk, 30}, {lx, ly, 5.0, 4, kOut, 30},
        {{3}, {7}, 100, 4, kOk, 7}, {{}, {}, 1, 2, kBad, kUntouched}, {rising, rising, 1.5, 4, kBad, 5000},
        {{0, 1, 2}, {4, 5, 9}, 1.5, QAL_INTERPOL_LOCAL_LINE, kOk, 9},     // position n-1: no line
        {{0, 1, 2, 2}, {1, 2, 3, 4}, kNaN, 4, QAL_ERR_ZERO_DIVISION, 3},  // NaN: last bracket, zero wide
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

// The resampler shares the curve's work among the points; each point must still get what its own call gives, and
// the call the status of its last point. Every failing allocation (four arrays, then the work of options 4, 12 and
// 14) gives QAL_ERR_MEMORY with nothing written.
TEST(InterpolFloatArrays, EqualsOneInterpolCallPerPoint) {
    const float nan = static_cast<float>(kNaN);
    const std::vector<F> curves[] = {{F(kX.begin(), kX.end()), F(kY.begin(), kY.end())},
        {{6.11f, 5.2f, 4.05f, 3.62f, 2.48f}, {1, 3, 2, 5, 4}}, {{0.31f, 1.07f, nan, 2.48f, 3.62f}, {2, 4, 1, 6, 5}},
        {{0, 1, 1, 2, 2}, {1, 2, 3, 4, 5}}, {{}, {}}};
    const F xNew{0.31f, 2.2f, 6.11f, 1.0f, nan, 4.5f, 1.93f, -3.0f, 5.5f, 0.7f, 3.62f, 9.0f, 1.5f};
    for (const auto& c : curves) {
        const V x(c[0].begin(), c[0].end()), y(c[1].begin(), c[1].end());
        for (int option = -1; option <= 16; ++option) {
            F batch(xNew.size(), -1.0f);
            const int last = QAL_InterpolFloatArrays(c[0].data(), c[1].data(), Count(x), xNew.data(), batch.data(),
                                                     Count(xNew), option);
            for (std::size_t i = 0; i < xNew.size(); ++i) {
                double out = 0.0;
                const int status =
                    QAL_Interpol(&out, static_cast<double>(xNew[i]), x.data(), y.data(), nullptr, Count(x), option);
                EXPECT_TRUE(SameBits(status == kOk ? static_cast<float>(out) : -1.0f, batch[i])) << option;
                if (i + 1 == xNew.size()) { EXPECT_EQ(status, last) << option; }
            }
        }
    }
    float yNew = -1;  // no point, no status but QAL_OK; a negative count fails its allocation
    EXPECT_EQ(kOk, QAL_InterpolFloatArrays(nullptr, nullptr, 0, nullptr, nullptr, 0, 2));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_InterpolFloatArrays(&yNew, &yNew, -1, &yNew, &yNew, 1, 2));
    for (int option : {QAL_INTERPOL_SPLINE, QAL_INTERPOL_LOG_LINE, QAL_INTERPOL_LOG_SEGMENT}) {
        ExpectEveryAllocationFailureHandled([&] {
            yNew = -1;
            const int status = QAL_InterpolFloatArrays(curves[0][0].data(), curves[0][1].data(), 8, &xNew[1], &yNew,
                                                       1, option);
            return status == kOk || yNew == -1 ? status : -1;
        }, QAL_ERR_MEMORY);
    }
}

// 3 > 2 counts; the NaN and a value on a limit are inside; the third, beyond both limits, counts once.
TEST(CheckInOutArrays, StrictLimitsCountedOnce) {
    const F values{1, 2, 3, static_cast<float>(kNaN), -1}, lower{0, 0, 4, 0, -1}, upper{2, 2, 2, 2, 2};
    int counts[3] = {-1, -1, -1};
    EXPECT_EQ(kOk, QAL_CheckInOutArrays(values.data(), nullptr, upper.data(), 5, &counts[0]));
    EXPECT_EQ(kOk, QAL_CheckInOutArrays(values.data(), lower.data(), upper.data(), 5, &counts[1]));
    EXPECT_EQ(kBad, QAL_CheckInOutArrays(values.data(), lower.data(), upper.data(), 0, &counts[2]));
    EXPECT_TRUE(counts[0] == 1 && counts[1] == 1 && counts[2] == -1);
}

}  // namespace
}  // namespace qal::test
