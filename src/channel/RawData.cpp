// Raw-data channel: an unframed byte stream. Data travel by address: the
// request names the caller's buffer and the driver reads from it or writes
// into it while the call runs; the library copies no data.
#include "RawDataWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kRawData;
constexpr uint32_t kSendLimit = 8192;  // a send block is shorter than this

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynRawDataSenderInit, 16)(DeviceHandle handle, uint32_t param1, uint8_t param2,
                                                   uint32_t param3) {
    using Wire = wire::raw_data::SenderInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put8<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynRawDataReceiverInit, 20)(DeviceHandle handle, uint32_t param1, uint8_t param2,
                                                     uint32_t param3, uint32_t param4) {
    using Wire = wire::raw_data::ReceiverInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put8<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynRawDataSendData, 20)(DeviceHandle handle, const void *data, uint32_t length,
                                                 uint32_t param3, uint32_t param4) {
    if (length >= kSendLimit) return RYN_FAILURE(kErrRange);
    using Wire = wire::raw_data::SendData;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kLength>(length).put<Wire::kParam3>(param3);
    request.put<Wire::kParam4>(param4).putAddress<Wire::kData>(data, length);
    return request.send();
}

// The received length is the driver's, stored as given; the out values are
// stored whatever the result (after a failure they mean nothing).
ResultCode RYN_DECORATED(RynRawDataReadData, 20)(DeviceHandle handle, void *buffer, uint32_t bufferSize,
                                                 uint32_t *length, uint32_t *param4) {
    using Wire = wire::raw_data::ReadData;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kBufferSize>(bufferSize).putAddress<Wire::kBuffer>(buffer, bufferSize);
    const ResultCode result = request.send();
    if (length != nullptr) *length = request.get<Wire::kReplyLength>();
    if (param4 != nullptr) *param4 = request.get<Wire::kReplyWaiting>();
    return result;
}

ResultCode RYN_DECORATED(RynRawDataSenderFlush, 4)(DeviceHandle handle) {
    RequestOf<wire::raw_data::SenderFlush> request;
    request.put<wire::kHandle>(handle);
    return request.send();
}

// As the plain set-up, with a second setting before the 8-bit one.
ResultCode RYN_DECORATED(RynRawDataSenderInitEx, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                     uint8_t param3, uint32_t param4) {
    using Wire = wire::raw_data::SenderInitEx;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put8<Wire::kParam3>(param3).put<Wire::kParam4>(param4);
    return request.send();
}

// Idle patterns are declared but not carried out: nothing is sent.
ResultCode RYN_DECORATED(RynRawDataStartIdlePattern, 12)(DeviceHandle, uint32_t, uint32_t) {
    return RYN_FAILURE(kErrNotProvided);
}

ResultCode RYN_DECORATED(RynRawDataStopIdlePattern, 4)(DeviceHandle) { return RYN_FAILURE(kErrNotProvided); }

}  // extern "C"
