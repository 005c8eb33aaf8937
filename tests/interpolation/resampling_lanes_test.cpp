#include <cstring>
#include <limits>
#include <vector>

#include "qal/qal.h"
#include "support/instruction_sets.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using F = std::vector<float>;
using Limits = std::numeric_limits<float>;

struct Curve { F x, y; };

// Strictly ascending knots with 0 inside a cell and ordinates of every magnitude; a knot at 0
// and a gap of 1e-26 (a zero-width spline interval); an equal pair, descending and unordered
// knots (no cells); a NaN ordinate; three knots, where location ends on n - 1 inside the
// data; knots near 1e6, where the points fall on a grid of 1/16 with repeats and knots
// inside runs, and the segment lines disagree visibly at a knot.
const Curve kCurves[] = {
    {{-5, -3.5f, -2.25f, -1, -0.375f, 0.5f, 1.25f, 2, 3.75f, 5}, {1, -2, 1e25f, 0.5f, -0.0f, 3, 1e-25f, Limits::denorm_min(), 4, -1}},
    {{-2, -1, 0, 1e-26f, 1, 2}, {1, 2, 3, 4, 5, 6}},
    {{-2, -1, -1, 0, 1, 2}, {1, 2, 3, 4, 5, 6}},
    {{2, 1, 0, -1, -2}, {1, 3, 2, 5, 4}},
    {{-2, -1, 0, 1, 2}, {1, Limits::quiet_NaN(), 2, 5, 4}},
    {{0, 1, 2}, {0, 1, 0}},
    {{0, 2, 1, 3, 4}, {1, 3, 2, 5, 4}},
    {{1000000, 1000001, 1000002.5f, 1000004}, {1, 5, 2, 7}},
};

// A dense ascending run over the knots and beyond (odd, so that vectors leave a rest), the
// knots themselves, the special values, then the same run descending.
F HardPoints(const F& x) {
    const float from = x.front() - 0.5f, span = x.back() - x.front() + 1.0f;
    F points;
    for (int i = 0; i < 301; ++i) points.push_back(from + span * static_cast<float>(i) / 300.0f);
    points.insert(points.end(), x.begin(), x.end());
    for (float v : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 0.0f, -0.0f, Limits::denorm_min(),
                    -Limits::denorm_min(), 1e-25f, -1e-25f, 1e25f, -1e25f}) {
        points.push_back(v);
    }
    for (int i = 0; i < 301; ++i) points.push_back(from + span - span * static_cast<float>(i) / 300.0f);
    return points;
}

// Where yNew stands: an array of its own, on xNew, or one element after it.
enum Layout { kSeparate, kOnPoints, kShifted };

struct Outcome { int status; F buffer; };

// xNew at the start of the buffer, yNew after it or over it; `oneCallPerPoint` gives what one
// QAL_Interpol per point gives, all points read before the first store.
Outcome Resample(const Curve& c, int option, Layout layout, bool oneCallPerPoint) {
    const F points = HardPoints(c.x);
    const int count = static_cast<int>(points.size()), n = static_cast<int>(c.x.size());
    F buffer(points.size() * 2 + 1, -7.0f);
    std::memcpy(buffer.data(), points.data(), points.size() * sizeof(float));
    float* const yNew = buffer.data() + (layout == kSeparate ? count : layout == kShifted ? 1 : 0);
    if (!oneCallPerPoint) return {QAL_InterpolFloatArrays(c.x.data(), c.y.data(), n, buffer.data(), yNew, count, option),
                                  buffer};
    const std::vector<double> x(c.x.begin(), c.x.end()), y(c.y.begin(), c.y.end());
    int status = QAL_OK;
    for (int i = 0; i < count; ++i) {
        double value = 0.0;
        status = QAL_Interpol(&value, static_cast<double>(points[static_cast<std::size_t>(i)]), x.data(), y.data(),
                              nullptr, n, option);
        if (status == QAL_OK) yNew[i] = static_cast<float>(value);
    }
    return {status, buffer};
}

// The cells of the knots, and the lanes that run through them, give at every level exactly
// what one call per point gives: values, untouched refused points, and the last status.
TEST(ResamplingLanes, EveryLevelGivesOneCallPerPoint) {
    for (const Curve& c : kCurves) {
        for (const int option : {QAL_INTERPOL_SPLINE, QAL_INTERPOL_SEGMENT}) {
            for (const Layout layout : {kSeparate, kOnPoints, kShifted}) {
                const Outcome expected = Resample(c, option, layout, true);
                for (const InstructionSet level : OfferedInstructionSets()) {
                    const ForcedInstructionSet forced(level);
                    const Outcome actual = Resample(c, option, layout, false);
                    const auto row = [&] {
                        return ::testing::Message() << Name(level) << ", curve " << &c - kCurves << ", option "
                                                    << option << ", layout " << layout;
                    };
                    EXPECT_EQ(expected.status, actual.status) << row();
                    for (std::size_t i = 0; i < expected.buffer.size(); ++i) {
                        ASSERT_TRUE(SameBits(expected.buffer[i], actual.buffer[i])) << row() << ", element " << i;
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace qal::test
