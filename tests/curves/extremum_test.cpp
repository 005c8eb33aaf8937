#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN;
using qal::test::kUntouched;
using qal::test::SameBits;
using V = std::vector<double>;

constexpr int kKeep = -7;  // stands in kindOut; rows expecting it guard "not written"
constexpr int kMax = QAL_EXTREMUM_MAX, kMin = QAL_EXTREMUM_MIN;
constexpr int kOk = QAL_OK, kNone = QAL_ERR_NOT_FOUND, kZero = QAL_ERR_ZERO_DIVISION, kParam = QAL_ERR_PARAMETER;

struct Row {
    const char* guards;
    int status;
    double xOut, yOut;
    int kind, useVertex;
    float percent;
    V x, y;
};

const V kX{0, 1, 2, 3, 4, 5, 6, 7, 8};
const V kPeak{84, 91, 96, 99, 100, 99, 96, 91, 84};  // 100 - (x - 4)^2
const V kE6{0, 1e6, 2e6, 3e6, 4e6, 5e6, 6e6, 7e6, 8e6};
const double kVx = 0x1.ffffffffffffcp+1, kVy = 0x1.8d55555555555p+6;  // vertex of kPeak's means

// Hand-derived rows, and hexfloat rows from an independent double re-computation of the
// told operation order (the "order:" rows guard that order).
TEST(GetExtremum, EveryWayOut) {
    const Row rows[] = {
        {"n = 0", kParam, 0, 0, kKeep, 1, 5, {}, {}},
        {"n = 7, not a multiple of 3", kParam, 0, 0, kKeep, 1, 5, {0, 1, 2, 3, 4, 5, 6}, {1, 3, 2, 1, 3, 2, 9}},
        // means (1, 90.33), (4, 99.33), (7, 90.33), curvature -2: the vertex, not the sample 100
        {"vertex of the means, any nonzero useVertex", kOk, kVx, kVy, kMax, -1, 5, kX, kPeak},
        {"first of two equal samples", kOk, 3, 99.75, kMax, 0, 5, kX,
         {87.75, 93.75, 97.75, 99.75, 99.75, 97.75, 93.75, 87.75, 79.75}},
        {"first of two equal lowest", kOk, 3, 5.25, kMin, 0, 5, kX,
         {17.25, 11.25, 7.25, 5.25, 5.25, 7.25, 11.25, 17.25, 25.25}},
        {"h from |y2|: a negative valley at 10 %", kNone, kVx, -kVy, kKeep, 1, 10, kX,
         {-84, -91, -96, -99, -100, -99, -96, -91, -84}},
        {"minimum, right flank high enough", kOk, 0x1.90d79435e50dcp+1, 0x1.78d0d79435e50p+6, kMin, 1, 5, kX,
         {99, 99, 99, 95, 95, 95, 110, 110, 110}},
        {"maximum, left flank high enough", kOk, 0x1.4e8ba2e8ba2e3p+2, 0x1.93ae8ba2e8ba2p+6, kMax, 1, 5, kX,
         {90, 90, 90, 100, 100, 100, 99, 99, 99}},
        {"flanks exactly h below: strict", kNone, 0x1.ffffffffffff2p+1, 100, kKeep, 1, 5, kX,
         {95, 95, 95, 100, 100, 100, 95, 95, 95}},
        {"h is |y2| / 100 * p, not |y2| * p / 100", kNone, 0x1.ffffffffffffap-1, 0x1.f747ae147ae14p+6, kKeep, 1, 12.2f,
         {0, 1, 2}, {0x1.b9e13d41d4951p+6, 125.82, 0x1.b9e13d41d4951p+6}},
        {"descending x: kind from the curvature", kOk, 0x1.0000000000002p+2, kVy, kMax, 1, 5,
         {8, 7, 6, 5, 4, 3, 2, 1, 0}, kPeak},
        {"first mean exactly 0", kNone, 0x1.18p+2, 0x1.44p+2, kKeep, 1, 5, kX, {-1, 0, 1, 5, 5, 5, 2, 2, 2}},
        {"minimum, last mean of the other sign", kNone, 0x1.7e66666666665p+1, -0x1.5da2222222222p+4, kKeep, 1, 5, kX,
         {-15, -16, -17, -20, -21, -20, 1, 2, 3}},
        // every sample below the start value -1e25 of the sample search
        {"samples beyond the sentinel: vertex x stays", kOk, 4, -1e25, kMax, 0, 5, kX,
         {-1.16e30, -1.09e30, -1.04e30, -1.01e30, -1e30, -1.01e30, -1.04e30, -1.09e30, -1.16e30}},
        {"NaN sample", kNone, 0, 0, kKeep, 1, 5, kX, {84, 91, 96, 99, 100, kNaN, 96, 91, 84}},
        {"slopes -6e-7 and +6e-7: not across +1e-6", kNone, 0, 0, kKeep, 1, 5, kE6,
         {11.6, 10.9, 10.4, 10.1, 10, 10.1, 10.4, 10.9, 11.6}},
        {"flat: success without a kind", kOk, 0, 0, kKeep, 1, 5, kE6, {26, 19, 14, 11, 10, 11, 14, 19, 26}},
        {"flat, slopes above then below +1e-6", kOk, 0, 0, kKeep, 1, 5, {0, 1e6, 2e6}, {10, 11.625, 12.5}},
        {"all abscissae equal", kZero, 0, 0, kKeep, 1, 5, {2, 2, 2}, {1, 3, 2}},
        {"a NaN distance passes the zero test", kNone, 0, 0, kKeep, 1, 5, {0, kNaN, 2}, {1, 3, 2}},
        {"means exactly 1e-25 apart pass", kOk, 1e-25, 2, kMax, 1, 0, {0, 1e-25, 2e-25}, {1, 2, 1}},
        {"one ulp below 1e-25 does not", kZero, 0, 0, kKeep, 1, 0, {0, 0x1.ef2d0f5da7dd8p-84, 1}, {1, 2, 1}},
        {"Newton steps do not settle (rounding residue of large x)", kNone, 0, 0, kKeep, 1, 1,
         {50000000000000.0, 50000000000001.5, 50000000000003.25}, {45, 93, 2}},
        {"order: noisy peak", kOk, 0x1.cddafa50ad9a0p+1, 0x1.cef3652daf493p+2, kMax, 1, 2.5,
         {0.312, 1.055, 1.792, 2.537, 3.248, 3.997, 4.639, 5.414, 6.192},
         {2.9098, 4.7078, 6.0025, 6.9047, 7.3187, 7.3279, 6.9606, 6.043, 4.6572}},
        {"order: slope brackets from the left", kOk, 0x1.0f56d3949da54p+2, 0x1.85201adff43afp+5, kMax, 1, 5,
         {0.118, 1.394, 2.258, 2.828, 3.909, 5.135, 5.618, 6.969, 7.734},
         {32.571, 41.244, 46.765, 47.376, 49.411, 48.908, 48.732, 41.494, 37.409}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.guards);
        double xOut = kUntouched, yOut = kUntouched;
        int kind = kKeep;
        EXPECT_EQ(r.status, QAL_GetExtremum(r.x.data(), r.y.data(), static_cast<int>(r.x.size()), &xOut, &yOut, &kind,
                                            r.useVertex, r.percent));
        EXPECT_TRUE(SameBits(r.xOut, xOut));
        EXPECT_TRUE(SameBits(r.yOut, yOut));
        EXPECT_EQ(r.kind, kind);
    }
}

}  // namespace
