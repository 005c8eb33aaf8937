#include <cfenv>
#include <cfloat>

#include <gtest/gtest.h>

#include "qal/qal.h"

// The exact results rest on this environment; print it with the results.
TEST(Environment, IeeeEvaluationRoundToNearest) {
    std::printf("FLT_EVAL_METHOD %d, compiler %s\n", static_cast<int>(FLT_EVAL_METHOD), __VERSION__);
    EXPECT_EQ(0, FLT_EVAL_METHOD);
    EXPECT_EQ(FE_TONEAREST, std::fegetround());
}

TEST(StatusCodes, ValuesHostsDependOn) {
    const int codes[] = {QAL_OK,
                         QAL_ERR_ORDER,
                         QAL_ERR_MEMORY,
                         QAL_ERR_ZERO_DIVISION,
                         QAL_ERR_SINGULAR,
                         QAL_ERR_PARAMETER,
                         QAL_ERR_NOT_FOUND,
                         QAL_ERR_OUT_OF_RANGE,
                         QAL_ERR_TOO_FEW_POINTS,
                         QAL_ERR_LOG_SEQUENCE,
                         QAL_EXTREMUM_MAX,
                         QAL_EXTREMUM_MIN};
    const int values[] = {0, 1, 8, 11, 12, 35, 36, 37, 38, 39, 11, 21};
    for (std::size_t i = 0; i < std::size(codes); ++i) EXPECT_EQ(values[i], codes[i]) << i;
    InitQalLibExtDLL();  // exists and does nothing
}
