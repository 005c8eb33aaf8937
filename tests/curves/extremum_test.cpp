#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN;
using qal::test::kUntouched;
using qal::test::SameBits;

constexpr int kKeep = -7;  // stands in kindOut; rows expecting it guard "not written"
constexpr int kMax = QAL_EXTREMUM_MAX, kMin = QAL_EXTREMUM_MIN;
constexpr double kBig = 1e30, kHuge = 1e28;
constexpr int kAll = -1000;

struct Row {
    const char* guards;
    std::vector<double> x, y;
    int n;  // the count passed; kAll: the size of x
    int useVertex;
    float minHeightPercent;
    int status;
    double xOut, yOut;
    int kind;
};

const std::vector<double> k0to8{0, 1, 2, 3, 4, 5, 6, 7, 8};
const std::vector<double> kPeak{84, 91, 96, 99, 100, 99, 96, 91, 84};  // 100 - (x - 4)^2
const std::vector<double> kE6{0, 1e6, 2e6, 3e6, 4e6, 5e6, 6e6, 7e6, 8e6};

// Hand-derived rows, and hexfloat rows from an independent double re-computation of the
// told operation order (the last rows guard that order).
TEST(GetExtremum, EveryWayOut) {
    const Row rows[] = {
        {"n = 0", k0to8, kPeak, 0, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKeep},
        {"n = 7, not a multiple of 3", k0to8, kPeak, 7, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKeep},
        {"n = -3, a negative multiple", k0to8, kPeak, -3, 1, 5.0f, QAL_ERR_PARAMETER, 0.0, 0.0, kKeep},
        // means (1, 90.33), (4, 99.33), (7, 90.33), curvature -2: the vertex, not the sample 100
        {"vertex of the means", k0to8, kPeak, kAll, 1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6, kMax},
        {"any nonzero useVertex", k0to8, kPeak, kAll, -1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6, kMax},
        {"highest sample", k0to8, kPeak, kAll, 0, 5.0f, QAL_OK, 4.0, 100.0, kMax},
        {"h 9.93 above both flanks of 9", k0to8, kPeak, kAll, 1, 10.0f, QAL_ERR_NOT_FOUND, 0x1.ffffffffffffcp+1, 0x1.8d55555555555p+6, kKeep},
        {"first of two equal samples", k0to8, {87.75, 93.75, 97.75, 99.75, 99.75, 97.75, 93.75, 87.75, 79.75}, kAll, 0, 5.0f, QAL_OK, 3.0, 99.75, kMax},
        {"h from |y2|: a negative valley at 10 %", k0to8, {-84, -91, -96, -99, -100, -99, -96, -91, -84}, kAll, 1, 10.0f, QAL_ERR_NOT_FOUND, 0x1.ffffffffffffcp+1, -0x1.8d55555555555p+6, kKeep},
        {"h from |y2|: a negative valley at 5 %", k0to8, {-84, -91, -96, -99, -100, -99, -96, -91, -84}, kAll, 1, 5.0f, QAL_OK, 0x1.ffffffffffffcp+1, -0x1.8d55555555555p+6, kMin},
        {"minimum, right flank high enough", k0to8, {99, 99, 99, 95, 95, 95, 110, 110, 110}, kAll, 1, 5.0f, QAL_OK, 0x1.90d79435e50dcp+1, 0x1.78d0d79435e50p+6, kMin},
        {"maximum, left flank high enough", k0to8, {90, 90, 90, 100, 100, 100, 99, 99, 99}, kAll, 1, 5.0f, QAL_OK, 0x1.4e8ba2e8ba2e3p+2, 0x1.93ae8ba2e8ba2p+6, kMax},
        {"flanks exactly h below: strict", k0to8, {95, 95, 95, 100, 100, 100, 95, 95, 95}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0x1.ffffffffffff2p+1, 100.0, kKeep},
        {"height |y2| / 100 * p, not |y2| * p / 100", {0, 1, 2}, {0x1.b9e13d41d4951p+6, 125.82, 0x1.b9e13d41d4951p+6}, kAll, 1, 12.2f, QAL_ERR_NOT_FOUND, 0x1.ffffffffffffap-1, 0x1.f747ae147ae14p+6, kKeep},
        {"descending x: kind from the curvature", {8, 7, 6, 5, 4, 3, 2, 1, 0}, kPeak, kAll, 1, 5.0f, QAL_OK, 0x1.0000000000002p+2, 0x1.8d55555555555p+6, kMax},
        {"n = 3: parabola through the samples", {1, 2, 4}, {1, 3, 2}, kAll, 1, 0.0f, QAL_OK, 0x1.5999999999999p+1, 0x1.b444444444444p+1, kMax},
        {"outer means of both signs", k0to8, {-15, -8, -3, 0, 1, 0, -3, -8, -15}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 4.0, 0x1.5555555555555p-2, kKeep},
        {"first mean exactly 0", k0to8, {-1, 0, 1, 5, 5, 5, 2, 2, 2}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0x1.18p+2, 0x1.44p+2, kKeep},
        {"minimum, last mean of the other sign", k0to8, {-15, -16, -17, -20, -21, -20, 1, 2, 3}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0x1.7e66666666665p+1, -0x1.5da2222222222p+4, kKeep},
        {"extreme samples beyond the sentinel: vertex x stays", k0to8, {-kBig - 16 * kHuge, -kBig - 9 * kHuge, -kBig - 4 * kHuge, -kBig - kHuge, -kBig, -kBig - kHuge, -kBig - 4 * kHuge, -kBig - 9 * kHuge, -kBig - 16 * kHuge}, kAll, 0, 5.0f, QAL_OK, 4.0, -1e25, kMax},
        {"straight line", k0to8, {1, 3, 5, 7, 9, 11, 13, 15, 17}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"peak in the first third", k0to8, {5, 10, 6, 5, 4, 3, 2, 1.5, 1}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"NaN sample", k0to8, {84, 91, 96, 99, 100, kNaN, 96, 91, 84}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"slopes -6e-7 and +6e-7: not across +1e-6", kE6, {11.6, 10.9, 10.4, 10.1, 10, 10.1, 10.4, 10.9, 11.6}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"flat: success without a kind", kE6, {26, 19, 14, 11, 10, 11, 14, 19, 26}, kAll, 1, 5.0f, QAL_OK, 0.0, 0.0, kKeep},
        {"flat, slopes above then below +1e-6", {0, 1e6, 2e6}, {10, 11.625, 12.5}, kAll, 1, 5.0f, QAL_OK, 0.0, 0.0, kKeep},
        {"all abscissae equal", {2, 2, 2}, {1, 3, 2}, kAll, 1, 5.0f, QAL_ERR_ZERO_DIVISION, 0.0, 0.0, kKeep},
        {"a NaN distance passes the zero test", {0, kNaN, 2}, {1, 3, 2}, kAll, 1, 5.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"means exactly 1e-25 apart pass", {0, 1e-25, 2e-25}, {1, 2, 1}, kAll, 1, 0.0f, QAL_OK, 1e-25, 2.0, kMax},
        {"one ulp below 1e-25 does not", {0, 0x1.ef2d0f5da7dd8p-84, 1}, {1, 2, 1}, kAll, 1, 0.0f, QAL_ERR_ZERO_DIVISION, 0.0, 0.0, kKeep},
        {"Newton steps do not settle (rounding residue of large x)",
         {0x1.efd87e0864124p+31, 0x1.efd87e0be2827p+31, 0x1.efd87e0f60f2ap+31, 0x1.efd87e12df62dp+31, 0x1.efd87e165dd30p+31,
          0x1.efd87e19dc433p+31, 0x1.efd87e1d5ab36p+31, 0x1.efd87e20d9239p+31, 0x1.efd87e245793cp+31},
         {0x1.3f90c42ea4642p+11, 0x1.2772f6ff7ef48p+12, 0x1.f0f4ecd8a0bc2p+12, 0x1.219f878335157p+13, 0x1.38cb4c7bdca8cp+13,
          0x1.1f6c26d6fa648p+13, 0x1.343bfb52a5845p+13, 0x1.610e8f8f8b748p+10, 0x1.35c20df831200p+7},
         kAll, 1, 1.0f, QAL_ERR_NOT_FOUND, 0.0, 0.0, kKeep},
        {"order: noisy peak", {0.312, 1.055, 1.792, 2.537, 3.248, 3.997, 4.639, 5.414, 6.192}, {2.9098, 4.7078, 6.0025, 6.9047, 7.3187, 7.3279, 6.9606, 6.043, 4.6572}, kAll, 1, 2.5f, QAL_OK, 0x1.cddafa50ad9a0p+1, 0x1.cef3652daf493p+2, kMax},
        {"order: slope brackets from the left", {0.118, 1.394, 2.258, 2.828, 3.909, 5.135, 5.618, 6.969, 7.734}, {32.571, 41.244, 46.765, 47.376, 49.411, 48.908, 48.732, 41.494, 37.409}, kAll, 1, 5.0f, QAL_OK, 0x1.0f56d3949da54p+2, 0x1.85201adff43afp+5, kMax},
        {"order: noisy valley", {0.278, 1.073, 1.789, 2.459, 3.254, 3.919, 4.698, 5.38, 6.098, 6.916, 7.581, 8.313, 9.12, 9.84, 10.513},
         {19.68, 16.355, 13.8248, 11.8138, 9.9569, 8.7672, 7.8574, 7.4569, 7.4266, 7.9369, 8.7462, 10.0641, 12.0239, 14.2356, 16.6905},
         kAll, 1, 2.5f, QAL_OK, 0x1.7025be68df2b9p+2, 0x1.f5afa1d6b2af3p+2, kMin},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        int kind = kKeep;
        const int n = r.n == kAll ? static_cast<int>(r.x.size()) : r.n;
        EXPECT_EQ(r.status, QAL_GetExtremum(r.x.data(), r.y.data(), n, &xOut, &yOut, &kind, r.useVertex, r.minHeightPercent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
        EXPECT_EQ(r.kind, kind);
    }
}

}  // namespace
