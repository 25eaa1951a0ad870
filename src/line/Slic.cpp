// SLIC phone interfaces: tones, ringing, hook state, audio, disconnect and
// caller identification. This family raises bare codes: bit 31 and the error
// number, no module or line.
#include <cstdio>
#include <cstring>

#include "SlicWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

namespace slic = wire::slic;

constexpr ResultCode kBareRange = 0x80000009;    // a name or number of the wrong length
constexpr ResultCode kBareBadData = 0x80000005;  // no local time for the driver's clock
constexpr ResultCode kBareNullPointer = 0x8000000A;

constexpr uint32_t kRingPauseMs = 200;
constexpr uint64_t kUnixEpochIn100ns = 116444736000000000ull;

// Sends a request that carries a value reply and stores the value through
// `status` (when given) whatever the result.
template <typename Wire>
ResultCode sendForStatus(RequestOf<Wire> &request, uint32_t *status) {
    const ResultCode result = request.send();
    if (status != nullptr) *status = request.template get<Wire::kReplyStatus>();
    return result;
}

template <typename Wire>
ResultCode readValue(DeviceHandle handle, uint32_t *value) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    return sendForStatus(request, value);
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynSlicSetResetPin, 8)(DeviceHandle handle, uint32_t state) {
    using Wire = slic::SetResetPin;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kState>(state);
    return request.send();
}

ResultCode RYN_DECORATED(RynSlicEnableDialTone, 4)(DeviceHandle handle) {
    return sendHandleOnly<slic::EnableDialTone>(handle);
}

ResultCode RYN_DECORATED(RynSlicEnableBusyTone, 4)(DeviceHandle handle) {
    return sendHandleOnly<slic::EnableBusyTone>(handle);
}

ResultCode RYN_DECORATED(RynSlicEnableReorderTone, 4)(DeviceHandle handle) {
    return sendHandleOnly<slic::EnableReorderTone>(handle);
}

ResultCode RYN_DECORATED(RynSlicEnableCongestionTone, 4)(DeviceHandle handle) {
    return sendHandleOnly<slic::EnableCongestionTone>(handle);
}

ResultCode RYN_DECORATED(RynSlicEnableRingBackTone, 4)(DeviceHandle handle) {
    return sendHandleOnly<slic::EnableRingBackTone>(handle);
}

ResultCode RYN_DECORATED(RynSlicGetHookState, 8)(DeviceHandle handle, uint32_t *state) {
    return readValue<slic::GetHookState>(handle, state);
}

ResultCode RYN_DECORATED(RynSlicStartRingState, 8)(DeviceHandle handle, uint32_t *status) {
    // The line gets its pause before every ring, whatever its state.
    RYN_DECORATED(OsaThreadSleep, 4)(kRingPauseMs);
    return readValue<slic::StartRingState>(handle, status);
}

ResultCode RYN_DECORATED(RynSlicStopRingState, 8)(DeviceHandle handle, uint32_t *status) {
    return readValue<slic::StopRingState>(handle, status);
}

ResultCode RYN_DECORATED(RynSlicEnableAudio, 8)(DeviceHandle handle, uint32_t *status) {
    return readValue<slic::EnableAudio>(handle, status);
}

ResultCode RYN_DECORATED(RynSlicSignalDisconnectState, 12)(DeviceHandle handle, uint32_t param1, uint32_t *status) {
    using Wire = slic::SignalDisconnectState;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1);
    return sendForStatus(request, status);
}

ResultCode RYN_DECORATED(RynSlicSetUserName, 12)(DeviceHandle handle, const char *name, uint32_t *status) {
    if (name == nullptr) return kBareNullPointer;
    using Wire = slic::SetUserName;
    if (strnlen(name, Wire::kNameLength + 1) > Wire::kNameLength) return kBareRange;
    // A shorter name goes with its NUL, one of 15 characters without; byte
    // 35 ends the field either way.
    const size_t length = std::strlen(name);
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putBytes<Wire::kName, Wire::kNameLength>(name,
                                                                                static_cast<uint32_t>(length + 1));
    request.put8<Wire::kNameEnd>(0);
    return sendForStatus(request, status);
}

ResultCode RYN_DECORATED(RynSlicSetPhoneNumber, 12)(DeviceHandle handle, const char *number, uint32_t *status) {
    if (number == nullptr) return kBareNullPointer;
    using Wire = slic::SetPhoneNumber;
    if (strnlen(number, Wire::kNumberLength + 1) != Wire::kNumberLength) return kBareRange;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putBytes<Wire::kNumber, Wire::kNumberLength>(number, Wire::kNumberLength);
    request.put8<Wire::kNumberEnd>(0);
    return sendForStatus(request, status);
}

// The date and time of the call, MMDDhhmm in local time, from the driver's
// clock (100-ns intervals since 1601).
ResultCode RYN_DECORATED(RynSlicSendCallerID, 8)(DeviceHandle handle, uint32_t *status) {
    uint64_t now = 0;
    const ResultCode clock = RYN_DECORATED(RynDrvGetCurrentTime, 4)(&now);
    if (isFailure(clock)) {
        if (status != nullptr) *status = 0;
        return clock;
    }
    const uint64_t seconds = (now - kUnixEpochIn100ns) / 10000000u;
    const auto calendar = static_cast<int32_t>(static_cast<uint32_t>(seconds));
    const struct tm *local = RYN_DECORATED(OsaStdLocalTime, 4)(&calendar);
    if (local == nullptr) {
        if (status != nullptr) *status = 0;
        return kBareBadData;
    }
    // Two decimal digits each; the fields of a local time are never negative.
    const auto twoDigits = [](int field) { return static_cast<unsigned>(field) % 100u; };
    using Wire = slic::SendCallerId;
    char stamp[Wire::kStampLength + 1] = {};
    std::snprintf(stamp, sizeof stamp, "%02u%02u%02u%02u", twoDigits(local->tm_mon + 1), twoDigits(local->tm_mday),
                  twoDigits(local->tm_hour), twoDigits(local->tm_min));
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putBytes<Wire::kStamp, Wire::kStampLength>(stamp, Wire::kStampLength);
    request.put8<Wire::kStampEnd>(0);
    return sendForStatus(request, status);
}

}  // extern "C"
