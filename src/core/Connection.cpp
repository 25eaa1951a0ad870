// The one driver connection of the process: connect, release, get-handle.
#include <atomic>
#include <mutex>

#include "CoreWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "core/Version.h"
#include "device/AppEventQueueTable.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDeviceCore;

// Written only by connect and release; relaxed atomics keep concurrent
// readers on the request path free of data races at no cost.
constinit std::atomic<OsaHandle> connection{INVALID_HANDLE_VALUE};

// Connect and release one at a time, even from two threads: each sees the
// connection and the application queue table as the other left them.
std::mutex &connecting() {
    static std::mutex instance;
    return instance;
}

ResultCode connect(const char *deviceName) {
    {
        std::lock_guard lock(connecting());
        if (connection.load(std::memory_order_relaxed) != INVALID_HANDLE_VALUE) return RYN_FAILURE(kErrFailed);
        const OsaHandle handle = RYN_DECORATED(OsaDeviceOpen, 4)(deviceName);
        if (handle == INVALID_HANDLE_VALUE) return RYN_FAILURE(kErrInvalidHandle);
        appqueue::initialiseTable();
        connection.store(handle, std::memory_order_relaxed);
    }

    using Wire = wire::core::ConnectLib;
    RequestOf<Wire> request;
    request.putBytes<Wire::kVersion, Wire::kVersionSize>(kLibraryVersion, sizeof kLibraryVersion);
    return request.send();
}

}  // namespace

OsaHandle driverHandle() { return connection.load(std::memory_order_relaxed); }

}  // namespace ryn

extern "C" {

ResultCode RYN_DECORATED(RynDrvConnectLib, 0)(void) { return ryn::connect("RYNDRV"); }

ResultCode RYN_DECORATED(RynNetConnectLib, 0)(void) { return ryn::connect("RYNNET"); }

ResultCode RYN_DECORATED(RynDrvReleaseLib, 0)(void) {
    using namespace ryn;
    std::lock_guard lock(connecting());
    // Calls that start from here on find no connection; the close waits for
    // the requests already in flight before the driver is closed and unloaded.
    const OsaHandle handle = connection.exchange(INVALID_HANDLE_VALUE, std::memory_order_relaxed);
    if (handle == INVALID_HANDLE_VALUE) return RYN_FAILURE(kErrInvalidHandle);
    RYN_DECORATED(OsaDeviceClose, 4)(handle);
    appqueue::releaseTable();
    return 0;
}

ResultCode RYN_DECORATED(RynDrvGetHandle, 4)(OsaHandle *handle) {
    using namespace ryn;
    const OsaHandle current = connection.load(std::memory_order_relaxed);
    if (current == INVALID_HANDLE_VALUE) return RYN_FAILURE(kErrNotConnected);
    if (handle == nullptr) return RYN_FAILURE(kErrNullPointer);
    *handle = current;
    return 0;
}

}  // extern "C"
