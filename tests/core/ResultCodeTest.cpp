#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "core/ResultCode.h"

namespace {

TEST(ResultAccessors, SignAndFieldsOfCodes) {
    EXPECT_EQ(RynSuccess(0), 1);
    EXPECT_EQ(RynFailure(0), 0);
    EXPECT_EQ(RynSuccess(3), 1);  // a time-out is not a failure
    EXPECT_EQ(RynFailure(0xC300AA0D), 1);
    EXPECT_EQ(RynSuccess(0x80000000u), 0);

    EXPECT_EQ(RynResultSourceId(0xC300AA0D), 0x86u);
    EXPECT_EQ(RynResultLineNum(0xC300AA0D), 170u);
    EXPECT_EQ(RynResultErrorCode(0xC300AA0D), 13u);
    EXPECT_EQ(RynResultSeverity(0xC300AA0D), 1u);
    EXPECT_EQ(RynResultSeverity(0x7FFFFFFFu), 0u);
    EXPECT_EQ(RynResultSourceId(0xFFFFFFFFu), 0xFFu);
    EXPECT_EQ(RynResultLineNum(0xFFFFFFFFu), 0x7FFFu);
}

TEST(ResultAccessors, ResultCodeKeepsFailureBelowErrorThirty) {
    uint32_t error = 0, severity = 0, source = 0, line = 0;
    RynResultCode(0xC300AA0D, &error, &severity, &source, &line);
    EXPECT_EQ(error, 0x8000000Du);
    EXPECT_EQ(severity, 1u);
    EXPECT_EQ(source, 0x86u);
    EXPECT_EQ(line, 170u);

    RynResultCode(ryn::failureCode(0x6A, 99, 30), &error, &severity, &source, &line);
    EXPECT_EQ(error, 30u);
    EXPECT_EQ(severity, 1u);
    RynResultCode(ryn::failureCode(0x6A, 99, 29), &error, &severity, &source, &line);
    EXPECT_EQ(error, 0x8000001Du);
    RynResultCode(ryn::statusCode(0x6A, 1234, 1), &error, &severity, &source, &line);
    EXPECT_EQ(error, 1u);
    EXPECT_EQ(severity, 0u);
    EXPECT_EQ(source, 0x6Au);
    EXPECT_EQ(line, 1234u);
}

}  // namespace
