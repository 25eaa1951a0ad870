#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <string>

#include "RynHwDll.h"
#include "support/AllocationFailure.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using namespace std::string_literals;
using LineControls = ConnectedTest;

constexpr DeviceHandle kLine = 0x10000003;

TEST_F(LineControls, RequestLayoutsAndRefusals) {
    SentRequests sent(driver);
    const std::string fifteen(15, 'N'), sixteen(16, 'N');
    const std::vector<uint8_t> sevens(128, '7');
    const auto dial = [](uint32_t count, const uint8_t *digits) {
        return RynPotsPulseDial_32(kLine, 1, 2, 3, digits, count, 6, 7);
    };
    uint32_t value = 0;
    sent(RynPotsOffHook_4(kLine), 0x99A, 20, 12, {kLine});
    sent(RynPotsOnHook_4(kLine), 0x99B, 20, 12, {kLine});
    sent(RynPotsHookFlash_16(kLine, 1, 2, 3), 0x99C, 32, 12, {kLine, 1, 2, 3});
    // Up to 127 digits and their NUL in a 128-byte area, the count after it.
    sent(dial(127, sevens.data()), 0x99D, 172, 12, {kLine, 1, 2, 3, 0x37373737});
    sent(dial(127, sevens.data()), 0x99D, 172, 12, {0x373737, 127, 6, 7}, 156);
    sent(dial(0, nullptr), 0x99D, 172, 12, {0, 0, 6}, 156);
    sent(RynPotsSetLiMode_8(kLine, 5), 0x99E, 24, 12, {kLine, 5});
    sent(RynPotsGetLiMode_8(kLine, nullptr), 0x99F, 20, 16, {kLine});  // the value is optional
    sent(RynSlicSetResetPin_8(kLine, 1), 0x99A, 24, 12, {kLine, 1});
    sent(RynSlicEnableDialTone_4(kLine), 0x99B, 20, 12, {kLine});
    sent(RynSlicEnableBusyTone_4(kLine), 0x99C, 20, 12, {kLine});
    sent(RynSlicEnableReorderTone_4(kLine), 0x99D, 20, 12, {kLine});
    sent(RynSlicEnableCongestionTone_4(kLine), 0x99E, 20, 12, {kLine});
    sent(RynSlicEnableRingBackTone_4(kLine), 0x9A0, 20, 12, {kLine});
    sent(RynSlicGetHookState_8(kLine, &value), 0x9A1, 20, 16, {kLine});
    sent(RynSlicStartRingState_8(kLine, &value), 0x9A2, 20, 16, {kLine});
    sent(RynSlicStopRingState_8(kLine, nullptr), 0x9A3, 20, 16, {kLine});
    sent(RynSlicEnableAudio_8(kLine, &value), 0x9A4, 20, 16, {kLine});
    sent(RynSlicSignalDisconnectState_12(kLine, 9, nullptr), 0x9A5, 24, 16, {kLine, 9});
    // A name ends with its NUL, or at byte 35; a number has exactly 10 characters.
    sent(RynSlicSetUserName_12(kLine, "Ann", &value), 0x9A6, 36, 16, {kLine, 0x6E6E41, 0, 0, 0});
    sent(RynSlicSetUserName_12(kLine, fifteen.c_str(), nullptr), 0x9A6, 36, 16, {0x4E4E4E4E, 0x4E4E4E}, 28);
    sent(RynSlicSetPhoneNumber_12(kLine, "ABCDEFGHIJ", nullptr), 0x9A7, 32, 16,
         {kLine, 0x44434241, 0x48474645, 0x4A49});
    sent(RynBrdSetClocks_12(kLine, 1, 2), 0x99A, 28, 12, {kLine, 1, 2});
    sent(RynBrdTssConstByte_16(kLine, 1, 2, 0xD5), 0x99B, 30, 12, {kLine, 1, 2});
    EXPECT_EQ(driver.lastRequest().word(26), 0xD50000u);  // the byte at 28, 29 left 0
    sent(RynBrdCodecSetLaw_8(kLine, 1), 0x99C, 24, 12, {kLine, 1});
    sent(RynJtagControl_8(kLine, 4), 0x99A, 24, 12, {kLine, 4});
    // The scans' blocks (the library's own, staging the strings) go by
    // address: references 1 and 2 on 64-bit, in a 32-bit process the
    // addresses of the two blocks listed.
    char output[8] = "";
    const auto scanFields = [&](uint32_t length) {
        const std::vector<RynDriverBuffer> listed = driver.lastRequest().buffers;
        const auto field = [&](uint32_t reference) {
            return sizeof(void *) == 4
                       ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(listed.at(reference - 1).address))
                       : reference;
        };
        return std::vector<uint32_t>{kLine, 3, field(1), length, field(2), length};
    };
    const ResultCode ir = RynJtagScanIr_16(kLine, 3, "", output);
    sent(ir, 0x99B, 40, 12, scanFields(1));
    const ResultCode dr = RynJtagScanDr_16(kLine, 3, "0110", output);
    sent(dr, 0x99C, 40, 12, scanFields(5));

    // The value whatever the result.
    for (auto call : {RynPotsGetLiMode_8, RynSlicGetHookState_8}) {
        driver.script(ScriptedReply{}.word(8, 0x77).word(12, 0xE0000001));
        EXPECT_EQ(std::pair(call(kLine, &value), value), std::pair(0xE0000001u, 0x77u));
        value = 0;
    }
    // Refused calls send nothing and leave the status; the SLIC calls raise bare codes.
    driver.clear();
    value = 55;
    for (ResultCode code : {dial(128, sevens.data()), dial(0xFFFFFFFF, nullptr)})
        EXPECT_EQ(code & 0xFF8000FFu, 0xB7000009u);
    EXPECT_EQ(dial(1, nullptr) & 0xFF8000FFu, 0xB700000Au);  // POTS module
    for (ResultCode code :
         {RynSlicSetUserName_12(kLine, sixteen.c_str(), &value), RynSlicSetPhoneNumber_12(kLine, "123456789", &value),
          RynSlicSetPhoneNumber_12(kLine, "12345678901", &value)})
        EXPECT_EQ(code, 0x80000009u);
    for (ResultCode code :
         {RynSlicSetUserName_12(kLine, nullptr, &value), RynSlicSetPhoneNumber_12(kLine, nullptr, &value)})
        EXPECT_EQ(code, 0x8000000Au);
    for (ResultCode code : {RynJtagScanIr_16(kLine, 3, nullptr, output), RynJtagScanIr_16(kLine, 3, "01", nullptr)})
        EXPECT_EQ(code & 0xFF8000FFu, 0xB680000Au);  // JTAG module
    EXPECT_EQ(std::pair(value, driver.requestCount()), std::pair(55u, size_t{0}));
}

// The stamp is MMDDhhmm in local time, from the driver's clock: 100-ns
// intervals since 1601, at the time reply's offset 8.
TEST_F(LineControls, CallerIdentificationStamp) {
    const std::time_t when = 1710511679;  // 2024-03-15 14:07:59 UTC
    char stamp[16] = {};
    std::strftime(stamp, sizeof stamp, "%m%d%H%M", std::localtime(&when));
    const auto clock = [&](uint64_t seconds, ResultCode result) {
        const uint64_t time = (seconds + 11644473600) * 10000000;
        driver.script(ScriptedReply{}.word(8, static_cast<uint32_t>(time)).word(12, time >> 32).word(16, result));
    };
    uint32_t status = 55;
    clock(when, 0);
    driver.script(ScriptedReply{}.word(8, 0x31));
    EXPECT_EQ(std::pair(RynSlicSendCallerID_8(kLine, &status), status), std::pair(0u, 0x31u));
    const RecordedRequest sent = driver.lastRequest();
    ASSERT_EQ(std::tuple(sent.function(), sent.input.size(), sent.word(16)), std::tuple(0x9A8u, size_t{30}, kLine));
    EXPECT_EQ(std::string(sent.input.begin() + 20, sent.input.end()), std::string(stamp) + '\0' + '\0');
    clock(0x80000000, 0);  // 2038-01-19 03:14:08 UTC: a negative 32-bit time
    EXPECT_EQ(std::pair(RynSlicSendCallerID_8(kLine, &status), status), std::pair(0x80000005u, 0u));
    status = 55;
    clock(0, 0xE0000002);  // the clock cannot be read
    EXPECT_EQ(std::pair(RynSlicSendCallerID_8(kLine, &status), status), std::pair(0xE0000002u, 0u));
    EXPECT_EQ(driver.requestCount(), 4u);  // a clock query each, one stamp sent
}

TEST_F(LineControls, JtagBlocksAndRinging) {
    // Both blocks go by address, the output one empty; the driver answers
    // without a terminator.
    std::string seen;
    driver.setHook([&](const RynDriverRequest &request) {
        ASSERT_EQ(request.bufferCount, 2u);
        seen.assign(static_cast<const char *>(request.buffers[0].address), request.buffers[0].length);
        seen += static_cast<const char *>(request.buffers[1].address)[0];
        std::memset(request.buffers[1].address, '1', request.buffers[1].length);
    });
    char output[8] = "xxxxxxx";
    EXPECT_EQ(RynJtagScanDr_16(kLine, 3, "0110", output), 0u);
    EXPECT_EQ(seen + '|' + std::string(output, 6), "0110\0\0|1111\0x"s);  // bounded and terminated
    {
        AllocationFailure noMemory;
        EXPECT_EQ(RynJtagScanIr_16(kLine, 3, "01", output) & 0xFF8000FFu, 0xB6800007u);  // JTAG module, error 7
    }
    EXPECT_EQ(std::pair(driver.requestCount(), std::string(output)), std::pair(size_t{1}, "1111"s));
    RynDrvReleaseLib_0();  // the exchanges now fail at once
    EXPECT_EQ(RynJtagScanDr(kLine, 3, "0110", output), RYN_RESULT_NO_REPLY);
    EXPECT_STREQ(output, "");
    // The line gets its pause before every ring, whatever its state.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RynSlicStartRingState_8(kLine, nullptr), RYN_RESULT_NO_REPLY);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

}  // namespace
