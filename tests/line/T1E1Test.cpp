#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using T1E1 = ConnectedTest;

constexpr DeviceHandle kSpan = 0x30000005;  // any handle goes to the driver unchanged
constexpr uint32_t kValue = 0xA1B2C3D4, kRamp = 0x43424140;

// Bytes 0x40, 0x41, ...: the records sent, and every reply from offset 8 up to its result.
std::vector<uint8_t> ramp(size_t length) {
    std::vector<uint8_t> bytes(length);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0x40});
    return bytes;
}

// The calls by shape: one 32-bit value, a whole record in or out, a channel
// and a byte in or out, and the odd ones.
TEST_F(T1E1, RequestLayoutsAndCopyOuts) {
    driver.setHook([](const RynDriverRequest &r) {
        std::ranges::copy(ramp(r.outputLength - 12), static_cast<uint8_t *>(r.output) + 8);
    });
    SentRequests sent(driver);
    const std::pair<ResultCode(RYN_CALL *)(DeviceHandle, uint32_t), uint32_t> values[] = {
        {RynT1E1SetLiMode_8, 0x99A},      {RynT1E1AlarmOn_8, 0x99F},        {RynT1E1AlarmOff_8, 0x9A0},
        {RynT1E1SetLineLoop_8, 0x9A1},    {RynT1E1XmitPinControl_8, 0x9A4}, {RynT1E1SetLineTermination_8, 0x9A5},
        {RynT1E1SetMonitorMode_8, 0x9A6}, {RynT1SetDlBitData_8, 0x9C3},     {RynT1E1InsertSingleBitDefect_8, 0x9C4}};
    for (auto [call, function] : values) sent(call(kSpan, kValue), function, 24, 12, {kSpan, kValue});
    const std::pair<ResultCode(RYN_CALL *)(DeviceHandle, uint32_t, uint8_t), uint32_t> bytesIn[] = {
        {RynE1SetSaBit_12, 0x9AD}, {RynT1SetChannelizedRobBitData_12, 0x9BF}, {RynE1SetChannelizedABCDBit_12, 0x9C1}};
    for (auto [call, function] : bytesIn) {
        sent(call(kSpan, kValue, 0xEE), function, 26, 12, {kSpan, kValue});
        EXPECT_EQ(driver.lastRequest().word(22), 0x00EEA1B2u);  // the byte at 24, 25 left 0
    }
    uint8_t sa = 0, rob = 0, abcd = 0;
    sent(RynE1GetSaBit_12(kSpan, kValue, &sa), 0x9AC, 24, 16, {kSpan, kValue});
    sent(RynT1GetChannelizedRobBitData_12(kSpan, 24, &rob), 0x9C0, 24, 14, {kSpan, 24});
    sent(RynE1GetChannelizedABCDBit_12(kSpan, 31, &abcd), 0x9C2, 24, 14, {kSpan, 31});
    EXPECT_EQ(std::tuple(sa, rob, abcd), std::tuple(0x40, 0x40, 0x40));

    // Records of 60, 56, 16 and 16 bytes in; those and one of 20 out.
    const auto in = [&](auto call, uint32_t function, uint32_t length, auto record) {
        std::ranges::copy(ramp(sizeof record.bytes), record.bytes);
        sent(call(kSpan, &record), function, length, 12, {kSpan, kRamp});
        EXPECT_EQ(driver.lastRequest().word(length - 4), kRamp + (length - 24) / 4 * 0x04040404u)
            << std::hex << function;
    };
    in(RynT1SetConfiguration_8, 0x99B, 80, T1Configuration{});
    in(RynE1SetConfiguration_8, 0x99D, 76, E1Configuration{});
    in(RynT1SetRobBitData_8, 0x9A8, 36, RobBitData{});
    in(RynE1SetABCDBit_8, 0x9AA, 36, ABCDBitData{});
    const auto out = [&](auto call, uint32_t function, uint32_t length, auto record) {
        sent(call(kSpan, &record), function, 20, length, {kSpan});
        EXPECT_TRUE(std::ranges::equal(record.bytes, ramp(length - 12))) << std::hex << function;
    };
    out(RynT1GetConfiguration_8, 0x99C, 72, T1Configuration{});
    out(RynE1GetConfiguration_8, 0x99E, 68, E1Configuration{});
    out(RynT1GetRobBitData_8, 0x9A9, 28, RobBitData{});
    out(RynE1GetABCDBit_8, 0x9AB, 28, ABCDBitData{});
    out(RynT1E1GetLayer1StatusEx_8, 0x9C5, 32, Layer1StatusEx{});

    uint32_t status = 0;
    uint8_t si1 = 0, si2 = 0;
    sent(RynT1E1ForceResynch_4(kSpan), 0x9A2, 20, 12, {kSpan});
    sent(RynT1E1GetLayer1Status_8(kSpan, &status), 0x9A3, 20, 16, {kSpan});
    sent(RynT1E1SetPrbsConfig_12(kSpan, 1, 2), 0x9A7, 28, 12, {kSpan, 1, 2});
    sent(RynE1GetSiBit_12(kSpan, &si1, &si2), 0x9AE, 20, 14, {kSpan});
    sent(RynE1SetSiBit_12(kSpan, 0x12, 0x34), 0x9AF, 22, 12, {0x34120000 | kSpan >> 16}, 18);
    EXPECT_EQ(std::tuple(status, si1, si2), std::tuple(kRamp, 0x40, 0x41));

    // The values are stored whatever the result.
    driver.setDefaultResult(0xE0000001);
    status = sa = si1 = si2 = 0;
    T1Configuration t1 = {};
    for (ResultCode code : {RynT1GetConfiguration_8(kSpan, &t1), RynT1E1GetLayer1Status_8(kSpan, &status),
                            RynE1GetSiBit_12(kSpan, &si1, &si2), RynE1GetSaBit_12(kSpan, 0, &sa)})
        EXPECT_EQ(code, 0xE0000001u);
    EXPECT_EQ(std::tuple(t1.bytes[59], status, si1, si2, sa), std::tuple(0x7B, kRamp, 0x40, 0x41, 0x40));
}

TEST_F(T1E1, NullPointersAndBri) {
    uint8_t a = 0;
    for (ResultCode code : {RynT1SetConfiguration_8(kSpan, nullptr), RynE1GetConfiguration_8(kSpan, nullptr),
                            RynT1E1GetLayer1Status_8(kSpan, nullptr), RynE1GetSiBit_12(kSpan, &a, nullptr),
                            RynE1GetSiBit_12(kSpan, nullptr, &a), RynT1GetChannelizedRobBitData_12(kSpan, 0, nullptr)})
        EXPECT_EQ(code & 0xFF8000FFu, 0xB800000Au) << std::hex << code;  // failure, T1/E1 module, error 10
    uint32_t untouched = 77;
    for (ResultCode code : {RynBriSetLiMode_8(0, 1), RynBriConfigureMonitor_8(1, 2),
                            RynBriGetLineStatus_8(2, &untouched), RynBriGetLineStatus_8(3, nullptr),
                            RynBriActivateLink_8(4, 5), RynBriDeactivateLink_8(5, 6), RynBriTermLi(6, 7)})
        EXPECT_EQ(code & 0xFF8000FFu, 0xB3800006u) << std::hex << code;  // failure, BRI module, error 6
    EXPECT_EQ(std::pair(untouched, driver.requestCount()), std::pair(77u, size_t{0}));
}

}  // namespace
