#include <gtest/gtest.h>

#include <cmath>

#include "support/ConnectedTest.h"

namespace {

using ToneGenerators = ryn::test::ConnectedTest;
constexpr DeviceHandle kBlock = 0x20000011;

// Refusals at the limits (nothing sent), each call's layout through a
// logical device, then the same call through handles of other kinds.
TEST_F(ToneGenerators, LimitsLayoutsAndWrongHandleKinds) {
    DeviceHandle h = kBlock;
    uint16_t v = 0x5555;
    char d[128];
    uint32_t e[128];
    for (uint32_t i = 0; i < 128; ++i) d[i] = '9', e[i] = 7;
    const auto sine = [&](auto t, int n) { return RynToneSineWaveGeneratorInit_20(h, 9, t, n, 8); };
    // Phase first, level before frequency, NaN level, a good tone before one whose angle overflows.
    const SineToneParams two[] = {{1000, 0, 0}, {350, -10, 0}}, five[] = {{1000, 0, 0}, {}, {}, {}, {0, 0, 0}},
                         bad[] = {{1, 1, 1}, {-1, 0.1, 0}, {-1e-300, 0, 0}, {0, NAN, 0}, {0, 0, 0}, {1e308, 0, 0}};
    const ResultCode nine[] = {RynToneDtmfDial_20(h, d, 128, 0, 0), RynToneMfDial_20(h, d, -1, 0, 0),
                               RynToneSequenceSend_20(h, e, 128, 0, 0), RynToneSequenceSend_20(h, e, -1, 0, 0)};
    const ResultCode ten[] = {RynToneMfDial_20(h, nullptr, 1, 0, 0), RynToneSequenceSend_20(h, nullptr, 1, 0, 0),
                              RynToneReadVal_8(h, nullptr), RynToneValSamplerReadData_8(h, nullptr), sine(nullptr, 1)};
    for (ResultCode code : nine) EXPECT_EQ(code & 0xFF8000FFu, 0xB8800009u) << std::hex << code;  // tone, error 9
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(sine(bad + i, 2) & 0xFF8000FFu, 0xB8800009u) << i;
    for (ResultCode code : ten) EXPECT_EQ(code & 0xFF8000FFu, 0xB880000Au) << std::hex << code;
    EXPECT_EQ(sine(bad, 1) & 0xFF8000FFu, 0xB8800011u);
    EXPECT_NE(RynResultLineNum(sine(bad + 1, 1)), RynResultLineNum(sine(bad + 2, 1))) << "level before frequency";
    EXPECT_EQ(driver.requestCount(), 0u);
    const std::vector<ryn::test::LayoutRow> rows = {
        {[&] { return RynToneConstValGeneratorInit_12(h, 1, 2); }, 0x99A, 26, 12, {{20, 1}, {22, 0x20000}}},
        {[&] { return RynToneValSamplerInit_8(h, 0x11223344); }, 0x9AB, 26, 12, {{20, 0x11223344}, {22, 0x1122}}},
        {[&] { return RynToneValSamplerReadData_8(h, &v); }, 0x9AC, 20, 14, {}},
        {[&] { return RynToneEffectsGeneratorInit_16(h, 1, 2, 3); }, 0x99C, 32, 12, {{20, 1}, {24, 2}, {28, 3}}},
        {[&] { return sine(two, 2); }, 0x99D, 62, 12, {{24, 23170}, {26, 0xF4B00000}, {30, 31537}, {32, 0xFEA10000}}},
        {[&] { return sine(five, 7); }, 0x99D, 62, 12, {{20, 9}, {48, 0x8000}, {54, 7}, {58, 8}}},
        {[&] { return sine(nullptr, -1); }, 0x99D, 62, 12, {{24, 0}, {54, ~0u}}},
        {[&] { return RynToneDtmfGeneratorInit_16(h, 1, '#', 3); }, 0x99E, 30, 12, {{20, 1}, {24, 3}, {26, '#' << 16}}},
        {[&] { return RynToneDtmfDiallerInit_20(h, 1, 2, 3, 4); }, 0x99F, 36, 12, {{20, 1}, {24, 2}, {32, 4}}},
        {[&] { return RynToneDtmfDial_20(h, d, 127, 5, 6); }, 0x9A0, 160, 12, {{144, 0x393939}, {148, 127}, {156, 6}}},
        {[&] { return RynToneDtmfDial_20(h, nullptr, 0, 5, 6); }, 0x9A0, 160, 12, {{20, 0}, {148, 0}, {152, 5}}},
        {[&] { return RynToneMfDiallerInit_24(h, 1, 2, 3, 4, 5); }, 0x9AF, 40, 12, {{20, 1}, {32, 4}, {36, 5}}},
        {[&] { return RynToneMfDial_20(h, "12", 2, 5, 6); }, 0x9B0, 160, 12, {{20, 0x3231}, {148, 2}, {156, 6}}},
        {[&] { return RynToneSequenceGeneratorInit_20(h, 1, 2, 3, 4); }, 0x9A1, 36, 12, {{20, 1}, {32, 4}}},
        {[&] { return RynToneSequenceSend_20(h, e, 127, 5, 6); }, 0x9A2, 544, 12, {{20, 7}, {524, 7}, {528, 0}}},
        {[&] { return RynToneSequenceSend_20(h, e, 127, 5, 6); }, 0x9A2, 544, 12, {{532, 127}, {536, 5}, {540, 6}}},
        {[&] { return RynToneReadVal_8(h, &v); }, 0x9AA, 20, 14, {}},
    };
    for (ryn::test::LayoutRow row : rows) {
        h = kBlock;
        row.fields.emplace_back(16, kBlock);
        ryn::test::expectLayouts(driver, {row});
        for (v = 0x5555; DeviceHandle handle : {0x0u, 0x10000011u, 0x30000000u, 0x40000011u, 0xF0000000u})
            EXPECT_EQ((h = handle, row.call()) & 0xFF8000FFu, 0xB880000Bu) << std::hex << row.function;  // error 11
        EXPECT_EQ(driver.requestCount() << 16 | v, 0x15555u) << "nothing more sent, nothing stored";
    }
    // A value read stores reply offset 8 whatever the result at offset 10.
    driver.script(ryn::test::failedCall(0).word(8, 0xBEEF));
    EXPECT_EQ(RynToneReadVal_8(kBlock, &v), RYN_RESULT_NO_REPLY);
    EXPECT_EQ(v, 0xBEEF);
}

}  // namespace
