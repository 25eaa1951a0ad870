// The data channels on the virtual board: HDLC and SS7 frames, the raw-data
// byte stream and burst blocks, each looped back to its own channel.
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

enum : uint32_t { kFrameReceived = 0x0300, kFrameSent = 0x0301, kRawDataReceived = 0x0302, kBurstDone = 0x0303 };

class ChannelsTest : public VirtualBoardTest {
protected:
    // HDLC channel `id` with its sender and receiver set up.
    static DeviceHandle hdlc(uint32_t id = 0) {
        const DeviceHandle channel = device(kHdlc, id);
        EXPECT_EQ(RynHdlcSenderInit(channel, 1, 2, 3, 4, 5, 6), 0u);
        EXPECT_EQ(RynHdlcReceiverInit(channel, 1, 2, 3, 4, 5, 6, 7), 0u);
        return channel;
    }
    static uint32_t attribute(DeviceHandle handle, int32_t id) {
        uint32_t value = 0xFFFFFFFFu;
        EXPECT_EQ(RynDrvGetAttributeValueUint32(handle, id, &value), 0u) << "attribute " << id;
        return value;
    }
};

TEST_F(ChannelsTest, HdlcFramesRoundTripWithEvents) {
    const DeviceHandle channel = hdlc();
    EventListener listener(channel);
    const std::string frames[] = {"A", "second frame", std::string(300, 'z')};
    for (const std::string &frame : frames)
        ASSERT_EQ(RynHdlcSendData(channel, frame.data(), static_cast<uint32_t>(frame.size()), 0, 0), 0u);
    for (const std::string &frame : frames) {
        EventData record{};
        ASSERT_TRUE(listener.nextWithCode(kFrameSent, record));
        EXPECT_EQ(record.word[5], frame.size());
        ASSERT_TRUE(listener.nextWithCode(kFrameReceived, record));
        EXPECT_EQ(record.word[5], frame.size());
        EXPECT_EQ(record.word[4], channel);
    }
    for (uint32_t i = 0; i < 3; ++i) {
        char buffer[512];
        uint32_t length = 0, queued = 0, dropped = 99;
        uint64_t time = 0;
        ASSERT_EQ(RynHdlcReadData(channel, buffer, sizeof buffer, &length, &queued, &dropped, &time), 0u);
        EXPECT_EQ(std::string(buffer, length), frames[i]);
        EXPECT_EQ(queued * 10 + dropped, (2 - i) * 10);
        EXPECT_NE(time, 0u);
    }

    // SS7: the 3-byte field of the frame read comes back in the receive status.
    const uint8_t header[3] = {0x12, 0x34, 0x56};
    ASSERT_EQ(RynHdlcSS7SendData(channel, "msu", 3, header, 0, 0), 0u);
    char buffer[8];
    uint32_t length = 0, queued = 9, received = 0, dropped = 9, filter = 0;
    ASSERT_EQ(RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr), 0u);
    uint8_t status[3] = {};
    ASSERT_EQ(RynHdlcSS7GetReceiveStatus(channel, &queued, &received, &dropped, status), 0u);
    EXPECT_EQ(std::memcmp(status, header, 3), 0);
    EXPECT_EQ(received, 4u);
    EXPECT_EQ(queued + dropped, 0u);
    EXPECT_EQ(RynHdlcSS7SetFilter(channel, 0x55), 0u);
    EXPECT_EQ(RynHdlcSS7GetFilter(channel, &filter), 0u);
    EXPECT_EQ(filter, 0x55u);

    // A repeated block is looped back once per start; ReadDataEx peeks at it.
    ASSERT_EQ(RynHdlcStartRepeatData(channel, "rep", 3, 0, 0), 0u);
    EXPECT_EQ(RynHdlcReadDataEx(channel, 0, 0, 0, 0, &length), 0u);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(attribute(channel, 100), 1u);
    EXPECT_EQ(RynHdlcStopRepeatData(channel), 0u);
    EXPECT_EQ(errorOf(RynHdlcStopRepeatData(channel)), 13u);
}

TEST_F(ChannelsTest, HdlcRefusesCallsOutOfOrderAndReportsAnEmptyReceiver) {
    const DeviceHandle channel = device(kHdlc, 1);
    char buffer[16];
    uint32_t length = 7;
    const ResultCode early = RynHdlcSendData(channel, "x", 1, 0, 0);
    EXPECT_TRUE(failed(early));
    EXPECT_EQ(errorOf(early), 13u);
    EXPECT_EQ(sourceOf(early), kBoardSource);
    EXPECT_EQ(errorOf(RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr)), 13u);

    ASSERT_EQ(RynHdlcReceiverInit(channel, 0, 0, 0, 0, 0, 0, 0), 0u);
    const ResultCode empty = RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr);
    EXPECT_FALSE(failed(empty));
    EXPECT_EQ(errorOf(empty), 1u);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(errorOf(RynHdlcSendData(channel, "x", 1, 0, 0)), 13u);  // the sender is still not set up

    // A disabled channel moves nothing until enabled again.
    ASSERT_EQ(RynHdlcSenderInit(channel, 0, 0, 0, 0, 0, 0), 0u);
    ASSERT_EQ(RynDrvDisable(channel, 0, 0), 0u);
    EXPECT_EQ(errorOf(RynHdlcSendData(channel, "x", 1, 0, 0)), 13u);
    ASSERT_EQ(RynDrvEnable(channel, 0, 0), 0u);
    EXPECT_EQ(RynHdlcSendData(channel, "x", 1, 0, 0), 0u);
}

TEST_F(ChannelsTest, HdlcQueueDropsTheOldestAndOversizedFramesAreRefused) {
    const DeviceHandle channel = hdlc();
    for (uint32_t i = 0; i < 70; ++i) ASSERT_EQ(RynHdlcSendData(channel, &i, 4, 0, 0), 0u);
    EXPECT_EQ(attribute(channel, 100), 64u);
    EXPECT_EQ(attribute(channel, 101), 6u);
    uint32_t value = 0, length = 0, queued = 0, dropped = 0;
    ASSERT_EQ(RynHdlcReadData(channel, &value, 4, &length, &queued, &dropped, nullptr), 0u);
    EXPECT_EQ(value, 6u);  // frames 0 to 5 were dropped
    EXPECT_EQ(queued * 100 + dropped, 6306u);

    // A frame larger than the buffer is refused and kept, its size reported.
    const DeviceHandle other = hdlc(1);
    char frame[100] = "large", small[10];
    ASSERT_EQ(RynHdlcSendData(other, frame, sizeof frame, 0, 0), 0u);
    const ResultCode code = RynHdlcReadData(other, small, sizeof small, &length, nullptr, nullptr, nullptr);
    EXPECT_TRUE(failed(code));
    EXPECT_EQ(errorOf(code), 9u);
    EXPECT_EQ(length, 100u);
    EXPECT_EQ(RynHdlcReadData(other, frame, sizeof frame, &length, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(length, 100u);

    // Too long for the library, empty for the board, too long to repeat.
    std::vector<char> huge(8192);
    EXPECT_EQ(errorOf(RynHdlcSendData(other, huge.data(), 8192, 0, 0)), 9u);
    EXPECT_EQ(errorOf(RynHdlcSendData(other, huge.data(), 0, 0, 0)), 9u);
    EXPECT_EQ(errorOf(RynHdlcStartRepeatData(other, huge.data(), 10, 0, 0)), 9u);

    // Cross-connected, channel 0's frames reach channel 1's receiver.
    ASSERT_EQ(RynDrvSetAttributeValueBool(channel, 104, 1), 0u);
    ASSERT_EQ(RynHdlcSendData(channel, "ab", 2, 0, 0), 0u);
    EXPECT_EQ(attribute(channel, 100) * 10 + attribute(other, 100), 631u);
}

TEST_F(ChannelsTest, RawDataLoopsTheByteStreamBack) {
    const DeviceHandle channel = device(kRawData);
    EXPECT_EQ(errorOf(RynRawDataSendData(channel, "x", 1, 0, 0)), 13u);
    ASSERT_EQ(RynRawDataSenderInit(channel, 1, 2, 3), 0u);
    ASSERT_EQ(RynRawDataReceiverInit(channel, 1, 2, 3, 4), 0u);
    EventListener listener(channel);
    ASSERT_EQ(RynRawDataSendData(channel, "hello ", 6, 0, 0), 0u);
    ASSERT_EQ(RynRawDataSendData(channel, "world", 5, 0, 0), 0u);
    EventData record{};
    ASSERT_TRUE(listener.nextWithCode(kRawDataReceived, record));
    EXPECT_EQ(record.word[5], 6u);

    char buffer[8];
    uint32_t length = 0, waiting = 0;
    ASSERT_EQ(RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting), 0u);
    EXPECT_EQ(std::string(buffer, length), "hello wo");
    EXPECT_EQ(waiting, 3u);
    ASSERT_EQ(RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting), 0u);
    EXPECT_EQ(std::string(buffer, length), "rld");
    const ResultCode empty = RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting);
    EXPECT_FALSE(failed(empty));
    EXPECT_EQ(errorOf(empty), 1u);
    std::vector<char> huge(8192);
    EXPECT_EQ(errorOf(RynRawDataSendData(channel, huge.data(), 8192, 0, 0)), 9u);
}

TEST_F(ChannelsTest, BurstBlocksComeBackWithTheirValues) {
    const DeviceHandle channel = device(kBurst);
    EventListener listener(channel);
    std::vector<uint8_t> block(1000), back(2000);
    std::iota(block.begin(), block.end(), uint8_t{0});
    uint32_t length = 1000;
    ASSERT_EQ(RynBurstSendData(channel, 42, block.data(), &length), 0u);
    EXPECT_EQ(length, 1000u);
    EventData record{};
    ASSERT_TRUE(listener.nextWithCode(kBurstDone, record));
    EXPECT_EQ(record.word[5], 1000u);

    uint64_t time = 0, param1 = 0;
    uint32_t capacity = 999;  // too small: refused, the block kept
    EXPECT_EQ(errorOf(RynBurstReadDataEx(channel, 0, back.data(), &capacity, &time, &param1)), 9u);
    capacity = 2000;
    ASSERT_EQ(RynBurstReadDataEx(channel, 0, back.data(), &capacity, &time, &param1), 0u);
    ASSERT_EQ(capacity, 1000u);
    EXPECT_TRUE(std::equal(block.begin(), block.end(), back.begin()));
    EXPECT_EQ(param1, 42u);
    EXPECT_NE(time, 0u);
    const ResultCode empty = RynBurstReadData(channel, 0, back.data(), &capacity);
    EXPECT_FALSE(failed(empty));
    EXPECT_EQ(errorOf(empty), 1u);

    // Over the board's 4096-byte limit: refused. A send of 0 bytes sends the preload.
    std::vector<uint8_t> huge(4097);
    length = 4097;
    const ResultCode code = RynBurstSendData(channel, 0, huge.data(), &length);
    EXPECT_EQ(errorOf(code), 9u);
    EXPECT_EQ(sourceOf(code), kBoardSource);
    length = 3;
    ASSERT_EQ(RynBurstInitSendBuffer(channel, 0, "pre", &length), 0u);
    length = 0;
    ASSERT_EQ(RynBurstSendData(channel, 7, "", &length), 0u);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(attribute(channel, 100), 3u);
}

}  // namespace
}  // namespace vt
