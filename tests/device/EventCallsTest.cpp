#include <gtest/gtest.h>

#include <cstring>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

using DriverEventCalls = ryn::test::ConnectedTest;

TEST_F(DriverEventCalls, SetDataRequestsDifferOnlyInWordsZeroAndOne) {
    EXPECT_EQ(RynDrvSetEventData_28(0x20000001, 2, 3, 4, 5, 6, 7), 0u);
    EXPECT_EQ(RynDrvSetEventDataEx_36(0x20000001, 2, 3, 4, 5, 6, 7, 0xA0, 0xA1), 0u);
    const auto requests = driver.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].code, 0x222348u);
    EXPECT_EQ(requests[1].code, 0x222354u);
    ASSERT_EQ(requests[0].input.size(), 52u);
    ASSERT_EQ(requests[1].input.size(), 52u);
    for (size_t offset = 0; offset < 52; offset += 4) {
        if (offset == 20 || offset == 24) continue;
        EXPECT_EQ(requests[0].word(offset), requests[1].word(offset)) << offset;
    }
    EXPECT_EQ(requests[1].word(20), 0xA0u);
    EXPECT_EQ(requests[1].word(24), 0xA1u);
    EXPECT_EQ(requests[0].word(28), 2u);
    EXPECT_EQ(requests[0].word(48), 7u);
}

TEST_F(DriverEventCalls, EventTextSwappedArgumentsAndBoundedCopy) {
    ScriptedReply reply;
    reply.bytes.emplace_back(8, std::vector<uint8_t>{'o', 'f', 'f', ' ', 'h', 'o', 'o', 'k', 0});
    driver.script(reply);
    char text[256];
    std::memset(text, 'X', sizeof text);
    EXPECT_EQ(RynDrvEventCode2String_16(0x10000001, 0x55, 0x66, text), 0u);
    EXPECT_STREQ(text, "off hook");
    const auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x222048u);
    EXPECT_EQ(sent.input.size(), 28u);
    EXPECT_EQ(sent.outputLength, 268u);
    EXPECT_EQ(sent.word(20), 0x66u);
    EXPECT_EQ(sent.word(24), 0x55u);

    // A reply text without terminator is cut to 255 characters and terminated.
    ScriptedReply unterminated;
    unterminated.bytes.emplace_back(8, std::vector<uint8_t>(256, 'z'));
    driver.script(unterminated);
    std::memset(text, 'X', sizeof text);
    EXPECT_EQ(RynDrvEventCode2String_16(0x10000001, 1, 2, text), 0u);
    EXPECT_EQ(std::strlen(text), 255u);

    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ(RynDrvEventCode2String_16(0x10000001, 1, 2, text), 0xC300AD0Du);
    EXPECT_EQ(text[0], '\0');
}

TEST_F(DriverEventCalls, RecordsQueuesAndPolling) {
    ScriptedReply record;
    for (uint32_t w = 0; w < 8; ++w) record.word(8 + 4 * w, 0x100 + w);
    record.word(40, 0xB5000101);
    driver.script(record);
    EventData data{};
    EXPECT_EQ(RynDrvGetEventData_8(0x20000001, &data), 0xB5000101u);
    EXPECT_EQ(data.word[0], 0x100u);
    EXPECT_EQ(data.word[7], 0x107u);  // copied whatever the result
    EXPECT_EQ(driver.lastRequest().code, 0x22234Cu);

    EventData records[4] = {};
    uint32_t count = 0;
    driver.script(ScriptedReply{}.word(8, 3));
    EXPECT_EQ(RynDrvGetEventDataEx_16(0x20000001, records, 4, &count), 0u);
    EXPECT_EQ(count, 3u);
    auto sent = driver.lastRequest();
    EXPECT_EQ(sent.word(24), 4u);
    ASSERT_EQ(sent.buffers.size(), 1u);
    EXPECT_EQ(sent.buffers[0].address, records);
    EXPECT_EQ(sent.buffers[0].length, 128u);

    DeviceHandle queue = 0;
    driver.script(ScriptedReply{}.word(8, 0x30000009).word(12, 0xB5000102));
    EXPECT_EQ(RynDrvCreateEventQueue_12(7, 8, &queue), 0xB5000102u);
    EXPECT_EQ(queue, 0x30000009u);
    sent = driver.lastRequest();
    EXPECT_EQ(sent.word(24), connection);

    EXPECT_EQ(RynResultErrorCode(RynDrvPollEvents_4(0x70000000)), 11u);
    EXPECT_EQ(RynDrvPollEvents_4(0x60000000), 0u);
}

TEST_F(DriverEventCalls, UndecoratedFormsTranslateWordTwo) {
    ryn::setDriverVersionLevel(10130);
    driver.script(ScriptedReply{}.word(16, static_cast<uint32_t>(-16)));
    EventData data{};
    EXPECT_EQ(RynDrvGetEventData(0x20000001, &data), 0u);
    EXPECT_EQ(static_cast<int32_t>(data.word[2]), -17);

    EventData records[2] = {};
    records[0].word[2] = static_cast<uint32_t>(-30);  // as the driver would have written it
    uint32_t count = 0;
    EXPECT_EQ(RynDrvGetEventDataEx(0x20000001, records, 2, &count), 0u);
    EXPECT_EQ(static_cast<int32_t>(records[0].word[2]), -32);
}

TEST_F(DriverEventCalls, RegisterRequests) {
    uint32_t value = 0;
    driver.script(ScriptedReply{}.word(8, 0x12345678));
    EXPECT_EQ(RynDrvReadReg8_12(0x10000001, 0x40, &value), 0u);
    EXPECT_EQ(value, 0x12345678u);  // a full word even for an 8-bit register
    EXPECT_EQ(RynDrvWriteReg16_12(0x10000001, 0x42, 0x1ABCD), 0u);
    EXPECT_EQ(driver.lastRequest().word(24), 0x1ABCDu);
    EXPECT_EQ(driver.lastRequest().code, 0x22207Cu);
    EXPECT_EQ(RynStartWatchdogTimer_4(1), 0u);
    EXPECT_EQ(RynStartWatchdogTimer_4(0xFFFF), 0u);
    auto requests = driver.requests();
    EXPECT_EQ(requests[2].input, requests[3].input);
    EXPECT_EQ(requests[2].input.size(), 20u);

    char text[64];
    EXPECT_EQ(RynDrvResultCode2String_16(0x10000001, 0xC300AA0D, text, sizeof text), 0u);
    auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x22206Cu);
    EXPECT_EQ(sent.word(20), 0xC300AA0Du);
    EXPECT_EQ(sent.word(24), 64u);
    if (sizeof(void *) == 8) {
        EXPECT_EQ(sent.word(28), 1u);  // a reference to the first listed buffer
    }
    ASSERT_EQ(sent.buffers.size(), 1u);
    EXPECT_EQ(sent.buffers[0].address, text);

    uint64_t time = 0;
    driver.script(ScriptedReply{}.word(8, 0xD53E8000).word(12, 0x019DB1DE));
    EXPECT_EQ(RynDrvGetCurrentTime_4(&time), 0u);
    EXPECT_EQ(time, 116444736000000000ull);
    EXPECT_EQ((time - 116444736000000000ull) / 10000000ull, 0u);  // 1 January 1970
    EXPECT_EQ(driver.lastRequest().code, 0x2221DCu);
}

}  // namespace
