// Devices, boards, logical devices and pipes: enumeration, handles,
// connections and management.
#include "CoreWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

namespace core = wire::core;

constexpr uint8_t kSourceId = source::kDeviceCore;

// Enable and Disable share their request layout.
template <typename Wire>
ResultCode sendEnableRequest(DeviceHandle handle, uint32_t param2, uint32_t param3) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kParam2>(param2).template put<Wire::kParam3>(param3);
    return request.send();
}

// Logical-device connect and disconnect share their request layout.
template <typename Wire>
ResultCode sendLogicalConnection(DeviceHandle handleA, uint32_t portA, DeviceHandle handleB, uint32_t portB) {
    RequestOf<Wire> request;
    request.template put<Wire::kHandleA>(handleA).template put<Wire::kPortA>(portA);
    request.template put<Wire::kHandleB>(handleB).template put<Wire::kPortB>(portB);
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
    using Wire = core::EnumDeviceType;
    RequestOf<Wire> request;
    request.put<Wire::kParent>(parent).put<Wire::kIterator>(static_cast<uint32_t>(*iterator));
    const ResultCode result = request.send();
    *deviceType = static_cast<int32_t>(request.get<Wire::kReplyDeviceType>());
    *iterator = static_cast<int32_t>(request.get<Wire::kReplyIterator>());
    return result;
}

ResultCode RYN_DECORATED(RynDrvEnumDevice, 16)(DeviceHandle parent, int32_t deviceType, int32_t *iterator,
                                               uint32_t *deviceId) {
    if (iterator == nullptr || deviceId == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::EnumDevice;
    RequestOf<Wire> request;
    request.put<Wire::kParent>(parent).put<Wire::kDeviceType>(static_cast<uint32_t>(deviceType));
    request.put<Wire::kIterator>(static_cast<uint32_t>(*iterator));
    const ResultCode result = request.send();
    *deviceId = request.get<Wire::kReplyDeviceId>();
    *iterator = static_cast<int32_t>(request.get<Wire::kReplyIterator>());
    return result;
}

ResultCode RYN_DECORATED(RynDrvGetDeviceHandle, 16)(DeviceHandle parent, int32_t deviceType, uint32_t deviceId,
                                                    DeviceHandle *handle) {
    // This request has a 12-byte header: its fields start at offset 12.
    using Wire = core::GetDeviceHandle;
    RequestOf<Wire> request;
    request.put<Wire::kParent>(parent).put<Wire::kDeviceType>(static_cast<uint32_t>(deviceType));
    request.put<Wire::kDeviceId>(deviceId);
    const ResultCode result = request.sendWithResultAt<Wire::kResult>(kDeviceHandleTransport);
    if (handle != nullptr) {
        *handle = 0xFFFFFFFFu;
        if (!isFailure(result)) *handle = request.get<Wire::kReplyHandle>();
    }
    return result;
}

ResultCode RYN_DECORATED(RynDrvOpenPhysicalDevice, 24)(uint32_t param1, uint32_t param2, uint32_t param3,
                                                       uint32_t param4, uint32_t param5, DeviceHandle *physicalDevice) {
    if (physicalDevice == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::OpenPhysicalDevice;
    RequestOf<Wire> request;
    // The fourth and fifth arguments change places in the request.
    request.put<Wire::kParam1>(param1).put<Wire::kParam2>(param2).put<Wire::kParam3>(param3);
    request.put<Wire::kParam5>(param5).put<Wire::kParam4>(param4);
    const ResultCode result = request.send();
    *physicalDevice = isFailure(result) ? 0xFFFFFFFFu : request.get<Wire::kReplyHandle>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvOpenPhysicalDeviceEx, 12)(uint32_t param1, uint32_t param2, uint32_t param3) {
    using Wire = core::OpenPhysicalDeviceEx;
    RequestOf<Wire> request;
    request.put<Wire::kParam1>(param1).put<Wire::kParam2>(param2).put<Wire::kParam3>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvCreateLogicalDevice, 20)(DeviceHandle physicalDevice, int32_t deviceType,
                                                        uint32_t param3, uint32_t param4, DeviceHandle *logicalDevice) {
    if (!isPhysicalDevice(physicalDevice)) return RYN_FAILURE(kErrInvalidHandle);
    if (logicalDevice == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::CreateLogicalDevice;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(physicalDevice).put<Wire::kDeviceType>(static_cast<uint32_t>(deviceType));
    request.put<Wire::kParam3>(param3).put<Wire::kConnection>(driverHandle()).put<Wire::kParam4>(param4);
    const ResultCode result = request.send();
    if (isFailure(result)) return result;
    *logicalDevice = request.get<Wire::kReplyHandle>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvCreatePipe, 8)(uint32_t param1, DeviceHandle *pipe) {
    if (pipe == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::CreatePipe;
    RequestOf<Wire> request;
    request.put<Wire::kParam1>(param1).put<Wire::kConnection>(driverHandle());
    const ResultCode result = request.send();
    *pipe = request.get<Wire::kReplyHandle>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvConnectLogicalDevice, 16)(DeviceHandle handleA, uint32_t portA, DeviceHandle handleB,
                                                         uint32_t portB) {
    return sendLogicalConnection<core::ConnectLogicalDevice>(handleA, portA, handleB, portB);
}

ResultCode RYN_DECORATED(RynDrvDisconnectLogicalDevice, 16)(DeviceHandle handleA, uint32_t portA, DeviceHandle handleB,
                                                            uint32_t portB) {
    if (!isLogicalOrPipe(handleA)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isLogicalOrPipe(handleB)) return RYN_FAILURE(kErrInvalidHandle);
    return sendLogicalConnection<core::DisconnectLogicalDevice>(handleA, portA, handleB, portB);
}

ResultCode RYN_DECORATED(RynDrvConnectPipe, 24)(DeviceHandle pipe, uint32_t portA, DeviceHandle device, uint32_t portB,
                                                const uint8_t *data, int32_t dataLength) {
    using Wire = core::ConnectPipe;
    if (!isPipe(pipe)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isPhysicalDevice(device)) return RYN_FAILURE(kErrInvalidHandle);
    if (data == nullptr) dataLength = 0;
    if (dataLength < 0) return RYN_FAILURE(kErrRange);
    if (static_cast<uint32_t>(dataLength) > Wire::kDataSize) return RYN_FAILURE(kErrRange);
    RequestOf<Wire> request;
    request.put<Wire::kPipe>(pipe).put<Wire::kPortA>(portA).put<Wire::kDevice>(device).put<Wire::kPortB>(portB);
    request.putBytes<Wire::kData, Wire::kDataSize>(data, static_cast<uint32_t>(dataLength));
    request.put<Wire::kDataLength>(static_cast<uint32_t>(dataLength));
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvDisconnectPipe, 8)(DeviceHandle pipe, uint32_t portA) {
    if (!isPipe(pipe)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = core::DisconnectPipe;
    RequestOf<Wire> request;
    request.put<Wire::kPipe>(pipe).put<Wire::kPort>(portA);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvConnectBoard, 8)(DeviceHandle handleA, DeviceHandle handleB) {
    if (!isDriverObject(handleA)) return RYN_FAILURE(kErrInvalidHandle);
    if (!isDriverObject(handleB)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = core::ConnectBoard;
    RequestOf<Wire> request;
    request.put<Wire::kHandleA>(handleA).put<Wire::kHandleB>(handleB);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvEnable, 12)(DeviceHandle handle, uint32_t param2, uint32_t param3) {
    return sendEnableRequest<core::Enable>(handle, param2, param3);
}

ResultCode RYN_DECORATED(RynDrvDisable, 12)(DeviceHandle handle, uint32_t param2, uint32_t param3) {
    return sendEnableRequest<core::Disable>(handle, param2, param3);
}

ResultCode RYN_DECORATED(RynDrvGetState, 8)(DeviceHandle handle, uint32_t *state) {
    if (handle == 0) return RYN_FAILURE(kErrInvalidHandle);
    if (state == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::GetState;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    *state = request.get<Wire::kReplyState>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvReset, 4)(DeviceHandle handle) {
    if (handle == 0) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly<core::Reset>(handle);
}

ResultCode RYN_DECORATED(RynDrvClose, 4)(DeviceHandle handle) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly<core::Close>(handle);
}

}  // extern "C"
