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

#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kHdlc;
constexpr uint32_t kFrameLimit = 8192;  // a frame is shorter than this
constexpr uint32_t kRepeatLimit = 10;   // a repeated block is shorter than this
constexpr uint32_t kSs7HeaderBytes = 3;

template <typename T>
void storeOut(T *out, T value) {
    if (out != nullptr) *out = value;
}

// Frame send and repeat start: length, two settings, then the data's address.
ResultCode sendFrame(uint32_t function, DeviceHandle handle, const void *data, uint32_t length, uint32_t param3,
                     uint32_t param4) {
    Request<36, 12> request(function);
    request.put<16>(handle).put<20>(length).put<24>(param3).put<28>(param4).putAddress<32>(data, length);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynHdlcSenderInit, 28)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                                uint32_t param4, uint32_t param5, uint32_t param6) {
    Request<44, 12> request(0x99A);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    request.put<32>(param4).put<36>(param5).put<40>(param6);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcReceiverInit, 32)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                  uint32_t param3, uint32_t param4, uint32_t param5, uint32_t param6,
                                                  uint32_t param7) {
    Request<48, 12> request(0x99B);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    request.put<32>(param4).put<36>(param5).put<40>(param6).put<44>(param7);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcSendData, 20)(DeviceHandle handle, const void *data, uint32_t length, uint32_t param3,
                                              uint32_t param4) {
    if (length >= kFrameLimit) return RYN_FAILURE(kErrRange);
    return sendFrame(0x99C, handle, data, length, param3, param4);
}

// The received length is the driver's, stored as given (not compared with
// bufferSize). param6 is the reply's 8 bytes as they stand.
ResultCode RYN_DECORATED(RynHdlcReadData, 28)(DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length,
                                              uint32_t *param4, uint32_t *param5, uint64_t *param6) {
    Request<28, 32> request(0x99D);
    request.put<16>(handle).put<20>(bufferSize).putAddress<24>(buffer, bufferSize);
    const ResultCode result = request.send();
    storeOut(length, request.get<8>());
    storeOut(param4, request.get<12>());
    storeOut(param5, request.get<16>());
    if (param6 != nullptr) std::memcpy(param6, request.replyBytes<20, 8>(), 8);
    return result;
}

// The reply: three values at 8, 12 and 16, the 3-byte SS7 field at 20..22,
// a pad byte and the result at 24.
ResultCode RYN_DECORATED(RynHdlcSS7GetReceiveStatus, 20)(DeviceHandle handle, uint32_t *param1, uint32_t *param2,
                                                         uint32_t *param3, uint8_t *ss7Header) {
    Request<20, 28> request(0x9A0);
    request.put<16>(handle);
    const ResultCode result = request.send();
    storeOut(param1, request.get<8>());
    storeOut(param2, request.get<12>());
    storeOut(param3, request.get<16>());
    if (ss7Header != nullptr) std::memcpy(ss7Header, request.replyBytes<20, kSs7HeaderBytes>(), kSs7HeaderBytes);
    return result;
}

ResultCode RYN_DECORATED(RynHdlcSS7SetFilter, 8)(DeviceHandle handle, uint32_t filter) {
    Request<24, 12> request(0x9A1);
    request.put<16>(handle).put<20>(filter);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcSS7GetFilter, 8)(DeviceHandle handle, uint32_t *filter) {
    Request<20, 16> request(0x9A2);
    request.put<16>(handle);
    const ResultCode result = request.send();
    storeOut(filter, request.get<8>());
    return result;
}

// The 3 header bytes are the only caller bytes copied into a request; byte
// 27 stays unset.
ResultCode RYN_DECORATED(RynHdlcSS7SendData, 24)(DeviceHandle handle, const void *data, uint32_t length,
                                                 const uint8_t *ss7Header, uint32_t param4, uint32_t param5) {
    if (length >= kFrameLimit) return RYN_FAILURE(kErrRange);
    if (ss7Header == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<40, 12> request(0x9A3);
    request.put<16>(handle).put<20>(length).putBytes<24, kSs7HeaderBytes>(ss7Header, kSs7HeaderBytes);
    request.put<28>(param4).put<32>(param5).putAddress<36>(data, length);
    return request.send();
}

ResultCode RYN_DECORATED(RynHdlcStartRepeatData, 20)(DeviceHandle handle, const void *data, uint32_t length,
                                                     uint32_t param3, uint32_t param4) {
    if (length >= kRepeatLimit) return RYN_FAILURE(kErrRange);
    return sendFrame(0x9A4, handle, data, length, param3, param4);
}

ResultCode RYN_DECORATED(RynHdlcStopRepeatData, 4)(DeviceHandle handle) { return sendHandleOnly(0x9A5, handle); }

// The four values are the driver's and go in argument order, none of them
// taken as an address; the value at reply offset 8 is returned as length.
ResultCode RYN_DECORATED(RynHdlcReadDataEx, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                                uint32_t param4, uint32_t *length) {
    Request<36, 16> request(0x9A6);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3).put<32>(param4);
    const ResultCode result = request.send();
    storeOut(length, request.get<8>());
    return result;
}

ResultCode RYN_DECORATED(RynHdlcSenderFlush, 4)(DeviceHandle handle) { return sendHandleOnly(0x9A7, handle); }

}  // extern "C"
