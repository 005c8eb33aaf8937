#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace {

using qal::test::kInf, qal::test::kNaN, qal::test::SameBits;
constexpr auto Log = k_Qal::Log, Sqrt = k_Qal::Sqrt;
constexpr auto Power = k_Qal::Power;

const double kAbove1e25 = std::nextafter(1e25, kInf), kBelow1e_25 = std::nextafter(1e-25, 0.0);
const float kImage1e25 = 0x1.08b2a2p+83f, kImage1e_25 = 0x1.ef2d1p-84f;  // bits 0x69045951 (below 1e25), 0x15F79688
const float kAboveImage1e25 = std::nextafter(kImage1e25, kImage1e25 * 2);
const double kCube = std::pow(1e25, 1.0 / 3.0), kInverseCube = 0x1.3ef7b1bdd0b05p-28;  // QAL_pow's limit for |y| = 3, 1 / it

TEST(GuardedScalars, ClampsWithTheirExactSense) {
    struct Row { double (*f)(double); double x, expected; };
    const Row rows[] = {
        {QAL_exp, 30, 0x1.370470aec28edp+43}, {QAL_exp, std::nextafter(30.0, 31.0), 1e25}, {QAL_exp, kNaN, kNaN},
        {QAL_log, 1e-25, std::log(1e-25)}, {QAL_log, kBelow1e_25, -30}, {QAL_log, 1e25, std::log(1e25)}, {QAL_log, kAbove1e25, 30},
        {QAL_log10, 1e-25, -25}, {QAL_log10, kBelow1e_25, -30}, {QAL_log10, 1e25, 25}, {QAL_log10, kAbove1e25, 30},
        {QAL_log10, kNaN, kNaN}, {QAL_pow10, 30, 1e30}, {QAL_pow10, std::nextafter(30.0, 31.0), 1e25}, {QAL_pow10, -25, 1e-25},
        {QAL_pow10, std::nextafter(-25.0, -26.0), 0}, {QAL_sqrt, -4, -2}, {QAL_sqrt, 0.1, 0x1.43d1364cfeb7bp-2}, {QAL_sqrt, 1e300, kInf},
        {Log, 0, -1e25}, {Log, 1e-30, -0x1.144f69ff9ffc4p+6}, {Log, 2e25, std::log(2e25)}, {Sqrt, -4, -2}, {Sqrt, 1e300, 1e150},
        {Sqrt, 0.1, 0x1.43d136248490fp-2},
    };
    for (const Row& r : rows) EXPECT_TRUE(SameBits(r.expected, r.f(r.x))) << &r - rows;
}

TEST(GuardedScalars, PowerCasesInTheirOrder) {
    struct Row { double (*f)(double, double); double x, y, expected; };
    const Row rows[] = {
        {QAL_pow, 2e25, 0, 1}, {QAL_pow, -2e25, 0, -1}, {QAL_pow, -1e25, 0, 1}, {QAL_pow, 0, 0, 1e25}, {QAL_pow, -0.0, 0, 1e25},
        {QAL_pow, -8, 1.0 / 3.0, 0}, {QAL_pow, -2, 3, -8}, {QAL_pow, -2, kNaN, 0}, {QAL_pow, -2, kInf, 0}, {QAL_pow, 1e13, 2, 1e25},
        {QAL_pow, -1e13, 3, 1e25}, {QAL_pow, kNaN, 0, 1}, {QAL_pow, kCube, 3, 0x1.08b2a2c280283p+83},
        {QAL_pow, std::nextafter(kCube, kInf), 3, 1e25}, {QAL_pow, kCube, -3, 0x1.ef2d0f5da7df2p-84},
        {QAL_pow, std::nextafter(kCube, kInf), -3, 0}, {QAL_pow, kInverseCube, -3, 0x1.08b2a2c280283p+83},
        {QAL_pow, std::nextafter(kInverseCube, 0.0), -3, 1e25}, {QAL_pow, 10, -26, 0}, {QAL_pow, 0, -2, 1e25},
        {QAL_pow, -0.0, -2, kInf}, {QAL_pow, 0, -0.5, kInf}, {Power, 0, 0, 1}, {Power, 0, 2, 0}, {Power, -2, 3, 0}, {Power, -2, -3, 1},
        {Power, 1e-25, 2, 1e-25}, {Power, kBelow1e_25, 2, 0}, {Power, 1e-25, -2, 1e25}, {Power, kNaN, 1e-26, 1},
        {Power, kNaN, 1e-25, kNaN}, {Power, kNaN, -1e-25, kNaN}, {Power, 10, 30, 1e25}, {Power, 10, -30, 1e-25},
        {Power, kInf, 0.5, std::pow(1e25, 0.5)}, {Power, 1e25, -1, kBelow1e_25},  // log(1e25) * -1 == -log(1e25): computed
    };
    for (const Row& r : rows) EXPECT_TRUE(SameBits(r.expected, r.f(r.x, r.y))) << &r - rows;
}

TEST(GuardedScalars, MultAndRepairsSetTheFloatImages) {
    EXPECT_TRUE(SameBits(kImage1e25, QAL_mult(1e20f, 1e20f)) && SameBits(-kImage1e25, QAL_mult(-1e20f, 1e20f)));
    EXPECT_TRUE(SameBits(kImage1e25, QAL_mult(kAboveImage1e25, 1.0f)) && SameBits(0x1.333334p-2f, QAL_mult(3.0f, 0.1f)));
    struct Row { bool (*f)(double&); double in; bool changed; double out; };
    const Row rows[] = {{k_Qal::InfRepair, 1e25, false, 1e25}, {k_Qal::InfRepair, kAbove1e25, true, 1e25},
                        {k_Qal::InfRepair, -kInf, true, -1e25}, {k_Qal::InfRepair, kNaN, false, kNaN},
                        {k_Qal::ZeroRepair, -0.0, true, 1e-25}, {k_Qal::ZeroRepair, -1e-26, true, -1e-25},
                        {k_Qal::ZeroRepair, 1e-25, false, 1e-25}, {k_Qal::ZeroRepair, -kBelow1e_25, true, -1e-25},
                        {k_Qal::ZeroRepair, kNaN, false, kNaN}};
    for (const Row& r : rows) {
        double value = r.in;
        EXPECT_TRUE(r.changed == r.f(value) && SameBits(r.out, value)) << &r - rows;
    }
    // A repaired float passes a second repair unchanged.
    struct FloatRow { bool (*f)(float&); float in; bool changed; float out; };
    const FloatRow floatRows[] = {
        {k_Qal::InfRepair, kAboveImage1e25, true, kImage1e25}, {k_Qal::InfRepair, kImage1e25, false, kImage1e25},
        {k_Qal::InfRepair, -kAboveImage1e25, true, -kImage1e25}, {k_Qal::ZeroRepair, -0.0f, true, kImage1e_25},
        {k_Qal::ZeroRepair, kImage1e_25, false, kImage1e_25}, {k_Qal::ZeroRepair, -1e-26f, true, -kImage1e_25}};
    for (const FloatRow& r : floatRows) {
        float value = r.in;
        EXPECT_TRUE(r.changed == r.f(value) && SameBits(r.out, value)) << &r - floatRows;
    }
}

TEST(CalcLog, OrderModesAndTheArrayHandedOver) {
    struct Row { std::vector<float> source; short mode; int status; std::vector<float> logs; };
    const std::vector<Row> rows = {
        {{1, 10, 100}, 2, QAL_OK, {0, 1, 2}}, {{10, 1, 10, 1}, 1, QAL_ERR_LOG_SEQUENCE, {1, 0, 1, 0}}, {{10, 1, 10, 1}, 3, QAL_OK, {1, 0, 1, 0}},
        {{0, 1}, 2, QAL_ERR_LOG_SEQUENCE, {-30}}, {{0, 1}, 1, QAL_OK, {-30, 0}}, {{1, 1, 0.1f}, 1, QAL_OK, {0, 0, -1}},
        {{1, 1}, 2, QAL_ERR_LOG_SEQUENCE, {0, 0}}, {{3}, 2, QAL_OK, {0x1.e8927ap-2f}}, {{NAN, 1}, 2, QAL_OK, {NAN, 0}},
    };
    for (const Row& r : rows) {
        float* logs = nullptr;
        EXPECT_EQ(r.status, QAL_CalcLog(&logs, r.source.data(), static_cast<int>(r.source.size()), r.mode));
        for (std::size_t i = 0; i < r.logs.size(); ++i) EXPECT_TRUE(SameBits(r.logs[i], logs[i])) << r.source[0];
        QAL_ReleaseArray(logs);
    }
    float sentinel = 0.0f;
    float* target = &sentinel;
    const float source[] = {10, 1, 0.1f};
    EXPECT_EQ(QAL_OK, QAL_CalcLog(nullptr, nullptr, 0, 2));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_CalcLog(&target, nullptr, 1, 2));
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_CalcLog(nullptr, source, 1, 2));
    EXPECT_EQ(&sentinel, target);
    EXPECT_EQ(QAL_ERR_MEMORY, QAL_CalcLog(&target, source, -1, 2));
    EXPECT_EQ(nullptr, target);
    QAL_ReleaseArray(target);  // null is accepted
    for (const short mode : {short{0}, short{2}}) {  // QAL_OK and the sequence failure both hand the array over
        qal::test::ExpectEveryAllocationFailureHandled([&] {
                const int status = QAL_CalcLog(&target, source, 3, mode);
                if (status != QAL_ERR_MEMORY) QAL_ReleaseArray(target);
                return status;
            }, QAL_ERR_MEMORY);
    }
}

}  // namespace
