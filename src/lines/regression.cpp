#include "qal/qal.h"

// One pass over raw sums, in double: the reduced sums Sxy - Sy*Sx/n and Sxx - Sx*Sx/n
// cancel digits on abscissae of large magnitude and small spread, which the centred fits
// avoid. Nothing is tested but the count, and a degenerate fit is not reported: equal
// abscissae leave whatever IEEE division gives, with result 1.
int QAL_LinearRegression(const double* x, const double* y, int n, double* intercept, double* slope) {
    // A yes/no answer, not a status: 0 means nothing was computed.
    if (n < 2) return 0;
    double sumY = 0.0;
    double sumX = 0.0;
    double sumXX = 0.0;
    double sumXY = 0.0;
    for (int i = 0; i < n; ++i) {
        sumY += y[i];
        sumX += x[i];
        sumXX += x[i] * x[i];
        sumXY += x[i] * y[i];
    }
    const double count = static_cast<double>(n);
    // The product first, then the division.
    sumXY -= sumY * sumX / count;
    sumXX -= sumX * sumX / count;
    const double fittedSlope = sumXY / sumXX;
    *slope = fittedSlope;
    *intercept = (sumY - fittedSlope * sumX) / count;
    return 1;
}

// Two passes about the mean abscissa, every sum and intermediate in double on samples
// widened from float, narrowed to float once at the end (beyond the float range that
// gives an infinity). No test at all: n <= 1 leaves NaN in both outputs. Always QAL_OK.
int QAL_LinearRegressionFloat(const float* x, const float* y, int n, float* intercept, float* slope) {
    double sumX = 0.0;
    double sumY = 0.0;
    for (int i = 0; i < n; ++i) {
        sumX += static_cast<double>(x[i]);
        sumY += static_cast<double>(y[i]);
    }
    const double count = static_cast<double>(n);
    const double meanX = sumX / count;
    double sumTT = 0.0;
    double sumTY = 0.0;
    for (int i = 0; i < n; ++i) {
        const double t = static_cast<double>(x[i]) - meanX;
        sumTT += t * t;
        sumTY += static_cast<double>(y[i]) * t;
    }
    const double fittedSlope = sumTY / sumTT;
    const double fittedIntercept = (sumY - fittedSlope * sumX) / count;
    *intercept = static_cast<float>(fittedIntercept);
    *slope = static_cast<float>(fittedSlope);
    return QAL_OK;
}
