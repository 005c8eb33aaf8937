// Analyses a sampled curve (by default the noisy sample curve shipped with the project,
// two peaks and a valley) and prints what each routine of the library finds.
//
//   qal_demo [curve.csv]     the file holds a header line, then "x,y" per line
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "qal/qal.h"

namespace {

struct Curve {
    std::vector<double> x, y;
    int size() const { return static_cast<int>(x.size()); }
};

bool readCurve(const char* path, Curve& curve) {
    std::ifstream in(path);
    std::string line;
    if (!in || !std::getline(in, line)) return false;  // header
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        double x = 0.0, y = 0.0;
        char comma = 0;
        if (!(fields >> x >> comma >> y) || comma != ',') return false;
        curve.x.push_back(x);
        curve.y.push_back(y);
    }
    return !curve.x.empty();
}

const char* statusName(int status) {
    switch (status) {
        case QAL_OK: return "ok";
        case QAL_ERR_ORDER: return "abscissae out of order";
        case QAL_ERR_MEMORY: return "bad array or no memory";
        case QAL_ERR_ZERO_DIVISION: return "zero division";
        case QAL_ERR_SINGULAR: return "singular";
        case QAL_ERR_PARAMETER: return "bad parameter";
        case QAL_ERR_NOT_FOUND: return "not found";
        case QAL_ERR_OUT_OF_RANGE: return "out of range";
        case QAL_ERR_TOO_FEW_POINTS: return "too few points";
        case QAL_ERR_LOG_SEQUENCE: return "log sequence broken";
        default: return "unknown status";
    }
}

void report(const char* what, int status, double x, double y) {
    if (status == QAL_OK) {
        std::printf("  %-46s x = %9.4f   y = %9.4f\n", what, x, y);
    } else {
        std::printf("  %-46s %s\n", what, statusName(status));
    }
}

void extremumDrivers(const Curve& c) {
    std::printf("Extremum drivers (vertex of the parabola through the window's means, 5 %% height):\n");
    const float height = 5.0f;
    double x = 0.0, y = 0.0;
    int s = QAL_GetNextExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 30, QAL_EXTREMUM_MAX, 1, height);
    report("first maximum from the left, window 30", s, x, y);
    s = QAL_GetRangeExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 30, QAL_EXTREMUM_MAX, 1, height);
    report("highest maximum, window 30", s, x, y);
    s = QAL_GetRangeExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 30, QAL_EXTREMUM_MIN, 1, height);
    report("lowest minimum, window 30", s, x, y);
    s = QAL_GetAutoRangeExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, 3, QAL_EXTREMUM_MIN, 1, height);
    report("lowest minimum, windows doubled from 3", s, x, y);
    x = 0.0;
    y = 0.0;
    s = QAL_GetAutoExtremum(c.x.data(), c.y.data(), c.size(), &x, &y, QAL_EXTREMUM_MAX, 0, height);
    report("highest sample of the automatic search", s, x, y);
}

void levelCrossings(const Curve& c) {
    std::printf("\nWhole-curve extremes and level crossings:\n");
    double xMax = 0.0, yMax = 0.0, xMin = 0.0, yMin = 0.0;
    int s = QAL_Calc_AbsMaximum(c.x.data(), c.y.data(), c.size(), &xMax, &yMax);
    report("highest sample", s, xMax, yMax);
    s = QAL_Calc_AbsMinimum(c.x.data(), c.y.data(), c.size(), &xMin, &yMin);
    report("lowest sample", s, xMin, yMin);

    // An absolute level (kind 0), the crossing interpolated between the two samples (mode 2).
    const float half = static_cast<float>(yMax / 2.0);
    double x = 0.0, y = 0.0;
    s = QAL_FindX_at_YThreshold(c.x.data(), c.y.data(), c.size(), 0, 0, 2, half, 0.0f, &x, &y);
    report("first reaches half the maximum, from the left", s, x, y);
    s = QAL_FindX_at_YThreshold(c.x.data(), c.y.data(), c.size(), 0, 2, 2, half, 0.0f, &x, &y);
    report("first reaches half the maximum, from the right", s, x, y);
}

// One search on a curve, as the drivers and the whole-curve extremes above run it.
struct Search {
    const char* what;
    int (*run)(const Curve&, double*, double*);
};

std::string found(int status, double x, double y) {
    char text[64];
    if (status == QAL_OK) {
        std::snprintf(text, sizeof text, "x = %8.3f  y = %7.3f", x, y);
    } else {
        std::snprintf(text, sizeof text, "%s", statusName(status));
    }
    return text;
}

// The extrema of the raw curve beside those of its Savitzky-Golay smoothing, which is left
// in `smooth`; false when the curve cannot be smoothed.
bool smoothedExtrema(const Curve& c, Curve& smooth) {
    const int width = 21, degree = 2;
    smooth = Curve{c.x, std::vector<double>(c.y.size())};
    const int s = QAL_FilterArray(c.y.data(), smooth.y.data(), c.size(), 0, c.size() - 1,
                                  QAL_FILTER_SAVITZKY_GOLAY, width, degree);
    std::printf("\nSavitzky-Golay smoothing, width %d, degree %d: %s\n", width, degree, statusName(s));
    if (s != QAL_OK) return false;
    const Search searches[] = {
        {"highest sample", [](const Curve& k, double* x, double* y) {
             return QAL_Calc_AbsMaximum(k.x.data(), k.y.data(), k.size(), x, y); }},
        {"lowest sample", [](const Curve& k, double* x, double* y) {
             return QAL_Calc_AbsMinimum(k.x.data(), k.y.data(), k.size(), x, y); }},
        {"highest maximum, window 30", [](const Curve& k, double* x, double* y) {
             return QAL_GetRangeExtremum(k.x.data(), k.y.data(), k.size(), x, y, 30, QAL_EXTREMUM_MAX, 1, 5.0f); }},
        {"lowest minimum, window 30", [](const Curve& k, double* x, double* y) {
             return QAL_GetRangeExtremum(k.x.data(), k.y.data(), k.size(), x, y, 30, QAL_EXTREMUM_MIN, 1, 5.0f); }},
    };
    std::printf("  %-28s %-26s %s\n", "", "raw", "smoothed");
    for (const Search& search : searches) {
        double x = 0.0, y = 0.0;
        int status = search.run(c, &x, &y);  // run before the outputs are read
        const std::string raw = found(status, x, y);
        status = search.run(smooth, &x, &y);
        std::printf("  %-28s %-26s %s\n", search.what, raw.c_str(), found(status, x, y).c_str());
    }
    return true;
}

// The slope of the smoothed curve at its extrema, which should be near 0 there: by the
// Golay kernel (per sample step, so divided by the step of x) and by a regression over
// ten samples. Then a band of +-5 % around the smoothed curve near its highest peak, and
// how much of the raw curve leaves it.
void derivativesAndBand(const Curve& raw, const Curve& smooth) {
    const int n = smooth.size();
    if (n < 2) return;
    const double step = smooth.x[1] - smooth.x[0];
    const double* x = smooth.x.data();
    const double* y = smooth.y.data();
    double at[3] = {0.0, 0.0, 0.0}, value = 0.0;
    const int found[3] = {QAL_GetNextExtremum(x, y, n, &at[0], &value, 30, QAL_EXTREMUM_MAX, 1, 5.0f),
                          QAL_GetRangeExtremum(x, y, n, &at[1], &value, 30, QAL_EXTREMUM_MAX, 1, 5.0f),
                          QAL_GetRangeExtremum(x, y, n, &at[2], &value, 30, QAL_EXTREMUM_MIN, 1, 5.0f)};
    const char* const names[3] = {"first maximum", "highest maximum", "lowest minimum"};
    std::printf("\nSlope of the smoothed curve at its extrema (per unit of x):\n");
    for (int k = 0; k < 3; ++k) {
        if (found[k] != QAL_OK) continue;
        std::printf("  %-16s x = %8.3f   Golay %8.4f   regression %8.4f\n", names[k], at[k],
                    QAL_FirstDerivativeGolay(x, y, n, at[k]) / step, QAL_FirstDerivativeLinReg(x, y, n, 10, at[k]));
    }

    const std::vector<float> base(smooth.y.begin(), smooth.y.end()), values(raw.y.begin(), raw.y.end());
    std::vector<float> lower(base.size()), upper(base.size());
    const int s = QAL_CalcBoundaries(base.data(), nullptr, lower.data(), upper.data(), n, 2, 5.0f, 2, 5.0f);
    int outside = 0;
    if (s == QAL_OK) QAL_CheckInOutArrays(values.data(), lower.data(), upper.data(), n, &outside);
    std::printf("\nBand of +-5 %% around the smoothed curve: %s, %d of %d raw samples outside\n", statusName(s),
                outside, n);
    const int peak = found[1] == QAL_OK ? static_cast<int>((at[1] - x[0]) / step) : n / 2;
    for (int i = std::max(peak - 8, 0); s == QAL_OK && i <= std::min(peak + 8, n - 1); i += 4) {
        const std::size_t k = static_cast<std::size_t>(i);
        std::printf("  x = %8.3f   %8.4f <= %8.4f <= %8.4f   raw %8.4f\n", x[k], static_cast<double>(lower[k]), y[k],
                    static_cast<double>(upper[k]), raw.y[k]);
    }
}

void resampling(const Curve& c) {
    if (c.size() < 2) return;
    // Five new points per interval, strictly inside the data: the ends themselves are
    // refused by the location and would keep the value preset here.
    const std::vector<float> x(c.x.begin(), c.x.end()), y(c.y.begin(), c.y.end());
    const int count = 5 * (c.size() - 1) - 1;
    std::vector<float> xFine(static_cast<std::size_t>(count)), yFine(xFine.size(), 0.0f);
    for (std::size_t k = 0; k < xFine.size(); ++k) {
        xFine[k] = static_cast<float>(c.x.front() + (c.x.back() - c.x.front()) * static_cast<double>(k + 1) /
                                                        (5.0 * (c.size() - 1)));
    }
    const int s = QAL_InterpolFloatArrays(x.data(), y.data(), c.size(), xFine.data(), yFine.data(), count,
                                          QAL_INTERPOL_SPLINE);
    std::printf("\nResampled by a natural cubic spline, five points per interval (%d points): %s\n", count,
                statusName(s));
    for (std::size_t k = xFine.size() / 3; s == QAL_OK && k < xFine.size() / 3 + 6 && k < xFine.size(); ++k) {
        std::printf("  x = %9.4f   y = %9.4f\n", static_cast<double>(xFine[k]), static_cast<double>(yFine[k]));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : QAL_SAMPLE_CURVE;
    Curve curve;
    if (!readCurve(path, curve)) {
        std::fprintf(stderr, "cannot read a curve from %s\n", path);
        return 1;
    }
    std::printf("%d samples from %s\n\n", curve.size(), path);
    extremumDrivers(curve);
    levelCrossings(curve);
    Curve smooth;
    if (smoothedExtrema(curve, smooth)) derivativesAndBand(curve, smooth);
    resampling(curve);
    return 0;
}
