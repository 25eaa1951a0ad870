// Tests of a DeviceHandle's kind (its top four bits).
#pragma once

#include "RynHwDll.h"

namespace ryn {

constexpr uint32_t handleKind(DeviceHandle handle) { return handle & RYN_HANDLE_KIND_MASK; }

constexpr bool isPhysicalDevice(DeviceHandle handle) { return handleKind(handle) == RYN_HANDLE_PHYSICAL; }
constexpr bool isLogicalDevice(DeviceHandle handle) { return handleKind(handle) == RYN_HANDLE_LOGICAL; }
constexpr bool isPipe(DeviceHandle handle) { return handleKind(handle) == RYN_HANDLE_PIPE; }

// Any object of the driver: kinds 0x1 to 0x6.
constexpr bool isDriverObject(DeviceHandle handle) {
    return handleKind(handle) >= RYN_HANDLE_PHYSICAL && handleKind(handle) <= RYN_HANDLE_OTHER_6;
}

}  // namespace ryn
