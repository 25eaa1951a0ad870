// Raw-data channel: an unframed byte stream. Data travel by address: the
// request names the caller's buffer and the driver reads from it or writes
// into it while the call runs; the library copies no data.
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
    Request<30, 12> request(0x99A);
    request.put<16>(handle).put<20>(param1).put8<24>(param2).put<26>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynRawDataReceiverInit, 20)(DeviceHandle handle, uint32_t param1, uint8_t param2,
                                                     uint32_t param3, uint32_t param4) {
    Request<34, 12> request(0x99B);
    request.put<16>(handle).put<20>(param1).put8<24>(param2).put<26>(param3).put<30>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynRawDataSendData, 20)(DeviceHandle handle, const void *data, uint32_t length,
                                                 uint32_t param3, uint32_t param4) {
    if (length >= kSendLimit) return RYN_FAILURE(kErrRange);
    Request<36, 12> request(0x99C);
    request.put<16>(handle).put<20>(length).put<24>(param3).put<28>(param4).putAddress<32>(data, length);
    return request.send();
}

// The received length is the driver's, stored as given; the out values are
// stored whatever the result (after a failure they mean nothing).
ResultCode RYN_DECORATED(RynRawDataReadData, 20)(DeviceHandle handle, void *buffer, uint32_t bufferSize,
                                                 uint32_t *length, uint32_t *param4) {
    Request<28, 20> request(0x99D);
    request.put<16>(handle).put<20>(bufferSize).putAddress<24>(buffer, bufferSize);
    const ResultCode result = request.send();
    if (length != nullptr) *length = request.get<8>();
    if (param4 != nullptr) *param4 = request.get<12>();
    return result;
}

ResultCode RYN_DECORATED(RynRawDataSenderFlush, 4)(DeviceHandle handle) { return sendHandleOnly(0x9A0, handle); }

// As the plain set-up, with a second setting before the 8-bit one.
ResultCode RYN_DECORATED(RynRawDataSenderInitEx, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                     uint8_t param3, uint32_t param4) {
    Request<34, 12> request(0x9A1);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put8<28>(param3).put<30>(param4);
    return request.send();
}

// Idle patterns are declared but not carried out: nothing is sent.
ResultCode RYN_DECORATED(RynRawDataStartIdlePattern, 12)(DeviceHandle, uint32_t, uint32_t) {
    return RYN_FAILURE(kErrNotProvided);
}

ResultCode RYN_DECORATED(RynRawDataStopIdlePattern, 4)(DeviceHandle) { return RYN_FAILURE(kErrNotProvided); }

}  // extern "C"
