// SLIC phone interfaces: tones, ringing, hook state, audio, disconnect and
// caller identification. This family raises bare codes: bit 31 and the error
// number, no module or line.
#include <cstdio>
#include <cstring>

#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr ResultCode kBareRange = 0x80000009;    // a name or number of the wrong length
constexpr ResultCode kBareBadData = 0x80000005;  // no local time for the driver's clock
constexpr ResultCode kBareNullPointer = 0x8000000A;

constexpr uint32_t kRingPauseMs = 200;
constexpr size_t kNameLength = 15;    // in a 16-byte field
constexpr size_t kNumberLength = 10;  // in an 11-byte field
constexpr size_t kStampLength = 8;    // MMDDhhmm in a 9-byte field
constexpr uint64_t kUnixEpochIn100ns = 116444736000000000ull;

// Sends a request that carries a value reply and stores the value through
// `status` (when given) whatever the result.
template <uint32_t Length>
ResultCode sendForStatus(Request<Length, 16> &request, uint32_t *status) {
    const ResultCode result = request.send();
    if (status != nullptr) *status = request.template get<8>();
    return result;
}

ResultCode readValue(uint32_t function, DeviceHandle handle, uint32_t *value) {
    Request<20, 16> request(function);
    request.put<16>(handle);
    return sendForStatus(request, value);
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynSlicSetResetPin, 8)(DeviceHandle handle, uint32_t state) {
    Request<24, 12> request(0x99A);
    request.put<16>(handle).put<20>(state);
    return request.send();
}

ResultCode RYN_DECORATED(RynSlicEnableDialTone, 4)(DeviceHandle handle) { return sendHandleOnly(0x99B, handle); }

ResultCode RYN_DECORATED(RynSlicEnableBusyTone, 4)(DeviceHandle handle) { return sendHandleOnly(0x99C, handle); }

ResultCode RYN_DECORATED(RynSlicEnableReorderTone, 4)(DeviceHandle handle) { return sendHandleOnly(0x99D, handle); }

ResultCode RYN_DECORATED(RynSlicEnableCongestionTone, 4)(DeviceHandle handle) { return sendHandleOnly(0x99E, handle); }

ResultCode RYN_DECORATED(RynSlicEnableRingBackTone, 4)(DeviceHandle handle) { return sendHandleOnly(0x9A0, handle); }

ResultCode RYN_DECORATED(RynSlicGetHookState, 8)(DeviceHandle handle, uint32_t *state) {
    return readValue(0x9A1, handle, state);
}

ResultCode RYN_DECORATED(RynSlicStartRingState, 8)(DeviceHandle handle, uint32_t *status) {
    // The line gets its pause before every ring, whatever its state.
    RYN_DECORATED(OsaThreadSleep, 4)(kRingPauseMs);
    return readValue(0x9A2, handle, status);
}

ResultCode RYN_DECORATED(RynSlicStopRingState, 8)(DeviceHandle handle, uint32_t *status) {
    return readValue(0x9A3, handle, status);
}

ResultCode RYN_DECORATED(RynSlicEnableAudio, 8)(DeviceHandle handle, uint32_t *status) {
    return readValue(0x9A4, handle, status);
}

ResultCode RYN_DECORATED(RynSlicSignalDisconnectState, 12)(DeviceHandle handle, uint32_t param1, uint32_t *status) {
    Request<24, 16> request(0x9A5);
    request.put<16>(handle).put<20>(param1);
    return sendForStatus(request, status);
}

ResultCode RYN_DECORATED(RynSlicSetUserName, 12)(DeviceHandle handle, const char *name, uint32_t *status) {
    if (name == nullptr) return kBareNullPointer;
    if (strnlen(name, kNameLength + 1) > kNameLength) return kBareRange;
    // A shorter name goes with its NUL, one of 15 characters without; byte
    // 35 ends the field either way.
    const size_t length = std::strlen(name);
    Request<36, 16> request(0x9A6);
    request.put<16>(handle).putBytes<20, kNameLength>(name, static_cast<uint32_t>(length + 1)).put8<35>(0);
    return sendForStatus(request, status);
}

ResultCode RYN_DECORATED(RynSlicSetPhoneNumber, 12)(DeviceHandle handle, const char *number, uint32_t *status) {
    if (number == nullptr) return kBareNullPointer;
    if (strnlen(number, kNumberLength + 1) != kNumberLength) return kBareRange;
    Request<32, 16> request(0x9A7);
    request.put<16>(handle).putBytes<20, kNumberLength>(number, kNumberLength).put8<30>(0);
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
    char stamp[kStampLength + 1] = {};
    std::snprintf(stamp, sizeof stamp, "%02u%02u%02u%02u", twoDigits(local->tm_mon + 1), twoDigits(local->tm_mday),
                  twoDigits(local->tm_hour), twoDigits(local->tm_min));
    Request<30, 16> request(0x9A8);
    request.put<16>(handle).putBytes<20, kStampLength>(stamp, kStampLength).put8<28>(0);
    return sendForStatus(request, status);
}

}  // extern "C"
