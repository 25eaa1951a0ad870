#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "RynHwDll.h"
#include "support/AllocationFailure.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using LineControls = ConnectedTest;

constexpr DeviceHandle kLine = 0x10000003;

std::string text(const RecordedRequest &request, size_t from, size_t to) {
    return std::string(request.input.begin() + from, request.input.begin() + to);
}

TEST_F(LineControls, RequestLayouts) {
    uint32_t value = 0;
    expectLayouts(
        driver,
        {
            {[&] { return RynPotsOffHook_4(kLine); }, 0x99A, 20, 12, {{16, kLine}}},
            {[&] { return RynPotsOnHook_4(kLine); }, 0x99B, 20, 12, {{16, kLine}}},
            {[&] { return RynPotsHookFlash_16(kLine, 1, 2, 3); }, 0x99C, 32, 12, {{20, 1}, {24, 2}, {28, 3}}},
            {[&] { return RynPotsSetLiMode_8(kLine, 5); }, 0x99E, 24, 12, {{20, 5}}},
            {[&] { return RynPotsGetLiMode_8(kLine, &value); }, 0x99F, 20, 16, {}},
            {[&] { return RynSlicSetResetPin_8(kLine, 1); }, 0x99A, 24, 12, {{20, 1}}},
            {[&] { return RynSlicEnableDialTone_4(kLine); }, 0x99B, 20, 12, {}},
            {[&] { return RynSlicEnableBusyTone_4(kLine); }, 0x99C, 20, 12, {}},
            {[&] { return RynSlicEnableReorderTone_4(kLine); }, 0x99D, 20, 12, {}},
            {[&] { return RynSlicEnableCongestionTone_4(kLine); }, 0x99E, 20, 12, {}},
            {[&] { return RynSlicEnableRingBackTone_4(kLine); }, 0x9A0, 20, 12, {}},
            {[&] { return RynSlicGetHookState_8(kLine, &value); }, 0x9A1, 20, 16, {}},
            {[&] { return RynSlicStopRingState_8(kLine, nullptr); }, 0x9A3, 20, 16, {}},
            {[&] { return RynSlicEnableAudio_8(kLine, &value); }, 0x9A4, 20, 16, {}},
            {[&] { return RynSlicSignalDisconnectState_12(kLine, 9, &value); }, 0x9A5, 24, 16, {{20, 9}}},
            {[&] { return RynBrdSetClocks_12(kLine, 1, 2); }, 0x99A, 28, 12, {{20, 1}, {24, 2}}},
            {[&] { return RynBrdTssConstByte_16(kLine, 1, 2, 0xD5); }, 0x99B, 30, 12, {{24, 2}, {26, 0xD50000}}},
            {[&] { return RynBrdCodecSetLaw_8(kLine, 1); }, 0x99C, 24, 12, {{20, 1}}},
            {[&] { return RynJtagControl_8(kLine, 4); }, 0x99A, 24, 12, {{20, 4}}},
        });
    driver.script(ScriptedReply{}.word(8, 0x77).word(12, 0xE0000001));
    EXPECT_EQ(RynSlicGetHookState_8(kLine, &value), 0xE0000001u);  // the value whatever the result
    EXPECT_EQ(value, 0x77u);
}

TEST_F(LineControls, PulseDialDigitLimit) {
    const std::string digits(128, '7');
    const auto dial = [&](uint32_t count) {
        return RynPotsPulseDial_32(kLine, 1, 2, 3, reinterpret_cast<const uint8_t *>(digits.data()), count, 6, 7);
    };
    EXPECT_EQ(dial(127), 0u);
    RecordedRequest sent = driver.lastRequest();
    EXPECT_EQ(sent.input.size(), 172u);
    EXPECT_EQ(text(sent, 32, 160), std::string(127, '7') + '\0');
    expectFields(sent, {{28, 3}, {160, 127}, {164, 6}, {168, 7}});
    EXPECT_EQ(dial(0), 0u);
    EXPECT_EQ(text(driver.lastRequest(), 32, 160), std::string(128, '\0'));
    driver.clear();
    EXPECT_EQ(dial(128) & 0xFF8000FFu, 0xB7000009u);  // failure, POTS module, error 9
    EXPECT_EQ(dial(0xFFFFFFFF) & 0xFFu, 9u);
    EXPECT_EQ(driver.requestCount(), 0u);
}

TEST_F(LineControls, CallerIdentificationFields) {
    uint32_t status = 55;
    const struct {
        std::string name;
        ResultCode result;
        std::string field;  // bytes 20..35
    } names[] = {
        {std::string(15, 'N'), 0, std::string(15, 'N') + '\0'},
        {"Ann", 0, std::string("Ann") + std::string(13, '\0')},
        {"", 0, std::string(16, '\0')},
        {std::string(16, 'N'), 0x80000009, ""},
    };
    for (const auto &n : names) {
        driver.clear();
        EXPECT_EQ(RynSlicSetUserName_12(kLine, n.name.c_str(), &status), n.result) << n.name;
        EXPECT_EQ(n.result == 0 ? text(driver.lastRequest(), 20, 36) : "", n.field) << n.name;
        EXPECT_EQ(driver.requestCount(), n.result == 0 ? 1u : 0u);
    }
    status = 55;
    for (const char *number : {"123456789", "12345678901"}) {
        EXPECT_EQ(RynSlicSetPhoneNumber_12(kLine, number, &status), 0x80000009u);
    }
    EXPECT_EQ(status, 55u);  // refused calls leave it
    EXPECT_EQ(RynSlicSetPhoneNumber_12(kLine, "ABCDEFGHIJ", &status), 0u);
    EXPECT_EQ(driver.lastRequest().input.size(), 32u);
    EXPECT_EQ(text(driver.lastRequest(), 20, 31), std::string("ABCDEFGHIJ") + '\0');
    EXPECT_EQ(RynSlicSetPhoneNumber_12(kLine, nullptr, &status), 0x8000000Au);
}

TEST_F(LineControls, CallerIdentificationStamp) {
    const char *zone = std::getenv("TZ");
    const std::string saved = zone != nullptr ? zone : "";
    setenv("TZ", "UTC0", 1);
    tzset();
    // The driver's clock: 100-ns intervals since 1601, at the time reply's offset 8.
    const auto clock = [](uint64_t time, ResultCode result = 0) {
        return ScriptedReply{}
            .word(8, static_cast<uint32_t>(time))
            .word(12, static_cast<uint32_t>(time >> 32))
            .word(16, result);
    };
    uint32_t status = 55;
    driver.script(clock(133549852790000000ull));  // 2024-03-15 14:07:59 UTC
    driver.script(ScriptedReply{}.word(8, 0x31).word(12, 0));
    EXPECT_EQ(RynSlicSendCallerID_8(kLine, &status), 0u);
    EXPECT_EQ(status, 0x31u);
    const RecordedRequest sent = driver.lastRequest();
    EXPECT_EQ(sent.function(), 0x9A8u);
    EXPECT_EQ(sent.input.size(), 30u);
    EXPECT_EQ(text(sent, 20, 29), std::string("03151407") + '\0');

    driver.clear();
    driver.script(clock(137919572480000000ull));  // 2038-01-19 03:14:08 UTC: a negative 32-bit time
    EXPECT_EQ(RynSlicSendCallerID_8(kLine, &status), 0x80000005u);
    EXPECT_EQ(status, 0u);
    status = 55;
    driver.script(clock(0, 0xE0000002));  // the clock cannot be read
    EXPECT_EQ(RynSlicSendCallerID_8(kLine, &status), 0xE0000002u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(driver.requestCount(), 2u);  // the two clock queries alone
    if (zone != nullptr)
        setenv("TZ", saved.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TEST_F(LineControls, RingingWaitsFirst) {
    RynDrvReleaseLib_0();  // the exchange then fails at once
    uint32_t status = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RynSlicStartRingState_8(kLine, &status), RYN_RESULT_NO_REPLY);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(LineControls, JtagScans) {
    // The driver sees the input block and an empty output block, both by
    // address, and answers without a terminator.
    std::string seenInput, seenOutput;
    driver.setHook([&](const RynDriverRequest &request) {
        ASSERT_EQ(request.bufferCount, 2u);
        seenInput.assign(static_cast<const char *>(request.buffers[0].address), request.buffers[0].length);
        seenOutput.assign(static_cast<const char *>(request.buffers[1].address), request.buffers[1].length);
        std::memset(request.buffers[1].address, '1', request.buffers[1].length);
    });
    char output[8];
    std::memset(output, 'x', sizeof output);
    EXPECT_EQ(RynJtagScanDr_16(kLine, 3, "0110", output), 0u);
    const RecordedRequest sent = driver.lastRequest();
    EXPECT_EQ(sent.function(), 0x99Cu);
    EXPECT_EQ(sent.input.size(), 40u);
    expectFields(sent, {{20, 3}, {28, 5}, {36, 5}});
    EXPECT_EQ(seenInput, std::string("0110") + '\0');
    EXPECT_EQ(seenOutput[0], '\0');
    EXPECT_EQ(std::string(output, 6), std::string("1111") + '\0' + 'x');  // bounded and terminated
    driver.setHook(nullptr);

    EXPECT_EQ(RynJtagScanIr_16(kLine, 3, "", output), 0u);
    EXPECT_EQ(driver.lastRequest().function(), 0x99Bu);
    driver.clear();
    {
        AllocationFailure noMemory;
        std::memset(output, 'x', sizeof output);
        EXPECT_EQ(RynJtagScanIr_16(kLine, 3, "01", output) & 0xFF8000FFu, 0xB6800007u);  // JTAG module, error 7
    }
    EXPECT_EQ(output[0], 'x');
    EXPECT_EQ(RynJtagScanIr_16(kLine, 3, nullptr, output) & 0xFFu, 10u);
    EXPECT_EQ(driver.requestCount(), 0u);
    RynDrvReleaseLib_0();
    EXPECT_EQ(RynJtagScanDr(kLine, 3, "0110", output), RYN_RESULT_NO_REPLY);
    EXPECT_STREQ(output, "");
}

}  // namespace
