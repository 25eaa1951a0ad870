// POTS line interfaces: hook control, pulse dialling, line-interface mode.
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kPots;
constexpr uint32_t kDigitArea = 128;  // of which 127 digits may be dialled

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynPotsOffHook, 4)(DeviceHandle handle) { return sendHandleOnly(0x99A, handle); }

ResultCode RYN_DECORATED(RynPotsOnHook, 4)(DeviceHandle handle) { return sendHandleOnly(0x99B, handle); }

ResultCode RYN_DECORATED(RynPotsHookFlash, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3) {
    Request<32, 12> request(0x99C);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsPulseDial, 32)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                               const uint8_t *digits, uint32_t digitCount, uint32_t param6,
                                               uint32_t param7) {
    if (digitCount >= kDigitArea) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount != 0) return RYN_FAILURE(kErrNullPointer);
    Request<172, 12> request(0x99D);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    request.putBytes<32, kDigitArea>(digits, digitCount).put<160>(digitCount).put<164>(param6).put<168>(param7);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsSetLiMode, 8)(DeviceHandle handle, uint32_t mode) {
    Request<24, 12> request(0x99E);
    request.put<16>(handle).put<20>(mode);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsGetLiMode, 8)(DeviceHandle handle, uint32_t *mode) {
    Request<20, 16> request(0x99F);
    request.put<16>(handle);
    const ResultCode result = request.send();
    if (mode != nullptr) *mode = request.get<8>();
    return result;
}

}  // extern "C"
