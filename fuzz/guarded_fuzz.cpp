// The guarded scalars against their tables of thresholds and substitutes (QAL_ and k_Qal
// sets, every threshold with its neighbours and float images), QAL_mult's double product
// and clamp, the repairs of k_Qal, and QAL_CalcLog with its modes, its count 0 and the
// array it hands out also on QAL_ERR_LOG_SEQUENCE.
#include "qal/qal_classes.h"
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

double ModelPow(double x, double y) {
    if (x > 1e25 && y == 0) return 1.0;
    if (-1e25 > x && y == 0) return -1.0;
    if (x == 0 && y == 0) return 1e25;
    if (0 > x && std::fmod(y, 1.0) != 0) return 0.0;
    if (y > 1 && std::fabs(x) > std::pow(1e25, 1.0 / y)) return 1e25;
    if (-1 > y && std::fabs(x) > std::pow(1e25, 1.0 / std::fabs(y))) return 0.0;
    if (1 > x && -1 > y && 1.0 / x > std::pow(1e25, 1.0 / std::fabs(y))) return 1e25;
    return std::pow(x, y);
}

double ModelPower(double x, double y) {
    if (1e-25 > x && 1e-25 > y) return 1.0;
    if (1e-25 > x) return 0.0;
    if (y > -1e-25 && 1e-25 > y) return 1.0;
    k_Qal::InfRepair(x);
    k_Qal::InfRepair(y);
    const double p = std::log(x) * y, limit = std::log(1e25);
    if (-limit > p) return 1e-25;
    if (p > limit) return 1e25;
    return std::pow(x, y);
}

void Scalars(Input& in) {
    const double x = in.Real(), y = in.Real();
    QAL_FUZZ_CHECK(Same(x > 30 ? 1e25 : std::exp(x), QAL_exp(x)));
    QAL_FUZZ_CHECK(Same(1e-25 > x ? -30.0 : x > 1e25 ? 30.0 : std::log(x), QAL_log(x)));
    QAL_FUZZ_CHECK(Same(1e-25 > x ? -30.0 : x > 1e25 ? 30.0 : std::log10(x), QAL_log10(x)));
    QAL_FUZZ_CHECK(Same(x > 30 ? 1e25 : -std::log10(1e25) > x ? 0.0 : std::pow(10.0, x), QAL_pow10(x)));
    QAL_FUZZ_CHECK(Same(ModelPow(x, y), QAL_pow(x, y)));
    const double rounded = static_cast<double>(static_cast<float>(x));
    QAL_FUZZ_CHECK(Same(rounded < 0 ? -std::sqrt(-rounded) : std::sqrt(rounded), QAL_sqrt(x)));
    const float a = in.RealF(), b = in.RealF();
    const double product = static_cast<double>(a) * static_cast<double>(b);
    const float clamp = 1e25f;
    QAL_FUZZ_CHECK(Same(product > 1e25 ? clamp : -1e25 > product ? -clamp : static_cast<float>(product), QAL_mult(a, b)));

    QAL_FUZZ_CHECK(Same(ModelPower(x, y), k_Qal::Power(x, y)));
    QAL_FUZZ_CHECK(Same(0 >= x ? -1e25 : std::log(x), k_Qal::Log(x)));
    QAL_FUZZ_CHECK(Same(0 > x ? -std::sqrt(-x) : std::sqrt(x), k_Qal::Sqrt(x)));

    double d = x;
    const bool dInf = k_Qal::InfRepair(d);
    QAL_FUZZ_CHECK(dInf == (x > 1e25 || -1e25 > x) && Same(x > 1e25 ? 1e25 : -1e25 > x ? -1e25 : x, d));
    QAL_FUZZ_CHECK(!k_Qal::InfRepair(d));  // a repaired value passes again unchanged
    float f = a;
    const bool fInf = k_Qal::InfRepair(f);
    const double fa = static_cast<double>(a);
    QAL_FUZZ_CHECK(fInf == (fa > 1e25 || -1e25 > fa) && Same(fa > 1e25 ? clamp : -1e25 > fa ? -clamp : a, f));
    QAL_FUZZ_CHECK(!k_Qal::InfRepair(f));
    d = x;
    const bool dZero = k_Qal::ZeroRepair(d);
    QAL_FUZZ_CHECK(dZero == (1e-25 > std::fabs(x)) && Same(dZero ? (0 > x ? -1e-25 : 1e-25) : x, d));
    QAL_FUZZ_CHECK(!k_Qal::ZeroRepair(d));
    f = a;
    const bool fZero = k_Qal::ZeroRepair(f);
    const float tiny = 1e-25f;
    QAL_FUZZ_CHECK(fZero == (1e-25 > std::fabs(fa)) && Same(fZero ? (0 > fa ? -tiny : tiny) : a, f));
    QAL_FUZZ_CHECK(!k_Qal::ZeroRepair(f));
}

void CalcLog(Input& in) {
    const int n = in.Count();
    const std::vector<float> vs = Ordinates<float>(in, n);
    Guarded<float> source(vs);
    const short mode = static_cast<short>(in.Option(0, 3));
    const bool nullSource = in.Pick(12) == 0, nullTarget = in.Pick(24) == 0;
    const int failAt = FaultChoice(in);
    AllocationScope memory(failAt);
    float* marker = reinterpret_cast<float*>(&marker);
    float* target = marker;
    const int status = QAL_CalcLog(nullTarget ? nullptr : &target, nullSource ? nullptr : source.data(), n, mode);
    QAL_FUZZ_CHECK(source.Unchanged(vs) && source.GuardsIntact());
    if (n == 0) {
        QAL_FUZZ_CHECK(status == QAL_OK && target == marker && qal::detail::testing::allocationsMade() == 0);
        return;
    }
    if (nullSource || nullTarget) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && target == marker);
        return;
    }
    if (n < 0 || AllocationScope::Failed(failAt)) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && target == nullptr);
        return;
    }
    // The logarithms up to the first that breaks the demanded order.
    float previous = -30.0f;
    int descents = 0, expected = QAL_OK, last = n - 1;
    for (int i = 0; i < n; ++i) {
        const float value = static_cast<float>(QAL_log10(static_cast<double>(vs[i])));
        QAL_FUZZ_CHECK(Same(value, target[i]));
        if ((mode == 1 && previous > value && ++descents > 1) || (mode == 2 && previous >= value)) {
            expected = QAL_ERR_LOG_SEQUENCE;
            last = i;
            break;
        }
        previous = value;
    }
    QAL_FUZZ_CHECK(status == expected && last >= 0);
    QAL_ReleaseArray(target);
    QAL_ReleaseArray(nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    if (in.Flag()) {
        AllocationScope memory;
        Scalars(in);
    } else {
        CalcLog(in);
    }
    return 0;
}
