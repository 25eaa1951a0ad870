// Devices, boards, logical devices and pipes: enumeration, handles,
// connections and management.
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDeviceCore;
constexpr uint32_t kConnectionDataSize = 512;

// Enable and Disable share their request layout.
ResultCode sendEnableRequest(uint32_t function, DeviceHandle handle, uint32_t param2, uint32_t param3) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<28, 12> request(function);
    request.put<16>(handle).put<20>(param2).put<24>(param3);
    return request.send();
}

// Logical-device connect and disconnect share their request layout.
ResultCode sendLogicalConnection(uint32_t function, DeviceHandle handleA, uint32_t portA, DeviceHandle handleB,
                                 uint32_t portB) {
    Request<32, 12> request(function);
    request.put<16>(handleA).put<20>(portA).put<24>(handleB).put<28>(portB);
    return request.send();
}

bool isLogicalOrPipe(DeviceHandle handle) { return isLogicalDevice(handle) || isPipe(handle); }

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDrvIteratorBegin, 4)(int32_t *iterator) {
    if (iterator == nullptr) return RYN_FAILURE(kErrNullPointer);
    *iterator = 0;
    return 0;
}

int32_t RYN_DECORATED(RynDrvIsIteratorEnd, 4)(const int32_t *iterator) {
    // Without an iterator there is nothing to go on with.
    return iterator != nullptr && *iterator != -1 ? 1 : 0;
}

ResultCode RYN_DECORATED(RynDrvEnumDeviceType, 12)(DeviceHandle parent, int32_t *iterator, int32_t *deviceType) {
    if (iterator == nullptr || deviceType == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<24, 20> request(0x80A);
    request.put<16>(parent).put<20>(static_cast<uint32_t>(*iterator));
    const ResultCode result = request.send();
    *deviceType = static_cast<int32_t>(request.get<8>());
    *iterator = static_cast<int32_t>(request.get<12>());
    return result;
}

ResultCode RYN_DECORATED(RynDrvEnumDevice, 16)(DeviceHandle parent, int32_t deviceType, int32_t *iterator,
                                               uint32_t *deviceId) {
    if (iterator == nullptr || deviceId == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<28, 20> request(0x80B);
    request.put<16>(parent).put<20>(static_cast<uint32_t>(deviceType)).put<24>(static_cast<uint32_t>(*iterator));
    const ResultCode result = request.send();
    *deviceId = request.get<8>();
    *iterator = static_cast<int32_t>(request.get<12>());
    return result;
}

ResultCode RYN_DECORATED(RynDrvGetDeviceHandle, 16)(DeviceHandle parent, int32_t deviceType, uint32_t deviceId,
                                                    DeviceHandle *handle) {
    // This request has a 12-byte header: its fields start at offset 12.
    Request<24, 12> request(0x870);
    request.put<12>(parent).put<16>(static_cast<uint32_t>(deviceType)).put<20>(deviceId);
    const ResultCode result = request.sendWithResultAt<4>(kDeviceHandleTransport);
    if (handle != nullptr) {
        *handle = 0xFFFFFFFFu;
        if (!isFailure(result)) *handle = request.get<8>();
    }
    return result;
}

ResultCode RYN_DECORATED(RynDrvOpenPhysicalDevice, 24)(uint32_t param1, uint32_t param2, uint32_t param3,
                                                       uint32_t param4, uint32_t param5, DeviceHandle *physicalDevice) {
    if (physicalDevice == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<36, 16> request(0x871);
    // The fourth and fifth arguments change places in the request.
    request.put<16>(param1).put<20>(param2).put<24>(param3).put<28>(param5).put<32>(param4);
    const ResultCode result = request.send();
    *physicalDevice = isFailure(result) ? 0xFFFFFFFFu : request.get<8>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvOpenPhysicalDeviceEx, 12)(uint32_t param1, uint32_t param2, uint32_t param3) {
    Request<28, 12> request(0x878);
    request.put<16>(param1).put<20>(param2).put<24>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvCreateLogicalDevice, 20)(DeviceHandle physicalDevice, int32_t deviceType,
                                                        uint32_t param3, uint32_t param4, DeviceHandle *logicalDevice) {
    if (!isPhysicalDevice(physicalDevice)) return RYN_FAILURE(kErrInvalidHandle);
    if (logicalDevice == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<36, 16> request(0x872);
    request.put<16>(physicalDevice).put<20>(static_cast<uint32_t>(deviceType)).put<24>(param3);
    request.put<28>(driverHandle()).put<32>(param4);
    const ResultCode result = request.send();
    if (isFailure(result)) return result;
    *logicalDevice = request.get<8>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvCreatePipe, 8)(uint32_t param1, DeviceHandle *pipe) {
    if (pipe == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<24, 16> request(0x874);
    request.put<16>(param1).put<20>(driverHandle());
    const ResultCode result = request.send();
    *pipe = request.get<8>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvConnectLogicalDevice, 16)(DeviceHandle handleA, uint32_t portA, DeviceHandle handleB,
                                                         uint32_t portB) {
    return sendLogicalConnection(0x813, handleA, portA, handleB, portB);
}

ResultCode RYN_DECORATED(RynDrvDisconnectLogicalDevice, 16)(DeviceHandle handleA, uint32_t portA, DeviceHandle handleB,
                                                            uint32_t portB) {
    if (!isLogicalOrPipe(handleA)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isLogicalOrPipe(handleB)) return RYN_FAILURE(kErrInvalidHandle);
    return sendLogicalConnection(0x814, handleA, portA, handleB, portB);
}

ResultCode RYN_DECORATED(RynDrvConnectPipe, 24)(DeviceHandle pipe, uint32_t portA, DeviceHandle device, uint32_t portB,
                                                const uint8_t *data, int32_t dataLength) {
    if (!isPipe(pipe)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isPhysicalDevice(device)) return RYN_FAILURE(kErrInvalidHandle);
    if (data == nullptr) dataLength = 0;
    if (dataLength < 0) return RYN_FAILURE(kErrRange);
    if (static_cast<uint32_t>(dataLength) > kConnectionDataSize) return RYN_FAILURE(kErrRange);
    Request<548, 12> request(0x80F);
    request.put<16>(pipe).put<20>(portA).put<24>(device).put<28>(portB);
    request.putBytes<32, kConnectionDataSize>(data, static_cast<uint32_t>(dataLength));
    request.put<544>(static_cast<uint32_t>(dataLength));
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvDisconnectPipe, 8)(DeviceHandle pipe, uint32_t portA) {
    if (!isPipe(pipe)) return RYN_FAILURE(kErrInvalidHandle);
    Request<24, 12> request(0x810);
    request.put<16>(pipe).put<20>(portA);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvConnectBoard, 8)(DeviceHandle handleA, DeviceHandle handleB) {
    if (!isDriverObject(handleA)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isDriverObject(handleB)) return RYN_FAILURE(kErrInvalidHandle);
    Request<24, 12> request(0x820);
    request.put<16>(handleA).put<20>(handleB);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvEnable, 12)(DeviceHandle handle, uint32_t param2, uint32_t param3) {
    return sendEnableRequest(0x80C, handle, param2, param3);
}

ResultCode RYN_DECORATED(RynDrvDisable, 12)(DeviceHandle handle, uint32_t param2, uint32_t param3) {
    return sendEnableRequest(0x80D, handle, param2, param3);
}

ResultCode RYN_DECORATED(RynDrvGetState, 8)(DeviceHandle handle, uint32_t *state) {
    if (handle == 0) return RYN_FAILURE(kErrInvalidHandle);
    if (state == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 16> request(0x816);
    request.put<16>(handle);
    const ResultCode result = request.send();
    *state = request.get<8>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvReset, 4)(DeviceHandle handle) {
    if (handle == 0) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly(0x80E, handle);
}

ResultCode RYN_DECORATED(RynDrvClose, 4)(DeviceHandle handle) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly(0x811, handle);
}

}  // extern "C"
