#include <gtest/gtest.h>

#include <cstring>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using namespace ryn::test;
using T1E1 = ConnectedTest;

constexpr DeviceHandle kSpan = 0;  // any handle goes to the driver unchanged

template <class Record>
Record filled(uint8_t first) {
    Record record;
    for (size_t i = 0; i < sizeof record.bytes; ++i) record.bytes[i] = static_cast<uint8_t>(first + i);
    return record;
}

TEST_F(T1E1, RequestLayouts) {
    const T1Configuration t1 = filled<T1Configuration>(1);
    const E1Configuration e1 = filled<E1Configuration>(2);
    const RobBitData rob = filled<RobBitData>(3);
    const ABCDBitData abcd = filled<ABCDBitData>(4);
    T1Configuration t1Out;
    E1Configuration e1Out;
    RobBitData robOut;
    ABCDBitData abcdOut;
    Layer1StatusEx statusEx;
    uint32_t status = 0;
    uint8_t a = 0, b = 0;
    const uint32_t v = 0xA1B2C3D4;
    expectLayouts(
        driver,
        {
            {[&] { return RynT1E1SetLiMode_8(kSpan, v); }, 0x99A, 24, 12, {{16, kSpan}, {20, v}}},
            {[&] { return RynT1SetConfiguration_8(7, &t1); },
             0x99B,
             80,
             12,
             {{16, 7}, {20, 0x04030201}, {76, 0x3C3B3A39}}},
            {[&] { return RynT1GetConfiguration_8(kSpan, &t1Out); }, 0x99C, 20, 72, {}},
            {[&] { return RynE1SetConfiguration_8(kSpan, &e1); }, 0x99D, 76, 12, {{20, 0x05040302}, {72, 0x39383736}}},
            {[&] { return RynE1GetConfiguration_8(kSpan, &e1Out); }, 0x99E, 20, 68, {}},
            {[&] { return RynT1E1AlarmOn_8(kSpan, v); }, 0x99F, 24, 12, {{20, v}}},
            {[&] { return RynT1E1AlarmOff_8(kSpan, v); }, 0x9A0, 24, 12, {{20, v}}},
            {[&] { return RynT1E1SetLineLoop_8(kSpan, v); }, 0x9A1, 24, 12, {{20, v}}},
            {[&] { return RynT1E1ForceResynch_4(0x9); }, 0x9A2, 20, 12, {{16, 9}}},
            {[&] { return RynT1E1GetLayer1Status_8(kSpan, &status); }, 0x9A3, 20, 16, {}},
            {[&] { return RynT1E1XmitPinControl_8(kSpan, v); }, 0x9A4, 24, 12, {{20, v}}},
            {[&] { return RynT1E1SetLineTermination_8(kSpan, v); }, 0x9A5, 24, 12, {{20, v}}},
            {[&] { return RynT1E1SetMonitorMode_8(kSpan, v); }, 0x9A6, 24, 12, {{20, v}}},
            {[&] { return RynT1E1SetPrbsConfig_12(kSpan, 1, 2); }, 0x9A7, 28, 12, {{20, 1}, {24, 2}}},
            {[&] { return RynT1SetRobBitData_8(kSpan, &rob); }, 0x9A8, 36, 12, {{20, 0x06050403}, {32, 0x1211100F}}},
            {[&] { return RynT1GetRobBitData_8(kSpan, &robOut); }, 0x9A9, 20, 28, {}},
            {[&] { return RynE1SetABCDBit_8(kSpan, &abcd); }, 0x9AA, 36, 12, {{20, 0x07060504}, {32, 0x13121110}}},
            {[&] { return RynE1GetABCDBit_8(kSpan, &abcdOut); }, 0x9AB, 20, 28, {}},
            {[&] { return RynE1GetSaBit_12(kSpan, v, &a); }, 0x9AC, 24, 16, {{20, v}}},
            {[&] { return RynE1SetSaBit_12(kSpan, v, 0xEE); }, 0x9AD, 26, 12, {{20, v}, {22, 0x00EEA1B2}}},
            {[&] { return RynE1GetSiBit_12(kSpan, &a, &b); }, 0x9AE, 20, 14, {}},
            {[&] { return RynE1SetSiBit_12(kSpan, 0x12, 0x34); }, 0x9AF, 22, 12, {{18, 0x34120000}}},
            {[&] { return RynT1SetChannelizedRobBitData_12(kSpan, 24, 0x5); },
             0x9BF,
             26,
             12,
             {{20, 24}, {22, 0x50000}}},
            {[&] { return RynT1GetChannelizedRobBitData_12(kSpan, 24, &a); }, 0x9C0, 24, 14, {{20, 24}}},
            {[&] { return RynE1SetChannelizedABCDBit_12(kSpan, 31, 0xF); }, 0x9C1, 26, 12, {{20, 31}, {22, 0xF0000}}},
            {[&] { return RynE1GetChannelizedABCDBit_12(kSpan, 31, &a); }, 0x9C2, 24, 14, {{20, 31}}},
            {[&] { return RynT1SetDlBitData_8(kSpan, v); }, 0x9C3, 24, 12, {{20, v}}},
            {[&] { return RynT1E1InsertSingleBitDefect_8(kSpan, v); }, 0x9C4, 24, 12, {{20, v}}},
            {[&] { return RynT1E1GetLayer1StatusEx_8(kSpan, &statusEx); }, 0x9C5, 20, 32, {}},
        });
}

// Each reply form's result position, and the out-values copied from the
// reply whatever the result.
TEST_F(T1E1, ReplyFormsAndCopyOuts) {
    T1Configuration config;
    ScriptedReply block = ScriptedReply{}.word(68, 0xE0000001);
    block.bytes.emplace_back(8, std::vector<uint8_t>(60, 0x5A));
    driver.script(block);
    EXPECT_EQ(RynT1GetConfiguration_8(kSpan, &config), 0xE0000001u);
    EXPECT_EQ(std::count(config.bytes, config.bytes + 60, 0x5A), 60);

    uint8_t a = 0, b = 0;
    driver.script(ScriptedReply{}.word(8, 0x0000BBAA).word(10, 0xE0000002));
    EXPECT_EQ(RynT1GetChannelizedRobBitData_12(kSpan, 1, &a), 0xE0000002u);
    EXPECT_EQ(a, 0xAA);
    driver.script(ScriptedReply{}.word(8, 0x0000BBAA).word(10, 0xE0000003));
    EXPECT_EQ(RynE1GetSiBit_12(kSpan, &a, &b), 0xE0000003u);
    EXPECT_EQ(b, 0xBB);
    driver.script(ScriptedReply{}.word(8, 0xCCDDEE77).word(12, 0xE0000004));
    EXPECT_EQ(RynE1GetSaBit_12(kSpan, 1, &a), 0xE0000004u);
    EXPECT_EQ(a, 0x77);

    // A failed call stores the transport code where the form keeps its result.
    uint32_t status = 1;
    driver.script(failedCall(0));
    EXPECT_EQ(RynT1E1GetLayer1Status_8(kSpan, &status), RYN_RESULT_NO_REPLY);
    driver.script(failedCall(16));
    EXPECT_EQ(RynT1E1GetLayer1Status(kSpan, &status), RYN_RESULT_CALL_FAILED);
    EXPECT_EQ(status, 0u);
}

TEST_F(T1E1, NullPointersAndBri) {
    for (ResultCode code : {RynT1SetConfiguration_8(kSpan, nullptr), RynE1GetConfiguration_8(kSpan, nullptr),
                            RynT1E1GetLayer1Status_8(kSpan, nullptr), RynE1GetSiBit_12(kSpan, nullptr, nullptr),
                            RynT1GetChannelizedRobBitData_12(kSpan, 0, nullptr), RynE1GetABCDBit_8(kSpan, nullptr)}) {
        EXPECT_EQ(code & 0xFF8000FFu, 0xB800000Au) << std::hex << code;  // failure, T1/E1 module, error 10
    }
    uint32_t untouched = 77;
    for (ResultCode code : {RynBriSetLiMode_8(0, 1), RynBriConfigureMonitor_8(1, 2),
                            RynBriGetLineStatus_8(2, &untouched), RynBriGetLineStatus_8(3, nullptr),
                            RynBriActivateLink_8(4, 5), RynBriDeactivateLink_8(5, 6), RynBriTermLi(6, 7)}) {
        EXPECT_EQ(code & 0xFF8000FFu, 0xB3800006u) << std::hex << code;  // failure, BRI module, error 6
    }
    EXPECT_EQ(untouched, 77u);
    EXPECT_EQ(driver.requestCount(), 0u);
}

}  // namespace
