#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "support/raised_index.h"
#include "support/same_bits.h"

namespace {

using qal::test::kNaN, qal::test::kNoRaise, qal::test::kUntouched, qal::test::SameBits;
using V = std::vector<double>;
using Vec = t_QalVector<double>;
using Fn = std::function<double(Vec&, Vec&, Vec&)>;

Vec Make(const V& values) {
    Vec v(static_cast<int>(values.size()));
    for (int i = 0; i < v.GetSize(); ++i) v(i) = values[static_cast<std::size_t>(i)];
    return v;
}
template <class F> Fn One(F f) { return [f](Vec& a, Vec&, Vec&) { return f(a); }; }
template <class F> Fn Two(F f) { return [f](Vec& a, Vec& b, Vec&) { return static_cast<double>(f(a, b)); }; }

const Fn kSum = One(k_Qal::Sum), kSum2 = One(k_Qal::Sum2), kSumInv = One(k_Qal::SumInv), kSumInv2 = One(k_Qal::SumInv2);
const Fn kSumMult = Two(k_Qal::SumMult), kSumDiv = Two(k_Qal::SumDiv), kIndexMax = Two(k_Qal::IndexMaxFraction);
const Fn kMax = Two(k_Qal::MaxFraction), kMin = Two(k_Qal::MinFraction), kCor = k_Qal::LinCorCoef;
const double kAbove = std::nextafter(1e-25, 1.0), kBelow = std::nextafter(1e-25, 0.0);
const double kRoot = 0x1.5e246efdc4074p-83, kBelowRoot = std::nextafter(kRoot, 0.0);  // {0, kRoot}: root 1e-25

// Sums run in index order and skip |e| <= 1e-25 and NaN; the fractions skip only |b| < 1e-25 and always take
// their first quotient. A vector shorter than the range raises at its first missing index.
TEST(VectorStatistics, SumsFractionsAndCorrelation) {
    struct Row { Fn f; V a, b; double expected; V c = {}; int raised = kNoRaise; };
    const Row rows[] = {
        {kSum, {}, {}, 0}, {kSum, {0.1, 0.2, 0.3}, {}, 0x1.3333333333334p-1}, {kMin, {1, 2}, {0, 0}, 1e25},
        {kSum2, {0.1, 0.2, 0.3, 0.7}, {}, 0x1.428f5c28f5c28p-1}, {kIndexMax, {1, 1, 1}, {1, 1}, 0, {}, 2},
        {kSumMult, {0.1, 0.2, 0.3, 9}, {1, 1, 1}, 0x1.3333333333334p-1}, {kMax, {-3}, {1e-30}, -1e25},
        {kSumInv, {-1e-25, kNaN, 0.1, 0.1, -0.3}, {}, 0x1.0aaaaaaaaaaabp+4}, {kIndexMax, {2, 4, 9}, {1, 2, kBelow}, 0},
        {kSumInv2, {1e-25, 0.1, 0.2, 3}, {}, 0x1.f471c71c71c71p+6}, {kIndexMax, {1, 5}, {kNaN, 1}, 0},
        // 1e-25 and NaN skipped, one ulp above kept (a tiny term, so that the order still shows)
        {kSumDiv, {1, 1, 2e-40, 0.1, 0.2, 0.3, 7}, {1e-25, kNaN, kAbove, 1, 1, 1}, 0x1.3333333333346p-1},
        {kMax, {3}, {1e-25}, 0x1.8d0bf423c03d9p+84}, {kMax, {1, -3e30, -4e30}, {0, 1, 1}, -3e30},
        {kMin, {2, 6}, {-1e-25, 3}, -0x1.08b2a2c280290p+84}, {kMin, {0, -0.0, 1}, {1, 1, kNaN}, 0},
        {kCor, {1, 2, 3}, {1, 2, 3}, 0, {1}, 1}, {kCor, {1, 2}, {1, 2, 3}, 0},  // the scale is not read
        {kCor, {1, 2, 3}, {5, 5, 5}, 0, {1, 1, 1}}, {kCor, {1, 2, 3}, {1, 2, 3}, kNaN, {1, 0, 1}},
        {kCor, {0, kRoot}, {0, kRoot}, 1, {1, 1}}, {kCor, {0, kBelowRoot}, {0, 1}, 0, {1, 1}},
        {kCor, {7.53, 4.29, 5.75}, {1.36, 5.71, 7.81}, -0x1.67d32b0127bfap-1, {1, 1, 1}},
        {kCor, {5.12, 7.21, 8.44}, {3.68, 6.74, 4.13}, 0x1.0f6d49cd4e2d0p-4, {2.2, 1.97, 1.52}},
    };
    for (const Row& r : rows) {
        Vec a = Make(r.a), b = Make(r.b), c = Make(r.c);
        double result = 0;
        EXPECT_EQ(r.raised, qal::test::RaisedIndex([&] { result = r.f(a, b, c); })) << &r - rows;
        EXPECT_TRUE(SameBits(r.expected, result)) << &r - rows;
    }
}

// Among equal extremes the first wins; a NaN at position 0 stays, elsewhere it is passed over.
TEST(VectorStatistics, MeansSpreadAndExtremes) {
    struct Row { V v; bool ok; double mean, spread, squares; int minAt; double min; int maxAt; double max; };
    const Row rows[] = {
        {{}, false, 0, 0, 0, -1, 0, -1, 0}, {{3, 1, 1, 3}, true, 2, std::sqrt(4.0 / 3.0), 4, 1, 1, 0, 3},
        {{5}, true, 5, 0, 0, 0, 5, 0, 5}, {{kNaN, 1}, true, kNaN, kNaN, kNaN, 0, kNaN, 0, kNaN},
        {{1, 5, 0, kNaN}, true, kNaN, kNaN, kNaN, 2, 0, 1, 5},
        // the sums in index order
        {{1e16, 1, 1}, true, 0x1.7af4c4a80aaabp+51, 0x1.482f8590f6bc1p+52, 0x1.a4b9cf15c92c8p+105, 1, 1, 0, 1e16},
    };
    for (const Row& r : rows) {
        Vec v = Make(r.v);
        double mean = kUntouched, spread = mean, mean2 = mean, squares = mean, min = mean, max = mean;
        EXPECT_TRUE(r.ok == k_Qal::Mean(v, mean, spread) && r.ok == k_Qal::NVariance(v, mean2, squares)) << &r - rows;
        EXPECT_TRUE(r.minAt == k_Qal::Min(v, min) && r.maxAt == k_Qal::Max(v, max)) << &r - rows;
        EXPECT_TRUE(SameBits(r.mean, mean) && SameBits(r.spread, spread) && SameBits(r.mean, mean2)) << &r - rows;
        EXPECT_TRUE(SameBits(r.squares, squares) && SameBits(r.min, min) && SameBits(r.max, max)) << &r - rows;
    }
}

}  // namespace
