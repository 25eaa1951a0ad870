#include <gtest/gtest.h>

#include <cmath>

#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using ToneGenerators = ConnectedTest;
constexpr DeviceHandle kBlock = 0x20000011;
constexpr ResultCode kFailure = 0xB8800000u;  // failure, tone module

// Refusals at the limits, counts before pointers, nothing sent: error 9, 10
// or 17 (a phase, checked first). Then each call's layout through a logical
// device, and the same call through handles of other kinds.
TEST_F(ToneGenerators, LimitsLayoutsAndWrongHandleKinds) {
    DeviceHandle h = kBlock;
    uint16_t v = 0x5555;
    char d[128];
    uint32_t e[128];
    for (uint32_t i = 0; i < 128; ++i) d[i] = '9', e[i] = i + 1;
    const auto sine = [&](auto t, int n) { return RynToneSineWaveGeneratorInit_20(h, 9, t, n, 8); };
    const auto send = [&](auto t, int n) { return RynToneSequenceSend_20(h, t, n, 5, 6); };
    // Refused tones: a phase (checked before the level and frequency it comes with), a level with a
    // frequency (the level checked first), a frequency just below 0, a NaN level, and a good tone followed by
    // one whose angle overflows.
    const SineToneParams five[] = {{1000, 0, 0}, {350, -10, 0}, {}, {}, {0, 0, 0}},
                         bad[] = {{1, 1, 1}, {-1, 0.1, 0}, {-1e-300, 0, 0}, {0, NAN, 0}, {0, 0, 0}, {1e308, 0, 0}};
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{((codes & 0xFF8000FFu) ^ kFailure)...}; };
    EXPECT_EQ(errors(RynToneDtmfDial_20(h, nullptr, 128, 0, 0), RynToneMfDial_20(h, d, -1, 0, 0), send(nullptr, 128),
                     send(e, -1), sine(bad + 1, 2), sine(bad + 2, 2), sine(bad + 3, 2), sine(bad + 4, 2),
                     RynToneMfDial_20(h, nullptr, 1, 0, 0), send(nullptr, 1), RynToneReadVal_8(h, nullptr),
                     RynToneValSamplerReadData_8(h, nullptr), sine(nullptr, 1), sine(bad, 1)),
              (std::vector<uint32_t>{9, 9, 9, 9, 9, 9, 9, 9, 10, 10, 10, 10, 10, 17}));
    EXPECT_NE(RynResultLineNum(sine(bad + 1, 1)), RynResultLineNum(sine(bad + 2, 1))) << "level before frequency";
    EXPECT_EQ(driver.requestCount(), 0u);
    const std::vector<LayoutRow> rows = {
        {[&] { return RynToneConstValGeneratorInit_12(h, 1, 2); }, 0x99A, 26, 12, {{20, 1}, {22, 0x20000}}},
        {[&] { return RynToneValSamplerInit_8(h, 0x11223344); }, 0x9AB, 26, 12, {{20, 0x11223344}, {22, 0x1122}}},
        {[&] { return RynToneValSamplerReadData_8(h, &v); }, 0x9AC, 20, 14, {}},
        {[&] { return RynToneEffectsGeneratorInit_16(h, 1, 2, 3); }, 0x99C, 32, 12, {{20, 1}, {24, 2}, {28, 3}}},
        {[&] { return sine(five, 7); }, 0x99D, 62, 12, {{24, 23170}, {32, 0xFEA10000}, {48, 0x8000}, {54, 7}}},
        {[&] { return sine(nullptr, -1); }, 0x99D, 62, 12, {{20, 9}, {24, 0}, {54, ~0u}, {58, 8}}},
        {[&] { return RynToneDtmfGeneratorInit_16(h, 1, '#', 3); }, 0x99E, 30, 12, {{20, 1}, {24, 3}, {26, '#' << 16}}},
        {[&] { return RynToneDtmfDiallerInit_20(h, 1, 2, 3, 4); }, 0x99F, 36, 12, {{20, 1}, {24, 2}, {32, 4}}},
        {[&] { return RynToneDtmfDial_20(h, d, 127, 5, 6); }, 0x9A0, 160, 12, {{144, 0x393939}, {148, 127}, {156, 6}}},
        {[&] { return RynToneMfDiallerInit_24(h, 1, 2, 3, 4, 5); }, 0x9AF, 40, 12, {{20, 1}, {32, 4}, {36, 5}}},
        {[&] { return RynToneMfDial_20(h, nullptr, 0, 5, 6); }, 0x9B0, 160, 12, {{148, 0}, {152, 5}}},
        {[&] { return RynToneSequenceGeneratorInit_20(h, 1, 2, 3, 4); }, 0x9A1, 36, 12, {{20, 1}, {32, 4}}},
        {[&] { return send(e, 127); }, 0x9A2, 544, 12, {{20, 1}, {524, 127}, {528, 0}, {532, 127}, {540, 6}}},
        {[&] { return RynToneReadVal_8(h, &v); }, 0x9AA, 20, 14, {}},
    };
    for (LayoutRow row : rows) {
        h = kBlock, row.fields.emplace_back(16, kBlock);
        expectLayouts(driver, {row});
        for (v = 0x5555; DeviceHandle handle : {0x0u, 0x1FFFFFFFu, 0x30000000u, 0xF0000000u})
            EXPECT_EQ((h = handle, row.call()) & 0xFF8000FFu, kFailure | 11) << std::hex << row.function;
        EXPECT_EQ(driver.requestCount() << 16 | v, 0x15555u) << "nothing more sent, nothing stored";
    }
    // A value read stores reply offset 8 whatever the result at offset 10.
    driver.script(failedCall(0).word(8, 0xBEEF));
    EXPECT_EQ(RynToneReadVal_8(kBlock, &v), RYN_RESULT_NO_REPLY);
    EXPECT_EQ(v, 0xBEEF);
}

}  // namespace
