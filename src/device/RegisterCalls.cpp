// Registers, the driver's clock, the watchdog and diagnostics. The library
// checks only the out pointers here; every other failure comes from the
// driver or the transport.
#include <cstring>

#include "CoreWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

namespace core = wire::core;

constexpr uint8_t kSourceId = source::kDeviceCore;

// Every register width moves a 32-bit word; reads store it whatever the result.
template <typename Wire>
ResultCode readRegister(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kRegister>(registerOffset);
    const ResultCode result = request.send();
    *value = request.template get<Wire::kReplyValue>();
    return result;
}

template <typename Wire>
ResultCode writeRegister(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kRegister>(registerOffset);
    request.template put<Wire::kValue>(value);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDrvReadReg8, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister<core::ReadReg8>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvReadReg16, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister<core::ReadReg16>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvReadReg32, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister<core::ReadReg32>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg8, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister<core::WriteReg8>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg16, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister<core::WriteReg16>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg32, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister<core::WriteReg32>(handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvGetCurrentTime, 4)(uint64_t *time) {
    if (time == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::GetCurrentTime;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(RYN_DRIVER_PSEUDO_HANDLE);
    const ResultCode result = request.send();
    static_assert(sizeof *time == Wire::kTimeSize);
    std::memcpy(time, request.replyBytes<Wire::kReplyTime, Wire::kTimeSize>(), Wire::kTimeSize);
    return result;
}

ResultCode RYN_DECORATED(RynStartWatchdogTimer, 4)(uint32_t) {
    RequestOf<core::StartWatchdogTimer> request;  // no field: the argument is not sent
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvDbgDump, 8)(uint32_t param1, uint32_t param2) {
    using Wire = core::DbgDump;
    RequestOf<Wire> request;
    request.put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvResultCode2String, 16)(DeviceHandle handle, ResultCode resultCode, char *text,
                                                      uint32_t textLength) {
    // The driver writes the text into the caller's buffer, whose address
    // travels at offset 28 and its length at offset 24.
    using Wire = core::ResultCode2String;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kResultCode>(resultCode).put<Wire::kTextLength>(textLength);
    request.putAddress<Wire::kText>(text, textLength);
    return request.send();
}

}  // extern "C"
