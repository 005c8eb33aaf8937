#include <cfenv>
#include <cfloat>
#include <string>

#include <gtest/gtest.h>

#include "qal/qal.h"

// Hosts store these numbers.
static_assert(QAL_OK == 0 && QAL_ERR_ORDER == 1 && QAL_ERR_MEMORY == 8 && QAL_ERR_ZERO_DIVISION == 11 &&
              QAL_ERR_SINGULAR == 12 && QAL_ERR_PARAMETER == 35 && QAL_ERR_NOT_FOUND == 36 &&
              QAL_ERR_OUT_OF_RANGE == 37 && QAL_ERR_TOO_FEW_POINTS == 38 && QAL_ERR_LOG_SEQUENCE == 39 &&
              QAL_EXTREMUM_MAX == 11 && QAL_EXTREMUM_MIN == 21);

// The exact results rest on IEEE evaluation in round-to-nearest.
TEST(Environment, IeeeEvaluationRoundToNearest) {
    EXPECT_EQ(0, FLT_EVAL_METHOD);
    EXPECT_EQ(FE_TONEAREST, std::fegetround());
    InitQalLibExtDLL();  // exists and does nothing
}

// The string, the three numbers and the linked library tell the same version.
TEST(Environment, VersionOfHeadersAndLibraryAgree) {
    const std::string parts = std::to_string(QAL_VERSION_MAJOR) + "." + std::to_string(QAL_VERSION_MINOR) + "." +
                              std::to_string(QAL_VERSION_PATCH);
    EXPECT_EQ(parts, QAL_VERSION_STRING);
    EXPECT_EQ(parts, qal_version());
}
