#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "qal/qal.h"
#include "support/instruction_sets.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

struct Outcome {
    int status;
    double x, y;
};
using Searches = std::function<void(std::vector<Outcome>&)>;

// Every offered level against the scalar path: each call's status and both outputs to the bit.
void ExpectEveryLevelMatchesScalar(const Searches& searches) {
    const auto run = [&](InstructionSet level) {
        const ForcedInstructionSet forced(level);
        std::vector<Outcome> outcomes;
        searches(outcomes);
        return outcomes;
    };
    const std::vector<Outcome> expected = run(InstructionSet::kScalar);
    for (const InstructionSet level : OfferedInstructionSets()) {
        const std::vector<Outcome> actual = run(level);
        ASSERT_EQ(expected.size(), actual.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(expected[i].status, actual[i].status) << Name(level) << ", call " << i;
            EXPECT_TRUE(SamePoint(expected[i].x, expected[i].y, actual[i].x, actual[i].y))
                << Name(level) << ", call " << i;
        }
    }
}

struct Curve {
    V x, y;
};

// Three samples laid in a curve from sample 1 on, each the first hit of a search with
// windows of 3: a minimum that Newton settles in the third step only; a peak that would
// settle in the first step and pass, but whose abscissae lie closer than 1e-25; a maximum
// whose height just fails 12.2 % of |y2| / 100 (and would pass as 12.2 * |y2| / 100).
struct Lead {
    double x[3], y[3];
};
const Lead kLeads[] = {
    {{0x1.fcc86b066a063p+3, 0x1.fe83a2c3c0109p+3, 0x1.004d39196f48bp+4},
     {0x1.f235a9b471cd6p+23, 0x1.8d89b5cb9925bp+23, 0x1.d25e62875ed4ep+23}},
    {{0, 5e-26, 1e-25}, {1e-28, 2e-28, 1e-28}},
    {{0, 1, 2}, {0x1.b9e13d41d4951p+6, 125.82, 0x1.b9e13d41d4951p+6}},
};
constexpr int kSettlesLate = 0, kTooClose = 1, kJustTooLow = 2, kNoLead = 3;

// Stretches of 37 samples (no multiple of any block) that send windows down every way of
// the window test: peaks and valleys, equal peaks (ties between windows), windows with
// abscissae 1e6 apart (flat), abscissae near 5e13 whose Newton steps never settle, equal
// abscissae, and NaN, infinities, signed zeros, subnormals and the limits among the
// samples.
Curve HardCurve(int n, int lead) {
    const double hard[] = {kNaN, kInf, -kInf, 0.0, -0.0, kTiny, -3 * kTiny, 1e-25, 1e25, -1e25};
    Curve c;
    std::uint32_t state = 31415u;
    double x = 0.0;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        const double noise = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
        const int k = i % 12;
        double step = 1.0, y;
        switch (i / 37 % 6) {
            case 0: y = 20.0 + 8.0 * std::sin(0.45 * i) + 0.2 * noise; break;
            case 1: y = 10.0 + (k < 6 ? k : 12 - k); break;
            case 2: step = 1e6; y = 10.0 + 0.25 * (2 * k - 11) * (2 * k - 11); break;
            case 3: x = 5e13 + 1.75 * i + noise; y = 50.0 + 50.0 * noise; break;
            case 4: step = state % 4u == 0 ? 0.0 : 1.0; y = -20.0 - 8.0 * std::cos(0.5 * i); break;
            default: y = state % 3u == 0 ? hard[(state >> 4) % 10u] : 1e-300 * noise; break;
        }
        x += step;
        const bool laid = lead != kNoLead && i >= 1 && i <= 3;
        c.x.push_back(laid ? kLeads[lead].x[i - 1] : x);
        c.y.push_back(laid ? kLeads[lead].y[i - 1] : y);
    }
    return c;
}

// Lengths around whole blocks and their remainders; windows below, at and above a block,
// negative and above n; the outputs apart from the curve, and inside it among the first
// peaks, where a lane block would read a sample before an improvement overwrote it.
TEST(ExtremumLanes, EveryLevelGivesTheScalarBits) {
    struct Row { int n, window; float percent; int lead; bool outputsInCurve; };
    const Row rows[] = {
        {3, 3, 5, kNoLead, false},       {12, 9, 0, kNoLead, false},      {25, 3, 0, kTooClose, false},
        {47, 9, 5, kNoLead, false},      {100, 3, 5, kSettlesLate, false}, {100, 3, 12.2f, kJustTooLow, false},
        {257, 21, 0, kNoLead, false},    {600, 42, 2, kNoLead, false},    {1000, 9, 0.5f, kNoLead, false},
        {333, -6, 0, kNoLead, false},    {301, 400, 0, kNoLead, false},   {222, 9, 0, kNoLead, true},
        {230, 30, 1, kNoLead, true}};
    ExpectEveryLevelMatchesScalar([&](std::vector<Outcome>& outcomes) {
        for (const Row& r : rows) {
            for (const int kind : {QAL_EXTREMUM_MAX, QAL_EXTREMUM_MIN}) {
                for (const int useVertex : {0, 1}) {
                    for (int driver = 0; driver < 4; ++driver) {
                        Curve c = HardCurve(r.n, r.lead);
                        Outcome o{0, kUntouched, kUntouched};
                        double* const xOut = r.outputsInCurve ? &c.x[33] : &o.x;
                        double* const yOut = r.outputsInCurve ? &c.y[30] : &o.y;
                        const double *x = c.x.data(), *y = c.y.data();
                        o.status = driver == 0   ? QAL_GetNextExtremum(x, y, r.n, xOut, yOut, r.window, kind,
                                                                       useVertex, r.percent)
                                   : driver == 1 ? QAL_GetRangeExtremum(x, y, r.n, xOut, yOut, r.window, kind,
                                                                        useVertex, r.percent)
                                   : driver == 2 ? QAL_GetAutoRangeExtremum(x, y, r.n, xOut, yOut, r.window, kind,
                                                                            useVertex, r.percent)
                                                 : QAL_GetAutoExtremum(x, y, r.n, xOut, yOut, kind, useVertex,
                                                                       r.percent);
                        outcomes.push_back({o.status, *xOut, *yOut});
                    }
                }
            }
        }
    });
}

// A ramp broken every seven samples by a hard value and two subnormals, so that the levels
// between its samples hit at every lane and block position and in the remainders, both
// directions, on a sample and on the line. At the level 0 two subnormals make a product
// that underflows to a hit. The whole-curve extremes meet ties, a NaN or signed zero in
// y[0], an output inside the curve and both outputs in one cell.
TEST(ThresholdLanes, EveryLevelGivesTheScalarBits) {
    const double hard[] = {kNaN, kInf, -kInf, 0.0, -0.0, kTiny, -kTiny, 1e-25, 1e25, -1e25};
    ExpectEveryLevelMatchesScalar([&](std::vector<Outcome>& outcomes) {
        for (const int n : {2, 3, 9, 17, 40, 67, 131}) {
            V x, y;
            for (int i = 0; i < n; ++i) {
                x.push_back(0.5 * i);
                const int k = i % 7;
                y.push_back(k == 3 ? hard[i / 7 % 10] : k == 5 ? kTiny : k == 6 ? 2 * kTiny : i);
            }
            V levels{0.0, -0.0, 1e-25, -1e25, 1e25, kTiny};
            for (int i = 0; i < n; ++i) levels.push_back(i + 0.5);
            for (const double level : levels) {
                for (const int direction : {0, 2}) {
                    for (const int mode : {0, 2}) {
                        Outcome o{0, kUntouched, kUntouched};
                        o.status = QAL_FindX_at_YThreshold(x.data(), y.data(), n, 0, direction, mode,
                                                           static_cast<float>(level), 0, &o.x, &o.y);
                        outcomes.push_back(o);
                    }
                }
            }
            for (const double first : {y[0], kNaN, 1e25, -0.0}) {
                for (const auto search : {QAL_Calc_AbsMaximum, QAL_Calc_AbsMinimum}) {
                    V ties = y;
                    ties[0] = first;
                    ties[static_cast<std::size_t>(n - 1)] = ties[static_cast<std::size_t>(n / 2)];
                    Outcome o{0, kUntouched, kUntouched};
                    o.status = search(x.data(), ties.data(), n, &o.x, &o.y);
                    outcomes.push_back(o);
                    o.status = search(x.data(), ties.data(), n, &o.x, &ties[static_cast<std::size_t>(n / 3)]);
                    outcomes.push_back({o.status, o.x, ties[static_cast<std::size_t>(n / 3)]});
                    // Both outputs in one cell: the search compares with what x last left there.
                    double shared = kUntouched;
                    o.status = search(x.data(), ties.data(), n, &shared, &shared);
                    outcomes.push_back({o.status, shared, shared});
                }
            }
        }
    });
}

}  // namespace
}  // namespace qal::test
