#include <gtest/gtest.h>

#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;
using DspAccess = ryn::test::ConnectedTest;

constexpr DeviceHandle kDsp = 0x20000011;

TEST_F(DspAccess, RequestLayouts) {
    uint32_t out1 = 0, out2 = 0, length = 0;
    uint8_t answer[8] = {};
    const uint8_t input[3] = {0xA1, 0xA2, 0xA3};
    ryn::test::expectLayouts(
        driver,
        {
            {[&] { return RynDspIoControl_36(kDsp, 0xBEEF, input, 3, answer, 8, &length, 0xA, 0xB); },
             0x99E,
             2022,
             1998,
             {{16, kDsp}, {20, 5}, {24, 8}, {28, 0xA}, {32, 0xB}, {36, 0xA2A1BEEF}, {40, 0xA3}}},
            {[&] { return RynDspIoControl_36(kDsp, 7, nullptr, 0, nullptr, 0, nullptr, 0, 0); },
             0x99E,
             2022,
             1998,
             {{20, 2}, {24, 0}, {36, 7}}},
            {[&] { return RynDspReadData_24(kDsp, 1, 2, 3, &out1, &out2); },
             0x99F,
             32,
             20,
             {{16, kDsp}, {20, 1}, {24, 3}, {28, 2}}},
            {[&] { return RynDspRestartProgram_4(0x60000001); }, 0x9A1, 20, 12, {{16, 0x60000001}}},
            {[&] { return RynDspReadHpi_16(0x10000001, 4, 5, 6); },
             0x9A2,
             32,
             12,
             {{16, 0x10000001}, {20, 4}, {24, 5}, {28, 6}}},
            {[&] { return RynDspWriteHpi_16(kDsp, 7, 8, 9); }, 0x9A3, 32, 12, {{16, kDsp}, {20, 7}, {24, 8}, {28, 9}}},
        });
    // Read data: the values at 8 and 12, stored whatever the result at 16.
    driver.script(ScriptedReply{}.word(8, 0x11).word(12, 0x22).word(16, 0xE000000Fu));
    EXPECT_EQ(RynDspReadData_24(kDsp, 1, 2, 3, &out1, &out2), 0xE000000Fu);
    EXPECT_EQ(out1 << 8 | out2, 0x1122u);
}

TEST_F(DspAccess, RefusedArgumentsSendNothing) {
    uint8_t buffer[4] = {};
    const std::vector<uint8_t> large(1985);
    for (DeviceHandle handle : {0x0u, 0x70000000u, 0xF0000001u}) {
        for (ResultCode code : {RynDspIoControl_36(handle, 0, nullptr, 0, nullptr, 0, nullptr, 0, 0),
                                RynDspReadData_24(handle, 0, 0, 0, nullptr, nullptr), RynDspReadHpi_16(handle, 0, 0, 0),
                                RynDspWriteHpi_16(handle, 0, 0, 0), RynDspRestartProgram_4(handle),
                                RynDspRunProgram_12(handle, "x", ""), RynDspRunImage_16(handle, nullptr, 0, 0)}) {
            EXPECT_EQ(code & 0xFF8000FFu, 0xB580000Bu) << std::hex << code;  // failure, DSP module, error 11
        }
    }
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, large.data(), 1985, buffer, 4, nullptr, 0, 0)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, nullptr, 4, buffer, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, buffer, 4, nullptr, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(driver.requestCount(), 0u);
    EXPECT_EQ(RynDspIoControl_36(kDsp, 0, large.data(), 1984, buffer, 4, nullptr, 0, 0), 0u);
}

TEST_F(DspAccess, MessageAnswers) {
    ScriptedReply answer = ScriptedReply{}.word(8, 0x0000000Cu);
    answer.bytes.emplace_back(14, std::vector<uint8_t>(1984, 0x77));
    const ScriptedReply failed = ryn::test::failedCall(1998).word(12, 20);  // a failed call that wrote a reply
    const struct {
        ScriptedReply reply;
        uint16_t answerLength;
        uint32_t outputSize;
        ResultCode result;
        uint32_t reported, copied;
    } cases[] = {
        {answer, 100, 40, 0x0000000C, 100, 40},          // the full length, what fits copied
        {answer, 0xFFFF, 2000, 0x0000000C, 1984, 1984},  // no more than a reply holds
        {failed, 0, 2000, RYN_RESULT_CALL_FAILED, 0, 0},
        {ryn::test::failedCall(0), 0, 2000, RYN_RESULT_NO_REPLY, 0, 0},
    };
    for (const auto &c : cases) {
        std::vector<uint8_t> out(2001, 0xEE);
        uint32_t length = 0xABCD;
        ScriptedReply reply = c.reply;
        if (c.answerLength != 0) reply.word(12, c.answerLength);
        driver.script(reply);
        EXPECT_EQ(RynDspIoControl(kDsp, 1, nullptr, 0, out.data(), c.outputSize, &length, 0, 0), c.result);
        EXPECT_EQ(length, c.reported);
        EXPECT_EQ(std::count(out.begin(), out.end(), 0x77), static_cast<long>(c.copied));
        EXPECT_EQ(out[c.copied], 0xEE);
    }
}

}  // namespace
