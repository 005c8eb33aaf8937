#include <algorithm>
#include <cmath>

#include "frame/constants.h"
#include "qal/qal_classes.h"

// Every element is read through operator(), never through a cached pointer, so that a
// vector too short for a loop raises at exactly the first index beyond it.

namespace {

using qal::detail::kNoValue;
using qal::detail::kNumericalZero;

// The sums keep an element only when `|e| > 1e-25` holds: exactly 1e-25 and NaN are
// skipped.
bool keptBySums(double e) noexcept { return std::fabs(e) > kNumericalZero; }

// The fractions skip an element only when `1e-25 > |b|` holds: exactly 1e-25 and NaN
// pass.
bool skippedByFractions(double b) noexcept { return kNumericalZero > std::fabs(b); }

struct Fraction {
    int position;  // -1 while no element has qualified
    double value;
};

// One pass over the range of a, b(i) read before a(i) in each step. The first
// qualifying quotient is always taken (a NaN one then stays, since no comparison with it
// holds); after that only a strictly better one, so of equal quotients the first wins.
template <class Better>
Fraction bestFraction(t_QalVector<double>& a, t_QalVector<double>& b, Better better) {
    Fraction best{-1, 0.0};
    const int n = a.GetSize();
    for (int i = 0; i < n; ++i) {
        const double divisor = b(i);
        if (skippedByFractions(divisor)) continue;
        const double q = a(i) / divisor;
        if (best.position == -1 || better(q, best.value)) best = {i, q};
    }
    return best;
}

// Position of the first extreme element, by the strict test `beats(v(i), extreme)`: of
// equal extremes the first position wins, a NaN never replaces, and a NaN at position 0
// is never replaced. -1 with extreme 0.0 for an empty vector.
template <class Beats>
int firstExtreme(t_QalVector<double>& v, double& extreme, Beats beats) {
    const int n = v.GetSize();
    if (n == 0) {
        extreme = 0.0;
        return -1;
    }
    extreme = v(0);
    int position = 0;
    for (int i = 1; i < n; ++i) {
        if (beats(v(i), extreme)) {
            extreme = v(i);
            position = i;
        }
    }
    return position;
}

// Sum of the squares of v(i) - mean, in index order from 0.0.
double squaredDeviations(t_QalVector<double>& v, double mean) {
    double sum = 0.0;
    const int n = v.GetSize();
    for (int i = 0; i < n; ++i) {
        const double deviation = v(i) - mean;
        sum += deviation * deviation;
    }
    return sum;
}

bool greater(double q, double best) noexcept { return q > best; }
bool smaller(double q, double best) noexcept { return best > q; }

}  // namespace

double k_Qal::Sum(t_QalVector<double>& v) {
    double sum = 0.0;
    const int n = v.GetSize();
    for (int i = 0; i < n; ++i) sum += v(i);
    return sum;
}

double k_Qal::Sum2(t_QalVector<double>& v) {
    double sum = 0.0;
    const int n = v.GetSize();
    for (int i = 0; i < n; ++i) sum += v(i) * v(i);
    return sum;
}

double k_Qal::SumMult(t_QalVector<double>& a, t_QalVector<double>& b) {
    double sum = 0.0;
    const int n = std::min(a.GetSize(), b.GetSize());
    for (int i = 0; i < n; ++i) sum += a(i) * b(i);
    return sum;
}

double k_Qal::SumDiv(t_QalVector<double>& a, t_QalVector<double>& b) {
    double sum = 0.0;
    const int n = std::min(a.GetSize(), b.GetSize());
    for (int i = 0; i < n; ++i) {
        const double divisor = b(i);
        if (keptBySums(divisor)) sum += a(i) / divisor;
    }
    return sum;
}

double k_Qal::SumInv(t_QalVector<double>& v) {
    double sum = 0.0;
    const int n = v.GetSize();
    for (int i = 0; i < n; ++i) {
        const double e = v(i);
        if (keptBySums(e)) sum += 1.0 / e;
    }
    return sum;
}

// The square is formed first and may underflow to 0 for |e| just above 1e-25, giving
// an infinite term.
double k_Qal::SumInv2(t_QalVector<double>& v) {
    double sum = 0.0;
    const int n = v.GetSize();
    for (int i = 0; i < n; ++i) {
        const double e = v(i);
        if (keptBySums(e)) sum += 1.0 / (e * e);
    }
    return sum;
}

bool k_Qal::Mean(t_QalVector<double>& v, double& mean) {
    mean = 0.0;
    const int n = v.GetSize();
    if (n == 0) return false;
    for (int i = 0; i < n; ++i) mean += v(i);
    mean /= static_cast<double>(n);
    return true;
}

// spread: the sample standard deviation by the full-precision root; with one element
// no division takes place and it stays 0.0.
bool k_Qal::Mean(t_QalVector<double>& v, double& mean, double& spread) {
    spread = 0.0;
    if (!Mean(v, mean)) return false;
    const int n = v.GetSize();
    spread = squaredDeviations(v, mean);
    if (n > 1) spread = std::sqrt(spread / static_cast<double>(n - 1));
    return true;
}

// squares: the plain sum of squared deviations (n times the population variance).
bool k_Qal::NVariance(t_QalVector<double>& v, double& mean, double& squares) {
    squares = 0.0;
    if (!Mean(v, mean)) return false;
    squares = squaredDeviations(v, mean);
    return true;
}

int k_Qal::Min(t_QalVector<double>& v, double& extreme) {
    return firstExtreme(v, extreme, [](double e, double best) { return best > e; });
}

int k_Qal::Max(t_QalVector<double>& v, double& extreme) {
    return firstExtreme(v, extreme, [](double e, double best) { return e > best; });
}

int k_Qal::IndexMaxFraction(t_QalVector<double>& a, t_QalVector<double>& b) {
    return bestFraction(a, b, greater).position;
}

double k_Qal::MaxFraction(t_QalVector<double>& a, t_QalVector<double>& b) {
    const Fraction best = bestFraction(a, b, greater);
    return best.position == -1 ? -kNoValue : best.value;
}

double k_Qal::MinFraction(t_QalVector<double>& a, t_QalVector<double>& b) {
    const Fraction best = bestFraction(a, b, smaller);
    return best.position == -1 ? kNoValue : best.value;
}

// The means are unscaled; scale(i) divides the deviations only and has no zero test (a
// zero gives an infinity or NaN in the sums). The sizes are compared after both means,
// so an empty y returns 0.0 before a size mismatch is looked at, and a mismatch returns
// before scale is read.
double k_Qal::LinCorCoef(t_QalVector<double>& x, t_QalVector<double>& y, t_QalVector<double>& scale) {
    double meanX = 0.0;
    double meanY = 0.0;
    if (!Mean(x, meanX)) return 0.0;
    if (!Mean(y, meanY)) return 0.0;
    const int n = x.GetSize();
    if (n != y.GetSize()) return 0.0;
    double sumXY = 0.0;
    double sumXX = 0.0;
    double sumYY = 0.0;
    for (int i = 0; i < n; ++i) {
        const double dx = (x(i) - meanX) / scale(i);
        const double dy = (y(i) - meanY) / scale(i);
        sumXY += dx * dy;
        sumXX += dx * dx;
        sumYY += dy * dy;
    }
    const double rootX = std::sqrt(sumXX);
    const double rootY = std::sqrt(sumYY);
    // Written as `1e-25 > root`: a NaN root passes on into the quotient.
    if (kNumericalZero > rootX) return 0.0;
    if (kNumericalZero > rootY) return 0.0;
    return sumXY / rootX / rootY;
}
