// The Windows side's view of the layer's handles: each is the value of a
// HANDLE. 64-bit Windows keeps the values of kernel handles within 32 bits
// (they may be truncated and sign-extended back), so a handle fits the
// 32-bit OsaHandle of both builds.
#pragma once

#include <windows.h>

#include <cstdint>

#include "osa/System.h"

namespace ryn::osa::sys {

inline HANDLE nativeOf(OsaHandle handle) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(static_cast<int32_t>(handle)));
}

inline NativeHandle fromHandle(HANDLE handle) {
    return handle == nullptr || handle == INVALID_HANDLE_VALUE ? kNoNativeHandle
                                                              : reinterpret_cast<NativeHandle>(handle);
}

}  // namespace ryn::osa::sys
