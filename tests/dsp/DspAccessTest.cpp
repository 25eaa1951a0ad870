#include <gtest/gtest.h>

#include <functional>
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
    const struct Row {
        std::function<ResultCode()> call;
        uint32_t function, inputLength, outputLength;
        std::vector<std::pair<size_t, uint32_t>> words;
    } rows[] = {
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
    };
    for (const Row &row : rows) {
        driver.clear();
        EXPECT_EQ(row.call(), 0u);
        const auto request = driver.lastRequest();
        EXPECT_EQ(request.function(), row.function);
        EXPECT_EQ(request.input.size(), row.inputLength);
        EXPECT_EQ(request.outputLength, row.outputLength);
        for (const auto &[offset, value] : row.words) EXPECT_EQ(request.word(offset), value) << "offset " << offset;
    }

    // Read data: the values at 8 and 12, the result at 16, stored whatever the result.
    driver.script(ScriptedReply{}.word(8, 0x11).word(12, 0x22).word(16, 0xE000000Fu));
    EXPECT_EQ(RynDspReadData_24(kDsp, 1, 2, 3, &out1, &out2), 0xE000000Fu);
    EXPECT_EQ(out1, 0x11u);
    EXPECT_EQ(out2, 0x22u);
    EXPECT_EQ(RynDspReadData(kDsp, 1, 2, 3, nullptr, nullptr), 0u);  // null outputs are skipped
}

TEST_F(DspAccess, RefusedArgumentsSendNothing) {
    uint8_t buffer[4] = {};
    const std::vector<uint8_t> large(1985);
    for (DeviceHandle handle : {0x0u, 0x70000000u, 0xF0000001u}) {
        const ResultCode codes[] = {
            RynDspIoControl_36(handle, 0, nullptr, 0, nullptr, 0, nullptr, 0, 0),
            RynDspReadData_24(handle, 0, 0, 0, nullptr, nullptr),
            RynDspReadHpi_16(handle, 0, 0, 0),
            RynDspWriteHpi_16(handle, 0, 0, 0),
            RynDspRestartProgram_4(handle),
            RynDspRunProgram_12(handle, "x", ""),
            RynDspRunImage_16(handle, nullptr, 0, 0),
        };
        for (ResultCode code : codes) {
            EXPECT_EQ(code & 0xFF8000FFu, 0xB580000Bu) << std::hex << code;  // failure, DSP module, error 11
        }
    }
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, large.data(), 1985, buffer, 4, nullptr, 0, 0)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, nullptr, 4, buffer, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(RynResultErrorCode(RynDspIoControl_36(kDsp, 0, buffer, 4, nullptr, 4, nullptr, 0, 0)), 10u);
    EXPECT_EQ(driver.requestCount(), 0u);

    EXPECT_EQ(RynDspIoControl_36(kDsp, 0, large.data(), 1984, buffer, 4, nullptr, 0, 0), 0u);
    EXPECT_EQ(driver.lastRequest().input[2021], 0u);  // the whole block goes out, the input fills it
}

TEST_F(DspAccess, MessageAnswers) {
    std::vector<uint8_t> answer(1984);
    for (size_t i = 0; i < answer.size(); ++i) answer[i] = static_cast<uint8_t>(i + 1);
    uint8_t out[64];
    uint32_t length = 0;

    // 100 answer bytes into 40: 40 copied, 100 reported.
    std::fill(std::begin(out), std::end(out), 0xEE);
    ScriptedReply reply = ScriptedReply{}.word(8, 0x0000000Cu).word(12, 100);
    reply.bytes.emplace_back(14, answer);
    driver.script(reply);
    EXPECT_EQ(RynDspIoControl_36(kDsp, 1, nullptr, 0, out, 40, &length, 0, 0), 0x0000000Cu);
    EXPECT_EQ(length, 100u);
    EXPECT_EQ(out[39], 40);
    EXPECT_EQ(out[40], 0xEE);

    // An answer length beyond what a reply holds is bounded to 1984.
    std::vector<uint8_t> whole(2000, 0xEE);
    driver.script(ScriptedReply{}.word(12, 0xFFFF));
    EXPECT_EQ(RynDspIoControl_36(kDsp, 1, nullptr, 0, whole.data(), 2000, &length, 0, 0), 0u);
    EXPECT_EQ(length, 1984u);
    EXPECT_EQ(whole[1983], 0u);
    EXPECT_EQ(whole[1984], 0xEE);

    // No reply: nothing copied, length 0; a failed call with a written reply alike.
    std::fill(std::begin(out), std::end(out), 0xEE);
    ScriptedReply failed = ryn::test::failedCall(1998);
    failed.word(12, 20);
    driver.script(failed);
    EXPECT_EQ(RynDspIoControl_36(kDsp, 1, nullptr, 0, out, 64, &length, 0, 0), RYN_RESULT_CALL_FAILED);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(out[0], 0xEE);
    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ(RynDspIoControl(kDsp, 1, nullptr, 0, out, 64, &length, 0, 0), RYN_RESULT_NO_REPLY);
    EXPECT_EQ(length, 0u);
}

}  // namespace
