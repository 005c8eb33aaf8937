#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN;
using qal::test::SameBits;
using qal::test::kUntouched;

constexpr int kKindUntouched = -7;

struct Row {
    const char* guards;
    std::vector<double> x, y;
    int n;  // passed as the count; -1 here means x.size()
    int useVertex;
    float minHeightPercent;
    int status;
    double xOut, yOut;
    int kind;
};

const std::vector<double> k0to8{0, 1, 2, 3, 4, 5, 6, 7, 8};
const std::vector<double> kPeakAt4{84, 91, 96, 99, 100, 99, 96, 91, 84};       // 100 - (x - 4)^2
const std::vector<double> kValleyAt4{21, 14, 9, 6, 5, 6, 9, 14, 21};          // 5 + (x - 4)^2
const std::vector<double> kPeakAt3p5{87.75, 93.75, 97.75, 99.75, 99.75, 97.75, 93.75, 87.75, 79.75};
const std::vector<double> k0to8e6{0, 1e6, 2e6, 3e6, 4e6, 5e6, 6e6, 7e6, 8e6};

// Expected values are hand-derived where the row says so; the hexfloat rows come from an
// independent double-precision re-computation of the told operation order.
TEST(GetExtremum, EveryWayOut) {
    const std::vector<Row> rows = {
        {"n = 0", k0to8, kPeakAt4, 0, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKindUntouched},
        {"n = 2", k0to8, kPeakAt4, 2, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKindUntouched},
        {"n = 7, not a multiple of 3", k0to8, kPeakAt4, 7, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKindUntouched},
        {"n = -3, a negative multiple", k0to8, kPeakAt4, -3, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKindUntouched},
        // means (1, 90.33), (4, 99.33), (7, 90.33); curvature -2: the vertex, not the 100 sample
        {"vertex of the means", k0to8, kPeakAt4, -1, 1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6,
         QAL_EXTREMUM_MAX},
        {"highest sample", k0to8, kPeakAt4, -1, 0, 5.0f, QAL_OK, 4.0, 100.0, QAL_EXTREMUM_MAX},
        {"h = 9.93 exceeds both flanks of 9", k0to8, kPeakAt4, -1, 1, 10.0f, QAL_ERR_NOT_FOUND,
         0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6, kKindUntouched},
        {"first of two equal highest samples", k0to8, kPeakAt3p5, -1, 0, 5.0f, QAL_OK, 3.0, 99.75, QAL_EXTREMUM_MAX},
        {"lowest sample of a valley", k0to8, kValleyAt4, -1, 0, 5.0f, QAL_OK, 4.0, 5.0, QAL_EXTREMUM_MIN},
        {"descending abscissae, kind from the curvature", {8, 7, 6, 5, 4, 3, 2, 1, 0}, kPeakAt4, -1, 1, 5.0f,
         QAL_OK, 0x1.0000000000002p+2, 0x1.8d55555555555p+6, QAL_EXTREMUM_MAX},
        {"n = 3: parabola through the samples", {1, 2, 4}, {1, 3, 2}, -1, 1, 0.0f, QAL_OK, 0x1.5999999999999p+1,
         0x1.b444444444444p+1, QAL_EXTREMUM_MAX},
        {"one flank high enough suffices", k0to8, {90, 90, 90, 100, 100, 100, 99, 99, 99}, -1, 1, 5.0f, QAL_OK,
         0x1.4e8ba2e8ba2e3p+2, 0x1.93ae8ba2e8ba2p+6, QAL_EXTREMUM_MAX},
        {"flanks exactly h below: the height test is strict", k0to8, {95, 95, 95, 100, 100, 100, 95, 95, 95}, -1, 1,
         5.0f, QAL_ERR_NOT_FOUND, 0x1.ffffffffffff2p+1, 100.0, kKindUntouched},
        {"flanks crossing zero", k0to8, {-15, -8, -3, 0, 1, 0, -3, -8, -15}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 4.0,
         0x1.5555555555555p-2, kKindUntouched},
        {"an outer mean exactly 0", k0to8, {-1, 0, 1, 5, 5, 5, 1, 0, -1}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 4.0, 5.0,
         kKindUntouched},
        {"straight line", k0to8, {1, 3, 5, 7, 9, 11, 13, 15, 17}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0,
         kKindUntouched},
        {"constant", k0to8, {3, 3, 3, 3, 3, 3, 3, 3, 3}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKindUntouched},
        {"peak in the first third", k0to8, {5, 10, 6, 5, 4, 3, 2, 1.5, 1}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0,
         kKindUntouched},
        {"NaN sample", k0to8, {84, 91, 96, 99, 100, kNaN, 96, 91, 84}, -1, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0,
         kKindUntouched},
        // slopes about -6e-7 and +6e-7: across zero, but s3 not above the level +1e-6
        {"slopes across 0 but not across 1e-6", k0to8e6, {11.6, 10.9, 10.4, 10.1, 10, 10.1, 10.4, 10.9, 11.6}, -1, 1,
         5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKindUntouched},
        {"flat: |curvature| <= 1e-6 is success without kind", k0to8e6, {26, 19, 14, 11, 10, 11, 14, 19, 26}, -1, 1,
         5.0f, QAL_OK, 0.0, 0.0, kKindUntouched},
        {"all abscissae equal", {2, 2, 2}, {1, 3, 2}, -1, 1, 5.0f, QAL_ERR_ZERO_DIVISION, 0.0, 0.0, kKindUntouched},
        {"mean abscissae exactly 1e-25 apart pass", {0, 1e-25, 2e-25}, {1, 2, 1}, -1, 1, 0.0f, QAL_OK, 1e-25, 2.0,
         QAL_EXTREMUM_MAX},
        {"one ulp below 1e-25 does not", {0, 0x1.ef2d0f5da7dd8p-84, 1}, {1, 2, 1}, -1, 1, 0.0f,
         QAL_ERR_ZERO_DIVISION, 0.0, 0.0, kKindUntouched},
        // large abscissae: the rounding residue of the slope never falls below 1e-6
        {"Newton steps do not settle",
         {0x1.efd87e0864124p+31, 0x1.efd87e0be2827p+31, 0x1.efd87e0f60f2ap+31, 0x1.efd87e12df62dp+31,
          0x1.efd87e165dd30p+31, 0x1.efd87e19dc433p+31, 0x1.efd87e1d5ab36p+31, 0x1.efd87e20d9239p+31,
          0x1.efd87e245793cp+31},
         {0x1.3f90c42ea4642p+11, 0x1.2772f6ff7ef48p+12, 0x1.f0f4ecd8a0bc2p+12, 0x1.219f878335157p+13,
          0x1.38cb4c7bdca8cp+13, 0x1.1f6c26d6fa648p+13, 0x1.343bfb52a5845p+13, 0x1.610e8f8f8b748p+10,
          0x1.35c20df831200p+7},
         -1, 1, 1.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKindUntouched},
        {"operation order: noisy peak", {0.312, 1.055, 1.792, 2.537, 3.248, 3.997, 4.639, 5.414, 6.192},
         {2.9098, 4.7078, 6.0025, 6.9047, 7.3187, 7.3279, 6.9606, 6.043, 4.6572}, -1, 1, 2.5f, QAL_OK,
         0x1.cddafa50ad9a0p+1, 0x1.cef3652daf493p+2, QAL_EXTREMUM_MAX},
        {"operation order: noisy valley",
         {0.278, 1.073, 1.789, 2.459, 3.254, 3.919, 4.698, 5.38, 6.098, 6.916, 7.581, 8.313, 9.12, 9.84, 10.513},
         {19.68, 16.355, 13.8248, 11.8138, 9.9569, 8.7672, 7.8574, 7.4569, 7.4266, 7.9369, 8.7462, 10.0641, 12.0239,
          14.2356, 16.6905},
         -1, 1, 2.5f, QAL_OK, 0x1.7025be68df2b9p+2, 0x1.f5afa1d6b2af3p+2, QAL_EXTREMUM_MIN},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        int kind = kKindUntouched;
        const int n = r.n == -1 ? static_cast<int>(r.x.size()) : r.n;
        EXPECT_EQ(r.status, QAL_GetExtremum(r.x.data(), r.y.data(), n, &xOut, &yOut, &kind, r.useVertex,
                                            r.minHeightPercent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
        EXPECT_EQ(r.kind, kind);
    }
}

}  // namespace
