// HDLC and SS7 channels: sender and receiver set-up, frame sending and
// reading, and the SS7 additions (a 3-byte field beside the data, receive
// status, receive filter, repeated sending of a short block).
//
// Frame data travel by address: the request names the caller's buffer and
// the driver reads from it or writes into it while the call runs; the
// library copies no frame data. The send requests put the length first and
// the address last, although the caller passes the address first.
//
// Out pointers are not refused: a null one is skipped rather than written
// through. Out values are stored whatever the result; after a failure they
// mean nothing. The SS7 header to send is read by the library itself, so a
// null one is refused before anything is sent.
#include <cstring>

#include "HdlcWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kHdlc;
constexpr uint32_t kFrameLimit = 8192;  // a frame is shorter than this
constexpr uint32_t kRepeatLimit = 10;   // a repeated block is shorter than this
using wire::hdlc::kSs7Bytes;

template <typename T>
void storeOut(T *out, T value) {
    if (out != nullptr) *out = value;
}

// Frame send and repeat start: length, two settings, then the data's address.
template <typename Wire>
ResultCode sendFrame(DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kLength>(length).template put<Wire::kParam3>(param3);
    request.template put<Wire::kParam4>(param4).template putAddress<Wire::kData>(data, length);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynHdlcSenderInit, 28)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                                uint32_t param4, uint32_t param5, uint32_t param6) {
    using Wire = wire::hdlc::SenderInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2).put<Wire::kParam3>(param3);
    request.put<Wire::kParam4>(param4).put<Wire::kParam5>(param5).put<Wire::kParam6>(param6);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcReceiverInit, 32)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                  uint32_t param3, uint32_t param4, uint32_t param5, uint32_t param6,
                                                  uint32_t param7) {
    using Wire = wire::hdlc::ReceiverInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2).put<Wire::kParam3>(param3);
    request.put<Wire::kParam4>(param4).put<Wire::kParam5>(param5).put<Wire::kParam6>(param6);
    request.put<Wire::kParam7>(param7);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcSendData, 20)(DeviceHandle handle, const void *data, uint32_t length, uint32_t param3,
                                              uint32_t param4) {
    if (length >= kFrameLimit) return RYN_FAILURE(kErrRange);
    return sendFrame<wire::hdlc::SendData>(handle, data, length, param3, param4);
}

// The received length is the driver's, stored as given (not compared with
// bufferSize). param6 is the reply's 8 bytes as they stand.
ResultCode RYN_DECORATED(RynHdlcReadData, 28)(DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length,
                                              uint32_t *param4, uint32_t *param5, uint64_t *param6) {
    using Wire = wire::hdlc::ReadData;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kBufferSize>(bufferSize).putAddress<Wire::kBuffer>(buffer, bufferSize);
    const ResultCode result = request.send();
    storeOut(length, request.get<Wire::kReplyLength>());
    storeOut(param4, request.get<Wire::kReplyQueued>());
    storeOut(param5, request.get<Wire::kReplyDropped>());
    if (param6 != nullptr)
        std::memcpy(param6, request.replyBytes<Wire::kReplyTime, Wire::kTimeBytes>(), Wire::kTimeBytes);
    return result;
}

// The reply: three values at 8, 12 and 16, the 3-byte SS7 field at 20..22,
// a pad byte and the result at 24.
ResultCode RYN_DECORATED(RynHdlcSS7GetReceiveStatus, 20)(DeviceHandle handle, uint32_t *param1, uint32_t *param2,
                                                         uint32_t *param3, uint8_t *ss7Header) {
    using Wire = wire::hdlc::Ss7GetReceiveStatus;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    storeOut(param1, request.get<Wire::kReplyQueued>());
    storeOut(param2, request.get<Wire::kReplyReceived>());
    storeOut(param3, request.get<Wire::kReplyDropped>());
    if (ss7Header != nullptr) std::memcpy(ss7Header, request.replyBytes<Wire::kReplySs7, kSs7Bytes>(), kSs7Bytes);
    return result;
}

ResultCode RYN_DECORATED(RynHdlcSS7SetFilter, 8)(DeviceHandle handle, uint32_t filter) {
    using Wire = wire::hdlc::Ss7SetFilter;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kFilter>(filter);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcSS7GetFilter, 8)(DeviceHandle handle, uint32_t *filter) {
    using Wire = wire::hdlc::Ss7GetFilter;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    storeOut(filter, request.get<Wire::kReplyFilter>());
    return result;
}

// The 3 header bytes are the only caller bytes copied into a request; byte
// 27 stays unset.
ResultCode RYN_DECORATED(RynHdlcSS7SendData, 24)(DeviceHandle handle, const void *data, uint32_t length,
                                                 const uint8_t *ss7Header, uint32_t param4, uint32_t param5) {
    if (length >= kFrameLimit) return RYN_FAILURE(kErrRange);
    if (ss7Header == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = wire::hdlc::Ss7SendData;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kLength>(length).putBytes<Wire::kSs7, kSs7Bytes>(ss7Header, kSs7Bytes);
    request.put<Wire::kParam4>(param4).put<Wire::kParam5>(param5).putAddress<Wire::kData>(data, length);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcStartRepeatData, 20)(DeviceHandle handle, const void *data, uint32_t length,
                                                     uint32_t param3, uint32_t param4) {
    if (length >= kRepeatLimit) return RYN_FAILURE(kErrRange);
    return sendFrame<wire::hdlc::StartRepeatData>(handle, data, length, param3, param4);
}

ResultCode RYN_DECORATED(RynHdlcStopRepeatData, 4)(DeviceHandle handle) {
    return sendHandleOnly<wire::hdlc::StopRepeatData>(handle);
}

// The four values are the driver's and go in argument order, none of them
// taken as an address; the value at reply offset 8 is returned as length.
ResultCode RYN_DECORATED(RynHdlcReadDataEx, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                                uint32_t param4, uint32_t *length) {
    using Wire = wire::hdlc::ReadDataEx;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4);
    const ResultCode result = request.send();
    storeOut(length, request.get<Wire::kReplyLength>());
    return result;
}

ResultCode RYN_DECORATED(RynHdlcSenderFlush, 4)(DeviceHandle handle) {
    return sendHandleOnly<wire::hdlc::SenderFlush>(handle);
}

}  // extern "C"
