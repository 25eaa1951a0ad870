// An in-process null driver for the benchmarks: it answers every request
// with a zero result and reports the whole reply returned.
#pragma once

#include <cstring>

#include "RynHwDll.h"
#include "osa/Device.h"

namespace ryn::bench {

inline void *nullOpen(const char *) {
    static int instance;
    return &instance;
}
inline int nullControl(void *, const RynDriverRequest *request, uint32_t *returned) {
    std::memset(static_cast<uint8_t *>(request->output) + request->outputLength - 4, 0, 4);
    *returned = request->outputLength;
    return 1;
}
inline void nullClose(void *) {}
inline const RynUserDriver kNullDriver{RYN_USER_DRIVER_ABI, nullOpen, nullControl, nullClose};

// Connects the library to the null driver once per process.
inline void connectToNullDriver() {
    static const bool connected = [] {
        osa::registerDevice("RYNDRV", &kNullDriver);
        return RynDrvConnectLib_0() == 0;
    }();
    (void)connected;
}

}  // namespace ryn::bench
