// Golden hashes: one FNV-1a hash of every output bit and status per family, and one over
// all, from a fixed seeded set of calls (golden_calls.cpp).
//
//   golden_hash                          the hashes
//   golden_hash --values                 per case its values where exp, log, log10 or pow
//                                        enter, else its hash: the form of expected_values.txt
//   golden_hash --check HASHES VALUES [--detail]
//       compares with the checked-in hashes; for a differing family it compares case by
//       case with the checked-in values and says how many cases differ, whether only
//       cases that pass through exp, log, log10 or pow do, and by how many ULPs; --detail
//       lists every differing value. Exit status 0 when every family matches (or matches
//       the alternative that HASHES records for this platform's C library), else 1.
//       Built with QAL_GOLDEN_EVERY_INSTRUCTION_SET (and linked to the test build), it checks
//       once per instruction set that the processor offers, each forced in turn.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "golden/golden_record.h"
#if defined(QAL_GOLDEN_EVERY_INSTRUCTION_SET)
#include "support/instruction_sets.h"  // the test build's hook: linked to qal_internal
#endif

namespace qal::golden {
namespace {

// The name under which HASHES may hold a family's alternative hash: only for a C library
// that rounds exp, log, log10 or pow differently from the reference platform's.
#if defined(_WIN32)
constexpr const char* kPlatform = "windows";
#else
constexpr const char* kPlatform = "";
#endif

std::string hex(std::uint64_t value, int digits) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out(static_cast<std::size_t>(digits), '0');
    for (int i = digits - 1; i >= 0; --i, value >>= 4) out[static_cast<std::size_t>(i)] = kDigits[value & 0xFu];
    return out;
}

int digitsOf(char kind) { return kind == 'd' ? 16 : (kind == 'b' ? 1 : 8); }

std::uint64_t overallHash(const std::vector<Family>& families) {
    std::uint64_t hash = kFnvOffset;
    for (const Family& f : families) {
        for (char c : f.name) fnv1a(hash, static_cast<unsigned char>(c));
        for (int b = 0; b < 8; ++b) fnv1a(hash, static_cast<unsigned>(f.hash >> (8 * b)));
    }
    return hash;
}

// Family names hold spaces; the files write them with '_' so that a line splits on blanks.
std::string key(std::string name) {
    for (char& c : name)
        if (c == ' ') c = '_';
    return name;
}

void printHashes(const std::vector<Family>& families) {
    for (const Family& f : families) std::printf("%-20s %s\n", key(f.name).c_str(), hex(f.hash, 16).c_str());
    std::printf("%-20s %s\n", "overall", hex(overallHash(families), 16).c_str());
}

std::uint32_t caseHash(const Case& c) {
    std::uint64_t hash = kFnvOffset;
    for (const Item& item : c.items) {
        fnv1a(hash, static_cast<unsigned char>(item.kind));
        for (int b = 0; b < 8; ++b) fnv1a(hash, static_cast<unsigned>(item.bits >> (8 * b)));
    }
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

// One line per case: family, case number, then for a case that passes through the
// platform's exp, log, log10 or pow the kind and bits of each value (so that a difference
// can be measured in ULPs), for any other case only a hash of them (enough to name it).
void printValues(const std::vector<Family>& families) {
    for (const Family& f : families) {
        for (std::size_t c = 0; c < f.cases.size(); ++c) {
            std::string line = key(f.name) + " " + std::to_string(c);
            if (f.cases[c].libm) {
                for (const Item& item : f.cases[c].items) line += " " + (item.kind + hex(item.bits, digitsOf(item.kind)));
            } else {
                line += " #" + hex(caseHash(f.cases[c]), 8);
            }
            std::puts(line.c_str());
        }
    }
}

// Distance in units in the last place: the bit patterns as one ordered scale of integers.
std::uint64_t ulpDistance(const Item& a, const Item& b) {
    const int bits = a.kind == 'd' ? 64 : 32;
    const std::uint64_t signBit = std::uint64_t{1} << (bits - 1);
    const auto ordered = [&](std::uint64_t v) -> std::uint64_t {  // 2^63 stands for +0 and -0
        return (v & signBit) != 0 ? signBit - (v & (signBit - 1)) : signBit + v;
    };
    const std::uint64_t x = ordered(a.bits), y = ordered(b.bits);
    return x > y ? x - y : y - x;
}

bool isNaN(const Item& item) {
    return (item.kind == 'd' && item.bits == 0x7FF8000000000000u) || (item.kind == 'f' && item.bits == 0x7FC00000u);
}

// A case as recorded on the reference platform: its values, or only its hash.
struct ExpectedCase {
    std::vector<Item> items;
    std::string hash;
};

struct Expected {
    std::map<std::string, std::string> hashes;                       // family (or family@platform) -> hash
    std::map<std::string, std::vector<ExpectedCase>> cases;          // family -> cases in order
};

bool readExpected(const char* hashesPath, const char* valuesPath, Expected& out) {
    std::ifstream hashes(hashesPath), values(valuesPath);
    if (!hashes || !values) {
        std::fprintf(stderr, "golden_hash: cannot read %s or %s\n", hashesPath, valuesPath);
        return false;
    }
    std::string line;
    while (std::getline(hashes, line)) {
        std::istringstream words(line);
        std::string name, hash;
        if (line.empty() || line[0] == '#' || !(words >> name >> hash)) continue;
        out.hashes[name] = hash;
    }
    while (std::getline(values, line)) {
        std::istringstream words(line);
        std::string family, number, word;
        if (!(words >> family >> number)) continue;
        ExpectedCase expectedCase;
        while (words >> word) {
            if (word[0] == '#')
                expectedCase.hash = word.substr(1);
            else
                expectedCase.items.push_back(Item{word[0], std::stoull(word.substr(1), nullptr, 16)});
        }
        out.cases[family].push_back(std::move(expectedCase));
    }
    return true;
}

// Compares one family case by case and prints what differs: by name where no platform
// library function enters, else with the distance in ULPs.
void explainDifference(const Family& f, const std::vector<ExpectedCase>& expected, bool detail) {
    if (expected.size() != f.cases.size()) {
        std::printf("    %s cases recorded, %s expected: the calls changed, regenerate the expected files\n",
                    std::to_string(f.cases.size()).c_str(), std::to_string(expected.size()).c_str());
        return;
    }
    int libmCases = 0, otherCases = 0;
    std::uint64_t maxUlp = 0;
    bool unmeasurable = false;
    for (std::size_t c = 0; c < f.cases.size(); ++c) {
        const Case& got = f.cases[c];
        const std::vector<Item>& want = expected[c].items;
        if (!got.libm) {
            if (hex(caseHash(got), 8) == expected[c].hash) continue;
            ++otherCases;
            std::printf("    differs: %s\n", got.label.c_str());
            if (detail)
                for (const Item& item : got.items)
                    std::printf("        %c%s\n", item.kind, hex(item.bits, digitsOf(item.kind)).c_str());
            continue;
        }
        int differing = 0;
        std::uint64_t caseUlp = 0;
        if (got.items.size() != want.size()) unmeasurable = true;
        for (std::size_t i = 0; i < got.items.size() && i < want.size(); ++i) {
            const Item &a = want[i], &b = got.items[i];
            if (a.kind == b.kind && a.bits == b.bits) continue;
            ++differing;
            const bool floating = a.kind == b.kind && (a.kind == 'd' || a.kind == 'f') && !isNaN(a) && !isNaN(b);
            const std::uint64_t ulp = floating ? ulpDistance(a, b) : 0;
            if (ulp > caseUlp) caseUlp = ulp;
            if (!floating) unmeasurable = true;
            if (detail)
                std::printf("    %-40s value %3d: expected %c%s got %c%s%s\n", got.label.c_str(), static_cast<int>(i), a.kind,
                            hex(a.bits, digitsOf(a.kind)).c_str(), b.kind, hex(b.bits, digitsOf(b.kind)).c_str(),
                            floating ? (" (" + std::to_string(ulp) + " ULP)").c_str() : "");
        }
        if (differing == 0 && got.items.size() == want.size()) continue;
        ++libmCases;
        if (caseUlp > maxUlp) maxUlp = caseUlp;
        std::printf("    %s: %d values differ, at most %s ULP\n", got.label.c_str(), differing,
                    std::to_string(caseUlp).c_str());
    }
    if (libmCases > 0)
        std::printf("    %d of %d cases differ where exp, log, log10 or pow enter: at most %s ULP%s\n", libmCases,
                    static_cast<int>(f.cases.size()), std::to_string(maxUlp).c_str(),
                    unmeasurable ? ", and some status, count or NaN differs too" : "");
    if (otherCases > 0)
        std::printf("    %d of %d cases differ where no platform library function enters: a defect\n", otherCases,
                    static_cast<int>(f.cases.size()));
}

int check(const std::vector<Family>& families, const char* hashesPath, const char* valuesPath, bool detail) {
    Expected expected;
    if (!readExpected(hashesPath, valuesPath, expected)) return 2;
    int failures = 0;
    for (const Family& f : families) {
        const std::string name = key(f.name), got = hex(f.hash, 16);
        const auto want = expected.hashes.find(name);
        if (want != expected.hashes.end() && want->second == got) {
            std::printf("%-20s %s  same\n", name.c_str(), got.c_str());
            continue;
        }
        const auto alternative = expected.hashes.find(name + "@" + kPlatform);
        const bool accepted = *kPlatform != '\0' && alternative != expected.hashes.end() && alternative->second == got;
        std::printf("%-20s %s  %s (expected %s)\n", name.c_str(), got.c_str(),
                    accepted ? "differs as recorded for this platform's C library" : "DIFFERS",
                    want == expected.hashes.end() ? "nothing" : want->second.c_str());
        explainDifference(f, expected.cases[name], detail);
        if (!accepted) ++failures;
    }
    const std::string overall = hex(overallHash(families), 16);
    const auto want = expected.hashes.find("overall");
    std::printf("%-20s %s  %s\n", "overall", overall.c_str(),
                want != expected.hashes.end() && want->second == overall ? "same" : "differs");
    if (failures > 0) std::printf("%d of %d families differ\n", failures, static_cast<int>(families.size()));
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace qal::golden

int main(int argc, char** argv) {
    using namespace qal::golden;
    if ((argc == 4 || argc == 5) && std::strcmp(argv[1], "--check") == 0) {
        const bool detail = argc == 5 && std::strcmp(argv[4], "--detail") == 0;
#if defined(QAL_GOLDEN_EVERY_INSTRUCTION_SET)
        // The same calls at every level this processor offers, forced one after the other:
        // every dispatched path must give the bits of the scalar one.
        int worst = 0;
        for (const qal::test::InstructionSet level : qal::test::OfferedInstructionSets()) {
            const qal::test::ForcedInstructionSet forced(level);
            std::printf("--- instruction set %s\n", qal::test::Name(forced.held()));
            Recorder recorder;
            recordAll(recorder);
            const int status = check(recorder.families(), argv[2], argv[3], detail);
            if (status > worst) worst = status;
        }
        return worst;
#else
        Recorder recorder;
        recordAll(recorder);
        return check(recorder.families(), argv[2], argv[3], detail);
#endif
    }
    Recorder recorder;
    recordAll(recorder);
    if (argc == 1) {
        printHashes(recorder.families());
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--values") == 0) {
        printValues(recorder.families());
        return 0;
    }
    std::fprintf(stderr, "usage: golden_hash [--values | --check HASHES VALUES [--detail]]\n");
    return 2;
}
