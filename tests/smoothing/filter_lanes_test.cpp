#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "qal/qal.h"
#include "support/instruction_sets.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

constexpr int kAverage = QAL_FILTER_AVERAGE, kTriangle = QAL_FILTER_TRIANGLE, kGolay = QAL_FILTER_SAVITZKY_GOLAY;
constexpr int kSeparate = 1 << 20;  // a `shift` that stands for an array of its own
constexpr int kPad = 300;           // room on both sides for the shifted outputs

// Samples of every magnitude with zeros of both signs, subnormals and the limits +-1e-25 and
// +-1e25 among them; a stretch of -0.0 (whose average stays -0.0) from n / 3; a NaN and both
// infinities from 2n / 3, so that outputs that reach them and outputs that do not are
// both compared.
template <class T>
std::vector<T> HardSamples(int n) {
    using Limits = std::numeric_limits<T>;
    const T hard[] = {T(0), -T(0), Limits::denorm_min(), -3 * Limits::denorm_min(), Limits::min(),
                      T(1e-25), T(-1e-25), T(1e25), T(-1e25)};
    std::vector<T> samples;
    std::uint32_t state = 2718u;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        const double unit = static_cast<double>(state >> 8) / 16777216.0 - 0.5;
        const T plain = static_cast<T>(std::ldexp(unit, static_cast<int>(state % 41u) - 20));
        samples.push_back(state % 7u == 0 ? hard[(state >> 4) % 9u] : plain);
    }
    for (int i = n / 3; i < n / 3 + 100 && i < n; ++i) samples[static_cast<std::size_t>(i)] = -T(0);
    const T specials[] = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()};
    for (int k = 0; k < 3 && 2 * n / 3 + k < n; ++k) samples[static_cast<std::size_t>(2 * n / 3 + k)] = specials[k];
    return samples;
}

struct Row { int n, first, last, kind, width, degree, shift; };

// Each level against the scalar path, to the bit, over the whole buffer: the filtered range,
// what it must leave, and what a shifted output overwrote among the samples.
template <class T>
void ExpectEveryLevelMatchesScalar(int (*filter)(const T*, T*, int, int, int, int, int, int),
                                   const std::vector<Row>& rows) {
    for (const Row& r : rows) {
        const auto run = [&](InstructionSet level) {
            const ForcedInstructionSet forced(level);
            const std::vector<T> samples = HardSamples<T>(r.n);
            std::vector<T> buffer(static_cast<std::size_t>(r.n + 2 * kPad), static_cast<T>(kUntouched));
            std::copy(samples.begin(), samples.end(), buffer.begin() + kPad);
            std::vector<T> separate(static_cast<std::size_t>(r.n), static_cast<T>(kUntouched));
            T* const in = buffer.data() + kPad;
            T* const out = r.shift == kSeparate ? separate.data() : in + r.shift;
            EXPECT_EQ(QAL_OK, filter(in, out, r.n, r.first, r.last, r.kind, r.width, r.degree));
            buffer.insert(buffer.end(), separate.begin(), separate.end());
            return buffer;
        };
        const std::vector<T> expected = run(InstructionSet::kScalar);
        for (const InstructionSet level : OfferedInstructionSets()) {
            const std::vector<T> actual = run(level);
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_TRUE(SameBits(expected[i], actual[i]))
                    << Name(level) << ", row " << &r - rows.data() << ", element " << i;
            }
        }
    }
}

// Interiors that fill whole blocks, single vectors and leave a rest; ranges that start or end
// inside the interior or never reach it (width above n); in place, an output shifted onto
// the samples it reads (one at a time), and one shifted clear of them in the same buffer.
TEST(FilterLanes, EveryLevelGivesTheScalarBits) {
    ExpectEveryLevelMatchesScalar<double>(QAL_FilterArray, {
        {1000, 0, 999, kGolay, 299, 2, kSeparate}, {997, 3, 990, kGolay, 51, 4, kSeparate},
        {301, -5, 400, kTriangle, 7, 0, kSeparate}, {100, 40, 60, kAverage, 9, 0, kSeparate},
        {40, 0, 39, kGolay, 31, 6, kSeparate}, {37, 0, 36, kGolay, 51, 2, kSeparate},
        {500, 0, 499, kGolay, 7, 2, 0}, {500, 0, 499, kGolay, 11, 2, 3}, {500, 0, 499, kAverage, 11, 0, -100},
        {500, 0, 100, kGolay, 25, 2, -250},
    });
    ExpectEveryLevelMatchesScalar<float>(QAL_FilterFloatArray, {
        {1000, 0, 999, kGolay, 99, 2, kSeparate}, {333, 2, 330, kGolay, 51, 4, kSeparate},
        {301, 0, 300, kTriangle, 7, 0, kSeparate}, {100, 40, 60, kAverage, 3, 0, kSeparate},
        {500, 0, 499, kGolay, 7, 2, 0}, {500, 0, 499, kGolay, 11, 2, 3}, {500, 0, 100, kAverage, 25, 0, -250},
    });
}

}  // namespace
}  // namespace qal::test
