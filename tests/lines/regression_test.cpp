#include <vector>

#include "qal/qal.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

using V = std::vector<double>;

TEST(LinearRegression, OnePassOverRawSums) {
    struct Row { V x, y; int n, result; double intercept, slope; };
    const Row rows[] = {
        {{0, 2}, {1, 5}, 2, 1, 1, 2}, {{1, 1, 1}, {2, 2, 2}, 3, 1, kNaN, kNaN}, {{0, 2}, {1, 5}, 1, 0, kUntouched, kUntouched},
        {{}, {}, 0, 0, kUntouched, kUntouched}, {{}, {}, -1, 0, kUntouched, kUntouched},
        {{1e8, 1e8 + 1, 1e8 + 2}, {0, 1, 2}, 3, 1, -kInf, kInf},  // the centred fit gives -1e8, 1 exactly
        {{0.87, 3.33, 9.64, 7.58, 1.18, 2.46}, {1.01, 0.6, 7.97, 1.78, 5.59, 4.47}, 6, 1, 0x1.19902ffa10191p+1,
         0x1.4ff49bba77210p-2}};  // the centred fit gives ...18fp+1, ...214p-2
    for (const Row& r : rows) {
        double intercept = kUntouched, slope = kUntouched;
        EXPECT_EQ(r.result, QAL_LinearRegression(r.x.data(), r.y.data(), r.n, &intercept, &slope)) << r.n;
        EXPECT_TRUE(SamePoint(r.intercept, r.slope, intercept, slope)) << r.n;
    }
}

TEST(LinearRegressionFloat, DoubleSumsNarrowedOnce) {
    using F = std::vector<float>;
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    struct Row { F x, y; int n; float intercept, slope; };
    const Row rows[] = {
        // QAL_LinFitFloat, float throughout, gives 0x1.6b3928p+2f, 0x1.2ad2aep-6f on these samples
        {{1.91f, 7.32f, 1.31f, 6.44f, 1.17f, 4.21f}, {2.13f, 2.7f, 9.71f, 8.03f, 3.04f, 8.85f}, 6, 0x1.6b392ap+2f, 0x1.2ad29cp-6f},
        {{0, 2}, {1, 5}, 2, 1, 2}, {{0, 1}, {-3e38f, 3e38f}, 2, -3e38f, inf},  // beyond float: an infinity
        {{4}, {1}, 1, nan, nan}, {{}, {}, 0, nan, nan}, {{}, {}, -2, nan, nan}};
    for (const Row& r : rows) {
        float intercept = 0.0f, slope = 0.0f;
        EXPECT_EQ(QAL_OK, QAL_LinearRegressionFloat(r.x.data(), r.y.data(), r.n, &intercept, &slope));
        EXPECT_TRUE(SamePoint(r.intercept, r.slope, intercept, slope)) << r.n;
    }
}

}  // namespace
}  // namespace qal::test
