// Raw-data channel of the virtual board: raw-data channel 0 (device type 5),
// an unframed byte stream. The settings of the set-up calls are stored and
// not acted on.
//
// Set-up. RynRawDataSenderInit and RynRawDataSenderInitEx store their
// settings and ready the sender; RynRawDataReceiverInit stores its settings,
// readies the receiver and empties its buffer. Sending or flushing before the
// sender is set up, and reading before the receiver is, is refused with
// error 13 (kFailed); so is any of them on a channel disabled with
// RynDrvDisable.
//
// Loopback. Sent bytes arrive at once in the channel's own receive buffer
// (16384 bytes; bytes arriving at a full buffer push out the oldest, which
// are counted as dropped) and the channel posts kEventRawDataReceived, word 5
// the bytes that arrived, word 6 the bytes then waiting. Bytes sent while the
// receiver is not set up are lost and counted as dropped. A send of 0 bytes
// does nothing; more than 8191 is refused with error 9 (the library refuses
// 8192 and more itself). The bytes are read from the caller's buffer, bounded
// by the smaller of the length field and the buffer's listed length. The two
// settings of a send are not used. RynRawDataSenderFlush answers 0: the bytes
// leave at once, so nothing waits in the sender.
//
// RynRawDataReadData takes as many of the waiting bytes as the caller's
// buffer holds (the smaller of bufferSize and the listed length), oldest
// first. Reply: 8 the bytes written, 12 the bytes still waiting. With nothing
// waiting it answers the status kNothingToRead (bit 31 clear, error 1) and
// length 0; a read with no buffer is refused with error 9.
//
// The idle-pattern calls never reach the driver: the library answers them
// itself (error 6).
//
// Attributes (32-bit, read-only): 100 bytes waiting, 101 bytes dropped, 102
// bytes sent, 103 bytes received, 104 the receive buffer's capacity (16384).
#include <array>
#include <deque>

#include "Channels.h"
#include "RawDataWire.h"

namespace vb {
namespace {

namespace raw = wire::raw_data;

constexpr uint32_t kSendLimit = RYN_VB_RAW_SEND_MAX;
constexpr size_t kReceiveCapacity = RYN_VB_RAW_BUFFER_CAPACITY;

struct RawChannel : ObjectState {
    bool senderReady = false;
    bool receiverReady = false;
    std::array<uint32_t, 3> senderSettings{};  // the 32-bit ones, in request order
    uint8_t senderByte = 0;                    // the 8-bit setting
    std::array<uint32_t, 3> receiverSettings{};
    uint8_t receiverByte = 0;
    std::deque<uint8_t> waiting;
    uint32_t sent = 0, received = 0, dropped = 0;
};

RawChannel &channelOf(Object &object) { return object.as<RawChannel>(); }
RawChannel &channelOf(Call &call) { return channelOf(*call.object); }

// Sender set-up: param1, the byte param2, param3.
uint32_t senderInit(Call &call) {
    using Wire = raw::SenderInit;
    RawChannel &channel = channelOf(call);
    channel.senderSettings = {call.in.u32(Wire::kParam1), call.in.u32(Wire::kParam3), 0};
    channel.senderByte = call.in.u8(Wire::kParam2);
    channel.senderReady = true;
    return 0;
}

// Extended sender set-up: param1, param2, the byte param3, param4.
uint32_t senderInitEx(Call &call) {
    using Wire = raw::SenderInitEx;
    RawChannel &channel = channelOf(call);
    channel.senderSettings = {call.in.u32(Wire::kParam1), call.in.u32(Wire::kParam2), call.in.u32(Wire::kParam4)};
    channel.senderByte = call.in.u8(Wire::kParam3);
    channel.senderReady = true;
    return 0;
}

// Receiver set-up: param1, the byte param2, param3, param4.
uint32_t receiverInit(Call &call) {
    using Wire = raw::ReceiverInit;
    RawChannel &channel = channelOf(call);
    channel.receiverSettings = {call.in.u32(Wire::kParam1), call.in.u32(Wire::kParam3), call.in.u32(Wire::kParam4)};
    channel.receiverByte = call.in.u8(Wire::kParam2);
    channel.receiverReady = true;
    channel.waiting.clear();
    return 0;
}

uint32_t senderRefusal(Call &call) {
    if (channel::disabled(*call.object) || !channelOf(call).senderReady) return VB_FAILURE(kFailed);
    return 0;
}

uint32_t sendData(Call &call) {
    using Wire = raw::SendData;
    if (const uint32_t refused = senderRefusal(call)) return refused;
    const uint32_t length = call.in.u32(Wire::kLength);
    if (length > kSendLimit) return VB_FAILURE(kOutOfRange);
    if (length == 0) return 0;
    const auto bytes = channel::callerBytes(call, Wire::kData, length);
    if (bytes.empty()) return VB_FAILURE(kOutOfRange);
    RawChannel &channel = channelOf(call);
    const auto count = static_cast<uint32_t>(bytes.size());
    channel.sent += count;
    if (!channel.receiverReady) {
        channel.dropped += count;
        return 0;
    }
    channel.waiting.insert(channel.waiting.end(), bytes.begin(), bytes.end());
    channel.received += count;
    if (channel.waiting.size() > kReceiveCapacity) {
        const size_t excess = channel.waiting.size() - kReceiveCapacity;
        channel.waiting.erase(channel.waiting.begin(), channel.waiting.begin() + static_cast<std::ptrdiff_t>(excess));
        channel.dropped += static_cast<uint32_t>(excess);
    }
    call.board.post(*call.object, kEventRawDataReceived, count, static_cast<uint32_t>(channel.waiting.size()));
    return 0;
}

// Reply: the bytes written, the bytes still waiting.
uint32_t readData(Call &call) {
    using Wire = raw::ReadData;
    RawChannel &channel = channelOf(call);
    if (channel::disabled(*call.object) || !channel.receiverReady) return VB_FAILURE(kFailed);
    if (channel.waiting.empty()) return VB_STATUS(kNothingToRead);
    const auto room = channel::callerBytes(call, Wire::kBuffer, call.in.u32(Wire::kBufferSize));
    if (room.empty()) return VB_FAILURE(kOutOfRange);
    const size_t count = std::min(room.size(), channel.waiting.size());
    const auto end = channel.waiting.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(channel.waiting.begin(), end, room.begin());
    channel.waiting.erase(channel.waiting.begin(), end);
    call.out.u32(Wire::kReplyLength, static_cast<uint32_t>(count));
    call.out.u32(Wire::kReplyWaiting, static_cast<uint32_t>(channel.waiting.size()));
    return 0;
}

uint32_t senderFlush(Call &call) { return senderRefusal(call); }

constexpr Row kRawData[] = {
    row<raw::SenderInit>(senderInit), row<raw::ReceiverInit>(receiverInit), row<raw::SendData>(sendData),
    row<raw::ReadData>(readData),     row<raw::SenderFlush>(senderFlush),   row<raw::SenderInitEx>(senderInitEx),
};

std::vector<uint8_t> bytesWaiting(Call &, Object &object, uint32_t) {
    return wordValue(static_cast<uint32_t>(channelOf(object).waiting.size()));
}

std::vector<uint8_t> capacity(Call &, Object &, uint32_t) { return wordValue(kReceiveCapacity); }

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_RAW_WAITING, RYN_VB_VALUE_UINT32, bytesWaiting, nullptr},
    {RYN_VB_ATTR_RAW_DROPPED, RYN_VB_VALUE_UINT32, fieldValue<RawChannel, &RawChannel::dropped>, nullptr},
    {RYN_VB_ATTR_RAW_SENT, RYN_VB_VALUE_UINT32, fieldValue<RawChannel, &RawChannel::sent>, nullptr},
    {RYN_VB_ATTR_RAW_RECEIVED, RYN_VB_VALUE_UINT32, fieldValue<RawChannel, &RawChannel::received>, nullptr},
    {RYN_VB_ATTR_RAW_CAPACITY, RYN_VB_VALUE_UINT32, capacity, nullptr},
};

}  // namespace

const Family kRawDataFamily{"Raw-data channel", kRawData, kAttributes, makeState<RawChannel>};

}  // namespace vb
