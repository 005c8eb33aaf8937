// QAL_LUDecomposition against Crout's steps (row scales, ties to the later row, NaN never a
// pivot, the pivot row carried over, 1e-25 for a zero pivot), its refusals with nothing
// written and the singular rows with sign 1.0; QAL_LUSolveEqua against its substitutions,
// with a and pivots unchanged and 1e15 for a zero diagonal of a matrix from elsewhere.
#include "support/fuzz_support.h"

using namespace qal::fuzz;

namespace {

using Matrix = std::vector<std::vector<double>>;

int ModelDecompose(Matrix& a, int n, std::vector<int>& pivots, double& sign) {
    sign = 1.0;
    std::vector<double> scale(n);
    for (int i = 0; i < n; ++i) {
        double big = 0.0;
        for (int j = 0; j < n; ++j) {
            if (std::fabs(a[i][j]) > big) big = std::fabs(a[i][j]);
        }
        if (big == 0.0) return QAL_ERR_SINGULAR;
        scale[i] = 1.0 / big;
    }
    int pivotRow = 0;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < j; ++i) {
            double sum = a[i][j];
            for (int k = 0; k < i; ++k) sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
        }
        double best = 0.0;
        for (int i = j; i < n; ++i) {
            double sum = a[i][j];
            for (int k = 0; k < j; ++k) sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
            const double figure = scale[i] * std::fabs(sum);
            if (figure >= best) {
                best = figure;
                pivotRow = i;
            }
        }
        if (pivotRow != j) {
            std::swap(a[pivotRow], a[j]);
            sign = -sign;
            scale[pivotRow] = scale[j];
        }
        pivots[j] = pivotRow;
        if (a[j][j] == 0.0) a[j][j] = 1e-25;
        if (j != n - 1) {
            const double inverse = 1.0 / a[j][j];
            for (int i = j + 1; i < n; ++i) a[i][j] *= inverse;
        }
    }
    return QAL_OK;
}

void ModelSolve(const Matrix& a, int n, const std::vector<int>& pivots, std::vector<double>& b) {
    int first = -1;
    for (int i = 0; i < n; ++i) {
        const int p = pivots[i];
        double sum = b[p];
        b[p] = b[i];
        if (first != -1) {
            for (int j = first; j < i; ++j) sum -= a[i][j] * b[j];
        } else if (sum != 0.0) {
            first = i;
        }
        b[i] = sum;
    }
    for (int i = n - 1; i >= 0; --i) {
        double sum = b[i];
        for (int j = i + 1; j < n; ++j) sum -= a[i][j] * b[j];
        b[i] = a[i][i] == 0.0 ? 1e15 : sum / a[i][i];
    }
}

// The rows as separate guarded arrays, so that a step beyond a row or the table traps.
struct Rows {
    explicit Rows(const Matrix& m) {
        for (const auto& row : m) rows.push_back(std::make_unique<Guarded<double>>(row));
        for (auto& row : rows) table.push_back(row->data());
    }
    bool Matches(const Matrix& m) const {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (!rows[i]->Matches(m[i]) || !rows[i]->GuardsIntact()) return false;
        }
        return true;
    }
    std::vector<std::unique_ptr<Guarded<double>>> rows;
    std::vector<double*> table;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    int n = in.Count();
    const int failAt = FaultChoice(in);
    const int nulls = in.Pick(16);
    // Cubic in n: the large orders are met where they are refused before any work.
    if (n > 40 && !(nulls == 1 || nulls == 2 || failAt == 1)) n %= 41;
    Matrix a(n < 0 ? 0 : n);
    const int shape = in.Pick(4);
    // A refused large order gets rows of no elements: any access traps.
    for (int i = 0; i < n && n <= 40; ++i) {
        a[i] = shape == 0 ? Ordinates<double>(in, n) : std::vector<double>(n, 0.0);
        if (shape != 0) {  // sparse: a diagonal, some off-diagonal elements, zero or NaN rows
            for (int j = 0; j < n; ++j) a[i][j] = (i == j && shape != 3) ? in.Real() : (in.Pick(4) == 0 ? in.Real() : 0.0);
        }
    }
    const Matrix before = a;
    Rows rows(a);
    Guarded<int> pivots(n);
    Guarded<double> sign(1);
    int status;
    bool failed;
    {
        AllocationScope memory(failAt);
        status = QAL_LUDecomposition(rows.table.empty() ? nullptr : rows.table.data(), n,
                                     nulls == 1 ? nullptr : pivots.data(), nulls == 2 ? nullptr : sign.data());
        failed = AllocationScope::Failed(failAt);
    }
    QAL_FUZZ_CHECK(pivots.GuardsIntact() && sign.GuardsIntact());
    if (nulls == 1 || nulls == 2) {
        QAL_FUZZ_CHECK(status == QAL_ERR_PARAMETER && rows.Matches(before) && pivots.AllSentinel() && sign.AllSentinel());
        return 0;
    }
    if (n < 0 || failed) {
        QAL_FUZZ_CHECK(status == QAL_ERR_MEMORY && rows.Matches(before) && pivots.AllSentinel() && sign.AllSentinel());
        return 0;
    }
    Matrix model = a;
    std::vector<int> modelPivots(n, SentinelOf(0));
    double modelSign = 0;
    QAL_FUZZ_CHECK(status == ModelDecompose(model, n, modelPivots, modelSign));
    QAL_FUZZ_CHECK(Same(modelSign, sign[0]));
    if (status == QAL_ERR_SINGULAR) {
        QAL_FUZZ_CHECK(rows.Matches(before) && pivots.AllSentinel());
        return 0;
    }
    QAL_FUZZ_CHECK(status == QAL_OK && rows.Matches(model));
    for (int j = 0; j < n; ++j) QAL_FUZZ_CHECK(pivots[j] == modelPivots[j] && pivots[j] >= 0 && pivots[j] < n);

    // The solve, on the factors or (now and then) on the original matrix with a zero
    // diagonal left in place; a and pivots stay as they are.
    const bool original = in.Pick(4) == 0;
    Rows solveRows(original ? before : model);
    const Matrix& factors = original ? before : model;
    std::vector<int> record(modelPivots);
    Guarded<int> p(record);
    for (int k = 0; k < 2; ++k) {
        std::vector<double> b = Ordinates<double>(in, n);
        if (in.Flag() && n > 1) b[0] = 0.0;  // a leading zero skips arithmetic
        Guarded<double> rhs(b);
        AllocationScope memory;
        QAL_FUZZ_CHECK(QAL_LUSolveEqua(solveRows.table.data(), n, p.data(), rhs.data()) == QAL_OK);
        ModelSolve(factors, n, record, b);
        QAL_FUZZ_CHECK(rhs.Matches(b) && rhs.GuardsIntact() && solveRows.Matches(factors) && p.Unchanged(record));
    }
    return 0;
}
