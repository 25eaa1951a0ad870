#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

using DeviceCalls = ryn::test::ConnectedTest;

constexpr DeviceHandle kPhysical = 0x10000007, kLogical = 0x20000003, kPipe = 0x40000001, kOther = 0x60000002;
constexpr uint32_t u32(int32_t value) { return static_cast<uint32_t>(value); }

TEST_F(DeviceCalls, RefusedChecksSendNothingAndWriteNothing) {
    DeviceHandle out = 0xAAAA;
    uint32_t state = 0xBBBB;
    const uint8_t data[4] = {};
    const ResultCode wrongKind[] = {
        RynDrvCreateLogicalDevice_20(kLogical, -1, 0, 0, &out),
        RynDrvDisconnectLogicalDevice_16(kPhysical, 0, kLogical, 0),
        RynDrvDisconnectLogicalDevice_16(kPipe, 0, kPhysical, 0),
        RynDrvConnectPipe_24(kPhysical, 0, kPipe, 0, data, 513),  // the kinds are checked before the length
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
    for (ResultCode code : wrongKind) EXPECT_EQ(code & 0xFF8000FF, 0xB500000Bu);  // failure, device core, error 11
    // The pipe's data area holds 512 bytes.
    EXPECT_EQ(RynResultErrorCode(RynDrvConnectPipe_24(kPipe, 0, kPhysical, 0, data, -5)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDrvConnectPipe_24(kPipe, 0, kPhysical, 0, data, 513)), 9u);
    EXPECT_EQ(std::tuple(driver.requestCount(), out, state), std::tuple(0u, 0xAAAAu, 0xBBBBu));
}

// Every handle here is of a kind the call accepts.
TEST_F(DeviceCalls, RequestLayouts) {
    ryn::test::SentRequests sent(driver);
    DeviceHandle handle = 0;
    uint32_t value = 0;
    int32_t iterator = 4, type = 0;
    sent(RynDrvEnumDeviceType_12(kPhysical, &iterator, &type), 0x80A, 24, 20, {kPhysical, 4});
    iterator = 5;
    sent(RynDrvEnumDevice_16(kPhysical, -2, &iterator, &value), 0x80B, 28, 20, {kPhysical, u32(-2), 5});
    // This request has a 12-byte header: its fields start at 12.
    sent(RynDrvGetDeviceHandle_16(kPhysical, -3, 77, &handle), 0x870, 24, 12, {kPhysical, u32(-3), 77}, 12);
    // The fourth and fifth arguments change places.
    sent(RynDrvOpenPhysicalDevice_24(1, 2, 3, 4, 5, &handle), 0x871, 36, 16, {1, 2, 3, 5, 4});
    sent(RynDrvOpenPhysicalDeviceEx_12(1, 2, 3), 0x878, 28, 12, {1, 2, 3});
    sent(RynDrvCreateLogicalDevice_20(kPhysical, -20, 3, 4, &handle), 0x872, 36, 16,
         {kPhysical, u32(-20), 3, connection, 4});
    sent(RynDrvCreatePipe_8(9, &handle), 0x874, 24, 16, {9, connection});
    // The driver judges the kinds of a connect.
    sent(RynDrvConnectLogicalDevice_16(kPhysical, 1, 0, 2), 0x813, 32, 12, {kPhysical, 1, 0, 2});
    sent(RynDrvDisconnectLogicalDevice_16(kPipe, 1, kLogical, 2), 0x814, 32, 12, {kPipe, 1, kLogical, 2});
    // The data area is 32..543, its length at 544; no data means length 0.
    const uint8_t data[3] = {0xA1, 0xA2, 0xA3};
    const std::vector<uint8_t> full(512, 0x5A);
    sent(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, data, 3), 0x80F, 548, 12, {kPipe, 1, kPhysical, 2, 0x00A3A2A1});
    EXPECT_EQ(driver.lastRequest().word(544), 3u);
    sent(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, nullptr, -5), 0x80F, 548, 12, {0, 0}, 540);
    sent(RynDrvConnectPipe_24(kPipe, 1, kPhysical, 2, full.data(), 512), 0x80F, 548, 12, {0x5A5A5A5A, 512}, 540);
    sent(RynDrvDisconnectPipe_8(kPipe, 3), 0x810, 24, 12, {kPipe, 3});
    sent(RynDrvConnectBoard_8(kOther, 0x30000000), 0x820, 24, 12, {kOther, 0x30000000});
    sent(RynDrvEnable_12(0x50000000, 1, 2), 0x80C, 28, 12, {0x50000000, 1, 2});
    sent(RynDrvDisable_12(kPhysical, 1, 2), 0x80D, 28, 12, {kPhysical, 1, 2});
    sent(RynDrvGetState_8(kOther, &value), 0x816, 20, 16, {kOther});
    sent(RynDrvReset_4(0xF0000001), 0x80E, 20, 12, {0xF0000001});  // reset only refuses 0
    sent(RynDrvClose_4(kOther), 0x811, 20, 12, {kOther});
}

// Which out-value each call writes from its reply, and when; 0x1234 is "not written".
TEST_F(DeviceCalls, OutValuesByResult) {
    const auto reply = [](uint32_t value, ResultCode result) {
        return ScriptedReply{}.word(8, value).word(12, result);
    };
    // Enumeration replies carry the value at 8, the iterator at 12 and the result at 16.
    const ScriptedReply enumeration = reply(u32(-16), 5).word(16, 0xB5000101);
    int32_t iterators[2] = {};
    const auto open = [](uint32_t *out) { return RynDrvOpenPhysicalDevice_24(1, 2, 3, 4, 5, out); };
    const auto handle = [](uint32_t *out) { return RynDrvGetDeviceHandle_16(kPhysical, -3, 77, out); };
    const auto create = [](uint32_t *out) { return RynDrvCreateLogicalDevice_20(kPhysical, -20, 3, 4, out); };
    const std::tuple<ScriptedReply, std::function<ResultCode(uint32_t *)>, ResultCode, uint32_t> rows[] = {
        {reply(kPhysical, 0), open, 0, kPhysical},
        {reply(kPhysical, 0xB5000105), open, 0xB5000105, 0xFFFFFFFF},
        // The device-handle reply has its result at 4 and its own transport codes.
        {ScriptedReply{}.word(4, 0).word(8, kLogical), handle, 0, kLogical},
        {ryn::test::failedCall(0), handle, 0xC300BC0D, 0xFFFFFFFF},
        {ryn::test::failedCall(12), [&](uint32_t *) { return handle(nullptr); }, 0xC300B90D, 0x1234},  // no out pointer
        {reply(kLogical, 0), create, 0, kLogical},
        {reply(kLogical, 0xB5000101), create, 0xB5000101, 0x1234},
        {reply(kPipe, 0xB5000101), [](uint32_t *out) { return RynDrvCreatePipe_8(9, out); }, 0xB5000101, kPipe},
        {reply(3, 0xB5000102), [](uint32_t *out) { return RynDrvGetState_8(kOther, out); }, 0xB5000102, 3},
        {enumeration, [&](uint32_t *out) { return RynDrvEnumDevice_16(kPhysical, -2, &iterators[0], out); }, 0xB5000101,
         u32(-16)},
        {enumeration,
         [&](uint32_t *out) {
             return RynDrvEnumDeviceType_12(kPhysical, &iterators[1], reinterpret_cast<int32_t *>(out));
         },
         0xB5000101, u32(-16)},
    };
    for (size_t row = 0; row < std::size(rows); ++row) {
        const auto &[scripted, call, result, value] = rows[row];
        uint32_t out = 0x1234;
        driver.script(scripted);
        EXPECT_EQ((std::pair{call(&out), out}), std::pair(result, value)) << "row " << row;
    }
    EXPECT_EQ(std::pair(iterators[0], iterators[1]), std::pair(5, 5));

    int32_t iterator = -1;  // the end mark
    EXPECT_EQ((std::tuple{RynDrvIsIteratorEnd_4(&iterator), RynDrvIteratorBegin_4(&iterator), iterator,
                          RynDrvIsIteratorEnd_4(&iterator)}),
              std::tuple(0, 0u, 0, 1));
}

}  // namespace
