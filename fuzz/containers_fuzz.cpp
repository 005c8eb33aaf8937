// The index-tested containers (every bad index raises with itself, the row before the
// column, a failed or oversized block with the element count, negative sizes refused,
// copies owning their blocks, nothing leaked) and the static operations of k_Qal against
// their sums, skips, extremes, fractions and Gauss-Jordan steps.
#include <stdexcept>

#include "qal/qal_classes.h"
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

using Vector = t_QalVector<double>;
constexpr int kNoRaise = INT_MIN + 1;

template <class Call>
int Raised(Call call) {
    try {
        call();
    } catch (const k_QalExceptionIndex& e) {
        return e.m_index;
    }
    return kNoRaise;
}

int Index(Input& in, int size) {
    static const int odd[] = {-1, INT_MIN, INT_MAX, 0};
    const int pick = in.Pick(8);
    return pick < 4 ? odd[pick] : pick == 4 ? size : pick == 5 ? size + 1 : in.Pick(size > 0 ? size : 1);
}

Vector Make(const std::vector<double>& values) {
    Vector v(static_cast<int>(values.size()));
    for (int i = 0; i < v.GetSize(); ++i) v(i) = values[i];
    return v;
}

void Containers(Input& in) {
    const int size = in.Flag() ? in.Pick(40) - 1 : in.Count();
    if (size < 0) {
        bool refused = false;
        try {
            t_QalVector<int> v(size);
        } catch (const std::invalid_argument&) {
            refused = true;
        }
        QAL_FUZZ_CHECK(refused);
        return;
    }
    t_QalVector<int> v(size);
    QAL_FUZZ_CHECK(v.GetSize() == size);
    for (int i = 0; i < size; ++i) QAL_FUZZ_CHECK(v(i) == 0);
    const int index = Index(in, size);
    const bool inside = index >= 0 && index < size;
    QAL_FUZZ_CHECK(Raised([&] { v(index) = 5; }) == (inside ? kNoRaise : index));
    const int grown = size + in.Pick(40);
    v.SetSize(grown);
    QAL_FUZZ_CHECK(v.GetSize() == grown);
    for (int i = size; i < grown; ++i) QAL_FUZZ_CHECK(v(i) == 0);

    const int rows = in.Flag() ? in.Pick(12) - 1 : in.Count(), cols = in.Flag() ? in.Pick(12) - 1 : in.Int();
    const long long count = static_cast<long long>(rows) * cols;
    const int wrapped = static_cast<int>(static_cast<std::uint32_t>(rows) * static_cast<std::uint32_t>(cols));
    // A grantable block too large for the test is met with its allocation failing.
    int failAt = FaultChoice(in) == 0 ? 0 : 1;
    if (rows > 0 && cols > 0 && count > (1 << 22) && count < (1LL << 29)) failAt = 1;
    int raised;
    {
        AllocationScope memory(failAt);
        raised = Raised([&] {
            t_QalMatrix<double> m(rows, cols);
            t_QalMatrix<double> copy(m);
            if (rows > 0 && cols > 0) {
                m(rows - 1, cols - 1) = 1.5;
                copy(0, 0) = 2.5;
                t_QalMatrix<double> moved(std::move(copy));
                QAL_FUZZ_CHECK(Raised([&] { copy(0, 0); }) == 0);  // a moved-from matrix is 0 x 0
                copy = moved;
                QAL_FUZZ_CHECK(copy(0, 0) == moved(0, 0) && &copy(0, 0) != &moved(0, 0));
            }
            const int r = Index(in, rows), c = Index(in, cols);
            const bool rowIn = r >= 0 && r < rows, colIn = c >= 0 && c < cols;
            QAL_FUZZ_CHECK(Raised([&] { m(r, c) = 0.0; }) == (!rowIn ? r : !colIn ? c : kNoRaise));
        });
    }
    const bool granted = rows <= 0 || cols <= 0 || (count < (1LL << 29) && failAt == 0);
    if (granted) {
        QAL_FUZZ_CHECK(raised == kNoRaise);
    } else {
        QAL_FUZZ_CHECK(raised == wrapped);
    }
}

double ModelLinCor(const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>& s) {
    if (x.empty() || y.empty() || x.size() != y.size()) return 0.0;
    double mx = 0, my = 0;
    for (double v : x) mx += v;
    mx /= static_cast<double>(x.size());
    for (double v : y) my += v;
    my /= static_cast<double>(y.size());
    double sxy = 0, sxx = 0, syy = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double dx = (x[i] - mx) / s[i], dy = (y[i] - my) / s[i];
        sxy += dx * dy;
        sxx += dx * dx;
        syy += dy * dy;
    }
    const double rx = std::sqrt(sxx), ry = std::sqrt(syy);
    if (1e-25 > rx || 1e-25 > ry) return 0.0;
    return sxy / rx / ry;
}

void Statistics(Input& in) {
    const std::vector<double> a = Ordinates<double>(in, in.Pick(30)), b = Ordinates<double>(in, in.Pick(30));
    const std::vector<double> s = Ordinates<double>(in, in.Pick(30));
    Vector va = Make(a), vb = Make(b), vs = Make(s);
    const int na = va.GetSize(), nb = vb.GetSize(), common = na < nb ? na : nb;
    double sum = 0, sum2 = 0, mult = 0, div = 0, inv = 0, inv2 = 0;
    for (int i = 0; i < na; ++i) {
        sum += a[i];
        sum2 += a[i] * a[i];
        if (std::fabs(a[i]) > 1e-25) inv += 1.0 / a[i], inv2 += 1.0 / (a[i] * a[i]);
    }
    for (int i = 0; i < common; ++i) {
        mult += a[i] * b[i];
        if (std::fabs(b[i]) > 1e-25) div += a[i] / b[i];
    }
    QAL_FUZZ_CHECK(Same(sum, k_Qal::Sum(va)) && Same(sum2, k_Qal::Sum2(va)) && Same(mult, k_Qal::SumMult(va, vb)));
    QAL_FUZZ_CHECK(Same(div, k_Qal::SumDiv(va, vb)) && Same(inv, k_Qal::SumInv(va)) && Same(inv2, k_Qal::SumInv2(va)));

    double mean = -1, spread = -1, squares = -1;
    QAL_FUZZ_CHECK(k_Qal::Mean(va, mean, spread) == (na > 0));
    double m = na > 0 ? sum / na : 0.0, sq = 0.0;
    for (double v : a) sq += (v - m) * (v - m);
    QAL_FUZZ_CHECK(Same(m, mean) && Same(na > 1 ? std::sqrt(sq / (na - 1)) : sq, spread));
    QAL_FUZZ_CHECK(k_Qal::NVariance(va, mean, squares) == (na > 0) && Same(m, mean) && Same(na > 0 ? sq : 0.0, squares));

    double extreme = -1;
    int at = na > 0 ? 0 : -1;
    for (int i = 1; i < na; ++i) at = a[i] > a[at] ? i : at;
    QAL_FUZZ_CHECK(k_Qal::Max(va, extreme) == at && Same(na > 0 ? a[at] : 0.0, extreme));
    at = na > 0 ? 0 : -1;
    for (int i = 1; i < na; ++i) at = a[at] > a[i] ? i : at;
    QAL_FUZZ_CHECK(k_Qal::Min(va, extreme) == at && Same(na > 0 ? a[at] : 0.0, extreme));

    // The fractions run over a and raise at the first index beyond b.
    int best = -1, low = -1;
    for (int i = 0; i < na && i < nb; ++i) {
        if (1e-25 > std::fabs(b[i])) continue;
        const double q = a[i] / b[i];
        if (best < 0 || q > a[best] / b[best]) best = i;
        if (low < 0 || a[low] / b[low] > q) low = i;
    }
    const int raise = na > nb ? nb : kNoRaise;
    QAL_FUZZ_CHECK(Raised([&] { QAL_FUZZ_CHECK(k_Qal::IndexMaxFraction(va, vb) == best); }) == raise);
    QAL_FUZZ_CHECK(Raised([&] { QAL_FUZZ_CHECK(Same(best < 0 ? -1e25 : a[best] / b[best], k_Qal::MaxFraction(va, vb))); }) == raise);
    QAL_FUZZ_CHECK(Raised([&] { QAL_FUZZ_CHECK(Same(low < 0 ? 1e25 : a[low] / b[low], k_Qal::MinFraction(va, vb))); }) == raise);

    // The operations read their vectors only.
    for (int i = 0; i < na; ++i) QAL_FUZZ_CHECK(Bits(va(i)) == Bits(a[i]));
    for (int i = 0; i < nb; ++i) QAL_FUZZ_CHECK(Bits(vb(i)) == Bits(b[i]));

    const bool scaled = na > 0 && na == nb;
    const int scaleRaise = scaled && vs.GetSize() < na ? vs.GetSize() : kNoRaise;
    QAL_FUZZ_CHECK(Raised([&] {
                       const double r = k_Qal::LinCorCoef(va, vb, vs);
                       QAL_FUZZ_CHECK(Same(ModelLinCor(a, b, s), r));
                   }) == scaleRaise);
}

// Gauss-Jordan with full pivoting on n x n of a and n x m of b, as nested vectors.
int ModelGaussJordan(std::vector<std::vector<double>>& a, int n, std::vector<std::vector<double>>& b, int m) {
    std::vector<int> count(n, 0), rowsOf(n), colsOf(n);
    for (int i = 0; i < n; ++i) {
        double best = 0.0;
        int pr = -1, pc = -1;
        for (int j = 0; j < n; ++j) {
            if (count[j] != 0) continue;
            for (int k = 0; k < n; ++k) {
                if (count[k] == 0 && std::fabs(a[j][k]) >= best) best = std::fabs(a[j][k]), pr = j, pc = k;
            }
        }
        if (pc < 0) return -1;  // every candidate NaN: raises with -1
        ++count[pc];
        if (pr != pc) {
            std::swap(a[pr], a[pc]);
            std::swap(b[pr], b[pc]);
        }
        rowsOf[i] = pr, colsOf[i] = pc;
        if (1e-25 > std::fabs(a[pc][pc])) return 2;
        const double reciprocal = 1.0 / a[pc][pc];
        a[pc][pc] = 1.0;
        for (int c = 0; c < n; ++c) a[pc][c] *= reciprocal;
        for (int c = 0; c < m; ++c) b[pc][c] *= reciprocal;
        for (int r = 0; r < n; ++r) {
            if (r == pc) continue;
            const double factor = a[r][pc];
            a[r][pc] = 0.0;
            for (int c = 0; c < n; ++c) a[r][c] -= a[pc][c] * factor;
            for (int c = 0; c < m; ++c) b[r][c] -= b[pc][c] * factor;
        }
    }
    for (int l = n - 1; l >= 0; --l) {
        if (rowsOf[l] == colsOf[l]) continue;
        for (int k = 0; k < n; ++k) std::swap(a[k][rowsOf[l]], a[k][colsOf[l]]);
    }
    return 0;
}

void GaussJordan(Input& in) {
    const int n = in.Pick(9), m = in.Pick(4);
    std::vector<std::vector<double>> a(n), b(n);
    for (int i = 0; i < n; ++i) {
        a[i] = in.Flag() ? Ordinates<double>(in, n) : std::vector<double>(n, 0.0);
        if (in.Flag()) a[i][i] = in.Real();
        b[i] = Ordinates<double>(in, m);
    }
    t_QalMatrix<double> ma(n, n), mb(n, m);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) ma(i, j) = a[i][j];
        for (int j = 0; j < m; ++j) mb(i, j) = b[i][j];
    }
    int result = -7;
    const int raised = Raised([&] { result = k_Qal::GaussJordan(ma, n, mb, m); });
    const int expected = ModelGaussJordan(a, n, b, m);
    if (expected == -1) {
        QAL_FUZZ_CHECK(raised == -1);
        return;
    }
    QAL_FUZZ_CHECK(raised == kNoRaise && result == expected);
    if (result != 0) return;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) QAL_FUZZ_CHECK(Same(a[i][j], ma(i, j)));
        for (int j = 0; j < m; ++j) QAL_FUZZ_CHECK(Same(b[i][j], mb(i, j)));
    }
    // A system larger than its matrices raises from the first access beyond them.
    t_QalMatrix<double> small(n, n), rhs(n, m);
    QAL_FUZZ_CHECK(Raised([&] { k_Qal::GaussJordan(small, n + 1, rhs, m); }) != kNoRaise);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    AllocationScope memory;
    switch (in.Pick(3)) {
        case 0: Containers(in); break;
        case 1: Statistics(in); break;
        default: GaussJordan(in); break;
    }
    return 0;
}
