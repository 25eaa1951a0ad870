#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using ToneDetectors = ConnectedTest;

constexpr DeviceHandle kBlock = 0x20000042;

TEST_F(ToneDetectors, RequestLayouts) {
    uint32_t wide = 0;
    uint8_t narrow = 0;
    const uint32_t tones[8] = {350, 440, 480, 620, 697, 1000, 1209, 2000};
    expectLayouts(driver,
                  {
                      {[&] { return RynToneSilenceDetectorInit_16(kBlock, 1, 2, 3); },
                       0x9A3,
                       32,
                       12,
                       {{16, kBlock}, {20, 1}, {28, 3}}},
                      {[&] { return RynToneSilenceDetectorStatus_8(kBlock, &wide); }, 0x9A4, 20, 16, {{16, kBlock}}},
                      {[&] { return RynToneDtmfDetectorInit_12(kBlock, 1, 2); }, 0x9A5, 28, 12, {{20, 1}, {24, 2}}},
                      {[&] { return RynToneDtmfDetectorStatus_8(kBlock, &narrow); }, 0x9A6, 20, 16, {}},
                      {[&] { return RynToneFskDetectorInit_8(kBlock, 7); }, 0x9A7, 24, 12, {{20, 7}}},
                      {[&] { return RynToneDialtoneDetectorInit_12(kBlock, 1, 2); }, 0x9A8, 28, 12, {{20, 1}, {24, 2}}},
                      {[&] { return RynToneDialtoneDetectorStatus_8(kBlock, &wide); }, 0x9A9, 20, 16, {}},
                      {[&] { return RynToneMfDetectorInit_24(kBlock, 1, 2, 3, 4, 0xBEEF); },
                       0x9AD,
                       38,
                       12,
                       {{32, 4}, {34, 0xBEEF0000}}},
                      {[&] { return RynToneMfDetectorStatus_8(kBlock, &narrow); }, 0x9AE, 20, 16, {}},
                      // Worked coefficients: 350 Hz 31537, 440 Hz 30830; words past the count are 0.
                      {[&] { return RynToneDualDetectorInit_28(kBlock, 9, tones, 2, 4, 5, 0x1234); },
                       0x9B1,
                       50,
                       12,
                       {{0, 0},
                        {12, 0},
                        {20, 9},
                        {24, 30830u << 16 | 31537},
                        {28, 0},
                        {32, 0},
                        {36, 2},
                        {40, 4},
                        {44, 5},
                        {46, 0x12340000}}},
                      {[&] { return RynToneDualDetectorStatus_8(kBlock, &narrow); }, 0x9B2, 20, 16, {}},
                      {[&] { return RynToneSingleDetectorInit_28(kBlock, 9, tones + 2, 6, 0, 0, 0); },
                       0x9B3,
                       50,
                       12,
                       {{24, 28959u << 16 | 30466}, {28, 23170u << 16 | 27979}, {32, 19072}, {36, 6}}},
                      {[&] { return RynToneSingleDetectorStatus_8(kBlock, &narrow); }, 0x9B4, 20, 16, {}},
                      {[&] { return RynToneSingleDetectorInit_28(kBlock, 9, tones, -1, 0, 0, 0); },
                       0x9B3,
                       50,
                       12,
                       {{24, 0}, {28, 0}, {32, 0}, {36, 0xFFFFFFFF}}},
                      {[&] { return RynToneDualDetectorInit_28(kBlock, 9, nullptr, 0, 0, 0, 0); },
                       0x9B1,
                       50,
                       12,
                       {{24, 0}, {36, 0}}},
                  });
}

TEST_F(ToneDetectors, StatusWidthsAndRefusals) {
    // The status at 8 whatever the result at 12: four bytes, or one.
    uint32_t wide = 0x11111111;
    uint8_t narrow[2] = {0x22, 0x22};
    driver.script(ScriptedReply{}.word(8, 0xA1B2C3D4).word(12, 0xE0000001));
    EXPECT_EQ(RynToneSilenceDetectorStatus_8(kBlock, &wide), 0xE0000001u);
    EXPECT_EQ(wide, 0xA1B2C3D4u);
    driver.script(ScriptedReply{}.word(8, 0xA1B2C3D4).word(12, 0));
    EXPECT_EQ(RynToneDtmfDetectorStatus(kBlock, narrow), 0u);
    EXPECT_EQ(narrow[0], 0xD4);
    EXPECT_EQ(narrow[1], 0x22);
    driver.script(failedCall(0));
    EXPECT_EQ(RynToneMfDetectorStatus_8(kBlock, narrow), RYN_RESULT_NO_REPLY);

    driver.clear();
    const uint32_t tones[7] = {};
    for (DeviceHandle handle : {0x0u, 0x10000001u, 0x40000001u, 0xF0000000u}) {
        for (ResultCode code :
             {RynToneSilenceDetectorInit_16(handle, 0, 0, 0), RynToneSilenceDetectorStatus_8(handle, &wide),
              RynToneDtmfDetectorInit_12(handle, 0, 0), RynToneDtmfDetectorStatus_8(handle, narrow),
              RynToneFskDetectorInit_8(handle, 0), RynToneDialtoneDetectorInit_12(handle, 0, 0),
              RynToneDialtoneDetectorStatus_8(handle, &wide), RynToneMfDetectorInit_24(handle, 0, 0, 0, 0, 0),
              RynToneMfDetectorStatus_8(handle, narrow), RynToneDualDetectorInit_28(handle, 0, tones, 1, 0, 0, 0),
              RynToneDualDetectorStatus_8(handle, narrow), RynToneSingleDetectorInit_28(handle, 0, tones, 1, 0, 0, 0),
              RynToneSingleDetectorStatus_8(handle, narrow)}) {
            EXPECT_EQ(code & 0xFF8000FFu, 0xB880000Bu) << std::hex << code;  // failure, tone module, error 11
        }
    }
    EXPECT_EQ(RynToneDualDetectorInit_28(kBlock, 0, tones, 7, 0, 0, 0) & 0xFF8000FFu, 0xB8800009u);
    EXPECT_EQ(RynToneSingleDetectorInit_28(kBlock, 0, nullptr, 1, 0, 0, 0) & 0xFFu, 10u);
    EXPECT_EQ(RynToneDtmfDetectorStatus_8(kBlock, nullptr) & 0xFFu, 10u);
    EXPECT_EQ(driver.requestCount(), 0u);
    EXPECT_EQ(narrow[1], 0x22);
}

}  // namespace
