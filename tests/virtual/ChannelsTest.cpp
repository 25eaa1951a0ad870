// The data channels on the virtual board: HDLC and SS7 frames, the raw-data
// byte stream and burst blocks, each looped back to its own channel.
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

class ChannelsTest : public VirtualBoardTest {
protected:
    // HDLC channel `id` with its sender and receiver set up.
    static DeviceHandle hdlc(uint32_t id = 0) {
        const DeviceHandle channel = device(RYN_VB_DEVICE_HDLC, id);
        EXPECT_EQ(RynHdlcSenderInit(channel, 1, 2, 3, 4, 5, 6), 0u);
        EXPECT_EQ(RynHdlcReceiverInit(channel, 1, 2, 3, 4, 5, 6, 7), 0u);
        return channel;
    }
};

TEST_F(ChannelsTest, HdlcFramesRoundTripWithEvents) {
    const DeviceHandle channel = hdlc();
    EventListener listener(channel);
    const std::string frames[] = {"A", "second frame", std::string(300, 'z')};
    for (const std::string &frame : frames)
        ASSERT_EQ(RynHdlcSendData(channel, frame.data(), static_cast<uint32_t>(frame.size()), 0, 0), 0u);
    for (const std::string &frame : frames) {
        EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_FRAME_SENT).word[5], frame.size());
        const EventData received = listener.nextWith(RYN_VB_EVENT_FRAME_RECEIVED);
        EXPECT_EQ(std::pair(received.word[5], received.word[4]), std::pair(uint32_t(frame.size()), channel));
    }
    for (uint32_t i = 0; i < 3; ++i) {
        char buffer[512];
        uint32_t length = 0, queued = 0, dropped = 99;
        uint64_t time = 0;
        ASSERT_EQ(RynHdlcReadData(channel, buffer, sizeof buffer, &length, &queued, &dropped, &time), 0u);
        EXPECT_EQ(std::tuple(std::string(buffer, length), queued, dropped, time != 0),
                  std::tuple(frames[i], 2 - i, 0u, true));
    }

    // SS7: the 3-byte field of the frame read comes back in the receive status.
    const uint8_t header[3] = {0x12, 0x34, 0x56};
    ASSERT_EQ(RynHdlcSS7SendData(channel, "msu", 3, header, 0, 0), 0u);
    char buffer[8];
    uint32_t length = 0, queued = 9, received = 0, dropped = 9;
    ASSERT_EQ(RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr), 0u);
    uint8_t status[3] = {};
    ASSERT_EQ(RynHdlcSS7GetReceiveStatus(channel, &queued, &received, &dropped, status), 0u);
    EXPECT_EQ(std::tuple(std::memcmp(status, header, 3), received, queued + dropped), std::tuple(0, 4u, 0u));
    // The filter drops fill-in units and repeated units of those sent with the field.
    constexpr uint32_t kFilter = RYN_VB_SS7_FILTER_FILL_IN | RYN_VB_SS7_FILTER_REPEATED;
    EXPECT_EQ(errorOf(RynHdlcSS7SetFilter(channel, 8)), 9u);
    EXPECT_EQ(RynHdlcSS7SetFilter(channel, kFilter), 0u);
    EXPECT_EQ(got(RynHdlcSS7GetFilter, channel), kFilter);
    const uint8_t fillIn[3] = {1, 1, 0}, linkStatus[3] = {1, 1, 2}, message[3] = {1, 2, 3};
    for (const uint8_t *field : {fillIn, linkStatus, message, message, fillIn})
        ASSERT_EQ(RynHdlcSS7SendData(channel, "u", 1, field, 0, 0), 0u);
    ASSERT_EQ(RynHdlcSendData(channel, "plain", 5, 0, 0), 0u);  // no field: not filtered
    EXPECT_EQ(std::pair(attribute(channel, RYN_VB_ATTR_HDLC_QUEUED), attribute(channel, RYN_VB_ATTR_HDLC_FILTERED)),
              std::pair(3u, 3u));
    ASSERT_EQ(RynHdlcReceiverInit(channel, 0, 0, 0, 0, 0, 0, 0), 0u);  // empties the queue

    // A repeated block is looped back once per start; ReadDataEx peeks at it.
    ASSERT_EQ(RynHdlcStartRepeatData(channel, "rep", 3, 0, 0), 0u);
    EXPECT_EQ(got(RynHdlcReadDataEx, channel, 0, 0, 0, 0), 3u);
    EXPECT_EQ(attribute(channel, RYN_VB_ATTR_HDLC_QUEUED), 1u);
    EXPECT_EQ(RynHdlcStopRepeatData(channel), 0u);
    EXPECT_EQ(errorOf(RynHdlcStopRepeatData(channel)), 13u);
}

TEST_F(ChannelsTest, HdlcRefusesCallsOutOfOrderAndReportsAnEmptyReceiver) {
    const DeviceHandle channel = device(RYN_VB_DEVICE_HDLC, 1);
    char buffer[16];
    uint32_t length = 7;
    const ResultCode early = RynHdlcSendData(channel, "x", 1, 0, 0);
    EXPECT_TRUE(failed(early) && errorOf(early) == 13 && sourceOf(early) == RYN_VB_SOURCE_ID) << std::hex << early;
    EXPECT_EQ(errorOf(RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr)), 13u);

    ASSERT_EQ(RynHdlcReceiverInit(channel, 0, 0, 0, 0, 0, 0, 0), 0u);
    EXPECT_TRUE(isEmpty(RynHdlcReadData(channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr)));
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
    EXPECT_EQ(std::pair(attribute(channel, RYN_VB_ATTR_HDLC_QUEUED), attribute(channel, RYN_VB_ATTR_HDLC_DROPPED)),
              std::pair(RYN_VB_HDLC_QUEUE_CAPACITY, 6u));
    uint32_t value = 0, length = 0, queued = 0, dropped = 0;
    ASSERT_EQ(RynHdlcReadData(channel, &value, 4, &length, &queued, &dropped, nullptr), 0u);
    EXPECT_EQ(std::tuple(value, queued, dropped), std::tuple(6u, 63u, 6u));  // frames 0 to 5 were dropped

    // A frame larger than the buffer is refused and kept, its size reported.
    const DeviceHandle other = hdlc(1);
    char frame[100] = "large", small[10];
    ASSERT_EQ(RynHdlcSendData(other, frame, sizeof frame, 0, 0), 0u);
    const ResultCode code = RynHdlcReadData(other, small, sizeof small, &length, nullptr, nullptr, nullptr);
    EXPECT_EQ(std::pair(code & 0x800000FF, length), std::pair(0x80000009, 100u));
    EXPECT_EQ((std::pair{RynHdlcReadData(other, frame, sizeof frame, &length, nullptr, nullptr, nullptr), length}),
              std::pair(0u, 100u));

    // Too long for the library, empty for the board, too long to repeat.
    std::vector<char> huge(RYN_VB_HDLC_FRAME_MAX + 1);
    EXPECT_EQ(errorOf(RynHdlcSendData(other, huge.data(), RYN_VB_HDLC_FRAME_MAX + 1, 0, 0)), 9u);
    EXPECT_EQ(errorOf(RynHdlcSendData(other, huge.data(), 0, 0, 0)), 9u);
    EXPECT_EQ(errorOf(RynHdlcStartRepeatData(other, huge.data(), 10, 0, 0)), 9u);

    // Cross-connected, channel 0's frames reach channel 1's receiver.
    ASSERT_EQ(RynDrvSetAttributeValueBool(channel, RYN_VB_ATTR_HDLC_CROSS_CONNECT, 1), 0u);
    ASSERT_EQ(RynHdlcSendData(channel, "ab", 2, 0, 0), 0u);
    EXPECT_EQ(attribute(channel, RYN_VB_ATTR_HDLC_QUEUED) * 10 + attribute(other, RYN_VB_ATTR_HDLC_QUEUED), 631u);
}

TEST_F(ChannelsTest, RawDataLoopsTheByteStreamBack) {
    const DeviceHandle channel = device(RYN_VB_DEVICE_RAW_DATA);
    EXPECT_EQ(errorOf(RynRawDataSendData(channel, "x", 1, 0, 0)), 13u);
    ASSERT_EQ(RynRawDataSenderInit(channel, 1, 2, 3), 0u);
    ASSERT_EQ(RynRawDataReceiverInit(channel, 1, 2, 3, 4), 0u);
    EventListener listener(channel);
    ASSERT_EQ(RynRawDataSendData(channel, "hello ", 6, 0, 0), 0u);
    ASSERT_EQ(RynRawDataSendData(channel, "world", 5, 0, 0), 0u);
    EXPECT_EQ(listener.nextWith(RYN_VB_EVENT_RAW_DATA_RECEIVED).word[5], 6u);

    char buffer[8];
    uint32_t length = 0, waiting = 0;
    ASSERT_EQ(RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting), 0u);
    EXPECT_EQ(std::string(buffer, length), "hello wo");
    EXPECT_EQ(waiting, 3u);
    ASSERT_EQ(RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting), 0u);
    EXPECT_EQ(std::string(buffer, length), "rld");
    EXPECT_TRUE(isEmpty(RynRawDataReadData(channel, buffer, sizeof buffer, &length, &waiting)));
    std::vector<char> huge(RYN_VB_RAW_SEND_MAX + 1);
    EXPECT_EQ(errorOf(RynRawDataSendData(channel, huge.data(), RYN_VB_RAW_SEND_MAX + 1, 0, 0)), 9u);
}

TEST_F(ChannelsTest, BurstBlocksComeBackWithTheirValues) {
    const DeviceHandle channel = device(RYN_VB_DEVICE_BURST);
    EventListener listener(channel);
    std::vector<uint8_t> block(1000), back(2000);
    std::iota(block.begin(), block.end(), uint8_t{0});
    uint32_t length = 1000;
    ASSERT_EQ(RynBurstSendData(channel, 42, block.data(), &length), 0u);
    EXPECT_EQ(std::pair(length, listener.nextWith(RYN_VB_EVENT_BURST_DONE).word[5]), std::pair(1000u, 1000u));

    uint64_t time = 0, param1 = 0;
    uint32_t capacity = 999;  // too small: refused, the block kept
    EXPECT_EQ(errorOf(RynBurstReadDataEx(channel, 0, back.data(), &capacity, &time, &param1)), 9u);
    capacity = 2000;
    ASSERT_EQ(RynBurstReadDataEx(channel, 0, back.data(), &capacity, &time, &param1), 0u);
    ASSERT_EQ(capacity, 1000u);
    EXPECT_TRUE(std::equal(block.begin(), block.end(), back.begin()));
    EXPECT_EQ(std::pair(param1, time != 0), std::pair(uint64_t{42}, true));
    EXPECT_TRUE(isEmpty(RynBurstReadData(channel, 0, back.data(), &capacity)));

    // Over the board's block limit: refused. A send of 0 bytes sends the preload.
    std::vector<uint8_t> huge(RYN_VB_BURST_BLOCK_MAX + 1);
    length = RYN_VB_BURST_BLOCK_MAX + 1;
    const ResultCode code = RynBurstSendData(channel, 0, huge.data(), &length);
    EXPECT_EQ(std::pair(errorOf(code), sourceOf(code)), std::pair(9u, RYN_VB_SOURCE_ID));
    length = 3;
    ASSERT_EQ(RynBurstInitSendBuffer(channel, 0, "pre", &length), 0u);
    length = 0;
    ASSERT_EQ(RynBurstSendData(channel, 7, "", &length), 0u);
    EXPECT_EQ(std::pair(length, attribute(channel, RYN_VB_ATTR_BURST_WAITING)), std::pair(3u, 3u));
}

}  // namespace
}  // namespace vt
