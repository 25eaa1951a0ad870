// Burst channel: blocks that travel inside the request and the reply
// themselves. Each call allocates one heap block sized for the fixed fields
// plus the data, copies the data once (into the request, or out of the
// reply) and releases the block before it returns.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "BurstWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kBurst;

using wire::burst::ReadData;

// The ResultCode of a read: the last word of the reply's fixed part.
constexpr uint32_t kReadResult = ReadData::kReply - 4;

struct FreeBlock {
    void operator()(uint8_t *block) const { std::free(block); }
};
using Block = std::unique_ptr<uint8_t[], FreeBlock>;

// A block of `length` bytes, or null when the memory cannot be had. A reply
// block starts zero-filled, so that no byte the driver did not write can
// reach the caller; a request block is left as it comes, since everything
// past its header is written before it is sent.
Block allocateReply(uint32_t length) { return Block(static_cast<uint8_t *>(std::calloc(1, length))); }
Block allocateRequest(uint32_t length) { return Block(static_cast<uint8_t *>(std::malloc(length))); }

// Sending and preloading the send buffer differ only in the function.
template <typename Wire>
ResultCode sendBlock(DeviceHandle handle, uint32_t param1, const void *data, uint32_t *length) {
    if (data == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (length == nullptr) return RYN_FAILURE(kErrNullPointer);
    const uint32_t dataLength = *length;
    // The block length must fit 32 bits with the fixed fields.
    if (dataLength > UINT32_MAX - Wire::kData) return RYN_FAILURE(kErrRange);
    const uint32_t requestLength = dataLength + Wire::kData;
    Block request = allocateRequest(requestLength);
    if (request == nullptr) return RYN_FAILURE(kErrNoTransferMemory);
    std::memset(request.get(), 0, wire::kHeader);  // the reserved header
    store32(request.get() + wire::kHandle, handle);
    store32(request.get() + Wire::kParam1, param1);
    store32(request.get() + Wire::kLength, dataLength);
    std::memcpy(request.get() + Wire::kData, data, dataLength);

    uint8_t reply[Wire::kReply] = {};
    const ResultCode result = exchange(Wire::kFunction, {request.get(), requestLength}, reply, Wire::kReply - 4);
    *length = load32(reply + Wire::kReplyCount);
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

// `length` holds the number of bytes to send, then the driver's count.
ResultCode RYN_DECORATED(RynBurstSendData, 16)(DeviceHandle handle, uint32_t param1, const void *data,
                                               uint32_t *length) {
    return sendBlock<wire::burst::SendData>(handle, param1, data, length);
}

ResultCode RYN_DECORATED(RynBurstInitSendBuffer, 16)(DeviceHandle handle, uint32_t param1, const void *data,
                                                     uint32_t *length) {
    return sendBlock<wire::burst::InitSendBuffer>(handle, param1, data, length);
}

// `length` holds the capacity of `buffer`, then the number of bytes received.
ResultCode RYN_DECORATED(RynBurstReadDataEx, 24)(DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length,
                                                 uint64_t *param5, uint64_t *param6) {
    if (buffer == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (length == nullptr) return RYN_FAILURE(kErrNullPointer);
    const uint32_t capacity = *length;
    if (capacity > UINT32_MAX - ReadData::kReplyData) return RYN_FAILURE(kErrRange);
    const uint32_t replyLength = capacity + ReadData::kReplyData;
    Block reply = allocateReply(replyLength);
    if (reply == nullptr) return RYN_FAILURE(kErrNoTransferMemory);

    uint8_t request[ReadData::kRequest] = {};
    store32(request + wire::kHandle, handle);
    store32(request + ReadData::kParam1, param1);
    store32(request + ReadData::kCapacity, capacity);
    bool answered = false;
    const ResultCode result = exchange(ReadData::kFunction, request, {reply.get(), replyLength}, kReadResult,
                                       kStandardTransport, {}, &answered);
    // Without an answer the reply holds nothing: no data and no values,
    // whatever a failing driver may have left in the block.
    if (!answered) std::memset(reply.get() + ReadData::kReplyCount, 0, kReadResult - ReadData::kReplyCount);

    // The count is checked against the capacity before any byte is copied.
    const uint32_t count = load32(reply.get() + ReadData::kReplyCount);
    if (count > capacity) return RYN_FAILURE(kErrBadData);
    std::memcpy(buffer, reply.get() + ReadData::kReplyData, count);
    *length = count;
    if (param5 != nullptr) std::memcpy(param5, reply.get() + ReadData::kReplyValue1, ReadData::kValueBytes);
    if (param6 != nullptr) std::memcpy(param6, reply.get() + ReadData::kReplyValue2, ReadData::kValueBytes);
    return result;
}

ResultCode RYN_DECORATED(RynBurstReadData, 16)(DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length) {
    return RYN_DECORATED(RynBurstReadDataEx, 24)(handle, param1, buffer, length, nullptr, nullptr);
}

ResultCode RYN_DECORATED(RynBurstReceiveData, 16)(DeviceHandle handle, uint32_t param1, void *buffer,
                                                  uint32_t *length) {
    return RYN_DECORATED(RynBurstReadData, 16)(handle, param1, buffer, length);
}

}  // extern "C"
