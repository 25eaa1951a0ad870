#include <gtest/gtest.h>

#include <vector>

#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using Telephony = ConnectedTest;
constexpr DeviceHandle kBlock = 0x20000011;
constexpr ResultCode kFailure = 0xC6800000u;  // failure, SourceId 0x8D

// The extended call-progress set-up of a tone table with valueCount values
// 0x100.., table words 1..11 and one segment (id 0xA0 + j) for each step
// count, whose steps 0x8000.. follow one another in one array. Bits of
// `nulls`: 1 values, 2 segments, 4 every segment's steps, 8 the tone table.
ResultCode sendCpt(uint16_t valueCount, std::vector<uint16_t> counts, int16_t tableCount = 1, int nulls = 0,
                   const uint8_t *extra = nullptr, DeviceHandle handle = kBlock) {
    uint16_t values[32], steps[215], n = static_cast<uint16_t>(counts.size());
    CptSegment segments[17];
    for (int i = 0; i < 215; ++i) steps[i] = static_cast<uint16_t>(0x8000 + i), values[i % 32] = 0x100 + i % 32;
    for (size_t j = 0, at = 0; j < n; at += (counts[j] & 0xFFu) * (3 + (valueCount + 3) / 4), ++j)
        segments[j] = {static_cast<uint16_t>(0xA0 + j), counts[j], (nulls & 4) ? nullptr : steps + at};
    CptToneTable table{values, 0x7AB1, 0xFFFF, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, valueCount, n}, segments, extra};
    table.values = (nulls & 1) ? nullptr : values, table.segments = (nulls & 2) ? nullptr : segments;
    const CptDetectorConfig config{0xFFFFFFFF, 0x5E71, 0x5E72, (nulls & 8) ? nullptr : &table, tableCount, 0x5E73};
    return RynCstCptDetectorInitEx_20(handle, 1, 2, &config, 4);
}

// The counts one past their limits and null pointers; each call's layout
// through a block's handle, at the limits that are accepted, then through
// handles of other kinds: refused, nothing sent, no status stored.
TEST_F(Telephony, LayoutsWrongHandleKindsAndRefusals) {
    DeviceHandle h = kBlock;
    uint32_t status = 0, m[128];
    uint16_t v[128];
    uint8_t status8 = 0, extra[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    char d[128];
    const int16_t vad[13] = {13, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, -1}, twelve = 12, fourteen = 14;
    for (uint32_t i = 0; i < 128; ++i) m[i] = i << 16, v[i] = static_cast<uint16_t>(i), d[i] = '7';
    // One past the limits (error 9, checked before the pointers) and null pointers (error 10): nothing sent.
    const auto errors = [](auto... codes) { return std::vector<uint32_t>{((codes & 0xFF8000FFu) ^ kFailure)...}; };
    EXPECT_EQ(errors(RynCstDtmfDial(h, nullptr, 128, 0, 0), RynCstDtmfDial(h, d, -1, 0, 0),
                     RynCstVoiceMixerInitEx(h, nullptr, 0, v, 0, 129), RynCstVoiceActivityDetectorInitEx(h, &twelve, 0),
                     RynCstVoiceActivityDetectorInitEx(h, &fourteen, 0), RynCstCptDetectorInitEx(h, 1, 2, nullptr, 4),
                     RynCstDtmfDial(h, nullptr, 1, 0, 0), RynCstVoiceMixerInitEx(h, nullptr, 0, v, 0, 1),
                     RynCstVoiceMixerInitEx(h, m, 0, nullptr, 0, 1), RynCstVoiceActivityDetectorInitEx(h, nullptr, 0),
                     RynCstCptDetectorStatus(h, nullptr)),
              (std::vector<uint32_t>{9, 9, 9, 9, 9, 10, 10, 10, 10, 10, 10}));
    EXPECT_EQ(driver.requestCount(), 0u);
    const std::vector<LayoutRow> rows = {
        {[&] { return RynCstDtmfDialerInit_8(h, 1); }, 0x99B, 24, 12, {{20, 1}}},
        {[&] { return RynCstDtmfDial_20(h, d, 127, 5, 6); }, 0x99C, 160, 12, {{144, 0x373737}, {148, 127}, {152, 5}}},
        {[&] { return RynCstDtmfDial_20(h, nullptr, 0, 5, 6); }, 0x99C, 160, 12, {{148, 0}, {156, 6}}},
        {[&] { return RynCstVoiceActivityDetectorInit_8(h, 1); }, 0x99D, 24, 12, {{20, 1}}},
        {[&] { return RynCstVoiceActivityDetectorStatus_8(h, &status); }, 0x99E, 20, 16, {}},
        {[&] { return RynCstDtmfDetectorInit_12(h, 1, 2); }, 0x99F, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynCstDtmfDetectorStatus_8(h, &status8); }, 0x9A0, 20, 16, {}},
        {[&] { return RynCstComfortNoiseGeneratorInit_8(h, 1); }, 0x9A2, 24, 12, {{20, 1}}},
        {[&] { return RynCstVoiceMixerInit_12(h, 1, 2); }, 0x9A3, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynCstEchoCancelInit_12(h, 1, 2); }, 0x9A4, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynCstCptDetectorInit_16(h, 1, 2, 3); }, 0x9A5, 32, 12, {{20, 1}, {24, 2}, {28, 3}}},
        {[&] { return RynCstCptDetectorStatus_8(h, &status); }, 0x9A6, 20, 16, {}},
        {[&] { return RynCstCptGeneratorInit_12(h, 1, 2); }, 0x9A7, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynCstCptGenerateTone_8(h, 1); }, 0x9A8, 24, 12, {{20, 1}}},
        {[&] { return RynCstCidDetectorInit_12(h, 1, 2); }, 0x9B0, 28, 12, {{20, 1}, {24, 2}}},
        {[&] { return RynCstVoiceMixerInitEX(h, m, 2, v, 9, 128); }, 0x9B1, 798, 12, {{530, 0x2007F}, {790, 0x9007F}}},
        {[&] { return RynCstVoiceMixerInitEx(h, m, 2, v, 3, -1); }, 0x9B1, 798, 12, {{790, 0x30000}, {794, ~0u}}},
        {[&] { return sendCpt(1, {}, 1, 0, extra, h); }, 0x9B2, 702, 12, {{268, 0x100F0E0D}, {692, 0x10000}}},
        {[&] { return RynCstVoiceActivityDetectorInitEx(h, vad, 9); }, 0x9B3, 50, 12, {{42, 0xFFFF000C}, {46, 9}}}};
    for (LayoutRow row : rows) {
        h = kBlock, row.fields.emplace_back(16, kBlock);
        expectLayouts(driver, {row});
        status = 0x5555, status8 = 0x55;
        for (DeviceHandle handle : {0x0u, 0x1FFFFFFFu, 0x30000000u, 0xF0000000u})
            EXPECT_EQ((h = handle, row.call()) & 0xFF8000FFu, kFailure | 11) << std::hex << row.function;
        EXPECT_EQ(driver.requestCount() << 24 | status << 8 | status8, 0x1555555u) << "nothing sent, nothing stored";
    }
    driver.script(failedCall(0).word(8, 0xCAFEBABE));  // the status is stored whatever the result
    EXPECT_EQ(RynCstDtmfDetectorStatus(kBlock, &status8), RYN_RESULT_NO_REPLY);
    EXPECT_EQ(status8, 0xBE);
}

// The worked example byte for byte: six values make five words a step;
// segments of 4, 0x0102 (2) and 0 steps; no extra block. Then each count at
// its slot size and just past it (16 values make seven words a step: 29 and
// 1 steps fill the 210 words; four values make four: 52 and 1 steps, 212
// words, do not), and null pointers.
TEST_F(Telephony, CallProgressSetUp) {
    ASSERT_EQ(sendCpt(6, {4, 0x0102, 0}), 0u);
    std::vector<uint8_t> want(702);
    const auto put = [&](size_t at, uint32_t value) { want[at] = value & 0xFF, want[at + 1] = (value >> 8) & 0xFF; };
    const uint32_t fixed[][2] = {{16, 0x11},   {18, 0x2000},  {20, 1},  {24, 2},       {28, 335},   {32, 0x5E71},
                                 {34, 0x5E72}, {100, 0x7AB1}, {124, 6}, {126, 3},      {128, 0xA0}, {130, 4},
                                 {134, 20},    {136, 0xA1},   {138, 2}, {140, 20},     {142, 10},   {144, 0xA2},
                                 {148, 30},    {692, 1},      {694, 1}, {696, 0x5E73}, {698, 4}};
    for (const auto &[at, value] : fixed) put(at, value);
    // The step data, and the table words 1..11.
    for (uint32_t i = 0; i < 30; ++i) put(272 + 2 * i, 0x8000 + i), put(102 + 2 * (i % 11), i % 11 + 1);
    for (uint32_t i = 0; i < 6; ++i) put(36 + 2 * i, 0x100 + i);
    EXPECT_EQ(driver.lastRequest().input, want);
    // valueCount, segments, steps of the first and of each other segment, tableCount, nulls, error
    const int cases[][7] = {
        {32, 0, 0, 0, 1, 0, 0}, {33, 0, 0, 0, 1, 0, 9}, {1, 0, 0, 0, 1, 0, 0},     {0, 0, 0, 0, 1, 0, 9},
        {8, 16, 1, 1, 1, 0, 0}, {8, 17, 1, 1, 1, 0, 9}, {16, 2, 29, 1, 1, 0, 0},   {4, 2, 52, 1, 1, 0, 9},
        {6, 0, 0, 0, 0, 0, 9},  {6, 0, 0, 0, 2, 0, 9},  {6, 0, 0, 0, 1, 8, 9},     {6, 0, 0, 0, 1, 1, 10},
        {6, 1, 1, 0, 1, 2, 10}, {6, 2, 0, 1, 1, 4, 10}, {6, 1, 0x100, 0, 1, 4, 0}, {99, 1, 4, 0, -1, 0, 0}};
    for (const auto &c : cases) {
        std::vector<uint16_t> counts(c[1], c[3]);
        if (c[1] > 0) counts[0] = c[2];
        EXPECT_EQ(sendCpt(c[0], counts, c[4], c[5]) & 0xFF8000FFu, c[6] ? kFailure | c[6] : 0) << &c - cases;
    }
    EXPECT_EQ(driver.requestCount(), 7u);  // the example and the six accepted cases
    // The last case: a negative table count sends the settings around an empty table.
    expectFields(driver.lastRequest(), {{36, 0}, {100, 0}, {124, 0}, {128, 0}, {692, 0xFFFF0000}, {696, 0x45E73}});
}

}  // namespace
