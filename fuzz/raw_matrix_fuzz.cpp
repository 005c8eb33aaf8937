// QAL_NewMatrix and QAL_DeleteMatrix over every kind of dimension (below 1, a product beyond
// INT_MAX, a failing table or block), QAL_F2D and QAL_D2F with their refusals and the exact
// round trip, QAL_Mt_Swap, QAL_IsEven and QAL_IsOdd.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

void Matrix(Input& in) {
    const int rows = in.Flag() ? in.Count() : in.Int(), cols = in.Flag() ? in.Count() : in.Int();
    int failAt = FaultChoice(in);
    const long long elements = static_cast<long long>(rows) * cols;
    // A grantable request beyond what the test can afford is met with that request failing.
    const auto grantable = [](long long count) { return count > (1LL << 24) && count < (1LL << 29); };
    if (rows >= 1 && grantable(rows)) {
        failAt = 1;
    } else if (rows >= 1 && cols >= 1 && grantable(elements) && failAt != 1) {
        failAt = 2;
    }
    AllocationScope memory(failAt);
    double** const m = QAL_NewMatrix(rows, cols);
    // From 2^29 elements on the byte size saturates and fails.
    if (rows < 1 || cols < 1 || elements >= (1LL << 29) || AllocationScope::Failed(failAt)) {
        if (m == nullptr) {
            QAL_FUZZ_CHECK(qal::detail::testing::allocationsLive() == 0);
            return;
        }
    }
    QAL_FUZZ_CHECK(m != nullptr && rows >= 1 && cols >= 1 && elements < (1LL << 29));
    // One block, row after row.
    for (int i = 0; i < rows; ++i) QAL_FUZZ_CHECK(m[i] == m[0] + static_cast<std::ptrdiff_t>(i) * cols);
    m[rows - 1][cols - 1] = 1.0;
    m[0][0] = 2.0;
    QAL_DeleteMatrix(m, in.Int(), in.Int());  // the dimensions are not used
    QAL_DeleteMatrix(nullptr, rows, cols);
}

void Conversion(Input& in) {
    int n = in.Count();
    const std::vector<float> values = Ordinates<float>(in, n);
    Guarded<float> source(values), target(n);
    const int nulls = in.Pick(16);
    const int failAt = FaultChoice(in);
    AllocationScope memory(failAt);
    double* wide = reinterpret_cast<double*>(&wide);  // a value the refusals must leave
    double* const untouched = wide;
    const int status = QAL_F2D(nulls == 1 ? nullptr : source.data(), n, nulls == 2 ? nullptr : &wide);
    QAL_FUZZ_CHECK(source.Unchanged(values) && source.GuardsIntact());
    if (nulls == 1 || nulls == 2 || n < 1) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && wide == untouched);
        wide = nullptr;
        QAL_FUZZ_CHECK(QAL_D2F(target.data(), n, &wide) == QAL_ERR_MEMORY && target.AllSentinel());
        return;
    }
    if (AllocationScope::Failed(failAt)) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && wide == nullptr);
        QAL_FUZZ_CHECK(QAL_D2F(target.data(), n, &wide) == QAL_ERR_MEMORY && target.AllSentinel());
        return;
    }
    QAL_FUZZ_CHECK(status == QAL_OK && wide != nullptr);
    for (int i = 0; i < n; ++i) QAL_FUZZ_CHECK(Bits(wide[i]) == Bits(static_cast<double>(values[i])));
    // Refusals release nothing; then the narrowing gives the same bits back and releases.
    QAL_FUZZ_CHECK(QAL_D2F(nullptr, n, &wide) == QAL_ERR_MEMORY);
    QAL_FUZZ_CHECK(QAL_D2F(target.data(), n, nullptr) == QAL_ERR_MEMORY);
    QAL_FUZZ_CHECK(QAL_D2F(target.data(), 0, &wide) == QAL_ERR_MEMORY && target.AllSentinel());
    const int last = in.Pick(n) + 1;  // a shorter narrowing is allowed too
    if (in.Flag()) wide[last - 1] = in.Real();
    const double stored = wide[last - 1];
    QAL_FUZZ_CHECK(QAL_D2F(target.data(), last, &wide) == QAL_OK);
    for (int i = 0; i < last - 1; ++i) QAL_FUZZ_CHECK(Bits(target[i]) == Bits(values[i]));
    QAL_FUZZ_CHECK(Same(static_cast<float>(stored), target[last - 1]) && target.GuardsIntact());
    for (int i = last; i < n; ++i) QAL_FUZZ_CHECK(IsSentinel(target[i]));
    double* empty = nullptr;
    QAL_FUZZ_CHECK(QAL_D2F(target.data(), n, &empty) == QAL_ERR_MEMORY);
}

void Small(Input& in) {
    double a = in.Real(), b = in.Real();
    const double a0 = a, b0 = b;
    QAL_Mt_Swap(&a, &b);
    QAL_FUZZ_CHECK(Bits(a) == Bits(b0) && Bits(b) == Bits(a0));
    const int v = in.Flag() ? in.Count() : in.Int();
    const unsigned low = static_cast<unsigned>(v) & 1u;
    QAL_FUZZ_CHECK(QAL_IsEven(v) == (low == 0) && QAL_IsOdd(v) == (low == 1));
    InitQalLibExtDLL();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    switch (in.Pick(3)) {
        case 0: Matrix(in); break;
        case 1: Conversion(in); break;
        default: Small(in); break;
    }
    return 0;
}
