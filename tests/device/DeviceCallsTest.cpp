#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

using DeviceCalls = ryn::test::ConnectedTest;

constexpr DeviceHandle kPhysical = 0x10000007, kLogical = 0x20000003, kPipe = 0x40000001, kOther = 0x60000002;

TEST_F(DeviceCalls, RefusedChecksSendNothingAndWriteNothing) {
    DeviceHandle out = 0xAAAA;
    uint32_t state = 0xBBBB;
    const uint8_t data[4] = {};
    const ResultCode refused[] = {
        RynDrvCreateLogicalDevice_20(kLogical, -1, 0, 0, &out),
        RynDrvDisconnectLogicalDevice_16(kPhysical, 0, kLogical, 0),
        RynDrvDisconnectLogicalDevice_16(kPipe, 0, kPhysical, 0),
        RynDrvConnectPipe_24(kPhysical, 0, kPipe, 0, nullptr, 0),  // swapped: the first check refuses
        RynDrvConnectPipe_24(kPipe, 0, kLogical, 0, nullptr, 0),
        RynDrvDisconnectPipe_8(kLogical, 0),
        RynDrvConnectBoard_8(0, kPhysical),
        RynDrvConnectBoard_8(kPhysical, 0x70000000),
        RynDrvEnable_12(0, 1, 2),
        RynDrvDisable_12(0xF0000000, 1, 2),
        RynDrvGetState_8(0, &state),
        RynDrvReset_4(0),
        RynDrvClose_4(0),
    };
    for (ResultCode code : refused) {
        EXPECT_EQ(RynFailure(code), 1);
        EXPECT_EQ(RynResultErrorCode(code), 11u);
        EXPECT_EQ(RynResultSourceId(code), 0x6Au);
    }
    EXPECT_EQ(RynResultErrorCode(RynDrvConnectPipe_24(kPipe, 0, kPhysical, 0, data, -5)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDrvConnectPipe_24(kPipe, 0, kPhysical, 0, data, 513)), 9u);
    EXPECT_EQ(driver.requestCount(), 0u);
    EXPECT_EQ(out, 0xAAAAu);
    EXPECT_EQ(state, 0xBBBBu);
}

TEST_F(DeviceCalls, AcceptedKindsReachTheDriver) {
    EXPECT_EQ(RynDrvDisconnectLogicalDevice_16(kPipe, 1, kLogical, 2), 0u);
    EXPECT_EQ(RynDrvConnectLogicalDevice_16(kPhysical, 1, 0, 2), 0u);  // the driver judges connects
    EXPECT_EQ(RynDrvConnectBoard_8(kOther, 0x30000000), 0u);
    EXPECT_EQ(RynDrvEnable_12(0x50000000, 1, 2), 0u);
    EXPECT_EQ(RynDrvReset_4(0xF0000001), 0u);  // reset only refuses 0
    const auto requests = driver.requests();
    ASSERT_EQ(requests.size(), 5u);
    const uint32_t codes[] = {0x222050, 0x22204C, 0x222080, 0x222030, 0x222038};
    const size_t lengths[] = {32, 32, 24, 28, 20};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(requests[i].code, codes[i]);
        EXPECT_EQ(requests[i].input.size(), lengths[i]);
    }
    EXPECT_EQ(requests[0].word(16), kPipe);
    EXPECT_EQ(requests[0].word(28), 2u);
}

TEST_F(DeviceCalls, OpenPhysicalDeviceSwapsFourthAndFifth) {
    driver.script(ScriptedReply{}.word(8, kPhysical).word(12, 0));
    DeviceHandle handle = 0;
    EXPECT_EQ(RynDrvOpenPhysicalDevice_24(1, 2, 3, 4, 5, &handle), 0u);
    EXPECT_EQ(handle, kPhysical);
    const auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x2221C4u);
    ASSERT_EQ(sent.input.size(), 36u);
    EXPECT_EQ(sent.outputLength, 16u);
    EXPECT_EQ(sent.word(16), 1u);
    EXPECT_EQ(sent.word(24), 3u);
    EXPECT_EQ(sent.word(28), 5u);
    EXPECT_EQ(sent.word(32), 4u);

    driver.script(ScriptedReply{}.word(8, kPhysical).word(12, 0xB5000105));
    EXPECT_EQ(RynDrvOpenPhysicalDevice_24(1, 2, 3, 4, 5, &handle), 0xB5000105u);
    EXPECT_EQ(handle, 0xFFFFFFFFu);
}

TEST_F(DeviceCalls, GetDeviceHandleHeaderAndTransportCodes) {
    driver.script(ScriptedReply{}.word(4, 0).word(8, kLogical));
    DeviceHandle handle = 0;
    EXPECT_EQ(RynDrvGetDeviceHandle_16(kPhysical, -3, 77, &handle), 0u);
    EXPECT_EQ(handle, kLogical);
    const auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x2221C0u);
    ASSERT_EQ(sent.input.size(), 24u);
    EXPECT_EQ(sent.outputLength, 12u);
    EXPECT_EQ(sent.word(12), kPhysical);
    EXPECT_EQ(sent.word(16), static_cast<uint32_t>(-3));
    EXPECT_EQ(sent.word(20), 77u);

    driver.script(ScriptedReply{}.word(4, 0xB5000107).word(8, kLogical));
    EXPECT_EQ(RynDrvGetDeviceHandle_16(kPhysical, -3, 77, &handle), 0xB5000107u);
    EXPECT_EQ(handle, 0xFFFFFFFFu);

    driver.script(ryn::test::failedCall(12));
    EXPECT_EQ(RynDrvGetDeviceHandle_16(kPhysical, -3, 77, nullptr), 0xC300B90Du);
    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ(RynDrvGetDeviceHandle_16(kPhysical, -3, 77, &handle), 0xC300BC0Du);
    EXPECT_EQ(driver.requestCount(), 4u);
}

TEST_F(DeviceCalls, CreateCallsCarryTheConnectionHandle) {
    driver.script(ScriptedReply{}.word(8, kLogical));
    DeviceHandle logical = 0;
    EXPECT_EQ(RynDrvCreateLogicalDevice_20(kPhysical, -20, 3, 4, &logical), 0u);
    EXPECT_EQ(logical, kLogical);
    auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x2221C8u);
    EXPECT_EQ(sent.input.size(), 36u);
    EXPECT_EQ(sent.word(24), 3u);
    EXPECT_EQ(sent.word(28), connection);
    EXPECT_EQ(sent.word(32), 4u);

    logical = 0x1234;
    driver.script(ScriptedReply{}.word(8, kLogical).word(12, 0xB5000101));
    EXPECT_EQ(RynDrvCreateLogicalDevice_20(kPhysical, -20, 3, 4, &logical), 0xB5000101u);
    EXPECT_EQ(logical, 0x1234u);  // not written on failure

    DeviceHandle pipe = 0;
    driver.script(ScriptedReply{}.word(8, kPipe).word(12, 0xB5000101));
    EXPECT_EQ(RynDrvCreatePipe_8(9, &pipe), 0xB5000101u);
    EXPECT_EQ(pipe, kPipe);  // written whatever the result
    sent = driver.lastRequest();
    EXPECT_EQ(sent.word(16), 9u);
    EXPECT_EQ(sent.word(20), connection);
}

TEST_F(DeviceCalls, ConnectPipeDataArea) {
    const uint8_t data[3] = {0xA1, 0xA2, 0xA3};
    EXPECT_EQ(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, data, 3), 0u);
    EXPECT_EQ(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, nullptr, -5), 0u);
    std::vector<uint8_t> full(512, 0x5A);
    EXPECT_EQ(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, full.data(), 512), 0u);
    const auto requests = driver.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].code, 0x22203Cu);
    ASSERT_EQ(requests[0].input.size(), 548u);
    EXPECT_EQ(requests[0].word(28), 2u);
    EXPECT_EQ(requests[0].input[32], 0xA1);
    EXPECT_EQ(requests[0].input[34], 0xA3);
    EXPECT_EQ(requests[0].input[35], 0);
    EXPECT_EQ(requests[0].word(544), 3u);
    EXPECT_EQ(requests[1].word(544), 0u);
    EXPECT_EQ(requests[2].input[543], 0x5A);
    EXPECT_EQ(requests[2].word(544), 512u);
}

TEST_F(DeviceCalls, EnumerationAndStateOutValues) {
    int32_t iterator = 5;
    EXPECT_EQ(RynDrvIteratorBegin_4(&iterator), 0u);
    EXPECT_EQ(RynDrvIsIteratorEnd_4(&iterator), 1);
    int32_t type = 0;
    driver.script(ScriptedReply{}.word(8, static_cast<uint32_t>(-16)).word(12, 0xFFFFFFFF).word(16, 0xB5000101));
    EXPECT_EQ(RynDrvEnumDeviceType_12(kPhysical, &iterator, &type), 0xB5000101u);
    EXPECT_EQ(type, -16);  // written whatever the result
    EXPECT_EQ(iterator, -1);
    EXPECT_EQ(RynDrvIsIteratorEnd_4(&iterator), 0);
    EXPECT_EQ(driver.lastRequest().word(20), 0u);

    uint32_t id = 0;
    iterator = 4;
    driver.script(ScriptedReply{}.word(8, 42).word(12, 5));
    EXPECT_EQ(RynDrvEnumDevice_16(kPhysical, -2, &iterator, &id), 0u);
    EXPECT_EQ(id, 42u);
    EXPECT_EQ(iterator, 5);
    EXPECT_EQ(driver.lastRequest().word(24), 4u);

    uint32_t state = 0;
    driver.script(ScriptedReply{}.word(8, 3).word(12, 0xB5000102));
    EXPECT_EQ(RynDrvGetState_8(kOther, &state), 0xB5000102u);
    EXPECT_EQ(state, 3u);
}

TEST_F(DeviceCalls, UndecoratedFormsTranslateDeviceTypes) {
    ryn::setDriverVersionLevel(10130);
    int32_t iterator = 0, type = 0;
    driver.script(ScriptedReply{}.word(8, static_cast<uint32_t>(-30)));
    EXPECT_EQ(RynDrvEnumDeviceType(kPhysical, &iterator, &type), 0u);
    EXPECT_EQ(type, -32);
    DeviceHandle logical = 0;
    EXPECT_EQ(RynDrvCreateLogicalDevice(kPhysical, -17, 0, 0, &logical), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), static_cast<uint32_t>(-16));
    EXPECT_EQ(RynDrvGetDeviceHandle(kPhysical, -42, 0, nullptr), 0u);
    EXPECT_EQ(driver.lastRequest().word(16), static_cast<uint32_t>(-40));
    uint32_t id = 0;
    EXPECT_EQ(RynDrvEnumDevice(kPhysical, -31, &iterator, &id), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), static_cast<uint32_t>(-31));
    EXPECT_EQ(RynDrvClose(0), 0x8000000Bu);  // library codes are reduced at this level
}

}  // namespace
