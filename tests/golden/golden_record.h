// The golden-hash program's recording side: a seeded input generator that every platform
// runs identically, and a recorder that hashes every output bit per family.
#ifndef QAL_TESTS_GOLDEN_GOLDEN_RECORD_H
#define QAL_TESTS_GOLDEN_GOLDEN_RECORD_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace qal::golden {

// splitmix64: integer steps only, so the stream is the same on every platform and
// standard library (unlike std:: distributions). Doubles come from 53 random bits scaled
// by a power of two, and every later step is one rounded operation, so the inputs match
// to the bit wherever multiply-add is not fused.
class Rng {
public:
    explicit Rng(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
    double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }  // [0, 1)
    double uniform(double lo, double hi) { return lo + (hi - lo) * unit(); }
    float uniformF(double lo, double hi) { return static_cast<float>(uniform(lo, hi)); }
    // A magnitude anywhere in 2^minExp .. 2^(maxExp+1), by exponent: ldexp is exact.
    // (Each draw is its own statement: the order in which a call's arguments are evaluated
    // is unspecified and differs between compilers.)
    double wide(int minExp, int maxExp) {
        const double mantissa = 1.0 + unit();
        return std::ldexp(mantissa, minExp + below(maxExp - minExp + 1));
    }
    double signedWide(int minExp, int maxExp) { return below(2) != 0 ? -wide(minExp, maxExp) : wide(minExp, maxExp); }

private:
    std::uint64_t state_;
};

// One recorded value: its kind ('i' int, 'b' bool, 'f' float, 'd' double) and its bits.
struct Item {
    char kind;
    std::uint64_t bits;
};

// A labelled group of values. `libm` marks a case whose results pass through exp, log,
// log10 or pow, which the C library of each platform rounds in its own way.
struct Case {
    std::string label;
    bool libm;
    std::vector<Item> items;
};

struct Family {
    std::string name;
    std::vector<Case> cases;
    std::uint64_t hash;
};

inline constexpr std::uint64_t kFnvOffset = 0xCBF29CE484222325u;
inline void fnv1a(std::uint64_t& hash, unsigned byte) {
    hash ^= byte & 0xFFu;
    hash *= 0x100000001B3u;
}

// Hashes every value as bytes in little-endian order (so the hash is the same whatever
// the byte order), with one exception: every NaN becomes the one quiet NaN 0x7FF8...
// (float 0x7FC00000). IEEE 754 leaves the sign and payload of a NaN made from non-NaN
// operands to the processor (x86 gives the negative "default NaN", ARM the positive one),
// and which NaN operand's payload survives differs too; the library's results are
// defined as "a NaN", so only that is recorded.
class Recorder {
public:
    void family(const char* name) { families_.push_back(Family{name, {}, kFnvOffset}); }
    void begin(const std::string& label, bool libm = false) {
        families_.back().cases.push_back(Case{label, libm, {}});
    }
    void put(int value) { add('i', static_cast<std::uint32_t>(value), 4); }
    void put(bool value) { add('b', value ? 1u : 0u, 1); }
    void put(float value) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        add('f', std::isnan(value) ? 0x7FC00000u : bits, 4);
    }
    void put(double value) {
        std::uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        add('d', std::isnan(value) ? 0x7FF8000000000000u : bits, 8);
    }
    template <class T>
    void put(const std::vector<T>& values) {
        for (const T& v : values) put(v);
    }
    template <class T>
    void put(const T* values, int n) {
        for (int i = 0; i < n; ++i) put(values[i]);
    }
    const std::vector<Family>& families() const { return families_; }

private:
    void add(char kind, std::uint64_t bits, int bytes) {
        Family& f = families_.back();
        f.cases.back().items.push_back(Item{kind, bits});
        fnv1a(f.hash, static_cast<unsigned char>(kind));
        for (int b = 0; b < bytes; ++b) fnv1a(f.hash, static_cast<unsigned>(bits >> (8 * b)));
    }

    std::vector<Family> families_;
};

// Makes every call of the library, family by family (golden_calls.cpp).
void recordAll(Recorder& r);

}  // namespace qal::golden

#endif  // QAL_TESTS_GOLDEN_GOLDEN_RECORD_H
