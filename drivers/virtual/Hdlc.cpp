// HDLC and SS7 channels of the virtual board: HDLC channels 0 and 1 (device
// type 4). The library passes the settings unchanged; what they mean is this
// driver's, and this board stores them without acting on them.
//
// Set-up. RynHdlcSenderInit stores its six settings and readies the sender;
// RynHdlcReceiverInit stores its seven, readies the receiver and empties its
// queue. Either may be repeated. Sending (plain, SS7, repeated) or flushing
// before the sender is set up, and reading, peeking or asking the receive
// status before the receiver is, is refused with error 13 (kFailed). So is
// any of them on a channel disabled with RynDrvDisable.
//
// Loopback. A frame sent on a channel arrives at once at that channel's own
// receiver; with attribute 104 set to 1 it goes to the other channel's
// receiver instead (set it on both for a cross-connected pair). The sender
// posts kEventFrameSent, the receiver kEventFrameReceived; word 5 is the
// frame's length, word 6 (received only) the frames then queued. A frame
// that reaches a receiver that is not set up is lost and counted as dropped.
//
// Frames are 1 to 8191 bytes: a length of 0 is refused with error 9 (the
// library itself refuses 8192 and more). The bytes are read from the caller's buffer,
// bounded by the smaller of the length field and the buffer's length as the
// library lists it: a shorter buffer sends a shorter frame. The two settings
// of a send are not used.
//
// Receive queue: 64 frames per channel; a frame arriving at a full queue
// drops the oldest one, which is counted (attribute 101).
//
// RynHdlcReadData takes the oldest frame. Reply: 8 its length, 12 the frames
// still queued, 16 the frames dropped so far, 20..27 the board time (100-ns
// units since 1601) at which it arrived. An empty queue answers the status
// kNothingToRead (bit 31 clear, error 1) with length 0. A frame larger than
// the caller's buffer (the smaller of bufferSize and the listed length) is
// refused with error 9: nothing is written, the frame stays queued and the
// length at 8 is its full size, so a read with a larger buffer gets it.
//
// SS7. RynHdlcSS7SendData sends as RynHdlcSendData and keeps the 3-byte field
// with the frame. RynHdlcSS7GetReceiveStatus answers 8 the frames queued, 12
// the frames received in all, 16 the frames dropped, 20..22 the 3-byte field
// of the frame last read (zeros for a frame sent without one). The filter
// (RynHdlcSS7SetFilter) drops signal units the receiver does not want, by
// the length indicator in the low 6 bits of the field's third byte: bit 0
// drops fill-in units (indicator 0), bit 1 link-status units (1 or 2), bit 2
// a unit equal to the one received before it (field and data); other bits
// are refused with error 9. It applies to frames sent with the field only.
// Dropped units are counted in attribute 106.
//
// Repeated block. RynHdlcStartRepeatData (1 to 9 bytes) stores the block,
// loops it back at once and again in every frame of the sample clock (10 ms
// of board time), each time with its sent/received event pair, until it
// stops; a start while repeating replaces the block. RynHdlcStopRepeatData ends it and is refused
// with error 13 when nothing repeats. RynHdlcSenderFlush ends repeated
// sending too: frames leave at once, so the block is all a sender holds.
//
// RynHdlcReadDataEx peeks: param1 picks a queued frame (0 the next to read),
// its length comes back at 8 and it stays queued; kNothingToRead when there
// is no such frame. param2 to param4 are not used.
//
// Attributes (32-bit, read-only unless said): 100 frames queued, 101 frames
// dropped, 102 frames sent, 103 frames received, 104 cross-connect (Boolean,
// settable), 105 the queue's capacity (64), 106 signal units filtered.
#include <algorithm>
#include <array>
#include <deque>
#include <optional>

#include "Channels.h"
#include "HdlcWire.h"

namespace vb {
namespace {

namespace hdlc = wire::hdlc;
using hdlc::kSs7Bytes;

constexpr size_t kQueueCapacity = RYN_VB_HDLC_QUEUE_CAPACITY;
constexpr uint32_t kFrameLimit = RYN_VB_HDLC_FRAME_MAX;
constexpr uint32_t kRepeatLimit = 9;
enum Filter : uint32_t {
    kDropFillIn = RYN_VB_SS7_FILTER_FILL_IN,
    kDropLinkStatus = RYN_VB_SS7_FILTER_LINK_STATUS,
    kDropRepeated = RYN_VB_SS7_FILTER_REPEATED,
    kFilterBits = kDropFillIn | kDropLinkStatus | kDropRepeated,
};

struct Frame {
    std::vector<uint8_t> data;
    std::array<uint8_t, kSs7Bytes> ss7{};
    bool hasSs7 = false;  // sent with the SS7 field
    uint64_t time = 0;    // board time of arrival
};

struct HdlcChannel : ObjectState {
    bool senderReady = false;
    bool receiverReady = false;
    std::array<uint32_t, 6> senderSettings{};
    std::array<uint32_t, 7> receiverSettings{};
    std::deque<Frame> queue;
    uint32_t sent = 0, received = 0, dropped = 0;
    std::array<uint8_t, kSs7Bytes> lastSs7{};  // of the frame last read
    uint32_t filter = 0;
    uint32_t filtered = 0;
    std::optional<Frame> lastUnit;  // the SS7 unit received last, for the repeat filter
    bool crossConnect = false;
    bool repeating = false;
    std::vector<uint8_t> repeatBlock;
};

HdlcChannel &channelOf(Object &object) { return object.as<HdlcChannel>(); }
HdlcChannel &channelOf(Call &call) { return channelOf(*call.object); }

// ---- Loopback ---------------------------------------------------------------

// The channel whose receiver gets the frames `sender` sends.
Object &destination(Board &board, Object &sender) {
    if (channelOf(sender).crossConnect)
        if (Object *other = board.findDevice(kTypeHdlc, sender.id ^ 1u)) return *other;
    return sender;
}

// Whether the receiver's SS7 filter drops `frame` (and counts it).
bool filteredOut(HdlcChannel &receiver, const Frame &frame) {
    if (!frame.hasSs7) return false;
    const uint32_t indicator = frame.ss7[2] & 0x3Fu;
    const bool repeated =
        receiver.lastUnit && receiver.lastUnit->ss7 == frame.ss7 && receiver.lastUnit->data == frame.data;
    receiver.lastUnit = frame;
    const bool drop = ((receiver.filter & kDropFillIn) && indicator == 0) ||
                      ((receiver.filter & kDropLinkStatus) && (indicator == 1 || indicator == 2)) ||
                      ((receiver.filter & kDropRepeated) && repeated);
    receiver.filtered += drop;
    return drop;
}

void loopBack(Board &board, Object &sender, Frame frame) {
    const auto length = static_cast<uint32_t>(frame.data.size());
    ++channelOf(sender).sent;
    board.post(sender, kEventFrameSent, length);
    Object &target = destination(board, sender);
    HdlcChannel &receiver = channelOf(target);
    if (!receiver.receiverReady) {
        ++receiver.dropped;
        return;
    }
    if (filteredOut(receiver, frame)) return;
    if (receiver.queue.size() >= kQueueCapacity) {
        receiver.queue.pop_front();
        ++receiver.dropped;
    }
    frame.time = board.now();
    receiver.queue.push_back(std::move(frame));
    ++receiver.received;
    board.post(target, kEventFrameReceived, length, static_cast<uint32_t>(receiver.queue.size()));
}

uint32_t senderRefusal(Call &call) {
    if (channel::disabled(*call.object) || !channelOf(call).senderReady) return VB_FAILURE(kFailed);
    return 0;
}

uint32_t receiverRefusal(Call &call) {
    if (channel::disabled(*call.object) || !channelOf(call).receiverReady) return VB_FAILURE(kFailed);
    return 0;
}

// The frame of `length` bytes (1 to `limit`) named by the address field at
// `addressOffset`.
uint32_t takeFrame(Call &call, uint32_t length, uint32_t limit, uint32_t addressOffset, Frame &frame) {
    if (length == 0 || length > limit) return VB_FAILURE(kOutOfRange);
    const auto bytes = channel::callerBytes(call, addressOffset, length);
    if (bytes.empty()) return VB_FAILURE(kOutOfRange);
    frame.data.assign(bytes.begin(), bytes.end());
    return 0;
}

// ---- Requests ---------------------------------------------------------------

uint32_t senderInit(Call &call) {
    HdlcChannel &channel = channelOf(call);
    for (uint32_t i = 0; i < channel.senderSettings.size(); ++i)
        channel.senderSettings[i] = call.in.u32(hdlc::SenderInit::kParam1 + 4 * i);
    channel.senderReady = true;
    return 0;
}

uint32_t receiverInit(Call &call) {
    HdlcChannel &channel = channelOf(call);
    for (uint32_t i = 0; i < channel.receiverSettings.size(); ++i)
        channel.receiverSettings[i] = call.in.u32(hdlc::ReceiverInit::kParam1 + 4 * i);
    channel.receiverReady = true;
    channel.queue.clear();
    channel.lastSs7 = {};
    return 0;
}

uint32_t sendData(Call &call) {
    using Wire = hdlc::SendData;
    if (const uint32_t refused = senderRefusal(call)) return refused;
    Frame frame;
    if (const uint32_t refused = takeFrame(call, call.in.u32(Wire::kLength), kFrameLimit, Wire::kData, frame))
        return refused;
    loopBack(call.board, *call.object, std::move(frame));
    return 0;
}

uint32_t ss7SendData(Call &call) {
    using Wire = hdlc::Ss7SendData;
    if (const uint32_t refused = senderRefusal(call)) return refused;
    Frame frame;
    if (const uint32_t refused = takeFrame(call, call.in.u32(Wire::kLength), kFrameLimit, Wire::kData, frame))
        return refused;
    const auto ss7 = call.in.bytes(Wire::kSs7, kSs7Bytes);  // inside the request
    std::copy(ss7.begin(), ss7.end(), frame.ss7.begin());
    frame.hasSs7 = true;
    loopBack(call.board, *call.object, std::move(frame));
    return 0;
}

// Reply: the frame's length, the frames still queued, the frames dropped,
// its time of arrival.
uint32_t readData(Call &call) {
    using Wire = hdlc::ReadData;
    if (const uint32_t refused = receiverRefusal(call)) return refused;
    HdlcChannel &channel = channelOf(call);
    call.out.u32(Wire::kReplyDropped, channel.dropped);
    if (channel.queue.empty()) return VB_STATUS(kNothingToRead);
    const Frame &frame = channel.queue.front();
    const auto length = static_cast<uint32_t>(frame.data.size());
    call.out.u32(Wire::kReplyLength, length).u32(Wire::kReplyQueued, static_cast<uint32_t>(channel.queue.size()));
    const auto room = channel::callerBytes(call, Wire::kBuffer, call.in.u32(Wire::kBufferSize));
    if (length > room.size()) return VB_FAILURE(kOutOfRange);
    std::memcpy(room.data(), frame.data.data(), length);
    channel::putTime(call.out, Wire::kReplyTime, frame.time);
    channel.lastSs7 = frame.ss7;
    channel.queue.pop_front();
    call.out.u32(Wire::kReplyQueued, static_cast<uint32_t>(channel.queue.size()));
    return 0;
}

uint32_t ss7ReceiveStatus(Call &call) {
    using Wire = hdlc::Ss7GetReceiveStatus;
    if (const uint32_t refused = receiverRefusal(call)) return refused;
    const HdlcChannel &channel = channelOf(call);
    call.out.u32(Wire::kReplyQueued, static_cast<uint32_t>(channel.queue.size()));
    call.out.u32(Wire::kReplyReceived, channel.received).u32(Wire::kReplyDropped, channel.dropped);
    call.out.write(Wire::kReplySs7, channel.lastSs7.data(), kSs7Bytes);
    return 0;
}

uint32_t ss7SetFilter(Call &call) {
    const uint32_t filter = call.in.u32(hdlc::Ss7SetFilter::kFilter);
    if ((filter & ~kFilterBits) != 0) return VB_FAILURE(kOutOfRange);
    channelOf(call).filter = filter;
    return 0;
}

uint32_t ss7GetFilter(Call &call) {
    call.out.u32(hdlc::Ss7GetFilter::kReplyFilter, channelOf(call).filter);
    return 0;
}

uint32_t startRepeat(Call &call) {
    using Wire = hdlc::StartRepeatData;
    if (const uint32_t refused = senderRefusal(call)) return refused;
    Frame frame;
    if (const uint32_t refused = takeFrame(call, call.in.u32(Wire::kLength), kRepeatLimit, Wire::kData, frame))
        return refused;
    HdlcChannel &channel = channelOf(call);
    channel.repeating = true;
    channel.repeatBlock = frame.data;
    loopBack(call.board, *call.object, std::move(frame));
    return 0;
}

uint32_t stopRepeat(Call &call) {
    HdlcChannel &channel = channelOf(call);
    if (!channel.repeating) return VB_FAILURE(kFailed);
    channel.repeating = false;
    channel.repeatBlock.clear();
    return 0;
}

// The length of queued frame number param1 (0 the next), left queued.
uint32_t readDataEx(Call &call) {
    if (const uint32_t refused = receiverRefusal(call)) return refused;
    const HdlcChannel &channel = channelOf(call);
    const uint32_t index = call.in.u32(hdlc::ReadDataEx::kParam1);
    if (index >= channel.queue.size()) return VB_STATUS(kNothingToRead);
    call.out.u32(hdlc::ReadDataEx::kReplyLength, static_cast<uint32_t>(channel.queue[index].data.size()));
    return 0;
}

uint32_t senderFlush(Call &call) {
    if (const uint32_t refused = senderRefusal(call)) return refused;
    HdlcChannel &channel = channelOf(call);
    channel.repeating = false;
    channel.repeatBlock.clear();
    return 0;
}

constexpr Row kHdlc[] = {
    row<hdlc::SenderInit>(senderInit),
    row<hdlc::ReceiverInit>(receiverInit),
    row<hdlc::SendData>(sendData),
    row<hdlc::ReadData>(readData),
    row<hdlc::Ss7GetReceiveStatus>(ss7ReceiveStatus),
    row<hdlc::Ss7SetFilter>(ss7SetFilter),
    row<hdlc::Ss7GetFilter>(ss7GetFilter),
    row<hdlc::Ss7SendData>(ss7SendData),
    row<hdlc::StartRepeatData>(startRepeat),
    row<hdlc::StopRepeatData>(stopRepeat),
    row<hdlc::ReadDataEx>(readDataEx),
    row<hdlc::SenderFlush>(senderFlush),
};

// ---- Attributes -------------------------------------------------------------

std::vector<uint8_t> framesQueued(Call &, Object &object, uint32_t) {
    return wordValue(static_cast<uint32_t>(channelOf(object).queue.size()));
}

std::vector<uint8_t> crossConnect(Call &, Object &object, uint32_t) {
    return channel::booleanValue(channelOf(object).crossConnect);
}

uint32_t setCrossConnect(Call &, Object &object, std::span<const uint8_t> value) {
    const auto word = wordOf(value);
    if (!word || *word > 1) return VB_FAILURE(kOutOfRange);
    channelOf(object).crossConnect = *word == 1;
    return 0;
}

std::vector<uint8_t> queueCapacity(Call &, Object &, uint32_t) { return wordValue(kQueueCapacity); }

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_HDLC_QUEUED, RYN_VB_VALUE_UINT32, framesQueued, nullptr},
    {RYN_VB_ATTR_HDLC_DROPPED, RYN_VB_VALUE_UINT32, fieldValue<HdlcChannel, &HdlcChannel::dropped>, nullptr},
    {RYN_VB_ATTR_HDLC_SENT, RYN_VB_VALUE_UINT32, fieldValue<HdlcChannel, &HdlcChannel::sent>, nullptr},
    {RYN_VB_ATTR_HDLC_RECEIVED, RYN_VB_VALUE_UINT32, fieldValue<HdlcChannel, &HdlcChannel::received>, nullptr},
    {RYN_VB_ATTR_HDLC_CROSS_CONNECT, RYN_VB_VALUE_BOOLEAN, crossConnect, setCrossConnect},
    {RYN_VB_ATTR_HDLC_QUEUE_CAPACITY, RYN_VB_VALUE_UINT32, queueCapacity, nullptr},
    {RYN_VB_ATTR_HDLC_FILTERED, RYN_VB_VALUE_UINT32, fieldValue<HdlcChannel, &HdlcChannel::filtered>, nullptr},
};

// A repeating sender sends its block again in every frame of the clock.
void repeat(Board &board, Object &object) {
    const HdlcChannel &channel = channelOf(object);
    if (!channel.repeating || !channel.senderReady || channel::disabled(object)) return;
    Frame frame;
    frame.data = channel.repeatBlock;
    loopBack(board, object, std::move(frame));
}

}  // namespace

const Family kHdlcFamily{"HDLC channel", kHdlc, kAttributes, makeState<HdlcChannel>, nullptr, nullptr, nullptr, repeat};

}  // namespace vb
