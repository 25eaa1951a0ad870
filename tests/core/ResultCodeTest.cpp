#include <gtest/gtest.h>

#include <tuple>

#include "RynHwDll.h"
#include "core/ResultCode.h"

namespace {

// Bit 31 is the severity, bits 23..30 the source, 8..22 the line, 0..7 the error.
TEST(ResultAccessors, SignAndFieldsOfCodes) {
    EXPECT_EQ(std::tuple(RynSuccess(3), RynFailure(3)), std::tuple(1, 0));  // a time-out is not a failure
    EXPECT_EQ(std::tuple(RynSuccess(0x80000000u), RynFailure(0x80000000u)), std::tuple(0, 1));
    const auto fields = [](ResultCode code) {
        return std::tuple(RynResultSeverity(code), RynResultSourceId(code), RynResultLineNum(code),
                          RynResultErrorCode(code));
    };
    EXPECT_EQ(fields(0xC300AA0D), std::tuple(1u, 0x86u, 170u, 13u));
    EXPECT_EQ(fields(0x7FFFFFFF), std::tuple(0u, 0xFFu, 0x7FFFu, 0xFFu));
    EXPECT_EQ(fields(0x80000000), std::tuple(1u, 0u, 0u, 0u));
}

// The error number keeps bit 31 for a failure below error 30, so it still reads as negative.
TEST(ResultAccessors, ResultCodeKeepsFailureBelowErrorThirty) {
    const auto parts = [](ResultCode code) {
        uint32_t error = 0, severity = 0, source = 0, line = 0;
        RynResultCode(code, &error, &severity, &source, &line);
        return std::tuple(error, severity, source, line);
    };
    EXPECT_EQ(parts(ryn::failureCode(0x6A, 99, 29)), std::tuple(0x8000001Du, 1u, 0x6Au, 99u));
    EXPECT_EQ(parts(ryn::failureCode(0x6A, 99, 30)), std::tuple(30u, 1u, 0x6Au, 99u));
    EXPECT_EQ(parts(ryn::statusCode(0x6B, 0x7FFF, 1)), std::tuple(1u, 0u, 0x6Bu, 0x7FFFu));
}

}  // namespace
