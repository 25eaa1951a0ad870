// POTS line interfaces: hook control, pulse dialling, line-interface mode.
#include "PotsWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

namespace pots = wire::pots;

constexpr uint8_t kSourceId = source::kPots;

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynPotsOffHook, 4)(DeviceHandle handle) { return sendHandleOnly<pots::OffHook>(handle); }

ResultCode RYN_DECORATED(RynPotsOnHook, 4)(DeviceHandle handle) { return sendHandleOnly<pots::OnHook>(handle); }

ResultCode RYN_DECORATED(RynPotsHookFlash, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3) {
    using Wire = pots::HookFlash;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsPulseDial, 32)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3,
                                               const uint8_t *digits, uint32_t digitCount, uint32_t param6,
                                               uint32_t param7) {
    // The digit area holds one more than may be dialled.
    using Wire = pots::PulseDial;
    if (digitCount >= Wire::kDigitsSize) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount != 0) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).putBytes<Wire::kDigits, Wire::kDigitsSize>(digits, digitCount);
    request.put<Wire::kDigitCount>(digitCount).put<Wire::kParam6>(param6).put<Wire::kParam7>(param7);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsSetLiMode, 8)(DeviceHandle handle, uint32_t mode) {
    using Wire = pots::SetLiMode;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kMode>(mode);
    return request.send();
}

ResultCode RYN_DECORATED(RynPotsGetLiMode, 8)(DeviceHandle handle, uint32_t *mode) {
    using Wire = pots::GetLiMode;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    if (mode != nullptr) *mode = request.get<Wire::kReplyMode>();
    return result;
}

}  // extern "C"
