// Burst channel of the virtual board: burst channel 0 (device type 6). Blocks
// travel by value inside the request (send, preload) and the reply (read).
//
// Send (RynBurstSendData). The block, 0 to 4096 bytes, goes out and comes back
// at once into the channel's one receive buffer (loopback); a block not yet
// read is overwritten and counted (attribute 102). Reply: 8 the bytes sent.
// The channel posts kEventBurstDone, word 5 the bytes sent, word 6 param1.
// A send of 0 bytes sends the preloaded block, which is then used up; with
// nothing preloaded it is refused with error 13 (kFailed). A block of more
// than 4096 bytes is refused with error 9 and nothing is stored (count 0);
// a length field that does not match the data in the request, with error 12.
//
// Preload (RynBurstInitSendBuffer). Stores the block (same limits) in the
// send buffer without sending it; reply 8 the bytes stored. A preload of 0
// bytes empties the send buffer.
//
// Read (RynBurstReadData, RynBurstReadDataEx). Takes the received block: the
// data from reply offset 32, the count at 8, the board time (100-ns units
// since 1601) at which it arrived as the first 8-byte value (12..19) and the
// param1 it was sent with as the second (20..27). With no block waiting it
// answers the status kNothingToRead (bit 31 clear, error 1), count 0. A block
// larger than the capacity is refused with error 9 and kept, count 0 (the
// block's size is attribute 100), so a read with a larger buffer gets it.
// param1 of a read is not used.
//
// A channel disabled with RynDrvDisable refuses the three with error 13.
//
// Attributes (32-bit, read-only): 100 bytes of the block waiting to be read
// (0 for none), 101 blocks sent, 102 blocks overwritten unread, 103 the block
// limit (4096), 104 bytes preloaded.
#include "BurstWire.h"
#include "Channels.h"

namespace vb {
namespace {

using wire::burst::BlockSend;
using wire::burst::ReadData;

constexpr uint32_t kBlockLimit = RYN_VB_BURST_BLOCK_MAX;

struct BurstChannel : ObjectState {
    std::vector<uint8_t> preload;
    bool full = false;  // a received block waits to be read
    std::vector<uint8_t> block;
    uint64_t time = 0;
    uint32_t param1 = 0;
    uint32_t sent = 0, overwritten = 0;
};

BurstChannel &channelOf(Object &object) { return object.as<BurstChannel>(); }

// The block of a send or preload request, checked against its length field.
uint32_t blockOf(Call &call, std::span<const uint8_t> &data) {
    const uint32_t length = call.in.u32(BlockSend::kLength);
    if (length != call.in.length() - BlockSend::kData) return VB_FAILURE(kLengthMismatch);
    if (length > kBlockLimit) return VB_FAILURE(kOutOfRange);
    data = call.in.bytes(BlockSend::kData, length);
    return 0;
}

uint32_t sendData(Call &call) {
    if (channel::disabled(*call.object)) return VB_FAILURE(kFailed);
    std::span<const uint8_t> data;
    if (const uint32_t refused = blockOf(call, data)) return refused;
    BurstChannel &channel = channelOf(*call.object);
    if (data.empty()) {
        if (channel.preload.empty()) return VB_FAILURE(kFailed);
        channel.block = std::move(channel.preload);
        channel.preload.clear();
    } else {
        channel.block.assign(data.begin(), data.end());
    }
    if (channel.full) ++channel.overwritten;
    channel.full = true;
    channel.time = call.board.now();
    channel.param1 = call.in.u32(BlockSend::kParam1);
    ++channel.sent;
    const auto count = static_cast<uint32_t>(channel.block.size());
    call.out.u32(BlockSend::kReplyCount, count);
    call.board.post(*call.object, kEventBurstDone, count, channel.param1);
    return 0;
}

uint32_t initSendBuffer(Call &call) {
    if (channel::disabled(*call.object)) return VB_FAILURE(kFailed);
    std::span<const uint8_t> data;
    if (const uint32_t refused = blockOf(call, data)) return refused;
    channelOf(*call.object).preload.assign(data.begin(), data.end());
    call.out.u32(BlockSend::kReplyCount, static_cast<uint32_t>(data.size()));
    return 0;
}

// The reply block holds the fixed part and the capacity after it.
uint32_t readData(Call &call) {
    if (channel::disabled(*call.object)) return VB_FAILURE(kFailed);
    const uint32_t capacity = call.in.u32(ReadData::kCapacity);
    if (uint64_t{capacity} + ReadData::kReplyData > call.out.length()) return VB_FAILURE(kLengthMismatch);
    BurstChannel &channel = channelOf(*call.object);
    if (!channel.full) return VB_STATUS(kNothingToRead);
    const auto count = static_cast<uint32_t>(channel.block.size());
    if (count > capacity) return VB_FAILURE(kOutOfRange);
    const uint64_t param1 = channel.param1;
    call.out.u32(ReadData::kReplyCount, count);
    call.out.write(ReadData::kReplyValue1, &channel.time, ReadData::kValueBytes);
    call.out.write(ReadData::kReplyValue2, &param1, ReadData::kValueBytes);
    call.out.write(ReadData::kReplyData, channel.block.data(), count);
    call.replyLength = ReadData::kReplyData + count;
    channel.full = false;
    channel.block.clear();
    return 0;
}

// The sends carry their data after the fixed part: their length is the
// least a request may have.
constexpr Row kBurst[] = {
    row<wire::burst::SendData>(sendData, true),
    row<ReadData>(readData),
    row<wire::burst::InitSendBuffer>(initSendBuffer, true),
};

std::vector<uint8_t> waiting(Call &, Object &object, uint32_t) {
    const BurstChannel &channel = channelOf(object);
    return wordValue(channel.full ? static_cast<uint32_t>(channel.block.size()) : 0u);
}

std::vector<uint8_t> limit(Call &, Object &, uint32_t) { return wordValue(kBlockLimit); }

std::vector<uint8_t> preloaded(Call &, Object &object, uint32_t) {
    return wordValue(static_cast<uint32_t>(channelOf(object).preload.size()));
}

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_BURST_WAITING, RYN_VB_VALUE_UINT32, waiting, nullptr},
    {RYN_VB_ATTR_BURST_SENT, RYN_VB_VALUE_UINT32, fieldValue<BurstChannel, &BurstChannel::sent>, nullptr},
    {RYN_VB_ATTR_BURST_OVERWRITTEN, RYN_VB_VALUE_UINT32, fieldValue<BurstChannel, &BurstChannel::overwritten>, nullptr},
    {RYN_VB_ATTR_BURST_LIMIT, RYN_VB_VALUE_UINT32, limit, nullptr},
    {RYN_VB_ATTR_BURST_PRELOADED, RYN_VB_VALUE_UINT32, preloaded, nullptr},
};

}  // namespace

const Family kBurstFamily{"Burst channel", kBurst, kAttributes, makeState<BurstChannel>};

}  // namespace vb
