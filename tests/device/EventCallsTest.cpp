#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

using DriverEventCalls = ryn::test::ConnectedTest;

constexpr DeviceHandle kDevice = 0x10000001, kLogical = 0x20000001;

TEST_F(DriverEventCalls, RequestLayouts) {
    ryn::test::SentRequests sent(driver);
    // A caller buffer travels as a 1-based reference into the listed buffers
    // (as its address in a 32-bit process).
    const auto reference = [](const void *buffer) {
        return sizeof(void *) == 4 ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(buffer)) : 1u;
    };
    EventData records[4] = {};
    DeviceHandle queue = 0;
    uint32_t value = 0;
    uint64_t time = 0;
    char text[256];
    // Set-data: words 0 and 1 at 20 and 24 (zero without Ex), words 2 to 7 after them.
    sent(RynDrvSetEventData_28(kLogical, 2, 3, 4, 5, 6, 7), 0x8D2, 52, 12, {kLogical, 0, 0, 2, 3, 4, 5, 6, 7});
    sent(RynDrvSetEventDataEx_36(kLogical, 2, 3, 4, 5, 6, 7, 0xA0, 0xA1), 0x8D5, 52, 12,
         {kLogical, 0xA0, 0xA1, 2, 3, 4, 5, 6, 7});
    sent(RynDrvGetEventData_8(kLogical, records), 0x8D3, 20, 44, {kLogical});
    // The driver writes the records into the caller's array.
    sent(RynDrvGetEventDataEx_16(kLogical, records, 4, &value), 0x8D4, 28, 16, {kLogical, reference(records), 4});
    const RynDriverBuffer array = driver.lastRequest().buffers.at(0);
    EXPECT_EQ(std::tuple(array.address, array.length), std::tuple(records, 128u));
    // The event code and the third argument change places.
    sent(RynDrvEventCode2String_16(kDevice, 0x55, 0x66, text), 0x812, 28, 268, {kDevice, 0x66, 0x55});
    sent(RynDrvCreateEventQueue_12(7, 8, &queue), 0x873, 28, 16, {7, 8, connection});
    sent(RynDrvPollEvents_4(0x60000000), 0x875, 20, 12, {0x60000000});
    sent(RynDrvReadReg8_12(kDevice, 0x40, &value), 0x81C, 24, 16, {kDevice, 0x40});
    sent(RynDrvReadReg16_12(kDevice, 0x40, &value), 0x81D, 24, 16, {kDevice, 0x40});
    sent(RynDrvReadReg32_12(kDevice, 0x40, &value), 0x822, 24, 16, {kDevice, 0x40});
    sent(RynDrvWriteReg8_12(kDevice, 0x42, 0x1ABCD), 0x81E, 28, 12, {kDevice, 0x42, 0x1ABCD});
    sent(RynDrvWriteReg16_12(kDevice, 0x42, 0x1ABCD), 0x81F, 28, 12, {kDevice, 0x42, 0x1ABCD});
    sent(RynDrvWriteReg32_12(kDevice, 0x42, 0x1ABCD), 0x821, 28, 12, {kDevice, 0x42, 0x1ABCD});
    sent(RynStartWatchdogTimer_4(0xFFFF), 0x815, 20, 12, {0});  // the argument is not sent
    sent(RynDrvGetCurrentTime_4(&time), 0x877, 20, 20, {RYN_DRIVER_PSEUDO_HANDLE});
    // The driver writes the text into the caller's buffer.
    sent(RynDrvResultCode2String_16(kDevice, 0xC300AA0D, text, 64), 0x81B, 32, 12,
         {kDevice, 0xC300AA0D, 64, reference(text)});
    const RynDriverBuffer textBuffer = driver.lastRequest().buffers.at(0);
    EXPECT_EQ(std::tuple(textBuffer.address, textBuffer.length), std::tuple(text, 64u));
}

TEST_F(DriverEventCalls, RepliesCopiedOutWhateverTheResult) {
    ScriptedReply record;
    for (uint32_t w = 0; w < 8; ++w) record.word(8 + 4 * w, 0x100 + w);
    driver.script(record.word(40, 0xB5000101));
    driver.script(ScriptedReply{}.word(8, 3).word(12, 0xB5000101));
    driver.script(ScriptedReply{}.word(8, 0x30000009).word(12, 0xB5000102));
    driver.script(ScriptedReply{}.word(8, 0x12345678).word(12, 0xB5000102));
    driver.script(ScriptedReply{}.word(8, 0xD53E8000).word(12, 0x019DB1DE));
    EventData data{};
    uint32_t count = 0, value = 0;
    DeviceHandle queue = 0;
    uint64_t time = 0;
    EXPECT_EQ((std::tuple{RynDrvGetEventData_8(kLogical, &data), RynDrvGetEventDataEx_16(kLogical, &data, 1, &count),
                          RynDrvCreateEventQueue_12(7, 8, &queue), RynDrvReadReg8_12(kDevice, 0x40, &value)}),
              std::tuple(0xB5000101u, 0xB5000101u, 0xB5000102u, 0xB5000102u));
    // A register read copies a full word, even for an 8-bit register.
    EXPECT_EQ(std::tuple(data.word[0], data.word[7], count, queue, value),
              std::tuple(0x100u, 0x107u, 3u, 0x30000009u, 0x12345678u));
    // 1 January 1970, the low word first.
    EXPECT_EQ((std::pair{RynDrvGetCurrentTime_4(&time), time}), std::pair(0u, uint64_t{116444736000000000}));
}

TEST_F(DriverEventCalls, EventTextBoundedCopyAndPollKinds) {
    driver.script(ScriptedReply{}.put(8, {'o', 'f', 'f', ' ', 'h', 'o', 'o', 'k', 0}));
    driver.script(ScriptedReply{}.put(8, std::vector<uint8_t>(256, 'z')));
    driver.script(ryn::test::failedCall(0));
    char text[256];
    const auto read = [&text] { return std::pair{RynDrvEventCode2String_16(kDevice, 1, 2, text), std::string(text)}; };
    EXPECT_EQ(read(), std::pair(0u, std::string("off hook")));
    // A reply text without terminator is cut to 255 characters and terminated.
    std::memset(text, 'X', sizeof text);
    EXPECT_EQ(read(), std::pair(0u, std::string(255, 'z')));
    EXPECT_EQ(read(), std::pair(0xC300AD0Du, std::string()));

    // Polling takes driver objects only: kinds 0x1 to 0x6.
    driver.clear();
    EXPECT_EQ((std::tuple{RynResultErrorCode(RynDrvPollEvents_4(0x0FFFFFFF)),
                          RynResultErrorCode(RynDrvPollEvents_4(0x70000000)), driver.requestCount(),
                          RynDrvPollEvents_4(0x10000000)}),
              std::tuple(11u, 11u, 0u, 0u));
}

}  // namespace
