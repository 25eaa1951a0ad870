// Handles on Windows: the values of the system's HANDLEs.
#include "osa/windows/Native.h"

namespace ryn::osa::sys {

OsaHandle adoptHandle(NativeHandle native) {
    const auto value = static_cast<OsaHandle>(static_cast<uintptr_t>(native));
    // A handle that does not come back from its 32 bits, or that would read
    // as no handle, is not given out.
    if (reinterpret_cast<NativeHandle>(nativeOf(value)) != native || value == 0 || value == 0xFFFFFFFFu) {
        CloseHandle(reinterpret_cast<HANDLE>(native));
        return 0xFFFFFFFFu;  // INVALID_HANDLE_VALUE of Osa.h
    }
    return value;
}

void closeHandle(OsaHandle handle) { CloseHandle(nativeOf(handle)); }

}  // namespace ryn::osa::sys
