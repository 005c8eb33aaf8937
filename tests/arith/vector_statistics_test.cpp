#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/raised_index.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN, qal::test::kNoRaise, qal::test::kUntouched, qal::test::SameBits;
using V = std::vector<double>;
using Vec = t_QalVector<double>;

Vec Make(const V& values) {
    Vec v(static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) v(static_cast<int>(i)) = values[i];
    return v;
}

using Pair = std::function<double(Vec&, Vec&)>;
const Pair kSum = [](Vec& a, Vec&) { return k_Qal::Sum(a); }, kSum2 = [](Vec& a, Vec&) { return k_Qal::Sum2(a); };
const Pair kSumInv = [](Vec& a, Vec&) { return k_Qal::SumInv(a); }, kSumInv2 = [](Vec& a, Vec&) { return k_Qal::SumInv2(a); };
const Pair kIndexMax = [](Vec& a, Vec& b) { return static_cast<double>(k_Qal::IndexMaxFraction(a, b)); };
const Pair kCorrelation = [](Vec& a, Vec& b) { return k_Qal::LinCorCoef(a, a, b); };  // b as the scale
const Pair kMax = k_Qal::MaxFraction, kMin = k_Qal::MinFraction;
const double kAbove = std::nextafter(1e-25, 1.0), kBelow = std::nextafter(1e-25, 0.0);

// The sums skip |b| <= 1e-25 and NaN, the fractions only |b| < 1e-25. A second vector shorter than
// the range raises at its first missing index.
TEST(VectorStatistics, SumsAndFractionsWithTheirThresholds) {
    struct Row { Pair f; V a, b; double expected; int raised = kNoRaise; };
    const std::vector<Row> rows = {
        {kSum, {}, {}, 0}, {kSum, {0.1, 0.2, 0.3}, {}, 0x1.3333333333334p-1}, {kSum2, {0.1, 0.2, 0.3, 0.7}, {}, 0x1.428f5c28f5c28p-1},
        {k_Qal::SumMult, {1, 2, 3}, {4, 5}, 14}, {k_Qal::SumDiv, {1, 1, 1, 1, 7}, {1e-25, -1e-25, kAbove, kNaN}, 1 / kAbove},
        {kSumInv, {2, 0, 4}, {}, 0.75}, {kSumInv, {1e-25, -1e-25, kNaN, 4}, {}, 0.25}, {kSumInv2, {1e-25, 2e-25}, {}, 0x1.11b0ec57e6499p+164},
        {kIndexMax, {1, 4, 1}, {1, 2, 0}, 1}, {kIndexMax, {1, 2}, {0, 0}, -1}, {kIndexMax, {2, 4, 9}, {1, 2, kBelow}, 0},
        {kIndexMax, {1, 5}, {kNaN, 1}, 0}, {kIndexMax, {1, 1, 1}, {1, 1}, 0, 2}, {kMax, {-3}, {1e-30}, -1e25}, {kMax, {2}, {1e-25}, 2 / 1e-25},
        {kMax, {-3e30, -1}, {1, 1}, -1}, {kMax, {1, 5}, {kNaN, 1}, kNaN}, {kMax, {1, 1}, {}, 0, 0}, {kMin, {1, 2}, {0, 0}, 1e25},
        {kMin, {-3e30, -1}, {1, 1}, -3e30}, {kMin, {2, 6}, {-1e-25, 3}, 2 / -1e-25}, {kMin, {1, 5}, {kNaN, 1}, kNaN},
        {kMin, {5, 1}, {1, kNaN}, 5}, {kMin, {1, 1, 1}, {1}, 0, 1}, {kCorrelation, {1, 2, 3}, {1}, 0, 1},
    };
    for (const Row& r : rows) {
        Vec a = Make(r.a), b = Make(r.b);
        double result = 0;
        EXPECT_EQ(r.raised, qal::test::RaisedIndex([&] { result = r.f(a, b); })) << &r - rows.data();
        EXPECT_TRUE(SameBits(r.expected, result)) << &r - rows.data();
    }
}

TEST(VectorStatistics, MeansSpreadAndExtremes) {
    struct Row { V v; bool ok; double mean, spread, squares; int minAt; double min; int maxAt; double max; };
    const Row rows[] = {
        {{}, false, 0, 0, 0, -1, 0, -1, 0}, {{5}, true, 5, 0, 0, 0, 5, 0, 5}, {{1, 2, 3}, true, 2, 1, 2, 0, 1, 2, 3},
        {{3, 1, 1, 3}, true, 2, std::sqrt(4.0 / 3.0), 4, 1, 1, 0, 3}, {{kNaN, 1}, true, kNaN, kNaN, kNaN, 0, kNaN, 0, kNaN},
        {{1, kNaN, 5, 0}, true, kNaN, kNaN, kNaN, 3, 0, 2, 5},
        {{0.31, 1.27, 2.05, 2.96, 4.12, 5.03, 7.7}, true, 0x1.ac9dfd1304638p+1, 0x1.410e4fb35063fp+1, 0x1.2dfbab816005ap+5, 0, 0.31, 6, 7.7},
    };
    for (const Row& r : rows) {
        Vec v = Make(r.v);
        double mean = kUntouched, spread = kUntouched, mean2 = kUntouched, squares = kUntouched, min = kUntouched, max = kUntouched;
        EXPECT_EQ(r.ok, k_Qal::Mean(v, mean, spread)) << &r - rows;
        EXPECT_EQ(r.ok, k_Qal::NVariance(v, mean2, squares)) << &r - rows;
        EXPECT_EQ(r.minAt, k_Qal::Min(v, min)) << &r - rows;
        EXPECT_EQ(r.maxAt, k_Qal::Max(v, max)) << &r - rows;
        const std::pair<double, double> outputs[] = {{r.mean, mean}, {r.spread, spread}, {r.mean, mean2},
                                                     {r.squares, squares}, {r.min, min}, {r.max, max}};
        for (const auto& [expected, actual] : outputs) EXPECT_TRUE(SameBits(expected, actual)) << &r - rows;
    }
}

TEST(VectorStatistics, LinCorCoef) {
    struct Row { V x, y, scale; double expected; };
    const double rootIs1e_25 = 0x1.5e246efdc4074p-83;  // x = {0, it}: root of the squares exactly 1e-25
    const std::vector<Row> rows = {
        {{1, 2, 3}, {2, 4, 6}, {1, 1, 1}, 0x1.fffffffffffffp-1}, {{1, 2, 3}, {6, 4, 2}, {1, 1, 1}, -0x1.fffffffffffffp-1},
        {{1, 2, 3}, {5, 5, 5}, {1, 1, 1}, 0}, {{}, {1}, {}, 0}, {{1}, {}, {}, 0}, {{1, 2}, {1, 2, 3}, {}, 0},
        {{1, 2, 3}, {1, 2, 3}, {1, 0, 1}, kNaN}, {{0, rootIs1e_25}, {0, 1}, {1, 1}, 1}, {{0, std::nextafter(rootIs1e_25, 0.0)}, {0, 1}, {1, 1}, 0},
        {{3.721, 5.385, 6.133, 8.194, 5.359}, {6.223, -2.71, 1.656, 6.434, 3.49}, {2.28, 0.55, 1.33, 0.84, 1.5}, 0x1.f186b88d10dbep-2},
    };
    for (const Row& r : rows) {
        Vec x = Make(r.x), y = Make(r.y), scale = Make(r.scale);
        EXPECT_TRUE(SameBits(r.expected, k_Qal::LinCorCoef(x, y, scale))) << &r - rows.data();
    }
}

}  // namespace
