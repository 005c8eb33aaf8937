#include "qal/qal.h"
#include "support/row_outcomes.h"

namespace qal::test {
namespace {

template <class T>
struct Row { std::vector<T> x, y; int n, result; T first, second; };  // first: the intercept, second: the slope

TEST(LinearRegression, OnePassOverRawSums) {
    const Row<double> rows[] = {
        {{0, 2}, {1, 5}, 1, 0, kUntouched, kUntouched}, {{}, {}, -1, 0, kUntouched, kUntouched},
        // x * y rounded before it is added: the fused sum gives ...1bdp+2, ...c92p-6
        {{2.59, 2.34, 9.96, 4.7}, {8.36, 4.76, 6.39, 1.51}, 4, 1, 0x1.4b6b88d5b41bap+2, 0x1.0020b1ff07cffp-6},
        // any other order of the sums or of the intercept changes a bit; the centred fit gives ...b3ap+3, ...36fp-2
        {{0.04, 5.25, 4.43}, {9.34, 9.88, 2.41}, 3, 1, 0x1.1605fd5cceb37p+3, -0x1.d331ad0fe0357p-2}};
    ExpectRows(rows, [](const Row<double>& r, double* intercept, double* slope) {
        return QAL_LinearRegression(r.x.data(), r.y.data(), r.n, intercept, slope);
    });
}

TEST(LinearRegressionFloat, DoubleSumsNarrowedOnce) {
    const float nan = static_cast<float>(kNaN), inf = static_cast<float>(kInf);
    const Row<float> rows[] = {
        // QAL_LinFitFloat, float throughout, gives 0x1.97b218p+0f, 0x1.544d2ap-2f on these samples
        {{1.26f, 3.4f, 9.58f}, {1.82f, 2.98f, 4.71f}, 3, QAL_OK, 0x1.97b21cp+0f, 0x1.544d26p-2f},
        {{0, 1}, {-3e38f, 3e38f}, 2, QAL_OK, -3e38f, inf}, {{4}, {1}, 1, QAL_OK, nan, nan}};  // beyond float: inf
    ExpectRows(rows, [](const Row<float>& r, float* intercept, float* slope) {
        return QAL_LinearRegressionFloat(r.x.data(), r.y.data(), r.n, intercept, slope);
    });
}

}  // namespace
}  // namespace qal::test
