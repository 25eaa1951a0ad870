#include <gtest/gtest.h>

#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;
using DspAccess = ryn::test::ConnectedTest;

constexpr DeviceHandle kDsp = 0x20000011;

TEST_F(DspAccess, RequestLayouts) {
    ryn::test::SentRequests sent(driver);
    uint32_t out1 = 0, out2 = 0, length = 0;
    uint8_t answer[8] = {};
    const uint8_t input[3] = {0xA1, 0xA2, 0xA3};
    sent(RynDspIoControl_36(kDsp, 0xBEEF, input, 3, answer, 8, &length, 0xA, 0xB), 0x99E, 2022, 1998,
         {kDsp, 5, 8, 0xA, 0xB, 0xA2A1BEEF, 0xA3});
    sent(RynDspIoControl_36(kDsp, 7, nullptr, 0, nullptr, 0, nullptr, 0, 0), 0x99E, 2022, 1998, {kDsp, 2, 0, 0, 0, 7});
    // The second and third values change places.
    sent(RynDspReadData_24(kDsp, 1, 2, 3, &out1, &out2), 0x99F, 32, 20, {kDsp, 1, 3, 2});
    sent(RynDspRestartProgram_4(0x60000001), 0x9A1, 20, 12, {0x60000001});
    sent(RynDspReadHpi_16(0x10000001, 4, 5, 6), 0x9A2, 32, 12, {0x10000001, 4, 5, 6});
    sent(RynDspWriteHpi_16(kDsp, 7, 8, 9), 0x9A3, 32, 12, {kDsp, 7, 8, 9});
    // Read data: the values at 8 and 12, stored whatever the result at 16.
    driver.script(ScriptedReply{}.word(8, 0x11).word(12, 0x22).word(16, 0xE000000Fu));
    EXPECT_EQ(RynDspReadData_24(kDsp, 1, 2, 3, &out1, &out2), 0xE000000Fu);
    EXPECT_EQ(out1 << 8 | out2, 0x1122u);
}

TEST_F(DspAccess, RefusedArgumentsSendNothing) {
    uint8_t buffer[4] = {};
    const std::vector<uint8_t> large(1985);
    for (DeviceHandle handle : {0x0u, 0x70000000u, 0xF0000001u})
        for (ResultCode code : {RynDspIoControl_36(handle, 0, nullptr, 0, nullptr, 0, nullptr, 0, 0),
                                RynDspReadData_24(handle, 0, 0, 0, nullptr, nullptr), RynDspReadHpi_16(handle, 0, 0, 0),
                                RynDspWriteHpi_16(handle, 0, 0, 0), RynDspRestartProgram_4(handle),
                                RynDspRunProgram_12(handle, "x", ""), RynDspRunImage_16(handle, nullptr, 0, 0)})
            EXPECT_EQ(code & 0xFF8000FFu, 0xB580000Bu) << std::hex << code;  // failure, DSP module, error 11
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, large.data(), 1985, buffer, 4, nullptr, 0, 0)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, nullptr, 4, buffer, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, buffer, 4, nullptr, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(driver.requestCount(), 0u);
    EXPECT_EQ(RynDspIoControl_36(kDsp, 0, large.data(), 1984, buffer, 4, nullptr, 0, 0), 0u);
}

TEST_F(DspAccess, MessageAnswers) {
    // An answer of `length` bytes at 14 (a reply holds 1984 of 0x77), the result at 8.
    const auto answer = [](uint16_t length) {
        return ScriptedReply{}.word(8, 0xC).word(12, length).put(14, std::vector<uint8_t>(1984, 0x77));
    };
    // The reply, the output size; the result, the length reported and the bytes copied.
    const std::tuple<ScriptedReply, uint32_t, ResultCode, uint32_t, uint32_t> cases[] = {
        {answer(100), 40, 0xC, 100, 40},          // the full length, what fits copied
        {answer(0xFFFF), 2000, 0xC, 1984, 1984},  // no more than a reply holds
        {ryn::test::failedCall(1998).word(12, 20), 2000, RYN_RESULT_CALL_FAILED, 0,
         0},  // a failed call that wrote a reply
        {ryn::test::failedCall(0), 2000, RYN_RESULT_NO_REPLY, 0, 0}};
    for (const auto &[reply, size, result, reported, copied] : cases) {
        std::vector<uint8_t> out(2001, 0xEE);
        uint32_t length = 0xABCD;
        driver.script(reply);
        EXPECT_EQ(RynDspIoControl(kDsp, 1, nullptr, 0, out.data(), size, &length, 0, 0), result);
        EXPECT_EQ(std::tuple(length, std::count(out.begin(), out.end(), 0x77), out[copied]),
                  std::tuple(reported, static_cast<long>(copied), 0xEE));
    }
}

}  // namespace
