#include <gtest/gtest.h>

#include <tuple>

#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using ToneDetectors = ConnectedTest;
constexpr DeviceHandle kBlock = 0x20000042;
constexpr ResultCode kFailure = 0xB8800000u;  // failure, tone module

// Each call's layout through a block's handle, then through handles of other
// kinds: refused with error 11, nothing sent, no status stored. The dual and
// single detectors: a coefficient word for each frequency (350 Hz 0x7B31,
// 440 0x786E, 480 0x7702, 620 0x711F, 697 0x6D4B, 1000 0x5A82), up to six,
// the rest 0; a negative count sends none and travels as given.
TEST_F(ToneDetectors, LayoutsRefusalsAndStatuses) {
    DeviceHandle h = kBlock;
    uint32_t wide = 0;
    uint8_t narrow[2] = {0, 0x55};
    const uint32_t f[6] = {350, 440, 480, 620, 697, 1000};
    const auto dual = [&](const uint32_t *t, int n) { return RynToneDualDetectorInit_28(h, 9, t, n, 4, 5 << 16, 7); };
    const auto single = [&](const uint32_t *t, int n) { return RynToneSingleDetectorInit_28(h, 9, t, n, 0, 0, 0); };
    const std::vector<LayoutRow> rows = {
        {[&] { return RynToneSilenceDetectorInit_16(h, 1, 2, 3); }, 0x9A3, 32, 12, {{20, 1}, {24, 2}, {28, 3}}},
        {[&] { return RynToneSilenceDetectorStatus_8(h, &wide); }, 0x9A4, 20, 16, {}},
        {[&] { return RynToneDtmfDetectorInit_12(h, 1, 2); }, 0x9A5, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynToneDtmfDetectorStatus_8(h, narrow); }, 0x9A6, 20, 16, {}},
        {[&] { return RynToneFskDetectorInit_8(h, 7); }, 0x9A7, 24, 12, {{20, 7}}},
        {[&] { return RynToneDialtoneDetectorInit_12(h, 1, 2); }, 0x9A8, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynToneDialtoneDetectorStatus_8(h, &wide); }, 0x9A9, 20, 16, {}},
        {[&] { return RynToneMfDetectorInit_24(h, 1, 2, 3, 4 << 16, 7); }, 0x9AD, 38, 12, {{20, 1}, {34, 0x70004}}},
        {[&] { return RynToneMfDetectorStatus_8(h, narrow); }, 0x9AE, 20, 16, {}},
        {[&] { return dual(f, 2); }, 0x9B1, 50, 12, {{20, 9}, {24, 0x786E7B31}, {28, 0}}},
        {[&] { return dual(nullptr, 0); }, 0x9B1, 50, 12, {{36, 0}, {40, 4}, {46, 0x70005}}},
        {[&] { return RynToneDualDetectorStatus_8(h, narrow); }, 0x9B2, 20, 16, {}},
        {[&] { return single(f, 6); }, 0x9B3, 50, 12, {{28, 0x711F7702}, {32, 0x5A826D4B}, {36, 6}}},
        {[&] { return single(f, -1); }, 0x9B3, 50, 12, {{24, 0}, {36, ~0u}}},
        {[&] { return RynToneSingleDetectorStatus_8(h, narrow); }, 0x9B4, 20, 16, {}},
    };
    for (LayoutRow row : rows) {
        h = kBlock, row.fields.emplace_back(16, kBlock);
        expectLayouts(driver, {row});
        wide = 0x5555, narrow[0] = 0x55;
        for (DeviceHandle handle : {0x0u, 0x1FFFFFFFu, 0x30000000u, 0xF0000000u})
            EXPECT_EQ((h = handle, row.call()) & 0xFF8000FFu, kFailure | 11) << std::hex << row.function;
        EXPECT_EQ(driver.requestCount() << 24 | wide << 8 | narrow[0], 0x1555555u) << "nothing sent, nothing stored";
    }
    // The count is checked before the frequencies, the handle before the
    // status pointer; nothing is sent.
    driver.clear(), h = kBlock;
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{((codes & 0xFF8000FFu) ^ kFailure)...}; };
    EXPECT_EQ(errors(dual(nullptr, 7), single(nullptr, 1), RynToneDtmfDetectorStatus_8(h, nullptr),
                     RynToneDtmfDetectorStatus_8(0, nullptr)),
              (std::vector<uint32_t>{9, 10, 10, 11}));
    EXPECT_EQ(driver.requestCount(), 0u);
    // A status is read at reply offset 8, 32 or 8 bits of it, whatever the result.
    driver.script(ScriptedReply{}.word(8, 0xA1B2C3D4).word(12, 0xE0000001));
    EXPECT_EQ(RynToneSilenceDetectorStatus_8(kBlock, &wide), 0xE0000001u);
    driver.script(failedCall(0).word(8, 0xA1B2C3D4));
    EXPECT_EQ(RynToneMfDetectorStatus_8(kBlock, narrow), RYN_RESULT_NO_REPLY);
    EXPECT_EQ(std::tuple(wide, narrow[0], narrow[1]), std::tuple(0xA1B2C3D4u, 0xD4, 0x55));
}

}  // namespace
