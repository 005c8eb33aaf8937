// QAL_CalcBoundaries against its two passes in float, every mode and refused ones, a null
// spread, and upper sharing its storage with base or spread (the lower pass then reads what
// the upper pass wrote).
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

// One boundary array by its mode; false when the mode is refused.
bool Pass(int mode, float value, bool upper, const std::vector<float>& base, const std::vector<float>* spread,
          std::vector<float>& out) {
    if (mode < 1 || mode > 3 || (mode == 1 && spread == nullptr)) return false;
    const float factor = upper ? value / 100.0f + 1.0f : 1.0f - value / 100.0f;
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (mode == 1) out[i] = upper ? value * (*spread)[i] + base[i] : base[i] - value * (*spread)[i];
        if (mode == 2) out[i] = factor * base[i];
        if (mode == 3) out[i] = upper ? value + base[i] : base[i] - value;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    const int n = in.Count();
    const std::vector<float> b = Ordinates<float>(in, n), s = Ordinates<float>(in, n);
    const std::vector<float> lo0 = Ordinates<float>(in, n), up0 = Ordinates<float>(in, n);
    const int upperMode = in.Option(1, 4), lowerMode = in.Option(1, 4);
    const float upperValue = in.RealF(), lowerValue = in.RealF();
    const int nulls = in.Pick(20);
    const int share = in.Pick(4);  // 1: upper is base, 2: upper is spread
    Guarded<float> base(b), spread(s), lower(lo0), upper(up0);
    float* const up = share == 1 ? base.data() : share == 2 ? spread.data() : upper.data();
    const int status = QAL_CalcBoundaries(nulls == 1 ? nullptr : base.data(), nulls == 2 ? nullptr : spread.data(),
                                          nulls == 3 ? nullptr : lower.data(), nulls == 4 ? nullptr : up, n, upperMode,
                                          upperValue, lowerMode, lowerValue);
    QAL_FUZZ_CHECK(base.GuardsIntact() && spread.GuardsIntact() && lower.GuardsIntact() && upper.GuardsIntact());
    if (nulls == 1 || nulls == 3 || nulls == 4 || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && base.Unchanged(b) && spread.Unchanged(s) && lower.Unchanged(lo0) &&
                       upper.Unchanged(up0));
        return 0;
    }
    std::vector<float> mb = b, ms = s, ml = lo0, mu = up0;
    std::vector<float>& target = share == 1 ? mb : share == 2 ? ms : mu;
    const std::vector<float>* spreadIn = nulls == 2 ? nullptr : &ms;
    std::vector<float> written(n);
    const bool upperDone = Pass(upperMode, upperValue, true, mb, spreadIn, written);
    if (upperDone) target = written;
    const bool lowerDone = Pass(lowerMode, lowerValue, false, mb, spreadIn, ml);
    QAL_FUZZ_CHECK(status == (upperDone && lowerDone ? QAL_OK : QAL_ERR_PARAMETER));
    QAL_FUZZ_CHECK(base.Matches(mb) && spread.Matches(ms) && lower.Matches(ml) && upper.Matches(mu));
    return 0;
}
