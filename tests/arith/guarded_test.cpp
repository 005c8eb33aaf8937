#include <cmath>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "support/allocation_faults.h"
#include "support/same_bits.h"

namespace {

using qal::test::kInf, qal::test::kNaN, qal::test::SameBits;
constexpr double (*Log)(double) = k_Qal::Log, (*Sqrt)(double) = k_Qal::Sqrt, (*Power)(double, double) = k_Qal::Power;

const double kAbove1e25 = std::nextafter(1e25, kInf), kBelow1e_25 = std::nextafter(1e-25, 0.0);
const double kAbove30 = std::nextafter(30.0, 31.0);
const float kImage1e25 = 0x1.08b2a2p+83f, kImage1e_25 = 0x1.ef2d1p-84f;  // bits 0x69045951 (below 1e25), 0x15F79688
const float kAboveImage = std::nextafter(kImage1e25, kImage1e25 * 2);
// QAL_pow's limit for |y| = 3, the double above it, and its reciprocal (0x1.3ef7b1bdd0b05p-28).
const double kCube = std::pow(1e25, 1.0 / 3.0), kAboveCube = std::nextafter(kCube, kInf), kInverseCube = 1 / kCube;

// The C library's pow, called at run time: with constant arguments the compiler folds it to the
// correctly rounded value, whatever the library gives.
double LibraryPow(double x, double y) {
    volatile double base = x;
    return std::pow(base, y);
}

// Each threshold from both sides; a NaN passes every guard to the standard function. Where that
// function's own rounding is the result, the expectation asks it too: 10^-25 is 1e-25 in glibc and
// 1.0000000000000026e-25 in MinGW's pow.
TEST(GuardedScalars, ClampsWithTheirExactSense) {
    struct Row { double (*f)(double); double x, expected; };
    const Row rows[] = {
        {QAL_exp, 30, 0x1.370470aec28edp+43}, {QAL_exp, kAbove30, 1e25}, {QAL_log, 1e-25, std::log(1e-25)},
        {QAL_log, kBelow1e_25, -30}, {QAL_log, 1e25, std::log(1e25)}, {QAL_log, kAbove1e25, 30},
        {QAL_log10, 1e-25, -25}, {QAL_log10, kBelow1e_25, -30}, {QAL_log10, 1e25, 25}, {QAL_log10, kAbove1e25, 30},
        {QAL_pow10, 30, 1e30}, {QAL_pow10, kAbove30, 1e25}, {QAL_pow10, -25, LibraryPow(10.0, -25.0)},
        {QAL_pow10, std::nextafter(-25.0, -26.0), 0}, {QAL_sqrt, -4, -2}, {QAL_sqrt, 0.1, 0x1.43d1364cfeb7bp-2},
        {QAL_sqrt, 1e300, kInf}, {Log, 0, -1e25}, {Log, 1e-30, -0x1.144f69ff9ffc4p+6}, {Log, 2e25, std::log(2e25)},
        {Sqrt, -4, -2}, {Sqrt, 0.1, 0x1.43d136248490fp-2},
    };
    for (const Row& r : rows) EXPECT_TRUE(SameBits(r.expected, r.f(r.x))) << &r - rows;
    for (const auto f : {QAL_exp, QAL_log, QAL_log10, QAL_pow10, QAL_sqrt, Log, Sqrt}) EXPECT_TRUE(std::isnan(f(kNaN)));
}

// The first case that applies ends the function; QAL_pow's limits hold for |y| > 1 only. kCube^-3 is the
// C library's rounding (glibc: 0x1.ef2d0f5da7df2p-84).
TEST(GuardedScalars, PowerCasesInTheirOrder) {
    struct Row { double (*f)(double, double); double x, y, expected; };
    const Row rows[] = {
        {QAL_pow, 2e25, 0, 1}, {QAL_pow, -2e25, 0, -1}, {QAL_pow, -1e25, 0, 1}, {QAL_pow, -0.0, 0, 1e25},
        {QAL_pow, -8, -1.0 / 3.0, 0}, {QAL_pow, -2, kNaN, 0}, {QAL_pow, 0, -0.5, kInf}, {QAL_pow, -0.0, -2, kInf},
        {QAL_pow, kCube, 3, 0x1.08b2a2c280283p+83}, {QAL_pow, -kAboveCube, 3, 1e25},
        {QAL_pow, kCube, -3, LibraryPow(kCube, -3.0)}, {QAL_pow, -kAboveCube, -3, 0},
        {QAL_pow, kInverseCube, -3, 0x1.08b2a2c280283p+83}, {QAL_pow, std::nextafter(kInverseCube, 0.0), -3, 1e25},
        {QAL_pow, 2e25, 1, 2e25}, {QAL_pow, 2e25, -1, 0x1.ef2d0f5da7dd8p-85}, {Power, -2, -3, 1}, {Power, 0, 1e-25, 0},
        {Power, 1e-25, 2, 1e-25}, {Power, kBelow1e_25, 2, 0}, {Power, 1e-25, -2, 1e25}, {Power, kNaN, 1e-26, 1},
        {Power, kNaN, 1e-25, kNaN}, {Power, kNaN, -1e-25, kNaN}, {Power, 10, 30, 1e25},
        {Power, kInf, 0.5, std::pow(1e25, 0.5)}, {Power, 1e25, -1, kBelow1e_25},  // log(x) * y == -log(1e25): computed
        {Power, 0x1.702337e304307p+41, 2, 0x1.08b2a2c28028ep+83},                  // log(x) * y == log(1e25): computed
    };
    for (const Row& r : rows) EXPECT_TRUE(SameBits(r.expected, r.f(r.x, r.y))) << &r - rows;
}

// Rows of value before, whether the repair changes it, and value after.
template <class T>
void ExpectRepairs(bool (*repair)(T&), std::initializer_list<std::tuple<T, bool, T>> rows) {
    for (auto [value, changed, out] : rows) EXPECT_TRUE(changed == repair(value) && SameBits(out, value)) << out;
}

// The repairs test in double against the limit and set its image in the value's type, so that a repaired
// float passes a second repair unchanged.
TEST(GuardedScalars, MultAndRepairsSetTheFloatImages) {
    EXPECT_TRUE(SameBits(kImage1e25, QAL_mult(1e20f, 1e20f)) && SameBits(-kImage1e25, QAL_mult(-1e20f, 1e20f)));
    EXPECT_TRUE(SameBits(kImage1e25, QAL_mult(kAboveImage, 1.0f)) && SameBits(0x1.333334p-2f, QAL_mult(3.0f, 0.1f)));
    ExpectRepairs<double>(k_Qal::InfRepair, {{1e25, false, 1e25}, {kAbove1e25, true, 1e25}, {-1e25, false, -1e25},
                                             {-kInf, true, -1e25}, {kNaN, false, kNaN}});
    ExpectRepairs<float>(k_Qal::InfRepair, {{kAboveImage, true, kImage1e25}, {kImage1e25, false, kImage1e25}});
    ExpectRepairs<double>(k_Qal::ZeroRepair, {{-0.0, true, 1e-25}, {-1e-26, true, -1e-25}, {1e-25, false, 1e-25},
                                              {kNaN, false, kNaN}});
    ExpectRepairs<float>(k_Qal::ZeroRepair, {{-0.0f, true, kImage1e_25}, {kImage1e_25, false, kImage1e_25}});
}

// Mode 1 allows one descent, mode 2 demands a rise from -30 on, other modes test nothing. The array is the
// caller's on success and on a sequence failure alike.
TEST(CalcLog, OrderModesAndTheArrayHandedOver) {
    struct Row { std::vector<float> in; short mode; int status; std::vector<float> logs; };
    const Row rows[] = {
        {{1, 3, 100}, 2, QAL_OK, {0, 0x1.e8927ap-2f, 2}}, {{10, 1, 10, 1}, 1, QAL_ERR_LOG_SEQUENCE, {1, 0, 1, 0}},
        {{10, 1, 10, 1}, 3, QAL_OK, {1, 0, 1, 0}}, {{0, 1}, 2, QAL_ERR_LOG_SEQUENCE, {-30}},
        {{1, 1, 0.1f}, 1, QAL_OK, {0, 0, -1}}, {{NAN, 1}, 2, QAL_OK, {NAN, 0}}, {{NAN, 1}, 1, QAL_OK, {NAN, 0}},
    };
    for (const Row& r : rows) {
        float* logs = nullptr;
        const auto call = [&] { return QAL_CalcLog(&logs, r.in.data(), static_cast<int>(r.in.size()), r.mode); };
        EXPECT_EQ(r.status, call());
        for (std::size_t i = 0; i < r.logs.size(); ++i) EXPECT_TRUE(SameBits(r.logs[i], logs[i])) << &r - rows;
        QAL_ReleaseArray(logs);
        // Releasing also the null that a failed allocation leaves.
        const auto callAndRelease = [&] { const int status = call(); QAL_ReleaseArray(logs); return status; };
        qal::test::ExpectEveryAllocationFailureHandled(callAndRelease, QAL_ERR_MEMORY);
    }
    // Count 0 first, then a null source or target; a negative count saturates the allocation.
    float sentinel = 0.0f, *target = &sentinel;
    const float in[] = {10};
    EXPECT_TRUE(QAL_CalcLog(nullptr, nullptr, 0, 2) == QAL_OK && QAL_CalcLog(nullptr, in, 1, 2) == QAL_ERR_MEMORY);
    EXPECT_TRUE(QAL_CalcLog(&target, nullptr, 1, 2) == QAL_ERR_MEMORY && target == &sentinel);
    EXPECT_TRUE(QAL_CalcLog(&target, in, -1, 2) == QAL_ERR_MEMORY && target == nullptr);
}

}  // namespace
