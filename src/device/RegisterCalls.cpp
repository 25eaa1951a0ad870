// Registers, the driver's clock, the watchdog and diagnostics. The library
// checks only the out pointers here; every other failure comes from the
// driver or the transport.
#include <cstring>

#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDeviceCore;

// Every register width moves a 32-bit word; reads store it whatever the result.
ResultCode readRegister(uint32_t function, DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<24, 16> request(function);
    request.put<16>(handle).put<20>(registerOffset);
    const ResultCode result = request.send();
    *value = request.get<8>();
    return result;
}

ResultCode writeRegister(uint32_t function, DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    Request<28, 12> request(function);
    request.put<16>(handle).put<20>(registerOffset).put<24>(value);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDrvReadReg8, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister(0x81C, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvReadReg16, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister(0x81D, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvReadReg32, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t *value) {
    return readRegister(0x822, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg8, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister(0x81E, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg16, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister(0x81F, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvWriteReg32, 12)(DeviceHandle handle, uint32_t registerOffset, uint32_t value) {
    return writeRegister(0x821, handle, registerOffset, value);
}

ResultCode RYN_DECORATED(RynDrvGetCurrentTime, 4)(uint64_t *time) {
    if (time == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 20> request(0x877);
    request.put<16>(RYN_DRIVER_PSEUDO_HANDLE);
    const ResultCode result = request.send();
    std::memcpy(time, request.replyBytes<8, 8>(), 8);
    return result;
}

ResultCode RYN_DECORATED(RynStartWatchdogTimer, 4)(uint32_t) {
    Request<20, 12> request(0x815);  // no field: the argument is not sent
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvDbgDump, 8)(uint32_t param1, uint32_t param2) {
    Request<24, 12> request(0x81A);
    request.put<16>(param1).put<20>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvResultCode2String, 16)(DeviceHandle handle, ResultCode resultCode, char *text,
                                                      uint32_t textLength) {
    // The driver writes the text into the caller's buffer, whose address
    // travels at offset 28 and its length at offset 24.
    Request<32, 12> request(0x81B);
    request.put<16>(handle).put<20>(resultCode).put<24>(textLength).putAddress<28>(text, textLength);
    return request.send();
}

}  // extern "C"
